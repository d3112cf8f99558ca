#include "package/fixture.h"
#include "support/corpus.h"

using namespace package_test;
using namespace SDPackage;

namespace {

/// All samples that are packages: flat documents aren't.
std::vector<test::Sample> Packages() {
    std::vector<test::Sample> samples = test::AllSamples();
    std::erase_if(samples, [](const test::Sample& sample) { return sample.isFlat(); });
    return samples;
}

class Samples : public PackageTest, public testing::WithParamInterface<test::Sample> {
protected:
    std::unique_ptr<IPackage> open(const std::string& path, const std::string& password) {
        auto package = newPackage();
        auto reader = std::make_unique<CODFUnZip>();
        reader->SetPassword(password);
        result_ = package->Open(path, 0, reader.release());
        return package;
    }

    /// The bytes of all parts, less the manifest, which some manifests list and a save writes anew.
    static Members partBytes(IPackage& package) {
        Members bytes;
        for (const auto& [path, part] : *package.GetParts())
            if (path != "META-INF\\manifest.xml") bytes[path.utf8()] = ReadFile(Utf8(part->GetLocalPath()));
        return bytes;
    }

    int result_ = 0;
};

} // namespace

TEST_P(Samples, OpenSaveAndOpenAgain) {
    const test::Sample& sample = GetParam();
    auto package = open(sample.path, sample.password);
    if (result_ == 0) {
        EXPECT_TRUE(sample.isDamaged()) << ToText(diagnostics_.status());
        EXPECT_NE(diagnostics_.status(), ODF::Status::Ok);
        return;
    }
    EXPECT_TRUE(sample.isDamaged() || package->GetPart("content.xml"));
    const Members before = partBytes(*package);
    const std::string saved = text("saved" + fs::path(sample.path).extension().string());
    ASSERT_NE(package->Save(saved), 0);
    package.reset();
    EXPECT_TRUE(temporaryEntries().empty());

    package = open(saved, {});
    ASSERT_NE(result_, 0);
    EXPECT_EQ(partBytes(*package), before);
}

INSTANTIATE_TEST_SUITE_P(All, Samples, testing::ValuesIn(Packages()),
                         [](const auto& given) { return test::NameOf(given.param); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Samples);
