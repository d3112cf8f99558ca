#!/usr/bin/env bash
# Counts the instructions of ten operations and compares them with those in bench/instructions.tsv:
#   tools/count_instructions.sh BUILD             tells what has grown by more than 3 %, and fails then
#   tools/count_instructions.sh BUILD --update    writes the counts of this build into the file
# Counts repeat to some thousandths for one compiler and C library; the file names those it was made with.
set -euo pipefail
cd "$(dirname "$0")/.."
[ $# -ge 1 ] || { sed -n '2,5s/^# //p' "$0" >&2; exit 2; }
build="$1"
file=bench/instructions.tsv
program="$build/bench/operations/odfmodel_operations"
[ -x "$program" ] || { echo "count_instructions: there is no $program" >&2; exit 2; }
system="$(c++ -dumpfullversion) $(ldd --version | sed -n '1s/.* //p')"
counts="$(mktemp)"
trap 'rm -f "$counts" "$counts.log"' EXIT

for name in $("$program"); do
    valgrind --tool=callgrind --callgrind-out-file=/dev/null --toggle-collect=Measured \
        "$program" "$name" >"$counts.log" 2>&1 || { cat "$counts.log" >&2; exit 1; }
    printf '%s\t%s\n' "$name" "$(sed -n 's/.*Collected : *//p' "$counts.log")" >>"$counts"
done

if [ "${2:-}" = --update ]; then
    { echo "# instructions of an operation, by compiler and C library $system"; cat "$counts"; } >"$file"
    exit
fi
if ! grep -q " $system\$" "$file"; then
    echo "count_instructions: $file was made with another compiler or C library than $system; nothing to compare"
    exit
fi
awk -F'\t' 'NR == FNR { before[$1] = $2; next }
    !($1 in before) { print "count_instructions: " $1 " is new, run with --update"; bad = 1; next }
    { ratio = $2 / before[$1]; printf "%-18s %12d  %.3f\n", $1, $2, ratio }
    ratio > 1.03 { print "count_instructions: " $1 " takes more than 3 % more instructions"; bad = 1 }
    END { exit bad }' "$file" "$counts"
