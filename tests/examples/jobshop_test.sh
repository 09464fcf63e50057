#!/bin/sh
# Runs the job shop program as a user would.
#   jobshop_test.sh PROGRAM DATA_DIRECTORY
program=$1
data=$2
here=$(dirname "$0")
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
failures=0

fail() {
  echo "FAILED: $*"
  failures=$((failures + 1))
}

# solve NAME INSTANCE STATUS ARGUMENTS...: the printed schedule must be one, whatever its length.
solve() {
  name=$1 instance=$2 status=$3
  shift 3
  "$program" "$instance" "$@" >"$work/out" 2>"$work/err"
  got=$?
  [ $got -eq "$status" ] || fail "$name: exit status $got, not $status: $(cat "$work/err")"
  [ -s "$work/err" ] && fail "$name: wrote to the error stream: $(cat "$work/err")"
  awk -f "$here/check_schedule.awk" "$instance" "$work/out" || fail "$name: $(grep -v TTS "$work/out")"
}

# expect NAME PATTERN: a line of the last output is exactly like this.
expect() {
  grep -qx "$2" "$work/out" || fail "$1: no line '$2' in: $(grep -v TTS "$work/out")"
}

# reject NAME MESSAGE ARGUMENTS...: nothing but this one line, and the status of a mistake.
reject() {
  name=$1 message=$2
  shift 2
  "$program" "$@" >"$work/out" 2>"$work/err"
  got=$?
  [ $got -eq 2 ] || fail "$name: exit status $got"
  [ "$(cat "$work/err")" = "jobshop: $message" ] || fail "$name: $(cat "$work/err")"
  [ -s "$work/out" ] && fail "$name: wrote to the output: $(cat "$work/out")"
}

# reject_file MESSAGE TEXT: the text is no job shop.
reject_file() {
  printf "$2" >"$work/bad.txt"
  reject "$2" "$work/bad.txt:$1" "$work/bad.txt"
}

# The limits on time are far beyond what the searches take; each ends at its target or its proof.
solve ft06 "$data/ft06.txt" 0 --target 55 --time-limit 300 --seed 7 --threads 1 --svg "$work/a.svg"
expect ft06 "makespan 55, energy 55, violations 0 of 126 constraints"
expect ft06 "target reached, best found after .* s"
expect ft06 "TTS = .*s Energy = .* Obj = .* Viol = 0/126"
[ "$(grep -c '<title>job' "$work/a.svg")" -eq 36 ] || fail "not 36 operations in the drawing"
grep -q '>ft06: makespan 55</text>' "$work/a.svg" || fail "no title in the drawing"
[ "$(tail -1 "$work/a.svg")" = "</svg>" ] || fail "the drawing does not end"

solve threads "$data/ft06.txt" 0 --target 60 --time-limit 300 --threads 2 --quiet
grep -q "TTS" "$work/out" && fail "--quiet prints progress"
solve "late target" "$data/la01.txt" 0 --target 700 --time-limit 300 --seed 1

# Nothing can be found in no time; then the best priority rule has to do, if it is good enough.
solve "no time" "$data/ft06.txt" 0 --time-limit 0
expect "no time" "time is up"
solve "missed target" "$data/ft06.txt" 1 --time-limit 0 --target 55
"$program" "$data/ft06.txt" --time-limit 0 --horizon 52 >"$work/out" 2>"$work/err"
[ $? -eq 1 ] || fail "a horizon that is not met exits with 1"
expect "missed horizon" "no schedule within the horizon was found"

# Windows without any choice, operations that take no time, comments, blank lines, line ends.
printf '# one\r\n\r\n1 1 # 1 x 1\r\n0 5\r\n' >"$work/one.txt"
solve "one operation" "$work/one.txt" 0 --time-limit 300
expect "one operation" "no schedule is shorter, best found after .* s"
printf '2 2\n0 3 1 0\n1 0 0 4\n' >"$work/zero.txt"
solve "no duration" "$work/zero.txt" 0 --time-limit 300
expect "no duration" "makespan 7, .*"
printf '1 1\n0 0\n' >"$work/nothing.txt"
solve "no work" "$work/nothing.txt" 0 --time-limit 300
expect "no work" "makespan 0, .*"

"$program" --help >"$work/out" || fail "--help fails"
expect help "usage: jobshop \[OPTIONS\] FILE"

reject "no file" "no file (--help tells more)"
reject "two files" "more than one file: 'a' and 'b'" a b
reject "unknown option" "unknown option '--fast' (--help lists them)" --fast "$data/ft06.txt"
reject "no value" "option '--seed' needs a value" "$data/ft06.txt" --seed
reject "bad number" "option '--seed': '1x' is not a whole number in range" --seed 1x
reject "negative" "option '--target': '-1' is not a whole number in range" --target -1
reject "zero threads" "option '--threads': '0' is not a whole number in range" --threads 0
reject "time" "option '--time-limit': 'nan' is not a number of seconds in range" --time-limit nan
reject "missing file" "cannot read '$work/none'" "$work/none"
reject "folder" "cannot read '$work'" "$work"
reject "short horizon" "horizon 40 is too short: every schedule takes 52 or more" \
  "$data/ft06.txt" --horizon 40

reject_file "0: the file holds no numbers" ""
reject_file "2: the file holds no numbers" "# only\n\n"
reject_file "1: expected two numbers, the jobs and the machines" "2 2 2\n"
reject_file "1: the number of jobs must be 1 to 1000, not 0" "0 2\n"
reject_file "1: the number of machines must be 1 to 1000, not -1" "1 -1\n"
reject_file "3: job 1 needs 4 numbers, a machine and a duration for each operation, but has 3" \
  "2 2\n0 1 1 1\n0 1 1\n"
reject_file "3: machine 2 does not exist (machines are 0 to 1)" "# x\n1 2\n0 1 2 1\n"
reject_file "2: a duration must be 0 to 1000000000, not -5" "1 1\n0 -5\n"
reject_file "2: 'five' is not a whole number" "1 1\n0 five\n"
reject_file "2: '1.5' is not a whole number" "1 1\n0 1.5\n"
reject_file "2: '99999999999999999999' is too large" "1 1\n0 99999999999999999999\n"
reject_file "2: the file ends after 1 of 2 jobs" "2 1\n0 1\n"
reject_file "3: more numbers after the last of 1 jobs" "1 1\n0 1\n0 1\n"

[ $failures -eq 0 ]
