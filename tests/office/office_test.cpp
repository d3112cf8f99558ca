// The office suite as the judge: documents of this library open there and hold what they should.

#include "document/kinds.h"
#include "office/losses.h"
#include "office/suite.h"
#include "support/corpus.h"
#include "support/packages.h"
#include "support/process.h"
#include "support/trees.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <memory>
#include <regex>

using namespace ODF;
using test::Sample;

namespace {

/// How documents of one kind are compared: by what the office suite makes of them.
struct Comparison {
    const char* group;  ///< of the samples
    const char* filter; ///< converts such documents into something with their text
};

constexpr Comparison kComparisons[] = {
    {"text", "txt:Text (encoded):UTF8"},
    {"spreadsheet",
     "csv:Text - txt - csv (StarCalc):44,34,76,1,,0,false,true,false,false,false,-1"}, // every sheet
    {"presentation", "fodp"},
    {"drawing", "fodg"},
};

/// The text of the paragraphs of a flat document, one a line; any other file as it is.
std::string TextOf(const std::string& path) {
    if (!path.ends_with(".fodp") && !path.ends_with(".fodg")) return test::ReadFile(path);
    class Collector : public CSDDefaultHandler {
    public:
        void startElement(const unsigned short*, const unsigned short*, const unsigned short* qName,
                          CSDAttribute*) override {
            const std::u16string_view name = ToView(qName);
            depth += name == u"text:p" || name == u"text:h" ? 1 : 0;
            isPicture = name == u"office:binary-data";
        }
        void endElement(const unsigned short*, const unsigned short*, const unsigned short* qName) override {
            const std::u16string_view name = ToView(qName);
            isPicture = false;
            if (name != u"text:p" && name != u"text:h") return;
            --depth;
            text += '\n';
        }
        void characters(const unsigned short* chars, unsigned length) override {
            if (depth > 0 && !isPicture) text += ToUtf8(std::u16string_view(ToChar16(chars), length));
        }
        std::string text;
        int depth = 0;
        bool isPicture = false;
    } collector;
    CSDSaxReader* const reader = CreateSaxReader();
    reader->SetContentHandler(&collector);
    EXPECT_TRUE(reader->ParseWithHandler(path)) << path;
    ReleaseSaxReader(reader);
    return collector.text;
}

/// The text without what the suite puts in at the time of converting: fields with the file's path and the
/// time of day.
std::string Lasting(std::string text, const std::string& folder) {
    for (std::size_t place = text.find(folder); place != std::string::npos; place = text.find(folder))
        text.erase(place, folder.size());
    static const std::regex kTime("[0-9]{1,2}:[0-9]{2}:[0-9]{2}( [AP]M)?");
    return std::regex_replace(text, kTime, "(time)");
}

template<typename Base = testing::Test>
class WithSuite : public test::InWorkspace<Base> {
protected:
    void SetUp() override {
        if (!test::OfficeSuite::isInstalled()) GTEST_SKIP() << "no office suite (soffice) is installed";
        std::filesystem::create_directory(this->file("out"));
    }
    test::OfficeSuite suite{this->file("profile")};
};

class Office : public WithSuite<> {};
class Trip : public WithSuite<testing::TestWithParam<Comparison>> {};

/// Takes the empty time values out of a saved document: `text:variable-set` is always written with all its
/// values, and this version of the office suite doesn't survive an empty time.
void RemoveEmptyTimes(const std::string& path) {
    test::Members members = test::ReadPackage(path);
    std::string& content = members["content.xml"];
    constexpr std::string_view kEmpty = " office:time-value=\"\"";
    std::size_t place = content.find(kEmpty);
    if (place == std::string::npos) return;
    for (; place != std::string::npos; place = content.find(kEmpty, place))
        content.erase(place, kEmpty.size());
    test::WritePackage(path, members);
}

/// The original with the losses that the trip is known for.
void WriteAsKept(const std::string& path, test::Members members, const CDocument& document) {
    for (const auto& [name, tree] : test::Trees(document))
        members[name] = test::AsKept(members[name]);
    test::WritePackage(path, members);
}

} // namespace

TEST_P(Trip, ChangesNoTextThatTheSuiteSees) {
    const std::string before = file("before");
    const std::string after = file("after");
    std::filesystem::create_directory(before);
    std::filesystem::create_directory(after);
    std::vector<std::string> originals;
    std::vector<std::string> copies;
    for (const Sample& sample : test::GoodSamples()) {
        if (sample.group != GetParam().group) continue;
        const std::string name = test::NameOf(sample) + sample.path.substr(sample.path.rfind('.'));
        test::Members members = test::ReadPackage(sample.path);
        CODFDoc document;
        ASSERT_EQ(document.Open(sample.path), 1) << sample.name;
        WriteAsKept(before + "/" + name, members, document);
        originals.push_back(before + "/" + name);
        ASSERT_EQ(document.Save(after + "/" + name), 1) << sample.name;
        RemoveEmptyTimes(after + "/" + name);
        copies.push_back(after + "/" + name);
    }
    ASSERT_FALSE(originals.empty());
    ASSERT_TRUE(suite.convert(GetParam().filter, before + "/out", originals));
    ASSERT_TRUE(suite.convert(GetParam().filter, after + "/out", copies));
    const std::vector<std::string> results = test::EntriesOf(before + "/out");
    EXPECT_GE(results.size(), originals.size()) << "not all could be converted";
    EXPECT_EQ(results, test::EntriesOf(after + "/out"));
    for (const std::string& name : results)
        EXPECT_EQ(Lasting(TextOf(before + "/out/" + name), before),
                  Lasting(TextOf(after + "/out/" + name), after))
            << name;
}

INSTANTIATE_TEST_SUITE_P(Groups, Trip, testing::ValuesIn(kComparisons),
                         [](const auto& given) { return std::string(given.param.group); });

TEST_F(Office, ReadsWhatWasBuilt) {
    const std::u16string text = u"Built <here> & \"there\", äöü 漢字 \U0001F600";
    for (const test::Kind& kind : test::kKinds) {
        CODFDoc document;
        CTextP* const paragraph = test::Build(document, kind, text);
        paragraph->SetTextSpan()->SetText(u", in a span");
        ASSERT_EQ(document.Save(file(std::string("built.") + kind.name)), 1);
    }
    const std::string expected = ToUtf8(text) + ", in a span\n";
    ASSERT_TRUE(suite.convert(kComparisons[0].filter, file("out"), {file("built.odt")}));
    EXPECT_EQ(TextOf(file("out/built.txt")), "\xEF\xBB\xBF" + expected);
    ASSERT_TRUE(suite.convert(kComparisons[1].filter, file("out"), {file("built.ods")}));
    EXPECT_EQ(TextOf(file("out/built-Sheet.csv")),
              "\"Built <here> & \"\"there\"\", äöü 漢字 \U0001F600, in a span\"\n");
    ASSERT_TRUE(suite.convert("fodp", file("out"), {file("built.odp")}));
    // Behind what the suite's own master page holds.
    EXPECT_TRUE(TextOf(file("out/built.fodp")).ends_with("\n" + expected)) << TextOf(file("out/built.fodp"));
    ASSERT_TRUE(suite.convert("fodg", file("out"), {file("built.odg")}));
    EXPECT_EQ(TextOf(file("out/built.fodg")), expected);
}

TEST_F(Office, CalculatesFormulasThatWereBuilt) {
    CODFDoc document;
    ASSERT_EQ(document.CreateMainPart(sd::SDDocType::DocTypeOdfSpreadsheet), 1);
    document.GetContentClass()->SetOfficeVersion(u"1.2");
    CTableTable* const table =
        document.GetContentClass()->SetOfficeBody()->SetOfficeSpreadsheet()->SetTableTable();
    table->SetTableName(u"Sums");
    CTableTableRow* const row = table->SetTableTableRow();
    for (const char16_t* const value : {u"2", u"40"}) {
        CTableTableCell* const cell = row->SetTableTableCell();
        cell->SetOfficeValueType(ST_OfficeValueType::Float);
        cell->SetOfficeValue(value);
    }
    row->SetTableTableCell()->SetTableFormula(u"of:=SUM([.A1:.B1])");
    ASSERT_EQ(document.Save(file("sums.ods")), 1);
    ASSERT_TRUE(suite.convert(kComparisons[1].filter, file("out"), {file("sums.ods")}));
    EXPECT_EQ(TextOf(file("out/sums-Sums.csv")), "2,40,42\n");
}

TEST_F(Office, OpensWhatTheExamplesWrite) {
    const std::string source = ODFMODEL_SOURCE_DIR "/examples/";
    const std::string programs = ODFMODEL_BUILD_DIR "/examples/";
    if (!test::HasProgram(programs + "styles")) GTEST_SKIP() << "a build without examples";
    const std::vector<std::string> kRuns[] = {
        {"styles", file("letter.odt")},
        {"mail_merge", file("letter.odt"), source + "people.csv", file("letters.odt")},
        {"change_font", file("letters.odt"), file("mono.odt"), "Odd Mono"},
        {"pictures", file("letter.odt"), file("pictures.odt"), file("out"), source + "dot.png"},
        {"move_content", file("book.odt"), source + "sample.odt", file("pictures.odt"), file("mono.odt")},
        {"slides", source + "outline.txt", file("slides.odp")},
        {"chart", file("chart.ods")}};
    for (std::vector<std::string> run : kRuns) {
        run[0].insert(0, programs);
        ASSERT_EQ(test::Run(run, std::chrono::seconds(60)).code, 0) << run[0];
    }
    const struct {
        const char* name;
        const char* filter;
        std::vector<const char*> parts; ///< of what the suite makes of it, in this order
    } kResults[] = {
        {"mono", "fodt", {"Odd Mono", ">Ada<", "12.50 EUR", ">Grace<", "7.00 EUR"}},
        {"book", "fodt", {"A short report", ">$name<", "<draw:image", ">Ada<", "7.00 EUR"}},
        {"slides", "fodp", {"First slide", "Another one", "<draw:image", "Second slide", "More"}},
        {"chart", "fods", {"Sales in 2024", "<chart:series", "<chart:series", ">South<", ">134<"}}};
    for (const auto& result : kResults) {
        const std::string name = file(result.name);
        const std::string from = std::filesystem::exists(name + ".odt")   ? ".odt"
                                 : std::filesystem::exists(name + ".odp") ? ".odp"
                                                                          : ".ods";
        ASSERT_TRUE(suite.convert(result.filter, file("out"), {name + from}));
        const std::string flat = test::ReadFile(file("out/") + result.name + "." + result.filter);
        std::size_t at = 0;
        for (const char* const part : result.parts) {
            at = flat.find(part, at);
            ASSERT_NE(at, std::string::npos) << result.name << " has no " << part;
            ++at;
        }
    }
}

/// Open Packaging files that the suite wrote, saved by the package layer from its own index.
TEST_F(Office, ReadsOpenPackagingFilesThatWereSavedAnew) {
    struct Case {
        const char* sample;
        const char* format;
        const char* filter; ///< makes text of it
    };
    constexpr Case kCases[] = {{"text/letter.odt", "docx", kComparisons[0].filter},
                               {"spreadsheet/sums.fods", "xlsx", kComparisons[1].filter},
                               {"presentation/slides.odp", "pptx", kComparisons[2].filter}};
    for (const Case& row : kCases) {
        const std::string name = std::filesystem::path(row.sample).stem().string();
        const std::string original = file(row.format) + "/" + name + "." + row.format;
        const std::string saved = file(std::string(row.format) + "-saved") + "/" + name + "." + row.format;
        std::filesystem::create_directories(file(std::string(row.format) + "-saved"));
        ASSERT_TRUE(
            suite.convert(row.format, file(row.format), {std::string(ODFMODEL_TEST_DATA "/") + row.sample}));
        {
            SDPackage::IPackage package;
            ASSERT_NE(package.Open(original), 0) << row.format;
            ASSERT_GT(package.GetParts()->size(), 5U) << row.format;
            ASSERT_NE(package.Save(saved), 0) << row.format;
        }
        EXPECT_EQ(test::ReadPackage(saved).size(), test::ReadPackage(original).size()) << row.format;
        const auto text = [&](const std::string& path, const std::string& folder) {
            std::string all;
            suite.convert(row.filter, file(folder), {path});
            for (const std::string& made : test::EntriesOf(file(folder)))
                all += TextOf(file(folder) + "/" + made);
            return Lasting(all, file(""));
        };
        const std::string before = text(original, std::string(row.format) + "-before");
        EXPECT_NE(before, "") << row.format;
        EXPECT_EQ(text(saved, std::string(row.format) + "-after"), before) << row.format;
    }
}

TEST_F(Office, EncryptsWhatIsReadHere) {
    const std::string password = "pässword 漢 \U0001F600";
    std::vector<std::string> jobs;
    for (const test::Kind& kind : test::kKinds) {
        CODFDoc document;
        test::Build(document, kind, u"under lock and key");
        const std::string name = std::string("clear.") + kind.name;
        ASSERT_EQ(document.Save(file(name)), 1);
        jobs.insert(jobs.end(), {file(name), file(std::string("secret.") + kind.name)});
    }
    if (!suite.encrypt(password, jobs))
        GTEST_SKIP() << "the office suite can't be driven from outside (python3-uno)";
    for (const test::Kind& kind : test::kKinds) {
        const std::string path = file(std::string("secret.") + kind.name);
        CODFDoc document;
        EXPECT_EQ(document.Open(path), 0);
        EXPECT_EQ(document.GetDiagnostics().status(), Status::PasswordNeeded) << kind.name;
        document.SetPassword(password + "x");
        EXPECT_EQ(document.Open(path), 0);
        EXPECT_EQ(document.GetDiagnostics().status(), Status::WrongPassword) << kind.name;
        document.SetPassword(password);
        ASSERT_EQ(document.Open(path), 1) << kind.name;
        EXPECT_EQ(document.GetDocType(), kind.type);
        EXPECT_TRUE(document.GetDiagnostics().notes().empty());
        const std::vector<std::string> paragraphs = test::Paragraphs(*document.GetContentClass());
        EXPECT_NE(std::find(paragraphs.begin(), paragraphs.end(), "under lock and key"), paragraphs.end())
            << kind.name;
    }
}

TEST_F(Office, OpensWhatIsEncryptedHere) {
    const std::string password = "pässword 漢 \U0001F600";
    std::vector<std::string> jobs;
    for (const auto& [kind, name] : std::initializer_list<std::pair<DocumentKind, const char*>>{
             {DocumentKind::Text, "odt"}, {DocumentKind::Spreadsheet, "ods"}}) {
        Document document = Document::New(kind);
        if (COfficeText* const text = document.Text()) text->SetTextP()->SetText("under lock and key");
        ASSERT_TRUE(document.SetPassword(password));
        const Result saved = document.Save(file(std::string("secret.") + name));
        ASSERT_TRUE(saved) << saved.Text();
        jobs.insert(jobs.end(), {file(std::string("secret.") + name), file(std::string("clear.") + name)});
    }
    if (!suite.decrypt(password, jobs))
        GTEST_SKIP() << "the office suite can't be driven from outside (python3-uno)";
    Document text;
    ASSERT_TRUE(text.Open(file("clear.odt")));
    EXPECT_FALSE(text.IsEncrypted());
    const std::vector<std::string> paragraphs = test::Paragraphs(*text.Content());
    EXPECT_NE(std::find(paragraphs.begin(), paragraphs.end(), "under lock and key"), paragraphs.end());
    Document sheet;
    ASSERT_TRUE(sheet.Open(file("clear.ods")));
    EXPECT_EQ(sheet.Kind(), DocumentKind::Spreadsheet);
}

/// Documents that show what the listed trees lose: tables of contents, variables, page styles, charts,
/// objects, animations, protected and hidden sheets. Each renders the same each time.
TEST_F(Office, RendersWhatWasSavedAsItRendersTheOriginal) {
    constexpr std::string_view kTelling[] = {
        "text/lo_toc_big.odt",
        "text/lo_digitally_signed.odt",
        "text/staroffice8_report.odt",
        "spreadsheet/mso15_chart_series.ods",
        "presentation/lo_anim_background.odp",
        "presentation/ooo30_anim_charts.odp",
    };
    if (!test::HasProgram("pdftoppm")) GTEST_SKIP() << "no pdftoppm is installed";
    std::vector<std::string> originals;
    std::vector<std::string> copies;
    for (const char* const folder : {"before", "after"})
        std::filesystem::create_directory(file(folder));
    std::vector<Sample> samples = test::GoodSamples();
    std::map<std::string, unsigned> others; // by group
    for (const Sample& sample : samples) {
        const bool isTelling =
            std::find(std::begin(kTelling), std::end(kTelling), sample.name) != std::end(kTelling);
        const bool isUsual = !sample.isDamaged() && !sample.isEncrypted() && !sample.isFlat() &&
                             !sample.isFormula() && sample.name.find("fields") == std::string::npos &&
                             sample.name.find("condformat") == std::string::npos;
        if (!isTelling && !(isUsual && ++others[sample.group] <= 2)) continue;
        const std::string name = test::NameOf(sample) + sample.path.substr(sample.path.rfind('.'));
        originals.push_back(file("before/" + name));
        copies.push_back(file("after/" + name));
        std::filesystem::copy_file(sample.path, originals.back());
        Document document;
        ASSERT_TRUE(document.Open(sample.path)) << sample.name;
        ASSERT_TRUE(document.Save(copies.back())) << sample.name;
    }
    ASSERT_GE(originals.size(), 4U);
    ASSERT_TRUE(suite.convert("pdf", file("before/out"), originals));
    ASSERT_TRUE(suite.convert("pdf", file("after/out"), copies));
    const std::vector<std::string> results = test::EntriesOf(file("before/out"));
    EXPECT_GE(results.size(), originals.size()) << "not all could be rendered";
    EXPECT_EQ(results, test::EntriesOf(file("after/out")));
    const auto pages = [&](const std::string& folder, const std::string& name) {
        const std::string to = file(folder + "/" + name + "-pages");
        std::filesystem::create_directory(to);
        test::Run({"pdftoppm", "-r", "40", file(folder + "/out/" + name), to + "/p"},
                  std::chrono::seconds(60));
        std::vector<std::string> images;
        for (const std::string& page : test::EntriesOf(to))
            images.push_back(test::ReadFile(to + "/" + page));
        return images;
    };
    for (const std::string& name : results) {
        const std::vector<std::string> before = pages("before", name);
        EXPECT_FALSE(before.empty()) << name;
        EXPECT_TRUE(before == pages("after", name)) << name << " looks different";
    }
}

TEST(Losses, AreThoseTold) {
    EXPECT_EQ(test::AsKept("<text:p a=\"true\">x<text:a>1<text:span>2</text:span>3</text:a>y</text:p>"),
              "<text:p a=\"true\">x<text:a>13<text:span>2</text:span></text:a>y</text:p>");
    EXPECT_EQ(test::AsKept("<text:p>a<text:bookmark-ref b=\"c\">gone</text:bookmark-ref>b</text:p>"),
              "<text:p>a<text:bookmark-ref b=\"c\"></text:bookmark-ref>b</text:p>");
    EXPECT_EQ(
        test::AsKept("<text:p>a<text:meta><text:span>gone</text:span></text:meta>b<text:meta/></text:p>"),
        "<text:p>ab</text:p>");
    EXPECT_EQ(test::AsKept("<text:list xml:id=\"l\" text:continue-numbering=\"true\"/>"),
              "<text:list text:continue-numbering=\"1\"/>");
}
