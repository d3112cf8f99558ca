"""Tests of the generator of the element classes: its output for a small set of tables, and tables that are broken.

`elementgen_test.py --update` writes the expected output anew.
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent
TOOL = HERE.parents[1] / "tools/elementgen"
GOLDEN = HERE / "golden"
SCHEMAS = HERE.parents[2] / "shared/schema"
# The marks of what a reader of that version knows.
KNOWN_TO = {"1.2": ("", "1.2"), "1.3": ("", "1.2", "1.3"), "1.4": ("", "1.2", "1.3", "1.4")}

sys.dont_write_bytecode = True
sys.path[:0] = [str(TOOL), str(HERE)]
import names  # noqa: E402
from model import Model, TableError  # noqa: E402
from schema import Schema  # noqa: E402


def run(tables, output, *options):
    return subprocess.run(
        [sys.executable, str(TOOL / "elementgen.py"), "--tables", str(tables), "--output", str(output),
         "--namespaces", str(HERE / "tables/namespaces.cpp"), *options], capture_output=True, text=True, check=False)


def files_below(folder):
    return {path.relative_to(folder).as_posix(): path.read_text(encoding="utf-8")
            for path in sorted(folder.rglob("*")) if path.is_file()}


class Golden(unittest.TestCase):
    def test_output_is_as_expected(self):
        with tempfile.TemporaryDirectory() as output:
            result = run(HERE / "tables", output, "--complete")
            self.assertEqual((result.returncode, result.stderr), (0, ""))
            made = {f"{name}.txt": text for name, text in files_below(pathlib.Path(output)).items()}
        self.maxDiff = None
        expected = files_below(GOLDEN)
        self.assertEqual(list(made), list(expected))
        for name, text in expected.items():
            self.assertEqual(made[name], text, name)

    def test_what_stays_the_same_is_left_alone(self):
        with tempfile.TemporaryDirectory() as folder:
            output = pathlib.Path(folder)
            run(HERE / "tables", output)
            stale = output / "include/odfmodel/elements/text/tiny.h"
            stale.write_text("old", encoding="utf-8")
            before = {path: path.stat().st_mtime_ns for path in output.rglob("*") if path.is_file()}
            run(HERE / "tables", output)
            changed = [path for path, time in before.items() if path.stat().st_mtime_ns != time]
            self.assertEqual(changed, [stale])
            self.assertNotEqual(stale.read_text(encoding="utf-8"), "old")


class Names(unittest.TestCase):
    def test_follow_the_rules(self):
        for qname, expected in {"text:style-name": "TextStyleName", "anim:animateColor": "AnimAnimateColor",
                                "smil:targetElement": "SmilTargetElement", "frame-count": "FrameCount",
                                "svg:font-face-src": "SvgFontFaceSrc", "dr3d:vrp": "Dr3dVrp"}.items():
            self.assertEqual(names.camel(qname), expected)
            self.assertEqual(names.class_name(qname), "C" + expected)
        for key, expected in {"top-left": "TopLeft", "position size": "PositionSize", "0": "Value0", "3d": "Value3d",
                              "vertical_title": "VerticalTitle", "skewX": "SkewX"}.items():
            self.assertEqual(names.enumerator(key), expected)
        self.assertEqual((names.prefix("text:p"), names.local("text:p")), ("text", "p"))
        self.assertEqual((names.prefix("plain"), names.local("plain")), ("", "plain"))


def element(name="text:p", number=0x80000163, more=""):
    return f'[[element]]\nname = "{name}"\nid = 0x{number:08X}\n{more}\n'


def attributes(*rows):
    return element(more="attributes = [\n" + "".join(f'    "{row}",\n' for row in rows) + "]")


def extension(more, table=None):
    return (table or element()) + f'[[extension]]\nname = "text:p"\n{more}\n'


ENUMERATION = '[enumerations]\nST_A = ["a", "b"]\n'

# What is wrong, the table, the line and a part of what is told. The first line of an element is its [[element]].
BROKEN = [
    ("no TOML", 'about = "x"\nb =\n', 2, ""),
    ("unknown key of the file", 'about = "x"\nother = 1\n', 2, "unknown key 'other'"),
    ("unknown key of an element", element(more="colour = 1"), 4, "unknown key 'colour'"),
    ("no name", element() + "[[element]]\nid = 0x80000164\n", 5, "without a name"),
    ("no id", '[[element]]\nname = "text:p"\n', 2, "has no id"),
    ("id that is no number", '[[element]]\nname = "text:p"\nid = "5"\n', 2, "has no id"),
    ("id below its range", element(number=0x80000162), 3, "outside its range"),
    ("id above its range", element(number=0x80000216), 3, "outside its range"),
    ("id of no element", element(number=0x163), 3, "outside its range"),
    ("id twice", element() + element("text:h"), 7, "belongs to 'text:p' already"),
    ("class twice", element() + element(number=0x80000164), 6, "class CTextP is defined twice"),
    ("unknown prefix", element("foo:p"), 2, "unknown prefix"),
    ("unknown base", element(more='base = "other"'), 4, "unknown base 'other'"),
    ("date with attributes", element(more='base = "date"\nattributes = ["text:a s"]'), 2, "can't have attributes"),
    ("enumeration without keys", "[enumerations]\nST_A = []\n", 2, "has no keys"),
    ("key twice", '[enumerations]\nST_A = ["a", "a"]\n', 2, "a key twice"),
    ("keys of one C++ name", '[enumerations]\nST_A = ["a-b", "a b"]\n', 2, "one C++ name"),
    ("key with markup", '[enumerations]\nST_A = ["a<b"]\n', 2, "isn't plain ASCII"),
    ("empty key", '[enumerations]\nST_A = [""]\n', 2, "isn't plain ASCII"),
    ("attribute without type", attributes("text:a s", "text:b"), 6, "has no type"),
    ("unknown type", attributes("text:a s", "text:b x"), 6, "unknown type 'x'"),
    ("unknown enumeration", attributes("text:a s", "text:b ST_None"), 6, "unknown enumeration 'ST_None'"),
    ("unknown flag", attributes("text:a s", "text:b s huge"), 6, "unknown flag 'huge'"),
    ("unknown attribute prefix", attributes("text:a s", "foo:b s"), 6, "unknown prefix"),
    ("attribute twice", attributes("text:a s", "text:b s", "text:a u"), 5, "collide"),
    ("accessors collide", attributes("text:a s", "text:b s accessor=TextA"), 6, "collide"),
    ("default that is no key", ENUMERATION + attributes("text:b ST_A default=c"), 7, "is no key of 'ST_A'"),
    ("default that is no number", attributes("text:b u default=x"), 5, "default"),
    ("default of an optional one", attributes("text:b u? default=1"), 5, "unknown flag"),
    ("default of a text", attributes("text:b s default=1"), 5, "default"),
    ("nonempty of a number", attributes("text:b u nonempty"), 5, "nonempty"),
    ("nonempty of an optional one", attributes("text:b s? nonempty"), 5, "nonempty"),
    ("firstfont of a bool", attributes("text:b b? firstfont"), 5, "firstfont"),
    ("nonnegative of a required one", attributes("text:b u nonnegative"), 5, "nonnegative"),
    ("truthy of a text", attributes("text:b s? truthy"), 5, "truthy"),
    ("unknown attribute group", attributes("text:a s", "@none"), 6, "unknown group 'none'"),
    ("unknown child group", element(more='children = ["@none"]'), 4, "unknown group 'none'"),
    ("group that holds itself", '[child_groups]\na = ["@b"]\nb = ["@a"]\n' + element(more='children = ["@a"]'), 7,
     "holds itself"),
    ("child twice", element(more='children = [\n"text:h",\n"text:h"]'), 5, "collide"),
    ("child name twice", element(more='children = [\n"text:h",\n"text:h=CTextP"]'), 5, "collide"),
    ("child of an unknown prefix", element(more='children = ["foo:p=CTextP"]'), 4, "unknown prefix"),
    ("child that may stand in no map", element(more="in_no_map = true") + element("text:h", 0x80000164, 'children = ["text:p"]'), 8,
     "may stand in no map"),
    ("writing order of no attribute", element(more='attributes = ["text:a s"]\nwrite_order = ["text:b"]'), 5,
     "no attribute"),
    ("writing order twice", element(more='attributes = ["text:a s"]\nwrite_order = ["text:a", "text:a"]'), 5, "twice"),
    ("writing before no attribute", element(more='attributes = ["text:a s"]\nwrite_before = [["text:a", "text:c"]]'), 5,
     "no attribute"),
    ("unknown version", element(more='since = "2.0"'), 3, "outside its range"),
    ("unknown version of a later one", element(number=0x80000300, more='since = "2.0"'), 4, "unknown version '2.0'"),
    ("later element in the range of another", element(more='since = "1.3"'), 3, "outside its range"),
    ("element in the later range", element(number=0x80000300), 3, "outside its range"),
    ("unknown key of an extension", extension("colour = 1"), 7, "unknown key 'colour'"),
    ("extension of nothing", '[[extension]]\nname = "text:p"\n', 2, "has no table"),
    ("added attribute without a version", extension('attributes = ["text:a s?"]'), 7, "has no version"),
    ("added attribute that isn't optional", extension('attributes = ["text:a s since=1.2"]'), 7, "not optional"),
    ("added attribute that is there", extension('attributes = ["text:a s? since=1.2"]', attributes("text:a s")), 9,
     "collide"),
    ("added child without a version", extension('children = ["text:h"]'), 7, "has no version"),
    ("added child of an unknown version", extension('children = ["text:h since=9"]'), 7, "unknown version '9'"),
    ("extension of a date", extension('children = ["text:p since=1.2"]', element(more='base = "date"')), 6, "is a date"),
    ("later attribute that isn't there", extension('later = ["text:a since=1.3"]'), 7, "no 'text:a' of its own"),
    ("later attribute without a version", extension('later = ["text:a"]', attributes("text:a s")), 9, "unknown version ''"),
    ("unknown version of an extension", extension('since = "1.5"'), 7, "unknown version '1.5'"),
    ("whole value of a text", extension('whole = ["text:a"]', attributes("text:a s")), 9, "no narrow type"),
    ("whole value of nothing", extension('whole = ["text:a"]'), 7, "no narrow type"),
    ("added key of nothing", '[added_keys]\nST_A = ["c since=1.2"]\n', 2, "unknown enumeration 'ST_A'"),
    ("added key without a version", ENUMERATION + '[added_keys]\nST_A = ["c"]\n', 2, "has no version"),
    ("added key that is there", ENUMERATION + '[added_keys]\nST_A = ["b since=1.2"]\n', 2, "a key twice"),
    ("unknown operation by hand", element(more='handwritten = ["Split"]'), 4, "Split"),
]


class Broken(unittest.TestCase):
    def test_tables_fail_at_their_line(self):
        for what, text, line, told in BROKEN:
            with self.subTest(what), tempfile.TemporaryDirectory() as folder:
                table = pathlib.Path(folder) / "tables/broken.toml"
                table.parent.mkdir()
                table.write_text(text, encoding="utf-8")
                with self.assertRaises(TableError) as caught:
                    Model(table.parent)
                self.assertTrue(str(caught.exception).startswith(f"{table}:{line}: "), caught.exception)
                self.assertIn(told, str(caught.exception))

    def test_a_fault_ends_the_program_with_its_text_and_nothing_written(self):
        with tempfile.TemporaryDirectory() as folder:
            table = pathlib.Path(folder) / "tables/broken.toml"
            table.parent.mkdir()
            table.write_text(ENUMERATION + "other = 1\n", encoding="utf-8")
            output = pathlib.Path(folder) / "output"
            result = run(table.parent, output)
            self.assertEqual(result.returncode, 1)
            self.assertEqual(result.stderr, f"{table}:3: enumeration 'other' has no keys\n")
            self.assertFalse(output.exists())

    def test_names_defined_in_two_files(self):
        for first, second in ((ENUMERATION, ENUMERATION), ("[child_groups]\ng = []\n", "[child_groups]\ng = []\n"),
                              ("[attribute_groups]\ng = []\n", "\n[attribute_groups]\ng = []\n")):
            with self.subTest(first), tempfile.TemporaryDirectory() as folder:
                (pathlib.Path(folder) / "a.toml").write_text(first, encoding="utf-8")
                (pathlib.Path(folder) / "b.toml").write_text(second, encoding="utf-8")
                result = run(folder, pathlib.Path(folder) / "output")
                self.assertEqual(result.returncode, 1)
                self.assertIn("is defined twice", result.stderr)
                self.assertIn(f"b.toml:{second.count(chr(10))}:", result.stderr)

    def test_a_child_without_a_table_is_pending(self):
        with tempfile.TemporaryDirectory() as folder:
            tables = pathlib.Path(folder) / "tables"
            tables.mkdir()
            (tables / "a.toml").write_text(element(more='children = ["text:h", "text:p"]'), encoding="utf-8")
            output = pathlib.Path(folder) / "output"
            result = run(tables, output, "--complete")
            self.assertEqual(result.returncode, 1)
            self.assertIn("pending: text:h (child of CTextP)", result.stderr)
            self.assertFalse(output.exists())
            result = run(tables, output)
            self.assertEqual(result.returncode, 0)
            header = (output / "include/odfmodel/elements/a.h").read_text(encoding="utf-8")
            self.assertIn("SetTextP()", header)
            self.assertNotIn("SetTextH()", header)


# Attributes that an older version has and a later one no longer.
BEYOND = {"chart:plot-area": {"table:cell-range-address"}}
# What the schemas have and the tables don't, with the reason.
LEFT_OUT = {}
# Their content is of other vocabularies.
ELSEWHERE = ("math:",)


@unittest.skipUnless(SCHEMAS.is_dir(), "the schemas aren't here")
class Schemas(unittest.TestCase):
    def test_the_tables_have_what_each_version_has(self):
        elements = {element.qname: element for element in Model(TOOL.parents[1] / "src/elements").elements}
        for version in ("1.2", "1.3", "1.4"):
            schema = Schema(SCHEMAS / f"odf{version}.rng")
            self.assertGreater(len(schema.elements), 590)
            for name, wanted in schema.elements.items():
                if name.startswith(ELSEWHERE) or name in LEFT_OUT:
                    continue
                with self.subTest(f"{name} of {version}"):
                    element = elements[name]
                    for what, rows, words in (("attribute", element.attributes, wanted.attributes),
                                              ("child", element.children, wanted.children)):
                        have = {row.qname: row for row in rows}
                        self.assertEqual([word for word in words if word not in have], [], what)
                        late = [row for word in words if (row := have[word]).since not in KNOWN_TO[version]]
                        self.assertEqual([row.qname for row in late], [], f"{what} said to be later")
                        known = {row.qname for row in rows if row.since in KNOWN_TO[version]}
                        if what == "attribute" and element.since in KNOWN_TO[version]:
                            self.assertEqual(known - set(words) - BEYOND.get(name, set()), set(), "said to be there")

    def test_enumerations_have_the_words_of_each_version(self):
        model = Model(TOOL.parents[1] / "src/elements")
        elements = {element.qname: element for element in model.elements}
        checked = 0
        for version in ("1.2", "1.3", "1.4"):
            for name, wanted in Schema(SCHEMAS / f"odf{version}.rng").elements.items():
                rows = {row.qname: row for row in elements[name].attributes} if name in elements else {}
                for word, attribute in wanted.attributes.items():
                    row = rows.get(word)
                    if not row or not row.enumeration:
                        continue
                    checked += 1
                    with self.subTest(f"{name}@{word} of {version}"):
                        keys = model.enumerations[row.enumeration]
                        self.assertEqual([v for v in attribute.values if v not in keys.keys], [])
                        self.assertEqual([v for v in attribute.values
                                          if keys.since.get(v, "") not in KNOWN_TO[version]], [])
                        self.assertTrue(row.is_whole or not (attribute.types or attribute.is_list))
        self.assertGreater(checked, 1000)


def update():
    with tempfile.TemporaryDirectory() as output:
        result = run(HERE / "tables", output, "--complete")
        if result.returncode != 0:
            sys.exit(result.stderr)
        for name, text in files_below(pathlib.Path(output)).items():
            path = GOLDEN / f"{name}.txt"
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")


if __name__ == "__main__":
    if "--update" in sys.argv:
        update()
    else:
        unittest.main()
