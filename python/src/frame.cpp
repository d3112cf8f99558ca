// Columns of a sheet as arrays, and back. All but the making of Python's objects is done without the
// interpreter's lock.
#include "attributes.h"
#include "sheet.h"
#include "values.h"

#include <pybind11/numpy.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <unordered_map>
#include <vector>

namespace odfpython {
namespace {

using ODF::CellKind;
constexpr std::int64_t kNoTime = std::numeric_limits<std::int64_t>::min(); // what numpy takes for none

/// Each distinct text once.
class Texts {
public:
    std::int64_t add(const std::string& text) {
        const auto [at, isNew] = places_.try_emplace(text, static_cast<std::int64_t>(texts_.size()));
        if (isNew) texts_.push_back(&at->first);
        return at->second;
    }
    const std::string& operator[](std::size_t place) const { return *texts_[place]; }
    std::size_t size() const noexcept { return texts_.size(); }

private:
    std::unordered_map<std::string, std::int64_t> places_;
    std::vector<const std::string*> texts_;
};

/// A cell of a column: a number, nanoseconds, a bool, or the place of a text.
union Slot {
    double number;
    std::int64_t whole;
};

struct Column {
    explicit Column(std::size_t rows) : kinds(rows, CellKind::Empty), slots(rows, Slot{.whole = 0}) {}
    std::vector<CellKind> kinds;
    std::vector<Slot> slots;
};

/// The value as kind and slot; dates that numpy can't have are texts.
std::pair<CellKind, Slot> SlotOf(const ODF::CellValue& value, Texts& texts) {
    switch (value.Kind()) {
    case CellKind::Number:
    case CellKind::Percentage:
    case CellKind::Currency:
        return {CellKind::Number, Slot{.number = value.Number()}};
    case CellKind::Bool:
        return {CellKind::Bool, Slot{.whole = value.Bool() ? 1 : 0}};
    case CellKind::Date:
        if (const auto time = ParseDate(value.Text())) return {CellKind::Date, Slot{.whole = *time}};
        break;
    case CellKind::Time:
        if (const auto time = ParseDuration(value.Text())) return {CellKind::Time, Slot{.whole = *time}};
        break;
    case CellKind::Text:
        break;
    case CellKind::Empty:
        return {CellKind::Empty, Slot{.whole = 0}};
    }
    return {CellKind::Text, Slot{.whole = texts.add(value.Text())}};
}

std::vector<Column> ReadColumns(const ODF::Sheet& sheet, const ODF::CellRange& range, Texts& texts) {
    const std::uint64_t height = std::uint64_t{range.last.row} + 1 - range.first.row;
    std::vector<Column> columns(range.last.column - range.first.column + 1, Column(height));
    for (std::uint64_t at = range.first.row; at <= range.last.row;) {
        const ODF::SheetRow row = sheet.Row(static_cast<std::uint32_t>(at));
        const std::uint64_t next = std::min<std::uint64_t>(std::uint64_t{row.Index()} + row.Repeat(),
                                                           std::uint64_t{range.last.row} + 1);
        if (row.Element())
            for (const ODF::SheetCell& cell : row.UsedCells()) {
                if (cell.Column() > range.last.column) break;
                const std::uint64_t end = std::min<std::uint64_t>(
                    std::uint64_t{cell.Column()} + cell.ColumnRepeat(), std::uint64_t{range.last.column} + 1);
                if (end <= range.first.column) continue;
                const auto [kind, slot] = SlotOf(cell.Value(), texts);
                for (std::uint64_t column = std::max(cell.Column(), range.first.column); column < end;
                     ++column) {
                    Column& to = columns[column - range.first.column];
                    std::fill(to.kinds.begin() + static_cast<std::ptrdiff_t>(at - range.first.row),
                              to.kinds.begin() + static_cast<std::ptrdiff_t>(next - range.first.row), kind);
                    std::fill(to.slots.begin() + static_cast<std::ptrdiff_t>(at - range.first.row),
                              to.slots.begin() + static_cast<std::ptrdiff_t>(next - range.first.row), slot);
                }
            }
        at = std::max(next, at + 1);
    }
    return columns;
}

template<typename T, typename Get>
py::array ArrayOf(const Column& column, const char* type, Get get) {
    py::array made(py::dtype(type), py::array::ShapeContainer{static_cast<py::ssize_t>(column.kinds.size())});
    T* const out = static_cast<T*>(made.mutable_data());
    for (std::size_t i = 0; i < column.kinds.size(); ++i)
        out[i] = get(column.kinds[i], column.slots[i]);
    return made;
}

class Maker {
public:
    explicit Maker(const Texts& texts) : texts_(texts), strings_(texts.size()) {}

    py::array operator()(const Column& column) {
        const auto has = [&](CellKind kind) {
            return std::find(column.kinds.begin(), column.kinds.end(), kind) != column.kinds.end();
        };
        const bool hasGaps = has(CellKind::Empty);
        const bool kinds[] = {has(CellKind::Number), has(CellKind::Bool), has(CellKind::Date),
                              has(CellKind::Time), has(CellKind::Text)};
        const auto count = std::count(std::begin(kinds), std::end(kinds), true);
        if (count > 1 || kinds[4] || (kinds[1] && hasGaps)) return objects(column);
        if (kinds[1]) return ArrayOf<bool>(column, "?", [](CellKind, Slot slot) { return slot.whole != 0; });
        if (kinds[2] || kinds[3])
            return ArrayOf<std::int64_t>(
                column, kinds[2] ? "M8[ns]" : "m8[ns]",
                [](CellKind kind, Slot slot) { return kind == CellKind::Empty ? kNoTime : slot.whole; });
        const auto isWhole = [](Slot slot) {
            return std::abs(slot.number) < 9007199254740992 && slot.number == std::floor(slot.number);
        };
        if (count == 1 && !hasGaps && std::all_of(column.slots.begin(), column.slots.end(), isWhole))
            return ArrayOf<std::int64_t>(
                column, "i8", [](CellKind, Slot slot) { return static_cast<std::int64_t>(slot.number); });
        return ArrayOf<double>(column, "f8", [](CellKind kind, Slot slot) {
            return kind == CellKind::Empty ? std::numeric_limits<double>::quiet_NaN() : slot.number;
        });
    }

private:
    py::array objects(const Column& column) {
        py::array made(py::dtype("O"),
                       py::array::ShapeContainer{static_cast<py::ssize_t>(column.kinds.size())});
        auto** const out = static_cast<PyObject**>(made.mutable_data());
        const py::object gap = py::float_(std::numeric_limits<double>::quiet_NaN());
        for (std::size_t i = 0; i < column.kinds.size(); ++i)
            Py_XDECREF(std::exchange(out[i], object(column.kinds[i], column.slots[i], gap).release().ptr()));
        return made;
    }

    py::object object(CellKind kind, Slot slot, const py::object& gap) {
        switch (kind) {
        case CellKind::Number:
            return NumberToPython(slot.number);
        case CellKind::Bool:
            return py::bool_(slot.whole != 0);
        case CellKind::Date:
            return DateToPython(slot.whole);
        case CellKind::Time:
            return DurationToPython(slot.whole);
        case CellKind::Text: {
            py::object& string = strings_[static_cast<std::size_t>(slot.whole)];
            if (!string) string = ToPython(std::string_view(texts_[static_cast<std::size_t>(slot.whole)]));
            return string;
        }
        default:
            return gap;
        }
    }

    const Texts& texts_;
    std::vector<py::object> strings_;
};

py::list Columns(Sheet& sheet, const py::object& what, std::uint32_t skippedRows, std::uint64_t maxCells) {
    ODF::CellRange range = RangeOf(sheet, what);
    RequireSize(range, maxCells);
    py::list arrays;
    if (range.first.row > range.last.row) return arrays; // nothing is used
    range.first.row += skippedRows;
    const bool isEmpty = std::uint64_t{range.first.row} > range.last.row;
    Texts texts;
    std::vector<Column> columns;
    {
        const ODF::Sheet& view = *sheet;
        const Unlocked unlocked(sheet.table().tree());
        if (isEmpty)
            columns.assign(range.last.column - range.first.column + 1, Column(0));
        else
            columns = ReadColumns(view, range, texts);
    }
    Maker make(texts);
    for (Column& column : columns) {
        arrays.append(make(column));
        column = Column(0);
    }
    return arrays;
}

/// Nothing for NaN, which is what numpy has for none.
ODF::CellValue NumberOrNone(double number) {
    return std::isnan(number) ? ODF::CellValue() : ODF::CellValue(number);
}

/// The values of an array of numpy; `missing`, if any, marks those that are none.
std::vector<ODF::CellValue> ValuesOf(const py::array& array, const py::array_t<bool>& missing) {
    const auto count = static_cast<std::size_t>(array.size());
    std::vector<ODF::CellValue> values(count);
    const bool* const isMissing = missing.size() == array.size() ? missing.data() : nullptr;
    const auto fill = [&](auto valueOf) {
        for (std::size_t i = 0; i < count; ++i)
            if (!isMissing || !isMissing[i]) values[i] = valueOf(i);
    };
    const char kind = array.dtype().kind();
    if (kind == 'i' || kind == 'u' || kind == 'f') {
        const auto numbers = py::array_t<double, py::array::c_style | py::array::forcecast>(array);
        fill([&](std::size_t i) { return NumberOrNone(numbers.data()[i]); });
    } else if (kind == 'b') {
        const auto truths = py::array_t<bool, py::array::c_style | py::array::forcecast>(array);
        fill([&](std::size_t i) { return ODF::CellValue(truths.data()[i]); });
    } else if (kind == 'M' || kind == 'm') {
        // By seconds first: the nanoseconds of all years don't fit into 64 bits.
        using Times = py::array_t<std::int64_t, py::array::c_style | py::array::forcecast>;
        const py::object seconds = array.attr("astype")(std::string(1, kind) + "8[s]");
        const Times wholes(seconds.attr("astype")("i8"));
        const Times rests((array - seconds).attr("astype")("m8[ns]").attr("astype")("i8"));
        fill([&](std::size_t i) {
            if (wholes.data()[i] == kNoTime) return ODF::CellValue();
            const Seconds time{wholes.data()[i], rests.data()[i]};
            return kind == 'M' ? DateValue(time) : TimeValue(time);
        });
    } else {
        const py::list objects = array.attr("tolist")();
        fill([&](std::size_t i) {
            const py::handle object = objects[i];
            return PyFloat_Check(object.ptr()) ? NumberOrNone(PyFloat_AS_DOUBLE(object.ptr()))
                                               : FromPython(object);
        });
    }
    return values;
}

/// All or nothing is written of what no cell can hold.
void AppendColumns(Sheet& sheet, const py::list& header, const py::list& arrays, const py::list& missing) {
    std::vector<std::vector<ODF::CellValue>> head;
    for (const py::handle names : header) {
        head.emplace_back();
        for (const py::handle name : py::reinterpret_borrow<py::iterable>(names))
            head.back().push_back(FromPython(name));
    }
    std::vector<std::vector<ODF::CellValue>> columns;
    for (std::size_t i = 0; i < arrays.size(); ++i)
        columns.push_back(ValuesOf(arrays[i].cast<py::array>(), missing[i].cast<py::array_t<bool>>()));
    const std::size_t height = columns.empty() ? 0 : columns.front().size();
    for (const auto& column : columns) {
        if (column.size() != height) throw py::value_error("the columns have different lengths");
        if (!std::all_of(column.begin(), column.end(), [](const auto& value) { return value.IsValid(); }))
            throw py::value_error("a column has a value that no cell can hold, such as infinity");
    }
    ODF::Sheet& view = *sheet;
    bool isDone = true;
    {
        const Unlocked unlocked(sheet.table().tree());
        for (const auto& names : head)
            isDone = isDone && view.AppendRow(names).has_value();
        std::vector<ODF::CellValue> row(columns.size());
        for (std::size_t i = 0; i < height && isDone; ++i) {
            for (std::size_t column = 0; column < columns.size(); ++column)
                row[column] = std::move(columns[column][i]);
            isDone = view.AppendRow(row).has_value();
        }
    }
    sheet.wrote();
    if (!isDone) throw py::value_error("the sheet has no place for all rows");
}

} // namespace

void BindFrames(py::module_& module) {
    module.def("columns", Columns, "The columns of a range as arrays of numpy.");
    module.def("append_columns", AppendColumns,
               "Appends rows of names, then those that are given as columns.");
}

} // namespace odfpython
