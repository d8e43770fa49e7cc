#!/usr/bin/env python3
"""Makes the long names of a made-up robot cell, as a text file that nomira imports.

The same options always give the same bytes. docs/text-file.md tells the format.
"""

import argparse
import random
import sys
from dataclasses import dataclass

LINE_END = "\r\n"
CODE_PAGE = "cp1252"
LONGEST = 60  # characters of a name


@dataclass(frozen=True)
class SignalClass:
    title: str
    standard: str  # what stands before the number in a standard installation's file
    customer: str  # the same for the customer "VW"
    digits: int  # a number has one to this many
    size: int  # how many a usual controller has
    kind: str  # which names suit it, a key of NAMES


# In the order of the export. A standard installation's file gives a process parameter by its bare
# number.
CLASSES = (
    SignalClass("Digitale Eingänge / digital inputs", "IN_", "E", 4, 1024, "input"),
    SignalClass("Digitale Ausgänge / digital outputs", "OUT_", "A", 4, 1024, "output"),
    SignalClass("Meldungen / notices", "NoticeText", "M", 3, 32, "notice"),
    SignalClass("Zähler / counters", "CounterText", "I", 2, 32, "counter"),
    SignalClass("Merker / flags", "FlagText", "F", 4, 1024, "flag"),
    SignalClass("Zeiten / timers", "TimerText", "T", 2, 32, "timer"),
    SignalClass("Analoge Eingänge / analogue inputs", "ANIN_", "ANAE", 2, 32, "analogue"),
    SignalClass("Analoge Ausgänge / analogue outputs", "ANOUT_", "ANAA", 2, 32, "analogue"),
    SignalClass("Binäre Eingänge / binary inputs", "BININ_", "BINE", 2, 20, "binary"),
    SignalClass("Binäre Ausgänge / binary outputs", "BINOUT_", "BINA", 2, 20, "binary"),
    SignalClass("Prozessparameter / process parameters", "", "P", 3, 256, "parameter"),
    SignalClass("Schweißstart / welding start channels", "Start1", "Start1", 1, 8, "welding"),
    SignalClass("Schweißen / welding channels", "Weld1", "Weld1", 1, 8, "welding"),
    SignalClass("Endkrater / crater channels", "CraterChannel1", "CraterChannel1", 1, 8, "welding"),
)

# German first, English second; a name keeps to one of them, as its writer did.
LANGUAGES = (0, 1)
LANGUAGE_SHARES = (60, 40)

PLACES = (
    ("Station 10", "Station 20", "Station 30", "Drehtisch", "Einlegeplatz", "Vorrichtung 1",
     "Vorrichtung 2", "Ablage links", "Ablage rechts", "Roboter 2", "Schweißtisch"),
    ("station 40", "infeed", "outfeed", "turntable", "cell 7", "fixture 3", "loading bay",
     "robot 1"),
)

# Each kind of signal, by language: what speaks (with {n} for a small number), and what it says.
NAMES = {
    "input": (
        (("Greifer {n}", "Spanner {n}", "Schutztür {n}", "Stößel {n}", "Förderer {n}",
          "Schweißzange {n}", "Düsenstation", "Überlastsicherung {n}", "Rückschlagventil {n}",
          "Werkzeugwechsler", "Öffner {n}", "Kühlkreis {n}"),
         ("geöffnet", "geschlossen", "in Grundstellung", "vorn", "zurückgefahren", "belegt",
          "frei", "Störung", "Druck > 5 bar", "entriegelt", "überwacht")),
        (("gripper {n}", "clamp {n}", "safety gate {n}", "conveyor {n}", "weld gun {n}",
          "part sensor {n}", "light curtain {n}", "operator's panel {n}", "tool changer"),
         ("opened", "closed", "in home position", "advanced", "retracted", "part present", "fault",
          "pressure ok", "unlocked")),
    ),
    "output": (
        (("Greifer {n}", "Spanner {n}", "Ventil {n}", "Ventilinsel {n} Spule 2", "Förderer {n}",
          "Schweißzange {n}", "Kühlwasser Kreis {n}", "Signalsäule", "Werkzeugwechsler",
          "Zuführung {n}", "Ölpumpe {n}"),
         ("öffnen", "schließen", "vor", "zurück", "einschalten", "ausschalten", "verriegeln",
          "freigeben", "quittieren")),
        (("gripper {n}", "clamp {n}", "valve {n}", "conveyor {n}", "weld gun {n}", "stack light",
          "tip dresser", "safety gate {n}"),
         ("open", "close", "advance", "retract", "enable", "reset", "lock", "start")),
    ),
    "notice": (
        (("Bitte Elektrode {n} wechseln,", "Füllstand Öl prüfen,", "Schutztür {n} schließen,",
          "Bauteil {n} fehlt,", "ÖLSTAND NIEDRIG,", "Änderung am Programm,", "Übergabe gestört,"),
         ("Anlage steht", "Werker rufen", "danach quittieren", "Instandhaltung rufen")),
        (("check clamp {n},", "close safety gate {n},", "replace weld cap {n},",
          "wrong part type {n},"),
         ("call maintenance", "press reset", "cell stopped", "see operator's manual")),
    ),
    "counter": (
        (("Bauteile", "Schweißpunkte Zange {n}", "Gutteile", "Ausschuss", "Fräszyklen", "Takte"),
         ("gesamt", "Schicht", "seit Kappenwechsel", "Typ {n}")),
        (("parts", "weld spots gun {n}", "rejects", "tip dresses", "cycles"),
         ("total", "this shift", "since reset")),
    ),
    "flag": (
        (("Folge {n}", "Schritt {n}", "Typ {n}", "Freigabe {n}", "Anforderung {n}",
          "Verriegelung {n}", "Störung Spanner {n}", "Störung Förderer {n}", "Übergabe {n}"),
         ("aktiv", "fertig", "angewählt", "gültig", "gelöscht", "gespeichert", "läuft")),
        (("sequence {n}", "step {n}", "type {n}", "request {n}", "interlock {n}",
          "collision zone {n}"),
         ("active", "done", "selected", "valid", "cleared", "running")),
    ),
    "timer": (
        (("Überwachung Spanner {n}", "Nachlauf Kühlung {n}", "Verzögerung Greifer {n}",
          "Laufzeit Förderer {n}"),
         ("öffnen", "schließen", "je Zyklus")),
        (("delay clamp {n}", "watchdog conveyor {n}", "purge time gun {n}"),
         ("open", "close", "per cycle")),
    ),
    "analogue": (
        (("Schweißstrom Zange {n}", "Drahtvorschub {n}", "Gasdurchfluss", "Öltemperatur °C",
          "Klebermenge Düse {n}"),
         ("Istwert", "Sollwert", "Grenzwert")),
        (("weld current gun {n}", "wire feed {n}", "glue flow nozzle {n}", "air pressure"),
         ("actual", "setpoint", "limit")),
    ),
    "binary": (
        (("Programmnummer", "Typnummer", "Störungscode Zange {n}", "Palettenplatz",
          "Schweißprogramm"),
         ("von SPS", "an SPS", "Rückmeldung")),
        (("program number", "type code", "weld schedule gun {n}", "pallet position"),
         ("from PLC", "to PLC", "echo")),
    ),
    "parameter": (
        (("Elektrodenkraft Punkt {n}", "Vorhaltezeit Punkt {n}", "Stromstärke Punkt {n}",
          "Kleberaupe {n} Breite", "Bördelweg {n}"),
         ("oben", "unten", "außen", "innen", "Grenzwert")),
        (("squeeze time spot {n}", "weld force spot {n}", "bead {n} speed"),
         ("upper limit", "lower limit", "default")),
    ),
    "welding": (
        (("Kehlnaht {n}", "Stumpfnaht {n}", "Heftpunkt {n}", "Längsnaht {n}"),
         ("dünnes Blech", "dickes Blech", "Wurzellage", "Decklage")),
        (("fillet weld {n}", "butt weld {n}", "tack weld {n}"),
         ("thin sheet", "thick sheet", "root pass", "cover pass")),
    ),
}
SPARE = ("Reserve", "spare")

# Lines whose first word is no key anywhere.
COMMENTS = (
    "; Schaltplan Blatt 114, geändert nach Abnahme",
    "; Reserve ab hier",
    "// checked on site, second shift",
    "Anmerkung: Belegung laut E-Plan, Stand März",
    "Hinweis Umbau Förderstrecke, siehe Änderungsliste",
    "TODO names of the new fixture",
    "--------------------------------------------------",
)


def key(signal_class, form, number):
    prefix = signal_class.customer if form == "customer" else signal_class.standard
    return f"{prefix}{number}"


def name_for(rng, kind):
    """A name of at most LONGEST characters; about half of them tell the place too."""
    language = rng.choices(LANGUAGES, LANGUAGE_SHARES)[0]
    if rng.random() < 0.02:
        return SPARE[language]
    subjects, predicates = NAMES[kind][language]
    words = [rng.choice(subjects), rng.choice(predicates)]
    if rng.random() < 0.5:
        words.append(rng.choice(PLACES[language]))
    name = " ".join(words).format(n=rng.randint(1, 24))
    return name if len(name) <= LONGEST else " ".join(words[:-1]).format(n=rng.randint(1, 24))


def separator_for(rng):
    return rng.choices((" ", "\t", "   "), (90, 6, 4))[0]


def every_key(rng, form):
    """Each key of the scheme once, with a text and no frills: the largest set there is."""
    for signal_class in CLASSES:
        for number in range(10**signal_class.digits):
            yield f"{key(signal_class, form, number)} {name_for(rng, signal_class.kind)}"


def keys_per_class(count):
    """`count` shared out in proportion to the sizes; what a class can't take is left out."""
    total = sum(signal_class.size for signal_class in CLASSES)
    for signal_class in CLASSES:
        share = max(1, round(count * signal_class.size / total))
        yield signal_class, min(share, 10**signal_class.digits)


def numbers_in_use(rng, signal_class, count):
    """Ascending, with gaps, from 1 on as far as the class's usual size goes."""
    first_free = max(signal_class.size, count) + 1
    numbers = range(1, first_free) if first_free <= 10**signal_class.digits else range(count)
    return sorted(rng.sample(numbers, count))


def class_block(rng, form, signal_class, count):
    """One class's lines as an engineer keeps them, with what goes wrong in such files."""
    yield f"; {signal_class.title}"
    numbers = numbers_in_use(rng, signal_class, count)
    for number in numbers:
        text = name_for(rng, signal_class.kind)
        word = key(signal_class, form, number)
        chance = rng.random()
        if chance < 0.012:
            yield word  # a spare signal without a name
        elif chance < 0.017:
            yield f"{word} {text}  "  # blanks behind the text
        else:
            yield f"{word}{separator_for(rng)}{text}"
        chance = rng.random()
        if chance < 0.004:
            yield rng.choice(COMMENTS)
        elif chance < 0.007:
            yield f"{key(signal_class, form, str(number) + '0000')} {text}"  # too many digits
        elif chance < 0.010:
            again = key(signal_class, form, rng.choice(numbers))
            yield f"{again} {name_for(rng, signal_class.kind)}"  # a key that is there already
        elif chance < 0.011:
            yield f"  {key(signal_class, form, number)} {text}"  # indented: the key joins the text
    yield ""


def keys_of_the_other_form(rng, form):
    """Keys that the other kind of installation reads, or that only the export writes."""
    yield "; Übernahme aus der alten Zelle / taken over from the old cell"
    if form == "customer":
        words = ("IN_17", "OUT_230", "NoticeText4", "BININ_3", "21")
    else:
        words = ("E17", "A230", "M4", "BINE3", "ZTQXProcParam_21")
    for word in words:
        yield f"{word} {name_for(rng, 'flag')}"
    yield ""


def cell(rng, form, count):
    yield "; Langtexte Zelle 7, Rohbau Seitenwand links"
    yield "; long names of cell 7, a made-up plant"
    yield ""
    for signal_class, share in keys_per_class(count):
        yield from class_block(rng, form, signal_class, share)
    yield from keys_of_the_other_form(rng, form)


REGISTRY_VALUES = {
    r"HKEY_LOCAL_MACHINE\Software\Orvo\Version": {
        "standard": {"InstallationDir": r"C:\TQX"},
        "customer": {"Customer": "VW", "InstallationDir": r"C:\TQX"},
    },
    r"HKEY_LOCAL_MACHINE\Software\Orvo\Options\ASCII": {
        "standard": {},
        "customer": {"Name": "ASCII interface"},
    },
    r"HKEY_CURRENT_USER\Software\Orvo\Database": {
        "standard": {"Language": "409"},
        "customer": {"Language": "407"},
    },
    r"HKEY_CURRENT_USER\Software\Nomira Program Settings\Longname": {
        "standard": {"TextFileExtention": "*.txt", "TextFileName": "SymName"},
        "customer": {"TextFileExtention": "*.txt", "TextFileName": "SymName"},
    },
}


def registry_lines(form):
    yield "REGEDIT4" if form == "standard" else "Windows Registry Editor Version 5.00"
    for registry_key, forms in REGISTRY_VALUES.items():
        if not forms[form]:
            continue
        yield ""
        yield f"[{registry_key}]"
        for name, value in forms[form].items():
            escaped = value.replace("\\", "\\\\")
            yield f'"{name}"="{escaped}"'
    yield ""


def registry_bytes(form):
    """The older export is in the 8-bit page, the newer one in UTF-16 with a byte-order mark."""
    text = "".join(line + LINE_END for line in registry_lines(form))
    return text.encode(CODE_PAGE) if form == "standard" else b"\xff\xfe" + text.encode("utf-16-le")


def names_bytes(options):
    rng = random.Random(options.seed)
    lines = (every_key(rng, options.form) if options.all
             else cell(rng, options.form, options.count))
    return "".join(line + LINE_END for line in lines).encode(CODE_PAGE)


def positive(text):
    number = int(text)
    if number < 1:
        raise argparse.ArgumentTypeError("must be 1 or more")
    return number


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--form", choices=("standard", "customer"), default="standard",
                        help="whose keys: a standard installation's, or the customer VW's"
                             " (default: standard)")
    what = parser.add_mutually_exclusive_group()
    what.add_argument("--count", type=positive, default=3000, metavar="N",
                      help="about so many lines, shared out among the classes by their sizes"
                           " (default: 3000)")
    what.add_argument("--all", action="store_true",
                      help="every key that there can be, each once and with a text, instead")
    what.add_argument("--registry", action="store_true",
                      help="the registry export of such an installation instead: REGEDIT4 for the"
                           " standard form, version 5.00 for the customer's")
    parser.add_argument("--seed", type=int, default=7, help="another cell (default: 7)")
    parser.add_argument("--output", default="-", metavar="FILE",
                        help="where to, - for the standard output (default)")
    return parser.parse_args()


def main():
    options = parse_arguments()
    data = registry_bytes(options.form) if options.registry else names_bytes(options)
    if options.output == "-":
        sys.stdout.buffer.write(data)
        return
    with open(options.output, "wb") as file:
        file.write(data)


if __name__ == "__main__":
    main()
