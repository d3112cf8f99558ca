// Formula documents, and formulas inside a text document.

#include "support/packages.h"
#include "support/trees.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>

using namespace ODF;

namespace {

class Formula : public test::InWorkspace<> {};

/// a + 1, with the namespace bound as given.
std::string Sum(const std::string& prefix, std::string_view start = {}) {
    const std::string colon = prefix.empty() ? "" : prefix + ":";
    const auto tag = [&](const std::string& name, const std::string& content) {
        return "<" + colon + name + ">" + content + "</" + colon + name + ">";
    };
    std::string math = tag("math", tag("mrow", tag("mi", "a") + tag("mo", "+") + tag("mn", "1")));
    const std::string declaration =
        " xmlns" + (prefix.empty() ? "" : ":" + prefix) + "=\"http://www.w3.org/1998/Math/MathML\"";
    math.insert(math.find('>'), declaration + " display=\"block\"");
    return std::string(start) + math;
}

constexpr std::string_view kSum =
    R"(<math:math xmlns:math="http://www.w3.org/1998/Math/MathML" math:display="block">)"
    "<math:mrow><math:mi>a</math:mi><math:mo>+</math:mo><math:mn>1</math:mn></math:mrow></math:math>";

} // namespace

TEST_F(Formula, IsReadUnderAnyPrefix) {
    const std::string declaration = "<?xml version=\"1.0\"?>";
    const std::string doctype = declaration +
                                "<!DOCTYPE math:math PUBLIC \"-//OpenOffice.org//DTD Modified W3C MathML "
                                "1.01//EN\" \"math.dtd\">";
    for (const std::string& content : {Sum(""), Sum("math", declaration), Sum("m"), Sum("math", doctype)}) {
        test::WriteOdf(file("a.odf"), test::kFormulaType, {{"content.xml", content}});
        CODFMathDoc document;
        ASSERT_EQ(document.Open(file("a.odf")), 1) << content;
        EXPECT_EQ(document.GetDocType(), sd::SDDocType::DocTypeOdfFormula);
        ASSERT_NE(document.GetContentClass(), nullptr);
        CTulStringW display;
        EXPECT_TRUE(document.GetContentClass()->GetMathDisplay(display)) << content;
        EXPECT_EQ(display, u"block");
        ASSERT_EQ(document.Save(file("out.odf")), 1);
        EXPECT_NE(test::ReadPackage(file("out.odf")).at("content.xml").find(kSum), std::string::npos)
            << content;
        EXPECT_EQ(document.Open(file("out.odf")), 1);
        CSDObject* const row = document.GetContentClass()->GetObjectByID(CMathMrow::kId);
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(row->GetObjectList()->size(), 3U);
    }
}

TEST_F(Formula, IsNoContentOfATextDocument) {
    test::WriteOdf(file("a.odf"), test::kFormulaType, {{"content.xml", Sum("")}});
    CODFDoc document;
    ASSERT_EQ(document.Open(file("a.odf")), 1);
    EXPECT_EQ(document.GetContentClass(), nullptr) << "the tree is there, but of another class";
    EXPECT_NE(document.GetMainPart()->RootAs<CMathMath>(), nullptr);
    test::WriteOdf(file("a.odt"), test::kTextType, {{"content.xml", test::TextContent("<text:p/>")}});
    CODFMathDoc formula;
    ASSERT_EQ(formula.Open(file("a.odt")), 1);
    EXPECT_EQ(formula.GetContentClass(), nullptr);
}

TEST_F(Formula, InATextDocumentHasItsOwnTree) {
    test::WriteOdf(
        file("a.odt"), test::kTextType,
        {{"content.xml", test::TextContent("<text:p>top</text:p>")},
         {"Object 1/content.xml", Sum("")},
         {"Object 2/content.xml", Sum("math")},
         {"Object 3/content.xml", Sum("")}},
        {{"Object 1/", std::string(test::kFormulaType)}, {"Object 2/", std::string(test::kFormulaType)}});
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
    ASSERT_EQ(document.Save(file("out.odt")), 1);

    const test::Members members = test::ReadPackage(file("out.odt"));
    EXPECT_EQ(members.at("Object 3/content.xml"), Sum(""));
    EXPECT_EQ(members.at("Object 1/content.xml"), members.at("Object 2/content.xml"));
    EXPECT_NE(members.at("Object 1/content.xml").find("<math:mi>b</math:mi></math:math>"), std::string::npos);
    CODFDoc again;
    ASSERT_EQ(again.Open(file("out.odt")), 1);
    EXPECT_EQ(test::Difference(document, again), "");
    EXPECT_EQ(again.Get3rdPartyPart("Object 1", "content.xml")->GetID(), CMathMath::kId)
        << "the manifest still tells the kind of the folder";
}

TEST_F(Formula, CanBeMadeByPart) {
    // There is no short way to a new formula document; a part with a formula in a text document is the usual
    // one.
    CODFDoc document;
    ASSERT_EQ(document.CreateMainPart(sd::SDDocType::DocTypeOdfText), 1);
    document.GetContentClass()
        ->SetOfficeBody()
        ->SetOfficeText()
        ->SetTextP()
        ->SetDrawFrame()
        ->SetDrawObject()
        ->SetXlinkHref(u"./Object 1");
    CODFPart* const part = CMathMathRootPart::CreateClass(nullptr);
    part->SetContentType(u"text/xml");
    part->SetRelationtype(test::kFormulaType);
    part->SetPackagePath(u"Object 1/content.xml");
    part->SetPartname(u"content.xml");
    CMathMfrac* const fraction = part->RootAs<CMathMath>()->SetMathMfrac();
    fraction->SetMathMn()->Setval(u"1");
    fraction->SetMathMi()->Setval(u"x");
    document.GetRootPart()->AddChildPart(part);
    ASSERT_EQ(document.Save(file("a.odt")), 1);
    CODFDoc again;
    ASSERT_EQ(again.Open(file("a.odt")), 1);
    EXPECT_EQ(test::Difference(document, again), "");
}
