#!/usr/bin/env python3
"""Writes oak/base/CaseTable.inc: one-to-one case mapping of UTF-16 units.

A pair belongs to the table if each letter is the simple mapping of the other, which is how the file
system of the platform folds names. So dotless i, long s, the micro sign and the title-case digraphs
stand for themselves. The final sigma is the one letter that is folded without being mapped back.
Letters whose capitals are younger than that file system (Georgian, Cherokee) are left alone.

Usage: tools/make_case_table.py > oak/base/CaseTable.inc
"""

import textwrap
import unicodedata

BLOCK = 64
YOUNG = [(0x10D0, 0x10FF), (0x1C80, 0x1CBF), (0x13A0, 0x13FF), (0xAB30, 0xABBF)]


def simple(char, *forms):
    """The first form of one UTF-16 unit, else the character itself."""
    for form in forms:
        if len(form) == 1 and ord(form) < 0x10000:
            return form
    return char


def upper(code):
    # A letter with several capitals in full mapping has its simple one as title case.
    return ord(simple(chr(code), chr(code).upper(), chr(code).title()))


def lower(code):
    return ord(simple(chr(code), chr(code).lower()))


def tables():
    up = list(range(0x10000))
    low = list(range(0x10000))
    for code in range(0x10000):
        if 0xD800 <= code <= 0xDFFF or any(a <= code <= b for a, b in YOUNG):
            continue
        capital = upper(code)
        if capital != code and lower(capital) == code:
            up[code] = capital
            low[capital] = code
    up[0x03C2] = 0x03A3
    return up, low


def print_array(name, kind, values):
    print(f"constexpr {kind} {name}[{len(values)}] = {{")
    print(textwrap.fill(",".join(map(str, values)).replace(",", ", "), 100, initial_indent="    ",
                        subsequent_indent="    ") + "};")


def main():
    blocks = []
    pages = []
    for table in tables():
        page = []
        for at in range(0, 0x10000, BLOCK):
            block = tuple((table[c] - c) & 0xFFFF for c in range(at, at + BLOCK))
            if block not in blocks:
                blocks.append(block)
            page.append(blocks.index(block))
        pages.append(page)
    assert len(blocks) < 256
    print("// Written by tools/make_case_table.py from Unicode "
          f"{unicodedata.unidata_version}; do not edit.")
    print("// The differences to the other case, in blocks of 64 units that both directions share.")
    print("// clang-format off")
    print_array("kUpperPage", "std::uint8_t", pages[0])
    print_array("kLowerPage", "std::uint8_t", pages[1])
    print_array("kCaseDelta", "std::uint16_t", [d for b in blocks for d in b])
    print("// clang-format on")


if __name__ == "__main__":
    main()
