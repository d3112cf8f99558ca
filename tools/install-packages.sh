#!/usr/bin/env bash
# Installs the Debian packages of the named groups of packages.txt that are missing: install-packages.sh build test
set -euo pipefail
list="$(dirname "$0")/../packages.txt"

wanted=()
for group in "$@"; do
    mapfile -t names < <(awk -v group="$group" '!/^#/ && $2 == group { print $1 }' "$list")
    [ "${#names[@]}" -gt 0 ] || { echo "install-packages: packages.txt has no group '$group'" >&2; exit 2; }
    wanted+=("${names[@]}")
done

missing=()
for name in "${wanted[@]}"; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null)" = installed ] || missing+=("$name")
done
if [ "${#missing[@]}" -eq 0 ]; then
    echo "Packages ($*): all installed."
    exit 0
fi

echo "Packages ($*): installing ${missing[*]}"
as_root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "install-packages: needs root or sudo to install ${missing[*]}" >&2; exit 1; }
    as_root=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
