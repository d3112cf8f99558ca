#pragma once

#include "core/class_descriptor.h"

#include <odfmodel/core/object.h>
#include <odfmodel/elements/enumerations.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
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

/// An attribute of a class that names something.
struct Reference {
    std::uint16_t row; ///< of the class's table
    NamedKind kind;
};

/// The references of each class, made out when a class is first met.
class References {
public:
    const std::vector<Reference>& of(const ClassDescriptor& table);

private:
    std::unordered_map<const ClassDescriptor*, std::vector<Reference>> known_;
};

/// The attribute by which an element names its style, and the family; nothing when it can't have one. Of two
/// that are possible, the one that is set, or the one for a given family.
std::optional<Reference> StyleReference(const CSDObject& element, std::optional<NamedKind> family = {});
/// The name at a reference, or empty.
std::string NameAt(const CSDObject& object, const Reference& reference);
void SetNameAt(CSDObject& object, const Reference& reference, const std::string& name);

} // namespace ODF
