"""A picture in memory."""

from __future__ import annotations

from typing import Any


class Picture:
    """Pixels in red, green, blue and alpha, 8 bits each, in sRGB and not multiplied by alpha; the top row comes first.

        width, height  in pixels
        pixels         a memoryview, height by width by 4 bytes, which may be written to

    NumPy and Pillow take them as they are, without a copy, so that what is changed there changes here:

        array = numpy.asarray(picture)                        # height by width by 4, of uint8
        image = Image.frombuffer("RGBA", picture.size, picture.pixels, "raw", "RGBA", 0, 1)

    >>> picture = vx.open("harp.vx").picture(fit=100)
    >>> picture
    <vx.Picture of 100 by 52 pixels>
    >>> picture.pixels[0, 0, 3]  # alpha of the first: it is opaque
    255
    """

    width: int
    height: int
    pixels: memoryview

    def __init__(self, width: int, height: int) -> None:
        self.width = width
        self.height = height
        self.pixels = memoryview(bytearray(4 * width * height)).cast("B", (height, width, 4))

    @property
    def size(self) -> tuple[int, int]:
        """Width and height, as Pillow has them."""
        return self.width, self.height

    @property
    def __array_interface__(self) -> dict[str, Any]:
        """What NumPy asks for."""
        return {"version": 3, "shape": self.pixels.shape, "typestr": "|u1", "data": self.pixels}

    def tobytes(self) -> bytes:
        """A copy of the pixels, row by row without gaps."""
        return self.pixels.tobytes()

    def __repr__(self) -> str:
        return f"<vx.Picture of {self.width} by {self.height} pixels>"
