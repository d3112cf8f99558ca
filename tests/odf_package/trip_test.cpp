// Real documents through a package that nobody changes, and that somebody changes in one place.

#include "odf_package/fixture.h"

using namespace odf_package_test;
using ODF::Status;

namespace {

std::vector<test::Sample> Archives() {
    std::vector<test::Sample> samples = test::GoodSamples();
    std::erase_if(samples, [](const test::Sample& sample) { return sample.isEncrypted(); });
    return samples;
}

/// One of each group: deriving keys takes its time.
std::vector<test::Sample> OneOfEachGroup() {
    std::map<std::string, test::Sample> samples;
    for (const test::Sample& sample : Archives())
        samples.try_emplace(sample.group, sample);
    std::vector<test::Sample> chosen;
    for (const auto& [group, sample] : samples)
        chosen.push_back(sample);
    return chosen;
}

class ArchiveTrip : public testing::TestWithParam<test::Sample> {
protected:
    std::string archive_ = test::ReadFile(GetParam().path);
};

class SealingTrip : public ArchiveTrip {};

/// Without the member that goes first wherever it was.
std::vector<RawEntry> WithoutMimeType(std::vector<RawEntry> entries) {
    std::erase_if(entries, [](const RawEntry& entry) { return entry.name == "mimetype"; });
    return entries;
}

} // namespace

TEST_P(ArchiveTrip, KeepsEveryPackedByteInItsPlace) {
    Opened opened(archive_);
    ASSERT_EQ(opened.status, Status::Ok);
    const std::string written = opened.written();
    const std::vector<RawEntry> entries = Directory(written);
    ASSERT_FALSE(entries.empty());
    const RawEntry& first = entries.front();
    EXPECT_EQ(first.name, "mimetype");
    EXPECT_EQ(first.packed, opened.package.mediaType());
    EXPECT_EQ(written.substr(30, 8), "mimetype")
        << "a local header of 30 bytes and the name, at the very start";

    const std::vector<RawEntry> before = WithoutMimeType(Directory(archive_));
    const std::vector<RawEntry> after = WithoutMimeType(entries);
    ASSERT_EQ(NamesOf(after), NamesOf(before));
    for (std::size_t place = 0; place < after.size(); ++place) {
        const RawEntry& entry = after[place];
        SCOPED_TRACE(entry.name);
        EXPECT_EQ(entry.crc, before[place].crc);
        EXPECT_EQ(entry.time, before[place].time);
        const bool isFolder = entry.name.back() == '/';
        EXPECT_EQ(entry.method, isFolder ? 0U : before[place].method);
        EXPECT_EQ(entry.packed, isFolder ? "" : before[place].packed);
        EXPECT_EQ(entry.mode, isFolder ? 0040755U : 0100644U);
    }
    for (const RawEntry& entry : entries) {
        EXPECT_EQ(entry.extraSize, 0U) << entry.name;
        EXPECT_EQ(entry.flags & 8U, 0U) << entry.name << " has a data descriptor";
    }
}

TEST_P(ArchiveTrip, ChangesWhatIsPutAndNothingElse) {
    Opened opened(archive_);
    ASSERT_EQ(opened.status, Status::Ok);
    const std::vector<std::string> names = opened.package.names();
    test::Members expected = opened.members();
    const std::string target = names[names.size() / 2];
    expected[target] = "<changed/>";
    ASSERT_TRUE(opened.package.put(target, ToBytes(expected[target])));
    std::erase_if(expected,
                  [](const auto& member) { return member.first.find("signatures") != std::string::npos; });

    Opened again(opened.written());
    ASSERT_EQ(again.status, Status::Ok);
    EXPECT_EQ(again.members(), expected);
    for (const auto& [name, bytes] : expected)
        EXPECT_EQ(again.package.mediaTypeOf(name), opened.package.mediaTypeOf(name)) << name;
    EXPECT_EQ(again.package.mediaType(), opened.package.mediaType());
    EXPECT_EQ(again.package.version(), opened.package.version());
}

TEST_P(SealingTrip, PassesThroughEncryptionAndBack) {
    Opened opened(archive_);
    ASSERT_EQ(opened.status, Status::Ok);
    test::Members expected = opened.members();
    std::erase_if(expected,
                  [](const auto& member) { return member.first.find("signatures") != std::string::npos; });
    Options options;
    options.password = "p\xC3\xA4ss";
    Opened sealed(opened.written(options), options.password);
    ASSERT_EQ(sealed.status, Status::Ok);
    EXPECT_EQ(sealed.package.encryption(), Encryption::Members);
    options = {};
    options.encryption = Encryption::None;
    Opened clear(sealed.written(options));
    ASSERT_EQ(clear.status, Status::Ok);
    EXPECT_FALSE(clear.package.isEncrypted());
    EXPECT_EQ(clear.members(), expected);
    EXPECT_EQ(clear.package.names(), sealed.package.names());
}

INSTANTIATE_TEST_SUITE_P(Samples, ArchiveTrip, testing::ValuesIn(Archives()),
                         [](const auto& given) { return test::NameOf(given.param); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ArchiveTrip);
INSTANTIATE_TEST_SUITE_P(Samples, SealingTrip, testing::ValuesIn(OneOfEachGroup()),
                         [](const auto& given) { return test::NameOf(given.param); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SealingTrip);
