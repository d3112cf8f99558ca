#pragma once

#include "document/text/element.h"

#include <array>
#include <map>
#include <optional>
#include <string>

namespace ODF::reading {

/// The depth of levels that a list style has.
inline constexpr std::size_t kListLevels = 10;

/// How one level of a list shows its labels.
struct ListLevel {
    enum class Kind { Plain, Number, Bullet };
    Kind kind = Kind::Bullet; ///< a level without a style has a bullet
    std::string format;       ///< of numbers; empty for no number
    bool isLetterSync = false;
    std::string prefix;
    std::string suffix;
    unsigned start = 1;
    unsigned shownLevels = 1; ///< levels whose numbers a label shows
};

using ListStyle = std::array<ListLevel, kListLevels>;

/// What a paragraph style says of numbering.
struct ParagraphStyle {
    std::string parent;
    std::optional<std::string> listStyle; ///< empty: taken out of any list
    std::optional<unsigned> outlineLevel; ///< 1 for the highest
};

/// The list styles and paragraph styles of a document, gathered while its files are read: `styles.xml` first,
/// then the automatic styles of `content.xml`, which go before those of the same name.
class ListStyles {
public:
    ListStyles();

    void start(Element element, const Attributes& attributes);
    void end(Element element);

    /// The style of that name; null for one that isn't there.
    const ListStyle* find(const std::string& name) const;
    const ListStyle& outline() const { return outline_; }
    /// The outline level of paragraphs with that style, from 1; 0 for none. `level` is that of a heading, 0
    /// for a paragraph.
    unsigned outlineLevelOf(const std::string& paragraphStyle, unsigned level) const;

private:
    void addLevel(ListLevel::Kind kind, const Attributes& attributes);
    const ParagraphStyle* named(const std::string& name) const;

    bool isAutomatic_ = false;
    bool isCommon_ = false;
    ListStyle* open_ = nullptr; ///< that the next levels belong to
    std::map<std::string, ListStyle> lists_;
    std::map<std::string, ParagraphStyle> common_;
    std::map<std::string, ParagraphStyle> automatic_;
    ListStyle outline_; ///< without numbers unless the document says otherwise
};

} // namespace ODF::reading
