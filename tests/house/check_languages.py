#!/usr/bin/env python3
"""Compares the texts of every language folder with the English ones, with the language table and
with the keys that the code asks for.

check_languages.py ROOT: prints one line per fault and exits 1 when there is any.
"""
import collections
import pathlib
import re
import sys
import unicodedata

SOURCE = "en.lproj"
CODE_FOLDERS = ("app", "base", "codecs", "controller", "output", "platform", "twain", "ui", "viewer")
ENTRY = re.compile(r'^"((?:[^"\\]|\\.)*)" = "((?:[^"\\]|\\.)*)";(?: (/\*.*\*/))?$')
COMMENT = re.compile(r"^/\*.*\*/$")
TABLE_ROW = re.compile(r'\{"([A-Za-z-]+\.lproj)",')
PLACEHOLDER = re.compile(r"%(?:\d+\$)?[@a-zA-Z]|%")
BRAND_KEY = re.compile(r"^(About|Hide|Quit)([A-Z].*)$")
# How the code names a key: the last text of a lookup, a row of a table of keys, a named field.
KEY_USES = [
    re.compile(r'\blocalizedString\(\s*\w+\s*,\s*"(\w+)"'),
    re.compile(r'\blaunchText\([^;]*?"(\w+)"\s*\)'),
    re.compile(r'\btext\(\s*"(\w+)"\s*\)'),
    re.compile(r'\btextOf\(\s*\w+\s*,\s*"(\w+)"'),
    re.compile(r'\bshow(?:Message|Status)\(\s*"(\w+)"'),
    re.compile(r'\bshowStatus\([^;]*\?\s*"(\w+)"'),
    re.compile(r'\bshowStatus\([^;]*\?\s*"\w+"\s*:\s*"(\w+)"'),
    re.compile(r'\bshowFailure\([^;]*"(\w+)"\s*\)'),
    re.compile(r'\.(?:about|hide|quit)Key = "(\w+)"'),
    re.compile(r'\{twain::TWCC_\w+,\s*"(\w+)"\}'),
    re.compile(r'\botherOptionKeys\{"(\w+)"'),
    re.compile(r'\bkey != "(\w+)"'),
]

# Widest text, in columns: a letter takes one, a Chinese, Japanese or Korean character two.
TOOLBAR, MENU, BUTTON, TITLE, STATUS, TOOLTIP, MESSAGE = 18, 24, 16, 44, 52, 120, 190
LIMITS = {
    "Setup": 16, "Scan": 14, "FileFormat": TOOLBAR,
    "Save": MENU, "FitPage": MENU, "ActualPage": MENU,
    "File": 12, "Options": 16, "Window": 14, "Quit": MENU, "Minimize": MENU, "Language": MENU, "Others": MENU,
    "ShowInFinder": 72, "HideOthers": 28, "ShowAll": 28,
    "OK": BUTTON, "Cancel": BUTTON, "Close": BUTTON, "Exit": BUTTON, "szWarning": TITLE,
    "LookingForScanners": TITLE, "SelectScannerModel": TITLE, "ScannerModel": 32, "ChooseFolderTitle": TITLE,
    "NoPagesTitle": TITLE, "NoPagesHint": 110, "OpenFolder": MENU,
}
BRAND_TEXT = 24  # beside the product's name

# Marks that a language writes in its own way. Quotation marks come as opening and closing one.
QUOTES = {
    "zh-Hant": "「」", "zh-Hans": "“”", "ja": "「」", "ko": "‘’", "de": "„“", "fr": "«»", "es": "«»", "it": "«»",
    "cs": "„“", "pt-BR": "“”", "ru": "«»", "pt": "«»", "pl": "„”", "bg": "„“", "da-DK": "“”", "nl": "‘’",
    "fi": "””", "fr-CA": "«»", "el": "«»", "hu": "„”", "nb": "«»", "ro": "„”", "sk": "„“", "sv": "””",
    "tr": "“”", "ar": "«»",
}
ALL_QUOTES = set("«»„“”‟‘‚‹›「」『』［］")
APOSTROPHE = "’"
NO_BREAK_SPACES = "\u00a0\u202f"
SPACED_QUOTES = {"fr", "fr-CA"}  # a no-break space inside the quotation marks
SPACED_COLON = {"fr", "fr-CA"}
SPACED_SIGNS = {"fr"}  # ; ! ? too
WIDE_PUNCTUATION = {"zh-Hant", "zh-Hans", "ja"}
SPACED_ELLIPSIS = {"de"}
ARABIC_COMMA_LANGUAGES = {"ar"}
SCRIPTS = {"zh-Hant": "CJK", "zh-Hans": "CJK", "ja": ("CJK", "HIRAGANA", "KATAKANA"), "ko": "HANGUL", "ru": "CYRILLIC",
           "bg": "CYRILLIC", "el": "GREEK", "ar": "ARABIC"}
# Words that are the same in English and in the language.
SAME_AS_ENGLISH = {
    "StatusPages": {"fr", "fr-CA"},
    "StatusName": {"da-DK", "de", "nb", "nl", "pt-BR", "sv"},
    "File": {"it"},
    "Options": {"fr", "fr-CA"},
    "Scan": {"da-DK", "nl"},
}


class Texts:
    """One Localizable.strings: keys in order, their texts, and what stands between them."""

    def __init__(self, path):
        self.faults, self.values, self.layout = [], {}, []
        data = path.read_bytes()
        if data.startswith((b"\xef\xbb\xbf", b"\xff\xfe", b"\xfe\xff")):
            self.faults.append("begins with a byte-order mark")
        try:
            self.text = data.decode("utf-8")
        except UnicodeDecodeError as error:
            self.text = data.decode("utf-8", "replace")
            self.faults.append(f"is not UTF-8: {error}")
        self.check_characters()
        self.read()

    def check_characters(self):
        if unicodedata.normalize("NFC", self.text) != self.text:
            self.faults.append("holds characters that are not composed (NFC)")
        for character in sorted(set(self.text) - {"\n"}):
            if unicodedata.category(character) in ("Cc", "Cf", "Cs", "Co", "Cn"):
                self.faults.append(f"holds the control or unassigned character U+{ord(character):04X}")
        if not self.text.endswith("\n") or self.text.endswith("\n\n"):
            self.faults.append("does not end with one line end")

    def read(self):
        for number, line in enumerate(self.text.split("\n")[:-1], 1):
            entry = ENTRY.match(line)
            if entry is None:
                self.layout.append(line)
                if line and not COMMENT.match(line):
                    self.faults.append(f"line {number} is neither an entry nor a comment")
                continue
            key, value, remark = entry.groups()
            self.layout.append((key, remark))
            if key in self.values:
                self.faults.append(f'"{key}" stands twice')
            if re.search(r'\\[^"\\n]', value):
                self.faults.append(f'"{key}" holds an escape other than a quotation mark, a backslash or a line end')
            self.values[key] = re.sub(r"\\(.)", lambda m: "\n" if m[1] == "n" else m[1], value)


def columns(text):
    return sum(0 if unicodedata.combining(c) else 2 if unicodedata.east_asian_width(c) in "WF" else 1 for c in text)


def limit_of(key):
    if key in LIMITS:
        return LIMITS[key]
    if key.startswith("Status"):
        return STATUS
    if key.endswith(("Help", "Name")):
        return TOOLTIP
    return MESSAGE


def product_of(english_value):
    return english_value.split(" ", 1)[1]


def without_code(text):
    return re.sub(r"//[^\n]*|/\*.*?\*/", "", text, flags=re.S)


def keys_of_code(root):
    """(keys that lookups name, every text literal of the code)"""
    named, literals = {}, set()
    for folder in CODE_FOLDERS:
        for path in sorted((root / folder).rglob("*.[ch]*")):
            if path.suffix not in (".cpp", ".h"):
                continue
            code = without_code(path.read_text(encoding="utf-8"))
            literals |= set(re.findall(r'"(\w+)"', code))
            for use in KEY_USES:
                for key in use.findall(code):
                    named.setdefault(key, path.relative_to(root).as_posix())
    return named, literals


def check_code(root, english):
    named, literals = keys_of_code(root)
    for key, path in sorted(named.items()):
        if key not in english:
            yield f'{path}: asks for "{key}", which has no text'
    for key in english:
        if key not in literals:
            yield f'{SOURCE}: "{key}" is used nowhere'


def check_keys(english, texts):
    for key in english.values:
        if key not in texts.values:
            yield f'"{key}" is missing'
    for key in texts.values:
        if key not in english.values:
            yield f'"{key}" is unknown'
    if set(texts.values) == set(english.values) and texts.layout != english.layout:
        place = next(i for i, (a, b) in enumerate(zip(texts.layout + [None], english.layout + [None]), 1) if a != b)
        yield f"line {place}: order, comments or blank lines differ from the English file"


def check_text(language, key, english, value):
    if not value.strip() or value != value.strip():
        yield "is empty or has blanks around it"
    if "  " in value:
        yield "has two blanks in a row"
    if PLACEHOLDER.findall(value) != PLACEHOLDER.findall(english):
        yield f"has the placeholders {PLACEHOLDER.findall(value)} instead of {PLACEHOLDER.findall(english)}"
    if value.count("\n") != english.count("\n"):
        yield "has other line ends than the English text"
    brand = BRAND_KEY.match(key) if key != "HideOthers" else None
    limit = BRAND_TEXT + len(product_of(english)) if brand else limit_of(key)
    if columns(value) > limit:
        yield f"takes {columns(value)} columns, at most {limit}"
    if brand and product_of(english) not in value:
        yield f'does not name "{product_of(english)}"'
    if language != "en" and not brand and value == english and not may_be_english(language, key):
        yield "is the English text"


def may_be_english(language, key):
    return key == "OK" or language in SAME_AS_ENGLISH.get(key, ())


def check_marks(language, english, value):
    if "..." in value:
        yield "has three dots instead of an ellipsis"
    if value.endswith("…") != english.endswith("…"):
        yield "ends with an ellipsis where English does not, or the other way round"
    if language in SPACED_ELLIPSIS and re.search(r"[^\u00a0]…", value):
        yield "wants a no-break space before the ellipsis"
    if '"' in value or "'" in value or "`" in value or "´" in value:
        yield "has a straight quotation mark or apostrophe"
    if english.endswith(":") and value[-1] not in ":：":
        yield "does not end with a colon"
    for mark, needed in ((":", SPACED_COLON), (";", SPACED_SIGNS), ("!", SPACED_SIGNS), ("?", SPACED_SIGNS)):
        if language in needed and re.search(f"[^{NO_BREAK_SPACES}]{re.escape(mark)}", value):
            yield f'wants a no-break space before "{mark}"'
    if language in WIDE_PUNCTUATION and re.search(r"[^\x00-\x7f][,:;!?]", value):
        yield "has narrow punctuation after a wide character"
    if language in ARABIC_COMMA_LANGUAGES and re.search(r"[,;?]", value):
        yield "has Latin punctuation"
    yield from check_quotes(language, value)


def check_quotes(language, value):
    if language not in QUOTES:
        return
    opening, closing = QUOTES[language]
    strange = {c for c in value if c in ALL_QUOTES} - {opening, closing}
    if strange:
        yield f"has the quotation marks {''.join(sorted(strange))} instead of {opening}{closing}"
    quotes = [c for i, c in enumerate(value) if c in (opening, closing) and not is_apostrophe(value, i)]
    if quotes != [opening, closing] * (len(quotes) // 2):
        yield "has quotation marks that do not pair"
    if language in SPACED_QUOTES and re.search(f"{opening}[^{NO_BREAK_SPACES}]|[^{NO_BREAK_SPACES}]{closing}", value):
        yield "wants no-break spaces inside the quotation marks"


def is_apostrophe(value, i):
    beside = value[max(i - 1, 0):i] + value[i + 1:i + 2]
    return value[i] == APOSTROPHE and len(beside) == 2 and all(unicodedata.name(c, "").startswith("LATIN") for c in beside)


def check_script(language, value):
    """A text in the language's script, but for names, placeholders and OK."""
    scripts = SCRIPTS.get(language)
    if scripts is None or value in ("OK", "ОК"):
        return
    if not any(unicodedata.name(c, "").startswith(scripts) for c in value):
        yield "has no letter of the language's script"


def check_folder(language, english, texts):
    yield from texts.faults
    yield from check_keys(english, texts)
    for key, value in texts.values.items():
        if key not in english.values or not value:
            if not value:
                yield f'"{key}" is empty'
            continue
        source = english.values[key]
        faults = list(check_text(language, key, source, value))
        if language != "en":
            faults += check_marks(language, source, value)
            faults += check_script(language, value)
        yield from (f'"{key}" {fault}: {value}' for fault in faults)
    yield from check_relations(texts.values)


def check_relations(values):
    """What one text says about another, and what must not be the same."""
    if values.get("Scan", "") not in values.get("NoPagesHint", ""):
        yield '"NoPagesHint" does not name the Scan button'
    for group in (("File", "Options", "Window"), ("Save", "Setup", "Scan", "Quit"), ("Language", "Others"),
                  ("OK", "Cancel", "Close"), ("HideOthers", "ShowAll")):
        for text, count in collections.Counter(values.get(key) for key in group).items():
            if count > 1 and text is not None:
                yield f'"{text}" stands for several of {", ".join(group)}'


def check_folders(root, english):
    resources = root / "resources"
    listed = TABLE_ROW.findall((root / "ui/LanguageTable.h").read_text(encoding="utf-8"))
    present = sorted(path.name for path in resources.glob("*.lproj"))
    yield from (f"{name}: in no row of the language table" for name in present if name not in listed)
    for name in listed:
        path = resources / name / "Localizable.strings"
        if not path.is_file():
            yield f"{name}: no Localizable.strings"
            continue
        language = name.removesuffix(".lproj")
        texts = english if name == SOURCE else Texts(path)
        yield from (f"{name}: {fault}" for fault in check_folder(language, english, texts))


def check(root):
    english = Texts(root / "resources" / SOURCE / "Localizable.strings")
    yield from check_code(root, english.values)
    yield from check_folders(root, english)


def main():
    faults = list(check(pathlib.Path(sys.argv[1])))
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
