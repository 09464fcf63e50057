#!/usr/bin/env bash
# readme_test.sh README PROGRAM: the code on the README's first screen is, line by line, part of the
# program that the tests run.
set -euo pipefail
snippet=$(sed -n '/^```c$/,/^```$/p' "$1" | sed '1d;$d')
[ -n "$snippet" ] || { echo "no code in $1"; exit 1; }
while IFS= read -r line; do
  [ "$line" = "..." ] || [ -z "$line" ] || grep -qxF -e "$line" -e "  $line" "$2" || {
    echo "not in $2: $line"
    exit 1
  }
done <<<"$snippet"
