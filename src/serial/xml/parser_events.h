#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace ODF::xml {

/// An attribute of a start tag: its name as in the file, with the prefix, and its value with all references
/// resolved.
struct Attribute {
    std::string_view name;
    std::string_view value;
};
using Attributes = std::span<const Attribute>;

/// What a parse calls back. Strings are valid UTF-8, and last as long as the call.
class ParserEvents {
public:
    virtual void startElement(std::string_view name, Attributes attributes) = 0;
    virtual void endElement(std::string_view name) = 0;
    /// A piece of character data. `isWhole` says that neither the event before nor the next one is another
    /// piece of the same text; a parser that doesn't know says false.
    virtual void characterData(std::string_view text, bool isWhole) = 0;
    virtual void comment(std::string_view) {}
    virtual void processingInstruction(std::string_view, std::string_view) {}
    virtual void startCdata() {}
    virtual void endCdata() {}
    virtual void startDoctype(std::string_view, std::string_view, std::string_view) {}
    virtual void endDoctype() {}
    virtual void skippedEntity(std::string_view) {}

protected:
    ~ParserEvents() = default;
};

/// Why a parse has ended before its time.
enum class StopKind {
    Content, ///< not well formed, or refused for what it is
    Depth,   ///< elements nest deeper than the limits allow
    Size     ///< anything else beyond the limits
};

/// What whoever takes the events of a parse uses to end it, and where the reason is kept.
class ParseControl {
public:
    /// Ends the parse after the present event. The first reason counts.
    void stop(std::string reason, StopKind kind = StopKind::Content) {
        if (stopped_) return;
        stopped_ = true;
        kind_ = kind;
        reason_ = std::move(reason);
    }
    bool isStopped() const noexcept { return stopped_; }
    const std::string& reason() const noexcept { return reason_; }
    StopKind kind() const noexcept { return kind_; }

private:
    std::string reason_;
    StopKind kind_ = StopKind::Content;
    bool stopped_ = false;
};

/// A place in a document, counted from 1; 0 where it isn't known.
struct Position {
    unsigned long line = 0;
    unsigned long column = 0;
};

} // namespace ODF::xml
