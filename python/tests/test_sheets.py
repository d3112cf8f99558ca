from datetime import date, datetime, time, timedelta, timezone
from decimal import Decimal
from io import BytesIO

import pytest

import odfmodel
from odfmodel import _core
from odfmodel.table import Table, TableCell, TableRow
from odfmodel.text import P

numpy = pytest.importorskip("numpy")
pandas = pytest.importorskip("pandas")


@pytest.fixture
def book():
    return odfmodel.new("spreadsheet")


@pytest.mark.parametrize("given, read, kind, text", [
    (7, 7, "number", "7"), (2.5, 2.5, "number", "2.5"), ("a  b\nc", "a  b\nc", "text", "a  b\nc"),
    (True, True, "bool", "TRUE"), (date(2024, 2, 29), datetime(2024, 2, 29), "date", "2024-02-29"),
    (datetime(1899, 12, 30, 1, 2, 3, 450000), datetime(1899, 12, 30, 1, 2, 3, 450000), "date", None),
    (time(12, 30), timedelta(hours=12, minutes=30), "time", None),
    (timedelta(days=2, microseconds=5), timedelta(days=2, microseconds=5), "time", None),
    (-timedelta(hours=1), -timedelta(hours=1), "time", None), (Decimal("1.25"), 1.25, "number", "1.25"),
    (odfmodel.percentage(0.25), 0.25, "percentage", "25%"), (odfmodel.currency(3, "EUR"), 3, "currency", None),
    (numpy.int64(5), 5, "number", "5"), (numpy.float32(0.5), 0.5, "number", "0.5"),
    (numpy.bool_(False), False, "bool", "FALSE"),
    (numpy.datetime64("2024-01-02T03:04:05", "ns"), datetime(2024, 1, 2, 3, 4, 5), "date", None),
    (numpy.datetime64("9999-12-31"), datetime(9999, 12, 31), "date", None),
    (numpy.datetime64("0001", "Y"), datetime(1, 1, 1), "date", None),
    (numpy.timedelta64(-1, "ms"), timedelta(milliseconds=-1), "time", None), (numpy.longdouble(1.5), 1.5, "number", "1.5"),
    (numpy.array([5]), 5, "number", "5"),
    (numpy.array(["2024-02-29"], dtype="M8[D]"), datetime(2024, 2, 29), "date", None),
    (pandas.Series(pandas.to_datetime(["2024-02-29"])), datetime(2024, 2, 29), "date", None), (timedelta(days=200_000), timedelta(days=200_000), "time", None),
    (timedelta.max - timedelta(days=1), timedelta.max - timedelta(days=1), "time", None),
    (timedelta.min + timedelta(days=1), timedelta.min + timedelta(days=1), "time", None)])
def test_value_is_read_back_with_its_type(book, again, given, read, kind, text):
    book.sheets[0]["C2"] = given
    cell = again(book).sheets[0]["C2"]
    assert cell.value == read and type(cell.value) is type(read) and cell.kind == kind
    assert text is None or cell.text == text


def test_value_that_no_cell_holds_is_refused(book):
    sheet = book.sheets[0]
    sheet["A1"] = 1
    aware = datetime(2024, 1, 1, tzinfo=timezone.utc)
    for wrong, error in [(float("nan"), ValueError), (float("inf"), ValueError), ([], TypeError),
                         (10**400, OverflowError), (b"bytes", TypeError), (1j, TypeError), (numpy.clongdouble(1j), TypeError),
                         (aware, ValueError), (aware.timetz(), ValueError), (pandas.Timestamp(aware), ValueError),
                         (pandas.NaT, ValueError), (pandas.NA, TypeError), (numpy.datetime64("NaT"), ValueError),
                         (numpy.timedelta64("NaT"), ValueError), (numpy.datetime64("20000-01-01"), ValueError),
                         (numpy.longdouble("inf"), ValueError), (numpy.array([1, 2]), ValueError),
                         (numpy.array([1, 2], dtype="M8[s]"), ValueError),
                         (numpy.array(b"x"), TypeError), (Decimal("NaN"), ValueError)]:
        with pytest.raises(error):
            sheet["A1"] = wrong
        with pytest.raises(error):
            sheet.append([wrong])
    for place, error in [("x", KeyError), ((-1, 0), IndexError), (5, TypeError)]:
        with pytest.raises(error):
            sheet[place] = 1
    assert list(sheet.rows()) == [[1]]


def test_cells_are_got_by_name_index_range_and_slice(book):
    sheet = book.sheets[0]
    for row in ([1, 2, 3], [4, 5, 6], [7, 8, 9]):
        sheet.append(row)
    values = lambda cells: [[cell.value for cell in row] for row in cells]
    assert sheet[1, 2].name == "C2" and sheet["C2"].value == 6
    assert values(sheet["B1:C2"]) == values(sheet[:2, 1:]) == [[2, 3], [5, 6]]
    assert values(sheet[-1:, 0]) == [[7]] and sheet[5:, :] == ()
    assert (sheet.shape, sheet.dimensions) == ((3, 3), "A1:C3")
    assert list(sheet.rows("B2:D4")) == [[5, 6, None], [8, 9, None], [None] * 3]


def test_sheets_are_found_added_and_named(book, again):
    totals = book.sheets.add("Totals")
    totals["A1"] = 1
    totals["A1"].formula = "=SUM([Sheet1.A1:.A9])"
    opened = again(book)
    assert opened.sheets.names == ["Sheet1", "Totals"] and len(opened.sheets) == 2
    assert opened.sheets["Totals"]["A1"].formula == "of:=SUM([Sheet1.A1:.A9])" and opened.sheets[-1]["A1"].value == 1
    assert opened.sheets[0]["A1"].formula is None
    for missing, error in [("None", KeyError), (2, IndexError)]:
        with pytest.raises(error):
            opened.sheets[missing]
    with pytest.raises(ValueError):
        book.sheets.add("Totals")


def test_repeats_are_seen_through_and_divided():
    row = TableRow(TableCell(P("x"), value_type="string", number_columns_repeated=3), number_rows_repeated=1000)
    table = Table(row, TableRow(TableCell(number_columns_repeated=16384), number_rows_repeated=10**6), name="T")
    sheet = odfmodel.Sheet(table)
    assert sheet.shape == (1000, 3) and sum(map(len, sheet.rows())) == 3000
    sheet["B500"] = 5
    assert [sheet[row, 1].value for row in (498, 499, 500)] == ["x", 5, "x"] and len(table.findall(TableRow)) == 4
    assert sheet["B500"].element.get("table:number-columns-repeated") is None
    first = sheet["A1"].make()
    first.style_name = "Bold"
    assert sheet["A2"].element.get("table:style-name") is None
    with pytest.raises(ValueError):
        sheet.to_pandas("A1:XFD1048576")


def test_view_follows_changes_of_the_tree(book):
    sheet = book.sheets[0]
    for number in range(3):
        sheet.append([number])
    table = sheet.table
    table.remove(sheet[1, 0].element.parent)
    assert list(sheet.rows()) == [[0], [2]]
    table.append(TableRow(TableCell(P("new"), value_type="string")))
    assert sheet.append(["end"]) == 3 and [row[0] for row in sheet.rows()] == [0, 2, "new", "end"]
    held = sheet["A1"].element.find(P)
    sheet["A1"] = "other"
    assert held.text == "0" and held.parent is None
    cell = sheet["A2"]
    table.detach()
    del book
    assert cell.value == 2 and sheet.name == "Sheet1"


def test_views_see_what_others_write_to_their_table(book):
    sheet, same, other = book.sheets[0], book.sheets[0], book.sheets.add("Other")
    sheet.append(["a"])
    same.append(["b"])
    other.append(["c"])
    sheet.append(["d"])
    assert list(sheet.rows()) == list(same.rows()) == [["a"], ["b"], ["d"]] and list(other.rows()) == [["c"]]
    sheet["B1"].make().append(Table(TableRow(TableCell()), name="Inner"))
    inner = odfmodel.Sheet(sheet["B1"].element.find(Table))
    inner["C3"] = "in"
    assert same.shape == (3, 2) and inner.shape == (3, 3)
    inner.table.detach()
    inner.append(["out"])
    assert sheet.shape == (3, 1) and inner.shape == (4, 3)


def test_writing_while_reading_goes_on(book):
    sheet = book.sheets[0]
    for number in range(5):
        sheet.append([number])
    for index, (value,) in enumerate(sheet.rows()):
        sheet[index, 1] = value * 2
    assert list(sheet.rows()) == [[n, n * 2] for n in range(5)]


def test_table_of_a_text_is_a_sheet(letter, again):
    letter.body.append(Table(TableRow(TableCell(P("a")), TableCell(P("b")))))
    (table,) = again(letter).tables
    assert list(table.rows()) == [["a", "b"]]


def test_decimal_has_the_digits_of_the_file(book):
    book.sheets[0].table.append(TableRow(TableCell(value_type="float", value="0.10000000000000000001")))
    sheet = book.sheets[0]
    assert [row for row in sheet.rows(decimal=True) if row[0]] == [[Decimal("0.10000000000000000001")]]


def frame():
    return pandas.DataFrame({
        "whole": [1, -2, 3], "part": [0.5, numpy.nan, 2.5], "truth": [True, False, True], "text": ["a", None, "ü€"],
        "day": pandas.to_datetime(["2024-01-31 12:30:00.5", None, "1969-12-31"]),
        "span": pandas.to_timedelta(["1h", "-3s", None]), "mixed": [1, "b", None]})


def test_frame_comes_back_with_its_types(book, again):
    book.sheets[0].from_pandas(frame())
    result = again(book).sheets[0].to_pandas()
    pandas.testing.assert_frame_equal(result.where(result.notna(), None), frame().where(frame().notna(), None))
    assert [str(kind) for kind in result.dtypes] == [
        "int64", "float64", "bool", "object", "datetime64[ns]", "timedelta64[ns]", "object"]


def test_frame_is_the_one_that_pandas_reads(book):
    odfmodel.register_pandas_engine()
    source = frame().drop(columns="span")
    book.sheets[0].from_pandas(source)
    data = BytesIO(book.tobytes())
    read = pandas.read_excel(data, engine="odfmodel")
    pandas.testing.assert_frame_equal(read, pandas.read_excel(data, engine="odf"), check_dtype=False)
    pandas.testing.assert_frame_equal(read, book.sheets[0].to_pandas())


def test_frame_of_odd_sheets(book):
    sheet = book.sheets[0]
    assert sheet.to_pandas().empty and list(sheet.rows()) == []
    sheet.append(["a", None, "a"])
    assert list(sheet.to_pandas().columns) == ["a", "Unnamed: 1", "a.1"] and len(sheet.to_pandas()) == 0
    assert sheet.to_pandas(header=False).shape == (1, 3)
    sheet["A2"] = date(9999, 12, 31)  # more than 64 bits of nanoseconds
    assert sheet.to_pandas()["a"].tolist() == ["9999-12-31"]
    for wrong, error in [(float("inf"), ValueError), (1j, TypeError), (b"x", TypeError), (10**400, OverflowError),
                         (pandas.Timestamp("2024-01-01", tz="UTC"), ValueError), ("a\0", ValueError)]:
        with pytest.raises(error):
            sheet.from_pandas(pandas.DataFrame({"good": [1, 2], "wrong": [1, wrong]}))
        assert sheet.shape == (2, 3)


@pytest.mark.parametrize("column, values", [
    (pandas.array([1, None], dtype="Int64"), [1, None]), (pandas.array([True, None], dtype="boolean"), [True, None]),
    (pandas.array([0.5, 1], dtype="Float64") * numpy.inf * 0, [None, None]), (pandas.array(["x", None], dtype="string"), ["x", None]),
    (pandas.Categorical(["b", None]), ["b", None]), (pandas.Categorical([7, 8]), [7, 8]), (pandas.arrays.SparseArray([0, 1]), [0, 1]),
    (numpy.array([1, 2], dtype=numpy.longdouble), [1, 2]), (numpy.array([1.5, 2], dtype=numpy.float16), [1.5, 2]),
    ([numpy.nan, pandas.NaT], [None, None]), ([datetime(3000, 1, 1), pandas.NA], [datetime(3000, 1, 1), None]),
    ([numpy.longdouble(2), Decimal("0.5")], [2, 0.5])])
def test_column_of_any_kind_is_written(book, column, values):
    book.sheets[0].from_pandas(pandas.DataFrame({"name": column}))
    assert list(book.sheets[0].rows("A1:A3")) == [["name"]] + [[value] for value in values]


@pytest.mark.parametrize("times, values", [
    (numpy.array(["3000-01-01", "NaT", "0001-01-01T00:00:01"], dtype="M8[s]"), ["3000-01-01T00:00:00", None, "0001-01-01T00:00:01"]),
    (numpy.array(["1969-12-31T23:59:59.999999999"], dtype="M8[ns]"), ["1969-12-31T23:59:59.999999999"]),
    (numpy.array([10**10, "NaT", -1], dtype="m8[s]"), ["PT2777777H46M40S", None, "-PT00H00M01S"]),
    (numpy.array([-1, 10**9 + 1], dtype="m8[ns]"), ["-PT00H00M00.000000001S", "PT00H00M01.000000001S"])])
def test_times_of_any_unit_are_written_whole(book, times, values):
    _core.append_columns(book.sheets[0], [["t"]], [times], [numpy.isnat(times)])
    cells = [row[0].element for row in book.sheets[0]["A2:A9"][:len(values)]]
    assert [cell and (cell.get("office:date-value") or cell.get("office:time-value")) for cell in cells] == values
    _core.append_columns(book.sheets[0], [], [times], [numpy.zeros(len(times), dtype=bool)])
    assert len(book.sheets[0].table.findall(TableRow)) == 1 + 2 * len(values)


@pytest.mark.parametrize("iso, value", [
    ("PT1H", timedelta(hours=1)), ("P1DT1.5S", timedelta(days=1, seconds=1.5)), ("-PT0.25S", timedelta(seconds=-0.25)),
    ("PT36H", timedelta(hours=36)), *[(text, text) for text in (
        "P", "PT", "P1DT", "P1M", "P1Y", "PT1H1H", "PT1S1M", "PT1.5H", "P1H", "PT1D", "1H", "PT1", "-P", "PT99999999999999999999S",
        "P" + "999999999999D" * 2000)]])
def test_duration_of_a_file_is_a_timedelta_or_its_text(iso, value):
    table = Table(TableRow(TableCell(value_type="time", time_value=iso)))
    sheet = odfmodel.Sheet(table)
    assert sheet["A1"].value == value and list(sheet.rows("A1")) == [[value]]
    assert sheet.to_pandas("A1", header=False)[0].tolist() == [value]


@pytest.mark.parametrize("names, columns", [
    (["a", "a", "a.1"], ["a", "a.2", "a.1"]), (["a", "a", "a", "a.1", "a.2"], ["a", "a.3", "a.4", "a.1", "a.2"]),
    (["a.1", "a", "a", "a"], ["a.1", "a", "a.2", "a.3"]), ([1, 1, 2.5], [1, "1.1", 2.5])])
def test_names_of_columns_are_those_of_pandas(book, names, columns):
    book.sheets[0].append(names)
    book.sheets[0].append(range(len(names)))
    assert list(book.sheets[0].to_pandas().columns) == columns
    assert list(pandas.read_excel(BytesIO(book.tobytes()), engine="odf").columns) == columns


@pytest.mark.parametrize("columns, header", [
    ([numpy.nan, None], [[None, None]]), ([1, "x"], [[1, "x"]]), (["a", "a"], [["a", "a"]]),
    (pandas.MultiIndex.from_tuples([("a", "x"), ("a", "y")]), [["a", "a"], ["x", "y"]])])
def test_names_of_any_frame_are_written(book, columns, header):
    book.sheets[0].from_pandas(pandas.DataFrame([[1, 2]], columns=columns))
    assert list(book.sheets[0].rows()) == header + [[1, 2]]


def test_sheet_without_cells_is_an_empty_frame_and_array(book):
    sheet = book.sheets[0]
    assert sheet.to_pandas().shape == sheet.to_numpy().shape == (0, 0)
    for empty in (pandas.DataFrame({"a": []}), pandas.DataFrame(index=[1, 2], columns=["a"])):
        sheet.from_pandas(empty)
    assert list(sheet.rows("A1:A4")) == [["a"], ["a"], [None], [None]]


def test_sheets_are_the_same_when_their_tables_are(book):
    other = book.sheets.add("Other")
    assert book.sheets[0] == book.sheets["Sheet1"] != other and len({*book.sheets, *book.sheets}) == 2
    assert other in book.sheets and "Other" in book.sheets and "None" not in book.sheets and 1 not in book.sheets
    assert book.sheets.index(other) == 1 and odfmodel.Sheet(Table()) not in book.sheets and other != 1


def test_formula_goes_by_none(book):
    cell = book.sheets[0]["A1"]
    cell.value, cell.formula = 3, "of:=1+2"
    cell.formula = None
    assert (cell.value, cell.formula) == (3, None)


def test_array_is_of_numbers_or_objects(book):
    sheet = book.sheets[0]
    sheet.append([1, 2.5])
    sheet.append([None, 4])
    numbers = sheet.to_numpy()
    assert numbers.dtype == float and numpy.isnan(numbers[1, 0]) and numbers[0].tolist() == [1, 2.5]
    sheet["C1"] = timedelta(hours=1)
    assert sheet.to_numpy()[:, 2].tolist() == [timedelta(hours=1), None]
