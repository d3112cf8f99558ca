#include "generate/documents.h"

#include <array>

namespace bench {
namespace {

void PutLengths(std::string& out, Random& random, std::string_view element,
                std::initializer_list<std::string_view> names) {
    Put(out, "<style:", element);
    for (const std::string_view name : names)
        Put(out, " ", name, "=\"", Length(random, 20), "\"");
}

void GraphicStyle(std::string& out, Random& random) {
    PutLengths(out, random, "graphic-properties", {"svg:stroke-width", "fo:margin-left", "fo:padding"});
    Put(out, " draw:fill-color=\"", Colour(random), "\"/>");
}

void ParagraphStyle(std::string& out, Random& random) {
    PutLengths(out, random, "paragraph-properties", {"fo:margin-left", "fo:text-indent"});
    out += "/>";
}

void TextStyle(std::string& out, Random& random) {
    Put(out, "<style:text-properties fo:font-size=\"", random.between(6, 40), "pt\" fo:color=\"",
        Colour(random), "\"");
    if (random.oneIn(3)) out += " fo:font-weight=\"bold\"";
    out += "/>";
}

} // namespace

std::string MakeStylesContent(double size) {
    constexpr std::array<std::string_view, 3> kFamilies{"graphic", "paragraph", "text"};
    Random random(4);
    std::string styles;
    for (unsigned i = 0; i < static_cast<unsigned>(20'000 * size); ++i) {
        const unsigned family = i % kFamilies.size();
        Put(styles, "<style:style style:name=\"S", i, "\" style:family=\"", kFamilies[family],
            "\" style:parent-style-name=\"Standard\">");
        if (family == 0) GraphicStyle(styles, random);
        if (family <= 1) ParagraphStyle(styles, random);
        TextStyle(styles, random);
        styles += "</style:style>";
    }
    return WrapContent(styles, "text", "<text:p/>");
}

} // namespace bench
