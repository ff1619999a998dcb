#!/usr/bin/env bash
# Writes the demo trace and its two texts again, after a change to the record layout or to the
# formatter's display has been checked by hand:
#   demo.trc          the trace examples/tav_trace_demo.cpp writes with tracing on at detail
#                     HIGH (texts compressed, the default);
#   demo_default.txt  what `tav_trace_demo --format demo.trc` prints (the default format);
#   demo_nested.txt   what `tav_trace_demo --nested demo.trc` prints (one line a record).
# The process and thread ids, time stamps and the address in them are those of the run. The
# other files here are hand-written tables; each says what its rows are.
#
#   bash tests/data/trace/regenerate.sh [BUILD_DIR]      (default out/regenerate)
# An existing build directory is used as it is configured; a new one builds only the demo.
set -euo pipefail
data=$(cd "$(dirname "$0")" && pwd)
cd "$data/../../.."

build=${1:-out/regenerate}
if [ ! -f "$build/CMakeCache.txt" ]; then
  cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DTAV_BUILD_TESTS=OFF \
    -DTAV_BUILD_EXAMPLES=ON >/dev/null
fi
cmake --build "$build" --target tav_trace_demo >/dev/null
demo="$build/bin/tav_trace_demo"

rm -f "$data/demo.trc"
TAVDEMO_TRACE_ACTIVE=on TAVDEMO_TRACE_DETAIL=high TAVDEMO_TRACE_FILE="$data/demo.trc" \
  "$demo" >/dev/null
"$demo" --format "$data/demo.trc" >"$data/demo_default.txt"
"$demo" --nested "$data/demo.trc" >"$data/demo_nested.txt"
echo "regenerated: $(cd "$data" && echo demo.trc demo_default.txt demo_nested.txt)"
