"""An installation: everything is in its place, and the program works from there."""
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

from vxcommand import Png, document

COMMANDS = ["info", "render", "trace", "fonts", "batch"]


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

    def test_what_helps_is_there(self):
        for name in ["share/man/man1/vx.1", *(f"share/man/man1/vx-{command}.1" for command in COMMANDS),
                     "share/bash-completion/completions/vx", "share/zsh/site-functions/_vx"]:
            self.assertTrue(os.path.getsize(self.path(name)) > 0, name)

    def test_no_folder_is_empty(self):
        for folder, folders, files in os.walk(self.prefix):
            self.assertTrue(folders or files, folder)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
