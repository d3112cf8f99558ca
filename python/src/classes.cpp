// The Python classes of the elements. The modules made from the tables call `define` for each class of
// theirs.
#include "classes.h"

#include "attributes.h"
#include "element.h"

#include <odfmodel/core/foreign.h>

#include <algorithm>
#include <cstddef>
#include <forward_list>
#include <structmember.h>

namespace odfpython {
namespace {

/// A property of a class and what Python needs to keep of it.
struct Property {
    std::string name;
    std::string doc;
    AttributeType attribute;
    PyGetSetDef definition{};
};

/// Lives as long as the process, as Python's types do.
struct Registry {
    PyTypeObject* base = nullptr;
    std::unordered_map<unsigned, PyTypeObject*> types;
    std::unordered_map<unsigned, ODF::ClassInfo> classes;
    std::forward_list<Property> properties;
};
Registry& TheRegistry() {
    static auto* const registry = new Registry;
    return *registry;
}

unsigned IdOf(PyTypeObject* type) {
    const py::object id = py::getattr(reinterpret_cast<PyObject*>(type), "_id", py::none());
    if (id.is_none())
        throw py::type_error("make elements of a class such as odfmodel.text.P, or by odfmodel.element()");
    return id.cast<unsigned>();
}

PyObject* New(PyTypeObject* type, PyObject*, PyObject*) {
    return Guarded(nullptr, [&] {
        const unsigned id = IdOf(type);
        const auto at = TheRegistry().classes.find(id);
        if (at == TheRegistry().classes.end()) throw py::type_error("such an element can't be made");
        const auto tree = std::make_shared<LooseTree>(std::unique_ptr<CSDObject>(at->second.create()));
        return MakeObject(type, tree, *tree->object()).release().ptr();
    });
}

int Init(PyObject* self, PyObject* content, PyObject* properties) {
    return Guarded(-1, [&] {
        const auto element = py::reinterpret_borrow<Element>(self);
        for (const py::handle part : py::reinterpret_borrow<py::tuple>(content))
            Append(element, py::reinterpret_borrow<py::object>(part));
        if (properties)
            for (const auto& [name, value] : py::reinterpret_borrow<py::dict>(properties))
                py::setattr(element, name, value);
        return 0;
    });
}

void Dealloc(PyObject* self) {
    auto* const element = reinterpret_cast<ElementObject*>(self);
    if (element->tree) {
        const auto at = element->tree->held.find(element->object);
        if (at != element->tree->held.end() && at->second == element) element->tree->held.erase(at);
    }
    if (element->weakReferences) PyObject_ClearWeakRefs(self);
    element->tree.~shared_ptr();
    PyTypeObject* const type = Py_TYPE(self);
    type->tp_free(self);
    Py_DECREF(type);
}

PyObject* GetProperty(PyObject* self, void* closure) {
    return Guarded(nullptr, [&] {
        const auto& attribute = *static_cast<const AttributeType*>(closure);
        return attribute.get(*py::reinterpret_borrow<Element>(self)).release().ptr();
    });
}

int SetProperty(PyObject* self, PyObject* value, void* closure) {
    return Guarded(-1, [&] {
        const auto& attribute = *static_cast<const AttributeType*>(closure);
        const auto element = py::reinterpret_borrow<Element>(self);
        attribute.set(*element, value ? py::handle(value) : py::handle(Py_None));
        Touch(element, attribute.name());
        return 0;
    });
}

void Register(unsigned id, const py::object& type) {
    TheRegistry().types[id] = reinterpret_cast<PyTypeObject*>(py::object(type).release().ptr());
}

py::object MakeType(const std::string& module, const std::string& name, unsigned id, const std::string& doc) {
    py::dict members;
    members["__slots__"] = py::tuple();
    members["__doc__"] = doc;
    members["__module__"] = module;
    members["_id"] = id;
    const auto type = py::reinterpret_borrow<py::object>(reinterpret_cast<PyObject*>(&PyType_Type));
    py::object made =
        type(name, py::make_tuple(py::handle(reinterpret_cast<PyObject*>(ElementType()))), members);
    Register(id, made);
    return made;
}

py::object Define(const std::string& module, const std::string& name, const std::string& tag,
                  const std::string& doc, const py::dict& properties) {
    const std::optional<ODF::ClassInfo> info = ODF::ClassOfElement(tag);
    if (!info) throw py::value_error("no class of elements is called " + tag);
    py::object type = MakeType(module, name, info->id(), doc);
    TheRegistry().classes.emplace(info->id(), *info);
    const std::vector<ODF::AttributeInfo> attributes = info->attributes();
    for (const auto& [key, value] : properties) {
        const auto qualified = value.cast<std::string>();
        const auto at = std::find_if(attributes.begin(), attributes.end(),
                                     [&](const ODF::AttributeInfo& row) { return row.name == qualified; });
        if (at == attributes.end()) throw py::value_error(tag + " has no attribute " + qualified);
        Property& property = TheRegistry().properties.emplace_front();
        property.name = key.cast<std::string>();
        property.attribute = {*at, info->keys(qualified)};
        property.doc = property.attribute.describe();
        property.definition = {property.name.c_str(), GetProperty, SetProperty, property.doc.c_str(),
                               &property.attribute};
        PyObject* const descriptor =
            PyDescr_NewGetSet(reinterpret_cast<PyTypeObject*>(type.ptr()), &property.definition);
        if (!descriptor) throw py::error_already_set();
        py::setattr(type, property.name.c_str(), py::reinterpret_steal<py::object>(descriptor));
    }
    return type;
}

} // namespace

PyTypeObject* ElementType() noexcept {
    return TheRegistry().base;
}

PyTypeObject* TypeOf(const CSDObject& object) {
    const auto& types = TheRegistry().types;
    const unsigned id = object.GetID();
    if (const auto at = types.find(id); at != types.end()) return at->second;
    if (const auto info = ODF::ClassOf(object)) {
        const std::string_view tag = info->elementName();
        py::module_::import(("odfmodel." + std::string(tag.substr(0, tag.find(':')))).c_str());
        if (const auto at = types.find(id); at != types.end()) return at->second;
    }
    return ElementType();
}

std::string TagOf(const CSDObject& object) {
    if (object.GetID() == ODF::kForeignElementId) {
        const auto& foreign = static_cast<const ODF::CForeignElement&>(object);
        return "{" + foreign.GetNamespace() + "}" + foreign.GetLocalName();
    }
    const auto info = ODF::ClassOf(object);
    return info ? std::string(info->elementName()) : std::string();
}

std::unique_ptr<CSDObject> MakeElement(const std::string& tag) {
    std::unique_ptr<CSDObject> made;
    std::string_view uri;
    std::string_view local;
    if (SplitForeign(tag, uri, local))
        made.reset(ODF::CForeignElement::Create(uri, local));
    else if (const auto info = ODF::ClassOfElement(tag))
        made.reset(info->create());
    if (!made)
        throw py::value_error("no element is called '" + tag + "'; foreign ones are '{namespace}name'");
    return made;
}

bool SplitForeign(std::string_view name, std::string_view& uri, std::string_view& local) {
    const std::size_t end = name.find('}');
    if (!name.starts_with('{') || end == std::string_view::npos) return false;
    uri = name.substr(1, end - 1);
    local = name.substr(end + 1);
    return true;
}

void BindClasses(py::module_& module) {
    static PyMemberDef members[] = {
        {"__weaklistoffset__", T_PYSSIZET, offsetof(ElementObject, weakReferences), READONLY, nullptr},
        {nullptr, 0, 0, 0, nullptr}};
    static PyType_Slot slots[] = {{Py_tp_new, reinterpret_cast<void*>(New)},
                                  {Py_tp_init, reinterpret_cast<void*>(Init)},
                                  {Py_tp_dealloc, reinterpret_cast<void*>(Dealloc)},
                                  {Py_tp_members, members},
                                  {0, nullptr}};
    static PyType_Spec definition{"odfmodel.Element", sizeof(ElementObject), 0,
                                  Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE, slots};
    PyObject* const base = PyType_FromSpec(&definition);
    if (!base) throw py::error_already_set();
    TheRegistry().base = reinterpret_cast<PyTypeObject*>(base);
    module.add_object("Element", base);
    module.attr("Comment") =
        MakeType("odfmodel", "Comment", ODF::kCommentId, "A comment; its text is its `text`.");
    module.attr("ProcessingInstruction") = MakeType(
        "odfmodel", "ProcessingInstruction", ODF::kProcessingInstructionId, "A processing instruction.");
    module.attr("ForeignElement") =
        MakeType("odfmodel", "ForeignElement", ODF::kForeignElementId, "An element that no class lists.");
    module.def("define", Define);
    module.def(
        "element", [](const Text& tag) { return WrapLoose(MakeElement(tag)); }, py::arg("tag"),
        "A new element by its tag, such as 'text:p', or '{namespace}name' for one that no class lists.");
}

} // namespace odfpython
