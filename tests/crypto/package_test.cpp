// Encrypted packages: real ones, our own, and both with damage.

#include "serial/crypto/package_encryption.h"
#include "support/corpus.h"
#include "support/files.h"
#include "zip/case_name.h"
#include "zip/items.h"
#include "zip/notes.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/serial/unzip.h>
#include <odfmodel/serial/zip.h>

#include <gtest/gtest.h>

#include <zlib.h>

#include <stdexcept>
#include <utility>
#include <vector>

using namespace ODF;
using test::Item;

namespace {

/// Member names and stored bytes, in the order of the archive.
using Members = std::vector<std::pair<std::string, std::string>>;

constexpr std::string_view kManifest = "META-INF/manifest.xml";

std::string Archive(const Members& members) {
    std::size_t room = 4096;
    for (const auto& [name, data] : members)
        room += data.size() + 2 * name.size() + 200;
    std::string archive(room, '\0');
    CSDZip zip;
    EXPECT_NE(zip.CreareZipFile(archive.data(), static_cast<int>(room)), 0);
    for (const auto& [name, data] : members)
        EXPECT_NE(zip.CompressStored(name, data.data(), static_cast<int>(data.size())), 0);
    int size = 0;
    EXPECT_NE(zip.CloseMemoryFile(size), 0);
    archive.resize(static_cast<std::size_t>(size));
    return archive;
}

std::string& Find(Members& members, std::string_view name) {
    for (auto& [member, data] : members)
        if (member == name) return data;
    throw std::out_of_range("no such member");
}

/// Raw deflate with zlib, which the code under test doesn't use for this.
crypto::Bytes Deflated(const std::string& plain) {
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, 6, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string copy = plain;
    crypto::Bytes packed(deflateBound(&stream, plain.size()));
    stream.next_in = reinterpret_cast<Bytef*>(copy.data());
    stream.avail_in = static_cast<uInt>(copy.size());
    stream.next_out = packed.data();
    stream.avail_out = static_cast<uInt>(packed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

crypto::ByteView View(std::string_view text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

/// The members of a package with `plain` encrypted by our own writing side.
Members Encrypted(const Members& plain, std::string_view password, crypto::Scheme scheme) {
    const crypto::PackageEncryption encryption(View(password), scheme);
    std::string rows;
    Members members{{"mimetype", "application/vnd.oasis.opendocument.text"}};
    for (const auto& [name, data] : plain) {
        const auto member = encryption.encrypt(Deflated(data));
        if (!member) continue;
        rows += "<manifest:file-entry manifest:full-path=\"" + name + "\" manifest:size=\"" +
                std::to_string(data.size()) + "\">" + crypto::ToManifestText(member->data) +
                "</manifest:file-entry>";
        members.emplace_back(name, std::string(member->bytes.begin(), member->bytes.end()));
    }
    members.emplace_back(
        kManifest, "<?xml version=\"1.0\" encoding=\"UTF-8\"?><manifest:manifest "
                   "xmlns:manifest=\"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0\" "
                   "xmlns:loext=\"urn:org:documentfoundation:names:experimental:office:xmlns:loext:1.0\" "
                   "manifest:version=\"1.2\"><manifest:file-entry manifest:full-path=\"/\"/>" +
                       rows + "</manifest:manifest>");
    return members;
}

Members WholePackage(const Members& inner, std::string_view password) {
    return Encrypted({{"encrypted-package", Archive(inner)}}, password, crypto::Scheme::Whole);
}

/// An opened package with everything that its reading told.
struct Opened {
    std::string archive;
    Diagnostics diagnostics;
    CODFUnZip unzip;
    int result = 0;

    Opened(std::string bytes, std::string_view password, const Limits& limits = {})
        : archive(std::move(bytes)) {
        unzip.SetDiagnostics(&diagnostics);
        unzip.SetLimits(limits);
        unzip.SetPassword(password);
        result = test::Open(unzip, archive);
    }
};

class EncryptedSample : public testing::TestWithParam<test::Sample> {
protected:
    test::TemporaryFolder folder;
    Diagnostics diagnostics;

    int extract(CSDUnZip& unzip) {
        unzip.SetDiagnostics(&diagnostics);
        return unzip.OpenAndExtract(GetParam().path, folder / "out");
    }
};

} // namespace

TEST_P(EncryptedSample, OpensWithItsPassword) {
    CODFUnZip unzip;
    unzip.SetPassword(std::string_view(GetParam().password));
    ASSERT_NE(extract(unzip), 0);
    EXPECT_TRUE(diagnostics.notes().empty()) << diagnostics.notes().front().member;
    EXPECT_EQ(diagnostics.status(), Status::None);
    for (const char* const name : {"content.xml", "styles.xml"}) {
        const std::string xml = test::ReadFile(folder / (std::string("out/") + name));
        EXPECT_NE(xml.find("<office:document-"), std::string::npos) << name;
        EXPECT_NE(xml.find("</office:document-"), std::string::npos) << name;
        EXPECT_EQ(Item(unzip, name), xml);
    }
}

TEST_P(EncryptedSample, IsRefusedWithAWrongPassword) {
    CODFUnZip unzip;
    unzip.SetPassword(GetParam().password + "x");
    EXPECT_EQ(extract(unzip), 0);
    EXPECT_EQ(diagnostics.status(), Status::WrongPassword);
    EXPECT_EQ(unzip.itemTable, nullptr);
    EXPECT_FALSE(std::filesystem::exists(folder / "out/content.xml"));
}

TEST_P(EncryptedSample, IsRefusedWithoutAPassword) {
    CODFUnZip unzip;
    EXPECT_EQ(extract(unzip), 0);
    unzip.SetPassword(static_cast<const unsigned short*>(nullptr));
    EXPECT_EQ(extract(unzip), 0);
    unzip.SetPassword("");
    EXPECT_EQ(extract(unzip), 0);
    EXPECT_EQ(diagnostics.status(), Status::PasswordNeeded);
}

TEST_P(EncryptedSample, ShowsItsStoredBytesToAPlainReader) {
    CSDUnZip unzip;
    ASSERT_NE(extract(unzip), 0);
    EXPECT_EQ(Item(unzip, "content.xml").find("<office:document-"), std::string::npos);
}

TEST_P(EncryptedSample, IsCopiedInClear) {
    CODFUnZip source;
    source.SetPassword(std::string_view(GetParam().password));
    ASSERT_NE(source.OpenForItems(GetParam().path), 0);
    CSDZip zip;
    ASSERT_NE(zip.CreareZipFile(folder / "copy.zip"), 0);
    ASSERT_NE(zip.CopyItem(source.zipHandle, source.GetItemIndex("content.xml"), "content.xml"), 0);
    ASSERT_NE(zip.CloseFile(), 0);
    CSDUnZip copy;
    ASSERT_NE(copy.OpenZipFileNonDecompress(folder / "copy.zip"), 0);
    EXPECT_EQ(Item(copy, "content.xml"), Item(source, "content.xml"));
    EXPECT_NE(Item(copy, "content.xml").find("<office:document-"), std::string::npos);
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(EncryptedSample);
INSTANTIATE_TEST_SUITE_P(Samples, EncryptedSample, testing::ValuesIn(test::SamplesOf("encrypted")),
                         [](const auto& given) { return test::NameOf(given.param); });

TEST(EncryptedSamples, AreThere) {
    if (!test::HasCollection()) GTEST_SKIP() << "no sample documents at " << ODFMODEL_CORPUS;
    EXPECT_FALSE(test::SamplesOf("encrypted").empty());
}

namespace {

const Members& PlainMembers() {
    static const Members members{{"content.xml", std::string(20'000, 'c') + "<content/>"},
                                 {"styles.xml", "<styles/>"},
                                 {"empty", ""},
                                 {"Pictures/a.png", std::string(1024, 'p')}};
    return members;
}

} // namespace

class OwnPackage : public testing::TestWithParam<crypto::Scheme> {
protected:
    static Members encrypted(std::string_view password) {
        return GetParam() == crypto::Scheme::Whole ? WholePackage(PlainMembers(), password)
                                                   : Encrypted(PlainMembers(), password, GetParam());
    }
};

TEST_P(OwnPackage, ComesBack) {
    Opened opened(Archive(encrypted("p\xC3\xA4ss")), "p\xC3\xA4ss");
    ASSERT_NE(opened.result, 0);
    for (const auto& [name, data] : PlainMembers()) {
        EXPECT_EQ(Item(opened.unzip, name), data);
        long size = 0;
        ASSERT_NE(opened.unzip.GetItemSize(opened.unzip.GetItemIndex(name), size), 0);
        EXPECT_EQ(size, static_cast<long>(data.size()));
    }
    EXPECT_TRUE(opened.diagnostics.notes().empty());
}

TEST_P(OwnPackage, IsNeverEncryptedTheSameWayTwice) {
    const Members first = encrypted("secret");
    const Members second = encrypted("secret");
    ASSERT_EQ(first.size(), second.size());
    for (std::size_t at = 1; at < first.size(); ++at)
        EXPECT_NE(first[at].second, second[at].second) << first[at].first;
}

TEST_P(OwnPackage, IsRefusedWithAWrongPassword) {
    const Opened opened(Archive(encrypted("secret")), "Secret");
    EXPECT_EQ(opened.result, 0);
    EXPECT_EQ(opened.diagnostics.status(), Status::WrongPassword);
}

INSTANTIATE_TEST_SUITE_P(Schemes, OwnPackage, testing::Values(crypto::Scheme::Members, crypto::Scheme::Whole),
                         [](const auto& given) {
                             return given.param == crypto::Scheme::Whole ? "Whole" : "Members";
                         });

namespace {

/// Changes one character of the base64 value of `attribute` in the row of `member`.
void ChangeValue(Members& members, std::string_view member, std::string_view attribute) {
    std::string& manifest = Find(members, kManifest);
    const auto row = manifest.find("full-path=\"" + std::string(member) + '"');
    ASSERT_NE(row, std::string::npos);
    const auto value = manifest.find(':' + std::string(attribute) + "=\"", row);
    ASSERT_NE(value, std::string::npos);
    char& unit = manifest[value + attribute.size() + 5];
    unit = unit == 'A' ? 'B' : 'A';
}

void ChangeByte(std::string& bytes, std::size_t at) {
    bytes.at(at) = static_cast<char>(bytes.at(at) ^ 0x10);
}

struct DamageCase {
    const char* name;
    void (*damage)(Members& members);
    NoteCode code;
};

class DamagedMember : public testing::TestWithParam<DamageCase> {};

} // namespace

TEST_P(DamagedMember, IsNotedAndTheOthersAreRead) {
    Members members = Encrypted(PlainMembers(), "secret", crypto::Scheme::Members);
    GetParam().damage(members);
    Opened opened(Archive(members), "secret");
    ASSERT_NE(opened.result, 0);
    EXPECT_EQ(Item(opened.unzip, "content.xml"), "(unreadable)");
    EXPECT_TRUE(test::HasNote(opened.diagnostics, GetParam().code, "content.xml"));
    EXPECT_EQ(Item(opened.unzip, "styles.xml"), "<styles/>");
    EXPECT_EQ(Item(opened.unzip, "Pictures/a.png"), std::string(1024, 'p'));
}

INSTANTIATE_TEST_SUITE_P(
    Damages, DamagedMember,
    testing::Values(
        DamageCase{"Salt", [](Members& members) { ChangeValue(members, "content.xml", "salt"); },
                   NoteCode::ChecksumMismatch},
        DamageCase{"Vector",
                   [](Members& members) { ChangeValue(members, "content.xml", "initialisation-vector"); },
                   NoteCode::ChecksumMismatch},
        DamageCase{"Checksum", [](Members& members) { ChangeValue(members, "content.xml", "checksum"); },
                   NoteCode::ChecksumMismatch},
        DamageCase{"FirstByte", [](Members& members) { ChangeByte(Find(members, "content.xml"), 0); },
                   NoteCode::ChecksumMismatch},
        DamageCase{"LastBlockGone",
                   [](Members& members) {
                       std::string& bytes = Find(members, "content.xml");
                       bytes.resize(bytes.size() - 16);
                   },
                   NoteCode::ChecksumMismatch},
        DamageCase{"UnevenLength", [](Members& members) { Find(members, "content.xml").pop_back(); },
                   NoteCode::ChecksumMismatch},
        DamageCase{"Size",
                   [](Members& members) {
                       std::string& manifest = Find(members, kManifest);
                       manifest.replace(manifest.find("20010"), 5, "20011");
                   },
                   NoteCode::MemberUnreadable},
        DamageCase{"Iterations",
                   [](Members& members) {
                       std::string& manifest = Find(members, kManifest);
                       manifest.replace(manifest.find("\"100000\""), 8, "\"100000000\"");
                   },
                   NoteCode::MemberUnreadable}),
    test::CaseName());

TEST(EncryptedPackage, IsRefusedWhenNoMemberProvesThePassword) {
    Members members = Encrypted(PlainMembers(), "secret", crypto::Scheme::Members);
    for (const auto& [name, data] : PlainMembers())
        ChangeValue(members, name, "salt");
    const Opened opened(Archive(members), "secret");
    EXPECT_EQ(opened.result, 0);
    EXPECT_EQ(opened.diagnostics.status(), Status::WrongPassword);
}

TEST(EncryptedPackage, AnEmptyMemberMayBeLeftInClear) {
    Members members = Encrypted(PlainMembers(), "secret", crypto::Scheme::Members);
    Find(members, "empty").clear();
    Opened opened(Archive(members), "secret");
    ASSERT_NE(opened.result, 0);
    EXPECT_EQ(Item(opened.unzip, "empty"), "");
    EXPECT_TRUE(opened.diagnostics.notes().empty());
}

TEST(EncryptedPackage, ABombInsideStopsAtTheLimit) {
    Limits limits;
    limits.memberBytes = 100'000;
    Opened opened(Archive(Encrypted({{"bomb", std::string(5'000'000, 'b')}, {"good", "g"}}, "secret",
                                    crypto::Scheme::Members)),
                  "secret", limits);
    ASSERT_NE(opened.result, 0);
    EXPECT_EQ(Item(opened.unzip, "bomb"), "(unreadable)");
    EXPECT_TRUE(test::HasNote(opened.diagnostics, NoteCode::SizeLimit, "bomb"));
    EXPECT_EQ(Item(opened.unzip, "good"), "g");
}

TEST(EncryptedPackage, ManyMembersMayNotAskForAnyAmountOfWork) {
    Members members = Encrypted({{"a", "a"}}, "secret", crypto::Scheme::Members);
    const std::string row = [&] {
        const std::string& manifest = Find(members, kManifest);
        const auto start = manifest.find("<manifest:file-entry manifest:full-path=\"a\"");
        return manifest.substr(start, manifest.rfind("</manifest:manifest>") - start);
    }();
    // Many members, each asking for the most that one may ask for.
    std::string rows;
    for (int number = 0; number < 150; ++number) {
        std::string next = row;
        const std::string name = "m" + std::to_string(number);
        next.replace(next.find("\"a\""), 3, '"' + name + '"');
        rows += next;
        members.emplace_back(name, Find(members, "a"));
    }
    Find(members, kManifest).insert(Find(members, kManifest).rfind("</manifest:manifest>"), rows);
    Limits limits;
    limits.pbkdf2Iterations = 100'000;
    const test::TemporaryFolder folder;
    Opened opened(Archive(members), "secret", limits);
    ASSERT_NE(opened.result, 0);
    EXPECT_EQ(opened.unzip.Decompress(folder / "out"), 0);
    EXPECT_EQ(opened.diagnostics.status(), Status::LimitExceeded);
    EXPECT_EQ(test::ReadFile(folder / "out/a"), "a");
    EXPECT_EQ(test::ReadFile(folder / "out/m50"), "a") << "an honest number of members is read";
}

namespace {

struct RefusalCase {
    const char* name;
    void (*change)(Members& members);
    Status status;
};

class RefusedWhole : public testing::TestWithParam<RefusalCase> {};

void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
    const auto at = text.find(from);
    ASSERT_NE(at, std::string::npos);
    for (auto place = at; place != std::string::npos; place = text.find(from, place + to.size()))
        text.replace(place, from.size(), to);
}

std::string& Inner(Members& members) {
    return Find(members, "encrypted-package");
}

} // namespace

TEST_P(RefusedWhole, TellsWhy) {
    Members members = WholePackage({{"content.xml", "<content/>"}}, "secret");
    GetParam().change(members);
    const Opened opened(Archive(members), "secret");
    EXPECT_EQ(opened.result, 0);
    EXPECT_EQ(opened.diagnostics.status(), GetParam().status);
    EXPECT_EQ(opened.unzip.itemTable, nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Changes, RefusedWhole,
    testing::Values(
        RefusalCase{"Vector", [](Members& members) { ChangeByte(Inner(members), 0); }, Status::WrongPassword},
        RefusalCase{
            "VectorOfTheRow",
            [](Members& members) { ChangeValue(members, "encrypted-package", "initialisation-vector"); },
            Status::WrongPassword},
        RefusalCase{"Salt", [](Members& members) { ChangeValue(members, "encrypted-package", "salt"); },
                    Status::WrongPassword},
        RefusalCase{"Ciphertext", [](Members& members) { ChangeByte(Inner(members), 20); },
                    Status::WrongPassword},
        RefusalCase{"Tag", [](Members& members) { ChangeByte(Inner(members), Inner(members).size() - 1); },
                    Status::WrongPassword},
        RefusalCase{
            "Memory",
            [](Members& members) { ReplaceAll(Find(members, kManifest), "\"65536\"", "\"4000000000\""); },
            Status::LimitExceeded},
        RefusalCase{
            "Algorithm",
            [](Members& members) { ReplaceAll(Find(members, kManifest), "aes256-gcm", "aes256-xts"); },
            Status::UnsupportedEncryption},
        RefusalCase{"Derivation",
                    [](Members& members) { ReplaceAll(Find(members, kManifest), "argon2id", "scrypt"); },
                    Status::UnsupportedEncryption},
        RefusalCase{"NoArchiveInside",
                    [](Members& members) {
                        members = Encrypted({{"encrypted-package", "text"}}, "secret", crypto::Scheme::Whole);
                    },
                    Status::NotAnArchive}),
    test::CaseName());

TEST(EncryptedPackage, ALaterNameOfTheArgonAttributesIsTaken) {
    Members members = WholePackage({{"content.xml", "<content/>"}}, "secret");
    ReplaceAll(Find(members, kManifest), "loext:argon2", "manifest:argon2");
    ReplaceAll(Find(members, kManifest),
               "urn:org:documentfoundation:names:experimental:office:manifest:argon2id",
               "urn:oasis:names:tc:opendocument:xmlns:manifest:1.5#argon2id");
    Opened opened(Archive(members), "secret");
    ASSERT_NE(opened.result, 0);
    EXPECT_EQ(Item(opened.unzip, "content.xml"), "<content/>");
}
