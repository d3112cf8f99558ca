// Puts the texts of several documents into one, each on a page of its own, with the styles, pictures and
// objects that they need.  move_content OUT.odt IN.odt...
#include <odfmodel/odfmodel.h>

#include <iostream>

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    ODF::Document book = ODF::Document::New(ODF::DocumentKind::Text);
    ODF::Styles styles(book);
    for (int i = 2; i < argc; ++i) {
        ODF::Document chapter;
        const ODF::Result opened = chapter.Open(argv[i]);
        if (!opened || !chapter.Text()) {
            std::cerr << argv[i] << ": " << (opened ? "not a text" : opened.Text()) << '\n';
            return 1;
        }
        ODF::Transfer transfer(chapter, book);
        for (bool isFirst = i > 2; const CSDObject& part : chapter.Text()->Children()) {
            CSDObject* const copy = transfer.Append(part, *book.Text());
            if (copy && isFirst)
                isFirst = !styles.Format<ODF::CStyleParagraphProperties>(
                    *copy, [](auto& paragraph) { paragraph.SetFoBreakBefore(ODF::ST_FoBreakBefore::Page); });
        }
        for (const std::string& name : transfer.Missing())
            std::cerr << argv[i] << ": " << name << " is missing\n";
    }
    return book.Save(argv[1]) ? 0 : 1;
}
