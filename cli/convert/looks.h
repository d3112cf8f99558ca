#pragma once

#include <odfmodel/document/open_document.h>

#include <map>
#include <set>
#include <string>

namespace command {

/// How a stretch of text looks, as far as Markdown and HTML can tell.
struct Look {
    bool isBold = false;
    bool isItalic = false;
    bool isStruck = false;
    bool isRaised = false;
    bool isLowered = false;

    friend bool operator==(const Look&, const Look&) = default;
    /// What this look has and `other` hasn't.
    Look without(const Look& other) const;
    Look with(const Look& other) const;
};

/// The looks of text styles and the kinds of lists of a document.
class Looks {
public:
    explicit Looks(ODF::Document& document);

    /// The look of spans of that style, with what its parents say.
    Look of(const std::string& textStyle) const;
    /// Whether a list of that style has numbers at a level, from 1.
    bool isNumbered(const std::string& listStyle, std::size_t level) const;

private:
    struct Style {
        std::string parent;
        std::string weight, posture, strike, position; ///< empty for not said
    };
    void takeStyles(const CSDObject& styles);

    std::map<std::string, Style> styles_;
    std::map<std::string, std::set<std::size_t>> numbered_; ///< levels by list style
};

} // namespace command
