"""Pictures that programs make of a PDF, as inks or as colours of a screen, in rows of bytes."""
import operator
import struct
import subprocess

FAR = 96  # of 255


class Image:
    def __init__(self, width, height, channels, data):
        self.width, self.height, self.channels, self.data = width, height, channels, data

    def pixel(self, x, y):
        at = (y * self.width + x) * self.channels
        return tuple(self.data[at:at + self.channels])

    def changed(self, how):
        """Each pixel by a function to three bytes; pictures have few colours."""
        known, changed, step = {}, bytearray(), self.channels
        for at in range(0, self.width * self.height * step, step):
            pixel = self.data[at:at + step]
            if pixel not in known:
                known[pixel] = bytes(how(pixel))
            changed += known[pixel]
        return Image(self.width, self.height, 3, changed)


def run(*words):
    done = subprocess.run(words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=120)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(words)}: {done.stderr.decode(errors='replace')}")
    return done.stdout


def read_pam(data):
    head, data = data.split(b"ENDHDR\n", 1)
    values = dict(line.split(None, 1) for line in head.decode().splitlines() if " " in line)
    return Image(int(values["WIDTH"]), int(values["HEIGHT"]), int(values["DEPTH"]), data)


def read_ppm(data):
    kind, width, height, depth, data = data.split(None, 4)
    if kind != b"P6" or depth != b"255":
        raise AssertionError("no picture of 8 bits")
    return Image(int(width), int(height), 3, data[-3 * int(width) * int(height):])


def read_tiff(data):
    """Not compressed, 8 bits a sample, samples side by side."""
    order = {b"II": "<", b"MM": ">"}[data[:2]]
    at, = struct.unpack(order + "I", data[4:8])
    count, = struct.unpack(order + "H", data[at:at + 2])
    values = {}
    for entry in range(count):
        tag, kind, number, value = struct.unpack(order + "HHI4s", data[at + 2 + 12 * entry:at + 14 + 12 * entry])
        size = {1: 1, 3: 2, 4: 4}.get(kind)
        if size is None:
            continue
        if size * number > 4:
            start, = struct.unpack(order + "I", value)
            value = data[start:start + size * number]
        letter = {1: "B", 2: "H", 4: "I"}[size]
        values[tag] = struct.unpack(order + letter * number, value[:size * number])
    if values.get(259, (1,))[0] != 1:
        raise AssertionError("the picture is compressed")
    strips = b"".join(data[start:start + length] for start, length in zip(values[273], values[279]))
    return Image(values[256][0], values[257][0], values.get(277, (1,))[0], strips)


def mutool_inks(pdf, dpi):
    return read_pam(run("mutool", "draw", "-q", "-r", str(dpi), "-c", "cmyk", "-F", "pam", "-o", "-", pdf))


def ghostscript_inks(pdf, dpi, out):
    """Averages 4 x 4 samples a pixel."""
    run("gs", "-q", "-dNOPAUSE", "-dBATCH", "-dSAFER", "-sDEVICE=tiffscaled32", "-sCompression=none", f"-r{4 * dpi}",
        "-dDownScaleFactor=4", f"-sOutputFile={out}", pdf)
    with open(out, "rb") as file:
        return read_tiff(file.read())


def separations(pdf, dpi, out):
    """One picture an ink, as a press has its plates: 0 is full, 255 none."""
    run("gs", "-q", "-dNOPAUSE", "-dBATCH", "-dSAFER", "-sDEVICE=tiffsep", "-sCompression=none", f"-r{dpi}",
        f"-sOutputFile={out}.tif", pdf)
    plates = {}
    for ink in ("Cyan", "Magenta", "Yellow", "Black"):
        with open(f"{out}({ink}).tif", "rb") as file:
            plates[ink] = read_tiff(file.read())
    return plates


def poppler_colours(pdf, dpi):
    return read_ppm(run("pdftoppm", "-r", str(dpi), pdf))


def plain(inks):
    """The colours of a screen by plain arithmetic."""
    light = 255 - inks[3]
    return tuple((255 - ink) * light // 255 for ink in inks[:3])


# What poppler makes of full inks: it mixes these sixteen colours. Cyan counts 8, magenta 4, yellow 2, black 1.
_CORNERS = ((1, 1, 1), (.1373, .1216, .1255), (1, .949, 0), (.1098, .102, 0),
            (.9255, 0, .549), (.1412, 0, 0), (.9294, .1098, .1412), (.1333, 0, 0),
            (0, .6784, .9373), (0, .0588, .1412), (0, .651, .3137), (0, .0745, 0),
            (.1804, .1922, .5725), (0, 0, .0078), (.2118, .2119, .2235), (0, 0, 0))


def as_poppler(inks):
    mixed = [0.0, 0.0, 0.0]
    for number, corner in enumerate(_CORNERS):
        share = 1.0
        for i in range(4):
            ink = inks[i] / 255
            share *= ink if number >> (3 - i) & 1 else 1 - ink
        for i in range(3):
            mixed[i] += share * corner[i]
    return tuple(round(255 * value) for value in mixed)


def difference(one, other):
    """(mean, share of samples that are far off) of two pictures of one size."""
    off = list(map(abs, map(operator.sub, one.data, other.data)))
    return sum(off) / len(off), sum(map(FAR.__lt__, off)) / len(off)
