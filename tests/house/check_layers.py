#!/usr/bin/env python3
"""Checks the house rules that a machine can see: direction of includes, Qt-free leaves, one
adapter per library, and the length of files.

check_layers.py ROOT: prints one line per breach and exits 1 when there is any.
"""
import pathlib
import re
import sys

# Folder -> folders whose headers its leaves may include. Slices (files that include the
# controller's header) may include any of them.
MAY_INCLUDE = {
    "platform": {"platform", "twain/abi", "twain"},
    "twain/abi": {"twain/abi"},
    "twain": {"twain", "twain/abi", "platform"},
    "output": {"output", "platform"},
    "viewer": {"viewer", "platform"},
    "ui": {"ui", "platform", "viewer"},
    "app": {"app", "ui", "viewer", "output", "twain", "platform"},
    "dsm": {"dsm", "twain/abi"},
    "sources": {"sources", "twain/abi", "platform"},
}
# platform/ sees the TWAIN records only where both layouts meet.
TWAIN_IN_PLATFORM = re.compile(r"^platform/(DataSourceManager|Twain)")
SHARED_WITH_SOURCES = "twain/abi/DataSourceFolders.h"
# Qt-free: leaves of these folders, unless the path matches QT_ALLOWED.
QT_FREE = ("twain/", "output/", "platform/", "dsm/", "sources/")
QT_ALLOWED = re.compile(r"^platform/qt/")
QT_HEADER = re.compile(r"^Q[A-Za-z]|^Qt")
# Only files below these folders of sources/ may see platform/: worker programs and dialogs.
WORKER_FILES = re.compile(r"^sources/(software|sane|worker)/")
# Library header -> the only files that may include it.
ADAPTERS = {
    r"^plist/": r"^platform/PropertyList[A-Za-z]*\.cpp$",
    r"^unicode/": r"^platform/[A-Za-z]+\.cpp$",
    r"^(jpeglib|jerror|turbojpeg)\.h$": r"^platform/(JpegCodec|JpegErrors)",
    r"^png\.h$": r"^platform/Png[A-Za-z]*\.",
    r"^libdeflate\.h$": r"^platform/Png[A-Za-z]*\.",
    r"^gif_lib\.h$": r"^platform/Gif[A-Za-z]*\.",
    r"^tiff(io)?\.h$": r"^platform/Tiff[A-Za-z]*\.",
    r"^libexif/": r"^platform/(ImageMetadata|Exif[A-Za-z]*)",
    r"^qpdf/": r"^platform/Pdf[A-Za-z]*\.",
    r"^sane/": r"^sources/sane/",
}
# One table each: the controller's operations, and the records and numbers of a standard.
WHOLE_BY_NATURE = {"app/AppDelegate.h", "twain/abi/StandardRecords.h", "twain/abi/TwainConstants.h"}
LONGEST_SOURCE, LONGEST_HEADER = 400, 200
INCLUDE = re.compile(r'^\s*#\s*include\s+(?:"([^"]+)"|<([^>]+)>)')


def room(path):
    if path.startswith("twain/abi/"):
        return "twain/abi"
    return path.split("/", 1)[0]


def check_include(path, header, is_slice):
    if QT_HEADER.match(header):
        if path.startswith(QT_FREE) and not QT_ALLOWED.match(path) and not is_slice:
            yield f"{path}: a leaf of this folder does without Qt, yet includes {header}"
        return
    for library, adapter in ADAPTERS.items():
        if re.match(library, header) and not re.match(adapter, path):
            yield f"{path}: {header} belongs into its adapter"
    if "/" not in header or room(header) not in MAY_INCLUDE or is_slice:
        return
    here, there = room(path), room(header)
    if there not in MAY_INCLUDE[here]:
        yield f"{path}: {here}/ must not see {header}"
    if here == "platform" and there.startswith("twain") and header != SHARED_WITH_SOURCES and not TWAIN_IN_PLATFORM.match(path):
        yield f"{path}: only the data source manager's adapter sees {header}"
    if here == "sources" and there == "platform" and not WORKER_FILES.match(path):
        yield f"{path}: what is loaded into other programs does not see {header}"


def check_file(root, path):
    lines = (root / path).read_text(encoding="utf-8").splitlines()
    limit = LONGEST_HEADER if path.endswith(".h") else LONGEST_SOURCE
    if len(lines) > limit and path not in WHOLE_BY_NATURE:
        yield f"{path}: {len(lines)} lines, at most {limit}"
    headers = [m.group(1) or m.group(2) for m in map(INCLUDE.match, lines) if m]
    # main.cpp and the sessions drive the controller; they count as slices here.
    is_slice = "app/AppDelegate.h" in headers or path == "app/AppDelegate.h"
    for header in headers:
        yield from check_include(path, header, is_slice)
    if "app/AppDelegate.h" in headers and path.endswith(".h"):
        yield f"{path}: headers do not include the controller"


def main():
    root = pathlib.Path(sys.argv[1])
    breaches = []
    count = 0
    for folder in ("platform", "twain", "output", "viewer", "ui", "app", "dsm", "sources"):
        for file in sorted((root / folder).rglob("*")):
            if file.suffix in {".h", ".cpp"}:
                count += 1
                breaches += check_file(root, file.relative_to(root).as_posix())
    if count == 0:
        breaches.append(f"{root}: no source files found")
    print("\n".join(breaches))
    sys.exit(1 if breaches else 0)


if __name__ == "__main__":
    main()
