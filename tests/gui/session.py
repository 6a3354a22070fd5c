"""A display and a session bus of one's own for programs that drive real windows."""
import contextlib
import os
import shutil
import subprocess
import sys
import tempfile

INSIDE = "PAPERLINE_GUI_SESSION"
# Room for a window of 1366 x 768 points at two pixels a point.
WIDTH, HEIGHT = 2732, 1536


@contextlib.contextmanager
def display():
    """An X server without a window manager; yields its name."""
    reader, writer = os.pipe()
    server = subprocess.Popen(
        ["Xvfb", "-displayfd", str(writer), "-screen", "0", f"{WIDTH}x{HEIGHT}x24", "-nolisten", "tcp", "-noreset"],
        pass_fds=[writer], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    os.close(writer)
    try:
        with os.fdopen(reader) as lines:
            number = lines.readline().strip()
        if not number:
            raise RuntimeError("Xvfb did not start")
        yield f":{number}"
    finally:
        server.terminate()
        server.wait()


def enter():
    """Returns at once inside a session; outside it runs the program again in one and leaves with its result."""
    if os.environ.get(INSIDE):
        return
    runtime = tempfile.mkdtemp(prefix="paperline-gui-")
    try:
        with display() as name:
            environment = {**os.environ, INSIDE: "1", "DISPLAY": name, "XDG_RUNTIME_DIR": runtime,
                           "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}
            for variable in ("DBUS_SESSION_BUS_ADDRESS", "AT_SPI_BUS_ADDRESS", "WAYLAND_DISPLAY", "NO_AT_BRIDGE"):
                environment.pop(variable, None)
            code = subprocess.call(["dbus-run-session", "--", sys.executable, *sys.argv], env=environment)
    finally:
        shutil.rmtree(runtime, ignore_errors=True)
    sys.exit(code)
