#include "errors.h"

#include "attributes.h"

namespace odfpython {

py::list NotesOf(const ODF::Result& result) {
    py::list notes;
    for (const ODF::Note& note : result.Notes())
        notes.append(py::cast(note));
    return notes;
}

void Require(const ODF::Result& result, py::handle source) {
    if (result) return;
    const py::object make = py::module_::import("odfmodel._errors").attr("from_result");
    const py::object error =
        make(result.Code(), ToPython(result.Text()), NotesOf(result), source ? source : py::handle(Py_None));
    PyErr_SetObject(py::type::of(error).ptr(), error.ptr());
    throw py::error_already_set();
}

void BindErrors(py::module_& module) {
    py::enum_<ODF::Status> status(module, "Status", "How opening or saving ended.");
    using enum ODF::Status;
    for (const auto& [name, value] : std::initializer_list<std::pair<const char*, ODF::Status>>{
             {"NotReadable", NotReadable},
             {"NotAnArchive", NotAnArchive},
             {"PasswordNeeded", PasswordNeeded},
             {"WrongPassword", WrongPassword},
             {"UnsupportedEncryption", UnsupportedEncryption},
             {"UnknownType", UnknownType},
             {"BadIndex", BadIndex},
             {"NoContent", NoContent},
             {"LimitExceeded", LimitExceeded},
             {"NoTemporaryFolder", NoTemporaryFolder},
             {"NothingToSave", NothingToSave},
             {"CouldNotWrite", CouldNotWrite},
             {"OutOfMemory", OutOfMemory},
             {"Damaged", Damaged},
             {"Cancelled", Cancelled},
             {"Ambiguous", Ambiguous}})
        status.value(name, value);
    py::enum_<ODF::Severity>(module, "Severity")
        .value("Information", ODF::Severity::Information)
        .value("Warning", ODF::Severity::Warning)
        .value("Error", ODF::Severity::Error);
    py::class_<ODF::Note>(module, "Note",
                          "One observation about a file. Lines and columns count from 1; 0 is none.")
        .def_readonly("severity", &ODF::Note::severity)
        .def_readonly("line", &ODF::Note::line)
        .def_readonly("column", &ODF::Note::column)
        .def_property_readonly("member", [](const ODF::Note& note) { return ToPython(note.member); })
        .def_property_readonly("text", [](const ODF::Note& note) { return ToPython(note.text); })
        .def(py::pickle(
            [](const ODF::Note& note) {
                return py::make_tuple(note.severity, note.line, note.column, ToPython(note.member),
                                      ToPython(note.text));
            },
            [](const py::tuple& state) {
                if (state.size() != 5) throw py::value_error("no state of a note");
                ODF::Note note;
                note.severity = state[0].cast<ODF::Severity>();
                note.line = state[1].cast<unsigned long>();
                note.column = state[2].cast<unsigned long>();
                note.member = state[3].cast<std::string>();
                note.text = state[4].cast<std::string>();
                return note;
            }))
        .def("__repr__", [](const ODF::Note& note) {
            return py::str("<Note {}:{}:{} {!r}>")
                .format(ToPython(note.member), note.line, note.column, ToPython(note.text));
        });
}

} // namespace odfpython
