#include "generate/documents.h"

#include <odfmodel/serial/zip.h>

#include <algorithm>
#include <stdexcept>

namespace bench {
namespace {

constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";
constexpr std::string_view kOfficeTypes =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships/";
constexpr std::string_view kRelationshipTypes =
    "http://schemas.openxmlformats.org/package/2006/relationships";

void Add(CSDZip& zip, const std::string& name, std::string text) {
    if (zip.Compress(name, text.data(), static_cast<int>(text.size())) == 0)
        throw std::runtime_error("can not add " + name);
}

/// The links of one part; `count` of them, made by `link(i)` as type and target.
template<typename Link>
std::string Relationships(unsigned count, Link link) {
    std::string out(kDeclaration);
    Put(out, "<Relationships xmlns=\"", kRelationshipTypes, "\">");
    for (unsigned i = 0; i < count; ++i) {
        const auto [type, target] = link(i);
        Put(out, "<Relationship Id=\"rId", i + 1, "\" Type=\"", kOfficeTypes, type, "\" Target=\"", target,
            "\"/>");
    }
    out += "</Relationships>";
    return out;
}

} // namespace

void MakePackage(const std::string& path, unsigned parts) {
    using Link = std::pair<std::string, std::string>;
    CSDZip zip;
    if (zip.CreareZipFile(path) == 0) throw std::runtime_error("can not create " + path);
    // A presentation whose every slide has a picture and links of its own: three members a slide.
    const unsigned slides = std::max(parts / 3, 1U);
    std::string types(kDeclaration);
    types += "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
             "<Default Extension=\"rels\" "
             "ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
             "<Default Extension=\"xml\" ContentType=\"application/xml\"/><Default Extension=\"png\" "
             "ContentType=\"image/png\"/>"
             "<Override PartName=\"/ppt/presentation.xml\" "
             "ContentType=\"application/"
             "vnd.openxmlformats-officedocument.presentationml.presentation.main+xml\"/>";
    for (unsigned i = 1; i <= slides; ++i)
        Put(types, "<Override PartName=\"/ppt/slides/slide", i,
            ".xml\" "
            "ContentType=\"application/vnd.openxmlformats-officedocument.presentationml.slide+xml\"/>");
    types += "</Types>";
    Add(zip, "[Content_Types].xml", types);
    Add(zip, "_rels/.rels",
        Relationships(1, [](unsigned) { return Link("officeDocument", "ppt/presentation.xml"); }));
    Add(zip, "ppt/presentation.xml", std::string(kDeclaration) + "<presentation/>");
    Add(zip, "ppt/_rels/presentation.xml.rels", Relationships(slides, [](unsigned i) {
            return Link("slide", "slides/slide" + std::to_string(i + 1) + ".xml");
        }));
    Random random(5);
    for (unsigned i = 1; i <= slides; ++i) {
        const std::string number = std::to_string(i);
        std::string text(kDeclaration);
        text += "<slide>";
        PutWords(text, random, 100);
        Add(zip, "ppt/slides/slide" + number + ".xml", text + "</slide>");
        Add(zip, "ppt/slides/_rels/slide" + number + ".xml.rels",
            Relationships(1, [&](unsigned) { return Link("image", "../media/image" + number + ".png"); }));
        std::string picture(256, '\0');
        for (char& byte : picture)
            byte = static_cast<char>(random.below(256));
        Add(zip, "ppt/media/image" + number + ".png", picture);
    }
    if (zip.CloseFile() == 0) throw std::runtime_error("can not write " + path);
}

} // namespace bench
