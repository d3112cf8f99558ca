#include <odfmodel/document/format_use.h>

#include "core/object_access.h"

#include <odfmodel/core/foreign.h>

#include <map>
#include <utility>

namespace ODF {
namespace {

class Uses {
public:
    explicit Uses(FormatVersion version) : version_(version) {}

    void add(const CSDObject& object) {
        const ClassDescriptor* const table = ObjectAccess::descriptor(object);
        if (!table || ObjectAccess::isMarkup(object)) {
            if (ObjectAccess::isForeign(object)) addForeign(object);
            return;
        }
        if (table->since > version_)
            count(table->elementName, table->since);
        else
            addAsChild(object, *table);
        AttributeSlots::forEach(ObjectAccess::slots(object), table->words(),
                                [&](unsigned row, const std::uint64_t* slot) {
                                    if (row < table->attributeCount)
                                        addAttribute(*table, table->attributes[row], slot);
                                });
        if (ObjectAccess::extras(object))
            for (const ForeignAttribute& attribute : ForeignAttributesOf(object))
                count(std::string(table->elementName) + '@' +
                          NameIn(attribute.namespaceUri, attribute.localName),
                      FormatVersion::Extended);
    }

    std::vector<LaterUse> take() {
        std::vector<LaterUse> result;
        for (auto& [name, use] : counts_)
            result.push_back({name, use.first, use.second});
        return result;
    }

private:
    static std::string NameIn(const std::string& uri, const std::string& local) {
        if (uri.empty()) return local;
        const std::string_view prefix = PrefixOfNamespace(uri);
        return prefix.empty() ? '{' + uri + '}' + local : std::string(prefix) + ':' + local;
    }

    void count(std::string name, FormatVersion since) {
        auto& [version, times] = counts_[std::move(name)];
        version = since;
        ++times;
    }

    void addForeign(const CSDObject& object) {
        const auto& element = static_cast<const CForeignElement&>(object);
        count(NameIn(element.GetNamespace(), element.GetLocalName()), FormatVersion::Extended);
    }

    /// An element that is older than its place.
    void addAsChild(const CSDObject& object, const ClassDescriptor& table) {
        const CSDObject* const parent = object.Parent();
        const ClassDescriptor* const above = parent ? ObjectAccess::descriptor(*parent) : nullptr;
        if (!above || !above->children) return;
        const ChildRow* const row = above->children->find(table.id);
        if (row && row->since > version_ && row->since > above->since)
            count(std::string(above->elementName) + '/' + row->utf8Name, row->since);
    }

    void addAttribute(const ClassDescriptor& table, const AttributeRow& row, const std::uint64_t* slot) {
        if (row.since > version_) {
            // Those of a later element came with it.
            if (row.since > table.since) count(std::string(table.elementName) + '@' + row.name, row.since);
            return;
        }
        const AttributeValue value{row, slot};
        if (!value.isKey()) return;
        const FormatVersion since = row.enumeration->since(static_cast<int>(value.whole()));
        if (since > version_)
            count(std::string(table.elementName) + '@' + row.name + '=' + ToUtf8(value.key()), since);
    }

    FormatVersion version_;
    std::map<std::string, std::pair<FormatVersion, std::size_t>> counts_;
};

} // namespace

std::vector<LaterUse> UsesAfter(FormatVersion version, const CSDObject& tree) {
    Uses uses(version);
    uses.add(tree);
    for (const CSDObject& object : tree.Descendants())
        uses.add(object);
    return uses.take();
}

} // namespace ODF
