#include "support/trees.h"

#include <odfmodel/core/object.h>
#include <odfmodel/core/reflection.h>
#include <odfmodel/elements/text/paragraph.h>

#include <algorithm>

namespace test {

namespace {

/// A child element, or the text of adjacent runs.
struct Item {
    CSDObject* element = nullptr;
    std::string text;
};

std::vector<Item> ItemsOf(const CSDObject& object) {
    std::vector<Item> items;
    const std::vector<CSDObject*>* const children = object.GetObjectList();
    if (!children) return items;
    for (CSDObject* const child : *children) {
        if (!ODF::IsTextRun(*child))
            items.push_back({child, {}});
        else if (!items.empty() && !items.back().element)
            items.back().text += ODF::TextOf(*child);
        else
            items.push_back({nullptr, ODF::TextOf(*child)});
    }
    return items;
}

std::string NameOf(const CSDObject& object) {
    const auto info = ODF::ClassOf(object);
    return info ? std::string(info->elementName()) : "#" + std::to_string(object.GetID());
}

std::string ToText(const std::vector<ODF::AttributeText>& attributes) {
    std::string text;
    for (const ODF::AttributeText& attribute : attributes)
        text += ' ' + std::string(attribute.name) + "=\"" + attribute.value + '"';
    return text;
}

void AppendText(const CSDObject& object, std::string& out) {
    out += ODF::TextOf(object);
    if (const std::vector<CSDObject*>* const children = object.GetObjectList())
        for (const CSDObject* const child : *children)
            AppendText(*child, out);
}

void CollectParagraphs(const CSDObject& object, std::vector<std::string>& out) {
    if (object.GetID() == ODF::CTextP::kId || object.GetID() == ODF::CTextH::kId)
        AppendText(object, out.emplace_back());
    if (const std::vector<CSDObject*>* const children = object.GetObjectList())
        for (const CSDObject* const child : *children)
            CollectParagraphs(*child, out);
}

} // namespace

std::string Difference(CSDObject& a, CSDObject& b) {
    const std::string name = NameOf(a);
    if (a.GetID() != b.GetID()) return name + ": the other is " + NameOf(b);
    if (a.GetRootpart() == nullptr || b.GetRootpart() == nullptr) return name + ": belongs to no part";
    if (ODF::TextOf(a) != ODF::TextOf(b))
        return name + ": text \"" + ODF::TextOf(a) + "\", \"" + ODF::TextOf(b) + '"';
    const std::string attributes = ToText(ODF::AttributesOf(a));
    const std::string others = ToText(ODF::AttributesOf(b));
    if (attributes != others) return name + ": attributes" + attributes + ", but" + others;
    const std::vector<Item> items = ItemsOf(a);
    const std::vector<Item> otherItems = ItemsOf(b);
    for (std::size_t i = 0; i < std::min(items.size(), otherItems.size()); ++i) {
        const Item& item = items[i];
        const Item& other = otherItems[i];
        const std::string place = name + '[' + std::to_string(i) + "]/";
        if ((item.element == nullptr) != (other.element == nullptr)) return place + ": text against element";
        if (item.text != other.text) return place + ": text \"" + item.text + "\", \"" + other.text + '"';
        if (!item.element) continue;
        const std::string difference = Difference(*item.element, *other.element);
        if (!difference.empty()) return place + difference;
    }
    if (items.size() != otherItems.size())
        return name + ": " + std::to_string(items.size()) + " children, " + std::to_string(otherItems.size());
    return {};
}

std::map<std::string, CSDObject*> Trees(const ODF::CDocument& document) {
    std::map<std::string, CSDObject*> trees;
    std::vector<ISDPart*> parts;
    if (document.GetRootPart()) document.GetRootPart()->GetChildParts(&parts);
    for (ISDPart* const part : parts) {
        std::string path = ODF::ToUtf8(part->GetPackagePath());
        std::replace(path.begin(), path.end(), '\\', '/');
        if (CSDObject* const root = part->GetRootClass()) trees[path] = root;
    }
    return trees;
}

std::string Difference(const ODF::CDocument& a, const ODF::CDocument& b) {
    const std::map<std::string, CSDObject*> trees = Trees(a);
    std::map<std::string, CSDObject*> others = Trees(b);
    for (const auto& [path, root] : trees) {
        const auto other = others.find(path);
        if (other == others.end()) return path + ": missing";
        const std::string difference = Difference(*root, *other->second);
        if (!difference.empty()) return path + ": " + difference;
        others.erase(other);
    }
    return others.empty() ? std::string() : others.begin()->first + ": not there before";
}

std::vector<std::string> Paragraphs(CSDObject& root) {
    std::vector<std::string> paragraphs;
    CollectParagraphs(root, paragraphs);
    return paragraphs;
}

} // namespace test
