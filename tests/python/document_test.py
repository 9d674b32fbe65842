"""Tests a document, its options, errors and warnings."""
import gc
import inspect
import os
import pathlib
import pickle
import warnings
import weakref

import pytest

import vx
from conftest import SQUARE, sample

TRUNCATED = SQUARE[:SQUARE.index(b"0 36 l")] + b"(\n"


def square(**options):
    return vx.open(SQUARE, **options)


# ---- Opening and closing ----


@pytest.mark.parametrize("source", [
    str(sample("gift")), pathlib.Path(sample("gift")), pathlib.Path(sample("gift")).read_bytes(),
    bytearray(pathlib.Path(sample("gift")).read_bytes()), memoryview(pathlib.Path(sample("gift")).read_bytes()),
], ids=lambda source: type(source).__name__)
def test_a_path_and_bytes_are_the_same_drawing(source):
    assert vx.open(source).render("svg") == vx.open(sample("gift")).render("svg")


def test_bytes_stay_as_they_were():
    source = bytearray(SQUARE)
    drawing = vx.open(source)
    source[:] = b"x" * len(source)
    del source
    gc.collect()
    assert drawing.render("png") == square().render("png")


def test_a_document_keeps_its_library():
    drawing = vx.Library(system_fonts=False).open(SQUARE)
    gc.collect()
    assert drawing.header.title == "A square"


def test_it_is_closed_at_the_end_of_with():
    with square() as drawing:
        assert not drawing.closed
    assert drawing.closed and repr(drawing) == "<vx.Document <bytes>, closed>"
    drawing.close()
    for work in (drawing.picture, drawing.size, lambda: drawing.render("png"), lambda: drawing.info, lambda: drawing.header):
        with pytest.raises(vx.ArgumentError, match="^<bytes>: the document is closed: open it again$"):
            work()


def test_the_header():
    assert square().header == vx.Header(5, False, (0, 0, 72, 36), "A square", "by hand", "")


def test_the_header_of_a_damaged_drawing_can_be_read():
    drawing = vx.open(TRUNCATED)
    assert drawing.header.title == "A square"
    with pytest.raises(vx.MalformedError):
        drawing.info


# ---- Options ----


def test_options_of_open_hold_until_a_call_says_another():
    drawing = square(width=20, pdf_x="x1a")
    assert drawing.size() == (20, 10)
    assert drawing.size(width=40) == (40, 20)
    assert drawing.size(width=None, dpi=72) == (72, 36)
    assert drawing.size() == (20, 10)
    assert drawing.render("svg") == square().render("svg")


def fail(*_):
    raise RuntimeError("enough")


@pytest.mark.parametrize("before", [
    lambda drawing: drawing.render("png", width=9, background="red"),
    lambda drawing: drawing.picture(width=9, samples=1, background="red"),
    lambda drawing: pytest.raises(vx.OptionError, drawing.render, "png", background="red", width="x"),
    lambda drawing: pytest.raises(vx.LimitError, drawing.render, "png", background="red", max_time=1e-9),
    lambda drawing: pytest.raises(RuntimeError, drawing.render, "png", background="red", progress=fail),
], ids=["render", "picture", "wrong value", "limit", "stopped"])
def test_options_of_a_call_are_forgotten_after_it(before):
    drawing = square()
    before(drawing)
    assert drawing.render("png") == square().render("png")


def test_options_are_listed_with_their_ranges():
    rows = {option.name: option for option in vx.options()}
    assert (rows["width"].least, rows["width"].most, rows["width"].formats) == (1, 131072, ("png", "tiff"))
    assert (rows["pdf_x"].choices, rows["pdf_x"].standard) == (("x1a", "x3", "x4", "none"), "none")
    assert rows["max_time"].formats == ()
    assert "-" not in "".join(rows)
    assert [(row.name, row.mime) for row in vx.formats()] == [
        ("pdf", "application/pdf"), ("svg", "image/svg+xml"), ("png", "image/png"), ("tiff", "image/tiff")]


@pytest.mark.parametrize("form, options, text", [
    ("png", {"widht": 3}, 'no option "widht": did you mean width? vx.options() lists them'),
    ("png", {"zzz": 3}, 'no option "zzz": leave it out; vx.options() lists them'),
    ("pdf", {"pdf-x": "x1a"}, 'no option "pdf-x": did you mean pdf_x? vx.options() lists them'),
    ("svg", {"width": 3}, "width is for png and tiff, and svg is made: leave it out"),
    ("png", {"text": "outlines"}, "text is for pdf and svg, and png is made: leave it out"),
    ("png", {"background": ""}, "background: its value is empty: give one, or None"),
    ("png", {"width": 3.5}, "<bytes>: width 3.5: not a whole number of pixels from 1 to 131072: give one as 1024"),
    ("png", {"width": 3, "dpi": 4}, "<bytes>: more than one size: give dpi, or zoom, or fit, or width and height"),
    ("png", {"dpi": float("nan")}, "<bytes>: dpi NaN: not a number above 0 and up to 100000: give one as 300 or 1.5"),
    ("pdf", {"pdf_x": "x1a", "profile": "none"}, "<bytes>: pdf_x and profile none: the standard names the press that the page is "
     "made for: give a profile, or leave profile out"),
    ("pdf", {"date": "soon"}, "<bytes>: date soon: not a date from 1970 to 9999: give one as 2026-11-22 or 2026-11-22T10:30, seconds "
     "since 1970, file or now"),
    ("gif", {}, '<bytes>: no format "gif": give one of pdf, svg, png, tiff'),
    ("gif", {"width": 3}, '<bytes>: no format "gif": give one of pdf, svg, png, tiff'),
])
def test_a_wrong_option_is_told(form, options, text):
    with pytest.raises(vx.OptionError) as told:
        square().render(form, **options)
    assert str(told.value) == text
    assert isinstance(told.value, ValueError)


def test_options_of_a_library_are_its_keywords():
    rows = {option.name: option for option in vx.library_options()}
    assert set(rows) <= set(inspect.signature(vx.Library).parameters)
    assert (rows["system_fonts"].choices, rows["system_fonts"].standard) == (("yes", "no"), "yes")
    assert "-" not in "".join(rows)


def test_a_font_that_is_not_there_serves_nothing():
    with pytest.raises(vx.OptionError) as told:
        vx.Library(font_map={"Frutiger": "Nowhere"})
    assert str(told.value) == 'no font "Nowhere" to serve "Frutiger": Library.fonts lists those that there are'


def test_open_tells_a_wrong_option():
    with pytest.raises(vx.OptionError, match="^<bytes>: width -1: "):
        square(width=-1)
    with pytest.raises(vx.OptionError, match="did you mean missing_fonts"):
        square(missing_font="fail")


def test_a_picture_takes_the_options_of_a_png():
    for work in (square().picture, square().size):
        with pytest.raises(vx.OptionError, match="^pdf_x is for pdf, and png is made: leave it out$"):
            work(pdf_x="x1a")


@pytest.mark.parametrize("value", [object(), b"red", {}], ids=lambda value: type(value).__name__)
def test_a_value_of_a_wrong_type_is_told(value):
    with pytest.raises(TypeError, match="^background is of type .*: give a number, a text or a path$"):
        square().render("png", background=value)


@pytest.mark.parametrize("work, text", [
    (lambda: vx.open("a\0b"), "path has a NUL in it: leave that out"),
    (lambda: square().render("p\0ng"), "format has a NUL in it: leave that out"),
    (lambda: square().render("png", background="red\0"), "background has a NUL in it: leave that out"),
    (lambda: vx.Library(fonts=[b"x"]), "the bytes are no font that can be read: give a whole OpenType or Type 1 file"),
    (lambda: vx.Library(font_map={"": "C059-Bold"}), "asked has 0 bytes: give a name of 1 to 255"),
    (lambda: vx.Library(profiles={"none": b""}), 'the name "none" is taken by what is built in: give another'),
    (lambda: vx.Library(profiles={"press": b"x"}),
     'profile "press" cannot be read as an ICC profile: give an ICC profile of a CMYK press'),
])
def test_a_wrong_argument_is_told(work, text):
    with pytest.raises(vx.ArgumentError) as told:
        work()
    assert str(told.value) == text


# ---- Errors ----


def test_a_file_that_is_not_there_is_python_s_own_error_too():
    with pytest.raises(FileNotFoundError) as told:
        vx.open("no-such.vx")
    assert isinstance(told.value, vx.MissingFileError) and isinstance(told.value, vx.ReadError)
    assert (str(told.value), told.value.errno) == ("no-such.vx: no such file: check the name", 2)


def test_a_folder_is_no_missing_file(tmp_path):
    with pytest.raises(vx.ReadError, match="is a directory") as told:
        vx.open(tmp_path)
    assert not isinstance(told.value, FileNotFoundError)


@pytest.mark.parametrize("source, text", [
    (b"%PDF-1.4\n", '<bytes>: not a VX document, first line is "%PDF-1.4": drawings start with "%!PS-Tavro-"'),
    (b"", '<bytes>: not a VX document, the file is empty: drawings start with "%!PS-Tavro-"'),
])
def test_something_else_is_no_drawing(source, text):
    with pytest.raises(vx.NotADrawingError) as told:
        vx.open(source)
    assert str(told.value) == text


def test_errors_name_the_file(tmp_path):
    path = tmp_path / "a\nb.vx"
    path.write_bytes(TRUNCATED)
    with pytest.raises(vx.MalformedError) as told:
        vx.open(path).render("png")
    line = TRUNCATED.count(b"\n")
    assert str(told.value).startswith(f"{tmp_path}/a\\nb.vx: malformed, line {line}, column 1: a string without its \")\"")


def test_damage_is_left_out_where_that_is_asked():
    damaged = SQUARE.replace(b"0 0 m", b"1 f\n0 0 m")
    assert damaged != SQUARE
    with pytest.warns(vx.DrawingWarning, match='1 fault is left out: line .*"f" wants no operands, has 1'):
        assert vx.open(damaged).render("svg", salvage=True) == vx.open(SQUARE).render("svg")


def test_a_format_of_a_wrong_type_is_told():
    with pytest.raises(TypeError, match="^format is of type int: give a text$"):
        square().render(3)


@pytest.mark.parametrize("source", [3, None, ["a"]], ids=repr)
def test_another_source_is_told(source):
    with pytest.raises(TypeError, match="from a path or from bytes, not from"):
        vx.open(source)


@pytest.mark.parametrize("kind, work", [
    (vx.LimitError, lambda: square().render("png", max_time=1e-9)),
    (vx.LimitError, lambda: square().picture(width=131072, height=131072)),
    (vx.FontMissingError, lambda: vx.open(sample("text-missing"), missing_fonts="fail").render("png")),
    (vx.WriteError, lambda: vx.Library(temp_dir="/proc").render_isolated(SQUARE, "pdf")),
    (vx.OptionError, lambda: vx.Library(temp_dir="/no/such")),
    (vx.OptionError, lambda: vx.Library(font_dirs=["/no/such"])),
    (TypeError, lambda: vx.Library(font_dirs="/usr/share/fonts")),
    (TypeError, lambda: vx.Library(fonts=b"x")),
    (TypeError, lambda: vx.Library(font_map=3)),
    (TypeError, lambda: vx.Library(font_map={"A": 3})),
    (TypeError, lambda: vx.Library(profiles={"press": "x"})),
    (vx.ReadError, lambda: vx.Library(font_map="/no/such")),
])
def test_the_kind_of_an_error(kind, work):
    with pytest.raises(kind) as told:
        work()
    assert "-dir" not in str(told.value) and "\n" not in str(told.value)


def test_an_option_in_an_error_has_its_name_of_python():
    with pytest.raises(vx.LimitError, match="allow more with max_output$"):
        vx.open(sample("harp")).render("pdf", max_output=4096)


def test_errors_go_from_process_to_process():
    for kind in (vx.OptionError, vx.MissingFileError, vx.OutOfMemoryError):
        again = pickle.loads(pickle.dumps(kind("a: b")))
        assert (type(again), str(again)) == (kind, "a: b")


# ---- Warnings ----


def test_a_substitution_is_a_warning():
    drawing = vx.open(sample("text-missing"))
    with pytest.warns(vx.DrawingWarning) as told:
        drawing.render("png", fit=50)
    texts = [f"{sample('text-missing')}: {text}" for text in drawing.warnings]
    assert [str(warning.message) for warning in told] == texts
    assert any('no font "Frutiger-BlackItalic", drawn with ' in text for text in texts)
    assert {use.match for use in drawing.fonts} == {"substitute"}


@pytest.mark.parametrize("work", [
    lambda drawing, path: drawing.render("png", fit=50), lambda drawing, path: drawing.picture(fit=50),
    lambda drawing, path: drawing.save(path / "a.png", fit=50), lambda drawing, path: drawing._repr_png_(),
], ids=["render", "picture", "save", "repr"])
def test_a_warning_names_the_line_of_the_caller(work, tmp_path):
    with warnings.catch_warnings(record=True) as told:
        warnings.simplefilter("always")
        work(vx.open(sample("pattern-fallback")), tmp_path)
    assert [str(warning.message) for warning in told] == [
        f"{sample('pattern-fallback')}: 1 pattern is painted in half gray"]
    assert {warning.filename for warning in told} <= {__file__, vx._document.__file__}
    if work.__code__.co_names[0] != "_repr_png_":
        assert told[0].filename == __file__


def test_warnings_are_those_of_the_last_call():
    drawing = vx.open(sample("pattern-fallback"), profile="none")
    assert drawing.info.problems[0].message == "patterns are drawn as 50% gray"
    assert drawing.info.unshown == {"patterns": 1}
    assert drawing.warnings == ("1 pattern is painted in half gray",)
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        square().render("png")
        drawing.info


# ---- Progress ----


def test_progress_is_told_to_the_end():
    told = []
    with vx.open(sample("poster")) as drawing:
        drawing.render("svg", progress=lambda done, total: told.append((done, total)))
        size = os.path.getsize(sample("poster"))
        assert told == sorted(told) and len(told) > 2
        assert {total for _, total in told} == {size}
        count = len(told)
        drawing.render("svg")
    assert len(told) == count


@pytest.mark.parametrize("raised", [ZeroDivisionError("a"), KeyboardInterrupt(), vx.StoppedError("b"), StopIteration(1)], ids=repr)
@pytest.mark.parametrize("work", [
    lambda drawing, **how: drawing.render("pdf", **how), lambda drawing, **how: drawing.picture(**how),
], ids=["render", "picture"])
def test_what_progress_raises_comes_out_of_the_call(work, raised, capfd):
    def stop(done, total):
        raise raised

    drawing = square()
    with pytest.raises(type(raised)) as told:
        work(drawing, progress=stop)
    assert told.value is raised
    assert capfd.readouterr() == ("", "")
    work(drawing)


@pytest.mark.parametrize("work", [
    lambda drawing: drawing.render("png"), lambda drawing: drawing.header, lambda drawing: drawing.close(),
], ids=["render", "header", "close"])
def test_a_document_at_work_is_busy(work):
    drawing = square()
    with pytest.raises(vx.BusyError, match="^<bytes>: another call is at work with this document: wait for its end, "):
        drawing.render("png", progress=lambda done, total: work(drawing))
    assert drawing.render("png") == square().render("png")


def test_a_progress_function_is_let_go():
    class Told:
        def __call__(self, done, total):
            pass

    drawing, function = square(), Told()
    drawing.render("png", progress=function)
    reference = weakref.ref(function)
    del function
    gc.collect()
    assert reference() is None


def test_a_document_in_a_circle_is_let_go():
    class Holder:
        pass

    holder = Holder()
    holder.library = vx.Library(system_fonts=False)
    holder.drawing = holder.library.open(SQUARE)
    holder.itself = holder
    reference = weakref.ref(holder.drawing)
    del holder
    gc.collect()
    assert reference() is None
