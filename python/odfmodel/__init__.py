"""OpenDocument files as trees of typed elements.

    import odfmodel
    from odfmodel.text import P

    with odfmodel.open("report.odt") as document:
        for paragraph in document.iter(P):
            print(paragraph.style_name, paragraph.text)
        document.body.append(P("Hello", style_name="Standard"))
        document.save()

The classes of the elements are in modules named after their prefixes: `text:p` is `odfmodel.text.P`.
"""
from ._core import (
    Attributes, Cell, CellValue, Comment, Element, ForeignElement, Note, ProcessingInstruction, Severity, Sheet, Status,
    currency, element, percentage,
)
from ._document import Document, Members, Sheets, new, open
from ._errors import Cancelled, DamagedError, Error, FileError, LimitError, PasswordError
from ._frames import register_pandas_engine

__all__ = [
    "Attributes", "Cancelled", "Cell", "CellValue", "Comment", "DamagedError", "Document", "Element", "Error",
    "FileError", "ForeignElement", "LimitError", "Members", "Note", "PasswordError", "ProcessingInstruction",
    "Severity", "Sheet", "Sheets", "Status", "currency", "element", "new", "open", "percentage", "register_pandas_engine",
]
