#pragma once

#include "serial/xml/parser_events.h"

#include <odfmodel/core/limits.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

struct XML_ParserStruct;

namespace ODF::xml {

/// The XML library behind one small wall: push parsing, no external entity or DTD is ever loaded, and the
/// expansion of internal entities is bounded. What a callback throws passes through `parse`, never through
/// the library.
class ExpatParser {
public:
    /// `wantsDetails` adds the events beyond elements and character data.
    ExpatParser(ParserEvents& events, ParseControl& control, const Limits& limits, bool wantsDetails);
    ~ExpatParser();
    ExpatParser(const ExpatParser&) = delete;
    ExpatParser& operator=(const ExpatParser&) = delete;

    /// A place for the next `capacity` bytes of the document, to be handed over by `parseBuffer`.
    void* buffer(std::size_t capacity);
    bool parseBuffer(std::size_t byteCount, bool isLast);
    /// Small pieces may wait for others when they are in the midst of something long.
    bool parse(const void* data, std::size_t byteCount, bool isLast);
    /// What the next piece should have at least: the library reads a tag or a comment from its start again
    /// with each piece, so pieces grow with what is unfinished, and the work stays linear.
    std::size_t wanted() const noexcept { return unfinished_; }

    /// Keeps back the events of the first `byteCount` bytes, which somebody else has had delivered.
    void passOver(std::uint64_t byteCount) noexcept { passedOver_ = byteCount; }

    /// Where the parse is, or has ended.
    Position position() const noexcept;

private:
    struct Callbacks;

    bool isPassedOver() const noexcept;
    bool parsePieces(const char* at, std::size_t byteCount, bool isLast);
    bool finish(int status);
    /// Counts what a document with a DTD of its own delivers; false when it grows out of bounds.
    bool deliver(std::size_t byteCount);

    ParserEvents& events_;
    ParseControl& control_;
    XML_ParserStruct* parser_;
    std::size_t mostUnfinished_;
    std::uint64_t mostGrowth_;
    std::uint64_t delivered_ = 0;
    bool hasDoctype_ = false;
    bool wantsDetails_;
    std::exception_ptr thrown_;
    std::vector<Attribute> attributes_;
    std::uint64_t passedOver_ = 0;
    std::string held_; ///< pieces that wait
    std::uint64_t fed_ = 0;
    std::size_t unfinished_ = 0; ///< bytes from the start of what is cut by the end of the last piece
};

} // namespace ODF::xml
