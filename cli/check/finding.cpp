#include "check/finding.h"

#include <algorithm>
#include <array>

namespace command {
namespace {

// In the order of the kinds.
constexpr std::array<std::string_view, 32> kKeys{
    "member-lost",    "member-added",     "member-changed",     "member-damaged", "entry-lost",
    "entry-added",    "entry-changed",    "media-type-changed", "decrypted",      "xml-fault",
    "entity-lost",    "unknown-element",  "unknown-attribute",  "element-lost",   "element-added",
    "attribute-lost", "attribute-added",  "enumeration-value",  "number-value",   "number-spelling",
    "boolean-value",  "boolean-spelling", "text-value",         "date-value",     "date-spelling",
    "prefix-lost",    "text-dropped",     "text-changed",       "text-moved",     "markup-lost",
    "markup-added",   "doctype-dropped",
};
static_assert(kKeys.size() == static_cast<std::size_t>(FindingKind::DoctypeDropped) + 1);

constexpr std::size_t kMaxExample = 60;

} // namespace

std::string_view KeyOf(FindingKind kind) {
    return kKeys[static_cast<std::size_t>(kind)];
}

std::string TextOf(FindingKind kind) {
    std::string text(KeyOf(kind));
    std::replace(text.begin(), text.end(), '-', ' ');
    return text;
}

std::string Example(std::string_view text) {
    std::size_t length = text.size();
    if (length > kMaxExample) {
        length = kMaxExample; // cut between characters
        while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80)
            --length;
    }
    std::string example(1, '"');
    example += text.substr(0, length);
    if (length < text.size()) example += "...";
    example += '"';
    return example;
}

std::string Change(std::string_view before, std::string_view after) {
    return Example(before).append(" -> ").append(Example(after));
}

void Findings::add(FindingKind kind, std::string_view name, std::string_view example, std::size_t below) {
    Finding& finding = findings_[{kind, std::string(name)}];
    if (finding.count == 0) finding = {kind, std::string(name), 0, 0, std::string(example)};
    ++finding.count;
    finding.below += below;
}

std::vector<Finding> Findings::list() const {
    std::vector<Finding> list;
    for (const auto& [key, finding] : findings_)
        list.push_back(finding);
    return list;
}

bool Findings::hasLoss() const {
    return std::any_of(findings_.begin(), findings_.end(),
                       [](const auto& entry) { return IsLoss(entry.first.first); });
}

} // namespace command
