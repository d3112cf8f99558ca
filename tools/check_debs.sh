#!/usr/bin/env bash
# Makes the packages for Debian, checks them with lintian, installs them, tries what they have and removes them again:
# check_debs.sh [BUILD [CMAKE-OPTION...]]. Needs root, since it installs. They stay in BUILD/debs.
set -euo pipefail
cd "$(dirname "$0")/.."
build="${1:-build/deb}"
shift || true
packages=(libodfmodel0 libodfmodel-dev odfmodel python3-odfmodel)
fail() { echo "check_debs: $*" >&2; exit 1; }

[ "$(id -u)" -eq 0 ] || fail "needs root to install packages"
for package in "${packages[@]}"; do
    ! dpkg-query -W "$package" >/dev/null 2>&1 || fail "$package is installed already"
done
tools/install-packages.sh build python deb

cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DPython3_EXECUTABLE=/usr/bin/python3 -DODFMODEL_DEB=ON \
    -DODFMODEL_CLI=ON -DODFMODEL_PYTHON=ON -DODFMODEL_TESTS=OFF -DODFMODEL_EXAMPLES=OFF "$@" >/dev/null
cmake --build "$build"
rm -rf "$build/debs"
(cd "$build" && cpack -G DEB >/dev/null)
debs=("$build"/debs/*.deb)
[ "${#debs[@]}" -eq "${#packages[@]}" ] || fail "there are ${#debs[@]} packages"

echo "== lintian"
# Nobody's own address is known without DEBFULLNAME and DEBEMAIL, and no bug of Debian is closed.
known=initial-upload-closes-no-bugs
[ -n "${DEBEMAIL:-}" ] || known+=,bogus-mail-host,bogus-mail-host-in-debian-changelog,root-in-contact
lintian --allow-root --fail-on error --suppress-tags "$known" "${debs[@]}"

folder="$(mktemp -d)"
trap 'dpkg --purge "${packages[@]}" >/dev/null 2>&1 || true; rm -rf "$folder"' EXIT
echo "== install"
apt-get install -y -qq --no-install-recommends "${debs[@]/#/$PWD/}" >/dev/null
for package in "${packages[@]}"; do
    dpkg-query -W -f '${Package} ${Version}: ${Depends}\n' "$package"
    [ -s "/usr/share/doc/$package/copyright" ] || fail "$package has no copyright"
    gzip -t "/usr/share/doc/$package/changelog.Debian.gz"
    [ -z "$(dpkg --verify "$package")" ] || fail "$package isn't as it was packed"
    dpkg -L "$package"
done >"$folder/list"
grep ': ' "$folder/list"
[ "$(dpkg-query -W -f '${Description}\n' "${packages[@]}" | grep -v '^ ' | sort -u | wc -l)" -eq 4 ] ||
    fail "descriptions are the same"

echo "== use, from outside of the project"
cd "$folder"
version="$(odfmodel --version)"
echo "$version"
man --path odfmodel >/dev/null 2>&1 || [ -f /usr/share/man/man1/odfmodel.1.gz ] || fail "no manual page"
cat >use.py <<'PYTHON'
import odfmodel
from odfmodel.text import P

assert odfmodel.__file__.startswith("/usr/lib/python3/dist-packages/"), odfmodel.__file__
document = odfmodel.new("text")
document.body.append(P("from Python"))
document.save("a.odt")
PYTHON
env -u PYTHONPATH /usr/bin/python3 use.py
cat >use.cpp <<'CPP'
#include <odfmodel/odfmodel.h>
#include <iostream>

int main() {
    ODF::Document document;
    if (const ODF::Result opened = document.Open("a.odt"); !opened) {
        std::cerr << opened.Text() << '\n';
        return 1;
    }
    std::cout << ODF::Text(*document.Text()) << " in C++\n";
}
CPP
g++ -std=c++20 use.cpp $(pkg-config --cflags --libs odfmodel) -o use
[ "$(env -u LD_LIBRARY_PATH ./use)" = "from Python in C++" ] || fail "the consumer says: $(./use)"
cat >CMakeLists.txt <<'CMAKE'
cmake_minimum_required(VERSION 3.25)
project(use LANGUAGES CXX)
find_package(odfmodel REQUIRED)
add_executable(use use.cpp)
target_link_libraries(use PRIVATE odfmodel::odfmodel)
CMAKE
cmake -S . -B by_cmake -G Ninja >/dev/null
cmake --build by_cmake >/dev/null
by_cmake/use

echo "== remove"
dpkg --purge "${packages[@]}" >/dev/null
while read -r path; do
    case "$path" in
        *odfmodel*) [ ! -e "$path" ] || fail "$path is still there" ;;
    esac
done < <(grep '^/' "$folder/list")
! odfmodel --version >/dev/null 2>&1 || fail "the command is still there"
echo "check_debs: all well"
