#!/usr/bin/env bash
# exports_test.sh LIBRARY HEADER: the library's dynamic symbols are the functions of the header, no
# more and no fewer.
set -euo pipefail
declared=$(grep -oE '\bzorv_[a-z0-9_]+\(' "$2" | tr -d '(' | sort -u)
defined=$(nm -D --defined-only "$1" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' | sort -u)
diff <(echo "$declared") <(echo "$defined") && echo "$(wc -l <<<"$defined") exports"
