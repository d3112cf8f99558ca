// What departs from the table of the paragraph family.
#include "classes.h"

#include <odfmodel/elements/text/paragraph.h>

namespace ODF {

void CTextA::Merge(const CTextA& other) {
    const ClassDescriptor& table = tables::CTextA;
    for (unsigned row = 0; row < table.attributeCount; ++row) {
        if (table.attributes[row].kind == ValueKind::String) {
            CTulStringW mine;
            CTulStringW theirs;
            const bool optional = table.attributes[row].has(AttributeRow::kOptional);
            // A required text counts as lacking while it is empty, an optional one while it is absent.
            const bool lacks = !GetAttribute(table, row, mine) || (!optional && mine.IsEmpty());
            if (lacks && other.GetAttribute(table, row, theirs)) SetAttribute(table, row, theirs);
        } else if (int value = 0; !HasAttribute(table, row) && other.GetAttribute(table, row, value)) {
            SetAttribute(table, row, value);
        }
    }
}

} // namespace ODF
