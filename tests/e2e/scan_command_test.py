"""`paperline scan` and `paperline sources` with the software scanner, through the real data source
manager, and what must be true when something goes wrong."""
import hashlib
import os
import subprocess
import unittest

from support import PROGRAM, ProgramTest, run, run_on_small_disk


def identify(path, what):
    """ImageMagick's answer. A BMP file goes through netpbm first: its size field counts the header
    twice by design, which ImageMagick refuses."""
    if path.suffix == ".bmp":
        picture = subprocess.run(["bmptopnm", "-quiet", path], capture_output=True, check=True).stdout
        return subprocess.run(["identify", "-format", what, "-"], input=picture, capture_output=True,
                              check=True).stdout.decode().strip()
    return run("identify", "-format", what, path).stdout.strip()


class Scan(ProgramTest):
    def test_saves_three_numbered_jpeg_files(self):
        paths = self.scanned("--format", "jpg", options=["count=3", "mode=Color", "resolution=100"])
        self.assertEqual([p.name for p in paths], [f"Image_{n:05d}.jpg" for n in (1, 2, 3)])
        for path in paths:
            self.assertEqual(path.parent, self.pages)
            self.assertEqual(identify(path, "%m %w %h"), "JPEG 827 1169")
            run("jpeginfo", "-c", path)

    def test_never_writes_over_a_page(self):
        first = self.scanned("--format", "bmp", options=["count=2", "resolution=50", "mode=Gray"])
        before = [hashlib.sha256(p.read_bytes()).digest() for p in first]
        second = self.scanned("--format", "bmp", options=["count=2", "resolution=50", "mode=Gray"])
        self.assertEqual([p.name for p in second], ["Image_00003.bmp", "Image_00004.bmp"])
        self.assertEqual(before, [hashlib.sha256(p.read_bytes()).digest() for p in first])

    def test_counts_per_extension(self):
        self.pages.mkdir()
        (self.pages / "Image_00001.pdf").write_text("not a page of ours")
        paths = self.scanned("--format", "bmp", options=["count=1", "resolution=50"])
        self.assertEqual(paths[0].name, "Image_00001.bmp")

    def test_fills_the_name_template_once(self):
        paths = self.scanned("--format", "bmp", "--name", "Bill_%YYYY_x", options=["count=2", "resolution=50"])
        prefix = paths[0].name.split("_00001")[0]
        self.assertRegex(prefix, r"^Bill_20\d\d_x$")
        self.assertEqual(paths[1].name, f"{prefix}_00002.bmp")

    def test_gives_each_mode_its_bits(self):
        for mode, bits in (("Lineart", 1), ("Gray", 8), ("Color", 24)):
            path = self.scanned("--format", "bmp", "--name", mode, options=["count=1", "resolution=75", f"mode={mode}"])[0]
            header = path.read_bytes()[:54]
            self.assertEqual(int.from_bytes(header[28:30], "little"), bits)
            self.assertEqual(identify(path, "%w %h"), "620 877")

    def test_describes_pages_as_json(self):
        result = self.scan("--format", "bmp", "--json", options=["count=2", "resolution=150", "mode=Gray"])
        self.assertEqual(result.returncode, 0, result.stderr)
        first, second, totals = self.objects(result)
        self.assertEqual(first, {"path": str(self.pages / "Image_00001.bmp"), "format": "bmp", "width": 1240,
                                 "height": 1754, "bits": 8, "resolution": 150, "pages": 1})
        self.assertEqual(second["path"], str(self.pages / "Image_00002.bmp"))
        self.assertEqual(totals, {"files": 2, "pages": 2, "complete": True})

    def test_prints_paths_and_nothing_else(self):
        result = self.scan("--format", "bmp", options=["count=2", "resolution=50"])
        self.assertEqual(len(result.stdout.splitlines()), 2)
        for line in result.stdout.splitlines():
            self.assertTrue(os.path.exists(line), line)

    def test_leaves_the_users_settings_alone(self):
        self.scanned("--format", "bmp", options=["count=1", "resolution=50"])
        left = [p for p in self.home.rglob("*.plist")]
        self.assertEqual(left, [])

    def test_takes_pages_from_a_folder_of_pictures(self):
        pictures = self.home / "pictures"
        pictures.mkdir()
        run("convert", "-size", "40x30", "xc:#102030", pictures / "a.png")
        run("convert", "-size", "20x50", "xc:#c0d0e0", pictures / "b.ppm")
        paths = self.scanned("--format", "bmp", options=[f"pages={pictures}", "mode=Color"])
        self.assertEqual([identify(p, "%w %h %[pixel:p{9,9}]") for p in paths],
                         ["40 30 srgb(16,32,48)", "20 50 srgb(192,208,224)"])


class Failures(ProgramTest):
    def test_wrong_usage(self):
        self.assertEqual(self.paperline("scan", "--format", "xyz").returncode, 2)
        self.assertEqual(self.paperline("shred").returncode, 2)

    def test_unknown_source(self):
        result = self.scan(source="No Such Scanner")
        self.assertEqual((result.returncode, result.stdout), (3, ""))
        self.assertIn("No Such Scanner", result.stderr)

    def test_source_that_vanished(self):
        result = self.scan("--format", "bmp", fault="vanish")
        self.assertEqual((result.returncode, result.stdout), (4, ""))

    def test_refused_option(self):
        result = self.scan("--format", "bmp", options=["mode=Sepia"])
        self.assertEqual(result.returncode, 4)
        self.assertIn("mode", result.stderr)

    def test_reader_that_went_away(self):
        reading, writing = os.pipe()
        os.close(reading)
        words = [PROGRAM, "scan", "--source", "Software Scanner", "--format", "bmp", "--folder", self.pages,
                 "--option", "count=3", "--option", "resolution=50"]
        result = subprocess.run([str(w) for w in words], stdout=writing, stderr=subprocess.PIPE, timeout=120,
                                env=self.environment)
        os.close(writing)
        self.assertEqual(result.returncode, 1, result.stderr)
        self.assertEqual(sorted(p.name for p in self.pages.glob("*.bmp")),
                         [f"Image_{n:05d}.bmp" for n in (1, 2, 3)])
        self.assertEqual(list((self.home / "scratch/tmp").iterdir()), [])

    def test_read_only_folder(self):
        self.pages.mkdir()
        path = self.pages / "blocked"
        path.write_text("a file stands where the folder should be")
        result = self.paperline("scan", "--source", "Software Scanner", "--format", "bmp", "--folder", path,
                                "--option", "count=2", "--option", "resolution=50")
        self.assertEqual((result.returncode, result.stdout), (1, ""))
        self.assertTrue(result.stderr)

    def test_page_that_no_disk_took_is_told(self):
        self.pages.mkdir()
        path = self.pages / "blocked"
        path.write_text("a file stands where the folder should be")
        result = self.paperline("scan", "--source", "Software Scanner", "--format", "jpg", "--folder", path, "--json",
                                "--option", "count=2", "--option", "resolution=50")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(self.objects(result), [{"files": 0, "pages": 0, "complete": False}])
        self.assertIn("2 of the pages could not be written", result.stderr)

    def test_full_disk_keeps_the_pages_before(self):
        # Pages of 0.97 MB each.
        self.pages.mkdir()
        result = run_on_small_disk(
            self.pages, 2,
            f'"{PROGRAM}" scan --source "Software Scanner" --format bmp --folder "{self.pages}" '
            f'--option count=4 --option resolution=100 --option mode=Gray; echo "exit $?"; '
            f'sha256sum "{self.pages}"/*.bmp; ls "{self.pages}"', self.environment)
        self.assertIn("exit 1", result.stdout, result.stderr)
        self.assertIn("Image_00001.bmp", result.stdout)
        self.assertNotIn("Image_00003.bmp", result.stdout)
        self.assertTrue(result.stderr)

    def test_paper_jam_keeps_the_pages_before(self):
        result = self.scan("--format", "bmp", fault="device-jam@3", options=["count=5", "resolution=50"])
        self.assertEqual(result.returncode, 1, result.stderr)
        self.assertEqual([os.path.basename(p) for p in result.stdout.splitlines()],
                         ["Image_00001.bmp", "Image_00002.bmp"])
        self.assertIn("jammed", result.stderr)

    def test_empty_feeder(self):
        result = self.scan("--format", "bmp", fault="device-empty@1")
        self.assertEqual((result.returncode, result.stdout), (1, ""))
        self.assertIn("no paper", result.stderr)

    def test_hung_source(self):
        result = self.scan("--format", "bmp", "--timeout", "2", fault="strip-hang@2", options=["count=3", "resolution=50"])
        self.assertEqual(result.returncode, 5, result.stderr)
        # The page before is whole on disk, and its path was printed.
        self.assertEqual([os.path.basename(p) for p in result.stdout.splitlines()], ["Image_00001.bmp"])
        self.assertEqual(identify(self.pages / "Image_00001.bmp", "%w %h"), "413 585")

    def test_source_that_never_calls_back(self):
        result = self.scan("--format", "bmp", "--timeout", "2", fault="callback-never")
        self.assertEqual((result.returncode, result.stdout), (5, ""))


class Sources(ProgramTest):
    def test_offers_the_software_scanner_without_real_ones(self):
        result = self.paperline("sources")
        self.assertEqual((result.returncode, result.stdout), (0, "Software Scanner\n"))

    def test_lists_options_with_their_ranges(self):
        result = self.paperline("sources", "--options", "Software Scanner")
        self.assertEqual(result.returncode, 0, result.stderr)
        rows = {line.split("\t")[0]: line.split("\t") for line in result.stdout.splitlines()}
        self.assertIn("Lineart", rows["mode"][4])
        self.assertIn("resolution", rows)
        self.assertEqual(rows["delay"][1:5], ["int", "0", "ms", "0..60000 step 1"])
        self.assertNotIn("fault", rows)

    def test_says_when_its_helper_program_is_missing(self):
        bundle = self.own_program() / "Paperline.app"
        (bundle / "Contents/Helpers/paperline-describe-source").unlink(missing_ok=True)
        result = subprocess.run([bundle / "Contents/MACOS/paperline", "sources", "--options", "Software Scanner"],
                                capture_output=True, text=True, env=self.environment, timeout=120)
        self.assertEqual((result.returncode, result.stdout), (4, ""), result.stderr)
        self.assertRegex(result.stderr, "paperline-describe-source cannot be started")

    def test_says_when_there_is_no_such_source(self):
        self.assertEqual(self.paperline("sources", "--options", "Nothing").returncode, 3)


class Information(ProgramTest):
    def test_help_and_version_go_to_standard_output(self):
        self.assertIn("Usage: paperline", self.paperline("--help").stdout)
        self.assertRegex(self.paperline("--version").stdout, r"^paperline \d+\.\d+\.\d+\n$")


if __name__ == "__main__":
    unittest.main()
