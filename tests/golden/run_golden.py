#!/usr/bin/env python3
"""Runs the golden test of one folder and compares what it leaves; README.md tells the layout.

usage: run_golden.py CASE WORK NOMIRA MAKE_STORE FORMAT

CASE is the test's folder, WORK one of its own in the build, which is emptied first; NOMIRA and
MAKE_STORE are the two programs; FORMAT is the database's: sqlite, jet3 or jet4. All of them must
leave the same. With NOMIRA_GOLDEN_UPDATE set the outcome becomes what is expected.
"""

import difflib
import filecmp
import hashlib
import os
import shutil
import sqlite3
import stat
import subprocess
import sys
from pathlib import Path

DATABASE = "tqx/data/orvo_con.mdb"
RUN_TIMEOUT_SECONDS = 240


class Prefix:
    """The Windows side of the world for one test."""

    def __init__(self, root: Path, make_store: str, store_format: str):
        self.root = root
        self.make_store = make_store
        self.store_format = store_format
        self.drive = root / "drives" / "c"
        self.database = self.drive / DATABASE

    def create(self, case: Path):
        self.database.parent.mkdir(parents=True)
        if (case / "c").is_dir():
            shutil.copytree(case / "c", self.drive, dirs_exist_ok=True)
        if (case / "registry.reg").is_file():
            shutil.copyfile(case / "registry.reg", self.root / "registry.reg")
        seed = case / "seed.sql"
        script = [str(seed)] if seed.is_file() else []
        subprocess.run([self.make_store, str(self.database), self.store_format, *script], check=True)
        if (case / "make_input.py").is_file():
            subprocess.run([sys.executable, str(case / "make_input.py"), str(self.drive)], check=True)
        self._set_up(case / "setup")

    def _set_up(self, setup: Path):
        if not setup.is_file():
            return
        for line in setup.read_text(encoding="utf-8").splitlines():
            word, *arguments = line.split()
            if word == "no-database":
                self.database.unlink()
            elif word == "read-only":
                (self.drive / arguments[0]).chmod(0o444)
            else:
                sys.exit(f"{setup}: unknown word {word}")

    def files(self) -> dict:
        """Digest of each file on drive C: but the database, by path."""
        return {
            path.relative_to(self.drive).as_posix(): hashlib.sha256(path.read_bytes()).digest()
            for path in self.drive.rglob("*")
            if path.is_file() and path != self.database
        }


def command_lines(case: Path) -> list:
    lines = (case / "cmd").read_text(encoding="utf-8").splitlines()
    return [line for line in lines if line and not line.startswith("#")]


def run(nomira: str, command_line: str, prefix: Prefix) -> tuple:
    environment = {"NOMIRA_PREFIX": str(prefix.root), "HOME": str(prefix.root), "LC_ALL": "C.UTF-8"}
    # Sanitizers tell on the standard error stream, and take their options from here.
    environment.update({k: v for k, v in os.environ.items() if k.endswith("SAN_OPTIONS")})
    done = subprocess.run(
        [nomira, command_line],
        env=environment,
        cwd=prefix.root,
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        timeout=RUN_TIMEOUT_SECONDS,
        check=False,
    )
    return done.returncode, done.stdout.replace(str(prefix.root).encode(), b"<prefix>")


ALL_ROWS = (
    "SELECT Items.Module, Items.KeyString, Messages.Language_id, Messages.String"
    " FROM Items LEFT JOIN Messages ON Items.Key_id = Messages.Key_id"
    " UNION ALL SELECT NULL, NULL, Language_id, String FROM Messages"
    " WHERE Key_id NOT IN (SELECT Key_id FROM Items)"
)


def rows_of(prefix: Prefix) -> list:
    if prefix.store_format == "sqlite":
        connection = sqlite3.connect(prefix.database)
        rows = connection.execute(ALL_ROWS).fetchall()
        connection.close()
        return [["<null>" if v is None else str(v) for v in row] for row in rows]
    command = [prefix.make_store, "--rows", str(prefix.database), ALL_ROWS]
    output = subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout.decode()
    return [row.split("\x1f")[:-1] for row in output.split("\x1e")[:-1]]


def database_rows(prefix: Prefix) -> bytes:
    lines = sorted("|".join(row) for row in rows_of(prefix))
    escaped = [line.replace("\\", "\\\\").replace("\r", "\\r").replace("\n", "\\n") for line in lines]
    return "".join(line + "\n" for line in escaped).encode()


def change_of(path: str, before: dict, after: dict) -> str:
    if path not in before:
        return "new"
    if path not in after:
        return "gone"
    return "same" if before[path] == after[path] else "changed"


def write_outcome(actual: Path, prefix: Prefix, before: dict, runs: list):
    actual.mkdir()
    (actual / "status").write_text("".join(f"{status}\n" for status, _ in runs))
    output = b"".join(text for _, text in runs)
    if output:
        (actual / "output").write_bytes(output)
    if prefix.database.exists():
        (actual / "database").write_bytes(database_rows(prefix))
    after = prefix.files()
    listing = []
    for path in sorted(before.keys() | after.keys()):
        file = prefix.drive / path
        change = change_of(path, before, after)
        read_only = change != "gone" and not file.stat().st_mode & stat.S_IWUSR
        listing.append(f"{path} {change}{' read-only' if read_only else ''}\n")
        if change in ("new", "changed"):
            kept = actual / "c" / path
            kept.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(file, kept)
    (actual / "files").write_text("".join(listing), encoding="utf-8")


def paths_below(folder: Path) -> set:
    return {path.relative_to(folder).as_posix() for path in folder.rglob("*") if path.is_file()}


def show_difference(path: str, expected: Path, actual: Path):
    def lines(file: Path) -> list:
        if not file.is_file():
            return []
        return [repr(line)[2:-1] for line in file.read_bytes().splitlines(keepends=True)]

    left, right = lines(expected / path), lines(actual / path)
    for line in difflib.unified_diff(left, right, f"expected/{path}", f"actual/{path}", lineterm=""):
        print(line)


def compare(expected: Path, actual: Path) -> bool:
    differing = [
        path
        for path in sorted(paths_below(expected) | paths_below(actual))
        if not (expected / path).is_file()
        or not (actual / path).is_file()
        or not filecmp.cmp(expected / path, actual / path, shallow=False)
    ]
    for path in differing:
        show_difference(path, expected, actual)
    return not differing


def main() -> int:
    if len(sys.argv) != 6:
        sys.exit(__doc__)
    case, work = Path(sys.argv[1]), Path(sys.argv[2])
    nomira, make_store, store_format = sys.argv[3:]
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir(parents=True)

    prefix = Prefix(work / "prefix", make_store, store_format)
    prefix.create(case)
    before = prefix.files()
    runs = [run(nomira, line, prefix) for line in command_lines(case)]
    if not runs:
        sys.exit(f"{case}/cmd has no run")

    actual = work / "actual"
    write_outcome(actual, prefix, before, runs)
    if os.environ.get("NOMIRA_GOLDEN_UPDATE") and store_format == "sqlite":
        shutil.rmtree(case / "expected", ignore_errors=True)
        shutil.copytree(actual, case / "expected")
        print(f"{case.name}: expected/ is new now; read it")
    elif not compare(case / "expected", actual):
        print(f"{case.name}: differs; what the runs left is in {work}")
        return 1
    shutil.rmtree(work)
    return 0


if __name__ == "__main__":
    sys.exit(main())
