#!/usr/bin/env python3
"""Builds the .xls participant-list fixture used by the names tests.

The older binary workbook format is a BIFF8 record stream named "Workbook" inside an OLE2
compound file. Nothing on this machine writes that format, and the reader we use (freexl)
only reads, so this script writes a minimal but well-formed file with the standard library:

  compound file  512-byte header, then 512-byte sectors: the Workbook stream (padded to the
                 4096-byte mini-stream cut-off, as spreadsheet programs do, so that no mini
                 stream is needed), one directory sector (Root Entry + Workbook), one FAT
                 sector.
  workbook       globals: BOF, CODEPAGE, FONT x5, XF x16 (style) + XF x1 (cell), BOUNDSHEET,
                 SST, EOF; one worksheet: BOF, DIMENSIONS, LABELSST / NUMBER / RK cells,
                 WINDOW2, EOF.

The sheet holds the titles in a non-standard order (Name, Weighting, Keypad), a name in
double quotes, a duplicated keypad, a name outside Latin-1 (stored as UTF-16), a row with an
empty keypad cell that ends the list, and a row after it that must not be read.

Usage: scripts/make-participant-xls.py [output]   (default: tests/data/names/tallix Participant list.xls)
"""
import os
import struct
import sys

SECTOR = 512
ENDOFCHAIN = 0xFFFFFFFE
FREESECT = 0xFFFFFFFF
FATSECT = 0xFFFFFFFD
NOSTREAM = 0xFFFFFFFF

# The sheet: None is an empty cell; ints are written as RK records, floats as NUMBER records.
ROWS = [
    ["Name", "Weighting", "Keypad"],
    ["Ann Example", 2, 3],
    ["Bob", 1.0, 7],
    ['"Quoted Carol"', 1, 12],
    ["Dup Dave", 4, 3],
    ["Zoë Ünïcode Ω", 5, 20],
    ["No Keypad", 1, None],
    ["After The Gap", 1, 30],
]


def record(rid, data=b""):
    return struct.pack("<HH", rid, len(data)) + data


def bof(kind):
    # BIFF8, build/year of a common writer, history flags, lowest version that can read it.
    return record(0x0809, struct.pack("<HHHHII", 0x0600, kind, 0x0DBB, 0x07CC, 0x00000041, 0x00000006))


def short_string(text):
    """ShortXLUnicodeString: 8-bit length, flags, then the characters."""
    try:
        raw = text.encode("latin-1")
        return struct.pack("<BB", len(text), 0) + raw
    except UnicodeEncodeError:
        return struct.pack("<BB", len(text), 1) + text.encode("utf-16-le")


def long_string(text):
    """XLUnicodeString as the SST keeps it: 16-bit length, flags, then the characters."""
    try:
        raw = text.encode("latin-1")
        return struct.pack("<HB", len(text), 0) + raw
    except UnicodeEncodeError:
        return struct.pack("<HB", len(text), 1) + text.encode("utf-16-le")


def font():
    # 10 pt, no attributes, automatic colour, normal weight, "Arial".
    return record(0x0031, struct.pack("<HHHHHBBBB", 200, 0, 0x7FFF, 400, 0, 0, 0, 0, 0) + short_string("Arial"))


def xf(style):
    # Font 0, format 0 ("General"); a style XF has no parent, a cell XF has style XF 0.
    protection = 0xFFF5 if style else 0x0001
    return record(0x00E0, struct.pack("<HHHBBBBIIH", 0, 0, protection, 0x20, 0, 0, 0, 0, 0, 0x20C0))


def workbook_stream():
    strings = []
    for row in ROWS:
        for cell in row:
            if isinstance(cell, str) and cell not in strings:
                strings.append(cell)
    sst_body = struct.pack("<II", sum(isinstance(c, str) for r in ROWS for c in r), len(strings))
    sst_body += b"".join(long_string(s) for s in strings)
    assert len(sst_body) < 8224, "the SST would need CONTINUE records"

    def globals_part(sheet_offset):
        g = bof(0x0005)
        g += record(0x0042, struct.pack("<H", 0x04B0))  # CODEPAGE: UTF-16
        g += b"".join(font() for _ in range(5))
        g += b"".join(xf(True) for _ in range(16)) + xf(False)
        g += record(0x0085, struct.pack("<IBB", sheet_offset, 0, 0) + short_string("Participants"))
        g += record(0x00FC, sst_body)
        g += record(0x000A)
        return g

    cells = b""
    for r, row in enumerate(ROWS):
        for c, cell in enumerate(row):
            if cell is None:
                continue
            if isinstance(cell, str):
                cells += record(0x00FD, struct.pack("<HHHI", r, c, 16, strings.index(cell)))
            elif isinstance(cell, int):
                cells += record(0x027E, struct.pack("<HHHI", r, c, 16, (cell << 2) | 0x2))
            else:
                cells += record(0x0203, struct.pack("<HHHd", r, c, 16, cell))
    columns = max(len(r) for r in ROWS)
    sheet = bof(0x0010)
    sheet += record(0x0200, struct.pack("<IIHHH", 0, len(ROWS), 0, columns, 0))
    sheet += cells
    sheet += record(0x023E, struct.pack("<HHHHHHHI", 0x06B6, 0, 0, 0x40, 0, 0, 0, 0))  # WINDOW2
    sheet += record(0x000A)

    # The sheet's offset depends on the globals' length, which does not depend on the offset.
    offset = len(globals_part(0))
    stream = globals_part(offset) + sheet
    # Streams under 4096 bytes would live in the mini stream; pad past the cut-off instead.
    if len(stream) < 4096:
        stream += b"\x00" * (4096 - len(stream))
    return stream


def directory_entry(name, kind, child, start, size):
    if not name:
        return struct.pack("<64sHBBIII16sIQQIII", b"", 0, 0, 0, NOSTREAM, NOSTREAM, NOSTREAM, b"", 0, 0, 0, 0, 0, 0)
    encoded = (name + "\0").encode("utf-16-le")
    # name, name length in bytes, type, colour (black), left, right, child, CLSID, state,
    # creation and modification times, start sector, size (low, high).
    return struct.pack("<64sHBBIII16sIQQIII", encoded, len(encoded), kind, 1, NOSTREAM, NOSTREAM, child,
                       b"", 0, 0, 0, start, size, 0)


def compound_file(stream):
    data_sectors = (len(stream) + SECTOR - 1) // SECTOR
    directory_sector = data_sectors
    fat_sector = data_sectors + 1
    total = data_sectors + 2
    assert total <= SECTOR // 4, "one FAT sector is enough for this file"

    fat = [FREESECT] * (SECTOR // 4)
    for i in range(data_sectors - 1):
        fat[i] = i + 1
    fat[data_sectors - 1] = ENDOFCHAIN
    fat[directory_sector] = ENDOFCHAIN
    fat[fat_sector] = FATSECT

    directory = directory_entry("Root Entry", 5, 1, ENDOFCHAIN, 0)
    directory += directory_entry("Workbook", 2, NOSTREAM, 0, len(stream))
    directory += directory_entry("", 0, 0, 0, 0) * 2

    header = b"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1" + b"\x00" * 16
    header += struct.pack("<HHHHH", 0x003E, 0x0003, 0xFFFE, 9, 6) + b"\x00" * 6
    header += struct.pack("<IIIIIIIII", 0, 1, directory_sector, 0, 0x1000, ENDOFCHAIN, 0, ENDOFCHAIN, 0)
    header += struct.pack("<I", fat_sector) + struct.pack("<I", FREESECT) * 108
    assert len(header) == SECTOR

    body = stream + b"\x00" * (data_sectors * SECTOR - len(stream))
    return header + body + directory + struct.pack("<%dI" % len(fat), *fat)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "..", "tests", "data", "names",
                                                             "tallix Participant list.xls")
    os.makedirs(os.path.dirname(os.path.abspath(out)), exist_ok=True)
    with open(out, "wb") as f:
        f.write(compound_file(workbook_stream()))
    print(out)


if __name__ == "__main__":
    main()
