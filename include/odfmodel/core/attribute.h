#pragma once

#include <odfmodel/export.h>

/// The attribute list of one element. The reader makes one for each start tag, the serializer one for each
/// element that it is about to write. All text is null-terminated UTF-16.
class ODFMODEL_API CSDAttribute {
public:
    virtual ~CSDAttribute();

    /// The value of the attribute whose name is written exactly so, or null; for attributes without a
    /// namespace. Valid for the duration of the call that handed the list over.
    virtual const unsigned short* GetValue(const unsigned short* qName);
    /// The value of the attribute of that namespace, or null when it is absent. An empty value isn't null.
    virtual const unsigned short* GetValue(const unsigned short* uri, const unsigned short* localName);
    /// Adds an attribute that is written with exactly that name. `value` is copied and put into the file as
    /// it stands: the caller has escaped it.
    virtual void AddAttribute(const unsigned short* qName, const unsigned short* value);
    /// The same for an attribute of a namespace; it is written with the prefix of the URI.
    virtual void AddAttribute(const unsigned short* uri, const unsigned short* localName,
                              const unsigned short* value);

protected:
    CSDAttribute() = default;
    CSDAttribute(const CSDAttribute&) = default;
    CSDAttribute& operator=(const CSDAttribute&) = default;
};
