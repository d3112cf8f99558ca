#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace test {

/// Where two XML documents differ in their exclusive canonical form with comments, each place as a path of
/// elements and what differs there; at most `most` of them, none for equal documents. Independent of the
/// library: libxml2 parses both. A path counts an element among the elements of its parent, so `p[2]` is the
/// second of them.
///
/// Three things don't count: the prefix that a name is spelled with; blank text between elements, unless they
/// are runs of a paragraph; and the prefix that an attribute's value starts with (`of:=SUM(...)`) as long as
/// it is bound to the same namespace. A value that is the same on both sides differs when its prefix is bound
/// to another namespace. Entities of the document itself are resolved, external ones count by their name.
/// Nothing is ever loaded.
///
/// After a difference in a value or a text the search goes on; after another child than expected it goes on
/// after the parent.
std::vector<std::string> CanonicalDifferences(std::string_view before, std::string_view after,
                                              std::size_t most = 10);
/// The first of them; empty for equal documents.
std::string CanonicalDifference(std::string_view before, std::string_view after);

/// The namespace and the local name of the root element; empty for what isn't well-formed.
std::pair<std::string, std::string> RootElement(std::string_view xml);

} // namespace test
