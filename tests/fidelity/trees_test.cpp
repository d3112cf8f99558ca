// Trees of full fidelity: what is written is what was read, and a change changes nothing else.

#include "support/canonical.h"
#include "support/corpus.h"
#include "support/element_xml.h"
#include "support/files.h"
#include "support/packages.h"

#include <odfmodel/core/foreign.h>
#include <odfmodel/core/reflection.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>

namespace {

using ODF::Fidelity;

/// The object for the root element of `xml`; null when no class stands for it.
std::unique_ptr<CSDObject> RootFor(const std::string& xml) {
    const auto [uri, name] = test::RootElement(xml);
    const auto info = ODF::ClassOfElement(std::string(ODF::PrefixOfNamespace(uri)) + ':' + name);
    return std::unique_ptr<CSDObject>(info ? info->create() : nullptr);
}

/// The members of a document that have a tree.
test::Members TreesOf(const test::Sample& sample) {
    test::Members members;
    if (sample.isFlat())
        members[sample.name] = test::ReadFile(sample.path);
    else
        members = test::ReadPackage(sample.path, sample.password);
    std::erase_if(members, [](const auto& member) { return !RootFor(member.second); });
    return members;
}

bool IsElement(const CSDObject& object) {
    return !ODF::IsTextRun(object) && object.GetID() != ODF::kCommentId &&
           object.GetID() != ODF::kProcessingInstructionId;
}

/// An element of a tree, and the numbers of its path as the judge counts them.
struct Element {
    CSDObject* object;
    std::string path;
};

void Collect(CSDObject& object, const std::string& path, std::vector<Element>& out) {
    out.push_back({&object, path});
    int number = 0;
    for (CSDObject* const child : test::ChildrenOf(object))
        if (IsElement(*child)) Collect(*child, path + '.' + std::to_string(++number), out);
}

/// A value that the attribute doesn't have; empty when there is none.
std::string NewValue(const ODF::ClassInfo& info, const ODF::AttributeInfo& attribute,
                     const std::string& present, std::mt19937& random) {
    switch (attribute.type) {
    case ODF::AttributeType::Text:
        return "probe-" + std::to_string(random() % 1000);
    case ODF::AttributeType::Bool:
        return present == "true" ? "false" : "true";
    case ODF::AttributeType::Unsigned:
    case ODF::AttributeType::Signed:
    case ODF::AttributeType::Number:
        return present == "7" ? "8" : "7";
    case ODF::AttributeType::Enumeration:
        break;
    }
    std::vector<std::string> keys = info.keys(attribute.name);
    std::erase(keys, present);
    return keys.empty() ? std::string() : keys[random() % keys.size()];
}

std::string LocalName(std::string_view name) {
    return std::string(name.substr(name.find(':') + 1));
}

/// Sets one attribute to a new value, and tells what then differs; nothing when the element took none.
std::optional<std::string> Change(const Element& element, std::mt19937& random) {
    CSDObject& object = *element.object;
    const auto info = ODF::ClassOf(object);
    const std::vector<ODF::AttributeInfo> attributes =
        info ? info->attributes() : std::vector<ODF::AttributeInfo>();
    if (attributes.empty() || random() % 4 == 0) {
        if (!ODF::SetForeignAttribute(object, "urn:example:probe", "probe:mark", "1")) return std::nullopt;
        return element.path + " mark: \"1\" added";
    }
    const ODF::AttributeInfo& attribute = attributes[random() % attributes.size()];
    CTulStringW present;
    const bool isSet = ODF::GetAttributeText(object, attribute.name, present);
    const std::string value = NewValue(*info, attribute, present.utf8(), random);
    if (value.empty() || !ODF::SetAttributeText(object, attribute.name, value)) return std::nullopt;
    return element.path + ' ' + LocalName(attribute.name) + ": " + '"' + value + '"' +
           (isSet ? " after" : " added");
}

/// What the judge says of an attribute in the form of `Change`: the numbers of the path, the local name of
/// the attribute and what became of it. Other differences stay as they are.
std::string Brief(const std::string& difference) {
    constexpr std::string_view kAttribute = ": attribute ";
    const std::size_t end = difference.find(kAttribute);
    if (end == difference.npos) return difference;
    std::string path;
    for (std::size_t at = difference.find('['); at < end; at = difference.find('[', at + 1))
        path += (path.empty() ? "" : ".") + difference.substr(at + 1, difference.find(']', at) - at - 1);
    const std::size_t name = end + kAttribute.size();
    const std::size_t nameEnd = difference.find(": ", name);
    const std::size_t value = difference.rfind(" before, ");
    return path + ' ' + LocalName(difference.substr(name, nameEnd - name)) + ": " +
           difference.substr(value == difference.npos ? nameEnd + 2 : value + 9);
}

/// All of them in brief. An attribute that a file writes with a namespace that isn't its own, such as
/// `math:fontstyle`, gets its right name when it is set: lost under the one and added under the other.
std::vector<std::string> AllBrief(const std::vector<std::string>& differences) {
    std::vector<std::string> all;
    for (const std::string& difference : differences) {
        std::string brief = Brief(difference);
        const std::string start = brief.substr(0, brief.find(": ") + 2);
        if (brief.ends_with(" added") && !all.empty() && all.back().starts_with(start) &&
            all.back().ends_with(" lost")) {
            all.pop_back();
            brief.replace(brief.size() - 5, 5, "after");
        }
        all.push_back(std::move(brief));
    }
    return all;
}

/// All that the library reads. Left out is a document whose text refers to an external entity: that is never
/// loaded, and what is written has no document type to name it.
std::vector<test::Sample> Samples() {
    std::vector<test::Sample> samples = test::AllSamples();
    std::erase_if(samples,
                  [](const test::Sample& sample) { return sample.name.ends_with("/doctype_entities.odt"); });
    return samples;
}

class TreesOfSample : public testing::TestWithParam<test::Sample> {};

} // namespace

TEST_P(TreesOfSample, AreWrittenAsTheyWereRead) {
    const test::Members members = TreesOf(GetParam());
    EXPECT_TRUE(GetParam().isDamaged() || !members.empty());
    for (const auto& [name, xml] : members) {
        const auto root = RootFor(xml);
        ASSERT_TRUE(ODF::FromXml(xml, *root, Fidelity::Everything)) << name;
        EXPECT_EQ(test::CanonicalDifference(xml, ODF::ToXml(*root, {}, Fidelity::Everything)), "") << name;
    }
}

TEST_P(TreesOfSample, DifferWhereAnAttributeWasSetAndNowhereElse) {
    std::mt19937 random(2718);
    for (const auto& [name, xml] : TreesOf(GetParam())) {
        const auto root = RootFor(xml);
        ASSERT_TRUE(ODF::FromXml(xml, *root, Fidelity::Everything)) << name;
        std::vector<Element> all;
        Collect(*root, "1", all);
        constexpr std::size_t kChanges = 40;
        std::vector<Element> elements; // in document order
        std::sample(all.begin(), all.end(), std::back_inserter(elements), kChanges, random);
        std::vector<std::string> expected;
        for (const Element& element : elements)
            if (auto change = Change(element, random)) expected.push_back(*std::move(change));

        const std::vector<std::string> found = AllBrief(
            test::CanonicalDifferences(xml, ODF::ToXml(*root, {}, Fidelity::Everything), 2 * kChanges));
        EXPECT_EQ(found, expected) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(Samples, TreesOfSample, testing::ValuesIn(Samples()),
                         [](const auto& given) { return test::NameOf(given.param); });
