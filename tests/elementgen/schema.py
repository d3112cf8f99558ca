"""Reads a RELAX NG schema of the format: which attributes and children each element may have, and of what values."""

import collections
import dataclasses
import xml.etree.ElementTree as ElementTree

RNG = "{http://relaxng.org/ns/structure/1.0}"


@dataclasses.dataclass
class SchemaAttribute:
    types: set = dataclasses.field(default_factory=set)     # names of datatypes
    values: list = dataclasses.field(default_factory=list)  # fixed words, in the order of the schema
    is_list: bool = False
    needed: bool = True                                     # in every pattern that the element has


@dataclasses.dataclass
class SchemaElement:
    attributes: dict = dataclasses.field(default_factory=dict)
    children: list = dataclasses.field(default_factory=list)
    has_text: bool = False
    is_open: bool = False       # anything may be in it


class Schema:
    """The elements of one schema by their names, each with what all its patterns allow together."""

    def __init__(self, path):
        self.defines = collections.defaultdict(list)
        root = ElementTree.parse(path).getroot()
        for define in root.iter(f"{RNG}define"):
            self.defines[define.get("name")].append(define)
        self.elements = {}
        for element in root.iter(f"{RNG}element"):
            for name in self._names(element):
                self._collect(element, self.elements.setdefault(name, SchemaElement()), set(), False)

    @staticmethod
    def _names(node):
        if node.get("name"):
            return [node.get("name")]
        return [name.text.strip() for name in node if name.tag == f"{RNG}name"] + [
            name.text.strip() for choice in node if choice.tag == f"{RNG}choice"
            for name in choice if name.tag == f"{RNG}name"]

    def _collect(self, node, into, seen, optional):
        for child in node:
            kind = child.tag.removeprefix(RNG)
            if kind == "attribute":
                names = self._names(child)
                for name in names:
                    self._add_attribute(child, name, into, optional)
            elif kind == "element":
                names = self._names(child)
                into.is_open |= not names
                into.children += [name for name in names if name not in into.children]
            elif kind == "ref":
                key = (child.get("name"), optional)
                if key in seen:
                    continue
                seen.add(key)
                for define in self.defines[child.get("name")]:
                    self._collect(define, into, seen, optional)
            elif kind in ("text", "data", "value", "list"):
                into.has_text = True
            elif kind not in ("name", "anyName", "except"):
                self._collect(child, into, seen, optional or kind in ("optional", "choice", "zeroOrMore"))

    def _add_attribute(self, node, name, into, optional):
        attribute = into.attributes.setdefault(name, SchemaAttribute())
        attribute.needed &= not optional
        self._collect_value(node, attribute)
        if not attribute.types and not attribute.values:
            attribute.types.add("string")

    def _collect_value(self, node, attribute):
        for child in node:
            kind = child.tag.removeprefix(RNG)
            if kind == "value":
                word = (child.text or "").strip()
                if word not in attribute.values:
                    attribute.values.append(word)
            elif kind == "data":
                attribute.types.add(child.get("type"))
            elif kind == "text":
                attribute.types.add("string")
            elif kind == "ref":
                self._collect_type(child.get("name"), attribute)
            elif kind == "list":
                attribute.is_list = True
                self._collect_value(child, attribute)
            elif kind not in ("name", "param"):
                self._collect_value(child, attribute)

    def _collect_type(self, name, attribute):
        """A datatype with a name of its own counts by that name, but for those made of fixed words."""
        for define in self.defines[name]:
            kinds = {child.tag.removeprefix(RNG) for child in define.iter()} - {"define"}
            if name == "boolean":
                attribute.types.add(name)
            elif kinds <= {"choice", "value", "ref", "empty", "group", "optional", "list", "data", "param",
                           "oneOrMore", "zeroOrMore"} and "data" not in kinds:
                self._collect_value(define, attribute)
            else:
                attribute.types.add(name)
