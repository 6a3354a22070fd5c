"""Pixels of BMP and PNM files, row by row."""
# Each strip's first three bytes are marked on the way; a page comes as one strip.
MARK = bytes((0x21, 0x85, 0xE9))


def bmp_rows(path):
    """Width, height, and the rows of a BMP file from the top, RGB for 24 bits."""
    data = path.read_bytes()
    offset = int.from_bytes(data[10:14], "little")
    width, height = (int.from_bytes(data[at:at + 4], "little") for at in (18, 22))
    bits = int.from_bytes(data[28:30], "little")
    stride, packed = (width * bits + 31) // 32 * 4, (width * bits + 7) // 8
    rows = [bytearray(data[offset + y * stride:offset + y * stride + packed]) for y in reversed(range(height))]
    if bits == 24:
        for row in rows:
            row[0::3], row[2::3] = row[2::3], row[0::3]
    return width, height, rows


def pnm_rows(data):
    """The same of a raw PNM file; PBM is turned so that 0 is black."""
    fields, at = [], 0
    while len(fields) < (3 if data[:2] == b"P4" else 4):
        end = at
        if data[at:at + 1] == b"#":
            at = data.index(b"\n", at) + 1
            continue
        while not data[end:end + 1].isspace():
            end += 1
        fields.append(data[at:end])
        at = end + 1
    width, height = int(fields[1]), int(fields[2])
    packed = {b"P4": (width + 7) // 8, b"P5": width, b"P6": width * 3}[fields[0]]
    rows = [bytearray(data[at + y * packed:at + (y + 1) * packed]) for y in range(height)]
    if fields[0] == b"P4":
        rows = [bytearray(255 - b for b in row) for row in rows]
    return width, height, rows
