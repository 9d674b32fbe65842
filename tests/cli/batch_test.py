"""vx batch takes a manifest, and makes pictures and a line of JSON for each document."""
import json
import os
import signal
import subprocess
import sys
import time
import unittest

from vxcommand import CommandTest, document, LEFT_HALF, Png, SANITIZED

# A picture of one pixel costs nothing.
SMALL = ["-f", "png", "--fit", "1"]


class Batch(CommandTest):
    def batch(self, manifest, *words, status=0, **options):
        """Runs the batch. Returns its results and its messages."""
        if isinstance(manifest, list):
            manifest = "".join((line if isinstance(line, str) else json.dumps(line)) + "\n" for line in manifest)
        if isinstance(manifest, str):
            manifest = manifest.encode()
        output, messages = self.run_vx("batch", *words, stdin=manifest, status=status, **options)
        return [json.loads(line) for line in output.splitlines()], messages

    def write_documents(self, *names, body=LEFT_HALF):
        for name in names:
            self.write(name, document(body))

    def test_names_alone(self):
        self.write_documents("a.vx", "b c.vx", "#d.vx")
        results, messages = self.batch("a.vx\r\n\n  \nb c.vx\n#d.vx", "-o", "{stem}.png")
        self.assertEqual(messages, [])
        self.assertEqual([(r["number"], r["manifest"], r["line"], r["input"], r["outputs"], r["status"], r["exit"])
                          for r in results],
                         [(1, "-", 1, "a.vx", ["a.png"], "done", 0), (2, "-", 4, "b c.vx", ["b c.png"], "done", 0),
                          (3, "-", 5, "#d.vx", ["#d.png"], "done", 0)])
        self.assertEqual(Png(self.read("b c.png")).width, 150)

    def test_what_is_known_of_a_document_is_what_info_tells(self):
        self.write("a.vx", document("1 2 Qx\n0 To\n1 0 0 1 2 2 0 Tp\nTP\n0 Tr\n/_Nowhere 12 Tf\n(Hand) Tx\nTO\n"))
        results, messages = self.batch("a.vx\n", *SMALL, "-o", "a.png")
        info = json.loads(self.run_vx("info", "--json", "a.vx")[0])
        own = {key: results[0].pop(key) for key in ("number", "manifest", "line", "input", "outputs", "status", "exit",
                                                    "warnings")}
        del info["file"]
        self.assertEqual(results[0], info)
        self.assertEqual(info["fonts"][0]["asked"], "Nowhere")
        self.assertIn(info["fonts"][0]["match"], ("substitute", "missing"))
        self.assertEqual([f"vx: a.vx: warning: {warning}" for warning in own["warnings"]], messages)
        self.assertTrue(any('no font "Nowhere"' in warning for warning in own["warnings"]))

    def test_objects_say_more(self):
        self.write_documents("a.vx")
        results, _ = self.batch([
            {"input": "a.vx", "output": "w.png", "width": 30, "id": 17},
            {"input": "a.vx", "output": "b.{ext}", "format": ["png", "svg"], "box": [36, 0, 72, 36], "zoom": 1,
             "id": "x"},
            {"input": "a.vx", "fit": "20"},
        ], "--dpi", "300", "-f", "svg", "-o", "plain.png", status=1)
        self.assertEqual([r.get("id") for r in results], [17, "x", None])
        self.assertIn("--fit is for png and tiff, and svg is written", results.pop()["error"])
        self.assertEqual([r["outputs"] for r in results], [["w.png"], ["b.png", "b.svg"]])
        results, _ = self.batch([{"input": "a.vx", "fit": "20"}], "--dpi", "300", "-o", "plain.png")
        self.assertEqual(results[0]["outputs"], ["plain.png"])
        self.assertEqual([(Png(self.read(name)).width, Png(self.read(name)).height)
                          for name in ("w.png", "b.png", "plain.png")], [(30, 15), (36, 36), (20, 10)])

    # Each row has a line that is wrong, and what must be said of it.
    WRONG = [
        ('{"input": "a.vx"', "is not JSON"),
        ("{}", 'no "input"'),
        ('{"input": 3}', '"input" is no name'),
        ('{"input": "a.vx", "output": ""}', '"output" is no name'),
        ('{"input": "a.vx", "output": "-"}', '"-" is standard output, which is for the results'),
        ('{"input": "-", "output": "b.png"}', "standard input is no document of a batch"),
        ('{"input": "a.vx", "output": "b.png", "dpy": 3}', 'no option "dpy"'),
        ('{"input": "a.vx", "output": "b.png", "output_": [[1]]}', '"output_" has no value'),
        ('{"input": "a.vx", "output": "b.png", "dpi": null}', '"dpi" has no value'),
        ('{"input": "a.vx", "output": "b.png", "dpi": "high"}', "--dpi high"),
        ('{"input": "a.vx", "output": "b.png", "dpi": 3, "fit": 3}', "more than one size"),
        ('{"input": "a.vx", "output": "b.pdf", "dpi": 3}', "--dpi is for png and tiff"),
        ('{"input": "a.vx", "output": "b.png", "format": "gif"}', "--format gif"),
        ('{"input": "a.vx", "output": "b.png", "id": 01}', "byte 45 is not JSON"),
        ('{"input": "a.vx", "output": "b.png", "id": "\\ud800"}', "byte 44 is not JSON"),
        ('{"input": "a.vx", "output": "b.png", "id": [}', "byte 45 is not JSON"),
        ('{"input": "a.vx", "output": "b.png"} {}', "byte 38 is not JSON"),
        ('{"input": "a.vx", "output": "b.png", "dpi": 1e400}', '"dpi" has no value'),
        ('{"input": "a.vx\\u0000", "output": "b.png"}', '"input" holds a NUL'),
        ('{"input": "a.vx", "output": "b.png\\u0000.svg"}', '"output" holds a NUL'),
        ('{"input": "a.vx", "output": "b.png", "profile": "none\\u0000"}', '"profile" holds a NUL'),
        ('{"input": "a.vx", "output": "b.png", "format": ["png\\u0000"]}', '"format" holds a NUL'),
        ("a\x1b[2J.vx", "a name with a control character"),
        ("a.vx\tb.vx", "a name with a control character"),
        ("\tb.vx", "a name with a control character"),
        ("a.vx\x7f", "a name with a control character"),
        ('{"input": "a.vx", "output": "a.vx"}', "would overwrite the drawing"),
        ('{"input": "a.vx", "output": "none/../a.vx"}', "would overwrite the drawing"),
        ('{"input": "a.vx", "output": "same.png", "format": "png,pdf"}', "another of its formats"),
        ("{" * 30000, "is not JSON"),
        ('{"a":' * 10000 + "1" + "}" * 10000, '"a" has no value'),
        ("x" * 70000, "longer than 65536 bytes"),
    ]

    def test_wrong_lines_are_told_and_do_not_stop_the_others(self):
        self.write_documents("a.vx")
        lines = [line for line, _ in self.WRONG]
        results, messages = self.batch("\n".join(lines + ["a.vx"]), "-o", "last.png", *SMALL, status=1)
        self.assertEqual(len(results), len(lines) + 1)
        for i, (line, told) in enumerate(self.WRONG):
            with self.subTest(line=line[:60]):
                self.assertIn(f"standard input: line {i + 1}: ", results[i]["error"])
                self.assertIn(told, results[i]["error"])
                self.assertEqual((results[i]["line"], results[i]["exit"], results[i]["outputs"]), (i + 1, 1, []))
                self.assertEqual(messages[i], "vx: " + results[i]["error"])
        self.assertEqual((results[-1]["outputs"], results[-1]["exit"]), (["last.png"], 0))
        self.assertEqual(self.files(), ["a.vx", "last.png"])
        self.assertEqual(self.read("a.vx"), document())

    def test_without_an_output(self):
        self.write_documents("a.vx")
        results, _ = self.batch("a.vx\n", status=1)
        self.assertIn("no output", results[0]["error"])
        self.assertNotIn("vx", results[0])

    def test_an_output_is_written_once(self):
        self.write_documents("a.vx", "b.vx")
        results, messages = self.batch("a.vx\nb.vx\n", "-o", "./x.png", status=1)
        self.assertEqual([r["exit"] for r in results], [0, 1])
        self.assertIn('would be written to "./x.png", as document 1 is', results[1]["error"])
        self.assertEqual(len(messages), 1)
        names = ["y.png", "./y.png", "none/../y.png", self.path("y.png")]
        results, _ = self.batch([{"input": "a.vx", "output": name} for name in names], *SMALL, "-j", "4", status=1)
        self.assertEqual([r["exit"] for r in results], [0, 1, 1, 1])

    # These are files of a folder that somebody else filled. They want to be obeyed, and must not even be quoted.
    EVIL = b'{"input": "a.vx", "output": "stolen.svg", "format": "svg"}\n'

    def test_a_file_is_a_document_whatever_is_in_it(self):
        self.write_documents("a.vx")
        self.write("b.vx", self.EVIL)
        results, messages = self.batch("", "a.vx", "b.vx", "no.vx", *SMALL, "-o", "{stem}.{ext}", status=1)
        self.assertEqual([(r["input"], r.get("manifest"), r["exit"]) for r in results],
                         [("a.vx", None, 0), ("b.vx", None, 1), ("no.vx", None, 1)])
        self.assertEqual(messages, ['vx: b.vx: not a VX document: drawings start with "%!PS-Tavro-", manifests come with '
                                    "--manifest", "vx: no.vx: no such file: check the name"])
        self.assertEqual(self.files(), ["a.png", "a.vx", "b.vx"])

    def test_what_is_no_drawing_is_quoted_by_the_other_commands_alone(self):
        self.write("b.vx", b"a secret of the family, and more of it than forty characters show\n")
        output, messages = self.run_vx("batch", stdin=b'b.vx\n{"input": "b.vx", "output": "c.pdf"}\n', status=1)
        output += self.run_vx("batch", "b.vx", "-o", "b.png", status=1)[0]
        self.assertNotIn("secret", output.decode() + str(messages))
        quoted = '"a secret of the family, and more of it t..."'
        self.assertIn(quoted, self.refused("render", "b.vx", "-o", "b.png", status=1))
        self.assertIn(quoted, self.run_vx("info", "b.vx", status=1)[1][0])

    def test_wrong_words(self):
        for words, told in ((["-", "--manifest", "-"], "- is given twice: standard input can be read once"),
                            (["--manifest", "-", "--manifest=-"], "- is given twice"),
                            (["--manifest", ""], "--manifest: the name is empty"),
                            (["-0", "a.vx"], "-0: no list of names to read"),
                            (["a.vx", "--", "-", "-"], "FILE - is given twice")):
            self.assertIn(told, self.refused("batch", *words, status=2))

    def test_manifests_are_named(self):
        self.write_documents("a.vx", "b.vx", "c.vx", "d.vx")
        for name in ("b", "c"):
            self.write(f"{name}.list", f"{name}.vx\n".encode())
        results, messages = self.batch("d.vx\n", "--manifest", "b.list", "a.vx", "--manifest=c.list", "-", *SMALL, "-o",
                                       "{stem}.{ext}")
        self.assertEqual([(r["input"], r.get("manifest"), r.get("line")) for r in results],
                         [("a.vx", None, None), ("d.vx", "-", 1), ("b.vx", "b.list", 1), ("c.vx", "c.list", 1)])
        self.assertEqual(messages, [])

    # Each row has something that is no manifest, and what is said of it.
    NO_MANIFESTS = [("none", "none: no such file: check the name"),
                    (".", ".: is a directory: name a manifest in it"),
                    ("a.vx", "a.vx: is a drawing, not a manifest: name it without --manifest"),
                    ("zeros", "zeros: line 1: holds a NUL byte, which no line does: give -0 if its names end in NUL")]

    def test_what_is_no_manifest(self):
        self.write_documents("a.vx")
        self.write("zeros", b"abc\x00def\nrest\n" * 100)
        words = [word for name, _ in self.NO_MANIFESTS for word in ("--manifest", name)]
        results, messages = self.batch("a.vx\n", "-", *words, *SMALL, "-o", "a.png", status=1)
        self.assertEqual([(r.get("manifest"), r["line"], r["input"], r.get("error")) for r in results],
                         [("-", 1, "a.vx", None), *((name, 1 if name == "zeros" else 0, None, told)
                                                     for name, told in self.NO_MANIFESTS)])
        self.assertEqual(messages, [f"vx: {told}" for _, told in self.NO_MANIFESTS])

    def test_a_drawing_on_standard_input_is_no_manifest_however_it_comes(self):
        told = ["vx: standard input: is a drawing, not a manifest: vx render - draws it"]
        self.assertEqual(self.batch(document(), "-o", "{stem}.png", status=1)[1], told)
        self.assertEqual(self.batch(document().replace(b"\n", b"\r"), "-o", "{stem}.png", status=1)[1], told)
        process = self.start("batch", "-o", "{stem}.png", "--strict", stdin=subprocess.PIPE)
        for at in range(3):  # its first bytes one by one
            process.stdin.write(document()[at:at + 1])
            process.stdin.flush()
            time.sleep(0.05)
        errors = process.communicate(document()[3:], timeout=60)[1]
        self.assertEqual((errors.decode().splitlines()[:-1], process.returncode), (told, 1))

    def test_a_manifest_may_be_a_pipe(self):
        self.write_documents("a.vx", "b.vx")
        os.mkfifo(self.path("list"))
        process = self.start("batch", "a.vx", "--manifest", "list", *SMALL, "-o", "{stem}.png")
        self.assertEqual(json.loads(process.stdout.readline())["outputs"], ["a.png"])  # nobody has written yet
        with open(self.path("list"), "wb", buffering=0) as pipe:
            pipe.write(b"b.vx\n")
            self.assertEqual(json.loads(process.stdout.readline())["outputs"], ["b.png"])  # nor closed
            pipe.write(b"no.vx")
        self.assertEqual(json.loads(process.communicate(timeout=60)[0])["input"], "no.vx")

    def test_names_that_end_in_nul(self):
        names = ["a\nb.vx", ' {"input": "a.vx", "output": "stolen.svg"}', "\xef\xbb\xbf.vx", "e\t\x1b[2J.vx\r", "%!.vx"]
        self.write_documents(*names)
        stems = [os.path.splitext(name)[0] + ".png" for name in names]
        for manifest in ("\0".join(names), "\0\0".join(names) + "\0"):
            results, messages = self.batch(manifest, "-0", *SMALL, "-o", "{stem}.png")
            self.assertEqual([(r["input"], r["outputs"], r["exit"]) for r in results],
                             [(name, [stem], 0) for name, stem in zip(names, stems)])
            self.assertEqual(messages, [])
            self.assertNotIn("stolen.svg", self.files())
        results, _ = self.batch("-\0none\n\0" + "x" * 70000, "--null", "-o", "{stem}.png", status=1)
        self.assertEqual([(r["line"], r["input"]) for r in results], [(1, "-"), (2, "none\n"), (3, None)])
        self.assertIn("standard input is no document of a batch", results[0]["error"])
        self.assertIn("no such file", results[1]["error"])
        self.assertIn("longer than 65536 bytes", results[2]["error"])

    def test_lines_are_not_taken_for_names_that_end_in_nul(self):
        results, messages = self.batch("a.vx\nb.vx\n", "-0", "-o", "{stem}.png", status=1)
        self.assertEqual(([r["input"] for r in results], messages),
                         ([None], ["vx: standard input: has lines, and no NUL: leave -0 out"]))

    def test_words_after_two_hyphens_are_documents(self):
        self.write("list.vx", self.EVIL)
        names = ["--manifest=list.vx", "--allow-outside", "-0", "a.vx"]
        self.write_documents(*names)
        results, messages = self.batch("", *SMALL, "-o", "{stem}.png", "--", *names)
        self.assertEqual(([r["input"] for r in results], messages), (names, []))
        results, _ = self.batch("", "a.vx", *SMALL, "-o", "{stem}.png", "--", *names[:2])
        self.assertEqual([r["input"] for r in results], ["a.vx", *names[:2]])
        self.assertIn("--manifest=list.vx: VX document", self.run_vx("info", "--", names[0])[0].decode())

    # Each row has a pattern of -o, lines with inputs and outputs, and which of these lie outside. "in" leads to "elsewhere",
    # which is no part of the working folder.
    PLACES = [
        (None, "a.vx", "b.png", False),
        (None, "a.vx", "sub/../sub/b.png", False),
        (None, "a.vx", "sub/../../b.png", True),
        (None, "a.vx", "{folder}/b.png", False),
        (None, "a.vx", "{folder}-elsewhere/b.png", True),
        (None, "a.vx", "in/b.png", True),
        (None, "a.vx", "in/new.png", True),
        (None, "a.vx", "none/../in/new.png", True),
        (None, "a.vx", "link.png", True),
        (None, "in/a.vx", "{{dir}}/{{stem}}.png", True),
        (None, "in/a.vx", "{{stem}}.png", False),
        ("sub", "a.vx", None, False),
        ("sub/", "a.vx", "sub/deep/b.png", False),
        ("sub/", "a.vx", "b.png", True),
        ("sub/x-{{stem}}.png", "a.vx", "sub/b.png", False),
        ("sub/x-{{stem}}.png", "a.vx", "sub/../b.png", True),
        ("sub/{{dir}}/../{{stem}}.png", "a.vx", None, True),
        ("{folder}-elsewhere/{{stem}}.png", "a.vx", None, False),
        ("in/", "a.vx", None, False),
        ("in/", "a.vx", "{folder}-elsewhere/b.png", False),
        ("{{dir}}/{{stem}}.png", "{folder}-elsewhere/a.vx", None, True),
        ("{folder}-elsewhere/b.png", "a.vx", None, False),
        ("sub{{stem}}.png", "a.vx", "b.png", False),
        ("/{{stem}}.png", "a.vx", "{folder}-elsewhere/b.png", False),
    ]

    def test_what_lies_outside_must_be_allowed(self):
        elsewhere = self.folder + "-elsewhere"
        os.mkdir(elsewhere)
        self.addCleanup(subprocess.call, ["rm", "-rf", elsewhere])
        os.makedirs(self.path("sub/deep"))
        os.symlink(elsewhere, self.path("in"))
        self.write_documents("a.vx", "in/a.vx")
        self.write("in/there", b"")
        os.symlink(elsewhere + "/there", self.path("link.png"))
        for place in self.PLACES:
            pattern, source, output, is_outside = place
            line = {"input": source.format(folder=self.folder), "id": 1}
            if output is not None:
                line["output"] = output.format(folder=self.folder)
            words = [*SMALL, *([] if pattern is None else ["-o", pattern.format(folder=self.folder)])]
            with self.subTest(place=place):
                before = sorted(os.listdir(elsewhere))
                results, messages = self.batch([line], *words, status=1 if is_outside else 0)
                self.assertEqual(results[0]["exit"], 1 if is_outside else 0)
                if is_outside:
                    self.assertEqual(sorted(os.listdir(elsewhere)), before)
                    self.assertRegex(messages[0], "would be written to .*, outside of .*: name its folder with -o, or "
                                                  "add --allow-outside$")
                    self.batch([line], *words, "--allow-outside")
        self.assertEqual(os.readlink(self.path("link.png")), elsewhere + "/there")

    def test_a_link_that_leads_nowhere_is_replaced_in_its_folder(self):
        self.write_documents("a.vx")
        for name, target in (("b.png", "/nowhere/b.png"), ("c.png", "c.png")):
            os.symlink(target, self.path(name))
            self.batch([{"input": "a.vx", "output": name}], *SMALL)
            self.assertFalse(os.path.islink(self.path(name)))

    def test_standard_output_is_for_the_results(self):
        self.write_documents("a.vx")
        os.symlink("/proc/self/fd/1", self.path("link.png"))
        outputs = ["/dev/stdout", "/proc/self/fd/1", "/dev/fd/1", "link.png", "none/../link.png"]
        with open(self.path("results"), "wb") as file:
            for names, target in ((outputs, subprocess.PIPE), ([*outputs, "results", "none/../results"], file)):
                lines = b"".join(b'{"input": "a.vx", "output": "%s"}\n' % name.encode() for name in names)
                output, messages = self.run_vx("batch", "-f", "svg", "--allow-outside", stdin=lines, stdout=target,
                                               status=1)
                results = [json.loads(line) for line in (output or self.read("results")).splitlines()]
                self.assertEqual([r["outputs"] for r in results], [[]] * len(names))
                self.assertEqual([message.split('"')[1] for message in messages], names)
                for message in messages:
                    self.assertIn("is standard output, which is for the results", message)

    def test_no_manifest_is_overwritten(self):
        self.write_documents("a.vx")
        line = b'{"input": "a.vx", "output": "%s", "format": "svg"}\n'
        self.write("one", b"".join(line % name for name in (b"./one", b"two")))
        self.write("two", b"a.vx\n")
        os.symlink("two", self.path("link"))
        self.write("in", line % b"in")
        with open(self.path("in"), "rb") as stdin:
            output, messages = self.run_vx("batch", "-", "--manifest", "one", "--manifest", "two", "-o", "b.svg",
                                           status=1, preexec_fn=lambda: os.dup2(stdin.fileno(), 0))
        self.assertEqual([(r["manifest"], r["line"], r["exit"]) for r in map(json.loads, output.splitlines())],
                         [("-", 1, 1), *(("one", i, 1) for i in range(1, 3)), ("two", 1, 0)])
        self.assertEqual([message.split('"')[1] for message in messages], ["in", "./one", "two"])
        for name in ("link", "none/../two"):
            self.write("three", line % name.encode())
            messages += self.run_vx("batch", "--manifest", "three", "--manifest", "two", "-o", "c.svg", status=1)[1]
            self.assertEqual(messages[-1].split('"')[1], name)
        self.assertTrue(all("would overwrite the manifest" in message for message in messages))
        self.assertEqual((self.read("two"), self.read("in")), (b"a.vx\n", line % b"in"))

    IDS = ["1.0", "1e400", "-1E-400", "12345678901234567890123", "-0", "0.1000", '"\\u00e9\\/\u00e9"', "null", "true",
           '{"b": [1.0,{}],"a" :-0 }', "[]", " [ 1 ,\t2 ]", "[" * 30000 + "]" * 30000]

    def test_ids_come_back_as_they_were_written(self):
        self.write_documents("a.vx")
        lines = "".join('{"id":%s ,"input":"a.vx","output":"%d.png"}\n' % id_and_name
                        for id_and_name in zip(self.IDS, range(len(self.IDS))))
        output, messages = self.run_vx("batch", *SMALL, stdin=lines.encode())
        self.assertEqual(messages, [])
        for i, (written, line) in enumerate(zip(self.IDS, output.decode().splitlines())):
            with self.subTest(id=written[:40]):
                self.assertTrue(line.startswith('{"number":%d,"manifest":"-","line":%d,"id":%s,"input":"a.vx",' %
                                                (i + 1, i + 1, written.strip())), line[:200])
        self.assertEqual(json.loads(output.splitlines()[0])["id"], 1.0)

    def test_a_byte_order_mark_is_no_name(self):
        self.write_documents("a.vx")
        results, _ = self.batch(b"\xef\xbb\xbfa.vx\n", *SMALL, "-o", "a.png")
        self.assertEqual(results[0]["input"], "a.vx")

    def test_an_empty_manifest_is_nothing(self):
        self.assertEqual(self.batch("", "-o", "{stem}.png"), ([], []))

    def test_the_order_is_the_manifests_however_many_work(self):
        # Every third document takes far longer than the others.
        self.write_documents("slow.vx", body="0 0 m\n9 9 l\n" * 100000 + "n\n")
        self.write_documents("fast.vx")
        manifest = [{"input": "slow.vx" if i % 3 == 0 else "fast.vx", "output": f"{i}.png", "id": i} for i in range(20)]
        outputs = []
        for jobs in ("1", "4"):
            outputs.append(self.batch(manifest, *SMALL, "-j", jobs))
            self.assertEqual([r["id"] for r in outputs[-1][0]], list(range(20)))
        self.assertEqual(outputs[0], outputs[1])

    def test_results_come_while_the_manifest_goes_on(self):
        self.write_documents("a.vx")
        process = self.start("batch", *SMALL, "-o", "{stem}.png", stdin=subprocess.PIPE)
        process.stdin.write(b"a.vx\n")
        process.stdin.flush()
        self.assertEqual(json.loads(process.stdout.readline())["outputs"], ["a.png"])
        process.stdin.write(b"no.vx")
        self.assertEqual(json.loads(process.communicate(timeout=60)[0])["input"], "no.vx")
        self.assertEqual(process.returncode, 1)

    def test_the_worst_wins(self):
        self.write_documents("a.vx")
        self.write("w.vx", document("1 2 Qx\n"))
        cases = [({"input": "no.vx", "output": "n.png"}, 1, "failed"),
                 ({"input": "w.vx", "output": "w.png"}, 3, "warned"),
                 ({"input": "a.vx", "output": "w.vx/a.png"}, 4, "not written"),
                 ({"input": "a.vx", "output": "big.png", "dpi": 99999}, 5, "limit")]
        results, _ = self.batch([{"input": "a.vx", "output": "a.png"}, *(line for line, _, _ in cases)], "--strict",
                                status=5)
        self.assertEqual([(r["exit"], r["status"]) for r in results],
                         [(0, "done"), *((code, name) for _, code, name in cases)])
        self.assertEqual(self.files(), ["a.png", "a.vx", "w.png", "w.vx"])
        self.assertEqual(results[3]["error"].split(":")[0], "w.vx/a.png")

    def test_a_crash_costs_one_document_each(self):
        self.write_documents("a.vx", "b.vx")
        results, messages = self.batch("a.vx\nb.vx\n", "-o", "{stem}.png", status=6, hostile="crash")
        self.assertEqual([(r["status"], "vx" in r) for r in results], [("crashed", False)] * 2)
        self.assertEqual(len(messages), 2)

    def test_nonsense_from_a_worker_costs_one_document_each(self):
        self.write_documents("a.vx", "b.vx")
        for behaviour in ("babble", "boast", "forge", "deep"):
            with self.subTest(behaviour):
                results, messages = self.batch("no.vx\na.vx\nb.vx\n", "-o", "{stem}.png", status=6, hostile=behaviour)
                self.assertEqual([r["status"] for r in results], ["failed", "crashed", "crashed"])
                self.assertEqual(len(messages), 3)

    def test_every_document_has_its_own_time(self):
        self.write_documents("a.vx", "b.vx", "c.vx")
        started = time.monotonic()
        results, _ = self.batch("a.vx\nb.vx\nc.vx\n", "-o", "{stem}.png", "-j", "3", "--max-time", "2", status=5,
                                hostile="loop")
        self.assertEqual([r["status"] for r in results], ["limit"] * 3)
        self.assertLess(time.monotonic() - started, 60)

    def test_an_interrupt_ends_all(self):
        self.write_documents("a.vx", "b.vx")
        process = self.start("batch", "-o", "{stem}.png", "-j", "2", hostile="loop", stdin=subprocess.PIPE)
        process.stdin.write(b"a.vx\nb.vx\n")
        process.stdin.flush()
        self.wait_for_notes(b"\n")
        process.send_signal(signal.SIGINT)
        self.assertEqual((*process.communicate(timeout=60), process.returncode),
                         (b"", b"vx: interrupted: 0 done; with --journal, --resume could go on\n", 130))
        self.assertEqual(self.files(), ["a.vx", "b.vx", "worker.notes"])

    def test_a_reader_that_leaves_ends_the_batch(self):
        self.write_documents("a.vx")
        reader, writer = os.pipe()
        os.close(reader)
        messages = self.run_vx("batch", *SMALL, "-o", "{stem}.png", stdin=b"a.vx\n" * 3, stdout=writer, status=4)[1]
        os.close(writer)
        self.assertEqual(messages, [])
        with open("/dev/full", "wb") as full:
            messages = self.run_vx("batch", *SMALL, "-o", "{stem}.png", stdin=b"a.vx\n", stdout=full, status=4)[1]
        self.assertEqual(len(messages), 1)
        self.assertIn("standard output", messages[0])

    def test_verbose_tells_more(self):
        self.write_documents("a.vx")
        messages = self.batch("a.vx", *SMALL, "-v", "-o", "b.png")[1]
        self.assertIn("vx: b.png: written, 1 fills, 0 strokes, 0 clips, 3 path segments", messages)

    def test_progress_counts(self):
        self.write_documents("a.vx")
        process = self.start("batch", *SMALL, "-o", "{stem}.png", "--progress", "always", stdin=subprocess.PIPE)
        errors = process.communicate(b"a.vx\n", timeout=60)[1].decode()
        self.assertEqual(errors, "\r\x1b[K0 done\r\x1b[Kvx: 1 document in 1 s: 1 done\n")

    @unittest.skipIf(SANITIZED, "a sanitizer holds on to what was freed")
    def test_ten_thousand_lines_take_no_more_memory(self):
        """The documents do not exist, so that nothing is measured but the batch itself."""
        peaks = []
        for count in (500, 10000):
            with open(self.path("list"), "w", encoding="ascii") as file:
                file.writelines(f"a-name-that-takes-some-room/{'x' * 100}/{i}.vx\n" for i in range(count))
            with open(self.path("results"), "wb") as results:
                process = self.start("batch", "--manifest", "list", "-o", "{stem}.png", stdout=results, stderr=subprocess.DEVNULL)
                _, status, usage = os.wait4(process.pid, 0)
                process.returncode = os.waitstatus_to_exitcode(status)
            self.assertEqual(process.returncode, 1)
            self.assertEqual(self.read("results").count(b"\n"), count)
            peaks.append(usage.ru_maxrss)
        self.assertLess(peaks[1] - peaks[0], 2048, peaks)  # KiB; the names alone are more


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
