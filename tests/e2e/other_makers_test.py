"""Every pairing of this build's program, manager and sources with those of another maker, all of them written from
the published standard alone. A page is the same page whoever carries it."""
import os
import pathlib
import subprocess
import unittest

from pictures import MARK, bmp_rows, pnm_rows
from support import FAULTY, FAULTY_BUNDLE, PROGRAM, ProgramTest, configure_test_scanner, scanimage

HOST = os.environ["OTHERMAKER_HOST"]
OTHER_MANAGER = os.environ["OTHERMAKER_MANAGER"]
OTHER_SOURCE = os.environ["OTHERMAKER_SOURCE"]
OTHER_PRODUCT = "Gamma"
CONTENTS = pathlib.Path(PROGRAM).resolve().parent.parent
OUR_MANAGER = CONTENTS / "Frameworks/libpaperline-dsm.so"
SOFTWARE_SOURCE = CONTENTS.parent.parent / "TWAIN Data Sources/Software Scanner.ds/Versions/A/Software Scanner"
SANE_PRODUCT = "Noname frontend-tester"


def other_page(page):
    """Width, height and grey rows of page 1 or 2 of the other maker's source."""
    return 20, 10, [bytearray(100 * (page - 1) + (row * 20 + column) % 100 for column in range(20)) for row in range(10)]


class OtherMakers(ProgramTest):
    def with_other_manager(self, *sources):
        return {"PAPERLINE_DSM": OTHER_MANAGER, "OTHERMAKER_DSM_SOURCES": ":".join(map(str, sources))}

    def install_other_source(self):
        folder = self.home / "root/usr/local/lib/twain"
        folder.mkdir(parents=True)
        (folder / "gamma.ds").write_bytes(pathlib.Path(OTHER_SOURCE).read_bytes())

    def host_pages(self, manager, product, *words, **environment):
        """What the other maker's program scans: width, height and rows of each page."""
        folder = self.home / f"host-{len(list(self.home.glob('host-*')))}"
        folder.mkdir()
        result = subprocess.run([HOST, manager, "scan", product, "--save", folder, *words], capture_output=True, text=True,
                                timeout=120, env={**self.environment, **environment})
        self.assertEqual(result.returncode, 0, result.stderr)
        return [pnm_rows(path.read_bytes()) for path in sorted(folder.glob("*.pnm"))]

    def assert_same_page(self, ours, wanted, what, strip_rows=None):
        """`ours` is a BMP file that the program wrote; the first three bytes of each strip carry its mark."""
        width, height, rows = bmp_rows(ours)
        self.assertEqual((width, height), wanted[:2], what)
        for row in range(0, height, strip_rows or height):
            self.assertEqual(bytes(rows[row][:3]), MARK, f"{what}, row {row}")
            rows[row][:3] = wanted[2][row][:3]
        self.assertEqual(rows, wanted[2], what)


class SoftwareScanner(OtherMakers):
    OPTIONS = {"PAPERLINE_SOURCE_OPTIONS": "resolution=60\nmode=Gray\ncount=3"}

    def test_the_same_pages_in_every_program_under_every_manager(self):
        other = self.with_other_manager(SOFTWARE_SOURCE)
        wanted = self.host_pages(OUR_MANAGER, "Software Scanner", **self.OPTIONS)
        self.assertEqual([page[:2] for page in wanted], [(496, 702)] * 3)
        self.assertNotEqual(wanted[0][2], wanted[1][2])
        self.assertEqual(self.host_pages(OTHER_MANAGER, "Software Scanner", "--callback2", **self.OPTIONS, **other), wanted)
        for name, environment in (("own", {}), ("other", other)):
            paths = self.scanned("--format", "bmp", "--name", name, **self.OPTIONS, **environment)
            self.assertEqual([p.name for p in paths], [f"{name}_{n:05d}.bmp" for n in (1, 2, 3)])
            for page, path in enumerate(paths):
                self.assert_same_page(path, wanted[page], f"{name} manager, page {page + 1}")

    def test_strips_of_any_size(self):
        wanted = self.host_pages(OUR_MANAGER, "Software Scanner", **self.OPTIONS)
        other = self.with_other_manager(SOFTWARE_SOURCE)
        for buffer in ("496", "5000"):
            self.assertEqual(self.host_pages(OTHER_MANAGER, "Software Scanner", "--buffer", buffer, **self.OPTIONS, **other),
                             wanted, buffer)

    def test_colour_and_one_bit_pages(self):
        other = self.with_other_manager(SOFTWARE_SOURCE)
        for mode in ("Color", "Lineart"):
            options = {"PAPERLINE_SOURCE_OPTIONS": f"resolution=50\nmode={mode}\ncount=1"}
            wanted = self.host_pages(OUR_MANAGER, "Software Scanner", **options)
            self.assertEqual(self.host_pages(OTHER_MANAGER, "Software Scanner", **options, **other), wanted)
            for name, environment in (("own", {}), ("other", other)):
                path, = self.scanned("--format", "bmp", "--name", mode + name, **options, **environment)
                self.assert_same_page(path, wanted[0], f"{mode}, {name} manager")

    def test_a_failure_reaches_the_program_through_the_other_manager(self):
        other = self.with_other_manager(FAULTY_BUNDLE / "Versions/A" / FAULTY)
        result = self.scan("--format", "bmp", fault="device-jam@3", options=["resolution=50", "count=3"], **other)
        self.assertEqual((result.returncode, len(result.stdout.splitlines())), (1, 2), result.stderr)
        self.assertIn("jam", result.stderr)


class SaneScanner(OtherMakers):
    OPTIONS = {"PAPERLINE_SOURCE_OPTIONS": "mode=Color\nresolution=50\nbr-x=80\nbr-y=60\ntest-picture=Color pattern"}

    def test_the_same_page_in_every_program_under_every_manager(self):
        configure_test_scanner(self.home / "sane")
        self.assertEqual(self.paperline("sources").stdout, SANE_PRODUCT + "\n")
        source = self.home / f"data/paperline/TWAIN Data Sources/{SANE_PRODUCT}.ds/Versions/A/SaneSource"
        wanted = [pnm_rows(scanimage("--mode", "Color", "--resolution", "50", "-x", "80", "-y", "60",
                                     "--test-picture", "Color pattern", env=self.environment))]
        other = self.with_other_manager(source)
        self.assertEqual(self.host_pages(OUR_MANAGER, SANE_PRODUCT, **self.OPTIONS), wanted)
        self.assertEqual(self.host_pages(OTHER_MANAGER, SANE_PRODUCT, **self.OPTIONS, **other), wanted)
        for name, environment in (("own", {}), ("other", other)):
            path, = self.scanned("--format", "bmp", "--name", name, source=SANE_PRODUCT, **self.OPTIONS, **environment)
            self.assert_same_page(path, wanted[0], name)


class OtherSource(OtherMakers):
    def test_our_program_lists_it_beside_our_own(self):
        self.install_other_source()
        self.assertEqual(self.paperline("sources").stdout, OTHER_PRODUCT + "\n")
        both = self.paperline("sources", PAPERLINE_SOFTWARE_SCANNER="1").stdout.splitlines()
        self.assertEqual(sorted(both), [OTHER_PRODUCT, "Software Scanner"])
        listed = self.paperline("sources", **self.with_other_manager(OTHER_SOURCE, SOFTWARE_SOURCE)).stdout.splitlines()
        self.assertEqual(listed, [OTHER_PRODUCT, "Software Scanner"])

    def test_our_program_scans_with_it_under_every_manager(self):
        self.install_other_source()
        for name, environment in (("own", {}), ("other", self.with_other_manager(OTHER_SOURCE))):
            paths = self.scanned("--format", "bmp", "--name", name, source=OTHER_PRODUCT, **environment)
            self.assertEqual(len(paths), 2)
            for page, path in enumerate(paths, start=1):
                self.assert_same_page(path, other_page(page), f"{name} manager, page {page}", strip_rows=4)

    def test_the_other_program_scans_with_it_under_every_manager(self):
        self.install_other_source()
        wanted = [other_page(1), other_page(2)]
        self.assertEqual(self.host_pages(OUR_MANAGER, OTHER_PRODUCT), wanted)
        self.assertEqual(self.host_pages(OTHER_MANAGER, OTHER_PRODUCT, **self.with_other_manager(OTHER_SOURCE)), wanted)

    def test_a_multi_page_file_from_it(self):
        self.install_other_source()
        path, = self.scanned("--format", "mtif", source=OTHER_PRODUCT)
        directories = subprocess.run(["tiffinfo", path], capture_output=True, text=True, check=True).stdout
        self.assertEqual(directories.count("Image Width: 20 Image Length: 10"), 2)


class OtherManager(OtherMakers):
    def test_a_manager_that_cannot_be_loaded(self):
        for manager in (self.home / "missing.so", OTHER_SOURCE):
            result = self.scan("--format", "bmp", PAPERLINE_DSM=str(manager))
            self.assertEqual((result.returncode, result.stdout), (3, ""), manager)
            self.assertIn("data source manager", result.stderr)

    def test_a_manager_without_sources(self):
        result = self.scan("--format", "bmp", **self.with_other_manager())
        self.assertEqual((result.returncode, result.stdout), (3, ""))


if __name__ == "__main__":
    unittest.main()
