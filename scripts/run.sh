#!/usr/bin/env bash
# Installs what is missing, builds Release and starts the program. Extra arguments go to the program.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DLUMIVANE_BUILD_TESTS=OFF >/dev/null
cmake --build build/release --target lumivane
exec build/release/src/app/lumivane "$@"
