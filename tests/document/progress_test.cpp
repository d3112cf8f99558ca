// What a host is told while a document is opened and saved, and how it ends either.

#include "support/files.h"
#include "support/packages.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>

using namespace ODF;

namespace {

class ProgressTest : public test::InWorkspace<> {
protected:
    ProgressTest() {
        test::Members members{{"content.xml", test::TextContent("<text:p>old</text:p>")}};
        for (int i = 0; i < 20; ++i)
            members["Pictures/" + std::to_string(i) + ".png"] = std::string(5000, 'p');
        test::WriteOdf(file("plain.odt"), test::kTextType, members);
        Document document;
        EXPECT_TRUE(document.Open(file("plain.odt")));
        for (const auto scheme : {EncryptionScheme::Aes256Cbc, EncryptionScheme::Aes256Gcm}) {
            EXPECT_TRUE(document.SetPassword("secret", scheme));
            EXPECT_TRUE(document.Save(file(scheme == EncryptionScheme::Aes256Cbc ? "cbc.odt" : "gcm.odt")));
        }
    }
};

/// How often a callback is asked, which says no at the `last` call.
struct Counted {
    std::size_t calls = 0;
    std::size_t last = SIZE_MAX;
    std::set<Progress::Step> steps;
    ProgressCallback callback() {
        return [this](const Progress& state) {
            EXPECT_TRUE(state.total == 0 || state.done <= state.total) << state.member;
            steps.insert(state.step);
            return ++calls < last;
        };
    }
};

} // namespace

TEST_F(ProgressTest, CancellingAtAnyCallLeavesEverythingAsItWas) {
    for (const char* const name : {"plain.odt", "cbc.odt", "gcm.odt"}) {
        SCOPED_TRACE(name);
        Counted opening;
        OpenOptions open;
        open.password = "secret";
        open.progress = opening.callback();
        Document document;
        ASSERT_TRUE(document.Open(file(name), open));
        EXPECT_GT(opening.calls, 1U);
        document.Text()->SetTextP()->SetText("new");
        for (std::size_t last = 1; last <= opening.calls; ++last) {
            Counted cancelled;
            cancelled.last = last;
            open.progress = cancelled.callback();
            EXPECT_EQ(document.Open(file(name), open).Code(), Status::Cancelled);
            EXPECT_EQ(cancelled.calls, last) << "asked again after a no";
            ASSERT_NE(document.Text(), nullptr);
            EXPECT_EQ(document.Text()->GetObjectList()->size(), 2U) << "what was open stays";
        }
        Counted saving;
        SaveOptions save;
        save.progress = saving.callback();
        ASSERT_TRUE(document.Save(file("saved.odt"), save));
        EXPECT_GT(saving.calls, 21U) << "at least once for each member";
        EXPECT_TRUE(saving.steps.contains(Progress::Step::Packing));
        const std::string before = test::ReadFile(file("saved.odt"));
        // Keys are derived each time, and how many of them on this thread differs.
        const bool isSlow = std::string_view(name) != "plain.odt";
        for (std::size_t last = 1; last <= (isSlow ? 9 : saving.calls); last += isSlow ? 4 : 1) {
            Counted cancelled;
            cancelled.last = last;
            save.progress = cancelled.callback();
            EXPECT_EQ(document.Save(file("saved.odt"), save).Code(), Status::Cancelled) << last;
        }
        EXPECT_EQ(test::ReadFile(file("saved.odt")), before);
        save.progress = {};
        EXPECT_TRUE(document.Save(file("saved.odt"), save));
    }
}

TEST_F(ProgressTest, WhatTheCallbackThrowsComesOutAndTheOldFileStays) {
    const ProgressCallback thrower = [](const Progress&) -> bool { throw std::runtime_error("host"); };
    Document document;
    OpenOptions open;
    open.progress = thrower;
    EXPECT_THROW(static_cast<void>(document.Open(file("plain.odt"), open)), std::runtime_error);
    EXPECT_FALSE(document.IsOpen());
    ASSERT_TRUE(document.Open(file("plain.odt")));
    const std::string before = test::ReadFile(file("plain.odt"));
    SaveOptions save;
    save.progress = thrower;
    EXPECT_THROW(static_cast<void>(document.Save(file("plain.odt"), save)), std::runtime_error);
    EXPECT_EQ(test::ReadFile(file("plain.odt")), before);
    EXPECT_TRUE(document.Save(file("plain.odt")));
}

TEST_F(ProgressTest, AmbiguousArchivesAreRefusedWhereTheCallerWantsIt) {
    const std::string sound = test::ReadFile(file("plain.odt"));
    test::WriteFile(file("two.odt"), sound + sound);
    OpenOptions strict;
    strict.refusesAmbiguous = true;
    Document document;
    EXPECT_TRUE(document.Open(file("plain.odt"), strict));
    EXPECT_TRUE(document.Open(file("two.odt")));
    const Result refused = document.Open(file("two.odt"), strict);
    EXPECT_EQ(refused.Code(), Status::Ambiguous);
    EXPECT_NE(refused.Text().find("before the archive"), std::string::npos) << refused.Text();
    EXPECT_TRUE(document.IsOpen()) << "what was open stays";
}

TEST_F(ProgressTest, PicturesHaveFilesAndNamesOfTheirOwn) {
    test::WriteFile(file("a.png"), "first");
    std::filesystem::create_directory(file("other"));
    test::WriteFile(file("other/a.png"), "second");
    Document document;
    ASSERT_TRUE(document.Open(file("plain.odt")));
    Result told;
    EXPECT_EQ(document.AddPictureFile(file("none.png"), &told), "");
    EXPECT_EQ(told.Code(), Status::NotReadable);
    EXPECT_EQ(document.AddPictureFile(file("a.png"), &told), "Pictures/a.png");
    EXPECT_EQ(document.AddPictureFile(file("other/a.png")), "Pictures/a-2.png");

    CODFDoc listed;
    ASSERT_EQ(listed.Open(file("plain.odt")), 1);
    CODFPart* const root = listed.GetRootPart();
    EXPECT_EQ(AddPictureFile(root, file("none.png")), nullptr);
    ASSERT_NE(AddPictureFile(root, file("a.png")), nullptr);
    ASSERT_NE(AddPictureFile(root, file("other/a.png")), nullptr);
    ASSERT_EQ(listed.Save(file("saved.odt")), 1);
    EXPECT_EQ(listed.GetDiagnostics().status(), Status::Ok);
    test::Members written = test::ReadPackage(file("saved.odt"));
    EXPECT_EQ(written["Pictures/a.png"], "first");
    EXPECT_EQ(written["Pictures/a-2.png"], "second");
}
