#!/usr/bin/env python3
"""Measures what each JPEG quality leaves of small print: reads rendered and scanned text by OCR at every
quality and chroma sampling, and prints a table of errors, fuzz around the letters, and size.

    bench/jpeg_legibility.py [--first 30] [--last 95] [--step 5] [--sets grey-300,colour-300,...]
                             [--samplings 4:2:0,4:4:4] [--sheets 1]

Needs, besides cjpeg and djpeg: tesseract-ocr tesseract-ocr-eng python3-numpy python3-pil fonts-liberation
fonts-dejavu-core. Nothing else in this repository does.
"""
import argparse
import os
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

import numpy
from PIL import Image, ImageDraw, ImageFilter, ImageFont

TEXT = pathlib.Path("/usr/share/common-licenses/GPL-3")
FONTS = {
    "serif": "/usr/share/fonts/truetype/liberation/LiberationSerif-Regular.ttf",
    "sans": "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf",
}
# Text on ground: office colours, stamps and highlighters, and pairs of nearly equal lightness, where colour alone
# tells the letter from the paper.
COLOURS = {
    "blue ink": ((30, 60, 160), (246, 246, 243)),
    "red stamp": ((205, 40, 50), (246, 246, 243)),
    "orange": ((240, 140, 40), (246, 246, 243)),
    "on highlighter": ((30, 30, 30), (250, 240, 80)),
    "white on red": ((250, 250, 250), (200, 40, 50)),
    "red on green": ((210, 60, 60), (110, 150, 100)),
    "blue on grey": ((80, 110, 230), (130, 130, 130)),
}
INK, PAPER = (28, 28, 30), (246, 246, 243)
SAMPLINGS = {"4:2:0": "2x2", "4:4:4": "1x1"}  # of colour pages, and as cjpeg calls them
SHEET_INCHES = (8.27, 11.69)
NOISE = 2.0  # standard deviation of a sample, as in the pages of the other benchmarks
BLUR_INCHES = 0.45 / 300  # of the lens
# Kind and dots per inch -> sizes of print that this resolution is used for.
SETS = {
    "grey-300": (6, 7, 8, 9, 10),
    "grey-200": (8, 9, 10),
    "grey-150": (10, 12),
    "colour-300": (6, 8, 10),
    "colour-200": (8, 10),
    "colour-150": (10, 12),
}


class Block:
    """A piece of text on the sheet: what it says, where it stands, and its colours."""

    def __init__(self, text, box, ink, paper):
        self.text, self.box, self.ink, self.paper = text, box, ink, paper


def words_of_text():
    text = TEXT.read_text(encoding="utf-8")
    return [w for w in re.sub(r"[^A-Za-z0-9.,;:()'\"-]+", " ", text).split() if len(w) < 20]


def lines_of(words, start, font, width, count):
    lines, position = [], start
    for _ in range(count):
        line = []
        while font.getlength(" ".join(line + [words[position % len(words)]])) < width:
            line.append(words[position % len(words)])
            position += 1
        lines.append(" ".join(line))
    return lines, position


def sheet(kind, dpi, points, number):
    """A scanned A4 sheet, full of text in these sizes, and its blocks. Numbers give other text and noise."""
    size = tuple(round(side * dpi) for side in SHEET_INCHES)
    picture = Image.new("RGB", size, PAPER)
    draw = ImageDraw.Draw(picture)
    words, position = words_of_text(), 400 + 1000 * number
    margin, pad = round(0.5 * dpi), round(0.08 * dpi)
    pairs = list(COLOURS.values()) if kind == "colour" else [(INK, PAPER)] * 5
    blocks, y, turn = [], margin, 0
    while True:
        name = list(FONTS)[turn % 2]
        point = points[(turn // 2) % len(points)]
        ink, paper = pairs[(turn // (2 * len(points))) % len(pairs)]
        font = ImageFont.truetype(FONTS[name], round(point * dpi / 72))
        step = round(point * 1.25 * dpi / 72)
        lines, position = lines_of(words, position, font, size[0] - 2 * margin - 2 * pad, 3)
        box = (margin, y, size[0] - margin, y + 3 * step + 2 * pad)
        if box[3] > size[1] - margin or turn == 2 * len(points) * len(pairs):
            break
        draw.rectangle(box, fill=paper)
        for index, line in enumerate(lines):
            draw.text((margin + pad, y + pad + index * step), line, font=font, fill=ink)
        blocks.append(Block(" ".join(lines), box, ink, paper))
        y = box[3] + round(0.04 * dpi)
        turn += 1
    picture = picture.filter(ImageFilter.GaussianBlur(BLUR_INCHES * dpi))
    samples = numpy.asarray(picture, dtype=numpy.float32)
    samples = samples + numpy.random.default_rng(dpi + number).normal(0, NOISE, samples.shape)
    samples = numpy.clip(numpy.rint(samples), 0, 255).astype(numpy.uint8)
    if kind == "grey":
        samples = samples[:, :, 1]
    return samples, blocks


def write_pnm(path, samples):
    kind = b"P6" if samples.ndim == 3 else b"P5"
    with open(path, "wb") as file:
        file.write(kind + b" %d %d 255\n" % (samples.shape[1], samples.shape[0]) + samples.tobytes())


def through_jpeg(samples, quality, sampling):
    """The pixels after encoding, and the file's size."""
    with tempfile.TemporaryDirectory() as folder:
        source, jpeg, result = (os.path.join(folder, name) for name in ("a.pnm", "a.jpg", "b.pnm"))
        write_pnm(source, samples)
        words = ["cjpeg", "-quality", str(quality), "-sample", sampling, "-outfile", jpeg, source]
        subprocess.run(words, check=True)
        subprocess.run(["djpeg", "-pnm", "-outfile", result, jpeg], check=True)
        return numpy.asarray(Image.open(result)), os.path.getsize(jpeg)


def contrast_plane(samples, block):
    """The block as light against dark along the line between its two colours: what tells letter from ground to
    an eye, even where both are equally bright."""
    left, top, right, bottom = block.box
    crop = samples[top:bottom, left:right].astype(numpy.float32)
    if crop.ndim == 3:
        ink, paper = (numpy.array(colour, dtype=numpy.float32) for colour in (block.ink, block.paper))
        axis = paper - ink
        crop = (crop - ink) @ axis / (axis @ axis) * 215 + 30
    return numpy.clip(crop, 0, 255).astype(numpy.uint8)


def read_blocks(planes):
    """The text of each plane by OCR."""
    with tempfile.TemporaryDirectory() as folder:
        names = []
        for index, plane in enumerate(planes):
            names.append(os.path.join(folder, f"{index:03d}.pnm"))
            write_pnm(names[-1], plane)
        listing = os.path.join(folder, "list.txt")
        pathlib.Path(listing).write_text("\n".join(names) + "\n")
        words = ["tesseract", listing, "stdout", "-l", "eng", "--psm", "6", "--dpi", "300"]
        result = subprocess.run(words, check=True, capture_output=True, text=True,
                                env={**os.environ, "OMP_THREAD_LIMIT": "1"})
        return [" ".join(page.split()) for page in result.stdout.split("\f")[:len(planes)]]


def distance(wanted, read):
    """Insertions, deletions and replacements between two sequences."""
    row = list(range(len(read) + 1))
    for i, letter in enumerate(wanted, 1):
        diagonal, row[0] = row[0], i
        for j, other in enumerate(read, 1):
            diagonal, row[j] = row[j], min(row[j] + 1, row[j - 1] + 1, diagonal + (letter != other))
    return row[-1]


def fuzz(before, after, block):
    """What the coding adds to the ground near letters, in grey levels (root mean square)."""
    plane = contrast_plane(before, block)
    ground = plane > 215
    if ground.sum() == 0:
        return 0.0
    difference = contrast_plane(after, block).astype(numpy.float32) - plane
    return float(numpy.sqrt(numpy.mean(difference[ground] ** 2)))


class Measure:
    """What OCR makes of some sheets, against what stands on them."""

    def __init__(self):
        self.letters = self.words = self.wrong_letters = self.wrong_words = self.file_size = 0
        self.fuzz = []

    def add(self, samples, original, blocks, file_size):
        texts = read_blocks([contrast_plane(samples, block) for block in blocks])
        for block, text in zip(blocks, texts):
            self.letters += len(block.text)
            self.words += len(block.text.split())
            self.wrong_letters += distance(block.text, text)
            self.wrong_words += distance(block.text.split(), text.split())
            self.fuzz.append(fuzz(original, samples, block))
        self.file_size += file_size

    def row(self, sheets):
        return (f"{100 * self.wrong_letters / self.letters:.2f} | {100 * self.wrong_words / self.words:.2f} | "
                f"{statistics.mean(self.fuzz):.1f} | {self.file_size / sheets / 1000:.0f}")


def compare(name, arguments, workers):
    kind, dpi = name.split("-")
    sheets = [sheet(kind, int(dpi), SETS[name], number) for number in range(arguments.sheets)]
    original = Measure()
    for samples, blocks in sheets:
        original.add(samples, samples, blocks, samples.size)
    print(f"\n{name}: {arguments.sheets} sheets, {original.letters} letters\n")
    print("| quality | sampling | letters wrong % | words wrong % | fuzz | kB |\n|---|---|---|---|---|---|")
    print(f"| uncompressed | | {original.row(arguments.sheets)} |", flush=True)
    samplings = [name for name in SAMPLINGS if name in arguments.samplings] if kind == "colour" else ["grey"]

    def measure(job):
        quality, sampling = job
        result = Measure()
        for samples, blocks in sheets:
            coded, file_size = through_jpeg(samples, quality, SAMPLINGS.get(sampling, "1x1"))
            result.add(coded, samples, blocks, file_size)
        return result

    jobs = [(q, s) for s in samplings for q in range(arguments.first, arguments.last + 1, arguments.step)]
    for (quality, sampling), result in zip(jobs, workers.map(measure, jobs)):
        print(f"| {quality} | {sampling} | {result.row(arguments.sheets)} |", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--first", type=int, default=30)
    parser.add_argument("--last", type=int, default=95)
    parser.add_argument("--step", type=int, default=5)
    parser.add_argument("--sets", default=",".join(SETS))
    parser.add_argument("--samplings", default=",".join(SAMPLINGS))
    parser.add_argument("--sheets", type=int, default=1)
    arguments = parser.parse_args()
    workers = ThreadPoolExecutor(os.cpu_count())
    for name in arguments.sets.split(","):
        compare(name, arguments, workers)
    return 0


if __name__ == "__main__":
    sys.exit(main())
