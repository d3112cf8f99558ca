#pragma once

#include "document/styles/references.h"

#include <odfmodel/core/object.h>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace ODF {

class CODFDoc;
class Document;

/// What a style says, whatever its name: two with the same key look alike.
std::string ContentKey(const CSDObject& style);

/// Puts a child before the first one whose class has a higher rank.
CSDObject& InsertByRank(CSDObject& parent, std::unique_ptr<CSDObject> child,
                        int (*rank)(const CSDObject& child));

/// Finds the children of one list of styles. It holds places in the list, never objects, so that it can't
/// outlive any; whether an object is the one that was asked for is looked at each time.
class StyleList {
public:
    CSDObject* find(CSDObject* list, NamedKind kind, std::string_view name);
    /// By the name that people see.
    CSDObject* findShown(CSDObject* list, NamedKind kind, std::string_view name);
    CSDObject* findAlike(CSDObject* list, NamedKind kind, const std::string& contentKey);
    /// Appends an object to the list, which has to be the one that was asked in.
    CSDObject& append(CSDObject& list, std::unique_ptr<CSDObject> object);

private:
    using Places = std::unordered_multimap<std::size_t, std::uint32_t>;
    template<typename IsIt>
    CSDObject* lookUp(CSDObject* list, Places& places, std::size_t hash, IsIt isIt);
    void refresh(CSDObject& list);
    void enter(const CSDObject& object, std::uint32_t place);

    std::size_t count_ = 0; ///< children when the places were made out
    bool isReady_ = false;
    bool hasContents_ = false;
    Places byName_;
    Places byShownName_;
    Places byContent_;
};

/// The lists of styles in the trees of a document.
class StyleTrees {
public:
    enum class Part { Content, Styles };
    enum class Place { ContentAutomatic, Common, StylesAutomatic, Master, ContentFonts, StylesFonts };

    StyleTrees(CSDObject* content, CSDObject* styles) noexcept : content_(content), styles_(styles) {}
    /// Makes the tree of common styles when one is first wanted and there is none; may be empty.
    std::function<CSDObject*()> makeStylesRoot;

    CSDObject* find(NamedKind kind, std::string_view name, Part part = Part::Content);
    CSDObject* findIn(Place place, NamedKind kind, std::string_view name);
    CSDObject* findAlike(Place place, NamedKind kind, const std::string& contentKey);
    /// Puts an object into a list, which is made when needed; null when the document has no such part.
    CSDObject* add(Place place, std::unique_ptr<CSDObject> object);
    /// The same for an automatic one, which gets a name of its own unless one like it is there.
    CSDObject* addAutomatic(Place place, std::unique_ptr<CSDObject> object);
    /// The list; null while there is none.
    CSDObject* list(Place place) const;

    /// The part that an object is in; what is in no tree is taken to be for the content.
    Part partOf(const CSDObject& object) const noexcept;
    static Place automaticOf(Part part) noexcept {
        return part == Part::Content ? Place::ContentAutomatic : Place::StylesAutomatic;
    }
    /// Where a new object of that kind, that isn't automatic, belongs when something in `part` names it.
    static Place commonPlaceOf(NamedKind kind, Part part) noexcept;

private:
    CSDObject* rootOf(Place place) const noexcept;
    Place same(Place place) const noexcept;
    StyleList& index(Place place) noexcept { return lists_[static_cast<std::size_t>(place)]; }

    CSDObject* content_;
    CSDObject* styles_;
    std::array<StyleList, 6> lists_;
    std::unordered_map<std::string, unsigned> lastNumbers_; ///< by the letters of automatic names
};

/// Of a document, which must outlive them.
StyleTrees TreesOf(Document& document);
StyleTrees TreesOf(CODFDoc& document);

/// Whether the object is in a list of automatic styles.
bool IsAutomaticStyle(const CSDObject& style) noexcept;

} // namespace ODF
