"""Holds the programs in the guide's pages against those in examples/, which the tests compile and run.

A page has a program after "The whole of `examples/NAME.cpp`". `guide_test.py --update` puts the programs into the pages.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
BLOCK = re.compile(r"(The\s+whole\s+of\s+`examples/(\w+)\.cpp`.*?```cpp\n)(.*?)(```\n)", re.DOTALL)


def program(name):
    """The program without the comment in front, which its page says in other words."""
    lines = (ROOT / f"examples/{name}.cpp").read_text(encoding="utf-8").splitlines(keepends=True)
    while lines and lines[0].startswith("//"):
        lines.pop(0)
    return "".join(lines)


def main():
    update = "--update" in sys.argv
    faults, shown = [], set()
    for page in sorted((ROOT / "docs/guide").glob("*.md")):
        text = page.read_text(encoding="utf-8")
        for head, name, code, _ in BLOCK.findall(text):
            shown.add(name)
            if code != program(name):
                faults.append(f"{page.name} has another {name}.cpp than examples/")
        for link in re.findall(r"\]\((\w+\.md)\)", text):
            if not (page.parent / link).exists():
                faults.append(f"{page.name} leads to {link}, which isn't there")
        if update:
            page.write_text(BLOCK.sub(lambda m: m[1] + program(m[2]) + m[4], text), encoding="utf-8")
    run = (ROOT / "tests/examples/CMakeLists.txt").read_text(encoding="utf-8")
    tested = set(re.findall(r"^run_example\((\w+)", run, re.MULTILINE))
    faults += [f"{name}.cpp is in the guide and isn't run by the tests" for name in sorted(shown - tested)]
    if len(shown) < 10:
        faults.append(f"only {len(shown)} programs were found in the guide")
    print("\n".join(faults))
    return 1 if faults and not update else 0


if __name__ == "__main__":
    sys.exit(main())
