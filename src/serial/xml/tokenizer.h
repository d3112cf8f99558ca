#pragma once

#include "serial/xml/parser_events.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ODF::xml {

/// Reads what nearly every member of a package is: XML in UTF-8 without a document type declaration. It is
/// several times as fast as a general parser, because it never has to copy: names and values are views into
/// the bytes at hand, and plain stretches are passed 16 bytes at a time.
///
/// It decides nothing that isn't plain. Whatever it isn't certain of, be it another encoding, a DOCTYPE, an
/// entity that isn't one of the five, a name that isn't ASCII, or any fault, it returns `Unsure`, and
/// the caller gives the document to libexpat, from its start, which then decides, and finds the words for an
/// error. `offset` is the place up to which events were delivered. So what holds always is:
///
/// - A document that it calls `Done` is well formed, and its events are those that libexpat would deliver.
/// - Events are delivered for whole tokens only, after the token has been checked to its last byte. Before
///   `Unsure` come exactly the events of the tokens before `offset`, each of which begins where
///   libexpat has a token begin too; so the events from there on are the rest.
/// - It reads no byte outside what it is given. What is cut by the end of a piece is left, and is read again
///   in the next piece, which has to begin with it. A caller that doubles its pieces while nothing is
///   consumed has linear work.
/// - It knows nothing of namespaces, trees or limits; only how deep elements nest takes memory of its own.
class Tokenizer {
public:
    enum class Outcome {
        More,    ///< what was consumed is done; give the rest again, with what follows it
        Done,    ///< the document is complete
        Stopped, ///< somebody has ended the parse by its control, at the token at `offset`
        Unsure   ///< to be decided by a general parser
    };

    /// `wantsDetails` adds the events beyond elements and character data.
    Tokenizer(ParserEvents& events, ParseControl& control, bool wantsDetails) noexcept
        : events_(events), control_(control), wantsDetails_(wantsDetails) {}
    Tokenizer(const Tokenizer&) = delete;
    Tokenizer& operator=(const Tokenizer&) = delete;

    /// Continues with `bytes`, which begin where the last call has stopped consuming.
    Outcome parse(std::string_view bytes, bool isLast);
    /// Of the last piece, the bytes that are done with.
    std::size_t consumed() const noexcept { return consumed_; }
    /// Of the document, the bytes that are done with.
    std::uint64_t offset() const noexcept { return offset_; }

private:
    enum class Step {
        Next,
        Short, ///< the token isn't complete
        Unsure
    };

    Step token();
    Step text();
    Step startTag();
    Step endTag();
    Step markup();
    Step comment();
    Step cdata();
    Step instruction();
    Step declaration();

    /// These return null when they can't go on, with `step_` set.
    const char* attributes(const char* at);
    const char* attribute(const char* at);
    const char* value(const char* at, char quote);
    const char* pastReference(const char* at, char*& out);
    const char* untilMark(const char* at, std::string_view mark);
    const char* fail(Step step) noexcept;
    Step advance(const char* next, bool isTag) noexcept;
    /// What to do about a token of which `count` bytes aren't there yet.
    Step missing() const noexcept { return isLast_ ? Step::Unsure : Step::Short; }

    bool hasDuplicate();
    void decode(const char* at, const char* end, bool isValue);
    std::string_view withLineEnds(const char* at, const char* end);
    void open(std::string_view name);
    bool startsWith(std::string_view prefix) const noexcept;

    ParserEvents& events_;
    ParseControl& control_;
    const bool wantsDetails_;

    const char* at_ = nullptr; ///< the token at hand; moves when its events are delivered
    const char* end_ = nullptr;
    bool isLast_ = false;
    std::size_t consumed_ = 0;
    std::uint64_t offset_ = 0;

    std::vector<std::uint32_t> openLengths_; ///< of the names of the open elements
    std::string openNames_;                  ///< these names, one after the other
    bool hasRoot_ = false;
    bool isAfterTag_ = false; ///< the token before was a tag
    Step step_ = Step::Next;

    std::vector<Attribute> attributes_;
    struct Decoded {
        std::size_t index;  ///< of the attribute
        std::size_t offset; ///< of its value in `decodedBytes_`
    };
    std::vector<Decoded> decoded_;         ///< values that aren't views of the document
    std::string decodedBytes_;             ///< of the values of a tag, or of one text
    std::vector<std::string_view> sorted_; ///< names, when there are many
};

/// Where in a document the byte after `before` is, when that many bytes come after `from`.
Position Advance(Position from, std::string_view before) noexcept;

} // namespace ODF::xml
