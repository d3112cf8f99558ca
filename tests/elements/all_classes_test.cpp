// What holds for every class: attributes, children and defaults, as its table lists them.

#include "support/element_xml.h"

#include <odfmodel/core/foreign.h>
#include <odfmodel/core/reflection.h>

#include <gtest/gtest.h>

#include <map>

namespace {

using ODF::AttributeType;

/// Values of an attribute that come back as they are, from the whole of its range.
std::vector<std::string> ValuesOf(const ODF::ClassInfo& info, const ODF::AttributeInfo& attribute) {
    switch (attribute.type) {
    case AttributeType::Text:
        return {"x", "a<b>&\"'\t\n", "\xC3\xA4", std::string(100, 'y')};
    case AttributeType::Bool:
        return {}; // two ways of writing, see below
    case AttributeType::Unsigned:
        return {"0", "7", "4294967295"};
    case AttributeType::Signed:
        return {"0", "-7", "2147483647", "-2147483648"};
    case AttributeType::Number:
        return {"0", "0.25", "-3.5", "1000000"};
    case AttributeType::Enumeration:
        return info.keys(attribute.name);
    }
    return {};
}

TEST(AllClasses, EveryValueOfEveryAttributeComesBack) {
    std::size_t checked = 0;
    for (const ODF::ClassInfo& info : ODF::AllClasses()) {
        for (const ODF::AttributeInfo& attribute : info.attributes()) {
            SCOPED_TRACE(std::string(info.className()) + " " + std::string(attribute.name));
            const auto check = [&](const std::string& in, const std::vector<std::string>& written) {
                const std::unique_ptr<CSDObject> object(info.create());
                ASSERT_TRUE(ODF::SetAttributeText(*object, attribute.name, in));
                const std::string value = test::AttributeOf(*object, attribute.name);
                EXPECT_NE(std::find(written.begin(), written.end(), value), written.end())
                    << in << " gives " << value;
                const std::unique_ptr<CSDObject> read(info.create());
                const ODF::Fidelity fidelity =
                    test::IsListed(info, attribute, in) ? ODF::Fidelity::Listed : ODF::Fidelity::Everything;
                ASSERT_TRUE(ODF::FromXml(ODF::ToXml(*object, {}, fidelity), *read, fidelity));
                EXPECT_EQ(test::AttributeOf(*read, attribute.name), value);
                ++checked;
            };
            for (const std::string& value : ValuesOf(info, attribute))
                check(value, {value});
            if (attribute.type == AttributeType::Bool) {
                check("true", {"1", "true"});
                check("0", {"0", "false"});
            }
        }
    }
    EXPECT_GT(checked, 17'000U);
}

TEST(AllClasses, AttributesAreWrittenOnceAndOnlyWhenSet) {
    for (const ODF::ClassInfo& info : ODF::AllClasses()) {
        SCOPED_TRACE(info.className());
        const std::unique_ptr<CSDObject> object(info.create());
        std::map<std::string_view, int> expected;
        for (const ODF::AttributeInfo& attribute : info.attributes()) {
            if (attribute.isOptional) {
                EXPECT_EQ(test::AttributeOf(*object, attribute.name), "(absent)") << attribute.name;
            }
            ASSERT_TRUE(ODF::SetAttributeText(*object, attribute.name, "1"));
            expected[attribute.name] = 1;
        }
        std::map<std::string_view, int> written;
        for (const ODF::AttributeText& attribute : ODF::AttributesOf(*object))
            ++written[attribute.name];
        EXPECT_EQ(written, expected);
        const std::string xml = test::Written(*object);
        for (const auto& [name, count] : expected) {
            const std::size_t at = xml.find(' ' + std::string(name) + "=\"");
            EXPECT_NE(at, std::string::npos) << name;
            EXPECT_EQ(xml.find(' ' + std::string(name) + "=\"", at + 1), std::string::npos) << name;
        }
    }
}

/// Required attributes that start as something else than empty, 0 or their first key.
const std::map<std::string, std::string> kDefaults = {
    {"text:chapter@text:display", "name"}, {"table:label-range@table:orientation", "column"},
    {"table:insertion@table:type", "row"}, {"table:deletion@table:type", "row"},
    {"draw:hatch@draw:style", "single"},
};

/// Required texts that are written only when they aren't empty.
bool IsLeftOutWhenEmpty(std::string_view element, std::string_view attribute) {
    static const std::map<std::string_view, std::vector<std::string_view>> kRows = {
        {"style:text-properties", {"text:condition"}},
        {"table:table-template", {"text:name", "text:style-name"}}};
    static const std::vector<std::string_view> kParts = {
        "table:first-row", "table:last-row", "table:first-column", "table:last-column", "table:body",
        "table:even-rows", "table:odd-rows", "table:even-columns", "table:odd-columns"};
    if (std::find(kParts.begin(), kParts.end(), element) != kParts.end()) return true;
    const auto row = kRows.find(element);
    return row != kRows.end() &&
           std::find(row->second.begin(), row->second.end(), attribute) != row->second.end();
}

TEST(AllClasses, RequiredAttributesHaveADefault) {
    std::size_t defaults = 0;
    for (const ODF::ClassInfo& info : ODF::AllClasses()) {
        const std::unique_ptr<CSDObject> fresh(info.create());
        std::string xml = "<" + std::string(info.elementName()) + "/>";
        const auto read = test::Read(xml);
        for (const ODF::AttributeInfo& attribute : info.attributes()) {
            const std::string name = std::string(info.elementName()) + "@" + std::string(attribute.name);
            std::string expected = "(absent)";
            if (const auto row = kDefaults.find(name); row != kDefaults.end()) {
                expected = row->second;
                ++defaults;
            } else if (!attribute.isOptional && !IsLeftOutWhenEmpty(info.elementName(), attribute.name)) {
                if (attribute.type == AttributeType::Enumeration)
                    expected = info.keys(attribute.name).at(0);
                else
                    expected = attribute.type == AttributeType::Text ? "" : "0";
            }
            EXPECT_EQ(test::AttributeOf(*fresh, attribute.name), expected) << name;
            EXPECT_EQ(test::AttributeOf(*read, attribute.name), expected) << name;
        }
    }
    EXPECT_EQ(defaults, kDefaults.size());
}

TEST(AllClasses, EveryChildRowMakesTheClassOfItsId) {
    std::size_t rows = 0;
    std::map<unsigned, std::string_view> elements;
    for (const ODF::ClassInfo& info : ODF::AllClasses())
        elements[info.id()] = info.elementName();
    for (const ODF::ClassInfo& info : ODF::AllClasses()) {
        SCOPED_TRACE(info.className());
        const std::unique_ptr<CSDObject> object(info.create());
        object->InitMap(true);
        std::string inside;
        std::size_t listed = 0;
        for (const ODF::ChildInfo& row : info.children()) {
            if (!row.isListed) {
                EXPECT_EQ(object->CreateObject(row.name, 1), nullptr) << row.name;
                continue;
            }
            ++listed;
            if (test::IsListed(info)) ++rows;
            CSDObject* const child = object->CreateObject(row.name, 1);
            ASSERT_NE(child, nullptr) << row.name;
            EXPECT_EQ(child->GetID(), row.id);
            EXPECT_EQ(CTulStringW(object->FindObjectName(child)), row.name);
            ASSERT_TRUE(ODF::ClassOf(*child));
            EXPECT_EQ(ODF::ClassOf(*child)->id(), row.id);
            if (row.name != "officeooo:annotation") {
                EXPECT_EQ(row.name, elements[row.id]);
            }
            inside += test::Bare(ODF::ToXml(*child, row.name));
        }
        const std::string name(info.elementName());
        std::string xml = test::Written(*object);
        if (!inside.empty()) {
            EXPECT_EQ(xml.substr(xml.find('>') + 1), inside + "</" + name + ">");
        }
        const std::unique_ptr<CSDObject> read(info.create());
        ASSERT_TRUE(ODF::FromXml(ODF::ToXml(*object), *read));
        EXPECT_EQ(test::ChildrenOf(*read).size(), listed);
        EXPECT_EQ(test::Written(*read), xml);
        EXPECT_EQ(object->CreateObject("text:no-such", 1), nullptr);
    }
    EXPECT_EQ(rows, 7421U);
}

/// A word that any attribute of the type takes and writes as it is.
std::string Plain(const ODF::ClassInfo& info, const ODF::AttributeInfo& attribute) {
    if (attribute.type == AttributeType::Bool) return "true";
    return attribute.type == AttributeType::Enumeration ? info.keys(attribute.name).back() : "3";
}

TEST(AllClasses, WhatLaterVersionsAddedIsTypedWithFullFidelityAlone) {
    std::size_t attributes = 0;
    std::size_t children = 0;
    for (const ODF::ClassInfo& info : ODF::AllClasses()) {
        SCOPED_TRACE(info.className());
        const std::string bare = "<" + std::string(info.elementName()) + "/>";
        std::string xml = bare.substr(0, bare.size() - 2);
        std::vector<std::pair<std::string_view, std::string>> set;
        for (const ODF::AttributeInfo& attribute : info.attributes())
            if (!attribute.isListed) {
                set.emplace_back(attribute.name, Plain(info, attribute));
                xml += " " + std::string(attribute.name) + "=\"" + set.back().second + "\"";
            }
        std::vector<ODF::ChildInfo> added = info.children();
        std::erase_if(added, [&](const ODF::ChildInfo& row) { return row.isListed; });
        if (set.empty() && added.empty()) continue;
        xml += added.empty() ? "/>" : ">";
        for (const ODF::ChildInfo& row : added)
            xml += "<" + std::string(row.name) + "/>";
        if (!added.empty()) xml += "</" + std::string(info.elementName()) + ">";

        const auto whole = test::Read(xml, ODF::Fidelity::Everything);
        EXPECT_TRUE(ODF::ForeignAttributesOf(*whole).empty());
        for (const auto& [name, value] : set)
            EXPECT_EQ(ODF::AttributeOf(*whole, name), value) << name;
        const std::vector<CSDObject*> made = test::ChildrenOf(*whole);
        ASSERT_EQ(made.size(), added.size());
        for (std::size_t i = 0; i < made.size(); ++i)
            EXPECT_EQ(made[i]->GetID(), added[i].id) << added[i].name;
        // Attributes come back in the order of the table, which is the one here.
        EXPECT_EQ(test::Written(*whole, ODF::Fidelity::Everything), xml);

        EXPECT_EQ(test::RoundTrip(xml), test::RoundTrip(bare));
        attributes += set.size();
        children += added.size();
    }
    EXPECT_GT(attributes, 400U);
    EXPECT_GT(children, 150U);
}

} // namespace
