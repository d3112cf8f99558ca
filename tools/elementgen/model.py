"""Loads the element tables and checks them; the first fault stops with file and line."""

import dataclasses
import pathlib
import re
import tomllib

import names

# First and last id of each group of elements, by prefix; later additions stand at the end of all.
ID_RANGES = {
    "anim": (0x001, 0x00C), "chart": (0x00D, 0x021), "config": (0x022, 0x026), "dc": (0x027, 0x02C),
    "dr3d": (0x02D, 0x032), "draw": (0x033, 0x05E), "form": (0x05F, 0x07C), "meta": (0x07D, 0x08A),
    "number": (0x08B, 0x0A4), "office": (0x0A5, 0x0BE), "presentation": (0x0BF, 0x0D2), "script": (0x0D3, 0x0D3),
    "style": (0x0D4, 0x0FA), "svg": (0x0FB, 0x104), "table": (0x105, 0x162), "text": (0x163, 0x215),
    "xforms": (0x216, 0x216), "math": (0x217, 0x2CB),
}
LATER_IDS = (0x2CD, 0x2D0)
# Ids of the elements that later versions of the format and office suites brought.
ADDED_IDS = (0x300, 0x3FF)
ID_BASE = 0x80000000

KINDS = {"s": "String", "b": "Bool", "B": "BoolWord", "u": "Unsigned", "i": "Signed", "d": "Double", "f": "Float"}
BASES = {None: "CSDExtObject", "value": "CSDStringValueObject", "mixed": "CSDMixedContentObject",
         "date": "CSDDateTimeValueObject", "named": "CSDNamedObject"}
PREFIXES = set(ID_RANGES) | {"fo", "smil", "xlink", "tableooo", "officeooo", "db", "xml", "xhtml", "grddl", "loext",
                             "calcext", "drawooo", "field"}
ELEMENT_KEYS = {"name", "id", "base", "class", "about", "section", "attributes", "children", "write_order",
                "write_before", "in_no_map", "equality", "handwritten", "since"}
EXTENSION_KEYS = {"name", "attributes", "children", "whole", "since", "later"}
FAMILY_KEYS = {"about", "child_groups", "attribute_groups", "enumerations", "element", "extension", "added_keys"}
# The version of the format that brought something; "extended" is what office suites added on their own.
VERSIONS = ("1.2", "1.3", "1.4", "extended")
WORD_FLAGS = {"nonempty": "kNonEmpty", "firstfont": "kFirstFont", "nonnegative": "kNonNegative", "truthy": "kTruthy"}
# The kinds that a flag is for, and whether the attribute must be optional; None where that's all the same.
FLAG_USES = {"nonempty": ("s", False), "firstfont": ("s", None), "nonnegative": ("uid", True), "truthy": ("bB", None)}
DEFAULT_KINDS = "buiB"
# Declarations of operations that stand by hand beside their table.
HANDWRITTEN = {
    ("CTextA", "Merge"): [
        "    /// Takes over each attribute that this link lacks and `other` has; value and children stay.",
        "    void Merge(const CTextA& other);",
    ],
}


class TableError(Exception):
    """A fault in a table, told as `file:line: what`."""


@dataclasses.dataclass
class Attribute:
    qname: str
    kind: str               # key of KINDS, or "enumeration"
    enumeration: str | None
    optional: bool
    accessor: str
    default: int = 0
    flags: tuple = ()
    since: str = ""
    is_added: bool = False  # by an extension: unknown to a tree that holds what the classes list
    is_whole: bool = False  # the format allows more than the type holds, so there is an accessor for the words

    @property
    def local(self):
        return names.local(self.qname)

    @property
    def prefix(self):
        return names.prefix(self.qname)


@dataclasses.dataclass
class Child:
    qname: str
    class_name: str
    since: str = ""
    is_added: bool = False


@dataclasses.dataclass
class Enumeration:
    family: "Family"
    keys: list
    since: dict = dataclasses.field(default_factory=dict)   # of the keys that were added

    @property
    def listed(self):
        return len(self.keys) - len(self.since)


@dataclasses.dataclass
class Element:
    family: "Family"
    qname: str
    id: int
    class_name: str
    base: str | None
    about: str
    section: str
    line: int
    attributes: list
    children: list
    write_order: list | None
    in_no_map: bool
    equality: bool
    handwritten: list
    since: str = ""
    parents: list = dataclasses.field(default_factory=list)

    @property
    def listed_attributes(self):
        return sum(not attribute.is_added for attribute in self.attributes)

    @property
    def child_classes(self):
        """Each once: a class may be there under two names."""
        return list(dict.fromkeys(child.class_name for child in self.children))


@dataclasses.dataclass
class Family:
    name: str               # "text/paragraph"
    path: pathlib.Path
    text: str
    data: dict
    elements: list = dataclasses.field(default_factory=list)

    @property
    def about(self):
        return self.data.get("about", "")

    def line_of(self, needle, after=1):
        """Line of the first quoted or bare `needle` at or behind line `after`; `after` itself when there is none."""
        pattern = re.compile(r'(?<![\w:-])' + re.escape(needle) + r'(?![\w:-])')
        for number, line in enumerate(self.text.splitlines(), 1):
            if number >= after and pattern.search(line):
                return number
        return after

    def fail(self, what, needle="", after=1):
        raise TableError(f"{self.path}:{self.line_of(needle, after) if needle else after}: {what}")


class Model:
    """All families, their elements by class name, enumerations and what children are still without a table."""

    def __init__(self, folder):
        self.families = []
        self.child_groups = {}
        self.attribute_groups = {}
        self.enumerations = {}      # by their type names
        self.elements = []
        self.by_class = {}
        self.pending = {}           # qualified name -> classes that list it
        for path in sorted(pathlib.Path(folder).rglob("*.toml")):
            self._load(path, path.relative_to(folder).with_suffix("").as_posix())
        for family in self.families:
            self._add_keys(family)
        for family in self.families:
            self._read_elements(family)
        for family in self.families:
            self._read_extensions(family)
        self._link()

    def _load(self, path, name):
        text = path.read_text(encoding="utf-8")
        try:
            data = tomllib.loads(text)
        except tomllib.TOMLDecodeError as error:
            line = re.search(r"line (\d+)", str(error))
            raise TableError(f"{path}:{line.group(1) if line else 1}: {error}") from error
        family = Family(name, path, text, data)
        for key in data:
            if key not in FAMILY_KEYS:
                family.fail(f"unknown key '{key}'", key)
        for groups, target in (("child_groups", self.child_groups), ("attribute_groups", self.attribute_groups)):
            for group, rows in data.get(groups, {}).items():
                if group in target:
                    family.fail(f"group '{group}' is defined twice", group)
                target[group] = rows
        for enumeration, keys in data.get("enumerations", {}).items():
            self._add_enumeration(family, enumeration, keys)
        self.families.append(family)

    def _add_enumeration(self, family, enumeration, keys):
        if enumeration in self.enumerations:
            family.fail(f"enumeration '{enumeration}' is defined twice", enumeration)
        if not keys or not isinstance(keys, list):
            family.fail(f"enumeration '{enumeration}' has no keys", enumeration)
        self._check_keys(family, enumeration, keys)
        self.enumerations[enumeration] = Enumeration(family, keys)

    @staticmethod
    def _check_keys(family, enumeration, keys):
        if len(set(keys)) != len(keys):
            family.fail(f"enumeration '{enumeration}' has a key twice", enumeration)
        if len({names.enumerator(key) for key in keys}) != len(keys):
            family.fail(f"enumeration '{enumeration}' has keys of one C++ name", enumeration)
        for key in keys:
            # Keys are compared and written unit by unit, without escaping.
            if not re.fullmatch(r"[ !#-%'-;=?-~]+", key):
                family.fail(f"key '{key}' of '{enumeration}' isn't plain ASCII", enumeration)

    def _add_keys(self, family):
        """Keys that came to an enumeration later: after its own, each with the version that brought it."""
        for name, added in family.data.get("added_keys", {}).items():
            if name not in self.enumerations:
                family.fail(f"unknown enumeration '{name}'", name)
            enumeration = self.enumerations[name]
            for row in added:
                key, _, since = row.rpartition(" since=")
                if since not in VERSIONS:
                    family.fail(f"key '{row}' of '{name}' has no version", name)
                enumeration.keys = enumeration.keys + [key]
                enumeration.since[key] = since
            self._check_keys(family, name, enumeration.keys)

    def _expand(self, family, rows, groups, line, trail=()):
        for row in rows:
            if not row.startswith("@"):
                yield row
                continue
            group = row[1:]
            if group not in groups:
                family.fail(f"unknown group '{group}'", group, line)
            if group in trail:
                family.fail(f"group '{group}' holds itself", group, line)
            yield from self._expand(family, groups[group], groups, line, trail + (group,))

    def _read_elements(self, family):
        line = 1
        for entry in family.data.get("element", []):
            qname = entry.get("name")
            if not qname:
                family.fail("an element without a name", "[[element]]", line)
            line = family.line_of(f'name = "{qname}"', line)
            element = self._read_element(family, entry, qname, line)
            if element.class_name in self.by_class:
                family.fail(f"class {element.class_name} is defined twice", "", line)
            self.by_class[element.class_name] = element
            self.elements.append(element)
            family.elements.append(element)
            line += 1

    def _read_element(self, family, entry, qname, line):
        for key in entry:
            if key not in ELEMENT_KEYS:
                family.fail(f"unknown key '{key}' of '{qname}'", key, line)
        if names.prefix(qname) not in PREFIXES:
            family.fail(f"'{qname}' has an unknown prefix", "", line)
        if entry.get("base") not in BASES:
            family.fail(f"unknown base '{entry['base']}' of '{qname}'", "base", line)
        identifier = entry.get("id")
        self._check_id(family, qname, identifier, "since" in entry, line)
        since = self._version(family, entry["since"], qname, line) if "since" in entry else ""
        attributes, children = self._read_rows(family, entry, qname, line)
        for row in (*attributes, *children):
            row.since = row.since or since
        if entry.get("base") == "date" and (attributes or children):
            family.fail(f"'{qname}' is a date and can't have attributes or children", "", line)
        self._check_members(family, qname, attributes, children, line)
        class_name = entry.get("class", names.class_name(qname))
        for operation in entry.get("handwritten", []):
            if (class_name, operation) not in HANDWRITTEN:
                family.fail(f"nothing is known of '{operation}' of '{qname}'", operation, line)
        return Element(
            family=family, qname=qname, id=identifier, class_name=class_name,
            base=entry.get("base"), about=entry.get("about", ""), section=entry.get("section", ""), line=line,
            attributes=attributes, children=children,
            write_order=self._write_order(family, entry, attributes, line),
            in_no_map=entry.get("in_no_map", False), equality=entry.get("equality", False),
            handwritten=entry.get("handwritten", []), since=since)

    @staticmethod
    def _version(family, since, qname, line, needle="since"):
        if since not in VERSIONS:
            family.fail(f"unknown version '{since}' of '{qname}'", needle, line)
        return since

    def _read_rows(self, family, entry, qname, line):
        return ([self._read_attribute(family, qname, row, line)
                 for row in self._expand(family, entry.get("attributes", []), self.attribute_groups, line)],
                [self._read_child(family, qname, row, line)
                 for row in self._expand(family, entry.get("children", []), self.child_groups, line)])

    def _read_extensions(self, family):
        """What later versions and office suites added to the elements of other tables, after their own rows.

        An extension also tells where an element, or one of its own attributes, came later than the rest (`since`,
        `later`): that is listed all the same.
        """
        by_name = {element.qname: element for element in self.elements}
        line = 1
        for entry in family.data.get("extension", []):
            qname = entry.get("name", "")
            line = family.line_of(f'name = "{qname}"', family.line_of("[[extension]]", line))
            for key in entry:
                if key not in EXTENSION_KEYS:
                    family.fail(f"unknown key '{key}' of '{qname}'", key, line)
            if qname not in by_name:
                family.fail(f"an extension of '{qname}', which has no table", "", line)
            self._extend(family, by_name[qname], entry, line)
            line += 1

    def _extend(self, family, element, entry, line):
        attributes, children = self._read_rows(family, entry, element.qname, line)
        for row in (*attributes, *children):
            if not row.since:
                family.fail(f"'{row.qname}' of '{element.qname}' has no version", row.qname, line)
            row.is_added = True
        for attribute in attributes:
            if not attribute.optional:
                family.fail(f"'{attribute.qname}' of '{element.qname}' is added, but not optional", attribute.qname, line)
        if element.base == "date" and (attributes or children):
            family.fail(f"'{element.qname}' is a date and can't have attributes or children", "", line)
        if element.write_order is not None:
            element.write_order += range(len(element.attributes), len(element.attributes) + len(attributes))
        element.attributes += attributes
        element.children += children
        self._check_members(family, element.qname, element.attributes, element.children, line)
        by_name = {attribute.qname: attribute for attribute in element.attributes}
        if "since" in entry:
            element.since = self._version(family, entry["since"], element.qname, line)
        for row in entry.get("later", []):
            qname, _, since = row.partition(" since=")
            if qname not in by_name or by_name[qname].is_added:
                family.fail(f"'{element.qname}' has no '{qname}' of its own", qname, line)
            by_name[qname].since = self._version(family, since, qname, line, qname)
        for qname in entry.get("whole", []):
            if qname not in by_name or by_name[qname].kind == "s":
                family.fail(f"'{qname}' of '{element.qname}' has no narrow type", qname, line)
            by_name[qname].is_whole = True

    def _check_id(self, family, qname, identifier, is_added, line):
        if not isinstance(identifier, int):
            family.fail(f"'{qname}' has no id", "", line)
        serial = identifier - ID_BASE
        first, last = ADDED_IDS if is_added else ID_RANGES.get(names.prefix(qname), (1, 0))
        if not (first <= serial <= last or (not is_added and LATER_IDS[0] <= serial <= LATER_IDS[1])):
            family.fail(f"id 0x{identifier:08X} of '{qname}' is outside its range", "id", line)
        for other in self.elements:
            if other.id == identifier:
                family.fail(f"id 0x{identifier:08X} of '{qname}' belongs to '{other.qname}' already", "id", line)

    def _read_attribute(self, family, owner, row, line):
        words = row.split()
        if len(words) < 2:
            family.fail(f"attribute row '{row}' of '{owner}' has no type", words[0] if words else "", line)
        qname, code, *flags = words
        if ":" in qname and names.prefix(qname) not in PREFIXES:
            family.fail(f"attribute '{qname}' of '{owner}' has an unknown prefix", qname, line)
        optional = code.endswith("?")
        code = code.rstrip("?")
        enumeration = None
        if code.startswith("ST_"):
            if code not in self.enumerations:
                family.fail(f"unknown enumeration '{code}' on '{qname}' of '{owner}'", code, line)
            enumeration = code
        elif code not in KINDS:
            family.fail(f"unknown type '{code}' on '{qname}' of '{owner}'", qname, line)
        attribute = Attribute(qname, "enumeration" if enumeration else code, enumeration, optional,
                              names.camel(qname))
        for flag in flags:
            self._apply_flag(family, owner, attribute, flag, line)
        return attribute

    def _apply_flag(self, family, owner, attribute, flag, line):
        key, _, value = flag.partition("=")
        if key == "accessor" and value:
            attribute.accessor = value
        elif key == "since" and value in VERSIONS:
            attribute.since = value
        elif key == "default" and value and not attribute.optional:
            attribute.flags += ("kGiven",)
            if attribute.enumeration:
                keys = self.enumerations[attribute.enumeration].keys
                if value not in keys:
                    family.fail(f"'{value}' is no key of '{attribute.enumeration}'", attribute.qname, line)
                attribute.default = keys.index(value)
            elif attribute.kind in DEFAULT_KINDS and re.fullmatch(r"-?[0-9]+", value):
                attribute.default = int(value)
            else:
                family.fail(f"'{flag}' is no default for '{attribute.qname}' of '{owner}'", attribute.qname, line)
        elif flag in WORD_FLAGS:
            kinds, optional = FLAG_USES[flag]
            if attribute.kind not in kinds or optional not in (None, attribute.optional):
                family.fail(f"'{flag}' doesn't fit '{attribute.qname}' of '{owner}'", attribute.qname, line)
            attribute.flags += (WORD_FLAGS[flag],)
        else:
            family.fail(f"unknown flag '{flag}' on '{attribute.qname}' of '{owner}'", attribute.qname, line)

    @staticmethod
    def _read_child(family, owner, row, line):
        row, _, since = row.partition(" since=")
        if since and since not in VERSIONS:
            family.fail(f"unknown version '{since}' of '{row}' of '{owner}'", row, line)
        qname, _, class_name = row.partition("=")
        if names.prefix(qname) not in PREFIXES:
            family.fail(f"child '{qname}' of '{owner}' has an unknown prefix", qname, line)
        return Child(qname, class_name or names.class_name(qname), since)

    @staticmethod
    def _check_members(family, qname, attributes, children, line):
        # A setter takes an argument and a child operation takes none, so only likes may not share a name.
        for kind, members in (("attributes", [(a.accessor, a.qname) for a in attributes]),
                              ("children", [(c.class_name, c.qname) for c in children if not c.is_added]),
                              ("children", [(c.qname, c.qname) for c in children])):
            seen = {}
            for member, origin in members:
                if member in seen:
                    family.fail(f"{kind} '{seen[member]}' and '{origin}' of '{qname}' collide", origin, line)
                seen[member] = origin

    @staticmethod
    def _write_order(family, entry, attributes, line):
        if "write_order" not in entry and "write_before" not in entry:
            return None
        position = {attribute.qname: index for index, attribute in enumerate(attributes)}
        for name in [*entry.get("write_order", []), *sum(entry.get("write_before", []), [])]:
            if name not in position:
                family.fail(f"writing order names '{name}', which is no attribute", name, line)
        order = [position[name] for name in entry.get("write_order", [])]
        if len(set(order)) != len(order):
            family.fail("writing order names an attribute twice", "write_order", line)
        order += [index for index in range(len(attributes)) if index not in order]
        for first, second in entry.get("write_before", []):
            order.remove(position[first])
            order.insert(order.index(position[second]), position[first])
        return order

    def _link(self):
        for element in self.elements:
            known = []
            for child in element.children:
                target = self.by_class.get(child.class_name)
                if target is None:
                    self.pending.setdefault(child.qname, []).append(element.class_name)
                    continue
                if target.in_no_map:
                    element.family.fail(f"'{element.qname}' lists '{child.qname}', which may stand in no map",
                                        child.qname, element.line)
                known.append(child)
                if element.qname not in target.parents:
                    target.parents.append(element.qname)
            element.children = known
