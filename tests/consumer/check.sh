#!/usr/bin/env bash
# Installs a build into a folder, moves that folder, and builds a program with it in each way: check.sh SOURCE BUILD CXX
set -euo pipefail
source="$1" build="$2" compiler="$3"
here="$(cd "$(dirname "$0")" && pwd)"
folder="$(mktemp -d)"
trap 'rm -rf "$folder"' EXIT
fail() { echo "consumer: $*" >&2; exit 1; }
says() { [ "$("$@")" = "from outside" ] || fail "'$*' says something else"; }

for component in library dev; do
    cmake --install "$build" --prefix "$folder/first" --component "$component" >/dev/null
done
mv "$folder/first" "$folder/moved"
library="$(dirname "$(find "$folder/moved" -name 'libodfmodel.*' | head -1)")"

echo "== find_package"
cmake -S "$here/installed" -B "$folder/found" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
    -DCMAKE_PREFIX_PATH="$folder/moved" >/dev/null
cmake --build "$folder/found" >/dev/null
says "$folder/found/use"
! cmake -S "$here/installed" -B "$folder/wrong" -G Ninja -DCMAKE_PREFIX_PATH="$folder/nowhere" >/dev/null 2>&1 ||
    fail "another library was found"

echo "== pkg-config"
export PKG_CONFIG_PATH="$library/pkgconfig"
"$compiler" -std=c++20 "$here/use.cpp" $(pkg-config --cflags --libs odfmodel) -o "$folder/use"
LD_LIBRARY_PATH="$library" says "$folder/use"
[ "$(pkg-config --modversion odfmodel)" = "$(sed -n 's/^project(odfmodel VERSION \([0-9.]*\).*/\1/p' \
    "$source/CMakeLists.txt")" ] || fail "pkg-config has another version"

echo "== add_subdirectory"
cmake -S "$here/guest" -B "$folder/guest" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DODFMODEL_SOURCE="$source" >/dev/null
cmake --install "$folder/guest" --prefix "$folder/none" >/dev/null 2>&1 || true
[ ! -e "$folder/none" ] || fail "the guest installs $(find "$folder/none" -type f | head -3)"
