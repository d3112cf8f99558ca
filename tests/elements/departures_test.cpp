// What single classes make of what they read: XML in, XML out, as departures.txt lists them.

#include "support/element_xml.h"

#include <gtest/gtest.h>

#include <cctype>
#include <fstream>

namespace {

struct Row {
    std::string in, out;
    int line;
};

std::vector<Row> ReadRows() {
    std::ifstream file(ODFMODEL_SOURCE_DIR "/tests/elements/departures.txt");
    std::vector<Row> rows;
    std::string text;
    for (int line = 1; std::getline(file, text); ++line) {
        for (std::size_t at = 0; (at = text.find("\\n")) != std::string::npos;)
            text.replace(at, 2, "\n");
        if (text.starts_with("<"))
            rows.push_back({text, text, line});
        else if (text.starts_with("    "))
            rows.back().out = text.substr(4);
    }
    return rows;
}

class Departures : public testing::TestWithParam<Row> {};

TEST_P(Departures, AreKept) {
    EXPECT_EQ(test::RoundTrip(GetParam().in), GetParam().out);
    EXPECT_EQ(test::RoundTrip(GetParam().out), GetParam().out) << "and what is written stays";
}

std::string NameOf(const testing::TestParamInfo<Row>& given) {
    std::string name = "Line" + std::to_string(given.param.line) + "_";
    for (const char c : given.param.in.substr(1, given.param.in.find_first_of(" />") - 1))
        name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return name;
}

TEST(DeparturesTable, IsThere) {
    EXPECT_EQ(ReadRows().size(), 170U);
}

INSTANTIATE_TEST_SUITE_P(All, Departures, testing::ValuesIn(ReadRows()), NameOf);

} // namespace
