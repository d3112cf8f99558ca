#include "serial/xml/document_parse.h"

#include "platform/files.h"
#include "serial/xml/tokenizer.h"
#include "serial/xml/window.h"

#include <algorithm>
#include <memory>

namespace ODF::xml {
namespace {

constexpr std::size_t kPiece = std::size_t{1} << 16;
constexpr std::size_t kMaxPiece = std::size_t{1} << 28;

} // namespace

ParseResult DocumentParse::memory(std::string_view document) {
    if (onBytes) onBytes(document.size());
    Tokenizer tokenizer(events_, control_, wantsDetails_);
    const Tokenizer::Outcome outcome = tokenizer.parse(document, true);
    if (outcome == Tokenizer::Outcome::Done) return ParseResult::Ok;
    if (outcome == Tokenizer::Outcome::Stopped) {
        position_ = Advance({1, 1}, document.substr(0, static_cast<std::size_t>(tokenizer.offset())));
        return ParseResult::Stopped;
    }
    ExpatParser parser(events_, control_, limits_, wantsDetails_);
    parser.passOver(tokenizer.offset());
    if (parser.parse(document.empty() ? "" : document.data(), document.size(), true)) return ParseResult::Ok;
    position_ = parser.position();
    return ParseResult::Stopped;
}

bool DocumentParse::isWithin(std::uint64_t offset) {
    if (onBytes) onBytes(offset);
    return offset <= limits_.partBytes;
}

ParseResult DocumentParse::file(const platform::InputFile& file) {
    Tokenizer tokenizer(events_, control_, wantsDetails_);
    Window window(file.size());
    for (std::uint64_t offset = 0;;) {
        if (!window.grow()) return fileByExpat(file, tokenizer.offset());
        const std::size_t wanted = window.roomBytes();
        const std::ptrdiff_t count = file.readAt(offset, window.room(), wanted);
        if (count < 0) return ParseResult::Unreadable;
        window.add(static_cast<std::size_t>(count));
        offset += static_cast<std::uint64_t>(count);
        if (!isWithin(offset)) {
            locate(file, tokenizer.offset());
            return ParseResult::TooLarge;
        }
        switch (tokenizer.parse(window.view(), static_cast<std::size_t>(count) < wanted)) {
        case Tokenizer::Outcome::Done:
            return ParseResult::Ok;
        case Tokenizer::Outcome::Stopped:
            locate(file, tokenizer.offset());
            return ParseResult::Stopped;
        case Tokenizer::Outcome::Unsure:
            return fileByExpat(file, tokenizer.offset());
        case Tokenizer::Outcome::More:
            window.drop(tokenizer.consumed());
        }
    }
}

void DocumentParse::locate(const platform::InputFile& file, std::uint64_t offset) {
    // Lines aren't counted on the way, since hardly any document needs them.
    std::unique_ptr<char[]> piece(new char[kPiece]);
    position_ = {1, 1};
    for (std::uint64_t at = 0; at < offset;) {
        const std::size_t wanted = static_cast<std::size_t>(std::min<std::uint64_t>(kPiece, offset - at));
        const std::ptrdiff_t count = file.readAt(at, piece.get(), wanted);
        if (count <= 0) break;
        position_ = Advance(position_, {piece.get(), static_cast<std::size_t>(count)});
        at += static_cast<std::uint64_t>(count);
    }
}

ParseResult DocumentParse::fileByExpat(const platform::InputFile& file, std::uint64_t passedOver) {
    ExpatParser parser(events_, control_, limits_, wantsDetails_);
    parser.passOver(passedOver);
    for (std::uint64_t offset = 0;;) {
        const std::size_t wanted = std::clamp(parser.wanted(), kPiece, kMaxPiece);
        const std::ptrdiff_t count = file.readAt(offset, parser.buffer(wanted), wanted);
        position_ = parser.position();
        if (count < 0) return ParseResult::Unreadable;
        offset += static_cast<std::uint64_t>(count);
        if (!isWithin(offset)) return ParseResult::TooLarge;
        const bool isLast = static_cast<std::size_t>(count) < wanted;
        const bool isParsed = parser.parseBuffer(static_cast<std::size_t>(count), isLast);
        position_ = parser.position();
        if (!isParsed) return ParseResult::Stopped;
        if (isLast) return ParseResult::Ok;
    }
}

} // namespace ODF::xml
