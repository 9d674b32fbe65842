"""Many threads draw at once, a document is for one call at a time, and Python goes on while C draws."""
import threading
from concurrent.futures import ThreadPoolExecutor

import cffi
import pytest

import vx
from conftest import SQUARE, sample
from vx import _libvx

pytestmark = pytest.mark.filterwarnings("ignore::vx.DrawingWarning")


def draw(library, name):
    with library.open(sample(name)) as drawing:
        return [drawing.render("png", fit=200), drawing.render("svg"), drawing.render("pdf"), drawing.picture(fit=90).tobytes()]


def test_eight_threads_draw_what_one_draws():
    names = ["text-point", "gradients", "text-symbol", "harp", "poster", "text-area", "text-japanese", "overprint"]
    alone = [draw(vx.Library(), name) for name in names]
    shared = vx.Library()
    barrier = threading.Barrier(8)

    def run(first):
        barrier.wait()
        return {name: draw(shared, name) for name in names[first:] + names[:first]}

    with ThreadPoolExecutor(8) as pool:
        for drawn in pool.map(run, range(8)):
            assert [drawn[name] for name in names] == alone


def test_a_document_that_a_thread_is_at_work_with_is_busy():
    drawing = vx.open(SQUARE)
    is_at_work, may_end = threading.Event(), threading.Event()

    def wait(done, total):
        is_at_work.set()
        may_end.wait()

    with ThreadPoolExecutor(1) as pool:
        drawn = pool.submit(drawing.render, "png", progress=wait)
        is_at_work.wait()
        try:
            for work in (drawing.close, drawing.picture, lambda: drawing.info, lambda: drawing.render("svg", background="red")):
                with pytest.raises(vx.BusyError):
                    work()
            assert not drawing.closed
        finally:
            may_end.set()
    assert drawn.result() == vx.open(SQUARE).render("png")


def test_python_goes_on_while_c_draws(monkeypatch):
    """C itself waits, in the middle of a call, for what another thread of Python does then: neither would ever end if the
    call kept Python's lock."""
    system = cffi.FFI()
    system.cdef("int sem_init(void *, int, unsigned); int sem_post(void *); int sem_wait(void *);")
    c = system.dlopen(None)
    has_begun, may_go_on = system.new("char[64]"), system.new("char[64]")
    for semaphore in (has_begun, may_go_on):
        assert c.sem_init(semaphore, 0, 0) == 0

    def post_and_wait(kind, function, **_):
        # In the place of the function of Python comes one of C. It takes the context, which is the first argument.
        return _libvx.ffi.cast(kind, system.cast("void *", {"vx_progress": c.sem_post, "vx_write": c.sem_wait}[kind]))

    def call_with_context(procedure, *arguments, **how):
        context = {_libvx.lib.vx_document_set_progress: has_begun, _libvx.lib.vx_document_render: may_go_on}.get(procedure)
        if context is not None and arguments[-2] != _libvx.ffi.NULL:
            arguments = (*arguments[:-1], _libvx.ffi.cast("void *", system.cast("uintptr_t", context)))
        return _libvx.call(procedure, *arguments, **how)

    with vx.open(SQUARE) as drawing, ThreadPoolExecutor(1) as pool:
        with monkeypatch.context() as patched:
            patched.setattr(_libvx.ffi, "callback", post_and_wait)
            patched.setattr("vx._document.call", call_with_context)
            drawn = pool.submit(drawing.render, "png", progress=lambda done, total: None)
            c.sem_wait(has_begun)
            assert not drawn.done()  # it cannot be: it waits for this
            while not drawn.done():
                c.sem_post(may_go_on)
            assert drawn.result() == b""
        assert drawing.render("png")[:4] == b"\x89PNG"
