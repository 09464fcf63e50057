#!/usr/bin/env bash
# What is packed keeps within all limits, comes to the totals that are printed, and is worth as much
# as dynamic programming finds.
#   knapsack_test.sh PROGRAM DATA_FOLDER
set -euo pipefail
program=$1 hut=$2/hut.txt
"$program" "$hut" |
  awk 'NR == FNR { if ($2 == "of") taken[$4] = $1
                   if ($1 == "worth") told = $0
                   if ($1 == "None") ways_told = $3
                   next }
       { sub("#.*", "") }
       $1 == "capacity" { most_kg = $2; most_l = $3; next }
       NF == 5 { n = taken[$1]; if (!ways) ways = 1; ways *= $5 + 1
                 worth += n * $2; kg += n * $3; l += n * $4
                 if (n !~ /^[0-9]+$/ || n > $5) bad = 1
                 for (i = 0; i < $5; ++i)
                   for (a = most_kg; a >= $3; --a)
                     for (b = most_l; b >= $4; --b)
                       if (best[a, b] < best[a - $3, b - $4] + $2)
                         best[a, b] = best[a - $3, b - $4] + $2 }
       END { totals = "worth " worth ", " kg " of " most_kg " kilograms, " l " of " most_l " litres"
             exit bad || kg > most_kg || l > most_l || told != totals || ways != ways_told ||
                  worth != best[most_kg, most_l] }' \
    - "$hut"
! "$program" /dev/null 2>/dev/null
