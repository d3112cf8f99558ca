#pragma once

#include <odfmodel/core/object.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

// Names of automatic styles, and who refers to them.
namespace ODF::flat {

/// Within one of these a name means one style; paragraph styles and the like have a family besides.
enum class StyleSpace { None, Style, List, Data, PageLayout };

/// What an automatic style is, `None` for any other object.
StyleSpace SpaceOf(const CSDObject& style);
std::string NameOfStyle(const CSDObject& style);
/// Tells two styles of one tree apart: the space, the family and the name.
std::string KeyOfStyle(const CSDObject& style);

/// Calls `visit` for each reference to a style at and below `root`; what it returns becomes the new name.
using VisitReference = std::function<std::optional<std::string>(StyleSpace space, const std::string& name)>;
void ForEachReference(CSDObject& root, const VisitReference& visit);

} // namespace ODF::flat
