// What all element objects share: children, names, ownership, and the values besides the attributes.

#include "support/element_xml.h"
#include "support/small_stack.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/document/part.h>
#include <odfmodel/elements/elements.h>
#include <odfmodel/serial/sax_reader.h>

#include <gtest/gtest.h>

#include <functional>

namespace {

using test::ChildrenOf;
using test::Make;

/// Counts what it is asked and makes nothing.
class CountingPart : public ODF::CODFPart {
public:
    CSDObject* CreateApplicationObj(const unsigned short*, int&) override {
        ++asked;
        return nullptr;
    }
    int asked = 0;
};

/// A caller's own element; notes its parent and its end.
class OwnElement : public CSDExtObject {
public:
    explicit OwnElement(unsigned id, std::vector<std::string>* log = nullptr, std::string name = {})
        : CSDExtObject(id), log_(log), name_(std::move(name)) {}
    ~OwnElement() override {
        if (log_) log_->push_back(name_);
    }
    void SetParentObj(CSDObject* object) override { parent = object; }
    CSDObject* parent = nullptr;

private:
    std::vector<std::string>* log_;
    std::string name_;
};

class Plain : public CSDObject {
public:
    Plain() : CSDObject(7) {}
};

class Custom : public CSDCustomObject {};

TEST(Object, ChildrenAreMadeOnceTheMapIsKnown) {
    Plain other;
    const std::function<void(CSDObject&)> calls[] = {
        [](CSDObject& o) { o.InitMap(true); }, [](CSDObject& o) { o.InitMap(false); },
        [](CSDObject& o) { o.ReadAttribute(nullptr); }, [&](CSDObject& o) { o.FindObjectName(&other); }};
    for (const auto& call : calls) {
        CountingPart part;
        const auto list = Make("text:list");
        list->SetRootpart(&part);
        EXPECT_EQ(list->CreateObject("text:list-item", 1), nullptr) << "its map isn't known yet";
        EXPECT_EQ(part.asked, 0);
        call(*list);
        EXPECT_EQ(list->CreateObject("text:p", 1), nullptr);
        EXPECT_EQ(list->CreateObject("list-item", 1), nullptr);
        EXPECT_EQ(part.asked, 2);
        EXPECT_EQ(list->GetObjectList(), nullptr);
        EXPECT_NE(list->CreateObject(u"text:list-item", 1), nullptr);
    }
}

TEST(Object, ChildrenStandInTheOrderOfTheirMaking) {
    CountingPart part;
    const auto body = Make("office:text");
    EXPECT_FALSE(body->HasChildList());
    body->SetRootpart(&part);
    body->InitMap(true);
    CSDObject* const first = body->CreateObject("text:p", 1);
    CSDObject* const second = static_cast<ODF::COfficeText&>(*body).SetTextP();
    CSDObject* const heading = body->CreateObject("text:h", 1);
    const std::unique_ptr<CSDObject> apart(body->CreateObject("text:p", 0));
    EXPECT_EQ(ChildrenOf(*body), (std::vector<CSDObject*>{first, second, heading}));
    EXPECT_EQ(static_cast<ODF::COfficeText&>(*body).GetChildCount(), 3U);
    EXPECT_TRUE(body->HasChildList());
    for (const CSDObject* const child : {first, second, heading, static_cast<CSDObject*>(apart.get())})
        EXPECT_EQ(child->GetRootpart(), &part);

    EXPECT_EQ(body->GetObjectByID(ODF::CTextP::kId), first);
    EXPECT_EQ(body->GetObjectByID(ODF::CTextSpan::kId), nullptr);
    std::vector<CSDObject*> out{nullptr, nullptr};
    EXPECT_EQ(body->GetObjectListByID(ODF::CTextP::kId, out), 2U);
    EXPECT_EQ(out, (std::vector<CSDObject*>{first, second}));
    EXPECT_EQ(body->GetObjectListByID(ODF::CTextSpan::kId, out), 0U);
    EXPECT_TRUE(out.empty());
}

TEST(Object, NamesOfChildren) {
    const auto paragraph = Make("text:p");
    const auto name = [&](CSDObject* child) { return paragraph->FindObjectName(child); };
    EXPECT_EQ(name(static_cast<ODF::CTextP&>(*paragraph).SetText()), nullptr);
    EXPECT_EQ(name(nullptr), nullptr);
    Custom named;
    named.SetElemName(u"own:name");
    EXPECT_EQ(CTulStringW(name(&named)), "own:name") << "a child without a row gives its own name";
    EXPECT_EQ(CTulStringW(Make("text:s")->FindObjectName(&named)), "own:name");
}

TEST(Object, AParentAwareChildIsToldItsParent) {
    const auto parent = Make("text:p");
    auto* const aware = new OwnElement(ODF::kParentAwareId);
    auto* const plain = new OwnElement(5);
    OwnElement apart(ODF::kParentAwareId);
    parent->SetObject(aware, 1);
    parent->SetObject(plain, 1);
    parent->SetObject(&apart, 0);
    EXPECT_EQ(aware->parent, parent.get());
    EXPECT_EQ(plain->parent, nullptr);
    EXPECT_EQ(apart.parent, parent.get());
    EXPECT_EQ(ChildrenOf(*parent).size(), 2U);
}

TEST(Object, AParentDeletesItsChildrenInListOrder) {
    std::vector<std::string> log;
    {
        OwnElement root(1, &log, "root");
        auto* const a = new OwnElement(2, &log, "a");
        auto* const b = new OwnElement(2, &log, "b");
        root.SetObject(a, 1);
        root.SetObject(b, 1);
        a->SetObject(new OwnElement(2, &log, "a1"), 1);
        a->SetObject(new OwnElement(2, &log, "a2"), 1);
        b->SetObject(new OwnElement(2, &log, "b1"), 1);
        OwnElement apart(2, &log, "apart");
        a->SetObject(&apart, 0);
    }
    EXPECT_EQ(log, (std::vector<std::string>{"apart", "root", "a", "a1", "a2", "b", "b1"}));
}

/// Objects with and without a table, with and without attributes.
std::vector<std::unique_ptr<CSDObject>> Kinds() {
    std::vector<std::unique_ptr<CSDObject>> kinds;
    kinds.push_back(Make("text:p"));
    kinds.push_back(test::Read(R"(<text:p text:style-name="S" text:id="i"/>)"));
    kinds.push_back(test::Read(R"(<style:graphic-properties draw:stroke="dash" fo:padding="1cm"/>)"));
    kinds.push_back(Make("text:line-break"));
    kinds.push_back(Make("dc:date"));
    kinds.emplace_back(CSDStringValueObject::Create(ODF::kTextRunId));
    kinds.push_back(std::make_unique<Plain>());
    kinds.push_back(std::make_unique<OwnElement>(9));
    return kinds;
}

TEST(Object, TheCallersValuesAreKeptBesideTheRestAndNotWritten) {
    for (const auto& object : Kinds()) {
        const std::string before = test::Written(*object);
        EXPECT_EQ(object->GetErrorCode(), 0U);
        EXPECT_FALSE(object->GetIsFallback());
        object->SetErrorCode(0xFFFFFFFF);
        object->SetIsFallback(true);
        std::vector<CTulStringW>* const first = object->GetMaintainElementList();
        ASSERT_NE(first, nullptr);
        EXPECT_TRUE(first->empty());
        first->push_back(u"kept");
        object->SetMaintainElementList(first);
        EXPECT_EQ(object->GetMaintainElementList()->size(), 1U) << "the same list again";
        auto* const second = new std::vector<CTulStringW>{u"x", u"y"};
        object->SetMaintainElementList(second);
        EXPECT_EQ(object->GetMaintainElementList(), second);
        EXPECT_EQ(object->GetErrorCode(), 0xFFFFFFFFU);
        EXPECT_TRUE(object->GetIsFallback());
        EXPECT_EQ(test::Written(*object), before);
        object->SetIsFallback(false);
        object->SetMaintainElementList(nullptr);
        EXPECT_TRUE(object->GetMaintainElementList()->empty());
        EXPECT_FALSE(object->GetIsFallback());
        EXPECT_EQ(object->GetErrorCode(), 0xFFFFFFFFU);
        object->SetErrorCode(0);
        EXPECT_EQ(object->GetErrorCode(), 0U);
    }
}

TEST(Object, AttributesAndTheRestDoNotDisturbEachOther) {
    const auto object = Make("style:graphic-properties");
    const auto attributes = ODF::ClassOf(*object)->attributes();
    object->SetErrorCode(8);
    // From both ends towards the middle, so that every new value moves others.
    for (std::size_t i = 0; i < attributes.size(); ++i) {
        const std::size_t at = i % 2 ? attributes.size() - 1 - i / 2 : i / 2;
        ASSERT_TRUE(ODF::SetAttributeText(*object, attributes[at].name, "7"));
        if (i == 50) object->GetMaintainElementList()->push_back(u"m");
        ASSERT_EQ(object->GetErrorCode(), 8U);
    }
    EXPECT_EQ(object->GetMaintainElementList()->size(), 1U);
    const auto written = ODF::AttributesOf(*object);
    ASSERT_EQ(written.size(), attributes.size());
    for (std::size_t i = 0; i < written.size(); ++i) {
        EXPECT_EQ(written[i].name, attributes[i].name);
        if (attributes[i].type == ODF::AttributeType::Text) {
            EXPECT_EQ(written[i].value, "7");
        }
    }
}

TEST(Object, DeepTreesNeedNoDeepStack) {
    constexpr unsigned kDepth = 100'000;
    test::OnSmallStack([] {
        CountingPart part;
        auto root = Make("draw:g");
        auto* at = static_cast<ODF::CDrawG*>(root.get());
        for (unsigned i = 1; i < kDepth; ++i)
            at = at->SetDrawG();
        at->SetDrawName(u"deepest");
        root->SetReNewRootPart(&part);
        EXPECT_EQ(at->GetRootpart(), &part);

        const std::string xml = ODF::ToXml(*root);
        EXPECT_TRUE(xml.ends_with("</draw:g></draw:g>"));
        const auto copy = Make("draw:g");
        CSDSaxReader* const reader = CreateSaxReader();
        ODF::Limits limits;
        limits.depth = kDepth;
        reader->SetLimits(limits);
        EXPECT_TRUE(reader->ParseMemory(xml.data(), xml.size(), copy.get()));
        ReleaseSaxReader(reader);
        EXPECT_EQ(ODF::ToXml(*copy), xml);
        root.reset();
    });
}

TEST(Object, SetReNewRootPartReachesEveryObject) {
    CountingPart part;
    const auto root = test::Read("<text:p>a<text:span>b<text:s/></text:span><text:s/></text:p>");
    root->SetReNewRootPart(&part);
    root->SetRootpart(nullptr); // the object alone
    const auto children = ChildrenOf(*root);
    ASSERT_EQ(children.size(), 3U);
    for (const CSDObject* const object :
         {children[0], children[1], children[2], ChildrenOf(*children[1]).at(1)})
        EXPECT_EQ(object->GetRootpart(), &part);
}

} // namespace
