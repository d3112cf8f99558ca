// Makes slides of an outline: a line "# Title" begins a slide, "! picture.png" puts a picture on it, other
// lines are its points.  slides OUTLINE.txt OUT.odp
#include <odfmodel/odfmodel.h>

#include <fstream>

using namespace ODF;

/// A frame of the slide with the text box that the master page has in this place.
CDrawTextBox& AddBox(CDrawPage& slide, const CDrawFrame& model) {
    auto& frame = slide.Append<CDrawFrame>();
    for (const AttributeText& attribute : AttributesOf(model))
        if (attribute.name != "presentation:placeholder" && attribute.name != "draw:layer")
            SetAttributeText(frame, attribute.name, attribute.value);
    return frame.Append<CDrawTextBox>();
}

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    Document document = Document::New(DocumentKind::Presentation);
    COfficePresentation& show = *document.Presentation();
    show.Remove(*show.Child<CDrawPage>());
    const CStyleMasterPage& master = *Styles(document).Find<CStyleMasterPage>("Default");

    std::ifstream outline(argv[1]);
    CDrawPage* slide = nullptr;
    CTextList* points = nullptr;
    for (std::string line; std::getline(outline, line);) {
        if (line.starts_with("# ")) {
            slide = &show.Append<CDrawPage>();
            slide->SetDrawName(line.substr(2));
            slide->SetDrawMasterPageName(master.GetStyleName());
            SetText(AddBox(*slide, *master.Children<CDrawFrame>().begin()).Append<CTextP>(), line.substr(2));
            points = nullptr;
        } else if (slide && line.starts_with("! ")) {
            PlacePicture(
                document, *slide, std::filesystem::path(argv[1]).parent_path() / line.substr(2),
                {.width = Length::Centimeters(6), .x = Length::Centimeters(20), .y = Length::Centimeters(9)});
        } else if (slide && !line.empty()) {
            if (!points)
                points = &AddBox(*slide, *++master.Children<CDrawFrame>().begin()).Append<CTextList>();
            SetText(points->Append<CTextListItem>().Append<CTextP>(), line);
        }
    }
    return document.Save(argv[2]) ? 0 : 1;
}
