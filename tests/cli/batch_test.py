"""vx batch: a manifest in, pictures and a line of JSON a document out."""
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
        """Runs the batch; (its results, its messages)."""
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
        self.assertIn("--fit is for png, and svg is written", results.pop()["error"])
        self.assertEqual([r["outputs"] for r in results], [["w.png"], ["b.png", "b.svg"]])
        results, _ = self.batch([{"input": "a.vx", "fit": "20"}], "--dpi", "300", "-o", "plain.png")
        self.assertEqual(results[0]["outputs"], ["plain.png"])
        self.assertEqual([(Png(self.read(name)).width, Png(self.read(name)).height)
                          for name in ("w.png", "b.png", "plain.png")], [(30, 15), (36, 36), (20, 10)])

    # What is wrong with a line, and what must be said of it.
    WRONG = [
        ('{"input": "a.vx"', "is not JSON"),
        ("{}", 'no "input"'),
        ('{"input": 3}', '"input" is no name'),
        ('{"input": "a.vx", "output": ""}', '"output" is no name'),
        ('{"input": "a.vx", "output": "-"}', "standard output is for the results"),
        ('{"input": "-", "output": "b.png"}', "standard input is no document of a batch"),
        ('{"input": "a.vx", "output": "b.png", "dpy": 3}', 'no option "dpy"'),
        ('{"input": "a.vx", "output": "b.png", "output_": [[1]]}', '"output_" has no value'),
        ('{"input": "a.vx", "output": "b.png", "dpi": null}', '"dpi" has no value'),
        ('{"input": "a.vx", "output": "b.png", "dpi": "high"}', "--dpi high"),
        ('{"input": "a.vx", "output": "b.png", "dpi": 3, "fit": 3}', "more than one size"),
        ('{"input": "a.vx", "output": "b.pdf", "dpi": 3}', "--dpi is for png"),
        ('{"input": "a.vx", "output": "b.png", "format": "gif"}', "--format gif"),
        ('{"input": "a.vx", "output": "b.png", "id": {}}', '"id" is neither'),
        ('{"input": "a.vx", "output": "a.vx"}', "would overwrite the drawing"),
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
        self.assertEqual(self.batch("", "no-list", status=1)[1], ["vx: no-list: no such file: check the name"])

    def test_an_output_is_written_once(self):
        self.write_documents("a.vx", "b.vx")
        results, messages = self.batch("a.vx\nb.vx\n", "-o", "./x.png", status=1)
        self.assertEqual([r["exit"] for r in results], [0, 1])
        self.assertIn('would be written to "./x.png", as document 1 is', results[1]["error"])
        self.assertEqual(len(messages), 1)

    def test_documents_stand_for_themselves(self):
        self.write_documents("a.vx", "b.vx")
        self.write("list", b"b.vx\n")
        results, messages = self.batch("", "a.vx", "list", "no.vx", *SMALL, "-o", "{stem}.{ext}", status=1)
        self.assertEqual([(r["input"], r.get("manifest"), r["exit"]) for r in results],
                         [("a.vx", None, 0), ("b.vx", "list", 0), ("no.vx", None, 1)])
        self.assertEqual(messages, ["vx: no.vx: no such file: check the name"])

    def test_what_is_no_manifest(self):
        self.write("zeros", b"abc\x00def\nrest\n" * 100)
        results, messages = self.batch("", "zeros", "-o", "{stem}.png", status=1)
        self.assertEqual((len(results), len(messages)), (1, 1))
        self.assertIn("vx: zeros: line 1: holds a NUL byte", messages[0])
        results, messages = self.batch(document(), "-o", "{stem}.png", status=1)
        self.assertEqual(messages, ["vx: standard input: is a drawing, not a manifest: vx render - draws it"])
        self.assertEqual(self.files(), ["zeros"])

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
                 ({"input": "a.vx", "output": "none/a.png"}, 4, "not written"),
                 ({"input": "a.vx", "output": "big.png", "dpi": 99999}, 5, "limit")]
        results, _ = self.batch([{"input": "a.vx", "output": "a.png"}, *(line for line, _, _ in cases)], "--strict",
                                status=5)
        self.assertEqual([(r["exit"], r["status"]) for r in results],
                         [(0, "done"), *((code, name) for _, code, name in cases)])
        self.assertEqual(self.files(), ["a.png", "a.vx", "w.png", "w.vx"])
        self.assertEqual(results[3]["error"].split(":")[0], "none/a.png")

    def test_a_crash_costs_one_document_each(self):
        self.write_documents("a.vx", "b.vx")
        results, messages = self.batch("a.vx\nb.vx\n", "-o", "{stem}.png", status=6, hostile="crash")
        self.assertEqual([(r["status"], "vx" in r) for r in results], [("crashed", False)] * 2)
        self.assertEqual(len(messages), 2)

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
        while not self.read("worker.notes").endswith(b"\n"):
            time.sleep(0.05)
        process.send_signal(signal.SIGINT)
        self.assertEqual((*process.communicate(timeout=60), process.returncode), (b"", b"", 130))
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
        self.assertIn("0 done, 0 failed, 1 at work", errors)
        self.assertTrue(errors.endswith("\r\x1b[K"), errors)

    @unittest.skipIf(SANITIZED, "a sanitizer holds on to what was freed")
    def test_ten_thousand_lines_take_no_more_memory(self):
        """None of the documents is there, so that the batch itself is what is measured."""
        peaks = []
        for count in (500, 10000):
            with open(self.path("list"), "w", encoding="ascii") as file:
                file.writelines(f"a-name-that-takes-some-room/{'x' * 100}/{i}.vx\n" for i in range(count))
            with open(self.path("results"), "wb") as results:
                process = self.start("batch", "list", "-o", "{stem}.png", stdout=results, stderr=subprocess.DEVNULL)
                _, status, usage = os.wait4(process.pid, 0)
                process.returncode = os.waitstatus_to_exitcode(status)
            self.assertEqual(process.returncode, 1)
            self.assertEqual(self.read("results").count(b"\n"), count)
            peaks.append(usage.ru_maxrss)
        self.assertLess(peaks[1] - peaks[0], 2048, peaks)  # KiB; the names alone are more


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
