#pragma once

#include <string>
#include <string_view>

/// What is printed comes from files that anyone may have made. Nothing of it reaches a terminal as a control
/// character.
namespace command {

/// `text` on one line: control characters, line separators, the marks that turn the direction of text and
/// bytes that aren't UTF-8 stand as escapes such as \n, \x1b or \u{202e}; a backslash is doubled.
std::string Quoted(std::string_view text);
/// Running text: line ends and tabs stay, all other control characters become escapes.
std::string Printable(std::string_view text);

/// Whether a document can hold `text`: UTF-8 without most control characters.
bool IsWritable(std::string_view text);

/// One line on the standard error stream: "odfmodel: <about>: <reason>". `about` may be empty.
void Complain(std::string_view about, std::string_view reason);

/// Whether nobody reads the standard output any more, as when `head` has seen enough.
bool IsReaderGone();

} // namespace command
