"""A drawing in a process of its own."""
import pathlib
import threading
import warnings

import pytest

import vx
from conftest import SQUARE, sample


@pytest.mark.parametrize("form", ["png", "svg", "pdf"])
@pytest.mark.parametrize("name", ["gift", "text-japanese"])
def test_it_has_the_bytes_of_this_process(name, form):
    here = vx.open(sample(name)).render(form)
    assert vx.render_isolated(sample(name), form) == here
    assert vx.render_isolated(pathlib.Path(sample(name)).read_bytes(), form) == here


def test_options_are_keywords():
    assert vx.render_isolated(SQUARE, "png", width=30, background="none", box=(0, 0, 9, 9)) == \
        vx.open(SQUARE).render("png", width=30, background="none", box=(0, 0, 9, 9))


def test_a_library_has_its_own_fonts():
    library = vx.Library(system_fonts=False)
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", vx.DrawingWarning)
        here = library.open(sample("text-point")).render("svg")
        assert library.render_isolated(sample("text-point"), "svg") == here
        assert vx.render_isolated(sample("text-point"), "svg") != here


@pytest.mark.parametrize("source, options, kind, told", [
    (b"GIF89a", {}, vx.NotADrawingError, "<bytes>: not a VX document"),
    ("/no/such.vx", {}, FileNotFoundError, "/no/such.vx: "),
    (SQUARE, {"dpi": -1}, vx.OptionError, "dpi"),
    (SQUARE, {"pdf_x": "x3"}, vx.OptionError, "pdf_x is for pdf"),
    (sample("gift"), {"max_output": "1K"}, vx.LimitError, "max_output"),
    (sample("text-missing"), {"missing_fonts": "fail"}, vx.FontMissingError, "no font "),
    (7, {}, TypeError, "int"),
])
def test_errors_are_those_of_this_process(source, options, kind, told):
    with pytest.raises(kind, match=".*" + told):
        vx.render_isolated(source, "png", **options)


def test_warnings_are_of_the_line_that_calls():
    with pytest.warns(vx.DrawingWarning, match="no font \"Ornata-Condensed\"") as caught:
        vx.render_isolated(sample("text-missing"), "png")
        vx.Library().render_isolated(sample("text-missing"), "png")
    assert {warning.filename for warning in caught} == {__file__}


def test_what_progress_raises_comes_out():
    def end(done, total):
        assert (0 <= done <= 100, total) == (True, 100)
        raise KeyError("enough")

    with pytest.raises(KeyError, match="enough"):
        vx.render_isolated(sample("gift"), "png", dpi=1200, progress=end)


def test_eight_threads():
    expected = vx.open(sample("gift")).render("png")
    made = []
    threads = [threading.Thread(target=lambda: made.append(vx.render_isolated(sample("gift"), "png"))) for _ in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert made == [expected] * 8
