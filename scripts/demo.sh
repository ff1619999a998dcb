#!/usr/bin/env bash
# Installs what is missing, builds the library and runs the demo program.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh demo
cmake -S . -B out/demo -G Ninja -DCMAKE_BUILD_TYPE=Release -DTAV_BUILD_TESTS=OFF >/dev/null
cmake --build out/demo --target tav_demo
echo
./out/demo/bin/tav_demo
