"""Sources that hang in any of their calls, or call back at an unexpected time."""
import os
import unittest

from support import ProgramTest

PAGES = 2
# Call, page on which it hangs, and the pages that are saved by then. A source is opened and closed once for a
# test before it scans.
CALLS = [("open", None, 0), ("close", None, 0), ("enable", None, 0), ("info", 1, 0), ("info", 2, 1), ("setup", 1, 0),
         ("setup", 2, 1), ("strip", 1, 0), ("strip", 2, 1), ("end", 1, 1), ("end", 2, 2), ("disable", None, 2)]


class HangingSources(ProgramTest):
    def scan_with(self, fault, *words):
        return self.scan("--format", "bmp", "--name", fault.replace("@", "-").replace(":", "-"), *words,
                         fault=fault, options=[f"count={PAGES}", "resolution=50"])

    def test_no_call_holds_the_command_for_ever(self):
        for call, page, saved in CALLS:
            fault = f"{call}-hang" + (f"@{page}" if page else "")
            with self.subTest(fault=fault):
                result = self.scan_with(fault, "--timeout", "1")
                self.assertEqual(result.returncode, 5, result.stderr)
                self.assertIn("the source hangs", result.stderr)
                self.assertEqual(len(result.stdout.splitlines()), saved)
                for path in result.stdout.splitlines():
                    # The header of a page that was cut off would count bytes that are not there.
                    with open(path, "rb") as file:
                        header = file.read(14)
                    self.assertEqual(header[:2], b"BM")
                    self.assertGreater(os.path.getsize(path), int.from_bytes(header[10:14], "little") + 413 * 585)
                self.assertEqual(list((self.home / "scratch/tmp").iterdir()), [])

    def test_callbacks_may_come_late_twice_or_from_another_thread(self):
        for fault in ("callback-late:700", "callback-twice", "callback-thread"):
            with self.subTest(fault=fault):
                result = self.scan_with(fault)
                self.assertEqual(result.returncode, 0, result.stderr)
                self.assertEqual(len(result.stdout.splitlines()), PAGES)

    def test_a_source_that_asks_to_be_closed_instead(self):
        result = self.scan_with("callback-close")
        self.assertEqual((result.returncode, result.stdout), (1, ""), result.stderr)


if __name__ == "__main__":
    unittest.main()
