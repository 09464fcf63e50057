#!/usr/bin/env bash
# page_test.sh PAGE BUILD_FOLDER CC CXX [COMPILER_FLAG...]: what stands in the blocks of a page is
# true, see "Pages" in CONTRIBUTING.md. Runs in the repository's root.
set -euo pipefail
page=$1 build=$2 cc=$3 cxx=$4
shift 4
flags=("$@" -Wall -Wextra -Wpedantic -Werror -O0 -Iinclude)
here=$(dirname "${BASH_SOURCE[0]}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "$page: $*"
  exit 1
}

# run NAME COMMAND...: prints what the page says, if it says anything, and ends well.
run() {
  local name=$1
  shift
  "$@" >"$work/printed" 2>&1 || fail "$name: exit status $?: $(tail -n 3 "$work/printed")"
  [ ! -e "$work/$name.expected" ] ||
    awk -f "$here/same_output.awk" "$work/$name.expected" "$work/printed" || fail "output of $name"
}

# compile NAME SOURCE
compile() {
  local compiler=("$cxx" -std=c++20)
  case $2 in *.c) compiler=("$cc" -std=c11) ;; esac
  "${compiler[@]}" "${flags[@]}" "$2" "$build/zorv_skofleis.so" -Wl,-rpath,"$build" -o "$work/$1"
}

awk -v page="$page" -v dir="$work" -f "$here/blocks.awk" "$page"

for source in "$work"/*.cpp "$work"/*.c; do
  [ -e "$source" ] || continue
  name=$(basename "${source%.*}")
  compile "$name" "$source"
  run "$name" "$work/$name"
done

# A quotation is a run of lines of its file, or all of them, indentation and blank lines aside. Its
# output, if the page gives one, is that of the file compiled.
squeezed() { sed -e 's/^ *//' -e '/^$/d' | tr '\n' '\r'; }
for quote in "$work"/*.quote; do
  [ -e "$quote" ] || continue
  name=$(basename "$quote" .quote)
  source=$(head -n 1 "$quote")
  lines=$(squeezed <"$source")
  quoted=$(tail -n +2 "$quote" | squeezed)
  [[ "$lines" == "$quoted" || ($name != whole && "$lines" == *"$quoted"*) ]] ||
    fail "line $name: not as in $source"
  [ ! -e "$work/$name.expected" ] || {
    compile "$name" "$source"
    run "$name" "$work/$name"
  }
done

# Shell lines with an output are run, in the build folder at hand for build/release.
for lines in "$work"/*.sh; do
  [ -e "$lines" ] || continue
  name=$(basename "$lines" .sh)
  [ ! -e "$work/$name.expected" ] ||
    run "$name" bash -euc "$(sed "s|build/release/|$build/|g" "$lines")"
done

# What the page names is there.
for command in $(cat "$work"/prose "$work"/*.sh 2>/dev/null | grep -oE '\./dev [a-z]+' |
  cut -d ' ' -f 2 | sort -u); do
  ./dev help | grep -q "^  $command " || fail "no such command: ./dev $command"
done
for file in $(grep -oE '\]\([^)]+\)' "$work/prose" | sed -e 's/^](//' -e 's/[)#].*//' -e '/^http/d'); do
  [ -e "$(dirname "$page")/$file" ] || fail "no such file: $file"
done
