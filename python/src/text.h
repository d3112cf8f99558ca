#pragma once

#include <pybind11/pybind11.h>

#include <string>
#include <string_view>

// Text, paths and numbers between Python and the library.
namespace py = pybind11;
namespace odfpython {

/// A str that a document can hold, in UTF-8, as an argument.
struct Text : std::string {};

/// In UTF-8. Throws TypeError for what is no str, ValueError for half of a surrogate pair.
std::string Utf8From(py::handle value);
/// The same; throws ValueError for other characters that XML doesn't have, too.
std::string TextFrom(py::handle value);
/// A path as the system has it, from a str, bytes or os.PathLike.
std::string PathFrom(py::handle value);
/// Throws TypeError for what is no whole number, IndexError for one that is beyond all indexes.
Py_ssize_t IndexFrom(py::handle value);

/// What Python can't have is replaced.
py::str ToPython(std::u16string_view text);
py::str ToPython(std::string_view utf8);

} // namespace odfpython

namespace pybind11::detail {

template<>
struct type_caster<odfpython::Text> {
    PYBIND11_TYPE_CASTER(odfpython::Text, const_name("str"));
    bool load(handle source, bool) {
        if (!PyUnicode_Check(source.ptr())) return false;
        value = {odfpython::TextFrom(source)};
        return true;
    }
};

} // namespace pybind11::detail
