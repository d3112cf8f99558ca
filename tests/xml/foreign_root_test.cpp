// Files whose root element no class has.

#include <odfmodel/core/foreign.h>
#include <odfmodel/core/reflection.h>

#include <gtest/gtest.h>

#include <memory>

TEST(ForeignRoot, IsReadAndWrittenWithAllBelowIt) {
    constexpr const char* kXml = "<a:r xmlns:a=\"urn:a\" a:x=\"1\"><!--c-->t<b xmlns=\"urn:b\"> </b></a:r>";
    const struct {
        const char* uri;
        const char* name;
        bool isRoot;
    } cases[] = {{"urn:a", "r", true}, {"urn:a", "s", false}, {"urn:b", "r", false}, {"", "r", false}};
    for (const auto& row : cases) {
        const std::unique_ptr<ODF::CForeignElement> root(ODF::CForeignElement::Create(row.uri, row.name));
        EXPECT_EQ(ODF::FromXml(kXml, *root, ODF::Fidelity::Everything), row.isRoot) << row.uri << row.name;
        if (!row.isRoot) continue;
        const std::string once = ODF::ToXml(*root, {}, ODF::Fidelity::Everything);
        EXPECT_NE(once.find("x=\"1\""), std::string::npos) << once;
        EXPECT_NE(once.find("<!--c-->t<"), std::string::npos) << once;
        const std::unique_ptr<ODF::CForeignElement> again(ODF::CForeignElement::Create(row.uri, row.name));
        EXPECT_TRUE(ODF::FromXml(once, *again, ODF::Fidelity::Everything));
        EXPECT_EQ(ODF::ToXml(*again, {}, ODF::Fidelity::Everything), once);
    }
}
