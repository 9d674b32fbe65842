"""Tests what a press makes of a drawing, as the package tells it. A level is 255 times the amount of ink, rounded: the sample paints Brick full, with
70 % and with 40 %."""
import json
import os

import pytest

import vx
from conftest import SQUARE, command, sample

INKS = ("Cyan", "Magenta", "Yellow", "Black", "Night", "Brick")


def test_pixels_tell_their_inks():
    drawing = vx.open(SQUARE)
    found = drawing.ink_pixels(width=2)
    assert (found.width, found.height, found.inks) == (2, 1, INKS[:4])
    assert found.pixels.tolist() == [[[0, 0, 0, 255], [0, 0, 0, 0]]]
    spots = vx.open(sample("spot-inks")).ink_pixels(box=(99, 59, 101, 61), width=1)
    assert spots.inks == INKS
    assert spots.pixels.tolist() == [[[0, 0, 0, 0, 0, 178]]]


def test_objects_have_their_colours():
    drawing = vx.open(sample("spot-inks"))
    brick = drawing.object_at(100, 60)
    assert (brick.kind, brick.colour.spot, brick.box, brick.layer) == ("fill", "Brick", (90, 40, 150, 130), None)
    assert brick.colour.amount == pytest.approx(0.7, abs=1e-4)
    assert drawing.object_at(-20, 60) is None
    assert vx.open(sample("layers")).object_at(5, 195).layer == "Sky"
    with pytest.raises(vx.OptionError, match="dpi is for"):
        drawing.object_at(0, 0, dpi=3)


def test_plates_are_those_of_the_command(tmp_path):
    for form in "png", "tiff":
        plates = vx.open(sample("spot-inks")).plates(form, dpi=36)
        assert tuple(plates) == INKS
        command("plates", "-q", sample("spot-inks"), "--dpi", "36", "-f", form, "-o", os.path.join(tmp_path, "{ink}.{ext}"))
        for ink, data in plates.items():
            with open(os.path.join(tmp_path, f"{ink}.{form}"), "rb") as file:
                assert file.read() == data


def test_coverage():
    found = vx.open(SQUARE).coverage(50, heat_map=True, dpi=72)
    assert found.inks == {"Cyan": 0, "Magenta": 0, "Yellow": 0, "Black": 0.5}
    assert (found.most, found.most_at, found.limit, found.share, found.area) == (1, (0.5, 35.5), 0.5, 0.5, 1296)
    assert found.heat_map[1:4] == b"PNG"
    assert vx.open(SQUARE).coverage(dpi=72).heat_map is None


def test_the_check_is_that_of_the_command():
    path = sample("spot-inks")
    found = vx.open(path).check(dpi=36)
    told = json.loads(command("check", "-q", "--json", path, "--dpi", "36"))
    assert [finding.name for finding in found.findings] == [finding["name"] for finding in told["findings"]]
    assert (found.errors, found.warnings, found.notes) == (told["errors"], told["warnings"], told["notes"])
    assert str(found) == command("check", "-q", path, "--dpi", "36").decode().split("\n", 1)[1]
    strict = vx.open(path).check({"limits": {"hairline": 3}, "severities": {"hairline": "error"}}, html=True, dpi=36)
    assert (strict.errors, strict.findings[0].name, strict.findings[0].limit) == (1, "hairline", 3)
    assert strict.html.startswith(b"<!DOCTYPE html>")
    with pytest.raises(vx.OptionError, match="limits: no JSON at byte 2"):
        vx.open(path).check("{")


def test_lines_have_their_places():
    line = vx.open(sample("text-vertical")).texts()[0].lines[0]
    assert (line.vertical, line.angle, line.length) == (True, -90, 24 * len(line.text))
    line = vx.open(sample("text-path")).texts()[0].lines[0]
    assert len(line.places) == len(line.text)
