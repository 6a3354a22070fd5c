"""Every file format of `paperline scan`, read with tools that are not ours: pixels, depth, resolution, validity.

Pages are pictures that a test knows byte for byte: a single pixel, a column, a strip of 65,000 rows, widths that
fill no byte, white, black, noise, and a slope of all colours."""
import json
import math
import random
import re
import struct
import unittest

from pictures import MARK
from support import ProgramTest, run, run_raw

MODES = {"Lineart": 1, "Gray": 8, "Color": 24}
RESOLUTIONS = (100, 150, 200, 240, 400, 600)  # beside 300
EIGHT_PIXELS = [bytes(255 if byte >> (7 - bit) & 1 else 0 for bit in range(8)) for byte in range(256)]


class Page:
    """A picture of packed rows from the top; 0 is black."""

    def __init__(self, name, width, height, bits, samples):
        self.name, self.width, self.height, self.bits = name, width, height, bits
        self.row = (width * bits + 7) // 8
        self.samples = bytes(samples(self))
        assert len(self.samples) == self.row * height, name

    def pnm(self):
        head = {1: b"P4 %d %d\n", 8: b"P5 %d %d 255\n", 24: b"P6 %d %d 255\n"}[self.bits] % (self.width, self.height)
        return head + (bytes(255 - byte for byte in self.samples) if self.bits == 1 else self.samples)

    def received(self):
        """RGB pixels as the transfer leaves them: its mark stands over the first bytes."""
        data = MARK[:len(self.samples)] + self.samples[len(MARK):]
        return rgb(self.bits, self.width, self.height, data)

    def dots_per_inch(self, resolution):
        """What is left of the resolution when the sides are whole points, rounded up."""
        sides = []
        for pixels in (self.width, self.height):
            points = struct.unpack("f", struct.pack("f", pixels * 72 / resolution))[0]
            sides.append(pixels * 72 / math.ceil(points))
        return sides


def rgb(bits, width, height, data):
    if bits == 24:
        return bytes(data)
    if bits == 1:
        row = (width + 7) // 8
        data = b"".join(b"".join(map(EIGHT_PIXELS.__getitem__, data[y * row:(y + 1) * row]))[:width]
                        for y in range(height))
    result = bytearray(3 * len(data))
    for channel in range(3):
        result[channel::3] = data
    return bytes(result)


def read_pnm(data):
    """Width, height and RGB pixels of a raw PNM file without comments."""
    kind = data[:2]
    match = re.match(rb"P4\s+(\d+)\s+(\d+)\s" if kind == b"P4" else rb"P[56]\s+(\d+)\s+(\d+)\s+255\s", data)
    width, height = int(match[1]), int(match[2])
    samples = data[match.end():]
    if kind == b"P4":
        samples = bytes(255 - byte for byte in samples)
    return width, height, rgb({b"P4": 1, b"P5": 8, b"P6": 24}[kind], width, height, samples)


def fill(byte):
    return lambda page: bytes([byte]) * (page.row * page.height)


def noise(page):
    return random.Random(page.name).randbytes(page.row * page.height)


def slope(page):
    """Each channel rises another way, so that none can be taken for another."""
    if page.bits == 1:
        return noise(page)
    if page.bits == 8:
        return bytes((x + y) * 255 // (page.width + page.height) for y in range(page.height) for x in range(page.width))
    return bytes(sample for y in range(page.height) for x in range(page.width)
                 for sample in (x * 255 // page.width, y * 255 // page.height, 255 - x * 255 // page.width))


def few_colours(page):
    if page.bits != 24:
        return noise(page)
    return b"".join(bytes((index % 15 * 17, index % 7 * 40, index % 2 * 255))
                    for index in range(page.width * page.height))


def all_pages(bits):
    return [Page(f"{index:02d}-{name}", width, height, bits, samples) for index, (name, width, height, samples) in
            enumerate([("pixel", 1, 1, fill(0x80)), ("column", 1, 300, noise), ("strip", 3, 65000, noise),
                       ("odd", 17, 31, few_colours), ("white", 203, 97, fill(255)), ("black", 64, 64, fill(0)),
                       ("noise", 149, 80, noise), ("slope", 301, 211, slope)])]


def two_pages(bits):
    return [Page("00-slope", 301, 211, bits, slope), Page("01-odd", 17, 31, bits, few_colours)]


def mean_difference(one, other):
    assert len(one) == len(other)
    return sum(abs(a - b) for a, b in zip(one, other)) / len(one)


def block_means(pixels, page, side=16):
    """The mean of each channel in each whole square; of the whole page when it has none."""
    across, down = min(side, page.width), min(side, page.height)
    if (across, down) != (side, side):
        across, down = page.width, page.height
    return [sum(sum(pixels[3 * (y * page.width + left) + channel:3 * (y * page.width + left + across):3])
                for y in range(top, top + down)) / (across * down)
            for top in range(0, page.height - down + 1, down) for left in range(0, page.width - across + 1, across)
            for channel in range(3)]


class FormatTest(ProgramTest):
    def scan_pictures(self, file_format, mode, resolution, pages):
        """The files of a scan of these pages; a folder of their own for each scan."""
        source = self.home / f"source-{mode}-{resolution}"
        if not source.exists():
            source.mkdir()
            for page in pages:
                (source / page.name).write_bytes(page.pnm())
        return self.scanned("--format", file_format, "--name", f"{file_format}{mode}{resolution}",
                            options=[f"pages={source}", f"mode={mode}", f"resolution={resolution}"])

    def scans(self, file_format):
        """(files, pages, resolution) of every scan that a format must stand."""
        for mode, bits in MODES.items():
            pages = all_pages(bits)
            yield self.scan_pictures(file_format, mode, 300, pages), pages, 300
        for index, resolution in enumerate(RESOLUTIONS):
            mode = list(MODES)[index % 3]
            pages = two_pages(MODES[mode])
            yield self.scan_pictures(file_format, mode, resolution, pages), pages, resolution

    def assertPixels(self, pnm, page):
        width, height, pixels = read_pnm(pnm)
        self.assertEqual((width, height), (page.width, page.height), page.name)
        self.assertTrue(pixels == page.received(), f"{page.name}: other pixels, mean difference "
                        f"{mean_difference(pixels, page.received()):.2f}")

    def assertLooksLike(self, pnm, page, limit):
        width, height, pixels = read_pnm(pnm)
        self.assertEqual((width, height), (page.width, page.height), page.name)
        self.assertLess(mean_difference(pixels, page.received()), limit, page.name)

    def assertSameBlocks(self, pnm, page, limit):
        """Square by square the mean colour is the page's, whatever became of the noise in it."""
        width, height, pixels = read_pnm(pnm)
        self.assertEqual((width, height), (page.width, page.height), page.name)
        for one, other in zip(block_means(pixels, page), block_means(page.received(), page)):
            self.assertLess(abs(one - other), limit, page.name)

    def identified(self, files, kind, pages):
        """ImageMagick sees kind and size. Debian's policy keeps it from sides above 16,000."""
        low = [number for number, page in enumerate(pages) if page.height <= 16000]
        lines = run("identify", "-format", "%m %w %h\n", *(files[number] for number in low)).stdout.splitlines()
        self.assertEqual(lines, [f"{kind} {pages[number].width} {pages[number].height}" for number in low])

    def exif(self, files, *tags):
        return json.loads(run("exiftool", "-json", "-n", *tags, *files).stdout)


class Bmp(FormatTest):
    def test_bmp(self):
        for files, pages, resolution in self.scans("bmp"):
            for path, page in zip(files, pages):
                self.assertPixels(run_raw("bmptopnm", "-quiet", path), page)
                header = struct.unpack("<iiHHIIii", path.read_bytes()[18:46])
                self.assertEqual(header[:4], (page.width, page.height, 1, page.bits))
                self.assertEqual(header[-2:], (int(resolution * 39.37),) * 2)


class Png(FormatTest):
    def test_png(self):
        for files, pages, resolution in self.scans("png"):
            run("pngcheck", "-q", *files)
            self.identified(files, "PNG", pages)
            tags = self.exif(files, "-BitDepth", "-ColorType", "-PixelsPerUnitX", "-PixelsPerUnitY", "-PixelUnits")
            for path, page, tag in zip(files, pages, tags):
                self.assertPixels(run_raw("pngtopnm", path), page)
                self.assertEqual((tag["BitDepth"], tag["ColorType"]), {1: (1, 0), 8: (8, 0), 24: (8, 2)}[page.bits])
                metres = [round(dpi / 0.0254) for dpi in page.dots_per_inch(resolution)]
                self.assertEqual([tag["PixelsPerUnitX"], tag["PixelsPerUnitY"], tag["PixelUnits"]], metres + [1])


class Tiff(FormatTest):
    def check_directory(self, text, page, resolution):
        """What tiffinfo says of one page."""
        self.assertRegex(text, rf"Image Width: {page.width} Image Length: {page.height}\b")
        self.assertIn("Compression Scheme: LZW\n", text)
        colour = page.bits == 24
        self.assertIn("Bits/Sample: %d\n" % min(page.bits, 8), text)
        self.assertIn("Photometric Interpretation: %s\n" % ("RGB color" if colour else "min-is-black"), text)
        self.assertIn("Samples/Pixel: %d\n" % (3 if colour else 1), text)
        self.assertIn("Planar Configuration: single image plane\n", text)
        found = re.search(r"Resolution: ([\d.]+), ([\d.]+) pixels/inch", text)
        for side, dpi in zip(found.groups(), resolution):
            self.assertAlmostEqual(float(side), dpi, delta=dpi * 1e-5)

    def test_tif(self):
        for files, pages, resolution in self.scans("tif"):
            self.identified(files, "TIFF", pages)
            for path, page in zip(files, pages):
                self.check_directory(run("tiffinfo", path).stdout, page, page.dots_per_inch(resolution))
                self.assertEqual(run("tiffdump", path).stderr, "")
                self.assertPixels(run_raw("tifftopnm", path), page)

    def test_mtif(self):
        for files, pages, _ in self.scans("mtif"):
            self.assertEqual(len(files), 1)
            self.assertEqual(run("tiffdump", files[0]).stderr, "")
            texts = run("tiffinfo", files[0]).stdout.split("=== TIFF directory")[1:]
            self.assertEqual(len(texts), len(pages))
            prefix = self.home / "split-"
            for old in self.home.glob("split-*"):
                old.unlink()
            run("tiffsplit", files[0], prefix)
            split = sorted(self.home.glob("split-*"))
            self.identified(split, "TIFF", pages)
            for text, path, page in zip(texts, split, pages):
                self.check_directory(text, page, (300, 300))  # declared, whatever the scan's was
                self.assertPixels(run_raw("tifftopnm", path), page)


class Gif(FormatTest):
    def test_gif(self):
        for files, pages, _ in self.scans("gif"):
            self.identified(files, "GIF", pages)
            for path, page in zip(files, pages):
                text = run("giftext", path).stdout
                self.assertRegex(text, rf"Screen Size - Width = {page.width}, Height = {page.height}\.")
                self.assertRegex(text, r"(?s)GIF file terminated normally\.\s*$")
                pnm = run_raw("giftopnm", path)
                if len(set(zip(*[iter(page.received())] * 3))) <= 256:
                    self.assertPixels(pnm, page)
                else:
                    self.assertSameBlocks(pnm, page, 30)


class Jpeg(FormatTest):
    def check_picture(self, pnm, page):
        if page.name.endswith(("white", "black")) or page.name.endswith("slope") and page.bits > 1:
            self.assertLooksLike(pnm, page, 2)
        self.assertSameBlocks(pnm, page, 8)

    def test_jpg(self):
        for files, pages, resolution in self.scans("jpg"):
            self.identified(files, "JPEG", pages)
            self.assertEqual([line.split()[-1] for line in run("jpeginfo", "-c", *files).stdout.splitlines()],
                             ["OK"] * len(files))
            tags = self.exif(files, "-JFIF:all", "-ColorComponents", "-EncodingProcess")
            for path, page, tag in zip(files, pages, tags):
                self.check_picture(run_raw("djpeg", "-pnm", path), page)
                self.assertEqual((tag["ColorComponents"], tag["EncodingProcess"]), (3 if page.bits == 24 else 1, 0))
                whole = [math.floor(dpi + 0.5) for dpi in page.dots_per_inch(resolution)]
                self.assertEqual([tag["ResolutionUnit"], tag["XResolution"], tag["YResolution"]], [1] + whole)


class Pdf(FormatTest):
    def check_document(self, path, pages, resolution, jpegs):
        run("qpdf", "--check", path)
        text = run("pdfinfo", "-f", "1", "-l", str(len(pages)), path).stdout
        self.assertRegex(text, rf"(?m)^Pages: +{len(pages)}$")
        sizes = re.findall(r"(?m)^Page +\d+ size: +([\d.]+) x ([\d.]+) pts", text)
        rows = [line.split() for line in run("pdfimages", "-list", path).stdout.splitlines()[2:]]
        self.assertEqual((len(sizes), len(rows)), (len(pages), len(pages)))
        for page, size, row in zip(pages, sizes, rows):
            whole = [math.floor(dpi + 0.5) for dpi in page.dots_per_inch(resolution)]
            for points, pixels, dpi in zip(size, (page.width, page.height), whole):
                self.assertAlmostEqual(float(points), pixels * 72 / dpi, delta=0.01 + pixels * 1e-5)
            self.assertEqual((int(row[3]), int(row[4])), (page.width, page.height))
            self.assertEqual((row[5], row[7], row[8]), ("rgb" if page.bits == 24 else "gray", "8", "jpeg"))
        for old in self.home.glob("image-*"):
            old.unlink()
        run("pdfimages", "-j", path, self.home / "image")
        taken = sorted(self.home.glob("image-*"))
        self.assertEqual([p.read_bytes() for p in taken], [p.read_bytes() for p in jpegs])  # not coded anew

    def check_drawing(self, path, number, page):
        """Drawn by a viewer in its pixels' size, the page is the page."""
        pnm = run_raw("pdftoppm", "-scale-to-x", str(page.width), "-scale-to-y", str(page.height),
                      "-f", str(number), "-l", str(number), path)
        width, height, pixels = read_pnm(pnm)
        self.assertEqual((width, height), (page.width, page.height))
        self.assertLess(mean_difference(pixels, page.received()), 4)

    def documents(self, file_format):
        for files, pages, resolution in self.scans(file_format):
            mode = {bits: name for name, bits in MODES.items()}[pages[0].bits]
            yield files, pages, resolution, self.scan_pictures("jpg", mode, resolution, pages)

    def test_pdf(self):
        for files, pages, resolution, jpegs in self.documents("pdf"):
            for path, page, jpeg in zip(files, pages, jpegs):
                self.check_document(path, [page], resolution, [jpeg])
                if page.name.endswith("slope") and page.bits > 1:
                    self.check_drawing(path, 1, page)

    def test_mpdf(self):
        for files, pages, resolution, jpegs in self.documents("mpdf"):
            self.assertEqual(len(files), 1)
            self.check_document(files[0], pages, resolution, jpegs)
            for number, page in enumerate(pages, 1):
                if page.name.endswith("slope") and page.bits > 1:
                    self.check_drawing(files[0], number, page)


if __name__ == "__main__":
    unittest.main()
