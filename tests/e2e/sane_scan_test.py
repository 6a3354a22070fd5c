"""Pages that come from SANE through the whole program, compared with what scanimage writes."""
import pathlib
import subprocess
import unittest

from support import ProgramTest

# Each strip's first three bytes are marked on the way; a page comes as one strip.
MARK = bytes((0x21, 0x85, 0xE9))
TEST_CONFIGURATION = """number_of_devices 1
mode Gray
depth 8
resolution_min 1.0
resolution_max 1200.0
resolution_quant 1.0
resolution 50.0
geometry_min 0.0
geometry_max 300.0
geometry_quant 1.0
tl_x 0.0
tl_y 0.0
br_x 210.0
br_y 297.0
"""


def bmp_rows(path):
    """Width, height, and the rows of a BMP file from the top, RGB for 24 bits."""
    data = path.read_bytes()
    offset = int.from_bytes(data[10:14], "little")
    width, height = (int.from_bytes(data[at:at + 4], "little") for at in (18, 22))
    bits = int.from_bytes(data[28:30], "little")
    stride, packed = (width * bits + 31) // 32 * 4, (width * bits + 7) // 8
    rows = [bytearray(data[offset + y * stride:offset + y * stride + packed]) for y in reversed(range(height))]
    if bits == 24:
        for row in rows:
            row[0::3], row[2::3] = row[2::3], row[0::3]
    return width, height, rows


def pnm_rows(data):
    """The same of a raw PNM file; PBM is turned so that 0 is black."""
    fields, at = [], 0
    while len(fields) < (3 if data[:2] == b"P4" else 4):
        end = at
        if data[at:at + 1] == b"#":
            at = data.index(b"\n", at) + 1
            continue
        while not data[end:end + 1].isspace():
            end += 1
        fields.append(data[at:end])
        at = end + 1
    width, height = int(fields[1]), int(fields[2])
    packed = {b"P4": (width + 7) // 8, b"P5": width, b"P6": width * 3}[fields[0]]
    rows = [bytearray(data[at + y * packed:at + (y + 1) * packed]) for y in range(height)]
    if fields[0] == b"P4":
        rows = [bytearray(255 - b for b in row) for row in rows]
    return width, height, rows


class SaneScan(ProgramTest):
    def setUp(self):
        super().setUp()
        sane = self.home / "sane"
        (sane / "dll.conf").write_text("test\n")
        (sane / "test.conf").write_text(TEST_CONFIGURATION)

    def scanimage(self, *words):
        return subprocess.run(["scanimage", "-d", "test:0", "--format=pnm", *words], capture_output=True, check=True,
                              env=self.environment).stdout

    def compare(self, path, reference):
        width, height, rows = bmp_rows(path)
        wanted_width, wanted_height, wanted = pnm_rows(reference)
        self.assertEqual((width, height), (wanted_width, wanted_height))
        if width % 8 and len(wanted[0]) < width:  # one bit a pixel: those behind the last one are free
            for row in rows + wanted:
                row[-1] &= 0xFF << (8 - width % 8) & 0xFF
        self.assertEqual(b"".join(rows)[:3], MARK)
        self.assertEqual(b"".join(rows)[3:], b"".join(wanted)[3:])

    def test_ten_colour_pages_from_the_feeder(self):
        paths = self.scanned("--format", "bmp", source="Noname frontend-tester",
                             options=["mode=Color", "source=Automatic Document Feeder", "test-picture=Color pattern",
                                      "resolution=75", "br-x=100", "br-y=100"])
        self.assertEqual([p.name for p in paths], [f"Image_{n:05d}.bmp" for n in range(1, 11)])
        reference = self.scanimage("--mode", "Color", "--test-picture", "Color pattern", "--resolution", "75",
                                   "-x", "100", "-y", "100")
        for path in paths:
            self.compare(path, reference)

    def test_grey_and_bilevel_pages(self):
        for depth in ("8", "1"):
            path = self.scanned("--format", "bmp", source="Noname frontend-tester",
                                options=["mode=Gray", f"depth={depth}", "test-picture=Grid", "resolution=100",
                                         "br-x=103", "br-y=40"])[0]
            self.compare(path, self.scanimage("--mode", "Gray", "--depth", depth, "--test-picture", "Grid",
                                              "--resolution", "100", "-x", "103", "-y", "40"))

    def test_each_error_says_what_it_is(self):
        for status, words in (("SANE_STATUS_JAMMED", "jammed"), ("SANE_STATUS_NO_DOCS", "no paper"),
                              ("SANE_STATUS_COVER_OPEN", "cover"), ("SANE_STATUS_IO_ERROR", "cannot be reached"),
                              ("SANE_STATUS_ACCESS_DENIED", "not allowed")):
            result = self.scan("--format", "bmp", source="Noname frontend-tester",
                               options=[f"read-return-value={status}"])
            self.assertEqual((result.returncode, result.stdout), (1, ""), status)
            self.assertIn(words, result.stderr)

    def test_the_real_scanner_takes_the_place_of_the_software_scanner(self):
        self.assertEqual(self.paperline("sources").stdout, "Noname frontend-tester\n")
        self.assertEqual(sorted(self.paperline("sources", PAPERLINE_SOFTWARE_SCANNER="1").stdout.splitlines()),
                         ["Noname frontend-tester", "Software Scanner"])

    def test_makes_one_bundle_for_the_device(self):
        self.paperline("sources")
        bundles = self.home / "data/paperline/TWAIN Data Sources"
        self.assertEqual([p.name for p in bundles.glob("*.ds")], ["Noname frontend-tester.ds"])
        stub = pathlib.Path(next(bundles.glob("*.ds")), "Versions/A/SaneSource")
        self.assertFalse(stub.is_symlink())


if __name__ == "__main__":
    unittest.main()
