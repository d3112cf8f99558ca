"""Writes the sources: constant tables, and the one-line bodies of accessors and child operations."""

import names
from headers import MADE_FROM, value_type
from model import BASES, KINDS


def u16(text):
    return 'u"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def rows(values, indent="    ", width=106):
    """Comma separated values, as many a line as fit."""
    lines, line = [], indent
    for value in values:
        if len(line) + len(str(value)) + 2 > width and line.strip():
            lines.append(line.rstrip())
            line = indent
        line += f"{value}, "
    if line.strip():
        lines.append(line.rstrip())
    return lines


class Pool:
    """Constant arrays with equal content are written once."""

    def __init__(self, lines):
        self.lines = lines
        self.known = {}

    def array(self, kind, name, content):
        if not content:
            return "nullptr"
        key = (kind, tuple(content))
        if key not in self.known:
            self.known[key] = name
            packed = rows(content) if kind.endswith("uint16_t") else [f"    {row}," for row in content]
            self.lines += [f"constexpr {kind} {name}[] = {{", *packed, "};"]
        return self.known[key]


def child_map_name(element):
    return f"kChildrenOf{element.class_name[1:]}"


def child_key(element):
    return tuple((child.qname, child.class_name, child.since, child.is_added) for child in element.children)


def version(since):
    return "FormatVersion::" + {"": "Base", "extended": "Extended"}.get(since, "V" + since.replace(".", "_"))


def attribute_row(attribute, namespaces):
    flags = (["AttributeRow::kOptional"] if attribute.optional else []) + \
        [f"AttributeRow::{flag}" for flag in attribute.flags]
    kind = "Enumeration" if attribute.enumeration else KINDS[attribute.kind]
    enumeration = f"&tables::{attribute.enumeration}" if attribute.enumeration else "nullptr"
    return (f'{{"{attribute.qname}", {u16(attribute.local)}, {enumeration}, {attribute.default}, '
            f'{len(attribute.qname)}, {namespaces[attribute.prefix]}, ValueKind::{kind}, '
            f'{" | ".join(flags) or "0"}, {version(attribute.since)}}}')


def cpp_bool(value):
    return "true" if value else "false"


def required_namespaces(element, namespaces):
    mask = 0
    for attribute in element.attributes:
        if not attribute.optional and "kNonEmpty" not in attribute.flags and attribute.prefix:
            mask |= 1 << namespaces[attribute.prefix]
    return mask


def accessors(element):
    name, table = element.class_name, f"tables::{element.class_name}"
    lines = []
    for row, attribute in enumerate(element.attributes):
        kind = value_type(attribute)
        get, put = f"{name}::Get{attribute.accessor}", f"{name}::Set{attribute.accessor}"
        if attribute.enumeration and attribute.optional:
            lines += [f"bool {get}({kind}& out) const {{",
                      "    int value = static_cast<int>(out);",
                      f"    const bool present = GetAttribute({table}, {row}, value);",
                      f"    out = static_cast<{kind}>(value);",
                      "    return present;", "}"]
            lines += [f"std::optional<{kind}> {name}::{attribute.accessor}() const {{", f"    {kind} value{{}};",
                      f"    if (Get{attribute.accessor}(value)) return value;", "    return {};", "}"]
        elif attribute.enumeration:
            lines += [f"{kind} {get}() const {{", "    int value = 0;",
                      f"    GetAttribute({table}, {row}, value);", f"    return static_cast<{kind}>(value);", "}"]
            lines += [f"std::optional<{kind}> {name}::{attribute.accessor}() const {{",
                      f"    if (HasAttribute({table}, {row})) return {get.split('::')[1]}();", "    return {};", "}"]
        elif attribute.optional:
            lines += [f"bool {get}({kind}& out) const {{", f"    return GetAttribute({table}, {row}, out);", "}"]
        else:
            lines += [f"{kind} {get}() const {{", f"    {kind} value{{}};",
                      f"    GetAttribute({table}, {row}, value);", "    return value;", "}"]
        stored = "static_cast<int>(value)" if attribute.enumeration else "value"
        lines += [f"void {put}(const {kind}& value) {{", f"    SetAttribute({table}, {row}, {stored});", "}"]
        if "kTruthy" in attribute.flags:
            lines += [f"void {put}(const CTulStringW& text) {{",
                      f"    SetAttribute({table}, {row}, ParseTruth(text.view()));", "}"]
    return lines


def class_source(element, pool, maps, namespaces):
    name = element.class_name
    stem = f"k{name[1:]}"
    attributes = element.attributes
    pool.lines += ["", f"// {element.qname}"]
    table = pool.array("AttributeRow", f"{stem}Attributes", [attribute_row(a, namespaces) for a in attributes])
    order = sorted(range(len(attributes)), key=lambda i: (namespaces[attributes[i].prefix], attributes[i].local))
    by_name = pool.array("std::uint16_t", f"{stem}ByName", order)
    write_order = pool.array("std::uint16_t", f"{stem}WriteOrder", element.write_order or [])
    children = f"&tables::{maps[child_key(element)]}" if element.children else "nullptr"

    body = ["", f"// {element.qname}",
            f"const ClassDescriptor tables::{name}{{", f'    "{name}", "{element.qname}", {u16(element.qname)}, '
            f"0x{element.id:08X}, {table},", f"    {by_name}, {write_order}, {children},",
            f"    &ObjectAccess::make<ODF::{name}>, 0x{required_namespaces(element, namespaces):X}U, "
            f"{len(attributes)}, {element.listed_attributes}, {namespaces[names.prefix(element.qname)]}, "
            f"{cpp_bool(all(attribute.optional for attribute in attributes))}, "
            f"{cpp_bool(not element.in_no_map)}, {version(element.since)}}};",
            f"CSDObject* {name}::Create(unsigned id) {{", f"    return ObjectAccess::makeLoose(tables::{name}, id);", "}"]
    made = "{}" if element.base == "date" else "{\n    setFlag(kElement, true);\n}"
    body += [f"{name}::{name}(unsigned id) : {BASES[element.base]}(id) {made}"]
    body += [f"{name}::~{name}() {{", f"    ReleaseAttributes(tables::{name});", "}",
             f"const ClassDescriptor* {name}::Descriptor() const noexcept {{", f"    return &tables::{name};", "}"]
    body += accessors(element)
    for target in element.child_classes:
        body += [f"{target}* {name}::Set{target[1:]}() {{",
                 f"    return static_cast<{target}*>(Adopt({target}::Create({target}::kId)));", "}"]
    if element.equality:
        body += [f"int {name}::operator==(const {name}& other) const {{",
                 f"    return SameAttributes(tables::{name}, *this, other) ? 1 : 0;", "}"]
    return body


def family_source(family, maps, namespaces):
    tables = []
    pool = Pool(tables)
    bodies = []
    for element in family.elements:
        bodies += class_source(element, pool, maps, namespaces)
    lines = [MADE_FROM.format(family.name + ".toml"), '#include "classes.h"', '#include "core/codecs.h"',
             '#include "core/object_access.h"', "",
             "#include <odfmodel/elements/elements.h>", "", "namespace ODF {", "namespace {", *tables, "",
             "} // namespace", *bodies, "", "} // namespace ODF", ""]
    return "\n".join(lines)


def child_maps(model):
    """Name of the map of each distinct list of children; the first class with it gives the name."""
    maps = {}
    for element in model.elements:
        if element.children:
            maps.setdefault(child_key(element), child_map_name(element))
    return maps


def classes_header(model, maps):
    lines = [MADE_FROM.format("the element tables"), "#pragma once", "", '#include "core/class_descriptor.h"', "",
             "// The constant tables of all classes, enumerations and distinct lists of children.",
             "namespace ODF::tables {", ""]
    lines += [f"extern const EnumerationTable {name};" for name in sorted(model.enumerations)]
    lines += [f"extern const ChildMap {name};" for name in maps.values()]
    lines += [f"extern const ClassDescriptor {element.class_name};" for element in model.elements]
    lines += ["", "} // namespace ODF::tables", ""]
    return "\n".join(lines)


def registry_source(model, maps, namespaces):
    lines = [MADE_FROM.format("the element tables"), '#include "classes.h"', "",
             "#include <odfmodel/elements/elements.h>", "", "#include <array>", "", "namespace ODF {", "namespace {"]
    pool = Pool(lines)
    tail = []
    for name, enumeration in sorted(model.enumerations.items()):
        keys = enumeration.keys
        stem = f"k{name[3:]}"
        pool.array("const char16_t* const", f"{stem}Keys", [u16(key) for key in keys])
        by_key = pool.array("std::uint16_t", f"{stem}ByKey", sorted(range(len(keys)), key=lambda i: keys[i]))
        added = pool.array("FormatVersion", f"{stem}Added", [version(enumeration.since[key]) for key in
                                                             keys[enumeration.listed:]])
        shared = pool.known[("const char16_t* const", tuple(u16(key) for key in keys))]
        tail.append(f"const EnumerationTable tables::{name}{{{u16(name)}, {shared}, {by_key}, {len(keys)}, "
                    f"{enumeration.listed}, {added}}};")
    ids = {element.class_name: element.id for element in model.elements}
    for key, name in maps.items():
        stem = name.removeprefix("k")
        table = pool.array("ChildRow", f"kRowsOf{stem}", [
            f'{{0x{ids[class_name]:08X}, {u16(qname)}, "{qname}", &tables::{class_name}, '
            f"{namespaces[names.prefix(qname)]}, {version(since)}}}" for qname, class_name, since, _ in key])
        by_name = pool.array("std::uint16_t", f"kNamesOf{stem}", sorted(range(len(key)), key=lambda i: key[i][0]))
        by_id = pool.array("std::uint16_t", f"kIdsOf{stem}", sorted(range(len(key)), key=lambda i: (ids[key[i][1]], i)))
        listed = sum(not row[3] for row in key)
        tail.append(f"const ChildMap tables::{name}{{{table}, {by_name}, {by_id}, {len(key)}, {listed}}};")
    by_id = sorted(model.elements, key=lambda element: element.id)
    by_name = {}
    for element in by_id:
        by_name.setdefault(element.qname, element.class_name)
    lines += [f"constexpr std::array<const EnumerationTable*, {len(model.enumerations)}> kEnumerations{{",
              *rows(f"&tables::{name}" for name in sorted(model.enumerations)), "};",
              f"constexpr std::array<const ClassDescriptor*, {len(by_id)}> kClasses{{",
              *rows(f"&tables::{element.class_name}" for element in by_id), "};",
              f"constexpr std::array<const ClassDescriptor*, {len(by_name)}> kClassesByName{{",
              *rows(f"&tables::{by_name[qname]}" for qname in sorted(by_name)), "};",
              "", "} // namespace", "", *tail, "",
              "std::span<const EnumerationTable* const> Enumerations() noexcept {", "    return kEnumerations;", "}",
              "std::span<const ClassDescriptor* const> Classes() noexcept {", "    return kClasses;", "}",
              "std::span<const ClassDescriptor* const> ClassesByName() noexcept {", "    return kClassesByName;", "}", "",
              "} // namespace ODF", ""]
    return "\n".join(lines)
