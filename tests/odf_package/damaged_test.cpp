// Damaged and hostile packages: they open as far as they can, and saving them is honest.

#include "odf_package/fixture.h"
#include "zip/raw_archive.h"

using namespace odf_package_test;
using ODF::NoteCode;
using ODF::Status;
using test::RawArchive;
using test::RawMember;
using test::Stored;

namespace {

constexpr const char* kNamespace = "urn:oasis:names:tc:opendocument:xmlns:manifest:1.0";

std::string WithManifest(const std::string& manifest) {
    return RawArchive({Stored("mimetype", std::string(test::kTextType)), Stored("content.xml", "<a/>"),
                       Stored("Pictures/a.png", "x"), Stored("META-INF/manifest.xml", manifest)});
}

} // namespace

TEST(Damaged, ManifestsOfAllKindsOpen) {
    const std::string row =
        R"(<manifest:file-entry manifest:full-path="content.xml" manifest:media-type="type/c"/>)";
    const std::string start = std::string("<manifest:manifest xmlns:manifest=\"") + kNamespace + "\">";
    const std::string end = "</manifest:manifest>";
    std::string many = start;
    for (int count = 0; count < 30'000; ++count)
        many += "<manifest:file-entry manifest:full-path=\"" + std::to_string(count) + "\"/>";
    std::string deep = start + row;
    for (int count = 0; count < 100'000; ++count)
        deep += "<x>";
    const struct {
        const char* what;
        std::string manifest;
        std::string typeOfContent;
        bool isSound;
    } cases[] = {
        {"sound", start + row + end, "type/c", true},
        {"default namespace",
         std::string("<manifest xmlns=\"") + kNamespace + "\" xmlns:m=\"" + kNamespace +
             "\"><file-entry m:full-path=\"content.xml\" m:media-type=\"type/c\"/></manifest>",
         "type/c", true},
        {"without a prefix",
         std::string("<manifest xmlns=\"") + kNamespace +
             "\"><file-entry full-path=\"content.xml\" media-type=\"type/c\"/></manifest>",
         "type/c", true},
        {"a foreign attribute of the same name",
         start + R"(<manifest:file-entry xmlns:x="urn:x" x:full-path="?" x:media-type="?" )" +
             R"(manifest:full-path="content.xml" manifest:media-type="type/c"/>)" + end,
         "type/c", true},
        {"an external DTD that isn't there",
         R"(<!DOCTYPE manifest:manifest SYSTEM "http://127.0.0.1:1/x.dtd">)" + start + row + end, "type/c",
         true},
        {"two rows, the last one counts",
         start + R"(<manifest:file-entry manifest:full-path="content.xml" manifest:media-type="old"/>)" +
             row + end,
         "type/c", true},
        {"rows of another namespace",
         std::string("<manifest:manifest xmlns:m=\"") + kNamespace + "\">" + row + end, "", true},
        {"a declaration with two colons",
         std::string("<manifest:manifest xmlns:m:manifest=\"") + kNamespace + "\">" + row + end, "type/c",
         true},
        {"encryption that isn't the row's own",
         start + row + R"(<manifest:file-entry manifest:full-path="a"><x><manifest:encryption-data/></x>)" +
             "</manifest:file-entry>" + end,
         "type/c", true},
        {"cut", start + row + "<manifest:file-en", "type/c", false},
        {"empty", "", "text/xml", false},
        {"not XML", "\xFF\xFE\x01", "text/xml", false},
        {"not a manifest", "<html/>", "text/xml", false},
        {"far too many rows", many + row + end, "text/xml", false},
        {"far too deep", deep, "type/c", false},
        {"an entity bomb",
         R"(<!DOCTYPE m [<!ENTITY a "aaaaaaaaaa"><!ENTITY b "&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;">)"
         R"(<!ENTITY c "&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;"><!ENTITY d "&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;">)"
         R"(<!ENTITY e "&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;"><!ENTITY f "&e;&e;&e;&e;&e;&e;&e;&e;&e;&e;">)"
         R"(<!ENTITY g "&f;&f;&f;&f;&f;&f;&f;&f;&f;&f;"><!ENTITY h "&g;&g;&g;&g;&g;&g;&g;&g;&g;&g;">]>)" +
             start + row + "<x y='&h;'/>" + end,
         "type/c", false},
    };
    for (const auto& given : cases) {
        SCOPED_TRACE(given.what);
        Opened opened(WithManifest(given.manifest));
        ASSERT_EQ(opened.status, Status::Ok);
        EXPECT_EQ(opened.package.mediaTypeOf("content.xml"), given.typeOfContent);
        EXPECT_NE(test::HasNote(opened.notes, NoteCode::ManifestFault, "META-INF/manifest.xml"),
                  given.isSound);
        // A sound one is written as it is; a damaged one is made whole.
        const std::string written = opened.written();
        EXPECT_EQ(ManifestOf(written) == given.manifest, given.isSound);
        Opened again(written);
        EXPECT_FALSE(test::HasNote(again.notes, NoteCode::ManifestFault, "META-INF/manifest.xml"));
        EXPECT_EQ(again.package.mediaTypeOf("content.xml"), given.typeOfContent);
        EXPECT_EQ(again.package.mediaTypeOf("Pictures/a.png"), given.isSound ? "" : "image/png");
        // A change goes to what readers see.
        again.package.setMediaTypeOf("content.xml", "type/new");
        again.package.setMediaTypeOf("/", "type/all");
        again.package.put("new.xml", ToBytes("<n/>"));
        Opened changed(again.written());
        EXPECT_EQ(changed.package.mediaTypeOf("content.xml"), "type/new");
        EXPECT_EQ(changed.package.mediaTypeOf("/"), "type/all");
        EXPECT_EQ(changed.package.mediaTypeOf("new.xml"), "text/xml");
    }
}

TEST(Damaged, NoReaderTakesWhatIsSavedPlainForEncrypted) {
    const std::string start = std::string("<manifest:manifest xmlns:manifest=\"") + kNamespace + "\">";
    for (const std::string rows :
         {"<manifest:file-entry><manifest:encryption-data/></manifest:file-entry>",
          "<manifest:file-entry "
          "manifest:full-path=\"none.xml\"><m:encryption-data/></manifest:file-entry>",
          "<m:file-entry full-path=\"none.xml\"><manifest:encryption-data/></m:file-entry>"}) {
        Opened opened(WithManifest(start + rows + "</manifest:manifest>"), "Secret123");
        opened.package.setEncryption(ODF::OdfPackage::Encryption::None, {});
        const std::string written = opened.written();
        EXPECT_EQ(ManifestOf(written).find("encryption-data"), std::string::npos) << rows;
        EXPECT_EQ(Opened(written).status, Status::Ok) << rows;
    }
}

TEST(Damaged, AmbiguousNamesAreToldAndKept) {
    const std::string archive = RawArchive(
        {Stored("content.xml", "old"), Stored("/content.xml", "slash"), Stored("./content.xml", "dot"),
         Stored("a\\b.xml", "back"), Stored("a/b.xml", "forward"), Stored("Content.xml", "upper"),
         Stored("../out.xml", "out"), Stored("content.xml", "new"), Stored("META-INF/manifest.xml", "")});
    Opened opened(archive);
    ASSERT_EQ(opened.status, Status::Ok);
    const test::Members members = opened.members();
    EXPECT_EQ(members, (test::Members{{"content.xml", "new"},
                                      {"/content.xml", "slash"},
                                      {"./content.xml", "dot"},
                                      {"a\\b.xml", "back"},
                                      {"a/b.xml", "forward"},
                                      {"Content.xml", "upper"},
                                      {"../out.xml", "out"}}));
    for (const char* const name : {"content.xml", "./content.xml", "a/b.xml"})
        EXPECT_TRUE(test::HasNote(opened.notes, NoteCode::MemberDuplicate, name)) << name;
    EXPECT_FALSE(test::HasNote(opened.notes, NoteCode::MemberDuplicate, "Content.xml"));
    EXPECT_EQ(Opened(opened.written()).members(), members);
}

TEST(Damaged, MembersAreReadAsFarAsTheyGo) {
    RawMember wrongSum = Stored("wrong.xml", "some bytes");
    wrongSum.crc ^= 1;
    RawMember unknown = Stored("unknown.xml", "some bytes");
    unknown.method = 97;
    RawMember cut{"cut.xml", "\x4b", 8};
    cut.size = 1000;
    const std::string archive = RawArchive({wrongSum, unknown, cut, Stored("good.xml", "good")});
    Opened opened(archive);
    ASSERT_EQ(opened.status, Status::Ok);
    Bytes bytes;
    for (const char* const name : {"wrong.xml", "unknown.xml", "cut.xml"}) {
        EXPECT_EQ(opened.package.read(name, bytes, opened.notes), Status::NotReadable) << name;
        EXPECT_TRUE(test::HasNote(opened.notes, NoteCode::MemberUnreadable, name)) << name;
    }
    EXPECT_EQ(opened.package.read("wrong.xml", bytes, opened.notes), Status::NotReadable);
    EXPECT_EQ(ToText(bytes), "some bytes");
    EXPECT_EQ(opened.package.read("none.xml", bytes, opened.notes), Status::NotReadable);
    EXPECT_TRUE(bytes.empty());

    // What can't be read is no reason to lose it, nor to call a save whole that encrypts it.
    opened.package.put("good.xml", ToBytes("better"));
    Options options;
    options.password = "p";
    EXPECT_EQ(opened.package.write(options, bytes, opened.notes), Status::NotReadable);
    EXPECT_TRUE(bytes.empty());
    opened.package.remove("unknown.xml");
    Opened again(opened.written());
    EXPECT_EQ(again.read("good.xml"), "better");
    EXPECT_EQ(again.package.read("cut.xml", bytes, again.notes), Status::NotReadable);
}

TEST(Damaged, LimitsHold) {
    ODF::OdfPackage package;
    package.put("zeros.xml", Bytes(5'000'000));
    package.put("small.xml", ToBytes("<a/>"));
    Bytes written;
    ODF::Diagnostics notes;
    ASSERT_EQ(package.write({}, written, notes), Status::Ok);
    ODF::Limits limits;
    limits.memberBytes = 1'000'000;
    Opened opened(ToText(written), {}, limits);
    ASSERT_EQ(opened.status, Status::Ok);
    Bytes bytes;
    EXPECT_EQ(opened.package.read("zeros.xml", bytes, opened.notes), Status::LimitExceeded);
    EXPECT_LE(bytes.size(), limits.memberBytes);
    EXPECT_EQ(opened.read("small.xml"), "<a/>");
    EXPECT_EQ(Opened(opened.written()).members().at("zeros.xml").size(), 5'000'000U)
        << "copied, not inflated";
    limits = {};
    limits.members = 2;
    EXPECT_EQ(Opened(ToText(written), {}, limits).status, Status::LimitExceeded);
    limits = {};
    limits.totalBytes = 4'000'000;
    Opened sealing(ToText(written), {}, limits);
    Options options;
    options.password = "p";
    EXPECT_EQ(sealing.package.write(options, bytes, sealing.notes), Status::LimitExceeded);
}

/// Thousands of members that share the same bytes: a save must not grow by their number.
TEST(Damaged, OverlappingMembersDontMultiply) {
    std::string archive =
        RawArchive({Stored("a", std::string(100'000, 'a')), Stored("b", "b"), Stored("c", "c")});
    // Both small ones now point at the first one's data.
    const auto directory = archive.find("PK\1\2");
    std::string sizes;
    test::AppendNumber(sizes, test::PlainCrc32(std::string(100'000, 'a')), 4);
    test::AppendNumber(sizes, 100'000, 4);
    test::AppendNumber(sizes, 100'000, 4);
    for (auto at = directory; at != std::string::npos && at < archive.rfind("PK\5\6");
         at = archive.find("PK\1\2", at + 1)) {
        archive.replace(at + 16, 12, sizes);
        archive.replace(at + 42, 4, std::string(4, '\0'));
    }
    Opened opened(archive);
    ASSERT_EQ(opened.status, Status::Ok);
    Bytes bytes;
    EXPECT_EQ(opened.package.write({}, bytes, opened.notes), Status::LimitExceeded);
    EXPECT_TRUE(bytes.empty());
}

TEST(Damaged, AFailedOpenLeavesThePackageAlone) {
    ODF::OdfPackage package;
    package.put("content.xml", ToBytes("<a/>"));
    ODF::Diagnostics notes;
    for (const std::string_view bytes :
         {std::string_view(), std::string_view("PK\3\4 no archive at all, really"),
          std::string_view("<?xml version=\"1.0\"?><office:document/>")}) {
        EXPECT_EQ(package.open(ToBytes(bytes), {}, {}, notes), Status::NotAnArchive);
        EXPECT_EQ(package.names(), std::vector<std::string>{"content.xml"});
    }
    EXPECT_EQ(notes.status(), Status::None) << "left to the caller";
    EXPECT_FALSE(notes.notes().empty());
}

/// Archives with bytes changed at random: whatever opens is read and written, and opens again.
TEST(Damaged, MutatedArchivesNeverBreakAnything) {
    const std::vector<test::Sample> samples = test::GoodSamples();
    unsigned state = 12345;
    const auto random = [&state](std::size_t below) {
        state = state * 1664525U + 1013904223U;
        return (state >> 8U) % below;
    };
    std::size_t opens = 0;
    for (const test::Sample& sample : samples) {
        const std::string original = test::ReadFile(sample.path);
        if (original.size() > 60'000 || sample.isEncrypted()) continue;
        for (int round = 0; round < 20; ++round) {
            std::string archive = original;
            // Half of the time near the end, where the directory is.
            const std::size_t tail = std::min<std::size_t>(archive.size(), 2000);
            for (std::size_t count = 1 + random(6); count > 0; --count) {
                const std::size_t place =
                    random(2) == 0 ? archive.size() - 1 - random(tail) : random(archive.size());
                archive[place] = static_cast<char>(random(256));
            }
            Opened opened(archive);
            if (opened.status != Status::Ok) continue;
            ++opens;
            for (const std::string& name : opened.package.names()) {
                Bytes bytes;
                static_cast<void>(opened.package.read(name, bytes, opened.notes));
            }
            Bytes written;
            opened.package.put("added.xml", ToBytes("<a/>"));
            if (opened.package.write({}, written, opened.notes) != Status::Ok) continue;
            Opened again(ToText(written));
            ASSERT_EQ(again.status, Status::Ok) << sample.name << " round " << round;
            EXPECT_EQ(again.read("added.xml"), "<a/>");
        }
    }
    EXPECT_GT(opens, test::HasCollection() ? 100U : 5U);
}
