// What is true of each sample document by itself, damaged ones included.

#include "support/corpus.h"
#include "support/packages.h"
#include "support/trees.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>

#include <memory>

using namespace ODF;
using test::Sample;

namespace {

struct ReaderRelease {
    void operator()(CSDSaxReader* reader) const { ReleaseSaxReader(reader); }
};

class AnySample : public test::InWorkspace<testing::TestWithParam<Sample>> {};
class FlatSample : public test::InWorkspace<testing::TestWithParam<Sample>> {};

std::vector<Sample> FlatSamples() {
    std::vector<Sample> samples = test::AllSamples();
    std::erase_if(samples, [](const Sample& sample) { return !sample.isFlat(); });
    return samples;
}

std::string NameOf(const testing::TestParamInfo<Sample>& given) {
    return test::NameOf(given.param);
}

} // namespace

TEST(Collection, IsThere) {
    if (!test::HasCollection())
        GTEST_SKIP() << "no sample collection at " ODFMODEL_CORPUS ": only the project's own are read";
    EXPECT_GE(test::AllSamples().size(), 80U);
}

TEST_P(AnySample, OpensOrNotAndGoesWhole) {
    const Sample& sample = GetParam();
    for (const bool isFormula : {false, true}) {
        std::unique_ptr<CDocument> document;
        if (isFormula)
            document = std::make_unique<CODFMathDoc>();
        else
            document = std::make_unique<CODFDoc>();
        if (sample.isEncrypted()) document->SetPassword(sample.password);
        const bool isOpen = document->Open(sample.path) != 0;
        const Status status = document->GetDiagnostics().status();
        EXPECT_EQ(isOpen, status == Status::Ok || status == Status::Damaged);
        EXPECT_EQ(isOpen, document->GetMainPart() != nullptr);
        EXPECT_EQ(document->Save(file("out")), isOpen ? 1 : 0);
        EXPECT_EQ(document->GetDiagnostics().status(), isOpen ? status : Status::NothingToSave);
    }
}

INSTANTIATE_TEST_SUITE_P(Samples, AnySample, testing::ValuesIn(test::AllSamples()), NameOf);

TEST_P(FlatSample, IsNoPackageButATree) {
    const Sample& sample = GetParam();
    CODFDoc document;
    EXPECT_EQ(document.Open(sample.path), 0);
    EXPECT_EQ(document.GetDiagnostics().status(), Status::NotAnArchive);

    const auto read = [](const std::string& path) {
        Diagnostics diagnostics;
        auto part = std::unique_ptr<CODFPart>(COfficeDocumentRootPart::CreateClass(nullptr));
        const std::unique_ptr<CSDSaxReader, ReaderRelease> reader(CreateSaxReader());
        reader->SetDiagnostics(&diagnostics, "flat");
        EXPECT_TRUE(reader->ParseFile(path, part->GetRootClass()));
        EXPECT_TRUE(reader->HasMatchedRoot());
        EXPECT_TRUE(diagnostics.notes().empty());
        return part;
    };
    const auto part = read(sample.path);
    const std::unique_ptr<CSDObject> root(part->GetRootClass());
    EXPECT_FALSE(test::Paragraphs(*root).empty());
    CSDSerializer* const serializer = CreateSerialize();
    EXPECT_TRUE(serializer->SerializeToFile(file("copy.xml"), root.get()));
    ReleaseSerialize(serializer);
    const auto copyPart = read(file("copy.xml"));
    const std::unique_ptr<CSDObject> copy(copyPart->GetRootClass());
    EXPECT_EQ(test::Difference(*root, *copy), "");
    EXPECT_EQ(test::Paragraphs(*root), test::Paragraphs(*copy));
}

INSTANTIATE_TEST_SUITE_P(Samples, FlatSample, testing::ValuesIn(FlatSamples()), NameOf);

namespace {

/// What becomes of a damaged document.
struct Verdict {
    const char* file; ///< below the collection's "damaged"
    Status status;    ///< Ok: it opens
    std::size_t paragraphs;
    std::size_t errors; ///< notes that tell of a loss
    const char* why;
};

class Damaged : public test::InWorkspace<testing::TestWithParam<Verdict>> {
protected:
    void SetUp() override {
        if (!test::HasCollection()) GTEST_SKIP() << "no sample collection at " ODFMODEL_CORPUS;
    }
};

constexpr Verdict kVerdicts[] = {
    {"billion_laughs.ods", Status::Damaged, 1, 1, "the part ends where its entities grow beyond all bounds"},
    {"corrupt_meta.ods", Status::Damaged, 2, 1, "the content is whole, the metadata ends at a wrong tag"},
    {"corrupted_archive.ods", Status::NoContent, 0, 0,
     "the manifest names a content.xml that isn't in the archive"},
    {"doctype_entities.odt", Status::Ok, 1, 0, "internal entities are expanded"},
    {"duplicate_members.odt", Status::Ok, 1, 0, "of two members of one name the last counts"},
    {"flipped_byte_bad_crc.odt", Status::Damaged, 13, 2, "what can be inflated of the content is read"},
    {"manifest_not_wellformed.ods", Status::Damaged, 0, 2,
     "the entries before the fault hold all four main parts"},
    {"member_name_slash.odt", Status::Ok, 1, 0, "/content.xml is passed over, content.xml is read"},
    {"no_manifest.ods", Status::NoContent, 0, 2, "nothing lists a part"},
    {"no_mimetype.ods", Status::Ok, 2, 0, "the manifest and the name tell the type"},
    {"not_a_zip.odt", Status::NotAnArchive, 0, 1, "plain text"},
    {"path_traversal_members.odt", Status::Ok, 1, 0, "members outside the package are passed over"},
    {"repeat_dos.ods", Status::Ok, 1, 0, "repeat counts are numbers"},
    {"truncated_archive.odt", Status::NotAnArchive, 0, 1, "the directory is cut off"},
    {"two_zips_concatenated.odt", Status::Ok, 1, 0, "the last archive counts"},
};

} // namespace

TEST_P(Damaged, HasItsVerdict) {
    const Verdict& verdict = GetParam();
    CODFDoc document;
    document.Open(std::string(ODFMODEL_CORPUS "/damaged/") + verdict.file);
    EXPECT_EQ(document.GetDiagnostics().status(), verdict.status) << verdict.why;
    EXPECT_EQ(document.GetContentClass() ? test::Paragraphs(*document.GetContentClass()).size() : 0,
              verdict.paragraphs);
    std::size_t errors = 0;
    for (const Note& note : document.GetDiagnostics().notes())
        errors += note.severity == Severity::Error ? 1 : 0;
    EXPECT_EQ(errors, verdict.errors) << verdict.why;
    if (document.GetContentClass()) {
        // What is left makes a sound document.
        const std::string copy = file(verdict.file);
        ASSERT_EQ(document.Save(copy), 1);
        CODFDoc again;
        ASSERT_EQ(again.Open(copy), 1);
        EXPECT_TRUE(again.GetDiagnostics().notes().empty());
        EXPECT_EQ(test::Difference(document, again), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Files, Damaged, testing::ValuesIn(kVerdicts), [](const auto& given) {
    return test::NameOf(Sample{given.param.file, {}, {}, {}});
});

TEST(Collection, HasAVerdictForEachDamagedFile) {
    for (const Sample& sample : test::SamplesOf("damaged"))
        EXPECT_TRUE(std::any_of(std::begin(kVerdicts), std::end(kVerdicts), [&](const Verdict& verdict) {
            return sample.name == std::string("damaged/") + verdict.file;
        })) << sample.name;
}
