"""Where things stand in ELF files of this machine's own class, in little-endian order."""
import collections
import struct

BITS = 8 * struct.calcsize("P")
WORD = "<Q" if BITS == 64 else "<I"  # of addresses, offsets and sizes
CLASS = 4
OTHER_CLASS = b"\1" if BITS == 64 else b"\2"
MACHINE = 18
HEADER, PHOFF, SHOFF, PHNUM, SHNUM = (64, 32, 40, 56, 60) if BITS == 64 else (52, 28, 32, 44, 48)
SEGMENT, P_OFFSET, P_FILESZ = (56, 8, 32) if BITS == 64 else (32, 4, 16)
SECTION = "<IIQQQQIIQQ" if BITS == 64 else "<10I"
SYMBOL, ST_INFO, ST_OTHER, ST_SHNDX = (24, 4, 5, 6) if BITS == 64 else (16, 12, 13, 14)
DYNAMIC_VALUE = BITS // 8

Section = collections.namedtuple("Section", "name type flags address offset size link info alignment entry")


def word(value):
    return struct.pack(WORD, value)


def sections(content):
    table, = struct.unpack_from(WORD, content, SHOFF)
    count, names = struct.unpack_from("<HH", content, SHNUM)
    headers = [Section(*struct.unpack_from(SECTION, content, table + struct.calcsize(SECTION) * number))
               for number in range(count)]
    text = content[headers[names].offset:]
    return [header._replace(name=text[header.name:text.index(0, header.name)].decode()) for header in headers]
