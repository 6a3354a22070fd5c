#!/usr/bin/env python3
"""Times scans of SANE's own test device against scanimage, and weighs the memory of short and long scans.

scan_bench.py BUILD-FOLDER [--rounds N] [--long N]: prints a Markdown table."""
import argparse
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

from processes import MemoryWatch

PAGES = 10  # what the test device's feeder holds
A4 = (210, 297)
PAGE_MEGABYTES = 2480 * 3508 * 3 / 2**20
MOST_MEGABYTES = 3 * PAGE_MEGABYTES + 16
MOST_RATIO = 1.3
DEVICE = "Noname frontend-tester"
TEST_CONFIGURATION = """number_of_devices 1
mode Color
depth 8
resolution_min 1.0
resolution_max 1200.0
resolution_quant 1.0
resolution 300.0
geometry_min 0.0
geometry_max 300.0
geometry_quant 1.0
tl_x 0.0
tl_y 0.0
br_x 210.0
br_y 297.0
"""


class Office:
    """A home of its own, with one SANE device."""

    def __init__(self, program):
        self.program = program
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="paperline-scan-bench-"))
        for name in ("data", "run", "sane", "pages", "root"):
            (self.folder / name).mkdir(mode=0o700)
        (self.folder / "sane/dll.conf").write_text("test\n")
        (self.folder / "sane/test.conf").write_text(TEST_CONFIGURATION)
        kept = {k: v for k, v in os.environ.items() if not k.startswith(("PAPERLINE_", "XDG_", "LC_", "LANG"))}
        self.environment = {**kept, "HOME": str(self.folder), "XDG_DATA_HOME": str(self.folder / "data"),
                            "XDG_RUNTIME_DIR": str(self.folder / "run"), "PAPERLINE_ROOT": str(self.folder / "root"),
                            "PAPERLINE_SCRATCH": str(self.folder / "scratch"), "PAPERLINE_SOFTWARE_SCANNER": "1",
                            "SANE_CONFIG_DIR": str(self.folder / "sane"), "LANG": "C.UTF-8"}

    def __enter__(self):
        return self

    def __exit__(self, *reason):
        shutil.rmtree(self.folder, ignore_errors=True)

    def run(self, *words, page_mark=None):
        """Seconds that the command takes, and those of a page: between the first and the last line that holds the
        mark."""
        begin, marks, lines = time.monotonic(), [], []
        process = subprocess.Popen([str(w) for w in words], env=self.environment, stdin=subprocess.DEVNULL, text=True,
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT, cwd=self.folder)
        for line in process.stdout:
            lines.append(line)
            if page_mark and page_mark in line:
                marks.append(time.monotonic())
        if process.wait():
            sys.exit(f"{words[0]} failed:\n{''.join(lines)}")
        seconds = time.monotonic() - begin
        return seconds, (marks[-1] - marks[0]) / (len(marks) - 1) if len(marks) > 1 else 0

    def empty(self):
        shutil.rmtree(self.folder / "pages")
        (self.folder / "pages").mkdir()

    def scan_words(self, source, options, file_format="bmp"):
        words = [self.program, "scan", "--source", source, "--format", file_format, "--folder", self.folder / "pages"]
        for option in options:
            words += ["--option", option]
        return [str(word) for word in words]

    def paperline(self):
        options = ["mode=Color", "source=Automatic Document Feeder", "test-picture=Color pattern", "resolution=300",
                   f"br-x={A4[0]}", f"br-y={A4[1]}"]
        times = self.run(*self.scan_words(DEVICE, options), page_mark=".bmp")
        self.check()
        return times

    def scanimage(self):
        words = ["scanimage", "-d", "test:0", "--mode", "Color", "--source", "Automatic Document Feeder",
                 "--test-picture", "Color pattern", "--resolution", "300", "-x", A4[0], "-y", A4[1], "--format=pnm",
                 f"--batch={self.folder}/pages/%d.pnm", f"--batch-count={PAGES}"]
        times = self.run(*words, page_mark="Scanned page")
        self.check()
        return times

    def check(self):
        sizes = [path.stat().st_size for path in (self.folder / "pages").rglob("*") if path.is_file()]
        if len(sizes) != PAGES or min(sizes) < PAGE_MEGABYTES * 2**20 * 0.99:
            raise AssertionError(f"{len(sizes)} pages of {min(sizes, default=0)} bytes")
        self.empty()

    def memory(self, count):
        """A scan of so many pages, watched; each page is emptied once it is saved."""
        options = ["mode=Color", "resolution=300", f"count={count}"]
        process = subprocess.Popen(self.scan_words("Software Scanner", options), env=self.environment, text=True,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        with MemoryWatch(process.pid) as watch:
            saved = 0
            for line in process.stdout:
                os.truncate(line.strip(), 0)
                saved += 1
        if process.wait() != 0 or saved != count:
            raise AssertionError(f"{saved} of {count} pages")
        self.empty()
        return watch


def print_times(office, rounds):
    office.run(office.program, "sources")  # the first start of all looks for devices
    turns = [(office.paperline(), office.scanimage()) for _ in range(rounds)]
    print("| work | Paperline | scanimage | time ratio | at most | met |")
    print("|---|---|---|---|---|---|")
    works = (f"{PAGES} colour A4 pages at 300 dpi from SANE's test device, start and end included",
             "a page of them, without start and end")
    for which, work in enumerate(works):
        ours = statistics.median(turn[0][which] for turn in turns) * 1000
        theirs = statistics.median(turn[1][which] for turn in turns) * 1000
        print(f"| {work} | {ours:.0f} ms, BMP | {theirs:.0f} ms, PNM | {ours / theirs:.3f} | {MOST_RATIO} | "
              f"{'yes' if ours <= MOST_RATIO * theirs else 'no'} |", flush=True)
    print()


def print_memory(office, long_scan):
    print("| scan to BMP, colour A4 at 300 dpi | program, anonymous | helpers, anonymous | together | shared | at most "
          "| met |")
    print("|---|---|---|---|---|---|---|")
    peaks = []
    for count in (PAGES, long_scan):
        watch = office.memory(count)
        peaks.append(watch.together)
        flat = watch.together <= peaks[0] + 2
        met = watch.together <= MOST_MEGABYTES and flat
        print(f"| {count} pages | {watch.own:.1f} MiB | {watch.helpers:.1f} MiB | {watch.together:.1f} MiB | "
              f"{watch.shared:.1f} MiB | {MOST_MEGABYTES:.1f} MiB (three pages and 16 MiB), no more than 2 MiB of growth "
              f"| {'yes' if met else 'no'} |", flush=True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--long", type=int, default=200, help="pages of the long scan")
    arguments = parser.parse_args()
    with Office(arguments.build.resolve() / "bin/paperline") as office:
        print_times(office, arguments.rounds)
        print_memory(office, arguments.long)


if __name__ == "__main__":
    main()
