"""The vx command as a user runs it: words in; files, lines and exit statuses out.

The environment names what is tested: VX the program, VX_HOSTILE_PLUGIN a plug-in that misbehaves as VX_HOSTILE says,
VX_SANITIZED whether both are instrumented.
"""
import errno
import itertools
import gzip
import json
import lzma
import os
import re
import resource
import signal
import stat
import struct
import subprocess
import sys
import time
import unittest

from vxcommand import (CommandTest, LEFT_HALF, Png, SANITIZED, WITHOUT_LANDLOCK, WITHOUT_UNNAMED, document, sample,
                       sample_names)


class Usage(CommandTest):
    def test_help_shows_examples(self):
        for words in (["--help"], ["-h"], ["info", "--help"], ["render", "-h"], ["trace", "--help"], ["fonts", "-h"],
                      ["batch", "--help"]):
            output, messages = self.run_vx(*words)
            self.assertIn(b"Examples:\n  vx ", output, words)
            self.assertIn(b"Usage: vx ", output, words)
            self.assertNotIn(b"\n\n\n", output, words)
            self.assertEqual(messages, [])

    def test_no_words_shows_help_as_an_error(self):
        process = self.start()
        output, errors = process.communicate(timeout=60)
        self.assertEqual((process.returncode, output), (2, b""))
        self.assertIn(b"Examples:", errors)

    def test_version(self):
        output = self.run_vx("--version")[0].decode()
        self.assertRegex(output, r"^vx \d+\.\d+\.\d+\nplug-in: built in\nprofile: fogra39, built in\nlibraries: .*\n$")
        self.assertEqual(self.run_vx("-V")[0].decode(), output)
        libraries = dict(re.findall(r"(\w[\w ]*) (\d+[.\d]*)[,\n]", output.splitlines(True)[-1]))
        self.assertEqual(set(libraries), {"fontconfig", "FreeType", "HarfBuzz", "Little CMS", "libtiff", "libarchive", "libpng", "zlib", "libdeflate", "liblzma"})
        for package, name in [("fontconfig", "fontconfig"), ("harfbuzz", "HarfBuzz"), ("lcms2", "Little CMS"), ("libtiff-4", "libtiff"), ("libarchive", "libarchive"), ("libpng", "libpng"),
                              ("liblzma", "liblzma"), ("libdeflate", "libdeflate")]:
            installed = subprocess.run(["pkg-config", "--modversion", package], capture_output=True, text=True, check=True).stdout
            self.assertEqual(libraries[name], installed.strip(), package)

    def test_help_of_a_command(self):
        self.assertEqual(self.run_vx("help")[0], self.run_vx("--help")[0])
        for command in ("info", "render", "check", "batch"):
            self.assertEqual(self.run_vx("help", command)[0], self.run_vx(command, "--help")[0])

    # Each row has the words of a command line, and what its one message must name.
    REFUSED = [
        (["rendr", "a.vx"], 'no command "rendr"'),
        (["--frobnicate"], 'no option "--frobnicate"'),
        (["help", "rendr"], 'no command "rendr": give one of info, render'),
        (["help", "info", "render"], "one command at a time"),
        (["info", "--frobnicate", "a.vx"], "vx info --help"),
        (["info"], "no FILE"),
        (["info", "-", "-"], "standard input can be read once"),
        (["info", "-q", "-v", "a.vx"], "-q and -v"),
        (["info", "a.vx", "--max-time", "soon"], "--max-time soon"),
        (["info", "a.vx", "--max-time", "-1"], "--max-time -1"),
        (["info", "a.vx", "--max-memory", "lots"], "--max-memory lots"),
        (["info", "a.vx", "--max-memory", "1k"], "--max-memory 1k"),
        (["info", "a.vx", "--max-output", "much"], "--max-output much"),
        (["info", "a.vx", "--max-output", "100"], "--max-output 100: not a size of 1 KiB or more"),
        (["info", "a.vx", "--progress", "maybe"], "--progress maybe"),
        (["info", "a.vx", "--plugin", "no-such.so"], "no-such.so"),
        (["info", "a.vx", "--plugin", "a.vx"], "cannot be loaded"),
        (["info", "a.vx", "--plugin"], "--plugin needs a value"),
        (["info", "a.vx", "--json=3"], "--json takes no value"),
        (["info", "a.vx", "--salvage=maybe"], "--salvage takes no value"),
        (["info", "a.vx", "--strict=false"], "--strict takes no value"),
        (["trace", "a.vx", "b.vx"], "one at a time"),
        (["render", "a.vx"], "add -o"),
        (["render", "-o", "a.png"], "no FILE"),
        (["render", "a.vx", "-o", "a.png", "-o", "b.png"], "more than once"),
        (["render", "a.vx", "-f", "gif", "-o", "a.gif"], "--format gif: not known"),
        (["render", "a.vx", "-f", "png,", "-o", "{ext}"], "--format png,: not known"),
        (["render", "a.vx", "-f", "png,pdf,png", "-o", "{ext}"], "given twice"),
        (["render", "a.vx", "-f", "png,pdf", "-o", "a.png"], 'as -o \'{stem}.{ext}\''),
        (["render", "a.vx", "-o", "a.JPG"], "no jpg is written here"),
        (["render", "a.vx", "-o", "a.pdf.xyz"], "a.pdf.xyz: no xyz is written here: end the name in pdf, svg"),
        (["render", "a.vx", "-o", "{stem}.xyz"], "no xyz is written here"),
        (["render", "a.vx", "--merge", "-o", "all.xyz"], "no xyz is written here"),
        (["batch", "a.vx", "-o", "{stem}.xyz"], "no xyz is written here"),
        (["verify", "a.vx", "a.xyz"], "no xyz is written here"),
        (["render", "a.vx", "-o", "{foo}.png"], "{foo}.png: {foo} is not known: give {stem}, {dir}"),
        (["render", "a.vx", "-o", "{stem:2}.png"], "{stem:2} is not known"),
        (["render", "a.vx", "-o", "{}.png"], "{} is not known"),
        (["render", "a.vx", "-o", "{ink}.png"], "{ink} is not known: give {stem}, {dir}, {relative}, {ext}, {number}, {hash} or {namehash}"),
        (["batch", "a.vx", "-o", "{foo}.png"], "{foo} is not known"),
        (["plates", "a.vx", "-o", "{foo}{ink}.png"], "{foo} is not known: give {stem}, {dir}, {relative}, {ext}, {number}, {hash}, {namehash} or {ink}"),
        (["plates", "a.vx", "-f", "tiff", "-o", "{foo}{ink}"], "{foo} is not known"),
        (["coverage", "a.vx", "-o", "{ink}.png"], "{ink} is not known"),
        (["check", "a.vx", "--html", "{foo}.html"], "{foo} is not known"),
        (["render", "a.vx", "-o", "a.pdf", "--dpi", "72"], "--dpi is for png and tiff, and pdf is written"),
        (["render", "a.vx", "-f", "svg,pdf", "-o", "{ext}", "--fit", "9"], "and pdf and svg are written: leave it out"),
        (["render", "a.vx", "-o", "a.pdf", "--overprint", "ignore"], "--overprint is for svg and png"),
        (["render", "a.vx", "-o", "a.png", "--text", "outlines"], "--text is for pdf and svg, and png is written"),
        (["render", "a.vx", "-o", "a.png", "--pdf-x", "x3"], "--pdf-x is for pdf, and png is written"),
        (["render", "a.vx", "-o", "a.pdf", "--intent", "relative"], "--intent is for svg and png"),
        (["render", "a.vx", "-o", "a.pdf", "--profile", "none", "--pdf-x", "x3"], "--pdf-x and --profile none"),
        (["render", "a.vx", "-o", "a.pdf", "--profile", "none", "--pdf-a", "2b"], "--pdf-a and --profile none"),
        (["render", "a.vx", "-o", "a.pdf", "--pdf-x", "4"], "--pdf-x 4: not known: give one of x1a, x3, x4, none"),
        (["render", "a.vx", "-o", "a.pdf", "--pdf-a", "2a"], "--pdf-a 2a: not known: give one of 2b, 2u, none"),
        (["render", "a.vx", "-o", "a.png", "--pdf-a", "2b"], "--pdf-a is for pdf, and png is written"),
        (["render", "a.vx", "-o", "a.pdf", "--text", "runes"], "--text runes"),
        (["render", "a.vx", "-o", "a.png", "--dpi", ""], "the value is empty"),
        (["render", "a.vx", "-f", "pdf", "-o", "a.vx"], "overwrite the input"),
        (["render", "a.vx", "-o", "a.vx"], "no vx is written here"),
        (["render", "a.vx", "-f", "png", "-o", "./../{dir}/a.vx", "--box", "1"], "--box 1"),
        (["render", "a.vx", "b.vx", "-o", "a.png"], "would both be written"),
        (["render", "a.vx", "b.vx", "-f", "png", "-o", "-"], "would both be written"),
        (["render", "a.vx", "-o", "a.png", "--dpi", "high"], "--dpi high"),
        (["render", "a.vx", "-o", "a.png", "--dpi", "0"], "--dpi 0"),
        (["render", "a.vx", "-o", "a.png", "--zoom", "-2"], "--zoom -2"),
        (["render", "a.vx", "-o", "a.png", "--width", "0"], "--width 0"),
        (["render", "a.vx", "-o", "a.png", "--height", "10.5"], "--height 10.5"),
        (["render", "a.vx", "-o", "a.png", "--fit", "9999999"], "--fit 9999999"),
        (["render", "a.vx", "-o", "a.png", "--dpi", "72", "--zoom", "2"], "more than one size"),
        (["render", "a.vx", "-o", "a.png", "--fit", "9", "--width", "9"], "more than one size"),
        (["render", "a.vx", "-o", "a.png", "--background", "reddish"], "--background reddish"),
        (["render", "a.vx", "-o", "a.png", "--box", "0,0,10"], "--box 0,0,10"),
        (["render", "a.vx", "-o", "a.png", "--box", "5,0,5,10"], "the box is empty"),
        (["render", "a.vx", "-o", "a.png", "--profile", "no.icc"], "no.icc"),
        (["render", "a.vx", "-o", "a.png", "--profile", "a.vx"], "a.vx"),
        (["render", "a.vx", "-o", "a.png", "--intent", "best"], "--intent best"),
        (["render", "a.vx", "-o", "a.png", "--overprint", "on"], "--overprint on"),
        (["render", "a.vx", "-o", "a.png", "--samples", "3"], "--samples 3"),
        (["render", "a.vx", "-o", "a.png", "--script", "greek"], "--script greek"),
        (["render", "a.vx", "-o", "a.png", "--font-dir", "none"], "--font-dir none: no such directory"),
        (["render", "a.vx", "-o", "a.png", "--font-map", "none"], "--font-map none: no such file"),
        (["render", "a.vx", "-o", "a.png", "--missing-fonts", "hide"], "--missing-fonts hide: not known"),
        (["render", "a.vx", "-o", "a.png", "-j", "0"], "--jobs 0"),
        (["render", "a.vx", "-o", "a.png", "-j", "257"], "--jobs 257"),
        (["render", "a.vx", "-o", "a.pdf", "-j", "2"], "--jobs is for png and tiff, and pdf is written"),
        (["render", "a.vx", "-o", "a.{ext}", "-f", "pdf,svg", "-j", "2"], "--jobs is for png and tiff, and pdf and svg are written"),
        (["render", "a.vx", "-o", "a.pdf", "--merge", "-j", "2"], "--jobs is for png and tiff, and pdf is written"),
        (["fonts", "--list", "a.vx"], "--list and FILE"),
        (["fonts"], "no FILE"),
        (["batch", "-", "-"], "standard input can be read once"),
        (["batch", "-", "-j", "0"], "--jobs 0"),
        (["batch", "-", "-j", "many"], "--jobs many"),
        (["batch", "-", "-f", "gif"], "--format gif"),
        (["batch", "-", "--box", "1"], "--box 1"),
        (["batch", "-", "--profile", "a.vx"], "a.vx"),
    ]

    def test_a_source_date_must_be_one(self):
        self.write("a.vx", document())
        for date in ("", "soon", "-1", "1.5", "999999999999999", "99999999999999999999"):
            with self.subTest(date=date):
                told = self.refused("render", "a.vx", "-o", "a.pdf", status=2, environment={"SOURCE_DATE_EPOCH": date})
                self.assertIn(f'SOURCE_DATE_EPOCH "{date}"', told)
                self.assertEqual(self.files(), ["a.vx"])

    def test_wrong_command_lines_are_told_in_one_line(self):
        self.write("a.vx", document())
        self.write("b.vx", document())
        for words, told in self.REFUSED:
            with self.subTest(words=words):
                self.assertIn(told, self.refused(*words, status=2))
                self.assertEqual(self.files(), ["a.vx", "b.vx"])


class Inputs(CommandTest):
    # Each row has something that is no document, and what the message of every command says of it.
    REFUSED = [
        (b"", "the file is empty"),
        (b"%!PS-Tavro-", "not a VX document"),
        (b"GIF89a and then some more bytes", 'first line is "GIF89a and then some more bytes": drawings start with'),
        (b"\x00\x1b[2Jx" + bytes(100), 'first line is "\\x00\\x1B[2Jx'),
        (b"x" * 500, "x" * 40 + '..."'),
        (b" " + document(), "not a VX document"),
        (b"\xc5\xd0\xd3\xc6" + struct.pack("<II", 4000, 10), "EPS wrapper has no drawing inside"),
        (document().replace(b"%VX5_FileFormat 3\n", b""), "names no version"),
        (document(box="(atend)"), 'no "%%BoundingBox:" of four numbers'),
    ]

    def test_every_input_has_its_own_error(self):
        _, messages = self.run_vx("info", "no.vx", "no.vx", status=1)
        self.assertEqual(messages, ["vx: no.vx: no such file: check the name"] * 2)

    def test_what_is_no_document_is_told_in_one_line(self):
        for data, told in self.REFUSED:
            self.write("x.vx", data)
            for words in (["info"], ["render", "-o", "x.png"]):
                with self.subTest(data=data[:20], words=words):
                    message = self.refused(*words, "x.vx", status=1)
                    self.assertTrue(message.startswith("vx: x.vx: "), message)
                    self.assertIn(told, message)
                    self.assertEqual(self.files(), ["x.vx"])

    def test_missing_file_and_directory(self):
        os.mkdir(self.path("folder"))
        for words in (["info"], ["trace"], ["render", "-o", "x.png"]):
            self.assertIn("vx: no.vx: no such file", self.refused(*words, "no.vx", status=1))
            self.assertIn("vx: folder: is a directory", self.refused(*words, "folder", status=1))
        self.assertEqual(self.files(), ["folder"])

    def test_a_name_cannot_write_on_the_terminal(self):
        self.assertIn("a\\x1B[2Jb\\x0A.vx", self.refused("info", "a\x1b[2Jb\n.vx", status=1))

    def test_line_ends_and_wrapper_make_no_difference(self):
        plain = document()
        self.write("plain.vx", plain)
        expected, _ = self.run_vx("trace", "plain.vx")
        wrapped = struct.pack("<4sII", b"\xc5\xd0\xd3\xc6", 30, len(plain)) + bytes(18) + plain + b"preview"
        for name, data, told in [("cr", plain.replace(b"\n", b"\r"), "line ends CR"),
                                 ("crlf", plain.replace(b"\n", b"\r\n"), "line ends CR LF"),
                                 ("eps", wrapped, "in a binary EPS wrapper")]:
            self.write(name, data)
            self.assertEqual(self.run_vx("trace", name)[0], expected, name)
            self.assertIn(told, self.run_vx("info", name)[0].decode())

    def test_malformed_documents_say_where_and_cost_nothing(self):
        # A colour with the wrong number of operands follows 3000 lines that are right.
        body = "0 0 m\n" * 3000 + "0 1 k\n" + "0 0 m\n" * 3000
        data = document(body)
        self.write("bad.vx", data)
        message = self.refused("render", "bad.vx", "-o", "bad.png", status=1)
        line = data[:data.index(b"0 1 k")].count(b"\n") + 1
        told = f'line {line}, column 5: "k" wants 4 numbers, has 2'
        self.assertEqual(message, f"vx: bad.vx: malformed, {told}, nothing written: vx trace bad.vx shows how far it got, "
                                  "--salvage draws the rest")
        facts = json.loads(self.run_vx("info", "--json", "bad.vx", status=1)[0])
        self.assertEqual(facts["fault"], {"line": line, "column": 5, "text": '"k" wants 4 numbers, has 2'})
        self.assertIn(told, facts["error"])
        self.assertEqual(self.files(), ["bad.vx"])
        output, messages = self.run_vx("trace", "bad.vx", status=1)
        self.assertEqual(output.splitlines()[-1], b"result -30601")
        self.assertEqual(output.count(b"moveto 0 0\n"), 3000)
        self.assertEqual(len(messages), 1)

    def test_several_inputs_go_on_and_the_worst_wins(self):
        self.write("good.vx", document())
        self.write("bad.vx", b"GIF89a, of some length")
        output, messages = self.run_vx("render", "bad.vx", "no.vx", "good.vx", "-o", "{stem}.png", status=1)
        self.assertEqual(len(messages), 2)
        self.assertEqual(self.files(), ["bad.vx", "good.png", "good.vx"])


class Info(CommandTest):
    def test_text(self):
        self.write("a.vx", document())
        output, messages = self.run_vx("info", "a.vx")
        self.assertEqual(messages, [])
        lines = output.decode().splitlines()
        self.assertEqual(lines[0], "a.vx: VX document, version 5")
        rows = {line[2:18].strip(): line[18:] for line in lines[1:]}
        self.assertEqual(rows["title"], "A (small) square")
        self.assertEqual(rows["creator"], "by hand")
        self.assertEqual(rows["box"], "0 0 72 36")
        self.assertEqual(rows["size"], "72 x 36 pt, 25.4 x 12.7 mm")
        self.assertEqual(rows["colour"], "CMYK")
        self.assertTrue(rows["uses"].startswith("1 fill, 0 strokes, 0 clips, "), rows["uses"])

    def test_inks_that_a_press_cannot_tell_apart_are_told(self):
        self.write("a.vx", document("".join(f"{inks} ({name}) 0.25 x\n0 0 m\n9 9 L\nf\n" for inks, name in (
            ("1 0 0 0", "Lake"), ("0 1 0 0", "Moss"), ("0.5 0 0 0", "Lake"), ("0 1 0 0", "All"), ("0 1 0 0", "")))))
        told = ["a spot ink without a name is painted in process inks in PDF: name it",
                'spot ink "All" is painted in process inks in PDF, where that name means every plate: rename it',
                'spot ink "Lake" is mixed from process inks in 2 ways and has one plate: rename all but one']
        output, messages = self.run_vx("info", "a.vx")
        self.assertEqual(messages, ["vx: a.vx: warning: " + text for text in told])
        self.assertIn(b"Lake: 1 0 0 0, tint 0.25\n", output)
        self.assertIn(b"All: 0 1 0 0, tint 0.25, no plate in PDF\n", output)
        self.assertIn(b"no name: 0 1 0 0, tint 0.25, no plate in PDF\n", output)
        facts = json.loads(self.run_vx("info", "--json", "--strict", "a.vx", status=3)[0])
        self.assertEqual([(ink["name"], ink["mixtures"], ink["plate"]) for ink in facts["inks"]],
                         [("Lake", 2, True), ("Moss", 1, True), ("Lake", 2, True), ("All", 1, False), ("", 1, False)])
        # Nothing is told of a drawing in process inks, or of one that is not painted.
        self.assertEqual(self.run_vx("render", "a.vx", "--spots", "process", "-o", "a.pdf")[1], [])
        self.assertEqual(self.run_vx("text", "a.vx")[1], [])

    def test_what_is_not_shown_is_counted(self):
        fills = "".join(f"({name}) p\n0 0 m\n9 9 L\nf\n" for name in ("Dots", "Bricks", "Dots"))
        self.write("a.vx", document(fills + "` ~\n1 2 Qx\n"))
        cases = {
            "a.vx": ({"patterns": 2, "postscript": 1}, [1, 2, 3],
                     ["an unknown operator was ignored, what it does is missing", "2 patterns are painted in half gray",
                      "1 fragment of embedded PostScript is passed over, what it draws is missing"]),
            sample("pattern-fallback"): ({"patterns": 1}, [1], ["1 pattern is painted in half gray"]),
            sample("skipped-data"): ({"placedPictures": 1, "binary": 1}, [4],
                                     ["1 placed picture is not drawn",
                                      "1 section of binary data is passed over, a picture may be missing"]),
            sample("layers"): ({"betweenLayers": 1}, [],
                               ["1 object behind the end of a layer, before another begins, is not drawn"]),
            sample("layers-nested"): ({}, [], []),
            sample("poster"): ({}, [], []),
        }
        for name, (unshown, problems, told) in cases.items():
            with self.subTest(name):
                warnings = [f"vx: {name}: warning: {text}" for text in told]
                output, messages = self.run_vx("info", "--json", "--strict", name, status=3 if told else 0)
                facts = json.loads(output)
                self.assertEqual((facts["unshown"], [problem["number"] for problem in facts["problems"]], messages),
                                 (unshown, problems, warnings))
                rows = self.run_vx("info", "-q", name)[0].decode().splitlines()
                self.assertEqual([row[18:] for row in rows if row.startswith("  problem ")], told)
                for words in (["render", "-o", "b.png"], ["trace"]):
                    self.assertEqual(self.run_vx(*words, "--strict", name, status=3 if told else 0)[1], warnings)

    def test_json_is_one_object_a_line_for_every_input(self):
        self.write("a.vx", document("0.5 G\n0 0 m\n9 9 l\nS\n1 0 0 0 K\n0 0 m\n9 9 l\nS\n1 2 Qx\n", "0 0 10.5 20"))
        self.write("b.vx", b"no document, but long enough")
        output, messages = self.run_vx("info", "--json", "a.vx", "b.vx", "no.vx", "-", status=1, stdin=document())
        first, second, third, fourth = [json.loads(line) for line in output.decode().splitlines()]
        self.assertEqual((first["file"], first["vx"], first["version"]), ("a.vx", True, 5))
        self.assertEqual((first["box"], first["points"]), ([0, 0, 10.5, 20], [10.5, 20]))
        self.assertEqual(first["uses"]["strokes"], 2)
        self.assertEqual([first["uses"][key] for key in ("gray", "cmyk", "overprint")], [True, True, False])
        self.assertEqual([problem["number"] for problem in first["problems"]], [3])
        self.assertEqual((second["vx"], "not a VX document" in second["error"]), (False, True))
        self.assertEqual((third["vx"], "no such file" in third["error"]), (False, True))
        self.assertEqual((fourth["file"], fourth["vx"], fourth["title"]), ("-", True, "A (small) square"))
        self.assertEqual(len(messages), 3)

    def test_header_comments(self):
        comments = ("%%CreationDate: (3/5/94) (10:12 AM)\n%%DocumentProcessColors: Cyan Black\n"
                    "%%DocumentCustomColors: (Sea \\(dark\\)) (Sand)\n%%+ (Sky)\n%%DocumentFonts: Helvetica\n"
                    "%%+ Times-Roman\n%%ColorUsage: Black&White\n")
        data = document().replace(b"%%EndComments\n", comments.encode() + b"%%EndComments\n")
        self.write("a.vx", data.replace(b"by hand", b"by \xff hand"))
        facts = json.loads(self.run_vx("info", "--json", "a.vx")[0])
        self.assertEqual(facts["creationDate"], "3/5/94 10:12 AM")
        self.assertEqual(facts["processColours"], ["Cyan", "Black"])
        self.assertEqual(facts["customColours"], ["Sea (dark)", "Sand", "Sky"])
        self.assertEqual(facts["declaredFonts"], ["Helvetica", "Times-Roman"])
        self.assertEqual(facts["creator"], "by ˇ hand")
        self.assertTrue(facts["monochrome"])

    def test_versions(self):
        marks = [("%%DocumentProcSets: Tavro_Vellumcraft", 2), ("%%+ procset Tavro_Vellumcraft_VX3 1", 3),
                 ("%%Creator: Tavro Vellumcraft(TM) for Windows, version 4.1", 4), ("% VX5_FileFormat 3", 5)]
        for mark, version in marks:
            data = document().replace(b"%VX5_FileFormat 3", mark.encode())
            self.write("a.vx", data)
            self.assertEqual(json.loads(self.run_vx("info", "--json", "a.vx")[0])["version"], version, mark)

    def test_problems_are_warned_of_once(self):
        self.write("a.vx", document("1 2 Qx\n3 4 Qx\n"))
        output, messages = self.run_vx("info", "a.vx")
        self.assertEqual(len(messages), 1)
        self.assertTrue(messages[0].startswith("vx: a.vx: warning: "), messages)
        self.assertIn(b"  problem ", output)
        self.assertEqual(self.run_vx("info", "-q", "a.vx"), (output, []))
        self.assertEqual(len(self.run_vx("info", "--strict", "a.vx", status=3)[1]), 1)
        self.assertEqual(self.run_vx("info", "--strict", "-q", "a.vx", status=3)[1], [])


class Render(CommandTest):
    def render(self, *words, data=None):
        self.write("a.vx", data if data is not None else document())
        self.run_vx("render", "a.vx", "-o", "a.png", *words)
        png = Png(self.read("a.png"))
        self.assertTrue(png.ended)
        return png

    def test_left_half_is_black(self):
        png = self.render("--dpi", "72", "--profile", "none")
        self.assertEqual((png.width, png.height), (72, 36))
        self.assertEqual([png.pixel(x, 18)[:3] for x in (0, 35, 36, 71)], [(0, 0, 0)] * 2 + [(255, 255, 255)] * 2)

    # The page is 1 by half an inch.
    SIZES = [
        ([], (150, 75)),
        (["--dpi", "300"], (300, 150)),
        (["-z", "2.5"], (180, 90)),
        (["--width", "100"], (100, 50)),
        (["--height", "100"], (200, 100)),
        (["--width", "30", "--height", "40"], (30, 40)),
        (["--fit", "64"], (64, 32)),
        (["--dpi", "1"], (1, 1)),
        (["--box", "0,0,36,36", "-z", "1"], (36, 36)),
        (["--box", "36,36,0,0", "-z", "1"], (36, 36)),
        (["--box", "-72,0,72,36", "--fit", "64"], (64, 16)),
    ]

    def test_sizes(self):
        for words, size in self.SIZES:
            with self.subTest(words=words):
                png = self.render(*words)
                self.assertEqual((png.width, png.height), size)

    def test_transparent_is_no_background(self):
        self.write("a.vx", document())
        for form in ("png", "svg", "pdf"):
            none, transparent, default = (self.run_vx("render", "a.vx", "-f", form, "-o", "-", *words)[0]
                                          for words in (["-b", "none"], ["-b", "transparent"], []))
            self.assertEqual(transparent, none)
            self.assertEqual(default == none, form != "png")

    def test_background(self):
        for colour, expected in [("red", (255, 0, 0)), ("#0f8", (0, 255, 136)), ("#010203", (1, 2, 3))]:
            png = self.render("-b", colour)
            self.assertEqual(png.pixel(png.width - 1, 0)[:3], expected)
        png = self.render("-b", "none", "--profile", "none")
        self.assertEqual(png.pixel(png.width - 1, 0)[3], 0)
        self.assertEqual(png.pixel(0, 0), (0, 0, 0, 255))

    def test_box_shows_that_part(self):
        png = self.render("--box", "36,0,72,36", "-z", "1")
        self.assertEqual({png.pixel(x, 18)[:3] for x in range(png.width)}, {(255, 255, 255)})

    def test_profile_and_intent_change_the_black(self):
        plain = self.render("--profile", "none").pixel(0, 0)
        press = self.render().pixel(0, 0)
        self.assertEqual(plain[:3], (0, 0, 0))
        self.assertNotEqual(press, plain)
        self.render("--intent", "perceptual")

    def test_overprint(self):
        # Magenta overprints cyan: blue where it is simulated, magenta where it is not.
        body = "1 0 0 0 k\n0 0 m\n72 0 l\n72 36 l\n0 36 l\nf\n1 O\n0 1 0 0 k\n0 0 m\n72 0 l\n72 36 l\n0 36 l\nf\n"
        words = ["--profile", "none", "--overprint"]
        self.assertEqual(self.render(*words, "simulate", data=document(body)).pixel(9, 9)[:3], (0, 0, 255))
        self.assertEqual(self.render(*words, "ignore", data=document(body)).pixel(9, 9)[:3], (255, 0, 255))

    def test_samples(self):
        # At one pixel an inch the page's only pixel is half black: one sample decides, or many mix.
        words = ["--dpi", "1", "--profile", "none", "--samples"]
        self.assertIn(self.render(*words, "1").pixel(0, 0)[0], (0, 255))
        self.assertIn(self.render(*words, "8").pixel(0, 0)[0], range(100, 200))

    def test_same_input_same_bytes(self):
        self.render()
        first = self.read("a.png")
        self.render()
        self.assertEqual(self.read("a.png"), first)

    def test_standard_input_and_output(self):
        output, messages = self.run_vx("render", "-", "-f", "png", "-o", "-", stdin=document())
        self.assertEqual(messages, [])
        self.assertEqual(Png(output).width, 150)
        self.assertEqual(self.files(), [])

    def test_empty_box_needs_an_option(self):
        self.write("a.vx", document(box="5 5 5 5"))
        self.assertIn("--box", self.refused("render", "a.vx", "-o", "a.png", status=1))
        self.run_vx("render", "a.vx", "-o", "a.png", "--box", "0,0,5,5")

    def test_an_inverted_box_is_turned(self):
        self.assertEqual(self.render(data=document(box="72 36 0 0")).rows, self.render().rows)

    def test_too_many_pixels_are_a_limit(self):
        self.write("a.vx", document())
        self.assertIn("too large", self.refused("render", "a.vx", "-o", "a.png", "--dpi", "99999", status=5))
        self.assertEqual(self.files(), ["a.vx"])

    def test_warnings_do_not_keep_the_picture_away(self):
        self.write("a.vx", document("1 2 Qx\n" + LEFT_HALF))
        for words, status, count in [([], 0, 1), (["-q"], 0, 0), (["--strict"], 3, 1)]:
            messages = self.run_vx("render", "a.vx", "-o", "a.png", *words, status=status)[1]
            self.assertEqual(len(messages), count)
            self.assertEqual(Png(self.read("a.png")).width, 150)
            os.remove(self.path("a.png"))

    def test_verbose_tells_more(self):
        self.write("a.vx", document())
        messages = self.run_vx("render", "-v", "a.vx", "-o", "a.png")[1]
        self.assertTrue(any("a.png: written" in message for message in messages), messages)

    def test_progress_is_erased_and_never_in_a_file(self):
        self.write("a.vx", document("0 0 m\n" * 20000 + LEFT_HALF))
        self.assertEqual(self.run_vx("render", "a.vx", "-o", "a.png")[1], [])
        process = self.start("render", "a.vx", "-o", "a.png", "--progress", "always")
        errors = process.communicate(timeout=60)[1].decode()
        self.assertIn("a.vx", errors)
        self.assertIn(" %", errors)
        self.assertNotIn("100 %", errors)  # what is read is still to be written
        self.assertTrue(errors.endswith("\r\x1b[K"), errors[-20:])
        self.assertNotIn("\n", errors)

    def test_progress_shows_on_a_terminal(self):
        self.write("a.vx", document("0 0 m\n" * 20000 + LEFT_HALF))
        for words, shown in [([], True), (["-q"], False), (["--progress", "never"], False)]:
            try:
                near, far = os.openpty()
            except OSError as error:
                self.skipTest(f"no pseudo-terminal can be had here: {error}")
            self.start("render", "a.vx", "-o", "a.png", *words, stderr=far).communicate(timeout=60)
            os.write(far, b"end")  # so that there is something to read
            os.close(far)
            self.assertEqual(b" %" in os.read(near, 1 << 16), shown, words)
            os.close(near)


class Formats(CommandTest):
    # Each row has words, the files that they write, and how each of these begins.
    BEGINNINGS = {"pdf": b"%PDF-1.", "svg": b"<", "png": b"\x89PNG\r\n\x1a\n", "tiff": b"II*\0"}
    CHOICES = [
        (["-o", "b.pdf"], {"b.pdf": "pdf"}),
        (["-o", "b.svg"], {"b.svg": "svg"}),
        (["-o", "b.PNG"], {"b.PNG": "png"}),
        (["-o", "b"], {"b": "pdf"}),
        (["-o", "b.v2", "-f", "pdf"], {"b.v2": "pdf"}),
        (["-o", "b.TIF"], {"b.TIF": "tiff"}),
        (["-o", "b.tiff"], {"b.tiff": "tiff"}),
        (["-o", "b.{ext}", "-f", "tif,png"], {"b.tiff": "tiff", "b.png": "png"}),
        (["-o", "b.png", "-f", "svg"], {"b.png": "svg"}),
        (["-o", "b.jpg", "-f", "pdf"], {"b.jpg": "pdf"}),
        (["-o", "b.{ext}", "-f", "pdf,svg,png"], {"b.pdf": "pdf", "b.svg": "svg", "b.png": "png"}),
        (["-o", ".", "-f", "png,pdf"], {"a.png": "png", "a.pdf": "pdf"}),
    ]

    def test_the_name_or_the_option_decides(self):
        for words, files in self.CHOICES:
            with self.subTest(words=words):
                self.write("a.vx", document())
                self.assertEqual(self.run_vx("render", "-q", "a.vx", *words), (b"", []))
                self.assertEqual(self.files(), sorted([*files, "a.vx"]))
                for name, kind in files.items():
                    self.assertTrue(self.read(name).startswith(self.BEGINNINGS[kind]), name)
                    os.remove(self.path(name))

    def test_an_option_for_one_of_several_formats(self):
        self.run_vx("render", "-", "-f", "svg,png", "-o", "b.{ext}", "--dpi", "72", "--text", "outlines",
                    stdin=document())
        self.assertEqual(Png(self.read("b.png")).width, 72)
        self.assertEqual(self.files(), ["b.png", "b.svg"])

    # Each row has words, a format, and what its file holds with these words, and not without.
    TOLD = [
        ("svg", ["--box", "36,0,72,36"], b'width="36pt" height="36pt"'),
        ("pdf", ["--box", "0,0,36,18"], b"/MediaBox[0 0 36 18]"),
        ("svg", ["-b", "#010203"], b"#010203"),
        ("svg", ["--profile", "none"], b'fill="#000000"'),
        ("svg", ["--text", "outlines"], None),
        ("pdf", ["--text", "outlines"], None),
        ("pdf", ["--compress", "none"], b" l\n"),
    ]

    def test_options_reach_the_device(self):
        for kind, words, told in self.TOLD:
            with self.subTest(kind=kind, words=words):
                self.write("a.vx", document(LEFT_HALF) if told else text_document("Helvetica"))
                plain, chosen = (self.run_vx("render", "a.vx", "-f", kind, "-o", "-", *more, *Fonts.ONLY)[0]
                                 for more in ([], words))
                font = told or {"svg": b"<text", "pdf": b"/FontFile"}[kind]
                self.assertEqual((font in plain, font in chosen), (not told, bool(told)))

    def test_the_date_of_a_pdf(self):
        self.write("a.vx", document())
        self.run_vx("render", "a.vx", "-o", "none.pdf")
        self.assertNotIn(b"/CreationDate", self.read("none.pdf"))
        os.utime(self.path("a.vx"), (0, 86400))
        note = "vx: {}: the PDF's date of creation is {}: choose another with --date"
        asked = ("-f", "pdf", "--pdf-x", "x1a")
        cases = [((), b"(D:19700102000000Z)", note.format("a.vx", "the file's")),
                 (("--date", "file"), b"(D:19700102000000Z)", note.format("a.vx", "the file's")),
                 (("--date", "2026-11-22"), b"(D:20261122000000Z)", None),
                 (("--date", "2026-11-22T10:30"), b"(D:20261122103000Z)", None),
                 (("--date", "5"), b"(D:19700101000005Z)", None)]
        for words, date, told in cases:
            with self.subTest(words):
                pdf, messages = self.run_vx("render", "a.vx", *asked, "-o", "-", *words)
                self.assertIn(b"/CreationDate" + date, pdf)
                self.assertEqual(messages, [told] if told else [])
        for words, name in ((("render", "-"), "standard input"), (("render", "a.vx", "--date", "now"), "a.vx")):
            pdf, messages = self.run_vx(*words, *asked, "-o", "-", stdin=document())
            self.assertRegex(pdf, rb"/CreationDate\(D:20[2-9]\d{11}Z\)")
            self.assertEqual(messages, [note.format(name, "now")])
        result = json.loads(self.run_vx("batch", "a.vx", *asked, "-o", "b.pdf", "-q")[0])
        self.assertEqual(result["dateFrom"], "file")
        for level, name in (("x1a", b"PDF/X-1"), ("x3", b"PDF/X-3")):
            self.run_vx("render", "a.vx", "-o", "x.pdf", "--pdf-x", level, environment={"SOURCE_DATE_EPOCH": "86400"})
            self.assertIn(b"/CreationDate(D:19700102000000", self.read("x.pdf"))
            self.assertIn(name, self.read("x.pdf"))

    LEVELS = (["--pdf-x", "x1a"], ["--pdf-x", "x4"], ["--pdf-a", "2b"], ["--pdf-x", "x4", "--pdf-a", "2u"])

    def test_a_level_goes_on_with_fonts_that_stand_in(self):
        for level in self.LEVELS:
            words = ["-o", "a.pdf", *level, "--date", "0"]
            with self.subTest(level):
                self.write("a.vx", text_document("Helvetica"))
                self.assertEqual(self.run_vx("render", "a.vx", *words, "--strict", "--missing-fonts", "fail")[1], [])
                self.assertIn(b"<rdf:li>Helvetica = NimbusSans-Regular</rdf:li>", self.read("a.pdf"))
                os.remove(self.path("a.pdf"))
                self.write("a.vx", text_document("Frutiger-Roman"))
                for more, status in (([], 0), (["--strict"], 3)):
                    told = self.run_vx("render", "a.vx", *words, *more, status=status)[1]
                    self.assertEqual([line.split(",")[0] for line in told], ['vx: a.vx: warning: no font "Frutiger-Roman"'])
                    self.assertIn(b"<rdf:li>Frutiger-Roman = ", self.read("a.pdf"))
                    os.remove(self.path("a.pdf"))
                self.refused("render", "a.vx", *words, "--missing-fonts", "fail", status=1)
                self.assertEqual(self.files(), ["a.vx"])

    def test_what_no_archive_takes_is_refused(self):
        square = "0 0 m 9 0 L 9 9 L 0 9 L"
        name = "Ink " * 32
        cases = [(document(box="0 0 72 2"), "the page is of 72 by 2 points, and PDF/A-2b takes 3 to 14400 each way: "),
                 (document(box="0 0 14401 9"), "the page is of 14401 by 9 points"),
                 (document(f"q\n{square} h W n\n" * 29 + f"0 g\n{square} f\n" + "Q\n" * 29, box="0 0 9 9"),
                  "clips are nested 29 deep, and PDF/A-2b takes 28: leave --pdf-a out"),
                 (document(f"1 0.5 0 0 ({name}) 0 x\n{square} f\n", box="0 0 9 9"),
                  f'the spot ink "{name[:40]}..." has a name of 128 bytes, and PDF/A-2b takes 127: rename it, or choose --spots process')]
        for data, told in cases:
            with self.subTest(told):
                self.write("a.vx", data)
                self.run_vx("render", "-q", "a.vx", "-o", "a.pdf", "--pdf-x", "x4")
                os.remove(self.path("a.pdf"))
                self.assertIn(told, self.refused("render", "a.vx", "-o", "a.pdf", "--pdf-a", "2b", "--date", "0", status=1))
                self.assertEqual(self.files(), ["a.vx"])

    def test_a_profile_is_the_intent_of_a_pdf(self):
        self.write("a.vx", document())
        with open(os.path.join(os.path.dirname(sample("gray")), "../devices/colour/profiles/fogra39.icc"), "rb") as file:
            profile = bytearray(file.read())
        self.write("two.icc", bytes(profile))
        profile[8] = 4
        self.write("four.icc", bytes(profile))
        for words, intents, head, version in (([], 0, b"%PDF-1.4", None), (["--profile", "none"], 0, b"%PDF-1.4", None),
                                              (["--profile", "fogra39"], 1, b"%PDF-1.4", None), (["--profile", "two.icc"], 1, b"%PDF-1.4", None),
                                              (["--profile", "four.icc"], 1, b"%PDF-1.4", b"/Version/1.7"),
                                              (["--profile", "four.icc", "--pdf-x", "x4"], 1, b"%PDF-1.6", None),
                                              (["--profile", "four.icc", "--pdf-a", "2b"], 1, b"%PDF-1.7", None),
                                              (["--profile", "two.icc", "--pdf-x", "x3", "--pdf-a", "2u"], 2, b"%PDF-1.4", None)):
            with self.subTest(words):
                self.run_vx("render", "a.vx", "-o", "a.pdf", "-q", *words)
                pdf = self.read("a.pdf")
                self.assertEqual((pdf.count(b"/Type/OutputIntent/"), pdf[:8]), (intents, head))
                self.assertEqual(re.findall(rb"/Version/1\.\d", pdf), [version] if version else [])
        for words, told in ((["--pdf-x", "x1a", "--pdf-a", "2b"], "is of ICC version 4, PDF/X-1a takes version 2"), (["--pdf-x", "x3"], "PDF/X-3 takes")):
            os.remove(self.path("a.pdf"))
            self.assertIn(told, self.refused("render", "a.vx", "-o", "a.pdf", "--profile", "four.icc", *words, status=2))
            self.assertNotIn("a.pdf", self.files())
            self.write("a.pdf", b"")
        self.assertIn("no ICC profile", self.refused("render", "a.vx", "-o", "b.pdf", "--profile", "a.vx", status=2))
        self.assertNotIn("b.pdf", self.files())

    def test_in_a_pipe(self):
        for kind, beginning in self.BEGINNINGS.items():
            output, messages = self.run_vx("render", "-", "-f", kind, "-o", "-", stdin=document())
            self.assertTrue(output.startswith(beginning), kind)
            self.assertEqual(messages, [])

    def test_warnings_of_several_formats_are_told_once(self):
        self.write("a.vx", document("1 2 Qx\n" + LEFT_HALF))
        self.assertEqual(len(self.run_vx("render", "a.vx", "-f", "png,pdf,svg", "-o", "{ext}")[1]), 1)

    def test_all_formats_or_none(self):
        os.mkdir(self.path("b.png"))
        os.mkdir(self.path("b.png/c"))
        self.write("a.vx", document())
        self.assertIn("b.png: is a directory", self.refused("render", "a.vx", "-f", "pdf,png", "-o", "b.{ext}", status=4))
        self.assertEqual(self.files(), ["a.vx", "b.png"])
        self.assertIn("too large", self.refused("render", "a.vx", "-f", "pdf,png", "-o", "c.{ext}", "--dpi", "99999",
                                                status=5))
        self.assertEqual(self.files(), ["a.vx", "b.png"])

    def test_same_input_same_bytes(self):
        self.write("a.vx", document())
        for kind in self.BEGINNINGS:
            first = self.run_vx("render", "a.vx", "-f", kind, "-o", "-")[0]
            time.sleep(1.1)  # a date of today would tell
            self.assertEqual(self.run_vx("render", "a.vx", "-f", kind, "-o", "-")[0], first, kind)


class Outputs(CommandTest):
    def setUp(self):
        super().setUp()
        self.write("a.vx", document())

    def test_patterns(self):
        os.makedirs(self.path("in/deep"))
        os.makedirs(self.path("out"))
        self.write("in/deep/b.vx", document())
        self.run_vx("render", "a.vx", "in/deep/b.vx", "-f", "png", "-o", "{dir}/{stem}-new.{ext}")
        self.assertTrue(os.path.exists(self.path("a-new.png")))
        self.assertTrue(os.path.exists(self.path("in/deep/b-new.png")))
        self.run_vx("render", "a.vx", "in/deep/b.vx", "-f", "png", "-o", "out")
        self.assertEqual(sorted(os.listdir(self.path("out"))), ["a.png", "b.png"])

    def test_places_that_cannot_be_written(self):
        os.mkdir(self.path("taken.png"))
        os.mkdir(self.path("taken.png/a.png"))
        for output, told in [("no/a.png", "vx: no/a.png: no such folder"), ("a.vx/b.png", "no such folder"),
                             ("taken.png", "vx: taken.png/a.png: is a directory"),
                             ("/dev/full", "no space left on device")]:
            with self.subTest(output=output):
                self.assertIn(told, self.refused("render", "a.vx", "-f", "png", "-o", output, status=4))
        self.assertEqual(self.files(), ["a.vx", "taken.png"])

    def test_standard_output_that_is_full(self):
        for words in (["info", "a.vx"], ["trace", "a.vx"], ["render", "a.vx", "-f", "png", "-o", "-"], ["--version"],
                      ["render", "--help"]):
            with open("/dev/full", "wb") as full:
                messages = self.run_vx(*words, status=4, stdout=full)[1]
            self.assertEqual(len(messages), 1)
            self.assertIn("standard output", messages[0])

    def test_standard_output_that_nobody_reads(self):
        for words in (["info", "a.vx"], ["trace", "a.vx"], ["render", "a.vx", "-f", "png", "-o", "-"], ["--version"],
                      ["render", "--help"]):
            reader, writer = os.pipe()
            os.close(reader)
            messages = self.run_vx(*words, status=4, stdout=writer)[1]
            os.close(writer)
            self.assertEqual(messages, [])

    def test_a_file_that_may_not_grow(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100))

        message = self.refused("render", "a.vx", "-o", "a.png", status=4, preexec_fn=limit)
        self.assertTrue(message.startswith("vx: a.png: "), message)
        self.assertEqual(self.files(), ["a.vx"])

    def test_permissions(self):
        self.run_vx("render", "a.vx", "-o", "new.png", preexec_fn=lambda: os.umask(0o027))
        self.assertEqual(stat.S_IMODE(os.stat(self.path("new.png")).st_mode), 0o640)
        os.chmod(self.path("new.png"), 0o604)
        self.run_vx("render", "a.vx", "-o", "new.png")
        self.assertEqual(stat.S_IMODE(os.stat(self.path("new.png")).st_mode), 0o604)

    def test_where_every_file_has_a_name(self):
        for name, before in [("new.png", None), ("old.png", b"old")]:
            if before:
                self.write(name, before)
            self.run_vx("render", "a.vx", "-o", name, environment=WITHOUT_UNNAMED)
            self.assertEqual(Png(self.read(name)).width, 150)
        self.assertEqual(self.files(), ["a.vx", "new.png", "old.png"])
        self.run_vx("render", "a.vx", "-f", "png", "-o", "-", environment=WITHOUT_UNNAMED)
        self.write("bad.vx", document("0 1 k\n"))
        self.refused("render", "bad.vx", "-o", "old.png", status=1, environment=WITHOUT_UNNAMED)
        self.assertEqual(self.files(), ["a.vx", "bad.vx", "new.png", "old.png"])

    def test_a_link_stays_a_link(self):
        self.write("target.png", b"old")
        os.symlink("target.png", self.path("link.png"))
        self.run_vx("render", "a.vx", "-o", "link.png")
        self.assertTrue(os.path.islink(self.path("link.png")))
        self.assertEqual(Png(self.read("target.png")).width, 150)

    def test_a_link_that_leads_nowhere_is_replaced(self):
        os.symlink("nowhere/target.png", self.path("link.png"))
        self.run_vx("render", "a.vx", "-o", "link.png")
        self.assertFalse(os.path.islink(self.path("link.png")))
        self.assertEqual(Png(self.read("link.png")).width, 150)

    def test_a_name_of_another_format_is_told(self):
        os.mkdir(self.path("out.svg"))
        for words, written, told in [
                (["-f", "png", "-o", "b.pdf"], "b.pdf", "png is written under a name of pdf"),
                (["-f", "svg", "-o", "{stem}.PNG"], "a.PNG", "svg is written under a name of png"),
                (["-f", "png", "-o", "b.xyz"], "b.xyz", ""), (["-f", "png", "-o", "b"], "b", ""),
                (["-f", "png", "-o", "b.png"], "b.png", ""), (["-f", "png", "-o", "out.svg"], "out.svg/a.png", "")]:
            with self.subTest(words=words):
                for command in ("render", "batch"):
                    _, messages = self.run_vx(command, "a.vx", *words)
                    self.assertEqual(messages, [f"vx: -o {words[-1]}: warning: {told}: leave out -f, or change the name after -o"]
                                     if told else [])
                    self.assertEqual(self.run_vx(command, "-q", "a.vx", *words)[1], [])
                    self.run_vx(command, "-q", "--strict", "a.vx", *words, status=3 if told else 0)
                self.assertEqual(self.read(written)[:4], b"<?xm" if "svg" in words else b"\x89PNG")

    def on_terminal(self, *words):
        """Returns (exit status, what the terminal that is standard output got, messages)."""
        try:
            near, far = os.openpty()
        except OSError as error:
            self.skipTest(f"no pseudo-terminal can be had here: {error}")
        process = self.start(*words, stdout=far)
        os.close(far)
        shown = b""
        try:
            while piece := os.read(near, 65536):
                shown += piece
        except OSError:  # the other end is closed
            pass
        os.close(near)
        messages = process.communicate(timeout=60)[1].decode()
        return process.returncode, shown, messages

    def test_a_terminal_gets_no_bytes_that_are_no_text(self):
        for form, words in (("png", ["-f", "png"]), ("pdf", ["-f", "pdf"]), ("tiff", ["-f", "tiff"]), ("pdf", ["--merge"])):
            told = f"vx: -o -: standard output is a terminal, and a {form} is no text: name a file, or pipe it on, or add --force\n"
            self.assertEqual(self.on_terminal("render", "a.vx", *words, "-o", "-"), (2, b"", told))
            status, shown, _ = self.on_terminal("render", "a.vx", *words, "-o", "-", "--force")
            self.assertEqual((status, shown[:4]), (0, {"png": b"\x89PNG", "pdf": b"%PDF", "tiff": b"II*\x00"}[form]))
        status, shown, _ = self.on_terminal("render", "a.vx", "-f", "svg", "-o", "-")
        self.assertEqual((status, shown[:5]), (0, b"<?xml"))

    def test_a_device_stays_a_device(self):
        self.run_vx("render", "a.vx", "-f", "png", "-o", "/dev/null")
        self.assertTrue(stat.S_ISCHR(os.stat("/dev/null").st_mode))

    def test_a_failure_keeps_what_was_there(self):
        self.write("bad.vx", document("0 1 k\n"))
        self.write("keep.png", b"old")
        self.refused("render", "bad.vx", "-o", "keep.png", status=1)
        self.assertEqual(self.read("keep.png"), b"old")
        self.assertEqual(self.files(), ["a.vx", "bad.vx", "keep.png"])


class Closed(CommandTest):
    """Standard input, output and error are closed when the command begins: whatever file is opened next would take their
    place, and be read, or written into, as if it were one of them."""
    EVERY = [closed for count in (1, 2, 3) for closed in itertools.combinations((0, 1, 2), count)]
    # Each row has words, and whether their result goes to standard output.
    COMMANDS = [
        (["--version"], True),
        (["render", "--help"], True),
        (["info", "a.vx"], True),
        (["fonts", "a.vx"], True),
        (["fonts", "--list"], True),
        (["trace", "a.vx"], True),
        (["render", "a.vx", "-f", "png", "-o", "-"], True),
        (["render", "a.vx", "b.vx", "-f", "pdf,png,svg", "-o", "{stem}.{ext}", "--progress", "always"], False),
        (["batch", "-j2", "--progress", "always", "-f", "png,svg", "-o", "{stem}.{ext}", "a.vx", "b.vx"], True),
    ]

    def setUp(self):
        super().setUp()
        # Both have warnings, and enough lines for progress.
        self.write("a.vx", document("1 2 Qx\n" + "0 0 m\n" * 20000 + LEFT_HALF))
        self.write("b.vx", document("1 2 Qy\n" + "0 0 m\n" * 20000 + LEFT_HALF))

    def run_without(self, closed, *words):
        """Returns the exit status, the output and the errors."""
        process = self.start(*words, preexec_fn=lambda: [os.close(number) for number in closed])
        output, errors = process.communicate(timeout=120)
        return process.returncode, output, errors.decode()

    def written(self):
        """Returns the outputs, and removes them."""
        names = [name for name in self.files() if not name.endswith(".vx")]
        found = {name: self.read(name) for name in names}
        for name in names:
            os.remove(self.path(name))
        return found

    def test_nothing_takes_their_place(self):
        for words, tells in self.COMMANDS:
            _, whole, told = self.run_without((), *words)
            expected = self.written()
            for closed in self.EVERY:
                with self.subTest(words=words, closed=closed):
                    status, output, errors = self.run_without(closed, *words)
                    found = self.written()
                    for name in found:
                        self.assertEqual(found[name], expected[name], name)
                    if tells and 1 in closed:
                        self.assertEqual(status, 4, errors)
                        if 2 not in closed:
                            self.assertIn("vx: standard output: cannot be written, bad file descriptor", errors)
                    else:
                        self.assertEqual((status, output), (0, b"" if 1 in closed else whole))
                        self.assertEqual(sorted(found), sorted(expected))
                        # It depends on time how often progress is shown.
                        if 2 not in closed and "--progress" not in words:
                            self.assertEqual(errors, told)

    def test_standard_input_that_is_closed_is_an_error_of_the_input(self):
        for closed in [closed for closed in self.EVERY if 0 in closed]:
            for words in (["info", "-"], ["fonts", "-"], ["trace", "-"], ["render", "-", "-o", "a.png"]):
                with self.subTest(words=words, closed=closed):
                    status, _, errors = self.run_without(closed, *words)
                    self.assertEqual(status, 1)
                    if 2 not in closed:
                        self.assertIn("vx: standard input: ", errors)
                    self.assertEqual(self.written(), {})

    def test_a_manifest_that_is_closed_is_an_error_of_the_input(self):
        status, output, errors = self.run_without((0,), "batch", "-", "-f", "png", "-o", "{stem}.png")
        self.assertEqual((status, self.written()), (1, {}), errors)
        self.assertRegex(errors, r"^vx: standard input: .*\nvx: 1 document in \d+ s: 0 done, 1 failed\n$")


class Trace(CommandTest):
    # Closing the path is part of "f"; the colour is sent when it is first needed.
    CALLS = ["moveto 0 0", "lineto 36 0", "lineto 36 36", "lineto 0 36", "closepath", "comment path",
             "setoverprint 0", "setcmykcolor 0 0 0 1", "fill", "result 0"]

    def test_lines(self):
        self.write("a.vx", document())
        output, messages = self.run_vx("trace", "a.vx")
        self.assertEqual(output.decode().splitlines(), self.CALLS)
        self.assertEqual(messages, [])

    def test_json_says_the_same(self):
        output, _ = self.run_vx("trace", "--json", "-", stdin=document())
        calls = [json.loads(line) for line in output.decode().splitlines()]
        self.assertEqual([" ".join([call["call"], *map(str, call["args"])]) for call in calls], self.CALLS)

    def test_reports_stand_where_they_are_raised(self):
        self.write("a.vx", document("0 0 m\n1 2 Qx\n3 3 l\nn\n"))
        output, messages = self.run_vx("trace", "a.vx")
        lines = output.decode().splitlines()
        self.assertEqual(lines[:3], ["moveto 0 0", "report 3", "lineto 3 3"])
        self.assertEqual(len(messages), 1)

    def test_more_than_a_pipe_holds(self):
        self.write("a.vx", document("1.5 -2 m\n" * 100000))
        output, _ = self.run_vx("trace", "a.vx")
        self.assertEqual(output, b"moveto 1.5 -2\n" * 100000 + b"result 0\n")


# A text in each of the fonts.
def text_document(*fonts):
    return document("".join(f"0 To\n1 0 0 1 2 2 0 Tp\nTP\n0 Tr\n/_{font} 12 Tf\n(Hand) Tx\nTO\n" for font in fonts))


class Words(CommandTest):
    # An area in no layer, then lines from the bottom up in one, in fonts that are on no machine.
    BODY = ("0 g\n2 To\n1 0 0 1 40 20 0 Tp\nTP\n0 Tr\n/_Elsewhere 6 Tf\n(quay) Tx\nTO\n"
            "1 1 1 1 0 0 0 0 0 0 Lb\n(Signs) Ln\n0 0.5 1 0 (Rust) 0.5 x\n0 To\n1 0 0 1 5 20 0 Tp\nTP\n0 Tr\n/_Nowhere 12 Tf\n"
            "(harbour) Tx\n0 15 Td\n(Caf\\216 at the) Tx\nTO\nLB\n")

    def test_lines_with_a_blank_one_between_texts(self):
        self.write("a.vx", document(self.BODY))
        output, messages = self.run_vx("text", "a.vx", "--strict")
        self.assertEqual(output.decode(), "quay\n\nCafé at the\nharbour\n")
        self.assertEqual(messages, [])  # what is drawn instead of those fonts changes no word

    def test_json_says_more(self):
        output, _ = self.run_vx("text", "--json", "-", "--no-system-fonts", stdin=document(self.BODY))
        second, first = [json.loads(line) for line in output.decode().splitlines()]
        self.assertEqual([first[name] for name in ("file", "layer", "printing", "kind", "unknownCharacters")],
                         ["-", "Signs", True, "point", 0])
        self.assertEqual([line["text"] for line in first["lines"]], ["Café at the", "harbour"])
        self.assertEqual(first["lines"][1]["runs"], [{
            "text": "harbour", "font": "Nowhere", "served": "", "size": 12.0,
            "colour": {"cmyk": [0.0, 0.25, 0.5, 0.0], "spot": "Rust", "amount": 0.5}}])
        self.assertEqual([second[name] for name in ("layer", "printing", "kind")], [None, True, "area"])
        self.assertEqual(second["lines"][0]["runs"][0]["colour"], {"gray": 0.0})
        self.assertEqual(first["box"][:2], [5.0, 17.6])

    def test_of_several_documents_each_line_says_which(self):
        self.write("a.vx", document(self.BODY))
        self.write("none.vx", document())
        self.write("bad.vx", document("1 k\n"))
        output, messages = self.run_vx("text", "a.vx", "none.vx", "bad.vx", "-", stdin=document(self.BODY), status=1)
        expected = [f"{name}:{line}" for name in ("a.vx", "standard input")
                    for line in ("quay", "", "Café at the", "harbour")]
        self.assertEqual(output.decode().splitlines(), expected)
        self.assertEqual(len(messages), 1)
        self.assertIn("bad.vx: malformed", messages[0])

    def test_what_means_no_character_is_told(self):
        japanese = "0 g\n0 To\n1 0 0 1 5 20 0 Tp\nTP\n0 Tr\n/_Ryumin-Light-83pv-RKSJ-H 12 Tf\n(A\\205\\100B) Tx\nTO\n"
        self.write("a.vx", document(japanese))
        output, messages = self.run_vx("text", "a.vx", "--strict", status=3)
        self.assertEqual(output.decode(), "A\ufffdB\n")
        self.assertEqual(len(messages), 1)
        self.assertIn("a.vx: warning: 1 character of the text means nothing in its font's character set", messages[0])
        output, _ = self.run_vx("text", "-q", "--json", "a.vx")
        self.assertEqual(json.loads(output)["unknownCharacters"], 1)

    def test_standard_output_that_takes_nothing(self):
        self.write("a.vx", document(self.BODY))
        with open("/dev/full", "wb") as full:
            messages = self.run_vx("text", "a.vx", "a.vx", status=4, stdout=full)[1]
        self.assertEqual(messages, ["vx: standard output: cannot be written, no space left on device: choose another place"])
        reader, writer = os.pipe()
        os.close(reader)
        self.assertEqual(self.run_vx("text", "a.vx", status=4, stdout=writer)[1], [])
        os.close(writer)

    def test_hidden_layers_and_unpainted_text_say_nothing(self):
        self.write("a.vx", document(self.BODY.replace("1 1 1 1", "1 1 1 0")))
        self.assertEqual(self.run_vx("text", "a.vx")[0], b"quay\n")
        output, _ = self.run_vx("text", "--json", "--layers", "all", "a.vx")
        self.assertEqual([json.loads(line)["printing"] for line in output.splitlines()], [True, False])
        self.assertIn('no layer "Sings"', self.refused("text", "--layers", "Sings", "a.vx", status=1))
        self.write("a.vx", document(self.BODY.replace("0 Tr", "3 Tr")))
        self.assertEqual(self.run_vx("text", "a.vx")[0], b"")

    def test_more_than_a_pipe_holds(self):
        self.write("a.vx", document(self.BODY.partition("TO\n")[0] + "TO\n" + self.BODY.partition("TO\n")[2] * 20000))
        output, _ = self.run_vx("text", "a.vx")
        self.assertEqual(output.decode(), "\n".join(["quay\n", *["Café at the\nharbour\n"] * 20000]))


class Fonts(CommandTest):
    ONLY = ["--no-system-fonts", "--font-dir", "/usr/share/fonts/opentype/urw-base35"]

    def fonts(self, *words):
        output, messages = self.run_vx("fonts", "--json", *words)
        return {font["asked"]: font for font in json.loads(output)["fonts"]}, messages

    def test_what_serves_and_why(self):
        self.write("a.vx", text_document("NimbusSans-Bold", "Helvetica", "Frutiger-Black"))
        fonts, messages = self.fonts("a.vx", *self.ONLY)
        self.assertEqual([(font["match"], font["served"]) for font in fonts.values()],
                         [("exact", "NimbusSans-Bold"), ("stand-in", "NimbusSans-Regular"),
                          ("substitute", "NimbusSans-Bold")])
        self.assertEqual({(font["strings"], font["characters"], font["missingGlyphs"]) for font in fonts.values()},
                         {(1, 4, 0)})
        told = 'vx: a.vx: warning: no font "Frutiger-Black", drawn with "NimbusSans-Bold": install it, or '
        self.assertEqual(messages, [told + "choose another with --font-map"])
        for words in (["info"], ["render", "-o", "a.png"]):
            _, messages = self.run_vx(*words, "a.vx", *self.ONLY)
            self.assertEqual(messages, [told + "see vx fonts a.vx"])

    def test_info_tells_it_too(self):
        self.write("a.vx", text_document("Helvetica", "Frutiger"))
        output, _ = self.run_vx("info", "a.vx", *self.ONLY)
        self.assertIn("  fonts           Helvetica: stand-in NimbusSans-Regular, of the same widths; 1 string, 4 characters\n"
                      "                  Frutiger: substitute NimbusSans-Regular; 1 string, 4 characters\n",
                      output.decode())

    def test_a_map_decides(self):
        self.write("a.vx", text_document("Frutiger"))
        self.write("map", b"# ours\nFrutiger = C059-Bold\n")
        fonts, _ = self.fonts("a.vx", *self.ONLY, "--font-map", "map")
        self.assertEqual(fonts["Frutiger"]["served"], "C059-Bold")
        self.write("map", b"Frutiger = Nowhere\n")
        _, messages = self.run_vx("fonts", "a.vx", *self.ONLY, "--font-map", "map", status=2)
        self.assertIn('no font "Nowhere"', messages[0])
        self.write("map", b"Frutiger\n")
        _, messages = self.run_vx("fonts", "a.vx", *self.ONLY, "--font-map", "map", status=2)
        self.assertIn('map: line 1 is "Frutiger"', messages[0])

    def test_a_missing_font_may_fail(self):
        self.write("a.vx", text_document("Frutiger"))
        _, messages = self.run_vx("render", "a.vx", "-o", "a.png", *self.ONLY, "--missing-fonts", "fail", status=1)
        self.assertEqual(messages, ['vx: a.vx: no font "Frutiger", nothing written: install it, or go without '
                                    "--missing-fonts fail"])
        self.assertFalse(os.path.exists(self.path("a.png")))
        self.write("c.vx", text_document("Helvetica", "Frutiger"))
        output, messages = self.run_vx("fonts", "c.vx", *self.ONLY, "--missing-fonts", "fail", status=1)
        self.assertEqual(len(messages), 1, messages)
        self.assertIn("Helvetica  stand-in NimbusSans-Regular", output.decode())
        self.assertIn("Frutiger   missing; 0 strings", output.decode())
        _, messages = self.run_vx("fonts", "a.vx", "--no-system-fonts", "--missing-fonts", "fail", status=1)
        self.assertEqual(len(messages), 1, messages)
        self.write("b.vx", text_document("Helvetica"))
        self.run_vx("render", "b.vx", "-o", "b.png", *self.ONLY, "--missing-fonts", "fail")

    def test_without_fonts_boxes_are_drawn(self):
        self.write("a.vx", text_document("Helvetica"))
        fonts, messages = self.fonts("a.vx", "--no-system-fonts")
        self.assertEqual((fonts["Helvetica"]["match"], fonts["Helvetica"]["missingGlyphs"]), ("missing", 4))
        self.assertEqual(messages, ['vx: a.vx: warning: no font "Helvetica", drawn as boxes: install it, or '
                                    "choose another with --font-map"])

    # Spaced text makes a record a character, which has two bytes in scripts that have such characters.
    def test_the_script_is_that_of_the_fonts_unless_it_is_said(self):
        body = "0 To\n1 0 0 1 2 2 0 Tp\nTP\n0 Tr\n/_{} 12 Tf\n1 Tc\n(\\260\\241\\260\\242) Tx\nTO\n"
        self.write("korean.vx", document(body.format("HYSMyeongJo-Medium")))
        self.write("roman.vx", document(body.format("Helvetica")))
        for name, words, characters in (("korean.vx", [], 2), ("korean.vx", ["--script", "roman"], 4),
                                        ("roman.vx", [], 4), ("roman.vx", ["--script", "korean"], 2)):
            with self.subTest(name=name, words=words):
                output, _ = self.run_vx("trace", name, *words, *self.ONLY)
                self.assertEqual(output.count(b" placement "), characters, output)
        for words in (["info"], ["fonts"], ["render", "-o", "a.png"]):
            self.run_vx(*words, "roman.vx", "--script", "korean", *self.ONLY)
            self.assertIn("--script greek: not known", self.refused(*words, "roman.vx", "--script", "greek", status=2))

    # With the fonts that the samples name there are no warnings, and no glyph is missing.
    def test_the_text_of_the_samples_has_its_fonts(self):
        folders = ("opentype/urw-base35", "opentype/ipafont-gothic", "truetype/baekmuk", "truetype/arphic-bsmi00lp")
        only = ["--no-system-fonts"] + [word for folder in folders for word in ("--font-dir", f"/usr/share/fonts/{folder}")]
        for name in [name for name in sample_names() if name.startswith("text-")]:
            with self.subTest(name):
                fonts, messages = self.fonts(sample(name), *only)
                self.assertGreater(sum(font["characters"] for font in fonts.values()), 5)
                self.assertEqual(sum(font["missingGlyphs"] for font in fonts.values()), 0)
                missing = 5 if name == "text-missing" else 0
                self.assertEqual([font["match"] for font in fonts.values()].count("substitute"), missing)
                self.assertEqual(len(messages), missing)

    def test_a_painted_clip_is_one_string(self):
        fonts, _ = self.fonts(sample("text-clip"), *self.ONLY)
        self.assertEqual((fonts["Helvetica-Bold"]["strings"], fonts["Helvetica-Bold"]["characters"]), (2, 12))

    # Each row has text that is painted and clips, the number of its strings, and that of the characters in them.
    BEGIN = "0 To\n1 0 0 1 40 20 0 Tp\nTP\n4 Tr\n/_Helvetica 12 Tf\n"
    LEGACY = "/_Helvetica 12 14 0 {} z\n(Hand)t\n(of)t\n(cards)t\n"
    PAINTED_CLIPS = [
        ("on the line", BEGIN + "(Hand) Tx\n( of) Tx\n( cards) Tx\n", 3, 13),
        ("raised", BEGIN + "5 Ts\n(Hand) Tx\n( of) Tx\n0 Ts\n( cards) Tx\n", 3, 13),
        ("lowered, then raised, once each", BEGIN + "(Hand) Tx\n-3 Ts\n(of) Tx\n4 Ts\n(of) Tx\n", 3, 8),
        ("raised and spaced", BEGIN + "5 Ts\n2 Tc\n(Hand) Tx\n(of) Tx\n", 2, 6),
        ("raised, of another height", BEGIN + "200 100 Tz\n5 Ts\n(Hand) Tx\n(of) Tx\n", 2, 6),
        ("centred", BEGIN + LEGACY.format(1), 3, 11),
        ("aligned to the right", BEGIN + LEGACY.format(2), 3, 11),
        ("aligned to the right and spaced", BEGIN + "1.5 Tc\n" + LEGACY.format(2), 3, 11),
        ("centred and raised", BEGIN + "5 Ts\n" + LEGACY.format(1), 3, 11),
        ("of every mode", BEGIN + "".join(f"{mode} Tr\n(Hand) Tx\n0 -14 Td\n" for mode in (7, 6, 2, 5, 4, 0)), 6, 24),
        ("of every mode, raised", BEGIN + "5 Ts\n" + "".join(f"{mode} Tr\n(Hand) Tx\n" for mode in (7, 6, 6, 7, 4)), 5, 20),
        ("painted alone, then clipping too", BEGIN + "0 Tr\n(Hand) Tx\n4 Tr\n(of) Tx\n(cards) Tx\n", 3, 11),
        ("clipping alone", BEGIN + "7 Tr\n5 Ts\n(Hand) Tx\n(of) Tx\n", 2, 6),
    ]

    def test_text_that_is_painted_and_clips_is_counted_once(self):
        for name, body, strings, characters in self.PAINTED_CLIPS:
            with self.subTest(name):
                self.write("a.vx", document("0 g\n0 G\n" + body + "TO\n"))
                font = self.fonts("a.vx", *self.ONLY)[0]["Helvetica"]
                self.assertEqual((font["strings"], font["characters"]), (strings, characters))

    def test_what_a_font_lacks_is_counted_once(self):
        self.write("a.vx", document("0 g\n" + self.BEGIN + self.LEGACY.format(2) + "TO\n"))
        fonts, _ = self.fonts("a.vx", "--no-system-fonts")
        self.assertEqual((fonts["Helvetica"]["characters"], fonts["Helvetica"]["missingGlyphs"]), (11, 11))

    def test_the_list(self):
        output, _ = self.run_vx("fonts", "--list", *self.ONLY)
        lines = output.decode().splitlines()
        self.assertIn("NimbusSans-Bold: /usr/share/fonts/opentype/urw-base35/NimbusSans-Bold.otf", lines)
        self.assertIn("Helvetica, stand-in NimbusSans-Regular: "
                      "/usr/share/fonts/opentype/urw-base35/NimbusSans-Regular.otf", lines)
        output, _ = self.run_vx("fonts", "--list", "--json", *self.ONLY)
        self.assertIn("NimbusSans-Bold", [json.loads(line)["name"] for line in output.splitlines()])


class Titles(CommandTest):
    """Text that no font shows: in the character set of the document."""

    WINDOWS = b"%%Creator: Tavro Vellumcraft(TM) for Windows, version 4\n"

    @staticmethod
    def titled(title, comments=b"%VX5_FileFormat 3\n"):
        return (b"%!PS-Tavro-3.0\n" + comments + b"%%Title: " + title + b"\n%%DocumentCustomColors: (" + title + b")\n"
                b"%%BoundingBox: 0 0 9 9\n%%EndComments\n%%BeginSetup\n%%EndSetup\n%%EOF\n")

    def facts(self, *words):
        return json.loads(self.run_vx("info", "--json", "-q", *words)[0])

    def test_the_character_set_is_that_of_the_document(self):
        roman = b"%VX5_FileFormat 3\n"
        japanese = roman + b"%%DocumentFonts: Ryumin-Light-83pv-RKSJ-H\n"
        for title, comments, words, text in (
                (b"Gr\x9a\xa7e", roman, [], "Größe"), (b"Gr\\232e", roman, [], "Gr\\232e"),
                (b"(Gr\\232\\247e)", roman, [], "Größe"), (b"Gr\xf6\xdfe", self.WINDOWS, [], "Größe"),
                ("Größe".encode(), roman, [], "Größe"), ("Größe".encode(), self.WINDOWS, [], "Größe"),
                (b"\x90}\x96\xca", japanese, [], "図面"), (b"\x90}\x96\xca", roman, ["--script", "japanese"], "図面"),
                (b"\x90}\x96\xca", japanese, ["--script", "roman"], "ê}ñ\xa0")):
            with self.subTest(title=title, comments=comments, words=words):
                self.write("a.vx", self.titled(title, comments))
                self.assertEqual(self.facts("a.vx", *words)["title"], text)

    def test_dates_are_told_as_found_and_as_read(self):
        for date, words, read, order in (("3/25/94 10:12 AM", [], "1994-03-25T10:12:00", None),
                                         ("5. M\x8arz 1994", [], "1994-03-05", None), ("3/5/94", [], "", "open"),
                                         ("3/5/94", ["--date-order", "mdy"], "1994-03-05", None),
                                         ("3/5/94", ["--date-order", "dmy"], "1994-05-03", None),
                                         ("last Tuesday", [], "", None)):
            with self.subTest(date=date, words=words):
                self.write("a.vx", self.titled(b"a").replace(b"%%Title", b"%%CreationDate: " + date.encode("latin-1") +
                                                             b"\n%%Title"))
                facts = self.facts("a.vx", *words)
                self.assertEqual((facts["creationDate"], facts["date"], facts.get("dateOrder")),
                                 (date.replace("\x8a", "ä"), read, order))
                self.run_vx("render", "a.vx", "-o", "a.pdf", *words)
                written = b"/CreationDate(D:" + read[:10].replace("-", "").encode()
                self.assertEqual(written in self.read("a.pdf"), read != "")
        self.write("a.vx", self.titled(b"a").replace(b"%%Title", b"%%CreationDate: 3/5/94\n%%Title"))
        self.assertIn(b"3/5/94, the month or the day first: say which with --date-order", self.run_vx("info", "a.vx")[0])
        self.assertEqual(self.run_vx("render", "a.vx", "-o", "b.pdf", "--pdf-x", "x3")[1],
                         ["vx: a.vx: the PDF's date of creation is the file's: choose another with --date, or say with --date-order how to "
                          "read the drawing's own"])
        self.run_vx("render", "a.vx", "-o", "b.pdf", "--pdf-x", "x3", "--date-order", "dmy")

    def test_every_output_has_the_title(self):
        self.write("a.vx", self.titled(b"(Gr\x9a\xa7e)"))
        self.run_vx("render", "a.vx", "-f", "pdf,svg", "-o", "a.{ext}")
        self.assertIn("<title>Größe</title>".encode(), self.read("a.svg"))
        self.assertIn(b"/Title<FEFF0047007200F600DF0065>", self.read("a.pdf"))
        self.assertEqual(self.facts("a.vx")["customColours"], ["(Größe)"])


class Wrapped(CommandTest):
    """Drawings in what other programs put around them on their way."""

    @staticmethod
    def mac_binary(data):
        header = bytearray(128)
        header[1:6] = b"\4harp"
        header[83:87] = struct.pack(">I", len(data))
        return bytes(header) + data + bytes(-len(data) % 128)

    def test_they_are_the_same_picture(self):
        data = document()
        self.write("plain.vx", data)
        self.run_vx("render", "plain.vx", "-o", "plain.png")
        for name, wrapped in (("a byte-order mark", b"\xef\xbb\xbf" + data), ("blank lines", b"\r\n\n" + data),
                              ("other lines before it", b"From: a\nContent-Type: text/plain\n\n" + data),
                              ("NULs at its end", data + bytes(9)), ("MacBinary", self.mac_binary(data))):
            with self.subTest(name):
                self.write("a.vx", wrapped)
                messages = self.run_vx("render", "a.vx", "-v", "-o", "a.png")[1]
                self.assertIn("vx: a.vx: around the drawing: " + name, messages)
                self.assertEqual(self.read("a.png"), self.read("plain.png"))
                facts = json.loads(self.run_vx("info", "--json", "a.vx")[0])
                self.assertEqual((facts["wrapping"], facts["bytes"]), (name, len(wrapped)))
                # Nothing is written over it by mistake.
                self.assertIn("would overwrite the drawing", self.refused("render", "plain.vx", "-f", "svg", "-o", "a.vx", status=2))

    def test_what_is_malformed_is_told_by_its_place_in_the_file(self):
        data = document("1 k\n")
        places = []
        for wrapped in (data, b"From: a\r\n\r\n" + data, self.mac_binary(data)):
            self.write("a.vx", wrapped)
            message, = self.run_vx("info", "a.vx", status=1)[1]
            places.append(int(re.search(r"line (\d+), column 3: \"k\" wants", message)[1]))
        self.assertEqual(places, [places[0], places[0] + 2, places[0]])


class Packed(CommandTest):
    """Drawings in gzip and xz data."""

    LONG = document("\n" * (40 << 20))

    def setUp(self):
        super().setUp()
        self.data = document("".join(f"0 0 m\n{x} {y} L\nS\n" for x in range(40) for y in range(40)))
        self.write("plain.vx", self.data)
        self.run_vx("render", "plain.vx", "-o", "plain.png")

    def expect_same_picture(self, name, names):
        messages = self.run_vx("render", name, "-v", "-o", "a.png", "--strict")[1]
        self.assertIn(f"vx: {name}: around the drawing: {names}", messages)
        self.assertEqual(self.read("a.png"), self.read("plain.png"))

    def facts(self, *words, **options):
        return json.loads(self.run_vx("info", "--json", "-q", *words, **options)[0])

    def test_they_are_the_same_picture(self):
        half = len(self.data) // 2
        for names, packed in (("gzip", gzip.compress(self.data)), ("xz", lzma.compress(self.data)),
                              ("gzip, xz", gzip.compress(lzma.compress(self.data))),
                              ("gzip", gzip.compress(self.data[:half]) + gzip.compress(self.data[half:]) + bytes(512)),
                              ("xz", lzma.compress(self.data[:half]) + bytes(8) + lzma.compress(self.data[half:]) + bytes(512)),
                              ("gzip, MacBinary", gzip.compress(Wrapped.mac_binary(self.data))),
                              ("MacBinary, gzip", Wrapped.mac_binary(gzip.compress(self.data))),
                              ("other lines before it, xz", b"Content-Encoding: xz\r\n\r\n" + lzma.compress(self.data)),
                              ("MacBinary, gzip, MacBinary", Wrapped.mac_binary(gzip.compress(Wrapped.mac_binary(self.data))))):
            with self.subTest(names):
                self.write("b.vx", packed)  # what it is called does not matter
                self.expect_same_picture("b.vx", names)
                facts = self.facts("b.vx")
                unpacked = len(Wrapped.mac_binary(self.data)) if names.endswith("MacBinary") else len(self.data)
                self.assertEqual((facts["wrapping"], facts["bytes"], facts["unpackedBytes"], facts["damage"]),
                                 (names, len(packed), unpacked, ""))
                self.assertIn(b"file            %d bytes, %d unpacked," % (len(packed), unpacked), self.run_vx("info", "b.vx")[0])
                self.assertEqual(self.run_vx("trace", "b.vx")[0], self.run_vx("trace", "plain.vx")[0])
        self.assertEqual(self.run_vx("render", "-", "-o", "-", "-f", "png", stdin=gzip.compress(self.data))[0], self.read("plain.png"))

    def test_a_name_makes_no_archive(self):
        self.write("a.gz", self.data)
        self.run_vx("render", "a.gz", "-o", "a.png")
        self.assertEqual(self.facts("a.gz")["wrapping"], "")
        self.assertEqual(self.facts("a.gz")["unpackedBytes"], len(self.data))

    def test_outputs_are_named_after_the_drawing(self):
        self.write("a.vx.gz", gzip.compress(self.data))
        self.run_vx("render", "a.vx.gz", "-f", "png,svg", "-o", "./")
        self.assertIn("a.png", self.files())
        self.assertIn("a.svg", self.files())

    def test_they_are_not_overwritten(self):
        for pack in (gzip.compress, lzma.compress, lambda data: Wrapped.mac_binary(gzip.compress(data))):
            self.write("a.png", pack(self.data))
            self.assertIn("would overwrite the drawing", self.refused("render", "plain.vx", "-o", "a.png", status=2))

    def test_what_is_cut_is_told(self):
        for name, pack in (("gzip", gzip.compress), ("xz", lzma.compress)):
            with self.subTest(name):
                packed = pack(self.data)
                self.write("a.vx", packed[:len(packed) // 2])
                output, messages = self.run_vx("info", "--json", "--strict", "a.vx", status=3)
                facts = json.loads(output)
                self.assertEqual((facts["damage"], facts["whole"]), (f"the {name} data around it are cut short", False))
                self.assertGreater(facts["unpackedBytes"], 1000)
                self.assertEqual(messages[0], f"vx: a.vx: warning: {facts['damage']}: {facts['unpackedBytes']} bytes came out of them")
                self.run_vx("render", "a.vx", "-o", "a.png", "--strict", status=3)
                self.assertIn(b"damage          the %s data" % name.encode(), self.run_vx("info", "a.vx")[0])
                self.write("b.vx", packed[:10])
                self.assertEqual(self.refused("render", "b.vx", "-o", "b.png", status=1),
                                 f"vx: b.vx: the {name} data around it are cut short, nothing came out of them: get a whole copy")

    def test_what_is_behind_is_told(self):
        self.write("a.vx", gzip.compress(self.data) + b"hello")
        self.assertEqual(self.run_vx("render", "a.vx", "-o", "a.png", "--strict", status=3)[1],
                         [f"vx: a.vx: warning: the gzip data around it are followed by other bytes: {len(self.data)} bytes came out of them"])
        self.assertEqual(self.read("a.png"), self.read("plain.png"))

    def test_what_is_malformed_is_told_by_its_place_in_what_came_out(self):
        data = document("1 k\n")
        self.write("a.vx", data)
        self.write("b.vx", gzip.compress(data))
        message, packed = (self.refused("render", name, "-o", "a.png", status=1) for name in ("a.vx", "b.vx"))
        self.assertIn(", line 9, column 3: ", message)
        self.assertEqual(packed, message.replace("a.vx", "b.vx"))

    def test_a_bomb_ends_at_the_limit_of_memory(self):
        for name, data in (("gzip", gzip.compress(self.LONG)), ("xz", lzma.compress(self.LONG)),
                           ("wrapped", Wrapped.mac_binary(gzip.compress(Wrapped.mac_binary(self.LONG)))),
                           ("both", lzma.compress(gzip.compress(self.LONG)))):
            with self.subTest(name):
                self.write("a.vx", data)
                for words in (["info"], ["trace"], ["render", "-o", "a.png"]):
                    message = self.refused(*words, "a.vx", "--max-memory", "32M", status=5)
                    self.assertIn("needs more than 32 MiB of memory", message)
                    self.assertIn("--max-memory", message)
                self.assertNotIn("a.png", self.files())
                self.run_vx("info", "a.vx", "--max-memory", "128M")

    def test_a_batch_goes_on(self):
        self.write("bomb.vx.gz", gzip.compress(self.LONG))
        self.write("a.vx.xz", lzma.compress(self.data))
        output, _ = self.run_vx("batch", "-f", "png", "-o", "{stem}.png", "--max-memory", "32M", "bomb.vx.gz", "a.vx.xz", "none.vx", status=5)
        self.assertEqual({one["input"]: one["exit"] for one in map(json.loads, output.splitlines())},
                         {"bomb.vx.gz": 5, "a.vx.xz": 0, "none.vx": 1})


class Salvage(CommandTest):
    """Documents of which something is malformed, and drawn without it."""

    def test_the_rest_is_drawn_and_the_loss_told(self):
        self.write("whole.vx", document())
        self.write("bad.vx", document("1 f\n" + LEFT_HALF.replace("f\n", "f\n1\n(a) 2 g\n")))
        formats = ("pdf", "svg", "png")
        self.run_vx("render", "whole.vx", "-f", ",".join(formats), "-o", "{stem}.{ext}")
        messages = self.run_vx("render", "bad.vx", "--salvage", "-f", ",".join(formats), "-o", "{stem}.{ext}", status=3)[1]
        self.assertEqual(messages, ['vx: bad.vx: warning: 2 faults are left out: line 9, column 3: "f" wants no operands, has 1; '
                                    'line 17, column 7: "g" wants 1 number, has 3'])
        for extension in formats:
            self.assertEqual(self.read("bad." + extension), self.read("whole." + extension), extension)
        facts = json.loads(self.run_vx("info", "--salvage", "--json", "bad.vx", status=3)[0])
        self.assertEqual((facts["salvage"]["faults"], facts["salvage"]["cut"]), (2, False))
        self.assertEqual(facts["salvage"]["first"][0], {"line": 9, "column": 3, "text": '"f" wants no operands, has 1'})
        self.assertNotIn("fault", facts)
        self.assertEqual(self.run_vx("trace", "--salvage", "bad.vx", status=3)[0], self.run_vx("trace", "whole.vx")[0])

    def test_a_whole_document_is_drawn_as_ever(self):
        self.write("a.vx", document())
        self.run_vx("render", "a.vx", "-o", "a.png")
        self.assertEqual(self.run_vx("render", "--salvage", "--strict", "a.vx", "-o", "b.png")[1], [])
        self.assertEqual(self.read("a.png"), self.read("b.png"))
        self.assertNotIn("salvage", json.loads(self.run_vx("info", "--salvage", "--json", "a.vx")[0]))

    def test_more_faults_than_are_left_out_cut_the_drawing(self):
        self.write("bad.vx", document(LEFT_HALF + "1 f\n" * 101))
        message, = self.run_vx("render", "bad.vx", "--salvage", "-o", "bad.png", status=3)[1]
        self.assertRegex(message, r"warning: 100 faults are left out: line 15, .*; and so on; "
                                  r'the drawing is cut off at line 115, column 3: "f" wants no operands, has 1$')
        self.assertTrue(Png(self.read("bad.png")).ended)

    def test_a_batch_tells_it_of_each_document(self):
        self.write("bad.vx", document("1 f\n" + LEFT_HALF))
        self.write("good.vx", document())
        output = self.run_vx("batch", "--salvage", "-f", "svg", "-o", ".", "bad.vx", "good.vx", status=3)[0]
        results = {line["input"]: line for line in map(json.loads, output.splitlines())}
        self.assertEqual([results[name]["status"] for name in ("bad.vx", "good.vx")], ["warned", "done"])
        self.assertEqual(results["bad.vx"]["salvage"]["faults"], 1)
        self.assertEqual(self.read("bad.svg"), self.read("good.svg"))

    def test_there_is_nothing_to_keep_without_a_setup_section(self):
        self.write("bad.vx", document().replace(b"%%BeginSetup", b"%%BeginSet"))
        told = self.refused("render", "--salvage", "bad.vx", "-o", "a.png", status=1)
        self.assertIn('line 16: the document ends here, without a line "%%BeginSetup", nothing written: ', told)
        self.assertNotIn("--salvage", told)
        self.assertEqual(self.files(), ["bad.vx"])


class CutShort(CommandTest):
    """Documents of which the end is lost."""

    END = re.compile(rb"(?<=[\r\n])%%(?:PageTrailer|Trailer|EOF)[ \t]*(?=[\r\n]|$)")

    def cuts(self):
        """Each sample, cut at every tenth between the setup's end and the line that ends it."""
        for name in self.whole_samples():
            with open(sample(name), "rb") as file:
                data = file.read()
            start = data.index(b"%%EndSetup") + len(b"%%EndSetup")
            end = self.END.search(data, start).start()
            for tenth in range(1, 10):
                yield self.write("%s-%d.vx" % (name, tenth), data[:start + (end - start) * tenth // 10])

    @staticmethod
    def whole_samples():
        return [name for name in sample_names() if name != "cut-short"]

    def test_no_cut_goes_unnoticed(self):
        output, _ = self.run_vx("info", "--json", "--strict", "-q", *self.cuts(), status=1)
        facts = [json.loads(line) for line in output.splitlines()]
        self.assertEqual(len(facts), 9 * len(self.whole_samples()))
        malformed = [fact["error"] for fact in facts if "error" in fact]
        self.assertTrue(all("the file may be cut short" in error for error in malformed), malformed)
        unnoticed = [fact["file"] for fact in facts if "error" not in fact and fact["whole"]]
        self.assertEqual(unnoticed, [])

    def test_a_whole_drawing_is_not_warned_of(self):
        output, _ = self.run_vx("info", "--json", *[sample(name) for name in self.whole_samples()])
        for line in output.splitlines():
            self.assertEqual((json.loads(line)["whole"], json.loads(line)["open"]), (True, {}), line)

    def test_a_cut_is_a_warning_of_every_command(self):
        self.write("a.vx", document("u\nu\n1 1 1 1 0 0 0 0 0 0 Lb\n0 0 m\n1 1", end=""))
        told = ("vx: a.vx: warning: the file is cut short, no line %%PageTrailer, %%Trailer or %%EOF ends it, within "
                "2 groups and a layer, in the middle of a line: look for a whole copy")
        for words in (["info"], ["fonts"], ["trace"], ["render", "-o", "a.png"], ["render", "-f", "pdf,svg", "-o", "b.{ext}"]):
            with self.subTest(words):
                self.assertEqual(self.run_vx(*words, "a.vx")[1], [told])
                self.run_vx(*words, "a.vx", "--strict", status=3)
        output, _ = self.run_vx("info", "--json", "a.vx")
        facts = json.loads(output)
        self.assertEqual((facts["whole"], facts["open"]), (False, {"groups": 2, "layers": 1}))
        output, _ = self.run_vx("info", "a.vx")
        self.assertIn(b"cut short", output)

    def test_an_end_within_a_placed_section_is_told(self):
        square = "0 0 0 1 k\n0 0 m\n10 0 L\n10 10 L\nf\n"
        body = square + "%VX5_BeginPlace: a\n%!PS\n%%EOF\n%VX5_EndPlace\n"
        placed = "vx: a.vx: warning: 1 placed picture is not drawn"
        told = "vx: a.vx: warning: the drawing ends at line %d, a line %%%%EOF within a placed or binary section, and 33 bytes behind " \
               "that are not drawn: take that line out"
        data = document(body + square)
        line = data[:data.index(b"%%EOF")].count(b"\n") + 1
        for wrapped, place in ((data, line), (data.replace(b"\n", b"\r"), line), (b"From: me\n\n" + data, line + 2),
                               (gzip.compress(b"\r\n\r\n" + data), line + 2)):
            self.write("a.vx", wrapped)
            for words in (["info"], ["render", "-o", "a.png"], ["trace"]):
                with self.subTest((words, place)):
                    self.assertEqual(self.run_vx(*words, "--strict", "a.vx", status=3)[1], [placed, told % place])
            output, _ = self.run_vx("info", "--json", "-q", "a.vx")
            facts = json.loads(output)
            self.assertEqual((facts["whole"], facts["undrawn"], facts["uses"]["fills"]), (True, {"line": place, "bytes": 33}, 1))
            self.assertIn(b"not drawn       33 bytes, behind a line %%%%EOF within a section, line %d" % place,
                          self.run_vx("info", "-q", "a.vx")[0])
        self.write("a.vx", document(body + "% the end\n"))
        self.assertEqual(self.run_vx("info", "a.vx")[1], [placed])
        self.write("a.vx", document("1 k\n" + body + square))  # given up before it
        self.assertEqual(len(self.run_vx("info", "a.vx", status=1)[1]), 1)

    def test_what_a_whole_drawing_leaves_open_is_told_by_info_alone(self):
        self.write("a.vx", document("u\n"))
        output, messages = self.run_vx("info", "a.vx", "--strict")
        self.assertEqual(messages, [])
        self.assertIn(b"left open       a group\n", output)


class Worker(CommandTest):
    def setUp(self):
        super().setUp()
        self.write("a.vx", document())

    def hostile(self, behaviour, *words, status):
        message = self.refused("render", "a.vx", "-o", "a.png", *words, status=status, hostile=behaviour)
        self.assertTrue(message.startswith("vx: a.vx: "), message)
        self.assertEqual(self.files(), ["a.vx", "worker.notes"])
        return message

    def worker_notes(self):
        """Returns what the hostile plug-in noted, without the number of its process, which comes first."""
        return self.read("worker.notes").decode().splitlines()[1:]

    def assert_worker_gone(self):
        worker = int(self.read("worker.notes").split()[0])
        for _ in range(100):
            try:
                os.kill(worker, 0)
            except ProcessLookupError:
                return
            with open("/proc/%d/stat" % worker) as file:
                if file.read().rsplit(")", 1)[1].split()[0] == "Z":
                    return
            time.sleep(0.05)
        self.fail("the worker is still there")

    def test_several_threads_draw_what_one_draws(self):
        """Confined, whatever their number; a drawing with text is read twice."""
        shapes = "".join(f"{i % 10 / 10} g\n{i * 37 % 83} {i * 101 % 83} m\n{i * 7 % 90} {i * 3 % 90} L\n"
                         f"{i * 13 % 90} {i * 29 % 90} L\nf\n" for i in range(2000))
        text = "0 g\n0 To\n1 0 0 1 2 2 0 Tp\nTP\n0 Tr\n/_Helvetica 12 Tf\n(Hand) Tx\nTO\n"
        self.write("a.vx", document(shapes + text))
        for name in ("one.png", "one.tiff"):
            self.run_vx("render", "a.vx", "-o", name, "--fit", "500", "-j", "1")
            alone = self.read(name)
            for jobs in ("2", "3", "8", "64"):
                self.run_vx("render", "a.vx", "-o", name, "--force", "--fit", "500", "-j", jobs)
                self.assertEqual(self.read(name), alone, (name, jobs))

    def test_as_many_threads_draw_as_can_be_had(self):
        self.write("a.vx", document())
        self.run_vx("render", "a.vx", "-o", "a.png", "-j", "1")
        alone = self.read("a.png")
        # Stacks of so many threads do not fit into the limit.
        self.run_vx("render", "a.vx", "-o", "a.png", "-j", "256", "--max-memory", "24M")
        self.assertEqual(self.read("a.png"), alone)

    def test_a_crash_is_one_message(self):
        self.assertIn("crashed", self.hostile("crash", status=6))

    def test_an_end_without_an_answer_is_a_crash(self):
        self.assertIn("crashed", self.hostile("exit", status=6))

    # What begins no frame; a frame longer than any; whole ones that hold no answer.
    def test_what_a_worker_says_is_not_believed(self):
        for behaviour, told in (("babble", "its answer made no sense"), ("boast", "its answer made no sense"),
                                ("forge", "answered nonsense"), ("deep", "answered nonsense")):
            with self.subTest(behaviour):
                self.assertIn(told, self.hostile(behaviour, status=6))

    def test_a_worker_that_closes_its_pipe_is_ended(self):
        self.assertIn("crashed", self.hostile("close", status=6))
        self.assert_worker_gone()

    def test_a_loop_ends_at_the_time_limit(self):
        started = time.monotonic()
        self.assertIn("--max-time", self.hostile("loop", "--max-time", "0.5", status=5))
        self.assertLess(time.monotonic() - started, 30)
        self.assert_worker_gone()

    def test_the_hosts_memory_is_capped(self):
        self.assertIn("--max-memory", self.hostile("memory", "--max-memory", "20M", status=5))

    @unittest.skipIf(SANITIZED, "a sanitizer needs more address space than a memory limit leaves")
    def test_the_workers_memory_is_capped(self):
        self.assertIn("64 MiB of memory", self.hostile("heap", "--max-memory", "64M", status=5))

    @unittest.skipIf(SANITIZED, "a sanitizer needs more address space than a memory limit leaves")
    def test_a_picture_too_large_for_the_memory(self):
        message = self.refused("render", "a.vx", "-o", "a.png", "--width", "16000", "--max-memory", "16M", status=5)
        self.assertIn("memory", message)
        self.assertEqual(self.files(), ["a.vx"])

    @unittest.skipIf(SANITIZED, "a sanitizer needs more address space than a memory limit leaves")
    def test_too_little_memory_for_a_profile_is_no_fault_of_the_profile(self):
        profile = os.path.join(os.environ["VX_SOURCE_DIR"], "devices/colour/profiles/fogra39.icc")
        for words in (["-o", "a.png"], ["-o", "a.pdf", "--pdf-x", "x3"]):
            message = self.refused("render", sample("harp"), "--profile", profile, "--max-memory", "1M", *words, status=5)
            self.assertIn("needs more than 1 MiB of memory, nothing written: allow more with --max-memory", message)
            self.assertNotIn("profile", message)

    def test_a_strange_result_is_an_error_of_the_input(self):
        self.assertIn("-9999", self.hostile("result", status=1))

    def test_a_crash_costs_one_document_and_wins(self):
        self.write("b.vx", document())
        messages = self.run_vx("info", "no.vx", "a.vx", "b.vx", status=6, hostile="crash")[1]
        self.assertEqual(len(messages), 3)

    def start_loop(self, **options):
        """Starts a rendering that never ends, and returns it when its worker is at work."""
        process = self.start("render", "a.vx", "-o", "a.png", hostile="loop", **options)
        for _ in range(600):
            if os.path.exists(self.path("worker.notes")) and self.read("worker.notes").endswith(b"\n"):
                return process
            time.sleep(0.05)
        self.fail("the worker does not start")

    def test_interrupts_leave_nothing(self):
        for preload in ({}, WITHOUT_UNNAMED):
            for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
                with self.subTest(signal=number, preload=preload):
                    process = self.start_loop(environment=preload)
                    if preload:
                        self.assertTrue(any(name.endswith(".part") for name in self.files()), self.files())
                    process.send_signal(number)
                    errors = process.communicate(timeout=60)[1]
                    self.assertEqual((process.returncode, errors), (130, b""))
                    self.assertEqual(self.files(), ["a.vx", "worker.notes"])
                    self.assert_worker_gone()
                    os.remove(self.path("worker.notes"))

    def test_an_end_by_force_leaves_nothing(self):
        try:
            os.close(os.open(self.folder, os.O_TMPFILE | os.O_RDWR, 0o600))
        except OSError:
            self.skipTest("this file system cannot make files without a name")
        self.write("a.png", b"old")
        process = self.start_loop()
        process.kill()
        process.communicate(timeout=60)
        self.assert_worker_gone()
        self.assertEqual(self.files(), ["a.png", "a.vx", "worker.notes"])
        self.assertEqual(self.read("a.png"), b"old")

    def test_a_worker_reaches_nothing_but_fonts(self):
        """This needs Landlock and seccomp. The command tells of a kernel without them, and then the test is skipped."""
        fonts = "/usr/share/fonts/opentype/urw-base35"
        details = self.run_vx("info", "-v", self.write("b.vx", document()))[1]
        lacking = [line for line in details if "no sandbox" in line]
        if lacking:
            self.skipTest(lacking[0])
        self.write("mine", b"mine")
        self.write("text.vx", document("0 To\n1 0 0 1 2 2 0 Tp\nTP\n0 Tr\n/_Helvetica 12 Tf\n(A) Tx\nTO\n"))
        self.run_vx("info", "text.vx", "--font-dir", fonts, status=1, hostile="reach", environment={
            "VX_HOSTILE_READ": "/etc/passwd", "VX_HOSTILE_WRITE": self.path("mine"),
            "VX_HOSTILE_CREATE": self.path("new"), "VX_HOSTILE_FONT": fonts + "/NimbusSans-Regular.otf"})
        notes = self.worker_notes()
        denied = ["read %d" % errno.EACCES, "write %d" % errno.EPERM, "create %d" % errno.EPERM, "font 0"]
        denied += ["%s %d" % (what, errno.EPERM) for what in ("internet", "local", "signal")]
        denied += ["core 0", "processes 0", "files 256", "size %d" % (256 << 20)]
        denied += ["self 0", "process %d" % errno.EPERM, "program %d" % errno.EPERM]
        self.assertEqual(notes[:len(denied)], denied)
        self.assertNotIn("new", self.files())
        # A large input may have a large output, however it comes.
        large = document("%" * (9 << 20) + "\n")
        self.write("large.vx", large)
        for name, words in (("large.vx", {}), ("-", {"stdin": large})):
            self.run_vx("info", name, status=1, hostile="reach", **words)
            self.assertIn("size %d" % (32 * len(large)), self.worker_notes())
        # A document without text is given no fonts.
        self.run_vx("info", "a.vx", "--font-dir", fonts, status=1, hostile="reach",
                    environment={"VX_HOSTILE_FONT": fonts + "/NimbusSans-Regular.otf"})
        self.assertIn("font %d" % errno.EACCES, self.worker_notes())

    def test_what_a_worker_that_was_taken_over_can_still_do(self):
        """Everything fails with EPERM, but for these, for which docs/security.md gives reasons."""
        possible = {"memory", "existence-and-size", "thread-signal-to-itself", "input", "output"}
        confined = json.loads(self.run_vx("info", "--json", "a.vx")[0])["confinedBy"]
        if confined != ["landlock", "seccomp"]:
            self.skipTest("this kernel confines by %s alone" % confined)
        output, _ = self.run_vx("render", "a.vx", "-o", "a.png", status=1, hostile="probe", stdin=b"secret")
        self.assertEqual(output, b"")
        notes = [line.split() for line in self.worker_notes()]
        streams = [(what, number) for what, number in notes if what.startswith("is-")]
        # The descriptors that it was started with lead nowhere. It has its pipe, the rules of files and the output, and no other.
        self.assertEqual(streams[:2], [("is-device", "0"), ("is-device", "1")])
        if not SANITIZED:  # which tells there what it found
            self.assertEqual(streams[2], ("is-device", "2"))
        self.assertEqual(sorted(what for what, _ in streams[3:]), ["is-file", "is-other", "is-pipe"])
        tried = {what: int(number) for what, number in notes if not what.startswith("is-")}
        self.assertEqual({what for what in tried if tried[what] == 0}, possible)
        self.assertEqual(tried.pop("lengthen"), errno.EFBIG)
        self.assertEqual({number for what, number in tried.items() if what not in possible}, {errno.EPERM})
        self.assertGreater(len(tried), 45)

    UNCONFINED = ("vx: no sandbox for files, no Landlock in this kernel (function not implemented): documents are read all "
                  "the same, --require-sandbox refuses")

    def test_a_kernel_that_cannot_confine_is_told_and_does_not_stop(self):
        for words in (["info", "a.vx"], ["render", "a.vx", "-o", "a.pdf"]):
            messages = self.run_vx(*words, "-v", environment=WITHOUT_LANDLOCK)[1]
            self.assertIn(self.UNCONFINED, messages)
            # It is said once, however many documents there are, and is no warning.
            self.assertEqual(self.run_vx(*words, "--strict", environment=WITHOUT_LANDLOCK)[1], [self.UNCONFINED])
            self.assertEqual(self.run_vx(*words, "-q", environment=WITHOUT_LANDLOCK)[1], [])
        output, messages = self.run_vx("info", "--json", "a.vx", "a.vx", environment=WITHOUT_LANDLOCK)
        self.assertEqual([json.loads(line)["confinedBy"] for line in output.splitlines()], [["seccomp"]] * 2)
        self.assertEqual(messages, [self.UNCONFINED])

    def test_a_sandbox_can_be_required(self):
        self.run_vx("info", "--require-sandbox", "a.vx")
        for words in (["info", "a.vx"], ["render", "a.vx", "-o", "a.png"], ["trace", "a.vx"], ["fonts", "a.vx"]):
            message = self.refused(*words, "--require-sandbox", status=1, environment=WITHOUT_LANDLOCK)
            self.assertEqual(message, "vx: a.vx: not read, there is no sandbox for files, no Landlock in this kernel "
                                      "(function not implemented): take a kernel that has it, or go without "
                                      "--require-sandbox")
        # Nor fonts and profiles, before any document.
        self.write("press.icc", b"never read")
        for words, subject in ((["fonts", "--list"], ""), (["render", "a.vx", "-o", "a.png", "--profile", "press.icc"],
                                                           "--profile: ")):
            told = self.refused(*words, "--require-sandbox", status=1, environment=WITHOUT_LANDLOCK)
            self.assertTrue(told.startswith(f"vx: {subject}not read, there is no sandbox for files, "), told)
        self.assertEqual(self.files(), ["a.vx", "press.icc"])


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
