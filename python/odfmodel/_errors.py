"""What goes wrong, as exceptions."""
from ._core import Severity, Status


class Error(Exception):
    """A document couldn't be opened or saved as asked.

    `status` tells how it ended, `notes` all that was met on the way; `member`, `line` and `column` tell where the
    first fault is, as far as it has a place.
    """

    def __init__(self, message, status=None, notes=()):
        super().__init__(message)
        self.status = status
        self.notes = list(notes)
        fault = next((note for note in self.notes if note.severity == Severity.Error), None)
        self.member = fault.member if fault and fault.member else None
        self.line = fault.line if fault and fault.line else None
        self.column = fault.column if fault and fault.column else None


class PasswordError(Error):
    """A password is needed, or the wrong one was given."""


class DamagedError(Error):
    """The file is damaged; `open(..., recover=True)` gives what could be read of it."""


class LimitError(Error):
    """The file asks for more than a document may take."""


class Cancelled(Error):
    """The function that was told the progress has ended it."""


class FileError(Error, OSError):
    """The file can't be read or written."""


_CLASSES = {
    Status.PasswordNeeded: PasswordError,
    Status.WrongPassword: PasswordError,
    Status.Damaged: DamagedError,
    Status.NotAnArchive: DamagedError,
    Status.BadIndex: DamagedError,
    Status.NoContent: DamagedError,
    Status.LimitExceeded: LimitError,
    Status.Cancelled: Cancelled,
    Status.NotReadable: FileError,
    Status.CouldNotWrite: FileError,
}


def from_result(status, text, notes, source):
    """The exception for the end of an operation."""
    if status == Status.OutOfMemory:
        return MemoryError(text)
    name = source if isinstance(source, str) or hasattr(source, "__fspath__") else None
    if status == Status.NotReadable and name is not None:
        try:
            with open(name, "rb"):
                pass
        except OSError as error:  # says more: not found, no permission, a folder
            return error
    return _CLASSES.get(status, Error)(f"{name}: {text}" if name is not None else text, status, notes)
