#include "path.h"

#include "classes.h"
#include "element.h"
#include "text.h"

#include <odfmodel/core/foreign.h>

#include <unordered_set>

namespace odfpython {

Matcher::Matcher(py::handle what) {
    if (what.is_none()) return;
    if (PyType_Check(what.ptr())) {
        const py::object id = py::getattr(what, "_id", py::none());
        if (!id.is_none()) {
            id_ = id.cast<unsigned>();
            return;
        }
        if (what.ptr() == reinterpret_cast<PyObject*>(ElementType())) return;
    }
    if (!py::isinstance<py::str>(what)) throw py::type_error("elements are found by a class or a tag");
    *this = Matcher(std::string_view(Utf8From(what)));
}

Matcher::Matcher(std::string_view tag) {
    std::string_view uri;
    std::string_view local;
    if (tag == "*") return;
    if (SplitForeign(tag, uri, local)) {
        id_ = ODF::kForeignElementId;
        tag_ = tag;
    } else if (const auto info = ODF::ClassOfElement(tag)) {
        id_ = info->id();
    } else {
        throw py::value_error("no element is called '" + std::string(tag) +
                              "'; foreign ones are '{namespace}name'");
    }
}

bool Matcher::operator()(const CSDObject& object) const {
    if (id_ == 0) return IsElement(object);
    return object.GetID() == id_ && (tag_.empty() || TagOf(object) == tag_);
}

Path::Path(py::handle what) {
    if (!py::isinstance<py::str>(what)) {
        steps_.push_back({false, Matcher(what)});
        return;
    }
    const std::string text = Utf8From(what);
    std::string_view rest = text;
    if (rest.starts_with("./")) rest.remove_prefix(rest.starts_with(".//") ? 1 : 2);
    while (!rest.empty()) {
        Step step;
        if (rest.starts_with("//")) {
            step.isDeep = true;
            rest.remove_prefix(2);
        } else if (!steps_.empty()) {
            rest.remove_prefix(1);
        }
        const std::size_t name = rest.starts_with('{') ? rest.find('}') : 0; // a namespace has slashes
        const std::size_t end = name == std::string_view::npos ? name : rest.find('/', name);
        step.matches = Matcher(rest.substr(0, end));
        steps_.push_back(step);
        rest.remove_prefix(std::min(end, rest.size()));
    }
    if (steps_.empty()) throw py::value_error("an empty path");
}

std::vector<CSDObject*> Path::find(CSDObject& root, bool isFirstOnly) const {
    std::vector<CSDObject*> found{&root};
    for (const Step& step : steps_) {
        const bool isLast = isFirstOnly && &step == &steps_.back();
        std::vector<CSDObject*> next;
        std::unordered_set<CSDObject*> known; // elements in each other lead to the same ones
        const auto visit = [&](CSDObject& object) {
            if (!step.matches(object)) return false;
            if (!step.isDeep || found.size() == 1 || known.insert(&object).second) next.push_back(&object);
            return isLast;
        };
        const auto search = [&](auto range) {
            for (CSDObject& object : range)
                if (visit(object)) return true;
            return false;
        };
        for (CSDObject* const object : found)
            if (step.isDeep ? search(object->Descendants()) : search(object->Children())) break;
        found = std::move(next);
    }
    return found;
}

} // namespace odfpython
