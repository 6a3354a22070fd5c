"""Takes the pictures of docs/pictures from the running program: make_pictures.py BUNDLE FOLDER [SCENE...]"""
import pathlib
import subprocess
import sys
import time

import session

session.enter()

from driver import Home, Paperline, Tree, wait  # noqa: E402

ENGLISH, JAPANESE, GERMAN, RUSSIAN, ARABIC = 0, 3, 5, 11, 26
SECOND_SCANNER = "Flatbed of the Archive"


class Scene:
    """One start of the program for one picture."""

    def __init__(self, tree, target, name, language=ENGLISH, size=(1024, 678), scale=1, **environment):
        self.tree, self.target, self.name = tree, target, name
        self.home = Home()
        self.home.set_options(count=4, resolution=150)
        self.home.remember_window(*size)
        self.home.write_settings(tree, language=language, folder=self.home.folder / "Documents/Invoices/Image")
        self.environment = {"QT_SCALE_FACTOR": str(scale), **environment}
        self.program = None

    def __enter__(self):
        self.program = Paperline(self.tree, self.home, **self.environment)
        return self

    def __exit__(self, *reason):
        self.program.stop()
        self.home.remove()

    def scan(self, pages=4):
        self.program.main_window()
        self.program.key("ctrl+r")
        files = self.home.folder / "Documents/Invoices"
        wait(lambda: len(list(files.glob("*.jpg"))) >= pages, f"{pages} pages are saved")

    def settled(self, role="frame"):
        """Waits until two pictures in a row are the same."""
        place = self.program.window(role, "the window shows").box
        last = None
        while True:
            time.sleep(0.3)
            picture = self.program.picture(place=place)
            if picture == last:
                return place
            last = picture

    def scanned(self):
        self.scan()
        wait(lambda: self.program.find(role="table").rows == 4, "the pages are listed")
        # The pointer rests where it highlights nothing.
        subprocess.run(["xdotool", "mousemove", "0", "0"], check=True)

    def save(self, role="frame"):
        path = self.target / f"{self.name}.png"
        self.program.picture(path, place=self.settled(role))
        compress(path)


def compress(path):
    """Few colours are enough for a window, and make a small file."""
    subprocess.run(["convert", str(path), "-strip", "+dither", "-colors", "255", "-define",
                    "png:compression-level=9", f"PNG8:{path}"], check=True)


def empty(tree, target):
    with Scene(tree, target, "empty") as scene:
        scene.program.main_window()
        scene.save()


def scanning(tree, target):
    scene = Scene(tree, target, "scanning")
    scene.home.set_options(count=4, resolution=150, delay=4000)
    with scene:
        scene.scan(pages=3)
        time.sleep(1)  # the program does not answer while it scans; it paints before it waits
        scene.program.picture(target / "scanning.png")
        compress(target / "scanning.png")
        wait(lambda: scene.program.find(role="table").rows == 4, "the scan ends", 40)


def fitted(tree, target):
    with Scene(tree, target, "fitted", size=(1366, 768)) as scene:
        scene.scanned()
        scene.save()


def actual_size(tree, target):
    with Scene(tree, target, "actual-size") as scene:
        scene.scanned()
        scene.program.key("ctrl+1")
        scene.save()


def selection(tree, target):
    with Scene(tree, target, "selection") as scene:
        scene.save(role="dialog")


def in_language(name, language):
    def take(tree, target):
        with Scene(tree, target, name, language=language) as scene:
            scene.scanned()
            scene.save()
    return take


def dark(tree, target):
    with Scene(tree, target, "dark", PAPERLINE_COLOUR_SCHEME="dark") as scene:
        scene.scanned()
        scene.save()


SCENES = {"empty": empty, "scanning": scanning, "fitted": fitted, "actual-size": actual_size,
          "selection": selection, "arabic": in_language("arabic", ARABIC),
          "japanese": in_language("japanese", JAPANESE), "dark": dark}


def main():
    bundle, target, *names = sys.argv[1:]
    target = pathlib.Path(target)
    target.mkdir(parents=True, exist_ok=True)
    for name in names or SCENES:
        tree = Tree(bundle)
        try:
            if name == "selection":
                tree.add_source(SECOND_SCANNER)
            SCENES[name](tree, target)
            print(target / f"{name}.png")
        finally:
            tree.remove()


if __name__ == "__main__":
    main()
