#include "kinds.h"

#include <algorithm>

namespace command {
namespace {

using ODF::DocumentKind;

struct Row {
    DocumentKind kind;
    std::string_view word;
    std::string_view extension;
    std::string_view templates; ///< extension
    std::string_view flat;      ///< extension
};

constexpr Row kRows[] = {
    {DocumentKind::Text, "text", "odt", "ott", "fodt"},
    {DocumentKind::Spreadsheet, "spreadsheet", "ods", "ots", "fods"},
    {DocumentKind::Presentation, "presentation", "odp", "otp", "fodp"},
    {DocumentKind::Drawing, "drawing", "odg", "otg", "fodg"},
    {DocumentKind::Chart, "chart", "odc", "otc", ""},
    {DocumentKind::Image, "image", "odi", "oti", ""},
    {DocumentKind::Formula, "formula", "odf", "otf", ""},
    {DocumentKind::MasterText, "master", "odm", "otm", ""},
    {DocumentKind::WebText, "web", "oth", "", ""},
};

} // namespace

std::string ExtensionOf(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || name.find('/', dot) != std::string_view::npos) return {};
    std::string extension(name.substr(dot + 1));
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return extension;
}

FileKind KindOfFileName(std::string_view name) {
    const std::string extension = ExtensionOf(name);
    if (extension.empty()) return {};
    for (const Row& row : kRows) {
        if (extension == row.extension) return {row.kind, false, false};
        if (extension == row.templates) return {row.kind, false, true};
        if (extension == row.flat) return {row.kind, true, false};
    }
    return {};
}

ODF::DocumentKind KindOfWord(std::string_view word) {
    const auto* const row =
        std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& r) { return r.word == word; });
    return row == std::end(kRows) ? DocumentKind::Unknown : row->kind;
}

std::vector<std::string> KindWords() {
    std::vector<std::string> words;
    for (const Row& row : kRows)
        words.emplace_back(row.word);
    return words;
}

std::string ExtensionFor(ODF::DocumentKind kind, bool isFlat, bool isTemplate) {
    for (const Row& row : kRows)
        if (row.kind == kind)
            return std::string(isFlat ? row.flat : isTemplate ? row.templates : row.extension);
    return {};
}

} // namespace command
