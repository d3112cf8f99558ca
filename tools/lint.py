#!/usr/bin/env python3
"""Runs clang-tidy over the hand-written sources of a configured build folder: tools/lint.py build/release [FILE...]

Nearly all of its time would go into the same headers, file after file. So the files of a folder are read as one, but
for the analyzer, which follows only the paths of a main file: that has each file to itself, behind precompiled headers.
LINT_NODES=225000 lets it look as far as it does by itself. Exits with 1 when there is a finding.
"""
import concurrent.futures
import itertools
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
# What the analyzer tries in one function: enough for nearly all, and half the time of a bound four times as high.
NODES = os.environ.get("LINT_NODES", "20000")
FILES_AT_ONCE = 20
CHECKERS = "core,cplusplus,deadcode,nullability,optin.cplusplus,optin.portability,security,unix,valist"
HEADERS = ["algorithm", "array", "filesystem", "functional", "map", "memory", "optional", "string", "string_view",
           "vector", "odfmodel/odfmodel.h"]


def flags_of(build):
    """Folder of `src`, or "cli" and the like, to the flags of its files, as clang understands them."""
    flags = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        # A file that is compiled together with others has no entry of its own, so what counts is the target.
        target = re.search(r" -o (src|cli|examples)/CMakeFiles/odfmodel_(\w+)\.dir/", entry["command"])
        if not target:
            continue
        words = [word for word in shlex.split(entry["command"])[1:] if word != "-Winvalid-pch"]
        kept = []
        while words:  # without a precompiled header, and without what is compiled into what
            word = words.pop(0)
            if word in ("-include", "-x", "-o", "-c"):
                words.pop(0)
            else:
                kept.append(word)
        flags[layer_of(f"{target[1]}/{target[2]}/")] = kept
    return flags


def layer_of(path):
    parts = path.split("/")
    return "/".join(parts[: 2 if parts[0] == "src" else 1])


def run(command):
    """What is found; empty for nothing."""
    quiet = ["-Wno-unknown-warning-option", "-Wno-ignored-optimization-argument"]
    done = subprocess.run(command + quiet, cwd=ROOT, capture_output=True, text=True)
    if done.returncode == 0:
        return ""
    noise = (" warnings generated.", " warning generated.")
    lines = [line for line in done.stderr.splitlines() if not line.endswith(noise)]
    return done.stdout + "\n".join(lines) + "\n"


def tidy(path, flags):
    return run(["clang-tidy", "--quiet", f"--config-file={ROOT}/.clang-tidy", str(path), "--"] + flags)


def check_together(files, unit, flags):
    # Examples have a main function each, which needs no return.
    head = '#pragma clang diagnostic ignored "-Wreturn-type"\n'
    unit.write_text(head + "".join(f'#define main Main{number}\n#include "{ROOT / file}"\n#undef main\n'
                                   for number, file in enumerate(files)))
    found = tidy(unit, flags)
    if not found:
        return ""
    # One by one, so that a name which two of the files have for themselves is no finding. That takes minutes.
    print(f"lint: reading the files of {unit.stem} one by one, since together they give:\n{found}", file=sys.stderr,
          flush=True)
    return "".join(tidy(file, flags) for file in files)


def precompile(folder, layer, flags):
    """The headers of a layer, as clang's options to include them; what is wrong with them shows without, too."""
    header = folder / f"{layer.replace('/', '_')}.h"
    header.write_text("".join(f"#include <{name}>\n" for name in HEADERS))
    found = run(["clang++", "-x", "c++-header", "-c", str(header), "-o", f"{header}.pch"] + flags)
    return [] if found else ["-include-pch", f"{header}.pch"]


def analyze(file, headers, flags):
    command = ["clang++", "--analyze", "--analyzer-output", "text"]
    for word in ("-analyzer-werror", f"-analyzer-checker={CHECKERS}", "-analyzer-config", f"max-nodes={NODES}"):
        command += ["-Xclang", word]
    return run(command + headers.result() + flags + [file])


def main():
    build = (ROOT / (sys.argv[1] if len(sys.argv) > 1 else "build/release")).resolve()
    if not (build / "compile_commands.json").is_file():
        sys.exit(f"lint: {build} isn't configured")
    flags = flags_of(build)
    patterns = sys.argv[2:] or ["src/*.cpp", "cli/*.cpp", "examples/*.cpp"]
    listed = subprocess.run(["git", "ls-files"] + patterns, cwd=ROOT, check=True, capture_output=True,
                            text=True).stdout.split()
    # The longest first, so that no processor ends up with one of them alone.
    by_size = sorted(listed, key=lambda file: (ROOT / file).stat().st_size, reverse=True)
    findings = []
    with tempfile.TemporaryDirectory() as work, concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        work = pathlib.Path(work)
        headers = {layer: pool.submit(precompile, work, layer, flags[layer]) for layer in set(map(layer_of, listed))}
        jobs = []
        for layer, group in itertools.groupby(sorted(listed, key=layer_of), key=layer_of):
            group = list(group)
            for start in range(0, len(group), FILES_AT_ONCE):
                unit = work / f"{layer.replace('/', '_')}_{start}.cpp"
                jobs.append(pool.submit(check_together, group[start:start + FILES_AT_ONCE], unit, flags[layer]))
        jobs += [pool.submit(analyze, file, headers[layer_of(file)], flags[layer_of(file)]) for file in by_size]
        for job in jobs:
            if job.result():
                print(job.result(), end="", flush=True)
                findings.append(job)
    sys.exit(1 if findings else 0)


if __name__ == "__main__":
    main()
