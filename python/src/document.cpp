#include "document.h"

#include "attributes.h"
#include "element.h"
#include "errors.h"
#include "sheet.h"
#include "values.h"

#include <odfmodel/document/document_text.h>
#include <odfmodel/document/fields.h>
#include <odfmodel/document/flat.h>
#include <odfmodel/document/sheet.h>
#include <odfmodel/document/text.h>
#include <odfmodel/elements/elements.h>

#include <chrono>
#include <climits>
#include <optional>

namespace odfpython {
namespace {

constexpr std::pair<const char*, ODF::DocumentKind> kKinds[] = {
    {"text", ODF::DocumentKind::Text},
    {"spreadsheet", ODF::DocumentKind::Spreadsheet},
    {"presentation", ODF::DocumentKind::Presentation},
    {"drawing", ODF::DocumentKind::Drawing},
    {"chart", ODF::DocumentKind::Chart},
    {"image", ODF::DocumentKind::Image},
    {"formula", ODF::DocumentKind::Formula},
    {"master-text", ODF::DocumentKind::MasterText},
    {"web-text", ODF::DocumentKind::WebText},
    {"database", ODF::DocumentKind::Database}};

using Bytes = std::vector<unsigned char>;

/// What Python has for `document`; null after `close`.
class Document {
public:
    static Document open(const py::object& source, const std::string& password, bool recovers,
                         bool refusesAmbiguous, const py::object& progress) {
        ODF::OpenOptions options;
        options.password = password;
        options.refusesAmbiguous = refusesAmbiguous;
        options.progress = watch(progress);
        Document made;
        const ODF::Result result = made.open(source, options);
        made.notes_ = NotesOf(result);
        if (!recovers || !made.tree_->document.IsOpen()) Require(result, source);
        return made;
    }
    static Document make(const std::string& kind) {
        for (const auto& [name, value] : kKinds)
            if (name == kind) {
                Document made;
                made.tree_->document = ODF::Document::New(value);
                if (made.tree_->document.IsOpen()) return made;
            }
        throw py::value_error("no new document can be of the kind '" + kind + "'");
    }

    const TreePointer tree() const { return required(); }
    ODF::Document& operator*() const {
        RequireIdle(*required());
        return raw();
    }
    ODF::Document* operator->() const { return &**this; }
    /// The document for the call that works on it.
    ODF::Document& raw() const { return required()->document; }
    /// The same document as one XML file, or as a package.
    Document convert(ODF::Result (*change)(ODF::Document&, ODF::Document&)) const {
        Document made;
        ODF::Result result;
        ODF::Document& source = **this;
        {
            const Unlocked unlocked(tree_);
            result = change(source, made.tree_->document);
        }
        Require(result);
        made.notes_ = NotesOf(result);
        return made;
    }

    bool isClosed() const noexcept { return !tree_; }
    void close() noexcept { tree_.reset(); }
    const py::list& notes() const noexcept { return notes_; }

    template<typename Root>
    py::object root(Root* (ODF::Document::*get)()) const {
        return WrapOrNone(tree(), ((**this).*get)());
    }
    py::object member(const std::string& name) const {
        ODF::Result result;
        CSDObject* const root = (**this).Root(name, &result);
        if (!root && !(**this).HasMember(name)) throw py::key_error(name);
        if (!root) Require(result);
        return WrapOrNone(tree(), root);
    }

    void save(const py::object& path, const py::kwargs& options) const {
        const std::string target = PathFrom(path);
        Require(run([&](ODF::Document& document,
                        const ODF::SaveOptions& how) { return document.Save(target, how); },
                    options),
                path);
    }
    py::bytes toBytes(const py::kwargs& options) const {
        Bytes bytes;
        Require(run(
            [&](ODF::Document& document, const ODF::SaveOptions& how) { return document.Save(bytes, how); },
            options));
        return toPython(bytes);
    }

    py::bytes read(const std::string& name) const {
        if (!(**this).HasMember(name)) throw py::key_error(name);
        Bytes bytes;
        ODF::Result result;
        ODF::Document& document = **this;
        {
            const Unlocked unlocked(tree_);
            result = document.ReadMember(name, bytes);
        }
        Require(result);
        return toPython(bytes);
    }
    void write(const std::string& name, const py::buffer& data, const std::string& mediaType) const {
        const py::buffer_info info = data.request(); // may run Python
        const auto bytes = bytesOf(info);
        rescue(name);
        Require((**this).WriteMember(name, bytes, mediaType));
    }
    void remove(const std::string& name) const {
        if (!(**this).HasMember(name)) throw py::key_error(name);
        rescue(name);
        if (!(**this).RemoveMember(name)) throw py::key_error(name);
    }
    std::string addPicture(const py::buffer& data, const std::string& fileName) const {
        const py::buffer_info info = data.request();
        std::string name = (**this).AddPicture(bytesOf(info), fileName);
        if (name.empty()) throw py::value_error("the document can't have a picture of that name");
        return name;
    }

private:
    ODF::Result open(const py::object& source, const ODF::OpenOptions& options) {
        ODF::Document& document = tree_->document;
        if (PyObject_CheckBuffer(source.ptr())) {
            const py::buffer_info info = py::reinterpret_borrow<py::buffer>(source).request();
            const auto bytes = bytesOf(info);
            const Unlocked unlocked(tree_);
            return document.Open(bytes, options);
        }
        if (py::hasattr(source, "read")) {
            const py::object bytes = source.attr("read")();
            if (!PyObject_CheckBuffer(bytes.ptr()))
                throw py::type_error(std::string("a file must be open in binary: its read() returned ") +
                                     Py_TYPE(bytes.ptr())->tp_name);
            return open(bytes, options);
        }
        const std::string path = PathFrom(source);
        const Unlocked unlocked(tree_);
        return document.Open(path, options);
    }

    static bool isTrue(py::handle value) {
        const int answer = PyObject_IsTrue(value.ptr());
        if (answer < 0) throw py::error_already_set();
        return answer != 0;
    }
    template<typename T>
    static T wholeOf(const std::string& option, py::handle value, T least, T most) {
        int overflow = 0;
        const long long number = PyLong_AsLongLongAndOverflow(value.ptr(), &overflow);
        if (number == -1 && PyErr_Occurred()) throw py::error_already_set();
        if (overflow != 0 || number < static_cast<long long>(least) || number > static_cast<long long>(most))
            throw py::value_error(option + " is out of its range");
        return static_cast<T>(number);
    }
    static ODF::SaveOptions optionsOf(const py::kwargs& given) {
        ODF::SaveOptions options;
        for (const auto& [key, value] : given) {
            const auto name = key.cast<std::string>();
            if (name == "compression")
                options.compression = wholeOf(name, value, 1, 12);
            else if (name == "threads")
                options.threads = wholeOf(name, value, 0U, UINT_MAX);
            else if (name == "allow_incomplete")
                options.allowsIncomplete = isTrue(value);
            else if (name == "fixed_time") {
                if (!value.is_none()) options.fixedTime = wholeOf(name, value, INT64_MIN, INT64_MAX);
            } else if (name == "progress")
                options.progress = watch(value);
            else
                throw py::type_error("saving has no option '" + name + "'");
        }
        if (!options.progress) options.progress = watch(py::none());
        return options;
    }

    template<typename Write>
    ODF::Result run(Write write, const py::kwargs& given) const {
        const ODF::SaveOptions options = optionsOf(given);
        ODF::Document& document = **this;
        const Unlocked unlocked(tree_);
        return write(document, options);
    }

    /// Asks the caller's function and for signals, such as that of Ctrl+C, a few times a second.
    /// The function is the caller's: the callback may be copied without the interpreter's lock.
    static ODF::ProgressCallback watch(py::handle progress) {
        using Clock = std::chrono::steady_clock;
        return [progress, last = Clock::now()](const ODF::Progress& state) mutable {
            constexpr std::chrono::milliseconds pause(50);
            const bool isAsked = progress.ptr() != Py_None;
            if (Clock::now() - last < pause && !(isAsked && state.done == state.total)) return true;
            last = Clock::now();
            const py::gil_scoped_acquire lock;
            if (PyErr_CheckSignals() != 0) throw py::error_already_set();
            if (!isAsked) return true;
            const py::object answer = progress(ToPython(state.member), state.done, state.total);
            return answer.is_none() || isTrue(answer);
        };
    }

    /// What Python holds of the tree of a member lives on without the member.
    void rescue(const std::string& name) const {
        const std::vector<std::string> trees = (**this).Trees();
        if (std::find(trees.begin(), trees.end(), name) == trees.end()) return;
        if (CSDObject* const root = tree_->document.Root(name)) RescueTree(tree_, *root);
        tree_->version = NextVersion();
    }

    static std::span<const unsigned char> bytesOf(const py::buffer_info& info) {
        if (!PyBuffer_IsContiguous(info.view(), 'C')) throw py::value_error("the bytes must lie together");
        return {static_cast<const unsigned char*>(info.ptr),
                static_cast<std::size_t>(info.size * info.itemsize)};
    }
    static py::bytes toPython(const Bytes& bytes) {
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }
    const std::shared_ptr<DocumentTree>& required() const {
        if (!tree_) throw py::value_error("the document is closed");
        return tree_;
    }

    std::shared_ptr<DocumentTree> tree_ = std::make_shared<DocumentTree>();
    py::list notes_;
};

std::string KindOf(const Document& document) {
    for (const auto& [name, value] : kKinds)
        if (value == document->Kind()) return name;
    return "unknown";
}

CSDObject& BodyOf(const Document& document) {
    if (CSDObject* const body = document->Body())
        for (CSDObject& child : body->Children())
            if (IsElement(child)) return child;
    throw py::value_error("the document has no body");
}

py::object Sheets(const Document& document) {
    std::vector<Element> tables;
    {
        const Pinned pinned(document.tree());
        for (const ODF::Sheet& sheet : ODF::Sheets(document.raw()))
            tables.push_back(pinned.wrap(sheet.Table()));
    }
    py::list sheets;
    for (const Element& table : tables)
        sheets.append(MakeSheet(table));
    return sheets;
}

py::object AddSheet(const Document& document, const Text& name) {
    ODF::Sheets sheets(*document);
    const ODF::Sheet* const sheet = sheets.Add(name);
    if (!sheet) throw py::value_error("there can't be a sheet '" + name + "' in this document");
    return MakeSheet(Wrap(document.tree(), sheet->Table()));
}

py::list Lines(const Document& document) {
    std::vector<std::string> lines;
    const TreePointer tree = document.tree();
    ODF::Document& source = *document;
    bool isWhole = true;
    {
        const Unlocked unlocked(tree);
        isWhole = ODF::ForEachLine(source, [&](std::string_view line) { lines.emplace_back(line); });
    }
    if (!isWhole) throw py::value_error("repeated cells make too much text");
    py::list list;
    for (const std::string& line : lines)
        list.append(ToPython(line));
    return list;
}

std::size_t Fill(const Document& document, const std::string& name, const py::object& value) {
    const ODF::CellValue given = FromPython(value);
    ODF::Document& source = *document;
    std::size_t count = 0;
    for (CSDObject* const root :
         std::initializer_list<CSDObject*>{source.Content(), source.Styles(), source.Flat()})
        if (root)
            KeepInline(document.tree(), *root, [&] {
                const ODF::FilledFields filled = ODF::FillField(*root, name, given);
                count += filled.values + filled.shown + filled.placeholders;
            });
    return count;
}

template<typename Root>
auto RootOf(Root* (ODF::Document::*get)()) {
    return [get](const Document& self) { return self.root(get); };
}

} // namespace

void BindDocument(py::module_& module) {
    using D = ODF::Document;
    py::class_<Document>(module, "Document")
        .def(py::init<const Document&>())
        .def_static("_open",
                    py::overload_cast<const py::object&, const std::string&, bool, bool, const py::object&>(
                        &Document::open))
        .def_static("_new", &Document::make)
        .def("close", &Document::close, "Gives the document up; elements that are held stay.")
        .def_property_readonly("closed", &Document::isClosed)
        .def_property_readonly("notes", &Document::notes)
        .def_property_readonly("kind", KindOf)
        .def_property_readonly("media_type", [](const Document& self) { return self->MediaType(); })
        .def_property_readonly("version", [](const Document& self) { return self->Version(); })
        .def_property_readonly("is_whole", [](const Document& self) { return self->IsWhole(); })
        .def_property_readonly("is_flat", [](const Document& self) { return self->IsFlat(); })
        .def_property_readonly("is_template", [](const Document& self) { return self->IsTemplate(); })
        .def_property_readonly("is_encrypted", [](const Document& self) { return self->IsEncrypted(); })
        .def_property_readonly("content", RootOf(&D::Content))
        .def_property_readonly("styles", RootOf(&D::Styles))
        .def_property_readonly("meta", RootOf(&D::Meta))
        .def_property_readonly("settings", RootOf(&D::Settings))
        .def_property_readonly("formula", RootOf(&D::Formula))
        .def_property_readonly("flat", RootOf(&D::Flat))
        .def_property_readonly("body", [](const Document& self) { return Wrap(self.tree(), BodyOf(self)); })
        .def("root", &Document::member, py::arg("member"), "The root of a member's tree.")
        .def(
            "text", [](const Document& self) { return TextOf(Wrap(self.tree(), BodyOf(self))); },
            "The text of all paragraphs of the body, a line each.")
        .def(
            "replace",
            [](const Document& self, const std::string& from, const Text& to) {
                return Replace(self.tree(), BodyOf(self), from, to);
            },
            py::arg("old"), py::arg("new"))
        .def("lines", Lines,
             "The text as one reads it, line by line: with the labels of lists, and the rows of sheets.")
        .def("fill", Fill, py::arg("name"), py::arg("value"),
             "Gives a user field, variable or placeholder a value, wherever it is; returns at how many "
             "places.")
        .def("field_names",
             [](const Document& self) {
                 py::list names;
                 for (const std::string& name : ODF::FieldNames(*self))
                     names.append(ToPython(name));
                 return names;
             })
        .def("_flat", [](const Document& self) { return self.convert(ODF::ToFlat); })
        .def("_package", [](const Document& self) { return self.convert(ODF::ToPackage); })
        .def("_sheets", Sheets)
        .def("_add_sheet", AddSheet)
        .def("_members",
             [](const Document& self) {
                 py::list names;
                 for (const std::string& name : self->Members())
                     names.append(ToPython(name));
                 return names;
             })
        .def("_read", &Document::read)
        .def("_write", &Document::write)
        .def("_remove", &Document::remove)
        .def("_set_password",
             [](const Document& self, const std::string& password) {
                 if (password.empty())
                     self->RemovePassword();
                 else if (!self->SetPassword(password))
                     throw py::value_error("a flat document can't be encrypted");
             })
        .def("add_picture", &Document::addPicture, py::arg("data"), py::arg("file_name"))
        .def("_save", &Document::save)
        .def("tobytes", &Document::toBytes);
}

} // namespace odfpython
