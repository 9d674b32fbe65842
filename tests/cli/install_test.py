"""An installation: everything is in its place, the program finds its plug-in, and a program of one's own links."""
import os
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest

from vxcommand import Png, SANITIZED, document

COMMANDS = ["info", "render", "trace", "fonts", "batch"]

# A host of one's own: it makes a picture of a document and says what colour its first and last pixels are. The other
# headers are there to be found, with all that they include.
PROGRAM = """
#include <devices/pdf/PdfDevice.h>
#include <devices/raster/RasterDevice.h>
#include <devices/svg/SvgDevice.h>
#include <host/fonts/FontconfigFonts.h>
#include <host/reading/Reading.h>
#include <host/trace/TraceLines.h>
#include <vx/TextRecord.h>
#include <cstdio>

int main(int, char **arguments)
{
    using namespace vxhost;
    std::string error;
    const Installation installation = {Plugin::Load(arguments[1], &error), MakeFontconfigFonts()};
    const auto document = installation.plugin ? Document::Open(arguments[2], &error) : nullptr;
    RasterOptions options;
    options.width = 2;
    options.profile = "none";
    Picture picture;
    const auto device = MakePictureDevice(options, &picture, &error);
    if (!document || !device)
        return 1;
    Reading reading(installation, *document, {});
    if (reading.Draw(reading.PageFor(), *device).result != 0)
        return 1;
    std::printf("%d %d\\n", picture.rgba[0], picture.rgba[4]);
}
"""


class Install(unittest.TestCase):
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

    def test_the_program_finds_its_plug_in(self):
        output = subprocess.run([self.path("bin/vx"), "render", "-", "-f", "png", "-o", "-"], input=document(), check=True,
                                capture_output=True, env={**os.environ, "LD_LIBRARY_PATH": ""})
        self.assertEqual((Png(output.stdout).width, output.stderr), (150, b""))

    def test_what_helps_is_there(self):
        for name in ["share/man/man1/vx.1", *(f"share/man/man1/vx-{command}.1" for command in COMMANDS),
                     "share/bash-completion/completions/vx", "share/zsh/site-functions/_vx"]:
            self.assertTrue(os.path.getsize(self.path(name)) > 0, name)

    def test_no_folder_is_empty(self):
        for folder, folders, files in os.walk(self.prefix):
            self.assertTrue(folders or files, folder)

    @unittest.skipIf(SANITIZED, "a program without the sanitizers does not link with a library that has them")
    def test_a_program_of_ones_own_links(self):
        with open(self.path("program.cpp"), "w", encoding="ascii") as file:
            file.write(PROGRAM)
        with open(self.path("a.vx"), "wb") as file:
            file.write(document())
        environment = {**os.environ, "PKG_CONFIG_PATH": self.path("lib/pkgconfig")}
        flags, plugins = (subprocess.run(["pkg-config", *words, "vxhost"], check=True, capture_output=True, text=True,
                                         env=environment).stdout
                          for words in (["--cflags", "--libs"], ["--variable=plugindir"]))
        subprocess.run([os.environ["VX_CXX"], "-std=c++20", "-Wall", "-Wextra", "-Werror", self.path("program.cpp"), "-o",
                        self.path("program"), *shlex.split(flags)], check=True)
        output = subprocess.run([self.path("program"), os.path.join(plugins.strip(), "vxparser.so"), self.path("a.vx")],
                                check=True, capture_output=True, text=True,
                                env={**os.environ, "LD_LIBRARY_PATH": self.path("lib")})
        self.assertEqual(output.stdout, "0 255\n")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
