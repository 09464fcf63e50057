# Sourced by the tests of this folder: builds the programs of outside/ against an installed tree, as
# its users would, and runs them. The caller sets `version`, what the tree should be; compilers and
# flags are CC, CXX, CFLAGS and CXXFLAGS.
: "${CC:=cc}" "${CXX:=c++}" "${CFLAGS:=}" "${CXXFLAGS:=}"

programs=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)/outside
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unset PKG_CONFIG_PATH PKG_CONFIG_LIBDIR PKG_CONFIG_SYSROOT_DIR

fail() {
  echo "$*" >&2
  exit 1
}

# Runs a program, which has to print the version and the energies that it finds.
check_run() {
  local printed
  printed=$("$1") || fail "$1: exit status $?"
  [ "$printed" = "$version -4 6" ] || fail "$1 printed: $printed"
}

# by_cmake PREFIX LANGUAGE
by_cmake() {
  if ! cmake -G Ninja -S "$programs/$2" -B "$work/$2" -DCMAKE_PREFIX_PATH="$1" >"$work/log" ||
    ! cmake --build "$work/$2" >>"$work/log"; then
    fail "$(<"$work/log")"
  fi
  grep -q "^zorv_DIR:PATH=$1/" "$work/$2/CMakeCache.txt" || fail "another zorv was found"
  check_run "$work/$2/outside"
  rm -r "${work:?}/$2"
}

# by_pkg_config PREFIX
by_pkg_config() {
  local flags
  PKG_CONFIG_PATH=$(dirname "$(find "$1"/lib* -name zorv.pc)")
  export PKG_CONFIG_PATH
  [ "$(pkg-config --modversion zorv)" = "$version" ] || fail "zorv.pc has another version"
  read -ra flags <<<"$(pkg-config --cflags --libs zorv)"
  # shellcheck disable=SC2086
  "$CC" $CFLAGS "$programs/c/main.c" -o "$work/program" "${flags[@]}"
  check_run "$work/program"
  # shellcheck disable=SC2086
  "$CXX" -std=c++20 $CXXFLAGS "$programs/cpp/main.cpp" -o "$work/program" "${flags[@]}"
  check_run "$work/program"
}
