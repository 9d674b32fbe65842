"""Pictures that other programs make of our files, as Pillow's images: in RGB, or in CMYK with the document's own inks.

Every ink is asked for as it is, since each program has its own idea of what it looks like on a screen.
"""
import os
import subprocess

from PIL import Image, ImageChops, ImageStat

BLOCK = 16


def run(*words):
    done = subprocess.run(words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=120)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(words)}: {done.stderr.decode(errors='replace')}")
    return done.stdout


def ghostscript(device, pdf, dpi, out, *words):
    # A shape paints the pixels whose centres it covers, not all that it touches.
    run("gs", "-q", "-dNOPAUSE", "-dBATCH", "-dSAFER", f"-sDEVICE={device}", "-sCompression=none", f"-r{dpi}", *words,
        f"-sOutputFile={out}", "-c", "0 0 .setfilladjust2", "-f", pdf)


def inks_by_mupdf(pdf, dpi, folder):
    out = os.path.join(folder, "mupdf.pam")
    run("mutool", "draw", "-q", "-r", str(dpi), "-c", "cmyk", "-F", "pam", "-o", out, pdf)
    with open(out, "rb") as file:
        head, data = file.read().split(b"ENDHDR\n", 1)
    values = dict(line.split(None, 1) for line in head.decode().splitlines() if " " in line)
    return Image.frombytes("CMYK", (int(values["WIDTH"]), int(values["HEIGHT"])), data)


def inks_by_ghostscript(pdf, dpi, folder):
    """Averages 2 x 2 samples a pixel."""
    out = os.path.join(folder, "ghostscript.tif")
    ghostscript("tiffscaled32", pdf, 2 * dpi, out, "-dDownScaleFactor=2")
    return Image.open(out)


def inks_by_poppler(pdf, dpi, folder):
    out = os.path.join(folder, "poppler")
    run("pdftoppm", "-r", str(dpi), "-tiff", "-tiffcompression", "none", "-overprint", "-thinlinemode", "shape",
        "-singlefile", pdf, out)
    return Image.open(out + ".tif")


PDF_PROGRAMS = {"poppler": inks_by_poppler, "MuPDF": inks_by_mupdf, "Ghostscript": inks_by_ghostscript}


def plates(pdf, dpi, folder, inks=("Cyan", "Magenta", "Yellow", "Black"), samples=1):
    """One picture an ink, as a press has its plates: 0 is full, 255 none. Of so many samples a pixel, each way."""
    out = os.path.join(folder, "plate")
    ghostscript("tiffsep", pdf, samples * dpi, out + ".tif", f"-dDownScaleFactor={samples}")
    return {ink: Image.open(f"{out}({ink}).tif") for ink in inks}


def colours_by_rsvg(svg, size, folder):
    out = os.path.join(folder, "rsvg.png")
    width, height = map(str, size)
    run("rsvg-convert", "--background-color", "white", "--width", width, "--height", height, "-o", out, svg)
    return Image.open(out).convert("RGB")


def difference(one, other):
    """(mean over all, mean over the worst block in its worst colour) of two pictures in RGB of one size, of 255."""
    off = ImageChops.difference(one, other)
    return sum(ImageStat.Stat(off).mean) / 3, max(most for _, most in off.reduce(BLOCK).getextrema())
