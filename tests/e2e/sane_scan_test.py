"""Pages that come from SANE through the whole program, compared with what scanimage writes."""
import pathlib
import unittest

from pictures import MARK, bmp_rows, pnm_rows
from support import ProgramTest, configure_test_scanner, scanimage

class SaneScan(ProgramTest):
    def setUp(self):
        super().setUp()
        configure_test_scanner(self.home / "sane")

    def scanimage(self, *words):
        return scanimage(*words, env=self.environment)

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
