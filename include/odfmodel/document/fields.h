#pragma once

#include <odfmodel/document/cell_value.h>
#include <odfmodel/export.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// @file
/// Fields that have a name: user fields, variables and placeholders, as forms and letters are filled by.
///
///     ODF::FillField(document, "Customer", "Ada Lovelace");

class CSDObject;

namespace ODF {

class Document;

/// How many places `FillField` has filled; true when there was any.
struct FilledFields {
    std::size_t values = 0;       ///< declarations of user fields, and places that set a variable
    std::size_t shown = 0;        ///< places that show one, those that set a variable included
    std::size_t placeholders = 0; ///< that became text
    explicit operator bool() const noexcept { return values + shown + placeholders > 0; }
};

/// Gives the user field or variable `name` a value, at and below `root`: in its declaration
/// (text:user-field-decl), wherever a variable is set (text:variable-set, text:variable-input), and in the
/// text of all fields that show it. A formula that worked out the value goes. A placeholder
/// (text:placeholder) that shows the name, in angle brackets or without, becomes a span with the value. A
/// number is shown as `CellValue::Shown` has it, until an office suite shows it in the field's own style. An
/// empty value is an empty text. Nothing is filled with a value that isn't valid, or under an empty name.
/// Throws std::bad_alloc without memory; a part is filled then.
ODFMODEL_API FilledFields FillField(CSDObject& root, std::string_view name, const CellValue& value);
/// The same in the content of a document and in its styles, which hold the headers and footers.
ODFMODEL_API FilledFields FillField(Document& document, std::string_view name, const CellValue& value);

/// The names that `FillField` would fill, each once, in the order in which they come first.
ODFMODEL_API std::vector<std::string> FieldNames(const CSDObject& root);
ODFMODEL_API std::vector<std::string> FieldNames(Document& document);

} // namespace ODF
