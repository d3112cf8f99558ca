#include "convert/format.h"

#include "kinds.h"

namespace command {
namespace {

struct Row {
    std::string_view word;
    Format format;
};

constexpr Row kRows[] = {
    {"txt", Format::Text},          {"text", Format::Text}, {"md", Format::Markdown},
    {"markdown", Format::Markdown}, {"html", Format::Html}, {"htm", Format::Html},
    {"csv", Format::Csv},           {"tsv", Format::Csv},   {"flat", Format::Flat},
    {"package", Format::Package},
};

} // namespace

std::optional<Target> TargetOf(std::string_view word) {
    for (const Row& row : kRows)
        if (row.word == word) return Target{row.format, word == "tsv" ? "tsv" : std::string()};
    const FileKind kind = KindOfFileName("." + std::string(word));
    if (kind.kind == ODF::DocumentKind::Unknown) return std::nullopt;
    return Target{kind.isFlat ? Format::Flat : Format::Package, std::string(word)};
}

bool IsCsvName(std::string_view name) {
    const std::string extension = ExtensionOf(name);
    return extension == "csv" || extension == "tsv";
}

std::vector<std::string> TargetWords() {
    return {"txt", "md", "html", "csv", "tsv", "flat", "package"};
}

} // namespace command
