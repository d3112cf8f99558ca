#pragma once

#include "tree.h"

namespace odfpython {

/// Runs `body`; what it throws becomes Python's exception, and `failure` the result.
template<typename Body>
auto Guarded(std::type_identity_t<std::invoke_result_t<Body>> failure, Body body) noexcept
    -> std::invoke_result_t<Body> {
    try {
        return body();
    } catch (py::error_already_set& error) {
        error.restore();
    } catch (const py::builtin_exception& error) {
        error.set_error();
    } catch (const std::bad_alloc&) {
        PyErr_NoMemory();
    } catch (const std::exception& error) {
        PyErr_SetString(PyExc_RuntimeError, error.what());
    }
    return failure;
}

/// Whether the object is an element, and neither text, a comment nor a processing instruction.
bool IsElement(const CSDObject& object) noexcept;
/// Puts an element or a text after what `parent` holds.
void Append(const Element& parent, const py::object& child);
py::str TextOf(const Element& element);
/// Replaces text at and below the object; returns how often.
std::size_t Replace(const TreePointer& tree, CSDObject& root, const std::string& from, const std::string& to);
/// Binds the methods of elements to their base class.
void BindElement(py::module_& module);

} // namespace odfpython
