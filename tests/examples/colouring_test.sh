#!/usr/bin/env bash
# Every state has one colour, neighbours have different ones, and three colours are too few.
#   colouring_test.sh PROGRAM DATA_FOLDER
set -euo pipefail
program=$1 map=$2/germany.txt
"$program" "$map" |
  awk 'NR == FNR { if ($1 ~ /^(red|yellow|green|blue)$/)
                     for (i = 2; i <= NF; ++i) { ++coloured; colour[$i] = $1 }
                   else last = $0
                   next }
       { sub("#.*", "") }
       NF > 0 { ++states; if (!($1 in colour)) bad = 1 }
       { for (i = 2; i <= NF; ++i) { ++borders; if (colour[$i] == colour[$1]) bad = 1 } }
       END { told = "borders between equal colours: 0 of " borders "; with three colours at least 1"
             exit bad || states != 16 || coloured != 16 || length(colour) != 16 || last != told }' - "$map"
! "$program" /dev/null 2>/dev/null
