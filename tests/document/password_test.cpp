// Passwords: what is kept of them, and how an encrypted package answers.

#include "support/corpus.h"
#include "support/packages.h"
#include "support/workspace.h"

#include <odfmodel/odfmodel.h>

using namespace ODF;
using test::Sample;

namespace {

class Encrypted : public test::InWorkspace<testing::TestWithParam<Sample>> {};

std::vector<Sample> EncryptedSamples() {
    std::vector<Sample> samples = test::GoodSamples();
    std::erase_if(samples, [](const Sample& sample) { return !sample.isEncrypted(); });
    return samples;
}

} // namespace

TEST_P(Encrypted, OpensWithItsPasswordAlone) {
    const Sample& sample = GetParam();
    CODFDoc document;
    const auto expect = [&](Status status) {
        EXPECT_EQ(document.Open(sample.path), status == Status::Ok ? 1 : 0);
        EXPECT_EQ(document.GetDiagnostics().status(), status) << ToText(document.GetDiagnostics().status());
        EXPECT_EQ(document.GetContentClass() != nullptr, status == Status::Ok);
    };
    expect(Status::PasswordNeeded);
    for (const auto& [password, status] : std::initializer_list<std::pair<std::string, Status>>{
             {"", Status::PasswordNeeded},
             {sample.password + "x", Status::WrongPassword},
             {sample.password.substr(1), Status::WrongPassword},
             {sample.password, Status::Ok}}) {
        document.SetPassword(password);
        expect(status);
    }
    expect(Status::PasswordNeeded); // a password serves one opening
    const CTulStringW kept(sample.password);
    document.SetPassword(kept.c_str());
    expect(Status::Ok);

    const std::string clear = file("clear" + sample.path.substr(sample.path.rfind('.')));
    ASSERT_EQ(document.Save(clear), 1);
    document.SetPassword("not needed");
    EXPECT_EQ(document.Open(clear), 1) << "saved in clear";
    const test::Members members = test::ReadPackage(clear);
    EXPECT_EQ(members.at("META-INF/manifest.xml").find("encryption-data"), std::string::npos);
    EXPECT_NE(members.at("content.xml").find("<office:document-content"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Samples, Encrypted, testing::ValuesIn(EncryptedSamples()),
                         [](const auto& given) { return test::NameOf(given.param); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Encrypted);
