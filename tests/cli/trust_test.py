"""Whatever a document or a font says, there are things that it may not do: the promises of docs/security.md that no other test
is about."""
import os
import random
import re
import subprocess
import sys
import unittest
import xml.etree.ElementTree as ElementTree

from vxcommand import CommandTest, LEFT_HALF, Png, document

FORMATS = ("png", "pdf", "svg")


def words(font, text="Hand"):
    return f"0 To\n1 0 0 1 2 2 0 Tp\nTP\n0 Tr\n/_{font} 12 Tf\n({text}) Tx\nTO\n"


# A terminal would obey some of these; others would be markup or a script where a program takes them as they stand.
ESCAPES = "\\033[2J\\033]0;title\\007\\177\\233\\302\\2332J\\r"
MARKUP = "</title></style></text><script>alert(1)</script><image href='http://example.invalid/a'/>"


def hostile(text):
    """Makes a document that says the text wherever a document can say something."""
    name = text.replace("(", "\\(").replace(")", "\\)")
    bytes_of = {"\\302": "\xc2", "\\033": "\x1b", "\\007": "\x07", "\\177": "\x7f", "\\233": "\x9b", "\\r": ""}
    plain = re.sub(r"\\(?:\d{3}|r)", lambda escape: bytes_of[escape[0]], text)
    title = plain.replace("(", "\\(").replace(")", "\\)")
    word = re.sub(r"[\s()<>\[\]{}/%]", "_", plain)
    data = document(
        f"1 1 1 1 0 0 0 79 128 255 Lb\n({name}) Ln\n0 1 0 0 ({name}) 0 x\n" + LEFT_HALF.split("\n", 1)[1]
        + words("Helvetica", name) + words(word) + "1 2 Qx\nLB\n")
    header = (f"%%Title: ({title})\n%%Creator: ({title})\n%%CreationDate: ({title}) ({title})\n"
              f"%%DocumentCustomColors: ({title})\n%%DocumentProcessColors: {title}\n%%DocumentFonts: {word}\n")
    return re.sub(rb"%%Title.*\n%%Creator.*\n", lambda _: header.encode("latin-1"), data)


class Trust(CommandTest):
    def all_of(self, *command, stdin=None):
        """Returns standard output, standard error and the exit status."""
        process = self.start(*command, **({} if stdin is None else {"stdin": subprocess.PIPE}))
        output, errors = process.communicate(stdin, timeout=120)
        return output, errors, process.returncode

    def test_no_document_writes_on_the_terminal(self):
        self.write("a.vx", hostile(ESCAPES))
        for command in (["info", "a.vx"], ["info", "--json", "a.vx"], ["fonts", "a.vx"], ["fonts", "--json", "a.vx"],
                        ["check", "a.vx"], ["check", "--json", "a.vx"], ["text", "a.vx"], ["text", "--json", "a.vx"], ["trace", "a.vx"], ["trace", "--json", "a.vx"], ["render", "-v", "a.vx", "-o", "a.pdf"],
                        ["batch", "-", "-f", "png", "-o", "{stem}.png"]):
            with self.subTest(command=command):
                output, errors, status = self.all_of(*command, stdin=b"a.vx\n")
                self.assertEqual(status, 3 if command[0] == "check" else 0, errors)
                told = (output + errors).decode()  # fails where it is no UTF-8
                self.assertIn("2J", told)  # the document had its say
                self.assertEqual(re.findall(r"[^\n -~\u00a0-\uffff]", told), [])

    def test_no_document_puts_markup_into_an_svg(self):
        self.write("a.vx", hostile(MARKUP))
        for text in ("text", "outlines"):
            self.run_vx("render", "-q", "a.vx", "-o", "a.svg", "--text", text)
            root = ElementTree.fromstring(self.read("a.svg"))
            self.assertIn("script", "".join(root.itertext()))  # as text
            for element in root.iter():
                self.assertNotIn(element.tag.split("}")[1], ("script", "image", "foreignObject", "use", "a"))
                for name, value in element.attrib.items():
                    name = name.split("}")[-1]
                    self.assertFalse(name.startswith("on"), name)
                    if name == "href":
                        self.assertTrue(value.startswith("#"), value)
                if element.tag.endswith("}style"):
                    for place in re.findall(r"url\(['\"]?([^)]{,20})", element.text):
                        self.assertTrue(place.startswith("data:font/"), place)
                    self.assertNotIn("@import", element.text)

    def test_no_document_puts_an_action_into_a_pdf(self):
        self.write("a.vx", hostile(") /OpenAction << /S /JavaScript /JS (app.alert(1)) >> ("))
        for level in ([], ["--pdf-x", "x3"]):
            self.run_vx("render", "-q", "a.vx", "-o", "a.pdf", *level, environment={"SOURCE_DATE_EPOCH": "86400"})
            plain = subprocess.run(["qpdf", "--qdf", "--object-streams=disable", self.path("a.pdf"), "-"],
                                   capture_output=True, check=True).stdout
            # Only names are looked at: strings hold the document's words, and streams what it draws.
            names = re.sub(rb"(?s)\nstream\n.*?\nendstream", b"", plain)
            names = re.sub(rb"\((?:\\.|[^()\\]|\((?:\\.|[^()\\])*\))*\)|<[0-9a-fA-F]*>", b"", names)
            self.assertIn(b"/Catalog", names)
            for action in (b"OpenAction", b"AA", b"JS", b"JavaScript", b"Launch", b"URI", b"SubmitForm", b"EmbeddedFile"):
                self.assertIsNone(re.search(rb"/%s\b" % action, names), action)

    # Each row has a font file, and the name by which documents ask for it.
    DAMAGED = [("opentype/urw-base35/NimbusSans-Regular.otf", "NimbusSans-Regular"),
               ("type1/urw-base35/NimbusRoman-Bold.t1", "NimbusRoman-Bold"),
               ("opentype/ipafont-gothic/ipag.ttf", "IPAGothic")]
    TURNS = 12

    @staticmethod
    def damage(data, dice):
        """Makes damaged fonts: some are cut short, in some bytes are changed where the tables are listed, and in some bytes are changed
        anywhere, so that most of the font can still be drawn with."""
        data = bytearray(data)
        how = dice.choice(("cut", "head", "anywhere", "anywhere"))
        if how == "cut":
            return data[:dice.randrange(len(data))]
        for _ in range(dice.choice((1, 10, 200))):
            data[dice.randrange(len(data) if how == "anywhere" else 400)] = dice.randrange(256)
        return data

    def test_a_damaged_font_costs_its_own_text(self):
        dice = random.Random(1)
        used = 0
        for file, name in self.DAMAGED:
            with open(f"/usr/share/fonts/{file}", "rb") as font:
                whole = font.read()
            for turn in range(self.TURNS):
                with self.subTest(font=name, turn=turn):
                    folder = f"{name}-{turn}"  # each its own: what is known of a folder may be kept for a while
                    os.mkdir(self.path(folder))
                    self.write(f"{folder}/damaged{os.path.splitext(file)[1]}", self.damage(whole, dice))
                    only = ["--no-system-fonts", "--font-dir", folder]
                    self.write("a.vx", document("0 g\n" + words(name) + words("Other")))
                    output, errors, status = self.all_of("fonts", "--json", "a.vx", *only)
                    self.assertIn(status, (0, 1, 5), errors)
                    used += b'"match":"exact"' in output
                    errors, status = self.all_of("render", "a.vx", "-f", ",".join(FORMATS), "-o", "a.{ext}", *only)[1:]
                    self.assertIn(status, (0, 1, 5), errors)
                    written = [kind for kind in FORMATS if os.path.exists(self.path("a." + kind))]
                    self.assertEqual(written, list(FORMATS) if status == 0 else [])
                    if status == 0:
                        self.assertTrue(Png(self.read("a.png")).ended)
                        self.assertTrue(self.read("a.pdf").endswith(b"%%EOF\n"))
                        ElementTree.fromstring(self.read("a.svg"))
                    for kind in written:
                        os.remove(self.path("a." + kind))
        self.assertGreater(used, self.TURNS)  # else it was not the damage that was tested


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
