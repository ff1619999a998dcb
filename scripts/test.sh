#!/usr/bin/env bash
# Installs what is missing, then builds and runs every test three ways: Linux release, Linux
# with AddressSanitizer and UndefinedBehaviorSanitizer (clang, which also builds the fuzz
# targets and runs each briefly), and the Windows DLL under Wine; then the multi-threaded tests
# once more under ThreadSanitizer. A coverage build checks that the tests still run at least 93%
# of the library's lines and 86% of its branches. Warnings are errors.
# Exits non-zero if anything fails; the last line is the summary.
set -uo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh test || { echo "SUMMARY: could not install the packages"; exit 1; }

jobs=$(nproc 2>/dev/null || echo 2)
failed=()
summary=()

# Sums the test counts of the GoogleTest XML reports in a build directory.
count_tests() {
  local total=0 n
  for report in "$1"/test-results/*.xml; do
    [ -f "$report" ] || continue
    n=$(grep -o -m1 '<testsuites tests="[0-9]*"' "$report" | grep -o '[0-9]*')
    total=$((total + ${n:-0}))
  done
  echo "$total"
}

# run_stage NAME BUILD_DIR [cmake arguments...]: configure, build and run the tests.
run_stage() {
  local name=$1 dir=$2
  shift 2
  echo "=== $name: configure and build"
  rm -rf "$dir/test-results"
  if ! cmake -S . -B "$dir" -G Ninja -DTAV_WARNINGS_AS_ERRORS=ON "$@" >"$dir.configure.log" 2>&1; then
    cat "$dir.configure.log"; failed+=("$name (configure)"); return 1
  fi
  if ! cmake --build "$dir" -j "$jobs"; then failed+=("$name (build)"); return 1; fi
  echo "=== $name: tests"
  if ! ctest --test-dir "$dir" --output-on-failure -j "$jobs"; then
    failed+=("$name (tests)")
  fi
  summary+=("$name $(count_tests "$dir")")
}

mkdir -p out

if run_stage "linux-release" out/linux-release -DCMAKE_BUILD_TYPE=Release -DTAV_BUILD_BENCHMARKS=ON; then
  # Installed to another prefix than the configured one: tav.pc must follow it.
  echo "=== install, and build a program against the installed package, with CMake and pkg-config"
  rm -rf out/install out/install-check
  if ! { cmake --install out/linux-release --prefix "$PWD/out/install" >/dev/null &&
         cmake -S tests/install -B out/install-check -G Ninja -DCMAKE_PREFIX_PATH="$PWD/out/install" >/dev/null &&
         cmake --build out/install-check >/dev/null &&
         LD_LIBRARY_PATH="$PWD/out/install/lib" out/install-check/tav_install_check &&
         bash tests/install/check_pkg_config.sh out/install out/install-check/pkg-config; }; then
    failed+=("install check")
  fi
fi

if run_stage "linux-asan-ubsan" out/linux-sanitize -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DTAV_SANITIZE=ON -DTAV_BUILD_FUZZERS=ON; then
  echo "=== fuzz targets: a short run of each on its seed corpus"
  for fuzzer in out/linux-sanitize/bin/tav_fuzz_*; do
    [ -x "$fuzzer" ] || continue
    name=$(basename "$fuzzer")
    corpus=$(mktemp -d)
    cp fuzz/corpus/"$name"/* "$corpus"/ 2>/dev/null || true
    if ! "$fuzzer" -max_total_time=15 -print_final_stats=0 "$corpus" >"out/$name.log" 2>&1; then
      tail -40 "out/$name.log"; failed+=("fuzz $name")
    fi
    rm -rf "$corpus"
  done
fi

echo "=== coverage of the library by the tests"
bash scripts/coverage.sh out/coverage || failed+=("coverage")

# ThreadSanitizer: only the test programs with tests that run threads, and only those tests.
run_thread_stage() {
  local name=linux-tsan dir=out/linux-tsan
  echo "=== $name: configure and build"
  rm -rf "$dir/test-results"
  if ! cmake -S . -B "$dir" -G Ninja -DTAV_WARNINGS_AS_ERRORS=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo \
      -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DTAV_SANITIZE_THREAD=ON \
      -DTAV_BUILD_EXAMPLES=OFF >"$dir.configure.log" 2>&1; then
    cat "$dir.configure.log"; failed+=("$name (configure)"); return 1
  fi
  if ! cmake --build "$dir" -j "$jobs" --target tav_trace_tests; then
    failed+=("$name (build)"); return 1
  fi
  echo "=== $name: threaded tests"
  if ! TSAN_OPTIONS="halt_on_error=1" "$dir/bin/tav_trace_tests" --gtest_filter='*Threads*' \
      --gtest_output="xml:$dir/test-results/tav_trace_tests.xml"; then
    failed+=("$name (tests)")
  fi
  summary+=("$name $(count_tests "$dir")")
}
run_thread_stage

export WINEDEBUG=-all WINEPREFIX="$PWD/out/wine-prefix" WINEDLLOVERRIDES="mscoree,mshtml="
run_stage "windows-wine" out/windows -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake

echo
for line in "${summary[@]}"; do echo "tests run: $line"; done
if [ ${#failed[@]} -ne 0 ]; then
  echo "SUMMARY: FAILED: ${failed[*]}"
  exit 1
fi
echo "SUMMARY: all tests passed (${summary[*]})"
