#pragma once

#include <odfmodel/document/document.h>

#include <map>
#include <string>
#include <vector>

class CSDObject;

namespace test {

/// Where two trees part for the first time: a path of elements and what differs there; empty for equal trees.
/// Adjacent text runs count as one, since no file tells them apart.
std::string Difference(CSDObject& a, CSDObject& b);

/// The trees of a document by the package path of their part, with `/`.
std::map<std::string, CSDObject*> Trees(const ODF::CDocument& document);
/// The same for two whole documents; starts with the part's path.
std::string Difference(const ODF::CDocument& a, const ODF::CDocument& b);

/// The text of every paragraph and heading below `root`, in document order.
std::vector<std::string> Paragraphs(CSDObject& root);

} // namespace test
