#include <odfmodel/core/enumeration.h>

#include "core/class_descriptor.h"

#include <odfmodel/core/string.h>

namespace ODF::detail {
namespace {

constexpr unsigned kElementGroup = 0x80000000; ///< every enumeration is of it

} // namespace

std::string KeyOf(std::u16string_view enumeration, int value) {
    const EnumerationTable* const table = FindEnumeration(kElementGroup, enumeration);
    const char16_t* const key = table ? table->key(value) : nullptr;
    return key ? ToUtf8(std::u16string_view(key)) : std::string();
}

std::optional<int> ValueOf(std::u16string_view enumeration, std::string_view key) noexcept {
    const EnumerationTable* const table = FindEnumeration(kElementGroup, enumeration);
    const int value = table ? table->find(key) : -1;
    return value < 0 ? std::nullopt : std::optional(value);
}

} // namespace ODF::detail
