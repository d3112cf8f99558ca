// Opens any document and tells what is in it.  look FILE
#include <odfmodel/odfmodel.h>

#include <iostream>
#include <map>

int main(int argc, char** argv) {
    ODF::Document document;
    const ODF::Result opened = document.Open(argc > 1 ? argv[1] : "");
    if (!document.IsOpen()) {
        std::cerr << opened.Text() << '\n';
        return 1;
    }
    std::cout << document.MediaType() << ", version " << document.Version() << '\n'
              << document.Members().size() << " members, " << document.Objects().size()
              << " embedded objects\n";
    std::map<std::string_view, int> counts;
    if (const CSDObject* body = document.Body())
        for (const CSDObject& object : body->Descendants())
            if (const auto info = ODF::ClassOf(object)) ++counts[info->elementName()];
    for (const auto& [name, count] : counts)
        std::cout << count << " x " << name << '\n';
    if (const CSDObject* text = document.Text())
        for (const ODF::CTextH& heading : text->Descendants<ODF::CTextH>())
            std::cout << std::string(std::size_t{2} * heading.TextOutlineLevel().value_or(1), ' ')
                      << ODF::Text(heading) << '\n';
}
