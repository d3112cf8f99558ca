// What the command says a round trip loses.

#include "command.h"
#include "support/corpus.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/document/odf_document.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>

using nlohmann::json;
using test::Result;
using test::RunCommand;

namespace {

struct CheckCase {
    const char* name;
    const char* body;
    const char* kind;      ///< of the one finding about content.xml; null for none
    const char* what = ""; ///< its name
    bool isLoss = true;
    int count = 1;
    const char* styles = "";
};

class Check : public test::CommandTest<testing::TestWithParam<CheckCase>> {};

const CheckCase kCases[] = {
    {"NothingLost", "<text:p text:style-name=\"a\">a<text:span>b</text:span>c<text:s text:c=\"3\"/></text:p>",
     nullptr},
    {"UnknownElement", "<text:p>a<x:y><x:z/>b</x:y>c</text:p><text:p><x:y/></text:p>", "unknown-element",
     "text:p/{urn:foreign}y", true, 2},
    {"MisplacedElement", "<text:s/>", "unknown-element", "office:text/text:s"},
    {"UnknownAttribute", "<text:p x:y=\"1\"/><text:p x:y=\"2\"/>", "unknown-attribute",
     "text:p@{urn:foreign}y", true, 2},
    {"UnknownOfKnownNamespace", "<text:p text:nonsense=\"1\"/>", "unknown-attribute", "text:p@text:nonsense"},
    {"EnumerationWord", "<text:p><text:note text:note-class=\"sidenote\"/></text:p>", "enumeration-value",
     "text:note@text:note-class"},
    {"LostDigits", "<text:p><text:expression office:value=\"0.123456789\"/></text:p>", "number-value",
     "text:expression@office:value"},
    {"Boolean", "<text:list text:continue-numbering=\"true\"/>", "boolean-spelling",
     "text:list@text:continue-numbering", false},
    {"NoBoolean", "<text:list text:continue-numbering=\"yes\"/>", "boolean-value",
     "text:list@text:continue-numbering"},
    {"NumberSpelling", "<text:p><text:s text:c=\"03\"/></text:p>", "number-spelling", "text:s@text:c", false},
    {"NoNumber", "<text:p><text:s text:c=\"many\"/></text:p>", "number-value", "text:s@text:c"},
    {"NumberWord", "", "number-value", "style:text-properties@style:text-line-through-width", true, 1,
     "<style:style style:name=\"a\" style:family=\"text\"><style:text-properties "
     "style:text-line-through-width=\"auto\"/>"
     "</style:style>"},
    {"DroppedText", "<text:list>lost</text:list>", "text-dropped", "text:list"},
    {"LayoutIsNoText", "<text:list>\n  <text:list-item>\n <text:p>a</text:p>\n</text:list-item> </text:list>",
     nullptr},
    {"MovedText",
     "<text:p><text:a xlink:href=\"\" "
     "xmlns:xlink=\"http://www.w3.org/1999/xlink\">a<text:span>b</text:span>c</text:a></text:p>",
     "text-moved", "text:a"},
    {"Comment", "<!-- gone --><text:p/>", "markup-dropped", "comment", false},
    {"Entity", "<text:p>a&#65;b</text:p>", nullptr},
};

json Checked(const std::vector<std::string>& arguments, int code) {
    std::vector<std::string> command{"check", "--json"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const Result result = RunCommand(command);
    EXPECT_EQ(result.code, code) << result.err;
    return json::parse(result.out, nullptr, false);
}

/// The findings about one member, lost and harmless ones.
std::pair<json, json> FindingsOf(const json& file, const std::string& member) {
    for (const json& entry : file.at("members"))
        if (entry.at("member") == member) return {entry.at("lost"), entry.at("harmless")};
    return {json::array(), json::array()};
}

} // namespace

TEST_P(Check, Finds) {
    const CheckCase& row = GetParam();
    const json result = Checked({writeText(row.body, row.styles)}, row.kind && row.isLoss ? 1 : 0);
    const auto [lost, harmless] = FindingsOf(result.at("files").at(0), "content.xml");
    const json& mine = row.isLoss ? lost : harmless;
    EXPECT_EQ((row.isLoss ? harmless : lost), json::array());
    if (!row.kind) {
        EXPECT_EQ(mine, json::array());
        return;
    }
    ASSERT_EQ(mine.size(), 1U) << mine;
    EXPECT_EQ(mine.at(0).at("kind"), row.kind);
    EXPECT_EQ(mine.at(0).at("name"), row.what);
    EXPECT_EQ(mine.at(0).at("count"), row.count);
}

INSTANTIATE_TEST_SUITE_P(Cases, Check, testing::ValuesIn(kCases),
                         [](const auto& given) { return std::string(given.param.name); });

using CheckPackages = test::CommandTest<>;

TEST_F(CheckPackages, MembersThatNoOneListsAreLost) {
    const std::string content = test::TextContent("<text:p/>");
    const std::string path = file("document.odt");
    test::WritePackage(
        path, {{"META-INF/manifest.xml",
                test::Manifest({{"/", std::string(test::kTextType)}, {"content.xml"}, {"a.bin", ""}})},
               {"mimetype", std::string(test::kTextType)},
               {"content.xml", content},
               {"a.bin", "kept"},
               {"b.bin", "lost"}});
    const json found = Checked({path}, 1).at("files").at(0);
    EXPECT_EQ(FindingsOf(found, "b.bin").first.at(0).at("kind"), "member-lost");
    EXPECT_EQ(FindingsOf(found, "mimetype").second.at(0).at("kind"), "mimetype-dropped");
    EXPECT_EQ(found.at("members").size(), 2U) << found;
}

TEST_F(CheckPackages, XmlBehindAFaultIsLost) {
    const std::string path = file("document.odt");
    test::WriteOdf(path, test::kTextType,
                   {{"content.xml", test::TextContent("<text:p>a</text:p><text:p>b</text:q>")}});
    const json found = Checked({path}, 1).at("files").at(0);
    EXPECT_EQ(FindingsOf(found, "content.xml").first.at(0).at("kind"), "xml-fault");
}

TEST_F(CheckPackages, OneBadFileStopsNoOther) {
    const std::string good = writeText("<text:p/>");
    const json found = Checked({file("missing.odt"), good}, 3).at("files");
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found.at(0).at("exitCode"), 3);
    EXPECT_NE(found.at(0).at("error"), "");
    EXPECT_EQ(found.at(1).at("exitCode"), 0);
    const Result plain = RunCommand({"check", file("missing.odt"), good});
    EXPECT_EQ(plain.out, good + ": nothing is lost\n");
    EXPECT_EQ(std::count(plain.err.begin(), plain.err.end(), '\n'), 1);
}

namespace {

class CheckSample : public test::CommandTest<testing::TestWithParam<test::Sample>> {};

using Counts = std::map<std::string, std::size_t>;

/// How often each name was found, by its last step: "loext:x" of "text:p/loext:x".
Counts CountsOf(const json& file, const std::string& kind) {
    Counts counts;
    for (const json& member : file.at("members"))
        for (const json& finding : member.at("lost")) {
            if (finding.at("kind") != kind) continue;
            const std::string name = finding.value("name", "");
            const std::size_t step = name.find('{') == std::string::npos ? name.rfind('/') + 1 : 0;
            counts[name.substr(step)] += finding.at("count").get<std::size_t>();
        }
    return counts;
}

/// Compares with what the library counted while it read the file. There a name of a namespace that isn't
/// known stands with the prefix of the file, here with the URI, so that of those only the sum is compared.
void ExpectSame(const Counts& found, const ODF::Diagnostics::NameCounts& counted) {
    std::size_t sum = 0;
    std::size_t countedSum = 0;
    for (const auto& [name, count] : counted)
        countedSum += count;
    for (const auto& [name, count] : found) {
        sum += count;
        if (name.find('{') != std::string::npos) continue;
        const auto same = counted.find(name);
        EXPECT_TRUE(same != counted.end() && same->second == count) << name << ": " << count;
    }
    EXPECT_EQ(sum, countedSum);
}

} // namespace

TEST_P(CheckSample, EveryLossIsExplained) {
    const test::Sample& sample = GetParam();
    ODF::CODFDoc document;
    if (sample.isEncrypted()) document.SetPassword(sample.password);
    ASSERT_EQ(document.Open(sample.path), 1);
    std::vector<std::string> arguments{"check", "--json", sample.path};
    if (sample.isEncrypted()) arguments.insert(arguments.end(), {"--password", sample.password});
    const Result result = RunCommand(arguments);
    const json found = json::parse(result.out).at("files").at(0);
    std::size_t lost = 0;
    for (const json& member : found.at("members"))
        lost += member.at("lost").size();
    EXPECT_EQ(result.code, lost > 0 ? 1 : 0);

    // What the tables list is there again, in the same place and well formed.
    for (const char* const kind : {"element-lost", "attribute-lost", "text-changed", "prefix-lost",
                                   "xml-fault", "member-damaged", "member-changed"})
        EXPECT_TRUE(CountsOf(found, kind).empty()) << kind << found;
    // What they don't list is what the reader passed over.
    ExpectSame(CountsOf(found, "unknown-element"), document.GetDiagnostics().unknownElements());
    ExpectSame(CountsOf(found, "unknown-attribute"), document.GetDiagnostics().unknownAttributes());
    ExpectSame(CountsOf(found, "text-dropped"), document.GetDiagnostics().droppedText());
}

INSTANTIATE_TEST_SUITE_P(Samples, CheckSample, testing::ValuesIn(test::GoodSamples()),
                         [](const auto& given) { return test::NameOf(given.param); });
