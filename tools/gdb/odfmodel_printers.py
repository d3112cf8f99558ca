"""How gdb shows strings and elements. Load it with `source tools/gdb/odfmodel_printers.py`.

Nothing is called in the program, so that a core file shows the same.
"""
import gdb
import gdb.printing


class StringPrinter:
    """A CTulStringW, as the string that it is."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        units = self.value["units_"].cast(gdb.lookup_type("char16_t").pointer())
        return units.string("utf-16", "replace")

    def display_hint(self):
        return "string"


class ElementPrinter:
    """An element object, by its class, and its children by theirs."""

    MOST = 20

    def __init__(self, value):
        self.value = value.cast(value.dynamic_type)

    def to_string(self):
        kind = self.value.type
        if not any(field.name == "children_" for base in bases(kind) for field in base.fields()):
            return kind.name
        vector = self.value["children_"]["_M_impl"]
        start = vector["_M_start"]
        count = int(vector["_M_finish"] - start)
        names = [(start + index).dereference().dynamic_type.target().name for index in range(min(count, self.MOST))]
        return f"{kind.name} {{{', '.join(names)}{', ...' if count > self.MOST else ''}}}"


def bases(kind):
    """The class and those that it derives from."""
    yield kind
    for field in kind.fields():
        if field.is_base_class:
            yield from bases(field.type)


class Printers(gdb.printing.PrettyPrinter):
    def __call__(self, value):
        kind = value.type.strip_typedefs().unqualified()
        if kind.code != gdb.TYPE_CODE_STRUCT:
            return None
        if kind.name == "CTulStringW":
            return StringPrinter(value)
        if any(base.name == "CSDObject" for base in bases(kind)):
            return ElementPrinter(value)
        return None


gdb.printing.register_pretty_printer(gdb.current_objfile(), Printers("odfmodel"), replace=True)
