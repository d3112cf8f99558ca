// The file behind a document, whatever became of the document since.

#include "support/corpus.h"
#include "support/packages.h"
#include "support/workspace.h"

#include <odfmodel/document/open_document.h>

#include <gtest/gtest.h>

namespace {

using FileEntries = test::InWorkspace<testing::Test>;

test::Members MembersOf(const ODF::Document& document) {
    test::Members members;
    for (const ODF::FileEntry& entry : document.FileEntries()) {
        if (entry.isFolder) continue;
        std::vector<unsigned char> bytes;
        EXPECT_TRUE(document.ReadFileEntry(entry.name, bytes)) << entry.name;
        EXPECT_EQ(entry.size, bytes.size()) << entry.name;
        members[entry.name].assign(bytes.begin(), bytes.end());
    }
    return members;
}

TEST_F(FileEntries, StayAsTheyWereOpened) {
    const std::string path = file("document.odt");
    const test::Members members{
        {"mimetype", std::string(test::kTextType)},
        {"META-INF/manifest.xml", test::Manifest({{"/", std::string(test::kTextType)}, {"content.xml"}})},
        {"content.xml", test::TextContent("<text:p   text:style-name='a'/>")},
        {"a.bin", "a"}};
    test::WritePackage(path, members);
    ODF::Document document;
    ASSERT_TRUE(document.Open(path));
    EXPECT_TRUE(document.RemoveMember("a.bin"));
    const unsigned char byte = 'x';
    ASSERT_TRUE(document.WriteMember("content.xml", {&byte, 1}));
    ASSERT_TRUE(document.WriteMember("new.bin", {&byte, 1}));
    EXPECT_EQ(MembersOf(document), members);
    std::vector<unsigned char> bytes{1};
    EXPECT_FALSE(document.ReadFileEntry("new.bin", bytes));
    EXPECT_TRUE(bytes.empty());
    EXPECT_TRUE(ODF::Document::New(ODF::DocumentKind::Text).FileEntries().empty());
    EXPECT_TRUE(ODF::Document().FileEntries().empty());
    EXPECT_FALSE(ODF::Document().ReadFileEntry("mimetype", bytes));
}

TEST_F(FileEntries, AreInClear) {
    for (const test::Sample& sample : test::GoodSamples()) {
        if (!sample.isEncrypted()) continue;
        SCOPED_TRACE(sample.name);
        ODF::Document document;
        ODF::OpenOptions options;
        options.password = sample.password;
        ASSERT_TRUE(document.Open(sample.path, options));
        const test::Members members = MembersOf(document);
        const test::Members expected = test::ReadPackage(sample.path, sample.password);
        EXPECT_EQ(members, expected);
    }
}

TEST_F(FileEntries, GiveWhatIsReadableOfADamagedMember) {
    for (const test::Sample& sample : test::SamplesOf("damaged")) {
        if (sample.name != "damaged/flipped_byte_bad_crc.odt") continue;
        ODF::Document document;
        EXPECT_FALSE(document.Open(sample.path));
        ASSERT_TRUE(document.IsOpen());
        std::vector<unsigned char> bytes;
        EXPECT_FALSE(document.ReadFileEntry("content.xml", bytes));
        EXPECT_FALSE(bytes.empty());
    }
}

} // namespace
