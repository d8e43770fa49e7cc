"""A line of 32,767 characters, which is taken, and one more, which isn't."""
import pathlib
import sys

lines = ["IN_1 Tor", "OUT_1234 " + "x" * 32758, "IN_2 " + "x" * 32763, "IN_3 Pumpe"]
names = pathlib.Path(sys.argv[1]) / "names.txt"
names.write_bytes("".join(line + "\r\n" for line in lines).encode())
