// What callers change, and what the manifest makes of it.

#include "odf_package/fixture.h"

using namespace odf_package_test;
using ODF::NoteCode;
using ODF::Status;

namespace {

/// A package of these members, in name order, with this manifest.
std::string Archive(test::Members members, const std::string& manifest) {
    const test::TemporaryFolder folder;
    std::filesystem::create_directories(folder.path());
    members["META-INF/manifest.xml"] = manifest;
    test::WritePackage(folder / "a.odt", members);
    return test::ReadFile(folder / "a.odt");
}

/// The rows of a manifest as its file has them, one string each.
std::vector<std::string> Rows(const std::string& manifest) {
    std::vector<std::string> rows;
    for (auto at = manifest.find("file-entry "); at != std::string::npos;
         at = manifest.find("file-entry ", at + 1))
        rows.push_back(manifest.substr(at + 11, manifest.find('>', at) - at - 11));
    return rows;
}

constexpr const char* kRichManifest =
    R"(<?xml version="1.0"?><!DOCTYPE m:manifest SYSTEM "Manifest.dtd">)"
    R"(<m:manifest xmlns:m="http://openoffice.org/2001/manifest" xmlns:x="urn:x" m:version="1.2">)"
    R"(<m:file-entry m:full-path="/" m:media-type="type/a" m:preferred-view-mode="edit" m:version="1.2"/>)"
    R"(<m:file-entry x:mark="1 &amp; &quot;2&quot;" m:full-path="a b%20c.xml" m:media-type="text/xml" m:size="4"/>)"
    R"(<m:file-entry m:full-path="gone.xml" m:media-type="text/xml"><x:more x:y="z"/></m:file-entry>)"
    R"(<m:file-entry m:full-path="Pictures/" m:media-type=""/></m:manifest>)";

} // namespace

TEST(Changes, RowsKeepTheirOrderAndWhatNobodyKnows) {
    const std::string archive =
        Archive({{"a b%20c.xml", "<a/>"}, {"A B%20C.xml", "other"}, {"gone.xml", "-"}}, kRichManifest);
    Opened opened(archive);
    ASSERT_EQ(opened.status, Status::Ok);
    EXPECT_EQ(ManifestOf(opened.written()), kRichManifest) << "nobody changed it";
    EXPECT_EQ(opened.package.mediaType(), "type/a");

    opened.package.put("Pictures/\xC3\xA9<&\".png", ToBytes("\x89PNG"));
    opened.package.put("a b%20c.xml", ToBytes("<longer/>"));
    const std::string written = opened.written();
    EXPECT_EQ(
        Rows(ManifestOf(written)),
        (std::vector<std::string>{
            R"(m:full-path="/" m:media-type="type/a" m:preferred-view-mode="edit" m:version="1.2"/)",
            R"(x:mark="1 &amp; &quot;2&quot;" m:full-path="a b%20c.xml" m:media-type="text/xml" m:size="9"/)",
            R"(m:full-path="gone.xml" m:media-type="text/xml")",
            R"(m:full-path="Pictures/" m:media-type=""/)",
            "m:full-path=\"Pictures/\xC3\xA9&lt;&amp;&quot;.png\" m:media-type=\"image/png\"/"}));
    EXPECT_NE(ManifestOf(written).find(R"(<x:more x:y="z"/>)"), std::string::npos);

    Opened again(written);
    EXPECT_EQ(again.read("A B%20C.xml"), "other");
    EXPECT_EQ(again.package.mediaTypeOf("A B%20C.xml"), "") << "a member without a row stays without";
    ASSERT_TRUE(again.package.remove("gone.xml"));
    EXPECT_FALSE(again.package.remove("gone.xml"));
    EXPECT_EQ(ManifestOf(again.written()).find("gone.xml"), std::string::npos);
}

TEST(Changes, NewMembersGetTheTypeOfTheirKind) {
    ODF::OdfPackage package;
    const struct {
        const char* name;
        const char* bytes;
        const char* given;
        const char* mediaType;
    } rows[] = {
        {"content.xml", "<a/>", "", "text/xml"},
        {"manifest.rdf", "<a/>", "", "application/rdf+xml"},
        {"Pictures/A.JPG", "x", "", "image/jpeg"},
        {"Pictures/B", "GIF89a", "", "image/gif"},
        {"Pictures/C.svm", "x", "", ""},
        {"Pictures/D.png", "x", "image/x-own", "image/x-own"},
        {"folder.xml/E", "x", "", ""},
    };
    for (const auto& row : rows)
        EXPECT_TRUE(package.put(row.name, ToBytes(row.bytes), row.given));
    package.put("Pictures/D.png", ToBytes("y")); // keeps what it has
    package.setMediaTypeOf("Object 1/", "application/x-object");
    package.setMediaType(test::kTextType);
    package.setVersion("1.3");
    Bytes archive;
    ODF::Diagnostics notes;
    ASSERT_EQ(package.write({}, archive, notes), Status::Ok);
    Opened opened(ToText(archive));
    for (const auto& row : rows)
        EXPECT_EQ(opened.package.mediaTypeOf(row.name), row.mediaType) << row.name;
    EXPECT_EQ(opened.package.mediaTypeOf("Object 1/"), "application/x-object");
    EXPECT_EQ(opened.package.mediaTypeOf("/"), test::kTextType);
    EXPECT_EQ(opened.package.version(), "1.3");
    EXPECT_EQ(Rows(ManifestOf(ToText(archive))).front().find("manifest:full-path=\"/\""), 0U);
    EXPECT_EQ(NamesOf(Directory(ToText(archive))).front(), "mimetype");
    EXPECT_EQ(NamesOf(Directory(ToText(archive))).back(), "META-INF/manifest.xml");
}

TEST(Changes, FreeNamesLeaveOthersAlone) {
    ODF::OdfPackage package;
    const struct {
        const char* folder;
        const char* file;
        const char* name;
    } rows[] = {
        {"Pictures", "x.png", "Pictures/x.png"},
        {"Pictures/", "x.png", "Pictures/x-2.png"},
        {"Pictures", "x-3.png", "Pictures/x-3.png"},
        {"Pictures", "x.png", "Pictures/x-4.png"},
        {"Pictures", "../../x", "Pictures/x"},
        {"Pictures", "a\\b\\x", "Pictures/x-2"},
        {"", "x.png", "x.png"},
        {"Pictures", "..", ""},
        {"Pictures", "", ""},
        {"", "mimetype", ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(package.addFree(row.folder, row.file, ToBytes(row.name)), row.name);
    for (const std::string& name : package.names()) {
        Bytes bytes;
        ODF::Diagnostics notes;
        EXPECT_EQ(package.read(name, bytes, notes), Status::Ok);
        EXPECT_EQ(ToText(bytes), name);
    }
    for (const char* const name : {"", "mimetype", "META-INF/manifest.xml", "Pictures/"})
        EXPECT_FALSE(package.put(name, {})) << name;
    EXPECT_FALSE(package.put(std::string(70'000, 'n'), {}));
}

TEST(Changes, FoldersGoWithTheirRows) {
    ODF::OdfPackage package;
    for (const char* const name :
         {"Object 1/content.xml", "Object 1/Pictures/a.png", "Object 10/content.xml"})
        package.put(name, ToBytes("<a/>"));
    package.setMediaTypeOf("Object 1/", "type/x");
    EXPECT_EQ(package.removeFolder("Object 1"), 2U);
    EXPECT_EQ(package.names(), std::vector<std::string>{"Object 10/content.xml"});
    EXPECT_EQ(package.mediaTypeOf("Object 1/"), "");
    package.put("Object 1/content.xml", ToBytes("again"));
    Bytes archive;
    ODF::Diagnostics notes;
    ASSERT_EQ(package.write({}, archive, notes), Status::Ok);
    EXPECT_EQ(Opened(ToText(archive)).package.names(),
              (std::vector<std::string>{"Object 10/content.xml", "Object 1/content.xml"}));
}

TEST(Changes, DropASignatureAndSaySo) {
    constexpr const char* signature = "META-INF/documentsignatures.xml";
    const std::string archive =
        Archive({{"content.xml", "<a/>"}, {signature, "<s/>"}, {"META-INF/other.xml", "<o/>"}},
                test::Manifest({{"/", "type/a"}, {"content.xml"}}));
    const auto isSigned = [&](Opened& opened, const Options& options = {}) {
        const bool isThere = Opened(opened.written(options)).package.contains(signature);
        EXPECT_NE(isThere, test::HasNote(opened.notes, NoteCode::General, signature));
        opened.notes.clear();
        return isThere;
    };
    Opened opened(archive);
    EXPECT_TRUE(isSigned(opened));
    opened.package.put("content.xml", ToBytes("<b/>"));
    EXPECT_FALSE(isSigned(opened));
    opened.package.put(signature, ToBytes("<new/>")); // by someone who knows
    EXPECT_TRUE(isSigned(opened));
    EXPECT_TRUE(Opened(opened.written()).package.contains("META-INF/other.xml"));

    Opened removing(archive);
    removing.package.remove("content.xml");
    EXPECT_FALSE(isSigned(removing));
    Opened retyped(archive);
    retyped.package.setMediaTypeOf("content.xml", "text/plain");
    EXPECT_FALSE(isSigned(retyped));
    Opened same(archive);
    same.package.setMediaTypeOf("content.xml", "text/xml");
    EXPECT_TRUE(isSigned(same)) << "nothing has changed";
}

TEST(Changes, ArchivesAreReproducibleWithAFixedTime) {
    Options options;
    options.fixedTime = 1'700'000'000; // 14 November 2023, 22:13:20 UTC
    std::vector<std::string> archives;
    for (const char* const zone : {"UTC", "Asia/Tokyo"}) {
        const test::ScopedVariable timeZone("TZ", zone);
        ODF::OdfPackage package;
        package.setMediaType("type/a");
        package.put("content.xml", ToBytes("<a/>"));
        package.put("b.xml", ToBytes(std::string(1000, ' ')));
        Bytes archive;
        ODF::Diagnostics notes;
        ASSERT_EQ(package.write(options, archive, notes), Status::Ok);
        archives.push_back(ToText(archive));
    }
    EXPECT_EQ(archives[0], archives[1]);
    for (const RawEntry& entry : Directory(archives[0]))
        EXPECT_EQ(entry.time, (43UL << 25U | 11UL << 21U | 14UL << 16U | 22UL << 11U | 13UL << 5U | 10UL));
}

TEST(Changes, MediaIsStoredAndTextDeflated) {
    ODF::OdfPackage package;
    package.put("a.xml", ToBytes(std::string(1000, ' ')));
    package.put("a.png", ToBytes(std::string(1000, ' ')));
    package.put("tiny.xml", ToBytes("x"));
    package.put("empty.xml", {});
    Bytes archive;
    ODF::Diagnostics notes;
    ASSERT_EQ(package.write({}, archive, notes), Status::Ok);
    std::map<std::string, unsigned> methods;
    for (const RawEntry& entry : Directory(ToText(archive)))
        methods[entry.name] = entry.method;
    methods.erase("META-INF/manifest.xml");
    EXPECT_EQ(methods, (std::map<std::string, unsigned>{
                           {"a.png", 0}, {"a.xml", 8}, {"empty.xml", 0}, {"tiny.xml", 0}}));
    EXPECT_EQ(Opened(ToText(archive)).read("empty.xml"), "");
}
