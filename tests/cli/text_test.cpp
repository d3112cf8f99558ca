// The text that the command prints.

#include "command.h"
#include "support/corpus.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

using test::Result;
using test::RunCommand;

namespace {

struct TextCase {
    const char* name;
    const char* body;
    const char* text; ///< what is printed
    const char* flow; ///< with --flow; null for the same
    const char* styles = "";
    const char* kind = "text";
};

class Text : public test::CommandTest<testing::TestWithParam<TextCase>> {};

constexpr const char* kLists =
    R"x(<text:list-style style:name="L"><text:list-level-style-number text:level="1" style:num-format="1" style:num-suffix="."/>)x"
    R"x(<text:list-level-style-number text:level="2" style:num-format="a" style:num-suffix=")" text:display-levels="2"/>)x"
    R"x(<text:list-level-style-number text:level="3" style:num-format="I" text:start-value="4"/></text:list-style>)x";
constexpr const char* kOutline =
    R"x(<text:outline-style><text:outline-level-style text:level="1" style:num-format="1" style:num-suffix="."/>)x"
    R"x(<text:outline-level-style text:level="2" style:num-format="A" text:display-levels="2"/></text:outline-style>)x"
    R"x(<style:style style:family="paragraph" style:name="out" style:list-style-name=""/>)x";
constexpr const char* kDeletion =
    R"x(<text:tracked-changes><text:changed-region text:id="c"><text:deletion><office:change-info>)x"
    R"x(<dc:creator>who</dc:creator><text:p>why</text:p></office:change-info><text:p>gone</text:p><text:p>too</text:p>)x"
    R"x(</text:deletion></text:changed-region></text:tracked-changes><text:p>a<text:change text:change-id="c"/>b</text:p>)x";

const TextCase kTexts[] = {
    {"Blanks", "<text:p>  a \n b<text:s text:c=\"3\"/>c<text:span> </text:span> d</text:p>", "a b   c d\n",
     nullptr},
    {"TabsAndBreaks", "<text:p>a<text:tab/>b<text:line-break/>c<text:soft-page-break/>d</text:p>",
     "a\tb\ncd\n", nullptr},
    {"OrderInLinks", "<text:p><text:a>a<text:span>b</text:span>c<text:s/>d</text:a></text:p>", "abc d\n",
     nullptr},
    {"ForeignElements", "<text:p>a<x:y>b</x:y><text:meta>c</text:meta></text:p>", "abc\n", nullptr},
    {"Ruby",
     "<text:p><text:ruby><text:ruby-base>base</text:ruby-base><text:ruby-text>no</text:ruby-text></"
     "text:ruby></text:p>",
     "base\n", nullptr},
    {"Comments",
     "<text:p>a<office:annotation><dc:creator>no</dc:creator><text:p>no</text:p></office:annotation>b</"
     "text:p>",
     "ab\n", nullptr},
    {"Notes",
     "<text:p>a<text:note><text:note-citation>7</text:note-citation><text:note-body><text:p>note</"
     "text:p><text:p>more</text:p>"
     "</text:note-body></text:note>b</text:p><text:p>c</text:p>",
     "a7b\n[7] note\nmore\nc\n", "a7b\nc\n"},
    {"Frames",
     "<text:p>a<draw:frame><draw:text-box><text:p>in<draw:rect><text:p>deep</text:p></draw:rect></text:p></"
     "draw:text-box>"
     "</draw:frame>b</text:p>",
     "ab\nin\ndeep\n", "ab\n"},
    {"HiddenFields", "<text:p>[<text:variable-set text:display=\"none\">3</text:variable-set>]</text:p>",
     "[]\n", nullptr},
    {"Deletions", kDeletion, "ab\n", "agone\ntoob\n"},
    {"Tables",
     "<table:table><table:table-row><table:table-cell><text:p>a</text:p><text:p>b</text:p></table:table-cell>"
     "<table:covered-table-cell><text:p>no</text:p></table:covered-table-cell></table:table-row></"
     "table:table>",
     "a\nb\n", nullptr},
    {"ListLabels",
     "<text:list text:style-name=\"L\"><text:list-header><text:p>h</text:p></text:list-header>"
     "<text:list-item><text:p>a</text:p><text:p>a2</text:p><text:list><text:list-item><text:p>b</text:p></"
     "text:list-item>"
     "<text:list-item><text:p>c</text:p><text:list><text:list-item><text:p>d</text:p></text:list-item></"
     "text:list>"
     "</text:list-item></text:list></text:list-item><text:list-item "
     "text:start-value=\"9\"><text:p>e</text:p></text:list-item>"
     "</text:list>",
     "       h\n    1. a\n       a2\n        1.a) b\n        1.b) c\n            IV d\n    9. e\n", nullptr,
     kLists},
    {"ListsThatGoOn",
     "<text:list xml:id=\"i\" "
     "text:style-name=\"L\"><text:list-item><text:p>a</text:p></text:list-item></text:list>"
     "<text:list text:style-name=\"L\"><text:list-item><text:p>b</text:p></text:list-item></text:list>"
     "<text:list text:style-name=\"L\" "
     "text:continue-numbering=\"true\"><text:list-item><text:p>c</text:p></text:list-item></text:list>"
     "<text:list text:style-name=\"L\" "
     "text:continue-list=\"i\"><text:list-item><text:p>d</text:p></text:list-item></text:list>",
     "    1. a\n    1. b\n    2. c\n    2. d\n", nullptr, kLists},
    {"Bullets",
     "<text:list><text:list-item><text:p>a</text:p><text:list><text:list-item><text:p>b</text:p></"
     "text:list-item></text:list>"
     "</text:list-item></text:list>",
     "    \u2022 a\n        \u25E6 b\n", nullptr},
    {"HeadingNumbers",
     "<text:h text:outline-level=\"1\">a</text:h><text:h text:outline-level=\"2\">b</text:h>"
     "<text:h text:outline-level=\"1\" text:style-name=\"out\">c</text:h><text:h "
     "text:outline-level=\"1\">d</text:h>"
     "<text:h text:outline-level=\"2\">e</text:h>",
     "1. a\n1.A b\nc\n2. d\n2.A e\n", nullptr, kOutline},
    {"Sheets",
     "<table:table "
     "table:name=\"S\"><table:table-row><table:table-cell><text:p>a</text:p><text:p>b</text:p></"
     "table:table-cell>"
     "<table:table-cell table:number-columns-repeated=\"2\"/><table:table-cell "
     "table:number-columns-repeated=\"2\"><text:p>c"
     "<text:tab/>d</text:p></table:table-cell><table:table-cell "
     "table:number-columns-repeated=\"99\"/></table:table-row>"
     "<table:table-row table:number-rows-repeated=\"1000000\"><table:table-cell/></table:table-row>"
     "<table:table-row table:number-rows-repeated=\"2\"><table:table-cell "
     "office:value=\"1.5\"/></table:table-row></table:table>"
     "<table:table table:name=\"T\"/>",
     "S\na b\t\t\tc d\tc d\n1.5\n1.5\n\nT\n", nullptr, "", "spreadsheet"},
    {"Slides",
     "<draw:page><draw:frame><draw:text-box><text:p>a</text:p></draw:text-box></"
     "draw:frame><presentation:notes><draw:frame>"
     "<draw:text-box><text:p>note</text:p></draw:text-box></draw:frame></presentation:notes></draw:page>"
     "<draw:page><draw:rect><text:p>b</text:p></draw:rect></draw:page>",
     "a\nnote\n\nb\n", "a\n\nb\n", "", "presentation"},
    {"ControlCharacters", "<text:p>a&#x9b;31m&#x7f;&#13;b</text:p>", "a\\x9b31m\\x7f b\n", nullptr},
};

std::vector<std::string> Words(const std::string& text) {
    std::istringstream in(text.starts_with("\xEF\xBB\xBF") ? text.substr(3) : text);
    return {std::istream_iterator<std::string>(in), {}};
}

/// Words of fields that another program works out again when it opens the file: dates, times, names of files
/// and people, and the numbers of endnotes.
const std::map<std::string, std::set<std::string>> kWorkedOutAnew{
    {"text/lo74_indexes_fields.odt", {"indexes_fields.fodt", "13:27:18"}},
    {"text/lo_fields_dde_script.odt", {"08.04.2013", "11:27:13", "AM", "feature_fields_os.odt"}},
    {"text/mso_notes_toc.odt", {"endnotes1"}},
    {"text/staroffice8_report.odt", {"Jun", "19,", "2007"}},
};

} // namespace

TEST_P(Text, Prints) {
    const TextCase& row = GetParam();
    const std::string path = writeText(row.body, row.styles, row.kind);
    for (const bool isFlow : {false, true}) {
        const Result result = isFlow ? RunCommand({"text", "--flow", path}) : RunCommand({"text", path});
        EXPECT_EQ(result.code, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(result.out, isFlow && row.flow ? row.flow : row.text);
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, Text, testing::ValuesIn(kTexts),
                         [](const auto& given) { return std::string(given.param.name); });

using HostileText = test::CommandTest<>;

TEST_F(HostileText, RepetitionIsBounded) {
    const Result result = RunCommand(
        {"text",
         writeText(
             "<table:table><table:table-row table:number-rows-repeated=\"4294967295\"><table:table-cell "
             "table:number-columns-repeated=\"4294967295\"><text:p>x</text:p></table:table-cell>"
             "</table:table-row></table:table><text:p><text:s text:c=\"4294967295\"/></text:p>",
             {}, "spreadsheet")});
    EXPECT_EQ(result.code, 5);
    EXPECT_LT(result.out.size(), std::size_t{80} << 20);
    EXPECT_NE(result.err.find("too many"), std::string::npos);
}

TEST_F(HostileText, DeepNestingNeedsNoStack) {
    std::string body;
    for (int i = 0; i < 4000; ++i)
        body += "<text:span>";
    body = "<text:p>" + body + "deep";
    for (int i = 0; i < 4000; ++i)
        body += "</text:span>";
    const std::string path = writeText(body + "</text:p>");
    constexpr const char* kSmallStack = "ulimit -s 1024; ";
    EXPECT_EQ(RunCommand({"text", path}, kSmallStack).out, "deep\n");
    EXPECT_NE(RunCommand({"tree", path}, kSmallStack).out.find("\"deep\""), std::string::npos);
    EXPECT_EQ(RunCommand({"check", path}, kSmallStack).code, 0);
    EXPECT_EQ(RunCommand({"roundtrip", path, file("out.odt")}, kSmallStack).code, 0);
}

using Collection = test::CommandTest<>;

TEST_F(Collection, HasTheWordsOfAnotherConverter) {
    const std::vector<test::Sample> samples = test::SamplesOf("text");
    if (samples.empty()) GTEST_SKIP() << "no sample collection at " ODFMODEL_CORPUS;
    if (!test::HasProgram("soffice")) GTEST_SKIP() << "no soffice to compare with";
    std::vector<std::string> convert{"soffice",    "-env:UserInstallation=file://" + file("profile"),
                                     "--headless", "--convert-to",
                                     "txt:Text",   "--outdir",
                                     file("texts")};
    for (const test::Sample& sample : samples)
        convert.push_back(sample.path);
    const test::Ending ending = test::Run(convert, std::chrono::seconds(300));
    ASSERT_EQ(ending.code, 0) << ending.output;
    for (const test::Sample& sample : samples) {
        SCOPED_TRACE(sample.name);
        const std::filesystem::path converted =
            std::filesystem::path(file("texts")) /
            std::filesystem::path(sample.name).filename().replace_extension("txt");
        const std::vector<std::string> theirs = Words(test::ReadFile(converted));
        const std::vector<std::string> ours = Words(RunCommand({"text", "--flow", sample.path}).out);
        ASSERT_EQ(ours.size(), theirs.size());
        const auto known = kWorkedOutAnew.find(sample.name);
        for (std::size_t i = 0; i < ours.size(); ++i)
            if (ours[i] != theirs[i]) {
                EXPECT_TRUE(known != kWorkedOutAnew.end() && known->second.contains(ours[i]))
                    << "word " << i << ": \"" << ours[i] << "\" here, \"" << theirs[i] << "\" there";
            }
    }
}
