#include "element.h"

#include "attributes.h"
#include "classes.h"
#include "path.h"

#include <odfmodel/core/foreign.h>
#include <odfmodel/core/reflection.h>
#include <odfmodel/document/text.h>

#include <algorithm>
#include <memory>

namespace odfpython {
namespace {

/// Goes through children, or all that is below `root`. The next element is held before the present one is
/// handed out, so that one may be removed.
class Iteration {
public:
    Iteration(const Element& root, const Matcher& matches, bool isDeep)
        : root_(root), matches_(matches), isDeep_(isDeep) {
        if (isDeep && matches(*root))
            next_ = root;
        else
            next_ = find(*root, true);
    }
    py::object next() {
        // What was to come next may be elsewhere by now; then it goes on after what was last.
        if (next_ && !isHere(next_))
            next_ = present_ && isHere(present_) ? find(*present_, isDeep_) : Element();
        if (!next_) throw py::stop_iteration();
        present_ = next_;
        next_ = find(*present_, isDeep_);
        return present_;
    }

private:
    /// The element after `at`, which isn't asked itself; null for none.
    Element find(CSDObject& at, bool entersFirst) {
        CSDObject& root = *root_;
        version_ = root_.tree()->version;
        for (CSDObject* object = &at; (object = after(*object, root, entersFirst));)
            if (entersFirst = isDeep_; matches_(*object)) return Wrap(root_.tree(), *object);
        return {};
    }
    /// Whether an element that was below the root is so still.
    bool isHere(const Element& element) const {
        const Tree& tree = *root_.tree();
        if (element.tree().get() != &tree) return false;
        if (version_ == tree.version) return true;
        const CSDObject* const root = &*root_;
        if (!isDeep_) return element->Parent() == root;
        const CSDObject* at = &*element;
        while (at && at != root)
            at = at->Parent();
        return at != nullptr;
    }
    static CSDObject* after(CSDObject& object, const CSDObject& root, bool enters) {
        if (enters)
            for (CSDObject& child : object.Children())
                return &child;
        for (CSDObject* at = &object; at && at != &root; at = at->Parent()) {
            if (CSDObject* const next = at->Next()) return next;
            if (at->Parent() == &root) break;
        }
        return nullptr;
    }

    Element root_;
    Matcher matches_;
    bool isDeep_;
    Element present_;
    Element next_;
    std::size_t version_ = 0; ///< of the tree when `next_` was found
};

/// What takes long enough to let other threads run: what is at the top of a tree.
std::unique_ptr<Unlocked> UnlockedIfLarge(const Element& element) {
    const bool isLarge = !element->Parent() || !element->Parent()->Parent();
    return isLarge ? std::make_unique<Unlocked>(element.tree()) : nullptr;
}

std::vector<CSDObject*> ElementsIn(const Element& parent) {
    std::vector<CSDObject*> elements;
    for (CSDObject& child : parent->Children())
        if (IsElement(child)) elements.push_back(&child);
    return elements;
}

py::list WrapAll(const TreePointer& tree, const std::vector<CSDObject*>& objects) {
    const Pinned pinned(tree);
    py::list list(objects.size());
    for (std::size_t i = 0; i < objects.size(); ++i)
        list[i] = pinned.wrap(*objects[i]);
    return list;
}

py::list FindAll(const Element& root, const py::object& what) {
    const Path path(what);
    std::vector<CSDObject*> found;
    {
        const auto unlocked = UnlockedIfLarge(root);
        found = path.find(root.raw(), false);
    }
    return WrapAll(root.tree(), found);
}

py::object Find(const Element& root, const py::object& what) {
    const std::vector<CSDObject*> found = Path(what).find(*root, true);
    return WrapOrNone(root.tree(), found.empty() ? nullptr : found.front());
}

/// Adds a text; that of an element which no class lists stays as it is.
bool AddText(CSDObject& parent, const std::string& text, CSDObject* before) {
    if (parent.GetID() != ODF::kForeignElementId) return ODF::AddText(parent, text, before);
    std::unique_ptr<CSDObject> run(CSDStringValueObject::Create(ODF::kTextRunId));
    static_cast<CSDStringValueObject&>(*run).Setval(CTulStringW(text));
    const auto change = before ? parent.Insert(std::move(run), *before) : parent.Append(std::move(run));
    return change == ODF::TreeChange::Done;
}

void Put(const Element& parent, const py::object& child, CSDObject* before) {
    if (py::isinstance<py::str>(child)) {
        if (!AddText(*parent, TextFrom(child), before))
            throw py::type_error(TagOf(*parent) + " holds no text of its own");
        parent.tree()->version = NextVersion();
    } else if (py::isinstance<Element>(child)) {
        Attach(parent, py::reinterpret_borrow<Element>(child), before);
    } else {
        throw py::type_error("elements hold elements and str");
    }
}

void Insert(const Element& parent, const py::object& place, const py::object& child) {
    Py_ssize_t index =
        PyNumber_AsSsize_t(place.ptr(), nullptr); // as list.insert: what is too large is the end
    if (index == -1 && PyErr_Occurred()) throw py::error_already_set();
    const std::vector<CSDObject*> elements = ElementsIn(parent);
    const auto count = static_cast<Py_ssize_t>(elements.size());
    if (index < 0) index = std::max<Py_ssize_t>(index + count, 0);
    if (index == 0) // also before text
        for (CSDObject& first : parent->Children())
            return Put(parent, child, &first);
    Put(parent, child, index < count ? elements[static_cast<std::size_t>(index)] : nullptr);
}

void AddBeside(const Element& element, const py::object& other, bool isAfter) {
    CSDObject* const parent = element->Parent();
    if (!parent) throw py::value_error("the element is in no other");
    CSDObject* const before = isAfter ? element->Next() : &*element;
    Put(Wrap(element.tree(), *parent), other, before);
}

void Remove(const Element& parent, const Element& child) {
    if (child->Parent() != &*parent) throw py::value_error("the element is no child of this one");
    Detach(child.tree(), *child);
}

void DropChildren(const Element& element) {
    RescueChildren(element.tree(), *element, [](const CSDObject&) { return true; });
    if (std::vector<CSDObject*>* const list = element->GetObjectList())
        for (CSDObject* const child : std::exchange(*list, {}))
            CSDObject::Delete(child);
}

void SetText(const Element& element, const Text& text) {
    CSDObject& object = *element;
    if (object.GetID() == ODF::kCommentId) {
        static_cast<CSDStringValueObject&>(object).Setval(CTulStringW(text));
        return;
    }
    if (object.GetID() == ODF::kForeignElementId) {
        DropChildren(element);
        AddText(object, text, nullptr);
        return;
    }
    const std::unique_ptr<CSDObject> trial(object.HasChildList() ? MakeElement(TagOf(object)) : nullptr);
    if (!trial || ODF::SetText(*trial, text)) {
        RescueChildren(element.tree(), object, [](const CSDObject&) { return true; });
        if (ODF::SetText(object, text)) return;
    }
    throw py::type_error(TagOf(object) + " holds no text of its own; append a paragraph");
}

void Clear(const Element& element) {
    DropChildren(element);
    ODF::SetText(*element, "");
    element.tree()->version = NextVersion();
}

/// Elements, comments and texts, as they are in the file.
py::list Content(const Element& element) {
    const std::string value = ODF::TextOf(*element);
    const Pinned pinned(element.tree());
    py::list content;
    CSDObject& object = element.raw();
    if (!value.empty() && object.GetID() != ODF::kCommentId) content.append(ToPython(value));
    for (CSDObject& child : object.Children())
        if (ODF::IsTextRun(child))
            content.append(ToPython(static_cast<const CSDStringValueObject&>(child).Getval().view()));
        else
            content.append(pinned.wrap(child));
    return content;
}

py::object GetItem(const Element& parent, const py::object& index) {
    if (py::isinstance<py::slice>(index)) return WrapAll(parent.tree(), ElementsIn(parent))[index];
    if (!PyIndex_Check(index.ptr())) throw py::type_error("children are got by a number or a slice");
    const Py_ssize_t at = IndexFrom(index); // may run Python
    const std::vector<CSDObject*> elements = ElementsIn(parent);
    const auto count = static_cast<Py_ssize_t>(elements.size());
    if (at < -count || at >= count) throw py::index_error("there is no such child");
    return Wrap(parent.tree(), *elements[static_cast<std::size_t>(at < 0 ? at + count : at)]);
}

py::object Next(const Element& element, CSDObject* (CSDObject::*step)()) {
    CSDObject* object = &*element;
    do
        object = (object->*step)();
    while (object && !IsElement(*object));
    return WrapOrNone(element.tree(), object);
}

std::string Repr(const Element& element) {
    std::string text = "<" + (ODF::IsTextRun(*element) ? std::string() : TagOf(*element));
    for (const ODF::AttributeText& attribute : ODF::AttributesOf(*element))
        if (text.size() < 100 && element->HasAttribute(attribute.name))
            text += " " + std::string(attribute.name) + "='" + attribute.value + "'";
    text += ">";
    const bool isShort = element->GetID() == ODF::kCommentId || ODF::ClassOf(*element).has_value();
    const bool isTop = !element->Parent() || !element->Parent()->Parent();
    if (!isShort || isTop) return text;
    const auto shown = ODF::Text16(*element);
    if (shown.empty()) return text;
    const auto cut = ToPython(std::u16string_view(shown).substr(0, 60));
    return text + " " + py::repr(cut).cast<std::string>() + (shown.size() > 60 ? "..." : "");
}

template<typename Getter>
void DefineProperty(const char* name, Getter getter, const char* doc, const py::object& setter = py::none()) {
    const py::object property =
        py::reinterpret_borrow<py::object>(reinterpret_cast<PyObject*>(&PyProperty_Type));
    py::setattr(reinterpret_cast<PyObject*>(ElementType()), name,
                property(py::cpp_function(getter), setter, py::none(), doc));
}

template<typename Function, typename... Extra>
void DefineMethod(const char* name, Function function, const Extra&... extra) {
    const py::handle type(reinterpret_cast<PyObject*>(ElementType()));
    py::setattr(type, name, py::cpp_function(function, py::name(name), py::is_method(type), extra...));
}

void BindReading() {
    DefineProperty(
        "tag", [](const Element& self) { return TagOf(*self); },
        "The name of the element, such as 'text:p', or '{namespace}name' for one that no class lists.");
    DefineProperty(
        "text", TextOf,
        "What is read of the element: of a paragraph its text with blanks, tabs and line ends, of anything\n"
        "larger the text of all paragraphs below, a line each. Setting it replaces all content.",
        py::cpp_function(SetText));
    DefineProperty("attrib", AttributesOf, "The attributes as a mapping from names to texts.");
    DefineProperty("content", Content,
                   "The children with the texts between them (str), as they are in the file.");
    DefineProperty(
        "parent", [](const Element& self) { return WrapOrNone(self.tree(), self->Parent()); },
        "The element that has this one as a child, or None.");
    DefineProperty(
        "next", [](const Element& self) { return Next(self, &CSDObject::Next); },
        "The element after this one in the same parent, or None.");
    DefineProperty(
        "previous", [](const Element& self) { return Next(self, &CSDObject::Previous); },
        "The element before this one in the same parent, or None.");
    DefineMethod("find", Find, py::arg("what"),
                 "The first element that a class, tag or path leads to, or None; see findall.");
    DefineMethod(
        "findall", FindAll, py::arg("what"),
        "The children of a class or tag, or what a path leads to: 'table:table-row/table:table-cell' or\n"
        "'.//text:span' for any depth. '*' is any element.");
    DefineMethod(
        "iter",
        [](const Element& self, const py::object& what) { return Iteration(self, Matcher(what), true); },
        py::arg("what") = py::none(),
        "Goes through this element and all below it, in document order; with a class or tag through those.");
    DefineMethod("__iter__", [](const Element& self) { return Iteration(self, Matcher(), false); });
    DefineMethod("__len__", [](const Element& self) { return ElementsIn(self).size(); });
    DefineMethod("__bool__", [](const Element&) { return true; });
    DefineMethod("__getitem__", GetItem);
    DefineMethod("__repr__", Repr);
    DefineMethod(
        "get",
        [](const Element& self, const py::object& name, const py::object& otherwise) {
            return AttributesOf(self).attr("get")(name, otherwise);
        },
        py::arg("name"), py::arg("default") = py::none(), "The text of an attribute.");
    DefineMethod(
        "to_xml",
        [](const Element& self) {
            const auto unlocked = UnlockedIfLarge(self);
            return ODF::ToXml(self.raw(), {}, ODF::Fidelity::Everything);
        },
        "The element with all below it as XML, to look at.");
}

void BindChanging() {
    DefineMethod(
        "set",
        [](const Element& self, const py::object& name, const py::object& value) {
            AttributesOf(self)[name] = value;
        },
        py::arg("name"), py::arg("value"), "Sets an attribute to a text.");
    DefineMethod(
        "append", Append, py::arg("child"),
        "Puts an element or a text behind the other children. An element that is elsewhere is moved.");
    DefineMethod(
        "extend",
        [](const Element& self, const py::iterable& children) {
            // Children that are moved while they are gone through would come again and again.
            const bool isOfTree = py::isinstance<Element>(children) || py::isinstance<Iteration>(children);
            const py::iterable given = isOfTree ? py::iterable(py::list(children)) : children;
            for (const py::handle child : given)
                Append(self, py::reinterpret_borrow<py::object>(child));
        },
        py::arg("children"), "Appends each of the children.");
    DefineMethod(
        "insert", Insert, py::arg("index"), py::arg("child"),
        "Puts an element or a text in front of the child with that index; 0 is in front of all text, too.");
    DefineMethod(
        "add_before", [](const Element& self, const py::object& other) { AddBeside(self, other, false); },
        py::arg("other"), "Puts an element or a text in front of this one.");
    DefineMethod(
        "add_after", [](const Element& self, const py::object& other) { AddBeside(self, other, true); },
        py::arg("other"), "Puts an element or a text behind this one.");
    DefineMethod("remove", Remove, py::arg("child"), "Takes a child out; it lives on as long as it is held.");
    DefineMethod(
        "detach",
        [](const Element& self) {
            Detach(self.tree(), *self);
            return self;
        },
        "Takes the element out of its parent and returns it.");
    DefineMethod("clear", Clear, "Removes all children and text; attributes stay.");
    DefineMethod(
        "replace",
        [](const Element& self, const std::string& from, const Text& to) {
            return Replace(self.tree(), *self, from, to);
        },
        py::arg("old"), py::arg("new"),
        "Replaces text in all paragraphs at and below the element, also across formatting; returns how "
        "often.");
    const auto clone = [](const Element& self) { return WrapLoose(self->Clone()); };
    DefineMethod("clone", clone, "A copy with all below it, in no document.");
    DefineMethod("__copy__", clone);
    DefineMethod("__deepcopy__", [clone](const Element& self, const py::object&) { return clone(self); });
}

} // namespace

bool IsElement(const CSDObject& object) noexcept {
    const unsigned id = object.GetID();
    return id != ODF::kTextRunId && id != ODF::kCommentId && id != ODF::kProcessingInstructionId;
}

void Append(const Element& parent, const py::object& child) {
    Put(parent, child, nullptr);
}

py::str TextOf(const Element& element) {
    const unsigned id = element->GetID();
    if (id == ODF::kCommentId || id == ODF::kProcessingInstructionId)
        return ToPython(static_cast<const CSDStringValueObject&>(*element).Getval().view());
    std::u16string text;
    {
        const auto unlocked = UnlockedIfLarge(element);
        text = ODF::Text16(element.raw());
    }
    return ToPython(text);
}

std::size_t Replace(const TreePointer& tree, CSDObject& root, const std::string& from,
                    const std::string& to) {
    std::size_t count = 0;
    KeepInline(tree, root, [&] {
        const Unlocked unlocked(tree);
        count = ODF::ReplaceText(root, from, to);
    });
    return count;
}

void BindElement(py::module_& module) {
    py::class_<Iteration>(module, "Iteration")
        .def("__iter__", [](const py::object& self) { return self; })
        .def("__next__", &Iteration::next);
    BindReading();
    BindChanging();
}

} // namespace odfpython
