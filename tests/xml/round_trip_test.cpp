// Random trees over all classes: what is written reads back as the same.

#include "support/element_xml.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/core/value_objects.h>

#include <gtest/gtest.h>

#include <array>
#include <random>

namespace {

/// Makes trees from a seed. Values come from all corners: markup, white space, controls, long texts, bad
/// numbers.
class Generator {
public:
    explicit Generator(unsigned seed) : random_(seed) {}

    void fill(CSDObject& object, unsigned depth = 0) {
        const auto info = ODF::ClassOf(object);
        const unsigned chance = below(4) == 0 ? 100 : 10 + below(40);
        for (const ODF::AttributeInfo& attribute : info->attributes())
            if (attribute.isListed && below(100) < chance)
                ODF::SetAttributeText(object, attribute.name, value(*info, attribute));
        auto* const mixed = dynamic_cast<CSDMixedContentObject*>(&object);
        if (mixed && below(20) == 0)
            mixed->Setval(text());
        else if (!mixed)
            fillValue(object);

        auto rows = info->children();
        std::erase_if(rows, [](const ODF::ChildInfo& row) { return !row.isListed; });
        const unsigned count = rows.empty() || depth > 6 || objects_ > 200 ? 0 : below(depth < 3 ? 12 : 4);
        object.InitMap(true);
        for (unsigned i = 0; i <= count; ++i) {
            if (mixed && below(2) == 0) mixed->SetText(text());
            if (i == count) break;
            ++objects_;
            fill(*object.CreateObject(rows[below(static_cast<unsigned>(rows.size()))].name, 1), depth + 1);
        }
    }
    unsigned objects() const { return objects_; }

private:
    unsigned below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }

    void fillValue(CSDObject& object) {
        if (auto* const date = dynamic_cast<CSDDateTimeValueObject*>(&object)) {
            const auto field = [this](unsigned bound) { return static_cast<unsigned short>(below(bound)); };
            date->Setval(
                {field(10'000), field(13), 0, field(32), field(25), field(61), field(61), field(1000)});
        } else if (auto* const held = dynamic_cast<CSDStringValueObject*>(&object); held && below(3) != 0) {
            held->Setval(text());
        }
    }

    /// Never empty, so that no tree holds an empty run, which no file can tell.
    CTulStringW text() {
        static constexpr std::array<std::u16string_view, 16> kPieces = {
            u"word", u" ", u"\t",    u"\n",  u"\r",           u"<",          u">",    u"&",
            u"\"",   u"'", u"&amp;", u"]]>", u"\u00E4\u20AC", u"\U0001F600", u"\x01", u"of:=[.A1]"};
        std::u16string result;
        for (unsigned i = below(6) == 0 ? 60 : 1 + below(4); i > 0; --i) {
            if (below(12) == 0)
                result += static_cast<char16_t>(1 + below(0xFFFF)); // half of a pair, perhaps
            else
                result += kPieces[below(kPieces.size())];
        }
        return CTulStringW(result);
    }

    std::string value(const ODF::ClassInfo& info, const ODF::AttributeInfo& attribute) {
        static constexpr std::array<const char*, 10> kNumbers = {
            "0", "1", "-1", "4294967295", "-2147483648", "0.000001", "-12.5cm", "1e30", "x", ""};
        switch (attribute.type) {
        case ODF::AttributeType::Text:
            return below(5) == 0 ? "" : text().utf8();
        case ODF::AttributeType::Bool:
            return below(2) ? "true" : "no";
        case ODF::AttributeType::Enumeration: {
            auto keys = info.keys(attribute.name);
            std::erase_if(keys,
                          [&](const std::string& key) { return !test::IsListed(info, attribute, key); });
            return below(8) == 0 ? "none of them" : keys[below(static_cast<unsigned>(keys.size()))];
        }
        default:
            return below(2) ? kNumbers[below(kNumbers.size())]
                            : std::to_string(below(1'000'000)) + '.' + std::to_string(below(1'000'000));
        }
    }

    std::mt19937 random_;
    unsigned objects_ = 1;
};

/// Elements of a tree, text runs left out: neighbouring ones are one after reading.
unsigned Elements(const CSDObject& object) {
    unsigned count = ODF::IsTextRun(object) ? 0 : 1;
    for (const CSDObject* const child : test::ChildrenOf(object))
        count += Elements(*child);
    return count;
}

/// Writes a tree and reads it again; both are written alike.
unsigned CheckRoundTrip(const ODF::ClassInfo& info, unsigned seed) {
    SCOPED_TRACE(info.className());
    const std::unique_ptr<CSDObject> made(info.create());
    Generator generator(seed);
    generator.fill(*made);
    const std::string once = ODF::ToXml(*made);
    const std::unique_ptr<CSDObject> read(info.create());
    EXPECT_TRUE(ODF::FromXml(once, *read)) << once;
    EXPECT_EQ(ODF::ToXml(*read), once) << seed;
    EXPECT_EQ(Elements(*read), generator.objects()) << seed;
    return generator.objects();
}

TEST(RoundTrip, RandomTrees) {
    unsigned objects = 0;
    for (const ODF::ClassInfo& info : ODF::AllClasses())
        if (test::IsListed(info)) objects += CheckRoundTrip(info, info.id());
    EXPECT_GT(objects, 15'000U);
    for (unsigned seed = 1; seed <= 60; ++seed)
        for (const char* const root :
             {"office:document-content", "office:document-styles", "office:text", "text:p"})
            CheckRoundTrip(*ODF::ClassOfElement(root), seed);
}

} // namespace
