#include <odfmodel/core/foreign.h>

#include "core/names.h"
#include "core/object_access.h"

#include <algorithm>

namespace ODF {
namespace {

CSDObject* MakeForeign(unsigned id, Arena* arena) {
    return ObjectAccess::make<CForeignElement>(id, arena);
}

/// Lists nothing, so everything that a foreign element holds is foreign too, or is known by its own name.
constexpr ClassDescriptor kForeignTable{"CForeignElement", "",      u"",     kForeignElementId,
                                        nullptr,           nullptr, nullptr, nullptr,
                                        &MakeForeign,      0,       0,       0,
                                        kNoNamespace,      true,    false,   FormatVersion::Base};

struct SplitName {
    std::string_view prefix;
    std::string_view local;
};

SplitName Split(std::string_view name) noexcept {
    const std::size_t colon = name.find(':');
    if (colon == std::string_view::npos) return {{}, name};
    return {name.substr(0, colon), name.substr(colon + 1)};
}

/// Whether XML allows the name with that prefix in that namespace.
bool IsAllowed(std::string_view uri, const SplitName& name) noexcept {
    const bool isXml = uri == "http://www.w3.org/XML/1998/namespace";
    return IsXmlName(name.local) && name.local.find(':') == std::string_view::npos &&
           (name.prefix.empty() || (IsXmlName(name.prefix) && !uri.empty())) && name.prefix != "xmlns" &&
           uri != "http://www.w3.org/2000/xmlns/" &&
           (name.prefix == "xml") == (isXml && !name.prefix.empty());
}

std::vector<KeptAttribute>::iterator Find(Extras& extras, std::string_view uri, std::string_view local) {
    const ForeignName name(uri, {}, local);
    return std::find_if(extras.attributes.begin(), extras.attributes.end(), [&](const KeptAttribute& kept) {
        return kept.row == KeptAttribute::kNotListed && kept.name.local() == name.local() &&
               kept.name.uri() == name.uri();
    });
}

CSDObject* CreateMarkup(unsigned id, std::string_view text) {
    CTulStringW kept(text);
    CSDObject* const object = CSDStringValueObject::Create(id);
    ObjectAccess::text(*object) = std::move(kept);
    return object;
}

} // namespace

CForeignElement::CForeignElement(unsigned id) : CSDMixedContentObject(id) {
    setFlag(kElement, true);
}

CForeignElement::~CForeignElement() {
    ReleaseAttributes(kForeignTable);
}

CForeignElement* CForeignElement::Create(std::string_view namespaceUri, std::string_view name) {
    const SplitName split = Split(name);
    if (!IsAllowed(namespaceUri, split)) return nullptr;
    const ForeignName made(namespaceUri, split.prefix, split.local);
    auto* const element = static_cast<CForeignElement*>(MakeForeign(kId, nullptr));
    ObjectAccess::setName(*element, made);
    return element;
}

const ClassDescriptor* CForeignElement::Descriptor() const noexcept {
    return &kForeignTable;
}

std::string CForeignElement::GetNamespace() const {
    return ToUtf8(ObjectAccess::name(*this).uri());
}
std::string CForeignElement::GetPrefix() const {
    return ToUtf8(ObjectAccess::name(*this).prefix());
}
std::string CForeignElement::GetLocalName() const {
    return ToUtf8(ObjectAccess::name(*this).local());
}

const ClassDescriptor& ObjectAccess::foreignTable() noexcept {
    return kForeignTable;
}
ForeignName ObjectAccess::name(const CSDObject& foreign) noexcept {
    return ForeignName(static_cast<const CForeignElement&>(foreign).name_);
}
void ObjectAccess::setName(CSDObject& foreign, const ForeignName& name) noexcept {
    static_cast<CForeignElement&>(foreign).name_ = name.key();
}

std::vector<ForeignAttribute> ForeignAttributesOf(const CSDObject& object) {
    std::vector<ForeignAttribute> result;
    if (const Extras* const extras = ObjectAccess::extras(object))
        for (const KeptAttribute& kept : extras->attributes)
            if (kept.row == KeptAttribute::kNotListed)
                result.push_back({ToUtf8(kept.name.uri()), ToUtf8(kept.name.prefix()),
                                  ToUtf8(kept.name.local()), kept.value.utf8()});
    return result;
}

std::optional<std::string> GetForeignAttribute(const CSDObject& object, std::string_view namespaceUri,
                                               std::string_view localName) {
    if (Extras* const extras = ObjectAccess::extras(object))
        if (const auto at = Find(*extras, namespaceUri, localName); at != extras->attributes.end())
            return at->value.utf8();
    return std::nullopt;
}

bool SetForeignAttribute(CSDObject& object, std::string_view namespaceUri, std::string_view name,
                         std::string_view value) {
    const SplitName split = Split(name);
    if (!IsAllowed(namespaceUri, split) || (split.prefix.empty() && split.local == "xmlns")) return false;
    const ClassDescriptor* const table = ObjectAccess::descriptor(object);
    if (!table) return false;
    NamespaceIndex owner = FindNamespaceByUri(namespaceUri);
    if (owner == kNoNamespace && table->nameSpace == kMathNamespace) owner = kMathNamespace;
    if (owner != kUnknownNamespace && table->findAttribute(owner, split.local) >= 0) return false;
    KeptAttribute made{ForeignName(namespaceUri, split.prefix, split.local), {}};
    if (!made.value.Assign(ToUtf16(value))) throw std::bad_alloc();
    Extras& extras = ObjectAccess::requireExtras(object);
    if (const auto at = Find(extras, namespaceUri, split.local); at != extras.attributes.end())
        *at = std::move(made);
    else
        extras.attributes.push_back(std::move(made));
    return true;
}

bool RemoveForeignAttribute(CSDObject& object, std::string_view namespaceUri, std::string_view localName) {
    Extras* const extras = ObjectAccess::extras(object);
    if (!extras) return false;
    const auto at = Find(*extras, namespaceUri, localName);
    if (at == extras->attributes.end()) return false;
    extras->attributes.erase(at);
    return true;
}

CSDObject* CreateComment(std::string_view text) {
    return CreateMarkup(kCommentId, text);
}

CSDObject* CreateProcessingInstruction(std::string_view target, std::string_view data) {
    return CreateMarkup(kProcessingInstructionId, std::string(target) + " " + std::string(data));
}

} // namespace ODF
