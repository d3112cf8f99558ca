// Packages that lie about their members or ask for more than they may.

#include "support/packages.h"
#include "support/workspace.h"
#include "zip/notes.h"

#include <odfmodel/odfmodel.h>

#include <sys/resource.h>

using namespace ODF;
using test::Members;

using HostilePackage = test::InWorkspace<>;

TEST_F(HostilePackage, NamesThatLeaveThePackageReachNothing) {
    const std::vector<std::string> names{"../escape.xml",  "a/../../escape.xml",     "/escape.xml",
                                         "..\\escape.xml", "\\escape.xml",           "Pictures/..",
                                         "../content.xml", "Object 1/../content.xml"};
    Members members{{"content.xml", test::TextContent("<text:p>inside</text:p>")}};
    std::vector<test::ManifestEntry> entries;
    for (const std::string& name : names) {
        entries.push_back({name});
        members[name] = "escaped"; // a backslash is written as a separator
    }
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

TEST_F(HostilePackage, LimitsAreObeyedAndTold) {
    constexpr unsigned kDepth = 200000;
    std::string body;
    for (const char* const tag : {"<text:section>", "</text:section>"})
        for (unsigned i = 0; i < kDepth; ++i)
            body += tag;
    Members members{{"content.xml", test::TextContent(body)}};
    for (int i = 0; i < 20; ++i)
        members["p" + std::to_string(i)] = std::string(1000, 'x');
    test::WriteOdf(file("a.odt"), test::kTextType, members);
    CODFDoc document;
    const auto status = [&](auto set) {
        Limits limits;
        set(limits);
        document.SetLimits(limits);
        const bool isOpen = document.Open(file("a.odt")) != 0;
        EXPECT_EQ(isOpen, document.GetDiagnostics().status() != Status::LimitExceeded);
        return document.GetDiagnostics().status();
    };
    EXPECT_EQ(status([](Limits& limits) { limits.members = 10; }), Status::LimitExceeded);
    EXPECT_EQ(status([](Limits& limits) { limits.totalBytes = 10000; }), Status::LimitExceeded);
    for (const bool isBounded : {true, false}) {
        EXPECT_EQ(status([&](Limits& limits) { limits.depth = isBounded ? limits.depth : 2 * kDepth; }),
                  isBounded ? Status::Damaged : Status::Ok);
        EXPECT_EQ(test::HasNote(document.GetDiagnostics(), NoteCode::DepthLimit, "content.xml"), isBounded);
        EXPECT_EQ(document.GetDiagnostics().notes().empty(), !isBounded);
        EXPECT_EQ(document.Save(file("out.odt")), 1) << "the stack has no part in it";
        EXPECT_EQ(document.GetDiagnostics().status(), isBounded ? Status::Damaged : Status::Ok);
        EXPECT_EQ(test::HasNote(document.GetDiagnostics(), NoteCode::DepthLimit, "content.xml"), isBounded)
            << "what wasn't read is told again";
    }
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
