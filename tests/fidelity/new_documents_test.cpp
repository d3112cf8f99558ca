// New documents: valid as they are, after a trip, and with something in them.

#include "support/canonical.h"
#include "support/schema.h"

#include <odfmodel/odfmodel.h>

#include <gtest/gtest.h>

#include <map>

namespace {

using ODF::Document;
using ODF::DocumentKind;

constexpr DocumentKind kKinds[] = {
    DocumentKind::Text,    DocumentKind::Spreadsheet, DocumentKind::Presentation,
    DocumentKind::Drawing, DocumentKind::Formula,     DocumentKind::Chart,
    DocumentKind::Image,   DocumentKind::MasterText,  DocumentKind::WebText,
};

/// The members with a tree, as they would be saved.
std::map<std::string, std::string> Trees(Document& document) {
    std::map<std::string, std::string> trees;
    for (const std::string& name : document.Trees()) {
        std::vector<unsigned char> bytes;
        EXPECT_TRUE(document.ReadMember(name, bytes)) << name;
        trees[name].assign(bytes.begin(), bytes.end());
    }
    return trees;
}

/// `document` saved and opened again.
Document Trip(Document& document) {
    std::vector<unsigned char> bytes;
    EXPECT_TRUE(document.Save(bytes));
    Document opened;
    EXPECT_TRUE(opened.Open(bytes)) << document.MediaType();
    return opened;
}

} // namespace

TEST(NewDocuments, KeepTheirKindAndContentsOnATrip) {
    for (const DocumentKind kind : kKinds) {
        Document made = Document::New(kind);
        ASSERT_TRUE(made.IsOpen()) << static_cast<int>(kind);
        Document opened = Trip(made);
        EXPECT_EQ(opened.Kind(), kind) << made.MediaType();
        EXPECT_TRUE(opened.IsWhole()) << made.MediaType();
        EXPECT_EQ(opened.Members(), made.Members());
        const auto after = Trees(opened);
        for (const auto& [name, xml] : Trees(made))
            EXPECT_EQ(test::CanonicalDifference(xml, after.at(name)), "") << made.MediaType() << ' ' << name;
        EXPECT_EQ(made.Body() != nullptr, kind != DocumentKind::Formula);
    }
    EXPECT_FALSE(Document::New(DocumentKind::Unknown).IsOpen());
    EXPECT_FALSE(Document::New(DocumentKind::Database).IsOpen());
}

TEST(NewDocuments, AreValid) {
    if (!test::HasSchemas()) GTEST_SKIP() << "the schemas of the format aren't there";
    const test::Schema documents("odf1.2.rng");
    const test::Schema formulas("mathml3.rng");
    EXPECT_NE(documents.fault("<a/>"), "");
    EXPECT_NE(formulas.fault("<a/>"), "");
    for (const DocumentKind kind : kKinds) {
        Document document = Document::New(kind);
        if (ODF::COfficeText* const text = document.Text()) text->SetTextP()->SetText("a");
        Document opened = Trip(document);
        for (const auto& [name, xml] : Trees(opened)) {
            const bool isFormula = test::RootElement(xml).second == "math";
            EXPECT_EQ((isFormula ? formulas : documents).fault(xml), "")
                << document.MediaType() << ' ' << name;
        }
    }
}

TEST(NewDocuments, NameNoStyleThatTheyLack) {
    for (const DocumentKind kind : kKinds) {
        Document document = Document::New(kind);
        std::string all;
        for (const auto& [name, xml] : Trees(document))
            all += xml;
        for (const std::string_view attribute :
             {"style-name=\"", "master-page-name=\"", "page-layout-name=\"", "font-name=\""})
            for (std::size_t at = all.find(attribute); at != all.npos; at = all.find(attribute, at + 1)) {
                const std::size_t start = at + attribute.size();
                const std::string name = all.substr(start, all.find('"', start) - start);
                EXPECT_NE(all.find(" style:name=\"" + name + '"'), all.npos)
                    << document.MediaType() << " has no style " << name;
            }
    }
}
