#include "text.h"

#include <bit>
#include <cstdio>

namespace odfpython {
namespace {

/// The first character of a text in UTF-8 that XML doesn't have; 0x10FFFF, which it has, for none.
char32_t FirstForbidden(std::string_view utf8) noexcept {
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        if (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r') return byte;
        if (byte == 0xEF && utf8.substr(i, 3) >= "\xEF\xBF\xBE")
            return utf8[i + 2] == '\xBE' ? 0xFFFE : 0xFFFF;
    }
    return 0x10FFFF;
}

} // namespace

std::string Utf8From(py::handle value) {
    if (!PyUnicode_Check(value.ptr()))
        throw py::type_error(std::string("a str is needed, not ") + Py_TYPE(value.ptr())->tp_name);
    Py_ssize_t size = 0;
    const char* const utf8 = PyUnicode_AsUTF8AndSize(value.ptr(), &size);
    if (!utf8) throw py::error_already_set();
    return {utf8, static_cast<std::size_t>(size)};
}

std::string TextFrom(py::handle value) {
    std::string text = Utf8From(value);
    if (const char32_t found = FirstForbidden(text); found != 0x10FFFF) {
        char message[64];
        std::snprintf(message, sizeof message, "no document can hold the character U+%04X",
                      static_cast<unsigned>(found));
        throw py::value_error(message);
    }
    return text;
}

std::string PathFrom(py::handle value) {
    PyObject* bytes = nullptr;
    if (!PyUnicode_FSConverter(value.ptr(), &bytes)) throw py::error_already_set();
    return py::reinterpret_steal<py::bytes>(bytes);
}

Py_ssize_t IndexFrom(py::handle value) {
    const Py_ssize_t index = PyNumber_AsSsize_t(value.ptr(), PyExc_IndexError);
    if (index == -1 && PyErr_Occurred()) throw py::error_already_set();
    return index;
}

py::str ToPython(std::u16string_view text) {
    // Said, so that U+FEFF at the begin is a character and no mark of it.
    int order = std::endian::native == std::endian::little ? -1 : 1;
    PyObject* const made = PyUnicode_DecodeUTF16(reinterpret_cast<const char*>(text.data()),
                                                 static_cast<Py_ssize_t>(text.size() * 2), "replace", &order);
    if (!made) throw py::error_already_set();
    return py::reinterpret_steal<py::str>(made);
}

py::str ToPython(std::string_view utf8) {
    PyObject* const made = PyUnicode_DecodeUTF8(utf8.data(), static_cast<Py_ssize_t>(utf8.size()), "replace");
    if (!made) throw py::error_already_set();
    return py::reinterpret_steal<py::str>(made);
}

} // namespace odfpython
