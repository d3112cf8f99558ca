// Saves that something interrupts: what is at the target is the old file or the new one, whole.

#include "document/kinds.h"
#include "faults/failing_allocations.h"
#include "support/packages.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>
#include <odfmodel/package/package.h>
#include <odfmodel/serial/zip.h>

#include <functional>
#include <map>
#include <memory>
#include <stdexcept>

using namespace ODF;

namespace {

struct Interruption : std::runtime_error {
    Interruption() : std::runtime_error("the host gives up") {}
};

class InterruptedSave : public test::InWorkspace<> {
protected:
    /// A document with a picture, at `name`.
    void make(const std::string& name) {
        CODFDoc document;
        test::Build(document, test::kTextKind, u"the old text");
        test::WriteFile(file("dot.png"), "a picture");
        ASSERT_NE(_CreateImagePart(document.GetRootPart(), file("dot.png")), nullptr);
        ASSERT_EQ(document.Save(file(name)), 1);
        ASSERT_EQ(document.GetDiagnostics().status(), Status::Ok);
    }

    void open(CODFDoc& document, const std::string& name) {
        ASSERT_EQ(document.Open(file(name)), 1);
        document.GetContentClass()->SetOfficeBody()->SetOfficeText()->SetTextP()->SetText(u"the new text");
    }
};

} // namespace

TEST_F(InterruptedSave, ByTheHost) {
    make("old.odt");
    const std::string old = test::ReadFile(file("old.odt"));
    using Save = std::function<int(SDPackage::IPackage&)>;
    SDPackage::ZipItemVector items(3);
    const CTulStringW names[] = {u"a", u"b", u"c"};
    char data[] = "x";
    for (std::size_t i = 0; i < items.size(); ++i) {
        items[i].name = names[i].c_str();
        items[i].data = data;
        items[i].size = 1;
        items[i].sourceIndex = -1;
    }
    SDPackage::FileMap sources;
    for (const CTulStringW& name : names)
        sources[name] = CTulStringW(file("dot.png"));
    const CTulStringW path(file("old.odt"));
    const Save saves[] = {
        [&](SDPackage::IPackage& package) { return package.Save(path, nullptr, 0); },
        [&](SDPackage::IPackage& package) { return package.SaveItems(path, &items, 0); },
        [&](SDPackage::IPackage& package) { return package.SaveItems(path, &items, 1); },
        [&](SDPackage::IPackage& package) { return package.WriteItems(path, &items); },
        [&](SDPackage::IPackage& package) { return package.RepackFromFiles(path, &sources); },
    };
    for (const Save& save : saves) {
        SCOPED_TRACE(&save - saves);
        for (int turns = 0; turns < 3; ++turns) {
            SDPackage::IPackage package;
            ASSERT_EQ(package.Open(file("old.odt")), 1);
            package.SetHostTurn([left = turns]() mutable {
                if (left-- == 0) throw Interruption();
            });
            EXPECT_THROW(save(package), Interruption);
            EXPECT_EQ(test::ReadFile(file("old.odt")), old) << turns;
        }
    }
    EXPECT_EQ(test::EntriesOf(file("")), (std::vector<std::string>{"dot.png", "old.odt"}));
}

TEST_F(InterruptedSave, OfAnArchiveAlone) {
    test::WriteFile(file("old.zip"), "old");
    char data[] = "x";
    try {
        CSDZip zip;
        ASSERT_EQ(zip.CreareZipFile(file("old.zip")), 1);
        ASSERT_EQ(zip.Compress("first", data, 1), 1);
        throw Interruption();
    } catch (const Interruption&) {
        EXPECT_EQ(test::ReadFile(file("old.zip")), "old");
    }
    // An archive that is made while another exception is under way is finished as always.
    struct Maker {
        std::string path;
        ~Maker() {
            char inner[] = "y";
            CSDZip zip;
            zip.CreareZipFile(path);
            zip.Compress("second", inner, 1);
        }
    };
    try {
        const Maker maker{file("new.zip")};
        throw Interruption();
    } catch (const Interruption&) {
        EXPECT_EQ(test::ReadPackage(file("new.zip")), (test::Members{{"second", "y"}}));
    }
    EXPECT_EQ(test::EntriesOf(file("")), (std::vector<std::string>{"new.zip", "old.zip"}));
}

TEST_F(InterruptedSave, ByALackOfMemory) {
    if (!test::CanFailAllocations()) GTEST_SKIP() << "the sanitizer allocates";
    make("source.odt");
    const std::string old = test::ReadFile(file("source.odt"));
    const test::ScopedVariable clock("SOURCE_DATE_EPOCH", "1700000000");
    // A prime, so that every place in a loop has its turn.
    constexpr long kStep = 5;
    test::Members whole;
    std::map<Status, int> outcomes;
    for (const bool isForGood : {false, true}) {
        for (long count = -1;; count += kStep) { // the first save is the one to compare with
            test::WriteFile(file("old.odt"), old);
            auto document = std::make_unique<CODFDoc>();
            open(*document, "old.odt");
            const std::string target = file("old.odt");
            const CTulStringW path(target);
            bool hasFailed = true;
            int result = 0;
            {
                const test::FailingAllocations failing(count, isForGood);
                result = document->Save(path.c_str());
                hasFailed = count < 0 || test::FailingAllocations::hasFailed();
            }
            const Status status = document->GetDiagnostics().status();
            document.reset();
            const bool isOld = test::ReadFile(target) == old;
            if (count < 0) whole = test::ReadPackage(target);
            ASSERT_TRUE(isOld || test::ReadPackage(target) == whole) << count << ToText(status);
            ASSERT_EQ(status == Status::Ok, !isOld) << count << ": " << ToText(status);
            ASSERT_TRUE(result == 1 || status != Status::Ok) << count;
            ASSERT_EQ(temporaryEntries(), std::vector<std::string>()) << count;
            ++outcomes[status];
            if (!hasFailed) break;
        }
    }
    EXPECT_GT(outcomes[Status::OutOfMemory], 100);
    EXPECT_EQ(test::EntriesOf(file("")), (std::vector<std::string>{"dot.png", "old.odt", "source.odt"}));
}
