#pragma once

#include <odfmodel/core/string.h>
#include <odfmodel/core/target_mode.h>
#include <odfmodel/export.h>
#include <odfmodel/package/text.h>

#include <vector>

namespace SDPackage {

/// One relationship as it is in a `.rels` member. A value object; texts are never null.
class ODFMODEL_API IRelationship {
public:
    IRelationship() = default;
    IRelationship(const IRelationship&) = default;
    IRelationship(IRelationship&&) = default;
    IRelationship& operator=(const IRelationship&) = default;
    IRelationship& operator=(IRelationship&&) = default;

    virtual const unsigned short* GetId() const;
    virtual const unsigned short* GetType() const;
    /// The target without percent and entity escapes.
    virtual const unsigned short* GetTarget() const;
    virtual TargetMode GetTargetMode() const;
    virtual void SetId(const unsigned short* id);
    virtual void SetType(const unsigned short* type);
    virtual void SetTargetMode(TargetMode mode);
    virtual void SetTarget(const unsigned short* target);
    /// The `Relationship` element, with the target escaped.
    virtual CTulStringW ToXml() const;
    virtual ~IRelationship();

    void SetId(const PlainText auto& id) { SetId(CTulStringW(id).c_str()); }
    void SetType(const PlainText auto& type) { SetType(CTulStringW(type).c_str()); }
    void SetTarget(const PlainText auto& target) { SetTarget(CTulStringW(target).c_str()); }

private:
    CTulStringW id_;
    CTulStringW type_;
    TargetMode targetMode_ = TargetModeInternal;
    CTulStringW target_;
};

/// The fields of one relationship as plain data.
struct RelationshipRecord {
    CTulStringW id;
    CTulStringW type;
    CTulStringW target;
    TargetMode targetMode = TargetModeInternal;
    CTulStringW writtenTarget{}; ///< the target with all the escapes that it has in the file
};

using RelationshipVector = std::vector<RelationshipRecord>;

/// A target as a `.rels` member holds it: "%" that starts no escape becomes "%25", then `&`, blank, line
/// feed, `"`,
/// `[` and `]` are escaped; `<`, tab and carriage return become references, so that the member stays well
/// formed.
ODFMODEL_API CTulStringW EscapeTarget(const CTulStringW& target);
/// Undoes the escapes of `&`, blank, line feed, `"`, `[` and `]`; all others stay.
ODFMODEL_API CTulStringW UnescapeTarget(const CTulStringW& target);

/// The relative path that leads from the part `from` to the part `to`, both package paths with `/` or `\`:
/// "../media/image1.png" from "/ppt/slides/slide1.xml" to "/ppt/media/image1.png".
ODFMODEL_API void MakeRelativeTarget(const CTulStringW& from, const CTulStringW& to, CTulStringW& out);

} // namespace SDPackage
