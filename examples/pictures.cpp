// Puts pictures into a text, and gets all pictures of it out again.  pictures IN.odt OUT.odt FOLDER
// [PICTURE...]
#include <odfmodel/odfmodel.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>

int main(int argc, char** argv) {
    ODF::Document document;
    if (argc < 4 || !document.Open(argv[1]) || !document.Text()) return 1;
    for (int i = 4; i < argc; ++i) {
        const std::filesystem::path file = argv[i];
        ODF::Result result;
        if (!ODF::PlacePicture(document, document.Text()->Append<ODF::CTextP>(), file,
                               {.width = ODF::Length::Centimeters(8), .description = file.stem().string()},
                               &result))
            std::cerr << result.Text() << '\n';
    }
    for (const auto& image : document.Body()->Descendants<ODF::CDrawImage>()) {
        std::vector<unsigned char> bytes;
        const std::string name = image.XlinkHref().value_or("").utf8();
        if (!document.HasMember(name) || !document.ReadMember(name, bytes)) continue; // a link to elsewhere
        // Names come from the file: only the last part may decide where something is written.
        std::ofstream out(std::filesystem::path(argv[3]) / std::filesystem::path(name).filename(),
                          std::ios::binary);
        std::copy(bytes.begin(), bytes.end(), std::ostreambuf_iterator<char>(out));
        std::cout << name << ", " << document.MediaTypeOf(name) << ", " << bytes.size() << " bytes\n";
    }
    return document.Save(argv[2]) ? 0 : 1;
}
