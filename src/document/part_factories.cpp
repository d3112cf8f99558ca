#include <odfmodel/document/part_factories.h>

#include "platform/files.h"

#include <odfmodel/elements/math/presentation.h>
#include <odfmodel/elements/office/document.h>

#include <algorithm>
#include <array>
#include <memory>
#include <unordered_set>

namespace ODF {
namespace {

/// The piece of a path after the last separator or drive.
std::u16string_view FileName(std::u16string_view path) {
    const std::size_t separator = path.find_last_of(u"/\\:");
    return separator == std::u16string_view::npos ? path : path.substr(separator + 1);
}

constexpr std::size_t kMaxPiece = 255; ///< units of a name, and of an extension
constexpr std::size_t kNameCapacity = 2 * kMaxPiece + 1;

/// Puts the file name of `path` into a buffer that keeps its address.
const unsigned short* PutFileName(std::array<unsigned short, kNameCapacity>& buffer,
                                  std::u16string_view path) {
    const std::u16string_view whole = FileName(path);
    const std::u16string_view name = whole.substr(0, whole.rfind(u'.'));
    const std::u16string_view extension = whole.substr(name.size()).substr(0, kMaxPiece);
    auto end = std::copy_n(name.begin(), std::min(name.size(), kMaxPiece), buffer.begin());
    end = std::copy(extension.begin(), extension.end(), end);
    *end = 0;
    return buffer.data();
}

/// ASCII case folding, which is what file names are compared by.
std::u16string Upper(std::u16string_view text) {
    std::u16string result(text);
    for (char16_t& c : result)
        if (c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - u'a' + u'A');
    return result;
}

/// A name like `name` under which no child is below `folder`: packages have one member of a name.
CTulStringW FreeName(const std::vector<ISDPart*>& children, std::u16string_view folder,
                     const CTulStringW& name) {
    std::unordered_set<std::u16string> taken;
    for (const ISDPart* const child : children) {
        std::u16string path = child ? Upper(ToView(child->GetPackagePath())) : std::u16string();
        std::replace(path.begin(), path.end(), u'\\', u'/');
        taken.insert(std::move(path));
    }
    const std::size_t dot = std::min(name.view().rfind(u'.'), name.view().size());
    CTulStringW tried = name;
    for (int number = 2; taken.contains(Upper(std::u16string(folder) + std::u16string(tried.view())));
         ++number)
        tried.Format(u"%s-%d%s", CTulStringW(name.view().substr(0, dot)), number,
                     CTulStringW(name.view().substr(dot)));
    return tried;
}

CODFPart* AddFilePart(CODFPart* parent, const CTulStringW& path, std::u16string_view folder, CTulStringW name,
                      CODFPart* (*create)(), bool isOwnName = false) {
    if (!parent) return nullptr;
    std::vector<ISDPart*> children;
    parent->GetChildParts(&children);
    const std::u16string wanted = Upper(path.view());
    for (ISDPart* const child : children)
        if (child && Upper(ToView(child->GetLocalPath())) == wanted) return static_cast<CODFPart*>(child);
    if (isOwnName) name = FreeName(children, folder, name);
    std::unique_ptr<CODFPart> part(create());
    CTulStringW packagePath(folder);
    packagePath += name;
    part->SetPackagePath(packagePath);
    part->SetPartname(name);
    part->SetLocalPath(path);
    parent->AddChildPart(part.get());
    return part.release();
}

bool IsReadableFile(const CTulStringW& path) {
    return platform::IsFile(platform::Path(path)) && platform::IsReadable(platform::Path(path));
}

/// The one way in which a part with a tree is made.
template<typename Part, typename Root>
CODFPart* MakePart(CSDNamedObject* root, std::u16string_view elementName) {
    auto part = std::make_unique<Part>();
    if (!root) {
        root = static_cast<Root*>(Root::Create());
        root->SetElemName(elementName);
    }
    part->SetRootClass(root);
    return part.release();
}

CODFPart* MakeChartPart(CODFPart* parent, const unsigned short* directory, std::u16string_view name,
                        CODFPart* (*create)(CSDNamedObject*)) {
    CODFPart* const part = create(nullptr);
    CTulStringW packagePath(directory);
    packagePath += CTulStringW(name);
    part->SetContentType(u"text/xml");
    part->SetRelationtype(u"application/vnd.oasis.opendocument.chart");
    part->SetPackagePath(packagePath);
    part->SetPartname(name);
    if (parent) part->SetLocalPath(parent->GetLocalPath());
    return part;
}

} // namespace

thread_local unsigned CImageRootPart::m_sIndex = 0;
thread_local unsigned CMediaRootPart::m_sIndex = 0;

CImageRootPart::~CImageRootPart() = default;
CODFPart* CImageRootPart::CreatePart() {
    return new CImageRootPart;
}
const unsigned short* CImageRootPart::GetFilename(CTulStringW path) {
    static thread_local std::array<unsigned short, kNameCapacity> name;
    return PutFileName(name, path.view());
}
const unsigned& CImageRootPart::GetIndex() {
    return m_sIndex;
}
void CImageRootPart::IncIndex() {
    ++m_sIndex;
}

CMediaRootPart::~CMediaRootPart() = default;
CODFPart* CMediaRootPart::CreatePart() {
    return new CMediaRootPart;
}
const unsigned short* CMediaRootPart::GetFilename(CTulStringW path) {
    static thread_local std::array<unsigned short, kNameCapacity> name;
    return PutFileName(name, path.view());
}
const unsigned& CMediaRootPart::GetIndex() {
    return m_sIndex;
}
void CMediaRootPart::IncIndex() {
    ++m_sIndex;
}

CODFPart* COfficeDocumentRootPart::CreateClass(CSDNamedObject* root) {
    return MakePart<COfficeDocumentRootPart, COfficeDocument>(root, u"office:document");
}
CODFPart* COfficeDocumentContentRootPart::CreateClass(CSDNamedObject* root) {
    return MakePart<COfficeDocumentContentRootPart, COfficeDocumentContent>(root, u"office:document-content");
}
CODFPart* COfficeDocumentMetaRootPart::CreateClass(CSDNamedObject* root) {
    return MakePart<COfficeDocumentMetaRootPart, COfficeDocumentMeta>(root, u"office:document-meta");
}
CODFPart* COfficeDocumentSettingsRootPart::CreateClass(CSDNamedObject* root) {
    return MakePart<COfficeDocumentSettingsRootPart, COfficeDocumentSettings>(root,
                                                                              u"office:document-settings");
}
CODFPart* COfficeDocumentStylesRootPart::CreateClass(CSDNamedObject* root) {
    return MakePart<COfficeDocumentStylesRootPart, COfficeDocumentStyles>(root, u"office:document-styles");
}
CODFPart* CMathMathRootPart::CreateClass(CSDNamedObject* root) {
    return MakePart<CMathMathRootPart, CMathMath>(root, u"math:math");
}

CODFPart* _CreateImagePart(CODFPart* parent, CTulStringW path, int, int) {
    return AddFilePart(parent, path, u"Pictures/", CImageRootPart::GetFilename(path),
                       &CImageRootPart::CreatePart);
}
CODFPart* _CreateMediaPart(CODFPart* parent, CTulStringW path, int, int) {
    return AddFilePart(parent, path, u"media/", CMediaRootPart::GetFilename(path),
                       &CMediaRootPart::CreatePart);
}
CODFPart* AddPictureFile(CODFPart* parent, const CTulStringW& path) {
    if (!IsReadableFile(path)) return nullptr;
    return AddFilePart(parent, path, u"Pictures/", CImageRootPart::GetFilename(path),
                       &CImageRootPart::CreatePart, true);
}
CODFPart* AddMediaFile(CODFPart* parent, const CTulStringW& path) {
    if (!IsReadableFile(path)) return nullptr;
    return AddFilePart(parent, path, u"media/", CMediaRootPart::GetFilename(path),
                       &CMediaRootPart::CreatePart, true);
}
CODFPart* _CreateChartContentRootPart(CODFPart* parent, const unsigned short* directory) {
    return MakeChartPart(parent, directory, u"content.xml", &COfficeDocumentContentRootPart::CreateClass);
}
CODFPart* _CreateChartStyleRootPart(CODFPart* parent, const unsigned short* directory) {
    CODFPart* const part =
        MakeChartPart(parent, directory, u"styles.xml", &COfficeDocumentStylesRootPart::CreateClass);
    if (parent) parent->AddChildPart(part);
    return part;
}

} // namespace ODF

const unsigned short* ODFUtil::GetMediaType(ODF_MedType type) {
    switch (type) {
    case ODF_MedTypeContent:
        return ToUnits(u"content.xml");
    case ODF_MedTypeStyles:
        return ToUnits(u"styles.xml");
    case ODF_MedTypeMeta:
        return ToUnits(u"meta.xml");
    case ODF_MedTypeSettings:
        return ToUnits(u"settings.xml");
    }
    return nullptr;
}
