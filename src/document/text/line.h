#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ODF::reading {

/// The text of one paragraph. Blanks and line ends of the file count as one blank, none at the start.
class Line {
public:
    /// Character data of the file.
    void add(std::string_view text);
    /// Text that stands as it is.
    void addVerbatim(std::string_view text);
    void addBlanks(std::size_t count);

    const std::string& text() const { return text_; }
    std::size_t length() const { return text_.size(); }

private:
    std::string text_;
    bool isBehindBlank_ = true;
};

} // namespace ODF::reading
