#!/usr/bin/env bash
# walkthrough_test.sh DOCUMENT SOURCE: the C++ pieces of a document, put together, are the source
# that the tests build and run. Blank lines do not count.
set -euo pipefail
diff <(sed -n '/^```cpp$/,/^```$/p' "$1" | grep -v -e '^```' -e '^$') <(grep -v '^$' "$2")
