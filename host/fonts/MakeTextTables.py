#!/usr/bin/env python3
"""Writes the tables of TextEncoding.cpp: for each character set, what its single bytes from 0x80 on and its pairs
of bytes mean in Unicode. 0 stands for nothing. Called by the build: MakeTextTables.py OUTPUT."""

import sys

FIRST_TRAIL = 0x40

# What the Mac character sets have beside the national standards.
JAPANESE = {0x80: 0x5C, 0xA0: 0xA0, 0xFD: 0xA9, 0xFE: 0x2122, 0xFF: 0x2026}
CHINESE = {0x80: 0x5C, 0xA0: 0xA0, 0xFD: 0xA9, 0xFE: 0x2122, 0xFF: 0x2026}
KOREAN = {0x80: 0xA0, 0x81: 0x20A9, 0x82: 0x2013, 0x83: 0xA9, 0x84: 0xFF3F, 0xFE: 0x2122, 0xFF: 0x2026}


def decode(codecs, code):
    """The first answer of the codecs that is one character of the basic plane."""
    for codec in codecs:
        try:
            text = code.decode(codec)
        except UnicodeDecodeError:
            continue
        if len(text) == 1 and ord(text) < 0x10000:
            return ord(text)
    return 0


def write(out, name, codecs, extra, leads):
    singles = [extra.get(byte, 0) or decode(codecs, bytes([byte])) for byte in range(0x80, 0x100)]
    write_array(out, f"constexpr char16_t k{name}Singles[128]", singles)
    if leads is None:
        return
    first, last = leads
    pairs = [decode(codecs, bytes([lead, trail]))
             for lead in range(first, last + 1) for trail in range(FIRST_TRAIL, 0x100)]
    out.write(f"constexpr uint8_t k{name}FirstLead = 0x{first:02X};\n")
    write_array(out, f"constexpr char16_t k{name}Pairs[{last - first + 1} * {0x100 - FIRST_TRAIL}]", pairs)


def write_array(out, declaration, values):
    out.write(declaration + " = {\n")
    for start in range(0, len(values), 16):
        out.write("    " + " ".join(f"0x{value:04X}," for value in values[start:start + 16]) + "\n")
    out.write("};\n")


def main():
    with open(sys.argv[1], "w", encoding="ascii") as out:
        out.write("// Made by MakeTextTables.py.\n")
        write(out, "CodePage1252", ["cp1252"], {}, None)
        # The code page has what the Mac set takes over from the vendors' rows of the standard.
        write(out, "Japanese", ["shift_jis", "cp932"], JAPANESE, (0x81, 0xFC))
        write(out, "Chinese", ["cp950", "big5"], CHINESE, (0xA1, 0xF9))
        write(out, "Korean", ["euc_kr"], KOREAN, (0xA1, 0xFE))


main()
