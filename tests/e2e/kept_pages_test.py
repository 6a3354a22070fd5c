"""No page is lost: scans of several pages into one file that end badly, from outside or inside."""
import os
import pathlib
import signal
import subprocess
import time
import unittest

from support import PROGRAM, ProgramTest, run, run_on_small_disk

JOINED = {"mpdf": ".jpg", "mtif": ".tif"}  # format, and what its staged pages are


class KeptPages(ProgramTest):
    def setUp(self):
        super().setUp()
        self.kept_root = self.home / "data/paperline/Kept Pages"
        self.scratch = self.home / "scratch/tmp"

    def start(self, *words, options=(), fault=None, **environment):
        """A scan that runs on; signals reach it though the tests may run in the background."""
        process = subprocess.Popen(
            [PROGRAM, *self.scan_words(*words, options=options, fault=fault)],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, stdin=subprocess.DEVNULL,
            env={**self.environment, **environment},
            preexec_fn=lambda: [signal.signal(s, signal.SIG_DFL) for s in (signal.SIGINT, signal.SIGHUP)])
        self.addCleanup(process.kill)
        return process

    def staged(self):
        return sorted(self.scratch.glob("paperline-*/CorvaneTempImage/MultiImage/Image_*"))

    def wait_until(self, condition, what):
        deadline = time.monotonic() + 60
        while not condition():
            self.assertLess(time.monotonic(), deadline, what)
            time.sleep(0.01)

    def kept(self):
        return sorted(self.kept_root.glob("*/*"))

    def check_whole(self, pages, suffix):
        """Pages 1 to n without a gap, each one whole; the last may be the one that was being written."""
        self.assertEqual([p.name for p in pages], [f"Image_{n:05d}{suffix}" for n in range(1, len(pages) + 1)])
        for page in pages[:-1]:
            run("identify", page)

    def assert_no_file(self):
        left = sorted(p.name for p in self.pages.iterdir() if p.is_file()) if self.pages.exists() else []
        self.assertEqual(left, [])


class Ended(KeptPages):
    def test_signals_end_a_batch_the_normal_way(self):
        for number, (file_format, suffix) in zip((signal.SIGINT, signal.SIGTERM, signal.SIGHUP),
                                                 [*JOINED.items(), ("mpdf", ".jpg")]):
            with self.subTest(number=number, file_format=file_format):
                process = self.start("--format", file_format, "--json", options=["count=5000", "resolution=75"])
                self.wait_until(lambda: len(self.staged()) >= 3, "pages are staged")
                process.send_signal(number)
                out, err = process.communicate(timeout=60)
                self.assertEqual(process.returncode, 1, err)
                self.assertIn("interrupted", err)
                folder = next(self.kept_root.iterdir())
                self.assertIn(str(folder), err)
                pages = sorted(folder.iterdir())
                self.assertGreaterEqual(len(pages), 3)
                self.check_whole(pages, suffix)
                run("identify", pages[-1])
                self.assertIn('"complete":false', out)
                self.assert_no_file()
                self.assertEqual(list(self.scratch.iterdir()), [])
                run("rm", "-r", self.kept_root)

    def test_a_killed_batch_is_kept_by_the_next_scan(self):
        process = self.start("--format", "mtif", options=["count=5000", "resolution=75"])
        self.wait_until(lambda: len(self.staged()) >= 3, "pages are staged")
        process.kill()
        process.communicate()
        staged = [p.name for p in self.staged()]
        result = self.scan("--format", "bmp", options=["count=1", "resolution=50"])
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual([p.name for p in self.kept()], staged)
        self.check_whole(self.kept(), ".tif")
        self.assertIn(str(self.kept()[0].parent), result.stderr)
        self.assertEqual(list(self.scratch.iterdir()), [])
        again = self.scan("--format", "bmp", options=["count=1", "resolution=50"])
        self.assertNotIn("Kept", again.stderr)

    def test_a_scan_leaves_the_pages_of_one_that_runs_alone(self):
        process = self.start("--format", "mpdf", options=["count=5000", "resolution=75"])
        self.wait_until(lambda: len(self.staged()) >= 2, "pages are staged")
        self.assertEqual(self.scan("--format", "bmp", options=["count=1", "resolution=50"]).returncode, 0)
        self.assertEqual(self.kept(), [])
        self.assertGreaterEqual(len(self.staged()), 2)
        process.terminate()
        process.communicate(timeout=60)
        self.check_whole(self.kept(), ".jpg")

    def test_a_signal_does_not_wait_for_a_source_that_hangs(self):
        process = self.start("--format", "mpdf", fault="strip-hang@2", options=["count=3", "resolution=50"])
        self.wait_until(self.staged, "a page is staged")
        process.terminate()
        _, err = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 1, err)
        self.assertIn("interrupted", err)
        self.check_whole(self.kept(), ".jpg")
        self.assertEqual(list(self.scratch.iterdir()), [])


class Hung(KeptPages):
    def test_the_watchdog_keeps_the_staged_pages(self):
        for file_format, suffix in JOINED.items():
            with self.subTest(file_format=file_format):
                result = self.scan("--format", file_format, "--timeout", "2", "--json",
                                   fault="strip-hang@3", options=["count=4", "resolution=50"])
                self.assertEqual(result.returncode, 5, result.stderr)
                self.assertEqual(self.objects(result), [{"files": 0, "pages": 0, "complete": False}])
                folder = next(self.kept_root.iterdir())
                self.assertIn(str(folder), result.stderr)
                self.assertEqual([p.name for p in self.kept()], [f"Image_0000{n}{suffix}" for n in (1, 2)])
                for page in self.kept():
                    self.assertEqual(run("identify", "-format", "%w %h", page).stdout, "413 585")
                self.assert_no_file()
                self.assertEqual(list(self.scratch.iterdir()), [])
                run("rm", "-r", self.kept_root)

    def test_totals_count_what_was_saved_before(self):
        result = self.scan("--format", "bmp", "--timeout", "2", "--json",
                           fault="strip-hang@2", options=["count=3", "resolution=50"])
        self.assertEqual(result.returncode, 5, result.stderr)
        page, totals = self.objects(result)
        self.assertEqual(page["path"], str(self.pages / "Image_00001.bmp"))
        self.assertEqual(totals, {"files": 1, "pages": 1, "complete": False})

    def test_a_worker_that_hangs_is_told_from_one_that_fails(self):
        for fault, code, saved in (("device-hang@0", 5, 0), ("device-hang@1", 5, 0), ("device-hang@3", 5, 2),
                                   ("device-crash@3", 1, 2)):
            result = self.scan("--format", "bmp", "--json", "--name", fault.replace("@", "_"),
                               fault=fault, options=["count=4", "resolution=50"], PAPERLINE_WORKER_TIMEOUT="1")
            self.assertEqual(result.returncode, code, f"{fault}: {result.stderr}")
            self.assertTrue(result.stderr, fault)
            self.assertEqual(self.objects(result)[-1], {"files": saved, "pages": saved, "complete": False}, fault)

    def test_a_hung_worker_in_a_batch_keeps_its_pages(self):
        result = self.scan("--format", "mpdf", fault="device-hang@3", options=["count=4", "resolution=50"],
                           PAPERLINE_WORKER_TIMEOUT="1")
        # The pages before are all there is, and they are joined.
        self.assertEqual(result.returncode, 5, result.stderr)
        self.assertEqual(run("qpdf", "--show-npages", result.stdout.strip()).stdout, "2\n")


class NoPlace(KeptPages):
    """The folder that keeps pages does not take them."""

    FAILING = {"fault": "strip-hang@3", "options": ["count=4", "resolution=50"]}

    def left_folder(self, result):
        [left] = [p for p in self.scratch.glob("paperline-*/CorvaneTempImage/MultiImage*") if any(p.iterdir())]
        self.assertIn(str(left), result.stderr)
        return left

    def test_a_file_in_its_place(self):
        self.kept_root.parent.mkdir(parents=True)
        self.kept_root.write_text("in the way")
        result = self.scan("--format", "mpdf", "--timeout", "2", **self.FAILING)
        self.assertEqual(result.returncode, 5, result.stderr)
        left = self.left_folder(result)
        before = {p.name: p.read_bytes() for p in left.iterdir()}
        self.assertEqual(sorted(before), ["Image_00001.jpg", "Image_00002.jpg"])

        # The next scan tells of them again, deletes nothing and does its own work.
        result = self.scan("--format", "mpdf", options=["count=2", "resolution=50"])
        self.assertEqual(result.returncode, 0, result.stderr)
        left = self.left_folder(result)
        self.assertEqual({p.name: p.read_bytes() for p in left.iterdir()}, before)
        self.assertEqual(run("qpdf", "--show-npages", result.stdout.strip()).stdout, "2\n")

        self.kept_root.unlink()
        result = self.scan("--format", "bmp", options=["count=1", "resolution=50"])
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual({p.name: p.read_bytes() for p in self.kept()}, before)
        self.assertEqual(list(self.scratch.iterdir()), [])

    def on_disk_of(self, megabytes):
        """A batch that hangs, with the user's data on a small disk; which pages are where at its end."""
        data = self.home / "data"
        words = " ".join(f'"{w}"' for w in [PROGRAM, *self.scan_words("--format", "mpdf", "--timeout", "2", **self.FAILING)])
        script = (f'{self.spoil}; {words} >&2; echo "exit $?"; '
                  f'find "{data}" "{self.scratch}" -name "Image_*.jpg" -size +1c')
        return run_on_small_disk(data, megabytes, script, self.environment)

    def test_a_full_disk(self):
        self.spoil = f'head -c 8M /dev/zero > "{self.home}/data/filler" 2>/dev/null; true'
        result = self.on_disk_of(1)
        self.assertIn("exit 5", result.stdout, result.stderr)
        found = [line for line in result.stdout.splitlines() if line.endswith(".jpg")]
        self.assertEqual(sorted(os.path.basename(p) for p in found), ["Image_00001.jpg", "Image_00002.jpg"])
        for page in found:
            self.assertIn(str(pathlib.Path(page).parent), result.stderr)

    def test_a_read_only_disk(self):
        self.spoil = (f'mount -o remount,bind,ro "{self.home}/data" 2>/dev/null || '
                      f'sudo -n mount -o remount,bind,ro "{self.home}/data"')
        result = self.on_disk_of(1)
        self.assertIn("exit 5", result.stdout, result.stderr)
        found = [line for line in result.stdout.splitlines() if line.endswith(".jpg")]
        self.assertEqual(sorted(os.path.basename(p) for p in found), ["Image_00001.jpg", "Image_00002.jpg"])
        for page in found:
            self.assertTrue(page.startswith(str(self.scratch)), page)
            self.assertIn(str(pathlib.Path(page).parent), result.stderr)


if __name__ == "__main__":
    unittest.main()
