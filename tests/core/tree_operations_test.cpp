// Walking, changing and copying trees, and attributes by name.
#include "support/corpus.h"
#include "support/element_xml.h"

#include <odfmodel/core/foreign.h>
#include <odfmodel/core/reflection.h>
#include <odfmodel/document/open_document.h>
#include <odfmodel/elements/elements.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <ranges>
#include <sstream>
#include <unordered_set>
#include <utility>

namespace {

using ODF::CTextP;
using ODF::CTextSpan;
using ODF::TreeChange;

static_assert(std::ranges::forward_range<ODF::ChildRange<CTextP>>);
static_assert(std::ranges::view<ODF::ChildRange<const CTextP>> &&
              std::ranges::borrowed_range<ODF::ChildRange<const CTextP>>);
static_assert(std::ranges::forward_range<ODF::DescendantRange<CSDObject>>);

template<typename T, typename V>
concept TakesProtected = requires(T& object, V value) {
    object.SetTableProtected(value);
};
static_assert(TakesProtected<ODF::CTableTable, bool> && TakesProtected<ODF::CTableTable, int>);
static_assert(!TakesProtected<ODF::CTableTable, const char*> &&
              !TakesProtected<ODF::CTableTable, CTulStringW>);

template<typename T>
std::unique_ptr<T> New() {
    return std::unique_ptr<T>(static_cast<T*>(T::Create()));
}

/// A body with "one", "two" and a table whose one cell has "three", all with style names.
std::unique_ptr<CSDObject> Sample() {
    return test::Read(
        "<office:text><text:p text:style-name=\"one\"/><text:p text:style-name=\"two\"><text:span "
        "text:style-name=\"in two\"/></text:p><table:table><table:table-row><table:table-cell>"
        "<text:p text:style-name=\"three\"/></table:table-cell></table:table-row></table:table>"
        "<text:h text:style-name=\"four\"/></office:text>");
}

template<typename Range>
std::string NamesIn(Range&& range) {
    std::string names;
    for (const CSDObject& object : range)
        names += (names.empty() ? "" : ",") + test::AttributeOf(object, "text:style-name");
    return names;
}

TEST(TreeWalk, RangesGiveObjectsOfTheirClassInDocumentOrder) {
    const std::unique_ptr<CSDObject> body = Sample();
    const CSDObject& constant = *body;
    EXPECT_EQ(NamesIn(body->Children<CTextP>()), "one,two");
    EXPECT_EQ(NamesIn(constant.Children()), "one,two,(absent),four");
    EXPECT_EQ(NamesIn(body->Descendants<CTextP>()), "one,two,three");
    EXPECT_EQ(NamesIn(constant.Descendants()), "one,two,in two,(absent),(absent),(absent),three,four");
    EXPECT_EQ(NamesIn(constant.Children<ODF::CTextList>()), "");
    EXPECT_EQ(test::AttributeOf(*constant.Child<CTextP>(), "text:style-name"), "one");
    EXPECT_EQ(body->Child<ODF::CTextList>(), nullptr);
    EXPECT_TRUE(New<ODF::CDcDate>()->Children().empty()); // a class without any list
    const auto paragraphs = body->Descendants<CTextP>();
    EXPECT_EQ(std::ranges::count_if(paragraphs, [](const CTextP& p) { return p.HasChildList(); }), 1);
    EXPECT_EQ(std::ranges::distance(body->Children() | std::views::drop(1)), 3);
}

/// What Parent, Next and Previous say must be what the lists of children say.
void ExpectLinked(const CSDObject& root) {
    std::vector<const CSDObject*> open{&root};
    while (!open.empty()) {
        const CSDObject* const parent = open.back();
        open.pop_back();
        const CSDObject* before = nullptr;
        for (const CSDObject& child : parent->Children()) {
            ASSERT_EQ(child.Parent(), parent);
            ASSERT_EQ(child.Previous(), before);
            if (before) {
                ASSERT_EQ(before->Next(), &child);
            }
            before = &child;
            open.push_back(&child);
        }
        if (before) {
            ASSERT_EQ(before->Next(), nullptr);
        }
    }
}

TEST(TreeWalk, ParentAndSiblingsFollowEveryChange) {
    std::unique_ptr<CSDObject> body = Sample();
    ExpectLinked(*body);
    auto& section = static_cast<ODF::COfficeText&>(*body).Append<ODF::CTextSection>();
    std::mt19937 random(1);
    const auto any = [&]() -> CSDObject& {
        std::uniform_int_distribution<std::ptrdiff_t> place(0,
                                                            std::ranges::distance(body->Descendants()) - 1);
        return *std::ranges::next(body->Descendants().begin(), place(random));
    };
    for (int step = 0; step < 300; ++step) {
        CSDObject& object = any();
        CSDObject* const parent = object.Parent();
        switch (random() % 5) {
        case 0:
            section.Append<CTextP>().Append<CTextSpan>();
            break;
        case 1:
            parent->Insert(New<CTextP>(), object);
            break;
        case 2:
            if (CSDObject& to = any(); object.MoveTo(to) == TreeChange::Done) {
                EXPECT_EQ(object.Parent(), &to);
            }
            break;
        case 3:
            parent->Append(object.Clone());
            break;
        default:
            if (&object != &section && std::ranges::distance(object.Descendants()) < 4) {
                const std::unique_ptr<CSDObject> taken = parent->Detach(object);
                EXPECT_EQ(taken->Parent(), nullptr);
                EXPECT_EQ(taken->Next(), nullptr);
            }
        }
        if (section.Parent() != body.get()) {
            ASSERT_EQ(section.MoveTo(*body), TreeChange::Done);
        }
        ASSERT_NO_FATAL_FAILURE(ExpectLinked(*body)) << step;
    }
    EXPECT_EQ(body->MoveTo(section), TreeChange::NotAChild);
}

TEST(TreeWalk, GoingFromChildToChildTakesLinearTime) {
    constexpr int kCount = 300'000; // by looking through the list each time this would take minutes
    std::string xml = "<office:text>";
    for (int i = 0; i < kCount; ++i)
        xml += "<text:p/>";
    const std::unique_ptr<CSDObject> body = test::Read(xml + "</office:text>");
    int count = 0;
    for (const CSDObject* at = body->Child<CTextP>(); at; at = at->Next())
        ++count;
    EXPECT_EQ(count, kCount);
    const auto other = New<ODF::COfficeText>();
    while (CSDObject* const last =
               std::as_const(*body).Children().empty() ? nullptr : body->GetObjectList()->back())
        ASSERT_EQ(last->MoveTo(*other), TreeChange::Done);
    EXPECT_EQ(other->GetChildCount(), unsigned{kCount});
}

TEST(TreeWalk, ATreeOfAnyDepthIsWalkedCopiedAndTakenApart) {
    constexpr int kDepth = 200'000;
    const auto top = New<CTextSpan>();
    CTextSpan* at = top.get();
    for (int i = 0; i < kDepth; ++i)
        at = &at->Append<CTextSpan>();
    EXPECT_EQ(std::ranges::distance(top->Descendants()), kDepth);
    const std::unique_ptr<CTextSpan> copy = ODF::CloneOf(*top);
    EXPECT_EQ(std::ranges::distance(copy->Descendants<CTextSpan>()), kDepth);
    EXPECT_TRUE(copy->Remove(*copy->Child<CTextSpan>()));
    EXPECT_FALSE(copy->HasChildList());
}

TEST(TreeChange, ChildrenGoWhereTheyAreAskedTo) {
    const auto body = New<ODF::COfficeText>();
    CTextP& last = body->Append<CTextP>();
    last.SetTextStyleName("last");
    body->Insert<CTextP>(last)->SetTextStyleName("first");
    auto middle = New<CTextP>();
    middle->SetTextStyleName("middle");
    EXPECT_EQ(body->Insert(std::move(middle), last), TreeChange::Done);
    EXPECT_EQ(middle, nullptr);
    EXPECT_EQ(NamesIn(body->Children()), "first,middle,last");
    std::unique_ptr<CSDObject> taken = body->Detach(*body->Child<CTextP>());
    EXPECT_EQ(body->Append(std::move(taken)), TreeChange::Done);
    EXPECT_TRUE(body->Remove(last));
    EXPECT_EQ(NamesIn(body->Children()), "middle,first");
    EXPECT_FALSE(body->Remove(*body));
    EXPECT_EQ(body->Detach(*body), nullptr);
}

TEST(TreeChange, WhatWouldBreakTheTreeIsRefusedAndStaysWithTheCaller) {
    auto outer = New<CTextSpan>();
    CTextSpan& inner = outer->Append<CTextSpan>().Append<CTextSpan>();
    CTextP& stranger = inner.Append<CTextP>();
    std::unique_ptr<CTextSpan> none;
    EXPECT_EQ(inner.Append(std::move(none)), TreeChange::NoObject);
    EXPECT_EQ(inner.Append(std::move(outer)), TreeChange::OwnAncestor);
    EXPECT_EQ(outer->Append(std::move(outer)), TreeChange::OwnAncestor);
    ASSERT_NE(outer, nullptr);
    auto other = New<CTextP>();
    EXPECT_EQ(outer->Insert(std::move(other), stranger), TreeChange::NotAChild);
    EXPECT_EQ(outer->Insert<CTextP>(stranger), nullptr);
    EXPECT_EQ(New<ODF::CDcDate>()->Append(std::move(other)), TreeChange::NoList);
    EXPECT_NE(other, nullptr);
    std::unique_ptr<CTextP> twice(&stranger); // nobody may own what a list has
    EXPECT_EQ(inner.Append(std::move(twice)), TreeChange::Listed);
    EXPECT_EQ(twice, nullptr);
    EXPECT_EQ(std::ranges::distance(outer->Descendants()), 3);
}

TEST(TreeChange, AppendingManyOwnedChildrenTakesLinearTime) {
    constexpr int kRows = 300'000; // by looking through the list each time this would take minutes
    const auto table = New<ODF::CTableTable>();
    for (int i = 0; i < kRows; ++i)
        ASSERT_EQ(table->Append(New<ODF::CTableTableRow>()), TreeChange::Done);
    EXPECT_EQ(table->GetChildCount(), unsigned{kRows});
}

TEST(TreeChange, AChildThatItsParentDoesNotListIsWrittenUnderItsOwnName) {
    const auto row = New<ODF::CTableTableRow>();
    row->Append<CTextP>().SetText("x");
    for (const ODF::Fidelity fidelity : {ODF::Fidelity::Listed, ODF::Fidelity::Everything})
        EXPECT_NE(ODF::ToXml(*row, {}, fidelity).find("<text:p>x</text:p>"), std::string::npos);
}

TEST(TreeChange, TheRootPartFollowsWhatMoves) {
    auto* const part = reinterpret_cast<ISDPart*>(std::uintptr_t{16}); // is compared, never used
    const auto body = New<ODF::COfficeText>();
    body->SetRootpart(part);
    auto table = New<ODF::CTableTable>();
    CSDObject& cell = table->Append<ODF::CTableTableRow>().Append<ODF::CTableTableCell>();
    ASSERT_EQ(body->Append(std::move(table)), TreeChange::Done);
    EXPECT_EQ(cell.GetRootpart(), part);
    EXPECT_EQ(body->Clone()->Child<ODF::CTableTable>()->GetRootpart(), nullptr);
    const std::unique_ptr<CSDObject> taken = body->Detach(*body->Child<ODF::CTableTable>());
    EXPECT_EQ(cell.GetRootpart(), nullptr);
}

class ClonedSample : public testing::TestWithParam<test::Sample> {};

TEST_P(ClonedSample, IsWrittenLikeItsOriginalAndOutlivesIt) {
    ODF::Document document;
    ASSERT_TRUE(document.Open(GetParam().path, {.password = GetParam().password}));
    std::vector<std::pair<std::unique_ptr<CSDObject>, std::string>> copies;
    for (CSDObject* const root :
         {static_cast<CSDObject*>(document.Content()), static_cast<CSDObject*>(document.Styles()),
          static_cast<CSDObject*>(document.Meta())})
        if (root) copies.emplace_back(root->Clone(), ODF::ToXml(*root, {}, ODF::Fidelity::Everything));
    document = {};
    for (const auto& [copy, xml] : copies) {
        ASSERT_NE(copy, nullptr);
        EXPECT_TRUE(ODF::ToXml(*copy, {}, ODF::Fidelity::Everything) == xml);
    }
}

INSTANTIATE_TEST_SUITE_P(Corpus, ClonedSample, testing::ValuesIn(test::GoodSamples()),
                         [](const auto& sample) { return test::NameOf(sample.param); });

/// What a tree of full fidelity can hold, in one file.
constexpr std::string_view kEverything =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!--before--><office:document-meta xmlns:office=\""
    "urn:oasis:names:tc:opendocument:xmlns:office:1.0\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\" "
    "xmlns:my=\"urn:my\" my:mark=\"1\"><office:meta><dc:date>2020-01-02T03:04:05<!--in a date--></dc:date>"
    "<my:own my:a=\"b\">text<?go now?></my:own><dc:title>A<my:x/>B</dc:title></office:meta>"
    "</office:document-meta>";

TEST(Clone, KeepsForeignMarkupCommentsRunsAndMarks) {
    auto root = New<ODF::COfficeDocumentMeta>();
    ASSERT_TRUE(ODF::FromXml(kEverything, *root, ODF::Fidelity::Everything));
    root->SetErrorCode(7);
    root->SetIsFallback(true);
    const std::string written = ODF::ToXml(*root, {}, ODF::Fidelity::Everything);
    for (const char* const part : {"before", "in a date", "my:mark", "go now", "A<my:x/>B"})
        ASSERT_NE(written.find(part), std::string::npos) << written;
    const auto copy = ODF::CloneOf(*root);
    root.reset();
    EXPECT_EQ(ODF::ToXml(*copy, {}, ODF::Fidelity::Everything), written);
    EXPECT_EQ(copy->GetErrorCode(), 7U);
    EXPECT_TRUE(copy->GetIsFallback());
}

class CallersElement : public CSDCustomObject {};
class CopyableElement : public CSDCustomObject {
protected:
    CSDObject* CloneEmpty() const override { return new CopyableElement; }
};

TEST(Clone, OfACallersOwnClassNeedsItsHelp) {
    const auto body = New<ODF::COfficeText>();
    auto own = std::make_unique<CopyableElement>();
    own->SetElemName("my:own");
    own->Append<CTextP>();
    ASSERT_EQ(body->Append(std::move(own)), TreeChange::Done);
    const std::unique_ptr<CSDObject> copy = body->Clone();
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(std::ranges::distance(copy->Descendants()), 2);
    EXPECT_EQ(ODF::ToUtf8(copy->Children().begin()->GetElemName()), "my:own");
    ASSERT_EQ(body->Append(std::make_unique<CallersElement>()), TreeChange::Done);
    EXPECT_EQ(body->Clone(), nullptr);
}

TEST(AttributesByName, AreFoundAndTakenAway) {
    struct Row {
        const char* attributes;
        const char* name;
        const char* left; ///< what is written then
    };
    const Row rows[] = {
        {"text:style-name=\"a\" text:outline-level=\"2\"", "text:style-name", " text:outline-level=\"2\""},
        {"text:outline-level=\"2\" text:style-name=\"a\"", "text:outline-level", " text:style-name=\"a\""},
        {"text:start-value=\"x\"", "text:start-value", ""}, // the words of the file go too
        {"text:is-list-header=\"true\" xml:id=\"i\"", "xml:id", " text:is-list-header=\"true\""},
    };
    for (const Row& row : rows) {
        const auto heading = New<ODF::CTextH>();
        ASSERT_TRUE(ODF::FromXml(test::Declared(std::string("<text:h ") + row.attributes + "/>"), *heading,
                                 ODF::Fidelity::Everything));
        EXPECT_TRUE(heading->HasAttribute(row.name)) << row.name;
        EXPECT_FALSE(heading->Unset("text:cond-style-name"));
        EXPECT_TRUE(heading->Unset(row.name)) << row.name;
        EXPECT_FALSE(heading->HasAttribute(row.name));
        EXPECT_FALSE(heading->Unset(row.name));
        EXPECT_EQ(test::Bare(ODF::ToXml(*heading, {}, ODF::Fidelity::Everything)),
                  std::string("<text:h") + row.left + "/>");
    }
}

TEST(AttributesByName, EveryAttributeOfEveryClassCanBeTakenAway) {
    for (const ODF::ClassInfo& info : ODF::AllClasses()) {
        const std::unique_ptr<CSDObject> object(info.create());
        const std::string empty = ODF::ToXml(*object);
        const std::vector<ODF::AttributeInfo> attributes = info.attributes();
        for (const ODF::AttributeInfo& attribute : attributes)
            ASSERT_TRUE(ODF::SetAttributeText(*object, attribute.name, "1")) << attribute.name;
        for (std::size_t i = 0; i < attributes.size(); ++i) { // from the middle outwards
            const std::string_view name = attributes[(attributes.size() / 2 + i) % attributes.size()].name;
            EXPECT_TRUE(object->Unset(name)) << name;
            EXPECT_FALSE(object->HasAttribute(name)) << name;
        }
        EXPECT_EQ(ODF::ToXml(*object), empty) << info.className();
    }
}

TEST(AttributesByName, TypedUnsetTakesItsOwnAttribute) {
    const auto heading = New<ODF::CTextH>();
    heading->SetTextStyleName("a");
    heading->SetTextStartValue(3);
    EXPECT_TRUE(heading->UnsetTextStyleName());
    EXPECT_FALSE(heading->UnsetTextStyleName());
    EXPECT_FALSE(heading->HasAttribute("text:style-name"));
    EXPECT_TRUE(heading->HasAttribute("text:start-value"));
}

template<typename T>
std::string ValueAfterSetting(double number) {
    const auto object = New<T>();
    object->SetOfficeValue(number);
    return test::AttributeOf(*object, "office:value");
}

TEST(Values, ANumberIsANumberOnEachClassThatHasOfficeValue) {
    EXPECT_EQ(ValueAfterSetting<ODF::CTableTableCell>(1.5), "1.5");
    EXPECT_EQ(ValueAfterSetting<ODF::CTableTableCell>(0.1), "0.1");
    EXPECT_EQ(ValueAfterSetting<ODF::CTextUserFieldDecl>(1.5), "1.5");
    EXPECT_EQ(ValueAfterSetting<ODF::CFormProperty>(-2), "-2");
}

TEST(Values, TextsGoIntoStreamsAndHashTables) {
    std::ostringstream out;
    out << CTulStringW(u"Gr\u00fc\u00dfe");
    EXPECT_EQ(out.str(), "Gr\xc3\xbc\xc3\x9f"
                         "e");
    const std::unordered_set<CTulStringW> texts{"a", "b", "a"};
    EXPECT_EQ(texts.size(), 2U);
    EXPECT_TRUE(texts.contains(CTulStringW(u"a")));
}

} // namespace
