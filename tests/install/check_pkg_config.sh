#!/usr/bin/env bash
# check_pkg_config.sh - the installed tav.pc as a user's build without CMake sees it.
#
# Usage: check_pkg_config.sh PREFIX WORK_DIR. PREFIX is where the library was installed, with
# "cmake --install --prefix", so usually not the prefix it was configured with. pkg-config
# must give include and library paths inside PREFIX, and a one-file program must compile and
# link with those flags alone and run against the installed library.
set -euo pipefail

prefix=$(realpath "$1")
work=$2
pc_file=$(find "$prefix" -path '*/pkgconfig/tav.pc' | head -n 1)
[ -n "$pc_file" ] || { echo "no pkgconfig/tav.pc under $prefix"; exit 1; }
export PKG_CONFIG_PATH
PKG_CONFIG_PATH=$(dirname "$pc_file")

flags=$(pkg-config --cflags --libs tav)
seen=""
for flag in $flags; do
  case $flag in -I* | -L*) ;; *) continue ;; esac
  path=$(realpath -m "${flag:2}")
  case $path/ in
    "$prefix"/*) seen="$seen ${flag:0:2}" ;;
    *) echo "pkg-config names $path, outside $prefix: $flags"; exit 1 ;;
  esac
done
case $seen in *-I*-L* | *-L*-I*) ;; *) echo "pkg-config lacks -I or -L: $flags"; exit 1 ;; esac

mkdir -p "$work"
cat >"$work/tav_pc_check.c" <<'PROGRAM'
#include <string.h>

#include "tav_utils.h"

int main(void) { return strncmp(tavLibraryGetLevel(), "TAVLib", 6) == 0 ? 0 : 1; }
PROGRAM
# $flags is split into its words on purpose.
# shellcheck disable=SC2086
cc -std=c99 -o "$work/tav_pc_check" "$work/tav_pc_check.c" $flags
LD_LIBRARY_PATH="$(pkg-config --variable=libdir tav)" "$work/tav_pc_check"
echo "pkg-config flags work: $flags"
