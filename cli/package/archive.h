#pragma once

#include "package/members.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/serial/unzip.h>

#include <string>

namespace command {

/// The members of an open archive, in its order.
std::vector<Member> MembersOf(const CSDUnZip& unzip);

/// An archive as it is: members of an encrypted package stay encrypted.
class Archive final : public MemberSource {
public:
    ODF::Status open(const std::string& path);
    MemberBytes read(std::string_view name) const override;

    const ODF::Diagnostics& diagnostics() const noexcept { return diagnostics_; }

private:
    ODF::Diagnostics diagnostics_;
    mutable CSDUnZip unzip_; // reading moves its cursor
};

/// What makes programs differ in what they read in the archive at `path`, on one line; empty when nothing
/// does.
std::string AmbiguityOf(const std::string& path);

} // namespace command
