#!/usr/bin/env python3
"""Feeds check_layers.py trees with one breach each and expects it to name them."""
import pathlib
import subprocess
import sys
import tempfile

CHECK = pathlib.Path(__file__).with_name("check_layers.py")
BREACHES = {
    "upward include": ("twain/A.cpp", '#include "ui/B.h"\n'),
    "Qt in a leaf": ("output/A.cpp", "#include <QString>\n"),
    "library outside its adapter": ("output/A.cpp", "#include <tiffio.h>\n"),
    "platform seen by a loaded source": ("sources/framework/A.cpp", '#include "platform/Files.h"\n'),
    "too long": ("viewer/A.cpp", "\n" * 401),
    "controller in a header": ("ui/A.h", '#include "app/AppDelegate.h"\n'),
}
ALLOWED = {
    "slice": ("output/A.cpp", '#include "app/AppDelegate.h"\n#include <QString>\n'),
    "leaf": ("twain/A.cpp", '#include "platform/Files.h"\n#include <string>\n'),
}


def exit_code(files):
    with tempfile.TemporaryDirectory() as folder:
        for name, text in files:
            path = pathlib.Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)
        return subprocess.run([sys.executable, CHECK, folder], capture_output=True).returncode


failures = [name for name, file in BREACHES.items() if exit_code([file]) != 1]
failures += [name for name, file in ALLOWED.items() if exit_code([file]) != 0]
print("not judged right:", failures)
sys.exit(1 if failures else 0)
