#include "platform/path.h"

#include <gtest/gtest.h>

using ODF::platform::Path;

TEST(Path, HasParts) {
    constexpr struct {
        const char *path, *name, *stem, *extension, *parent;
    } kRows[] = {{"/a/b.odt", "b.odt", "b", ".odt", "/a"},
                 {"b.odt", "b.odt", "b", ".odt", "."},
                 {"C:\\a\\b.odt", "b.odt", "b", ".odt", "."},
                 {"/a.b/c", "c", "c", "", "/a.b"},
                 {"a.tar.gz", "a.tar.gz", "a.tar", ".gz", "."},
                 {"/a/.hidden", ".hidden", "", ".hidden", "/a"},
                 {"/", "", "", "", "/"},
                 {"/a", "a", "a", "", "/"},
                 {"/a/b/", "", "", "", "/a"},
                 {"", "", "", "", "."}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.path);
        const Path path(row.path);
        EXPECT_EQ(path.name(), row.name);
        EXPECT_EQ(path.stem(), row.stem);
        EXPECT_EQ(path.extension(), row.extension);
        EXPECT_EQ(path.parent().utf8(), row.parent);
    }
}

TEST(Path, JoinsWithOneSeparator) {
    constexpr const char* kRows[][3] = {{"/t", "a/b", "/t/a/b"},
                                        {"/t", "META-INF\\m.xml", "/t/META-INF/m.xml"},
                                        {"/t/", "/a", "/t/a"},
                                        {"/t\\", "\\a", "/t/a"},
                                        {"/odd\\name/t", "a", "/odd\\name/t/a"},
                                        {"/", "a", "/a"},
                                        {"", "a\\b", "a/b"},
                                        {"/t", "", "/t/"}};
    for (const auto& [folder, relative, joined] : kRows)
        EXPECT_EQ((Path(folder) / Path(relative)).utf8(), joined) << folder << ' ' << relative;
}

TEST(Path, LosesItsStepsWhenItIsAbsolute) {
    constexpr const char* kRows[][2] = {{"/a/b", "/a/b"},   {"/a/./b/.", "/a/b"}, {"/a/b/../c", "/a/c"},
                                        {"/../../a", "/a"}, {"//a///b/", "/a/b"}, {"/a/..", "/"}};
    for (const auto& [path, folded] : kRows)
        EXPECT_EQ(Absolute(Path(path)).utf8(), folded) << path;
}

TEST(Path, CrossesFromUtf16) {
    EXPECT_EQ(Path(u"/t/\u00E4\U0001F600").utf8(), "/t/\xC3\xA4\xF0\x9F\x98\x80");
    EXPECT_EQ(Path("/t/\xC3\xA4").text(), u"/t/\u00E4");
    EXPECT_TRUE(Path(static_cast<const unsigned short*>(nullptr)).empty());
}
