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
# Mesa's shader cache writes from a thread of its own, which can still be at work when a test
# process ends; LeakSanitizer's stop-the-world then crashes (about one run in two with two tests
# side by side). Tests compile their few shaders afresh instead.
export MESA_SHADER_CACHE_DISABLE=true
ctest --test-dir build/sanitize --output-on-failure -j 2
