"""The package makes of every sample what the command makes."""
import io
import json
import os

import numpy
import pytest
from PIL import Image

import vx
from conftest import PROFILE, SAMPLES, SQUARE, command, rendered, sample

pytestmark = pytest.mark.filterwarnings("ignore::vx.DrawingWarning")

samples = pytest.mark.parametrize("path", SAMPLES, ids=os.path.basename)


def test_there_are_samples():
    assert len(SAMPLES) > 50


@samples
@pytest.mark.parametrize("form", ["png", "svg", "pdf"])
def test_a_file_has_the_bytes_of_the_command(path, form):
    with vx.open(path) as drawing:
        assert drawing.render(form) == rendered(path, form)


@samples
def test_a_picture_has_the_pixels_of_the_png(path):
    with vx.open(path) as drawing:
        picture = drawing.picture(width=300, background="none")
        png = Image.open(io.BytesIO(drawing.render("png", width=300, background="none")))
        assert drawing.size(width=300) == picture.size == png.size
    assert picture.tobytes() == png.convert("RGBA").tobytes()


@samples
def test_the_facts_are_those_of_the_command(path):
    facts = json.loads(command("info", "--json", path))
    with vx.open(path) as drawing:
        info, header = drawing.info, drawing.header
        assert (header.version, header.title, header.creator, header.created) == (
            info.version, info.title, info.creator, info.creation_date)
        assert (header.box, header.monochrome) == (info.box, info.monochrome)
        assert [(font.asked, font.served, font.match) for font in drawing.fonts] == [
            (font.asked, font.served, font.match) for font in info.fonts]
    assert as_json(info) == {name: fact for name, fact in facts.items() if name not in ("file", "vx", "result", "confinedBy")}


def as_json(value):
    """Returns a record as the command has it, with all of its fields: a fact that the package lacks would show."""
    if isinstance(value, tuple):
        return [as_json(part) for part in value]
    if not hasattr(value, "__dataclass_fields__"):
        return value
    return {vx._info.camel(name): as_json(getattr(value, name)) for name in value.__dataclass_fields__}


@pytest.mark.parametrize("form, words, options", [
    ("png", ["--width", "123"], {"width": 123}),
    ("png", ["--width", "123"], {"width": 123.0}),
    ("png", ["--width", "123"], {"width": numpy.int64(123)}),
    ("png", ["--dpi", "0.0625"], {"dpi": 0.0625}),
    ("png", ["--dpi", "72", "--box", "0,0,100.5,50"], {"dpi": 72, "box": (0, 0, 100.5, 50)}),
    ("png", ["--box", "0,0,0.00001,0.00001", "--fit", "9"], {"box": [0, 0, 1e-5, 1e-5], "fit": 9}),
    ("png", ["--samples", "1", "--profile", "none", "--fit", "50"], {"samples": 1, "profile": "none", "fit": 50}),
    ("svg", ["--text", "outlines", "--background", "#ff0000"], {"text": "outlines", "background": "#ff0000"}),
    ("pdf", ["--pdf-x", "x1a", "--date", "1700000000"], {"pdf_x": "x1a", "date": 1700000000}),
    ("pdf", [], {"pdf_x": None}),
])
def test_options_have_the_names_of_the_command(form, words, options):
    path = sample("text-point")
    with vx.open(path) as drawing:
        assert drawing.render(form, **options) == rendered(path, form, *words)


def test_numpy_and_pillow_take_a_picture_without_a_copy():
    picture = vx.open(SQUARE).picture(dpi=72)
    array = numpy.asarray(picture)
    image = Image.frombuffer("RGBA", picture.size, picture.pixels, "raw", "RGBA", 0, 1)
    assert (array.shape, array.dtype) == ((36, 72, 4), numpy.uint8)
    assert numpy.shares_memory(array, numpy.asarray(picture.pixels))
    array[5, 7] = (1, 2, 3, 4)
    assert image.getpixel((7, 5)) == (1, 2, 3, 4)
    assert [picture.pixels[5, 7, channel] for channel in range(4)] == [1, 2, 3, 4]


def test_a_picture_has_red_first_and_its_top_row_first():
    red_on_top = SQUARE.replace(b"0 0 0 1 k\n0 0 m\n36 0 l\n36 36 l\n0 36 l", b"0 1 1 0 k\n0 18 m\n72 18 l\n72 36 l\n0 36 l")
    picture = numpy.asarray(vx.open(red_on_top).picture(dpi=72, profile="none", background="none"))
    assert (picture[0] == (255, 0, 0, 255)).all()
    assert (picture[35, :, 3] == 0).all()


def test_a_notebook_is_given_both_pictures():
    with vx.open(sample("gift")) as drawing:
        assert drawing._repr_png_() == rendered(sample("gift"), "png")
        assert drawing._repr_svg_().encode() == rendered(sample("gift"), "svg")


def test_a_library_of_some_fonts_draws_with_these(tmp_path):
    path = sample("text-point")
    fonts = "/usr/share/fonts/opentype/urw-base35"
    with open(os.path.join(fonts, "NimbusSans-Regular.otf"), "rb") as file:
        font = file.read()
    alone = vx.Library(system_fonts=False, font_dirs=[fonts], temp_dir=tmp_path)
    assert alone.open(path).render("pdf") == rendered(path, "pdf", "--no-system-fonts", "--font-dir", fonts)
    assert "NimbusRoman-Regular" in [row.postscript for row in alone.fonts]
    given = vx.Library(system_fonts=False, fonts=[font])
    assert [(row.postscript, row.file) for row in given.fonts if row.postscript.startswith("Nimbus")] == [
        ("NimbusSans-Regular", "")]
    with given.open(path) as drawing:
        drawing.render("svg")
        assert {use.served for use in drawing.fonts} == {"NimbusSans-Regular"}


@pytest.mark.parametrize("form", ["png", "svg", "pdf"])
def test_a_font_map_serves_as_that_of_the_command_does(form, tmp_path):
    path = sample("text-missing")
    name = tmp_path / "map"
    name.write_text("# ours\nFrutiger-BlackItalic = C059-Bold\n", encoding="utf-8")
    mapped = rendered(path, form, "--font-map", name)
    assert mapped != rendered(path, form)
    for font_map in (name, str(name), {"Frutiger-BlackItalic": "C059-Bold"}):
        with vx.Library(font_map=font_map).open(path) as drawing:
            assert drawing.render(form) == mapped
            assert "C059-Bold" in {use.served for use in drawing.fonts}


def test_a_font_serves_until_its_row_goes():
    path = sample("text-missing")
    library = vx.Library()
    library.map_font("Frutiger-BlackItalic", "C059-Bold")
    mapped = library.open(path)
    library.map_font("Frutiger-BlackItalic", None)
    assert library.open(path).render("svg") == rendered(path, "svg") != mapped.render("svg")


@pytest.mark.parametrize("form, words, options", [
    ("png", [], {}), ("svg", [], {}), ("pdf", ["--pdf-x", "x3", "--date", "0"], {"pdf_x": "x3", "date": 0}),
])
def test_a_profile_from_memory_is_as_that_of_a_file(form, words, options, tmp_path):
    with open(PROFILE, "rb") as file:
        profile = bytearray(file.read())
    profile[10000:50000] = bytes(255 - byte for byte in profile[10000:50000])  # a part of the table from inks to colours
    path, press = sample("gift"), tmp_path / "press.icc"
    press.write_bytes(profile)
    drawn = rendered(path, form, "--profile", press, *words)
    assert drawn != rendered(path, form, *words)
    later = vx.Library()
    later.add_profile("press.icc", profile)
    for library in (vx.Library(profiles={"press.icc": bytes(profile)}), later):
        assert library.open(path, profile="press.icc").render(form, **options) == drawn
