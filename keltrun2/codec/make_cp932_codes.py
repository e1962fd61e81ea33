#!/usr/bin/env python3
"""make_cp932_codes.py OUTPUT: writes the characters of code page 932 as this system's C library has them.

The header has the characters of the single bytes from 0x80 on and of the pairs of bytes (0 for none),
and the codes of those characters whose code is not the first one that stands for them.
"""
import ctypes
import sys

C = ctypes.CDLL(None)
C.iconv_open.restype = ctypes.c_void_p
C.iconv.argtypes = [ctypes.c_void_p] + [ctypes.c_void_p] * 4
C.iconv.restype = ctypes.c_size_t


class Converter:
    def __init__(self, to, source):
        self.handle = C.iconv_open(to, source)
        if self.handle == ctypes.c_void_p(-1).value:
            sys.exit("make_cp932_codes.py: the C library does not know CP932")

    def run(self, text):
        """The text converted, or None when it is not valid."""
        source, target = ctypes.create_string_buffer(text, len(text)), ctypes.create_string_buffer(16)
        places = [ctypes.c_char_p(ctypes.addressof(buffer)) for buffer in (source, target)]
        left = [ctypes.c_size_t(len(text)), ctypes.c_size_t(16)]
        arguments = [ctypes.byref(each) for pair in zip(places, left) for each in pair]
        if C.iconv(self.handle, *arguments) == ctypes.c_size_t(-1).value:
            C.iconv(self.handle, None, None, None, None)
            return None
        return target.raw[:16 - left[1].value]


DECODER, ENCODER = Converter(b"UTF-16BE", b"CP932"), Converter(b"CP932", b"UTF-8")


def character(code):
    utf16 = DECODER.run(code)
    return int.from_bytes(utf16, "big") if utf16 and len(utf16) == 2 else 0


def numbers(values):
    return ",\n".join(",".join(f"{value:#x}" for value in values[i:i + 16]) for i in range(0, len(values), 16))


def main():
    singles = [character(bytes([byte])) for byte in range(0x80, 0x100)]
    leads = [*range(0x81, 0xA0), *range(0xE0, 0xFD)]
    codes = [bytes([lead, trail]) for lead in leads for trail in range(0x40, 0xFD) if trail != 0x7F]
    pairs = [character(code) for code in codes]
    first = {value: bytes([value]) for value in range(0x80)}
    for code, value in zip([bytes([byte]) for byte in range(0x80, 0x100)] + codes, singles + pairs):
        if value:
            first.setdefault(value, code)
    choices = []
    for value in range(1, 0x10000):
        if 0xD800 <= value < 0xE000:
            continue
        code = ENCODER.run(chr(value).encode())
        if code != first.get(value):
            choices.append((value, int.from_bytes(code, "big") if code else 0xFFFF))
    with open(sys.argv[1], "w", encoding="ascii") as file:
        file.write(f"""// Made by make_cp932_codes.py.
#pragma once

#include <cstdint>

namespace keltrun {{

inline constexpr char16_t kCp932Singles[] = {{
{numbers(singles)}}};

inline constexpr char16_t kCp932Pairs[] = {{
{numbers(pairs)}}};

struct Cp932Choice {{
  char32_t character;
  std::uint16_t code;
}};
inline constexpr Cp932Choice kCp932Choices[] = {{
{", ".join(f"{{{value:#x}, {code:#x}}}" for value, code in choices)}}};

}}  // namespace keltrun
""")


main()
