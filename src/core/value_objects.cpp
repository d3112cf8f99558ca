#include <odfmodel/core/value_objects.h>

#include "core/codecs.h"
#include "core/kept.h"
#include "core/object_access.h"
#include "system/clock.h"

#include <odfmodel/core/attribute.h>
#include <odfmodel/core/serializer.h>

#include <new>
#include <typeinfo>

template class CSDValueObject<CTulStringW, const CTulStringW&>;
template class CSDValueObject<SYSTEMTIME, const SYSTEMTIME&>;
template class CSDExtValueObject<CTulStringW, const CTulStringW&>;

CSDAttribute::~CSDAttribute() = default;
const unsigned short* CSDAttribute::GetValue(const unsigned short*) {
    return nullptr;
}
const unsigned short* CSDAttribute::GetValue(const unsigned short*, const unsigned short*) {
    return nullptr;
}
void CSDAttribute::AddAttribute(const unsigned short*, const unsigned short*) {}
void CSDAttribute::AddAttribute(const unsigned short*, const unsigned short*, const unsigned short*) {}

CSDSerializer::~CSDSerializer() = default;
bool CSDSerializer::WriteObject(const unsigned short*, CSDObject*, CSDAttribute*, const unsigned short*,
                                int) {
    return false;
}
void CSDSerializer::WriteRaw(const unsigned short*, int) {}
bool CSDSerializer::SerializeToFile(const unsigned short*, CSDObject*) {
    return false;
}
bool CSDSerializer::OpenMemory(void*, int) {
    return false;
}
bool CSDSerializer::OpenFile(const unsigned short*) {
    return false;
}
int CSDSerializer::Close() {
    return -1;
}
void CSDSerializer::SetDiagnostics(ODF::Diagnostics*) {}
void CSDSerializer::SetFidelity(ODF::Fidelity) {}

CSDDateTimeObject::~CSDDateTimeObject() = default;
CSDDateTimeObject& CSDDateTimeObject::operator=(const SYSTEMTIME& value) {
    value_ = value;
    return *this;
}
CSDDateTimeObject& CSDDateTimeObject::operator=(const SYSTEMTIME* value) {
    value_ = *value;
    return *this;
}

CSDObject* CSDStringValueObject::Create(unsigned id) {
    auto* const object = new CSDStringValueObject(id);
    object->setFlag(kLoose, true);
    return object;
}
CSDStringValueObject::~CSDStringValueObject() = default;

CSDObject* CSDStringValueObject::CloneEmpty() const {
    return typeid(*this) == typeid(CSDStringValueObject) ? Create(GetID()) : nullptr;
}

namespace {

/// Throws std::bad_alloc without memory: false is what an element without character content returns.
void AppendTo(CTulStringW& value, const unsigned short* text, unsigned length) {
    if (!value.Append(text, length)) throw std::bad_alloc();
}

} // namespace

bool CSDStringValueObject::ReadNodeValue(const unsigned short* const text, unsigned length) {
    if (!text || length == 0) return false;
    AppendTo(value_, text, length);
    return true;
}

bool CSDStringValueObject::WriteElement(const unsigned short* name, CSDSerializer* serializer,
                                        CSDAttribute* attributes) {
    if (!serializer) return false;
    WriteAttributes(attributes);
    return serializer->WriteObject(name, this, attributes, value_.IsEmpty() ? nullptr : value_.c_str(), 1);
}

CSDMixedContentObject::~CSDMixedContentObject() = default;

CSDStringValueObject* CSDMixedContentObject::SetText() {
    return static_cast<CSDStringValueObject*>(Adopt(CSDStringValueObject::Create(ODF::kTextRunId)));
}

CSDStringValueObject* CSDMixedContentObject::SetText(const CTulStringW& text) {
    CSDStringValueObject* const run = SetText();
    run->Setval(text);
    return run;
}

bool CSDMixedContentObject::ReadNodeValue(const unsigned short* const text, unsigned length) {
    return text && length > 0 && SetText()->ReadNodeValue(text, length);
}

namespace {

/// Scans one field in the manner of scanf's %0Nhu: blanks, then at most `width` characters of sign and
/// digits.
bool ScanField(std::u16string_view text, std::size_t& at, unsigned width, unsigned short& field) {
    while (at < text.size() && (text[at] == u' ' || (text[at] >= u'\t' && text[at] <= u'\r')))
        ++at;
    bool negative = false;
    if (at < text.size() && width > 0 && (text[at] == u'-' || text[at] == u'+')) {
        negative = text[at++] == u'-';
        --width;
    }
    unsigned value = 0;
    const std::size_t first = at;
    for (; at < text.size() && width > 0 && text[at] >= u'0' && text[at] <= u'9'; ++at, --width)
        value = value * 10 + static_cast<unsigned>(text[at] - u'0');
    if (at == first) return false;
    field = static_cast<unsigned short>(negative ? 0U - value : value);
    return true;
}

struct Field {
    unsigned short SYSTEMTIME::*member;
    unsigned width;
    char16_t separator; ///< what follows the field
};
constexpr Field kFields[] = {
    {&SYSTEMTIME::wYear, 4, u'-'},          {&SYSTEMTIME::wMonth, 2, u'-'},  {&SYSTEMTIME::wDay, 2, u'T'},
    {&SYSTEMTIME::wHour, 2, u':'},          {&SYSTEMTIME::wMinute, 2, u':'}, {&SYSTEMTIME::wSecond, 2, u'.'},
    {&SYSTEMTIME::wMilliseconds, 3, u'\0'},
};

/// Fields after the first text that doesn't fit keep what they held.
void ScanDateTime(std::u16string_view text, SYSTEMTIME& value) {
    std::size_t at = 0;
    for (const Field& field : kFields) {
        if (!ScanField(text, at, field.width, value.*field.member)) return;
        if (field.separator == u'\0' || at >= text.size() || text[at] != field.separator) return;
        ++at;
    }
}

/// True when a field is beyond what the calendar and the clock allow.
bool IsBeyond(const SYSTEMTIME& value) {
    return value.wMonth > 12 || value.wDay > 31 || value.wHour > 24 || value.wMinute > 60 ||
           value.wSecond > 60;
}

} // namespace

CSDObject* CSDDateTimeValueObject::Create(unsigned id) {
    return new CSDDateTimeValueObject(id);
}
CSDDateTimeValueObject::~CSDDateTimeValueObject() = default;

CSDObject* CSDDateTimeValueObject::CloneEmpty() const {
    return typeid(*this) == typeid(CSDDateTimeValueObject) ? Create(GetID()) : nullptr;
}

bool CSDDateTimeValueObject::ReadNodeValue(const unsigned short* const text, unsigned length) {
    if (!text || length == 0) return false;
    AppendTo(rawText_, text, length);
    ScanDateTime(rawText_.view(), value_);
    if (IsBeyond(value_)) value_ = ODF::system::UtcNow();
    return true;
}

bool CSDDateTimeValueObject::WriteElement(const unsigned short* name, CSDSerializer* serializer,
                                          CSDAttribute* attributes) {
    if (!serializer) return false;
    if (IsBeyond(value_)) return true;
    return serializer->WriteObject(name, this, attributes, GetText(), 1);
}

std::vector<CSDObject*>* CSDDateTimeValueObject::GetObjectList() const {
    ODF::Extras* const extras = ODF::ObjectAccess::extras(*this);
    return extras && extras->markup && !extras->markup->content.empty() ? &extras->markup->content : nullptr;
}

bool CSDDateTimeValueObject::HasChildList() const {
    return GetObjectList() != nullptr;
}

CTulStringW CSDDateTimeValueObject::GetText() const {
    CTulStringW text;
    if (!IsBeyond(value_) &&
        !text.Format(u"%04u-%02u-%02uT%02u:%02u:%02u.%03u", value_.wYear, value_.wMonth, value_.wDay,
                     value_.wHour, value_.wMinute, value_.wSecond, value_.wMilliseconds))
        throw std::bad_alloc();
    return text;
}
