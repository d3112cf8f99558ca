// A package that doesn't hold what its target holds must not take its place.

#include "support/packages.h"
#include "support/workspace.h"

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/package/package.h>

using ODF::Status;
using SDPackage::IPackage;

namespace {

class PackageSave : public test::InWorkspace<> {
protected:
    void SetUp() override {
        test::WriteOdf(file("own.odt"), test::kTextType, {{"content.xml", test::TextContent("own")}});
        test::WritePackage(file("other"), {{"content.xml", "other"}, {"[Content_Types].xml", "<Types/>"}});
        test::WriteFile(file("none.odt"), "no archive");
        test::WritePackage(file("bare.odt"), {{"content.xml", "x"}});
        old = test::ReadFile(file("own.odt"));
    }
    std::string old;
};

} // namespace

TEST_F(PackageSave, AfterAnOpenThatFailedOrFoundNothingIsRefused) {
    for (const char* const name : {"missing.odt", "none.odt", "bare.odt"}) {
        IPackage package;
        ODF::Diagnostics diagnostics;
        package.SetDiagnostics(&diagnostics);
        package.Open(file(name));
        diagnostics.clear();
        EXPECT_EQ(package.Save(file("own.odt")), 0) << name;
        EXPECT_EQ(diagnostics.status(), Status::NothingToSave) << name;
        EXPECT_EQ(test::ReadFile(file("own.odt")), old) << name;
    }
}

TEST_F(PackageSave, TakesNoMembersOfAnArchiveThatWasLookedInto) {
    for (const bool isDetected : {false, true}) {
        IPackage package;
        ASSERT_EQ(package.Open(CTulStringW(file("own.odt")), nullptr, 1, nullptr), 1);
        SDPackage::Map overrides;
        SDPackage::Map defaults;
        const auto type = package.GetDocType();
        if (isDetected)
            package.DetectDocumentType(CTulStringW(file("other")));
        else
            package.ReadContentTypes(CTulStringW(file("other")), &overrides, &defaults);
        package.SetDocType(type);
        EXPECT_EQ(package.Save(file("own.odt")), 0);
        EXPECT_EQ(test::ReadFile(file("own.odt")), old);
    }
}
