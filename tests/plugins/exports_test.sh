#!/usr/bin/env bash
# exports_test.sh LIBRARY HEADER PREFIX: the library's dynamic symbols are the functions of the
# contract that begin with the prefix, no more; functions for integer models may be missing.
set -euo pipefail
declared=$(grep -oE "\b$3[a-z0-9_]+\(" "$2" | tr -d '(' | sort -u)
defined=$(nm -D --defined-only "$1" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' | sort -u)
diff <(grep -v '_int$' <<<"$declared") <(grep -v '_int$' <<<"$defined")
echo "$(wc -l <<<"$defined") exports"
