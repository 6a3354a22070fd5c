"""A disk that fills up in the middle of a batch, for every format: pages before it stay whole, nothing is left half
written, and what could not be saved is told or kept."""
import pathlib
import random
import shutil
import subprocess
import unittest

from support import PROGRAM, ProgramTest, run_on_small_disk

PAGES = 20
SIDE = 700
# Tools that read a file whole and fail when it is not.
READERS = {
    "bmp": ["bmptopnm", "-quiet"],
    "jpg": ["djpeg", "-pnm"],
    "gif": ["giftopnm", "-quiet"],
    "pdf": ["qpdf", "--check"],
    "mpdf": ["qpdf", "--check"],
    "tif": ["tifftopnm", "-quiet"],
    "mtif": ["tifftopnm", "-quiet"],
    "png": ["pngcheck", "-q"],
}


class FullDisk(ProgramTest):
    def setUp(self):
        super().setUp()
        self.source, self.small, self.after = (self.home / name for name in ("source", "small", "after"))
        for folder in (self.source, self.small, self.after, self.pages):
            folder.mkdir()
        noise = random.Random(1).randbytes(SIDE * SIDE * 3)
        (self.source / "page.ppm").write_bytes(b"P6 %d %d 255\n" % (SIDE, SIDE) + noise)

    def scan_on_small_disk(self, file_format, folder, **environment):
        """The finished scan with three megabytes in self.small; what was left in `folder` is copied out."""
        script = (f'"{PROGRAM}" scan --source "Software Scanner" --format {file_format} --folder "{folder}" '
                  f'--option pages="{self.source}" --option count={PAGES} >"{self.home}/out" 2>"{self.home}/err"; '
                  f'echo $?; cp "{folder}"/*.* "{self.after}" 2>/dev/null; find "{folder}" -type f | wc -l')
        result = run_on_small_disk(self.small, 3, script, {**self.environment, **environment})
        code, left = map(int, result.stdout.split())
        return code, left, sorted(self.after.iterdir())

    def empty(self, folder):
        for path in folder.iterdir():
            shutil.rmtree(path) if path.is_dir() else path.unlink()

    def check_whole(self, file_format, files):
        for path in files:
            subprocess.run([*READERS[file_format], path], check=True, capture_output=True)
        told = [pathlib.Path(line).name for line in (self.home / "out").read_text().splitlines()]
        self.assertEqual([path.name for path in files], told)

    def kept_pages(self, extension="*"):
        return sorted(path.name for path in (self.home / "data").rglob(f"Image_*.{extension}"))

    def test_the_save_folders_disk(self):
        for file_format in ("bmp", "jpg", "gif", "pdf", "tif", "png"):
            with self.subTest(file_format):
                self.empty(self.after)
                code, left, files = self.scan_on_small_disk(file_format, self.small)
                self.assertEqual(code, 1)
                self.assertGreaterEqual(len(files), 1)
                self.assertLess(len(files), PAGES)
                self.assertEqual(left, len(files))  # no hidden file either
                self.check_whole(file_format, files)
                self.assertTrue((self.home / "err").read_text())

    def test_the_save_folders_disk_and_a_multi_page_file(self):
        for file_format, staged in (("mpdf", "jpg"), ("mtif", "tif")):
            with self.subTest(file_format):
                code, left, files = self.scan_on_small_disk(file_format, self.small)
                self.assertEqual((code, left, files), (1, 0, []))
                self.assertEqual(self.kept_pages(staged), [f"Image_{n:05d}.{staged}" for n in range(1, PAGES + 1)])
                self.assertIn(str(self.home / "data"), (self.home / "err").read_text())

    def test_the_scratch_folders_disk(self):
        for file_format in ("pdf", "mpdf", "mtif"):
            with self.subTest(file_format):
                self.empty(self.after)
                self.empty(self.pages)
                code, left, files = self.scan_on_small_disk(file_format, self.pages,
                                                            PAPERLINE_SCRATCH=str(self.small / "scratch"))
                self.assertEqual(left, len(files))
                self.check_whole(file_format, files)
                if file_format != "pdf":  # its pages leave the scratch folder one by one
                    self.assertEqual(code, 1)
                    self.assertTrue((self.home / "err").read_text())

    def test_a_save_folder_that_is_none(self):
        blocked = self.pages / "blocked"
        blocked.write_text("a file")
        for file_format in READERS:
            with self.subTest(file_format):
                result = self.paperline("scan", "--source", "Software Scanner", "--format", file_format, "--folder",
                                        blocked, "--option", f"pages={self.source}", "--option", "count=2")
                self.assertEqual((result.returncode, result.stdout), (1, ""))
                self.assertTrue(result.stderr)
                self.assertEqual(blocked.read_text(), "a file")
        # Both pages of each multi-page file, and the page of each single document.
        self.assertEqual(self.kept_pages("jpg"), ["Image_00001.jpg"] * 3 + ["Image_00002.jpg"])
        self.assertEqual(self.kept_pages("tif"), ["Image_00001.tif", "Image_00002.tif"])


if __name__ == "__main__":
    unittest.main()
