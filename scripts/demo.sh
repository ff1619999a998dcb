#!/usr/bin/env bash
# Installs what is missing, builds the library and runs the demo program.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh demo
cmake -S . -B out/demo -G Ninja -DCMAKE_BUILD_TYPE=Release -DTAV_BUILD_TESTS=OFF >/dev/null
cmake --build out/demo --target tav_demo tav_trace_demo tavtrace tav_console_demo tav_ini_demo \
  tav_codepage_demo tav_process_demo
echo
./out/demo/bin/tav_demo

echo
echo "--- tracing: tav_trace_demo with TAVDEMO_TRACE_ACTIVE=on"
trace_file="$PWD/out/demo/tavdemo.trc"
TAVDEMO_TRACE_ACTIVE=on TAVDEMO_TRACE_DETAIL=high TAVDEMO_TRACE_AUTOCLEAR=on \
  TAVDEMO_TRACE_FILE="$trace_file" ./out/demo/bin/tav_trace_demo
echo "trace file: $trace_file, $(wc -c <"$trace_file") bytes"
./out/demo/bin/tav_trace_demo --count "$trace_file"
echo
echo "--- the trace controller: tavtrace -key tavdemo (the trace's settings and status)"
export TAVDEMO_TRACE_DETAIL=high TAVDEMO_TRACE_FILE="$trace_file"
./out/demo/bin/tavtrace -key tavdemo
echo
echo "--- the trace in the default format: tavtrace -key tavdemo -display"
./out/demo/bin/tavtrace -key tavdemo -display
echo
echo "--- one line a record, indented by function nesting: -fnest -findent '|  ' -format '%x %f %m %d'"
./out/demo/bin/tavtrace -key tavdemo -display -fnest -findent "|  " -format "%x %f %m %d"
echo
json_file="$PWD/out/demo/tavdemo.json"
./out/demo/bin/tavtrace -key tavdemo -display -format chrome >"$json_file"
echo "--- tavtrace -key tavdemo -display -format chrome > $json_file"
echo "trace-event JSON, $(wc -c <"$json_file") bytes: open it in Perfetto (ui.perfetto.dev) or chrome://tracing"
unset TAVDEMO_TRACE_DETAIL TAVDEMO_TRACE_FILE

echo
echo "--- a command-line tool: tav_console_demo -h"
code=0
./out/demo/bin/tav_console_demo -h || code=$?
echo "exit code: $code"
echo
echo "--- tav_console_demo -o out.txt -x (an argument the usage does not allow)"
code=0
./out/demo/bin/tav_console_demo -o out.txt -x 2>&1 || code=$?
echo "exit code: $code"

echo
echo "--- a configuration file: load, change a value, save atomically"
cp examples/tav_ini_demo.ini out/demo/settings.ini
./out/demo/bin/tav_ini_demo out/demo/settings.ini

echo
echo "--- code pages: a line of EBCDIC 37 into UTF-8 through the built-in table, and back through ICU"
./out/demo/bin/tav_codepage_demo

echo
echo "--- child processes: a program found along the search path, run and waited for, then one killed"
./out/demo/bin/tav_process_demo
