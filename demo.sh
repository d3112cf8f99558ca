#!/usr/bin/env bash
# Installs what is missing, builds, and shows the library at work on a document: ./demo.sh [FILE.odt]
# The result is written beside a copy of the document in build/demo; FILE itself stays as it is.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
file="$(realpath -e "${1:-$here/examples/sample.odt}")"
cd "$here"

tools/install-packages.sh build
echo "Building (preset release) ..."
mkdir -p build/demo
cmake --preset release -DODFMODEL_TESTS=OFF >build/demo/configure.log 2>&1 || { cat build/demo/configure.log >&2; exit 1; }
cmake --build --preset release --target odfmodel_cli odfmodel_tour

result="build/demo/changed-$(basename "$file")"
echo
echo "== odfmodel info $(basename "$file")"
build/release/cli/odfmodel info "$file"
echo
echo "== examples/tour: open, look, change, save, open again"
build/release/examples/tour "$file" "$result"
echo
echo "== odfmodel text $result (the last lines)"
build/release/cli/odfmodel text "$result" | tail -n 3
