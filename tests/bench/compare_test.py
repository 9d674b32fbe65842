#!/usr/bin/env python3
"""bench/compare on small documents: every row is there, and every ratio is a number."""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ["VX_BUILD"])
KINDS = ("paths", "text", "lines", "gradients")
OUR_WORKS = ("parse", "PNG", "PDF", "SVG")


def compare(*arguments, **settings):
    return subprocess.run([sys.executable, "-B", SOURCE / "bench/compare.py", "--build", BUILD, *map(str, arguments)],
                          capture_output=True, text=True, check=False, **settings)


def without_rivals():
    """An environment in which no other program is found."""
    return {**os.environ, "PATH": "/nonexistent"}


def rows(text):
    """The cells of each row of the tables, by the title above them."""
    found, title = {}, None
    for line in text.splitlines():
        if line.startswith("### "):
            title = line[4:]
        elif line.startswith("| "):
            found.setdefault(title, []).append([cell.strip() for cell in line.strip("|").split("|")])
    return found


class Compare(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def test_every_kind_of_document_has_its_rows(self):
        file = self.folder / "table.md"
        done = compare("--quick", "--markdown", file)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(file.read_text(encoding="utf-8").split(), done.stdout.split())
        tables = rows(done.stdout)
        self.assertEqual(list(tables), [*(f"{kind}, 0.1 MB" for kind in KINDS), "Growth", "Whole processes"])
        for kind in KINDS:
            ratios = {}
            for work, program, ratio, memory in tables[f"{kind}, 0.1 MB"][1:]:
                ratios[work, program] = float(ratio)
                self.assertRegex(memory, r"^[1-9][0-9]* MiB$")
            self.assertGreater(min(ratios.values()), 0)
            self.assertIn(("parse", "vx, the plug-in alone"), ratios)
            for work in OUR_WORKS[1:]:
                self.assertIn((work, "vx"), ratios)
        self.assertIn(["document", "vx", "0.05 MB", "0.1 MB"], tables["Growth"])
        self.assertEqual([row[:2] for row in tables["Growth"][1:]], [[kind, work] for kind in KINDS for work in OUR_WORKS])
        for row in tables["Growth"][1:]:
            for cell in row[2:]:
                self.assertGreater(float(re.fullmatch(r"([0-9.]+), [1-9][0-9]* MiB", cell)[1]), 0)

    def test_whole_processes_have_their_rows(self):
        done = compare("--quick")
        self.assertEqual(done.returncode, 0, done.stderr)
        table = rows(done.stdout)["Whole processes"]
        times = {(work, program): float(ratio) for work, program, ratio, _ in table[1:]}
        self.assertEqual(times["nothing", "true"], 1)
        for work in ("the version", "harp.vx, facts", "harp.vx, PNG"):
            self.assertGreater(times[work, "vx"], 1)
        for language in ("PNG", "SVG", "PDF"):
            self.assertGreater(times[f"3 documents, {language}", "vx batch"], 1)
        rivals = {row[1] for row in table[1:]} - {"true", "vx", "vx batch"}
        self.assertEqual(rivals, {"mutool draw", "mutool draw, for each"} if shutil.which("mutool") else set())

    def test_programs_that_are_not_there_are_left_out_with_a_line(self):
        done = compare("--quick", env=without_rivals())
        self.assertEqual(done.returncode, 0, done.stderr)
        for tool in ("gs", "pdftocairo", "mutool", "rsvg-convert", "true"):
            self.assertEqual(done.stderr.count(f"compare: {tool} is left out, it is not installed\n"), 1, done.stderr)
        programs = {row[1] for title, table in rows(done.stdout).items() if title != "Growth" for row in table[1:]}
        self.assertEqual(programs, {"vx", "vx, the plug-in alone"})

    def test_documents_and_the_loop_may_be_others(self):
        loop, said = self.folder / "loop", self.folder / "said"
        loop.write_text(f"#!/bin/sh\necho \"$@\" >>{said}\nexec {BUILD}/bin/vxmeasure loop \"$2\"\n", encoding="utf-8")
        loop.chmod(0o755)
        document = SOURCE / "samples/poster.vx"
        done = compare("--loop", f"{loop} tokens", "--repeat", "2", "--document", document, env=without_rivals())
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(said.read_text(encoding="utf-8").split("\n"), [f"tokens {document}"] * 2 + [""])
        (title, table), = rows(done.stdout).items()
        self.assertTrue(title.startswith("poster, "), title)
        self.assertEqual([row[0] for row in table[1:]], list(OUR_WORKS))

    def test_a_document_that_cannot_be_drawn_ends_it(self):
        document = self.folder / "no.vx"
        document.write_bytes(b"GIF89a")
        done = compare("--document", document, env=without_rivals())
        self.assertEqual(done.returncode, 1)
        self.assertIn("not read to its end", done.stderr)


if __name__ == "__main__":
    unittest.main()
