"""The program under locales that write numbers, letters and weeks differently: its files are the same
in all of them, its language is the locale's."""
import os
import pathlib
import plistlib
import shutil
import signal
import subprocess
import tempfile
import time
import unittest

import support
from support import ProgramTest, run

# Locale, its row in the language table, its decimal mark.
LOCALES = {
    "C": (0, "."),
    "de_DE.UTF-8": (5, ","),
    "tr_TR.UTF-8": (25, ","),  # i and I are no pair there
    "ar_AE.UTF-8": (26, "."),  # digits of its own, the week starts on Saturday
    "zh_TW.UTF-8": (1, "."),
}
FORMATS = ("bmp", "jpg")
TURKISH_PAPER_JAM = "Tarayıcıda kâğıt sıkıştı. Sıkışan kâğıdı çıkarıp kalan sayfaları yeniden tarayın."
TURKISH = 25


class Locales(ProgramTest):
    @classmethod
    def setUpClass(cls):
        cls.locales = pathlib.Path(tempfile.mkdtemp(prefix="paperline-locales-"))
        cls.addClassCleanup(shutil.rmtree, cls.locales, ignore_errors=True)
        for name in LOCALES:
            if name == "C":
                continue
            territory, charmap = name.split(".")
            # Warnings about a locale's details make it 1; the locale is there all the same.
            subprocess.run(["localedef", "-c", "-i", territory, "-f", charmap, cls.locales / name], capture_output=True)

    def settings_of(self, locale):
        return {"LOCPATH": str(self.locales), "LC_ALL": locale, "LANG": locale}

    def forgetful_program(self):
        """Nothing is kept in the build tree."""
        place = self.own_program()
        self.forget_everything(place)
        return place

    def forget_everything(self, place):
        for path in place.rglob("*.plist"):
            if path.name != "Info.plist":
                path.unlink()

    def test_the_locales_are_real(self):
        for locale, (_, mark) in LOCALES.items():
            found = run("locale", "decimal_point", env={**os.environ, **self.settings_of(locale)}).stdout.strip()
            self.assertEqual(found, mark, locale)

    def test_pages_and_names_do_not_depend_on_the_locale(self):
        pages, descriptions = {}, {}
        for locale in LOCALES:
            for name in FORMATS:
                result = self.scan("--format", name, "--json", "--name", f"{locale}_INDIVIDUAL",
                                   options=["count=1", "resolution=75", "width=105.5", "height=148.25", "mode=Color"],
                                   **self.settings_of(locale))
                self.assertEqual(result.returncode, 0, result.stderr)
                page, totals = self.objects(result)
                path = pathlib.Path(page.pop("path"))
                self.assertEqual(path.name, f"{locale}_INDIVIDUAL_00001.{name}")
                pages.setdefault(name, set()).add(path.read_bytes())
                descriptions.setdefault(name, set()).add(str((page, totals)))
        for name in FORMATS:
            self.assertEqual((len(pages[name]), len(descriptions[name])), (1, 1), name)

    def test_names_have_plain_digits_and_english_months(self):
        months = "JAN|FEB|MAR|APR|MAY|JUN|JUL|AUG|SEP|OCT|NOV|DEC"
        for locale in LOCALES:
            for token, pattern in (("%YYYYMMDD", r"20[0-9]{6}"), ("%MMM", months), ("%HHNNSS", "[0-9]{6}")):
                path, = self.scanned("--format", "bmp", "--name", f"{token}_i", **self.settings_of(locale),
                                     options=["count=1", "resolution=50", "mode=Lineart"])
                self.assertRegex(path.name, rf"^({pattern})_i_[0-9]{{5}}\.bmp$", locale)

    def test_the_window_speaks_the_locales_language_and_gives_the_source_back_its_own(self):
        place = self.forgetful_program()
        program = place / "Paperline.app/Contents/MACOS/paperline"
        source_file = place / "TWAIN Data Sources/Software Scanner.ds/Versions/A/cvscan.plist"
        for locale, (language, _) in LOCALES.items():
            with self.subTest(locale):
                source_file.write_bytes(plistlib.dumps({"Default": {"Language": 9, "Tilt": 0.5}, "Kept": "ı"}))
                self.use_window(program, locale, source_file, language)
                self.assertEqual(plistlib.loads(source_file.read_bytes()),
                                 {"Default": {"Language": 9, "Tilt": 0.5}, "Kept": "ı"})
                kept = self.stored_settings(place)
                self.assertEqual((kept["Language"], kept["ScannerName"]), (language, "Software Scanner"))
                # From now on the stored language counts, whatever the system's is.
                self.use_window(program, "C", source_file, language)
                self.assertEqual(self.stored_settings(place), kept)
                self.forget_everything(place)

    def use_window(self, program, locale, source_file, language):
        """Starts the window, waits until the source has the language, ends the window."""
        window = subprocess.Popen([program], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                                  env={**self.environment, **self.settings_of(locale), "QT_QPA_PLATFORM": "offscreen"})
        try:
            limit = time.monotonic() + 60
            while self.language_of(source_file) != language:
                self.assertIsNone(window.poll(), locale)
                self.assertLess(time.monotonic(), limit, locale)
                time.sleep(0.05)
            window.send_signal(signal.SIGTERM)
            messages = window.communicate(timeout=60)[1]
            self.assertEqual(window.returncode, 0, messages)
        finally:
            window.kill()
            window.wait()
            window.stderr.close()

    def language_of(self, source_file):
        try:
            return plistlib.loads(source_file.read_bytes())["Default"]["Language"]
        except (FileNotFoundError, plistlib.InvalidFileException):
            return None

    def stored_settings(self, place):
        found = [p for p in place.rglob("*.plist") if p.name not in ("Info.plist", "cvscan.plist")]
        self.assertEqual(len(found), 1, found)
        return plistlib.loads(found[0].read_bytes())

    def test_the_source_speaks_the_language_that_is_written_for_it(self):
        place = self.forgetful_program()
        support.PROGRAM, built = str(place / "Paperline.app/Contents/MACOS/paperline"), support.PROGRAM
        self.addCleanup(setattr, support, "PROGRAM", built)
        source_file = self.faulty_bundle() / "Versions/A/cvscan.plist"
        source_file.write_bytes(plistlib.dumps({"Default": {"Language": TURKISH}}))
        failing = {"fault": "device-jam@2", "options": ["count=2", "resolution=50"]}
        # The window's language is English here, so that both speak.
        result = self.scan("--format", "bmp", **failing, **self.settings_of("C"))
        self.assertEqual(result.returncode, 1, result.stderr)
        self.assertIn(f"Paper is jammed in the scanner. Please clear it and scan the remaining pages again. {TURKISH_PAPER_JAM}",
                      result.stderr)
        # In Turkish both say the same, once.
        result = self.scan("--format", "bmp", **failing, **self.settings_of("tr_TR.UTF-8"))
        self.assertEqual(result.stderr.count(TURKISH_PAPER_JAM), 1, result.stderr)
        self.assertNotIn("Paper is jammed", result.stderr)


if __name__ == "__main__":
    unittest.main()
