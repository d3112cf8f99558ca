// Files that are small and would become large: they end at a bound, and the status says so.

#include "support/files.h"
#include "support/packages.h"
#include "support/texts.h"

#include <odfmodel/odfmodel.h>
#include <odfmodel/serial/sax_reader.h>

#include <gtest/gtest.h>

#include <string>

using namespace ODF;

namespace {

std::string StylesPart(std::string_view inside) {
    return "<office:document-styles xmlns:office='urn:oasis:names:tc:opendocument:xmlns:office:1.0' "
           "xmlns:style='urn:oasis:names:tc:opendocument:xmlns:style:1.0'><office:styles>" +
           std::string(inside) + "</office:styles></office:document-styles>";
}

/// A content whose paragraph has `count` times 1,000 characters, by way of an entity, after many blanks.
std::string Entities(std::size_t count) {
    return "<!DOCTYPE x [<!ENTITY y '" + std::string(1000, 'y') + "'>]>" + std::string(100'000, ' ') +
           test::TextContent("<text:p>" + test::Repeated("&y;", count) + "</text:p>").substr(38);
}

struct Bomb {
    const char* name;
    test::Members members;
    bool isTooMuch;
};

class Bombs : public testing::Test {
protected:
    Status open(const test::Members& members, const Limits& limits) {
        test::WriteOdf(folder / "bomb.odt", test::kTextType, members);
        Document document;
        OpenOptions options;
        options.limits = limits;
        return document.Open(folder / "bomb.odt", options).Code();
    }

    /// The status of the older document class, which works on extracted files.
    Status openListed(const test::Members& members, const Limits& limits) {
        test::WriteOdf(folder / "bomb.odt", test::kTextType, members);
        CODFDoc document;
        document.SetLimits(limits);
        document.Open(folder / "bomb.odt");
        return document.GetDiagnostics().status();
    }

    test::TemporaryFolder folder;
};

} // namespace

TEST_F(Bombs, AreBoundedByTheSizeOfTheFile) {
    Limits limits;
    limits.freeObjects = 10'000;
    limits.objectsPerByte = 0;
    limits.freeTreeBytes = 1'000'000;
    limits.treeBytesPerByte = 0;
    Limits bySize = limits; // the archives here are not packed, so they are as large as what is in them
    bySize.objectsPerByte = 1;
    bySize.treeBytesPerByte = 20;
    const std::string style = "<style:style/>";
    const Bomb bombs[] = {
        {"as many elements as allowed",
         {{"content.xml", test::TextContent(test::Repeated("<text:p/>", 9'000))}},
         false},
        {"empty elements", {{"content.xml", test::TextContent(test::Repeated("<text:p/>", 100'000))}}, true},
        {"foreign elements", {{"content.xml", test::TextContent(test::Repeated("<x/>", 100'000))}}, true},
        {"comments", {{"content.xml", test::TextContent(test::Repeated("<!---->", 100'000))}}, true},
        {"runs of text",
         {{"content.xml",
           test::TextContent("<text:p>" + test::Repeated("a<text:s/>", 60'000) + "</text:p>")}},
         true},
        {"elements of several members",
         {{"content.xml", test::TextContent(test::Repeated("<text:p/>", 9'000))},
          {"styles.xml", StylesPart(test::Repeated(style, 9'000))}},
         true},
        {"a long value",
         {{"content.xml",
           test::TextContent("<text:p text:style-name='" + std::string(2'000'000, 'x') + "'/>")}},
         true},
        {"text by entities", {{"content.xml", Entities(2'000)}}, true},
        {"a few entities", {{"content.xml", Entities(900)}}, false},
    };
    for (const Bomb& bomb : bombs) {
        EXPECT_EQ(open(bomb.members, limits), bomb.isTooMuch ? Status::LimitExceeded : Status::Ok)
            << bomb.name;
        EXPECT_EQ(open(bomb.members, bySize), Status::Ok) << bomb.name << ": a large file may have more";
        EXPECT_EQ(openListed(bomb.members, bySize), Status::Ok) << bomb.name;
    }
}

// Packed, elements take next to nothing of the file; what counts is the file.
TEST_F(Bombs, ExtractedMembersAreBoundedByThePackedSizeToo) {
    Limits limits;
    limits.freeObjects = 10'000;
    test::WriteOdf(folder / "plain.odt", test::kTextType,
                   {{"content.xml", test::TextContent(test::Repeated("<text:p/>", 200'000))}});
    Document document;
    ASSERT_TRUE(document.Open(folder / "plain.odt"));
    ASSERT_TRUE(document.Save(folder / "packed.odt"));
    for (const bool isBounded : {true, false}) {
        CODFDoc listed;
        if (isBounded) listed.SetLimits(limits);
        EXPECT_EQ(listed.Open(folder / "packed.odt"), 1);
        EXPECT_EQ(listed.GetDiagnostics().status(), isBounded ? Status::Damaged : Status::Ok);
    }
}

TEST_F(Bombs, EntitiesOfEntitiesAreALimitNotAFault) {
    std::string entities = "<!ENTITY a '" + std::string(1000, 'x') + "'>";
    for (char c = 'b'; c < 'h'; ++c)
        entities += "<!ENTITY " + std::string(1, c) + " '" +
                    test::Repeated("&" + std::string(1, static_cast<char>(c - 1)) + ";", 20) + "'>";
    const std::string xml =
        "<!DOCTYPE x [" + entities + "]>" + test::TextContent("<text:p>&g;</text:p>").substr(38);
    EXPECT_EQ(open({{"content.xml", xml}}, {}), Status::LimitExceeded);
    Limits wide; // the library's own measure of growth comes first here
    wide.freeTreeBytes = std::uint64_t{1} << 40;
    EXPECT_EQ(open({{"content.xml", xml}}, wide), Status::LimitExceeded);
}
