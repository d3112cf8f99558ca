// What every sample document survives: opening, saving, opening again.

#include "support/corpus.h"
#include "support/packages.h"
#include "support/trees.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>

#include <memory>
#include <set>

using test::Sample;

namespace {

/// The document class that fits the sample, opened.
std::unique_ptr<ODF::CDocument> Open(const std::string& path, bool isFormula,
                                     const std::string& password = {}) {
    std::unique_ptr<ODF::CDocument> document;
    if (isFormula)
        document = std::make_unique<ODF::CODFMathDoc>();
    else
        document = std::make_unique<ODF::CODFDoc>();
    if (!password.empty()) document->SetPassword(password);
    if (document->Open(path) == 0) {
        ADD_FAILURE() << path << ": " << ODF::ToText(document->GetDiagnostics().status());
        document.reset();
    }
    return document;
}

/// The members that a manifest lists, without folders.
std::set<std::string> ListedMembers(const std::string& manifest) {
    class Handler : public CSDDefaultHandler {
    public:
        void startElement(const unsigned short*, const unsigned short* localName, const unsigned short*,
                          CSDAttribute* attributes) override {
            if (ToView(localName) != u"file-entry") return;
            const unsigned short* const path = attributes->GetValue(
                ToUnits(u"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0"), ToUnits(u"full-path"));
            if (path) paths.insert(ODF::ToUtf8(path));
        }
        std::set<std::string> paths;
    } handler;
    CSDSaxReader* const reader = CreateSaxReader();
    reader->SetContentHandler(&handler);
    if (reader->BeginChunks()) reader->ParseChunk(manifest.data(), static_cast<int>(manifest.size()), 0);
    reader->EndChunks();
    ReleaseSaxReader(reader);
    std::erase_if(handler.paths, [](const std::string& path) { return path.empty() || path.back() == '/'; });
    return handler.paths;
}

class GoodSample : public test::InWorkspace<testing::TestWithParam<Sample>> {
protected:
    static void expectNoNotes(const ODF::CDocument& document) {
        for (const ODF::Note& note : document.GetDiagnostics().notes())
            ADD_FAILURE() << note.member << ": " << note.text;
    }
};

} // namespace

TEST_P(GoodSample, KeepsItsTreesAndEachFileThatIsNotParsed) {
    const Sample& sample = GetParam();
    const std::string copy = file("copy" + sample.path.substr(sample.path.rfind('.')));
    const auto first = Open(sample.path, sample.isFormula(), sample.password);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->GetDocType() == sd::SDDocType::DocTypeOdfFormula, sample.isFormula());
    const auto trees = test::Trees(*first);
    std::vector<ISDPart*> parts;
    first->GetRootPart()->GetChildParts(&parts);
    for (ISDPart* const part : parts) {
        if (ODF::ToUtf8(part->GetPartname()) != "content.xml") continue;
        const std::string path = ODF::ToUtf8(part->GetPackagePath());
        const bool isFormula = ODF::ToUtf8(part->GetRelationtype()) == test::kFormulaType;
        ASSERT_NE(part->GetRootClass(), nullptr) << path;
        EXPECT_EQ(part->GetRootClass()->GetID(),
                  isFormula ? ODF::CMathMath::kId : ODF::COfficeDocumentContent::kId)
            << path;
        EXPECT_TRUE(part->GetRootClass()->HasChildList() ||
                    sample.name == "formula/lo74_object_empty_root.odf")
            << path;
    }
    ASSERT_EQ(first->Save(copy), 1);
    ASSERT_EQ(first->GetDiagnostics().status(), ODF::Status::Ok);
    expectNoNotes(*first);

    const test::Members before = test::ReadPackage(sample.path, sample.password);
    const test::Members after = test::ReadPackage(copy);
    std::set<std::string> listed = ListedMembers(before.at("META-INF/manifest.xml"));
    for (const std::string& name : listed) {
        if (name == "META-INF/manifest.xml" || !before.contains(name)) continue;
        ASSERT_TRUE(after.contains(name)) << name;
        EXPECT_TRUE(trees.contains(name) || before.at(name) == after.at(name)) << name;
    }
    listed.insert({"META-INF/manifest.xml", "mimetype"});
    for (const auto& [name, data] : after)
        EXPECT_TRUE(listed.contains(name)) << name;

    const auto second = Open(copy, sample.isFormula());
    ASSERT_TRUE(second);
    EXPECT_EQ(test::Difference(*first, *second), "");
    EXPECT_EQ(first->GetDocType(), second->GetDocType());
    for (const auto& [path, tree] : test::Trees(*second))
        EXPECT_EQ(test::Paragraphs(*tree), test::Paragraphs(*trees.at(path))) << path;
    // What no class lists is gone, so nothing unknown can be met again.
    EXPECT_EQ(second->GetDiagnostics().unknownElements(), ODF::Diagnostics::NameCounts());
    EXPECT_EQ(second->GetDiagnostics().unknownAttributes(), ODF::Diagnostics::NameCounts());
    EXPECT_EQ(second->GetDiagnostics().droppedText(), ODF::Diagnostics::NameCounts());
    expectNoNotes(*second);

    const std::string again = file("again" + sample.path.substr(sample.path.rfind('.')));
    ASSERT_EQ(second->Save(again), 1);
    EXPECT_EQ(after, test::ReadPackage(again)) << "the second trip changes what the first made";
}

INSTANTIATE_TEST_SUITE_P(Samples, GoodSample, testing::ValuesIn(test::GoodSamples()),
                         [](const auto& given) { return test::NameOf(given.param); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(GoodSample);
