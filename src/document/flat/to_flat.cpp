#include "document/document_kinds.h"
#include "document/flat/declarations.h"
#include "document/guarded.h"
#include "document/links.h"
#include "document/styles/references.h"
#include "package/paths.h"
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

/// Objects within objects; more are none that a program has made.
constexpr std::size_t kMaxNesting = 16;
/// What pictures and objects may take together in bytes of XML, besides several times what the members have.
constexpr std::uint64_t kFreeInlined = std::uint64_t{256} << 20;
constexpr std::uint64_t kInlinedPerByte = 8;
/// A tree takes so much more memory and time than the bytes of a picture.
constexpr std::uint64_t kTreeWeight = 16;

struct TooLarge {};

/// Copies the child of one class.
template<typename T>
void CopyChild(const CSDObject* from, CSDObject& to) {
    const T* const child = from ? from->Child<T>() : nullptr;
    if (!child) return;
    std::unique_ptr<CSDObject> copy = child->Clone();
    if (!AddDeclarations(*from, to)) AddDeclarations(*from, *copy);
    to.Append(std::move(copy));
}

/// The media type of a document whose package doesn't tell it, by what is in its body.
std::string_view MediaTypeOf(const CSDObject& content) {
    if (const auto* const body = content.Child<COfficeBody>())
        for (const CSDObject& child : body->Children())
            if (const auto info = ClassOf(child))
                if (const DocumentKind kind = KindOfBody(info->elementName()); kind != DocumentKind::Unknown)
                    return MediaTypeFor(kind);
    return {};
}

/// New names of styles by what they were.
using Renamed = std::map<StyleKey, std::string>;

/// Whether two styles of one name say the same, and mean the same by what they refer to.
bool IsSame(CSDObject& style, CSDObject& other, const Renamed& renamed, References& references) {
    if (ToXml(style, {}, Fidelity::Everything) != ToXml(other, {}, Fidelity::Everything)) return false;
    bool isSame = true;
    references.visitAll(style, [&](NamedKind kind, const std::string& name) -> std::optional<std::string> {
        isSame = isSame && !renamed.contains({kind, name});
        return std::nullopt;
    });
    return isSame;
}

class Flattening {
public:
    explicit Flattening(Document& document) : document_(document) {
        for (const FileEntry& entry : document.FileEntries())
            left_ += entry.size * kInlinedPerByte;
    }

    /// The document in `folder` of the package, empty or with a `/` at its end; null when there is none.
    std::unique_ptr<CSDObject> documentIn(const std::string& folder, const std::string& mediaType,
                                          std::size_t depth);
    /// Members that no part of the flat document has taken in.
    std::vector<std::string> leftOut() const;

private:
    std::unique_ptr<CSDObject> assemble(const std::string& folder, const CSDObject& content,
                                        const std::string& mediaType);
    static void addAutomaticStyles(CSDObject& to, CSDObject* fromStyles, CSDObject& root);
    void copyFonts(const CSDObject* styles, const CSDObject& content, CSDObject& to);
    void takeIn(CSDObject& root, const std::string& folder, std::size_t depth);
    void takeInLink(CSDObject& object, const std::string& folder, std::size_t depth);
    bool takeInData(CSDObject& object, const std::string& member);
    bool takeInObject(CSDObject& object, const std::string& member, std::size_t depth);
    std::string memberOf(std::string_view href, const std::string& folder) const;
    CSDObject* rootOf(const std::string& member) {
        if (!document_.HasMember(member)) return nullptr;
        used_.insert(member);
        return document_.Root(member);
    }
    void spend(std::uint64_t bytes) {
        if (bytes > left_) throw TooLarge();
        left_ -= bytes;
    }

    Document& document_;
    std::set<std::string> used_;
    std::map<std::string, std::uint64_t> sizes_;
    std::uint64_t left_ = kFreeInlined;
};

std::string Flattening::memberOf(std::string_view href, const std::string& folder) const {
    std::string member = MemberOf(href, folder);
    if (member.empty() || document_.HasMember(member) || document_.HasMember(member + "/content.xml"))
        return member;
    return MemberOf(SDPackage::Unescaped(href), folder);
}

std::unique_ptr<CSDObject> Flattening::documentIn(const std::string& folder, const std::string& mediaType,
                                                  std::size_t depth) {
    const CSDObject* const content = rootOf(folder + "content.xml");
    if (!content) return nullptr;
    if (content->GetID() == CMathMath::kId) return depth > 0 ? content->Clone() : nullptr;
    if (content->GetID() != COfficeDocumentContent::kId) return nullptr;
    std::unique_ptr<CSDObject> root = assemble(folder, *content, mediaType);
    takeIn(*root, folder, depth);
    return root;
}

std::unique_ptr<CSDObject> Flattening::assemble(const std::string& folder, const CSDObject& content,
                                                const std::string& mediaType) {
    const CSDObject* const styles = rootOf(folder + "styles.xml");
    std::unique_ptr<COfficeDocument> root(static_cast<COfficeDocument*>(COfficeDocument::Create()));
    SetAttributeText(*root, "office:mimetype", mediaType.empty() ? MediaTypeOf(content) : mediaType);
    if (const std::string version = AttributeOf(content, "office:version"); !version.empty())
        SetAttributeText(*root, "office:version", version);
    AddForeignAttributes(content, *root);
    CopyChild<COfficeMeta>(rootOf(folder + "meta.xml"), *root);
    CopyChild<COfficeSettings>(rootOf(folder + "settings.xml"), *root);
    CopyChild<COfficeScripts>(&content, *root);
    copyFonts(styles, content, *root);
    CopyChild<COfficeStyles>(styles, *root);
    CopyChild<COfficeAutomaticStyles>(&content, *root);
    // The automatic styles of the other part, whose names may have to change, come along with the master
    // pages that use them.
    std::unique_ptr<CSDObject> other(COfficeDocumentStyles::Create());
    CopyChild<COfficeAutomaticStyles>(styles, *other);
    CopyChild<COfficeMasterStyles>(styles, *other);
    if (other->Child<COfficeAutomaticStyles>()) {
        CSDObject* to = root->Child<COfficeAutomaticStyles>();
        if (!to) to = &root->Append<COfficeAutomaticStyles>();
        addAutomaticStyles(*to, other->Child<COfficeAutomaticStyles>(), *other);
    }
    AddDeclarations(*other, *root);
    if (CSDObject* const masters = other->Child<COfficeMasterStyles>()) masters->MoveTo(*root);
    CopyChild<COfficeBody>(&content, *root);
    return root;
}

/// The fonts of both parts, each name once.
void Flattening::copyFonts(const CSDObject* styles, const CSDObject& content, CSDObject& to) {
    CopyChild<COfficeFontFaceDecls>(styles, to);
    auto* const fonts = to.Child<COfficeFontFaceDecls>();
    if (!fonts) return CopyChild<COfficeFontFaceDecls>(&content, to);
    const auto* const more = content.Child<COfficeFontFaceDecls>();
    if (!more) return;
    std::set<std::string> names;
    for (const CSDObject& font : fonts->Children())
        names.insert(NameOfNamed(font));
    for (const CSDObject& font : more->Children())
        if (names.insert(NameOfNamed(font)).second) fonts->Append(font.Clone());
}

void Flattening::addAutomaticStyles(CSDObject& to, CSDObject* fromStyles, CSDObject& root) {
    std::map<StyleKey, CSDObject*> present;
    std::set<std::string> names;
    for (CSDObject& style : to.Children()) {
        if (const auto key = KeyOf(style)) present.emplace(*key, &style);
        names.insert(NameOfNamed(style));
    }
    std::vector<std::pair<CSDObject*, std::optional<StyleKey>>> added;
    for (CSDObject& style : fromStyles->Children()) {
        added.emplace_back(&style, KeyOf(style));
        names.insert(NameOfNamed(style));
    }
    const auto freeName = [&](const std::string& name) {
        for (unsigned i = 1;; ++i) {
            std::string candidate = name + "-page" + (i > 1 ? std::to_string(i) : std::string());
            if (names.insert(candidate).second) return candidate;
        }
    };
    References references;
    Renamed renamed;
    // Those that others refer to come first: a style that looks the same may mean another list style.
    for (const bool isReferring : {false, true})
        for (const auto& [style, key] : added) {
            if (!key || IsFamily(key->first) != isReferring) continue;
            const auto same = present.find(*key);
            if (same == present.end() || renamed.contains(*key)) continue;
            if (!IsSame(*style, *same->second, renamed, references)) renamed[*key] = freeName(key->second);
        }
    if (!renamed.empty())
        references.visitAll(root, [&](NamedKind kind, const std::string& name) {
            const auto at = renamed.find({kind, name});
            return at == renamed.end() ? std::nullopt : std::optional(at->second);
        });
    for (const auto& [style, key] : added) {
        const auto at = key ? renamed.find(*key) : renamed.end();
        if (at != renamed.end())
            SetAttributeText(*style, "style:name", at->second);
        else if (key && present.contains(*key))
            continue; // the same one is there
        to.Append(style->Clone());
    }
}

void Flattening::takeIn(CSDObject& root, const std::string& folder, std::size_t depth) {
    std::vector<CSDObject*> links;
    for (CSDObject& object : root.Descendants())
        if (object.HasAttribute("xlink:href")) links.push_back(&object);
    for (CSDObject* const object : links)
        takeInLink(*object, folder, depth);
}

void Flattening::takeInLink(CSDObject& object, const std::string& folder, std::size_t depth) {
    const std::string href = HrefOf(object);
    const std::string member = memberOf(href, folder);
    const bool isObject = object.GetID() == CDrawObject::kId || object.GetID() == CDrawObjectOle::kId;
    if (isObject && !member.empty() && takeInObject(object, member, depth)) return;
    if (MayHoldData(object) && !member.empty() && takeInData(object, member)) return;
    // A link out of the package leads from its folder; one of a flat document from the folder of the file.
    std::string_view out = href;
    for (std::size_t i = 0; i <= depth && out.starts_with("../"); ++i)
        out.remove_prefix(3);
    if (out.size() < href.size() && !out.empty()) SetAttributeText(object, "xlink:href", out);
}

bool Flattening::takeInData(CSDObject& object, const std::string& member) {
    if (!document_.HasMember(member)) return false;
    Bytes bytes;
    if (!document_.ReadMember(member, bytes)) return false;
    spend(bytes.size() / 3 * 4 + 4);
    used_.insert(member);
    std::unique_ptr<CSDObject> data(COfficeBinaryData::Create());
    SetText(*data, crypto::ToBase64(bytes));
    const CSDObject* const first = object.Children().empty() ? nullptr : &*object.Children().begin();
    if (first)
        object.Insert(std::move(data), *first);
    else
        object.Append(std::move(data));
    UnsetLink(object);
    return true;
}

bool Flattening::takeInObject(CSDObject& object, const std::string& member, std::size_t depth) {
    const std::string content = member + "/content.xml";
    if (depth >= kMaxNesting || !document_.HasMember(content)) return false;
    std::uint64_t& size = sizes_[content];
    if (size == 0) {
        Bytes bytes;
        if (!document_.ReadMember(content, bytes)) return false;
        size = bytes.size();
    }
    spend(size * kTreeWeight);
    std::unique_ptr<CSDObject> inner =
        documentIn(member + "/", document_.MediaTypeOf(member + "/"), depth + 1);
    if (!inner) return false;
    object.Append(std::move(inner));
    UnsetLink(object);
    return true;
}

std::vector<std::string> Flattening::leftOut() const {
    std::vector<std::string> names;
    for (std::string& name : document_.Members())
        if (!used_.contains(name)) names.push_back(std::move(name));
    return names;
}

/// Whether nothing of the document is lost with the member: what programs make again or need not have.
bool IsDispensable(std::string_view member) {
    for (const std::string_view head :
         {"Thumbnails/", "Configurations2/", "META-INF/", "ObjectReplacements/"})
        if (member.starts_with(head)) return true;
    return member == "mimetype" || member == "manifest.rdf" || member == "layout-cache";
}

Result Refused(Status status, std::string_view why) {
    Note note;
    note.severity = Severity::Error;
    note.text = why;
    return Result(status, {note});
}

Result Flatten(Document& document, Document& flat) {
    if (!document.IsWhole()) return Refused(Status::Damaged, "the document could not be read whole");
    Flattening flattening(document);
    const std::unique_ptr<CSDObject> root = flattening.documentIn({}, document.MediaType(), 0);
    if (!root) return Refused(Status::UnknownType, "a document of this kind has no form of one XML file");
    const std::string xml = ToXml(*root, {}, Fidelity::Everything);
    if (xml.empty()) return Refused(Status::CouldNotWrite, "the tree holds what XML can't");
    Document made;
    Result opened = made.Open(std::span(reinterpret_cast<const unsigned char*>(xml.data()), xml.size()));
    if (!opened) return opened;
    std::vector<Note> notes;
    for (const std::string& member : flattening.leftOut()) {
        const Severity severity = IsDispensable(member) ? Severity::Information : Severity::Warning;
        notes.push_back({NoteCode::General, severity, member, 0, 0, "has no place in one XML file"});
    }
    flat = std::move(made); // may be `document` itself
    return Result(Status::Ok, std::move(notes));
}

} // namespace
} // namespace flat

Result ToFlat(Document& document, Document& flat) {
    if (!document.IsOpen() || document.IsFlat()) return Result(Status::NothingToSave);
    return Guarded([&] {
        try {
            return flat::Flatten(document, flat);
        } catch (const flat::TooLarge&) {
            return flat::Refused(Status::LimitExceeded,
                                 "the pictures and objects are too large for one XML file");
        }
    });
}

} // namespace ODF
