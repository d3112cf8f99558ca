#pragma once

#include "serial/xml/name_table.h"

#include <odfmodel/core/attribute.h>
#include <odfmodel/core/limits.h>

#include <deque>
#include <string_view>
#include <vector>

namespace ODF::xml {

/// What about the attributes of a start tag is beyond the limits; null when nothing is.
const char* BeyondLimits(Attributes attributes, const Limits& limits) noexcept;

/// The attributes of a start tag for handlers and callers' own classes. Values become UTF-16 when they are
/// asked for.
class ReadAttributeList final : public CSDAttribute {
public:
    void clear();
    void add(std::string_view qname, const ResolvedName& name, std::string_view value);

    const unsigned short* GetValue(const unsigned short* qName) override;
    const unsigned short* GetValue(const unsigned short* uri, const unsigned short* localName) override;

private:
    struct Item {
        std::string_view qname;
        const ResolvedName* name;
        std::string_view value;
        CTulStringW text;
        bool isConverted = false;
    };
    static const unsigned short* valueOf(Item& item);

    std::vector<Item> items_;
};

/// The attributes of an element about to be written, as `WriteElement` of a caller's own class adds them.
class WriteAttributeList final : public CSDAttribute {
public:
    struct Item {
        CTulStringW uri; ///< empty for a name that is written exactly so
        CTulStringW name;
        CTulStringW value; ///< escaped already
    };

    using CSDAttribute::GetValue;
    const unsigned short* GetValue(const unsigned short* qName) override;
    const unsigned short* GetValue(const unsigned short* uri, const unsigned short* localName) override;
    void AddAttribute(const unsigned short* qName, const unsigned short* value) override;
    void AddAttribute(const unsigned short* uri, const unsigned short* localName,
                      const unsigned short* value) override;

    const std::vector<Item>& items() const noexcept { return items_; }

private:
    std::vector<Item> items_;
};

} // namespace ODF::xml
