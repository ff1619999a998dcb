#!/usr/bin/env python3
"""Generate src/core/tav_winerror_names.inc, the table behind tavWinGetErrorAsString().

Source: the MinGW-w64 headers installed by Debian's package mingw-w64-common,
    /usr/share/mingw-w64/include/winerror.h
    /usr/share/mingw-w64/include/lzexpand.h

Only #defines whose value is a plain number are read: decimal or hex, optionally negative,
with U/L suffixes, in parentheses or wrapped in __MSABI_LONG(). HRESULTs (_HRESULT_TYPEDEF_,
casts) and values computed from other macros are skipped. Values are read as signed 32-bit
numbers, so the LZ-expansion errors come out negative.

The table covers the codes in COVERED_RANGES. Where several macros share one code, the name
is chosen in this order:
  1. code 0 is "NO_ERROR" (not its twin ERROR_SUCCESS);
  2. otherwise the first-defined "ERROR_" name, so later aliases never replace it;
  3. otherwise, in 1700-1900, the first-defined RPC runtime name ("RPC_S_", "EPT_S_", "RPC_X_");
  4. for the negative codes, the "LZERROR_" name from lzexpand.h.
Names of any other kind (FACILITY_, SEVERITY_, NOERROR, ...) are never chosen. A covered code
without a name, or a total or family count other than EXPECTED_COUNTS, stops the script with
an error and leaves the output file untouched.

Usage: tools/gen_winerror_names.py [--include-dir DIR] [--output FILE]
"""

import argparse
import os
import re
import sys

DEFAULT_INCLUDE_DIR = "/usr/share/mingw-w64/include"
HEADERS = ("winerror.h", "lzexpand.h")
DEFAULT_OUTPUT = os.path.join(
    os.path.dirname(os.path.abspath(__file__)), "..", "src", "core", "tav_winerror_names.inc")

# Inclusive ranges of the codes the table holds. The headers define no name at 1731, 1776
# and 2138, so those codes are left out.
COVERED_RANGES = (
    (-8, 34), (36, 36), (38, 39), (50, 72), (80, 80), (82, 89), (100, 114), (117, 162),
    (164, 164), (167, 167), (170, 170), (173, 174), (180, 180), (182, 183), (186, 203),
    (205, 210), (212, 212), (214, 215), (230, 234), (240, 240), (254, 255), (259, 259),
    (266, 267), (275, 278), (282, 282), (288, 288), (298, 298), (317, 317), (487, 487),
    (534, 536), (994, 999), (1001, 1022), (1051, 1078), (1100, 1131), (1200, 1221),
    (1300, 1338), (1340, 1394), (1400, 1449), (1500, 1503), (1700, 1728), (1730, 1730),
    (1732, 1737), (1739, 1753), (1755, 1757), (1759, 1762), (1764, 1775), (1777, 1816),
    (1898, 1900), (2202, 2202), (2250, 2250), (2401, 2401), (2404, 2404), (6118, 6118),
)

RPC_RANGE = (1700, 1900)
RPC_PREFIXES = ("RPC_S_", "EPT_S_", "RPC_X_")

# Entries per name family, and in total; the generated C++ asserts the same total.
EXPECTED_COUNTS = {
    "LZERROR_": 8,
    "NO_ERROR": 1,
    "ERROR_": 482,
    "RPC_S_": 67,
    "EPT_S_": 4,
    "RPC_X_": 11,
}
EXPECTED_TOTAL = 573

DEFINE_RE = re.compile(r"^\s*#\s*define\s+([A-Za-z_]\w*)\s+(.*?)\s*$")
NUMBER_RE = re.compile(r"^(-?)(0[xX][0-9A-Fa-f]+|[0-9]+)[uUlL]*$")
MSABI_LONG_RE = re.compile(r"^__MSABI_LONG\s*\((.*)\)$")


def fail(message):
    sys.exit("gen_winerror_names: " + message)


def strip_comments(text):
    text = re.sub(r"/\*.*?\*/", " ", text)
    return text.split("//", 1)[0].strip()


def parse_number(text):
    """The value of a plain numeric macro body as a signed 32-bit number, or None."""
    text = text.strip()
    while True:
        if text.startswith("(") and text.endswith(")"):
            text = text[1:-1].strip()
            continue
        match = MSABI_LONG_RE.match(text)
        if match:
            text = match.group(1).strip()
            continue
        break
    match = NUMBER_RE.match(text.replace(" ", ""))
    if not match:
        return None
    value = int(match.group(2), 0)
    if match.group(1):
        value = -value
    value &= 0xFFFFFFFF
    return value - (1 << 32) if value & 0x80000000 else value


def read_defines(path):
    """(name, signed code) of every plain numeric #define in the header, in file order."""
    defines = []
    try:
        with open(path, encoding="latin-1") as header:
            lines = header.read().split("\n")
    except OSError as error:
        fail("cannot read %s: %s (install the package mingw-w64-common)" % (path, error))
    for line in lines:
        match = DEFINE_RE.match(line)
        if not match:
            continue
        value = parse_number(strip_comments(match.group(2)))
        if value is not None:
            defines.append((match.group(1), value))
    return defines


def family_of(name):
    if name == "NO_ERROR":
        return "NO_ERROR"
    for prefix in ("LZERROR_", "ERROR_") + RPC_PREFIXES:
        if name.startswith(prefix):
            return prefix
    return None


def choose_name(code, names):
    """The one name the table gives to code, from its macros in definition order."""
    if code == 0:
        return "NO_ERROR" if "NO_ERROR" in names else None
    if code < 0:
        return next((n for n in names if n.startswith("LZERROR_")), None)
    for name in names:
        if name.startswith("ERROR_"):
            return name
    if RPC_RANGE[0] <= code <= RPC_RANGE[1]:
        for name in names:
            if name.startswith(RPC_PREFIXES):
                return name
    return None


def build_table(include_dir):
    names_by_code = {}
    for header in HEADERS:
        for name, code in read_defines(os.path.join(include_dir, header)):
            names_by_code.setdefault(code, []).append(name)

    covered = sorted({c for low, high in COVERED_RANGES for c in range(low, high + 1)})
    table = []
    unnamed = []
    for code in covered:
        name = choose_name(code, names_by_code.get(code, []))
        if name is None:
            unnamed.append(code)
        else:
            table.append((code, name))
    if unnamed:
        fail("no usable name for code(s) %s" % ", ".join(map(str, unnamed)))

    counts = dict.fromkeys(EXPECTED_COUNTS, 0)
    for _, name in table:
        counts[family_of(name)] += 1
    if counts != EXPECTED_COUNTS or len(table) != EXPECTED_TOTAL:
        fail("got %d entries %s, expected %d %s" %
             (len(table), counts, EXPECTED_TOTAL, EXPECTED_COUNTS))
    if len({name for _, name in table}) != len(table):
        fail("a name appears for more than one code")
    return table


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("--include-dir", default=DEFAULT_INCLUDE_DIR)
    parser.add_argument("--output", default=DEFAULT_OUTPUT)
    args = parser.parse_args()

    table = build_table(args.include_dir)
    lines = ["// Generated by tools/gen_winerror_names.py from winerror.h and lzexpand.h "
             "(mingw-w64-common).\n"]
    lines += ['{%d, "%s"},\n' % entry for entry in table]
    with open(args.output, "w", encoding="ascii", newline="\n") as out:
        out.writelines(lines)
    print("wrote %d entries to %s" % (len(table), os.path.normpath(args.output)))


if __name__ == "__main__":
    main()
