#include "sheet.h"

#include "attributes.h"
#include "values.h"

#include <pybind11/stl.h>

#include <odfmodel/core/reflection.h>
#include <odfmodel/elements/table/structure.h>

#include <algorithm>

namespace odfpython {
namespace {

using SheetPointer = std::shared_ptr<Sheet>;

/// A place of a sheet, whatever its tree has there.
struct Cell {
    SheetPointer sheet;
    ODF::CellAddress at;

    ODF::SheetCell get() const { return (*sheet)->Cell(at.row, at.column); }
    py::object elementOrNone() const { return WrapOrNone(sheet->table().tree(), get().Element()); }
};

const char* NameOf(ODF::CellKind kind) noexcept {
    switch (kind) {
    case ODF::CellKind::Number:
        return "number";
    case ODF::CellKind::Percentage:
        return "percentage";
    case ODF::CellKind::Currency:
        return "currency";
    case ODF::CellKind::Date:
        return "date";
    case ODF::CellKind::Time:
        return "time";
    case ODF::CellKind::Bool:
        return "bool";
    case ODF::CellKind::Text:
        return "text";
    case ODF::CellKind::Empty:
        break;
    }
    return "empty";
}

/// The value with the digits of the file: numbers are Decimal.
py::object ExactValue(const ODF::SheetCell& cell) {
    const ODF::CellValue value = cell.Value();
    const bool isNumber = value.Kind() == ODF::CellKind::Number ||
                          value.Kind() == ODF::CellKind::Percentage ||
                          value.Kind() == ODF::CellKind::Currency;
    CTulStringW digits;
    if (!isNumber || !cell.Element() || !ODF::GetAttributeText(*cell.Element(), "office:value", digits))
        return ValueToPython(value);
    return py::module_::import("decimal").attr("Decimal")(ToPython(digits.view()));
}

std::uint32_t Index(const py::handle& index, const char* what) {
    const Py_ssize_t number = IndexFrom(index);
    if (number < 0 || number > ODF::kMaxSheetIndex)
        throw py::index_error(std::string("there is no such ") + what);
    return static_cast<std::uint32_t>(number);
}

ODF::CellAddress AddressOf(const py::object& key) {
    if (py::isinstance<py::str>(key)) {
        const std::string name = Utf8From(key);
        if (const auto cell = ODF::ParseCell(name)) return *cell;
        throw py::key_error("'" + name + "' names no cell");
    }
    if (py::isinstance<py::tuple>(key) && py::len(key) == 2) {
        const auto pair = py::reinterpret_borrow<py::tuple>(key);
        return {Index(pair[0], "row"), Index(pair[1], "column")};
    }
    throw py::type_error("cells are got by a name or by row and column, both from 0");
}

py::tuple CellsIn(const SheetPointer& sheet, const ODF::CellRange& range) {
    RequireSize(range, 10'000'000);
    py::list rows;
    for (std::uint32_t row = range.first.row; row <= range.last.row; ++row) {
        py::list cells;
        for (std::uint32_t column = range.first.column; column <= range.last.column; ++column)
            cells.append(py::cast(Cell{sheet, {row, column}}));
        rows.append(py::tuple(cells));
    }
    return py::tuple(rows);
}

/// What a slice, or a number, means of `count` rows or columns; false when that's nothing.
bool Bounds(const py::handle& key, std::uint32_t count, std::uint32_t& first, std::uint32_t& last) {
    if (!py::isinstance<py::slice>(key)) {
        first = last = Index(key, "row or column");
        return true;
    }
    py::ssize_t start = 0, stop = 0, step = 0, length = 0;
    if (!py::reinterpret_borrow<py::slice>(key).compute(count, &start, &stop, &step, &length))
        throw py::error_already_set();
    if (step != 1) throw py::value_error("slices of cells have the step 1");
    first = static_cast<std::uint32_t>(start);
    last = static_cast<std::uint32_t>(stop - 1);
    return length > 0;
}

py::object GetItem(const SheetPointer& sheet, const py::object& key) {
    if (py::isinstance<py::str>(key)) {
        const std::string name = Utf8From(key);
        if (name.find(':') != std::string::npos) return CellsIn(sheet, RangeOf(*sheet, key));
    } else if (py::isinstance<py::tuple>(key) && py::len(key) == 2) {
        const auto pair = py::reinterpret_borrow<py::tuple>(key);
        if (py::isinstance<py::slice>(pair[0]) || py::isinstance<py::slice>(pair[1])) {
            const auto used = (*sheet)->UsedRange();
            ODF::CellRange range;
            const bool hasRows =
                Bounds(pair[0], used ? used->last.row + 1 : 0, range.first.row, range.last.row);
            const bool hasColumns =
                Bounds(pair[1], used ? used->last.column + 1 : 0, range.first.column, range.last.column);
            return hasRows && hasColumns ? CellsIn(sheet, range) : py::tuple();
        }
    }
    return py::cast(Cell{sheet, AddressOf(key)});
}

/// Goes through rows by their index, so that the sheet may be written to on the way.
class Rows {
public:
    Rows(SheetPointer sheet, const ODF::CellRange& range, bool isExact)
        : sheet_(std::move(sheet)), range_(range), isExact_(isExact), row_(range.first.row) {}

    py::list next() {
        if (row_ > range_.last.row) throw py::stop_iteration();
        const std::uint32_t width = range_.last.column - range_.first.column + 1;
        py::list values(width);
        for (std::uint32_t i = 0; i < width; ++i)
            values[i] = py::none();
        const ODF::SheetRow row = (*sheet_)->Row(static_cast<std::uint32_t>(row_++));
        const Pinned pinned(sheet_->table().tree());
        if (!row.Element()) return values;
        for (const ODF::SheetCell& cell : row.UsedCells()) {
            if (cell.Column() > range_.last.column) break;
            const std::uint64_t end = std::uint64_t{cell.Column()} + cell.ColumnRepeat();
            if (end <= range_.first.column) continue;
            const py::object value = isExact_ ? ExactValue(cell) : ValueToPython(cell.Value());
            for (std::uint64_t at = std::max(cell.Column(), range_.first.column);
                 at < end && at <= range_.last.column; ++at)
                values[at - range_.first.column] = value;
        }
        return values;
    }

private:
    SheetPointer sheet_;
    ODF::CellRange range_;
    bool isExact_;
    std::uint64_t row_;
};

std::uint32_t AppendRow(Sheet& sheet, const py::iterable& values) {
    std::vector<ODF::CellValue> row;
    for (const py::handle value : values)
        row.push_back(FromPython(value));
    const auto index = sheet->AppendRow(row);
    if (!index) throw py::value_error("the sheet has no place for the row");
    sheet.wrote();
    return *index;
}

std::string Repr(Sheet& sheet) {
    const auto used = sheet->UsedRange();
    return "<Sheet '" + sheet->Name() + "' " + (used ? ODF::PrintRange(*used) : "empty") + ">";
}

void BindCell(py::module_& module) {
    py::class_<Cell>(module, "Cell", "One place of a sheet.")
        .def_property(
            "value", [](const Cell& self) { return ValueToPython(self.get().Value()); },
            [](const Cell& self, const py::object& value) {
                self.sheet->set(self.at.row, self.at.column, FromPython(value));
            },
            "None, int, float, bool, str, datetime or timedelta; of a formula its last result.")
        .def_property_readonly(
            "decimal", [](const Cell& self) { return ExactValue(self.get()); },
            "The value, numbers as Decimal with the digits of the file.")
        .def_property_readonly(
            "text", [](const Cell& self) { return ToPython(self.get().Text()); }, "What the cell shows.")
        .def_property(
            "formula",
            [](const Cell& self) -> py::object {
                const std::string formula = self.get().Formula();
                if (formula.empty()) return py::none();
                return ToPython(formula);
            },
            [](const Cell& self, const std::optional<Text>& formula) {
                self.sheet->set(self.at.row, self.at.column, self.get().Value(),
                                formula ? &*formula : nullptr);
            },
            "Such as 'of:=SUM([.A1:.A9])', or None. Setting it keeps the value as the last result.")
        .def_property_readonly(
            "kind", [](const Cell& self) { return NameOf(self.get().Value().Kind()); },
            "'number', 'percentage', 'currency', 'date', 'time', 'bool', 'text' or 'empty'.")
        .def_property_readonly(
            "currency",
            [](const Cell& self) -> py::object {
                const ODF::CellValue value = self.get().Value();
                if (value.Kind() != ODF::CellKind::Currency) return py::none();
                return ToPython(value.Text());
            },
            "The code of a currency, such as 'EUR', or None.")
        .def_property_readonly(
            "row", [](const Cell& self) { return self.at.row; }, "The row, from 0.")
        .def_property_readonly(
            "column", [](const Cell& self) { return self.at.column; }, "The column, from 0.")
        .def_property_readonly(
            "name", [](const Cell& self) { return ODF::PrintCell(self.at); }, "Such as 'B3'.")
        .def_property_readonly(
            "is_covered", [](const Cell& self) { return self.get().IsCovered(); },
            "Whether a merged cell hides this one.")
        .def_property_readonly("rows_spanned", [](const Cell& self) { return self.get().RowsSpanned(); })
        .def_property_readonly("columns_spanned",
                               [](const Cell& self) { return self.get().ColumnsSpanned(); })
        .def_property_readonly("element", &Cell::elementOrNone,
                               "The element, which may stand for several cells, or None where there is none.")
        .def(
            "make",
            [](const Cell& self) {
                CSDObject* const made = (*self.sheet)->MakeCell(self.at.row, self.at.column);
                self.sheet->wrote();
                return Wrap(self.sheet->table().tree(), *made);
            },
            "The element of this cell alone, to give it a style and more; made where there is none.")
        .def("__repr__", [](const Cell& self) {
            return py::str("<Cell {} {!r}>")
                .format(ODF::PrintCell(self.at), ValueToPython(self.get().Value()));
        });
}

} // namespace

ODF::Sheet& Sheet::operator*() {
    CSDObject& table = *table_;
    const auto at = tree().written.find(&table);
    const std::size_t written = at == tree().written.end() ? 0 : at->second;
    if (!view_ || version_ != tree().version || written_ != written) {
        view_.emplace(static_cast<ODF::CTableTable&>(table));
        version_ = tree().version;
        written_ = written;
    }
    return *view_;
}

void Sheet::wrote() {
    written_ = NextVersion();
    for (const CSDObject* at = &*table_; at; at = at->Parent())
        if (at->GetID() == ODF::CTableTable::kId) tree().written[at] = written_;
}

void Sheet::set(std::uint32_t row, std::uint32_t column, const ODF::CellValue& value,
                const std::string* formula) {
    ODF::Sheet& sheet = **this;
    if (!value.IsValid()) throw py::value_error("a cell can't hold this value");
    CSDObject* const cell = sheet.Cell(row, column).Element();
    if (cell && !tree().held.empty()) {
        RescueChildren(table_.tree(), *cell, [](const CSDObject& child) {
            const auto info = ODF::ClassOf(child);
            return info && info->elementName().starts_with("text:");
        });
    }
    const bool isDone =
        formula ? sheet.SetFormula(row, column, *formula, value) : sheet.Set(row, column, value);
    if (!isDone) throw py::value_error("the sheet can't hold this value there");
    wrote();
}

py::object MakeSheet(const Element& table) {
    if (table->GetID() != ODF::CTableTable::kId) throw py::type_error("a sheet is made of a table:table");
    return py::cast(std::make_shared<Sheet>(table));
}

ODF::CellRange RangeOf(Sheet& sheet, const py::object& range) {
    if (range.is_none()) {
        const auto used = sheet->UsedRange();
        return used ? ODF::CellRange{{0, 0}, used->last} : ODF::CellRange{{1, 0}, {0, 0}};
    }
    const std::string name = Utf8From(range);
    if (const auto parsed = ODF::ParseRange(name)) return *parsed;
    throw py::key_error("'" + name + "' names no cells");
}

void RequireSize(const ODF::CellRange& range, std::uint64_t maxCells) {
    const std::uint64_t rows = std::uint64_t{range.last.row} - range.first.row + 1;
    const std::uint64_t columns = std::uint64_t{range.last.column} - range.first.column + 1;
    if (rows * columns > maxCells)
        throw py::value_error("these are " + std::to_string(rows * columns) + " cells, more than max_cells");
}

void BindSheet(py::module_& module) {
    py::class_<ODF::CellValue>(module, "CellValue", "A percentage or an amount of money for a cell.");
    module.def("percentage", &ODF::CellValue::Percentage, py::arg("number"), "0.25 is shown as 25%.");
    module.def(
        "currency", [](double number, const Text& code) { return ODF::CellValue::Currency(number, code); },
        py::arg("number"), py::arg("code"), "An amount with the code of its currency, such as 'EUR'.");
    BindCell(module);
    py::class_<Rows>(module, "Rows")
        .def("__iter__", [](const py::object& self) { return self; })
        .def("__next__", &Rows::next);
    py::class_<Sheet, SheetPointer>(module, "Sheet",
                                    "A table as rows and columns; of a spreadsheet or of any other document.")
        .def(py::init([](const Element& table) { return MakeSheet(table).cast<SheetPointer>(); }),
             py::arg("table"))
        .def_property_readonly("table", &Sheet::table, "The element.")
        .def_property(
            "name", [](Sheet& self) { return ToPython(self->Name()); },
            [](Sheet& self, const Text& name) { self->Table().SetTableName(CTulStringW(name)); })
        .def_property_readonly(
            "dimensions",
            [](Sheet& self) -> py::object {
                const auto used = self->UsedRange();
                if (!used) return py::none();
                return py::str(ODF::PrintRange(*used));
            },
            "The smallest range with all that isn't empty, such as 'A1:G20', or None.")
        .def_property_readonly(
            "shape",
            [](Sheet& self) {
                const auto used = self->UsedRange();
                return used ? py::make_tuple(used->last.row + 1, used->last.column + 1)
                            : py::make_tuple(0, 0);
            },
            "The numbers of rows and columns from A1 to the last cell that isn't empty.")
        .def("__getitem__", GetItem,
             "sheet['B3'] and sheet[2, 1] are a cell; sheet['A1:C3'] and sheet[:3, :3] are rows of cells.")
        .def("__setitem__",
             [](Sheet& self, const py::object& key, const py::object& value) {
                 const ODF::CellAddress at = AddressOf(key);
                 self.set(at.row, at.column, FromPython(value));
             })
        .def(
            "rows",
            [](const SheetPointer& self, const py::object& range, bool isExact, std::uint64_t maxCells) {
                const ODF::CellRange cells = RangeOf(*self, range);
                RequireSize(cells, maxCells);
                return Rows(self, cells, isExact);
            },
            py::arg("range") = py::none(), py::kw_only(), py::arg("decimal") = false,
            py::arg("max_cells") = 100'000'000, "Goes through the rows, each a list of values.")
        .def("append", AppendRow, py::arg("values"),
             "Writes a row after the last one that is used; returns its index, from 0.")
        .def(
            "merged",
            [](Sheet& self, const py::object& key) -> py::object {
                const auto range = self->MergedRange(AddressOf(key));
                if (!range) return py::none();
                return py::str(ODF::PrintRange(*range));
            },
            py::arg("cell"), "The range that is merged to one cell and has this one in it, or None.")
        .def("__eq__",
             [](const Sheet& self, const py::object& other) -> py::object {
                 if (!py::isinstance<Sheet>(other))
                     return py::reinterpret_borrow<py::object>(Py_NotImplemented);
                 return py::bool_(self.table().is(other.cast<const Sheet&>().table()));
             })
        .def("__hash__", [](const Sheet& self) { return py::hash(self.table()); })
        .def("__repr__", Repr);
}

} // namespace odfpython
