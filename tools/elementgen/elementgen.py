#!/usr/bin/env python3
"""Makes the element classes from their tables.

Usage: elementgen.py --tables FOLDER --output FOLDER [--namespaces FILE] [--complete]

Reads every *.toml below the tables folder and writes, below the output folder, a public header and a source for each
family, the enumerations, and the tables that all classes share. Files whose content stays the same are left alone, so
that only what changed is compiled again. A fault in a table ends it with file and line.
"""

import argparse
import pathlib
import re
import sys

import headers
import sources
from model import Model, TableError


def namespace_positions(path):
    """Prefix to position, from the core's own table of namespaces, so that there is one list only."""
    rows = re.findall(r'^\s+ODF_ROW\("([a-z0-9]*)"', pathlib.Path(path).read_text(encoding="utf-8"), re.MULTILINE)
    return {prefix: position for position, prefix in enumerate(rows)}


def write(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    if not path.exists() or path.read_text(encoding="utf-8") != text:
        path.write_text(text, encoding="utf-8")


def generate(model, namespaces, output):
    maps = sources.child_maps(model)
    include = output / "include/odfmodel/elements"
    source = output / "src"
    write(include / "enumerations.h", headers.enumerations_header(model))
    write(include / "elements.h", headers.umbrella_header(model))
    write(source / "classes.h", sources.classes_header(model, maps))
    write(source / "registry.cpp", sources.registry_source(model, maps, namespaces))
    for family in model.families:
        if family.elements:
            write(include / f"{family.name}.h", headers.family_header(family, model))
            write(source / f"{family.name}.cpp", sources.family_source(family, maps, namespaces))


def main():
    parser = argparse.ArgumentParser(description="Makes the element classes from their tables.")
    parser.add_argument("--tables", required=True, type=pathlib.Path)
    parser.add_argument("--output", required=True, type=pathlib.Path)
    parser.add_argument("--namespaces", type=pathlib.Path,
                        default=pathlib.Path(__file__).resolve().parents[2] / "src/core/namespaces.cpp")
    parser.add_argument("--complete", action="store_true", help="fail while a child has no class")
    arguments = parser.parse_args()
    try:
        model = Model(arguments.tables)
    except TableError as error:
        print(error, file=sys.stderr)
        return 1
    for qname, classes in sorted(model.pending.items()):
        print(f"pending: {qname} (child of {', '.join(classes)}) has no table yet", file=sys.stderr)
    if model.pending and arguments.complete:
        return 1
    generate(model, namespace_positions(arguments.namespaces), arguments.output)
    return 0


if __name__ == "__main__":
    sys.exit(main())
