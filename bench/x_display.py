"""What a stopwatch needs of an X display: windows as they appear, keys, and pixels."""
import ctypes
import ctypes.util
import select
import time

MAP_NOTIFY = 19
SUBSTRUCTURE_NOTIFY = 1 << 19
Z_PIXMAP = 2


class MapEvent(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send_event", ctypes.c_int),
                ("display", ctypes.c_void_p), ("parent", ctypes.c_ulong), ("window", ctypes.c_ulong),
                ("override_redirect", ctypes.c_int)]


class Event(ctypes.Union):
    _fields_ = [("type", ctypes.c_int), ("map", MapEvent), ("room", ctypes.c_long * 24)]


class Image(ctypes.Structure):
    _fields_ = [("width", ctypes.c_int), ("height", ctypes.c_int), ("xoffset", ctypes.c_int), ("format", ctypes.c_int),
                ("data", ctypes.c_void_p), ("byte_order", ctypes.c_int), ("bitmap_unit", ctypes.c_int),
                ("bitmap_bit_order", ctypes.c_int), ("bitmap_pad", ctypes.c_int), ("depth", ctypes.c_int),
                ("bytes_per_line", ctypes.c_int)]


@ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p)
def ignore_error(_display, _error):
    """A window may be gone before its place is asked for; the library would end the program."""
    return 0


def library(name):
    return ctypes.CDLL(ctypes.util.find_library(name) or f"lib{name}.so.6")


class XDisplay:
    def __init__(self):
        self.x, self.test = library("X11"), library("Xtst")
        x, number, pointer = self.x, ctypes.c_ulong, ctypes.c_void_p
        x.XOpenDisplay.restype = pointer
        x.XDefaultRootWindow.argtypes, x.XDefaultRootWindow.restype = [pointer], number
        x.XSelectInput.argtypes = [pointer, number, ctypes.c_long]
        x.XResizeWindow.argtypes = [pointer, number, ctypes.c_uint, ctypes.c_uint]
        x.XNextEvent.argtypes = [pointer, pointer]
        for name in ("XPending", "XFlush", "XConnectionNumber", "XCloseDisplay"):
            getattr(x, name).argtypes = [pointer]
        x.XGetImage.argtypes = [pointer, number] + [ctypes.c_int] * 2 + [ctypes.c_uint] * 2 + [number, ctypes.c_int]
        x.XGetImage.restype = ctypes.POINTER(Image)
        x.XFree.argtypes = [pointer]
        x.XKeysymToKeycode.argtypes = [pointer, number]
        x.XStringToKeysym.restype = number
        x.XGetGeometry.argtypes = [pointer, number, ctypes.POINTER(number)] + [ctypes.POINTER(ctypes.c_int)] * 2 + [
            ctypes.POINTER(ctypes.c_uint)] * 4
        self.test.XTestFakeKeyEvent.argtypes = [pointer, ctypes.c_uint, ctypes.c_int, number]
        x.XSetErrorHandler(ignore_error)
        self.display = x.XOpenDisplay(None)
        self.root = x.XDefaultRootWindow(self.display)
        x.XSelectInput(self.display, self.root, SUBSTRUCTURE_NOTIFY)
        x.XFlush(self.display)

    def close(self):
        self.x.XCloseDisplay(self.display)

    def events(self, deadline):
        """Every event until the deadline; then a TimeoutError."""
        while True:
            while self.x.XPending(self.display):
                event = Event()
                self.x.XNextEvent(self.display, ctypes.byref(event))
                yield event
            rest = deadline - time.monotonic()
            if rest <= 0:
                raise TimeoutError("the display stays silent")
            select.select([self.x.XConnectionNumber(self.display)], [], [], rest)

    def place(self, window):
        """x, y, width, height of a window that lies on the screen itself."""
        root, x, y = ctypes.c_ulong(), ctypes.c_int(), ctypes.c_int()
        width, height, border, depth = (ctypes.c_uint() for _ in range(4))
        self.x.XGetGeometry(self.display, window, *map(ctypes.byref, (root, x, y, width, height, border, depth)))
        return x.value, y.value, width.value, height.value

    def new_window(self, least_width, deadline):
        """The next window to appear that is as wide."""
        for event in self.events(deadline):
            if event.type == MAP_NOTIFY and self.place(event.map.window)[2] >= least_width:
                return event.map.window

    def resize(self, window, width, height):
        self.x.XResizeWindow(self.display, window, width, height)
        self.x.XFlush(self.display)

    def pixels(self, x, y, width, height):
        """The bytes of a place on the screen."""
        image = self.x.XGetImage(self.display, self.root, x, y, width, height, 0xFFFFFFFF, Z_PIXMAP)
        if not image:
            raise OSError(f"no picture of {width}x{height}+{x}+{y}")
        content = ctypes.string_at(image.contents.data, image.contents.bytes_per_line * height)
        self.x.XFree(image.contents.data)
        self.x.XFree(ctypes.cast(image, ctypes.c_void_p))
        return content

    def press(self, *keys):
        """All of them at once: modifiers first."""
        codes = [self.x.XKeysymToKeycode(self.display, self.x.XStringToKeysym(key.encode())) for key in keys]
        for code, down in [(code, 1) for code in codes] + [(code, 0) for code in reversed(codes)]:
            self.test.XTestFakeKeyEvent(self.display, code, down, 0)
        self.x.XFlush(self.display)
