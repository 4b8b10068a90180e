#!/usr/bin/env python3
"""Writes initials.csv: for every character of GB 2312 and every other one in this folder's data
the initial of its usual pinyin reading and its first key in wubi 86.

Usage: make-initials.py Unihan_Readings.txt.bz2 wubi-haifeng86.db
(files of the Debian packages unicode-data and ibus-table-wubi)
"""

import bz2
import pathlib
import sqlite3
import sys
import unicodedata

HERE = pathlib.Path(__file__).parent

# Characters whose first dictionary reading is not the one they have in names of places, people
# and medicines. Words in which a character is read differently again stand in readings.csv.
READINGS = {
    "厦": "X", "参": "S", "咳": "K", "圩": "X", "埔": "P", "峒": "T", "曾": "Z", "枞": "Z",
    "泊": "B", "涡": "G", "炔": "Q", "粘": "N", "膀": "P", "芎": "X", "茄": "Q", "藏": "Z",
    "覃": "Q", "调": "T", "重": "C", "长": "C",
}


def strip_tone(reading):
    return unicodedata.normalize("NFD", reading)[0].upper()


def pinyin_initials(path):
    table = {}
    with bz2.open(path, "rt", encoding="utf-8") as lines:
        for line in lines:
            if "\tkMandarin\t" in line:
                code, _, reading = line.rstrip("\n").split("\t")
                table[chr(int(code[2:], 16))] = strip_tone(reading.split()[0])
    table.update(READINGS)
    return table


def wubi_initials(path):
    with sqlite3.connect(path) as database:
        return {char: keys[0].upper()
                for char, keys in database.execute("SELECT zi, goucima FROM goucima")}


def gb2312():
    for high in range(0xB0, 0xF8):
        for low in range(0xA1, 0xFF):
            try:
                yield bytes((high, low)).decode("gb2312")
            except UnicodeDecodeError:
                pass


def main():
    pinyin = pinyin_initials(sys.argv[1])
    wubi = wubi_initials(sys.argv[2])
    wanted = set(gb2312())
    for file in HERE.glob("*.csv"):
        if file.name != "initials.csv":
            wanted.update(char for char in file.read_text(encoding="utf-8")
                          if "\u3400" <= char <= "\u9fff")
    missing = sorted(char for char in wanted if char not in pinyin or char not in wubi)
    if missing:
        sys.exit("no reading or no key for " + "".join(missing))
    lines = [f"{char},{pinyin[char]},{wubi[char]}\n" for char in sorted(wanted)]
    (HERE / "initials.csv").write_text("CHAR,PINYIN,WUBI\n" + "".join(lines), encoding="utf-8")


if __name__ == "__main__":
    main()
