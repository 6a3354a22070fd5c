#!/usr/bin/env python3
"""Feeds check_languages.py copies of the real texts with one fault each and expects it to name it.

check_languages_test.py ROOT
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
from check_languages import Texts, check, check_folders

CHECK = pathlib.Path(__file__).with_name("check_languages.py")
ROOT = pathlib.Path(sys.argv[1])
DE, FR, JA, EN = (f"resources/{name}.lproj/Localizable.strings" for name in ("de", "fr", "ja", "en"))
TABLE = "ui/LanguageTable.h"
CODE = "ui/Titles.cpp"


def replaced(old, new):
    def change(data):
        assert old.encode() in data, old
        return data.replace(old.encode(), new.encode(), 1)
    return change


def line_swapped(key):
    def change(data):
        lines = data.split(b"\n")
        place = next(i for i, line in enumerate(lines) if line.startswith(f'"{key}"'.encode()))
        lines[place], lines[place + 1] = lines[place + 1], lines[place]
        return b"\n".join(lines)
    return change


def value(key, text):
    return lambda data: re.sub(f'(?m)^"{key}" = ".*?";'.encode(), f'"{key}" = "{text}";'.encode(), data, count=1)


# Name of the fault -> file, change, and a part of the line that must name it.
FAULTS = {
    "missing key": (DE, replaced('"Cancel" = "Abbrechen";\n', ""), 'de.lproj: "Cancel" is missing'),
    "unknown key": (DE, replaced('"Cancel"', '"Cancle"'), '"Cancle" is unknown'),
    "doubled key": (DE, replaced('"OK" = "OK";', '"OK" = "OK";\n"OK" = "Gut";'), '"OK" stands twice'),
    "other order": (DE, line_swapped("OK"), "order, comments or blank lines differ"),
    "other comment": (DE, replaced("/* Messages */", "/* Meldungen */"), "order, comments or blank lines differ"),
    "lost semicolon": (DE, replaced('"Abbrechen";', '"Abbrechen"'), "is neither an entry nor a comment"),
    "lost placeholder": (DE, value("StatusScanning", "Seite wird gescannt\u00a0…"), '"StatusScanning" has the placeholders'),
    "other placeholder": (JA, value("StatusSaving", "%d を保存しています…"), '"StatusSaving" has the placeholders'),
    "too long for the toolbar": (DE, value("FileFormat", "Ordner für gescannte Seiten"), '"FileFormat" takes 27 columns'),
    "wide characters count twice": (JA, value("FileFormat", "保存先のフォルダー名"), '"FileFormat" takes 20 columns'),
    "lost product": (DE, value("AboutLumo", "Über Lumo"), 'does not name "Lumo Docklet"'),
    "empty": (DE, value("Close", ""), '"Close" is empty'),
    "left in English": (DE, value("NoPagesTitle", "No pages yet"), '"NoPagesTitle" is the English text'),
    "left in Latin letters": (JA, value("Options", "Options…"), "no letter of the language's script"),
    "three dots": (FR, value("StatusWaiting", "En attente du scanner..."), "three dots"),
    "straight apostrophe": (FR, value("NoSaveImage", "La page n'a pas pu être enregistrée."), "straight quotation mark"),
    "escaped straight quotes": (FR, value("NoPagesHint", r'Cliquez sur \\"Numériser\\".'), "straight quotation mark"),
    "quotes of another language": (DE, value("NoPagesHint", "Klicken Sie auf «Scannen»."), "instead of „“"),
    "quotes without their pair": (DE, value("NoPagesHint", "Klicken Sie auf „Scannen."), "do not pair"),
    "narrow space in French": (FR, value("StatusPages", "Pages : %d"), 'no-break space before ":"'),
    "tight ellipsis in German": (DE, value("StatusSaving", "%@ wird gespeichert…"), "no-break space before the ellipsis"),
    "narrow punctuation": (JA, value("ScannerModel", "スキャナーの機種:"), "narrow punctuation"),
    "hint names another button": (DE, value("Scan", "Einlesen"), "does not name the Scan button"),
    "two menus of one name": (DE, value("Options", "Fenster"), '"Fenster" stands for several'),
    "byte-order mark": (DE, lambda data: b"\xef\xbb\xbf" + data, "byte-order mark"),
    "Latin-1": (DE, lambda data: data.decode().replace("…", "").replace("„", "").replace("“", "").encode("latin-1"), "is not UTF-8"),
    "decomposed": (DE, replaced("ü", "u\u0308"), "not composed"),
    "control character": (DE, replaced("Abbrechen", "Abbrechen\u200b"), "U+200B"),
    "carriage returns": (DE, lambda data: data.replace(b"\n", b"\r\n"), "U+000D"),
    "folder without a row": (TABLE, replaced('"de.lproj"', '"gd.lproj"'), "de.lproj: in no row"),
    "row without a folder": (TABLE, replaced('"de.lproj"', '"gd.lproj"'), "gd.lproj: no Localizable.strings"),
    "unknown key in code": (CODE, replaced('"Window"', '"Windows"'), 'ui/Titles.cpp: asks for "Windows"'),
    "key used nowhere": (CODE, replaced('"Window"', '"Setup"'), 'en.lproj: "Window" is used nowhere'),
}


def exit_code(root):
    return subprocess.run([sys.executable, CHECK, root], capture_output=True).returncode


def main():
    wrong = []
    with tempfile.TemporaryDirectory() as folder:
        tree = pathlib.Path(folder)
        for name in ("app", "base", "codecs", "controller", "output", "platform", "twain", "ui", "viewer", "resources"):
            shutil.copytree(ROOT / name, tree / name, ignore=shutil.ignore_patterns("*.png", "*.svg"))
        if exit_code(tree) != 0:
            wrong.append("the tree as it is: " + "\n".join(check(tree)))
        for name, (path, change, expected) in FAULTS.items():
            whole = (tree / path).read_bytes()
            (tree / path).write_bytes(change(whole))
            said = list(check(tree) if path == CODE else check_folders(tree, Texts(tree / EN)))
            if not any(expected in line for line in said):
                wrong.append(f"{name}: {said}")
            (tree / path).write_bytes(whole)
        (tree / DE).unlink()
        if exit_code(tree) != 1:
            wrong.append("a missing folder ends well")
    print("\n".join(wrong))
    return 1 if wrong else 0


sys.exit(main())
