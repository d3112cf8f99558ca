// Documents as one XML file and back.
#include "support/corpus.h"
#include "support/packages.h"
#include "support/workspace.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/document/document_text.h>
#include <odfmodel/document/flat.h>
#include <odfmodel/elements/elements.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using ODF::Document;

/// The elements at and below the child of one class, a line each, without the lists of automatic styles and
/// fonts, whose order means nothing.
template<typename T>
std::vector<std::string> LinesOf(CSDObject* root) {
    std::vector<std::string> lines;
    std::vector<CSDObject*> open;
    if (CSDObject* const child = root ? root->Child<T>() : nullptr) open.push_back(child);
    while (!open.empty()) {
        CSDObject* const object = open.back();
        open.pop_back();
        if (object->GetID() == ODF::COfficeAutomaticStyles::kId ||
            object->GetID() == ODF::COfficeFontFaceDecls::kId)
            continue;
        const auto info = ODF::ClassOf(*object);
        std::string line = info ? std::string(info->elementName()) : std::string();
        for (const ODF::AttributeText& attribute : ODF::AttributesOf(*object))
            line.append(" ").append(attribute.name).append("=").append(attribute.value);
        lines.push_back(line + " " + ODF::TextOf(*object));
        std::vector<CSDObject*> children;
        for (CSDObject& below : object->Children())
            children.push_back(&below);
        open.insert(open.end(), children.rbegin(), children.rend());
    }
    return lines;
}

template<typename T>
void ExpectSame(Document& a, Document& b) {
    const std::vector<std::string> one = LinesOf<T>(a.Flat());
    const std::vector<std::string> other = LinesOf<T>(b.Flat());
    const auto [at, in] = std::mismatch(one.begin(), one.end(), other.begin(), other.end());
    EXPECT_TRUE(at == one.end() && in == other.end())
        << (at == one.end() ? "(end)" : at->substr(0, 300)) << "\n"
        << (in == other.end() ? "(end)" : in->substr(0, 300));
}

TEST(Flat, ThereAndBackKeepsWhatADocumentSays) {
    std::size_t count = 0;
    for (const test::Sample& sample : test::GoodSamples()) {
        SCOPED_TRACE(sample.name);
        Document document;
        ODF::OpenOptions options;
        options.password = sample.password;
        ASSERT_TRUE(document.Open(sample.path, options));
        Document flat;
        if (sample.isFlat()) {
            ASSERT_TRUE(flat.Open(sample.path));
        } else if (sample.isFormula()) {
            EXPECT_EQ(ODF::ToFlat(document, flat).Code(), ODF::Status::UnknownType);
            EXPECT_FALSE(flat.IsOpen());
            continue;
        } else {
            ASSERT_TRUE(ODF::ToFlat(document, flat));
        }
        Document package;
        ASSERT_TRUE(ODF::ToPackage(flat, package));
        EXPECT_EQ(package.MediaType(), document.MediaType());
        Document again;
        ASSERT_TRUE(ODF::ToFlat(package, again));
        const std::string text = ODF::DocumentText(document);
        EXPECT_EQ(ODF::DocumentText(flat), text);
        EXPECT_EQ(ODF::DocumentText(package), text);
        // With pictures and objects in the body, and the names of styles that the master pages use.
        ExpectSame<ODF::COfficeBody>(again, flat);
        ExpectSame<ODF::COfficeStyles>(again, flat);
        ExpectSame<ODF::COfficeMasterStyles>(again, flat);
        ++count;
    }
    EXPECT_GE(count, 5U);
}

using FlatPackage = test::InWorkspace<testing::Test>;

std::string Part(std::string_view root, std::string_view content) {
    std::string xml = "<office:" + std::string(root);
    for (const char* const prefix : {"office", "style", "text", "fo", "draw", "xlink"})
        xml += " xmlns:" + std::string(prefix) + "=\"" + std::string(ODF::NamespaceOfPrefix(prefix)) + "\"";
    return xml + ">" + std::string(content) + "</office:" + std::string(root) + ">";
}

std::string Style(const std::string& color) {
    return "<office:automatic-styles><style:style style:name=\"P1\" style:family=\"paragraph\">"
           "<style:text-properties fo:color=\"" +
           color +
           "\"/></style:style><style:style style:name=\"P1\" "
           "style:family=\"text\"/></office:automatic-styles>";
}

TEST_F(FlatPackage, StylesOfOneNameStayApartAndLinksLeadToTheSamePlace) {
    const std::string path = file("in.odt");
    test::WriteOdf(
        path, test::kTextType,
        {{"content.xml",
          Part(
              "document-content",
              Style("#000001") +
                  "<office:body><office:text><text:p text:style-name=\"P1\"><text:a xlink:href=\"../x.odt\">x"
                  "</text:a><text:a xlink:href=\"http://x.org/\">y</text:a><draw:frame><draw:image "
                  "xlink:href=\"Pictures/a%20b.png\"/></draw:frame></text:p></office:text></office:body>")},
         {"styles.xml",
          Part("document-styles",
               Style("#000002") + "<office:master-styles><style:master-page style:name=\"M\"><style:header>"
                                  "<text:p text:style-name=\"P1\"><text:span text:style-name=\"P1\"/>"
                                  "</text:p></style:header></style:master-page></office:master-styles>")},
         {"Pictures/a b.png", "\x89PNG picture"},
         {"Basic/code.xml", "<code/>"}});
    Document document;
    ASSERT_TRUE(document.Open(path));
    Document flat;
    const ODF::Result made = ODF::ToFlat(document, flat);
    ASSERT_TRUE(made);
    ASSERT_EQ(made.Notes().size(), 1U) << "what is left out is told";
    EXPECT_EQ(made.Notes()[0].member, "Basic/code.xml");
    EXPECT_EQ(made.Notes()[0].severity, ODF::Severity::Warning);
    EXPECT_TRUE(document.Content()) << "the package is as it was";

    const auto colorFor = [](CSDObject& paragraph, CSDObject& root) {
        const std::string style = ODF::AttributeOf(paragraph, "text:style-name");
        std::string color;
        for (const auto& one : root.Child<ODF::COfficeAutomaticStyles>()->Children<ODF::CStyleStyle>())
            if (const auto* const look = one.Child<ODF::CStyleTextProperties>())
                if (ODF::AttributeOf(one, "style:name") == style) color = ODF::AttributeOf(*look, "fo:color");
        return color;
    };
    ODF::COfficeDocument& root = *flat.Flat();
    auto& inBody = *root.Child<ODF::COfficeBody>()->Descendants<ODF::CTextP>().begin();
    auto& inHeader = *root.Child<ODF::COfficeMasterStyles>()->Descendants<ODF::CTextP>().begin();
    EXPECT_EQ(colorFor(inBody, root), "#000001");
    EXPECT_EQ(colorFor(inHeader, root), "#000002");
    EXPECT_EQ(ODF::AttributeOf(*inHeader.Child<ODF::CTextSpan>(), "text:style-name"), "P1")
        << "of another family, and the same in both parts";
    std::vector<std::string> links;
    const auto gather = [&links](CSDObject& from) {
        links.clear();
        for (CSDObject& object : from.Descendants())
            if (object.HasAttribute("xlink:href")) links.push_back(ODF::AttributeOf(object, "xlink:href"));
    };
    gather(root);
    EXPECT_EQ(links, (std::vector<std::string>{"x.odt", "http://x.org/"}));

    Document package;
    ASSERT_TRUE(ODF::ToPackage(flat, package));
    gather(*package.Content());
    ASSERT_EQ(links.size(), 3U);
    EXPECT_EQ(links[0], "../x.odt");
    EXPECT_EQ(links[1], "http://x.org/");
    std::vector<unsigned char> picture;
    ASSERT_TRUE(package.ReadMember(links[2], picture));
    EXPECT_EQ(std::string(picture.begin(), picture.end()), "\x89PNG picture");
    auto& header = *package.Styles()->Descendants<ODF::CTextP>().begin();
    EXPECT_EQ(colorFor(header, *package.Styles()), "#000002");
    auto& body = *package.Content()->Descendants<ODF::CTextP>().begin();
    EXPECT_EQ(colorFor(body, *package.Content()), "#000001");
    EXPECT_EQ(ODF::ToFlat(flat, package).Code(), ODF::Status::NothingToSave);
    EXPECT_EQ(ODF::ToPackage(document, package).Code(), ODF::Status::NothingToSave);
}

TEST_F(FlatPackage, ObjectsThatAreShownOverAndOverAreBounded) {
    // Each level shows the next one sixteen times: 16^8 copies of the last.
    test::Members members;
    std::string folder;
    for (int level = 0; level < 9; ++level) {
        std::string body;
        for (int i = 0; i < 16 && level < 8; ++i)
            body += "<text:p><draw:frame><draw:object xlink:href=\"./O\"/></draw:frame></text:p>";
        members[folder + "content.xml"] =
            Part("document-content", "<office:body><office:text>" + body + "</office:text></office:body>");
        folder += "O/";
    }
    test::WriteOdf(file("bomb.odt"), test::kTextType, members);
    Document document;
    ASSERT_TRUE(document.Open(file("bomb.odt")));
    Document flat;
    EXPECT_EQ(ODF::ToFlat(document, flat).Code(), ODF::Status::LimitExceeded);
    EXPECT_FALSE(flat.IsOpen());
}

} // namespace
