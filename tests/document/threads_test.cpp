// Documents beside each other: open at once, and worked on by threads of their own.

#include "document/kinds.h"
#include "support/trees.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>

#include <memory>
#include <thread>

using namespace ODF;

namespace {

class ManyDocuments : public test::InWorkspace<> {};

/// A document with something of each family, to visit many tables.
void BuildLarge(CODFDoc& document, const test::Kind& kind, int seed) {
    CTextP* paragraph = test::Build(document, kind, u"document " + ToUtf16(std::to_string(seed)));
    for (int i = 0; i < 200; ++i) {
        paragraph->SetTextSpan()->SetText(ToUtf16(std::to_string(seed * i)));
        paragraph->SetTextPageNumber()->Setval(u"1");
        paragraph->SetDrawFrame()->SetDrawTextBox()->SetTextP()->SetTextStyleName(u"P1");
    }
    COfficeAutomaticStyles* const styles = document.GetContentClass()->SetOfficeAutomaticStyles();
    for (const ClassInfo& info : AllClasses()) // every class that can be there
        if (info.elementName().starts_with("style:") || info.elementName().starts_with("number:"))
            styles->CreateObject(info.elementName(), 1);
}

/// Builds, saves, opens, changes and saves; the text that comes out in the end.
std::string Work(const std::string& folder, const test::Kind& kind, int seed) {
    const std::string path = folder + "/" + std::to_string(seed) + "." + kind.name;
    std::string result;
    for (int round = 0; round < 5; ++round) {
        CODFDoc built;
        BuildLarge(built, kind, seed);
        built.Save(path);
        CODFDoc opened;
        if (opened.Open(path) == 0) return "not opened";
        result = test::Difference(built, opened);
        if (!result.empty()) return result;
        kind.addParagraph(
                *static_cast<COfficeBody*>(opened.GetContentClass()->GetObjectByID(COfficeBody::kId)))
            ->SetText(ToUtf16(CImageRootPart::GetFilename(u"x/" + ToUtf16(std::to_string(seed)))
                                  ? std::to_string(round)
                                  : std::string()));
        opened.Save(path);
        if (opened.GetDiagnostics().status() != Status::Ok) return "not saved";
    }
    CODFDoc last;
    if (last.Open(path) == 0) return "not opened at last";
    for (const std::string& text : test::Paragraphs(*last.GetContentClass()))
        result += text;
    return result;
}

} // namespace

TEST_F(ManyDocuments, AreOpenAtOnce) {
    std::vector<std::unique_ptr<CODFDoc>> documents(100);
    for (std::size_t i = 0; i < documents.size(); ++i) {
        documents[i] = std::make_unique<CODFDoc>();
        test::Build(*documents[i], test::kTextKind, ToUtf16(std::to_string(i)));
        ASSERT_EQ(documents[i]->Save(file("a.odt")), 1);
        ASSERT_EQ(documents[i]->Open(file("a.odt")), 1);
    }
    EXPECT_EQ(temporaryEntries().size(), documents.size());
    for (std::size_t i = 0; i < documents.size(); ++i)
        EXPECT_EQ(test::Paragraphs(*documents[i]->GetContentClass()),
                  std::vector<std::string>{std::to_string(i)});
}

TEST_F(ManyDocuments, DoNotMeetOnThreads) {
    constexpr std::size_t kThreads = 4;
    std::string results[kThreads];
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < kThreads; ++i)
        threads.emplace_back([&, i] { results[i] = Work(file(""), test::kKinds[i], static_cast<int>(i)); });
    for (std::thread& thread : threads)
        thread.join();
    for (std::size_t i = 0; i < kThreads; ++i)
        EXPECT_EQ(results[i], Work(file(""), test::kKinds[i], static_cast<int>(i))) << "as without company";
}
