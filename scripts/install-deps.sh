#!/usr/bin/env bash
# Installs the Debian packages that are missing for a task: "demo" (build and run the example)
# or "test" (every test on Linux, with sanitizers, and the Windows DLL under Wine; the
# benchmarks, with spdlog and inih for the trace and configuration file benchmarks to compare
# against).
set -euo pipefail

task=${1:?usage: install-deps.sh demo|test}

# The library links the system's ICU on Linux, so even the demo needs its headers.
packages=(cmake ninja-build g++ python3 libicu-dev pkg-config)
if [ "$task" = test ]; then
  packages+=(libgtest-dev libgmock-dev libbenchmark-dev libspdlog-dev libinih-dev
             clang libclang-rt-14-dev
             g++-mingw-w64-x86-64 mingw-w64-common wine wine64)
fi

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" ||
    missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -eq 0 ] || sudo=sudo
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}" >/dev/null
