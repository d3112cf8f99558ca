#include "document/text/line.h"

namespace ODF::reading {

void Line::add(std::string_view text) {
    for (const char c : text) {
        const bool isBlank = c == ' ' || c == '\t' || c == '\n' || c == '\r';
        if (!isBlank)
            text_ += c;
        else if (!isBehindBlank_)
            text_ += ' ';
        isBehindBlank_ = isBlank;
    }
}

void Line::addVerbatim(std::string_view text) {
    text_ += text;
    isBehindBlank_ = false;
}

void Line::addBlanks(std::size_t count) {
    addVerbatim(std::string(count, ' '));
}

} // namespace ODF::reading
