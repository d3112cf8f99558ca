// Writes all of a document in one font.  change_font IN OUT FONT
#include <odfmodel/odfmodel.h>

int main(int argc, char** argv) {
    ODF::Document document;
    if (argc != 4 || !document.Open(argv[1])) return 1;
    // Whatever has properties of text may name a font, by one of two attributes for each group of scripts.
    for (CSDObject* root : document.Roots())
        for (auto& text : root->Descendants<ODF::CStyleTextProperties>())
            for (const char* name : {"fo:font-family", "style:font-family-asian", "style:font-family-complex",
                                     "style:font-name", "style:font-name-asian", "style:font-name-complex"})
                text.Unset(name);
    // Where no style says anything, the defaults hold.
    ODF::Styles styles(document);
    for (const auto family : {ODF::ST_StyleFamily::Paragraph, ODF::ST_StyleFamily::Graphic,
                              ODF::ST_StyleFamily::TableCell, ODF::ST_StyleFamily::Chart})
        if (CSDObject* style = styles.Default(family)) {
            auto& text = ODF::PropertiesOf<ODF::CStyleTextProperties>(*style);
            text.SetFoFontFamily(argv[3]);
            text.SetStyleFontFamilyAsian(argv[3]);
            text.SetStyleFontFamilyComplex(argv[3]);
        }
    return document.Save(argv[2]) ? 0 : 1;
}
