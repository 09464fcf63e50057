#!/usr/bin/env bash
# solver_library_test.sh PROGRAM FOLDER: the program solves its model with the library in the folder.
set -euo pipefail
expected="12 of 15 edges cut, energy as told"
printed=$(ZORV_LIB_DIR=$2 "$1") || { echo "exit status $?"; exit 1; }
[ "$printed" = "$expected" ] || { echo "printed: $printed"; exit 1; }
