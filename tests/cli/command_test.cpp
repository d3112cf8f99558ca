// Options, failures, and the commands that only show something.

#include "command.h"
#include "support/corpus.h"
#include "support/trees.h"

#include <odfmodel/document/odf_document.h>

#include <algorithm>
#include <map>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

using test::Result;
using test::RunCommand;

namespace {

using Command = test::CommandTest<>;

/// An encrypted text document.
test::Sample EncryptedSample() {
    for (const test::Sample& sample : test::AllSamples())
        if (sample.isEncrypted() && sample.path.ends_with(".odt")) return sample;
    return {};
}

bool HasControlCharacter(const std::string& text) {
    return std::any_of(text.begin(), text.end(),
                       [](unsigned char unit) { return (unit < 0x20 && unit != '\n') || unit == 0x7F; }) ||
           text.find("\xC2\x9B") != std::string::npos || text.find("\xE2\x80\xAE") != std::string::npos;
}

} // namespace

TEST_F(Command, TellsWhyAFileCantBeOpened) {
    test::WriteFile(file("plain.odt"), "plain");
    test::WriteFile(file("other.odt"), "<html/>");
    test::WritePackage(file("foreign.odt"), {{"a", "b"}});
    test::WritePackage(file("empty.odt"), {{"mimetype", std::string(test::kTextType)}});
    std::filesystem::create_directory(file("folder.odt"));
    const std::map<std::string, std::string> reasons{
        {file("missing.odt"), "there is no such file"}, {file("folder.odt"), "it is a directory"},
        {file("plain.odt"), "not an archive"},          {file("other.odt"), "neither a package nor a flat"},
        {file("foreign.odt"), "no OpenDocument"},       {file("empty.odt"), "no content"}};
    for (const auto& [path, reason] : reasons)
        for (const std::string command : {"text", "tree", "check", "roundtrip", "info"}) {
            std::vector<std::string> arguments{command, path};
            if (command == "roundtrip") arguments.push_back(file("out.odt"));
            const Result result = RunCommand(arguments);
            EXPECT_EQ(result.code, 3) << command << path;
            EXPECT_EQ(result.out, "");
            EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
            EXPECT_NE(result.err.find(path + ": "), std::string::npos) << result.err;
            EXPECT_NE(result.err.find(reason), std::string::npos) << result.err;
        }
    EXPECT_FALSE(std::filesystem::exists(file("out.odt")));
}

TEST_F(Command, OpensEncryptedPackages) {
    const auto [name, path, group, password] = EncryptedSample();
    ASSERT_NE(path, "");
    const Result without = RunCommand({"text", path});
    EXPECT_EQ(without.code, 3);
    EXPECT_NE(without.err.find("password"), std::string::npos);
    EXPECT_EQ(RunCommand({"text", path, "--password", "wrong"}).code, 3);
    const Result with = RunCommand({"text", path, "--password", password});
    EXPECT_EQ(with.code, 0);
    EXPECT_NE(with.out, "");
    test::WriteFile(file("password"), password + "\r\nmore\n");
    EXPECT_EQ(RunCommand({"text", path, "--password-file", file("password")}).out, with.out);
    EXPECT_EQ(RunCommand({"text", path, "--password-file", file("missing")}).code, 3);

    // Without the password the outside can still be told.
    const Result info = RunCommand({"info", path});
    EXPECT_EQ(info.code, 0);
    EXPECT_NE(info.out.find("no password given"), std::string::npos);
    EXPECT_EQ(info.out.find("metadata"), std::string::npos);
    EXPECT_NE(RunCommand({"info", path, "--password", password}).out.find("metadata"), std::string::npos);
}

TEST_F(Command, WritesInClearOnlyWhenTold) {
    const auto [name, path, group, password] = EncryptedSample();
    ASSERT_NE(path, "");
    const std::string text = RunCommand({"text", path, "--password", password}).out;
    const auto trip = [&](std::vector<std::string> options) {
        std::filesystem::remove(file("out.odt"));
        options.insert(options.begin(), {"roundtrip", path, file("out.odt"), "--password", password});
        return RunCommand(options).code;
    };
    EXPECT_EQ(trip({}), 0);
    EXPECT_EQ(RunCommand({"text", file("out.odt")}).code, 3);
    EXPECT_EQ(RunCommand({"text", file("out.odt"), "--password", password}).out, text);
    EXPECT_EQ(trip({"--listed"}), 2);
    EXPECT_FALSE(std::filesystem::exists(file("out.odt")));
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"--decrypt"}, std::vector<std::string>{"--decrypt", "--listed"}}) {
        EXPECT_EQ(trip(options), 0);
        EXPECT_EQ(RunCommand({"text", file("out.odt")}).out, text);
        EXPECT_NE(RunCommand({"info", file("out.odt")}).out.find("encrypted:         no"), std::string::npos);
    }
}

TEST_F(Command, WritesADamagedDocumentOnlyWhenTold) {
    const std::string path = file("damaged.odt");
    test::WriteOdf(path, test::kTextType,
                   {{"content.xml", test::TextContent("<text:p>there</text:p><text:p>gone</text:q>")}});
    test::WriteFile(file("out.odt"), "as it was");
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{}, std::vector<std::string>{"--listed"}}) {
        std::vector<std::string> arguments{"roundtrip", path, file("out.odt")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Result refused = RunCommand(arguments);
        EXPECT_EQ(refused.code, 3);
        EXPECT_NE(refused.err.find("content.xml:1:"), std::string::npos) << refused.err;
        EXPECT_NE(refused.err.find("--incomplete"), std::string::npos) << refused.err;
        EXPECT_EQ(test::ReadFile(file("out.odt")), "as it was");
        arguments.back() = options.empty() ? file("out.odt") : options.back();
        arguments.push_back("--incomplete");
        EXPECT_EQ(RunCommand(arguments).code, 3) << "it still isn't whole";
        EXPECT_EQ(RunCommand({"text", file("out.odt")}).out.substr(0, 6), "there\n");
        test::WriteFile(file("out.odt"), "as it was");
    }
    for (const std::string command : {"info", "text", "tree"}) {
        const Result result = RunCommand({command, path});
        EXPECT_EQ(result.code, 3) << command;
        EXPECT_NE(result.out, "") << command << " prints what there is";
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    }
}

namespace {

struct FileCase {
    const char* name;
    const char* mediaType; ///< of the manifest
    const char* kind;      ///< as `info` tells it
    const char* body;
    const char* text;
};

const FileCase kFiles[] = {
    {"a.ott", "text-template", "text document template", "<office:text><text:p>t</text:p></office:text>",
     "t\n"},
    {"a.odm", "text-master", "master document", "<office:text><text:p>m</text:p></office:text>", "m\n"},
    {"a.odc", "chart", "chart", "<office:chart><text:p>c</text:p></office:chart>", "c\n"},
    {"a.odi", "image", "image",
     "<office:image><draw:frame><draw:text-box><text:p>i</text:p></draw:text-box></draw:frame></"
     "office:image>",
     "i\n"},
    {"misnamed.ods", "text", "text document", "<office:text><text:p>n</text:p></office:text>", "n\n"},
    {"nameless", "text", "text document", "<office:text><text:p>o</text:p></office:text>", "o\n"},
};

/// All commands agree that the file is whole, of that kind and of that text.
void ExpectTaken(const std::string& path, const std::string& kind, const std::string& text,
                 const std::string& copy) {
    SCOPED_TRACE(path);
    EXPECT_NE(RunCommand({"info", path}).out.find("type:              " + kind + " ("), std::string::npos);
    EXPECT_NE(RunCommand({"tree", path}).out.find("COfficeBody office:body"), std::string::npos);
    EXPECT_EQ(RunCommand({"check", path}).out, path + ": nothing is lost\n");
    EXPECT_EQ(RunCommand({"roundtrip", path, copy}).code, 0);
    for (const std::string& file : {path, copy})
        EXPECT_EQ(RunCommand({"text", file}).out, text);
}

} // namespace

TEST_F(Command, TakesPackagesOfAllKinds) {
    for (const FileCase& row : kFiles) {
        const std::string mediaType = "application/vnd.oasis.opendocument." + std::string(row.mediaType);
        const std::string content =
            Root("office:document-content", "<office:body>" + std::string(row.body) + "</office:body>");
        const std::string manifest = test::Manifest({{"/", mediaType}, {"content.xml"}});
        test::WritePackage(
            file(row.name),
            {{"mimetype", mediaType}, {"META-INF/manifest.xml", manifest}, {"content.xml", content}});
        ExpectTaken(file(row.name), row.kind, row.text, file("copy"));
        // The same with the manifest's older namespace.
        constexpr std::string_view kNamespace = "urn:oasis:names:tc:opendocument:xmlns:manifest:1.0";
        std::string older = manifest;
        older.replace(older.find(kNamespace), kNamespace.size(), "http://openoffice.org/2001/manifest");
        test::WritePackage(
            file("older"),
            {{"mimetype", mediaType}, {"META-INF/manifest.xml", older}, {"content.xml", content}});
        ExpectTaken(file("older"), row.kind, row.text, file("copy"));
    }
}

TEST_F(Command, TakesFlatDocuments) {
    std::string xml = Root(
        "office:document",
        "<office:meta><dc:title>Flat</dc:title></office:meta><office:styles><text:list-style "
        "style:name=\"L\">"
        "<text:list-level-style-number text:level=\"1\" style:num-format=\"1\" style:num-suffix=\".\"/>"
        "</text:list-style></office:styles><office:master-styles><style:master-page><style:header>"
        "<text:p>no</text:p></style:header></style:master-page></"
        "office:master-styles><office:body><office:text>"
        "<text:list text:style-name=\"L\"><text:list-item><text:p>one</text:p></text:list-item></text:list>"
        "<text:p>two<draw:frame><draw:object><office:document><office:body><office:text><text:p>no</text:p>"
        "</office:text></office:body></office:document></draw:object></draw:frame></text:p>"
        "</office:text></office:body>");
    const std::size_t place = xml.find(" xmlns:");
    xml.insert(place, " office:mimetype=\"" + std::string(test::kTextType) + "\" office:version=\"1.2\"");
    const std::string path = file("flat.xml");
    test::WriteFile(path, xml);
    ExpectTaken(path, "text document", "    1. one\ntwo\n", file("copy.fodt"));
    EXPECT_NE(RunCommand({"info", path}).out.find("title:             Flat"), std::string::npos);
    EXPECT_EQ(RunCommand({"tree", path, "--part", "meta.xml"}).code, 3);
}

TEST_F(Command, AsksForThePasswordOnATerminal) {
    const auto [name, path, group, password] = EncryptedSample();
    ASSERT_NE(path, "");
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    ASSERT_GE(child, 0);
    if (child == 0) {
        execl(ODFMODEL_COMMAND, ODFMODEL_COMMAND, "text", path.c_str(), nullptr);
        _exit(127);
    }
    // The first answer is wrong, the second right; each comes when it is asked for.
    std::string seen;
    std::vector<std::string> answers{password + "\n", "wrong-one\n"};
    std::size_t asked = 0;
    char piece[4096];
    for (ssize_t count = read(terminal, piece, sizeof piece); count > 0;
         count = read(terminal, piece, sizeof piece)) {
        seen.append(piece, static_cast<std::size_t>(count));
        const std::size_t question = seen.find("Password for", asked);
        if (question == std::string::npos || seen.find(": ", question) == std::string::npos ||
            answers.empty())
            continue;
        asked = question + 1;
        const std::string answer = answers.back();
        answers.pop_back();
        ASSERT_EQ(write(terminal, answer.data(), answer.size()), static_cast<ssize_t>(answer.size()));
    }
    int status = 0;
    waitpid(child, &status, 0);
    close(terminal);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_TRUE(answers.empty());
    EXPECT_EQ(seen.find(password), std::string::npos) << "the password is shown";
    EXPECT_EQ(seen.find("wrong-one"), std::string::npos) << "the password is shown";
    EXPECT_GT(seen.size(), 200U) << "the text comes in the end";
}

TEST_F(Command, LetsNoControlCharacterThrough) {
    const std::string hostile = "a\xC2\x9B\xE2\x80\xAE.xml";
    const std::string path =
        writeText("<text:p text:style-name=\"a&#x9b;&#9;&#10;&#x202e;\">&#x9b;&#x7f;</text:p>"
                  "<text:p text:nonsense=\"&#x9b;\"/><x:y&#x9b;/>");
    test::WriteOdf(path, test::kTextType,
                   {{"content.xml",
                     Root("office:document-content",
                          "<office:body><office:text><text:p text:style-name=\"a&#x9b;&#9;&#10;&#x202e;\">"
                          "&#x9b;&#x7f;</text:p><text:s text:c=\"&#x9b;\"/><!--&#x9b;\xC2\x9B-->"
                          "<e xmlns=\"urn:&#x9b;\"/></office:text></office:body>")},
                    {hostile, "x"}});
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"info", path},
                                               {"text", path},
                                               {"tree", path},
                                               {"check", "-v", path},
                                               {"check", "-v", "--listed", path},
                                               {"check", "--json", path},
                                               {"tree", path, "--part", hostile},
                                               {"text", hostile}}) {
        const Result result = RunCommand(arguments);
        EXPECT_FALSE(HasControlCharacter(result.out)) << arguments.front() << ": " << result.out;
        EXPECT_FALSE(HasControlCharacter(result.err)) << arguments.front() << ": " << result.err;
    }
}

TEST_F(Command, ShowsTheTree) {
    const std::string path = writeText("<text:p text:style-name=\"a\">b<text:s text:c=\"2\"/></text:p>");
    EXPECT_EQ(RunCommand({"tree", path}).out, "COfficeDocumentContent office:document-content\n"
                                              "  COfficeAutomaticStyles office:automatic-styles\n"
                                              "  COfficeBody office:body\n"
                                              "    COfficeText office:text\n"
                                              "      CTextP text:p text:style-name=\"a\"\n"
                                              "        \"b\"\n"
                                              "        CTextS text:s text:c=\"2\"\n");
    // What no class lists is there, too, and values in the words of the file.
    const std::string unlisted =
        writeText("<!--c--><text:p x:y=\"1\">a<x:e text:style-name=\"b\">d</x:e><?t u?></text:p>"
                  "<text:list text:continue-numbering=\"true\"/><text:p><text:s text:c=\"03\"/></text:p>");
    EXPECT_EQ(RunCommand({"tree", unlisted}).out,
              "COfficeDocumentContent office:document-content\n"
              "  COfficeAutomaticStyles office:automatic-styles\n"
              "  COfficeBody office:body\n"
              "    COfficeText office:text\n"
              "      (comment) \"c\"\n"
              "      CTextP text:p {urn:foreign}y=\"1\"\n"
              "        \"a\"\n"
              "        CForeignElement {urn:foreign}e text:style-name=\"b\"\n"
              "          \"d\"\n"
              "        (processing instruction) \"t u\"\n"
              "      CTextList text:list text:continue-numbering=\"true\"\n"
              "      CTextP text:p\n"
              "        CTextS text:s text:c=\"03\"\n");
    EXPECT_EQ(RunCommand({"tree", unlisted, "--part", "META-INF/manifest.xml"})
                  .out.rfind("CForeignElement manifest:manifest", 0),
              0U);
    EXPECT_EQ(RunCommand({"tree", path, "--depth", "0"}).out,
              "COfficeDocumentContent office:document-content\n");
    const Result missing = RunCommand({"tree", path, "--part", "styles.xml"});
    EXPECT_EQ(missing.code, 3);
    EXPECT_NE(missing.err.find("content.xml"), std::string::npos) << "names what there is";
}

TEST_F(Command, RoundTripKeepsTheTrees) {
    for (const test::Sample& sample : test::GoodSamples()) {
        if (sample.isEncrypted() || sample.group != "text") continue;
        SCOPED_TRACE(sample.name);
        ODF::CODFDoc before;
        ASSERT_EQ(before.Open(sample.path), 1);
        EXPECT_EQ(RunCommand({"roundtrip", sample.path, file("full.odt")}).code, 0);
        EXPECT_EQ(RunCommand({"roundtrip", "--listed", sample.path, file("listed.odt")}).code, 0);
        for (const std::string saved : {"full.odt", "listed.odt"}) {
            ODF::CODFDoc after;
            ASSERT_EQ(after.Open(file(saved)), 1);
            EXPECT_EQ(test::Difference(before, after), "") << saved;
        }
    }
}

TEST_F(Command, RepacksOpenPackagingFilesAsTheyAre) {
    const test::Members members{
        {"[Content_Types].xml",
         "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\"><Default "
         "Extension=\"rels\" "
         "ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/><Override "
         "PartName=\"/word/document.xml\" "
         "ContentType=\"application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml\"/"
         "></Types>"},
        {"_rels/.rels",
         "<Relationships "
         "xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\"><Relationship Id=\"rId1\" "
         "Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument\" "
         "Target=\"word/document.xml\"/></Relationships>"},
        {"word/document.xml", "<w:document xmlns:w=\"urn:w\"><!-- kept --></w:document>"},
        {"word/unlisted.bin", std::string("\0\1\2", 3)}};
    test::WritePackage(file("in.docx"), members);
    const Result result = RunCommand({"roundtrip", file("in.docx"), file("out.docx")});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(test::ReadPackage(file("out.docx")), members);
    for (const auto& [name, data] : members)
        EXPECT_NE(result.out.find(name), std::string::npos) << name;
    EXPECT_EQ(RunCommand({"check", file("in.docx")}).code, 0);

    const std::string info = RunCommand({"info", file("in.docx")}).out;
    EXPECT_NE(info.find("word document"), std::string::npos) << info;
    EXPECT_NE(info.find("/word/document.xml  "
                        "application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml"),
              std::string::npos)
        << info;
    EXPECT_NE(info.find("/  rId1 -> /word/document.xml"), std::string::npos) << info;
}
