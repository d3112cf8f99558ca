#pragma once

#include <odfmodel/export.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// @file
/// Attribute values that may be more than the type of their accessor holds.

namespace ODF {

/// All of such a value, as a file has it: where a number is expected also a word, such as "auto", or a number
/// with a unit, and where one key is expected a list of them.
class ODFMODEL_API WholeValue {
public:
    explicit WholeValue(std::string text) noexcept : text_(std::move(text)) {}

    const std::string& text() const noexcept { return text_; }
    /// The number; nothing when the value isn't one, or has a unit.
    std::optional<double> number() const noexcept;
    /// What white space parts, in order. The strings are those of this object.
    std::vector<std::string_view> words() const;
    /// Whether one of the words is this one. Case counts.
    bool has(std::string_view word) const noexcept;

private:
    std::string text_;
};

} // namespace ODF
