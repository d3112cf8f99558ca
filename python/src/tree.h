#pragma once

#include <pybind11/pybind11.h>

#include <odfmodel/core/object.h>
#include <odfmodel/document/open_document.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <unordered_map>
#include <utility>

// Who owns the objects that Python holds.
//
// Each tree knows the Python objects of its elements, and each of those holds its tree. So a tree lives as
// long as one of its elements is held, an element is the same Python object whenever it is asked for, and
// what leaves a tree takes the Python objects of all that is below it along.
namespace py = pybind11;
namespace odfpython {

class Tree;
using TreePointer = std::shared_ptr<Tree>;

std::size_t NextVersion() noexcept;

/// The Python object of one element.
struct ElementObject {
    PyObject_HEAD CSDObject* object;
    TreePointer tree;
    PyObject* weakReferences;
};

class Tree {
public:
    virtual ~Tree() = default;
    /// Gives up the object, which has no parent, when this tree is nothing but it; null otherwise.
    virtual std::unique_ptr<CSDObject> release(const CSDObject&) { return nullptr; }
    virtual void takeBack(std::unique_ptr<CSDObject>) {}

    std::unordered_map<CSDObject*, ElementObject*> held;
    /// Is another number after each change that views of the tree have to know, and in each tree.
    std::size_t version = NextVersion();
    /// The same of what views have written to a table, or to one in it.
    std::unordered_map<const CSDObject*, std::size_t> written;
    /// Whether a thread works on the tree without the interpreter's lock.
    bool isBusy = false;
};

/// The trees of a document.
class DocumentTree : public Tree {
public:
    ODF::Document document;
};

/// An element that is in no document, with all below it.
class LooseTree : public Tree {
public:
    explicit LooseTree(std::unique_ptr<CSDObject> object) : object_(std::move(object)) {}
    std::unique_ptr<CSDObject> release(const CSDObject& object) override {
        return object_.get() == &object ? std::move(object_) : nullptr;
    }
    void takeBack(std::unique_ptr<CSDObject> object) override { object_ = std::move(object); }
    CSDObject* object() const noexcept { return object_.get(); }

private:
    std::unique_ptr<CSDObject> object_;
};

/// Throws RuntimeError while another call works on the tree.
void RequireIdle(const Tree& tree);

/// Lets other threads run Python while this one works on the tree. Make it only where nothing of Python is
/// used.
class Unlocked {
public:
    explicit Unlocked(TreePointer tree) : tree_(std::move(tree)) {
        RequireIdle(*tree_);
        tree_->isBusy = true;
        state_ = PyEval_SaveThread();
    }
    Unlocked(const Unlocked&) = delete;
    Unlocked& operator=(const Unlocked&) = delete;
    ~Unlocked() {
        PyEval_RestoreThread(state_);
        tree_->isBusy = false;
    }

private:
    TreePointer tree_; // somebody may close the document meanwhile
    PyThreadState* state_;
};

/// An element as argument and result of what Python calls.
class Element : public py::object {
public:
    PYBIND11_OBJECT_DEFAULT(Element, py::object, isElement)
    /// The object; throws RuntimeError while another thread works on its tree.
    CSDObject& operator*() const {
        RequireIdle(*tree());
        return raw();
    }
    CSDObject* operator->() const { return &**this; }
    /// The object for the thread that works on the tree.
    CSDObject& raw() const { return *held().object; }
    /// A pointer of its own: the element may go to another tree while it is used.
    TreePointer tree() const { return held().tree; }

private:
    ElementObject& held() const { return *reinterpret_cast<ElementObject*>(ptr()); }
    static bool isElement(PyObject* object);
};

/// Keeps the tree as it is while pointers to what Python doesn't hold are used and Python's objects are made.
/// That may run code of others: importing a module lets other threads on, and collecting garbage calls
/// finalizers.
class Pinned {
public:
    explicit Pinned(TreePointer tree);
    Pinned(const Pinned&) = delete;
    Pinned& operator=(const Pinned&) = delete;
    ~Pinned();
    /// As `Wrap`.
    Element wrap(CSDObject& object) const;

private:
    TreePointer tree_;
    int collects_;
};

/// A new Python object for an object of the tree, which knows it from now on.
Element MakeObject(PyTypeObject* type, const TreePointer& tree, CSDObject& object);

/// The Python object of an element, comment or processing instruction of the tree.
Element Wrap(const TreePointer& tree, CSDObject& object);
/// The same of an object that is in no tree yet.
Element WrapLoose(std::unique_ptr<CSDObject> object);
/// None for null.
py::object WrapOrNone(const TreePointer& tree, CSDObject* object);

/// Takes `child` from where it is and puts it before `before`, or after all children for null. Throws
/// ValueError or TypeError, with nothing changed, for what can't be.
void Attach(const Element& parent, const Element& child, CSDObject* before);
/// Takes an object out of its parent, into a tree of its own.
void Detach(const TreePointer& tree, CSDObject& object);
/// Takes out the children of `parent` at or below which Python holds something: they are about to be
/// destroyed.
template<typename Filter>
void RescueChildren(const TreePointer& tree, CSDObject& parent, Filter isDoomed);
/// Before the objects of a whole tree go: what Python holds of them lives on in a copy.
void RescueTree(const TreePointer& tree, CSDObject& root);
/// Calls `change`, which may destroy what is in paragraphs at and below `root`. What Python holds of that
/// lives on outside the tree then, in a copy.
void KeepInline(const TreePointer& tree, CSDObject& root, const std::function<void()>& change);

bool IsHeldBelow(const Tree& tree, const CSDObject& object);

template<typename Filter>
void RescueChildren(const TreePointer& tree, CSDObject& parent, Filter isDoomed) {
    if (tree->held.empty()) return;
    std::vector<CSDObject*> doomed;
    for (CSDObject& child : parent.Children())
        if (isDoomed(child) && IsHeldBelow(*tree, child)) doomed.push_back(&child);
    for (CSDObject* const child : doomed)
        Detach(tree, *child);
}

} // namespace odfpython
