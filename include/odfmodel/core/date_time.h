#pragma once

#include <odfmodel/export.h>
#include <odfmodel/system_time.h>

/// A plain wrapper of a date and time; no element object.
class ODFMODEL_API CSDDateTimeObject {
public:
    CSDDateTimeObject() = default;
    CSDDateTimeObject(const CSDDateTimeObject&) = default;
    virtual ~CSDDateTimeObject();

    CSDDateTimeObject& operator=(const CSDDateTimeObject&) = default;
    CSDDateTimeObject& operator=(const SYSTEMTIME& value);
    /// `value` must not be null.
    CSDDateTimeObject& operator=(const SYSTEMTIME* value);
    operator SYSTEMTIME&() noexcept { return value_; } // NOLINT(google-explicit-constructor)

private:
    SYSTEMTIME value_;
};
