"""Desktops, file(1) and archives know a drawing by what it says, whatever its name, and leave other people's files alone."""
import os
import re
import shutil
import struct
import subprocess
import sys
import unittest
import xml.etree.ElementTree as ElementTree

from vxcommand import CommandTest, document, sample, sample_names

SOURCE = os.environ["VX_SOURCE_DIR"]
MIME = os.path.join(SOURCE, "packaging", "mime")
ICON = os.path.join(SOURCE, "packaging", "icons", "image-x-vx-drawing")
OURS = "image/x-vx-drawing"

POSTSCRIPT = b"%!PS-Other-3.0\n%%Title: not ours\n100 100 moveto (Hand) show showpage\n%%EOF\n"
EPS = b"%!PS-Other-3.0 EPSF-3.0\n%%BoundingBox: 0 0 9 9\n0 0 moveto 9 9 lineto stroke\n%%EOF\n"


def wrapped(program, preview=b""):
    """A binary EPS file: the header of 30 bytes, a preview before the program, none if it is empty."""
    at = 30 + len(preview)
    return struct.pack("<IIIIIIIH", 0xC6D3D0C5, at, len(program), 0, 0, 30 if preview else 0, len(preview), 0xFFFF) + preview + program


def read(path):
    with open(path, "rb") as file:
        return file.read()


# Names and contents, with the type that desktops are to find.
OWN_FILES = {
    "bare.vx": document(), "bare.eps": document(), "bare.ps": document(), "bare": document(),
    "as-eps.eps": document().replace(b"3.0\n", b"3.0 EPSF-1.2\n", 1),
    "as-eps": document().replace(b"3.0\n", b"3.0 EPSF-1.2\n", 1),
    "cr.eps": document().replace(b"\n", b"\r"),
    "wrapped.eps": wrapped(document()), "wrapped": wrapped(document()), "wrapped.vx": wrapped(document()),
    "preview.eps": wrapped(document(), bytes(range(250)) * 14), "sample.eps": read(sample("binary-wrapper")),
    **{f"{name}.vx": read(sample(name)) for name in sample_names()},
    **{f"{name}-of-no-name": read(sample(name)) for name in sample_names()},
}
FOREIGN_FILES = {
    "other.ps": (POSTSCRIPT, "application/postscript"), "other": (POSTSCRIPT, "application/postscript"),
    "other.eps": (EPS, "image/x-eps"), "other-eps": (EPS, "image/x-eps"),
    "quoting-wrapped.eps": (wrapped(EPS + b"%" * 4096 + b"\n" + document()), "image/x-eps"),
    "other-wrapped.eps": (wrapped(EPS), "image/x-eps"), "other-wrapped": (wrapped(EPS), "image/x-eps"),
    "short.eps": (b"%!PS-Tavr", "image/x-eps"), "quoting.eps": (EPS + document(), "image/x-eps"),
    "quoting.ps": (b"\n\n" + POSTSCRIPT + document(), "application/postscript"),
    "words.txt": (b"A drawing begins with %!PS-Tavro-3.0\n", "text/plain"),
    "picture.png": (b"\x89PNG\r\n\x1a\n" + bytes(60), "image/png"),
}


class Types(CommandTest):
    def setUp(self):
        super().setUp()
        for name, data in [*OWN_FILES.items(), *((name, data) for name, (data, _) in FOREIGN_FILES.items())]:
            self.write(name, data)

    def compare(self, found):
        expected = {**dict.fromkeys(OWN_FILES, OURS), **{name: kind for name, (_, kind) in FOREIGN_FILES.items()}}
        self.assertEqual(found, expected)

    def install(self):
        data = self.path("data")
        os.makedirs(os.path.join(data, "mime", "packages"))
        shutil.copy(os.path.join(MIME, "vx-drawing.xml"), os.path.join(data, "mime", "packages"))
        environment = {**os.environ, "XDG_DATA_HOME": data, "XDG_CURRENT_DESKTOP": "GNOME", "HOME": self.folder, "LC_ALL": "C.UTF-8"}
        built = subprocess.run(["update-mime-database", os.path.join(data, "mime")], capture_output=True, text=True, check=True,
                               env=environment)
        self.assertEqual(built.stderr, "")
        return environment

    @unittest.skipUnless(shutil.which("update-mime-database") and shutil.which("gio"),
                         "there is no update-mime-database or no gio here")
    def test_for_gio(self):
        environment, found = self.install(), {}
        for name in [*OWN_FILES, *FOREIGN_FILES]:
            told = subprocess.run(["gio", "info", "-a", "standard::content-type,standard::icon", name], cwd=self.folder, check=True,
                                  capture_output=True, text=True, env=environment).stdout
            found[name] = re.search(r"standard::content-type: (\S+)", told)[1]
            if found[name] == OURS:
                self.assertIn("standard::icon: image-x-vx-drawing", told)
        self.compare(found)

    @unittest.skipUnless(shutil.which("update-mime-database") and shutil.which("gio") and shutil.which("xdg-mime"),
                         "there is no update-mime-database, no gio or no xdg-mime here")
    def test_for_xdg_mime(self):
        environment = self.install()
        for name in ["bare.vx", "bare.eps", "wrapped", "cr.eps", "other.ps", "other.eps", "other-wrapped", "words.txt"]:
            told = subprocess.run(["xdg-mime", "query", "filetype", name], cwd=self.folder, check=True, capture_output=True,
                                  text=True, env=environment).stdout
            self.assertEqual(told.strip(), OURS if name in OWN_FILES else FOREIGN_FILES[name][1], name)

    @unittest.skipUnless(shutil.which("file"), "there is no file(1) here")
    def test_for_file(self):
        def types(*words):
            told = subprocess.run(["file", "--mime-type", "--no-pad", *words, *OWN_FILES, *FOREIGN_FILES], cwd=self.folder, check=True,
                                  capture_output=True, text=True)
            self.assertEqual(told.stderr, "")
            return dict(line.split(": ") for line in told.stdout.splitlines())

        plain, ours = types(), types("-m", os.path.join(MIME, "vx.magic") + ":/usr/share/misc/magic")
        self.assertEqual({name: ours[name] for name in OWN_FILES}, dict.fromkeys(OWN_FILES, OURS))
        self.assertEqual({name: ours[name] for name in FOREIGN_FILES}, {name: plain[name] for name in FOREIGN_FILES})
        # It alone can follow the header, past any preview and to no drawing that is quoted.
        self.write("long.eps", wrapped(document(), bytes(range(250)) * 40))
        self.write("quoting-soon.eps", wrapped(EPS + document()))
        for name, kind in (("long.eps", "VX drawing in a binary EPS file"), ("quoting-soon.eps", "data")):
            told = subprocess.run(["file", "-b", "-m", os.path.join(MIME, "vx.magic"), name], cwd=self.folder, check=True, capture_output=True)
            self.assertEqual(told.stdout.decode().strip(), kind)

    def test_for_archives(self):
        """The signatures, as DROID would apply them."""
        signatures, formats = read_signatures(os.path.join(MIME, "vx-signatures.xml"))
        for name, data in [*OWN_FILES.items(), *((name, data) for name, (data, _) in FOREIGN_FILES.items())]:
            hits = [number for number, matches in signatures.items() if matches(data)]
            self.assertEqual(len(hits), 1 if name in OWN_FILES else 0, name)
            for number in hits:
                self.assertEqual(formats[number], ("dev/2" if data[:1] == b"\xC5" else "dev/1", OURS), name)


def read_signatures(path):
    """Returns ({number: whether data matches}, {number: (PUID, MIME type)})."""
    space = "{http://www.nationalarchives.gov.uk/pronom/SignatureFile}"
    root = ElementTree.parse(path).getroot()
    signatures = {}
    for signature in root.iter(space + "InternalSignature"):
        part, = signature.findall(f"{space}ByteSequence[@Reference='BOFoffset']/{space}SubSequence")
        sequence = bytes.fromhex(part.findtext(space + "Sequence"))
        # A search jumps by these: so far that the last place of the byte comes below the one that was looked at.
        shifts = {int(shift.get("Byte"), 16): int(shift.text) for shift in part.findall(space + "Shift")}
        assert shifts == {byte: len(sequence) - sequence.rindex(byte) for byte in sequence}, path
        assert int(part.findtext(space + "DefaultShift")) == len(sequence) + 1, path
        fragments = [(int(one.get("MinOffset")), int(one.get("MaxOffset")), bytes.fromhex(one.text))
                     for one in part.findall(space + "RightFragment")]
        offsets = range(int(part.get("SubSeqMinOffset")), int(part.get("SubSeqMaxOffset")) + 1)

        def matches(data, sequence=sequence, fragments=fragments, offsets=offsets):
            for start in offsets:
                at = start + len(sequence)
                if data[start:at] == sequence and all(
                        data.find(bytes_, at + least, at + most + len(bytes_)) >= 0 for least, most, bytes_ in fragments):
                    return True
            return False

        signatures[signature.get("ID")] = matches
    formats = {one.findtext(space + "InternalSignatureID"): (one.get("PUID"), one.get("MIMEType")) for one in root.iter(space + "FileFormat")}
    return signatures, formats


class Icon(CommandTest):
    def test_it_is_what_its_drawing_makes(self):
        made = self.run_vx("render", ICON + ".vx", "-f", "svg", "-o", "-")[0]
        self.assertEqual(made.decode(), read(ICON + ".svg").decode(), "run docs/make-pictures")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
