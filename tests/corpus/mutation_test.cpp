// Sample documents with seeded damage: whatever comes out, it comes out soon and in order.

#include "support/corpus.h"
#include "support/packages.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>

#include <algorithm>
#include <chrono>
#include <random>

using namespace ODF;
using test::Sample;

namespace {

constexpr int kMutations = 50;
constexpr std::chrono::seconds kMaxTime{10}; ///< for one document, sanitizers and busy machines included

class Mutated : public test::InWorkspace<testing::TestWithParam<Sample>> {
protected:
    /// Opens, saves and opens again, if it can be.
    void live(const std::string& path, const std::string& what) {
        const auto start = std::chrono::steady_clock::now();
        CODFDoc document;
        if (GetParam().isEncrypted()) document.SetPassword(GetParam().password);
        const bool isOpen = document.Open(path) != 0;
        const Status status = document.GetDiagnostics().status();
        EXPECT_EQ(isOpen, status == Status::Ok || status == Status::Damaged) << what;
        const std::vector<Note> faults = document.GetDiagnostics().notes();
        const std::string copy = file("copy" + extension());
        EXPECT_EQ(document.Save(copy), isOpen ? 1 : 0) << what;
        if (isOpen && document.GetDiagnostics().status() == status) {
            CODFDoc again;
            EXPECT_EQ(again.Open(copy), 1) << what << ": what was saved can't be opened";
            // A file whose fault comes before its first element is kept with it; all others are sound now.
            for (const Note& note : again.GetDiagnostics().notes())
                EXPECT_TRUE(std::any_of(faults.begin(), faults.end(),
                                        [&](const Note& fault) {
                                            return fault.member == note.member && fault.line == note.line &&
                                                   fault.text == note.text;
                                        }))
                    << what << ": " << note.member << ": " << note.text;
        }
        EXPECT_LT(std::chrono::steady_clock::now() - start, kMaxTime) << what;
    }

    std::string extension() const { return GetParam().path.substr(GetParam().path.rfind('.')); }
    std::size_t below(std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, std::max<std::size_t>(bound, 1) - 1)(random_);
    }

    /// Flips bits, cuts, doubles or blanks a piece.
    void damage(std::string& data) {
        if (data.empty()) return;
        switch (below(4)) {
        case 0:
            for (std::size_t i = 0; i <= below(8); ++i)
                data[below(data.size())] ^= static_cast<char>(1U << below(8));
            break;
        case 1:
            data.resize(below(data.size()));
            break;
        case 2: {
            const std::size_t start = below(data.size());
            data.insert(below(data.size()), data.substr(start, below(200)));
            break;
        }
        default: {
            const std::size_t start = below(data.size());
            data.erase(start, below(200));
            break;
        }
        }
    }

    std::mt19937 random_{20240506}; // NOLINT: the same damage each time
};

/// One small document of each group and kind.
std::vector<Sample> Victims() {
    std::vector<Sample> victims;
    for (const Sample& sample : test::AllSamples())
        for (const char* const name :
             {"text/letter.odt", "spreadsheet/sums.ods", "presentation/slides.odp", "formula/sum.odf",
              "encrypted/odftoolkit_aes256_1024.odt", "damaged/path_traversal_members.odt",
              "text/ooo3_tracked_biblio_math.odt", "text/lo74_indexes_fields.odt",
              "drawing/lo74_shapes_3d.odg", "spreadsheet/lo74_features.ods", "presentation/aspose_bom.odp"})
            if (sample.name == name) victims.push_back(sample);
    return victims;
}

} // namespace

TEST_P(Mutated, ArchiveIsReadOrRefused) {
    const std::string whole = test::ReadFile(GetParam().path);
    for (int i = 0; i < kMutations; ++i) {
        std::string data = whole;
        damage(data);
        test::WriteFile(file("a" + extension()), data);
        live(file("a" + extension()), "archive, mutation " + std::to_string(i));
    }
}

TEST_P(Mutated, XmlIsReadAsFarAsItGoes) {
    if (GetParam().isEncrypted()) GTEST_SKIP() << "its members can't be changed from outside";
    const test::Members whole = test::ReadPackage(GetParam().path);
    ASSERT_FALSE(whole.empty());
    for (int i = 0; i < kMutations; ++i) {
        test::Members members = whole;
        for (auto& [name, data] : members)
            if (name == "content.xml" || (name.ends_with(".xml") && below(4) == 0)) damage(data);
        test::WritePackage(file("a" + extension()), members);
        live(file("a" + extension()), "members, mutation " + std::to_string(i));
    }
}

INSTANTIATE_TEST_SUITE_P(Samples, Mutated, testing::ValuesIn(Victims()),
                         [](const auto& given) { return test::NameOf(given.param); });
