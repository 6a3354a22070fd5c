"""What the end-to-end tests share: the program with a home of its own, and readers of its results
that are not ours."""
import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

PROGRAM = os.environ["PAPERLINE_PROGRAM"]
# The data source that misbehaves on request (tests/sources/faulty).
FAULTY = "Faulty Scanner"
FAULTY_BUNDLE = pathlib.Path(os.environ["PAPERLINE_FAULTY_ROOT"], "Library/Image Capture/TWAIN Data Sources", f"{FAULTY}.ds")
# SANE's own scanner without hardware, an A4 flatbed.
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


def run(*words, **keywords):
    """The finished process, its output as text; a failing tool fails the test."""
    return subprocess.run([str(w) for w in words], capture_output=True, text=True, check=True, **keywords)


def run_raw(*words):
    """The bytes that a tool prints; a failing tool fails the test."""
    return subprocess.run([str(w) for w in words], capture_output=True, check=True).stdout


def scanimage(*words, env):
    """The picture that scanimage makes of the test scanner's page. That scanner cancels its reader inside the
    allocator now and then, and scanimage waits for it without end."""
    command = ["timeout", "20", "scanimage", "-d", "test:0", "--format=pnm", *words]
    for _ in range(3):
        finished = subprocess.run(command, capture_output=True, env=env)
        if finished.returncode != 124:
            break
    finished.check_returncode()
    return finished.stdout


def run_on_small_disk(folder, megabytes, script, environment):
    """The finished shell script, run while `folder` is a file system of that size: mounted by root, by sudo, or
    in a user namespace of the script's own."""
    mount = ["mount", "-t", "tmpfs", "-o", f"size={megabytes}m,mode=0777", "tmpfs", str(folder)]
    finish = {"capture_output": True, "text": True, "env": environment, "timeout": 120}
    for rights in ([], ["sudo", "-n"]):
        if rights and shutil.which("sudo") is None:
            continue
        if subprocess.run(rights + mount, capture_output=True).returncode == 0:
            try:
                return subprocess.run(["sh", "-c", script], **finish)
            finally:
                subprocess.run(rights + ["umount", "-l", str(folder)], capture_output=True)
    words = ["unshare", "--user", "--map-root-user", "--mount", "sh", "-c", '"$@" && eval "$script"', "sh", *mount]
    return subprocess.run(words, **{**finish, "env": {**environment, "script": script}})


def configure_test_scanner(folder):
    """Makes SANE, configured in `folder`, find its own test scanner and nothing else."""
    (folder / "dll.conf").write_text("test\n")
    (folder / "test.conf").write_text(TEST_CONFIGURATION)


class ProgramTest(unittest.TestCase):
    """A fresh home, data and scratch folder for every test; the system's places lie below it too."""

    def setUp(self):
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="paperline-e2e-"))
        self.addCleanup(shutil.rmtree, self.home, ignore_errors=True)
        self.pages = self.home / "pages"
        (self.home / "data").mkdir()
        (self.home / "root").mkdir()
        (self.home / "run").mkdir(mode=0o700)
        (self.home / "sane").mkdir()
        # Without a backend the search for scanners ends at once.
        (self.home / "sane" / "dll.conf").write_text("\n")
        self.environment = {
            **{k: v for k, v in os.environ.items() if not k.startswith(("PAPERLINE_", "LC_", "LANG", "XDG_"))},
            "HOME": str(self.home),
            "XDG_DATA_HOME": str(self.home / "data"),
            "XDG_CACHE_HOME": str(self.home / "cache"),
            "XDG_RUNTIME_DIR": str(self.home / "run"),
            "PAPERLINE_ROOT": str(self.home / "root"),
            "PAPERLINE_SCRATCH": str(self.home / "scratch"),
            "SANE_CONFIG_DIR": str(self.home / "sane"),
            "LANG": "C.UTF-8",
        }

    def paperline(self, *words, timeout=120, **environment):
        return subprocess.run([PROGRAM, *map(str, words)], capture_output=True, text=True, timeout=timeout,
                              env={**self.environment, **environment}, stdin=subprocess.DEVNULL)

    def own_program(self):
        """A copy of the program and its sources that a test may change: the folder that holds them."""
        bundle = pathlib.Path(PROGRAM).parents[2]
        place = self.home / "place"
        for folder in (bundle, bundle.parent / "TWAIN Data Sources"):
            shutil.copytree(folder, place / folder.name, symlinks=True)
        return place

    def faulty_bundle(self):
        """The faulty scanner's bundle, installed in this home."""
        bundle = self.home / "root/Library/Image Capture/TWAIN Data Sources" / FAULTY_BUNDLE.name
        if not bundle.exists():
            shutil.copytree(FAULTY_BUNDLE, bundle)
        return bundle

    def scan_words(self, *words, options=(), source="Software Scanner", fault=None):
        """Of a scan into self.pages. `options` are NAME=VALUE words for the source; a fault is the faulty scanner's."""
        if fault is not None:
            self.faulty_bundle()
            source, options = FAULTY, [f"fault={fault}", *options]
        option_words = [word for option in options for word in ("--option", option)]
        return ["scan", "--source", source, "--folder", str(self.pages), *option_words, *map(str, words)]

    def scan(self, *words, options=(), source="Software Scanner", fault=None, **keywords):
        return self.paperline(*self.scan_words(*words, options=options, source=source, fault=fault), **keywords)

    def scanned(self, *words, **keywords):
        """The saved paths of a scan that must succeed."""
        result = self.scan(*words, **keywords)
        self.assertEqual(result.returncode, 0, result.stderr)
        return [pathlib.Path(line) for line in result.stdout.splitlines()]

    def objects(self, result):
        return [json.loads(line) for line in result.stdout.splitlines()]
