// What a hostile file is made of may be long, but costs no more than reading it a few times.

#include "faults/parsing_work.h"
#include "support/files.h"
#include "support/packages.h"

#include <odfmodel/odfmodel.h>
#include <odfmodel/serial/default_handler.h>
#include <odfmodel/serial/sax_reader.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

using namespace ODF;

namespace {

using Reader = std::unique_ptr<CSDSaxReader, decltype(&ReleaseSaxReader)>;

} // namespace

TEST(ParsingWork, OfSomethingLong) {
    constexpr std::size_t kLong = 3'000'000;
    const std::string filling(kLong, 'x');
    std::string longContent[] = {
        test::TextContent("<!--" + filling + "--><text:p/>"),
        test::TextContent("<text:p text:style-name='" + filling + "'/>"),
        test::TextContent("<text:p>" + filling + "</text:p>"),
        test::TextContent("<text:p><?x " + filling + "?></text:p>"),
        test::TextContent("<" + filling + "/>"),
        test::TextContent("<text:p><![CDATA[" + filling + "]]></text:p>"),
        "<!DOCTYPE x [<!ENTITY y '" + filling + "'>]>" + test::TextContent("<text:p/>").substr(38),
    };
    // The other reader leaves a declaration that isn't in plain words to the one whose work is counted.
    for (std::string& xml : longContent)
        if (const std::size_t name = xml.find("UTF-8"); name != std::string::npos)
            xml.replace(name, 5, "Utf-8");
    const test::TemporaryFolder folder;
    CSDDefaultHandler handler;
    const auto inChunks = [&handler](std::size_t size) {
        return [&handler, size](CSDSaxReader& reader, const std::string& xml, const CTulStringW&) {
            reader.SetContentHandler(&handler);
            reader.BeginChunks();
            for (std::size_t at = 0; at < xml.size(); at += size)
                if (!reader.ParseChunk(xml.data() + at, static_cast<int>(std::min(size, xml.size() - at)), 0))
                    return false;
            reader.EndChunks();
            return true;
        };
    };
    const auto intoTree = [](const std::function<bool(CSDObject*)>& parse) {
        const std::unique_ptr<CSDObject> root(ClassOfElement("office:document-content")->create());
        return parse(root.get());
    };
    const std::function<bool(CSDSaxReader&, const std::string&, const CTulStringW&)> routes[] = {
        [&](CSDSaxReader& reader, const std::string&, const CTulStringW& path) {
            return intoTree([&](CSDObject* root) { return reader.ParseFile(path, root); });
        },
        [&](CSDSaxReader& reader, const std::string& xml, const CTulStringW&) {
            return intoTree(
                [&](CSDObject* root) { return reader.ParseMemory(xml.data(), xml.size(), root); });
        },
        [&](CSDSaxReader& reader, const std::string&, const CTulStringW& path) {
            reader.SetContentHandler(&handler);
            return reader.ParseWithHandler(path);
        },
        inChunks(1024),
        inChunks(65'536),
    };
    for (const std::string& xml : longContent) {
        test::WriteFile(folder / "long.xml", xml);
        for (std::size_t route = 0; route < std::size(routes); ++route) {
            const Reader reader(CreateSaxReader(), &ReleaseSaxReader);
            const std::uint64_t before = test::ParsedBytes();
            EXPECT_TRUE(routes[route](*reader, xml, CTulStringW(folder / "long.xml")));
            const std::uint64_t parsed = test::ParsedBytes() - before;
            EXPECT_GE(parsed, xml.size()) << "the count is wrong";
            EXPECT_LE(parsed, xml.size() * 4) << "route " << route << ", " << xml.substr(0, 300);
        }
    }
}

TEST(ParsingWork, EventsOfSmallChunksComeAtOnce) {
    struct Names final : CSDDefaultHandler {
        void startElement(const unsigned short*, const unsigned short*, const unsigned short* name,
                          CSDAttribute*) override {
            last = ToUtf8(name);
        }
        std::string last;
    } names;
    const Reader reader(CreateSaxReader(), &ReleaseSaxReader);
    reader->SetContentHandler(&names);
    reader->BeginChunks();
    ASSERT_TRUE(reader->ParseChunk("<a>", 3, 0));
    for (const char c : {'b', 'c', 'd'}) {
        const std::string tag = "<" + std::string(1000, c) + "/>";
        for (const char& part : tag)
            ASSERT_TRUE(reader->ParseChunk(&part, 1, 0));
        EXPECT_EQ(names.last, std::string(1000, c));
    }
}
