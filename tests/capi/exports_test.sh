#!/usr/bin/env bash
# exports_test.sh LIBRARY HEADER PROGRAM: the library's dynamic symbols are the functions of the
# header, no more and no fewer, and the program that makes random calls knows every one of them.
set -euo pipefail
declared=$(grep -oE '\bzorv_[a-z0-9_]+\(' "$2" | tr -d '(' | sort -u)
defined=$(nm -D --defined-only "$1" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' | sort -u)
called=$(nm -D --undefined-only "$3" | grep -oE '\bzorv_[a-z0-9_]+' | sort -u)
diff <(echo "$declared") <(echo "$defined") && echo "$(wc -l <<<"$defined") exports"
diff <(echo "$declared") <(echo "$called") && echo "all of them are called at random"
