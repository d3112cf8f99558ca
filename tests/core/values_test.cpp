// How values look as text: through the table driven route and through the virtual operations, which hand
// UTF-16.

#include "support/element_xml.h"

#include <odfmodel/core/attribute.h>
#include <odfmodel/core/reflection.h>
#include <odfmodel/core/serializer.h>
#include <odfmodel/elements/elements.h>

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <map>

namespace {

/// One attribute as a caller's own driver holds it.
class OneAttribute : public CSDAttribute {
public:
    OneAttribute(std::string_view qname, std::string_view value)
        : local_(qname.substr(qname.find(':') + 1)), value_(value) {}
    const unsigned short* GetValue(const unsigned short* qName) override {
        return local_ == qName ? value_.c_str() : nullptr;
    }
    const unsigned short* GetValue(const unsigned short*, const unsigned short* local) override {
        return local_ == local ? value_.c_str() : nullptr;
    }
    void AddAttribute(const unsigned short* qName, const unsigned short* value) override {
        added[ODF::ToUtf8(qName)] = ODF::ToUtf8(value);
    }
    void AddAttribute(const unsigned short*, const unsigned short* local,
                      const unsigned short* value) override {
        added[ODF::ToUtf8(local)] = ODF::ToUtf8(value);
    }
    std::string written() const {
        const auto at = added.find(local_.utf8());
        return at == added.end() ? "(absent)" : at->second;
    }
    std::map<std::string, std::string> added;

private:
    CTulStringW local_;
    CTulStringW value_;
};

/// Notes what `WriteElement` hands over.
class Recorder : public CSDSerializer {
public:
    bool WriteObject(const unsigned short* name, CSDObject*, CSDAttribute*, const unsigned short* text,
                     int flag) override {
        given.push_back((name ? ODF::ToUtf8(name) : "(null)") + " " + (text ? ODF::ToUtf8(text) : "(null)") +
                        " " + std::to_string(flag));
        return answer;
    }
    bool answer = true;
    std::vector<std::string> given;
};

/// What is written, and the texts that come to it.
using ValueRow = std::pair<const char*, std::vector<const char*>>;

const struct {
    const char *element, *attribute;
    std::vector<ValueRow> rows;
} kKinds[] = {
    {"table:table-cell",
     "table:number-columns-repeated",
     {{"0", {"0", "abc", "", "-"}},
      {"1", {"1.9", "-4294967295"}},
      {"5", {"+5"}},
      {"7", {" \t7", "007"}},
      {"12", {"12px"}},
      {"16384", {"16384"}},
      {"4294967295", {"4294967295", "-1", "4294967296", "99999999999999999999999", "-5000000000"}}}},
    {"text:page-number",
     "text:page-adjust",
     {{"0", {"abc", "", "-0"}},
      {"-1", {"-1"}},
      {"3", {" 3x"}},
      {"12", {"+12"}},
      {"2147483647", {"2147483647", "2147483648"}},
      {"-2147483648", {"-2147483648", "-2147483649", "-99999999999999999999"}}}},
    {"text:expression",
     "office:value",
     {{"0", {"0", "abc", "-abc", "-", "+-1", "", "0.0000001", "1e-999", "0x10"}},
      {"1", {"1.0", "1,5", "1e", "1 000"}},
      {"0.25", {"0.25"}},
      {"0.5", {".5"}},
      {"-0.5", {"-0.5"}},
      {"1.5", {"1.500000"}},
      {"2", {"2.000000"}},
      {"2.5", {" 2.5", "+2.5", "25E-1"}},
      {"-3.5", {"-3.5"}},
      {"5", {"5."}},
      {"12", {"12px"}},
      {"50", {"50%"}},
      {"100", {"100"}},
      {"1000", {"1e3"}},
      {"0.123457", {"0.1234567"}},
      {"1234567.891", {"1234567.891"}},
      {"10000000000000000000000", {"1e22"}}}},
    {"math:mstyle",
     "math:scriptsizemultiplier",
     {{"0.71", {"0.71"}}, {"1", {"1"}}, {"16777216", {"16777217"}}, {"0", {"x"}}}},
    {"text:list",
     "text:continue-numbering",
     {{"1", {"1", "true", "TRUE", "tRuE"}}, {"0", {"0", "false", "yes", "", "true ", "11", "2", "t"}}}},
    {"draw:frame", "presentation:placeholder", {{"true", {"1", "True", "true"}}, {"false", {"0", "no", ""}}}},
    {"table:table-cell",
     "office:boolean-value",
     {{"1", {"1", "yes", "2", "00", " ", "true"}}, {"0", {"0", "false", "FALSE", ""}}}},
    {"draw:glue-point",
     "draw:align",
     {{"top-left", {"top-left", "bogus", "Right", " right", "righ", "rights", ""}},
      {"bottom-right", {"bottom-right"}}}},
    {"style:graphic-properties",
     "style:protect",
     {{"position size", {"position size"}}, {"none", {"size position"}}, {"size", {"size"}}}},
    {"style:text-properties",
     "fo:font-family",
     {{"Arial", {"Arial", "Arial, sans-serif"}},
      {"'Times New Roman'", {"'Times New Roman', serif"}},
      {",Arial", {",Arial"}},
      {"", {""}}}},
    {"meta:document-statistic", "frame-count", {{"2", {"2"}}, {"(absent)", {"-2", "-"}}, {"0", {"x", ""}}}},
    {"text:p",
     "text:style-name",
     {{"Standard", {"Standard"}}, {"", {""}}, {" a  b ", {" a  b "}}, {"\xC3\xA4", {"\xC3\xA4"}}}},
};

TEST(Values, AreTheSameOnEveryWay) {
    for (const auto& [element, attribute, rows] : kKinds) {
        const auto used = test::Make(element);
        std::string before = "(absent)";
        for (const auto& [written, texts] : rows) {
            for (const char* const text : texts) {
                SCOPED_TRACE(std::string(attribute) + "=\"" + text + '"');
                const auto object = test::Make(element);
                ASSERT_TRUE(ODF::SetAttributeText(*object, attribute, text));
                EXPECT_EQ(test::AttributeOf(*object, attribute), written) << "by the table";

                const auto other = test::Make(element);
                OneAttribute one(attribute, text);
                Recorder recorder;
                ASSERT_TRUE(other->ReadAttribute(&one));
                ASSERT_TRUE(other->WriteElement(ToUnits(u"n"), &recorder, &one));
                EXPECT_EQ(one.written(), written) << "by the virtual operations";

                ASSERT_TRUE(ODF::SetAttributeText(*used, attribute, text));
                if (written != std::string("(absent)")) before = written;
                EXPECT_EQ(test::AttributeOf(*used, attribute), before)
                    << "an absent one leaves what it found";
            }
        }
    }
}

TEST(ValueTexts, AttributesAreHandedOverEscapedAndContentIsNot) {
    const auto point = test::Make("draw:glue-point");
    static_cast<ODF::CDrawGluePoint&>(*point).SetSvgX(u"a<b>\"c'&amp;");
    OneAttribute attribute("x", "");
    Recorder recorder;
    recorder.answer = false;
    EXPECT_FALSE(point->WriteElement(ToUnits(u"draw:glue-point"), &recorder, &attribute))
        << "hands the answer on";
    EXPECT_EQ(attribute.added, (std::map<std::string, std::string>{
                                   {"id", "0"}, {"x", "a&lt;b&gt;&quot;c'&amp;amp;"}, {"y", ""}}));
    EXPECT_FALSE(point->WriteElement(ToUnits(u"a"), nullptr, &attribute));

    recorder.answer = true;
    const auto title = test::Make("dc:title");
    EXPECT_TRUE(title->WriteElement(ToUnits(u"dc:title"), &recorder, nullptr));
    EXPECT_TRUE(title->ReadNodeValue(ToUnits(u"a<"), 2));
    EXPECT_TRUE(title->ReadNodeValue(ToUnits(u"b&cd"), 3));
    EXPECT_FALSE(title->ReadNodeValue(ToUnits(u"x"), 0));
    EXPECT_FALSE(title->ReadNodeValue(nullptr, 3));
    EXPECT_TRUE(title->WriteElement(ToUnits(u"dc:title"), &recorder, nullptr));
    EXPECT_EQ(recorder.given,
              (std::vector<std::string>{"draw:glue-point (null) 1", "dc:title (null) 1", "dc:title a<b&c 1"}))
        << "an empty value is none";
}

TEST(ValueTexts, HugeNumbersSurvive) {
    const auto object = test::Make("text:expression");
    auto& expression = static_cast<ODF::CTextExpression&>(*object);
    for (const double value : {1e300, -1.7976931348623157e308, 5e-324}) {
        expression.SetOfficeValue(value);
        const std::string written = test::AttributeOf(*object, "office:value");
        ASSERT_TRUE(ODF::SetAttributeText(*object, "office:value", written));
        double read = 1;
        EXPECT_TRUE(expression.GetOfficeValue(read));
        EXPECT_EQ(read, value > 0 && value < 1 ? 0.0 : value) << written;
    }
}

TEST(ValueTexts, NumbersDoNotFollowTheLocale) {
    const std::string restore = std::setlocale(LC_ALL, nullptr);
    setenv("LOCPATH", ODFMODEL_TEST_LOCALES, 1);
    const bool isSet = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
    unsetenv("LOCPATH");
    if (!isSet) GTEST_SKIP() << "no locale with a decimal comma on this system";
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
    const std::string result = test::RoundTrip(R"(<text:expression office:value="1234.50"/>)");
    std::setlocale(LC_ALL, restore.c_str());
    EXPECT_EQ(result, R"(<text:expression office:value="1234.5"/>)");
}

constexpr std::pair<const char*, const char*> kDates[] = {
    {"2009-01-31T12:30:15.250", "2009-01-31T12:30:15.250"},
    {"2009-01-31T12:30:15", "2009-01-31T12:30:15.000"},
    {"2009-01-01", "2009-01-01T00:00:00.000"},
    {"2009", "2009-00-00T00:00:00.000"},
    {"2013-05-07T10:11:12.5", "2013-05-07T10:11:12.005"},
    {"2013-05-07T10:11:12.123456789", "2013-05-07T10:11:12.123"},
    {"2013-05-07T10:11:12Z", "2013-05-07T10:11:12.000"},
    {"2013-05-07T10:11:12.250+02:00", "2013-05-07T10:11:12.250"},
    {"2013-05-07T24:60:60", "2013-05-07T24:60:60.000"},
    {"2013-00-00T00:00", "2013-00-00T00:00:00.000"},
    {"2013-5-7T1:2:3.4", "2013-05-07T01:02:03.004"},
    {" 2013- 5-07", "2013-05-07T00:00:00.000"},
    {"not a date", "0000-00-00T00:00:00.000"},
    {"2013/05/07", "2013-00-00T00:00:00.000"},
    {"20130507", "2013-00-00T00:00:00.000"},
};

std::string Given(const std::string& text) {
    return "d " + text + " 1";
}

std::string WriteDate(CSDObject& date) {
    Recorder recorder;
    EXPECT_TRUE(date.WriteElement(ToUnits(u"d"), &recorder, nullptr));
    return recorder.given.empty() ? "(not written)" : recorder.given.back();
}

TEST(DateTimes, AreScannedAsFarAsTheyFit) {
    for (const auto& [given, written] : kDates) {
        const CTulStringW text(given);
        const auto length = static_cast<unsigned>(text.GetLength());
        for (unsigned split = 0; split < length; ++split) {
            const auto date = test::Make("dc:date");
            EXPECT_EQ(date->ReadNodeValue(text, split), split > 0);
            EXPECT_TRUE(date->ReadNodeValue(text.c_str() + split, length - split));
            EXPECT_EQ(WriteDate(*date), Given(written)) << given << " in two pieces, the first of " << split;
            EXPECT_EQ(static_cast<ODF::CDcDate&>(*date).GetRawText(), text);
        }
    }
}

TEST(DateTimes, BeyondTheCalendarIsTheTimeOfReading) {
    for (const char* const text : {"2009-13-01T00:00:00", "2009-13", "2009-01-32", "2009-01-01T25:00:00",
                                   "2009-01-01T00:61:00", "2009-01-01T00:00:61"}) {
        const auto date = test::Make("meta:creation-date");
        const CTulStringW units(text);
        EXPECT_TRUE(date->ReadNodeValue(units, static_cast<unsigned>(units.GetLength())));
        const SYSTEMTIME value = static_cast<ODF::CMetaCreationDate&>(*date).Getval();
        EXPECT_GE(value.wYear, 2024) << text;
        EXPECT_TRUE(value.wMonth >= 1 && value.wMonth <= 12 && value.wDay >= 1 && value.wDay <= 31) << text;
    }
}

TEST(DateTimes, AValueBeyondTheCalendarIsNotWritten) {
    const auto date = test::Make("dc:date");
    auto& typed = static_cast<ODF::CDcDate&>(*date);
    EXPECT_EQ(WriteDate(*date), Given("0000-00-00T00:00:00.000")) << "never set";
    typed.Setval({2024, 2, 9, 29, 23, 59, 58, 7});
    EXPECT_EQ(WriteDate(*date), Given("2024-02-29T23:59:58.007"));
    const SYSTEMTIME bad[] = {{2024, 13, 0, 1, 0, 0, 0, 0},
                              {2024, 1, 0, 32, 0, 0, 0, 0},
                              {2024, 1, 0, 1, 25, 0, 0, 0},
                              {2024, 1, 0, 1, 0, 61, 0, 0},
                              {2024, 1, 0, 1, 0, 0, 61, 0}};
    for (const SYSTEMTIME& value : bad) {
        typed.Setval(value);
        EXPECT_EQ(WriteDate(*date), "(not written)");
        EXPECT_EQ(typed.GetText(), "");
    }
    EXPECT_FALSE(date->ReadNodeValue(nullptr, 3));
    EXPECT_EQ(typed.Getval(), bad[4]) << "no text, no change";
}

TEST(DateTimes, TheWrapperTakesAndGivesAValue) {
    CSDDateTimeObject wrapper;
    EXPECT_EQ(static_cast<SYSTEMTIME&>(wrapper), SYSTEMTIME());
    const SYSTEMTIME value{2024, 1, 2, 3, 4, 5, 6, 7};
    wrapper = value;
    EXPECT_EQ(static_cast<SYSTEMTIME&>(wrapper), value);
    wrapper = &value;
    EXPECT_EQ(static_cast<SYSTEMTIME&>(wrapper), value);
}

} // namespace
