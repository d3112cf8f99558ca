#include <odfmodel/document/transfer.h>

#include "core/object_access.h"
#include "document/links.h"
#include "document/pictures/member_store.h"
#include "document/styles/style_trees.h"
#include "serial/crypto/base64.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/document/odf_document.h>
#include <odfmodel/document/open_document.h>
#include <odfmodel/document/styles.h>
#include <odfmodel/elements/office/document.h>

#include <algorithm>
#include <deque>
#include <map>
#include <tuple>

namespace ODF {
namespace {

using Part = StyleTrees::Part;

/// Automatic styles that stand on automatic ones are compared by all of it only so deep: files that nest them
/// are rare, and a circle has no end.
constexpr unsigned kMaxComparedDepth = 8;

} // namespace

struct Transfer::State {
    StyleTrees source;
    StyleTrees target;
    std::unique_ptr<MemberStore> from;
    std::unique_ptr<MemberStore> to;
    bool isSame = false; ///< one document: names stay
    References references;
    std::vector<std::string> missing;

    using StyleKey = std::tuple<NamedKind, std::string, Part, Part>;
    std::map<StyleKey, std::string> names;                   ///< of styles in the target
    std::map<std::string, std::string, std::less<>> members; ///< of pictures and objects in the target
    /// What was put into the target and still names what the source calls so.
    struct Unfinished {
        CSDObject* object;
        Part sourcePart;
        Part targetPart;
    };
    std::deque<Unfinished> unfinished;

    template<typename From, typename To>
    static std::unique_ptr<State> make(From& from, To& to);
    /// Makes all that the object and what is below it names known in the target, and the names right.
    void fit(CSDObject& object, Part sourcePart, Part targetPart, unsigned depth);
    void fitAll();

private:
    std::string bring(NamedKind kind, const std::string& name, Part sourcePart, Part targetPart,
                      unsigned depth);
    void bringMember(CSDObject& object);
    std::string copyObject(const std::string& folder);
    void miss(const std::string& name) {
        if (std::find(missing.begin(), missing.end(), name) == missing.end()) missing.push_back(name);
    }
};

void Transfer::State::fit(CSDObject& object, Part sourcePart, Part targetPart, unsigned depth) {
    ForEachInStyle(object, [&](CSDObject& each, std::optional<NamedKind> family) {
        references.visit(each, family, [&](NamedKind kind, const std::string& name) {
            return bring(kind, name, sourcePart, targetPart, depth);
        });
        bringMember(each);
    });
}

void Transfer::State::fitAll() {
    while (!unfinished.empty()) {
        const Unfinished next = unfinished.front();
        unfinished.pop_front();
        fit(*next.object, next.sourcePart, next.targetPart, 0);
    }
}

std::string Transfer::State::bring(NamedKind kind, const std::string& name, Part sourcePart, Part targetPart,
                                   unsigned depth) {
    if (isSame && sourcePart == targetPart) return name;
    const StyleKey key{kind, name, sourcePart, targetPart};
    if (const auto known = names.find(key); known != names.end()) return known->second;
    const CSDObject* const style = source.find(kind, name, sourcePart);
    names.emplace(key, name); // also ends what goes round in a circle
    if (!style) return name;
    const bool isAutomatic = IsAutomaticStyle(*style);
    // Common styles and all that hangs on master pages are in the styles of both documents.
    const Part fromPart = isAutomatic || kind == NamedKind::Font ? sourcePart : Part::Styles;
    Part toPart = isAutomatic || kind == NamedKind::Font ? targetPart : Part::Styles;
    if (kind == NamedKind::PageLayout) toPart = Part::Styles;
    if (!isAutomatic) {
        const std::string own = NameOfNamed(*style);
        const auto place = StyleTrees::commonPlaceOf(kind, toPart);
        if (const CSDObject* const present = target.findIn(place, kind, own))
            return names[key] = NameOfNamed(*present);
        if (isSame) return name;
        if (CSDObject* const added = target.add(place, style->Clone()))
            unfinished.push_back({added, fromPart, toPart});
        else
            miss(own);
        return names[key] = own;
    }
    std::unique_ptr<CSDObject> copy = style->Clone();
    const bool isCompared = depth < kMaxComparedDepth;
    if (isCompared) fit(*copy, fromPart, toPart, depth + 1);
    CSDObject* const added = target.addAutomatic(StyleTrees::automaticOf(toPart), std::move(copy));
    if (!added) {
        miss(name);
        return name;
    }
    if (!isCompared) unfinished.push_back({added, fromPart, toPart});
    return names[key] = NameOfNamed(*added);
}

void Transfer::State::bringMember(CSDObject& object) {
    if (isSame) return;
    const std::string link = HrefOf(object);
    const std::string name = MemberOf(link, {});
    if (name.empty()) return;
    if (const auto known = members.find(name); known != members.end()) {
        if (!known->second.empty()) SetAttributeText(object, "xlink:href", known->second);
        return;
    }
    Document* const folders = from->objects();
    const bool isObject = folders && folders->HasMember(name + "/content.xml");
    std::string own;
    if (isObject) {
        own = copyObject(name);
        if (!own.empty() && link.starts_with("./")) own.insert(0, "./");
    } else {
        const auto bytes = from->read(name);
        if (!bytes) { // a link to a file next to the document stays as it is
            if (name.starts_with("Pictures/") || name.starts_with("Object ")) miss(name);
            return;
        }
        own = to->addPicture(*bytes, name);
        if (own.empty() && !to->objects() && ObjectAccess::isExtended(object) &&
            !object.Child<COfficeBinaryData>()) {
            // A flat document has its pictures in the tree.
            std::unique_ptr<COfficeBinaryData> data(
                static_cast<COfficeBinaryData*>(COfficeBinaryData::Create()));
            data->Setval(crypto::ToBase64(*bytes));
            object.Append(std::move(data));
            object.Unset("xlink:href");
            return;
        }
    }
    if (own.empty())
        miss(name);
    else
        SetAttributeText(object, "xlink:href", own);
    members.emplace(name, own);
}

std::string Transfer::State::copyObject(const std::string& folder) {
    Document& origin = *from->objects();
    Document* const goal = to->objects();
    if (!goal) return {};
    std::string own = FreeObjectFolder(*goal);
    std::vector<unsigned char> bytes;
    for (const std::string& name : origin.Members())
        if (name.starts_with(folder + '/') &&
            !(origin.ReadMember(name, bytes) &&
              goal->WriteMember(own + name.substr(folder.size()), bytes, origin.MediaTypeOf(name))))
            miss(name);
    goal->SetMediaTypeOf(own + '/', origin.MediaTypeOf(folder + '/'));
    const std::string picture = "ObjectReplacements/" + folder;
    if (origin.HasMember(picture) && origin.ReadMember(picture, bytes) &&
        goal->WriteMember("ObjectReplacements/" + own, bytes, origin.MediaTypeOf(picture)))
        members.emplace(picture, "./ObjectReplacements/" + own);
    return own;
}

template<typename From, typename To>
std::unique_ptr<Transfer::State> Transfer::State::make(From& from, To& to) {
    const bool isSame = static_cast<const void*>(&from) == static_cast<const void*>(&to);
    return std::unique_ptr<State>(
        new State{TreesOf(from), TreesOf(to), StoreOf(from), StoreOf(to), isSame, {}, {}, {}, {}, {}});
}

Transfer::Transfer(Document& from, Document& to) : state_(State::make(from, to)) {}
Transfer::Transfer(Document& from, CODFDoc& to) : state_(State::make(from, to)) {}
Transfer::Transfer(CODFDoc& from, Document& to) : state_(State::make(from, to)) {}
Transfer::Transfer(CODFDoc& from, CODFDoc& to) : state_(State::make(from, to)) {}
Transfer::Transfer(Transfer&& other) noexcept = default;
Transfer& Transfer::operator=(Transfer&& other) noexcept = default;
Transfer::~Transfer() = default;

const std::vector<std::string>& Transfer::Missing() const noexcept {
    return state_->missing;
}

std::unique_ptr<CSDObject> Transfer::CopyObject(const CSDObject& object, const CSDObject& place) {
    std::unique_ptr<CSDObject> copy = object.Clone();
    if (!copy) return copy;
    state_->fit(*copy, state_->source.partOf(object), state_->target.partOf(place), 0);
    state_->fitAll();
    return copy;
}

} // namespace ODF
