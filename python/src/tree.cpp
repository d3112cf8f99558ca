#include "tree.h"

#include "classes.h"

#include <odfmodel/core/foreign.h>
#include <odfmodel/elements/text/paragraph.h>

#include <unordered_set>
#include <vector>

namespace odfpython {
namespace {

/// What Python holds of `root` and below it belongs to `to` from now on.
void Rehome(Tree& from, const TreePointer& to, CSDObject& root) {
    const auto move = [&](CSDObject& object) {
        const auto at = from.held.find(&object);
        if (at == from.held.end()) return;
        ElementObject* const element = at->second;
        to->held.insert(from.held.extract(at));
        element->tree = to;
    };
    move(root);
    for (CSDObject& object : root.Descendants()) {
        if (from.held.empty()) return;
        move(object);
    }
}

/// Whether the children are pieces of a text.
bool HoldsText(const CSDObject& object) noexcept {
    switch (object.GetID()) {
    case ODF::CTextP::kId:
    case ODF::CTextH::kId:
    case ODF::CTextSpan::kId:
    case ODF::CTextA::kId:
    case ODF::CTextRuby::kId:
    case ODF::CTextRubyBase::kId:
    case ODF::kForeignElementId:
        return true;
    default:
        return false;
    }
}

/// What is in a paragraph at or below `root`, or in `root` itself, and has the object at or below it; the
/// outermost of them, or null. Null, too, for an object that isn't below `root`.
CSDObject* OutermostInline(CSDObject& object, const CSDObject& root) noexcept {
    CSDObject* found = nullptr;
    for (CSDObject* at = &object; at != &root; at = at->Parent()) {
        const CSDObject* const parent = at->Parent();
        if (!parent) return nullptr;
        if (HoldsText(*parent)) found = at;
    }
    return found;
}

/// A copy of an object with all below it, for those who hold something of it.
struct Copy {
    explicit Copy(CSDObject& object) {
        std::unique_ptr<CSDObject> made = object.Clone();
        if (!made) throw py::type_error("an element that is held can't be copied");
        pairs.emplace_back(&object, made.get());
        auto at = made->Descendants().begin();
        for (CSDObject& below : object.Descendants())
            pairs.emplace_back(&below, &*at++);
        tree = std::make_shared<LooseTree>(std::move(made));
    }
    TreePointer tree;
    std::vector<std::pair<CSDObject*, CSDObject*>>
        pairs; ///< what was copied, which may be gone, and the copies
};

/// The Python object goes over to another element.
void Exchange(const TreePointer& from, CSDObject& old, const TreePointer& to, CSDObject& object) {
    const auto at = from->held.find(&old);
    if (at == from->held.end()) return;
    ElementObject* const element = at->second;
    to->held.emplace(&object, element);
    from->held.erase(at);
    element->object = &object;
    element->tree = to;
}

[[noreturn]] void Refuse(ODF::TreeChange change) {
    switch (change) {
    case ODF::TreeChange::OwnAncestor:
        throw py::value_error("an element can't be put into itself");
    case ODF::TreeChange::NotAChild:
        throw py::value_error("the root of a document's tree can't be moved; put its clone() there");
    case ODF::TreeChange::NoList:
        throw py::type_error("this element has no children");
    default:
        throw py::value_error("the element can't be put there");
    }
}

} // namespace

std::size_t NextVersion() noexcept {
    static std::size_t version = 0; // changes under the interpreter's lock
    return ++version;
}

void RequireIdle(const Tree& tree) {
    if (tree.isBusy) throw std::runtime_error("another call is working on this document");
}

bool Element::isElement(PyObject* object) {
    return PyObject_TypeCheck(object, ElementType());
}

Pinned::Pinned(TreePointer tree) : tree_(std::move(tree)) {
    RequireIdle(*tree_);
    tree_->isBusy = true;
    collects_ = PyGC_Disable();
}

Pinned::~Pinned() {
    if (collects_) PyGC_Enable();
    tree_->isBusy = false;
}

Element Pinned::wrap(CSDObject& object) const {
    const auto at = tree_->held.find(&object);
    // One that is just being freed may still be there.
    if (at != tree_->held.end() && Py_REFCNT(at->second) > 0)
        return py::reinterpret_borrow<Element>(reinterpret_cast<PyObject*>(at->second));
    return MakeObject(TypeOf(object), tree_, object);
}

Element MakeObject(PyTypeObject* type, const TreePointer& tree, CSDObject& object) {
    PyObject* const made = type->tp_alloc(type, 0);
    if (!made) throw py::error_already_set();
    auto* const element = reinterpret_cast<ElementObject*>(made);
    new (&element->tree) TreePointer(tree);
    element->object = &object;
    Element result = py::reinterpret_steal<Element>(made);
    tree->held.insert_or_assign(&object, element);
    return result;
}

Element Wrap(const TreePointer& tree, CSDObject& object) {
    return Pinned(tree).wrap(object);
}

Element WrapLoose(std::unique_ptr<CSDObject> object) {
    if (!object) throw py::type_error("this element can't be copied");
    CSDObject& made = *object;
    return Wrap(std::make_shared<LooseTree>(std::move(object)), made);
}

py::object WrapOrNone(const TreePointer& tree, CSDObject* object) {
    return object ? py::object(Wrap(tree, *object)) : py::none();
}

void Attach(const Element& parent, const Element& child, CSDObject* before) {
    CSDObject& to = *parent;
    CSDObject& moved = *child;
    const TreePointer from = child.tree();
    if (before == &moved) return;
    for (const CSDObject* at = &to; at; at = at->Parent())
        if (at == &moved) Refuse(ODF::TreeChange::OwnAncestor);
    ODF::TreeChange change = ODF::TreeChange::NotAChild;
    if (moved.Parent()) {
        change = moved.MoveTo(to);
        if (change == ODF::TreeChange::Done && before) {
            std::unique_ptr<CSDObject> taken = to.Detach(moved);
            change = to.Insert(std::move(taken), *before);
        }
    } else if (std::unique_ptr<CSDObject> taken = from->release(moved)) {
        change = before ? to.Insert(std::move(taken), *before) : to.Append(std::move(taken));
        if (taken) from->takeBack(std::move(taken));
    }
    if (change != ODF::TreeChange::Done) Refuse(change);
    from->version = NextVersion();
    parent.tree()->version = NextVersion();
    if (from != parent.tree()) Rehome(*from, parent.tree(), moved);
}

void Detach(const TreePointer& tree, CSDObject& object) {
    RequireIdle(*tree);
    std::unique_ptr<CSDObject> taken = object.Parent() ? object.Parent()->Detach(object) : nullptr;
    if (!taken) throw py::value_error("the element is in no other");
    tree->version = NextVersion();
    Rehome(*tree, std::make_shared<LooseTree>(std::move(taken)), object);
}

bool IsHeldBelow(const Tree& tree, const CSDObject& object) {
    const auto isHeld = [&](const CSDObject& at) { return tree.held.contains(const_cast<CSDObject*>(&at)); };
    if (tree.held.empty()) return false;
    if (isHeld(object)) return true;
    for (const CSDObject& below : object.Descendants())
        if (isHeld(below)) return true;
    return false;
}

void RescueTree(const TreePointer& tree, CSDObject& root) {
    if (!IsHeldBelow(*tree, root)) return;
    const Copy copy(root);
    for (const auto& [object, copied] : copy.pairs)
        Exchange(tree, *object, copy.tree, *copied);
}

void KeepInline(const TreePointer& tree, CSDObject& root, const std::function<void()>& change) {
    std::unordered_map<CSDObject*, Copy> copies;
    for (const auto& [object, element] : tree->held)
        if (CSDObject* const part = OutermostInline(*object, root)) copies.try_emplace(part, *part);
    change();
    if (copies.empty()) return;
    std::unordered_set<const CSDObject*> present;
    for (const CSDObject& object : root.Descendants())
        present.insert(&object);
    for (const auto& [part, copy] : copies)
        for (const auto& [object, copied] : copy.pairs)
            if (!present.contains(object)) Exchange(tree, *object, copy.tree, *copied);
}

} // namespace odfpython
