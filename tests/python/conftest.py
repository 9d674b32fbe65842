"""Helps the tests of the package."""
import glob
import os
import subprocess

PREFIX = os.environ["VX_PREFIX"]
SOURCES = os.environ["VX_SOURCE_DIR"]
SAMPLES = sorted(glob.glob(os.path.join(SOURCES, "samples", "*.vx")))
PROFILE = os.path.join(SOURCES, "devices/colour/profiles/fogra39.icc")

# Paints the left half of a page of 72 by 36 points black.
SQUARE = (b"%!PS-Tavro-3.0\n%%Title: (A square)\n%%Creator: by hand\n%%BoundingBox: 0 0 72 36\n%VX5_FileFormat 3\n%%EndComments\n"
          b"%%BeginSetup\n%%EndSetup\n0 0 0 1 k\n0 0 m\n36 0 l\n36 36 l\n0 36 l\nf\n%%PageTrailer\n%%EOF\n")


def sample(name):
    return os.path.join(SOURCES, "samples", name + ".vx")


def command(*words):
    """Returns the bytes that the command writes."""
    return subprocess.run([os.path.join(PREFIX, "bin/vx"), *words], check=True, capture_output=True).stdout


def rendered(path, form, *words):
    return command("render", "-q", path, "-f", form, "-o", "-", *words)
