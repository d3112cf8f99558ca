"""Sheets as arrays and data frames."""
import itertools

from . import _core


def to_numpy(sheet, range=None, *, max_cells=100_000_000):
    """The cells as an array of two dimensions: of float where all are numbers, else of object."""
    import numpy

    columns = _core.columns(sheet, range, 0, max_cells)
    is_numeric = all(column.dtype.kind in "if" for column in columns)
    result = numpy.empty((len(columns[0]) if columns else 0, len(columns)), dtype=float if is_numeric else object)
    for index, column in enumerate(columns):
        # astype(object) would make numbers of times.
        result[:, index] = column if column.dtype.kind not in "mM" else _objects(column)
    return result


def _objects(times):
    import numpy

    result = times.astype(times.dtype.str.replace("ns", "us")).astype(object)
    result[numpy.isnat(times)] = None
    return result


def to_pandas(sheet, range=None, *, header=True, max_cells=100_000_000):
    """The cells as a DataFrame; with `header` the first row has the names of the columns.

    Columns of numbers, dates and durations get the types for them, others are of objects. An empty cell is NaN or
    NaT.
    """
    import pandas

    columns = _core.columns(sheet, range, 1 if header else 0, max_cells)
    series = [pandas.Series(column, dtype=column.dtype, copy=False) for column in columns]
    frame = pandas.DataFrame(dict(enumerate(series)), copy=False)
    if header:
        first = next(iter(sheet.rows(range, max_cells=max_cells)), [])
        frame.columns = _unique(first + [None] * (len(columns) - len(first)))
    return frame


def _unique(names):
    """The names as pandas itself makes them: 'Unnamed: 2' for none, 'a.1' for a second 'a'."""
    names = [f"Unnamed: {index}" if name is None else name for index, name in enumerate(names)]
    taken, counts, result = set(names), {}, []
    for name in names:
        count = counts.get(name, 0)
        unique = name
        while count and unique in taken:
            unique = f"{name}.{count}"
            count += 1
        counts[name] = max(count, 1)
        taken.add(unique)
        result.append(unique)
    return result


def from_pandas(sheet, frame, *, header=True, index=False):
    """Appends the rows of a DataFrame behind what the sheet has; missing values are empty cells.

    Names of several levels take a row each. When a value is one that no cell can hold, nothing is written.
    """
    if index:
        frame = frame.reset_index()
    names = [_names(level) for level in zip(*frame.columns)] if frame.columns.nlevels > 1 else [_names(frame.columns)]
    columns = [frame.iloc[:, number] for number in range(frame.shape[1])]
    arrays = [column.to_numpy(dtype=None) for column in columns]
    _core.append_columns(sheet, names if header else [], arrays, [column.isna().to_numpy() for column in columns])


def _names(names):
    return [None if name is None or name != name else name if isinstance(name, (int, float)) else str(name)
            for name in names]


def register_pandas_engine():
    """Lets pandas.read_excel(..., engine="odfmodel") read by this package."""
    from pandas.io.excel._base import BaseExcelReader, ExcelFile

    from ._document import Document, open

    class Reader(BaseExcelReader):
        @property
        def _workbook_class(self):
            return Document

        def load_workbook(self, file, *_):
            return open(file)

        @property
        def sheet_names(self):
            return self.book.sheets.names

        def get_sheet_by_index(self, index):
            self.raise_if_bad_sheet_by_index(index)
            return self.book.sheets[index]

        def get_sheet_by_name(self, name):
            self.raise_if_bad_sheet_by_name(name)
            return self.book.sheets[name]

        def get_sheet_data(self, sheet, *options):  # the number of rows is the last in all versions
            rows = itertools.islice(sheet.rows(), options[-1] if options else None)
            return [["" if value is None else value for value in row] for row in rows]

    ExcelFile._engines["odfmodel"] = Reader


_core.Sheet.to_numpy = to_numpy
_core.Sheet.to_pandas = to_pandas
_core.Sheet.from_pandas = from_pandas
