#!/usr/bin/env python3
"""Generates the built-in code page tables from the IBM mappings in the system's ICU data.

Writes src/codepage/tav_sbcs_tables.inc (the single-byte tables and the two reverse tables)
and src/codepage/tav_dbcs_tables.inc (the double-byte tables). ICU is reached through ctypes
on the system's libicuuc (version 72); each converter is opened as the library opens it at run
time (by CCSID, GB18030 by name) with fallback mappings on, so that a table answers exactly what
ICU answers for the same bytes:

- single-byte: every byte converted on its own;
- double-byte: every code of every lead byte (for EBCDIC between shift-out and shift-in), the
  four-byte codes of GB18030 in the Basic Multilingual Plane as runs of consecutive code points,
  and the three-byte codes of EUC-JP (0x8F, then two bytes);
- reverse: every one of the 65,536 UCS-2 units converted on its own. ICU drops the default
  ignorable code points it cannot map; the table writes the substitution byte for them, so that
  every unit gives one byte.

Where ICU reads a pair as an illegal lead byte followed by a character of its own, the table
holds the marker 0xFFFF ("the table's substitute for the first byte, U+001A or for GB18030
U+FFFD, then read the second byte again"). A code
that ICU reads as two units (a character beyond the BMP, or a letter with a combining mark) holds
the marker 0xFFFE and stands with both units in the table's list of two-unit codes. In the
three-byte blocks of EUC-JP, 0xDFFF marks a third byte that cannot end the code: U+FFFD for the
first two bytes, then the third is read again. The script checks that no real code maps to a
marker. Blocks of 256 values are written once
however many lead bytes (and tables) use them.

Run from the root of the checkout:  python3 tools/gen_codepage_tables.py [--check]
With --check it only compares the generated text with the committed files.
"""

import ctypes
import os
import sys

ICU_VERSION = "72"
ICU_LIBRARY = "libicuuc.so." + ICU_VERSION
SBCS_OUTPUT = os.path.join("src", "codepage", "tav_sbcs_tables.inc")
DBCS_OUTPUT = os.path.join("src", "codepage", "tav_dbcs_tables.inc")

# EBCDIC country code pages without and with the euro, Latin-1 with all of Latin-1 (1047), the
# Central European, Cyrillic, Turkish and Greek EBCDIC pages; PC pages; Windows pages; ISO 8859-1
# and -15. ICU 72 carries no mapping of CCSID 924, so 1153 (870 with the euro) takes its place.
SBCS_CCSIDS = [
    37, 273, 277, 278, 280, 284, 285, 297, 500, 871,
    1140, 1141, 1142, 1143, 1144, 1145, 1146, 1147, 1148, 1149,
    1047, 870, 1153, 1025, 1026, 875,
    437, 850, 852, 855, 857, 858, 860, 861, 863, 865, 866, 869,
    1250, 1251, 1252, 1253, 1254, 1255, 1256, 1257, 1258,
    819, 923,
]
# Japanese, Korean, Simplified and Traditional Chinese host pages; the PC/Unix pages the
# aliases lead to. ICU 72 carries no mapping of CCSID 948, so Big5 (950) takes its place.
DBCS_CCSIDS = [930, 933, 935, 937, 939, 950, 1386, 1390, 1392, 1399, 33722]
EBCDIC_DBCS = {930, 933, 935, 937, 939, 1390, 1399}
REVERSE_CCSIDS = [500, 850]

MARKER = 0xFFFF
TWO_UNITS = 0xFFFE
ILLEGAL_THIRD = 0xDFFF
SUB1 = 0x001A
SHIFT_OUT, SHIFT_IN = 0x0E, 0x0F

# Lead byte flags of a double-byte table.
SINGLE, LEAD, LEAD_FOUR, PREFIX_THREE = 0, 1, 2, 3


def fail(message):
    sys.exit("gen_codepage_tables.py: " + message)


class Icu:
    def __init__(self):
        try:
            lib = ctypes.CDLL(ICU_LIBRARY)
        except OSError as error:
            fail("cannot load %s: %s" % (ICU_LIBRARY, error))
        err = ctypes.POINTER(ctypes.c_int)

        def fn(name, restype, *argtypes):
            function = getattr(lib, name + "_" + ICU_VERSION)
            function.restype = restype
            function.argtypes = list(argtypes)
            return function

        vp = ctypes.c_void_p
        self.open_ccsid = fn("ucnv_openCCSID", vp, ctypes.c_int32, ctypes.c_int, err)
        self.open_name = fn("ucnv_open", vp, ctypes.c_char_p, err)
        self.set_fallback = fn("ucnv_setFallback", None, vp, ctypes.c_int8)
        self.to_uchars = fn("ucnv_toUChars", ctypes.c_int32, vp, vp, ctypes.c_int32,
                            ctypes.c_char_p, ctypes.c_int32, err)
        self.from_uchars = fn("ucnv_fromUChars", ctypes.c_int32, vp, ctypes.c_char_p,
                              ctypes.c_int32, vp, ctypes.c_int32, err)
        self.get_version = fn("u_getVersion", None, ctypes.c_char_p)
        self.get_starters = fn("ucnv_getStarters", None, vp, ctypes.c_char_p, err)
        self.units = (ctypes.c_uint16 * 64)()
        self.bytes = ctypes.create_string_buffer(64)

    def version(self):
        raw = ctypes.create_string_buffer(4)
        self.get_version(raw)
        major, minor, patch = raw.raw[0], raw.raw[1], raw.raw[2]
        return "%d.%d" % (major, minor) + (".%d" % patch if patch else "")

    def open(self, ccsid):
        status = ctypes.c_int(0)
        if ccsid == 1392:
            converter = self.open_name(b"gb18030", ctypes.byref(status))
        else:
            converter = self.open_ccsid(ccsid, 0, ctypes.byref(status))
        if not converter or status.value > 0:
            fail("ICU has no converter for CCSID %d (error %d)" % (ccsid, status.value))
        self.set_fallback(converter, 1)
        return converter

    def to_unicode(self, converter, data):
        status = ctypes.c_int(0)
        count = self.to_uchars(converter, self.units, 64, bytes(data), len(data),
                               ctypes.byref(status))
        if status.value > 0:
            fail("ICU error %d converting %s" % (status.value, bytes(data).hex()))
        return tuple(self.units[i] for i in range(count))

    def from_unicode(self, converter, unit):
        status = ctypes.c_int(0)
        source = (ctypes.c_uint16 * 1)(unit)
        count = self.from_uchars(converter, self.bytes, 64, source, 1, ctypes.byref(status))
        if status.value > 0:
            fail("ICU error %d converting U+%04X" % (status.value, unit))
        return self.bytes.raw[:count]

    def starters(self, converter):
        flags = ctypes.create_string_buffer(256)
        status = ctypes.c_int(0)
        self.get_starters(converter, flags, ctypes.byref(status))
        if status.value > 0:
            fail("ICU error %d asking for lead bytes" % status.value)
        return [flags.raw[i] != 0 for i in range(256)]


def one_unit(units, where):
    if len(units) != 1:
        fail("%s does not convert to one UCS-2 unit: %s" % (where, units))
    return units[0]


def single_byte_table(icu, ccsid):
    converter = icu.open(ccsid)
    return [one_unit(icu.to_unicode(converter, [b]), "CCSID %d byte %02X" % (ccsid, b))
            for b in range(256)]


def reverse_table(icu, ccsid):
    converter = icu.open(ccsid)
    substitute = icu.from_unicode(converter, 0xFFFF)
    values = []
    for unit in range(65536):
        out = icu.from_unicode(converter, unit)
        if len(out) == 0:
            out = substitute  # an ignorable ICU drops: the table keeps one byte a unit
        if len(out) != 1:
            fail("CCSID %d: U+%04X gives %d bytes" % (ccsid, unit, len(out)))
        values.append(out[0])
    return values


class DoubleByteBuilder:
    """Reads one double-byte code page from ICU into blocks of 256 UCS-2 values."""

    def __init__(self, icu, ccsid):
        self.icu = icu
        self.ccsid = ccsid
        self.ebcdic = ccsid in EBCDIC_DBCS
        self.converter = icu.open(ccsid)
        self.pairs = []
        # What ICU writes for a byte that cannot begin a character here.
        self.illegal = 0xFFFD if ccsid == 1392 else SUB1

    def convert(self, data):
        if self.ebcdic:
            data = [SHIFT_OUT] + list(data) + [SHIFT_IN]
        return self.icu.to_unicode(self.converter, data)

    def pair_value(self, lead, trail):
        units = self.convert([lead, trail])
        if len(units) == 1 and units[0] == TWO_UNITS:
            fail("CCSID %d: %02X%02X maps to U+FFFE" % (self.ccsid, lead, trail))
        if len(units) == 2 and units[0] != self.illegal:
            # A character beyond the BMP or a base letter with a combining mark: the block
            # holds the marker, the list of two-unit codes both units.
            self.pairs.append((lead << 8 | trail, units[0], units[1]))
            return TWO_UNITS
        if self.ebcdic and trail in (SHIFT_OUT, SHIFT_IN) and units == (self.illegal,):
            return MARKER  # a shift never ends a pair: ICU reads it again as a shift
        if len(units) == 1:
            if units[0] == MARKER or 0xD800 <= units[0] <= 0xDFFF:
                fail("CCSID %d: %02X%02X maps to a marker" % (self.ccsid, lead, trail))
            return units[0]
        if units[0] == self.illegal and units[1:] == self.convert([trail]):
            return MARKER
        fail("CCSID %d: %02X%02X gives %s" % (self.ccsid, lead, trail, units))

    def single_block(self, leads):
        block = []
        for b in range(256):
            if self.ebcdic and b in (SHIFT_OUT, SHIFT_IN):
                block.append(0xFFFD)  # shifts are read by the routine, never looked up
            elif leads[b]:
                block.append(0xFFFD)  # a lead byte alone is an unfinished character
            else:
                block.append(one_unit(self.icu.to_unicode(self.converter, [b]),
                                      "CCSID %d byte %02X" % (self.ccsid, b)))
        return block

    def build(self):
        if self.ebcdic:
            # In double-byte mode every byte but the two shifts begins a pair.
            leads = [b not in (SHIFT_OUT, SHIFT_IN) for b in range(256)]
            flags = [LEAD if lead else SINGLE for lead in leads]
            single = self.single_block([False] * 256)
        else:
            leads = self.icu.starters(self.converter)
            flags = [LEAD if lead else SINGLE for lead in leads]
            single = self.single_block(leads)
        lead_blocks = {}
        for lead in range(256):
            if not leads[lead]:
                continue
            if self.ccsid == 33722 and lead == 0x8F:
                flags[lead] = PREFIX_THREE
                continue
            four = self.ccsid == 1392
            if four:
                flags[lead] = LEAD_FOUR
            lead_blocks[lead] = [0xFFFD if four and 0x30 <= t <= 0x39 else self.pair_value(lead, t)
                                 for t in range(256)]
        prefix_blocks = self.euc_prefix_blocks() if self.ccsid == 33722 else {}
        ranges = self.gb18030_ranges() if self.ccsid == 1392 else []
        return single, lead_blocks, flags, prefix_blocks, ranges, sorted(self.pairs), self.illegal

    def euc_prefix_blocks(self):
        """The three-byte codes 8F xx yy: a block for every second byte that can begin one."""
        blocks = {}
        for second in range(256):
            block = []
            for third in range(256):
                units = self.icu.to_unicode(self.converter, [0x8F, second, third])
                if len(units) == 1 and not 0xD800 <= units[0] <= 0xDFFF and units[0] < TWO_UNITS:
                    block.append(units[0])
                elif units[0] == self.illegal and units[1:] == self.icu.to_unicode(
                        self.converter, [second, third]):
                    block.append(MARKER)  # the substitute for 0x8F, then read from the second byte
                elif units[0] == 0xFFFD and units[1:] == self.icu.to_unicode(self.converter,
                                                                             [third]):
                    block.append(ILLEGAL_THIRD)  # U+FFFD for 8F xx, then read the third again
                else:
                    fail("CCSID 33722: 8F%02X%02X gives %s" % (second, third, units))
            if any(value != MARKER for value in block):
                blocks[second] = block
        return blocks

    def gb18030_ranges(self):
        """Runs of consecutive code points over the four-byte codes of the BMP."""
        ranges = []
        previous = None
        for linear in range(39420):
            b4 = 0x30 + linear % 10
            b3 = 0x81 + linear // 10 % 126
            b2 = 0x30 + linear // 1260 % 10
            b1 = 0x81 + linear // 12600
            unit = one_unit(self.convert([b1, b2, b3, b4]), "GB18030 index %d" % linear)
            if previous is None or unit != previous + 1:
                ranges.append((linear, unit))
            previous = unit
        return ranges


def reverse_blocks(icu, ccsid):
    """The reverse table of ccsid as its distinct 256-unit blocks, each stored once, and the
    block that serves each high byte of a unit."""
    values = reverse_table(icu, ccsid)
    blocks, block_of = [], []
    for high in range(256):
        block = values[high * 256:(high + 1) * 256]
        if block not in blocks:
            blocks.append(block)
        block_of.append(blocks.index(block))
    return blocks, block_of


def be_bytes(values):
    out = []
    for value in values:
        out.extend((value >> 8, value & 0xFF))
    return out


def byte_rows(values, indent="    ", per_line=16):
    lines = []
    for start in range(0, len(values), per_line):
        lines.append(indent + ", ".join("0x%02X" % v for v in values[start:start + per_line]) + ",")
    return lines


def number_rows(values, indent="    ", per_line=16):
    lines = []
    for start in range(0, len(values), per_line):
        lines.append(indent + ", ".join("%d" % v for v in values[start:start + per_line]) + ",")
    return lines


def banner(icu, what):
    return [
        "// Generated by tools/gen_codepage_tables.py from the IBM mappings of ICU %s." % icu.version(),
        "// " + what,
        "// UCS-2 values are stored big-endian, two bytes each.",
        "",
    ]


def generate_sbcs(icu):
    lines = banner(icu, "The %d single-byte tables (sorted by CCSID) and the reverse tables of %s."
                   % (len(SBCS_CCSIDS), " and ".join(str(c) for c in REVERSE_CCSIDS)))
    lines.append("const SingleByteTable kSingleByteTables[%d] = {" % len(SBCS_CCSIDS))
    for ccsid in sorted(SBCS_CCSIDS):
        lines.append("  {%d, {" % ccsid)
        lines.extend(byte_rows(be_bytes(single_byte_table(icu, ccsid))))
        lines.append("  }},")
    lines.append("};")
    for ccsid in REVERSE_CCSIDS:
        blocks, block_of = reverse_blocks(icu, ccsid)
        lines.append("")
        lines.append("const uint8_t kReverseBlocks%d[%d][256] = {" % (ccsid, len(blocks)))
        for block in blocks:
            lines.append("  {")
            lines.extend(byte_rows(block))
            lines.append("  },")
        lines.append("};")
    lines.append("")
    lines.append("const ReverseTable kReverseTables[%d] = {" % len(REVERSE_CCSIDS))
    for ccsid in REVERSE_CCSIDS:
        blocks, block_of = reverse_blocks(icu, ccsid)
        lines.append("  {%d, {" % ccsid)
        lines.extend(number_rows(block_of))
        lines.append("  }, kReverseBlocks%d}," % ccsid)
    lines.append("};")
    return "\n".join(lines) + "\n"


def generate_dbcs(icu):
    pool = []
    index_of = {}

    def block_number(block):
        key = tuple(block)
        if key not in index_of:
            index_of[key] = len(pool)
            pool.append(block)
        return index_of[key] + 1  # 0 stays "no block"

    tables = []
    for ccsid in sorted(DBCS_CCSIDS):
        single, lead_blocks, flags, prefix_blocks, ranges, pairs, illegal = DoubleByteBuilder(
            icu, ccsid).build()
        single_number = block_number(single)
        block_of = [block_number(lead_blocks[b]) if b in lead_blocks else 0 for b in range(256)]
        prefix_of = [block_number(prefix_blocks[b]) if b in prefix_blocks else 0
                     for b in range(256)]
        tables.append((ccsid, single_number, block_of, flags, prefix_of if prefix_blocks else None,
                       ranges, pairs, illegal))
    lines = banner(icu, "The %d double-byte tables (sorted by CCSID) over one pool of %d blocks."
                   % (len(DBCS_CCSIDS), len(pool)))
    lines.append("const uint8_t kDoubleByteBlocks[%d][512] = {" % len(pool))
    for block in pool:
        lines.append("  {")
        lines.extend(byte_rows(be_bytes(block)))
        lines.append("  },")
    lines.append("};")
    for ccsid, _, _, _, prefix_of, ranges, pairs, _ in tables:
        if pairs:
            lines.append("")
            lines.append("const TwoUnitCode kTwoUnitCodes%d[%d] = {" % (ccsid, len(pairs)))
            for start in range(0, len(pairs), 4):
                lines.append("    " + " ".join("{0x%04X, 0x%04X, 0x%04X}," % p for p in pairs[start:start + 4]))
            lines.append("};")
        if prefix_of is not None:
            lines.append("")
            lines.append("const uint16_t kThreeByteBlockOf%d[256] = {" % ccsid)
            lines.extend(number_rows(prefix_of))
            lines.append("};")
        if ranges:
            lines.append("")
            lines.append("const FourByteRun kFourByteRuns%d[%d] = {" % (ccsid, len(ranges)))
            for start in range(0, len(ranges), 6):
                lines.append("    " + " ".join("{%d, 0x%04X}," % r for r in ranges[start:start + 6]))
            lines.append("};")
    lines.append("")
    lines.append("const DoubleByteTable kDoubleByteTables[%d] = {" % len(tables))
    for ccsid, single_number, block_of, flags, prefix_of, ranges, pairs, illegal in tables:
        lines.append("  {%d, %s, %d, 0x%04X, {" % (
            ccsid, "true" if ccsid in EBCDIC_DBCS else "false", single_number, illegal))
        lines.extend(number_rows(block_of))
        lines.append("  }, {")
        lines.extend(number_rows(flags, per_line=32))
        lines.append("  }, %s, %s, %d, %s, %d}," % (
            "kThreeByteBlockOf%d" % ccsid if prefix_of is not None else "nullptr",
            "kFourByteRuns%d" % ccsid if ranges else "nullptr", len(ranges),
            "kTwoUnitCodes%d" % ccsid if pairs else "nullptr", len(pairs)))
    lines.append("};")
    return "\n".join(lines) + "\n"


def main():
    check = "--check" in sys.argv[1:]
    icu = Icu()
    outputs = [(SBCS_OUTPUT, generate_sbcs(icu)), (DBCS_OUTPUT, generate_dbcs(icu))]
    for path, text in outputs:
        if check:
            with open(path, encoding="ascii") as existing:
                if existing.read() != text:
                    fail(path + " differs from the generated text")
        else:
            with open(path, "w", encoding="ascii", newline="\n") as out:
                out.write(text)
    return 0


if __name__ == "__main__":
    sys.exit(main())
