#pragma once

#include <odfmodel/core/limits.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

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

/// Why a parse has ended before its document did.
enum class Stop {
    None,
    NotWellFormed,
    Depth,     ///< elements nest deeper than the limits allow
    Size,      ///< a text, an attribute or their number is beyond the limits
    Expansion, ///< the document grows through its own entities
    Request    ///< a callback has seen enough
};

/// The XML library behind one small wall: push parsing, no external entity or DTD is ever loaded, and the
/// expansion of internal entities is bounded. What a callback throws passes through `parse`, never through
/// the library. However small the pieces are, the time is linear in the document: the library reads a tag or
/// comment that hasn't ended yet anew with each piece, so a long one waits until as much again has come.
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
    bool parse(const void* data, std::size_t byteCount, bool isLast);

    /// Ends the parse from within a callback; `reason` is what `error` tells.
    void stop(Stop kind, std::string reason);
    /// The same for one of the limits that the words name.
    void stop(std::string reason);

    bool isStopped() const noexcept { return stopped_ != Stop::None; }
    Stop whyStopped() const noexcept { return stopped_; }
    const std::string& error() const noexcept { return error_; }
    unsigned long line() const noexcept;
    unsigned long column() const noexcept;

private:
    struct Callbacks;

    bool parseHeld(bool isLast);
    bool feed(const char* data, std::size_t byteCount, bool isLast);
    bool finish(int status);
    /// Counts what a document with a DTD of its own delivers; false when it grows out of bounds.
    bool deliver(std::size_t byteCount);

    ParserEvents& events_;
    XML_ParserStruct* parser_;
    std::size_t mostTokenBytes_;
    std::uint64_t mostGrowth_;
    std::vector<char> held_; ///< bytes that the library hasn't got yet, and room for more
    std::size_t heldBytes_ = 0;
    std::size_t wantedBytes_ = 0; ///< the library gets no fewer at once, but for the last
    std::uint64_t fedBytes_ = 0;
    std::uint64_t deliveredBytes_ = 0;
    bool hasDoctype_ = false;
    bool wantsDetails_;
    std::string error_;
    std::exception_ptr thrown_;
    Stop stopped_ = Stop::None;
};

} // namespace ODF::xml
