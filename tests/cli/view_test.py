"""Tests what vx view serves, to whom, and for how long. The viewer here is a small one of its own."""
import contextlib
import glob
import gzip
import http.client
import http.server
import json
import os
import re
import shutil
import signal
import socket
import subprocess
import sys
import threading
import time
import unittest
import urllib.parse
import urllib.request

from vxcommand import CommandTest, SANITIZED, document, sample, sample_names

CHROMIUM = "/usr/bin/chromium"


class ViewTest(CommandTest):
    FILES = {"index.html": b'<!doctype html><title>viewer</title><script type="module" src="page.js"></script>',
             "page.js": b"new EventSource('alive');", "style.css": b"", "parts/vx.wasm": b"\0asm\1\0\0\0", "parts/font.otf": b"OTTO",
             "parts/odd": b"\0\1"}

    def setUp(self):
        super().setUp()
        for name, data in self.FILES.items():
            os.makedirs(os.path.dirname(self.path("viewer/" + name)), exist_ok=True)
            self.write("viewer/" + name, data)
        self.write("a.vx", document())

    def spawn(self, words, environment, **options):
        return super().spawn(words, {"VX_VIEWER": self.path("viewer"), **environment}, **options)

    def view(self, *words, browser=None, **options):
        """Starts it, and returns (the process, the port, the path). It opens a browser only where one is named."""
        environment = {"BROWSER": browser or "", **options.pop("environment", {})}
        process = self.start("view", *(["--no-browser"] if browser is None else []), *words, environment=environment, **options)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        address = process.stdout.readline().decode()
        self.assertRegex(address, r"^http://127\.0\.0\.1:\d+/[0-9a-f]{32}/\?served\n$", "" if address else process.stderr.read())
        url = urllib.parse.urlsplit(address)
        return process, url.port, url.path

    def ask(self, port, path, method="GET", host=None, body=None):
        connection = http.client.HTTPConnection("127.0.0.1", port, timeout=60)
        self.addCleanup(connection.close)
        connection.request(method, path, body=body, headers={"Host": host} if host else {})
        response = connection.getresponse()
        return response.status, response.headers, response.read()

    def get(self, port, path):
        status, _, body = self.ask(port, path)
        self.assertEqual(status, 200, path)
        return body

    def hold(self, port, path):
        """A connection as a page holds one, from which its first lines have come."""
        connection = http.client.HTTPConnection("127.0.0.1", port, timeout=60)
        self.addCleanup(connection.close)
        connection.request("GET", path + "alive")
        response = connection.getresponse()
        self.assertEqual((response.status, response.headers["Content-Type"]), (200, "text/event-stream"))
        self.comment(response)
        return response

    def comment(self, response):
        while not response.readline().startswith(b":"):
            pass

    def end(self, process, status=0):
        """Waits for its end, and returns what it told."""
        _, told = process.communicate(timeout=120)
        self.assertEqual(process.returncode, status, told)
        return told.decode()

    def interrupt(self, process, status=0):
        process.send_signal(signal.SIGINT)
        return self.end(process, status)


class Serving(ViewTest):
    def test_the_viewer_and_the_drawings(self):
        self.write("b.vx", gzip.compress(document()))
        process, port, path = self.view("a.vx", "b.vx", sample("poster"))
        types = {"": "text/html; charset=utf-8", "index.html": "text/html; charset=utf-8", "page.js": "text/javascript; charset=utf-8",
                 "style.css": "text/css; charset=utf-8", "parts/vx.wasm": "application/wasm", "parts/font.otf": "font/otf",
                 "parts/odd": "application/octet-stream", "drawings.json": "application/json", "drawings/0": "application/octet-stream"}
        for name, kind in types.items():
            with self.subTest(name=name):
                status, headers, body = self.ask(port, path + name)
                self.assertEqual((status, headers["Content-Type"]), (200, kind))
                if not name.startswith("drawings"):
                    self.assertEqual(body, self.FILES[name or "index.html"])
                self.assertEqual((headers["X-Content-Type-Options"], headers["Cache-Control"], headers["Cross-Origin-Opener-Policy"]),
                                 ("nosniff", "no-store", "same-origin"))
                self.assertTrue(headers["Content-Security-Policy"].startswith("default-src 'none'; "))
                self.assertIsNone(headers["Content-Encoding"])
                status, of_head, nothing = self.ask(port, path + name, "HEAD")
                self.assertEqual((status, nothing, of_head["Content-Length"]), (200, b"", str(len(body))))
        self.assertEqual(json.loads(self.get(port, path + "drawings.json")),
                         [{"name": name, "url": f"drawings/{number}"} for number, name in enumerate(["a.vx", "b.vx", "poster.vx"])])
        self.assertEqual(self.get(port, path + "drawings/0?any=query"), document())
        self.assertEqual(self.get(port, path + "drawings/1"), self.read("b.vx"))  # packed, as it is
        with open(sample("poster"), "rb") as file:
            self.assertEqual(self.get(port, path + "drawings/2"), file.read())
        self.assertEqual(self.interrupt(process), "")

    def test_what_was_read_before_it_started(self):
        process, port, path = self.view("a.vx")
        shutil.rmtree(self.path("viewer"))
        with open(self.path("a.vx"), "wb"):
            pass
        self.assertEqual(self.get(port, path + "drawings/0"), document())
        self.assertEqual(self.get(port, path), self.FILES["index.html"])
        self.interrupt(process)

    def test_a_drawing_on_standard_input(self):
        process = self.start("view", "--no-browser", "-", "a.vx", stdin=subprocess.PIPE)
        process.stdin.write(document("0.5 g\n"))
        process.stdin.close()
        process.stdin = None
        self.addCleanup(process.kill)
        url = urllib.parse.urlsplit(process.stdout.readline().decode())
        self.assertEqual([one["name"] for one in json.loads(self.get(url.port, url.path + "drawings.json"))], ["standard input", "a.vx"])
        self.assertEqual(self.get(url.port, url.path + "drawings/0"), document("0.5 g\n"))
        self.interrupt(process)

    def test_the_drawings_of_a_folder(self):
        os.makedirs(self.path("all/below/deep"))
        for name in ("all/z.vx", "all/below/a b.eps", "all/below/deep/c\xe9.vx"):
            self.write(name, document())
        self.write("all/picture.png", b"\x89PNG")
        os.symlink(self.path("a.vx"), self.path("all/link.vx"))
        process, port, path = self.view("all", "a.vx")
        self.assertEqual([one["name"] for one in json.loads(self.get(port, path + "drawings.json"))],
                         ["below/a b.eps", "below/deep/c\xe9.vx", "z.vx", "a.vx"])
        self.assertEqual(self.interrupt(process),
                         "vx: all/link.vx: warning: a symbolic link, which is not followed: name it to see it\n")

    def test_all_samples_and_what_is_malformed_behind_its_header(self):
        self.write("bad.vx", document("1 2 k\n"))
        process, port, path = self.view(*map(sample, sample_names()), "bad.vx")
        self.assertEqual(len(json.loads(self.get(port, path + "drawings.json"))), len(sample_names()) + 1)
        self.assertEqual(self.interrupt(process), "")

    def test_names_that_are_no_text(self):
        name = os.fsdecode(b"<b>\xff\n\".vx")
        self.write(name, document())
        process, port, path = self.view(name)
        self.assertEqual(json.loads(self.get(port, path + "drawings.json"))[0]["name"], "<b>\ufffd\n\".vx")
        self.interrupt(process)

    def test_without_a_drawing_the_page_can_open_them(self):
        process, port, path = self.view()
        self.assertEqual(self.get(port, path + "drawings.json").strip(), b"[]")
        self.interrupt(process)

    def test_a_port_that_is_named(self):
        with socket.create_server(("127.0.0.1", 0)) as taken:
            port = taken.getsockname()[1]
            self.assertRegex(self.refused("view", "--no-browser", "--port", str(port), "a.vx", status=2),
                             f"^vx: --port {port}: cannot be had, .*: give another, or leave it out$")
        process, served, path = self.view("--port", str(port), "a.vx")
        self.assertEqual(served, port)
        self.get(port, path)
        self.interrupt(process)


class Strangers(ViewTest):
    """They may connect: other users of the machine, and pages from elsewhere in the browser."""

    def raw(self, port, request):
        with socket.create_connection(("127.0.0.1", port), timeout=60) as connection:
            connection.sendall(request)
            return b"".join(iter(lambda: connection.recv(65536), b""))

    def test_only_who_knows_the_path_gets_anything(self):
        _, port, path = self.view("a.vx")
        _, other_port, other_path = self.view("a.vx")
        self.assertNotEqual(path, other_path)
        answers = {}
        for wrong in ("/", "/index.html", path[:-1], path[1:], "/" + path, path[:-2] + "/", path[:-1] + "0/", other_path, path.swapcase(),
                      "/../" + path[1:] + "x", "/drawings/0", "*", "/" + "a" * 33, "/" + "%61" * 2000):
            status, headers, body = self.ask(port, wrong)
            del headers["Date"]
            answers[wrong] = status, sorted(headers.items()), body
        self.assertEqual({status for status, _, _ in answers.values()}, {404}, answers)
        self.assertEqual(len(set(map(str, answers.values()))), 1, "they tell something")
        self.get(other_port, other_path)

    def test_nothing_but_the_viewer_and_the_drawings(self):
        self.write("secret", b"secret")
        _, port, path = self.view("a.vx")
        for name in ("secret", "../secret", "..%2fsecret", "%2e%2e/secret", "parts", "parts/", "parts/../index.html", "//index.html",
                     self.path("secret"), "drawings", "drawings/", "drawings/1", "drawings/-1", "drawings/00", "a.vx", "viewer/index.html"):
            self.assertEqual(self.ask(port, path + name)[0], 404, name)

    def test_a_name_that_was_made_to_mean_this_machine(self):
        _, port, path = self.view("a.vx")
        for host in ("evil.example", f"evil.example:{port}", f"localhost:{port}", "127.0.0.1", "127.0.0.1:1", f"127.0.0.1:{port}.evil.example",
                     f"[::1]:{port}"):
            for name in (path, path + "drawings/0", "/"):
                status, _, body = self.ask(port, name, host=host)
                self.assertEqual((status, body), (403, b"not here\n"), host)
        self.assertTrue(self.raw(port, f"GET {path} HTTP/1.0\r\n\r\n".encode()).startswith(b"HTTP/1.1 403 "))
        self.assertEqual(self.ask(port, path, host=f"127.0.0.1:{port}")[0], 200)

    def test_nothing_is_taken(self):
        _, port, path = self.view("a.vx")
        for method in ("POST", "PUT", "DELETE", "OPTIONS", "PATCH", "get"):
            status, headers, _ = self.ask(port, path, method, body=b"x" * 100000 if method == "POST" else None)
            self.assertEqual((status, headers["Allow"]), (405, "GET, HEAD"), method)
            self.assertEqual(self.ask(port, "/", method)[0], 404)

    def test_it_listens_to_this_machine_alone(self):
        process, port, _ = self.view("a.vx")
        sockets = set()
        for descriptor in glob.glob(f"/proc/{process.pid}/fd/*"):
            with contextlib.suppress(FileNotFoundError):  # one that was closed meanwhile
                sockets.update(re.findall(r"socket:\[(\d+)\]", os.readlink(descriptor)))
        listening = []
        for family in ("tcp", "tcp6"):
            with open(f"/proc/{process.pid}/net/{family}", encoding="ascii") as table:
                rows = [line.split() for line in table.readlines()[1:]]
            listening += [row[1] for row in rows if row[3] == "0A" and row[9] in sockets]
        self.assertEqual(listening, [f"0100007F:{port:04X}"])

    def test_who_says_nothing_keeps_nobody_waiting(self):
        process, port, path = self.view("a.vx")
        held = []
        for number in range(300):
            held.append(socket.create_connection(("127.0.0.1", port), timeout=60))
            self.addCleanup(held[-1].close)
            if number % 2:
                held[-1].sendall(f"GET {path if number % 3 else '/'} HTTP/1.1\r\nHost: 127".encode())
        self.assertEqual(self.get(port, path + "drawings/0"), document())
        # Nobody goes on for ever, a byte at a time.
        for connection in held[-2:]:
            with self.assertRaises(ConnectionError):
                while True:
                    connection.sendall(b"a")
                    time.sleep(0.1)
        self.interrupt(process)

    def test_what_they_send_is_bounded(self):
        _, port, path = self.view("a.vx")
        for request in (b"GET / HTTP/1.1\r\nX: " + b"a" * 200000, b"GET /" + b"a" * 200000, b"\0" * 200000, b"a" * 200000,
                        b"GET / HTTP/1.1\r\n" + b"a: b\r\n" * 20000):
            try:
                answer = self.raw(port, request)
            except (BrokenPipeError, ConnectionResetError):
                answer = b""
            self.assertRegex(answer, rb"^(HTTP/1\.1 4\d\d |$)")
        self.assertEqual(self.get(port, path + "drawings/0"), document())

    @unittest.skipIf(SANITIZED, "a sanitizer's own calls are more")
    def test_the_server_is_confined(self):
        process, port, path = self.view("a.vx")
        self.get(port, path)  # so it is past its beginning
        with open(f"/proc/{process.pid}/status", encoding="ascii") as file:
            status = dict(line.split(":", 1) for line in file)
        if "Seccomp" not in status:
            self.skipTest("this kernel has no seccomp")
        self.assertEqual((status["Seccomp"].strip(), status["NoNewPrivs"].strip()), ("2", "1"))
        self.assertEqual(sorted(os.listdir(f"/proc/{process.pid}/task")), [str(process.pid)])


class Ends(ViewTest):
    def test_when_the_page_is_closed(self):
        process, port, path = self.view("a.vx")
        self.hold(port, path).close()
        self.assertEqual(self.end(process), "")

    def test_not_before_the_last_page_is_closed(self):
        process, port, path = self.view("a.vx")
        first, second = self.hold(port, path), self.hold(port, path)
        first.close()
        for _ in range(2):  # between which there is more time than the end would take
            self.comment(second)
        self.assertEqual(self.get(port, path + "drawings/0"), document())
        second.close()
        self.assertEqual(self.end(process), "")

    def test_not_before_a_page_comes_and_not_for_what_is_no_page(self):
        process, port, path = self.view("a.vx")
        self.get(port, path)
        self.assertEqual(self.ask(port, path + "alive", "HEAD")[0], 404)
        self.assertEqual(self.ask(port, "/alive")[0], 404)
        page = self.hold(port, path)
        self.comment(page)
        self.assertIsNone(process.poll())
        page.close()
        self.end(process)

    def test_by_a_signal(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            for holds in (False, True):
                process, port, path = self.view("a.vx")
                if holds:
                    self.hold(port, path)
                process.send_signal(number)
                self.assertEqual(self.end(process), "")


@unittest.skipUnless(os.environ.get("VX_SLOW"), "it takes minutes: ./check --slow does it")
class Patience(ViewTest):
    def test_a_browser_that_opens_no_page_is_told_in_the_end(self):
        process, port, path = self.view("a.vx", browser="true")
        self.get(port, path)  # as a program would that is no browser
        _, told = process.communicate(timeout=1000)
        self.assertEqual((process.returncode, told.decode()),
                         (4, "vx: no browser has opened the page: run it with --no-browser, and open the address that it prints\n"))


class Mistakes(ViewTest):
    def test_what_is_no_drawing(self):
        self.write("text.vx", b"words\n")
        self.write("empty.vx", b"")
        self.write("short.vx", b"%!PS-Tavro-3.0\n%%EndComments\n")
        self.write("foreign.eps", b"%!PS-Other-3.0 EPSF-3.0\n")
        os.mkdir(self.path("none"))
        for name, told in (("text.vx", "not a VX document, first line is \"words\""), ("empty.vx", "the file is empty"), ("no.vx", "no such file"),
                           ("short.vx", "header names no version"), ("foreign.eps", "not a VX document"), ("none", "no drawing is in it")):
            with self.subTest(name):
                message = self.refused("view", "--no-browser", name, status=1)
                self.assertRegex(message, rf"^vx: {name}: .*{told}")
                if name != "none":  # told as other commands tell it
                    self.assertEqual(message, self.run_vx("info", name, status=1)[1][0])
        self.assertRegex(self.refused("view", "--no-browser", "-", stdin=b"x", status=1), "^vx: standard input: not a VX document")

    def test_the_others_are_shown_and_the_status_remembers(self):
        self.write("text.vx", b"words\n")
        for signalled in (True, False):
            process, port, path = self.view("text.vx", "a.vx", "no.vx")
            self.assertEqual(json.loads(self.get(port, path + "drawings.json")), [{"name": "a.vx", "url": "drawings/0"}])
            if signalled:
                told = self.interrupt(process, status=1)
            else:
                self.hold(port, path).close()
                told = self.end(process, status=1)
            self.assertEqual(len(told.splitlines()), 2, told)

    def test_of_the_command_line(self):
        for words, told in ((["--port", "x"], "--port x: not a whole number from 1 to 65535"), (["--port", "65536"], "not a whole number"),
                            (["--port", "-1"], "not a whole number"), (["-", "-"], "standard input can be read once"),
                            (["--dpi", "9"], 'no option "--dpi": vx view --help lists them')):
            self.assertIn(told, self.refused("view", "--no-browser", *words, "a.vx", status=2))

    def test_without_a_viewer(self):
        shutil.rmtree(self.path("viewer"))
        self.assertEqual(self.refused("view", "a.vx", status=2), f"vx: no viewer, {self.path('viewer')}/index.html is not there: install the "
                         "package vx-desktop, or in a clone build it with ./check --web")

    @unittest.skipIf(os.getuid() == 0, "root may read all")
    def test_a_viewer_that_cannot_be_read(self):
        os.chmod(self.path("viewer/parts"), 0)
        self.addCleanup(os.chmod, self.path("viewer/parts"), 0o755)
        self.assertIn("the viewer cannot be read", self.refused("view", "--no-browser", "a.vx", status=1))

    def test_nobody_reads_the_address(self):
        with open("/dev/full", "wb") as full:
            _, messages = self.run_vx("view", "--no-browser", "a.vx", stdout=full, status=4)
        self.assertRegex(messages[0], "^vx: standard output: cannot be written, ")

    def test_the_program_behind_it_says_whose_it_is(self):
        program = os.path.join(os.environ["VX_BUILD_DIR"], "libexec/vx/vx-viewer")
        for words in ([], ["--help"], [self.path("viewer"), "x", "none"], [self.path("viewer"), "1", "x", "a.vx"]):
            run = subprocess.run([program, *words], capture_output=True, text=True, check=False, stdin=subprocess.DEVNULL)
            self.assertEqual((run.returncode, run.stdout, run.stderr),
                             (2, "", "vx: vx-viewer is part of vx, which starts it: to see drawings, run vx view\n"))


class Browsers(ViewTest):
    def program(self, name, text):
        self.write(name, b"#!/bin/sh\n" + text.encode())
        os.chmod(self.path(name), 0o755)
        return self.path(name)

    def test_the_one_that_is_named_gets_the_address(self):
        os.mkfifo(self.path("asked"))
        program = self.program("browser", 'printf "%s\\n" "$@" >"$(dirname "$0")/asked"')
        process, port, path = self.view("a.vx", browser=program + " --new *")
        self.assertEqual(self.read("asked").decode().split("\n"), ["--new", "*", f"http://127.0.0.1:{port}{path}?served", ""])
        self.assertEqual(self.interrupt(process), "")

    def test_without_one_that_is_named_xdg_open_gets_it(self):
        os.mkfifo(self.path("asked"))
        self.program("xdg-open", 'printf "%s\\n" "$@" >"$(dirname "$0")/asked"')
        process, port, path = self.view("a.vx", browser="", environment={"PATH": self.folder + ":" + os.environ["PATH"]})
        self.assertEqual(self.read("asked").decode(), f"http://127.0.0.1:{port}{path}?served\n")
        self.assertEqual(self.interrupt(process), "")

    def test_one_that_fails_is_told(self):
        for browser in ("false", self.path("none")):
            process, port, path = self.view("a.vx", browser=browser)
            self.assertEqual(process.stderr.readline().decode(),
                             f"vx: no browser could be opened: open http://127.0.0.1:{port}{path}?served in one\n")
            self.get(port, path)
            self.assertEqual(self.interrupt(process), "")

    def test_it_outlives_the_command_and_has_no_part_in_its_streams(self):
        os.mkfifo(self.path("begun"))
        os.mkfifo(self.path("go"))
        os.mkfifo(self.path("done"))
        program = self.program("browser", 'cd "$(dirname "$0")"; echo noise; echo noise >&2; ps -o sid= -p $$ >begun; cat go; echo on >done')
        process, _, _ = self.view("a.vx", browser=program)
        self.assertNotEqual(int(self.read("begun")), os.getsid(process.pid))
        self.assertEqual(self.interrupt(process), "")
        self.write("go", b"")
        self.assertEqual(self.read("done"), b"on\n")

    # It tries what a viewer needs and what the policy forbids, is loaded again, and goes elsewhere with what it saw.
    SCRIPT = """
import { half } from './parts/half.js';
const told = { alive: await new Promise((resolve) => {
    const alive = new EventSource('alive');
    alive.onopen = () => resolve('open');
    alive.onerror = () => resolve('error');
}) };
if (!sessionStorage.again) {
    sessionStorage.again = 'yes';
    location.reload();
    await new Promise(() => {});
}
const attempt = (action) => Promise.resolve().then(action).then(String, (error) => error.name);
const list = await (await fetch('drawings.json')).json();
told.names = list.map(({ name }) => name);
told.first = (await (await fetch(list[0].url)).text()).split('\\n')[0];
told.half = half(42);
told.wasm = await attempt(async () => (await WebAssembly.compileStreaming(fetch('parts/vx.wasm'))).constructor.name);
told.worker = await attempt(() => new Promise((resolve, reject) => {
    const worker = new Worker('parts/worker.js', { type: 'module' });
    worker.onmessage = ({ data }) => resolve(data);
    worker.onerror = () => reject(new Error('no worker'));
}));
told.picture = await attempt(async () => {
    const picture = new Image();
    picture.src = URL.createObjectURL(new Blob(['<svg xmlns="http://www.w3.org/2000/svg" width="3" height="2"/>'], { type: 'image/svg+xml' }));
    await picture.decode();
    return picture.width;
});
told.style = getComputedStyle(document.body).marginTop;
told.inline = window.inline ?? 'none';
told.eval = await attempt(() => eval('1'));
told.elsewhere = await attempt(() => fetch('ELSEWHERE'));
location = 'ELSEWHERE?' + encodeURIComponent(JSON.stringify(told));
"""

    @unittest.skipUnless(os.path.exists(CHROMIUM), "there is no chromium here")
    def test_a_real_one(self):
        asked, came = [], threading.Event()

        class Elsewhere(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                asked.append(urllib.parse.urlsplit(self.path))
                self.send_response(200)
                self.end_headers()
                if asked[-1].query:
                    came.set()

            def log_message(self, *_):
                pass

        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Elsewhere)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.addCleanup(server.server_close)
        self.addCleanup(server.shutdown)
        self.write("viewer/index.html", b'<!doctype html><link rel="stylesheet" href="style.css"><body><script>window.inline = "run";</script>'
                   b'<script type="module" src="page.js"></script>')
        self.write("viewer/style.css", b"body { margin: 7px }")
        self.write("viewer/page.js", self.SCRIPT.replace("ELSEWHERE", f"http://127.0.0.1:{server.server_port}/").encode())
        self.write("viewer/parts/half.js", b"export const half = (number) => number / 2;")
        self.write("viewer/parts/worker.js", b"import { half } from './half.js'; postMessage(half(8));")
        number = self.path("number")
        browser = self.program("browser", f'echo $$ >{number}; exec {CHROMIUM} --headless --no-sandbox --disable-gpu --no-first-run '
                               f'--disable-background-networking --user-data-dir={self.path("profile")} "$1"')
        process, port, path = self.view("a.vx", sample("poster"), browser=browser)
        try:
            self.assertTrue(came.wait(240), asked)
            self.assertEqual(self.end(process), "")  # the page is gone
        finally:
            os.killpg(int(self.read("number")), signal.SIGKILL)
        told, = [one.query for one in asked if one.path == "/"]  # and nothing came by the page itself
        self.assertEqual(json.loads(urllib.parse.unquote(told)), {
            "alive": "open", "names": ["a.vx", "poster.vx"], "first": "%!PS-Tavro-3.0", "half": 21, "wasm": "Module", "worker": "4", "picture": "3",
            "style": "7px", "inline": "none", "eval": "EvalError", "elsewhere": "TypeError"})


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
