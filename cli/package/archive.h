#pragma once

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/serial/unzip.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace command {

class Passwords;

/// One member of an archive.
struct Member {
    std::string name;   ///< UTF-8, with `/` between folders
    long long size = 0; ///< uncompressed bytes
    int index = -1;

    bool isFolder() const { return name.ends_with('/'); }
};

/// The members of an open archive, in its order.
std::vector<Member> MembersOf(const CSDUnZip& unzip);

/// An archive that members are read from, in clear where there is a password.
class Archive {
public:
    Archive();

    /// Opens the archive and finds its members, in the order of the archive.
    ODF::Status open(const std::string& path, const std::string* password);
    /// The same with the passwords of the options or the terminal; a failure is told.
    bool open(const std::string& path, const Passwords& passwords);
    /// Opens it as it is: the members of an encrypted package stay encrypted.
    ODF::Status openRaw(const std::string& path);

    const std::vector<Member>& members() const noexcept { return members_; }
    const Member* find(std::string_view name) const;
    const ODF::Diagnostics& diagnostics() const noexcept { return diagnostics_; }
    CSDUnZip& unzip() noexcept { return *unzip_; }

    /// The member's bytes; nothing when they can't be read to their end.
    std::optional<std::string> read(std::string_view name);

private:
    ODF::Status finish(bool isOpen);

    ODF::Diagnostics diagnostics_;
    std::unique_ptr<CSDUnZip> unzip_;
    std::vector<Member> members_;
    std::map<std::string, std::size_t, std::less<>> byName_;
};

/// Reads one member piece by piece.
class MemberStream {
public:
    MemberStream(Archive& archive, const Member& member);

    /// The next piece, valid until the next call; empty at the end or at a fault.
    std::string_view next();
    /// True when the end came before the last byte, or the data was damaged.
    bool isDamaged() const noexcept { return isDamaged_; }

private:
    Archive& archive_;
    CTulStringW name_;
    std::string buffer_;
    bool isDamaged_ = false;
    int cursor_ = 0;
    int count_ = 0;
    bool isAtEnd_ = false;
};

} // namespace command
