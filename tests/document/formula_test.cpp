// Formula documents, and formulas inside a text document.

#include "support/packages.h"
#include "support/trees.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>

using namespace ODF;

namespace {

using Formula = test::InWorkspace<>;

/// a + 1, unprefixed and with a prefix.
constexpr const char* kPlain = R"(<math xmlns="http://www.w3.org/1998/Math/MathML" display="block">)"
                               "<mrow><mi>a</mi><mo>+</mo><mn>1</mn></mrow></math>";
constexpr const char* kPrefixed =
    R"(<math:math xmlns:math="http://www.w3.org/1998/Math/MathML" math:display="block">)"
    "<math:mrow><math:mi>a</math:mi><math:mo>+</math:mo><math:mn>1</math:mn></math:mrow></math:math>";

} // namespace

TEST_F(Formula, IsReadUnderAnyPrefix) {
    const std::string doctype = "<?xml version=\"1.0\"?><!DOCTYPE math:math PUBLIC "
                                "\"-//OpenOffice.org//DTD Modified W3C MathML 1.01//EN\" \"math.dtd\">";
    for (const std::string& content : {std::string(kPlain), std::string(kPrefixed), doctype + kPrefixed}) {
        test::WriteOdf(file("a.odf"), test::kFormulaType, {{"content.xml", content}});
        CODFMathDoc document;
        ASSERT_EQ(document.Open(file("a.odf")), 1) << content;
        EXPECT_EQ(document.GetDocType(), sd::SDDocType::DocTypeOdfFormula);
        ASSERT_NE(document.GetContentClass(), nullptr);
        ASSERT_EQ(document.Save(file("out.odf")), 1);
        EXPECT_NE(test::ReadPackage(file("out.odf")).at("content.xml").find(kPrefixed), std::string::npos)
            << content;
        EXPECT_EQ(document.Open(file("out.odf")), 1);
        CSDObject* const row = document.GetContentClass()->GetObjectByID(CMathMrow::kId);
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(row->GetObjectList()->size(), 3U);
    }
    CODFDoc other;
    ASSERT_EQ(other.Open(file("a.odf")), 1);
    EXPECT_EQ(other.GetContentClass(), nullptr) << "the tree is there, but of another class";
    EXPECT_NE(other.GetMainPart()->RootAs<CMathMath>(), nullptr);
    test::WriteOdf(file("a.odt"), test::kTextType, {{"content.xml", test::TextContent("<text:p/>")}});
    CODFMathDoc text;
    ASSERT_EQ(text.Open(file("a.odt")), 1);
    EXPECT_EQ(text.GetContentClass(), nullptr);
}

TEST_F(Formula, InATextDocumentHasItsOwnTree) {
    const std::string type(test::kFormulaType);
    test::WriteOdf(file("a.odt"), test::kTextType,
                   {{"content.xml", test::TextContent("<text:p>top</text:p>")},
                    {"Object 1/content.xml", kPlain},
                    {"Object 2/content.xml", kPrefixed},
                    {"Object 3/content.xml", kPlain}},
                   {{"Object 1/", type}, {"Object 2/", type}});
    CODFDoc document;
    ASSERT_EQ(document.Open(file("a.odt")), 1);
    EXPECT_EQ(document.GetContentClass()->GetID(), COfficeDocumentContent::kId);
    for (const char* const folder : {"Object 1", "Object 2"}) {
        CSDObject* const root = document.Get3rdPartyPart(folder, "content.xml");
        ASSERT_NE(root, nullptr);
        ASSERT_EQ(root->GetID(), CMathMath::kId);
        static_cast<CMathMath*>(root)->SetMathMi()->Setval(u"b");
    }
    // Not declared as a formula: taken for an office document, which it isn't, and left as it is.
    EXPECT_EQ(document.Get3rdPartyPart("Object 3", "content.xml")->GetID(), COfficeDocumentContent::kId);
    // A formula that is added goes with them.
    CODFPart* const part = CMathMathRootPart::CreateClass(nullptr);
    part->SetContentType(u"text/xml");
    part->SetRelationtype(test::kFormulaType);
    part->SetPackagePath(u"Object 4/content.xml");
    part->SetPartname(u"content.xml");
    part->RootAs<CMathMath>()->SetMathMfrac()->SetMathMn()->Setval(u"1");
    document.GetRootPart()->AddChildPart(part);
    ASSERT_EQ(document.Save(file("out.odt")), 1);

    const test::Members members = test::ReadPackage(file("out.odt"));
    EXPECT_EQ(members.at("Object 3/content.xml"), kPlain);
    EXPECT_EQ(members.at("Object 1/content.xml"), members.at("Object 2/content.xml"));
    EXPECT_NE(members.at("Object 1/content.xml").find("<math:mi>b</math:mi></math:math>"), std::string::npos);
    CODFDoc again;
    ASSERT_EQ(again.Open(file("out.odt")), 1);
    EXPECT_EQ(test::Difference(document, again), "");
    for (const char* const folder : {"Object 1", "Object 4"})
        EXPECT_EQ(again.Get3rdPartyPart(folder, "content.xml")->GetID(), CMathMath::kId)
            << "the manifest tells the kind of the folder";
}
