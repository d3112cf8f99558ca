#!/usr/bin/env python3
"""Makes the Python modules with the classes of the elements, one for each prefix, and their stubs.

Usage: python.py --tables FOLDER --output FOLDER

`text:list-item` is `ListItem` in text.py; its attribute `text:start-value` is the property `start_value`. Where two
attributes of a class would have one name, or a name is Python's or every element's, the prefix comes before it.
"""

import argparse
import collections
import keyword
import pathlib
import sys

import names
from headers import shorten
from model import Model, TableError

# What every element has.
TAKEN = set("add_after add_before append attrib clear clone content detach extend find findall get insert iter next "
            "parent previous remove replace set tag text to_xml".split())
TYPES = {"s": "str", "b": "bool", "B": "bool", "u": "int", "i": "int", "d": "float", "f": "float"}
MADE_FROM = "# Made from the element tables: changes belong there."


def python_class(element):
    name = names.camel(names.local(element.qname))
    return name + "_" if keyword.iskeyword(name) else name


def snake(qname):
    return qname.replace(":", "_").replace("-", "_")


def properties(element):
    """The attributes of an element by the names of their properties."""
    attributes = collections.Counter(attribute.local for attribute in element.attributes)
    listed = collections.Counter(attribute.local for attribute in element.attributes if not attribute.is_added)
    result = {}
    for attribute in element.attributes:
        name = snake(attribute.local)
        own = attribute.prefix == names.prefix(element.qname)
        # What came later leaves the names of the others as they are.
        rivals = attributes if attribute.is_added else listed
        if keyword.iskeyword(name) or name in TAKEN or (rivals[attribute.local] > 1 and not own) or name in result:
            name = snake(attribute.qname)
        if name in result:
            raise TableError(f"{element.qname}: two attributes would be the property '{name}'")
        result[name] = attribute
    return result


def about(element):
    text = element.about.rstrip(".") or "The element"
    parents = f" Child of {shorten(element.parents)}." if element.parents else ""
    return f"{text} (`{element.qname}`).{parents}"


def type_of(attribute, model):
    if not attribute.enumeration:
        return TYPES[attribute.kind]
    keys = model.enumerations[attribute.enumeration].keys
    return "Literal[" + ", ".join(f'"{key}"' for key in keys) + "]"


def module(prefix, elements):
    lines = [MADE_FROM, f'"""The elements `{prefix}:...`."""', "from ._core import define as _define", ""]
    for element in elements:
        table = ", ".join(f'"{name}": "{attribute.qname}"' for name, attribute in properties(element).items())
        lines.append(f'{python_class(element)} = _define(__name__, "{python_class(element)}", "{element.qname}", '
                     f'{about(element)!r}, {{{table}}})')
    return "\n".join(lines) + "\n"


def stub(prefix, elements, model):
    lines = [MADE_FROM, "from typing import Literal", "from ._core import Element", ""]
    for element in elements:
        # Strings in quotes: a property may have the name of a type.
        types = {name: f'"{type_of(attribute, model)} | None"'.replace('"Literal', "'Literal") for name, attribute
                 in properties(element).items()}
        types = {name: text[:-1] + "'" if text.startswith("'") else text for name, text in types.items()}
        lines += [f"class {python_class(element)}(Element):", f'    """{about(element)}"""']
        lines += [f"    {name}: {text}" for name, text in types.items()]
        given = "".join(f", {name}: {text} = ..." for name, text in types.items())
        lines += [f'    def __init__(self, *content: "Element | str"{given}) -> None: ...', ""]
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description="Makes the Python modules with the classes of the elements.")
    parser.add_argument("--tables", required=True, type=pathlib.Path)
    parser.add_argument("--output", required=True, type=pathlib.Path)
    arguments = parser.parse_args()
    try:
        model = Model(arguments.tables)
        by_prefix = collections.defaultdict(list)
        for element in model.elements:
            by_prefix[names.prefix(element.qname)].append(element)
        arguments.output.mkdir(parents=True, exist_ok=True)
        for prefix, elements in by_prefix.items():
            (arguments.output / f"{prefix}.py").write_text(module(prefix, elements), encoding="utf-8")
            (arguments.output / f"{prefix}.pyi").write_text(stub(prefix, elements, model), encoding="utf-8")
    except TableError as error:
        print(error, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
