// What a debugger is asked to show.
#include <odfmodel/odfmodel.h>

int Stop(const CTulStringW& text, const CSDObject& element, const CSDObject* below) {
    return text.view().empty() || &element == below;
}

int main() {
    ODF::Document document = ODF::Document::New(ODF::DocumentKind::Text);
    auto& list = document.Text()->Append<ODF::CTextList>();
    auto& paragraph = list.Append<ODF::CTextListItem>().Append<ODF::CTextP>();
    list.Append<ODF::CTextListHeader>();
    return Stop(u"Gr\u00FC\u00DFe \U0001F600", list, &paragraph);
}
