#include "two_readers.h"

#include "serial/xml/expat_parser.h"
#include "serial/xml/tokenizer.h"

#include <algorithm>
#include <memory>
#include <random>

namespace test {

using namespace ODF::xml;

namespace {

/// Writes all events into one string, pieces of one text as one.
class Recorder final : public ParserEvents {
public:
    ParseControl control;
    std::string log;

    void startElement(std::string_view name, Attributes attributes) override {
        add('<', name);
        for (const auto& [attribute, value] : attributes) {
            add('@', attribute);
            add('=', value);
        }
    }
    void endElement(std::string_view name) override { add('>', name); }
    void characterData(std::string_view text, bool isWhole) override {
        if (text.empty() || isWholeText_ || (isWhole && isText_)) log += "(piece of a whole text)";
        if (isText_)
            log += text;
        else
            add('T', text);
        isText_ = true;
        isWholeText_ = isWhole;
    }
    void comment(std::string_view text) override { add('#', text); }
    void processingInstruction(std::string_view target, std::string_view data) override {
        add('?', target);
        add(' ', data);
    }
    void startCdata() override { add('[', {}); }
    void endCdata() override { add(']', {}); }
    void startDoctype(std::string_view name, std::string_view, std::string_view) override { add('!', name); }
    void skippedEntity(std::string_view name) override { add('&', name); }

private:
    void add(char kind, std::string_view text) {
        isText_ = false;
        isWholeText_ = false;
        log.append(1, '\0').append(1, kind).append(text);
    }
    bool isText_ = false;
    bool isWholeText_ = false;
};

struct Reading {
    std::string log;
    bool isWellFormed;
    bool isSure = false;

    bool operator==(const Reading& other) const {
        return log == other.log && isWellFormed == other.isWellFormed;
    }
};

bool ByExpat(Recorder& recorder, std::string_view document, std::uint64_t passedOver) {
    const ODF::Limits limits;
    ExpatParser parser(recorder, recorder.control, limits, true);
    parser.passOver(passedOver);
    return parser.parse(document.data(), document.size(), true);
}

/// The tokeniser gives each piece back in a block of its own, so that the address sanitizer sees its bounds.
Tokenizer::Outcome Feed(Tokenizer& tokenizer, std::string_view piece, bool isLast) {
    const std::unique_ptr<char[]> block(new char[piece.size()]);
    std::copy(piece.begin(), piece.end(), block.get());
    return tokenizer.parse({block.get(), piece.size()}, isLast);
}

Reading ByBoth(std::string_view document, std::uint32_t seed) {
    Recorder recorder;
    Tokenizer tokenizer(recorder, recorder.control, true);
    std::mt19937 random(seed);
    auto outcome = Tokenizer::Outcome::More;
    for (std::size_t given = 0; outcome == Tokenizer::Outcome::More;) {
        const std::size_t step = seed == 0 ? document.size() : 1 + random() % 40;
        given = std::min(document.size(), given + step);
        const auto begin = static_cast<std::size_t>(tokenizer.offset());
        outcome = Feed(tokenizer, document.substr(begin, given - begin), given == document.size());
    }
    const bool isSure = outcome == Tokenizer::Outcome::Done;
    const bool isRead = isSure || ByExpat(recorder, document, tokenizer.offset());
    return {recorder.log, isRead, isSure};
}

} // namespace

TwoReaders ReadTwice(std::string_view document, std::uint32_t seed) {
    Recorder alone;
    const bool isWellFormed = ByExpat(alone, document, 0);
    const Reading expected{alone.log, isWellFormed};
    const Reading whole = ByBoth(document, 0);
    const Reading pieces = ByBoth(document, seed == 0 ? 1 : seed);
    TwoReaders result{{}, whole.isSure, isWellFormed};
    for (const auto& [reading, name] : {std::pair(&whole, "whole"), std::pair(&pieces, "in pieces")})
        if (!(*reading == expected) || reading->isSure != whole.isSure)
            result.difference.append(name).append(": ").append(reading->log).append("\n");
    if (!result.difference.empty()) result.difference += "expected: " + expected.log;
    std::replace(result.difference.begin(), result.difference.end(), '\0', '|');
    return result;
}

} // namespace test
