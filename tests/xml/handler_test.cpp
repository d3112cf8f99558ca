// Reading XML into a content handler: the events, parsing in chunks, the handler that is installed.

#include "support/files.h"
#include "xml/reading.h"

#include <odfmodel/core/attribute.h>
#include <odfmodel/serial/default_handler.h>

#include <gtest/gtest.h>

namespace {

using test::Reader;
using Events = std::vector<std::string>;

std::string Utf8(const unsigned short* text) {
    return text ? ODF::ToUtf8(text) : "(null)";
}

/// Notes every event as a line.
class Recorder : public CSDDefaultHandler {
public:
    void characters(const unsigned short* chars, unsigned length) override {
        add("text " + ODF::ToUtf8(std::u16string_view(ToChar16(chars), length)));
        EXPECT_EQ(chars[length], 0);
    }
    void startDocument() override { add("start"); }
    void endDocument() override { add("end"); }
    void startElement(const unsigned short* uri, const unsigned short* localName, const unsigned short* qName,
                      CSDAttribute* attributes) override {
        std::string line = "<" + Utf8(qName) + " {" + Utf8(uri) + "}" + Utf8(localName);
        for (const char* const name : {"a", "p:a", "b", "xmlns:p", "xmlns"})
            if (const unsigned short* const value = attributes->GetValue(CTulStringW(name)))
                line += " " + std::string(name) + "=" + Utf8(value);
        if (const unsigned short* const value = attributes->GetValue(CTulStringW("urn:p"), CTulStringW("a")))
            line += " {urn:p}a=" + Utf8(value);
        add(line);
    }
    void endElement(const unsigned short* uri, const unsigned short* localName,
                    const unsigned short* qName) override {
        add(">" + Utf8(qName) + " {" + Utf8(uri) + "}" + Utf8(localName));
    }
    void startPrefixMapping(const unsigned short* prefix, const unsigned short* uri) override {
        add("map " + Utf8(prefix) + "=" + Utf8(uri));
    }
    void endPrefixMapping(const unsigned short* prefix) override { add("unmap " + Utf8(prefix)); }
    void comment(const unsigned short* chars, unsigned length) override {
        add("comment " + ODF::ToUtf8(std::u16string_view(ToChar16(chars), length)));
    }
    void processingInstruction(const unsigned short* target, const unsigned short* data) override {
        add("pi " + Utf8(target) + " " + Utf8(data));
    }
    void startCDATA() override { add("cdata"); }
    void endCDATA() override { add("/cdata"); }
    void startDTD(const unsigned short* name, const unsigned short* publicId,
                  const unsigned short* systemId) override {
        add("dtd " + Utf8(name) + " " + Utf8(publicId) + " " + Utf8(systemId));
    }
    void endDTD() override { add("/dtd"); }
    void skippedEntity(const unsigned short* name) override { add("skipped " + Utf8(name)); }

    Events events;

private:
    void add(std::string line) { events.push_back(std::move(line)); }
};

constexpr const char* kDocument =
    "<?xml version=\"1.0\"?>\n<!DOCTYPE r PUBLIC \"-//p\" \"s.dtd\">\n<?pi some data?><!--one-->"
    "<r xmlns=\"urn:r\" xmlns:p=\"urn:p\" a=\"1\" "
    "p:a=\"2&lt;&#228;\">x&amp;\xC3\xA4<!--two-->y<![CDATA[<z>]]>"
    "<p:e/>\xF0\x9F\x98\x80<p:e xmlns:p=\"urn:q\" b=\"\">&skip;</p:e><?pi?></r>\n<!--three-->";

const Events kEvents = {"start",
                        "dtd r -//p s.dtd",
                        "/dtd",
                        "pi pi some data",
                        "comment one",
                        "map =urn:r",
                        "map p=urn:p",
                        "<r {urn:r}r a=1 p:a=2<\xC3\xA4 {urn:p}a=2<\xC3\xA4",
                        "text x&\xC3\xA4",
                        "comment two",
                        "text y",
                        "cdata",
                        "text <z>",
                        "/cdata",
                        "<p:e {urn:p}e",
                        ">p:e {urn:p}e",
                        "text \xF0\x9F\x98\x80",
                        "map p=urn:q",
                        "<p:e {urn:q}e b=",
                        "skipped skip",
                        ">p:e {urn:q}e",
                        "unmap p",
                        "pi pi ",
                        ">r {urn:r}r",
                        "unmap ",
                        "unmap p",
                        "comment three",
                        "end"};

/// What comes of a text in pieces of `size` bytes, but for the first.
Events InChunks(std::string_view xml, std::size_t first, std::size_t size) {
    Reader reader;
    Recorder recorder;
    reader.reader->SetContentHandler(&recorder);
    EXPECT_TRUE(reader.reader->BeginChunks());
    for (std::size_t at = 0; at < xml.size();) {
        const std::size_t count = std::min(at == 0 && first > 0 ? first : size, xml.size() - at);
        EXPECT_TRUE(reader.reader->ParseChunk(xml.data() + at, static_cast<int>(count), 0));
        EXPECT_TRUE(reader.reader->ParseChunk(xml.data(), 0, 0));
        at += count;
    }
    reader.reader->EndChunks();
    EXPECT_TRUE(reader.diagnostics.notes().empty());
    return recorder.events;
}

TEST(Handler, ChunksMayEndAnywhere) {
    const std::string_view xml = kDocument;
    for (std::size_t split = 0; split < xml.size(); ++split)
        ASSERT_EQ(InChunks(xml, split, xml.size()), kEvents) << split;
    for (const std::size_t size : {1U, 2U, 7U})
        EXPECT_EQ(InChunks(xml, 0, size), kEvents);
}

TEST(Handler, LongTextArrivesWhole) {
    const std::string text(300'000, 'x');
    const Events events = InChunks("<r>" + text + "&lt;" + text + "</r>", 0, 1024);
    EXPECT_EQ(events, (Events{"start", "<r {}r", "text " + text + "<" + text, ">r {}r", "end"}));
}

TEST(Handler, FaultsEndTheParse) {
    Reader reader;
    Recorder recorder;
    reader.reader->SetContentHandler(&recorder);
    EXPECT_FALSE(reader.reader->ParseChunk("<a/>", 4, 0)) << "before BeginChunks";
    reader.reader->EndChunks();
    EXPECT_TRUE(recorder.events.empty());

    EXPECT_TRUE(reader.reader->BeginChunks());
    EXPECT_TRUE(reader.reader->ParseChunk("<a>\n<b/>", 8, 0));
    EXPECT_FALSE(reader.reader->ParseChunk("</c>", 4, 0));
    EXPECT_FALSE(reader.reader->ParseChunk("</a>", 4, 0)) << "after a fault";
    EXPECT_FALSE(reader.reader->ParseChunk("x", -1, 0));
    EXPECT_FALSE(reader.reader->ParseChunk(nullptr, 3, 0));
    reader.reader->EndChunks();
    EXPECT_EQ(recorder.events.back(), ">b {}b") << "and no end of the document";
    EXPECT_EQ(reader.note().code, ODF::NoteCode::XmlNotWellFormed);
    EXPECT_EQ(reader.note().line, 2U);

    // The same reader serves the next document.
    recorder.events.clear();
    EXPECT_TRUE(reader.reader->BeginChunks());
    EXPECT_TRUE(reader.reader->ParseChunk("<a/>", 4, 0));
    reader.reader->EndChunks();
    EXPECT_EQ(recorder.events, (Events{"start", "<a {}a", ">a {}a", "end"}));

    EXPECT_FALSE(reader.reader->ParseWithHandler("/nowhere/a.xml"));
    EXPECT_FALSE(reader.reader->ParseWithHandler(static_cast<const unsigned short*>(nullptr)));
    // A document that ends too early is told when the chunks end.
    const std::size_t before = reader.diagnostics.notes().size();
    EXPECT_TRUE(reader.reader->BeginChunks());
    EXPECT_TRUE(reader.reader->ParseChunk("<a>", 3, 0));
    reader.reader->EndChunks();
    EXPECT_EQ(reader.diagnostics.notes().size(), before + 1);
}

TEST(Handler, TheOneInstalledLastTakesTheNextDocument) {
    const test::TemporaryFolder folder;
    test::WriteFile(folder / "a.xml", kDocument);
    Reader reader;
    Recorder first;
    Recorder second;
    for (Recorder* const recorder :
         std::initializer_list<Recorder*>{nullptr, &first, &second, &second, nullptr}) {
        reader.reader->SetContentHandler(recorder);
        EXPECT_TRUE(reader.reader->ParseWithHandler(folder / "a.xml"));
    }
    EXPECT_EQ(first.events, kEvents);
    EXPECT_EQ(second.events.size(), 2 * kEvents.size());
}

TEST(Handler, WhatItThrowsReachesTheCaller) {
    struct Thrower : CSDDefaultHandler {
        void startElement(const unsigned short*, const unsigned short*, const unsigned short*,
                          CSDAttribute*) override {
            throw std::runtime_error("mine");
        }
    } thrower;
    Reader reader;
    reader.reader->SetContentHandler(&thrower);
    EXPECT_TRUE(reader.reader->BeginChunks());
    EXPECT_THROW(reader.reader->ParseChunk("<a/>", 4, 0), std::runtime_error);
    EXPECT_FALSE(reader.reader->ParseChunk("<b/>", 4, 0));
    reader.reader->EndChunks();
}

TEST(Handler, IsBoundByTheLimits) {
    ODF::Limits limits;
    limits.depth = 3;
    limits.textBytes = 10;
    limits.attributes = 5;
    constexpr std::pair<const char*, bool> kRows[] = {{"<a><a><a/></a></a>", true},
                                                      {"<a><a><a><a/></a></a></a>", false},
                                                      {"<a>0123456789</a>", true},
                                                      {"<a>0123456789a</a>", false},
                                                      {R"(<a a="" b="" c="" d="" e=""/>)", true},
                                                      {R"(<a a="" b="" c="" d="" e="" f=""/>)", false},
                                                      {R"(<a a="0123456789a"/>)", false}};
    for (const auto& [xml, isFitting] : kRows) {
        Reader reader(limits);
        Recorder recorder;
        reader.reader->SetContentHandler(&recorder);
        reader.reader->BeginChunks();
        const int length = static_cast<int>(std::string_view(xml).size());
        EXPECT_EQ(reader.reader->ParseChunk(xml, length, 0), isFitting) << xml;
        reader.reader->EndChunks();
        EXPECT_EQ(reader.diagnostics.notes().empty(), isFitting) << xml;
    }
}

} // namespace
