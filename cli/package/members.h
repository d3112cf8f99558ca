#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace command {

/// What a flat document, which has no members, is called among them.
inline constexpr const char* kFlatMember = "(flat document)";

/// One member of an archive.
struct Member {
    std::string name;   ///< UTF-8, with `/` between folders
    long long size = 0; ///< uncompressed bytes
    int index = -1;     ///< in an `Archive`

    bool isFolder() const { return name.ends_with('/'); }
};

struct MemberBytes {
    std::vector<unsigned char> bytes;
    bool isWhole = false; ///< false when the member isn't there, or can't be read to its end

    std::string_view text() const { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }
};

/// Whether a member of that name stays in the folder that its package is extracted to.
bool IsSafeName(std::string_view name);

/// The members of a package, with `mimetype` and manifest, wherever they come from.
class MemberSource {
public:
    MemberSource() = default;
    MemberSource(const MemberSource&) = delete;
    MemberSource& operator=(const MemberSource&) = delete;
    virtual ~MemberSource() = default;

    /// In the order of the archive, folders too.
    const std::vector<Member>& members() const noexcept { return members_; }
    /// Null when there is no such member.
    const Member* find(std::string_view name) const;
    virtual MemberBytes read(std::string_view name) const = 0;

protected:
    void setMembers(std::vector<Member> members);

private:
    std::vector<Member> members_;
    std::map<std::string, std::size_t, std::less<>> byName_;
};

} // namespace command
