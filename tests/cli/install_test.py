"""In an installation everything is in its place, and works from there."""
import glob
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import textwrap
import unittest

from vxcommand import Png, SANITIZED, document, sample, sample_names

SOURCE = os.environ["VX_SOURCE_DIR"]
EXAMPLES = os.path.join(SOURCE, "examples")
SAMPLES = os.path.join(SOURCE, "samples")

# A project that finds the library as CMake does.
PROJECT = """
cmake_minimum_required(VERSION 3.24)
project(own LANGUAGES C)
find_package(vx CONFIG REQUIRED)
add_executable(picture {examples}/picture.c)
target_link_libraries(picture PRIVATE vx::vx)
"""

COMMANDS = ["info", "render", "trace", "fonts", "batch"]


def readme_part(title):
    with open(os.path.join(SOURCE, "README.md"), encoding="utf-8") as file:
        return file.read().partition(f"\n## {title}\n")[2].partition("\n## ")[0]


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.prefix = tempfile.mkdtemp(prefix="vx-install-")
        subprocess.run(["cmake", "--install", os.environ["VX_BUILD_DIR"], "--prefix", cls.prefix], check=True,
                       capture_output=True)

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.prefix)

    def path(self, *names):
        return os.path.join(self.prefix, *names)


class Install(Installed):
    def test_the_commands_of_the_readme_work(self):
        lines = [line.strip() for line in readme_part("As a command").splitlines() if line.startswith("    ./vx ")]
        self.assertEqual(len(lines), 18)
        with tempfile.TemporaryDirectory() as folder:
            os.symlink(self.path("bin/vx"), os.path.join(folder, "vx"))
            os.symlink(SAMPLES, os.path.join(folder, "samples"))
            os.mkdir(os.path.join(folder, "build"))
            for line in lines:
                with self.subTest(line=line):
                    run = subprocess.run(["bash", "-ec", "set -o pipefail; " + line], cwd=folder, check=False, capture_output=True,
                                         env={**os.environ, "LD_LIBRARY_PATH": ""})
                    self.assertEqual(run.returncode, 0, run.stderr)
            self.assertEqual(sorted(os.listdir(os.path.join(folder, "build"))),
                             sorted(["catalogue", "check.html", "plates", *(f"{name}.{form}" for name in sample_names() for form in ["pdf", "png", "svg"])]))
            self.assertIn("Brick.png", os.listdir(os.path.join(folder, "build", "plates")))

    def rendered(self, *words):
        return subprocess.run([self.path("bin/vx"), "render", "-", "-f", "png", "-o", "-", *words], input=document(), check=True,
                              capture_output=True, env={**os.environ, "LD_LIBRARY_PATH": ""})

    def test_the_program_needs_no_file_of_a_plug_in(self):
        hidden = self.path("lib/vx.hidden")
        os.rename(self.path("lib/vx"), hidden)
        try:
            output = self.rendered()
        finally:
            os.rename(hidden, self.path("lib/vx"))
        self.assertEqual((Png(output.stdout).width, output.stderr), (150, b""))

    def test_a_plug_in_of_a_file_finds_the_toolbox_in_the_program(self):
        self.assertEqual(self.rendered("--plugin", self.path("lib/vx/vxparser.so")).stdout, self.rendered().stdout)

    @unittest.skipIf(SANITIZED, "the plug-in's file needs a program that has the sanitizers")
    def test_a_host_is_built_by_its_own_line(self):
        folder = self.path("share/doc/vx/examples/host")
        with open(os.path.join(folder, "example.c"), encoding="ascii") as page:
            build, run = (line.strip(" *\n") for line in page if line.startswith(" *     "))
        self.assertTrue(build.startswith("cc "), build)
        subprocess.run([os.environ["VX_CC"], *shlex.split(build)[1:]], check=True, cwd=folder)
        output = subprocess.run(shlex.split(run), check=True, cwd=folder, capture_output=True, text=True).stdout
        with open(os.path.join(SOURCE, "sdk/example/square.txt"), encoding="ascii") as expected:
            self.assertEqual(output, expected.read())
        told = subprocess.run(["./vxexample", "no-such.so", "square.vx"], check=False, cwd=folder, capture_output=True, text=True)
        self.assertEqual(told.returncode, 1)
        self.assertIn("no-such.so", told.stderr)

    def test_what_helps_is_there(self):
        for name in ["share/man/man1/vx.1", *(f"share/man/man1/vx-{command}.1" for command in COMMANDS),
                     "share/doc/vx/LICENSE", "share/doc/vx/press-profile.md", "lib/libvx.so.0", "libexec/vx/vx-isolated", "libexec/vx/vx-viewer",
                     "share/bash-completion/completions/vx", "share/zsh/site-functions/_vx",
                     "bin/vx-thumbnailer", "share/man/man1/vx-thumbnailer.1", "share/thumbnailers/vx.thumbnailer",
                     "share/inkscape/extensions/vx_input.inx", "share/inkscape/extensions/vx_input.py",
                     "share/vx/imagemagick/delegates.xml", "share/vx/imagemagick/magic.xml", "share/vx/scribus/vx_place.py",
                     "share/doc/vx/editors.md", "share/mime/packages/vx-drawing.xml", "share/icons/hicolor/scalable/mimetypes/image-x-vx-drawing.svg"]:
            self.assertTrue(os.path.getsize(self.path(name)) > 0, name)

    def test_no_folder_is_empty(self):
        for folder, folders, files in os.walk(self.prefix):
            self.assertTrue(folders or files, folder)

    def test_nothing_of_the_inside_is_installed(self):
        self.assertEqual(sorted(os.listdir(self.path("include"))), ["vx", "vx.h"])
        self.assertEqual(sorted(os.listdir(self.path("lib"))),
                         ["cmake", "libvx.so", "libvx.so.0", "libvx.so.0.1.0", "pkgconfig", "python3", "vx"])

    def test_each_header_compiles_alone(self):
        headers = glob.glob(self.path("include/**/*.h"), recursive=True)
        self.assertEqual(len(headers), 6)
        for header in headers:
            for compiler in [(os.environ["VX_CC"], "-std=c99", "-x", "c"), (os.environ["VX_CXX"], "-std=c++20", "-x", "c++")]:
                with self.subTest(header=header, compiler=compiler):
                    subprocess.run([*compiler, "-Wall", "-Wextra", "-Wpedantic", "-Werror", "-fsyntax-only",
                                    "-I", self.path("include"), header], check=True)


@unittest.skipIf(SANITIZED, "a program without the sanitizers does not link with a library that has them")
class Examples(Installed):
    """The pages of examples/, built from the installed files alone."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        pages = glob.glob(os.path.join(EXAMPLES, "*.c"))
        flags = shlex.split(subprocess.run(
            ["pkg-config", "--cflags", "--libs", "vx"], check=True, capture_output=True, text=True,
            env={**os.environ, "PKG_CONFIG_PATH": os.path.join(cls.prefix, "lib/pkgconfig")}).stdout)
        for page in pages:
            name = os.path.splitext(os.path.basename(page))[0]
            subprocess.run([os.environ["VX_CC"], "-std=c99", "-pthread", "-Wall", "-Wextra", "-Wpedantic", "-Werror", page,
                            *flags, "-o", os.path.join(cls.prefix, name)], check=True)

    def run_example(self, name, *words, library="lib"):
        output = subprocess.run([self.path(name), *words], capture_output=True, check=False,
                                env={**os.environ, "LD_LIBRARY_PATH": self.path(library)})
        return output.returncode, output.stdout.decode(), output.stderr.decode()

    def test_a_picture_has_the_bytes_of_the_command(self):
        names = [name for name in sample_names() if name.startswith("text-")]
        self.assertGreater(len(names), 10)
        for name in names:
            for form in ["png", "svg", "pdf"]:
                with self.subTest(name=name, form=form):
                    made = self.path("made." + form)
                    self.assertEqual(self.run_example("picture", sample(name), made)[:2], (0, ""))
                    expected = subprocess.run([self.path("bin/vx"), "render", "-q", sample(name), "-f", form, "-o", "-"],
                                              check=True, capture_output=True).stdout
                    with open(made, "rb") as file:
                        self.assertTrue(file.read() == expected)

    def test_the_program_of_the_readme_makes_a_picture(self):
        page = readme_part("In C")
        source, = re.findall(r"^    #include .*^    }$", page, re.MULTILINE | re.DOTALL)
        with open(self.path("picture.c"), "w", encoding="ascii") as file:
            file.write(textwrap.dedent(source) + "\n")
        command, = re.findall(r"`(cc .*?)`", page)
        shutil.copy(sample("harp"), self.path("harp.vx"))
        environment = {**os.environ, "PKG_CONFIG_PATH": self.path("lib/pkgconfig"), "LD_LIBRARY_PATH": self.path("lib")}
        built = subprocess.run(["sh", "-ec", command.replace("cc ", os.environ["VX_CC"] + " -Wall -Werror ") + "; ./picture"],
                               cwd=self.prefix, check=True, capture_output=True, env=environment)
        expected = subprocess.run([self.path("bin/vx"), "render", "-q", sample("harp"), "--width", "400", "-f", "png", "-o", "-"],
                                  check=True, capture_output=True).stdout
        self.assertTrue(built.stdout == expected)

    def test_a_picture_that_cannot_be_is_told(self):
        status, _, told = self.run_example("picture", self.path("no-such.vx"), self.path("made.png"))
        self.assertEqual(status, 1)
        self.assertIn("no-such.vx: ", told)

    def test_a_drawing_has_a_process_of_its_own_wherever_the_installation_lies(self):
        made, moved = self.path("made.png"), self.path("elsewhere")
        expected = subprocess.run([self.path("bin/vx"), "render", "-q", sample("text-point"), "-f", "png", "-o", "-"],
                                  check=True, capture_output=True).stdout
        os.mkdir(moved)
        for name in ["lib", "libexec"]:
            shutil.copytree(self.path(name), os.path.join(moved, name), symlinks=True)
        os.symlink(os.path.join(moved, "lib"), self.path("linked"))
        for folder in ["lib", "elsewhere/lib", "linked"]:
            with self.subTest(folder=folder):
                self.assertEqual(self.run_example("isolated", sample("text-point"), made, library=folder), (0, "", ""))
                with open(made, "rb") as file:
                    self.assertTrue(file.read() == expected)
        os.remove(os.path.join(moved, "libexec/vx/vx-isolated"))
        status, _, told = self.run_example("isolated", sample("text-point"), made, library="linked")
        self.assertEqual(status, 1)
        self.assertIn("elsewhere/lib/../libexec/vx/vx-isolated cannot be started", told)

    def test_the_helper_says_whose_it_is(self):
        for words in [[], ["--help"], [sample("text-point")]]:
            output = subprocess.run([self.path("libexec/vx/vx-isolated"), *words], capture_output=True, check=False, text=True,
                                    stdin=subprocess.DEVNULL)
            self.assertEqual((output.returncode, output.stdout), (2, ""))
            self.assertIn("part of libvx", output.stderr)

    def test_threads_share_a_library(self):
        self.assertEqual(self.run_example("threads", sample("text-point")), (0, "8 of 8 pictures are the same\n", ""))

    def test_inks_are_counted(self):
        drawing = self.path("inks.vx")
        with open(drawing, "wb") as file:
            # It paints in black, in cyan and yellow, in a gray, and in a white, which is no ink.
            file.write(document("0 0 m 9 0 l 9 9 l\n0 0 0 1 k f\n0 0 m 9 0 l 9 9 l\n1 0 0.5 0 k f\n"
                                "0 0 m 9 0 l 9 9 l\n0.5 g f\n0 0 m 9 0 l 9 9 l\n1 g f\n"))
        self.assertEqual(self.run_example("inks", drawing),
                         (0, "cyan 1\nmagenta 0\nyellow 1\nblack 2\ncharacters 0\n", ""))

    def test_words_are_printed(self):
        drawing = self.path("words.vx")
        with open(drawing, "wb") as file:
            file.write(document("".join(
                f"1 1 1 {printing} 0 0 1 79 128 255 Lb\n0 To 1 0 0 1 5 5 0 Tp TP /_Helvetica 12 Tf 0 Tr ({word}) Tx TO\nLB\n"
                for printing, word in ((1, "Rum"), (0, "Low tide")))))
        self.assertEqual(self.run_example("words", drawing), (0, "Rum\nLow tide\n", ""))

    def test_cmake_finds_the_library(self):
        project = self.path("project")
        os.mkdir(project)
        with open(os.path.join(project, "CMakeLists.txt"), "w", encoding="utf-8") as file:
            file.write(PROJECT.format(examples=EXAMPLES))
        build = os.path.join(project, "build")
        for words in [["-S", project, "-B", build, "-DCMAKE_PREFIX_PATH=" + self.prefix], ["--build", build]]:
            subprocess.run(["cmake", *words], check=True, capture_output=True)
        made = self.path("made.svg")
        subprocess.run([os.path.join(build, "picture"), sample("overprint"), made], check=True)
        self.assertGreater(os.path.getsize(made), 0)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
