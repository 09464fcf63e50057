#!/usr/bin/env bash
# The right half keeps what is given on the left, which is the file, and holds each digit once in
# every row, column and box.
#   sudoku_test.sh PROGRAM DATA_FOLDER
set -euo pipefail
program=$1 sudoku=$2/sudoku.txt
out=$("$program" "$sudoku")
grep -qx "0 clashes" <<<"$out"
only_fields() { sed -e 's/#.*//' -e 's/[^1-9.]//g' -e '/^$/d'; }
fields=$(grep ' | ' <<<"$out" | only_fields)
diff <(cut -c1-9 <<<"$fields") <(only_fields <"$sudoku")
awk '{ for (c = 1; c <= 9; ++c) {
         given = substr($0, c, 1); digit = substr($0, 9 + c, 1)
         if (digit !~ /[1-9]/ || (given != "." && given != digit)) bad = 1
         box = int((NR - 1) / 3) * 3 + int((c - 1) / 3)
         if (row[NR, digit]++ || column[c, digit]++ || boxes[box, digit]++) bad = 1 } }
     END { exit bad || NR != 9 }' <<<"$fields"
! "$program" /dev/null 2>/dev/null
