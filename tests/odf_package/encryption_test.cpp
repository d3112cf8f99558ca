// Packages with a password: kept, given, changed and taken away.

#include "odf_package/fixture.h"

#include <algorithm>
#include <set>

using namespace odf_package_test;
using ODF::Status;

namespace {

constexpr std::string_view kOtherPassword = "\xE6\xBC\xA2\xE5\xAD\x97 new";

std::vector<test::Sample> Encrypted() {
    std::vector<test::Sample> samples = test::AllSamples();
    std::erase_if(samples, [](const test::Sample& sample) { return !sample.isEncrypted(); });
    return samples;
}

/// What an archive was encrypted with is over once it is open, and deriving keys is most of the time.
std::vector<test::Sample> OneOfEachCipher() {
    std::vector<test::Sample> samples = Encrypted();
    const auto isOf = [](std::string_view cipher) {
        return [cipher](const test::Sample& sample) { return sample.name.find(cipher) != std::string::npos; };
    };
    std::vector<test::Sample> picked;
    for (const std::string_view cipher : {"aes256", "blowfish"}) {
        const auto found = std::ranges::find_if(samples, isOf(cipher));
        if (found != samples.end()) picked.push_back(*found);
    }
    return picked;
}

/// All values of an attribute in a manifest, to tell that none comes twice.
std::vector<std::string> ValuesOf(const std::string& manifest, const std::string& attribute) {
    std::vector<std::string> values;
    const std::string start = attribute + "=\"";
    for (auto at = manifest.find(start); at != std::string::npos; at = manifest.find(start, at)) {
        at += start.size();
        values.push_back(manifest.substr(at, manifest.find('"', at) - at));
    }
    return values;
}

class Sealed : public testing::TestWithParam<test::Sample> {
protected:
    std::string archive_ = test::ReadFile(GetParam().path);
    std::string password_ = GetParam().password;
};

} // namespace

TEST_P(Sealed, IsWrittenWithItsPasswordAndFreshSalts) {
    Opened opened(archive_, password_);
    ASSERT_EQ(opened.status, Status::Ok);
    EXPECT_EQ(opened.package.encryption(), Encryption::Members);
    const test::Members members = opened.members();
    const std::string first = opened.written();
    const std::string second = opened.written();

    EXPECT_EQ(Opened(first).status, Status::PasswordNeeded);
    EXPECT_EQ(Opened(first, "wrong").status, Status::WrongPassword);
    Opened again(first, password_);
    ASSERT_EQ(again.status, Status::Ok);
    EXPECT_EQ(again.members(), members);
    EXPECT_EQ(again.package.names(), opened.package.names());

    std::set<std::string> used;
    const auto isFresh = [&used](const std::string& value) { return used.insert(value).second; };
    for (const char* const attribute : {"manifest:salt", "manifest:initialisation-vector"}) {
        for (const std::string& value : ValuesOf(ManifestOf(archive_), attribute))
            used.insert(value);
        for (const std::string& archive : {first, second})
            for (const std::string& value : ValuesOf(ManifestOf(archive), attribute))
                EXPECT_TRUE(isFresh(value)) << attribute << ' ' << value;
    }
    EXPECT_GE(used.size(), 4 * members.size());

    const std::string manifest = ManifestOf(first);
    EXPECT_EQ(manifest.find("Blowfish"), std::string::npos) << "the weak cipher isn't written any more";
    for (const RawEntry& entry : Directory(first)) {
        if (entry.name == "mimetype" || entry.name.starts_with("META-INF/") || entry.name.back() == '/')
            continue;
        EXPECT_EQ(entry.method, 0U) << entry.name;
        EXPECT_EQ(entry.packedSize % 16, 0U) << entry.name << " isn't encrypted";
        EXPECT_EQ(entry.packed.find("<?xml"), std::string::npos) << entry.name;
    }
}

class SealedAnew : public Sealed {};

TEST_P(SealedAnew, ChangesSchemeAndPasswordWhenAsked) {
    Opened opened(archive_, password_);
    ASSERT_EQ(opened.status, Status::Ok);
    const test::Members members = opened.members();

    Options options;
    options.encryption = Encryption::Whole;
    options.password = kOtherPassword;
    const std::string whole = opened.written(options);
    EXPECT_EQ(NamesOf(Directory(whole)),
              (std::vector<std::string>{"mimetype", "encrypted-package", "META-INF/manifest.xml"}));
    EXPECT_EQ(Opened(whole, password_).status, Status::WrongPassword);
    EXPECT_EQ(Opened(whole).status, Status::PasswordNeeded);
    Opened inner(whole, kOtherPassword);
    ASSERT_EQ(inner.status, Status::Ok);
    EXPECT_EQ(inner.package.encryption(), Encryption::Whole);
    EXPECT_EQ(inner.package.mediaType(), opened.package.mediaType());
    EXPECT_EQ(inner.members(), members);

    // Kept by default, and what is written for once changes nothing for the next time.
    Opened kept(inner.written(), kOtherPassword);
    EXPECT_EQ(kept.package.encryption(), Encryption::Whole);
    options = {};
    options.encryption = Encryption::None;
    const std::string clear = kept.written(options);
    EXPECT_EQ(ManifestOf(clear).find("encryption-data"), std::string::npos);
    EXPECT_EQ(Opened(clear).members(), members);
    EXPECT_EQ(Opened(kept.written()).status, Status::PasswordNeeded);

    kept.package.setEncryption(Encryption::Members, "third");
    Opened third(kept.written(), "third");
    EXPECT_EQ(third.package.encryption(), Encryption::Members);
    EXPECT_EQ(third.members(), members);
}

INSTANTIATE_TEST_SUITE_P(Samples, Sealed, testing::ValuesIn(Encrypted()),
                         [](const auto& given) { return test::NameOf(given.param); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Sealed);
INSTANTIATE_TEST_SUITE_P(Samples, SealedAnew, testing::ValuesIn(OneOfEachCipher()),
                         [](const auto& given) { return test::NameOf(given.param); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SealedAnew);

TEST(Encrypting, NeedsAPassword) {
    ODF::OdfPackage package;
    package.put("content.xml", ToBytes("<a/>"));
    ODF::Diagnostics notes;
    Options options;
    for (const Encryption encryption : {Encryption::Members, Encryption::Whole}) {
        options.encryption = encryption;
        Bytes archive = ToBytes("left over");
        EXPECT_EQ(package.write(options, archive, notes), Status::PasswordNeeded);
        EXPECT_TRUE(archive.empty());
    }
    package.setEncryption(Encryption::Members, "x");
    package.setEncryption(Encryption::None, "");
    Bytes archive;
    ASSERT_EQ(package.write({}, archive, notes), Status::Ok);
    EXPECT_EQ(Opened(ToText(archive)).read("content.xml"), "<a/>");
}

/// A member that the manifest forgot must not stay readable beside those that are encrypted.
TEST(Encrypting, LeavesNoMemberInClear) {
    test::TemporaryFolder folder;
    std::filesystem::create_directories(folder.path());
    test::WritePackage(folder / "a.odt",
                       {{"META-INF/manifest.xml", test::Manifest({{"/", std::string(test::kTextType)}})},
                        {"META-INF/notes.txt", "for everybody"},
                        {"content.xml", "the secret"},
                        {"empty.xml", ""},
                        {"Pictures/a.png", std::string(5000, 'x')}});
    Opened opened(test::ReadFile(folder / "a.odt"));
    Options options;
    options.password = "p";
    const std::string archive = opened.written(options);
    EXPECT_EQ(archive.find("the secret"), std::string::npos);
    EXPECT_NE(archive.find("for everybody"), std::string::npos);
    Opened again(archive, "p");
    EXPECT_EQ(again.members(), opened.members());
    const std::string manifest = ManifestOf(archive);
    for (const char* const name : {"content.xml", "empty.xml", "Pictures/a.png"})
        EXPECT_NE(manifest.find("full-path=\"" + std::string(name) + '"'), std::string::npos) << name;
}

/// A byte that is changed anywhere in the ciphertext is noticed: by the password test or by the member.
TEST(Encrypting, NoticesDamage) {
    ODF::OdfPackage package;
    package.setMediaType(test::kTextType);
    package.put("content.xml", ToBytes(test::TextContent(std::string(3000, 'a'))));
    for (const Encryption encryption : {Encryption::Members, Encryption::Whole}) {
        package.setEncryption(encryption, "p");
        Bytes written;
        ODF::Diagnostics notes;
        ASSERT_EQ(package.write({}, written, notes), Status::Ok);
        const std::string archive = ToText(written);
        const std::string name = encryption == Encryption::Whole ? "encrypted-package" : "content.xml";
        const auto data = archive.find(name) + name.size();
        for (const std::size_t offset : {0U, 13U, 40U}) {
            std::string damaged = archive;
            damaged[data + offset] = static_cast<char>(damaged[data + offset] ^ 1);
            Opened opened(damaged, "p");
            Bytes bytes;
            const bool isNoticed = opened.status != Status::Ok ||
                                   opened.package.read("content.xml", bytes, opened.notes) != Status::Ok;
            EXPECT_TRUE(isNoticed) << name << " at " << offset;
        }
    }
}
