#!/usr/bin/env bash
# Installs what is missing, builds with AddressSanitizer and UndefinedBehaviorSanitizer, warnings as
# errors, and runs the whole suite through CTest.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build/sanitize -G Ninja -DCMAKE_BUILD_TYPE=Debug \
  -DLUMIVANE_SANITIZE=ON -DLUMIVANE_WERROR=ON -DLUMIVANE_BUILD_TESTS=ON >/dev/null
cmake --build build/sanitize
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
ctest --test-dir build/sanitize --output-on-failure -j 2
