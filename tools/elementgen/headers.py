"""Writes the public headers: a class with accessors and child operations for each element."""

import textwrap

import names
from model import BASES, HANDWRITTEN

VALUE_TYPES = {"s": "CTulStringW", "b": "bool", "B": "bool", "u": "unsigned", "i": "int", "d": "double", "f": "float"}
TYPE_NAMES = {"s": "text", "b": "bool, written \"1\" or \"0\"", "B": "bool, written \"true\" or \"false\"",
              "u": "unsigned number", "i": "signed number", "d": "number", "f": "number"}
FLAG_NOTES = {"kNonEmpty": "written only when it isn't empty", "kFirstFont": "only the first font of a list is kept",
              "kNonNegative": "a negative number reads as absent",
              "kGiven": "",
              "kTruthy": "everything but an empty text, \"0\" and \"false\" is true"}
MADE_FROM = "// Made from {} by elementgen: changes belong there."


def value_type(attribute):
    return attribute.enumeration or VALUE_TYPES[attribute.kind]


def comment(text, indent=""):
    lines = textwrap.wrap(text, 106 - len(indent), break_long_words=False, break_on_hyphens=False)
    return [f"{indent}/// {line}" for line in lines]


def since_note(since):
    return {"": "", "extended": "an extension of office suites"}.get(since, f"since ODF {since}")


def attribute_note(attribute):
    if attribute.enumeration:
        kind = f"`{attribute.enumeration}`"
    else:
        kind = TYPE_NAMES[attribute.kind]
    notes = [f"`{attribute.qname}`: {kind}"]
    if not attribute.optional:
        notes.append("written always" if "kNonEmpty" not in attribute.flags else "")
    notes += [FLAG_NOTES[flag] for flag in attribute.flags]
    notes.append(since_note(attribute.since))
    return ", ".join(note for note in notes if note) + "."


def element_comment(element):
    about = element.about.rstrip(".")
    head = f"`{element.qname}`" + (f": {about[:1].lower() + about[1:]}" if about else "")
    if element.section:
        head += f" (ODF {element.since if element.since in ('1.3', '1.4') else '1.2'}, section {element.section})"
    elif element.since:
        head += f" ({since_note(element.since)})"
    lines = comment(head + ".")
    if element.base in ("value", "mixed"):
        lines += comment("Its character content is kept as text runs between its children."
                         if element.base == "mixed" else "Its character content is its value.")
    if element.base == "date":
        lines += comment("Its character content is a date and time.")
    if element.in_no_map:
        lines += comment("No class lists it as a child, so in a document it counts as unknown.")
    elif element.parents:
        lines += comment("Child of " + shorten([f"`{parent}`" for parent in element.parents]) + ".")
    return lines


def shorten(items, most=8):
    return ", ".join(items) if len(items) <= most else ", ".join(items[:most]) + f" and {len(items) - most} more"


def optional_getter(attribute, kind, row):
    """The same value by the name alone, for all attributes alike: nothing while it isn't set."""
    name = attribute.accessor
    if attribute.enumeration:  # its body would make a compiler instantiate the optional of each enumeration
        return [f"    std::optional<{kind}> {name}() const;"]
    if attribute.optional:
        return [f"    std::optional<{kind}> {name}() const {{",
                f"        {kind} value{{}};",
                f"        if (Get{name}(value)) return value;",
                "        return {};",
                "    }"]
    return [f"    std::optional<{kind}> {name}() const {{",
            f"        if (HasAttribute(*Descriptor(), {row})) return Get{name}();",
            "        return {};",
            "    }"]


def whole_accessors(attribute, row):
    """Of an attribute that may hold more than its type: all of the value, as a file has it."""
    name = attribute.accessor
    return [f"    std::optional<WholeValue> Whole{name}() const {{ return WholeAttribute({row}); }}",
            f"    void SetWhole{name}(std::string_view value) {{ SetWholeAttribute({row}, value); }}"]


def class_declaration(element):
    name = element.class_name
    lines = element_comment(element)
    lines += [f"class ODFMODEL_API {name} : public {BASES[element.base]} {{", "public:",
              f"    /// Id of the class, which tells its objects apart.",
              f"    static constexpr unsigned kId = 0x{element.id:08X};",
              f"    /// A new object with that id, owned by the caller.",
              f"    static CSDObject* Create(unsigned id = kId);",
              f"    ~{name}() override;"]
    for row, attribute in enumerate(element.attributes):
        kind = value_type(attribute)
        lines += ["", *comment(attribute_note(attribute), "    ")]
        if attribute.optional:
            lines.append(f"    bool Get{attribute.accessor}({kind}& out) const; ///< false, `out` unchanged, if absent")
        else:
            lines.append(f"    {kind} Get{attribute.accessor}() const;")
        lines += optional_getter(attribute, kind, row)
        lines.append(f"    void Set{attribute.accessor}(const {kind}& value);")
        if attribute.qname == "office:value" and attribute.kind == "s":
            lines.append(f"    void Set{attribute.accessor}(double number) "
                         f"{{ Set{attribute.accessor}(SpellNumber(number)); }}")
        if kind == "bool" and "kTruthy" not in attribute.flags:
            lines.append(f"    template<PointerLike T> void Set{attribute.accessor}(const T&) = delete; ///< no text")
        lines.append(f"    bool Unset{attribute.accessor}() noexcept {{ return UnsetAttribute({row}); }}")
        if attribute.is_whole:
            lines += whole_accessors(attribute, row)
        if "kTruthy" in attribute.flags:
            lines.append(f"    void Set{attribute.accessor}(const CTulStringW& text);")
            for pointer in ("unsigned short", "char16_t", "char"):
                lines.append(f"    void Set{attribute.accessor}(const {pointer}* text) "
                             f"{{ Set{attribute.accessor}(CTulStringW(text)); }}")
    if element.children:
        lines += ["", "    /// @name Children", "    /// Each operation appends a new child, owned by this object, and "
                  "returns it.", "    /// @{"]
        for class_name in element.child_classes:
            lines.append(f"    {class_name}* Set{class_name[1:]}();")
        lines.append("    /// @}")
    if element.equality:
        lines += ["", "    /// 1 when both agree in every attribute, else 0. Ids and children don't count.",
                  f"    int operator==(const {name}& other) const;"]
    for operation in element.handwritten:
        lines += ["", *HANDWRITTEN[(name, operation)]]
    lines += ["", "protected:",
              "    const ClassDescriptor* Descriptor() const noexcept override;", "", "private:",
              "    friend class ObjectAccess;",
              f"    explicit {name}(unsigned id);", "};", ""]
    return lines


def family_header(family, model):
    classes = {child.class_name for element in family.elements for child in element.children}
    classes |= {element.class_name for element in family.elements}
    lines = [MADE_FROM.format(family.name + ".toml"), "#pragma once", "",
             "#include <odfmodel/core/value_objects.h>", "#include <odfmodel/elements/enumerations.h>", "",
             "#include <optional>", "#include <string_view>", "", f"/// @file", *comment(family.about), "", "namespace ODF {", ""]
    lines += [f"class {name};" for name in sorted(classes)]
    lines.append("")
    for element in family.elements:
        lines += class_declaration(element)
    lines += ["} // namespace ODF", ""]
    return "\n".join(lines)


def enumerations_header(model):
    lines = [MADE_FROM.format("the element tables"), "#pragma once", "",
             "#include <odfmodel/core/enumeration.h>", "", "/// @file",
             "/// The enumerated attribute values. The key of each, as it is in a file, is its comment; "
             "`KeyOf` and", "/// `ParseKey` go between them.", "", "namespace ODF {", ""]
    for name, enumeration in sorted(model.enumerations.items()):
        users = sorted({attribute.qname for element in model.elements for attribute in element.attributes
                        if attribute.enumeration == name})
        lines += comment("Values of " + shorten([f"`{user}`" for user in users]) + ".")
        lines.append(f"enum class {name} : int {{")
        for value, key in enumerate(enumeration.keys):
            note = since_note(enumeration.since.get(key, ""))
            lines.append(f"    {names.enumerator(key)} = {value}, ///< \"{key}\"" + (f", {note}" if note else ""))
        lines += ["};", f"constexpr std::u16string_view EnumerationName({name}) noexcept {{ return u\"{name}\"; }}", ""]
    lines += ["} // namespace ODF", ""]
    return "\n".join(lines)


def umbrella_header(model):
    lines = [MADE_FROM.format("the element tables"), "#pragma once", "", "/// @file",
             "/// All element classes.", "", "#include <odfmodel/elements/enumerations.h>"]
    lines += [f"#include <odfmodel/elements/{family.name}.h>" for family in model.families if family.elements]
    return "\n".join(lines) + "\n"
