"""The sample programs in R1, and those sample names whose number they use."""

import re
import shutil
import sys
from pathlib import Path

SAMPLES = Path(__file__).resolve().parents[3] / "samples"
LARGEST_NUMBER = 40

drive = Path(sys.argv[1])
shutil.copytree(SAMPLES / "programs", drive / "R1")
lines = (SAMPLES / "cell_standard.txt").read_bytes().splitlines(keepends=True)
number = re.compile(rb"[A-Za-z_]+?(\d+)\s")

# A name with an apostrophe ends at it when it is read back, and is written anew in every pass.
kept = [line for line in lines if (key := number.match(line)) and int(key[1]) <= LARGEST_NUMBER
        and b"'" not in line]
(drive / "names.txt").write_bytes(b"".join(kept))
