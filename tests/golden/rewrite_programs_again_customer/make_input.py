"""The programs as rewrite_programs_customer leaves them, all read-only, and the same names."""

import runpy
import shutil
import sys
from pathlib import Path

FIRST_RUN = Path(__file__).resolve().parents[1] / "rewrite_programs_customer"

drive = Path(sys.argv[1])
runpy.run_path(str(FIRST_RUN / "make_input.py"))
for rewritten in (FIRST_RUN / "expected" / "c" / "R1").iterdir():
    shutil.copyfile(rewritten, drive / "R1" / rewritten.name)
for program in (drive / "R1").iterdir():
    program.chmod(0o444)
