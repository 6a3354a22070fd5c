"""Files and folders that go bad under the running window. It keeps answering, and shows what can be shown."""
import os
import shutil
import struct
import zlib

import session

session.enter()

import unittest  # noqa: E402

from driver import Heartbeat, wait  # noqa: E402
from window_support import FORMATS, WindowTest  # noqa: E402

LONGEST_STANDSTILL = 1.0  # seconds without an answer
GIANT = 100_000


def chunk(name, data):
    return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))


def giant_png():
    header = struct.pack(">IIBBBBB", GIANT, GIANT, 8, 2, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(bytes(1000))) + chunk(b"IEND", b"")


def giant_bmp():
    return b"BM" + struct.pack("<IHHI", 54, 0, 0, 54) + struct.pack("<IiiHHIIiiII", 40, GIANT, GIANT, 1, 24, 0, 0, 0, 0, 0, 0)


def giant_tiff():
    tags = [(256, 4, GIANT), (257, 4, GIANT), (258, 3, 8), (259, 3, 1), (262, 3, 1), (273, 4, 8), (277, 3, 1),
            (278, 4, GIANT), (279, 4, GIANT)]
    entries = b"".join(struct.pack("<HHII", tag, kind, 1, value) for tag, kind, value in tags)
    return b"II*\0" + struct.pack("<I", 8) + struct.pack("<H", len(tags)) + entries + bytes(4)


def largest_gif():
    """The header counts in 16 bits: 65,535 is the most."""
    return b"GIF89a" + struct.pack("<HHBBB", 65535, 65535, 0x80, 0, 0) + bytes(6) + b",\0\0\0\0" + struct.pack(
        "<HHB", 65535, 65535, 0) + b"\x02\x02\x4c\x01\x00;"


def largest_jpeg(good):
    """The frame header of a good file with the largest size it can name."""
    at = next(i for i in range(len(good) - 1) if good[i] == 0xFF and good[i + 1] in (0xC0, 0xC1, 0xC2))
    return good[:at + 5] + b"\xff\xff\xff\xff" + good[at + 9:]


def pdf_of_many_pages(count):
    """Each page with a content and a picture of its own, as a scanning program writes them."""
    kids = b" ".join(b"%d 0 R" % (3 + 3 * i) for i in range(count))
    objects = [b"<< /Type /Catalog /Pages 2 0 R >>", b"<< /Type /Pages /Count %d /Kids [%s] >>" % (count, kids)]
    drawing = b"q 595 0 0 842 0 0 cm /Page Do Q"
    grey = bytes(range(256)) * 10
    for number in range(3, 3 + 3 * count, 3):
        objects += [b"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Contents %d 0 R /Resources "
                    b"<< /XObject << /Page %d 0 R >> >> >>" % (number + 1, number + 2),
                    b"<< /Length %d >>\nstream\n%s\nendstream" % (len(drawing), drawing),
                    b"<< /Type /XObject /Subtype /Image /Width 256 /Height 10 /ColorSpace /DeviceGray "
                    b"/BitsPerComponent 8 /Length %d >>\nstream\n%s\nendstream" % (len(grey), grey)]
    body, offsets = b"%PDF-1.4\n", []
    parts, length = [body], len(body)
    for number, content in enumerate(objects, 1):
        offsets.append(length)
        part = b"%d 0 obj\n%s\nendobj\n" % (number, content)
        parts.append(part)
        length += len(part)
    table = b"xref\n0 %d\n0000000000 65535 f \n" % (len(objects) + 1)
    table += b"".join(b"%010d 00000 n \n" % offset for offset in offsets)
    trailer = b"trailer\n<< /Size %d /Root 1 0 R >>\nstartxref\n%d\n%%%%EOF\n" % (len(objects) + 1, length)
    return b"".join(parts) + table + trailer


def damages(form, good):
    """Name and content of what the page file becomes; None: it goes away."""
    giants = {".png": giant_png(), ".bmp": giant_bmp(), ".tif": giant_tiff(), ".gif": largest_gif()}
    if form.suffix == ".jpg":
        giants[".jpg"] = largest_jpeg(good)
    yield "truncated", good[:len(good) * 3 // 5]
    yield "only its first bytes", good[:10]
    yield "empty", b""
    yield "text", b"Dear reader, this is no page.\n" * 200
    for name, content in giants.items():
        yield f"a giant {name}", content
    if form.suffix == ".pdf":
        yield "a PDF of 10,000 pages", pdf_of_many_pages(10_000)
    yield "gone", None


class PageFiles(WindowTest):
    def test_pages_that_go_bad_while_they_are_listed(self):
        program = self.started()
        table = program.find(role="table")
        rows = 0
        for form in FORMATS:
            self.choose_format(program, form.name)
            before = set(self.files())
            self.scan(program, rows=rows + 2)
            bad = sorted(set(self.files()) - before)[0]
            good = bad.read_bytes()
            for name, content in damages(form, good):
                with self.subTest(form.name, damage=name):
                    bad.write_bytes(good)
                    self.spoil(bad, content)
                    self.look_without_standstill(program, table, rows)
                    self.assertTrue(program.running)
            rows += 2
        # The scanner, the list and the page view still work.
        self.scan(program, rows=rows + 2)
        self.wait_page_drawn(program)
        self.close(program)

    def look_without_standstill(self, program, table, row):
        """A machine that is busy with other work may stop the program once; a fault of its own comes back."""
        standstills = []
        for _ in range(3):
            with Heartbeat(program) as heart:
                self.look_at(program, table, row)
                wait(lambda: heart.beats > 5, "the program answers again and again")
            standstills.append(heart.longest)
            if heart.longest < LONGEST_STANDSTILL:
                return
        self.fail(f"the program stood still for {standstills} seconds")

    @staticmethod
    def spoil(path, content):
        if content is None:
            path.unlink()
        else:
            path.write_bytes(content)

    def look_at(self, program, table, row):
        """Selects the bad page and its neighbour, fitted and at actual size."""
        for mode in ("ctrl+1", "ctrl+0"):
            program.select_row(table, row + 1)
            program.key(mode)
            program.select_row(table, row)

    def test_the_page_before_stays_when_a_page_is_gone(self):
        program = self.started()
        table = program.find(role="table")
        self.scan(program, rows=2)
        self.wait_page_drawn(program)
        place = self.page_view(program).box
        before = program.picture(place=place)
        self.files()[0].unlink()
        program.select_row(table, 0)
        self.assertEqual(program.picture(place=place), before)
        self.assertTrue(program.running)


class LanguageFolders(WindowTest):
    def folder(self, language):
        return self.tree.bundle / f"Contents/Resources/{language}.lproj"

    def spoil(self, language, content):
        path = self.folder(language)
        path.mkdir(exist_ok=True)
        file = path / "Localizable.strings"
        file.unlink(missing_ok=True)
        if content is not None:
            file.write_bytes(content)

    def test_folders_that_are_damaged_half_or_gone(self):
        half = '"Scan" = "Abtasten";\n"Setup" = "Einrichten";\n'.encode()
        self.spoil("de", half)
        self.spoil("fr", os.urandom(5000))
        self.spoil("es", None)
        self.spoil("it", b'"Scan" = "Acquisisci\xff\xfe";\n"Setup" = ' + b"x" * 100_000)
        shutil.rmtree(self.folder("cs"), ignore_errors=True)
        program = self.started()
        program.menu("Options", "Language", "Deutsch")
        wait(lambda: program.find(role="push button", name="Abtasten"), "what is translated shows")
        program.find(role="push button", name="FileFormat")  # what is not shows its key
        for name in ("Français", "Español", "Italiano", "Čeština"):
            program.menu("Options", "Language", name)
            wait(lambda: program.find(name=name).checked, f"the mark moves to {name}")
            self.assertTrue(program.running)
        self.close(program)

    def test_without_any_texts_the_keys_show(self):
        for folder in (self.tree.bundle / "Contents/Resources").glob("*.lproj"):
            shutil.rmtree(folder)
        program = self.started()
        program.find(role="push button", name="Scan")
        program.find(role="push button", name="FileFormat")
        program.key("ctrl+r")
        wait(lambda: program.find(role="table").rows == 2, "a scan works")
        self.wait_idle(program, "StatusReady")
        self.close(program)


class Fonts(WindowTest):
    def test_without_fonts_the_window_still_works(self):
        configuration = self.home.folder / "fonts.conf"
        configuration.write_text('<?xml version="1.0"?><!DOCTYPE fontconfig SYSTEM "fonts.dtd">'
                                 f"<fontconfig><cachedir>{self.home.folder}/fonts</cachedir></fontconfig>")
        program = self.started(FONTCONFIG_FILE=str(configuration), QT_QPA_FONTDIR=str(self.home.folder / "none"))
        self.scan(program, rows=2)
        self.wait_page_drawn(program)
        self.close(program)


if __name__ == "__main__":
    unittest.main(verbosity=2)
