#!/usr/bin/env python3
"""Builds the graph of rooms from the includes and checks it: no arrow runs up, leaves of Qt-free rooms
do without Qt, each library is included in its own room, files stay short, and only the brand table
looks at a brand's number.

check_rooms.py ROOT: prints the graph and the calls that run up through the controller, then one line
per breach; exits 1 when there is any.
"""
import collections
import pathlib
import re
import sys

# From the ground up. A file includes headers of its own room and of rooms on lower floors; rooms of
# one floor do not see each other.
FLOORS = (
    ("platform/files", "twain/records"),
    ("platform/host", "platform/process"),
    ("platform/plist", "platform/places", "platform/desktop"),
    ("platform/qt",),
    ("base", "codecs/pixels"),
    ("codecs/bmp", "codecs/gif", "codecs/jpeg", "codecs/png", "codecs/pnm", "codecs/tiff"),
    ("codecs/pictures",),
    ("codecs/pdf",),
    ("controller",),
    ("viewer", "twain/manager"),
    ("output", "ui"),
    ("twain",),
    ("app", "dsm", "sources/framework", "sources/stub"),
    ("sources/worker",),
    ("sources/sane", "sources/software"),
)
FLOOR_OF = {room: floor for floor, rooms in enumerate(FLOORS) for room in rooms}
# These are loaded into other makers' programs, or serve what is: of ours they see this alone. The
# command line's workers also decode pictures.
QT_FREE_PLATFORM = {room for room in FLOOR_OF if room.startswith("platform/") and room != "platform/qt"}
LOADED_BY_OTHERS = {
    "dsm": QT_FREE_PLATFORM | {"twain/records"},
    "sources": QT_FREE_PLATFORM | {"twain/records", "sources/framework", "sources/worker"},
    "sources/software": {room for room in FLOOR_OF if room.startswith("codecs/")},
}
QT_ROOMS = {"platform/qt", "controller", "viewer", "ui", "app"}
QT_HEADER = re.compile(r"^Q[A-Za-z]|^Qt")
# Library header -> the only room, or the only files, that may include it.
ADAPTERS = {
    r"^expat\.h$": r"^platform/plist/",
    r"^unicode/": r"^platform/host/",
    r"^(jpeglib|jerror|turbojpeg)\.h$": r"^codecs/jpeg/",
    r"^(png|zlib|libdeflate)\.h$": r"^codecs/png/",
    r"^gif_lib\.h$": r"^codecs/gif/",
    r"^tiff(io)?\.h$": r"^codecs/tiff/",
    r"^libexif/": r"^codecs/jpeg/Exif[A-Za-z]*\.cpp$",
    r"^qpdf/": r"^codecs/pdf/",
    r"^sane/": r"^sources/sane/",
}
# One table each: the controller's operations, and the records and numbers of a standard.
WHOLE_BY_NATURE = {
    "controller/AppDelegate.h",
    "twain/records/StandardRecords.h",
    "twain/records/TwainConstants.h",
}
# Everything else asks the brand's row for what it wants to know.
BRAND_TABLE = re.compile(r"^base/BrandProfile\.")
BRAND_NUMBER = r"\b(?:PAPERLINE_BRAND|\w*[bB]rand(?:Number)?)\b"
COMPARISON = r"(?:[!=]=|(?<![-<])[<>]=?(?![<>]))"
BRAND_TESTS = re.compile("|".join((
    rf"{BRAND_NUMBER}\s*{COMPARISON}",
    rf"{COMPARISON}\s*(?:\w+(?:\(\))?(?:\.|->))*{BRAND_NUMBER}",
    rf"\bswitch\s*\([^{{;]*{BRAND_NUMBER}",
    rf"\bconstexpr\s[\w\s:]*{BRAND_NUMBER}\s*[={{]",
    r"\bbrandProfile\(\s*\d",
    r"\b(?:else)?if\s*\([^)]*PAPERLINE_BRAND",  # CMake
)))
LONGEST_SOURCE, LONGEST_HEADER = 400, 200
TOP_FOLDERS = {room.split("/")[0] for room in FLOOR_OF} | {"tests", "bench", "docs", "resources", "packaging"}
CONTROLLER = "controller/AppDelegate.h"
INCLUDE = re.compile(r'^\s*#\s*include\s+(?:"([^"]+)"|<([^>]+)>)', re.M)
OPERATION = re.compile(r"^[\w:<>&*,\s]*?\bAppDelegate::(\w+)\(", re.M)


def room_of(path):
    """The longest room that holds the path; None for a folder without a floor."""
    folder = path.rsplit("/", 1)[0] if "/" in path else ""
    while folder and folder not in FLOOR_OF:
        folder = folder.rsplit("/", 1)[0] if "/" in folder else ""
    return folder or None


def may_see(here, there):
    for loaded, seen in LOADED_BY_OTHERS.items():
        if here == loaded or (loaded == "sources" and here.startswith("sources/")):
            extra = LOADED_BY_OTHERS.get(here, set())
            return here == there or (there in seen | extra and FLOOR_OF[there] < FLOOR_OF[here])
    return here == there or FLOOR_OF[there] < FLOOR_OF[here]


def check_headers(path, headers, is_slice):
    room = room_of(path)
    for header in headers:
        if QT_HEADER.match(header):
            if room not in QT_ROOMS and not is_slice:
                yield f"{path}: a leaf of {room}/ does without Qt, yet includes {header}"
            continue
        for library, adapter in ADAPTERS.items():
            if re.match(library, header) and not re.match(adapter, path):
                yield f"{path}: {header} belongs into its adapter"
        there = room_of(header)
        if there and not may_see(room, there):
            yield f"{path}: {room}/ must not see {header}"


def headers_of(text):
    return [quoted or angled for quoted, angled in INCLUDE.findall(text)]


def check_file(path, text, headers):
    lines = text.count("\n")
    limit = LONGEST_HEADER if path.endswith(".h") else LONGEST_SOURCE
    if lines > limit and path not in WHOLE_BY_NATURE:
        yield f"{path}: {lines} lines, at most {limit}"
    # Slices write the controller's operations with Qt's types, whatever room they are in; what makes
    # and drives the controller does so, too.
    is_slice = CONTROLLER in headers
    if is_slice and path.endswith(".h"):
        yield f"{path}: headers do not include the controller"
    yield from check_headers(path, headers, is_slice)
    yield from check_brands(path, text)


def check_mentions(root, path, text):
    """Files that a comment names are there."""
    for named in re.findall(r"//.*?(?<![\w/.])([\w-]+(?:/[\w.-]+)*/\w+\.(?:cpp|h|py|md))\b", text):
        if named.split("/")[0] in TOP_FOLDERS and not (root / named).exists():
            yield f"{path}: {named} is not there"


def check_brands(path, text):
    if BRAND_TABLE.match(path):
        return
    for found in BRAND_TESTS.finditer(text):
        line = text.count("\n", 0, found.start()) + 1
        yield f"{path}:{line}: '{found.group()}' looks at a brand's number; give its row a field"


def graph_of(files):
    graph = collections.defaultdict(set)
    for path, text in files.items():
        for header in headers_of(text):
            if room_of(header) not in (None, room_of(path)):
                graph[room_of(path)].add(room_of(header))
    return graph


def calls_up(files):
    """Operations of the controller that a room calls and a higher room writes: {(from, to): names}."""
    slices = {path: text for path, text in files.items()
              if path.endswith(".cpp") and CONTROLLER in headers_of(text)}
    written_in = {name: room_of(path) for path, text in slices.items() for name in OPERATION.findall(text)}
    found = collections.defaultdict(set)
    for path, text in slices.items():
        for name in set(re.findall(r"(?<![\w:.>])(\w+)\(", text)) & written_in.keys():
            here, there = room_of(path), written_in[name]
            if FLOOR_OF[there] > FLOOR_OF[here]:
                found[here, there].add(name)
    return found


def source_files(root):
    tops = sorted({room.split("/")[0] for room in FLOOR_OF})
    paths = [file for top in tops for file in sorted((root / top).rglob("*"))
             if file.suffix in {".h", ".cpp"}]
    return {file.relative_to(root).as_posix(): file.read_text(encoding="utf-8") for file in paths}


def build_files(root):
    tops = {room.split("/")[0] for room in FLOOR_OF} | {"cmake", "packaging", "resources"}
    paths = [root / "CMakeLists.txt"] + [file for top in sorted(tops) for file in (root / top).rglob("*")
                                         if file.name == "CMakeLists.txt" or file.suffix == ".cmake"]
    return {file.relative_to(root).as_posix(): file.read_text(encoding="utf-8")
            for file in paths if file.exists()}


def check_guide(root):
    """docs/architecture.md lists exactly these rooms, and every path it names is there."""
    guide = root / "docs/architecture.md"
    if not guide.exists():
        return
    text = guide.read_text(encoding="utf-8")
    listed = [(int(floor), room) for floor, room in re.findall(r"^\| (\d+) \| `([\w/]+)/` \|", text, re.M)]
    wanted = [(floor, room) for floor, rooms in enumerate(FLOORS) for room in rooms]
    for floor, room in sorted(set(listed) ^ set(wanted)):
        yield f"docs/architecture.md: floor {floor} and {room}/ are not in both the guide and the check"
    for path in re.findall(r"`([\w.-]+/[\w./-]*)`", text):
        path = path.rstrip("/")
        if path.split("/")[0] in TOP_FOLDERS and not (root / path).exists() and not list(root.glob(path + ".*")):
            yield f"docs/architecture.md: {path} is not there"


def main():
    files = source_files(pathlib.Path(sys.argv[1]))
    graph = graph_of({path: text for path, text in files.items() if room_of(path)})
    for floor, rooms in enumerate(FLOORS):
        for room in rooms:
            print(f"{floor:2} {room} -> {' '.join(sorted(graph[room], key=FLOOR_OF.get)) or '-'}")
    for (here, there), names in sorted(calls_up(files).items()):
        print(f"calls up: {here} -> {there}: {' '.join(sorted(names))}")
    breaches = [] if files else ["no source files found"]
    for path, text in files.items():
        if room_of(path) is None:
            breaches.append(f"{path}: its folder has no floor")
        else:
            breaches += check_file(path, text, headers_of(text))
            breaches += check_mentions(pathlib.Path(sys.argv[1]), path, text)
    for path, text in build_files(pathlib.Path(sys.argv[1])).items():
        breaches += check_brands(path, text)
    breaches += check_guide(pathlib.Path(sys.argv[1]))
    print("\n".join(breaches))
    sys.exit(1 if breaches else 0)


if __name__ == "__main__":
    main()
