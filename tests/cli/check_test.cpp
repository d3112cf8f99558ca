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

/// What the trip through the listed classes loses. The full trip keeps all of it.
struct CheckCase {
    const char* name;
    const char* body;
    const char* kind;      ///< of the one finding about content.xml; null for none
    const char* what = ""; ///< its name
    int count = 1;
    const char* styles = "";
};

class Check : public test::CommandTest<testing::TestWithParam<CheckCase>> {};

const CheckCase kCases[] = {
    {"NothingLost", "<text:p text:style-name=\"a\">a<text:span>b</text:span>c<text:s text:c=\"3\"/></text:p>",
     nullptr},
    {"UnknownElement", "<text:p>a<x:y><x:z/>b</x:y>c</text:p><text:p><x:y/></text:p>", "unknown-element",
     "text:p/{urn:foreign}y", 2},
    {"MisplacedElement", "<text:s/>", "unknown-element", "office:text/text:s"},
    {"UnknownAttribute", "<text:p x:y=\"1\"/><text:p x:y=\"2\"/>", "unknown-attribute",
     "text:p@{urn:foreign}y", 2},
    {"UnknownOfKnownNamespace", "<text:p text:nonsense=\"1\"/>", "unknown-attribute", "text:p@text:nonsense"},
    {"EnumerationWord", "<text:p><text:note text:note-class=\"sidenote\"/></text:p>", "enumeration-value",
     "text:note@text:note-class"},
    {"LostDigits", "<text:p><text:expression office:value=\"0.123456789\"/></text:p>", "number-value",
     "text:expression@office:value"},
    {"Boolean", "<text:list text:continue-numbering=\"true\"/>", "boolean-spelling",
     "text:list@text:continue-numbering"},
    {"AddedAttribute", "<text:p><text:change/></text:p>", "attribute-added", "text:change@text:change-id"},
    {"NoBoolean", "<text:list text:continue-numbering=\"yes\"/>", "boolean-value",
     "text:list@text:continue-numbering"},
    {"NumberSpelling", "<text:p><text:s text:c=\"03\"/></text:p>", "number-spelling", "text:s@text:c"},
    {"NoNumber", "<text:p><text:s text:c=\"many\"/></text:p>", "number-value", "text:s@text:c"},
    {"NumberWord", "", "number-value", "style:text-properties@style:text-line-through-width", 1,
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
    {"Comment", "<!-- gone --><text:p/>", "markup-lost", "comment"},
    {"Instruction", "<text:p>a<?x gone?>b</text:p>", "markup-lost", "processing instruction"},
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
    const std::string path = writeText(row.body, row.styles);
    // The plain model drops the member mimetype, too.
    const json listed = Checked({"--listed", path}, 1).at("files").at(0);
    const auto [lost, harmless] = FindingsOf(listed, "content.xml");
    EXPECT_EQ(harmless, json::array());
    ASSERT_EQ(lost.size(), row.kind ? 1U : 0U) << lost;
    if (row.kind) {
        EXPECT_EQ(lost.at(0).at("kind"), row.kind);
        EXPECT_EQ(lost.at(0).at("name"), row.what);
        EXPECT_EQ(lost.at(0).at("count"), row.count);
    }
    EXPECT_EQ(Checked({path}, 0).at("files").at(0).at("members"), json::array()) << "the full trip";
}

INSTANTIATE_TEST_SUITE_P(Cases, Check, testing::ValuesIn(kCases),
                         [](const auto& given) { return std::string(given.param.name); });

using CheckPackages = test::CommandTest<>;

TEST_F(CheckPackages, TellsWhatBecomesOfMembersAndTheirEntries) {
    const std::string path = file("document.odt");
    test::WritePackage(path, {{"META-INF/manifest.xml", test::Manifest({{"/", std::string(test::kTextType)},
                                                                        {"content.xml"},
                                                                        {"a.bin", ""},
                                                                        {"nowhere/", "x/folder"}})},
                              {"mimetype", std::string(test::kTextType)},
                              {"content.xml", test::TextContent("<text:p/>")},
                              {"a.bin", "kept"},
                              {"b.bin", "lost"}});
    EXPECT_EQ(Checked({path}, 0).at("files").at(0).at("members"), json::array());
    const json found = Checked({"--listed", path}, 1).at("files").at(0);
    EXPECT_EQ(FindingsOf(found, "b.bin").first.at(0).at("kind"), "member-lost");
    EXPECT_EQ(FindingsOf(found, "mimetype").first.at(0).at("kind"), "member-lost");
    const json entries = FindingsOf(found, "META-INF/manifest.xml").first;
    ASSERT_EQ(entries.size(), 1U) << entries;
    EXPECT_EQ(entries.at(0).at("kind"), "entry-lost");
    EXPECT_EQ(entries.at(0).at("name"), "nowhere/");
    EXPECT_EQ(found.at("members").size(), 3U) << found;
}

TEST_F(CheckPackages, WhatIsAddedCounts) {
    const std::string path = file("document.odt");
    test::WritePackage(path,
                       {{"META-INF/manifest.xml", test::Manifest({{"/", std::string(test::kTextType)}})},
                        {"content.xml", test::TextContent("<text:p/>")}});
    const json found = Checked({path}, 1).at("files").at(0);
    EXPECT_EQ(FindingsOf(found, "mimetype").first.at(0).at("kind"), "member-added");
    EXPECT_EQ(found.at("members").size(), 1U) << found;
}

TEST_F(CheckPackages, WhatTheFullTripCantKeepIsTold) {
    const std::string content = test::TextContent("<text:p>a&outside;b</text:p>");
    const std::size_t root = content.find("<office:");
    const std::string path = file("document.odt");
    test::WriteOdf(
        path, test::kTextType,
        {{"content.xml", content.substr(0, root) + "<!DOCTYPE x [<!ENTITY outside SYSTEM \"other.txt\">]>" +
                             content.substr(root)}});
    const auto [lost, harmless] = FindingsOf(Checked({path}, 1).at("files").at(0), "content.xml");
    // Reading ends where the entity's own file would be needed.
    ASSERT_EQ(lost.size(), 2U) << lost;
    EXPECT_EQ(lost.at(0).at("kind"), "entity-lost");
    EXPECT_EQ(lost.at(0).at("name"), "other.txt");
    EXPECT_EQ(lost.at(1).at("kind"), "text-changed");
    ASSERT_EQ(harmless.size(), 1U) << harmless;
    EXPECT_EQ(harmless.at(0).at("kind"), "doctype-dropped");
}

TEST_F(CheckPackages, XmlAfterAFaultIsLost) {
    const std::string path = file("document.odt");
    test::WriteOdf(path, test::kTextType,
                   {{"content.xml", test::TextContent("<text:p>a</text:p><text:p>b</text:q>")}});
    for (const std::vector<std::string>& arguments : {std::vector{path}, {path, "--listed"}}) {
        const json found = Checked(arguments, 1).at("files").at(0);
        EXPECT_EQ(FindingsOf(found, "content.xml").first.at(0).at("kind"), "xml-fault");
    }
}

TEST_F(CheckPackages, OnlyTheFullTripKeepsAPackageEncrypted) {
    for (const test::Sample& sample : test::GoodSamples()) {
        if (!sample.isEncrypted() || !sample.path.ends_with(".odt")) continue;
        const json found = Checked({sample.path, "--listed", "--password", sample.password}, 1);
        std::size_t decrypted = 0;
        for (const json& finding : FindingsOf(found.at("files").at(0), "META-INF/manifest.xml").first)
            if (finding.at("kind") == "decrypted") ++decrypted;
        EXPECT_EQ(decrypted, 1U) << sample.name;
    }
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

std::vector<std::string> CheckOf(const test::Sample& sample, const std::vector<std::string>& more) {
    std::vector<std::string> arguments{"check", "--json", sample.path};
    arguments.insert(arguments.end(), more.begin(), more.end());
    if (sample.isEncrypted()) arguments.insert(arguments.end(), {"--password", sample.password});
    return arguments;
}

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
    const Result result = RunCommand(CheckOf(sample, {"--listed"}));
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

TEST_P(CheckSample, TheFullTripLosesNothing) {
    const Result result = RunCommand(CheckOf(GetParam(), {}));
    json members = json::parse(result.out).at("files").at(0).at("members");
    // A package without the member gets it.
    if (!test::ReadPackage(GetParam().path, GetParam().password).contains("mimetype"))
        std::erase_if(members.get_ref<json::array_t&>(),
                      [](const json& member) { return member.at("member") == "mimetype"; });
    for (const json& member : members)
        EXPECT_EQ(member.at("lost"), json::array()) << member;
}

INSTANTIATE_TEST_SUITE_P(Samples, CheckSample, testing::ValuesIn(test::GoodSamples()),
                         [](const auto& given) { return test::NameOf(given.param); });

TEST_F(CheckPackages, TellsWhatReadersOfAnOlderVersionDoNotKnow) {
    const std::string path =
        writeText("<text:p xml:id=\"a\">a<text:drop-down/><text:drop-down/><x:y/></text:p>", "");
    const Result found = RunCommand({"check", "--version", "1.2", path});
    EXPECT_EQ(found.code, 1);
    EXPECT_NE(found.out.find("    2 x text:drop-down (1.3)\n    1 x {urn:foreign}y (extended)\n"),
              found.out.npos)
        << found.out;
    EXPECT_EQ(found.out.find("xml:id"), found.out.npos) << "1.2 has it";
    const json member = Checked({"--version", "1.2", path}, 1).at("files").at(0).at("members").at(0);
    EXPECT_EQ(member.at("member"), "content.xml");
    EXPECT_EQ(member.at("later").size(), 2U) << member;
    EXPECT_EQ(member.at("later").at(0),
              json::parse(R"({"name": "text:drop-down", "since": "1.3", "count": 2})"));

    const std::string plain = writeText("<text:p/>", "");
    EXPECT_EQ(RunCommand({"check", "--version", "1.2", plain}).code, 0);
    EXPECT_EQ(RunCommand({"check", "--version", "1.1", plain}).code, 2);
    test::WriteFile(file("none.odt"), "no document");
    EXPECT_EQ(RunCommand({"check", "--version", "1.2", file("none.odt")}).code, 3);
}
