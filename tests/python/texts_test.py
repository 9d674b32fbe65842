"""Tests the texts of a document: those that the command prints, as records."""
import json

import pytest

import vx
from conftest import SQUARE, command, sample

TEXT = b"0 To 1 0 0 1 5 5 0 Tp TP /_Helvetica 12 Tf 0 Tr (%b) Tx TO\n"
LAYERS = SQUARE.replace(b"%%PageTrailer", b"".join(
    b"1 1 1 %d 0 0 1 79 128 255 Lb\n(%b) Ln\n0 0 0 1 k\n%bLB\n" % (printing, name, TEXT % word)
    for printing, name, word in ((1, b"Names", b"Rum"), (0, b"Notes", b"Low tide"))) + b"%%PageTrailer")


@pytest.mark.parametrize("name", ["text-point", "text-area", "text-path", "text-japanese", "text-vertical", "spot-inks", "poster"])
def test_they_are_those_of_the_command(name):
    path = sample(name)
    texts = vx.open(path).texts()
    expected = [json.loads(line) for line in command("text", "--json", "-q", path).splitlines()]
    assert len(texts) == len(expected)
    for text, members in zip(texts, expected):
        assert (text.layer, text.printing, text.kind, list(text.box), text.unknown_characters) == (
            members["layer"], members["printing"], members["kind"], members["box"], members["unknownCharacters"])
        assert [line.text for line in text.lines] == [line["text"] for line in members["lines"]]
        runs = [run for line in text.lines for run in line.runs]
        for run, told in zip(runs, [run for line in members["lines"] for run in line["runs"]], strict=True):
            colour = {"gray": run.colour.gray, "cmyk": run.colour.cmyk and list(run.colour.cmyk), "spot": run.colour.spot,
                      "amount": run.colour.amount}
            assert {"text": run.text, "font": run.font, "served": run.served, "size": run.size,
                    "colour": {name: value for name, value in colour.items() if value is not None}} == told
    lines = command("text", "-q", path).decode()
    assert "\n\n".join(map(str, texts)) + "\n" * bool(texts) == lines


def test_they_are_those_of_the_layers_that_are_chosen():
    drawing = vx.open(LAYERS)
    assert [(str(text), text.layer, text.printing) for text in drawing.texts()] == [("Rum", "Names", True)]
    assert [(str(text), text.layer, text.printing) for text in drawing.texts(layers="all")] == [
        ("Rum", "Names", True), ("Low tide", "Notes", False)]
    assert [str(text) for text in drawing.texts(layers="all", hide="Names")] == ["Low tide"]
    with pytest.raises(vx.OptionError, match='no layer "Sea": there are "Names", "Notes"'):
        drawing.texts(layers="Sea")


def test_what_says_nothing_of_reading_is_refused():
    with pytest.raises(vx.OptionError, match="^dpi is for png and tiff, and texts are read: leave it out$"):
        vx.open(LAYERS).texts(dpi=300)


def test_progress_can_end_them():
    def stop(done, total):
        raise RuntimeError("enough")

    with pytest.raises(RuntimeError, match="enough"):
        vx.open(sample("poster")).texts(progress=stop)


def test_a_damaged_drawing_has_none():
    with pytest.raises(vx.MalformedError):
        vx.open(LAYERS.replace(b"(Low tide) Tx", b"1 S")).texts()
    with pytest.warns(vx.DrawingWarning):
        assert [str(text) for text in vx.open(LAYERS.replace(b"(Rum) Tx", b"(Rum) Tx 1 S")).texts(salvage="yes")] == ["Rum"]


def test_a_drawing_without_words_has_none():
    assert vx.open(SQUARE).texts() == ()
