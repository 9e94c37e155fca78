#!/usr/bin/env python3
"""Writes oak/base/OrderTable.inc: what a UTF-16 unit from U+0080 on is when names are ordered.

  0       a letter of its own
  1       punctuation, symbol, blank or combining mark
  2       control character
  65..90  a Latin letter with an accent or a stroke: its base letter
  0x8000  plus two numbers of five bits (A is 0): stands for two Latin letters
  others  a Greek letter with an accent: the capital of its base letter

Usage: tools/make_order_table.py > oak/base/OrderTable.inc
"""

import unicodedata

from make_case_table import print_array

BLOCK = 64
STROKES = dict(zip("ÐĐØŁĦŦƗɄ", "DDOLHTIU"))
PAIRS = {"ß": "SS", "ẞ": "SS", "Æ": "AE", "Œ": "OE", "Þ": "TH", "Ĳ": "IJ"}


def weight(code):
    char = chr(code)
    category = unicodedata.category(char)
    if category == "Cc":
        return 2
    if category[0] in "PSZ" or category == "Cf" or 0x0300 <= code <= 0x036F:
        return 1
    if category[0] != "L":
        return 0
    base = unicodedata.normalize("NFD", char)[0]
    capital = base.upper() if len(base.upper()) == 1 else base
    if char in "ĳ":
        capital = "Ĳ"
    if capital in PAIRS:
        first, second = (ord(c) - ord("A") for c in PAIRS[capital])
        return 0x8000 | first << 5 | second
    if capital in STROKES:
        return ord(STROKES[capital])
    if base == char or ord(capital) >= 0x400:
        return 0
    return ord(capital) if "A" <= capital <= "Z" or 0x370 <= ord(capital) < 0x400 else 0


def main():
    blocks = []
    page = []
    for at in range(0, 0x10000, BLOCK):
        surrogates = 0xD800 <= at < 0xE000
        block = tuple(0 if c < 0x80 or surrogates else weight(c) for c in range(at, at + BLOCK))
        if block not in blocks:
            blocks.append(block)
        page.append(blocks.index(block))
    assert len(blocks) < 256
    print("// Written by tools/make_order_table.py from Unicode "
          f"{unicodedata.unidata_version}; do not edit.")
    print("// clang-format off")
    print_array("kOrderPage", "std::uint8_t", page)
    print_array("kOrderClass", "std::uint16_t", [w for b in blocks for w in b])
    print("// clang-format on")


if __name__ == "__main__":
    main()
