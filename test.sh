#!/usr/bin/env bash
# Installs what is missing, builds and runs every test.
#   ./test.sh [PRESET]     PRESET: release (default), debug, asan, tsan
# WERROR=ON makes warnings errors.
set -euo pipefail
cd "$(dirname "$0")"
preset="${1:-release}"

tools/install-packages.sh build test python
echo "Configuring and building (preset $preset) ..."
# Debian's Python, which those packages are for.
cmake --preset "$preset" -DODFMODEL_TESTS=ON -DODFMODEL_PYTHON=ON -DPython3_EXECUTABLE=/usr/bin/python3 \
    -DODFMODEL_WERROR="${WERROR:-OFF}" >"/tmp/odfmodel-configure-$$.log" 2>&1 ||
    { cat "/tmp/odfmodel-configure-$$.log" >&2; exit 1; }
rm -f "/tmp/odfmodel-configure-$$.log"
cmake --build --preset "$preset"
echo "Running the tests (preset $preset) ..."
ctest --preset "$preset" -j "$(nproc)"
