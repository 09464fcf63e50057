#!/usr/bin/env bash
# Every search parameter and environment variable that the sources read is on the page, and the
# other way round. Runs in the repository's root.
set -euo pipefail
page=docs/parameters.md
read_by_code() {
  grep -rhoE '^ *\{("[a-z_]+"|kBestEnergySols), read_' src plugins |
    sed -e 's/kBestEnergySols/"best_energy_sols"/' | grep -oE '[a-z_]+"' | tr -d '"'
  grep -rhoE 'getenv\("[A-Z0-9_]+' src plugins | grep -oE '[A-Z0-9_]+$'
}
on_the_page() {
  sed -n '/^| key | value | default/,/^$/p' "$page" | grep -oE '^\| `[a-z_]+' | grep -oE '[a-z_]+$'
  grep -oE '^\| `[A-Z][A-Z0-9_]+' "$page" | grep -oE '[A-Z0-9_]+$'
  echo thread_count # another name of threads
}
diff <(read_by_code | sort -u) <(on_the_page | sort -u)
