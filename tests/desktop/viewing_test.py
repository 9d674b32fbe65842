"""A double click on a drawing, and what shops of programs tell of the viewer."""
import json
import os
import shutil
import signal
import subprocess
import sys
import unittest
import urllib.request
import xml.etree.ElementTree as ElementTree

from vxcommand import CommandTest, document

SOURCE = os.environ["VX_SOURCE_DIR"]
BUILD = os.environ["VX_BUILD_DIR"]
OURS = "image/x-vx-drawing"


def has(*programs):
    return unittest.skipUnless(all(map(shutil.which, programs)), f"there is no {' or no '.join(programs)} here")


class Viewing(CommandTest):
    def setUp(self):
        super().setUp()
        os.mkdir(self.path("viewer"))
        self.write("viewer/index.html", b"<!doctype html>")
        self.prefix = self.install("-DVX_VIEWER=" + self.path("viewer"))
        self.entry = os.path.join(self.prefix, "share/applications/vx.desktop")
        self.tale = os.path.join(self.prefix, "share/metainfo/invalid.lists.vx.metainfo.xml")
        with open(self.entry, encoding="utf-8") as file:
            self.keys = dict(line.rstrip("\n").split("=", 1) for line in file if "=" in line)

    def install(self, viewer):
        prefix = self.path("prefix" + str(len(self.files())))
        subprocess.run(["cmake", "-DCMAKE_INSTALL_PREFIX=" + prefix, viewer, "-P", os.path.join(BUILD, "cmake_install.cmake")], check=True,
                       capture_output=True)
        return prefix

    def environment(self):
        """Returns that of a desktop which has this installation and no other."""
        share = os.path.join(self.prefix, "share")
        for tool, folder in (("update-mime-database", "mime"), ("update-desktop-database", "applications")):
            subprocess.run([tool, os.path.join(share, folder)], check=True, capture_output=True)
        return {**os.environ, "XDG_DATA_DIRS": share + ":/usr/share", "XDG_DATA_HOME": self.path("home"), "XDG_CONFIG_HOME": self.path("home"),
                "XDG_CURRENT_DESKTOP": "GNOME", "HOME": self.path("home"), "LC_ALL": "C.UTF-8",
                "PATH": os.path.join(self.prefix, "bin") + ":" + os.environ["PATH"]}

    def test_without_a_viewer_nothing_is_to_open_drawings(self):
        prefix = self.install("-DVX_VIEWER=" + self.path("none"))
        for name in ("applications", "metainfo", "vx/viewer"):
            self.assertTrue(os.path.exists(os.path.join(self.prefix, "share", name)), name)
            self.assertFalse(os.path.exists(os.path.join(prefix, "share", name)), name)

    @has("desktop-file-validate")
    def test_the_entry_is_valid(self):
        run = subprocess.run(["desktop-file-validate", self.entry], capture_output=True, text=True, check=False)
        self.assertEqual((run.returncode, run.stdout, run.stderr), (0, "", ""))

    def test_the_entry_names_what_is_there(self):
        self.assertEqual(self.keys["MimeType"], OURS + ";")
        program, command, files = self.keys["Exec"].split()
        self.assertEqual((command, files, self.keys["TryExec"]), ("view", "%F", program))
        self.assertTrue(os.access(os.path.join(self.prefix, "bin", program), os.X_OK))
        self.assertTrue(os.path.exists(os.path.join(self.prefix, f"share/icons/hicolor/scalable/apps/{self.keys['Icon']}.svg")))

    @has("appstreamcli")
    def test_the_tale_is_valid(self):
        run = subprocess.run(["appstreamcli", "validate", "--no-net", "--no-color", self.tale], capture_output=True, text=True, check=False)
        self.assertEqual(run.returncode, 0, run.stdout + run.stderr)

    def test_the_tale_is_of_the_entry(self):
        root = ElementTree.parse(self.tale).getroot()
        self.assertEqual(root.get("type"), "desktop-application")
        self.assertEqual(os.path.basename(self.tale), root.findtext("id") + ".metainfo.xml")
        self.assertEqual(root.findtext("launchable"), os.path.basename(self.entry))
        self.assertEqual(root.findtext("provides/mediatype"), OURS)
        names = {one.get("{http://www.w3.org/XML/1998/namespace}lang"): one.text for one in root.findall("name")}
        self.assertEqual(names, {None: self.keys["Name"], "de": self.keys["Name[de]"], "ja": self.keys["Name[ja]"]})

    @has("gio", "update-mime-database", "update-desktop-database")
    def test_a_desktop_opens_drawings_with_it(self):
        told = subprocess.run(["gio", "mime", OURS], check=True, capture_output=True, text=True, env=self.environment()).stdout
        self.assertIn(f"Default application for “{OURS}”: vx.desktop\n", told)

    @has("xdg-mime", "update-mime-database", "update-desktop-database")
    def test_xdg_mime_finds_it(self):
        environment = self.environment()
        for desktop in ("GNOME", "XFCE", ""):
            told = subprocess.run(["xdg-mime", "query", "default", OURS], check=True, capture_output=True, text=True,
                                  env={**environment, "XDG_CURRENT_DESKTOP": desktop}).stdout
            self.assertEqual(told, "vx.desktop\n", desktop)

    @has("gio", "update-mime-database", "update-desktop-database")
    def test_a_double_click_opens_the_browser(self):
        """As a file manager would start it: for a name that says nothing, and that of another format."""
        environment = {**self.environment(), "BROWSER": self.path("browser")}
        self.write("browser", b'#!/bin/sh\necho "$PPID $1" >"$(dirname "$0")/asked"\n')
        os.chmod(self.path("browser"), 0o755)
        os.mkfifo(self.path("asked"))
        for name in ("a drawing", "b.eps"):
            self.write(name, document())
            subprocess.run(["gio", "open", self.path(name)], check=True, stdout=subprocess.DEVNULL, env=environment)
            server, address = self.read("asked").decode().split()
            try:
                with urllib.request.urlopen(address.replace("?served", "drawings.json")) as answer:
                    self.assertEqual(json.load(answer), [{"name": name, "url": "drawings/0"}])
            finally:
                os.kill(int(server), signal.SIGTERM)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
