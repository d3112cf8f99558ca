#include "generate/documents.h"

#include <array>

namespace bench {

void PutWords(std::string& out, Random& random, unsigned count) {
    constexpr std::array<std::string_view, 40> kWords{
        "the",     "of",      "and",     "a",     "in",       "to",       "document",  "paragraph",
        "is",      "office",  "table",   "with",  "for",      "value",    "on",        "which",
        "chapter", "section", "number",  "as",    "by",       "report",   "quarterly", "figures",
        "from",    "Größe",   "été",     "naïve", "προς",     "данные",   "表計算",    "measurement",
        "between", "results", "however", "an",    "increase", "economic", "several",   "&amp;"};
    for (unsigned i = 0; i < count; ++i) {
        if (i > 0) out += ' ';
        // The rarer words stand in the middle of the list, so that nearly all text is ASCII.
        std::string_view word = random.of(kWords);
        if ((static_cast<unsigned char>(word.front()) & 0x80) != 0 && !random.oneIn(4)) word = "other";
        out += word;
    }
}

std::string Length(Random& random, unsigned centimetres) {
    std::string text;
    const unsigned hundredths = random.below(100);
    Put(text, random.below(centimetres), ".", hundredths / 10, hundredths % 10, "cm");
    return text;
}

std::string Colour(Random& random) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    unsigned value = random.below(200) * 83'521U;
    std::string text = "#";
    for (int i = 0; i < 6; ++i, value /= 16)
        text += kDigits[value % 16];
    return text;
}

std::string WrapContent(std::string_view styles, std::string_view kind, std::string_view body) {
    constexpr std::array<std::array<std::string_view, 2>, 13> kNamespaces{{
        {"office", "office:1.0"},
        {"style", "style:1.0"},
        {"text", "text:1.0"},
        {"table", "table:1.0"},
        {"draw", "drawing:1.0"},
        {"fo", "xsl-fo-compatible:1.0"},
        {"svg", "svg-compatible:1.0"},
        {"meta", "meta:1.0"},
        {"number", "datastyle:1.0"},
        {"presentation", "presentation:1.0"},
        {"chart", "chart:1.0"},
        {"dr3d", "dr3d:1.0"},
        {"form", "form:1.0"},
    }};
    std::string out;
    out.reserve(body.size() + styles.size() + 4096);
    out += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<office:document-content";
    for (const auto& [prefix, name] : kNamespaces)
        Put(out, " xmlns:", prefix, "=\"urn:oasis:names:tc:opendocument:xmlns:", name, "\"");
    Put(out, " xmlns:xlink=\"http://www.w3.org/1999/xlink\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\"",
        " office:version=\"1.2\"><office:automatic-styles>", styles,
        "</office:automatic-styles><office:body><office:", kind, ">", body, "</office:", kind,
        "></office:body></office:document-content>");
    return out;
}

} // namespace bench
