#include "generate/documents.h"

#include <algorithm>
#include <array>

namespace bench {
namespace {

constexpr unsigned kColumns = 50;

class SheetMaker {
public:
    std::string make(unsigned cells) {
        out_ += "<table:table table:name=\"Data\" table:style-name=\"ta1\">"
                "<table:table-column table:style-name=\"co1\" table:number-columns-repeated=\"50\" "
                "table:default-cell-style-name=\"Default\"/>";
        for (unsigned row = 0; row < std::max(cells / kColumns, 1U); ++row) {
            out_ += "<table:table-row table:style-name=\"ro1\">";
            for (unsigned column = 0; column < kColumns; ++column)
                cell(column);
            out_ += "</table:table-row>";
            // An empty row or a run of them, as real sheets have.
            if (random_.oneIn(100))
                Put(out_, "<table:table-row table:style-name=\"ro1\" table:number-rows-repeated=\"",
                    random_.between(2, 9),
                    "\"><table:table-cell table:number-columns-repeated=\"50\"/></table:table-row>");
        }
        out_ += "</table:table>";
        return WrapContent(styles(), "spreadsheet", out_);
    }

private:
    std::string styles() {
        std::string styles;
        for (unsigned i = 0; i < kColumns; ++i)
            Put(styles, "<style:style style:name=\"ce", i,
                "\" style:family=\"table-cell\" style:parent-style-name=\"Default\">",
                "<style:table-cell-properties fo:background-color=\"", Colour(random_), "\"/></style:style>");
        return styles;
    }

    void open(unsigned column, std::string_view type) {
        Put(out_, "<table:table-cell table:style-name=\"ce", column, "\" office:value-type=\"", type, "\"");
    }

    void close(std::string_view shown) { Put(out_, "><text:p>", shown, "</text:p></table:table-cell>"); }

    void cell(unsigned column) {
        std::string value;
        switch (random_.below(20)) {
        case 0:
            Put(out_, "<table:table-cell table:style-name=\"ce", column, "\"/>"); // coloured but empty
            return;
        case 1:
            Put(value, "2", random_.between(100, 999), "-0", random_.between(1, 9), "-",
                random_.between(10, 28));
            open(column, "date");
            Put(out_, " office:date-value=\"", value, "\"");
            close(value);
            return;
        case 2:
            Put(value, "0.", random_.between(10, 99));
            open(column, "percentage");
            Put(out_, " office:value=\"", value, "\"");
            close(value.substr(2) + "%");
            return;
        case 3:
            Put(value, random_.below(1000));
            Put(out_, "<table:table-cell table:style-name=\"ce", column, "\" table:formula=\"of:=SUM([.A",
                random_.below(20'000) + 1, ":.C", random_.below(20'000) + 1,
                "])\" office:value-type=\"float\" office:value=\"", value, "\"");
            close(value);
            return;
        case 4:
        case 5:
        case 6:
        case 7:
        case 8:
            // One text in two is out of a few, such as the names of products.
            if (random_.oneIn(2))
                Put(value, "Product ", random_.below(300));
            else
                PutWords(value, random_, random_.between(1, 5));
            open(column, "string");
            close(value);
            return;
        default:
            Put(value, random_.below(100'000), ".", random_.between(1, 9));
            if (random_.oneIn(3)) Put(value, random_.between(1, 9), random_.between(1, 9));
            open(column, "float");
            Put(out_, " office:value=\"", value, "\"");
            close(value);
        }
    }

    std::string out_;
    Random random_{2};
};

} // namespace

std::string MakeSheetContent(double size) {
    return SheetMaker().make(static_cast<unsigned>(1'000'000 * size));
}

} // namespace bench
