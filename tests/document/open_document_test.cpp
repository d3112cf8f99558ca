// `ODF::Document` from the outside: what it opens, keeps, changes, saves and refuses.

#include "support/corpus.h"
#include "support/files.h"
#include "support/packages.h"
#include "support/texts.h"
#include "support/trees.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>

#include <algorithm>
#include <fstream>
#include <sstream>

using namespace ODF;
using Bytes = std::vector<unsigned char>;

namespace {

constexpr std::string_view kPng = "\x89PNG\r\n\x1a\n and so on";

class OpenDocument : public test::InWorkspace<> {
protected:
    static Bytes save(Document& document) {
        Bytes bytes;
        const Result saved = document.Save(bytes, {.fixedTime = 0});
        EXPECT_TRUE(saved) << saved.Text();
        return bytes;
    }
    static Document open(const Bytes& bytes, const OpenOptions& options = {}) {
        Document document;
        const Result opened = document.Open(bytes, options);
        EXPECT_TRUE(opened) << opened.Text();
        return document;
    }
    static Document newText(const char* paragraph) {
        Document document = Document::New(DocumentKind::Text);
        document.Text()->SetTextP()->SetText(paragraph);
        return document;
    }
    static std::string read(Document& document, std::string_view member) {
        Bytes bytes;
        EXPECT_TRUE(document.ReadMember(member, bytes)) << member;
        return {bytes.begin(), bytes.end()};
    }
    static std::vector<std::string> paragraphs(Document& document) {
        return test::Paragraphs(*document.Content());
    }
};

} // namespace

TEST_F(OpenDocument, NewOnesOfEachKindOpenAgainAsThatKind) {
    for (const auto& [kind, body] : std::initializer_list<std::pair<DocumentKind, unsigned>>{
             {DocumentKind::Text, COfficeText::kId},
             {DocumentKind::Spreadsheet, COfficeSpreadsheet::kId},
             {DocumentKind::Presentation, COfficePresentation::kId},
             {DocumentKind::Drawing, COfficeDrawing::kId},
             {DocumentKind::Chart, COfficeChart::kId},
             {DocumentKind::Image, COfficeImage::kId},
             {DocumentKind::MasterText, COfficeText::kId},
             {DocumentKind::Formula, 0U}}) {
        Document made = Document::New(kind);
        ASSERT_TRUE(made.IsOpen());
        EXPECT_TRUE(made.IsWhole());
        const Bytes bytes = save(made);
        Document again = open(bytes);
        EXPECT_EQ(again.Kind(), kind);
        EXPECT_EQ(again.MediaType(), made.MediaType());
        EXPECT_EQ(again.Version(), "1.2");
        EXPECT_NE(again.Meta(), nullptr);
        if (kind == DocumentKind::Formula)
            EXPECT_NE(again.Formula(), nullptr);
        else
            EXPECT_NE(again.Body()->GetObjectByID(body), nullptr);
        EXPECT_EQ(save(again), bytes) << "nothing changes from one save to the next";
    }
    EXPECT_FALSE(Document::New(DocumentKind::Unknown).IsOpen());
    EXPECT_FALSE(Document::New(DocumentKind::Database).IsOpen());
}

TEST_F(OpenDocument, PathBytesAndStreamsAreTheSame) {
    Document document = newText("one");
    const Bytes bytes = save(document);
    ASSERT_TRUE(document.Save(file("a.odt"), {.fixedTime = 0}));
    std::ostringstream out;
    ASSERT_TRUE(document.Save(out, {.fixedTime = 0}));
    EXPECT_EQ(test::ReadFile(file("a.odt")), out.str());
    EXPECT_EQ(out.str(), std::string(bytes.begin(), bytes.end()));

    std::istringstream in(out.str());
    Document fromStream;
    ASSERT_TRUE(fromStream.Open(in));
    Document fromFile;
    ASSERT_TRUE(fromFile.Open(file("a.odt")));
    for (Document* const again : {&fromStream, &fromFile})
        EXPECT_EQ(paragraphs(*again), std::vector<std::string>{"one"});
    std::ostringstream broken;
    broken.setstate(std::ios::badbit);
    EXPECT_EQ(document.Save(broken).Code(), Status::CouldNotWrite);
}

TEST_F(OpenDocument, SavesAsOftenAsWantedAndAFailureLosesNothing) {
    Document document = newText("one");
    test::WriteFile(file("old.odt"), "old");
    std::filesystem::create_directory(file("folder"));
    for (const char* const target : {"missing/a.odt", "folder"}) {
        const Result failed = document.Save(file(target));
        EXPECT_EQ(failed.Code(), Status::CouldNotWrite);
        EXPECT_NE(failed.Text().find(file(target)), std::string::npos) << failed.Text();
    }
    ASSERT_TRUE(document.Save(file("old.odt")));
    document.Text()->SetTextP()->SetText("two");
    ASSERT_TRUE(document.Save(file("old.odt")));
    Document again;
    ASSERT_TRUE(again.Open(file("old.odt")));
    EXPECT_EQ(paragraphs(again), (std::vector<std::string>{"one", "two"}));
    // One that can't be opened leaves what is open.
    EXPECT_EQ(again.Open(file("missing.odt")).Code(), Status::NotReadable);
    EXPECT_EQ(again.Open(test::BytesOf("no archive")).Code(), Status::NotAnArchive);
    EXPECT_EQ(paragraphs(again).size(), 2U);
    Document moved = std::move(again);
    EXPECT_EQ(paragraphs(moved).size(), 2U);
    EXPECT_FALSE(again.IsOpen()); // NOLINT(bugprone-use-after-move): told to be closed
    EXPECT_EQ(again.Save(file("never.odt")).Code(), Status::NothingToSave);
    EXPECT_FALSE(std::filesystem::exists(file("never.odt")));
}

TEST_F(OpenDocument, TheContentTellsTheTypeNotTheName) {
    Document sheet = Document::New(DocumentKind::Spreadsheet);
    ASSERT_TRUE(sheet.Save(file("sheet.txt")));
    Document document;
    ASSERT_TRUE(document.Open(file("sheet.txt")));
    EXPECT_EQ(document.Kind(), DocumentKind::Spreadsheet);

    const std::string content = test::TextContent("<text:p>a</text:p>");
    struct Row {
        const char* mediaType;
        DocumentKind kind;
        bool isTemplate;
    };
    for (const Row& row :
         {Row{"application/vnd.oasis.opendocument.text-template", DocumentKind::Text, true},
          Row{"application/vnd.oasis.opendocument.text-master", DocumentKind::MasterText, false},
          Row{"application/x-unknown", DocumentKind::Text, false}}) {
        test::WriteOdf(file("a.bin"), row.mediaType, {{"content.xml", content}});
        ASSERT_TRUE(document.Open(file("a.bin"))) << row.mediaType;
        EXPECT_EQ(document.Kind(), row.kind);
        EXPECT_EQ(document.IsTemplate(), row.isTemplate);
    }
    test::WritePackage(file("bare.zip"), {{"content.xml", content}});
    ASSERT_TRUE(document.Open(file("bare.zip")));
    EXPECT_EQ(document.Kind(), DocumentKind::Text);

    const std::pair<test::Members, Status> refused[] = {
        {{{"[Content_Types].xml", "<Types/>"}, {"word/document.xml", "<a/>"}}, Status::UnknownType},
        {{{"mimetype", std::string(test::kTextType)}}, Status::NoContent},
        {{{"content.xml", "<html xmlns=\"http://www.w3.org/1999/xhtml\"/>"}}, Status::UnknownType},
    };
    for (const auto& [members, status] : refused) {
        test::WritePackage(file("other.zip"), members);
        EXPECT_EQ(document.Open(file("other.zip")).Code(), status) << members.begin()->first;
    }
}

TEST_F(OpenDocument, FlatFilesAreReadAndWrittenAsOneTree) {
    const std::string flat =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<office:document "
        "xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\" "
        "xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\" office:version=\"1.3\" "
        "office:mimetype=\"application/vnd.oasis.opendocument.text\"><office:body><office:text><text:p>a</"
        "text:p>"
        "</office:text></office:body></office:document>";
    test::WriteFile(file("a.fodt"), flat);
    Document document;
    ASSERT_TRUE(document.Open(file("a.fodt")));
    EXPECT_TRUE(document.IsFlat());
    EXPECT_EQ(document.Kind(), DocumentKind::Text);
    EXPECT_EQ(document.Version(), "1.3");
    EXPECT_NE(document.Flat(), nullptr);
    EXPECT_EQ(document.Content(), nullptr);
    EXPECT_EQ(document.Roots(), std::vector<CSDObject*>{document.Flat()});
    EXPECT_FALSE(document.SetPassword("p"));
    EXPECT_TRUE(document.Members().empty());
    document.Text()->SetTextP()->SetText("b");
    ASSERT_TRUE(document.Save(file("b.fodt")));
    std::string expected = flat;
    expected.insert(expected.find("</office:text>"), "<text:p>b</text:p>");
    const std::string written = test::ReadFile(file("b.fodt"));
    EXPECT_EQ(written.substr(written.find("<office:body>")), expected.substr(expected.find("<office:body>")));
    EXPECT_EQ(document.Open(test::BytesOf("<html/>")).Code(), Status::UnknownType);
}

TEST_F(OpenDocument, MembersAreListedReadAddedReplacedAndRemoved) {
    Document document = newText("one");
    EXPECT_EQ(document.AddPicture(test::BytesOf(kPng), "logo.png"), "Pictures/logo.png");
    EXPECT_EQ(document.AddPicture(test::BytesOf(kPng), "folder/logo.png"), "Pictures/logo-2.png");
    EXPECT_EQ(document.MediaTypeOf("Pictures/logo-2.png"), "image/png");
    ASSERT_TRUE(document.WriteMember("Object 1/content.xml",
                                     test::BytesOf(test::TextContent("<text:p>in</text:p>"))));
    ASSERT_TRUE(document.WriteMember("own/data.bin", test::BytesOf("1"), "application/x-own"));
    EXPECT_FALSE(document.WriteMember("mimetype", test::BytesOf("x"))) << "follows by itself";
    EXPECT_EQ(document.Objects(), std::vector<std::string>{"Object 1"});
    const std::size_t count = document.Roots().size();
    CSDObject* const object = document.Root("Object 1/content.xml");
    EXPECT_EQ(std::ranges::count(document.Roots(), object), 1) << "a tree once it was asked for";
    EXPECT_EQ(document.Roots().size(), count + 1);
    EXPECT_TRUE(Document().Roots().empty());

    Document again = open(save(document));
    EXPECT_EQ(read(again, "Pictures/logo.png"), kPng);
    EXPECT_EQ(again.MediaTypeOf("own/data.bin"), "application/x-own");
    CSDObject* const root = again.Root("Object 1/content.xml");
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(test::Paragraphs(*root), std::vector<std::string>{"in"});
    Result why;
    EXPECT_EQ(again.Root("own/data.bin", &why), nullptr);
    EXPECT_FALSE(why);

    EXPECT_TRUE(again.RemoveMember("Pictures/logo.png"));
    EXPECT_FALSE(again.RemoveMember("Pictures/logo.png"));
    // Bytes take the place of a tree, and the tree comes from them when it is asked for again.
    ASSERT_TRUE(again.WriteMember("content.xml", test::BytesOf(test::TextContent("<text:p>new</text:p>"))));
    EXPECT_EQ(paragraphs(again), std::vector<std::string>{"new"});
    Document last = open(save(again));
    EXPECT_FALSE(last.HasMember("Pictures/logo.png"));
    ASSERT_TRUE(last.Save(file("last.odt")));
    const std::string manifest = test::ReadPackage(file("last.odt")).at("META-INF/manifest.xml");
    EXPECT_EQ(manifest.find("logo.png"), std::string::npos) << manifest;
    EXPECT_NE(manifest.find("Pictures/logo-2.png"), std::string::npos) << manifest;
    EXPECT_EQ(paragraphs(last), std::vector<std::string>{"new"});
}

TEST_F(OpenDocument, AnEncryptedOneStaysSoUntilToldOtherwise) {
    Document document = newText("secret");
    EXPECT_FALSE(document.SetPassword(""));
    ASSERT_TRUE(document.SetPassword("first"));
    const Bytes sealed = save(document);
    Document again;
    EXPECT_EQ(again.Open(sealed).Code(), Status::PasswordNeeded);
    EXPECT_EQ(again.Open(sealed, {.password = "other"}).Code(), Status::WrongPassword);
    again = open(sealed, {.password = "first"});
    EXPECT_EQ(paragraphs(again), std::vector<std::string>{"secret"});
    const Bytes resealed = save(again);
    EXPECT_NE(resealed, sealed) << "salts are new";
    again = open(resealed, {.password = "first"});
    EXPECT_TRUE(again.SetPassword("second", EncryptionScheme::Aes256Gcm));
    again = open(save(again), {.password = "second"});
    EXPECT_TRUE(again.IsEncrypted());
    EXPECT_EQ(paragraphs(again), std::vector<std::string>{"secret"});
    again.RemovePassword();
    again = open(save(again));
    EXPECT_FALSE(again.IsEncrypted());
    EXPECT_EQ(paragraphs(again), std::vector<std::string>{"secret"});
}

TEST_F(OpenDocument, WhatCouldNotBeReadWholeIsNotSavedWithoutTheCallersWord) {
    struct Row {
        const char* content;
        Status status;
    };
    const std::string deep = "<text:p>" + std::string(200, ' ') + "</text:p>";
    for (const Row& row : {Row{"<text:p>a</text:p><text:p>b", Status::Damaged},
                           Row{"<text:p>a</text:p>&undeclared;", Status::Damaged}}) {
        std::string content = test::TextContent(row.content);
        test::WriteOdf(file("a.odt"), test::kTextType, {{"content.xml", content}, {"own.bin", "1"}});
        Document document;
        const Result opened = document.Open(file("a.odt"));
        EXPECT_EQ(opened.Code(), row.status) << opened.Text();
        EXPECT_NE(opened.Text().find("content.xml"), std::string::npos);
        EXPECT_NE(opened.Text().find("line "), std::string::npos) << opened.Text();
        ASSERT_TRUE(document.IsOpen());
        EXPECT_FALSE(document.IsWhole());
        const std::string before = test::ReadFile(file("a.odt"));
        EXPECT_EQ(document.Save(file("a.odt")).Code(), Status::Damaged);
        EXPECT_EQ(test::ReadFile(file("a.odt")), before);
        ASSERT_TRUE(document.Save(file("a.odt"), {.allowsIncomplete = true}));
        ASSERT_TRUE(document.Open(file("a.odt")));
        EXPECT_EQ(paragraphs(document).front(), "a");
    }
    test::WriteOdf(file("a.odt"), test::kTextType, {{"content.xml", test::TextContent(deep)}});
    OpenOptions options;
    options.limits.depth = 3;
    Document document;
    EXPECT_EQ(document.Open(file("a.odt"), options).Code(), Status::LimitExceeded);
}

TEST_F(OpenDocument, ASignatureGoesWhenSomethingHasChanged) {
    Document document = newText("one");
    ASSERT_TRUE(document.WriteMember("META-INF/documentsignatures.xml", test::BytesOf("<signed/>")));
    Document untouched = open(save(document));
    const Bytes first = save(untouched);
    EXPECT_EQ(save(untouched), first);
    untouched = open(first);
    EXPECT_TRUE(untouched.HasMember("META-INF/documentsignatures.xml")) << "nobody changed anything";
    untouched.Text()->SetTextP();
    Bytes bytes;
    const Result saved = untouched.Save(bytes);
    ASSERT_TRUE(saved);
    ASSERT_FALSE(saved.Notes().empty());
    EXPECT_EQ(saved.Notes().front().member, "META-INF/documentsignatures.xml");
    EXPECT_FALSE(open(bytes).HasMember("META-INF/documentsignatures.xml"));
}
