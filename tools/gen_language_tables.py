#!/usr/bin/env python3
"""Generate src/msg/tav_language_tables.inc, the language and territory tables of TavClLanguage.

Source: Debian's package iso-codes,
    /usr/share/iso-codes/json/iso_639-2.json   languages with their ISO 639-1 two-letter codes
    /usr/share/iso-codes/json/iso_3166-1.json  territories in use
    /usr/share/iso-codes/json/iso_3166-3.json  withdrawn territory codes (fx, tp, yu, zr, an, ...)

The tables hold a fixed choice of codes, LANGUAGE_CODES and TERRITORY_CODES below: the library's
languages and the territories of ISO 3166-1 as it stood in the late 1990s. Each row is read from
the source, then the rows in LANGUAGE_ROWS_KEPT and TERRITORY_ROWS_KEPT replace what the source
says: those rows differ from the standard on purpose (historic and duplicate language codes,
codes that never were ISO ones, and a few territory rows kept exactly as the library has always
had them).

How a row is read:
  - a language name is the first of the names that ISO 639-2 lists for the code, separated by
    ";" ("Spanish; Castilian" gives "Spanish");
  - a territory comes from iso_3166-1.json if the code is in use, otherwise from the latest
    withdrawn entry of that code in iso_3166-3.json; three-letter codes are written in lower
    case, numeric codes as numbers;
  - names are folded to ASCII (accents dropped: "Cote d'Ivoire", "Reunion"), because the tables
    are 8-bit text that must read the same in every code page.

Known gap. The source publishes the standard as it is today, not as it was in the late 1990s,
and this script does not make up what the source does not say. Rows outside the kept ones
therefore carry today's data: for example "ro" has the three-letter code "rou" (earlier "rom"),
"sd" the numeric code 729 (earlier 736), and several territories have their current short
names ("Czechia", "North Macedonia", "Eswatini", "Cabo Verde", "Turkiye", "Bolivia,
Plurinational State of", ...). A code that the source does not know and that is not a kept row
stops the script.

The script checks that the language table has 143 rows and the territory table 242, both sorted
by code and without duplicates, and writes nothing otherwise.

Usage: tools/gen_language_tables.py [--json-dir DIR] [--output FILE]
"""

import argparse
import json
import os
import subprocess
import sys
import unicodedata

DEFAULT_JSON_DIR = "/usr/share/iso-codes/json"
DEFAULT_OUTPUT = os.path.join(
    os.path.dirname(os.path.abspath(__file__)), "..", "src", "msg", "tav_language_tables.inc")

UNSPECIFIED_CODE = "**"
EXPECTED_LANGUAGES = 143  # rows, the unspecified row 0 included
EXPECTED_TERRITORIES = 242

LANGUAGE_CODES = """
aa ab af am ar as ay az ba be bg bh bi bn bo br ca co cs cy da de dz el en eo es et eu fa fi fj
fo fr fy ga gd gl gn gu ha he hi hr hu hy ia id ie ik is it iu iw ja jv ka kk kl km kn ko ks ku
ky la ln lo lt lv mg mi mk ml mn mo mr ms mt my na nb ne nl nn no oc om or pa pl ps pt qu rm rn
ro ru rw sa sd sg sh si sk sl sm sn so sq sr ss st su sv sw ta te tg th ti tk tl tn to tr ts tt
tw ug uk ur uz vi vo wo xh yi yo za zh zu
""".split()

TERRITORY_CODES = """
aa ad ae af ag ai al am an ao aq ar as at au aw az ba bb bd be bf bg bh bi bj bm bn bo br bs bt
bv bw by bz ca cc cf cg ch ci ck cl cm cn co cr cu cv cx cy cz de dj dk dm do dz ec ee eg eh er
es et fi fj fk fm fo fr fx ga gb gd ge gf gh gi gl gm gn gp gq gr gs gt gu gw gy hk hm hn hr ht
hu id ie il in io iq ir is it jm jo jp ke kg kh ki km kn kp kr kw ky kz la lb lc li lk lr ls lt
lu lv ly ma mc md mg mh mk ml mm mn mo mp mq mr ms mt mu mv mw mx my mz na nc ne nf ng ni nl no
np nr nu nz om pa pe pf pg ph pk pl pm pn pr pt pw py qa re ro ru rw sa sb sc sd se sg sh si sj
sk sl sm sn so sp sr st sv sy sz tc td tf tg th tj tk tm tn to tp tr tt tv tw tz ua ug um us uy
uz va vc ve vg vi vn vu wf ws ye yt yu za zm zr zw
""".split()

# (code, name): rows kept as the library has them, whatever the source says.
LANGUAGE_ROWS_KEPT = {
    "he": "Hebrew",
    "iw": "Hebrew",
    "mo": "Moldavian",
    "sh": "Serbo-Croatian",
    "nb": "Norwegian (Bokmal)",
    "nn": "Norwegian (Nynorsk)",
    "no": "Norwegian",
}

# code: (three-letter code, numeric code, name), kept likewise.
TERRITORY_ROWS_KEPT = {
    "aa": ("ara", 0, "Arabic"),
    "fx": ("fxx", 249, "France Metropolitan"),
    "sp": ("ser", 0, "Serbia"),
    "tp": ("tmp", 626, "East Timor"),
    "yu": ("yug", 891, "Yugoslavia"),
    "zr": ("zar", 180, "Zaire"),
    "an": ("ant", 530, "Netherlands Antilles"),
    "zm": ("zwb", 894, "Zambia"),
    "gs": ("sgs", 23, "South Georgia"),
    "kp": ("prk", 408, "Korea North"),
}


def fail(message):
    sys.exit("gen_language_tables: " + message)


def load(json_dir, name, key):
    path = os.path.join(json_dir, name)
    try:
        with open(path, encoding="utf-8") as source:
            return json.load(source)[key]
    except (OSError, ValueError, KeyError) as error:
        fail("cannot read %s: %s (install the package iso-codes)" % (path, error))


def source_version():
    try:
        result = subprocess.run(["dpkg-query", "-W", "-f=${Version}", "iso-codes"],
                                capture_output=True, text=True, check=True)
        return result.stdout.strip() or "unknown version"
    except (OSError, subprocess.CalledProcessError):
        return "unknown version"


def ascii_text(text, what):
    folded = unicodedata.normalize("NFKD", text)
    folded = "".join(c for c in folded if not unicodedata.combining(c))
    if not folded.isascii():
        fail("%s: %r does not fold to ASCII" % (what, text))
    return folded


def language_rows(json_dir):
    by_code = {entry["alpha_2"]: entry for entry in load(json_dir, "iso_639-2.json", "639-2")
               if "alpha_2" in entry}
    rows = [(UNSPECIFIED_CODE, "Unspecified")]
    for code in LANGUAGE_CODES:
        if code in LANGUAGE_ROWS_KEPT:
            name = LANGUAGE_ROWS_KEPT[code]
        elif code in by_code:
            name = by_code[code]["name"].split(";")[0].strip()
        else:
            fail("language %s is neither in ISO 639-2 nor a kept row" % code)
        rows.append((code, ascii_text(name, "language " + code)))
    return rows


def territory_rows(json_dir):
    current = {entry["alpha_2"].lower(): entry
               for entry in load(json_dir, "iso_3166-1.json", "3166-1")}
    withdrawn = {}
    for entry in load(json_dir, "iso_3166-3.json", "3166-3"):
        code = entry["alpha_2"].lower()
        # A code withdrawn twice (cs) keeps its latest meaning.
        if code not in withdrawn or entry["withdrawal_date"] > withdrawn[code]["withdrawal_date"]:
            withdrawn[code] = entry
    rows = [(UNSPECIFIED_CODE, "***", 0, "Unspecified")]
    for code in TERRITORY_CODES:
        if code in TERRITORY_ROWS_KEPT:
            long_code, number, name = TERRITORY_ROWS_KEPT[code]
        else:
            entry = current.get(code) or withdrawn.get(code)
            if entry is None or "numeric" not in entry:
                fail("territory %s is neither in ISO 3166 with a number nor a kept row" % code)
            long_code, number, name = entry["alpha_3"].lower(), int(entry["numeric"]), entry["name"]
        rows.append((code, long_code, number, ascii_text(name, "territory " + code)))
    return rows


def check(rows, expected, what):
    codes = [row[0] for row in rows]
    if len(rows) != expected:
        fail("%d %s rows, expected %d" % (len(rows), what, expected))
    if codes != sorted(codes, key=str.lower) or len(set(codes)) != len(codes):
        fail("the %s codes are not sorted and unique" % what)


def c_string(text):
    return '"%s"' % text.replace("\\", "\\\\").replace('"', '\\"')


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("--json-dir", default=DEFAULT_JSON_DIR)
    parser.add_argument("--output", default=DEFAULT_OUTPUT)
    args = parser.parse_args()

    languages = language_rows(args.json_dir)
    territories = territory_rows(args.json_dir)
    check(languages, EXPECTED_LANGUAGES, "language")
    check(territories, EXPECTED_TERRITORIES, "territory")

    lines = [
        "// Generated by tools/gen_language_tables.py from iso_639-2.json, iso_3166-1.json and\n",
        "// iso_3166-3.json of iso-codes %s. Do not edit; rerun the script.\n" % source_version(),
        "\n",
        "// (two-letter code, English name), sorted by code; the row index is the TavEnLanguage.\n",
        "constexpr LanguageRow kLanguageRows[] = {\n",
    ]
    lines += ["    {%s, %s},\n" % (c_string(code), c_string(name)) for code, name in languages]
    lines += [
        "};\n",
        "\n",
        "// (two-letter code, three-letter code, numeric code, English name), sorted by the\n",
        "// two-letter code; the row index is the TavEnTerritory.\n",
        "constexpr TerritoryRow kTerritoryRows[] = {\n",
    ]
    lines += ["    {%s, %s, %d, %s},\n" % (c_string(code), c_string(long_code), number, c_string(name))
              for code, long_code, number, name in territories]
    lines.append("};\n")
    with open(args.output, "w", encoding="ascii", newline="\n") as out:
        out.writelines(lines)
    print("wrote %d languages and %d territories to %s" %
          (len(languages), len(territories), os.path.normpath(args.output)))


if __name__ == "__main__":
    main()
