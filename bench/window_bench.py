#!/usr/bin/python3
"""Times the window as its user meets it, on a display of its own: its start, a page being selected, a long list.

window_bench.py BUILD-FOLDER [--starts N] [--listed N]: prints a Markdown table. The system's interpreter has the
bindings that it needs."""
import argparse
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests/gui"))
sys.dont_write_bytecode = True
import session  # noqa: E402

session.enter()

from driver import Home, Paperline, Tree, wait  # noqa: E402
from processes import status  # noqa: E402
from scan_bench import TEST_CONFIGURATION  # noqa: E402
from x_display import XDisplay  # noqa: E402

FORMATS = {"BMP": 0, "JPG": 1, "GIF": 2, "TIF": 5, "PNG": 7}
MOST_START, MOST_SELECT, MOST_LIST = 300, 150, 120  # ms, ms, MiB
PATIENCE = 120


def row(work, value, limit, unit, detail=""):
    print(f"| {work} | {value:.0f} {unit} | {detail} | {limit} {unit} | {'yes' if value < limit else 'no'} |", flush=True)


def span(values):
    return f"{min(values):.0f} to {max(values):.0f}, {len(values)} times"


class Office:
    """A copy of the program and a home of its own."""

    def __init__(self, bundle):
        self.tree, self.home = Tree(bundle), Home()

    def __enter__(self):
        return self

    def __exit__(self, *reason):
        self.tree.remove()
        self.home.remove()

    def start_environment(self):
        """No more than the scanners that are known, and no screen reader."""
        left_out = ("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "PAPERLINE_SOFTWARE_SCANNER")
        return {name: value for name, value in self.home.environment().items() if name not in left_out}

    def start(self):
        program = Paperline(self.tree, self.home)
        program.main_window(PATIENCE)
        return program


def wait_drawn(display, place, deadline):
    """Something drawn has many values, a bare window or screen one."""
    while len(set(display.pixels(*place))) < 8:
        if time.monotonic() > deadline:
            raise TimeoutError("the window stays bare")
        time.sleep(0.001)


def start_milliseconds(office, display):
    """From the start of the process until its window is drawn and follows a change of its size."""
    environment = office.start_environment()
    program = str(office.tree.bundle / "Contents/MACOS/paperline")
    begin = time.monotonic()
    process = subprocess.Popen([program], env=environment, cwd=office.home.folder, stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    deadline = begin + PATIENCE
    try:
        window = display.new_window(400, deadline)
        x, y, width, height = display.place(window)
        wait_drawn(display, (x, y, width, height // 4), deadline)
        below = (x, y + height, width, 16)
        before = display.pixels(*below)
        display.resize(window, width, height + 16)
        while display.pixels(*below) == before and time.monotonic() < deadline:
            time.sleep(0.001)
        return (time.monotonic() - begin) * 1000
    finally:
        process.terminate()
        process.wait()


def know_one_scanner(office):
    """A scanner of SANE's test backend, found by an earlier start: starts wait for a search only where none is known."""
    folder = office.home.folder / "sane"
    (folder / "dll.conf").write_text("test\n")
    (folder / "test.conf").write_text(TEST_CONFIGURATION)
    program = str(office.tree.bundle / "Contents/MACOS/paperline")
    names = subprocess.run([program, "sources"], env=office.start_environment(), check=True, text=True,
                           stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout.split("\n")
    if len(names) != 2:  # the last line ends, too
        raise AssertionError(f"sources: {names}")


def measure_start(office, display, starts):
    know_one_scanner(office)
    times = [start_milliseconds(office, display) for _ in range(starts + 2)][2:]  # the first warm the caches
    row("start to usable window, one known scanner", statistics.median(times), MOST_START, "ms", span(times))


def scan(program, rows):
    table = program.find(role="table")
    program.click(program.find(role="push button", name="Scan"))
    wait(lambda: table.rows == rows, f"{rows} rows are listed", 600)
    wait(lambda: program.find(role="push button", name="Scan").enabled, "the Scan button is on again", PATIENCE)
    return table


def selection_milliseconds(display, place, keys):
    """From the keys until the page view looks different."""
    before = display.pixels(*place)
    begin = time.monotonic()
    display.press(*keys)
    while display.pixels(*place) == before:
        if time.monotonic() > begin + PATIENCE:
            raise TimeoutError("the page view does not change")
        time.sleep(0.001)
    return (time.monotonic() - begin) * 1000


def centre(box):
    """The middle ninth of a place."""
    x, y, width, height = box
    return x + width // 3, y + height // 3, width // 3, height // 3


def measure_selection(bundle, sheets, count, name):
    with Office(bundle) as office:
        office.home.set_options(pages=sheets, count=count, mode="Color", resolution=300)
        office.home.write_settings(office.tree, file_format=FORMATS[name])
        program, display = office.start(), XDisplay()
        table = scan(program, count)
        program.focus_window("frame")
        table.accessible.grab_focus()
        wait(lambda: table.has("FOCUSED"), "the page list has the focus")
        place = centre(program.find(name="Page view").box)
        time.sleep(1)
        steps, leaps = [["Up"], ["Down"]], [["Control_L", "Home"], ["Control_L", "End"]]
        ways = {"the next of": [keys for keys in steps for _ in range(count - 1)],
                "a far one of": leaps * (count - 1)}
        for way, presses in ways.items():
            times = []
            for keys in presses:
                times.append(selection_milliseconds(display, place, keys))
                time.sleep(0.3)
            row(f"selecting {way} {count} colour A4 pages at 300 dpi, {name}", statistics.median(times), MOST_SELECT,
                "ms", span(times))
        display.close()
        program.stop()


def measure_list(bundle, listed):
    with Office(bundle) as office:
        office.home.set_options(count=listed, mode="Color", resolution=150)
        office.home.write_settings(office.tree, file_format=FORMATS["JPG"])
        program = office.start()
        time.sleep(1)
        before = status(program.process.pid)["VmRSS"] / 1024
        scan(program, listed)
        time.sleep(1)
        after = status(program.process.pid)["VmRSS"] / 1024
        program.stop()
        row(f"{listed} pages listed, over the empty window", after - before, MOST_LIST, "MiB",
            f"{before:.0f} to {after:.0f} MiB resident")


def draw_sheets(build, count):
    folder = tempfile.mkdtemp(prefix="paperline-window-bench-")
    subprocess.run([build / "bench/paperline_bench", "--pages", str(count), "--save-pages", folder], check=True,
                   stdout=subprocess.DEVNULL)
    for path in pathlib.Path(folder).iterdir():
        if not path.name.startswith("colour-"):
            path.unlink()
    return folder


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--starts", type=int, default=20)
    parser.add_argument("--listed", type=int, default=500)
    parser.add_argument("--formats", nargs="*", default=list(FORMATS))
    arguments = parser.parse_args()
    build = arguments.build.resolve()
    bundle = build / "Paperline.app"
    print("| work | Paperline | from to | at most | met |")
    print("|---|---|---|---|---|")
    if arguments.starts:
        with Office(bundle) as office:
            display = XDisplay()
            measure_start(office, display, arguments.starts)
            display.close()
    sheets, count = draw_sheets(build, 5), 5
    try:
        for name in arguments.formats:
            measure_selection(bundle, sheets, count, name)
    finally:
        shutil.rmtree(sheets, ignore_errors=True)
    if arguments.listed:
        measure_list(bundle, arguments.listed)


if __name__ == "__main__":
    main()
