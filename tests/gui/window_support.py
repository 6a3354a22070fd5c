"""What the tests of the window share."""
import dataclasses
import os
import pathlib
import plistlib
import re
import struct
import unittest

from driver import Home, Paperline, Tree, wait

BUNDLE = os.environ["PAPERLINE_BUNDLE"]


@dataclasses.dataclass(frozen=True)
class Format:
    name: str
    suffix: str
    start: bytes
    joins: bool = False


FORMATS = [Format("BMP", ".bmp", b"BM"), Format("JPG", ".jpg", b"\xff\xd8\xff"), Format("GIF", ".gif", b"GIF8"),
           Format("PDF", ".pdf", b"%PDF-"), Format("Multi-Page PDF", ".pdf", b"%PDF-", True),
           Format("TIF", ".tif", b"II*\0"), Format("Multi-Page TIF", ".tif", b"II*\0", True),
           Format("PNG", ".png", b"\x89PNG")]


def read_plist(path):
    with open(path, "rb") as file:
        return plistlib.load(file)


def strings_of(tree, language):
    """Key and text of a language folder; nothing when the folder is not there."""
    path = tree.bundle / f"Contents/Resources/{language}.lproj/Localizable.strings"
    if not path.exists():
        return {}
    return dict(re.findall(r'^"([^"]+)" = "((?:[^"\\]|\\.)*)";', path.read_text("utf-8"), re.M))


def bitmap(width, height, rgb, horizontal_per_metre=0, vertical_per_metre=0):
    """A BMP file of 24 bits from rows of red, green, blue."""
    stride = (width * 3 + 3) & ~3
    rows = []
    for y in reversed(range(height)):
        row = bytearray(rgb[y * width * 3:(y + 1) * width * 3])
        row[0::3], row[2::3] = row[2::3], row[0::3]
        rows.append(bytes(row).ljust(stride, b"\0"))
    header = struct.pack("<IiiHHIIiiII", 40, width, height, 1, 24, 0, stride * height, horizontal_per_metre,
                         vertical_per_metre, 0, 0)
    return b"BM" + struct.pack("<IHHI", 54 + stride * height, 0, 0, 54) + header + b"".join(rows)


class Rgb:
    """A picture taken from the screen."""

    def __init__(self, width, height, pixels):
        self.width, self.height, self.pixels = width, height, pixels

    def at(self, x, y):
        offset = 3 * (y * self.width + x)
        return tuple(self.pixels[offset:offset + 3])

    def extent(self, wanted):
        """left, top, right, bottom of the pixels of wanted colours, right and bottom one past the last; none: None."""
        colours = {colour for colour in set(zip(*[iter(self.pixels)] * 3)) if wanted(*colour)}
        rows = [set() for _ in range(self.height)]
        left, right, top, bottom = self.width, 0, None, 0
        for y in range(self.height):
            line = list(zip(*[iter(self.pixels[3 * y * self.width:3 * (y + 1) * self.width])] * 3))
            hits = [x for x, colour in enumerate(line) if colour in colours] if colours else []
            if hits:
                top = y if top is None else top
                bottom = y + 1
                left, right = min(left, hits[0]), max(right, hits[-1] + 1)
        return None if top is None else (left, top, right, bottom)

    def colours(self):
        return len(set(zip(*[iter(self.pixels)] * 3)))


class WindowTest(unittest.TestCase):
    """A copy of the program and a home of its own for every test."""

    def setUp(self):
        self.tree = Tree(BUNDLE)
        self.addCleanup(self.tree.remove)
        self.home = Home()
        self.addCleanup(self.home.remove)
        self.home.set_options(count=2, resolution=75)
        self.programs = []

    def start(self, **options):
        program = Paperline(self.tree, self.home, **options)
        self.addCleanup(program.stop)
        return program

    def started(self, **options):
        program = self.start(**options)
        program.main_window()
        return program

    # --- what a person does ---

    def scan(self, program, rows, status="Ready to scan"):
        """Scans with the button and waits for `rows` rows in all."""
        table = program.find(role="table")
        program.click(program.find(role="push button", name="Scan"))
        wait(lambda: table.rows == rows, f"{rows} rows are listed", 60)
        self.wait_idle(program, status)

    def choose_format(self, program, name):
        combo = program.find(role="combo box")
        if combo.name == name:
            return
        program.click(combo)
        item = wait(lambda: program.first(combo.walk(), role="list item", name=name,
                                          test=lambda c: c.box[0] > 0 and c.box[3] > 0), f"{name} is offered")
        program.click(item)
        wait(lambda: combo.name == name, f"{name} is chosen")

    def close(self, program):
        program.close_window()
        self.assertEqual(program.wait_end(), 0)

    # --- what a person sees ---

    def files(self):
        found = []
        for folder in (self.home.folder / "Documents", self.home.pages):
            if folder.is_dir():
                found += sorted(path for path in folder.rglob("*") if path.is_file())
        return found

    def status(self, program):
        bar = program.first(program.main_window().walk(), role="status bar")
        return next(c.name for c in bar.children() if c.role == "label")

    def wait_status(self, program, text):
        wait(lambda: self.status(program) == text, f"the status line says '{text}'")

    def wait_idle(self, program, status="Ready to scan"):
        wait(lambda: program.find(role="push button", name="Scan").enabled, "the Scan button is on again", 60)
        self.wait_status(program, status)

    def page_view(self, program):
        return program.find(name="Page view")

    def wait_page_drawn(self, program):
        """A document has many colours; an empty view has one."""
        place = self.page_view(program).box
        wait(lambda: Rgb(*program.picture(place=place)).colours() > 20, "a page is drawn")
