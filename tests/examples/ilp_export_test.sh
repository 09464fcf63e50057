#!/bin/sh
# Runs the export program as a user would, with glpsol in the middle.
#   ilp_export_test.sh PROGRAM DATA_DIRECTORY
program=$1
fair=$2/fair.txt
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
failures=0

fail() {
  echo "FAILED: $*"
  failures=$((failures + 1))
}

command -v glpsol >/dev/null || {
  echo "FAILED: glpsol is missing (package glpk-utils)"
  exit 1
}

# try STATUS MESSAGE ARGUMENTS...: exits like this, with the message alone on its stream.
try() {
  status=$1 message=$2
  shift 2
  "$program" "$@" >"$work/out" 2>"$work/err"
  got=$?
  [ $got -eq "$status" ] || fail "$*: exit status $got, not $status"
  [ "$(cat "$work/out" "$work/err")" = "$message" ] || fail "$*: $(cat "$work/out" "$work/err")"
}

# plan FORMAT: the plan in the solution of one format has the energy that glpsol reports.
plan() {
  glpsol "--$1" "$work/model.$1" -w "$work/$1.sol" >"$work/log" || fail "$1: $(cat "$work/log")"
  objective=$(awk '$1 == "s" && $5 == "o" { print $6 }' "$work/$1.sol")
  "$program" read "$fair" "$work/$1.sol" >"$work/$1.plan" || fail "$1: no plan"
  grep -qx "energy $objective, violations 0 of 4 constraints" "$work/$1.plan" ||
    fail "$1: objective $objective, but $(cat "$work/$1.plan")"
}

try 0 "9 columns, 5 rows" write "$fair" "$work/model.freemps" "$work/model.lp"
plan freemps
plan lp
energy() { grep '^energy' "$work/$1.plan"; }
[ "$(energy freemps)" = "$(energy lp)" ] || fail "$(energy freemps) and $(energy lp)"
# An independent look at the plan: its cost, from the lines of the file.
awk 'NR == FNR { if ($1 == "take") for (i = 2; i <= NF; ++i) taken[$i] = 1
                 if ($1 == "trailers") trailers = $2
                 if ($1 == "change") hours = $4
                 if ($1 == "energy") { sub(",", "", $2); energy = $2 }
                 next }
     $1 == "trailer" { cost += trailers * $3 }
     $1 == "shift" { cost += hours * $5 }
     $1 == "item" && $2 in taken { cost -= $3 }
     END { exit cost != energy }' "$work/lp.plan" "$fair" || fail "the energy is not the cost"

sed 's/^choose .*/choose 7 7/' "$fair" >"$work/all.txt"
for format in freemps lp; do
  "$program" write "$work/all.txt" "$work/all.freemps" "$work/all.lp" >/dev/null
  glpsol "--$format" "$work/all.$format" -w "$work/all.sol" >/dev/null
  try 1 "the solver found no plan" read "$work/all.txt" "$work/all.sol"
done

try 1 "not an ILP: the objective has a degree-2 term (only free-form penalty terms enforced to 0 by\
 their hard rows are allowed). Keep the objective linear, or solve without the ILP option." \
  write "$fair" "$work/none" "$work/none" --bonus chairs lamps 5
[ -e "$work/none" ] && fail "wrote a file for a problem that cannot be exported"
# What the penalty keeps apart anyway may have a bonus.
try 0 "9 columns, 5 rows" write "$fair" "$work/b.mps" "$work/b.lp" --bonus lamps clocks 5

"$program" --help | grep -q '^usage: ilp_export' || fail "--help"
try 2 "ilp_export: not understood (--help tells more)"
try 2 "ilp_export: not understood (--help tells more)" read "$fair"
try 2 "ilp_export: cannot read '$work'" write "$work" a b
try 2 "ilp_export: cannot read '$work/no'" read "$fair" "$work/no"
try 2 "ilp_export: cannot write '$work/no/a'" write "$fair" "$work/no/a" "$work/b"
try 2 "ilp_export: there is no item 'cups'" write "$fair" a b --bonus cups lamps 5
try 2 "ilp_export: a bonus needs two items and a whole number" write "$fair" a b \
  --bonus lamps lamps 5
try 2 "ilp_export: a bonus needs two items and a whole number" write "$fair" a b \
  --bonus lamps chairs 5x

# solution MESSAGE SED: the solution, changed, is refused.
solution() {
  sed "$2" "$work/lp.sol" >"$work/bad.sol"
  try 2 "ilp_export: $1" read "$fair" "$work/bad.sol"
}
bad=$work/bad.sol
solution "$bad: there is no status" '/^s/d'
solution "$bad: not a solution of this program" 's/^s mip \([0-9]*\) 10/s mip \1 9/'
solution "$bad: not a solution of this program" 's/^s mip/s bas/'
solution "$bad: not all columns are there" '/^j 3 /d'
solution "$bad: a line is no column" 's/^j 10 .*/j 11 1/'
solution "$bad: a line is no column" 's/^j 1 .*/j 0 1/'
solution "$bad: column 9 is no exact whole number" 's/^j 9 .*/j 9 0.5/'
solution "$bad: column 9 is no exact whole number" 's/^j 9 .*/j 9 1e300/'
solution "column c0 has the value 2 out of its bounds" 's/^j 1 .*/j 1 2/'
solution "column c7 has the value 6 out of its bounds" 's/^j 8 .*/j 8 6/'
solution "column c8 has the value -5 out of its bounds" 's/^j 9 .*/j 9 -5/'

# line MESSAGE LINE: a file with this line is no fair.
line() {
  printf '# a fair\nitem x 1 1 1\n%s\n' "$2" >"$work/bad.txt"
  try 2 "ilp_export: $work/bad.txt:3: $1" write "$work/bad.txt" a b
}
line "unknown keyword 'vans'" "vans 3"
line "'van' needs 1 values" "van"
line "'1.5' is not a whole number in range" "van 1.5"
line "'1000001' is not a whole number in range" "van 1000001"
line "the change of a shift has no room" "shift 8 2 2 1"
line "there is no item 'y'" "conflict x y"
printf 'van 3\n' >"$work/bad.txt"
try 2 "ilp_export: $work/bad.txt: there are no items" write "$work/bad.txt" a b

[ $failures -eq 0 ]
