#!/usr/bin/env python3
"""Tells which includes of the library go against the order of its layers, or name a source; exits with 1 then."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
# Each layer may include those before it, and itself. Top-level headers, such as export.h, are for all.
ORDER = ["system", "core", "platform", "elements", "serial", "package", "document"]
# Pairs that the order would allow, and that know nothing of one another.
APART = {("elements", "platform"), ("serial", "elements"), ("package", "elements")}


def main():
    faults, seen = [], 0
    for folder in ("src", "include/odfmodel"):
        for path in sorted((ROOT / folder).rglob("*.[hc]*")):
            layer = path.relative_to(ROOT / folder).parts[0]
            if layer not in ORDER:
                continue
            for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
                if re.match(r'#include .*\.cpp[">]', line):
                    faults.append(f"{path.relative_to(ROOT)}:{number}: a source is included")
                found = re.match(r'#include [<"](?:odfmodel/)?(\w+)/', line)
                if not found or found[1] not in ORDER:
                    continue
                seen += 1
                other = found[1]
                if ORDER.index(other) > ORDER.index(layer) or (layer, other) in APART:
                    faults.append(f"{path.relative_to(ROOT)}:{number}: {layer} must not include {other}")
    print("\n".join(faults) or f"{seen} includes follow the order of the layers")
    sys.exit(1 if faults or not seen else 0)


if __name__ == "__main__":
    main()
