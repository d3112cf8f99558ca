"""Documents, their sheets and members."""
import io
from collections.abc import MutableMapping, Sequence

from . import _core


class Members(MutableMapping):
    """The files in a document by their names, as bytes."""

    def __init__(self, document):
        self._document = document

    def __getitem__(self, name):
        return self._document._read(name)

    def __setitem__(self, name, data):
        self._document._write(name, data, "")

    def __delitem__(self, name):
        self._document._remove(name)

    def __iter__(self):
        return iter(self._document._members())

    def __len__(self):
        return len(self._document._members())

    def __contains__(self, name):
        return name in self._document._members()


class Sheets(Sequence):
    """The sheets of a spreadsheet, by index or name."""

    def __init__(self, document):
        self._document = document

    def __getitem__(self, key):
        sheets = self._document._sheets()
        if not isinstance(key, str):
            return sheets[key]
        for sheet in sheets:
            if sheet.name == key:
                return sheet
        raise KeyError(key)

    def __len__(self):
        return len(self._document._sheets())

    def __iter__(self):
        return iter(self._document._sheets())

    def __contains__(self, sheet):
        """Whether there is this sheet, or one of that name."""
        return sheet in (self.names if isinstance(sheet, str) else self._document._sheets())

    @property
    def names(self):
        return [sheet.name for sheet in self]

    def add(self, name):
        """Adds an empty sheet behind the others and returns it."""
        return self._document._add_sheet(name)

    def __repr__(self):
        return f"<Sheets {self.names}>"


class Document(_core.Document):
    """A document. It is opened by `odfmodel.open` and begun by `odfmodel.new`.

    `body` is where the content is; `content`, `styles`, `meta` and `settings` are the roots of the trees, or None
    where the document has no such tree. Elements stay valid as long as they are held, also after `close`.
    """

    def __enter__(self):
        return self

    def __exit__(self, *exception):
        self.close()

    @property
    def sheets(self):
        """The sheets of a spreadsheet."""
        return Sheets(self)

    @property
    def tables(self):
        """The tables of the body, also those in other tables, each as a `Sheet`."""
        return [_core.Sheet(table) for table in self.iter("table:table")]

    @property
    def members(self):
        """The files in the document by their names, as bytes."""
        return Members(self)

    def iter(self, what=None):
        """Goes through the body and all below it; with a class or tag through those elements."""
        return self.body.iter(what)

    def find(self, what):
        """The first element of a class or tag at any depth of the body, or None."""
        return next(self.iter(what), None)

    def findall(self, what):
        """All elements of a class or tag at any depth of the body."""
        return list(self.iter(what))

    def save(self, path=None, **options):
        """Writes the document to `path`, which may be a file that is open for writing in binary, or to where it was
        opened from.

        An old file at a path is replaced when the new one is complete. Options: `compression` from 1 (quick) to 12 (small);
        `threads`; `fixed_time`, in seconds since 1970, for files that come out the same each time;
        `allow_incomplete` for documents that couldn't be read whole; `progress`, a function that is told member,
        done and total, and ends it by returning False.
        """
        path = self.path if path is None else path
        if path is None:
            raise ValueError("the document was opened from no file: say where to save it")
        if hasattr(path, "write"):
            rest = memoryview(self.tobytes(**options))
            while rest:
                written = path.write(rest)
                if written is None and isinstance(path, io.RawIOBase):
                    raise BlockingIOError("the file takes no more at present")
                rest = rest[len(rest) if written is None else written:]
        else:
            self._save(path, **options)

    def set_password(self, password):
        """Encrypts the document with this password from now on; None for no longer."""
        if password == "":
            raise ValueError("a password can't be empty")
        self._set_password(password or "")

    def to_flat(self):
        """The same document as one XML file, such as .fodt; `notes` tells what has no place in it."""
        return _made(self._flat(), None)

    def to_package(self):
        """The same document, that was opened from one XML file, as a package."""
        return _made(self._package(), None)

    path = None

    def __repr__(self):
        if self.closed:
            return "<Document closed>"
        return f"<Document {self.kind}{f' {self.path!r}' if self.path is not None else ''}>"


def open(source, password=None, *, recover=False, strict=False, progress=None):
    """Opens a document: a path, bytes, or a file that is open for reading in binary.

    A damaged document raises DamagedError. With `recover` it is opened as far as it goes; its `notes` tell what is
    missing. With `strict` archives that programs read differently are refused. `progress` is a function that is
    told member, done and total, and ends it by returning False.
    """
    document = _core.Document._open(source, password or "", recover, strict, progress)
    return _made(document, source if isinstance(source, str) or hasattr(source, "__fspath__") else None)


def new(kind="text"):
    """A new document: 'text', 'spreadsheet', 'presentation', 'drawing', 'chart', 'image', 'formula', 'master-text'
    or 'web-text'."""
    return _made(_core.Document._new(kind), None)


def _made(core, path):
    document = Document(core)
    document.path = path
    return document
