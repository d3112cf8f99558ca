// Encrypted packages of our own writing side, whole and damaged.

#include "crypto/view.h"
#include "serial/crypto/package_encryption.h"
#include "support/files.h"
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
using test::View;

namespace {

/// Member names and stored bytes, in the order of the archive.
using Members = std::vector<std::pair<std::string, std::string>>;

constexpr std::string_view kManifest = "META-INF/manifest.xml";
constexpr std::string_view kInner = "encrypted-package";

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
    return Encrypted({{std::string(kInner), Archive(inner)}}, password, crypto::Scheme::Whole);
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

} // namespace

namespace {

const Members& PlainMembers() {
    static const Members members{{"content.xml", std::string(20'000, 'c') + "<content/>"},
                                 {"styles.xml", "<styles/>"},
                                 {"empty", ""},
                                 {"Pictures/a.png", std::string(1024, 'p')}};
    return members;
}

} // namespace

TEST(OwnPackage, ComesBackWithItsPasswordAlone) {
    for (const crypto::Scheme scheme : {crypto::Scheme::Members, crypto::Scheme::Whole}) {
        const auto encrypted = [&] {
            return scheme == crypto::Scheme::Whole ? WholePackage(PlainMembers(), "p\xC3\xA4ss")
                                                   : Encrypted(PlainMembers(), "p\xC3\xA4ss", scheme);
        };
        const Members first = encrypted();
        Opened opened(Archive(first), "p\xC3\xA4ss");
        ASSERT_NE(opened.result, 0);
        for (const auto& [name, data] : PlainMembers())
            EXPECT_EQ(Item(opened.unzip, name), data);
        EXPECT_TRUE(opened.diagnostics.notes().empty());

        std::string copied(100'000, '\0');
        CSDZip zip;
        ASSERT_NE(zip.CreareZipFile(copied.data(), static_cast<int>(copied.size())), 0);
        const int index = opened.unzip.GetItemIndex("content.xml");
        ASSERT_NE(zip.CopyItem(opened.unzip.zipHandle, index, "content.xml"), 0);
        int size = 0;
        ASSERT_NE(zip.CloseMemoryFile(size), 0);
        copied.resize(static_cast<std::size_t>(size));
        CSDUnZip plain;
        ASSERT_NE(test::Open(plain, copied), 0);
        EXPECT_EQ(Item(plain, "content.xml"), PlainMembers()[0].second) << "copied in clear";

        for (const std::string_view password : {"", "P\xC3\xA4ss"}) {
            Opened refused(Archive(first), password);
            EXPECT_EQ(refused.result, 0);
            EXPECT_EQ(refused.diagnostics.status(),
                      password.empty() ? Status::PasswordNeeded : Status::WrongPassword);
            EXPECT_EQ(refused.unzip.itemTable, nullptr);
        }
        const Members second = encrypted();
        ASSERT_EQ(first.size(), second.size());
        for (std::size_t at = 1; at < first.size(); ++at)
            EXPECT_NE(first[at].second, second[at].second) << "never encrypted the same way twice";
        for (const std::string_view random : {":salt=\"", ":initialisation-vector=\""}) {
            const std::string& manifest = first.back().second;
            const auto value = manifest.find(random);
            ASSERT_NE(value, std::string::npos);
            EXPECT_EQ(second.back().second.find(manifest.substr(value, random.size() + 16)),
                      std::string::npos);
        }
    }
}

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

/// Changes the manifest where `from` stands, at most so often.
void Replace(Members& members, const std::string& from, const std::string& to, int times = 100) {
    std::string& manifest = Find(members, kManifest);
    auto at = manifest.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    for (; at != std::string::npos && times > 0; at = manifest.find(from, at + to.size()), --times)
        manifest.replace(at, from.size(), to);
}

/// What is done to a package before it is opened.
using Damage = void (*)(Members& members);

} // namespace

TEST(EncryptedPackage, ADamagedMemberIsNotedAndTheOthersAreRead) {
    const std::pair<Damage, NoteCode> kRows[] = {
        {[](Members& all) { ChangeValue(all, "content.xml", "salt"); }, NoteCode::ChecksumMismatch},
        {[](Members& all) { ChangeValue(all, "content.xml", "initialisation-vector"); },
         NoteCode::ChecksumMismatch},
        {[](Members& all) { ChangeValue(all, "content.xml", "checksum"); }, NoteCode::ChecksumMismatch},
        {[](Members& all) { ChangeByte(Find(all, "content.xml"), 0); }, NoteCode::ChecksumMismatch},
        {[](Members& all) { Find(all, "content.xml").resize(Find(all, "content.xml").size() - 16); },
         NoteCode::ChecksumMismatch},
        {[](Members& all) { Find(all, "content.xml").pop_back(); }, NoteCode::MemberUnreadable},
        {[](Members& all) { Replace(all, "20010", "20011"); }, NoteCode::MemberUnreadable},
        {[](Members& all) { Replace(all, "\"100000\"", "\"100000000\"", 1); }, NoteCode::SizeLimit},
    };
    const Members whole = Encrypted(PlainMembers(), "secret", crypto::Scheme::Members);
    for (std::size_t row = 0; row < std::size(kRows); ++row) {
        SCOPED_TRACE(row);
        Members members = whole;
        kRows[row].first(members);
        Opened opened(Archive(members), "secret");
        ASSERT_NE(opened.result, 0);
        EXPECT_EQ(Item(opened.unzip, "content.xml"), "(unreadable)");
        EXPECT_TRUE(test::HasNote(opened.diagnostics, kRows[row].second, "content.xml"));
        EXPECT_EQ(Item(opened.unzip, "styles.xml"), "<styles/>");
        EXPECT_EQ(Item(opened.unzip, "Pictures/a.png"), std::string(1024, 'p'));
    }
}

TEST(EncryptedPackage, OneMemberAtLeastProvesThePassword) {
    Members members = Encrypted(PlainMembers(), "secret", crypto::Scheme::Members);
    Find(members, "empty").clear(); // one without bytes may be left in clear
    Opened clear(Archive(members), "secret");
    ASSERT_NE(clear.result, 0);
    EXPECT_EQ(Item(clear.unzip, "empty"), "");
    EXPECT_TRUE(clear.diagnostics.notes().empty());
    for (const auto& [name, data] : PlainMembers())
        ChangeValue(members, name, "salt");
    const Opened opened(Archive(members), "secret");
    EXPECT_EQ(opened.result, 0);
    EXPECT_EQ(opened.diagnostics.status(), Status::WrongPassword);
}

TEST(EncryptedPackage, BrokenParametersAreNoWrongPassword) {
    const std::pair<const char*, Damage> kRows[] = {
        {"a checksum of another length",
         [](Members& all) { Replace(all, "manifest:checksum=\"", "manifest:checksum=\"AAAA=\" x=\""); }},
        {"no salt", [](Members& all) { Replace(all, "manifest:salt", "manifest:pepper"); }},
        {"no vector", [](Members& all) { Replace(all, "initialisation-vector", "vector"); }},
        {"no iterations", [](Members& all) { Replace(all, "\"100000\"", "\"0\""); }}};
    for (const auto& [name, damage] : kRows) {
        Members members = Encrypted(PlainMembers(), "secret", crypto::Scheme::Members);
        damage(members);
        EXPECT_EQ(Opened(Archive(members), "secret").diagnostics.status(), Status::BadIndex) << name;
    }
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

TEST(EncryptedPackage, AWholeOneIsRefusedAndTellsWhy) {
    const std::pair<Damage, Status> kRows[] = {
        {[](Members& all) { ChangeByte(Find(all, kInner), 0); }, Status::BadIndex},
        {[](Members& all) { ChangeValue(all, kInner, "initialisation-vector"); }, Status::BadIndex},
        {[](Members& all) { Replace(all, "argon2-iterations=\"3\"", "argon2-iterations=\"0\""); },
         Status::BadIndex},
        {[](Members& all) { Replace(all, "\"65536\"", "\"16\""); }, Status::BadIndex},
        {[](Members& all) { Replace(all, "argon2-iterations=\"3\"", "argon2-iterations=\"60\""); },
         Status::LimitExceeded},
        {[](Members& all) { ChangeValue(all, kInner, "salt"); }, Status::WrongPassword},
        {[](Members& all) { ChangeByte(Find(all, kInner), 20); }, Status::WrongPassword},
        {[](Members& all) { ChangeByte(Find(all, kInner), Find(all, kInner).size() - 1); },
         Status::WrongPassword},
        {[](Members& all) { Replace(all, "\"65536\"", "\"4000000000\""); }, Status::LimitExceeded},
        {[](Members& all) { Replace(all, "aes256-gcm", "aes256-xts"); }, Status::UnsupportedEncryption},
        {[](Members& all) { Replace(all, "argon2id", "scrypt"); }, Status::UnsupportedEncryption},
        {[](Members& all) {
             all = Encrypted({{std::string(kInner), "text"}}, "secret", crypto::Scheme::Whole);
         },
         Status::NotAnArchive},
    };
    const Members whole = WholePackage({{"content.xml", "<content/>"}}, "secret");
    for (std::size_t row = 0; row < std::size(kRows); ++row) {
        SCOPED_TRACE(row);
        Members members = whole;
        kRows[row].first(members);
        const Opened opened(Archive(members), "secret");
        EXPECT_EQ(opened.result, 0);
        EXPECT_EQ(opened.diagnostics.status(), kRows[row].second);
        EXPECT_EQ(opened.unzip.itemTable, nullptr);
    }
    // A later name of the derivation is taken.
    Members members = whole;
    Replace(members, "loext:argon2", "manifest:argon2");
    Replace(members, "urn:org:documentfoundation:names:experimental:office:manifest:argon2id",
            "urn:oasis:names:tc:opendocument:xmlns:manifest:1.5#argon2id");
    Opened opened(Archive(members), "secret");
    ASSERT_NE(opened.result, 0);
    EXPECT_EQ(Item(opened.unzip, "content.xml"), "<content/>");
}
