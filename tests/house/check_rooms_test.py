#!/usr/bin/env python3
"""Feeds check_rooms.py trees with one breach each and expects it to name them."""
import pathlib
import subprocess
import sys
import tempfile

import check_rooms

CHECK = pathlib.Path(__file__).with_name("check_rooms.py")
CONTROLLER = '#include "controller/AppDelegate.h"\n'
BREACHES = {
    "arrow up": ("output/A.cpp", '#include "twain/B.h"\n'),
    "arrow up in a slice": ("viewer/A.cpp", CONTROLLER + '#include "ui/B.h"\n'),
    "arrow up within platform/": ("platform/files/A.cpp", '#include "platform/places/Places.h"\n'),
    "two rooms of one floor": ("output/A.cpp", '#include "ui/B.h"\n'),
    "one codec in another": ("codecs/png/A.cpp", '#include "codecs/jpeg/B.h"\n'),
    "a folder without a floor": ("platform/A.cpp", "\n"),
    "Qt in a leaf": ("output/A.cpp", "#include <QString>\n"),
    "library outside its room": ("output/A.cpp", "#include <tiffio.h>\n"),
    "trace in what others load": ("dsm/A.cpp", '#include "base/CvOutputLog.h"\n'),
    "Qt's half in what others load": ("sources/framework/A.cpp", '#include "platform/qt/AlertWindow.h"\n'),
    "codec in what others load": ("sources/framework/A.cpp", '#include "codecs/png/PngCodec.h"\n'),
    "too long": ("viewer/A.cpp", "\n" * 401),
    "too long a header": ("viewer/A.h", "\n" * 201),
    "a guide without the rooms": ("docs/architecture.md", "# Rooms\n"),
    "a comment that names no file": ("ui/A.cpp", "// as in output/Gone.cpp\n"),
    "controller in a header": ("ui/A.h", CONTROLLER),
    "brand number compared": ("app/A.cpp", "    if (gBrandNumber == 2)\n"),
    "brand number compared from the right": ("ui/A.cpp", "    if (5 <= launchOptions().brand)\n"),
    "brand number in a switch": ("twain/A.cpp", "    switch (controller.launchOptions().brand) {\n"),
    "brand number by name": ("twain/A.cpp", "constexpr uint32_t talmerickBrand = 2;\n"),
    "one brand's row": ("app/A.cpp", "    return brandProfile(2).hasSaveCommand;\n"),
    "brand number in the preprocessor": ("ui/A.cpp", "#if PAPERLINE_BRAND > 4\n"),
    "brand number in the build": ("output/CMakeLists.txt", 'if("${PAPERLINE_BRAND}" EQUAL 7)\n'),
}
ALLOWED = {
    "slice": ("output/A.cpp", CONTROLLER + '#include "viewer/B.h"\n#include <QString>\n'),
    "leaf": ("twain/A.cpp", '#include "platform/files/Files.h"\n#include <string>\n'),
    "worker that decodes": ("sources/software/A.cpp", '#include "codecs/pictures/PictureReader.h"\n'),
    "this brand's row": ("app/A.cpp", "    const bool has = options->brand, brandProfile(gBrandNumber).offersPng;\n"),
    "the brand table": ("base/BrandProfile.cpp", "    return brandNumber < brands.size();\n"),
    "manager that reads files": ("dsm/A.cpp", '#include "platform/files/FileContent.h"\n'),
}


def check(files):
    with tempfile.TemporaryDirectory() as folder:
        for name, text in [("base/Leaf.cpp", "\n"), *files]:
            path = pathlib.Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)
        return subprocess.run([sys.executable, CHECK, folder], capture_output=True, text=True)


failures = [name for name, file in BREACHES.items() if check([file]).returncode != 1]
failures += [name for name, file in ALLOWED.items() if check([file]).returncode != 0]

# The guide names the rooms as they are, and only paths that are there.
GUIDE = "".join(f"| {floor} | `{room}/` | |\n" for floor, rooms in enumerate(check_rooms.FLOORS) for room in rooms)
EVERY_ROOM = [(f"{room}/A.cpp", "\n") for room in check_rooms.FLOOR_OF]
if check(EVERY_ROOM + [("docs/architecture.md", GUIDE + "`base/A.cpp`")]).returncode != 0:
    failures.append("a true guide")
if check(EVERY_ROOM + [("docs/architecture.md", GUIDE + "`base/Gone.cpp`")]).returncode != 1:
    failures.append("a path that is not there")

# The graph and the calls through the controller are printed.
drawn = check([
    ("ui/A.cpp", CONTROLLER + "void AppDelegate::showPage() {}\n"),
    ("viewer/B.cpp", CONTROLLER + "void AppDelegate::list() {\n    showPage();\n}\n"),
]).stdout
failures += [line for line in ("9 viewer -> controller", "calls up: viewer -> ui: showPage")
             if line not in drawn]
print("not judged right:", failures)
sys.exit(1 if failures else 0)
