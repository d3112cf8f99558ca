// Values as people write them: lengths, colours, dates, durations, keys of enumerations, texts and paths.

#include <odfmodel/odfmodel.h>

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>

using namespace ODF;

TEST(Values, LengthsKeepTheirWordsAndConvert) {
    const struct {
        const char* text;
        double number;
        LengthUnit unit;
        double points; ///< NaN where it depends on another length
    } kGood[] = {{"2.54cm", 2.54, LengthUnit::Centimeter, 72},
                 {"25.40mm", 25.4, LengthUnit::Millimeter, 72},
                 {"-.5in", -0.5, LengthUnit::Inch, -36},
                 {"12pt", 12, LengthUnit::Point, 12},
                 {"1.pc", 1, LengthUnit::Pica, 12},
                 {"96px", 96, LengthUnit::Pixel, 72},
                 {"115%", 115, LengthUnit::Percent, NAN},
                 {"1.5em", 1.5, LengthUnit::Em, NAN}};
    for (const auto& row : kGood) {
        const auto length = Length::Parse(row.text);
        ASSERT_TRUE(length) << row.text;
        EXPECT_EQ(*length, Length(row.number, row.unit)) << row.text;
        EXPECT_EQ(length->Print(), row.text);
        EXPECT_EQ(length->In(LengthUnit::Point).has_value(), !std::isnan(row.points)) << row.text;
        if (length->IsAbsolute()) {
            EXPECT_NEAR(*length->In(LengthUnit::Point), row.points, 1e-9) << row.text;
        }
    }
    for (const char* const bad : {"", "cm", "1", "1 cm", " 1cm", "1cm ", "1CM", "+1cm", "1e3cm", "1..2cm",
                                  "-cm", ".cm", "nancm", "infcm", "1cmcm", "0x1cm"})
        EXPECT_FALSE(Length::Parse(std::string_view(bad))) << bad;

    EXPECT_EQ(Length::Centimeters(1e-7).Print(), "0.0000001cm") << "never an exponent";
    EXPECT_EQ(Length::Points(std::numeric_limits<double>::infinity()).Print(), "0pt");
    EXPECT_EQ(CTulStringW(Length::Percent(50)), "50%");
    EXPECT_LT(Length::Millimeters(9.9), Length::Centimeters(1));
    EXPECT_EQ(Length::Percent(1) <=> Length::Points(1), std::partial_ordering::unordered);
    EXPECT_EQ(Length::Parse(CTulStringW(u"3cm")), Length::Centimeters(3));
}

TEST(Values, ColoursAreReadAndPrinted) {
    EXPECT_EQ(Color::Parse("#ff8000"), (Color{255, 128, 0}));
    EXPECT_EQ(Color::Parse("#FF80aB")->Print(), "#ff80ab");
    for (const char* const bad :
         {"", "#", "ff8000", "#ff80", "#ff80001", "#gg0000", "#-12345", "transparent"})
        EXPECT_FALSE(Color::Parse(std::string_view(bad))) << bad;
}

TEST(Values, DatesKeepTheirWords) {
    for (const char* const good : {"2024-02-29", "0000-12-31", "-0044-03-15", "12024-01-01",
                                   "2024-01-31T12:30:05", "2024-01-31T24:00:00", "2024-01-31T12:30:05.100Z",
                                   "1999-12-31T23:59:59.123456789+05:30", "2024-01-31T12:30:05-11:00"}) {
        const auto date = DateTime::Parse(std::string_view(good));
        ASSERT_TRUE(date) << good;
        EXPECT_EQ(date->Print(), good);
    }
    for (const char* const bad :
         {"", "2023-02-29", "1900-02-29", "2024-13-01", "2024-00-01", "2024-01-00", "2024-1-1", "202-01-01",
          "2024-01-31T", "2024-01-31T25:00:00", "2024-01-31T24:00:01", "2024-01-31T12:60:00",
          "2024-01-31 12:00:00", "2024-01-31T12:30", "2024-01-31T12:30:05.", "2024-01-31x",
          "99999999999-01-01", "2024-01-31T12:30:05+5:30"})
        EXPECT_FALSE(DateTime::Parse(std::string_view(bad))) << bad;

    const auto date = DateTime::Parse("2024-01-31T12:30:05.25Z");
    const SYSTEMTIME fields = date->ToSystemTime();
    EXPECT_EQ(fields.wMilliseconds, 250);
    EXPECT_EQ(DateTime::From(fields).Print(), "2024-01-31T12:30:05.250");
    EXPECT_EQ(DateTime{-1}.ToSystemTime(), SYSTEMTIME());
}

TEST(Values, DurationsKeepTheirWordsAndAddUp) {
    const struct {
        const char* text;
        double seconds; ///< NaN where it has months or years
        const char* clock;
    } kGood[] = {{"PT12H30M05.5S", 45005.5, "12:30:05.5"},
                 {"PT5M", 300, "00:05:00"},
                 {"-PT1S", -1, "-00:00:01"},
                 {"P1DT2H", 93600, "P1DT2H"},
                 {"P1Y", NAN, "P1Y"},
                 {"P2D", 172800, "P2D"}};
    for (const auto& row : kGood) {
        const auto duration = Duration::Parse(std::string_view(row.text));
        ASSERT_TRUE(duration) << row.text;
        EXPECT_EQ(duration->Print(), row.text);
        EXPECT_EQ(duration->Clock(), row.clock);
        EXPECT_EQ(duration->TotalSeconds().has_value(), !std::isnan(row.seconds)) << row.text;
        if (duration->TotalSeconds()) {
            EXPECT_DOUBLE_EQ(*duration->TotalSeconds(), row.seconds) << row.text;
        }
    }
    for (const char* const bad : {"", "P", "PT", "P1", "P1DT", "PT1.5M", "PT1S1H", "1S", "PT-1S", "P1S"})
        EXPECT_FALSE(Duration::Parse(std::string_view(bad))) << bad;
    EXPECT_EQ(Duration::Seconds(0.1 + 0.2).Print(), "PT00H00M00.3S");
    EXPECT_EQ(Duration::Seconds(-59.9999999).Print(), "-PT00H01M00S");
    EXPECT_EQ(Duration::Of(100, 5, 7).Print(), "PT100H05M07S");
}

TEST(Values, EnumerationsGoToTheirKeysAndBack) {
    EXPECT_EQ(KeyOf(ST_FoFontWeight::Bold), "bold");
    EXPECT_EQ(KeyOf(static_cast<ST_FoFontWeight>(99)), "");
    EXPECT_EQ(ParseKey<ST_StyleFamily>("table-cell"), ST_StyleFamily::TableCell);
    EXPECT_EQ(ParseKey<ST_StyleFamily>("Table-cell"), std::nullopt);
    for (int value = 0; value < 11; ++value) {
        const auto weight = static_cast<ST_FoFontWeight>(value);
        EXPECT_EQ(ParseKey<ST_FoFontWeight>(KeyOf(weight)), weight);
    }
}

TEST(Values, TextsJoinAndTakePaths) {
    const CTulStringW a = "a";
    EXPECT_EQ(a + "ä" + u"b" + std::string("c") + CTulStringW("d"), "aäbcd");
    EXPECT_EQ("x" + a + a, "xaa");
    EXPECT_EQ(a, "a") << "what is joined stays";
    EXPECT_EQ(CTulStringW(std::filesystem::path("/tmp/ä.odt")), "/tmp/ä.odt");

    CODFDoc document;
    EXPECT_EQ(document.Open(std::filesystem::path("/nowhere/none.odt")), 0);
    EXPECT_EQ(document.GetDiagnostics().status(), Status::NotReadable);
}

TEST(Values, OptionalGettersTellWhatIsSet) {
    const std::unique_ptr<CSDObject> made(CTextH::Create());
    auto& heading = static_cast<CTextH&>(*made);
    EXPECT_EQ(heading.TextStyleName(), std::nullopt);
    EXPECT_EQ(heading.TextOutlineLevel(), std::nullopt) << "a required one has a default, but isn't set";
    heading.SetTextStyleName("Heading");
    heading.SetTextOutlineLevel(2);
    EXPECT_EQ(heading.TextStyleName(), CTulStringW("Heading"));
    EXPECT_EQ(heading.TextOutlineLevel(), heading.GetTextOutlineLevel());
    heading.UnsetTextStyleName();
    EXPECT_EQ(heading.TextStyleName(), std::nullopt);
}
