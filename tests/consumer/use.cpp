// A program from outside: makes a document, and reads it again.
#include <odfmodel/odfmodel.h>
#include <odfmodel/version.h>

#include <iostream>

int main() {
    ODF::Document document = ODF::Document::New(ODF::DocumentKind::Text);
    ODF::SetText(document.Text()->Append<ODF::CTextP>(), "from outside");
    std::vector<unsigned char> bytes;
    ODF::Document again;
    if (!document.Save(bytes) || !again.Open(bytes)) return 1;
    std::cout << ODF::Text(*again.Text()) << '\n';
}
