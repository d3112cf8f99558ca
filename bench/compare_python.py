#!/usr/bin/python3
"""Measures the Python package next to python3-odf on the same files in one run: time, and memory beyond what the imports
take, each in a fresh process, in an order that changes. Prints a table of medians.

    PYTHONPATH=build/release/python bench/compare_python.py [--size 1] [--repeat 3]

All that do the same task have to come to the same result, or there are no figures.
"""
import argparse
import datetime
import json
import pathlib
import random
import statistics
import subprocess
import sys
import tempfile
import time
import zipfile

NAMESPACES = "".join(f' xmlns:{name}="urn:oasis:names:tc:opendocument:xmlns:{name}:1.0"'
                     for name in ("office", "text", "table", "style"))
WORDS = "alpha beta gamma delta epsilon zeta eta theta iota kappa lambda mu".split()


def write(path, kind, body):
    """A document of one member, as any program could have made it."""
    media_type = f"application/vnd.oasis.opendocument.{kind}"
    content = (f'<?xml version="1.0" encoding="UTF-8"?>\n<office:document-content{NAMESPACES} office:version="1.2">'
               f"<office:body><office:{kind}>{body}</office:{kind}></office:body></office:document-content>")
    manifest = ('<manifest:manifest xmlns:manifest="urn:oasis:names:tc:opendocument:xmlns:manifest:1.0">'
                f'<manifest:file-entry manifest:full-path="/" manifest:media-type="{media_type}"/>'
                '<manifest:file-entry manifest:full-path="content.xml" manifest:media-type="text/xml"/>'
                "</manifest:manifest>")
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as archive:
        archive.writestr("mimetype", media_type, zipfile.ZIP_STORED)
        archive.writestr("content.xml", content)
        archive.writestr("META-INF/manifest.xml", manifest)
    return len(content)


def make_text(path, paragraphs):
    chance = random.Random(1)

    def phrase():
        return " ".join(chance.choices(WORDS, k=chance.randint(4, 12)))

    return write(path, "text", "".join(
        f'<text:p text:style-name="P{number % 20}">{phrase()}<text:span text:style-name="T1">{phrase()}</text:span>'
        f"{phrase()}</text:p>" for number in range(paragraphs)))


def make_sheet(path, rows):
    chance = random.Random(2)
    day = datetime.date(2000, 1, 1)

    def text(value):
        return f'<table:table-cell office:value-type="string"><text:p>{value}</text:p></table:table-cell>'

    def number(value):
        return (f'<table:table-cell office:value-type="float" office:value="{value}"><text:p>{value}</text:p>'
                "</table:table-cell>")

    def date(value):
        return (f'<table:table-cell office:value-type="date" office:date-value="{value}"><text:p>{value}</text:p>'
                "</table:table-cell>")

    def row(cells):
        return f"<table:table-row>{''.join(cells)}</table:table-row>"

    names = row(text(f"column {number}") for number in range(8))
    return write(path, "spreadsheet", f'<table:table table:name="Data">{names}' + "".join(
        row([number(index), number(chance.randint(-10**6, 10**6) / 8), number(chance.randint(-10**6, 10**6) / 8),
             number(chance.randint(0, 99)), text(chance.choice(WORDS)), text(" ".join(chance.choices(WORDS, k=3))),
             date(day + datetime.timedelta(days=chance.randint(0, 9999))), text(f"row {index}")])
        for index in range(rows)) + "</table:table>")


def result_of(frame):
    return [list(frame.shape), [str(name) for name in frame.columns], float(frame["column 1"].sum()),
            float(frame["column 3"].sum()), str(frame["column 6"].max()), "|".join(frame["column 5"].iloc[-5:])]


# What is imported, before the clock starts; the task; what of its result has to be the same.
TASKS = {
    "open a text": {
        "odfmodel": ("import odfmodel", "odfmodel.open(path)", "sum(1 for _ in result.iter('text:p'))"),
        "python3-odf": ("import odf.opendocument, odf.text", "odf.opendocument.load(path)",
                        "len(result.getElementsByType(odf.text.P))"),
    },
    "open a text, all its text": {
        "odfmodel": ("import odfmodel; from odfmodel.text import P",
                     "[p.text for p in odfmodel.open(path).iter(P)]", "[len(result), sum(map(len, result))]"),
        "python3-odf": ("import odf.opendocument, odf.text, odf.teletype",
                        "[odf.teletype.extractText(p) for p in odf.opendocument.load(path).getElementsByType(odf.text.P)]",
                        "[len(result), sum(map(len, result))]"),
    },
    "open a sheet": {
        "odfmodel": ("import odfmodel", "odfmodel.open(path)", "sum(1 for _ in result.iter('table:table-cell'))"),
        "python3-odf": ("import odf.opendocument, odf.table", "odf.opendocument.load(path)",
                        "len(result.getElementsByType(odf.table.TableCell))"),
    },
    "a data frame from a sheet": {
        "odfmodel": ("import odfmodel, pandas", "odfmodel.open(path).sheets[0].to_pandas()", "result_of(result)"),
        "odfmodel, by read_excel": ("import odfmodel, pandas; odfmodel.register_pandas_engine()",
                                    "pandas.read_excel(path, engine='odfmodel')", "result_of(result)"),
        "python3-odf": ("import pandas, odf.opendocument", "pandas.read_excel(path, engine='odf')", "result_of(result)"),
    },
}


def kilobytes(what):
    """Of this process alone; the system's usage counts start with those of the process that has started it."""
    for line in open("/proc/self/status"):
        if line.startswith(what + ":"):
            return int(line.split()[1])
    raise KeyError(what)


def measure(task, program, path):
    imports, work, check = TASKS[task][program]
    names = {"path": path, "result_of": result_of}
    exec(imports, names)
    before = kilobytes("VmRSS")
    start = time.perf_counter()
    names["result"] = eval(work, names)
    seconds = time.perf_counter() - start
    memory = kilobytes("VmHWM") - before
    return {"seconds": seconds, "megabytes": memory / 1024, "result": eval(check, names)}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--size", type=float, default=1, help="scales the documents")
    parser.add_argument("--repeat", type=int, default=3)
    parser.add_argument("--measure", nargs=3, help=argparse.SUPPRESS)
    options = parser.parse_args()
    if options.measure:
        print(json.dumps(measure(*options.measure)))
        return
    with tempfile.TemporaryDirectory() as folder:
        text, sheet = str(pathlib.Path(folder, "large.odt")), str(pathlib.Path(folder, "large.ods"))
        paragraphs, rows = int(50_000 * options.size), int(25_000 * options.size)
        print(f"text: {paragraphs:,} paragraphs, {make_text(text, paragraphs) / 1e6:.1f} MB of XML; "
              f"sheet: {8 * (rows + 1):,} cells, {make_sheet(sheet, rows) / 1e6:.1f} MB\n")
        runs = [(task, program) for task in TASKS for program in TASKS[task]] * options.repeat
        random.shuffle(runs)
        results = {}
        for task, program in runs:
            command = [sys.executable, __file__, "--measure", task, program, text if "text" in task else sheet]
            output = subprocess.run(command, check=True, capture_output=True, text=True).stdout
            results.setdefault(task, {}).setdefault(program, []).append(json.loads(output))
    print("| task | with | seconds | MB | time against python3-odf | memory |\n|---|---|---|---|---|---|")
    for task in TASKS:
        found = {json.dumps(run["result"]) for all_of in results[task].values() for run in all_of}
        if len(found) != 1:
            sys.exit(f"compare_python: {task}: the results differ: {found}")
        medians = {program: [statistics.median(run[what] for run in all_of) for what in ("seconds", "megabytes")]
                   for program, all_of in results[task].items()}
        peer = medians["python3-odf"]
        for program in TASKS[task]:
            seconds, megabytes = medians[program]
            ratios = "| |" if program == "python3-odf" else f"{seconds / peer[0]:.3f} | {megabytes / peer[1]:.2f} |"
            print(f"| {task} | {program} | {seconds:.2f} | {megabytes:.0f} | {ratios}")


if __name__ == "__main__":
    main()
