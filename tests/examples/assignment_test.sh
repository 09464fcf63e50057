#!/usr/bin/env bash
# The model's energy of every layout is its cost (the program ends with an error if one is not), and
# the best of them is no surprise: an instance that is its own mirror image has a known optimum.
# usage: assignment_test.sh PROGRAM DATA_FOLDER
set -euo pipefail
program=$1 data=$2

out=$("$program" "$data/campus.txt")
grep -qx "7 offices: 49 variables, [0-9]* quadratic terms, 14 constraints" <<<"$out"
grep -qx "best of 5040 layouts: [0-9]* minutes a day" <<<"$out"
[ "$(grep -c '^office ' <<<"$out")" -eq 7 ]

# Offices in a row that visit their neighbours only, buildings in a row of another order: the best
# layout restores the row, at 1 minute for each of the 2 * 3 visits.
line=$(mktemp)
trap 'rm -f "$line"' EXIT
cat >"$line" <<'TEXT'
4
0 1 0 0  1 0 1 0  0 1 0 1  0 0 1 0
0 2 1 3  2 0 1 1  1 1 0 2  3 1 2 0
TEXT
"$program" "$line" | grep -qx "best of 24 layouts: 6 minutes a day"

! "$program" /dev/null 2>/dev/null
