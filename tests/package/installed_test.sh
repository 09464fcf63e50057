#!/usr/bin/env bash
# installed_test.sh BUILD VERSION: installs a build, moves the installed tree as a whole, and then
# uses it from outside programs, which find it by CMake and by pkg-config.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/outside.sh"
version=$2
cmake --install "$1" --prefix "$work/installed" >/dev/null
mv "$work/installed" "$work/moved"

# Of everything else than headers and documents exactly this, and nothing from a developer's build.
found=$(cd "$work/moved" && find . -type f ! -path './include/zorv/*' ! -path './share/doc/zorv/*' \
  -printf '%f\n' | sed 's/-[a-z]*\.cmake/-*.cmake/' | LC_ALL=C sort)
[ "$found" = "easysolver_cppint.so
exhaustive_cppint.so
libzorv.3
zorv.7
zorv.pc
zorvConfig.cmake
zorvConfigVersion.cmake
zorvTargets-*.cmake
zorvTargets.cmake
zorv_skofleis.so" ] || fail "installed: $found"

# No file may lead back to where it was built, which a program would find here and nowhere else.
! grep -rIF -e "$1" -e "${programs%/tests/*}" "$work/moved" || fail "installed files name the above"

if command -v groff >/dev/null; then
  warnings=$(groff -ww -man -z "$work"/moved/share/man/man*/* 2>&1)
  [ -z "$warnings" ] || fail "man pages: $warnings"
fi

by_cmake "$work/moved" c
by_cmake "$work/moved" cpp
by_pkg_config "$work/moved"
