#!/usr/bin/env python3
"""Makes the robot programs of a made-up cell, and the customer's file of signal assignments.

The programs hold every form of fold header whose names nomira rewrites, in the shapes that many
hands have given them. None of them ends a rewriting run with an error. The same options always
give the same bytes, and a program depends on the seed and its own number alone, not on the count.
"""

import argparse
import random
from pathlib import Path

LINE_END = "\r\n"
CODE_PAGE = "cp1252"

STEPS = ("pick", "place", "weld", "glue", "rivet", "check", "turn", "dress", "change", "home")

# Parts of the old names: what speaks, and what it says, in German and in English.
NAMES = (
    (("Greifer", "Spanner", "Ventil", "Förderer", "Schutztür", "Düse", "Kühlwasser", "Zange"),
     ("geöffnet", "geschlossen", "vorn", "zurück", "belegt", "in Grundstellung", "läuft")),
    (("gripper", "clamp", "valve", "conveyor", "safety gate", "nozzle", "coolant", "gun"),
     ("open", "closed", "advanced", "retracted", "part present", "running")),
)
# Signs that are wildcards where an old name serves as a pattern.
WILDCARDS = (" ?", " *", " #")
# Names in a wait with several conditions are no longer than the eight characters from one
# condition's name to the next one's keyword: a longer name that shrinks hides the next condition
# from the first pass, and the programs would need a second one.
SHORT_NAMES = ("Tor", "Ventil 3", "Düse", "Spanner", "gripper", "belt 2", "Ofen 1", "Lüfter")

NOTES = ("; Änderung nach Übergabe, größerer Weg", "; taken over from the old cell",
         "; 'Greifer' OUT 7 State: nur ein Kommentar", "; µ = 0,2 mm", "  ; wait for gripper", "")

# Titles of the users' own. Those that begin like a form of the system hold " State", or they would
# end the run.
OWN_TITLES = ("Grundstellung anfahren", "Initialise cell", "OUTFEED belt State of the part",
              "Out of the fixture, State 2", "PULSED light State unknown", "Typ prüfen",
              "ANOUT documentation", "WAIT FOR the turntable", "WAIT FOR INFEED State of line",
              "SYN OUTPUTS State overview", "Störung 'Schutztür' quittieren")

WAIT_CLASSES = ("IN", "OUT", "CYCFLAG", "TIMER", "FLAG")
WAIT_SHARES = (40, 20, 10, 10, 20)


class Dice:
    """Random choices that stay the same from one Python to the next."""

    def __init__(self, seed):
        self._random = random.Random(seed).random

    def below(self, n):
        return int(self._random() * n)

    def among(self, first, last):
        return first + self.below(last - first + 1)

    def of(self, things):
        return things[self.below(len(things))]

    def chance(self, share):
        return self._random() < share

    def weighted(self, things, shares):
        mark = self.below(sum(shares))
        for thing, share in zip(things, shares):
            mark -= share
            if mark < 0:
                return thing
        raise AssertionError("the shares don't reach the mark")


def old_name(dice):
    subjects, states = dice.of(NAMES)
    number = f" {dice.among(1, 9)}" if dice.chance(0.5) else ""
    return f"{dice.of(subjects)}{number} {dice.of(states)}"


class Programmer:
    """Writes the blocks of one program.

    `signals` is the highest number of a signal, `motions` the share of motions, where all the
    other blocks have 85.
    """

    def __init__(self, dice, signals, motions):
        self.dice = dice
        self.signals = signals
        self.motions = motions
        self.point = 0

    def number(self):
        return self.dice.among(1, self.signals)

    def name(self):
        """An old name, seldom with a wildcard, seldom empty."""
        if self.dice.chance(0.04):
            return ""
        return old_name(self.dice) + (self.dice.of(WILDCARDS) if self.dice.chance(0.04) else "")

    def quoted(self, number):
        """What stands behind a keyword: mostly the number, one blank, and the name."""
        gap = "  " if self.dice.chance(0.03) else " "
        return f"{gap}{number} '{self.name()}'"

    def level(self):
        return self.dice.of(("TRUE", "FALSE"))

    def simple(self, title, statement, place="", tail=""):
        """A header of one signal; or, where no name was ever given, of its number alone."""
        number = self.number()
        level = self.level()
        signal = f" {number}: symName" if self.dice.chance(0.08) else self.quoted(number)
        yield f";FOLD {title}{signal}{place} State={level}{tail};%{{PE}}%P 2:{number}, 3:{level}"
        yield statement.format(number=number, level=level)
        yield ";ENDFOLD"

    def out(self):
        place = " AT POINT" if self.dice.chance(0.15) else ""
        return self.simple("OUT", "$OUT[{number}]={level}", place)

    def pulse(self):
        tail = f" Time=0.{self.dice.among(1, 9)} sec"
        return self.simple("PULSE", "PULSE($OUT[{number}],{level},0.1)", tail=tail)

    def syn_out(self):
        tail = f" at START Delay={self.dice.below(500)}ms"
        statement = "TRIGGER WHEN DISTANCE=0 DELAY=0 DO $OUT[{number}]={level}"
        return self.simple("SYN OUT", statement, tail=tail)

    def syn_pulse(self):
        tail = f" Time=0.{self.dice.among(1, 9)} sec at END"
        statement = "TRIGGER WHEN DISTANCE=1 DELAY=0 DO PULSE($OUT[{number}],{level},0.1)"
        return self.simple("SYN PULSE", statement, tail=tail)

    def wait_in(self):
        return self.simple("WAIT FOR IN", "WAIT FOR $IN[{number}]=={level}")

    def wait_out(self):
        return self.simple("WAIT FOR OUT", "WAIT FOR $OUT[{number}]=={level}")

    def condition(self):
        word = self.dice.weighted(WAIT_CLASSES, WAIT_SHARES)
        negated = "NOT " if self.dice.chance(0.2) else ""
        name = "" if self.dice.chance(0.04) else self.dice.of(SHORT_NAMES)
        return f"( {negated}{word} {self.number()} '{name}' )"

    def wait(self):
        conditions = [self.condition() for _ in range(self.dice.among(1, 4))]
        # A cyclic flag behind a flag is taken for a flag, in every pass anew.
        conditions.sort(key=lambda condition: "CYCFLAG" not in condition)
        if self.dice.chance(0.1):
            conditions[-1] = conditions[-1].replace("' )", "')")
        glue = self.dice.of((" AND ", " OR "))
        yield f";FOLD WAIT FOR {glue.join(conditions)} ;%{{PE}}%P 2:{len(conditions)}"
        yield "WAIT FOR (READY)"
        yield ";ENDFOLD"

    def analogue(self):
        channel = self.dice.among(1, min(self.signals, 32))
        name = old_name(self.dice)
        volts = f"0.{self.dice.among(1, 9)}"
        title, value, hidden = self.dice.of((
            ("ANOUT ON", f" = {volts} * v + 0", "VANOUT_DYN"),
            ("ANOUT OFF", "", "VANOUT_DYN"),
            ("ANOUT", f" = {volts}", "VANOUT_STAT"),
        ))
        yield f";FOLD {title} {name}{value};%{{PE}}%{hidden}%P:CHANNEL_{channel},{volts}"
        yield f"ANOUT {channel} = {volts}"
        yield ";ENDFOLD"

    def own_fold(self):
        yield f";FOLD {self.dice.of(OWN_TITLES)}"
        yield f"STEP={self.number()}"
        yield ";ENDFOLD"

    def motion(self):
        self.point += 1
        yield f";FOLD PTP P{self.point} Vel={self.dice.among(1, 10)}0 %;%{{PE}}%P 2:P{self.point}"
        yield f"PTP XP{self.point}"
        yield ";ENDFOLD"

    def note(self):
        yield self.dice.of(NOTES)

    def block(self):
        kinds = (self.out, self.pulse, self.syn_out, self.syn_pulse, self.wait_in, self.wait_out,
                 self.wait, self.analogue, self.own_fold, self.motion, self.note)
        shares = (20, 6, 6, 4, 12, 4, 14, 8, 5, self.motions, 6)
        return self.dice.weighted(kinds, shares)()

    def laid_out(self, lines):
        """A block as its writer typed it: indented, seldom by a tab, seldom all in small letters."""
        indent = self.dice.weighted(("", "  ", "    ", "\t"), (30, 50, 16, 4))
        small = self.dice.chance(0.06)
        for line in lines:
            yield (indent + (line.lower() if small else line)) if line else ""


def program_name(dice, index):
    return f"{dice.of(STEPS)}_{index:03}"


def program(seed, index, shortest, longest, signals, motions):
    """The name of the program with this number, and its lines."""
    dice = Dice(f"{seed}/{index}")
    name = program_name(dice, index)
    programmer = Programmer(dice, signals, motions)
    lines = [f"DEF {name}()", f"; Zelle 7, Schritt {index}: geprüft und übergeben", "INT STEP"]
    length = dice.among(shortest, longest)
    while len(lines) < length - 4:
        lines += programmer.laid_out(programmer.block())
    lines += [""] * (length - 1 - len(lines))
    return name, lines + ["END"]


ASSIGNMENT_CLASSES = (("E", 24), ("A", 18), ("ANAE", 4), ("ANAA", 4), ("BINE", 4), ("BINA", 4),
                      ("P", 6))

# What such a file holds besides: lines that the harvest passes over, or reads in its own way.
ODD_ASSIGNMENTS = (
    "NICHT_BELEGT = E500",
    "KLEIN = e501 \\ ;klein geschrieben",
    "ZU_WEIT  =  E502 \\ ;zwei Leerzeichen",
    "NULL_VORN = E0503 \\ ;führende Null",
    "NULL_AUSGANG = A0504 \\ ;kein Signal",
    "MERKER = F505 \\ ;Merker stehen woanders",
    "MELDUNG = M506 \\ ;und Meldungen auch",
    "BREIT = E507    \\ ;viele Leerzeichen",
    "TABULATOR = E508\t\\ ;durch\tTabulatoren",
    "DOPPELT = E509 \\ ;die erste Zeile gilt",
    "DOPPELT_2 = E509 \\ ;die zweite nicht",
    "OHNE_TEXT = E510 \\ ;",
    ";|0511GANZ_VORN = E511 \\ ;Marke am Zeilenanfang",
)


def assignment(dice, letters, number):
    text = old_name(dice)
    symbol = f"{letters}_{number:03}"
    form = dice.weighted(("plain", "tight", "marker", "symbol"), (50, 15, 20, 15))
    if form == "tight":
        return f"{symbol}={letters}{number}\\;{text}"
    if form == "marker":
        return f"{symbol} = {letters}{number} \\ ;|{number:04}{text}"
    if form == "symbol":
        return f"{symbol} = {letters}{number} \\ ;K{number} ; {text}"
    return f"{symbol} = {letters}{number} \\ ;{text}"


def assignments(seed):
    dice = Dice(f"{seed}/assignments")
    yield "; Signalbelegung Zelle 7 / signal assignments of cell 7, a made-up plant"
    yield "; Änderungen nur nach Rücksprache"
    yield ""
    for letters, count in ASSIGNMENT_CLASSES:
        number = 0
        for _ in range(count):
            number += dice.among(1, 3)
            yield assignment(dice, letters, number)
        yield ""
    yield from ODD_ASSIGNMENTS


def write(path, lines):
    path.write_bytes("".join(line + LINE_END for line in lines).encode(CODE_PAGE))


def positive(text):
    number = int(text)
    if number < 1:
        raise argparse.ArgumentTypeError("must be 1 or more")
    return number


def length_range(text):
    shortest, _, longest = text.partition("-")
    pair = positive(shortest), positive(longest or shortest)
    if not 8 <= pair[0] <= pair[1]:
        raise argparse.ArgumentTypeError("must be two numbers such as 20-60, of 8 or more")
    return pair


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--count", type=positive, default=60, metavar="N",
                        help="so many programs (default: 60)")
    parser.add_argument("--lines", type=length_range, default=(20, 60), metavar="N-M",
                        help="lines of a program (default: 20-60)")
    parser.add_argument("--names", type=positive, default=40, metavar="N",
                        help="the signals of each class are numbered from 1 to N (default: 40)")
    parser.add_argument("--motions", type=positive, default=15, metavar="N",
                        help="so many motions to 85 other blocks (default: 15)")
    parser.add_argument("--seed", type=int, default=7, help="other programs (default: 7)")
    parser.add_argument("--output", type=Path, default=Path("programs"), metavar="DIR",
                        help="the programs' folder, made if it is missing (default: programs)")
    parser.add_argument("--assignments", type=Path, metavar="FILE",
                        help="write the customer's file of signal assignments there instead")
    return parser.parse_args()


def main():
    options = parse_arguments()
    if options.assignments:
        write(options.assignments, assignments(options.seed))
        return
    options.output.mkdir(parents=True, exist_ok=True)
    for index in range(1, options.count + 1):
        name, lines = program(options.seed, index, *options.lines, options.names,
                              options.motions)
        write(options.output / f"{name}.src", lines)


if __name__ == "__main__":
    main()
