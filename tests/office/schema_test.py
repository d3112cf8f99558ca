"""What the library writes is valid: new documents of every kind, and what the programs of the guide wrote.

Usage: schema_test.py COMMAND SCHEMAS FOLDER

COMMAND is odfmodel, SCHEMAS the folder with the RELAX NG schemas, FOLDER the one in which the programs wrote. Ends with 77
where the schemas or the validator aren't there.
"""

import collections
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import zipfile

# What the programs made from nothing; what they made of other programs' files has the extensions of those.
WRITTEN = ("letter.odt", "letters.odt", "mono.odt", "pictures.odt", "tree_operations.odt", "slides.odp", "chart.ods",
           "workbook.ods", "formulas.ods")
KINDS = ("text", "spreadsheet", "presentation", "drawing", "chart", "image", "master", "formula")
MEMBERS = re.compile(r"(?:.*/)?(?:content|styles|meta|settings)\.xml")


def members_by_version(documents, folder):
    """Unpacks the members with a version into `folder`; formulas are of another vocabulary."""
    result = collections.defaultdict(list)
    for document in documents:
        with zipfile.ZipFile(document) as package:
            for name in package.namelist():
                text = package.read(name) if MEMBERS.fullmatch(name) else b""
                version = re.search(rb'office:version="([0-9.]+)"', text)
                if version:
                    path = folder / f"{document.name}.{name.replace('/', '.')}"
                    path.write_bytes(text)
                    result[version.group(1).decode()].append(path)
    return result


def main():
    command, schemas, written = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
    if not schemas.is_dir() or not shutil.which("jing"):
        print("the schemas or jing aren't here")
        return 77
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        documents = [written / name for name in WRITTEN]
        for kind in KINDS:
            documents.append(folder / f"new {kind}")
            subprocess.run([command, "new", "--kind", kind, str(documents[-1])], check=True)
        sorted_members = members_by_version(documents, folder)
        failed = False
        for version, members in sorted(sorted_members.items()):
            # Without -i the schema itself is refused: it has IDs where any attribute may be.
            judged = subprocess.run(["jing", "-i", str(schemas / f"odf{version}.rng"), *map(str, members)],
                                    stdout=subprocess.PIPE, text=True, check=False)
            print(f"{len(members)} members of version {version}: " + ("valid" if judged.returncode == 0 else "INVALID"))
            print(judged.stdout.replace(name, ""), end="")
            failed |= judged.returncode != 0
        count = sum(map(len, sorted_members.values()))
        if count < 4 * (len(KINDS) - 1 + len(WRITTEN)):
            print(f"only {count} members were found")
            failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
