"""Every format into save folders that take nothing or go away during the scan, and words that name none."""
import os
import pathlib
import shutil
import subprocess
import time
import unittest

from support import PROGRAM, ProgramTest, run, run_on_small_disk

SUFFIX = {"bmp": ".bmp", "jpg": ".jpg", "gif": ".gif", "pdf": ".pdf", "mpdf": ".pdf", "tif": ".tif", "mtif": ".tif",
          "png": ".png"}
JOINED = ("mpdf", "mtif")


def check_whole(path):
    """A reader that is not ours takes the whole file."""
    path = pathlib.Path(path)
    if path.suffix == ".bmp":
        subprocess.run(["bmptopnm", "-quiet", path], capture_output=True, check=True)
    elif path.suffix == ".pdf":
        run("qpdf", "--check", path)
    else:
        run("identify", "-regard-warnings", path)


class SaveFolder(ProgramTest):
    def setUp(self):
        super().setUp()
        self.pages.mkdir()
        self.copies = self.home / "copies"

    def script(self, file_format, *options, before="true", after="true"):
        """A scan on the small disk; afterwards what lies on it is copied away from it."""
        words = [PROGRAM, "scan", "--source", "Software Scanner", "--format", file_format, "--folder",
                 str(self.pages), *(word for option in options for word in ("--option", option))]
        quoted = " ".join(f'"{word}"' for word in words)
        return (f'{before}; {quoted} > "{self.home}/out"; echo "exit $?"; {after}; rm -rf "{self.copies}"; '
                f'cp -a "{self.pages}" "{self.copies}"')

    def on_disk(self, megabytes, *words, **keywords):
        """Exit code, printed paths, and the files that are on the disk at the end."""
        result = run_on_small_disk(self.pages, megabytes, self.script(*words, **keywords), self.environment)
        self.assertIn("exit ", result.stdout, result.stderr)
        printed = [os.path.basename(p) for p in (self.home / "out").read_text().splitlines()]
        files = sorted(p.name for p in self.copies.iterdir() if p.is_file() and p.name not in ("filler", "earlier"))
        return int(result.stdout.split("exit ")[1].split()[0]), printed, files, result.stderr

    def kept(self):
        return sorted(p.name for p in self.home.glob("data/paperline/Kept Pages/*/*"))

    def forget(self):
        shutil.rmtree(self.home / "data/paperline/Kept Pages", ignore_errors=True)

    def test_a_read_only_disk_is_told_and_nothing_is_lost(self):
        read_only = (f'head -c 64K /dev/urandom > "{self.pages}/earlier"; '
                     f'mount -o remount,bind,ro "{self.pages}" 2>/dev/null || sudo -n mount -o remount,bind,ro "{self.pages}"')
        for file_format in SUFFIX:
            with self.subTest(file_format=file_format):
                code, printed, files, err = self.on_disk(4, file_format, "count=2", "resolution=50", before=read_only)
                self.assertEqual((code, printed, files), (1, [], []), err)
                self.assertTrue(err)
                self.assertEqual(len(self.kept()), {"mpdf": 2, "mtif": 2, "pdf": 2}.get(file_format, 0), err)
                self.forget()

    def test_a_folder_that_goes_away_during_the_scan(self):
        elsewhere = self.home / "moved"
        for file_format in SUFFIX:
            with self.subTest(file_format=file_format):
                process = subprocess.Popen(
                    [PROGRAM, "scan", "--source", "Software Scanner", "--format", file_format, "--folder",
                     str(self.pages), "--option", "count=12", "--option", "resolution=75", "--option", "mode=Color"],
                    stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, env=self.environment)
                self.addCleanup(process.kill)
                begun = "scratch/tmp/paperline-*/CorvaneTempImage/MultiImage/*2.*" if file_format in JOINED else "pages/*"
                deadline = time.monotonic() + 60
                while not list(self.home.glob(begun)):
                    self.assertLess(time.monotonic(), deadline, "a page is saved")
                    time.sleep(0.002)
                self.pages.rename(elsewhere)
                out, err = process.communicate(timeout=120)
                self.assertEqual(process.returncode, 1, err)
                self.assertTrue(err)
                printed = [os.path.basename(p) for p in out.splitlines()]
                saved = sorted(p.name for p in elsewhere.iterdir() if p.suffix == SUFFIX[file_format])
                self.assertEqual(saved, sorted(printed))
                for name in saved:
                    check_whole(elsewhere / name)
                if file_format in JOINED:
                    self.assertEqual(len(self.kept()), 12)
                shutil.rmtree(elsewhere)
                self.pages.mkdir(exist_ok=True)
                self.forget()


class Words(ProgramTest):
    def test_bytes_that_are_no_text_are_refused(self):
        for option in ("--folder", "--name", "--source", "--option"):
            words = [PROGRAM.encode(), b"scan", option.encode(), os.fsencode(self.home) + b"/gr\xfc\xdf=x"]
            result = subprocess.run(words, capture_output=True, env=self.environment, timeout=60)
            self.assertEqual((result.returncode, result.stdout), (2, b""), option)
            self.assertIn(f"{option} is not valid UTF-8".encode(), result.stderr)
        self.assertEqual(sorted(p.name for p in self.home.iterdir()), ["data", "root", "run", "sane"])


if __name__ == "__main__":
    unittest.main()
