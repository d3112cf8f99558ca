#include "platform/path.h"

#include "zip/case_name.h"

#include <gtest/gtest.h>

using ODF::platform::Path;

namespace {

struct PartsCase {
    const char* name;
    const char* path;
    const char* file;
    const char* stem;
    const char* extension;
    const char* parent;
};

class PathParts : public testing::TestWithParam<PartsCase> {};

struct JoinCase {
    const char* name;
    const char* folder;
    const char* relative;
    const char* joined;
};

class PathJoin : public testing::TestWithParam<JoinCase> {};

struct FoldCase {
    const char* name;
    const char* path;
    const char* folded;
};

class PathFold : public testing::TestWithParam<FoldCase> {};

} // namespace

TEST_P(PathParts, AreFound) {
    const Path path(GetParam().path);
    EXPECT_EQ(path.name(), GetParam().file);
    EXPECT_EQ(path.stem(), GetParam().stem);
    EXPECT_EQ(path.extension(), GetParam().extension);
    EXPECT_EQ(path.parent().utf8(), GetParam().parent);
}

INSTANTIATE_TEST_SUITE_P(Paths, PathParts,
                         testing::Values(PartsCase{"Plain", "/a/b.odt", "b.odt", "b", ".odt", "/a"},
                                         PartsCase{"Bare", "b.odt", "b.odt", "b", ".odt", "."},
                                         PartsCase{"Backslashes", "C:\\a\\b.odt", "b.odt", "b", ".odt", "."},
                                         PartsCase{"NoExtension", "/a.b/c", "c", "c", "", "/a.b"},
                                         PartsCase{"TwoDots", "a.tar.gz", "a.tar.gz", "a.tar", ".gz", "."},
                                         PartsCase{"Hidden", "/a/.hidden", ".hidden", "", ".hidden", "/a"},
                                         PartsCase{"Root", "/", "", "", "", "/"},
                                         PartsCase{"InRoot", "/a", "a", "a", "", "/"},
                                         PartsCase{"Trailing", "/a/b/", "", "", "", "/a"},
                                         PartsCase{"Empty", "", "", "", "", "."}),
                         test::CaseName());

TEST_P(PathJoin, HasOneSeparator) {
    EXPECT_EQ((Path(GetParam().folder) / Path(GetParam().relative)).utf8(), GetParam().joined);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, PathJoin,
    testing::Values(JoinCase{"Plain", "/t", "a/b", "/t/a/b"},
                    JoinCase{"Backslashes", "/t", "META-INF\\m.xml", "/t/META-INF/m.xml"},
                    JoinCase{"Seam", "/t/", "/a", "/t/a"}, JoinCase{"BackslashSeam", "/t\\", "\\a", "/t/a"},
                    JoinCase{"FolderWithBackslash", "/odd\\name/t", "a", "/odd\\name/t/a"},
                    JoinCase{"Root", "/", "a", "/a"}, JoinCase{"NoFolder", "", "a\\b", "a/b"},
                    JoinCase{"NoName", "/t", "", "/t/"}),
    test::CaseName());

TEST_P(PathFold, HasNoSteps) {
    EXPECT_EQ(Absolute(Path(GetParam().path)).utf8(), GetParam().folded);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, PathFold,
    testing::Values(FoldCase{"Plain", "/a/b", "/a/b"}, FoldCase{"Dot", "/a/./b/.", "/a/b"},
                    FoldCase{"Up", "/a/b/../c", "/a/c"}, FoldCase{"AboveRoot", "/../../a", "/a"},
                    FoldCase{"Doubled", "//a///b/", "/a/b"}, FoldCase{"Root", "/a/..", "/"}),
    test::CaseName());

TEST(Path, CrossesFromUtf16) {
    EXPECT_EQ(Path(u"/t/\u00E4\U0001F600").utf8(), "/t/\xC3\xA4\xF0\x9F\x98\x80");
    EXPECT_EQ(Path("/t/\xC3\xA4").text(), u"/t/\u00E4");
    EXPECT_TRUE(Path(static_cast<const unsigned short*>(nullptr)).empty());
}
