"""What vx check finds. Each finding has a document that has it, and a twin that just does not."""
import base64
import gzip
import html.parser
import json
import os
import re
import shutil
import struct
import sys
import unittest

from vxcommand import CommandTest, Png, document, sample, sample_names

NIMBUS = "/usr/share/fonts/opentype/urw-base35/NimbusSans-Regular.otf"
PAGE = "0 0 m\n72 0 l\n72 36 l\n0 36 l\nf\n"


def line(width, ink="0 0 0 1 K", y=10):
    return f"{ink}\n{width} w\n10 {y} m\n60 {y} l\nS\n"


def box(left, bottom, right, top, ink="0 0 0 1 k"):
    return f"{ink}\n{left} {bottom} m\n{right} {bottom} l\n{right} {top} l\n{left} {top} l\nf\n"


def text(ink="0 0 0 1 k", size=20, font="Helvetica", words="(HHH) Tx\n"):
    return f"{ink}\n0 To\n1 0 0 1 4 4 0 Tp\nTP\n0 Tr\n/_{font} {size} Tf\n{words}TO\n"


def strips(count, step, width, y=0):
    """Fields side by side, each of a little more black."""
    return "".join(box(1 + i * width, y, 1 + (i + 1) * width, y + 10, f"0 0 0 {0.1 + i * step:.4f} k") for i in range(count))


def layer(name, prints=1, body=""):
    return f"1 1 1 {prints} 0 0 0 79 128 255 Lb\n({name}) Ln\n{body}LB\n"


def headed(line_of_header, body):
    return document(body).replace(b"%%EndComments\n", line_of_header.encode() + b"\n%%EndComments\n")


WHITE_PAPER = box(0, 0, 72, 36, "0 0 0 0 k")
CYAN_PAGE = "0.5 0 0 0 k\n" + PAGE
SPOT = "0 1 1 0 (Brick) 0 x\n" + PAGE

# name: a document that has the finding, what is told of it, and documents that do not have it. Places are in points.
CASES = {
    # The page is 150 pixels wide: the first of them, at the top, is 0.48 pt wide. 3 of 255 levels are 1.176 %.
    "total-ink": ("1 1 1 0.01 k\n" + PAGE, {"count": 1, "value": 301.2, "limit": 300, "at": [0.24, 35.76]}, ["1 1 1 0 k\n" + PAGE]),
    "hairline": (line(0.24) + line(0.1, y=20) + line(0.25, y=30), {"count": 2, "value": 0.1, "limit": 0.25, "at": [35, 10]},
                 [line(0.25), line(0.1, y=-50), line(0.1, y=40), "1 R\n" + line(0.1, "0 0 0 0 K"), line(0)]),
    "zero-width-line": (line(0), {"count": 1, "at": [35, 10]}, [line(0.001), line(0, y=50)]),
    "white-overprint": ("1 O\n" + box(10, 10, 30, 20, "0 0 0 0 k") + "1 R\n" + line(2, "1 G") + text("0 1 0 0 (Ink) 1 x"),
                        {"count": 3, "at": [20, 15]},
                        [WHITE_PAPER, "1 O\n" + box(10, 10, 30, 20, "0 0 0.01 0 k"), "1 O\n" + box(80, 10, 90, 20, "0 0 0 0 k"),
                         "1 O\n0 0 0 0 (Varnish) 0 x\n" + PAGE]),
    # The baseline begins at (4, 4); an H of Helvetica is 0.722 em wide, and letters are taken to be 0.7 em high.
    "black-text-knockout": (CYAN_PAGE + text() + text(), {"count": 2, "at": [25.66, 11]},
                            [text(), CYAN_PAGE + "1 O\n" + text(), CYAN_PAGE + text("0 0 0 0.99 k"), CYAN_PAGE + text("0.1 0 0 1 k"),
                             "0 0 0 0.5 k\n" + PAGE + text(), box(0, 20, 72, 36, "1 0 0 0 k") + text()]),
    "rich-black-text": (text("0.2 0 0 0.9 k", 11.9) + text("0.06 0.05 0 1 k", 9, words="(H) Tx\n(I) Tx\n"),
                        {"count": 2, "value": 9, "limit": 12, "at": [4 + 11.9 * 0.722 * 1.5, 4 + 11.9 * 0.35]},
                        [text("0.2 0 0 1 k", 12), text("0.1 0 0 1 k", 9), text("0.5 0 0 0.89 k", 9), text("0 g", 9)]),
    # Two pixels of 300 an inch are 0.48 pt.
    "gradient-steps": (strips(6, 0.03, 0.48) + strips(7, 0.021, 9, 20), {"count": 2, "value": 3, "limit": 2, "at": [2.44, 5]},
                       [strips(6, 0.02, 10), strips(6, 0.03, 0.47), strips(5, 0.03, 10), strips(6, 0.09, 10),
                        "".join(strips(6, 0.03, 8).splitlines(True)[i] for i in range(0, 36) if i // 6 % 2 == 0)]),
    "outside-page": (box(10, 10, 73.1, 20) + box(-5, -2, 10, 10), {"count": 2, "value": 5, "limit": 1, "at": [72.55, 15]},
                     [box(-1, -1, 73, 37), box(0, 0, 99, 36, "0 0 0 0 k"), "0 0 m\n9 0 l\n9 9 l\n0 9 l\nh\nW\nn\n" + box(0, 0, 99, 99)]),
    "picture-not-painted": ("%VX5_BeginPlace\n%VX5_EndPlace\n", {"count": 1}, [""]),
    "binary-not-painted": ("%%BeginBinary: 3\n(((\n%%EndBinary\n", {"count": 1}, [""]),
    "postscript-not-painted": ("` ~\n", {"count": 1}, [""]),
    "pattern-not-painted": ("(a) 1 2 3 4 5 6 7 8 9 10 p\n" + PAGE, {"count": 1}, [""]),
    "between-layers": (layer("A") + PAGE + layer("B"), {"count": 1}, [layer("A", body=PAGE) + layer("B")]),
    "unknown-operator": ("1 2 Qx\n", {"count": 1}, [""]),
    "layer-not-printing": (layer("Guides", 0, PAGE), {"count": 1, "names": ["Guides"], "severity": "note"}, [layer("Guides", 1, PAGE)]),
    "cut-short": (document(PAGE, end=""), {"count": 1, "severity": "error"}, [PAGE]),
    "end-not-drawn": ("%VX5_BeginPlace\n%%EOF\n%VX5_EndPlace\n0 g\n" + PAGE, {"line": 10}, [PAGE]),
    "ink-not-declared": (headed("%%DocumentProcessColors: Black", CYAN_PAGE + "0 0 0 1 k\n" + box(0, 0, 9, 9)), {"count": 1, "names": ["Cyan"]},
                         [headed("%%DocumentProcessColors: Cyan", CYAN_PAGE), CYAN_PAGE, headed("%%DocumentCustomColors: (Brick)", CYAN_PAGE + SPOT)]),
    "ink-not-used": (headed("%%DocumentProcessColors: Cyan Black", CYAN_PAGE), {"count": 1, "names": ["Black"], "severity": "note"},
                     [headed("%%DocumentProcessColors: Cyan", CYAN_PAGE)]),
    "spot-ink-mixtures": (SPOT + SPOT.replace("0 1 1", "0 1 0.5"), {"count": 1, "names": ["Brick"]}, [SPOT + SPOT]),
    "spot-ink-without-plate": (SPOT.replace("Brick", "All"), {"count": 1, "names": ["All"]}, [SPOT]),
    "spot-inks": (SPOT, {"count": 1, "names": ["Brick"], "severity": "note"}, [CYAN_PAGE, SPOT.replace("0 x", "1 x")]),
    "inks": (CYAN_PAGE + SPOT, {"count": 1, "names": ["Brick"], "severity": "note"}, [WHITE_PAPER]),
}


def whole(body):
    return body if isinstance(body, bytes) else document(body)


def closed_fonts():
    """Text is set in a font of a known width, whatever the machine has."""
    return ["--no-system-fonts", "--font-dir", "fonts"]


class Findings(CommandTest):
    def setUp(self):
        super().setUp()
        os.mkdir(self.path("fonts"))
        shutil.copy(NIMBUS, self.path("fonts"))

    def checked(self, *words, status=None):
        process = self.start("check", "--json", *closed_fonts(), *words)
        output, errors = process.communicate(timeout=120)
        self.assertIn(process.returncode, (0, 3), errors)
        objects = [json.loads(line) for line in output.splitlines()]
        self.assertEqual(process.returncode == 3, any(one["errors"] + one["warnings"] > 0 for one in objects))
        if status is not None:
            self.assertEqual(process.returncode, status, objects)
        return objects

    def found(self, data, *words):
        self.write("a.vx", whole(data))
        return {finding["name"]: finding for finding in self.checked("a.vx", *words)[0]["findings"]}

    def test_each_and_its_twins(self):
        for name, (has, told, twins) in CASES.items():
            with self.subTest(name):
                findings = self.found(has)
                self.assertIn(name, findings)
                finding = findings[name]
                self.assertEqual(finding.get("severity"), told.get("severity", finding["severity"]))
                for member, value in told.items():
                    if member == "at":
                        for one, other in zip(finding["at"], value):
                            self.assertAlmostEqual(one, other, 1)
                    else:
                        self.assertEqual(finding[member], value, member)
            for number, twin in enumerate(twins):
                with self.subTest(name, twin=number):
                    self.assertNotIn(name, self.found(twin))

    def test_fonts(self):
        self.write("a.vx", document(text(font="Nowhere") + text(font="Nowhere-Bold")))
        output, _ = self.run_vx("check", "--json", "--no-system-fonts", "a.vx", status=3)
        finding = json.loads(output)["findings"][0]
        self.assertEqual([finding[member] for member in ("name", "severity", "count", "names")],
                         ["font-missing", "error", 2, ["Nowhere", "Nowhere-Bold"]])
        self.assertEqual(len(finding["places"]), 2)
        self.assertNotIn("font-missing", self.found(text(font="Nowhere")))
        self.assertEqual(self.found(text(font="NimbusSans-Bold"))["font-substituted"]["names"], ["NimbusSans-Bold by NimbusSans-Regular"])
        self.assertNotIn("font-substituted", self.found(text(font="NimbusSans-Regular")))
        with open(NIMBUS, "rb") as file:
            font = bytearray(file.read())
        tables = struct.unpack(">H", font[4:6])[0]
        at = next(struct.unpack(">I", font[20 + 16 * i:24 + 16 * i])[0] for i in range(tables) if font[12 + 16 * i:16 + 16 * i] == b"OS/2")
        for rights, forbids in ((2, True), (8, False), (0x100, True), (4, False)):
            font[at + 8:at + 10] = struct.pack(">H", rights)
            self.write("fonts/NimbusSans-Regular.otf", bytes(font))
            findings = self.found(text(font="NimbusSans-Regular"))
            self.assertEqual("font-not-embeddable" in findings, forbids, rights)

    def test_characters_that_a_font_lacks(self):
        # The last character but fifteen of the Macintosh's is a maker's mark, which no free font has.
        findings = self.found(text(words="(A\\360\\360) Tx\n"))
        self.assertEqual((findings["font-lacks-characters"]["count"], findings["font-lacks-characters"]["names"]), (2, ["NimbusSans-Regular"]))
        self.assertNotIn("font-lacks-characters", self.found(text()))

    def test_damage(self):
        self.write("a.vx", gzip.compress(document(PAGE * 200))[:-9])
        self.assertIn("packing-damaged", {finding["name"] for finding in self.checked("a.vx", status=3)[0]["findings"]})
        self.write("b.vx", document(PAGE + "1 k\n" + PAGE + "2 k\n"))
        finding = self.checked("--salvage", "b.vx", status=3)[0]["findings"][0]
        self.assertEqual({member: finding[member] for member in ("name", "severity", "count", "line")},
                         {"name": "malformed", "severity": "error", "count": 2, "line": 14})
        self.assertIn('"k" wants 4 numbers, has 1', finding["text"])

    def test_a_document_without_anything_wrong(self):
        self.write("a.vx", document(CYAN_PAGE + line(1) + text("0 1 1 0 k")))
        one = self.checked("a.vx", status=0)[0]
        self.assertEqual([finding["name"] for finding in one["findings"]], ["inks"])
        self.assertEqual((one["errors"], one["warnings"], one["notes"]), (0, 0, 1))
        self.assertEqual((one["file"], one["title"], one["box"]), ("a.vx", "A (small) square", [0, 0, 72, 36]))

    def test_layers_are_named_and_chosen(self):
        self.write("a.vx", document(layer("Map", 1, line(0.1)) + layer("Guides", 0, line(0.2))))
        finding = {one["name"]: one for one in self.checked("a.vx")[0]["findings"]}["hairline"]
        self.assertEqual((finding["count"], [place["layer"] for place in finding["places"]]), (1, ["Map"]))
        names = {one["name"]: one for one in self.checked("a.vx", "--layers", "all")[0]["findings"]}
        self.assertEqual(names["hairline"]["count"], 2)
        self.assertNotIn("layer-not-printing", names)

    def test_places_are_bounded(self):
        finding = self.found(line(0.1) * 1000)["hairline"]
        self.assertEqual((finding["count"], len(finding["places"])), (1000, 100))

    def test_a_box_is_the_page(self):
        self.assertNotIn("hairline", self.found(line(0.1), "--box", "0,20,72,36"))
        self.assertIn("outside-page", self.found(box(0, 0, 72, 36), "--box", "0,20,72,36"))

    def test_samples(self):
        """None of them crashes; the drawings among them that have nothing wrong give 0."""
        clean = {"paths", "line-caps", "gradient-cmyk", "gradient-midpoints", "spot-inks", "overprint", "groups"}
        for name in sample_names():
            with self.subTest(name):
                process = self.start("check", "--json", "--dpi", "30", sample(name))
                output, errors = process.communicate(timeout=120)
                self.assertIn(process.returncode, (0,) if name in clean else (0, 3), errors)
                self.assertEqual(json.loads(output)["file"], sample(name))


class Check(CommandTest):
    def test_words(self):
        self.write("a.vx", document(layer("Map", 1, line(0.1)) + layer("", 1, line(0))))
        output, messages = self.run_vx("check", "a.vx", status=3)
        self.assertEqual(messages, [])
        self.assertEqual(output.decode().splitlines(), [
            "a.vx",
            '  warning  hairline                    1  lines thinner than 0.25 pt, the thinnest of 0.1 pt; at 35.0, 10.0 pt on layer "Map"',
            "  warning  zero-width-line             1  lines of width 0, which are as thin as the printer can make them; at 35.0, 10.0 pt",
            "  note     inks                        1  inks that print: Black"])

    def test_limits(self):
        self.write("a.vx", document(line(0.2) + CYAN_PAGE))
        cases = [({"limits": {"hairline": 0.2}}, 0, []), ({"limits": {"hairline": 0.21}}, 3, ["warning"]),
                 ({"severities": {"hairline": "error"}}, 3, ["error"]), ({"severities": {"hairline": "note", "inks": "ignore"}}, 0, ["note"]),
                 ({"severities": {"hairline": "ignore", "inks": "warning"}}, 3, []), ({}, 3, ["warning"])]
        for limits, status, severities in cases:
            with self.subTest(limits):
                self.write("limits.json", json.dumps(limits).encode())
                output, _ = self.run_vx("check", "--json", "a.vx", "--limits", "limits.json", status=status)
                found = [finding for finding in json.loads(output)["findings"] if finding["name"] == "hairline"]
                self.assertEqual([finding["severity"] for finding in found], severities)
        self.write("limits.json", b'{"limits": {"total-ink": 49.9}}')
        output, _ = self.run_vx("check", "--json", "a.vx", "--limits", "limits.json", status=3)
        self.assertIn("total-ink", output.decode())

    def test_what_is_wrong_is_told(self):
        self.write("a.vx", document())
        self.write("b.vx", document())
        self.write("page.html", document())
        form = 'write it as {"limits": {"hairline": 0.2}, "severities": {"hairline": "error"}}'
        files = {
            b"no": "no JSON at byte 2: mend it there",
            b"[]": f"the file is no object: {form}",
            b'{"limit": {}}': 'no member "limit": give "limits" and "severities"',
            b'{"limits": 3}': f"limits is no object: {form}",
            b'{"limits": {"hair": 1}}': 'no limit "hair": give one of total-ink, hairline, rich-black-size, rich-black-black, '
                                        "rich-black-others, gradient-step, gradient-dpi, outside-page",
            b'{"limits": {"hairline": "1"}}': 'hairline is "1", not a number from 0 to 1000',
            b'{"limits": {"hairline": -1}}': "hairline is -1, not a number from 0 to 1000",
            b'{"limits": {"hairline": [1]}}': "hairline is an object or a list, not a number from 0 to 1000",
            b'{"limits": {"hairline": 1e999}}': "a number is out of range: give a smaller one",
            b'{"severities": {"hairline": "bad"}}': 'hairline is "bad": give "error", "warning", "note" or "ignore"',
            b" " * 70000: "longer than 65536 bytes, the most that limits may have: leave out what is as by default",
        }
        for data, told in files.items():
            with self.subTest(data[:40]):
                self.write("limits.json", data)
                message = self.refused("check", "a.vx", "--limits", "limits.json", "--html", "out.html", status=2)
                self.assertEqual(message, "vx: --limits limits.json: " + told)
        self.write("limits.json", b'{"severities": {"hare": "note"}}')
        message = self.refused("check", "a.vx", "--limits", "limits.json", status=2)
        self.assertRegex(message, r'^vx: --limits limits.json: no finding "hare": give one of malformed, .*hairline, .*inks$')
        self.assertIn("no such file", self.refused("check", "a.vx", "--limits", "none.json", status=2).lower())
        cases = {
            ("a.vx", "--html", "a.pdf"): "--html a.pdf: html is written: name a .html",
            ("a.vx", "--html", "-"): "--html -: html is written: name a .html",
            ("a.vx", "--html", "page.html"): '--html page.html: would overwrite the drawing "page.html": choose another name, or add --force',
            ("a.vx", "--samples", "3"): "--samples 3: not known: give one of 1, 2, 4, 8",
        }
        for words, told in cases.items():
            with self.subTest(words):
                self.assertEqual(self.refused("check", *words, status=2), "vx: " + told)
        message = self.refused("check", "a.vx", "b.vx", "--html", "one.html", status=2)
        self.assertRegex(message, r"^vx: --html one.html: .* would both be written .* as --html '\{dir\}/\{stem\}.\{ext\}'$")
        self.assertEqual(self.files(), ["a.vx", "b.vx", "limits.json", "page.html"])

    def test_a_document_that_cannot_be_read(self):
        self.write("a.vx", document())
        self.write("bad.vx", document(PAGE + "1 k\n"))
        output, messages = self.run_vx("check", "--json", "bad.vx", "none.vx", "a.vx", "--html", "{stem}.html", status=1)
        objects = [json.loads(line) for line in output.splitlines()]
        self.assertEqual([sorted(one) for one in objects[:2]], [["error", "file"]] * 2)
        self.assertIn('"k" wants 4 numbers, has 1', objects[0]["error"])
        self.assertEqual(objects[2]["errors"], 0)
        self.assertEqual(len(messages), 2)
        self.assertEqual(self.files(), ["a.html", "a.vx", "bad.vx"])
        self.refused("check", "bad.vx", status=1)

    def test_a_pipe(self):
        output, _ = self.run_vx("check", "-", stdin=document())
        self.assertEqual(output.decode().splitlines()[0], "standard input")


class Tags(html.parser.HTMLParser):
    """Gathers the elements of a page, and what stands in its scripts."""

    def __init__(self, page):
        super().__init__()
        self.elements, self.scripts, self.open = [], [], None
        self.feed(page)

    def handle_starttag(self, tag, attributes):
        self.elements.append((tag, dict(attributes)))
        if tag == "script":
            self.scripts.append("")
            self.open = tag

    def handle_endtag(self, tag):
        self.open = None

    def handle_data(self, data):
        if self.open == "script":
            self.scripts[-1] += data


class CheckPages(CommandTest):
    def page(self, data, *words, status=3):
        self.write("a.vx", data)
        self.run_vx("check", "a.vx", "--html", "a.html", *words, status=status)
        return self.read("a.html").decode()

    def test_it_needs_nothing_else(self):
        page = self.page(document(SPOT + line(0.1)))
        tags = Tags(page)
        for tag, attributes in tags.elements:
            self.assertNotIn(tag, ("link", "base", "iframe", "object", "embed"))
            self.assertFalse({"src", "href", "srcset", "style"} & set(attributes), tag)
        self.assertNotRegex(page, r"https?:|url\(|@import|import\(|fetch\(|XMLHttpRequest")
        self.assertEqual([attributes.get("type") for tag, attributes in tags.elements if tag == "script"], ["application/json", None])

    def test_its_colours_can_be_read(self):
        """In the light and in the dark, each text has four and a half times the light of what is behind it, or the other way round."""
        def light(colour):
            parts = [int(colour[at:at + 2], 16) / 255 for at in (1, 3, 5)]
            red, green, blue = (part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4 for part in parts)
            return 0.2126 * red + 0.7152 * green + 0.0722 * blue

        page = self.page(document(), status=0)
        themes = [dict(re.findall(r"--(\w+): (#\w{6})", block)) for block in re.findall(r":root \{(.*?)\}", page, re.DOTALL)]
        self.assertEqual(len(themes), 2)
        for theme in themes:
            for text in ("text", "faint", "error", "warning", "note"):
                for ground in ("sheet", "ground", "chosen"):
                    dark, bright = sorted((light(theme[text]), light(theme[ground])))
                    self.assertGreaterEqual((bright + 0.05) / (dark + 0.05), 4.5, (text, ground))

    def test_it_has_the_pictures_and_the_findings(self):
        page = self.page(document(SPOT + line(0.1)), "--dpi", "36")
        facts = json.loads(Tags(page).scripts[0])
        self.assertEqual([plate["ink"] for plate in facts["plates"]], ["Cyan", "Magenta", "Yellow", "Black", "Brick"])
        self.assertEqual(facts["plates"][0]["colour"][0], "#")
        self.assertIn("hairline", [finding["name"] for finding in facts["findings"]])
        for picture in (facts["picture"], facts["heatMap"], *(plate["png"] for plate in facts["plates"])):
            head, data = picture.split(",")
            self.assertEqual(head, "data:image/png;base64")
            png = Png(base64.b64decode(data, validate=True))
            self.assertEqual((png.width, png.height, png.ended), (36, 18, True))
        # All of Brick is painted: its plate is black.
        plate = Png(base64.b64decode(facts["plates"][4]["png"].split(",")[1]))
        self.assertEqual(plate.pixel(5, 2), (0,))

    def test_names_cannot_become_markup(self):
        evil = "</script><script>alert(1)</script><!--<img src=x onerror=alert(2)>"
        data = document(f"0 1 1 0 ({evil}) 0 x\n" + PAGE + layer(evil, 0)).replace(b"A \\(small\\) square", evil.encode())
        tags = Tags(self.page(data, status=0))
        self.assertEqual(len(tags.scripts), 2)
        facts = json.loads(tags.scripts[0])
        self.assertEqual(facts["title"], evil)
        self.assertEqual(facts["plates"][4]["ink"], evil)
        self.assertNotIn("<", tags.scripts[0])
        self.assertNotIn("innerHTML", tags.scripts[1])

    def test_folders_are_made(self):
        self.write("a.vx", document())
        self.refused("check", "a.vx", "--html", "out/{stem}.html", "--no-mkdir", status=4)
        self.run_vx("check", "a.vx", "--html", "out/{stem}.html")
        self.assertEqual(os.listdir(self.path("out")), ["a.html"])
        self.run_vx("check", "a.vx", "--html", "./")
        self.assertIn("a.html", self.files())


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
