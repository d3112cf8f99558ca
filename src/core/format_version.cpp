#include <odfmodel/core/format_version.h>

#include <algorithm>
#include <array>

namespace ODF {
namespace {

constexpr std::array<std::string_view, 5> kNames{"1.1", "1.2", "1.3", "1.4", "extended"};
static_assert(kNames.size() == static_cast<std::size_t>(FormatVersion::Extended) + 1);

} // namespace

std::string_view VersionName(FormatVersion version) noexcept {
    const auto index = static_cast<std::size_t>(version);
    return index < kNames.size() ? kNames[index] : std::string_view();
}

std::optional<FormatVersion> ParseVersion(std::string_view name) noexcept {
    const auto* const at = std::find(kNames.begin(), kNames.end(), name);
    if (at == kNames.end()) return std::nullopt;
    return static_cast<FormatVersion>(at - kNames.begin());
}

} // namespace ODF
