#include "package/fixture.h"

#include <list>

using namespace package_test;
using namespace SDPackage;

namespace {

/// A new part that lives as long as the list.
IPart* Make(std::list<IPart>& parts, std::string_view path, std::string_view contentType = {}) {
    IPart& part = parts.emplace_back();
    part.SetPackagePath(path);
    part.SetContentType(contentType);
    return &part;
}

} // namespace

TEST(Relationships, NewIdsCountOnAndTakenOnesStay) {
    std::list<IPart> parts;
    IRelationships set;
    IPart* const first = Make(parts, "a");
    IPart* const named = Make(parts, "b");
    IPart* const late = Make(parts, "c");
    EXPECT_EQ(set.AddPart(first), first);
    set.AddPart(named, "rId2");
    set.AddPart(late);
    EXPECT_EQ(Utf8(set.GetIdByPart(first)), "rId0");
    EXPECT_EQ(Utf8(set.GetIdByPart(late)), "rId3") << "the number that the count gives is taken";
    EXPECT_EQ(set.AddPart(Make(parts, "d"), "rId2"), nullptr);
    EXPECT_EQ(set.AddPart(nullptr, "rId6"), nullptr);
    EXPECT_EQ(set.GetPartById("rId2"), named);
    EXPECT_EQ(set.Count(nullptr), 3);
}

TEST(Relationships, FindByTypeInIdOrderAndListSnapshots) {
    std::list<IPart> parts;
    IRelationships set;
    EXPECT_EQ(set.GetPartList(nullptr), nullptr);
    IPart* const late = Make(parts, "late.xml", "text/xml");
    IPart* const early = Make(parts, "early.xml", "text/xml");
    set.AddPart(late, "rId2");
    set.AddPart(early, "rId10");
    set.AddPart(Make(parts, "b.png", "image/png"), "rId3");
    EXPECT_EQ(set.GetPartByContentType("text/xml"), early);
    EXPECT_EQ(set.GetPartByContentType("TEXT/XML"), nullptr);
    EXPECT_EQ(set.Count("text/xml"), 2);
    EXPECT_EQ(set.Count("audio/mp3"), 0);

    IPartList* const list = set.GetPartList("text/xml");
    ASSERT_NE(list, nullptr);
    set.Clear();
    EXPECT_EQ(list->Count(), 2);
    EXPECT_EQ(list->GetPart(0), early);
    EXPECT_EQ(list->GetPart(2), nullptr);
    EXPECT_EQ(list->GetEntry(-1), nullptr);
    EXPECT_EQ(list->GetPartByPackagePath("late.xml"), late);
    EXPECT_TRUE(list->Contains("rId2"));
    EXPECT_EQ(list->Add(late, "rId2"), nullptr);
    EXPECT_EQ(list->Add(late, "again"), late);
    EXPECT_EQ(Utf8(list->FindSame(Make(parts, "early.xml"))), "rId10");
    EXPECT_EQ(list->FindSame(Make(parts, "other")), nullptr);
    set.ReleasePartList(list);
    set.ReleasePartList(nullptr);
}

TEST(Part, TakesNullAndAnswersWithoutRelationships) {
    IPart part;
    IPart other;
    EXPECT_FALSE(part.HasRelationships());
    EXPECT_EQ(part.GetPartByContentType("text/xml"), nullptr);
    EXPECT_EQ(part.AddPart(&other), nullptr);
    EXPECT_EQ(part.GetPartList(nullptr), nullptr);
    EXPECT_EQ(part.Count(nullptr), 0);
    part.RemovePart(&other);
    part.DeleteById("rId0");
    part.Clear();
    part.SetRelationType("slide");
    part.SetRelationType(nullptr);
    EXPECT_EQ(Utf8(part.GetRelationType()), "slide") << "null changes nothing here";
    part.SetContentType("text/xml");
    part.SetContentType(nullptr);
    EXPECT_EQ(Utf8(part.GetContentType()), "");
}

namespace {

IPart* Add(IPackage& package, const std::string& path, const std::string& local = {},
           TargetMode mode = TargetModeInternal) {
    IPart* const part = package.CreatePart();
    part->SetPackagePath(path);
    part->SetLocalPath(local);
    part->SetTargetMode(mode);
    return package.AddPart(part);
}

} // namespace

class PackageParts : public PackageTest {};

TEST_F(PackageParts, AreFoundWithoutRegardToCase) {
    const auto package = newPackage();
    IPart* const part = Add(*package, "content.xml");
    EXPECT_NE(Add(*package, "Content.xml"), part) << "owned all the same: nothing may leak";
    EXPECT_EQ(package->GetPart("CONTENT.XML"), part);
    EXPECT_EQ(package->GetPart("content"), nullptr);
    EXPECT_EQ(package->GetPart(nullptr), nullptr);
    EXPECT_EQ(package->AddPart(nullptr), nullptr);
    EXPECT_EQ(package->GetParts()->size(), 1U);
    IRelationships* const set = package->CreateRelationships("/");
    ASSERT_NE(set, nullptr);
    EXPECT_EQ(package->CreateRelationships("/"), nullptr) << "one set for each source";
    EXPECT_EQ(package->GetRelationships("/"), set);
    EXPECT_EQ(package->GetRelationships("/other"), nullptr);
}

TEST_F(PackageParts, AreForgottenWhenTheyAreDeleted) {
    const auto package = newPackage();
    IRelationships* const set = package->CreateRelationships("/");
    IRelationships* const other = package->CreateRelationships("/other");
    IPart* const part = Add(*package, "a.xml", "/tmp/a.xml");
    set->AddPart(part, "rId1");
    set->AddPart(part, "rId2");
    other->AddPart(part, "rId1");
    set->DeleteById("rId1");
    EXPECT_EQ(set->Count(nullptr), 0);
    EXPECT_EQ(other->Count(nullptr), 0);
    EXPECT_EQ(package->GetPart("a.xml"), nullptr);
    EXPECT_EQ(package->FindPartByLocalPath("/tmp/a.xml", TargetModeInternal), nullptr);
    EXPECT_NE(Add(*package, "a.xml"), nullptr);
}

// Lookups by local path change from a walk to an index from 128 parts on; nobody may notice.
TEST_F(PackageParts, AreFoundByLocalPathHoweverManyThereAre) {
    for (const int count : {10, 127, 128, 129, 3000}) {
        SCOPED_TRACE(count);
        const auto package = newPackage();
        for (int i = 0; i < count; ++i)
            Add(*package, "p" + std::to_string(i), "/L/p" + std::to_string(i));
        EXPECT_EQ(Utf8(package->FindPartByLocalPath("/l/P7", TargetModeInternal)->GetPackagePath()), "p7");
        EXPECT_EQ(package->FindPartByLocalPath("/L/p7", TargetModeExternal), nullptr);
        EXPECT_EQ(package->FindPartByLocalPath(nullptr, TargetModeInternal), nullptr);

        // Changes after the first lookup are seen.
        IPart* const late = Add(*package, "zzz", "/L/late");
        EXPECT_EQ(package->FindPartByLocalPath("/L/late", TargetModeInternal), late);
        late->SetLocalPath("/L/later");
        EXPECT_EQ(package->FindPartByLocalPath("/L/late", TargetModeInternal), nullptr);
        EXPECT_EQ(package->FindPartByLocalPath("/L/later", TargetModeInternal), late);
        late->SetTargetMode(TargetModeExternal);
        EXPECT_EQ(package->FindPartByLocalPath("/L/later", TargetModeExternal), late);
        // Of two parts at one place the first in name order counts, whichever came first.
        Add(*package, "b", "/L/shared");
        IPart* const first = Add(*package, "a", "/L/shared");
        EXPECT_EQ(package->FindPartByLocalPath("/L/shared", TargetModeInternal), first);
        delete first;
        EXPECT_EQ(Utf8(package->FindPartByLocalPath("/L/shared", TargetModeInternal)->GetPackagePath()), "b");
    }
}

TEST_F(PackageParts, GiveTheMainPartByDocumentType) {
    const auto package = newPackage();
    EXPECT_EQ(package->GetMainPart(), nullptr);
    package->GetRootPart()->SetRelationships(package->CreateRelationships("/"));
    IPart* const part = Add(*package, "/ppt/presentation.xml");
    part->SetContentType(kPresentationType);
    package->GetRootPart()->AddPart(part);
    EXPECT_EQ(package->GetMainPart(), nullptr);
    EXPECT_EQ(package->FindMainPart(), nullptr);
    package->SetDocType(sd::SDDocType::DocTypePresentation);
    EXPECT_EQ(package->GetMainPart(), part);
    package->AddMainDocumentType(sd::SDDocType::DocTypeWorkbook);
    EXPECT_EQ(package->FindMainPart(), nullptr);
    package->AddMainDocumentType(sd::SDDocType::DocTypePresentation);
    EXPECT_EQ(package->FindMainPart(), part);
}
