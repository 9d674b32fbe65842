"""The lines of docs/guide.md do what the page says, one after the other, in a folder with a copy of the samples."""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

SOURCE, BUILD = os.environ["VX_SOURCE_DIR"], os.environ["VX_BUILD_DIR"]
SANITIZED = os.environ.get("VX_SANITIZED", "0") not in ("", "0")
GAP = "…"  # stands for the rest of a line, or alone on one for any lines

# Loads the page that it is told to, as a browser does, and closes it.
BROWSER = """#!/usr/bin/env python3
import sys
import urllib.request

page = sys.argv[1].partition("?")[0]
with urllib.request.urlopen(page):
    pass
with urllib.request.urlopen(page + "alive") as alive:
    alive.readline()
"""

# A fenced part of the page: "console" with the exit status of its last command, or a program.
PART = re.compile(r"^```(console|python)(?: status=(\d+))?\n(.*?)^```$", re.MULTILINE | re.DOTALL)


def pattern_of(shown):
    lines = shown.splitlines(keepends=True)
    return "".join("(?:.*\n)*" if line.strip() == GAP else re.escape(line).replace(GAP, ".*") for line in lines)


class Guide(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix="vx-guide-")
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        cls.prefix = os.path.join(cls.folder, "prefix")
        subprocess.run(["cmake", "--install", BUILD, "--prefix", cls.prefix], check=True, capture_output=True)
        cls.work = os.path.join(cls.folder, "work")
        shutil.copytree(os.path.join(SOURCE, "samples"), os.path.join(cls.work, "samples"))
        viewer, browser = os.path.join(cls.folder, "viewer"), os.path.join(cls.folder, "browser")
        os.mkdir(viewer)
        for path, text in ((os.path.join(viewer, "index.html"), "<!doctype html>"), (browser, BROWSER)):
            with open(path, "w", encoding="utf-8") as file:
                file.write(text)
        os.chmod(browser, 0o755)
        cls.environment = {**os.environ, "PATH": f"{cls.prefix}/bin:/usr/bin:/bin", "LD_LIBRARY_PATH": "", "LC_ALL": "C.UTF-8",
                           "PYTHONPATH": f"{cls.prefix}/lib/python3/dist-packages", "PYTHONDONTWRITEBYTECODE": "1",
                           "VX_VIEWER": viewer, "BROWSER": browser}
        with open(os.path.join(SOURCE, "docs", "guide.md"), encoding="utf-8") as page:
            cls.page = page.read()

    def run_line(self, line):
        run = subprocess.run(["bash", "-c", "set -o pipefail; " + line], cwd=self.work, env=self.environment, check=False,
                             stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        return run.returncode, run.stdout

    def test_every_line(self):
        commands = 0
        for kind, status, text in PART.findall(self.page):
            if kind == "python":
                name = re.match(r"# (\S+\.py): ", text)[1]
                with open(os.path.join(self.work, name), "w", encoding="utf-8") as program:
                    program.write(text)
                continue
            lines = re.findall(r"^\$ (.*)\n((?:(?!\$ ).*\n)*)", text, re.MULTILINE)
            self.assertEqual("".join(f"$ {line}\n{shown}" for line, shown in lines), text)
            for number, (line, shown) in enumerate(lines):
                commands += 1
                if SANITIZED and line.startswith("python3"):
                    continue  # Python itself is not instrumented
                with self.subTest(line=line):
                    ended, told = self.run_line(line)
                    if number == len(lines) - 1:
                        self.assertEqual(ended, int(status or 0), told)
                    self.assertRegex(told, rf"\A{pattern_of(shown)}\Z")
        self.assertGreater(commands, 25)

    def test_its_pictures_are_there(self):
        pictures = re.findall(r"!\[[^\]]+\]\(([^)]+)\)", self.page)
        self.assertGreater(len(pictures), 6)
        for picture in pictures:
            with open(os.path.join(SOURCE, "docs", picture), "rb") as file:
                self.assertEqual(file.read(4), b"\x89PNG", picture)

    def test_its_pictures_show_what_the_lines_make(self):
        pictures = os.path.join(SOURCE, "docs", "pictures", "guide")
        made = {"trumpet": "samples/pocket-trumpet.vx", "cut": "cut.vx", "paprika": "samples/paprika.vx", "harp": "samples/harp.vx",
                "changes": "changes.png"}
        for line in ("head -c 60000 samples/pocket-trumpet.vx >cut.vx", "sed '214s/0.05 0.85/0.85 0.2/' samples/poster.vx >corrected.vx",
                     "vx diff samples/poster.vx corrected.vx -o changes.png --side-by-side --fit 480"):
            self.assertIn("$ " + line + "\n", self.page)
            self.run_line(line)
        for name, drawing in made.items():
            with self.subTest(name=name):
                self.assertEqual(self.run_line(f"vx diff -q {drawing} {pictures}/{name}.png")[0], 0)

    def test_its_tasks_are_those_that_it_lists(self):
        listed = re.findall(r"^- \[(.*)\]\(#(.*)\)$", self.page, re.MULTILINE)
        self.assertEqual([title for title, _ in listed], re.findall(r"^## (.*)$", self.page, re.MULTILINE))
        for title, place in listed:
            self.assertEqual(place, title.lower().replace(" ", "-"))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
