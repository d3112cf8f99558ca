// The judge of whole packages notices each loss, and nothing that may differ.

#include "support/files.h"
#include "support/package_difference.h"
#include "support/packages.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using Strings = std::vector<std::string>;

test::Members Sample() {
    return {{"mimetype", std::string(test::kTextType)},
            {"content.xml", test::TextContent("<text:p>a</text:p>")},
            {"Pictures/a.png", "picture"},
            {"META-INF/manifest.xml",
             test::Manifest(
                 {{"/", std::string(test::kTextType)}, {"content.xml"}, {"Pictures/a.png", "image/png"}})}};
}

/// What the judge says when `change` was made to the second of two packages.
Strings After(const std::function<void(test::Members&)>& change, bool isReversed = false) {
    const test::TemporaryFolder folder;
    test::Members members = Sample();
    test::WritePackage(folder / "before.odt", members);
    change(members);
    test::WritePackage(folder / "after.odt", members);
    const std::string before = folder / "before.odt";
    const std::string after = folder / "after.odt";
    return isReversed ? test::PackageDifferences(after, before) : test::PackageDifferences(before, after);
}

/// A change that replaces `text` in a member.
std::function<void(test::Members&)> Replaced(const std::string& member, const std::string& text,
                                             const std::string& other) {
    return [=](test::Members& members) {
        std::string& data = members.at(member);
        ASSERT_NE(data.find(text), data.npos) << text;
        data.replace(data.find(text), text.size(), other);
    };
}

} // namespace

TEST(PackageJudge, NoticesEachLoss) {
    const std::string manifest = "META-INF/manifest.xml";
    const std::string row = R"(<manifest:file-entry manifest:media-type="image/png")"
                            R"( manifest:full-path="Pictures/a.png"/>)";
    const struct {
        std::function<void(test::Members&)> change;
        std::string difference;
    } kRows[] = {
        {[](test::Members& members) { members.erase("Pictures/a.png"); }, "Pictures/a.png: lost"},
        {[](test::Members& members) { members["more.bin"]; }, "more.bin: added"},
        {Replaced("Pictures/a.png", "picture", "Picture"), "Pictures/a.png: other bytes"},
        {Replaced("mimetype", "text", "texT"), "mimetype: other bytes"},
        {Replaced("content.xml", ">a<", ">b<"),
         "content.xml: /office:document-content[1]/office:body[1]/office:text[1]/text:p[1]: "
         R"(text "a" before, "b" after)"},
        {Replaced(manifest, row, ""), manifest + R"(: "Pictures/a.png": lost)"},
        {Replaced(manifest, row, row + R"(<manifest:file-entry manifest:full-path="b"/>)"),
         manifest + R"(: "b": added, but no member)"},
        {Replaced(manifest, "image/png", "image/gif"),
         manifest + R"(: "Pictures/a.png": media-type "image/png" before, "image/gif" after)"},
        {Replaced(manifest, R"(manifest:media-type="image/png")", ""),
         manifest + R"(: "Pictures/a.png": media-type lost)"},
        {Replaced(manifest, row,
                  row.substr(0, row.size() - 2) + "><manifest:encryption-data/></manifest:file-entry>"),
         manifest + R"(: "Pictures/a.png": encrypted)"},
    };
    for (const auto& [change, difference] : kRows)
        EXPECT_EQ(After(change), Strings{difference});
}

TEST(PackageJudge, LetsPassWhatMayDiffer) {
    EXPECT_EQ(After(Replaced("content.xml", "<text:p>a</text:p>", "\n<text:p >a</text:p>")), Strings());
    EXPECT_EQ(After([](test::Members& members) { members.erase("mimetype"); }, true), Strings())
        << "a mimetype that the first lacks";
    EXPECT_EQ(After([](test::Members& members) { members.erase("META-INF/manifest.xml"); }, true), Strings())
        << "a manifest that the first lacks";
    EXPECT_EQ(After(Replaced("META-INF/manifest.xml", "<manifest:file-entry manifest",
                             R"(<manifest:file-entry manifest:version="1.2" manifest)")),
              Strings());
}
