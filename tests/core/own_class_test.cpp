// A caller's own element class inside a tree: made by the part, read and written by the same drivers.

#include "support/element_xml.h"

#include <odfmodel/core/attribute.h>
#include <odfmodel/core/diagnostics.h>
#include <odfmodel/core/reflection.h>
#include <odfmodel/core/serializer.h>
#include <odfmodel/document/part.h>
#include <odfmodel/elements/elements.h>
#include <odfmodel/serial/sax_reader.h>

#include <gtest/gtest.h>

namespace {

constexpr const char* kTextUri = "urn:oasis:names:tc:opendocument:xmlns:text:1.0";

/// `own:box` with attributes of three kinds, text, paragraphs and boxes.
class Box : public CSDExtObject {
public:
    static constexpr unsigned kId = ODF::kParentAwareId;
    explicit Box(bool isDeclared = true) : CSDExtObject(kId), isDeclared_(isDeclared) {}

    using CSDExtObject::CreateObject;
    CSDObject* CreateObject(const unsigned short* name, int addToList) override {
        CSDObject* object = nullptr;
        if (CTulStringW(name) == "own:box")
            object = new Box(false);
        else if (CTulStringW(name) == "text:p")
            object = ODF::CTextP::Create();
        if (object) SetObject(object, addToList);
        return object;
    }
    void SetParentObj(CSDObject* object) override { parent = object; }
    const unsigned short* GetElemName() const override { return name_; }
    const unsigned short* FindObjectName(CSDObject* child) override {
        return child->GetID() == ODF::CTextP::kId ? paragraph_.c_str() : child->GetElemName();
    }
    bool ReadAttribute(CSDAttribute* attributes) override {
        level = attributes->GetValue(CTulStringW("urn:own"), CTulStringW("level"));
        style = attributes->GetValue(CTulStringW(kTextUri), CTulStringW("style-name"));
        plain = attributes->GetValue(CTulStringW("plain"));
        EXPECT_EQ(attributes->GetValue(CTulStringW(kTextUri), CTulStringW("plain")), nullptr);
        EXPECT_EQ(attributes->GetValue(CTulStringW("style-name")), nullptr)
            << "names stand with their prefix";
        return true;
    }
    bool ReadNodeValue(const unsigned short* const units, unsigned length) override {
        text.Append(units, length);
        return true;
    }
    bool WriteElement(const unsigned short* name, CSDSerializer* serializer,
                      CSDAttribute* attributes) override {
        if (isDeclared_) attributes->AddAttribute(CTulStringW("xmlns:own"), CTulStringW("urn:own"));
        if (!level.IsEmpty()) attributes->AddAttribute(CTulStringW("urn:own"), CTulStringW("level"), level);
        if (!style.IsEmpty())
            attributes->AddAttribute(CTulStringW(kTextUri), CTulStringW("style-name"), style);
        if (!plain.IsEmpty()) {
            attributes->AddAttribute(CTulStringW("plain"), plain);
            EXPECT_EQ(CTulStringW(attributes->GetValue(CTulStringW("plain"))), plain);
        }
        return serializer->WriteObject(name, this, attributes, text.IsEmpty() ? nullptr : text.c_str(), 1);
    }

    CTulStringW level, style, plain, text;
    CSDObject* parent = nullptr;

private:
    bool isDeclared_;
    CTulStringW name_{"own:box"};
    CTulStringW paragraph_{"text:p"};
};

/// Makes a box for the name that no class lists.
class BoxPart : public ODF::CODFPart {
public:
    CSDObject* CreateApplicationObj(const unsigned short* name, int& out) override {
        asked.push_back(ODF::ToUtf8(name));
        EXPECT_EQ(out, 0);
        return CTulStringW(name) == "own:box" ? new Box : nullptr;
    }
    std::vector<std::string> asked;
};

constexpr const char* kDocument =
    R"(<text:section text:name="s" text:display="true" text:condition=""><text:p>before</text:p>)"
    R"(<own:box xmlns:own="urn:own" xmlns:ns1="urn:own" ns1:level="3" text:style-name="S" plain="&lt;&quot;">content)"
    R"(<text:p>inside<text:s/></text:p><own:box plain="inner"/></own:box><text:p>behind</text:p></text:section>)";

constexpr const char* kWritten =
    R"(<text:section text:name="s" text:display="true" text:condition=""><text:p>before</text:p>)"
    R"(<own:box xmlns:ns1="urn:own" xmlns:own="urn:own" ns1:level="3" text:style-name="S" )"
    R"(plain="&lt;&quot;">content<text:p>inside<text:s/></text:p><own:box plain="inner"/></own:box>)"
    R"(<text:p>behind</text:p></text:section>)";

/// Reads `xml` below a section of the part.
std::unique_ptr<CSDObject> ReadSection(std::string_view xml, ISDPart& part) {
    auto root = test::Make("text:section");
    root->SetRootpart(&part);
    EXPECT_TRUE(ODF::FromXml(test::Declared(xml), *root));
    return root;
}

TEST(OwnClass, IsReadAndWrittenInsideATree) {
    std::string renamed = kDocument; // another prefix of a known namespace is resolved
    for (std::size_t at = 0; (at = renamed.find("text:", at)) != std::string::npos;)
        renamed.replace(at, 5, "t:");
    renamed.insert(renamed.find(' '), std::string(" xmlns:t=\"") + kTextUri + '"');
    for (const std::string& xml : {std::string(kDocument), renamed}) {
        BoxPart part;
        const auto root = ReadSection(xml, part);
        const auto children = test::ChildrenOf(*root);
        ASSERT_EQ(children.size(), 3U);
        ASSERT_EQ(children[1]->GetID(), Box::kId);
        auto& box = static_cast<Box&>(*children[1]);
        EXPECT_EQ(box.level, "3");
        EXPECT_EQ(box.style, "S");
        EXPECT_EQ(box.plain, "<\"") << "unescaped on reading";
        EXPECT_EQ(box.text, "content");
        EXPECT_EQ(box.parent, root.get());
        EXPECT_EQ(box.GetRootpart(), &part);
        const auto inner = test::ChildrenOf(box);
        ASSERT_EQ(inner.size(), 2U);
        EXPECT_EQ(inner[1]->GetRootpart(), &part);
        EXPECT_EQ(static_cast<Box*>(inner[1])->parent, &box);
        EXPECT_EQ(part.asked, (std::vector<std::string>{"own:box"}));

        box.plain = CTulStringW("&lt;&quot;").c_str(); // what is handed over is escaped by the class
        EXPECT_EQ(test::Written(*root), kWritten);
    }
}

TEST(OwnClass, MayBeTheRoot) {
    Box root;
    BoxPart part;
    root.SetRootpart(&part);
    ODF::Diagnostics diagnostics;
    CSDSaxReader* const reader = CreateSaxReader();
    reader->SetDiagnostics(&diagnostics, "m");
    const std::string xml =
        test::Declared(R"(<own:box xmlns:own="urn:own" plain="p">t<text:p/><text:h/><text:p/></own:box>)");
    EXPECT_TRUE(reader->ParseMemory(xml.data(), xml.size(), &root));
    EXPECT_TRUE(reader->HasMatchedRoot());
    ReleaseSaxReader(reader);
    EXPECT_EQ(root.GetChildCount(), 2U);
    EXPECT_EQ(diagnostics.unknownElements().count("text:h"), 1U);
    EXPECT_EQ(test::Written(root), R"(<own:box xmlns:own="urn:own" plain="p">t<text:p/><text:p/></own:box>)");
}

TEST(OwnClass, ALeafDoesNotAskThePart) {
    BoxPart part;
    ReadSection(
        R"(<text:section><text:page-sequence/><text:p><text:s><own:box xmlns:own="urn:own"/></text:s></text:p>)"
        R"(<x:y xmlns:x="urn:x"><own:box xmlns:own="urn:own"/></x:y></text:section>)",
        part);
    EXPECT_EQ(part.asked, (std::vector<std::string>{"text:page-sequence", "x:y"}));
}

/// Writes the attributes that it is given.
class Bag : public CSDCustomObject {
public:
    using Attributes = std::vector<std::array<const char*, 3>>;
    explicit Bag(std::string_view name, Attributes attributes, const char* text = nullptr)
        : attributes_(std::move(attributes)), text_(text) {
        SetElemName(name);
    }
    bool WriteElement(const unsigned short* name, CSDSerializer* serializer,
                      CSDAttribute* attributes) override {
        for (const auto& [uri, local, value] : attributes_) {
            if (uri)
                attributes->AddAttribute(CTulStringW(uri), CTulStringW(local), CTulStringW(value));
            else
                attributes->AddAttribute(CTulStringW(local), CTulStringW(value));
        }
        return serializer->WriteObject(name, this, attributes, text_ ? CTulStringW(text_).c_str() : nullptr,
                                       1);
    }

private:
    Attributes attributes_;
    const char* text_;
};

const std::string kDeclared = std::string(" xmlns:text=\"") + kTextUri + '"';

const struct {
    std::string_view name;
    Bag::Attributes attributes;
    std::string written;
    const char* text = nullptr;
} kBags[] = {
    {"a", {{nullptr, "x", "1 &lt; &#65;&#x42;&apos;"}}, R"(<a x="1 &lt; &#65;&#x42;&apos;"/>)"},
    // What would break the file is escaped all the same.
    {"a",
     {{nullptr, "x", "<&\"> &nbsp; &#0; &#xD800; &;"}},
     R"(<a x="&lt;&amp;&quot;&gt; &amp;nbsp; &amp;#0; &amp;#xD800; &amp;;"/>)"},
    {"a", {{nullptr, "x", "\t\n\r\x01"}}, "<a x=\"&#9;&#10;&#13;\xEF\xBF\xBD\"/>"},
    {"a", {}, "<a>&lt;&amp;&#13;&gt;</a>", "<&\r>"},
    // Names twice, names that are none.
    {"a", {{nullptr, "x", "1"}, {nullptr, "x", "2"}, {nullptr, "b c", "3"}}, R"(<a x="1"/>)"},
    {"a", {{nullptr, "", "4"}}, "<a/>"},
    {"a b", {}, ""},
    // Namespaces are declared where they are used.
    {"text:own", {{kTextUri, "x", "1"}}, "<text:own" + kDeclared + " text:x=\"1\"/>"},
    {"own", {{kTextUri, "x", "1"}}, "<own" + kDeclared + " text:x=\"1\"/>"},
    {"own", {{nullptr, "text:x", "1"}}, "<own" + kDeclared + " text:x=\"1\"/>"},
    {"own",
     {{"urn:a", "x", "1"}, {"urn:b", "x", "2"}, {"urn:a", "y", "3"}},
     R"(<own xmlns:ns1="urn:a" xmlns:ns2="urn:b" ns1:x="1" ns2:x="2" ns1:y="3"/>)"},
    {"own",
     {{"http://www.w3.org/XML/1998/namespace", "space", "preserve"}},
     R"(<own xml:space="preserve"/>)"},
    // A class that declares what the driver declares too.
    {"text:own",
     {{nullptr, "xmlns:text", kTextUri}, {kTextUri, "x", "1"}},
     "<text:own" + kDeclared + " text:x=\"1\"/>"},
};

TEST(OwnClass, AttributesGoIntoTheFileAsTheyStand) {
    for (const auto& row : kBags) {
        Bag bag(row.name, row.attributes, row.text);
        const std::string xml = ODF::ToXml(bag);
        EXPECT_EQ(xml.substr(xml.find('\n') + 1), row.written);
    }
}

} // namespace
