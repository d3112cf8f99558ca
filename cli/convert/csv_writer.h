#pragma once

#include <odfmodel/document/sheet.h>

#include <string>

namespace command {

struct CsvOptions {
    char separator = ',';
};

/// A sheet as comma-separated values, lines ended by a line feed: the texts that the cells show, in quotes
/// where they need them. Copies of repeated rows and cells end at 64 MiB; `isCut` is true then.
std::string WriteCsv(const ODF::Sheet& sheet, const CsvOptions& options, bool& isCut);

} // namespace command
