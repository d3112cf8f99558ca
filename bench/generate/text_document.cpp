#include "generate/documents.h"

namespace bench {
namespace {

class TextMaker {
public:
    std::string make(unsigned paragraphs) {
        for (unsigned i = 0; i < paragraphs; ++i) {
            if (i % 40 == 0)
                heading(i);
            else if (i % 500 == 250)
                table(i);
            else if (i % 50 == 25)
                list();
            else
                paragraph();
        }
        return WrapContent(styles(), "text", out_);
    }

private:
    static constexpr unsigned kStyles = 60;

    std::string styles() {
        std::string styles;
        for (unsigned i = 0; i < kStyles; ++i) {
            Put(styles, "<style:style style:name=\"P", i,
                "\" style:family=\"paragraph\" style:parent-style-name=\"Text_20_body\">",
                "<style:paragraph-properties fo:margin-left=\"", Length(random_, 3),
                "\" fo:text-align=\"justify\"/>", "<style:text-properties fo:font-size=\"",
                random_.between(8, 14), "pt\"/></style:style>");
            Put(styles, "<style:style style:name=\"T", i,
                "\" style:family=\"text\"><style:text-properties fo:color=\"", Colour(random_),
                "\" fo:font-weight=\"bold\"/></style:style>");
        }
        return styles;
    }

    void heading(unsigned number) {
        Put(out_, "<text:h text:style-name=\"Heading_20_", number % 3 + 1, "\" text:outline-level=\"",
            number % 3 + 1, "\"><text:bookmark-start text:name=\"_Toc", number, "\"/>");
        PutWords(out_, random_, 6);
        Put(out_, "<text:bookmark-end text:name=\"_Toc", number, "\"/></text:h>");
    }

    void paragraph() {
        Put(out_, "<text:p text:style-name=\"P", random_.below(kStyles), "\">");
        const unsigned pieces = random_.between(2, 7);
        for (unsigned i = 0; i < pieces; ++i) {
            PutWords(out_, random_, random_.between(3, 17));
            out_ += ' ';
            switch (random_.below(12)) {
            case 0:
                note();
                break;
            case 1:
                Put(out_, "<text:a xlink:type=\"simple\" xlink:href=\"https://www.example.org/page/",
                    random_.below(5000), "\">");
                PutWords(out_, random_, 2);
                out_ += "</text:a>";
                break;
            case 2:
                Put(out_, "<text:s text:c=\"", random_.between(2, 6), "\"/>");
                break;
            case 3:
                out_ += "<text:tab/>";
                break;
            case 4:
                out_ += "<text:line-break/>";
                break;
            default:
                Put(out_, "<text:span text:style-name=\"T", random_.below(kStyles), "\">");
                PutWords(out_, random_, random_.between(1, 5));
                out_ += "</text:span>";
            }
        }
        out_ += "</text:p>";
    }

    void note() {
        ++notes_;
        Put(out_, "<text:note text:id=\"ftn", notes_, "\" text:note-class=\"footnote\"><text:note-citation>",
            notes_, "</text:note-citation><text:note-body><text:p text:style-name=\"Footnote\">");
        PutWords(out_, random_, random_.between(5, 25));
        out_ += "</text:p></text:note-body></text:note>";
    }

    void list() {
        out_ += "<text:list text:style-name=\"L1\">";
        for (unsigned i = 0; i < 5; ++i) {
            out_ += "<text:list-item>";
            paragraph();
            out_ += "</text:list-item>";
        }
        out_ += "</text:list>";
    }

    void table(unsigned number) {
        Put(out_, "<table:table table:name=\"Table", number, "\" table:style-name=\"Table1\">",
            "<table:table-column table:style-name=\"Table1.A\" table:number-columns-repeated=\"5\"/>");
        for (unsigned row = 0; row < 8; ++row) {
            out_ += "<table:table-row>";
            for (unsigned column = 0; column < 5; ++column) {
                Put(out_, "<table:table-cell table:style-name=\"Table1.A", row,
                    "\" office:value-type=\"string\">", "<text:p text:style-name=\"Table_20_Contents\">");
                PutWords(out_, random_, 3);
                out_ += "</text:p></table:table-cell>";
            }
            out_ += "</table:table-row>";
        }
        out_ += "</table:table>";
    }

    std::string out_;
    Random random_{1};
    unsigned notes_ = 0;
};

} // namespace

std::string MakeTextContent(double size) {
    return TextMaker().make(static_cast<unsigned>(100'000 * size));
}

} // namespace bench
