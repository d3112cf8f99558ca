#!/usr/bin/env python3
"""Makes what the fuzzers begin with from real documents: make_seeds.py OUT ELEMENTS FOLDER...

OUT/packages has files, OUT/xml their XML members, OUT/members the same with the byte that fuzz_members starts with, and
OUT/setters a few inputs for a fuzzer that reads numbers. OUT/odf.dict has the names of the tables in ELEMENTS, for engines
that take a dictionary.
"""
import hashlib
import pathlib
import re
import sys
import zipfile

MAX_BYTES = 1 << 15
# The members that fuzz_members replaces, in its order: of a document, and of an Open Packaging file.
DOCUMENT = ["mimetype", "content.xml", "meta.xml", "Object 1/content.xml", "META-INF/manifest.xml"]
PACKAGE = ["[Content_Types].xml", "_rels/.rels", "word/document.xml", "word/_rels/document.xml.rels",
           "word/media/image1.png"]
RELATIONS = """<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/image"
 Target="media/image%201.png"/><Relationship Id="rId2" Target="http://example.org/?a=1&amp;b=[2]#c" TargetMode="External"
 Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/hyperlink"/></Relationships>"""
TYPES = """<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">
<Default Extension="XML" ContentType="application/xml"/><Override PartName="/word/a%20b.xml" ContentType="text/x; a=b"/>
</Types>"""


def keep(folder, data):
    folder.mkdir(parents=True, exist_ok=True)
    (folder / hashlib.sha256(data).hexdigest()[:16]).write_bytes(data)


def first_bytes(place, is_package):
    """One for each way in which fuzz_members takes the member at `place`."""
    for second in (0, 16):
        yield bytes([next(v for v in range(256) if v % 5 == place and v & 24 == (8 if is_package else 0) + second)])


def keep_member(out, name, data):
    for members, is_package in ((DOCUMENT, False), (PACKAGE, True)):
        if name in members:
            for byte in first_bytes(members.index(name), is_package):
                keep(out / "members", byte + data)


def main():
    out, elements, *folders = map(pathlib.Path, sys.argv[1:])
    for file in sorted(path for folder in folders for path in folder.rglob("*") if path.is_file()):
        if file.stat().st_size > 2 * MAX_BYTES or not zipfile.is_zipfile(file):
            continue
        keep(out / "packages", file.read_bytes())
        try:
            with zipfile.ZipFile(file) as archive:
                for info in archive.infolist():
                    if not 0 < info.file_size <= MAX_BYTES:
                        continue
                    data = archive.read(info)
                    if info.filename.endswith(".xml") and data.lstrip()[:1] == b"<":
                        keep(out / "xml", data)
                    keep_member(out, info.filename, data)
        except (zipfile.BadZipFile, RuntimeError, NotImplementedError, OSError, EOFError):
            pass  # a damaged or locked one is an input all the same
    for name, text in (("_rels/.rels", RELATIONS), ("word/_rels/document.xml.rels", RELATIONS),
                       ("[Content_Types].xml", TYPES)):
        keep_member(out, name, text.encode())
    for i in range(8):
        keep(out / "setters", bytes(i * 37 + j * (i + 3) & 0xFF for j in range(32 << i)))
    words = set()
    for table in elements.rglob("*.toml"):
        words.update(re.findall(r"\b[a-z0-9]+:[a-z0-9-]+", table.read_text()))
    (out / "odf.dict").write_text("".join(f'"{word}"\n' for word in sorted(words)))


if __name__ == "__main__":
    main()
