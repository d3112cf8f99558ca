#pragma once

#include <odfmodel/core/fidelity.h>
#include <odfmodel/core/object.h>
#include <odfmodel/core/reflection.h>

#include <memory>
#include <string>
#include <string_view>

namespace test {

/// `xml` with the customary prefix of every namespace declared on its root element.
std::string Declared(std::string_view xml);
/// `xml` without the XML declaration and without the declarations of the customary prefixes.
std::string Bare(std::string xml);

/// A new object of the class of an element such as "text:p".
std::unique_ptr<CSDObject> Make(std::string_view element);
/// The object of the root element of `xml`, whose prefixes needn't be declared, with all that is read into
/// it.
std::unique_ptr<CSDObject> Read(std::string_view xml, ODF::Fidelity fidelity = ODF::Fidelity::Listed);
/// What is written for an object, as `Bare` gives it.
std::string Written(CSDObject& object, ODF::Fidelity fidelity = ODF::Fidelity::Listed);
/// What becomes of `xml` when it is read and written.
std::string RoundTrip(std::string_view xml);

/// The children of an object; empty where there is no list.
std::vector<CSDObject*> ChildrenOf(const CSDObject& object);
/// The text of an attribute as it would be written; "(absent)" when it wouldn't.
std::string AttributeOf(const CSDObject& object, std::string_view name);

/// Whether the class is one that trees of what the classes list have objects of.
bool IsListed(const ODF::ClassInfo& info);
/// Whether such a tree knows the attribute with that value, which may be a key that came later.
bool IsListed(const ODF::ClassInfo& info, const ODF::AttributeInfo& attribute, std::string_view value);

} // namespace test
