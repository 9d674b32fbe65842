"""SVG files as other programs see them: an XML reader, and rsvg-convert.

The environment names what is tested: VX the program, VX_SANITIZED whether it is instrumented.
"""
import base64
import os
import re
import resource
import struct
import unittest
import xml.etree.ElementTree as ElementTree

import pictures
from vxcommand import CommandTest, SANITIZED, document, sample, sample_names

SVG = "{http://www.w3.org/2000/svg}"
XLINK = "{http://www.w3.org/1999/xlink}"


class SvgTest(CommandTest):
    def svg(self, source, *words):
        """The bytes that vx makes of a document."""
        self.run_vx("render", source, "-f", "svg", "-o", "out.svg", "-q", *words)
        return self.read("out.svg")

    def root(self, source, *words):
        return ElementTree.fromstring(self.svg(source, *words))


class Files(SvgTest):
    ELEMENTS = {"svg", "title", "g", "path", "rect", "circle", "text", "tspan", "style", "clipPath", "linearGradient",
                "radialGradient", "stop"}

    def check_inks(self, element):
        for name, value in element.attrib.items():
            kind = re.fullmatch(r"data-(?:stroke-)?(cmyk|gray)", name)
            if kind:
                inks = [float(ink) for ink in value.split(" ")]
                self.assertEqual(len(inks), 4 if kind[1] == "cmyk" else 1)
                self.assertTrue(all(0 <= ink <= 1 for ink in inks), value)

    def check_paint(self, element):
        """Each colour of the screen has the numbers of the document beside it."""
        for use, prefix in (("fill", "data-"), ("stroke", "data-stroke-")):
            if element.get(use, "").startswith("#"):
                self.assertRegex(element.get(use), r"^#[0-9a-f]{6}$")
                self.assertEqual((prefix + "cmyk" in element.attrib) + (prefix + "gray" in element.attrib), 1)

    def check_references(self, root):
        ids = [element.get("id") for element in root.iter() if element.get("id")]
        self.assertEqual(len(ids), len(set(ids)), "an id is used twice")
        for element in root.iter():
            for value in element.attrib.values():
                for name in re.findall(r"url\(#(.*?)\)", value):
                    self.assertIn(name, ids)
            if element.get(XLINK + "href"):
                self.assertIn(element.get(XLINK + "href")[1:], ids)

    def test_every_sample_is_well_formed(self):
        for name in sample_names():
            for words in ((), ("--text", "outlines"), ("--text", "editable")):
                with self.subTest(sample=name, words=words):
                    root = self.root(sample(name), *words)
                    self.assertEqual(root.tag, SVG + "svg")
                    width, height = (float(root.get(side).removesuffix("pt")) for side in ("width", "height"))
                    self.assertEqual(root.get("viewBox").split(" ")[:2], ["0", "0"])
                    self.assertEqual([float(number) for number in root.get("viewBox").split(" ")[2:]], [width, height])
                    self.check_references(root)
                    for element in root.iter():
                        self.assertIn(element.tag.removeprefix(SVG), self.ELEMENTS)
                        self.check_inks(element)
                        self.check_paint(element)

    def test_the_same_input_gives_the_same_bytes(self):
        for name in ("poster", "text-vertical", "gradients"):
            self.assertEqual(self.svg(sample(name)), self.svg(sample(name)))

    # What a reader finds in the document, in order.
    TEXTS = [
        ("text-point", ["Handgloves", "Ligne, Zeile, fine", "one, two, three", "turned by ninety degrees"]),
        ("text-version-4", ["Été, garçon, naïve", "Été, garçon, naïve"]),
        ("text-vertical", ["縦書きの「見本」", "「見本」、ちっテー①", "ABC図VX", "Side"]),
        ("text-render-modes", ["Fill", "Stroke", "Both", "CLIP"]),
        ("text-spacing", ["three points apart", "condensed to seventy", "kerning: AVA"]),
    ]

    def test_text_is_text(self):
        for name, texts in self.TEXTS:
            with self.subTest(sample=name):
                root = self.root(sample(name))
                text = "".join("".join(element.itertext()) for element in root.iter(SVG + "text"))
                at = 0
                for part in texts:
                    self.assertIn(part, text[at:])
                    at = text.index(part, at) + len(part)

    def test_outlines_have_no_text(self):
        for name, _ in self.TEXTS:
            root = self.root(sample(name), "--text", "outlines")
            self.assertEqual([element for tag in ("text", "style") for element in root.iter(SVG + tag)], [])

    def test_fonts_are_embedded(self):
        root = self.root(sample("text-point"))
        fonts = {}
        for style in root.iter(SVG + "style"):
            rule = re.fullmatch(r"@font-face\{font-family:('[^']+');font-weight:(\d+);font-style:(\w+);font-stretch:normal;"
                                r"src:url\(data:font/otf;base64,([\w+/=]+)\)\}", style.text)
            font = base64.b64decode(rule[4], validate=True)
            count = struct.unpack(">H", font[4:6])[0]
            tables = {font[at:at + 4].decode() for at in range(12, 12 + 16 * count, 16)}
            # Without one of these browsers leave a font alone.
            self.assertLessEqual({"CFF ", "OS/2", "cmap", "head", "hhea", "hmtx", "maxp", "name", "post"}, tables)
            # These would move or exchange what has its place already.
            self.assertFalse({"GPOS", "GSUB", "kern"} & tables)
            fonts[rule[1], rule[2], rule[3]] = font
        asked = {(element.get("font-family").split(",")[0], element.get("font-weight", "400"), element.get("font-style", "normal"))
                 for element in root.iter(SVG + "text")}
        self.assertEqual(asked, set(fonts))
        self.assertEqual(set(fonts), {
            ("'Nimbus Roman'", "700", "normal"), ("'Nimbus Roman'", "400", "italic"), ("'Nimbus Sans'", "400", "normal"),
            ("'Nimbus Sans'", "400", "italic"), ("'Nimbus Sans'", "700", "normal"), ("'Nimbus Mono PS'", "400", "normal")})

    # The drawing's page is 160 high; Times-Roman of 16 has letters whose widths are in 1000ths of an em.
    LINES = [
        ("20", "28", None, [("", "As the text was written")]),
        ("20", "48", "3", [("", "three points apart")]),
        ("20", "68", None, [("", "wide"), ("12", " "), ("", "word"), ("12", " "), ("", "spaces"), ("12", " "), ("", "here")]),
        ("0", "0", None, [("", "condensed to seventy")]),
        ("0", "0", None, [("", "extended")]),
        ("20", "128", None, [("", "E = mc")]),
        ("66.3518", "121", None, [("", "2")]),
        ("71.3518", "128", None, [("", ", and H")]),
        ("118.00781", "132", None, [("", "2")]),
        ("123.00781", "128", None, [("", "O")]),
        # Each pair is drawn together by 120 1000ths of an em, 1.92: in 16.16 a little less.
        ("20", "148", None, [("", "kerning: "), ("-1.91992", "AVA")]),
    ]

    def test_lines_can_be_edited(self):
        root = self.root(sample("text-spacing"), "--text", "editable")
        self.assertEqual(list(root.iter(SVG + "style")), [])
        lines = []
        for element in root.iter(SVG + "text"):
            pieces = [("", element.text or "")]
            for piece in element:
                pieces += [(piece.get("letter-spacing"), piece.text), ("", piece.tail or "")]
            self.assertEqual(element.get("font-family"), "'Nimbus Roman',serif")
            lines.append((element.get("x"), element.get("y"), element.get("letter-spacing"), [piece for piece in pieces if piece[1]]))
        self.assertEqual(lines, self.LINES)

    def test_what_cannot_be_a_line_is_told(self):
        for name, told in (("text-path", "1 text along a path or down a column stands"),
                           ("text-vertical", "3 texts along paths or down columns stand"), ("text-area", "")):
            for formats, words in (("svg", ["--text", "editable"]), ("svg,png", ["--text", "editable"]), ("svg", [])):
                with self.subTest(sample=name, formats=formats, words=words):
                    said = "\n".join(self.run_vx("render", sample(name), "-f", formats, "-o", "out.{ext}", *words)[1])
                    self.assertEqual("character by character" in said, bool(told and words), said)
                    self.assertIn(told if words else "", said)

    def test_a_blend_is_one_element(self):
        root = self.root(sample("gradients"))
        self.assertGreaterEqual(len(list(root.iter(SVG + "radialGradient"))), 2)
        self.assertLess(len(list(root.iter(SVG + "path"))), 60)

    def test_the_title_is_the_documents(self):
        self.write("a.vx", document().replace(b"(A \\(small\\) square)", b"(a < b & c)"))
        self.assertEqual(self.root("a.vx").find(SVG + "title").text, "a < b & c")


class Structure(SvgTest):
    """Layers and groups of a drawing, as an editor finds them."""

    LABEL = "{http://www.inkscape.org/namespaces/inkscape}label"
    MODE = "{http://www.inkscape.org/namespaces/inkscape}groupmode"
    LOCKED = "{http://sodipodi.sourceforge.net/DTD/sodipodi-0.dtd}insensitive"
    BOX = "q 0 0 m 72 0 L 72 36 L 0 36 L h W n\n"

    def tree(self, body, *words):
        """The groups of a drawing and how many things are painted in each, "layer(…)" and "g(…)" and "clip(…)"."""
        self.write("in.vx", document(body))
        return self.outline(self.root("in.vx", *words))

    def outline(self, parent):
        parts = []
        for element in parent:
            tag = element.tag.removeprefix(SVG)
            if tag == "g":
                name = element.get(self.LABEL) if element.get(self.MODE) == "layer" else "clip" if element.get("clip-path") else "g"
                parts.append(f"{name}({self.outline(element)})")
            elif tag not in ("title", "clipPath"):
                parts.append(tag)
        return " ".join(parts)

    def test_layers_are_an_editors(self):
        root = self.root(sample("layers-nested"))
        layers = [element for element in root.iter(SVG + "g") if element.get(self.MODE) == "layer"]
        self.assertEqual([layer.get(self.LABEL) for layer in layers], ["Ground", "Field, ploughed", "Trees"])
        self.assertEqual([layer.get(self.LOCKED) for layer in layers], [None, "true", None])
        self.assertIn(layers[1], list(layers[0]))
        self.assertEqual((layers[2].get("data-preview"), layers[2].get("data-dimmed")), ("false", "true"))
        hidden, = [element for element in self.root(sample("layers-nested"), "--layers", "all").iter(SVG + "g")
                   if element.get(self.LABEL) == "Notes"]
        self.assertEqual((hidden.get("style"), hidden.get("data-printing")), ("display:none", "false"))

    def test_layers_are_chosen_by_name(self):
        def labels(*words):
            return [element.get(self.LABEL) for element in self.root(sample("layers-nested"), *words).iter(SVG + "g")
                    if element.get(self.MODE) == "layer"]

        self.assertEqual(labels("--layers", "Trees,Notes"), ["Trees", "Notes"])
        self.assertEqual(labels("--layers", "Ground,Field\\, ploughed"), ["Ground", "Field, ploughed"])
        self.assertEqual(labels("--hide", "Ground"), ["Trees"])
        self.assertEqual(labels("--layers", "all", "--hide", "Trees"), ["Ground", "Field, ploughed", "Notes"])
        source = sample("layers-nested")
        there = 'there are "Ground", "Field\\, ploughed", "Trees", "Notes"'
        for words, told in ((["--layers", "Sky"], f'no layer "Sky": {there}'), (["--hide", "Sky"], f'no layer "Sky": {there}'),
                            (["--layers", "Field\\, ploughed"], 'layer "Field, ploughed" is within "Ground": name that too')):
            for command in (["render", "-o", "a.svg"], ["render", "-o", "a.png"]):
                self.assertTrue(self.refused(*command, source, *words, status=1).endswith(told), words)

    def test_a_layer_is_the_same_by_itself(self):
        def painted(*words):
            return {layer.get(self.LABEL): [(element.tag, element.get("d")) for element in layer.iter() if element.tag != SVG + "g"]
                    for layer in self.root(sample("layers-nested"), *words).iter(SVG + "g") if layer.get(self.MODE) == "layer"}

        every = painted("--layers", "all")
        self.assertEqual([len(shapes) for shapes in every.values()], [4, 3, 3, 1]) # the first has the second in it
        for name in ("Trees", "Notes"):
            self.assertEqual(painted("--layers", name), {name: every[name]})
        self.assertEqual(painted("--hide", "Trees"), {name: every[name] for name in ("Ground", "Field, ploughed")})

    def test_a_group_is_one(self):
        fill = "0 g 0 0 m 9 0 L 9 9 L f\n"
        self.assertEqual(self.tree(f"u\n{fill}{fill}U\n{fill}"), "g(path path) path")
        self.assertEqual(self.tree(f"u\nu\n{fill}{fill}U\n{fill}U\n"), "g(g(path path) path)")
        # One of fewer than two things is none, whatever is around it.
        self.assertEqual(self.tree(f"u\n{fill}U\n{fill}"), "path path")
        self.assertEqual(self.tree(f"u\nu\n{fill}U\nu\n{fill}U\nU\n"), "g(path path)")
        self.assertEqual(self.tree(f"u\nu\n{fill}U\nU\n"), "path")
        self.assertEqual(self.tree("u\n0 g 0 G 0 0 m 9 0 L 9 9 L b\nU\n"), "path")
        self.assertEqual(self.tree(f"U\n{fill}u\n{fill}{fill}"), "path g(path path)") # ends and begins too much

    def test_a_clip_wins_over_a_group(self):
        fill = "0 g 0 0 m 9 0 L 9 9 L f\n"
        self.assertEqual(self.tree(f"u\n{self.BOX}{fill}{fill}Q\n{fill}U\n"), "g(clip(path path) path)")
        self.assertEqual(self.tree(f"{self.BOX}u\n{fill}{fill}U\n{fill}Q\n"), "clip(g(path path) path)")
        # It goes on behind the group that it began in; and it ends one that goes on behind it.
        self.assertEqual(self.tree(f"u\n{fill}{self.BOX}{fill}U\n{fill}Q\n"), "g(path clip(path)) clip(path)")
        self.assertEqual(self.tree(f"{self.BOX}u\n{fill}{fill}Q\n{fill}U\n{fill}"), "clip(g(path path)) path path")

    def test_a_layer_wins_over_clips_and_groups(self):
        fill = "0 g 0 0 m 9 0 L 9 9 L f\n"
        first, second = ("1 1 1 1 0 0 0 0 0 0 Lb\n(%s) Ln\n" % name for name in ("A", "B"))
        self.assertEqual(self.tree(f"{first}{self.BOX}{fill}LB\n{second}{fill}Q\n{fill}LB\n"), "A(clip(path)) B(clip(path) path)")
        self.assertEqual(self.tree(f"{self.BOX}{first}{fill}LB\n{second}Q\n{fill}LB\n"), "clip() A(clip(path)) B(path)")
        self.assertEqual(self.tree(f"u\n{first}u\n{fill}{fill}LB\n{second}{fill}{fill}U\nU\nLB\n"), "A(g(path path)) B(path path)")
        self.assertEqual(self.tree(f"{first}LB\n{second}{fill}LB\n"), "B(path)") # nothing is on the first

    def test_a_blend_is_not_torn_apart(self):
        steps = "".join(f"u\n{step * 0.72 / 71:.5f} g {step} 0 m {step + 1} 0 L {step + 1} 36 L {step} 36 L f\nU\n" for step in range(72))
        self.assertEqual(self.tree(f"u\n{steps}U\n"), "linearGradient linearGradient path") # its colours, and its place

    def test_spot_inks_are_noted(self):
        root = self.root(sample("spot-inks"))
        brick = [element for element in root.iter(SVG + "path") if element.get("data-ink") == "Brick"]
        self.assertEqual([element.get("data-tint") for element in brick], ["0", ".3", ".6", ".2"])
        windows = [element for element in root.iter(SVG + "path") if element.get("data-stroke-ink")]
        self.assertEqual([(element.get("data-ink"), element.get("data-stroke-tint")) for element in windows], 3 * [("Night", ".5")])
        self.assertNotIn(b"data-ink", self.svg(sample("spot-inks"), "--spots", "process"))


class Limits(SvgTest):
    def test_deep_clips_can_be_read(self):
        clip = "0 0 m\n72 0 l\n72 36 l\n0 36 l\nh\nW\nn\n"
        depth = 20  # as deep as the format saves
        body = ("q\n" + clip * 40) * depth + "0 0 0 1 k\n0 0 m\n36 0 l\n36 36 l\n0 36 l\nf\n" + "Q\n" * depth
        self.write("deep.vx", document(body))
        svg = self.svg("deep.vx").decode()
        depth = deepest = 0
        for tag in re.findall(r"<g |</g>", svg):
            depth += 1 if tag == "<g " else -1
            deepest = max(deepest, depth)
        self.assertEqual(svg.count("<clipPath "), 800)
        self.assertEqual(depth, 0)
        self.assertEqual(deepest, 200)
        picture = pictures.colours_by_rsvg(self.path("out.svg"), (72, 36), self.folder)
        self.assertEqual([picture.getpixel((x, 10)) for x in (10, 60)], [(32, 31, 30), (255, 255, 255)])

    @unittest.skipIf(SANITIZED, "sanitizers need the whole address space")
    def test_memory_does_not_grow_with_the_document(self):
        # The limit is on what the program may write to, its variables and heap. The document is only read.
        limit = 24 << 20
        shape = "0.1 0.2 0.3 0 k\n1 1 m\n" + "2.5 3.25 4.125 5 6 7 c\n" * 20 + "f\n"
        self.write("many.vx", document(shape * 80_000))
        self.run_vx("render", "many.vx", "-o", "many.svg",
                    preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_DATA, (limit, limit)))
        self.assertGreater(os.path.getsize(self.path("many.svg")), 40_000_000)
        # Nor with what stands in a group before its second thing.
        clip = "q 0 0 m 72 0 L 72 36 L 0 36 L h W n Q\n"
        self.write("clips.vx", document("u\n" + clip * 400_000 + "0 g 0 0 m 9 0 L 9 9 L f\nU\n"))
        self.run_vx("render", "clips.vx", "-o", "clips.svg",
                    preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_DATA, (limit, limit)))
        self.assertGreater(os.path.getsize(self.path("clips.svg")), 40_000_000)


if __name__ == "__main__":
    unittest.main()
