#pragma once

#include <odfmodel/core/value_objects.h>
#include <odfmodel/export.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// @file
/// What a tree holds that no class lists: elements, attributes, comments and processing instructions. A file
/// that is read with `Fidelity::Everything` fills them in, and callers may add their own.

namespace ODF {

/// Ids of objects that stand for no listed element. Look-ups by the ids of element classes pass over them.
inline constexpr unsigned kForeignElementId = 0x8F000001;
/// A comment: a `CSDStringValueObject` whose value is its text.
inline constexpr unsigned kCommentId = 0x8F000002;
/// A processing instruction: a `CSDStringValueObject` whose value is the target, a blank and the data.
inline constexpr unsigned kProcessingInstructionId = 0x8F000003;

/// An element that no class lists. It keeps its text as runs between its children, as a paragraph does.
class ODFMODEL_API CForeignElement final : public CSDMixedContentObject {
public:
    static constexpr unsigned kId = kForeignElementId;
    /// A new element, owned by the caller; null for a name that XML doesn't allow. `name` may have a prefix,
    /// which is used where it is free. An empty `namespaceUri` is no namespace.
    static CForeignElement* Create(std::string_view namespaceUri, std::string_view name);
    ~CForeignElement() override;

    std::string GetNamespace() const;
    /// Empty for a name without a prefix.
    std::string GetPrefix() const;
    std::string GetLocalName() const;

protected:
    const ClassDescriptor* Descriptor() const noexcept override;

private:
    friend class ObjectAccess;
    explicit CForeignElement(unsigned id);

    CTulStringW name_;
};

/// An attribute that the class of its element doesn't list.
struct ForeignAttribute {
    std::string namespaceUri; ///< empty for none
    std::string prefix;
    std::string localName;
    std::string value;
};

/// The attributes of the object that its class doesn't list, in file order.
ODFMODEL_API std::vector<ForeignAttribute> ForeignAttributesOf(const CSDObject& object);
/// The value of one of them; nothing when the object doesn't have it.
ODFMODEL_API std::optional<std::string>
GetForeignAttribute(const CSDObject& object, std::string_view namespaceUri, std::string_view localName);
/// Sets one; `name` may have a prefix, which is used where it is free. False, and nothing changes, for a name
/// that XML doesn't allow, for a namespace declaration, and for an attribute that the class lists: that one
/// has its own accessor. Throws std::bad_alloc without memory.
ODFMODEL_API bool SetForeignAttribute(CSDObject& object, std::string_view namespaceUri, std::string_view name,
                                      std::string_view value);
/// Removes one; false when the object doesn't have it.
ODFMODEL_API bool RemoveForeignAttribute(CSDObject& object, std::string_view namespaceUri,
                                         std::string_view localName);

/// A new comment or processing instruction, owned by the caller.
ODFMODEL_API CSDObject* CreateComment(std::string_view text);
ODFMODEL_API CSDObject* CreateProcessingInstruction(std::string_view target, std::string_view data);

} // namespace ODF
