#include "core/kept.h"

#include <algorithm>
#include <new>
#include <string>

namespace ODF {
namespace {

constexpr char16_t kSeparator = u'\1';

} // namespace

ForeignName::ForeignName(std::string_view uri, std::string_view prefix, std::string_view local) {
    std::u16string key = ToUtf16(uri);
    key += kSeparator;
    key += ToUtf16(prefix);
    key += kSeparator;
    key += ToUtf16(local);
    if (!key_.Assign(key)) throw std::bad_alloc();
}

std::u16string_view ForeignName::part(unsigned index) const noexcept {
    std::u16string_view rest = key_.view();
    for (; index > 0; --index) {
        const std::size_t at = rest.find(kSeparator);
        rest.remove_prefix(at == std::u16string_view::npos ? rest.size() : at + 1);
    }
    return rest.substr(0, rest.find(kSeparator));
}

bool ForeignName::means(const ForeignName& other) const noexcept {
    return local() == other.local() && uri() == other.uri() &&
           (!uri().empty() || prefix() == other.prefix()); // what nothing declares is only its spelling
}

KeptMarkup::~KeptMarkup() {
    for (const std::vector<CSDObject*>* const list : {&content, &before, &after})
        for (CSDObject* const object : *list)
            CSDObject::Delete(object);
}

KeptMarkup& Extras::requireMarkup() {
    if (!markup) markup = std::make_unique<KeptMarkup>();
    return *markup;
}

const KeptAttribute* Extras::find(unsigned row) const noexcept {
    const auto at = std::find_if(attributes.begin(), attributes.end(), [row](const KeptAttribute& kept) {
        return kept.row == static_cast<std::int32_t>(row);
    });
    return at == attributes.end() ? nullptr : &*at;
}

void Extras::forget(unsigned row) noexcept {
    std::erase_if(attributes,
                  [row](const KeptAttribute& kept) { return kept.row == static_cast<std::int32_t>(row); });
}

} // namespace ODF
