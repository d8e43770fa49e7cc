#!/usr/bin/env python3
"""Writes a C++ source with the bytes of PNG files, for adapters/wx/EmbeddedPictures.h.

usage: embed_pictures.py OUT NAME,WIDTH,HEIGHT,FILE...
"""
import sys
from pathlib import Path

BYTES_IN_A_LINE = 24


def array(variable, data):
    lines = [f"constexpr unsigned char {variable}[] = {{"]
    for start in range(0, len(data), BYTES_IN_A_LINE):
        lines.append(",".join(map(str, data[start : start + BYTES_IN_A_LINE])) + ",")
    return lines + ["};"]


def main(out, rasters):
    arrays, rows = [], []
    for number, raster in enumerate(rasters):
        name, width, height, file = raster.split(",", 3)
        arrays += array(f"kPng{number}", Path(file).read_bytes())
        rows.append(f'    {{u"{name}", {width}, {height}, kPng{number}}},')
    lines = [
        '#include "adapters/wx/EmbeddedPictures.h"',
        "namespace nomira::wx {",
        "namespace {",
        *arrays,
        "constexpr EmbeddedPicture kPictures[] = {",
        *rows,
        "};",
        "}  // namespace",
        "std::span<const EmbeddedPicture> EmbeddedPictures() { return kPictures; }",
        "}  // namespace nomira::wx",
    ]
    Path(out).write_text("\n".join(lines) + "\n", encoding="ascii")


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2:])
