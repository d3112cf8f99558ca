// Archives that programs read differently, and readers of the output that leave.

#include "cli/command.h"

using namespace test;

namespace {

using Strict = CommandTest<>;

} // namespace

TEST_F(Strict, RefusesWhatOtherProgramsMayReadOtherwise) {
    const std::string sound = writeText("<text:p>x</text:p>");
    WriteFile(file("two.odt"), ReadFile(sound) + ReadFile(sound));
    WritePackage(file("macros.docm"),
                 {{"[Content_Types].xml", "<Types/>"}, {"word/a.xml", "<a/>"}, {"word/image%201.png", "p"}});
    WriteFile(file("two.docm"), ReadFile(file("macros.docm")) + ReadFile(file("macros.docm")));
    for (const std::string name : {"two.odt", "two.docm"}) {
        EXPECT_EQ(RunCommand({"roundtrip", file(name), file("out.zip")}).code, 0) << name;
        for (const std::vector<std::string>& command :
             {std::vector<std::string>{"roundtrip", "--strict", file(name), file("refused.zip")},
              {"roundtrip", "--listed", "--strict", file(name), file("refused.zip")},
              {"check", "--strict", file(name)}}) {
            const Result result = RunCommand(command);
            EXPECT_EQ(result.code, 3) << command[1] << ' ' << name;
            EXPECT_NE((result.err + result.out).find("more than one way"), std::string::npos) << result.err;
        }
    }
    EXPECT_FALSE(std::filesystem::exists(file("refused.zip")));
    EXPECT_EQ(RunCommand({"roundtrip", "--strict", sound, file("out.odt")}).code, 0);
    EXPECT_EQ(RunCommand({"check", "--strict", file("macros.docm")}).code, 0);
}

TEST_F(Strict, AReaderThatLeavesEndsItQuietly) {
    std::string body;
    while (body.size() < 500'000)
        body += "<text:p>a line of text</text:p>";
    const std::string path = writeText(body);
    // The status of the command itself, on a descriptor of its own.
    const Ending ending =
        test::Run({"sh", "-c", "{ \"$0\" text \"$1\"; echo \"ended with $?\" >&3; } 3>&2 | head -c 10",
                   ODFMODEL_COMMAND, path},
                  std::chrono::seconds(60));
    EXPECT_NE(ending.output.find("ended with 4"), std::string::npos) << ending.output;
    EXPECT_EQ(ending.output.find("odfmodel:"), std::string::npos) << ending.output;
}
