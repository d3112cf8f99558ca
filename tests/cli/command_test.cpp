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

struct UsageCase {
    std::vector<std::string> arguments;
    const char* reason;
};

} // namespace

TEST_F(Command, TellsWrongUsage) {
    const std::string path = writeText("<text:p/>");
    const UsageCase cases[] = {
        {{}, "subcommand"},
        {{"nonsense"}, "nonsense"},
        {{"text"}, "FILE"},
        {{"roundtrip", path}, "OUT"},
        {{"tree", path, "--depth", "x"}, "--depth"},
        {{"info", "--nonsense", path}, "--nonsense"},
        {{"text", path, "--password", "a", "--password-file", "b"}, "excludes"},
    };
    for (const UsageCase& row : cases) {
        const Result result = RunCommand(row.arguments);
        EXPECT_EQ(result.code, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.err.find(row.reason), std::string::npos) << result.err;
    }
}

TEST_F(Command, HelpsAndTellsItsVersion) {
    for (const char* const command : {"info", "text", "tree", "roundtrip", "check"}) {
        const Result result = RunCommand({command, "--help"});
        EXPECT_EQ(result.code, 0);
        EXPECT_NE(result.out.find(std::string("odfmodel ") + command), std::string::npos);
        EXPECT_NE(result.out.find("Exit codes"), std::string::npos);
    }
    EXPECT_EQ(RunCommand({"--version"}).out.rfind("odfmodel ", 0), 0U);
}

TEST_F(Command, TellsWhyAFileCantBeOpened) {
    test::WriteFile(file("plain.odt"), "plain");
    test::WritePackage(file("empty.odt"), {{"a", "b"}});
    const std::map<std::string, std::string> reasons{{file("missing.odt"), "not readable"},
                                                     {file("plain.odt"), "not an archive"},
                                                     {file("empty.odt"), "no content"}};
    for (const auto& [path, reason] : reasons)
        for (const std::string command : {"text", "tree", "check", "roundtrip", "info"}) {
            if (path == file("empty.odt") && (command == "info" || command == "text")) continue;
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

TEST_F(Command, GoesOnBehindAFailure) {
    const Result result = RunCommand({"text", file("missing.odt"), writeText("<text:p>there</text:p>")});
    EXPECT_EQ(result.code, 3);
    EXPECT_EQ(result.out, "there\n");
}

TEST_F(Command, TellsOutputThatCantBeWritten) {
    const std::string path = writeText("<text:p>x</text:p>");
    EXPECT_EQ(RunCommand({"roundtrip", path, file("nowhere/out.odt")}).code, 4);
    EXPECT_EQ(test::Run({"sh", "-c", "exec \"$0\" text \"$1\" >/dev/full", ODFMODEL_COMMAND, path},
                        std::chrono::seconds(60))
                  .code,
              4);
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
    // What is saved is in clear.
    EXPECT_EQ(RunCommand({"roundtrip", path, file("clear.odt"), "--password", password}).code, 0);
    EXPECT_NE(RunCommand({"text", file("clear.odt")}).out, "");
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
                          "&#x9b;&#x7f;</text:p><text:s text:c=\"&#x9b;\"/></office:text></office:body>")},
                    {hostile, "x"}});
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"info", path},
                                               {"text", path},
                                               {"tree", path},
                                               {"check", "-v", path},
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
        EXPECT_EQ(RunCommand({"roundtrip", sample.path, file("out.odt")}).code, 0);
        ODF::CODFDoc before;
        ODF::CODFDoc after;
        ASSERT_EQ(before.Open(sample.path), 1);
        ASSERT_EQ(after.Open(file("out.odt")), 1);
        EXPECT_EQ(test::Difference(before, after), "");
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
