// The verbs that change, convert and compare documents: each flow is a few calls, one after the other.

#include "command.h"

#include <nlohmann/json.hpp>

using test::Result;
using test::RunCommand;

namespace {

struct Call {
    std::vector<std::string> arguments; ///< those that begin with @ are files of the workspace
    int code = 0;
    const char* out = nullptr; ///< all of the output, @ for the folder of the workspace; null for any
    const char* err = "";      ///< part of the errors; empty for none at all
};

struct Flow {
    const char* name;
    std::vector<Call> calls;
};

constexpr const char* kBody =
    R"x(<text:h text:outline-level="2">A * title</text:h><text:p>Hello <text:span text:style-name="b">wor</text:span>ld, )x"
    R"x(<text:a xmlns:xlink="http://www.w3.org/1999/xlink" xlink:href="http://x.org/(1)">link</text:a> and )x"
    R"x(<text:a xmlns:xlink="http://www.w3.org/1999/xlink" xlink:href="javascript:alert(1)">none</text:a>.)x"
    R"x(<text:note><text:note-citation>1</text:note-citation><text:note-body><text:p>deep</text:p></text:note-body></text:note></text:p>)x"
    R"x(<text:list text:style-name="L"><text:list-item><text:p>one</text:p><text:list><text:list-item><text:p>in</text:p></text:list-item></text:list></text:list-item><text:list-item><text:p>two</text:p></text:list-item></text:list>)x"
    R"x(<table:table><table:table-row><table:table-cell><text:p>a|b</text:p></table:table-cell><table:table-cell><text:p>c</text:p></table:table-cell></table:table-row></table:table>)x"
    R"x(<text:p># 1 &lt;b&gt;<text:line-break/><text:user-field-get text:name="who">nobody</text:user-field-get></text:p>)x";
constexpr const char* kStyles =
    R"x(<style:style style:name="b" style:family="text"><style:text-properties xmlns:fo="urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0" fo:font-weight="bold"/></style:style>)x"
    R"x(<text:list-style style:name="L"><text:list-level-style-number text:level="1" style:num-format="1"/><text:list-level-style-bullet text:level="2"/></text:list-style>)x";

constexpr const char* kShapes =
    R"x(<text:p>a<draw:custom-shape><text:p>in <text:span text:style-name="b">bo<text:span text:style-name="b">ld</text:span></text:span></text:p>)x"
    R"x(<text:list><text:list-item><text:p>item</text:p></text:list-item></text:list></draw:custom-shape>b)x"
    R"x(<draw:frame><draw:text-box><text:p>box<draw:rect><text:p>deep</text:p></draw:rect></text:p>)x"
    R"x(<table:table><table:table-row><table:table-cell><text:p>cell</text:p></table:table-cell></table:table-row></table:table></draw:text-box></draw:frame></text:p>)x"
    R"x(<table:table><table:table-row><table:table-cell table:number-rows-spanned="2"><text:p>A</text:p></table:table-cell><table:table-cell><text:p>B</text:p></table:table-cell></table:table-row>)x"
    R"x(<table:table-row><table:covered-table-cell/><table:table-cell><text:p>C</text:p></table:table-cell></table:table-row></table:table>)x"
    R"x(<text:p><draw:frame><draw:image xmlns:xlink="http://www.w3.org/1999/xlink" xlink:href="Pictures/a|b"/><svg:title xmlns:svg="urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0">p</svg:title></draw:frame></text:p>)x";
constexpr const char* kShapesOfSheet =
    R"x(<table:table table:name="S"><table:shapes><draw:custom-shape><text:p>floating</text:p></draw:custom-shape></table:shapes>)x"
    R"x(<table:table-row><table:table-cell><text:p>c</text:p><draw:rect><text:p>hangs</text:p></draw:rect></table:table-cell></table:table-row></table:table>)x";
constexpr const char* kMarks =
    R"x(<text:p>a &amp;lt; &amp;<text:s/>AT&amp;T &amp; <text:line-break/>- x<text:line-break/># y<text:line-break/></text:p>)x"
    R"x(<text:p>Look!<text:a xmlns:xlink="http://www.w3.org/1999/xlink" xlink:href="javascript&amp;#58;alert(1)">l</text:a></text:p>)x"
    R"x(<text:h text:outline-level="1">C<text:line-break/>more #</text:h>)x"
    R"x(<text:p>n<text:note><text:note-citation>1</text:note-citation><text:note-body><text:list-item><text:p>x</text:p></text:list-item>)x"
    R"x(<text:list text:style-name="L"><text:list-item><text:p>first</text:p></text:list-item></text:list></text:note-body></text:note></text:p><text:p>&#x9b;</text:p>)x";

constexpr const char* kCsv = "name,n,day,code\n\"a \"\"q\"\", b\",1.5,2024-01-31,007\n\n\"two\nlines\",,x\n";

const Flow kFlows[] = {
    {"MetadataIsSetShownAndTakenAway",
     {{{"new", "@x.odt"}},
      {{"new", "@x.odt"}, 4, "", "--force"},
      {{"meta", "--set", "title=A & B", "--set", "keywords=c, d", "--set", "user:P=q", "-i", "@x.odt"},
       0,
       ""},
      {{"meta", "@x.odt"},
       0,
       "@x.odt\n metadata\n  title:             A & B\n  keywords:          c, d\n"
       "  user-defined \"P\":  q\n"},
      {{"meta", "--unset", "user:P", "--unset", "keywords", "--set", "title=C", "-o", "@y.odt", "@x.odt"}},
      {{"meta", "@y.odt"}, 0, "@y.odt\n metadata\n  title:             C\n"},
      {{"meta", "--set", "colour=x", "-i", "@x.odt"}, 2, "", "there is no field colour"},
      {{"meta", "--set", "title=x", "@x.odt"}, 2, "", "-o OUT"}}},
    {"TextIsReplacedAcrossFormats",
     {{{"replace", "world", "moon", "@in.odt", "-o", "@out.odt"}, 0, "@in.odt: 1 replaced\n"},
      {{"diff", "@in.odt", "@out.odt"},
       1,
       "content.xml: ~ /office:document-content/office:body/office:text/text:p[1]/text:span/text()"
       " \"wor\" -> \"moon\"\n"
       "content.xml: ~ /office:document-content/office:body/office:text/text:p[1]/text()[2]"
       " \"ld, \" -> \", \"\n"},
      {{"replace", "--field", "who", "Ada", "-i", "@out.odt"}, 0, "@out.odt: 1 replaced\n"},
      {{"replace", "nowhere", "x", "-i", "@out.odt"}, 0, "@out.odt: 0 replaced\n"},
      {{"replace", "a", "b", "@in.odt", "@out.odt", "-o", "@x.odt"}, 2, "", "one FILE alone"}}},
    {"DocumentsAreEncryptedAndDecrypted",
     {{{"encrypt", "--new-password", "s", "@in.odt", "-o", "@e.odt"}},
      {{"text", "@e.odt"}, 3, "", "password"},
      {{"encrypt", "--password", "s", "--new-password", "t", "--scheme", "cbc", "-i", "@e.odt"}},
      {{"decrypt", "--password", "t", "@e.odt", "-o", "@d.odt"}},
      {{"diff", "@in.odt", "@d.odt"}, 0, ""},
      {{"convert", "@in.odt", "-o", "@in.fodt"}},
      {{"encrypt", "--new-password", "s", "@in.fodt", "-o", "@x"}, 5, "", "can't be encrypted"}}},
    {"MembersComeAndGo",
     {{{"insert", "--member", "Pictures/a.png=@picture", "--picture", "@picture", "@in.odt", "-o", "@p.odt"},
       0,
       "@in.odt: Pictures/picture\n"},
      {{"extract", "@p.odt", "Pictures/a.png"}, 0, "bytes"},
      {{"extract", "@p.odt", "--pictures", "-o", "@out"}, 0, "@out/Pictures/a.png\n@out/Pictures/picture\n"},
      {{"extract", "@p.odt", "Pictures/a*", "-o", "@out"}, 4, "", "--force"},
      {{"extract", "@p.odt", "none"}, 5, "", "there is no member none"},
      {{"insert", "--remove", "Pictures/a.png", "--remove", "Pictures/picture", "-i", "@p.odt"}},
      {{"diff", "@in.odt", "@p.odt"}, 0, ""},
      {{"insert", "--member", "x", "-i", "@p.odt"}, 2, "", "--member x"}}},
    {"PackagesBecomeFlatAndBack",
     {{{"convert", "@in.odt", "-o", "@f.fodt"}},
      {{"convert", "@f.fodt", "-o", "@b.odt"}},
      {{"diff", "--part", "content.xml", "@in.odt", "@b.odt"}, 0, ""},
      {{"diff", "@in.odt", "@f.fodt"}, 0, ""},
      {{"convert", "@in.odt", "--to", "ods"}, 5, "", "doesn't become"},
      {{"convert", "@in.odt", "--to", "pdf"}, 2, "", "there is no form pdf"},
      {{"convert", "@in.odt", "@f.fodt", "--to", "txt"}, 2, "", "folder"}}},
    {"CsvComesInAndOut",
     {{{"convert", "@t.csv", "-o", "@t.ods"}},
      {{"convert", "@t.ods", "--to", "csv"}, 0, kCsv},
      {{"convert", "@t.ods", "--to", "csv", "--sheet", "no"}, 5, "", "there are Sheet1"},
      {{"convert", "@t.csv", "--to", "tsv"},
       0,
       "name\tn\tday\tcode\n\"a \"\"q\"\", b\"\t1.5\t2024-01-31\t007\n\n\"two\nlines\"\t\tx\n"}}},
    {"TextsBecomeMarkup",
     {{{"convert", "@in.odt", "--to", "md"},
       0,
       "## A \\* title\n\nHello **wor**ld, [link](http://x.org/%281%29) and none.[^1]\n\n1. one\n   - in\n"
       "2. two\n\n| a\\|b | c |\n| --- | --- |\n\n\\# 1 \\<b\\>\\\nnobody\n\n[^1]: deep\n"},
      {{"convert", "@in.odt", "--to", "html"},
       0,
       "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title></title>\n</head>\n<body>\n"
       "<h2>A * title</h2>\n<p>Hello <strong>wor</strong>ld, <a href=\"http://x.org/(1)\">link</a> and none."
       "<sup id=\"mark1\"><a "
       "href=\"#note1\">1</a></sup></p>\n<ol>\n<li><p>one</p>\n<ul>\n<li><p>in</p>\n</li>\n"
       "</ul>\n</li>\n<li><p>two</p>\n</li>\n</ol>\n<table>\n<tr><td><p>a|b</p>\n</td><td><p>c</p>\n</td></"
       "tr>\n"
       "</table>\n<p># 1 &lt;b&gt;<br>nobody</p>\n<hr>\n<div id=\"note1\"><a "
       "href=\"#mark1\">1</a>\n<p>deep</p>\n"
       "</div>\n</body>\n</html>\n"},
      {{"convert", "@t.csv", "--to", "md"},
       0,
       "## Sheet1\n\n| name | n | day | code |\n| --- | --- | --- | --- |\n"
       "| a \"q\", b | 1.5 | 2024-01-31 | 007 |\n|  |\n| two<br>lines |  | x |\n"}}},
    {"ShapesAndCoveredCellsAreInTheMarkup",
     {{{"insert", "--member", "content.xml=@shapes.xml", "@in.odt", "-o", "@s.odt"}},
      {{"convert", "@s.odt", "--to", "md"},
       0,
       "ab\n\nin **bold**\n\n- item\n\nbox\n\ndeep\n\n| cell |\n| --- |\n\n| A | B |\n| --- | --- |\n|  | C "
       "|\n\n"
       "![p](Pictures/a%7Cb)\n"},
      {{"convert", "@s.odt", "--to", "html", "-o", "@s.html"}, 0, ""},
      {{"insert", "--member", "content.xml=@shapes-of-sheet.xml", "@s.ods", "-i"}},
      {{"convert", "@s.ods", "--to", "md"}, 0, "## S\n\n| c |\n| --- |\n\nfloating\n\nhangs\n"}}},
    {"MarkdownTakesNoTextForMarks",
     {{{"insert", "--member", "content.xml=@marks.xml", "@in.odt", "-o", "@m.odt"}},
      {{"convert", "@m.odt", "--to", "md"},
       0,
       "a \\&lt; \\& AT\\&T & \\\n\\- x\\\n\\# y\n\nLook\\![l](javascript&amp;#58;alert%281%29)\n\n# C more "
       "\\#\n\n"
       "n[^1]\n\n\\\\x9b\n\n[^1]: x\n\n    1. first\n"}}},
    {"WhatCantBeReadIsNotAlike",
     {{{"insert", "--member", "Object 1/content.xml=@damaged.xml", "@in.odt", "-o", "@d.odt"}},
      {{"diff", "@d.odt", "@d.odt"}, 3, "", "Object 1/content.xml"},
      {{"diff", "-q", "--part", "content.xml", "@in.odt", "@d.odt"}, 0, ""},
      {{"diff", "--part", "none.xml", "@in.odt", "@d.odt"}, 5, "", "none.xml"},
      {{"convert", "@in.odt", "-o", "@f.fodt"}},
      {{"diff", "--part", "content.xml", "@f.fodt", "@f.fodt"}, 5, "", "--part"}}},
    {"NamesLeadNowhereElse",
     {{{"insert", "--member", "../evil=@picture", "@in.odt", "-o", "@x.odt"}, 5, "", "../evil"},
      {{"insert", "--member", "/evil=@picture", "@in.odt", "-o", "@x.odt"}, 5, "", "/evil"},
      {{"insert", "--member", "a\xFF=@picture", "@in.odt", "-o", "@x.odt"}, 5, "", "a\\xff"},
      {{"insert", "--member", "a=@out", "@in.odt", "-o", "@x.odt"}, 5, "", "it is a directory"},
      {{"insert", "--member", "a=@picture", "@in.odt", "-o", "@a/no.odt"}, 4, "", "no such directory"},
      {{"extract", "@in.odt", "[content].xml", "-o", "@out"}, 5, "", "no member [content].xml"}}},
    {"WordsAreCheckedBeforeAnythingIsDone",
     {{{"text", ""}, 3, "", "an empty name"},
      {{"text", "[x]"}, 3, "", "[x]: "},
      {{"tree", "--depth", "-1", "@in.odt"}, 2, "", "--depth"},
      {{"replace", "Hello", "a\x01", "-i", "@in.odt"}, 2, "", "no document can hold"},
      {{"meta", "--set", "title=\xFF", "-i", "@in.odt"}, 2, "", "no document can hold"},
      {{"convert", "--to", "csv", "--separator", "\"", "@in.odt"}, 2, "", "--separator"},
      {{"convert", "--to", "md", "--sheet", "S", "@in.odt"}, 2, "", "--sheet"},
      {{"roundtrip", "--listed", "@in.odt", "-"}, 2, "", "standard output"},
      {{"replace", "-i", "--", "Hello", "-x", "@in.odt"}, 0, "@in.odt: 1 replaced\n"},
      {{"replace", "-i", "[", "]", "@in.odt"}, 0, "@in.odt: 0 replaced\n"},
      {{"replace", "-i", "--", "-x", "[y]", "@in.odt"}, 0, "@in.odt: 1 replaced\n"},
      {{"replace", "-i", "[y]", "", "@in.odt"}, 0, "@in.odt: 1 replaced\n"}}},
    {"OneBadFileStopsNoOther",
     {{{"text", "@missing.odt", "@u.odt"}, 3, "there\n", "no such file"},
      {{"convert", "@out", "@in.odt", "--to", "txt", "-o", "@out"}, 3, "", "it is a directory"},
      {{"convert", "@folder.csv", "@t.csv", "--to", "ods", "-o", "@out"}, 3, "", "it is a directory"},
      {{"convert", "@out/t.ods", "--to", "csv"}, 0, kCsv},
      {{"convert", "@in.odt", "@out/in.odt", "--to", "md", "-o", "@out", "--force"}, 3, "", "no such file"},
      {{"convert", "@in.odt", "@in.odt", "--to", "md", "-o", "@out", "--force"}, 4, "", "of another FILE"}}},
    {"WrongUsageIsTold",
     {{{}, 2, "", "subcommand"},
      {{"nonsense"}, 2, "", "nonsense"},
      {{"text"}, 2, "", "FILE"},
      {{"roundtrip", "@in.odt"}, 2, "", "OUT"},
      {{"tree", "@in.odt", "--depth", "x"}, 2, "", "--depth"},
      {{"info", "--nonsense", "@in.odt"}, 2, "", "--nonsense"},
      {{"text", "@in.odt", "--password", "a", "--password-file", "b"}, 2, "", "excludes"}}},
    {"OutputThatCantBeWrittenIsTold",
     {{{"roundtrip", "@in.odt", "@nowhere/out.odt"},
       4,
       "",
       "@nowhere/out.odt: could not write (there is no such dir"},
      {{"roundtrip", "@in.odt", "@out"}, 4, "", "@out: could not write (it is a directory"},
      {{"roundtrip", "@in.odt", "/dev/full"}, 4, "", "/dev/full: could not write"}}},
    {"WrongWordsGetASuggestion",
     {{{"conver"}, 2, "", "did you mean convert?"},
      {{"text", "--pasword", "x", "@in.odt"}, 2, "", "did you mean --password?"},
      {{"help", "dif"}, 2, "", "did you mean diff?"},
      {{"xyzzy"}, 2, "", "there is no command xyzzy\n"}}},
};

class Verbs : public test::CommandTest<testing::TestWithParam<Flow>> {
protected:
    static std::string Content(const std::string& kind, const std::string& body) {
        return Root("office:document-content", "<office:automatic-styles>" + std::string(kStyles) +
                                                   "</office:automatic-styles><office:body><office:" + kind +
                                                   ">" + body + "</office:" + kind + "></office:body>");
    }
    std::string placed(std::string text) const {
        const std::string folder = file("");
        for (std::size_t at = 0; (at = text.find('@', at)) != std::string::npos; at += folder.size())
            text.replace(at, 1, folder);
        return text;
    }
};

} // namespace

TEST_P(Verbs, DoWhatTheyAreToldTo) {
    std::filesystem::rename(writeText(kBody, kStyles), file("in.odt"));
    test::WriteFile(file("t.csv"), kCsv);
    test::WriteFile(file("picture"), "bytes");
    std::filesystem::create_directory(file("folder.csv"));
    test::WriteFile(file("shapes.xml"), Content("text", kShapes));
    test::WriteFile(file("shapes-of-sheet.xml"), Content("spreadsheet", kShapesOfSheet));
    test::WriteFile(file("marks.xml"), Content("text", kMarks));
    test::WriteFile(file("damaged.xml"), Content("text", "<text:p>a</text:q>"));
    std::filesystem::rename(writeText("<text:p>there</text:p>"), file("u.odt"));
    ASSERT_EQ(RunCommand({"new", file("s.ods")}).code, 0);
    std::filesystem::create_directory(file("out"));
    for (const Call& call : GetParam().calls) {
        std::vector<std::string> arguments;
        for (const std::string& argument : call.arguments)
            arguments.push_back(placed(argument));
        SCOPED_TRACE(testing::PrintToString(call.arguments));
        const Result result = RunCommand(arguments);
        EXPECT_EQ(result.code, call.code) << result.err;
        if (call.out) {
            EXPECT_EQ(result.out, placed(call.out));
        }
        EXPECT_NE(result.err.find(placed(call.err)), std::string::npos) << result.err;
        if (*call.err == '\0') {
            EXPECT_EQ(result.err, "");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Flows, Verbs, testing::ValuesIn(kFlows),
                         [](const auto& given) { return std::string(given.param.name); });

using Command = test::CommandTest<>;

TEST_F(Command, ReadsAndWritesTheStandardStreams) {
    const std::string path = writeText("<text:p>Hello world</text:p>");
    const std::string pipe = file("pipe");
    const std::string input =
        "mkfifo '" + pipe + "'; cat '" + path + "' > '" + pipe + "' & exec < '" + pipe + "'; ";
    EXPECT_EQ(RunCommand({"text", "-"}, input).out, "Hello world\n");
    std::filesystem::remove(pipe);
    const Result replaced = RunCommand({"replace", "world", "moon", "-"}, input);
    EXPECT_EQ(replaced.code, 0) << replaced.err;
    test::WriteFile(file("out.odt"), replaced.out);
    EXPECT_EQ(RunCommand({"text", file("out.odt")}).out, "Hello moon\n");
    // What is a file already is opened as such.
    EXPECT_EQ(RunCommand({"check", "-"}, "exec < '" + path + "'; ").code, 0);
    EXPECT_EQ(RunCommand({"replace", "a", "b", "-i", "-"}).code, 2);
}

TEST_F(Command, ChangesNothingWhereNothingIsToBeChanged) {
    const std::string path = writeText("<text:p>Hello</text:p>");
    const std::string bytes = test::ReadFile(path);
    EXPECT_EQ(RunCommand({"replace", "nowhere", "x", "-i", path}).code, 0);
    EXPECT_EQ(RunCommand({"decrypt", "-i", path}).code, 0);
    EXPECT_EQ(test::ReadFile(path), bytes);
    // A document that can't be read whole isn't written.
    test::WriteOdf(path, test::kTextType,
                   {{"content.xml", test::TextContent("<text:p>there</text:p><text:p>gone</text:q>")}});
    const std::string damaged = test::ReadFile(path);
    EXPECT_EQ(RunCommand({"replace", "there", "x", "-i", path}).code, 3);
    EXPECT_EQ(test::ReadFile(path), damaged);
    EXPECT_EQ(RunCommand({"convert", path, "-o", file("x.fodt")}).code, 3);
    EXPECT_FALSE(std::filesystem::exists(file("x.fodt")));
}

TEST_F(Command, PrintsFactsAsJson) {
    const std::string one = writeText("<text:p>Hello</text:p>");
    std::filesystem::copy_file(one, file("two.odt"));
    RunCommand({"meta", "--set", "title=T", "--set", "keywords=a,b", "-i", file("two.odt")});
    const auto printed = [](const std::vector<std::string>& arguments) {
        return nlohmann::json::parse(RunCommand(arguments).out);
    };
    const nlohmann::json meta = printed({"meta", "--json", one, file("two.odt")});
    EXPECT_EQ(meta["files"][1]["metadata"]["title"], "T");
    EXPECT_EQ(meta["files"][1]["metadata"]["keywords"], (nlohmann::json{"a", "b"}));
    EXPECT_EQ(printed({"replace", "Hello", "x", "--json", "-i", file("two.odt")})["files"][0]["replaced"], 1);
    const nlohmann::json diff = printed({"diff", "--json", one, file("two.odt")});
    EXPECT_EQ(diff["members"][0]["differences"][0]["before"], "Hello");
    EXPECT_EQ(diff["members"][0]["differences"][0]["kind"], "text");
    EXPECT_EQ(diff["members"][1]["kind"], "member-added") << diff;
    const nlohmann::json extract = printed({"extract", "--json", one, "content.xml", "-o", file("out")});
    EXPECT_EQ(extract["members"][0]["member"], "content.xml");
}

TEST_F(Command, ComparesTreesByWhatIsAlike) {
    const std::string before = file("before.odt");
    std::filesystem::rename(writeText("<text:p>a</text:p><text:p/><text:p text:style-name=\"x\">b</text:p>"
                                      "<text:list/><text:p>c</text:p>"),
                            before);
    const std::string after =
        writeText("<text:p/><text:p>new</text:p><text:p text:style-name=\"y\">b</text:p>"
                  "<text:p>c</text:p><text:h>d</text:h>");
    constexpr const char* kText = "content.xml: ";
    const std::string path = "/office:document-content/office:body/office:text/";
    const auto line = [&](const std::string& sign, const std::string& rest) {
        return kText + sign + " " + path + rest + "\n";
    };
    EXPECT_EQ(RunCommand({"diff", before, after}).out,
              line("-", "text:p[1] \"a\"") + line("+", "text:p[2] \"new\"") +
                  line("~", "text:p[3]@text:style-name \"x\" -> \"y\"") + line("-", "text:list \"\"") +
                  line("+", "text:h \"d\""));
    EXPECT_EQ(RunCommand({"diff", "-q", before, after}).out, "");
    EXPECT_EQ(RunCommand({"diff", before, before}).code, 0);
}

TEST_F(Command, ExtractsIntoItsFolderAlone) {
    const std::string path = writeText("<text:p>Hello</text:p>");
    std::filesystem::create_directory(file("out"));
    std::filesystem::create_directory(file("elsewhere"));
    std::filesystem::create_directory_symlink(file("elsewhere"), file("out") + "/Pictures");
    ASSERT_EQ(RunCommand({"insert", "--member", "Pictures/a=" + path, "-i", path}).code, 0);
    const Result result = RunCommand({"extract", path, "Pictures/a", "-o", file("out")});
    EXPECT_EQ(result.code, 5);
    EXPECT_TRUE(std::filesystem::is_empty(file("elsewhere")));
}

TEST_F(Command, BoundsWhatRepetitionBecomes) {
    const std::string longText(100'000, 'x');
    std::string blanks;
    while (blanks.size() < 600'000)
        blanks += "<text:s text:c=\"4000\"/>b";
    const auto table = [](const std::string& text) {
        return "<table:table table:name=\"S\"><table:table-row table:number-rows-repeated=\"1048576\">"
               "<table:table-cell table:number-columns-repeated=\"16384\"><text:p>" +
               text + "</text:p></table:table-cell></table:table-row></table:table>";
    };
    const struct {
        std::string body;
        const char* kind;
        std::vector<std::string> forms;
    } kBodies[] = {
        {table("x"), "spreadsheet", {"csv", "md", "html", "txt"}},
        {table(longText), "spreadsheet", {"csv", "md", "html", "txt"}},
        {"<text:p>a<text:s text:c=\"2147483648\"/></text:p>", "text", {"md", "html", "txt"}},
        {"<text:p>a<text:s text:c=\"99999999999\"/></text:p>", "text", {"md", "html", "txt"}},
        {"<text:p>" + blanks + "</text:p>", "text", {"md", "html", "txt"}},
        {"<table:table><table:table-row><table:table-cell table:number-columns-spanned=\"99999999\"/>"
         "<table:covered-table-cell "
         "table:number-columns-repeated=\"99999999\"/></table:table-row></table:table>",
         "text",
         {"md"}}};
    for (const auto& row : kBodies) {
        const std::string path = writeText(row.body, {}, row.kind);
        for (const std::string& form : row.forms) {
            SCOPED_TRACE(row.body.substr(0, 100) + " to " + form);
            const Result result =
                RunCommand({"convert", path, "--force", "--to", form, "-o", file("converted")});
            EXPECT_EQ(result.code, 5);
            EXPECT_NE(result.err.find("too many"), std::string::npos);
            EXPECT_LT(std::filesystem::file_size(file("converted")), std::size_t{100} << 20);
        }
    }
}

TEST_F(Command, ReplacesWhatALinkLeadsToUnderAnyName) {
    const std::string path = writeText("<text:p>x</text:p>");
    const std::string longest = file(std::string(252, 'n') + ".md");
    EXPECT_EQ(RunCommand({"convert", path, "-o", longest}).code, 0);
    std::filesystem::create_symlink(longest, file("link.md"));
    test::WriteFile(longest, "old");
    EXPECT_EQ(RunCommand({"convert", "--force", path, "-o", file("link.md")}).code, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(file("link.md")));
    EXPECT_EQ(test::ReadFile(longest), "x\n");
}

TEST_F(Command, TellsClosedStreamsOnce) {
    const std::string path = writeText("<text:p>x</text:p>");
    const auto run = [&](const std::string& line) {
        return test::Run({"sh", "-c", line, ODFMODEL_COMMAND, path}, std::chrono::seconds(60));
    };
    EXPECT_EQ(run("\"$0\" text - <&-").output,
              "odfmodel: -: the standard input can't be read: Bad file descriptor\n");
    for (const std::string end : {">/dev/full", ">&-"})
        for (const std::string verb : {"text \"$1\"", "roundtrip \"$1\" -", "convert --to md \"$1\"",
                                       "check --json \"$1\"", "extract \"$1\" content.xml"}) {
            const test::Ending ending = run("\"$0\" " + verb + ' ' + end);
            EXPECT_EQ(ending.code, 4) << verb << end;
            EXPECT_EQ(ending.output, "odfmodel: the output can't be written\n") << verb << end;
        }
}

TEST_F(Command, MakesPagesOfItsDefinitions) {
    for (const std::string page : {"man", "bash", "zsh", "fish"}) {
        const Result result = RunCommand({"pages", page});
        EXPECT_EQ(result.code, 0);
        for (const char* const word : {"convert", "encrypt", "in-place", "help"}) {
            std::string text = result.out;
            std::erase(text, '\\'); // as manual pages have it before a minus
            EXPECT_NE(text.find(word), std::string::npos) << page << ' ' << word;
        }
        EXPECT_EQ(result.out.find("pages"), std::string::npos) << "is for the build alone";
        test::WriteFile(file(page), result.out);
    }
    for (const std::string shell : {"bash", "zsh", "fish"})
        if (test::HasProgram(shell)) {
            EXPECT_EQ(test::Run({shell, "-n", file(shell)}, std::chrono::seconds(60)).code, 0) << shell;
        }
    EXPECT_NE(test::ReadFile(file("bash")).find("complete -o default"), std::string::npos)
        << "names of files may have blanks";
    EXPECT_EQ(RunCommand({"help"}).out.find("pages"), std::string::npos);
    EXPECT_EQ(RunCommand({"--version"}).out.rfind("odfmodel ", 0), 0U);
    for (const std::string verb : {"info", "text", "tree", "meta", "check", "diff", "convert", "new",
                                   "replace", "extract", "insert", "encrypt", "decrypt", "roundtrip"}) {
        const Result help = RunCommand({verb, "--help"});
        EXPECT_EQ(help.code, 0);
        EXPECT_NE(help.out.find("odfmodel " + verb + " [OPTIONS]"), std::string::npos) << help.out;
        EXPECT_NE(help.out.find("Exit codes"), std::string::npos);
        EXPECT_EQ(RunCommand({"help", verb}).out, help.out);
    }
}
