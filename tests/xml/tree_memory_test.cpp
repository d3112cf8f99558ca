// Objects of a large tree share blocks of memory: each still lives, changes and goes on its own.

#include "support/element_xml.h"
#include "xml/reading.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/document/part.h>
#include <odfmodel/elements/elements.h>

#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <thread>
#include <unistd.h>

namespace {

/// So many paragraphs that most are in blocks of their own; texts and attributes of several sizes among them.
std::string Paragraphs(int count) {
    std::string xml = "<office:text>";
    for (int i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        xml += "<text:p text:style-name=\"P" + number + "\">text " + number + " \xC3\xA4<text:span>" +
               std::string(static_cast<std::size_t>(i % 300 + 1), 's') + "</text:span><text:tab/>";
        if (i % 1000 == 999) xml += std::string(20000, 'L'); // too large for a block
        xml += "</text:p>";
    }
    return xml + "</office:text>";
}

constexpr int kCount = 6000;

class TreeMemory : public testing::Test {
protected:
    static std::unique_ptr<CSDObject> read() { return test::Read(kXml); }
    static inline const std::string kXml = Paragraphs(kCount);
};

CTulStringW StyleOf(CSDObject& paragraph) {
    CTulStringW style;
    static_cast<ODF::CTextP&>(paragraph).GetTextStyleName(style);
    return style;
}
const CTulStringW& FirstText(CSDObject& paragraph) {
    return static_cast<CSDStringValueObject*>(paragraph.GetObjectList()->front())->Getval();
}

TEST_F(TreeMemory, TheWholeTreeIsThere) {
    const auto root = read();
    EXPECT_TRUE(test::Written(*root) == kXml); // too long to be shown
    EXPECT_EQ(root->GetObjectList()->capacity(), static_cast<std::size_t>(kCount)) << "a list just fits";
}

TEST_F(TreeMemory, TextsThatAreKeptOutliveIt) {
    std::vector<CTulStringW> kept;
    CTulStringW assigned;
    {
        const auto root = read();
        for (CSDObject* const paragraph : *root->GetObjectList()) {
            kept.push_back(FirstText(*paragraph));
            kept.push_back(StyleOf(*paragraph));
        }
        assigned = FirstText(*root->GetObjectList()->back());
    }
    ASSERT_EQ(kept.size(), 2U * kCount);
    for (std::size_t i = 0; i < kCount; ++i) {
        ASSERT_EQ(kept[2 * i], "text " + std::to_string(i) + " \xC3\xA4");
        ASSERT_EQ(kept[2 * i + 1], "P" + std::to_string(i));
    }
    EXPECT_EQ(assigned, kept[2 * kCount - 2]);
}

TEST_F(TreeMemory, AnObjectMovedToAnotherTreeOutlivesTheFirst) {
    const auto target = test::Make("office:text");
    {
        const auto root = read();
        auto& list = *root->GetObjectList();
        for (std::size_t i = 0; i < list.size(); i += 500) {
            target->SetObject(list[i], 1);
            list[i] = nullptr;
        }
    }
    const auto moved = test::ChildrenOf(*target);
    ASSERT_EQ(moved.size(), kCount / 500U);
    for (std::size_t i = 0; i < moved.size(); ++i) {
        EXPECT_EQ(StyleOf(*moved[i]), "P" + std::to_string(500 * i));
        EXPECT_EQ(FirstText(*moved[i]), "text " + std::to_string(500 * i) + " \xC3\xA4");
    }
}

TEST_F(TreeMemory, WhatWasReadCanGrow) {
    const auto root = read();
    int i = 0;
    for (CSDObject* const object : *root->GetObjectList()) {
        auto& paragraph = static_cast<ODF::CTextP&>(*object);
        paragraph.SetTextId(CTulStringW("id" + std::to_string(i)));
        paragraph.SetTextCondStyleName(u"c");
        paragraph.SetErrorCode(7);
        auto& run = static_cast<CSDStringValueObject&>(*object->GetObjectList()->front());
        CTulStringW longer = run.Getval();
        longer.Append(std::u16string(100, u'+'));
        run.Setval(longer);
        run.ReadNodeValue(ToUnits(u"end"), 3);
        paragraph.SetTextS();
        ++i;
    }
    i = 0;
    for (CSDObject* const object : *root->GetObjectList()) {
        const std::string number = std::to_string(i++);
        ASSERT_EQ(test::AttributeOf(*object, "text:style-name"), "P" + number);
        ASSERT_EQ(test::AttributeOf(*object, "text:id"), "id" + number);
        ASSERT_EQ(test::AttributeOf(*object, "text:cond-style-name"), "c");
        ASSERT_EQ(object->GetErrorCode(), 7U);
        ASSERT_EQ(FirstText(*object), "text " + number + " \xC3\xA4" + std::string(100, '+') + "end");
        ASSERT_EQ(object->GetObjectList()->back()->GetID(), ODF::CTextS::kId);
    }
}

TEST_F(TreeMemory, PartsOfATreeGoOnSeveralThreads) {
    const auto root = read();
    std::array<std::unique_ptr<CSDObject>, 4> parts;
    for (auto& part : parts)
        part = test::Make("office:text");
    auto& list = *root->GetObjectList();
    for (std::size_t i = 0; i < list.size(); ++i)
        parts[i % parts.size()]->SetObject(list[i], 1);
    list.clear();
    std::vector<std::thread> threads;
    for (auto& part : parts)
        threads.emplace_back([&part] { part.reset(); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(root->GetObjectList()->empty());
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // which keep freed memory for a while

std::size_t ResidentBytes() {
    std::ifstream statm("/proc/self/statm");
    std::size_t size = 0;
    std::size_t resident = 0;
    statm >> size >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

TEST_F(TreeMemory, GoesBackWithTheTree) {
    read();
    const std::size_t before = ResidentBytes();
    if (before == 0) GTEST_SKIP() << "the system doesn't tell what a process occupies";
    std::size_t during = 0;
    for (int round = 0; round < 30; ++round) {
        const auto root = read();
        during = ResidentBytes() - before;
    }
    EXPECT_GT(during, std::size_t{1} << 20);
    EXPECT_LT(ResidentBytes(), before + during / 2);
}

#endif

/// Remembers how many children its root had whenever it was asked for an object of its own.
class Watcher : public ODF::CODFPart {
public:
    CSDObject* CreateApplicationObj(const unsigned short*, int&) override {
        seen.push_back(test::ChildrenOf(*root).size());
        return seen.size() % 2 == 0 ? ODF::CTextS::Create() : nullptr;
    }
    CSDObject* root = nullptr;
    std::vector<std::size_t> seen;
};

TEST_F(TreeMemory, ACallersOwnCodeSeesWhatWasReadBefore) {
    Watcher watcher;
    const auto root = test::Make("text:p");
    root->SetRootpart(&watcher);
    watcher.root = root.get();
    ASSERT_TRUE(
        ODF::FromXml(test::Declared("<text:p>a<x:no/>b<text:tab/><x:own/><text:span>c<x:no/></text:span>"
                                    "<text:tab/><text:span><x:own/></text:span></text:p>"),
                     *root));
    EXPECT_EQ(watcher.seen, (std::vector<std::size_t>{1, 3, 5, 7}));
    EXPECT_EQ(
        test::Written(*root),
        "<text:p>ab<text:tab/><text:s/><text:span>c</text:span><text:tab/><text:span><text:s/></text:span>"
        "</text:p>");
}

} // namespace
