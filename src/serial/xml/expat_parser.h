#pragma once

#include <odfmodel/core/limits.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

struct XML_ParserStruct;

namespace ODF::xml {

/// What a parse calls back. Text is UTF-8 and valid for the call. Names stand as in the file, with their
/// prefix.
class ParserEvents {
public:
    virtual void startElement(const char* name, const char** attributes) = 0;
    virtual void endElement(const char* name) = 0;
    virtual void characterData(std::string_view text) = 0;
    virtual void comment(const char*) {}
    virtual void processingInstruction(const char*, const char*) {}
    virtual void startCdata() {}
    virtual void endCdata() {}
    virtual void startDoctype(const char*, const char*, const char*) {}
    virtual void endDoctype() {}
    virtual void skippedEntity(const char*) {}

protected:
    ~ParserEvents() = default;
};

/// Why a parse has ended before its time.
enum class StopKind {
    Content, ///< not well formed, or refused for what it is
    Depth,   ///< elements nest deeper than the limits allow
    Size     ///< anything else beyond the limits
};

/// The XML library behind one small wall: push parsing, no external entity or DTD is ever loaded, and the
/// expansion of internal entities is bounded. What a callback throws passes through `parse`, never through
/// the library.
class ExpatParser {
public:
    /// `wantsDetails` adds the events beyond elements and character data.
    ExpatParser(ParserEvents& events, const Limits& limits, bool wantsDetails);
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

    /// Ends the parse from within a callback; `reason` is what `error` tells.
    void stop(std::string reason, StopKind kind = StopKind::Content);

    bool isStopped() const noexcept { return stopped_; }
    const std::string& error() const noexcept { return error_; }
    StopKind kind() const noexcept { return kind_; }
    unsigned long line() const noexcept;
    unsigned long column() const noexcept;

private:
    struct Callbacks;

    bool parsePieces(const char* at, std::size_t byteCount, bool isLast);
    bool finish(int status);
    /// Counts what a document with a DTD of its own delivers; false when it grows out of bounds.
    bool deliver(std::size_t byteCount);

    ParserEvents& events_;
    XML_ParserStruct* parser_;
    std::size_t mostUnfinished_;
    std::uint64_t mostGrowth_;
    std::uint64_t delivered_ = 0;
    bool hasDoctype_ = false;
    bool wantsDetails_;
    std::string error_;
    StopKind kind_ = StopKind::Content;
    std::exception_ptr thrown_;
    std::string held_; ///< pieces that wait
    std::uint64_t fed_ = 0;
    std::size_t unfinished_ = 0; ///< bytes from the start of what is cut by the end of the last piece
    bool stopped_ = false;
};

} // namespace ODF::xml
