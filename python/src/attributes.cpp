#include "attributes.h"

#include "classes.h"

#include <odfmodel/core/foreign.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace odfpython {
namespace {

/// The attributes of one element, as a mapping from names to texts.
struct Attributes {
    Element element;
};

/// The name by which the class has an attribute that is given as "{namespace}name"; the same name for any
/// other.
std::string NameFor(const CSDObject& object, const std::string& name) {
    std::string_view uri;
    std::string_view local;
    if (!SplitForeign(name, uri, local)) return name;
    const std::string listed = std::string(ODF::PrefixOfNamespace(uri)).append(":").append(local);
    const auto info = ODF::ClassOf(object);
    const auto attributes = info ? info->attributes() : std::vector<ODF::AttributeInfo>();
    const bool isListed =
        std::any_of(attributes.begin(), attributes.end(),
                    [&](const ODF::AttributeInfo& attribute) { return attribute.name == listed; });
    return isListed ? listed : name;
}

std::optional<std::string> ValueOf(const CSDObject& object, const std::string& given) {
    const std::string name = NameFor(object, given);
    std::string_view uri;
    std::string_view local;
    if (SplitForeign(name, uri, local)) return ODF::GetForeignAttribute(object, uri, local);
    CTulStringW text;
    if (ODF::GetAttributeText(object, name, text)) return text.utf8();
    for (const ODF::ForeignAttribute& foreign : ODF::ForeignAttributesOf(object))
        if (name == (foreign.prefix.empty() ? "" : foreign.prefix + ":") + foreign.localName)
            return foreign.value;
    return std::nullopt;
}

void Set(CSDObject& object, const std::string& given, const std::string& value) {
    const std::string name = NameFor(object, given);
    std::string_view uri;
    std::string_view local;
    const bool isDone = SplitForeign(name, uri, local) ? ODF::SetForeignAttribute(object, uri, local, value)
                                                       : ODF::SetAttributeText(object, name, value);
    if (!isDone)
        throw py::key_error(TagOf(object) + " has no attribute '" + name +
                            "'; set others as '{namespace}name'");
}

bool Unset(CSDObject& object, const std::string& given) {
    const std::string name = NameFor(object, given);
    std::string_view uri;
    std::string_view local;
    return SplitForeign(name, uri, local) ? ODF::RemoveForeignAttribute(object, uri, local)
                                          : object.Unset(name);
}

py::list Names(const CSDObject& object) {
    py::list names;
    for (const ODF::AttributeText& attribute : ODF::AttributesOf(object))
        if (object.HasAttribute(attribute.name)) names.append(ToPython(attribute.name));
    for (const ODF::ForeignAttribute& foreign : ODF::ForeignAttributesOf(object))
        names.append(ToPython("{" + foreign.namespaceUri + "}" + foreign.localName));
    return names;
}

/// As for any mapping, what can't be a name is none that there is.
std::string NameFrom(const py::object& key) {
    if (!PyUnicode_Check(key.ptr())) throw py::key_error(py::repr(key).cast<std::string>());
    return Utf8From(key);
}

template<typename T>
std::optional<T> Parse(std::string_view text) {
    T value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

} // namespace

py::object AttributeType::get(const CSDObject& object) const {
    CTulStringW found;
    if (!ODF::GetAttributeText(object, name_, found)) return py::none();
    if (type_ == ODF::AttributeType::Text || type_ == ODF::AttributeType::Enumeration)
        return ToPython(found.view());
    const std::string text = found.utf8();
    switch (type_) {
    case ODF::AttributeType::Bool:
        if (text == "true" || text == "1") return py::bool_(true);
        if (text == "false" || text == "0") return py::bool_(false);
        break;
    case ODF::AttributeType::Unsigned:
    case ODF::AttributeType::Signed:
        if (const auto value = Parse<long long>(text)) return py::int_(*value);
        break;
    default:
        if (const auto value = Parse<double>(text)) return py::float_(*value);
    }
    return ToPython(text);
}

void AttributeType::set(CSDObject& object, py::handle value) const {
    const auto expect = [&](bool isRight, const char* expected) {
        if (!isRight)
            throw py::type_error(std::string(name_) + " takes " + expected + " or None, not " +
                                 Py_TYPE(value.ptr())->tp_name);
    };
    if (value.is_none()) {
        object.Unset(name_);
        return;
    }
    const bool isBool = PyBool_Check(value.ptr());
    std::string text;
    switch (type_) {
    case ODF::AttributeType::Text:
        expect(py::isinstance<py::str>(value), "a str");
        text = TextFrom(value);
        break;
    case ODF::AttributeType::Enumeration:
        expect(py::isinstance<py::str>(value), "a str");
        text = TextFrom(value);
        if (std::find(keys_.begin(), keys_.end(), text) == keys_.end())
            throw py::value_error("'" + text + "' is not a value of " + std::string(name_));
        break;
    case ODF::AttributeType::Bool:
        expect(isBool, "a bool");
        text = value.cast<bool>() ? "true" : "false";
        break;
    case ODF::AttributeType::Unsigned:
    case ODF::AttributeType::Signed: {
        expect(PyIndex_Check(value.ptr()) && !isBool, "an int");
        int overflow = 0;
        const long long number = PyLong_AsLongLongAndOverflow(value.ptr(), &overflow);
        if (number == -1 && PyErr_Occurred()) throw py::error_already_set();
        const bool isSigned = type_ == ODF::AttributeType::Signed;
        if (overflow != 0 || number < (isSigned ? INT32_MIN : 0) ||
            number > (isSigned ? INT32_MAX : INT64_C(0xFFFFFFFF)))
            throw py::value_error(py::str(value).cast<std::string>() + " is out of the range of " +
                                  std::string(name_));
        text = std::to_string(number);
        break;
    }
    case ODF::AttributeType::Number: {
        expect((PyFloat_Check(value.ptr()) || PyIndex_Check(value.ptr())) && !isBool, "a float");
        const py::float_ number(py::reinterpret_borrow<py::object>(value));
        if (!std::isfinite(static_cast<double>(number)))
            throw py::value_error(std::string(name_) + " takes finite numbers");
        text = py::repr(number).cast<std::string>();
        break;
    }
    }
    if (!ODF::SetAttributeText(object, name_, text))
        throw py::value_error("'" + text + "' is not a value of " + std::string(name_));
}

std::string AttributeType::describe() const {
    switch (type_) {
    case ODF::AttributeType::Text:
        return std::string(name_) + ": str";
    case ODF::AttributeType::Bool:
        return std::string(name_) + ": bool";
    case ODF::AttributeType::Number:
        return std::string(name_) + ": float";
    case ODF::AttributeType::Enumeration: {
        std::string text(name_);
        for (const std::string& key : keys_)
            text += (&key == keys_.data() ? ": '" : ", '") + key + "'";
        return text;
    }
    default:
        return std::string(name_) + ": int";
    }
}

void Touch(const Element& element, std::string_view attribute) {
    if (!attribute.ends_with("style-name")) element.tree()->version = NextVersion();
}

py::object AttributesOf(const Element& element) {
    return py::cast(Attributes{element});
}

void BindAttributes(py::module_& module) {
    py::class_<Attributes>(
        module, "Attributes",
        "The attributes of an element by their names, such as 'text:style-name', as texts.\n\n"
        "Those that the class doesn't list are called '{namespace}name'.")
        .def("__getitem__",
             [](const Attributes& self, const py::object& key) {
                 const std::string name = NameFrom(key);
                 if (const auto value = ValueOf(*self.element, name)) return ToPython(*value);
                 throw py::key_error(name);
             })
        .def("__setitem__",
             [](const Attributes& self, const Text& name, const Text& value) {
                 Set(*self.element, name, value);
                 Touch(self.element, name);
             })
        .def("__delitem__",
             [](const Attributes& self, const py::object& key) {
                 const std::string name = NameFrom(key);
                 if (!Unset(*self.element, name)) throw py::key_error(name);
                 Touch(self.element, name);
             })
        .def("__iter__", [](const Attributes& self) { return py::iter(Names(*self.element)); })
        .def("__len__", [](const Attributes& self) { return Names(*self.element).size(); })
        .def("__repr__", [](const Attributes& self) {
            py::dict all;
            for (const py::handle name : Names(*self.element))
                all[name] = ToPython(ValueOf(*self.element, name.cast<std::string>()).value_or(""));
            return py::repr(all);
        });
    // The rest of what mappings have is Python's own: `get`, `items`, `update`, comparison and so on.
    const py::object mapping = py::module_::import("collections.abc").attr("MutableMapping");
    const py::object type = module.attr("Attributes");
    mapping.attr("register")(type);
    for (const char* const name : {"get", "keys", "items", "values", "__contains__", "__eq__", "pop",
                                   "popitem", "clear", "update", "setdefault", "_MutableMapping__marker"})
        type.attr(name) = mapping.attr(name);
    type.attr("__hash__") = py::none(); // what can be compared and changed has none
}

} // namespace odfpython
