"""The committed samples are what samples/generate.py makes, and what it makes is well formed."""

import re
import subprocess
import sys
import unittest
from pathlib import Path

SAMPLES = Path(sys.argv.pop())

FILES = {
    "cell_standard.txt": ["--form", "standard"],
    "cell_customer.txt": ["--form", "customer"],
    "registry_standard.reg": ["--form", "standard", "--registry"],
    "registry_customer.reg": ["--form", "customer", "--registry"],
}


def generate(*options):
    command = [sys.executable, SAMPLES / "generate.py", *options]
    return subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout


class GenerateTest(unittest.TestCase):
    def test_each_committed_file_is_reproduced_byte_for_byte(self):
        for name, options in FILES.items():
            with self.subTest(name):
                self.assertTrue((SAMPLES / name).read_bytes() == generate(*options),
                                f"{name} isn't what generate.py {' '.join(options)} makes")

    def test_the_readme_tells_the_command_of_each_file(self):
        readme = (SAMPLES / "README.md").read_text(encoding="utf-8")
        for name, options in FILES.items():
            self.assertIn(f"./generate.py {' '.join(options)} --output {name}", readme)

    def test_another_seed_makes_another_cell(self):
        self.assertNotEqual(generate("--seed", "1"), generate("--seed", "2"))

    def test_the_largest_set_has_every_key_once_and_a_text_behind_it(self):
        rows = generate("--all").decode("cp1252").split("\r\n")
        self.assertEqual(rows.pop(), "")
        keys = [row.split(" ", 1)[0] for row in rows]
        self.assertEqual(len(keys), 3 * 10**4 + 2 * 10**3 + 6 * 10**2 + 3 * 10)
        self.assertEqual(len(set(keys)), len(keys))
        for row in rows:
            self.assertRegex(row, r"^[A-Za-z_]*\d+ \S.{3,58}\S$")

    def test_the_count_is_about_the_number_of_lines(self):
        for count in (300, 3000):
            lines = generate("--count", str(count)).count(b"\r\n")
            self.assertTrue(count <= lines <= count * 1.05 + 60, lines)

    def test_a_cell_holds_what_the_import_has_to_cope_with(self):
        text = generate().decode("cp1252")
        for what, pattern in {
            "a tab behind the key": r"(?m)^IN_\d+\t",
            "a key without a name": r"(?m)^IN_\d+\r$",
            "too many digits": r"(?m)^[A-Z_]+\d{5,} ",
            "an indented line": r"(?m)^  [A-Za-z_]+\d+ ",
            "blanks behind the text": r"(?m)\S  \r$",
            "the form that only the export writes": r"(?m)^ZTQXProcParam_\d+ ",
            "each of the seven letters": "(?s)(?=.*ö)(?=.*Ö)(?=.*ä)(?=.*Ä)(?=.*ü)(?=.*Ü)(?=.*ß)",
        }.items():
            self.assertRegex(text, re.compile(pattern), what)
        keys = re.findall(r"(?m)^(IN_\d{1,4})\s", text)
        self.assertLess(len(set(keys)), len(keys), "no key comes twice")


if __name__ == "__main__":
    unittest.main()
