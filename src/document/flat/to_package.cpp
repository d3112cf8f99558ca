#include "document/document_kinds.h"
#include "document/flat/declarations.h"
#include "document/guarded.h"
#include "document/links.h"
#include "document/styles/references.h"
#include "document/tree.h"
#include "package/odf/odf_package.h"
#include "serial/crypto/base64.h"

#include <odfmodel/core/foreign.h>
#include <odfmodel/core/reflection.h>
#include <odfmodel/document/flat.h>
#include <odfmodel/document/text.h>
#include <odfmodel/elements/elements.h>

#include <algorithm>
#include <map>
#include <set>

namespace ODF {
namespace flat {
namespace {

using Bytes = std::vector<unsigned char>;

/// The extension for a picture, by how its bytes begin; empty for one that isn't known.
std::string_view ExtensionOf(const Bytes& bytes) {
    struct PictureHead {
        std::string_view head;
        std::string_view extension;
    };
    using namespace std::string_view_literals;
    constexpr PictureHead kHeads[] = {{"\x89PNG"sv, ".png"},
                                      {"\xFF\xD8\xFF"sv, ".jpg"},
                                      {"GIF8"sv, ".gif"},
                                      {"BM"sv, ".bmp"},
                                      {"II*\0"sv, ".tif"},
                                      {"MM\0*"sv, ".tif"},
                                      {"%PDF"sv, ".pdf"},
                                      {"VCLMTF"sv, ".svm"},
                                      {"<svg"sv, ".svg"},
                                      {"<?xml"sv, ".svg"},
                                      {"\xD7\xCD\xC6\x9A"sv, ".wmf"},
                                      {"\1\0\0\0"sv, ".emf"}};
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    for (const PictureHead& row : kHeads)
        if (text.starts_with(row.head)) return row.extension;
    return text.size() > 12 && text.starts_with("RIFF") && text.substr(8, 4) == "WEBP" ? ".webp" : "";
}

class Packing {
public:
    explicit Packing(OdfPackage& package) : package_(package) {}

    /// Makes the members of a document and of all that are embedded in it; `root` is used up. False when a
    /// tree can't be written.
    bool add(CSDObject& root);

private:
    /// The document goes into `folder`, empty or with a `/` at its end.
    void addOne(CSDObject& root, const std::string& folder);
    void takeOut(CSDObject& root, const std::string& folder);
    void takeOutData(CSDObject& object, CSDObject& data, const std::string& folder);
    void takeOutObject(CSDObject& object, CSDObject& inner, const std::string& folder);
    void put(CSDObject& root, const std::string& member) {
        Bytes bytes;
        isDone_ = WriteTree(root, bytes) && package_.put(member, std::move(bytes)) && isDone_;
    }

    struct Inner {
        std::unique_ptr<CSDObject> root;
        std::string folder;
    };
    OdfPackage& package_;
    std::map<std::pair<std::string, Bytes>, std::string> pictures_; ///< names by folder and content
    std::vector<Inner> inner_;                                      ///< objects that are still to be added
    std::vector<std::pair<std::string, std::string>> folders_;      ///< of objects, and their media types
    unsigned count_ = 0;                                            ///< of pictures and objects
    bool isDone_ = true;
};

bool Packing::add(CSDObject& root) {
    addOne(root, {});
    // Objects within objects wait in a list: no nesting of a file is one of calls.
    while (!inner_.empty()) {
        const Inner inner = std::move(inner_.back());
        inner_.pop_back();
        if (inner.root->GetID() == CMathMath::kId)
            put(*inner.root, inner.folder + "content.xml");
        else
            addOne(*inner.root, inner.folder);
    }
    for (const auto& [folder, mediaType] : folders_)
        package_.setMediaTypeOf(folder, mediaType);
    return isDone_;
}

/// The automatic styles that `user` refers to, and those that these refer to.
std::set<const CSDObject*> UsedStyles(CSDObject* user, CSDObject* automatic) {
    std::set<const CSDObject*> used;
    if (!user || !automatic) return used;
    std::multimap<StyleKey, CSDObject*> byKey;
    for (CSDObject& style : automatic->Children())
        if (const auto key = KeyOf(style)) byKey.emplace(*key, &style);
    References references;
    std::vector<CSDObject*> open{user};
    while (!open.empty()) {
        CSDObject* const from = open.back();
        open.pop_back();
        references.visitAll(*from,
                            [&](NamedKind kind, const std::string& name) -> std::optional<std::string> {
                                const auto [begin, end] = byKey.equal_range({kind, name});
                                for (auto at = begin; at != end; ++at)
                                    if (used.insert(at->second).second) open.push_back(at->second);
                                return std::nullopt;
                            });
    }
    return used;
}

/// Moves or copies what the parts have in common.
class Parts {
public:
    explicit Parts(CSDObject& root) : root_(root), version_(AttributeOf(root, "office:version")) {}
    template<typename Root>
    std::unique_ptr<Root> make() const {
        std::unique_ptr<Root> part(static_cast<Root*>(Root::Create()));
        if (!version_.empty()) SetAttributeText(*part, "office:version", version_);
        AddDeclarations(root_, *part);
        AddForeignAttributes(root_, *part);
        return part;
    }
    template<typename T>
    void move(CSDObject& to) const {
        if (CSDObject* const child = root_.Child<T>()) child->MoveTo(to);
    }
    template<typename T>
    void copy(CSDObject& to) const {
        if (const CSDObject* const child = root_.Child<T>()) to.Append(child->Clone());
    }
    template<typename T>
    bool has() const {
        return root_.Child<T>() != nullptr;
    }

private:
    CSDObject& root_;
    std::string version_;
};

void Packing::addOne(CSDObject& root, const std::string& folder) {
    takeOut(root, folder);
    const Parts parts(root);
    CSDObject* const automatic = root.Child<COfficeAutomaticStyles>();
    const std::set<const CSDObject*> ofMasters = UsedStyles(root.Child<COfficeMasterStyles>(), automatic);
    const std::set<const CSDObject*> ofBody = UsedStyles(root.Child<COfficeBody>(), automatic);
    const auto styles = parts.make<COfficeDocumentStyles>();
    const auto content = parts.make<COfficeDocumentContent>();
    parts.copy<COfficeFontFaceDecls>(*styles);
    parts.move<COfficeStyles>(*styles);
    parts.move<COfficeScripts>(*content);
    parts.move<COfficeFontFaceDecls>(*content);
    if (automatic) {
        auto& forStyles = styles->Append<COfficeAutomaticStyles>();
        auto& forContent = content->Append<COfficeAutomaticStyles>();
        for (CSDObject& style : automatic->Children()) {
            const bool isOfMasters = ofMasters.contains(&style) || style.GetID() == CStylePageLayout::kId;
            if (isOfMasters) forStyles.Append(style.Clone());
            if (!isOfMasters || ofBody.contains(&style)) forContent.Append(style.Clone());
        }
    }
    parts.move<COfficeMasterStyles>(*styles);
    parts.move<COfficeBody>(*content);
    put(*content, folder + "content.xml");
    if (styles->HasChildList()) put(*styles, folder + "styles.xml");
    if (parts.has<COfficeMeta>()) {
        const auto meta = parts.make<COfficeDocumentMeta>();
        parts.move<COfficeMeta>(*meta);
        put(*meta, folder + "meta.xml");
    }
    if (parts.has<COfficeSettings>()) {
        const auto settings = parts.make<COfficeDocumentSettings>();
        parts.move<COfficeSettings>(*settings);
        put(*settings, folder + "settings.xml");
    }
}

void Packing::takeOut(CSDObject& root, const std::string& folder) {
    // A link of a flat document leads from the folder of the file, one of a package from its own folder.
    std::string out;
    for (std::size_t i = 0; i <= static_cast<std::size_t>(std::count(folder.begin(), folder.end(), '/')); ++i)
        out += "../";
    std::vector<CSDObject*> open{&root};
    while (!open.empty()) {
        CSDObject* const object = open.back();
        open.pop_back();
        CSDObject* inner = nullptr;
        if (object->GetID() == CDrawObject::kId) inner = object->Child<COfficeDocument>();
        if (object->GetID() == CDrawObject::kId && !inner) inner = object->Child<CMathMath>();
        CSDObject* const data = MayHoldData(*object) ? object->Child<COfficeBinaryData>() : nullptr;
        if (inner) {
            AddDeclarations(root, *inner);
            takeOutObject(*object, *inner, folder);
        } else if (data) {
            takeOutData(*object, *data, folder);
        } else if (const std::string href = HrefOf(*object); IsRelative(href)) {
            SetAttributeText(*object, "xlink:href", out + href);
        }
        if (const std::vector<CSDObject*>* const list = object->GetObjectList())
            std::copy_if(list->rbegin(), list->rend(), std::back_inserter(open),
                         [](const CSDObject* child) { return child != nullptr; });
    }
}

void Packing::takeOutData(CSDObject& object, CSDObject& data, const std::string& folder) {
    const Bytes bytes = crypto::FromBase64(Text(data));
    std::string& name = pictures_[{folder, bytes}];
    if (name.empty()) {
        const std::string number = std::to_string(++count_);
        std::string_view mediaType;
        if (object.GetID() == CDrawObjectOle::kId) {
            name = "Object " + number;
            mediaType = "application/vnd.sun.star.oleobject";
        } else if (object.GetID() == CSvgFontFaceUri::kId) {
            name = "Fonts/font" + number + ".ttf";
            mediaType = "application/x-font-ttf";
        } else {
            name = "Pictures/image" + number + std::string(ExtensionOf(bytes));
        }
        isDone_ = package_.put(folder + name, bytes, mediaType) && isDone_;
    }
    object.Remove(data);
    SetLink(object, object.GetID() == CDrawObjectOle::kId ? "./" + name : name);
}

void Packing::takeOutObject(CSDObject& object, CSDObject& inner, const std::string& folder) {
    const std::string name = "Object " + std::to_string(++count_);
    std::string mediaType = AttributeOf(inner, "office:mimetype");
    if (mediaType.empty()) mediaType = MediaTypeFor(DocumentKind::Formula);
    folders_.emplace_back(folder + name + "/", std::move(mediaType));
    inner_.push_back({object.Detach(inner), folder + name + "/"});
    SetLink(object, "./" + name);
}

Result Pack(Document& flat, Document& package) {
    std::string mediaType = flat.MediaType();
    if (mediaType.empty()) mediaType = MediaTypeFor(flat.Kind());
    OdfPackage made;
    made.setMediaType(mediaType);
    made.setVersion(flat.Version().empty() ? "1.2" : flat.Version());
    const std::unique_ptr<CSDObject> root = flat.Flat()->Clone();
    if (!Packing(made).add(*root)) return Result(Status::CouldNotWrite);
    OdfPackage::WriteOptions options;
    options.compression = 1; // it is packed again when it is saved
    Diagnostics diagnostics;
    Bytes bytes;
    const Status written = made.write(options, bytes, diagnostics);
    if (written != Status::Ok) return Result(written, diagnostics.notes());
    Document opened;
    Result result = opened.Open(bytes);
    if (result) package = std::move(opened);
    return result;
}

} // namespace
} // namespace flat

Result ToPackage(Document& flat, Document& package) {
    if (!flat.IsFlat()) return Result(Status::NothingToSave);
    if (!flat.IsWhole()) return Result(Status::Damaged);
    return Guarded([&] { return flat::Pack(flat, package); });
}

} // namespace ODF
