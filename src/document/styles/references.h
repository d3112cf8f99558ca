#pragma once

#include "core/class_descriptor.h"

#include <odfmodel/core/object.h>
#include <odfmodel/elements/enumerations.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

// Which attributes name a style or something like it, and what.
namespace ODF {

/// What can be named: the families of styles have the numbers of `ST_StyleFamily`.
enum class NamedKind : std::uint8_t {
    List = 64,
    Data,
    PageLayout,
    MasterPage,
    Font,
    Gradient,
    Hatch,
    FillImage,
    Opacity,
    Marker,
    StrokeDash,
    PresentationLayout,
    OwnFamily ///< a reference to a style of the family of the style that it is in
};

constexpr NamedKind ToNamedKind(ST_StyleFamily family) noexcept {
    return static_cast<NamedKind>(family);
}
constexpr bool IsFamily(NamedKind kind) noexcept {
    return kind < NamedKind::List;
}

/// What an object with a name is; nothing for one that can't be named so.
std::optional<NamedKind> KindOfNamed(const CSDObject& object);
/// The same for an element of that name; nothing for a style, whose family it doesn't tell.
std::optional<NamedKind> KindOfElement(std::string_view elementName) noexcept;
/// Its name; empty for none.
std::string NameOfNamed(const CSDObject& object);

/// What tells two styles of one list apart.
using StyleKey = std::pair<NamedKind, std::string>;
/// Nothing for an object that can't be named.
std::optional<StyleKey> KeyOf(const CSDObject& object);

/// An attribute of a class that names something.
struct Reference {
    std::uint16_t row; ///< of the class's table
    NamedKind kind;
};

/// The references of each class, made out when a class is first met.
class References {
public:
    /// Gets each name and what it names; what it returns becomes the new name.
    using Visit = std::function<std::optional<std::string>(NamedKind kind, const std::string& name)>;
    /// The names at one object; `family` is what the style is that it is in.
    void visit(CSDObject& object, std::optional<NamedKind> family, const Visit& visit);
    /// The names at `root` and all below it.
    void visitAll(CSDObject& root, const Visit& visit);

private:
    const std::vector<Reference>& of(const ClassDescriptor& table);

    std::unordered_map<const ClassDescriptor*, std::vector<Reference>> known_;
};

/// Calls `work(object, family)` for `root` and all below it, with what the style is that the object is in.
template<typename Work>
void ForEachInStyle(CSDObject& root, Work work) {
    std::optional<NamedKind> family = KindOfNamed(root);
    work(root, family);
    for (CSDObject& object : root.Descendants()) {
        if (const auto named = KindOfNamed(object)) family = named;
        work(object, family);
    }
}

/// The attribute by which an element names its style, and the family; nothing when it can't have one. Of two
/// that are possible, the one that is set, or the one for a given family.
std::optional<Reference> StyleReference(const CSDObject& element, std::optional<NamedKind> family = {});
/// The name at a reference, or empty.
std::string NameAt(const CSDObject& object, const Reference& reference);
void SetNameAt(CSDObject& object, const Reference& reference, const std::string& name);

} // namespace ODF
