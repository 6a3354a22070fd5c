"""What is on the screen, pixel by pixel: the page fitted and at actual size, the window during a scan, its colours."""
import session

session.enter()

import time  # noqa: E402
import unittest  # noqa: E402

from driver import wait, xdotool  # noqa: E402
from window_support import Rgb, WindowTest, bitmap  # noqa: E402


class PageView(WindowTest):
    """Screenshots against the arithmetic, with a page whose every pixel is known."""
    SIZE = (900, 1200)

    def setUp(self):
        super().setUp()
        pictures = self.home.folder / "pictures"
        pictures.mkdir()
        (pictures / "a.ppm").write_bytes(b"P6 %d %d 255\n" % self.SIZE + self.pattern())
        self.home.set_options(pages=pictures, resolution=100, source="Automatic Document Feeder")
        self.home.write_settings(self.tree, file_format=0, folder=self.home.pages / "Image")

    @classmethod
    def pattern(cls):
        """Green with a red left half of its upper half: no rotation or mirroring looks the same."""
        width, height = cls.SIZE
        upper = bytes((200, 0, 0)) * (width // 2) + bytes((0, 120, 0)) * (width - width // 2)
        return upper * (height // 2) + bytes((0, 120, 0)) * (width * (height - height // 2))

    def view_boxes(self, program):
        """The pane, and the view inside it."""
        views = [c for c in program.main_window().walk() if c.name == "Page view"]
        return views[0].box, views[-1].box

    def shown(self, program):
        pane, _ = self.view_boxes(program)
        return Rgb(*program.picture(place=pane))

    def page_in(self, picture):
        return picture.extent(lambda r, g, b: (r, g, b) == (200, 0, 0) or (r, g, b) == (0, 120, 0))

    def wait_page_at(self, program, expected):
        """Within one pixel: the drawing rounds to whole ones."""
        def close_enough():
            found = self.page_in(self.shown(program))
            self.last = found
            return found and all(abs(a - b) <= 1 for a, b in zip(found, expected))
        try:
            wait(close_enough, "")
        except AssertionError:
            self.fail(f"the page is drawn at {self.last}, not at {expected}")

    def fitted_extent(self, pane, width, height):
        scale = min((pane[2] - 20) / width, (pane[3] - 20) / height)
        return 5, 5, 5 + round(width * scale), 5 + round(height * scale)

    def test_fit_and_actual_size_are_drawn_to_the_number(self):
        program = self.started()
        self.scan(program, rows=1)
        width, height = self.SIZE
        pane, view = self.view_boxes(program)
        self.assertEqual(pane, view, "the fitted view fills the pane")
        self.wait_page_at(program, self.fitted_extent(pane, width, height))
        picture = self.shown(program)
        self.assertEqual(picture.at(2, 2), (191, 191, 191))
        self.assertEqual(picture.at(8, 8), (200, 0, 0))
        left, top, right, bottom = self.page_in(picture)
        self.assertEqual(picture.at((left + right) // 2 + 4, top + 8), (0, 120, 0))
        self.assertEqual(picture.at(left + 8, (top + bottom) // 2 + 4), (0, 120, 0))

        program.click(program.find(name="Actual Size"))
        _, view = wait(lambda: (lambda boxes: boxes[1][3] == height + 10 and boxes)(self.view_boxes(program)),
                       "the view is as high as the page and its margin")
        self.assertEqual(view[2], width + 15)
        wait(lambda: self.shown(program).at(5 + width // 2 - 1, 20) == (200, 0, 0), "the page is drawn pixel by pixel")
        picture = self.shown(program)
        self.assertEqual(picture.at(4, 300)[0] < 191, True, "a fine edge")
        self.assertEqual(picture.at(5 + width // 2 - 1, 20), (200, 0, 0))
        self.assertEqual(picture.at(5 + width // 2, 20), (0, 120, 0))
        bars = [c for c in program.main_window().walk() if c.role == "scroll bar" and c.showing]
        self.assertEqual(len(bars), 2)

        program.click(program.find(name="Fit Page"))
        self.wait_page_at(program, self.fitted_extent(pane, width, height))
        self.assertFalse([c for c in program.main_window().walk() if c.role == "scroll bar" and c.showing])

    def test_the_row_and_the_page_follow_the_file_on_disk(self):
        program = self.started()
        self.scan(program, rows=1)
        self.scan(program, rows=2)
        pane, _ = self.view_boxes(program)
        # The first page again, but 200 dpi across and 100 down: drawn twice as tall.
        first = self.home.pages / "Image_00001.bmp"
        first.write_bytes(bitmap(600, 300, self.rgb_of_two_colours(600, 300), 7874, 3937))
        program.key("Up")
        self.wait_page_at(program, self.fitted_extent(pane, 600, 600))

    @staticmethod
    def rgb_of_two_colours(width, height):
        return bytes((200, 0, 0)) * (width * height // 2) + bytes((0, 120, 0)) * (width * height - width * height // 2)

    def test_the_page_follows_the_size_of_the_window(self):
        program = self.started()
        self.scan(program, rows=1)
        width, height = self.SIZE
        before, _ = self.view_boxes(program)
        for size in ((1300, 900), (800, 560), (1024, 678)):
            xdotool("windowsize", "--sync", program.window_number("frame"), *size)
            wait(lambda: program.main_window().box[2:] == size, "the window has its new size")
            pane, view = self.view_boxes(program)
            self.assertEqual(pane, view)
            self.wait_page_at(program, self.fitted_extent(pane, width, height))
        self.assertEqual(self.view_boxes(program)[0], before)
        program.key("ctrl+1")
        # Large enough for the page's width, but not for its height.
        size = (1300, 900)
        xdotool("windowsize", "--sync", program.window_number("frame"), *size)
        wait(lambda: self.scroll_bars(program) == 1, "only the upright scroll bar is left")
        pane, view = self.view_boxes(program)
        self.assertEqual(view[3], height + 10)
        self.assertEqual(view[2], pane[2])

    @staticmethod
    def scroll_bars(program):
        """Those of the page view; the list of one page has none."""
        return len([c for c in program.main_window().walk() if c.role == "scroll bar" and c.showing])

    def test_a_page_that_goes_away_while_it_is_shown_stays_on_the_screen(self):
        program = self.started()
        self.scan(program, rows=1)
        width, height = self.SIZE
        (self.home.pages / "Image_00001.bmp").write_text("no page any more")
        xdotool("windowsize", "--sync", program.window_number("frame"), 900, 700)
        wait(lambda: program.main_window().box[2:] == (900, 700), "the window has its new size")
        pane, _ = self.view_boxes(program)
        self.wait_page_at(program, self.fitted_extent(pane, width, height))


class WhileScanning(WindowTest):
    """The program does not answer while it scans, but it paints."""
    PAGES = 3

    def test_the_status_line_and_the_list_are_painted_page_by_page(self):
        self.home.set_options(count=self.PAGES, resolution=75, delay=3000)
        self.home.write_settings(self.tree)
        program = self.started()
        window = program.main_window()
        status = program.first(window.walk(), role="status bar").box
        table = program.find(role="table").box
        lines, lists = [], []

        def look():
            picture = program.picture()
            for seen, place in ((lines, status), (lists, table)):
                part = self.part(picture, window_box, place)
                if part not in seen:
                    seen.append(part)

        window_box = program.place
        look()
        program.key("ctrl+r")
        deadline = time.monotonic() + 90
        while len(self.files()) < self.PAGES and time.monotonic() < deadline:
            look()
        self.wait_idle(program)
        look()
        # Ready; waiting; waiting with one page, with two; ready with three.
        self.assertGreaterEqual(len(lines), 2 + self.PAGES)
        # Empty, then one row more after each page.
        self.assertGreaterEqual(len(lists), 1 + self.PAGES)

    @staticmethod
    def part(picture, box, place):
        """The bytes of a place within the picture of a box."""
        width, _, pixels = picture
        left, top = place[0] - box[0], place[1] - box[1]
        return b"".join(pixels[3 * (width * y + left):3 * (width * y + left + place[2])]
                        for y in range(top, top + place[3]))


class Colours(WindowTest):
    def corner(self, program):
        """The empty end of the status line."""
        x, y, width, height = program.first(program.main_window().walk(), role="status bar").box
        return Rgb(*program.picture(place=(x + width // 2, y + height // 2, 4, 2))).at(1, 1)

    def test_dark_and_light_as_asked_for(self):
        for scheme, is_dark in (("dark", True), ("light", False)):
            with self.subTest(scheme):
                program = self.started(PAPERLINE_COLOUR_SCHEME=scheme)
                wait(lambda: (max(self.corner(program)) < 80) == is_dark, f"the window is {scheme}")
                self.close(program)


if __name__ == "__main__":
    unittest.main(verbosity=2)
