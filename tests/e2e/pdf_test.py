"""PDF files of `paperline scan`, read with qpdf and poppler's tools."""
import re
import unittest

from support import ProgramTest, run

MODES = {"Lineart": "gray", "Gray": "gray", "Color": "rgb"}
# Pixels of an A4 sheet at that resolution.
SHEETS = {100: (827, 1169), 300: (2480, 3508)}


class Pdf(ProgramTest):
    def check(self, path, pages, mode, resolution):
        run("qpdf", "--check", path)
        info = run("pdfinfo", path).stdout
        self.assertRegex(info, rf"(?m)^Pages: +{pages}$")
        points = [float(n) for n in re.search(r"Page size: +([\d.]+) x ([\d.]+) pts", info).groups()]
        for size, pixels in zip(points, SHEETS[resolution]):
            self.assertAlmostEqual(size, pixels * 72 / resolution, delta=0.01)
        rows = [line.split() for line in run("pdfimages", "-list", path).stdout.splitlines()[2:]]
        self.assertEqual([int(row[0]) for row in rows], list(range(1, pages + 1)))
        for row in rows:
            self.assertEqual((int(row[3]), int(row[4])), SHEETS[resolution])
            self.assertEqual((row[5], row[7], row[8]), (MODES[mode], "8", "jpeg"))
            self.assertEqual((int(row[12]), int(row[13])), (resolution, resolution))

    def scan_all(self, file_format, files, pages):
        for mode in MODES:
            for resolution in SHEETS:
                with self.subTest(mode=mode, resolution=resolution):
                    paths = self.scanned("--format", file_format, "--name", f"{mode}{resolution}",
                                         options=["count=2", f"mode={mode}", f"resolution={resolution}"])
                    self.assertEqual([p.name for p in paths],
                                     [f"{mode}{resolution}_{n:05d}.pdf" for n in range(1, files + 1)])
                    for path in paths:
                        self.check(path, pages, mode, resolution)

    def test_saves_a_file_for_each_page(self):
        self.scan_all("pdf", files=2, pages=1)

    def test_saves_all_pages_in_one_file(self):
        self.scan_all("mpdf", files=1, pages=2)


if __name__ == "__main__":
    unittest.main()
