#pragma once

#include <odfmodel/document/open_document.h>

#include <string>
#include <string_view>

namespace command {

struct CsvInput {
    char separator = ',';
    bool isTextOnly = false; ///< all cells are texts
    std::string sheetName = "Sheet1";
};

/// A spreadsheet with one sheet from comma-separated values, in UTF-8, or UTF-16 with its mark. Numbers with
/// a decimal point and dates such as 2024-01-31 become such; what has leading zeros or more than 15 digits is
/// a text, as other cells are. Characters that no document may hold become U+FFFD.
ODF::Document ReadCsv(std::string_view bytes, const CsvInput& options);

} // namespace command
