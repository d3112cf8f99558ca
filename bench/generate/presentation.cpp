#include "generate/documents.h"

#include <algorithm>

namespace bench {
namespace {

class SlidesMaker {
public:
    std::string make(unsigned slides) {
        for (unsigned i = 1; i <= slides; ++i)
            slide(i);
        return WrapContent(styles(), "presentation", out_);
    }

private:
    static constexpr unsigned kStyles = 40;

    std::string styles() {
        std::string styles;
        for (unsigned i = 0; i < kStyles; ++i)
            Put(styles, "<style:style style:name=\"gr", i,
                "\" style:family=\"graphic\" style:parent-style-name=\"standard\">",
                "<style:graphic-properties draw:stroke=\"none\" draw:fill=\"solid\" draw:fill-color=\"",
                Colour(random_), "\" draw:textarea-vertical-align=\"middle\"/></style:style>");
        return styles;
    }

    /// The attributes that most shapes have.
    void place(std::string_view element) {
        Put(out_, "<draw:", element, " draw:style-name=\"gr", random_.below(kStyles),
            "\" draw:text-style-name=\"P", random_.below(20), "\" draw:layer=\"layout\" svg:width=\"",
            Length(random_, 20), "\" svg:height=\"", Length(random_, 10), "\" svg:x=\"", Length(random_, 25),
            "\" svg:y=\"", Length(random_, 18), "\"");
    }

    void text(unsigned lines) {
        for (unsigned i = 0; i < lines; ++i) {
            Put(out_, "<text:p text:style-name=\"P", random_.below(20), "\"><text:span text:style-name=\"T",
                random_.below(20), "\">");
            PutWords(out_, random_, random_.between(2, 10));
            out_ += "</text:span></text:p>";
        }
    }

    void shape() {
        switch (random_.below(5)) {
        case 0:
            place("frame");
            out_ += "><draw:text-box>";
            text(random_.between(1, 4));
            out_ += "</draw:text-box></draw:frame>";
            break;
        case 1:
            place("custom-shape");
            out_ += ">";
            text(1);
            Put(out_,
                "<draw:enhanced-geometry svg:viewBox=\"0 0 21600 21600\" draw:type=\"round-rectangle\" "
                "draw:modifiers=\"",
                random_.below(21600), "\" draw:enhanced-path=\"M ?f7 0 X 0 ?f8 L 0 ?f9 Y ?f7 21600 N\">");
            for (unsigned i = 0; i < 4; ++i)
                Put(out_, "<draw:equation draw:name=\"f", i, "\" draw:formula=\"", random_.below(45), "*$0 /",
                    i + 1, "\"/>");
            out_ += "</draw:enhanced-geometry></draw:custom-shape>";
            break;
        case 2:
            place("rect");
            out_ += ">";
            text(1);
            out_ += "</draw:rect>";
            break;
        case 3:
            Put(out_, "<draw:line draw:style-name=\"gr", random_.below(kStyles),
                "\" draw:layer=\"layout\" svg:x1=\"", Length(random_, 25), "\" svg:y1=\"",
                Length(random_, 18), "\" svg:x2=\"", Length(random_, 25), "\" svg:y2=\"", Length(random_, 18),
                "\"/>");
            break;
        default:
            place("frame");
            Put(out_, "><draw:image xlink:href=\"Pictures/", random_.below(400),
                ".png\" xlink:type=\"simple\" xlink:show=\"embed\" xlink:actuate=\"onLoad\"/></draw:frame>");
        }
    }

    void slide(unsigned number) {
        Put(out_, "<draw:page draw:name=\"page", number,
            "\" draw:style-name=\"dp1\" draw:master-page-name=\"Default\">");
        for (unsigned i = 0; i < 16; ++i)
            shape();
        out_ += "<draw:g draw:style-name=\"gr1\">";
        for (unsigned i = 0; i < 4; ++i)
            shape();
        Put(out_,
            "</draw:g><presentation:notes draw:style-name=\"dp2\"><draw:page-thumbnail "
            "draw:style-name=\"gr2\" ",
            "draw:layer=\"layout\" svg:width=\"14.848cm\" svg:height=\"11.136cm\" draw:page-number=\"",
            number, "\" presentation:class=\"page\"/>");
        place("frame");
        out_ += " presentation:class=\"notes\"><draw:text-box>";
        text(3);
        out_ += "</draw:text-box></draw:frame></presentation:notes></draw:page>";
    }

    std::string out_;
    Random random_{3};
};

} // namespace

std::string MakeSlidesContent(double size) {
    return SlidesMaker().make(std::max(static_cast<unsigned>(500 * size), 1U));
}

} // namespace bench
