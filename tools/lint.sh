#!/usr/bin/env bash
# Runs clang-tidy over the hand-written sources of a configured build folder: tools/lint.sh build/release
set -euo pipefail
cd "$(dirname "$0")/.."
build="${1:-build/release}"
[ -f "$build/compile_commands.json" ] || { echo "lint: $build isn't configured" >&2; exit 2; }
git ls-files 'src/*.cpp' 'cli/*.cpp' 'examples/*.cpp' |
    xargs -P "$(nproc)" -n 4 clang-tidy --quiet --extra-arg=-Wno-unknown-warning-option \
        --extra-arg=-Wno-ignored-optimization-argument -p "$build" 2> >(grep -v 'warnings generated' >&2)
