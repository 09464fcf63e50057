#!/usr/bin/env bash
# The heaps are the numbers of the file, their sums are as printed and differ by the 2 that the
# numbers were made for. The sums are added up digit by digit, which awk can do.
#   partition_test.sh PROGRAM DATA_FOLDER
set -euo pipefail
program=$1 numbers=$2/numbers.txt
out=$("$program" "$numbers")

# sum SIDE: the numbers of one heap, added up.
sum() {
  sed '/^$/,$d' <<<"$out" | awk -v side="$1" '
    $1 == side { if (length($2) > places) places = length($2)
                 for (i = 1; i <= length($2); ++i) digit[i] += substr($2, length($2) + 1 - i, 1) }
    END { for (i = 1; i <= places; ++i) {
            carry += digit[i]; text = carry % 10 text; carry = int(carry / 10) }
          print (carry > 0 ? carry : "") text }'
}
diff <(sed '/^$/,$d' <<<"$out" | awk '{ print $2 }') <(grep -v '^#' "$numbers")
for side in left right; do
  [ "$(sed '1,/^$/d' <<<"$out" | awk -v side=$side '$1 == side { print $2 }')" = "$(sum $side)" ]
done
grep -qx "The sums differ by 2, and by no less in any of 2097152 splits." <<<"$out"
left=$(sum left) right=$(sum right)
[ "${left::-15}" = "${right::-15}" ]
difference=$((10#${left: -15} - 10#${right: -15}))
[ "${difference#-}" -eq 2 ]

# A perfect split, and numbers that allow none.
splits() { "$program" <(printf '%s\n' "${@:2}") | grep -q "^The sums differ by $1, "; }
splits 0 3 1 1 2 2 1
splits 1 -3 4
splits 12345678901234567890123456789 0 12345678901234567890123456789
! "$program" /dev/null 2>/dev/null
