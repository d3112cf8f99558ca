#include "serial/zip/member_path.h"

#include "platform/files.h"

namespace ODF::archive {

namespace {

/// Objects within objects make a few folders; thousands of folders for one member are an attack.
constexpr std::size_t kMaxSteps = 256;

bool IsLetter(char unit) noexcept {
    return (unit >= 'A' && unit <= 'Z') || (unit >= 'a' && unit <= 'z');
}

/// Why the name as a whole can't be taken; null when it can.
const char* FaultOf(std::string_view name, std::size_t room) noexcept {
    if (name.empty()) return "a member without a name";
    if (name.find('\0') != std::string_view::npos) return "a 0 byte in the name";
    if (name.front() == '/' || name.front() == '\\') return "an absolute name";
    if (name.size() >= 2 && IsLetter(name[0]) && name[1] == ':') return "a name with a drive";
    if (name.size() > room) return "a name longer than the system takes";
    return nullptr;
}

} // namespace

std::string MemberPath::joined() const {
    std::string result;
    for (const std::string& step : steps)
        result.append(result.empty() ? "" : "/").append(step);
    return result;
}

std::optional<MemberPath> ToMemberPath(std::string_view name, std::size_t room, const char*& fault) {
    fault = FaultOf(name, room);
    MemberPath path;
    for (std::size_t start = 0; !fault && start < name.size();) {
        const auto end = std::min(name.find_first_of("/\\", start), name.size());
        const std::string_view step = name.substr(start, end - start);
        if (step == "..")
            fault = "a name that leads out of the package";
        else if (step.size() > platform::kMaxName)
            fault = "a name longer than the system takes";
        else if (!step.empty() && step != ".")
            path.steps.emplace_back(step);
        start = end + 1;
        if (path.steps.size() > kMaxSteps) fault = "a name of too many folders";
    }
    if (!fault && path.steps.empty()) fault = "a member without a name";
    return fault ? std::nullopt : std::optional(std::move(path));
}

} // namespace ODF::archive
