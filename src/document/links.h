#pragma once

#include <odfmodel/core/object.h>

#include <string>
#include <string_view>

// Links of a document: into its package, and to files next to it.
namespace ODF {

/// The attribute `xlink:href`; empty when the object has none.
std::string HrefOf(const CSDObject& object);
/// What a link into the package means, below `folder`, which is empty or ends with a `/`: the name of a
/// member or folder. Empty for a link elsewhere.
std::string MemberOf(std::string_view href, std::string_view folder);
/// Whether a link is relative to where the document is: neither a URI with a scheme nor an absolute path nor
/// a place in the document itself.
bool IsRelative(std::string_view href);
/// Makes an object show what is at `href`, with the attributes that go with a link.
void SetLink(CSDObject& object, std::string_view href);
void UnsetLink(CSDObject& object);
/// Whether the class of the object may have the data of its link in a child office:binary-data.
bool MayHoldData(const CSDObject& object);

} // namespace ODF
