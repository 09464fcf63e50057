#!/usr/bin/env bash
# debian_package_test.sh FILE | --of BUILD: unpacks a Debian package, one that it first makes from a
# build if need be, and uses it from outside programs. With ZORV_TEST_DPKG=1, as root, it installs
# the package on this machine for the test and removes it again.
set -euo pipefail
for tool in dpkg-deb dpkg-shlibdeps file; do
  command -v $tool >/dev/null || {
    echo "skipped: there is no $tool"
    exit 77
  }
done
source "$(dirname "${BASH_SOURCE[0]}")/outside.sh"

package=$1
if [ "$1" = --of ]; then
  (cd "$2" && cpack -B "$work" >"$work/log") || fail "$(<"$work/log")"
  package=$(echo "$work"/zorv_*.deb)
fi
field() { dpkg-deb -f "$package" "$1"; }
version=$(field Version)
[[ $(field Depends) == *libc6*libstdc++6* ]] || fail "depends on: $(field Depends)"

dpkg-deb -x "$package" "$work/root"
[ -z "$(find "$work/root" -type f ! -path "$work/root/usr/*")" ] || fail "files outside of /usr"
by_cmake "$work/root/usr" c
by_pkg_config "$work/root/usr"

if [ "${ZORV_TEST_DPKG:-}" = 1 ] && ! dpkg-query -W zorv >/dev/null 2>&1; then
  trap 'dpkg -P zorv >/dev/null; rm -rf "$work"' EXIT
  dpkg -i "$package" >/dev/null
  by_cmake /usr c
  by_pkg_config /usr
fi
