// Adds data of one's own to a document, and shows what in it no class lists.  fidelity IN OUT
#include <odfmodel/odfmodel.h>

#include <iostream>
#include <map>

int main(int argc, char** argv) {
    ODF::Document document;
    if (argc != 3 || !document.Open(argv[1])) return 1;
    // One's own data may go along, in a namespace of one's own.
    if (CSDObject* body = document.Body()) {
        ODF::SetForeignAttribute(*body, "urn:example:review", "review:state", "checked");
        std::cout << "state: "
                  << ODF::GetForeignAttribute(*body, "urn:example:review", "state").value_or("none") << '\n';
    }

    std::map<std::string, int> foreign;
    if (const CSDObject* content = document.Content())
        for (const CSDObject& object : content->Descendants()) {
            for (const ODF::ForeignAttribute& attribute : ODF::ForeignAttributesOf(object))
                ++foreign["attribute " + attribute.prefix + ':' + attribute.localName];
            if (object.GetID() == ODF::kForeignElementId) ++foreign["elements of no class"];
            if (object.GetID() == ODF::kCommentId) ++foreign["comments"];
        }
    for (const auto& [what, count] : foreign)
        std::cout << count << " x " << what << '\n';
    return document.Save(argv[2]) ? 0 : 1;
}
