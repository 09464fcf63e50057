#!/bin/sh
# The answer is unique: every other choice within 50 boards of wood pays less.
#   quickstart_test.sh PROGRAM
expected="13 chairs, 8 tables: profit 703, 0 rules broken"
printed=$("$1") || { echo "exit status $?"; exit 1; }
[ "$printed" = "$expected" ] || { echo "printed: $printed"; exit 1; }
