"""The committed programs and assignments are what samples/generate_programs.py makes."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SAMPLES = Path(sys.argv.pop())


def generate(*options):
    subprocess.run([sys.executable, SAMPLES / "generate_programs.py", *options], check=True)


def contents(folder):
    return {path.name: path.read_bytes() for path in Path(folder).iterdir()}


class GenerateProgramsTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def test_committed_files_are_reproduced_byte_for_byte(self):
        generate("--output", self.folder / "programs")
        self.assertEqual(contents(self.folder / "programs"), contents(SAMPLES / "programs"))
        generate("--assignments", self.folder / "assignments.txt")
        self.assertEqual((self.folder / "assignments.txt").read_bytes(),
                         (SAMPLES / "harvest_assignments.txt").read_bytes())

    def test_a_program_depends_on_its_number_alone_and_not_on_the_count(self):
        generate("--count", "3", "--output", self.folder)
        committed = contents(SAMPLES / "programs")
        for name, data in contents(self.folder).items():
            self.assertEqual(data, committed[name])

    def test_programs_have_the_lines_that_were_asked_for(self):
        generate("--count", "20", "--lines", "100-120", "--output", self.folder)
        self.assertEqual(len(contents(self.folder)), 20)
        for data in contents(self.folder).values():
            self.assertTrue(100 <= data.count(b"\r\n") <= 120, data.count(b"\r\n"))
            self.assertEqual(data.count(b"\n"), data.count(b"\r"))

    def test_the_samples_hold_every_form(self):
        text = b"".join(contents(SAMPLES / "programs").values()).decode("cp1252")
        for form in (";FOLD OUT ", ";FOLD WAIT FOR ( ", ";FOLD PULSE ", ";FOLD SYN OUT ",
                     ";FOLD SYN PULSE ", ";FOLD WAIT FOR IN ", ";FOLD WAIT FOR OUT ",
                     ";FOLD ANOUT ON ", ";FOLD ANOUT OFF ", "VANOUT_STAT", " AT POINT ",
                     ": symName ", "CYCFLAG", "TIMER", " FLAG", "\t;FOLD ", ";fold out ", "' )",
                     "')", "''", "*'", "ü", "µ"):
            self.assertIn(form, text)


if __name__ == "__main__":
    unittest.main()
