#pragma once

#include <odfmodel/core/fidelity.h>
#include <odfmodel/core/format_version.h>
#include <odfmodel/core/object.h>
#include <odfmodel/core/string.h>
#include <odfmodel/export.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// @file
/// What the tables of the element classes tell, for tools that walk any tree without knowing its classes.

namespace ODF {

struct AttributeRow;

enum class AttributeType { Text, Bool, Unsigned, Signed, Number, Enumeration };

/// One attribute that a class may have. Its texts live as long as the library is loaded.
struct AttributeInfo {
    std::string_view name; ///< qualified, with the customary prefix
    AttributeType type;
    bool isOptional;     ///< false: written always, as 0 or empty while it isn't set
    FormatVersion since; ///< the version of the format that brought it
    /// False: it came to the class later, and is typed in a tree of full fidelity alone.
    bool isListed;
};

/// An attribute as it is written: the qualified name and the value, not escaped, in UTF-8.
struct AttributeText {
    std::string_view name;
    std::string value;
};

/// One child that a class may have.
struct ChildInfo {
    std::string_view name; ///< qualified, with the customary prefix
    unsigned id;           ///< of the child's class
    FormatVersion since;   ///< the version of the format that allows it there
    bool isListed;         ///< false: as with attributes
};

/// One element class. Cheap to copy; what it gives out lives as long as the library is loaded.
class ODFMODEL_API ClassInfo {
public:
    std::string_view className() const noexcept;   ///< such as "CTextP"
    std::string_view elementName() const noexcept; ///< such as "text:p"
    unsigned id() const noexcept;
    /// The version of the format that has the element first.
    FormatVersion since() const noexcept;
    /// False for the one class that no child map lists.
    bool isInMaps() const noexcept;
    std::vector<AttributeInfo> attributes() const;
    /// Keys of the enumeration of an attribute, in value order; empty for any other attribute.
    std::vector<std::string> keys(std::string_view attribute) const;
    std::vector<ChildInfo> children() const;
    /// A new object, owned by the caller.
    CSDObject* create() const;

private:
    friend class ObjectAccess;
    explicit ClassInfo(const ClassDescriptor& table) noexcept : table_(&table) {}
    const ClassDescriptor* table_;
};

/// Every element class, in the order of the ids.
ODFMODEL_API std::vector<ClassInfo> AllClasses();
/// The class of an element object; nothing for text runs and callers' own classes.
ODFMODEL_API std::optional<ClassInfo> ClassOf(const CSDObject& object);
/// The class of an element name with its customary prefix.
ODFMODEL_API std::optional<ClassInfo> ClassOfElement(std::string_view elementName);

/// The customary prefix of a namespace, such as "text"; empty for a URI that isn't known.
ODFMODEL_API std::string_view PrefixOfNamespace(std::string_view uri) noexcept;
/// The URI that a customary prefix stands for; empty for a prefix that isn't known.
ODFMODEL_API std::string_view NamespaceOfPrefix(std::string_view prefix) noexcept;

/// True for a run of text between the element children of a paragraph, heading or span.
ODFMODEL_API bool IsTextRun(const CSDObject& object) noexcept;
/// The character content that the object itself holds, in UTF-8. Empty for elements without any, for those
/// that have it in text runs among their children, and for comments and processing instructions: a walk that
/// adds up the texts of all objects gets each character of the document once.
ODFMODEL_API std::string TextOf(const CSDObject& object);
/// The attributes that are written for the object, in the order of writing.
ODFMODEL_API std::vector<AttributeText> AttributesOf(const CSDObject& object);
/// The value of a set attribute as it is written with full fidelity, not escaped: the words of the file until
/// somebody sets it. False, `out` unchanged, when it isn't set or the class has none of that qualified name.
ODFMODEL_API bool GetAttributeText(const CSDObject& object, std::string_view name, CTulStringW& out);
/// The same in UTF-8; empty when it isn't set or the class has none of that name.
ODFMODEL_API std::string AttributeOf(const CSDObject& object, std::string_view name);
/// Sets an attribute from a text as reading a file does; false when the class has none of that qualified
/// name.
ODFMODEL_API bool SetAttributeText(CSDObject& object, std::string_view name, std::string_view value);

/// The object with all below it as XML; `name` is the element name, or empty for the object's own. For
/// looking at and for tests: a part is written by its document. Empty when it can't be written.
ODFMODEL_API std::string ToXml(CSDObject& object, std::string_view name = {},
                               Fidelity fidelity = Fidelity::Listed);
/// Reads an XML document from memory into the tree below `root`; false when it ends at a fault.
ODFMODEL_API bool FromXml(std::string_view xml, CSDObject& root, Fidelity fidelity = Fidelity::Listed);

} // namespace ODF
