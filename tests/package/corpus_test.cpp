#include "package/fixture.h"

using namespace package_test;
using namespace SDPackage;

namespace {

struct Sample {
    std::string name; ///< below the corpus folder
    std::string password;
};

/// The documents of the corpus with their passwords.
std::vector<Sample> Samples() {
    std::vector<Sample> samples;
    std::ifstream table(fs::path(ODFMODEL_CORPUS) / "CORPUS.tsv");
    std::string line;
    std::getline(table, line);
    while (std::getline(table, line)) {
        const auto last = line.rfind('\t');
        const std::string name = line.substr(0, line.find('\t'));
        if (fs::path(name).extension().string().size() ==
            4) // flat documents (.fodt and the like) are no packages
            samples.push_back({name, line.substr(last + 1)});
    }
    return samples;
}

class Corpus : public PackageTest, public testing::WithParamInterface<Sample> {
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

TEST_P(Corpus, OpensSavesAndOpensAgain) {
    const Sample& sample = GetParam();
    const bool isDamaged = sample.name.starts_with("damaged/");
    auto package = open((fs::path(ODFMODEL_CORPUS) / sample.name).string(), sample.password);
    if (result_ == 0) {
        EXPECT_TRUE(isDamaged) << ToText(diagnostics_.status());
        EXPECT_NE(diagnostics_.status(), ODF::Status::Ok);
        package.reset();
        EXPECT_TRUE(leftovers().empty());
        return;
    }
    EXPECT_TRUE(isDamaged || package->GetPart("content.xml"));
    const Members before = partBytes(*package);
    const std::string saved = text("saved" + fs::path(sample.name).extension().string());
    ASSERT_NE(package->Save(saved), 0);
    package.reset();
    EXPECT_TRUE(leftovers().empty());

    package = open(saved, {});
    ASSERT_NE(result_, 0);
    EXPECT_EQ(partBytes(*package), before);
}

INSTANTIATE_TEST_SUITE_P(All, Corpus, testing::ValuesIn(Samples()), [](const auto& given) {
    std::string name = given.param.name;
    for (char& unit : name)
        if (!std::isalnum(static_cast<unsigned char>(unit))) unit = '_';
    return name;
});
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Corpus);

TEST(CorpusFolder, IsThere) {
    if (!fs::exists(fs::path(ODFMODEL_CORPUS) / "CORPUS.tsv"))
        GTEST_SKIP() << "no corpus at " << ODFMODEL_CORPUS;
    EXPECT_FALSE(Samples().empty());
}
