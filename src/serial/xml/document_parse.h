#pragma once

#include "serial/xml/expat_parser.h"
#include "serial/xml/parser_events.h"

#include <odfmodel/core/limits.h>

#include <functional>
#include <string_view>

namespace ODF::platform {
class InputFile;
}

namespace ODF::xml {

enum class ParseResult {
    Ok,
    Stopped,    ///< the control tells why, the position where
    Unreadable, ///< the file can't be read to its end
    TooLarge    ///< the file is larger than a part may be
};

/// Parses one document whole: with the tokeniser as far as that is certain, else with libexpat.
class DocumentParse {
public:
    /// `wantsDetails` adds the events beyond elements and character data.
    DocumentParse(ParserEvents& events, ParseControl& control, const Limits& limits,
                  bool wantsDetails) noexcept
        : events_(events), control_(control), limits_(limits), wantsDetails_(wantsDetails) {}

    /// Called with the number of bytes that the document is known to have, before these are parsed.
    std::function<void(std::uint64_t)> onBytes;

    ParseResult memory(std::string_view document);
    ParseResult file(const platform::InputFile& file);
    /// Where the parse has ended when it wasn't Ok.
    Position position() const noexcept { return position_; }

private:
    ParseResult fileByExpat(const platform::InputFile& file, std::uint64_t passedOver);
    /// Whether the file may have bytes up to `offset`.
    bool isWithin(std::uint64_t offset);
    /// Sets the position to that of a byte of the file.
    void locate(const platform::InputFile& file, std::uint64_t offset);

    ParserEvents& events_;
    ParseControl& control_;
    const Limits& limits_;
    const bool wantsDetails_;
    Position position_;
};

} // namespace ODF::xml
