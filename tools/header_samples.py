#!/usr/bin/env python3
"""Makes a source of the samples at the head of the public headers, to compile them: header_samples.py OUT HEADER..."""
import pathlib
import re
import sys

HEAD = """#include <odfmodel/odfmodel.h>

#include <iostream>
"""


def sample_of(header):
    comment = re.search(r"(?:^///.*\n)+", header.read_text(encoding="utf-8"), re.M)[0]
    lines = [line[8:] for line in comment.splitlines() if line.startswith("///     ")]
    if not lines:
        sys.exit(f"{header} has no sample at its head")
    return "\n".join(f"    {line}" for line in lines)


def main():
    out, headers = pathlib.Path(sys.argv[1]), [pathlib.Path(name) for name in sys.argv[2:]]
    functions = [f"\nint Sample{number}();\nint Sample{number}() {{ // {header.name}\n{sample_of(header)}\n    return 0;\n}}\n"
                 for number, header in enumerate(headers)]
    out.write_text(HEAD + "".join(functions), encoding="utf-8")


if __name__ == "__main__":
    main()
