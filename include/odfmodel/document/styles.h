#pragma once

/// @file
/// The styles of a document: finding them, what they add up to, and making them.
///
///     ODF::Styles styles(document);
///     if (const auto size = styles.Value(paragraph, &ODF::CStyleTextProperties::FoFontSize)) ...
///     styles.Format<ODF::CStyleTextProperties>(span, [](auto& text) { text.SetFoColor("#c00000"); });
///     styles.Make(ODF::ST_StyleFamily::Paragraph, "Quotation", "Standard");

#include <odfmodel/core/object.h>
#include <odfmodel/elements/enumerations.h>
#include <odfmodel/export.h>

#include <concepts>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ODF {

class CODFDoc;
class CStyleStyle;
class CStyleDefaultStyle;
class Document;
class StyleTrees;

namespace detail {
/// Puts a set of properties before those that the format wants after it.
ODFMODEL_API CSDObject& AddProperties(CSDObject& style, std::unique_ptr<CSDObject> properties);
/// The style's child of that class; null for none and for no style.
ODFMODEL_API CSDObject* PropertiesOf(CSDObject* style, unsigned id);
} // namespace detail

/// The set of properties of one kind, such as `CStyleTextProperties`, of a style, page layout or list level;
/// made when it isn't there. Borrowed.
template<MakeableClass T>
T& PropertiesOf(CSDObject& style) {
    if (T* const found = style.Child<T>()) return *found;
    return static_cast<T&>(detail::AddProperties(style, std::unique_ptr<CSDObject>(T::Create())));
}

/// A view of the styles in both parts of a document: the automatic ones of content and of headers and master
/// pages, the common ones that people see by name, and the defaults.
///
/// What it hands out is borrowed from the trees. The view looks at the trees themselves, and follows when
/// styles are added or removed otherwise. It must not outlive the document, and belongs to one thread at a
/// time.
class ODFMODEL_API Styles {
public:
    explicit Styles(Document& document);
    explicit Styles(CODFDoc& document);
    /// The same for the roots of two trees, each of which may be null. A flat document has one root for both.
    Styles(CSDObject* content, CSDObject* styles);
    Styles(Styles&& other) noexcept;
    Styles& operator=(Styles&& other) noexcept;
    ~Styles();

    /// @name Finding
    /// @{

    /// The style of that name, or of that name as people see it ("Heading 1" for "Heading_20_1"): of the
    /// content's automatic styles, then of the common ones, then of the automatic ones of headers and master
    /// pages. Null when there is none.
    CStyleStyle* Find(ST_StyleFamily family, std::string_view name) const;
    /// What holds for all styles of a family; null when the document doesn't say.
    CStyleDefaultStyle* Default(ST_StyleFamily family) const;
    /// A list style, page layout, master page, data style, font or drawing resource by its name, such as
    /// `Find<CStyleMasterPage>("Standard")`; null when there is none.
    template<ElementClass T>
    T* Find(std::string_view name) const {
        return static_cast<T*>(FindObject(T::kId, name));
    }
    /// All common styles of a family, in the order of the file.
    std::vector<CStyleStyle*> Common(ST_StyleFamily family) const;
    /// Whether it was made by direct formatting, and isn't seen by its name.
    static bool IsAutomatic(const CSDObject& style) noexcept;

    /// The style that an element names, such as a paragraph, span, cell, table, shape or slide; null for
    /// none.
    CStyleStyle* StyleOf(const CSDObject& element) const;
    /// The style itself, or that of an element, then its parents from the nearest on, then the default of the
    /// family. Parents that go round in a circle end it.
    std::vector<CSDObject*> Chain(const CSDObject& styleOrElement) const;
    /// What a property is for a style or an element: the first value along the chain; nothing when no one has
    /// it. It is as the file has it: a percentage may be of the parent's value.
    template<std::derived_from<CSDObject> T, typename V>
    std::optional<V> Value(const CSDObject& styleOrElement, std::optional<V> (T::*get)() const) const {
        for (CSDObject* const style : Chain(styleOrElement))
            if (const CSDObject* const properties = detail::PropertiesOf(style, T::kId))
                if (std::optional<V> value = (static_cast<const T*>(properties)->*get)()) return value;
        return std::nullopt;
    }
    /// @}

    /// @name Making
    /// Null or false where the document has no such part, or the element can't have a style.
    /// @{

    /// The common style of that name; made, with `parent`, when there is none. Names may have any
    /// characters.
    CStyleStyle* Make(ST_StyleFamily family, std::string_view name, std::string_view parent = {});
    /// A style in no document yet, to be given properties and then to `Automatic` or `Use`.
    static std::unique_ptr<CStyleStyle> Draft(ST_StyleFamily family, std::string_view parent = {});
    /// The same for an element, with what its present style says: a copy of an automatic one, else a child of
    /// a common one. Null for an element that can't have a style.
    std::unique_ptr<CStyleStyle> DraftFor(const CSDObject& element) const;
    /// The automatic style of the content that says what `draft` does: one that is there already, else
    /// `draft` under a name of its own.
    CStyleStyle* Automatic(std::unique_ptr<CStyleStyle> draft);
    /// Gives an element the automatic style that says what `draft` does, in the part that the element is in.
    bool Use(CSDObject& element, std::unique_ptr<CStyleStyle> draft);
    /// Gives an element a style that is in the document.
    bool Use(CSDObject& element, const CStyleStyle& style);
    /// Direct formatting: `change(T&)` gets the properties of the kind T of a draft, which the element then
    /// uses. All else of its formatting stays.
    template<MakeableClass T, std::invocable<T&> Change>
    bool Format(CSDObject& element, Change change) {
        std::unique_ptr<CStyleStyle> draft = DraftFor(element);
        if (!draft) return false;
        change(PropertiesOf<T>(Object(*draft)));
        return Use(element, std::move(draft));
    }
    /// @}

private:
    CSDObject* FindObject(unsigned id, std::string_view name) const;
    static CSDObject& Object(CStyleStyle& style) noexcept;

    std::unique_ptr<StyleTrees> trees_;
};

} // namespace ODF
