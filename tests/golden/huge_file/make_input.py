"""100 MB of remarks with a few keys at the start, in the middle and at the end."""
import pathlib
import sys

HALF = 50_000_000
REMARK = b"Signal list of the cell, as planned, page 12, revision 7, not yet checked by anybody\r\n"
START = b"IN_1 first line\r\nWeld11 Naht\r\n"
MIDDLE = b"FlagText512 middle of the file\r\nIN_12345 too many digits\r\n"
END = b"OUT_4096 last line\r\nIN_1 first key again"

with open(pathlib.Path(sys.argv[1]) / "names.txt", "wb") as names:
    names.write(START)
    names.write(REMARK * (HALF // len(REMARK)))
    names.write(MIDDLE)
    names.write(REMARK * (HALF // len(REMARK)))
    names.write(END)
