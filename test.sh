#!/usr/bin/env bash
# Installs what is missing, builds, and runs every check and test: format, static analysis, the normal build
# and the build with sanitizers.
#
#   ./test.sh                 everything, as CI runs it
#   ./test.sh release         the normal build and its tests alone
#   ./test.sh sanitize        the sanitizer build and its tests alone
#   ./test.sh style           format and static analysis alone
set -euo pipefail
cd "$(dirname "$0")"

what=${1:-all}
case "$what" in
  all | release | sanitize | style) ;;
  *)
    echo "usage: ./test.sh [release|sanitize|style]" >&2
    exit 2
    ;;
esac

title() { printf '\n== %s (%s s)\n' "$1" "$SECONDS"; }

scripts/setup.sh
scripts/fetch_test_server.sh || echo "test.sh: no foreign FTP server could be fetched; its tests will say that they skip"

build_and_test() {
  title "build: $1"
  cmake --preset "$1" >/dev/null
  cmake --build --preset "$1" -j 2
  title "tests: $1"
  ctest --preset "$1"
}

check_style() {
  title "format"
  git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run -Werror
  title "static analysis"
  cmake --preset release >/dev/null
  run-clang-tidy -quiet -j 2 -p build/release "$PWD/(src|adapters|apps)/.*\.cpp" 2>&1 |
    { grep -vE '^(clang-tidy|[0-9]+ warnings? generated|$)' || true; }
  [ "${PIPESTATUS[0]}" -eq 0 ]
}

if [ "$what" = all ] || [ "$what" = style ]; then check_style; fi
if [ "$what" = all ] || [ "$what" = release ]; then build_and_test release; fi
if [ "$what" = all ] || [ "$what" = sanitize ]; then build_and_test sanitize; fi
title "all good"
