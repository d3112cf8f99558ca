// Packages that lie about their members, and more members than a process may hold files.

#include "document/kinds.h"
#include "support/packages.h"
#include "support/trees.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>

#include <sys/resource.h>

using namespace ODF;
using test::Members;

namespace {

class HostilePackage : public test::InWorkspace<> {};

} // namespace

TEST_F(HostilePackage, NamesThatLeaveThePackageReachNothing) {
    const std::vector<std::string> names{"../escape.xml",  "a/../../escape.xml",     "/escape.xml",
                                         "..\\escape.xml", "\\escape.xml",           "Pictures/..",
                                         "../content.xml", "Object 1/../content.xml"};
    Members members{{"content.xml", test::TextContent("<text:p>inside</text:p>")}};
    std::vector<test::ManifestEntry> entries;
    for (const std::string& name : names)
        entries.push_back({name});
    // The writer takes backslashes for separators, so these names come as they can come through it.
    for (const std::string& name : names)
        members[name] = "escaped";
    test::WriteOdf(file("a.odt"), test::kTextType, members, entries);
    CODFDoc document;
    ASSERT_EQ(document.Open(file("a.odt")), 1);
    std::vector<ISDPart*> parts;
    document.GetRootPart()->GetChildParts(&parts);
    const std::string folder = ToUtf8(document.GetRootPart()->GetLocalPath());
    for (ISDPart* const part : parts) {
        const std::filesystem::path local = ToUtf8(part->GetLocalPath());
        EXPECT_TRUE(local.lexically_normal().string().starts_with(folder + "/")) << local;
        EXPECT_EQ(ToUtf8(part->GetPackagePath()).find(".."), std::string::npos);
    }
    EXPECT_EQ(temporaryEntries().size(), 1U) << "nothing beside the folder";
    EXPECT_EQ(document.Save(file("out.odt")), 1);
    EXPECT_EQ(document.GetDiagnostics().status(), Status::Ok);
    const Members saved = test::ReadPackage(file("out.odt"));
    EXPECT_EQ(saved.size(), 2U);
    EXPECT_NE(saved.at("content.xml").find("inside"), std::string::npos);
    EXPECT_EQ(test::EntriesOf(file("")), (std::vector<std::string>{"a.odt", "out.odt"}));
}

TEST_F(HostilePackage, NamesThatDifferInCaseAloneMakeOnePart) {
    test::WriteOdf(file("a.odt"), test::kTextType,
                   {{"content.xml", test::TextContent("<text:p>one</text:p>")},
                    {"Content.xml", test::TextContent("<text:p>other</text:p>")},
                    {"p.png", "small"},
                    {"P.PNG", "large"}});
    CODFDoc document;
    // The first in the manifest counts, here the one in capitals: it is no main part.
    EXPECT_EQ(document.Open(file("a.odt")), 0);
    EXPECT_EQ(document.GetDiagnostics().status(), Status::NoContent);
}

TEST_F(HostilePackage, RepeatCountsAreNumbers) {
    test::WriteOdf(file("a.odt"), test::kTextType,
                   {{"content.xml", test::TextContent("<text:p><text:s text:c=\"4294967295\"/></text:p>")},
                    {"styles.xml", "<x/>"}});
    CODFDoc document;
    ASSERT_EQ(document.Open(file("a.odt")), 1);
    ASSERT_EQ(document.Save(file("out.odt")), 1);
    EXPECT_NE(test::ReadPackage(file("out.odt")).at("content.xml").find("text:c=\"4294967295\""),
              std::string::npos);
}

TEST_F(HostilePackage, DepthIsBoundedAndTold) {
    constexpr unsigned kDepth = 200000;
    std::string body;
    for (unsigned i = 0; i < kDepth; ++i)
        body += "<text:section>";
    for (unsigned i = 0; i < kDepth; ++i)
        body += "</text:section>";
    test::WriteOdf(file("a.odt"), test::kTextType, {{"content.xml", test::TextContent(body)}});
    CODFDoc document;
    ASSERT_EQ(document.Open(file("a.odt")), 1);
    ASSERT_FALSE(document.GetDiagnostics().notes().empty());
    EXPECT_EQ(document.GetDiagnostics().notes()[0].code, NoteCode::DepthLimit);
    EXPECT_EQ(document.Save(file("out.odt")), 1);
    EXPECT_EQ(document.GetDiagnostics().status(), Status::Ok);

    Limits deep;
    deep.depth = 2 * kDepth;
    document.SetLimits(deep);
    ASSERT_EQ(document.Open(file("a.odt")), 1);
    EXPECT_TRUE(document.GetDiagnostics().notes().empty());
    EXPECT_EQ(document.Save(file("out.odt")), 1)
        << "as deep as the caller lets it be, the stack has no part in it";
    EXPECT_EQ(document.GetDiagnostics().status(), Status::Ok);
}

TEST_F(HostilePackage, MoreThanTheLimitsIsRefused) {
    Members members{{"content.xml", test::TextContent("<text:p/>")}};
    for (int i = 0; i < 20; ++i)
        members["p" + std::to_string(i)] = std::string(1000, 'x');
    test::WriteOdf(file("a.odt"), test::kTextType, members);
    const auto status = [&](auto set) {
        CODFDoc document;
        Limits limits;
        set(limits);
        document.SetLimits(limits);
        const int result = document.Open(file("a.odt"));
        EXPECT_EQ(result != 0, document.GetDiagnostics().status() == Status::Ok);
        return document.GetDiagnostics().status();
    };
    EXPECT_EQ(status([](Limits&) {}), Status::Ok);
    EXPECT_EQ(status([](Limits& limits) { limits.members = 10; }), Status::LimitExceeded);
    EXPECT_EQ(status([](Limits& limits) { limits.totalBytes = 10000; }), Status::LimitExceeded);
}

TEST_F(HostilePackage, ManyMembersNeedFewFiles) {
    constexpr int kMembers = 5000;
    Members members{{"content.xml", test::TextContent("<text:p>x</text:p>")}};
    for (int i = 0; i < kMembers; ++i)
        members["Pictures/" + std::to_string(i) + ".png"] = std::to_string(i);
    test::WriteOdf(file("a.odt"), test::kTextType, members);
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit few{256, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    {
        CODFDoc document;
        EXPECT_EQ(document.Open(file("a.odt")), 1);
        EXPECT_TRUE(document.GetDiagnostics().notes().empty());
        EXPECT_EQ(document.Save(file("out.odt")), 1);
        EXPECT_EQ(document.GetDiagnostics().status(), Status::Ok);
    }
    setrlimit(RLIMIT_NOFILE, &before);
    const Members saved = test::ReadPackage(file("out.odt"));
    EXPECT_EQ(saved.size(), members.size() + 1);
    EXPECT_EQ(saved.at("Pictures/4999.png"), "4999");
}
