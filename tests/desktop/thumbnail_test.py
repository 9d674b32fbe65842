"""The pictures that a file manager shows: by themselves, without a machine's files around, and by the services of two desktops."""
import errno
import hashlib
import os
import shlex
import shutil
import subprocess
import sys
import unittest

from vxcommand import CommandTest, Png, SANITIZED, WITHOUT_LANDLOCK, document, sample, sample_names

SOURCE = os.environ["VX_SOURCE_DIR"]
THUMBNAILER = os.environ["VX_THUMBNAILER"]
PACKAGING = os.path.join(SOURCE, "packaging")
# A busy machine is to fail no test.
PATIENT = {"VX_THUMBNAILER_SECONDS": "100"}
TUMBLER = "/usr/share/dbus-1/services/org.xfce.Tumbler.Thumbnailer1.service"


class Thumbnails(CommandTest):
    def run_thumbnailer(self, *words, status=0, environment=None, **options):
        """Returns what it tells, a line or nothing."""
        run = subprocess.run([THUMBNAILER, *map(str, words)], cwd=self.folder, capture_output=True, text=True, check=False, timeout=120,
                             env={**os.environ, **PATIENT, **(environment or {})}, **options)
        self.assertEqual((run.returncode, run.stdout), (status, ""), run.stderr)
        return run.stderr

    def test_they_are_small_pictures_as_vx_renders_them(self):
        for name in sample_names():
            with self.subTest(name):
                self.run_thumbnailer(sample(name), "a.png", 128)
                self.assertEqual(self.read("a.png"),
                                 self.run_vx("render", "-q", sample(name), "-f", "png", "--fit", "128", "-o", "-")[0])
                picture = Png(self.read("a.png"))
                self.assertEqual(max(picture.width, picture.height), 128)

    def test_a_file_that_is_open_gets_them(self):
        self.write("a.png", b"old" * 100000)
        with open(self.path("a.png"), "rb") as file:
            self.run_thumbnailer(sample("poster"), "a.png", 64)
            self.assertEqual(os.fstat(file.fileno()).st_ino, os.stat(self.path("a.png")).st_ino)
            self.assertEqual(Png(file.read()).height, 64)
        self.assertEqual(self.files(), ["a.png"])

    def test_a_failure_keeps_what_was_there_and_is_told_in_a_line(self):
        self.write("a.png", b"old")
        self.write("bad.vx", document("0 1 k\n"))
        self.write("empty.vx", b"")
        self.write("text.vx", b"words")
        os.mkfifo(self.path("pipe.vx"))
        for name, told in (("bad.vx", "malformed"), ("empty.vx", "the file is empty"), ("text.vx", "not a VX document"),
                           ("none.vx", "no such file"), ("pipe.vx", "is a pipe"), (".", "is a directory")):
            with self.subTest(name):
                message = self.run_thumbnailer(name, "a.png", 64, status=1)
                self.assertRegex(message, rf"^vx: {name}: .*{told}.*\n$")
                self.assertEqual(self.read("a.png"), b"old")
        message = self.run_thumbnailer(sample("gift"), "no/a.png", 64, status=4)
        self.assertEqual(message, f"vx: no/a.png: cannot be written, {os.strerror(errno.ENOENT)[0].lower()}{os.strerror(errno.ENOENT)[1:]}\n")

    def test_a_wrong_command_line_is_told(self):
        for words in ([], ["a.vx", "a.png"], ["a.vx", "a.png", "big"], ["a.vx", "a.png", "0"], ["a.vx", "a.png", "5000"],
                      ["a.vx", "a.png", "64", "more"]):
            self.assertIn("usage: vx-thumbnailer IN OUT SIZE\n", self.run_thumbnailer(*words, status=2))

    @unittest.skipIf(SANITIZED, "a sanitizer is not confined")
    def test_nothing_is_read_unconfined(self):
        self.assertIn("no Landlock in this kernel", self.run_thumbnailer(sample("gift"), "a.png", 64, status=1,
                                                                              environment=WITHOUT_LANDLOCK))
        self.assertEqual(self.files(), [])

    def test_what_takes_long_is_given_up(self):
        self.write("long.vx", document("0 0 0 1 K\n[0.01 0.01] 0 d\n" + "0 0 m 36 0 72 36 0 36 c S\n" * 2000000))
        self.assertEqual(self.run_thumbnailer("long.vx", "a.png", 64, status=5, environment={"VX_THUMBNAILER_SECONDS": "1"}),
                         "vx: long.vx: not done after 1 s, nothing written: draw it with vx render, which has options for that\n")
        self.assertEqual(self.files(), ["long.vx"])

    def test_a_wrong_number_of_seconds_is_told(self):
        for seconds in ("", "0", "1.5", "3601", "soon"):
            self.assertEqual(self.run_thumbnailer(sample("gift"), "a.png", 64, status=2, environment={"VX_THUMBNAILER_SECONDS": seconds}),
                             f"vx: VX_THUMBNAILER_SECONDS {seconds}: not a whole number of seconds from 1 to 3600: give one, or unset it\n")
        self.assertEqual(self.files(), [])

    CONFINED = ["bwrap", "--ro-bind", "/usr", "/usr", "--symlink", "usr/lib", "/lib", "--symlink", "usr/lib64", "/lib64", "--proc", "/proc",
                "--dev", "/dev", "--unshare-all", "--die-with-parent", "--chdir", "/", "--clearenv", *(word for pair in PATIENT.items() for word in ("--setenv", *pair))]

    @unittest.skipIf(SANITIZED, "what a sanitizer needs is not there")
    @unittest.skipUnless(shutil.which("bwrap"), "there is no bwrap here")
    def test_it_needs_nothing_but_usr(self):
        if subprocess.run([*self.CONFINED, "/usr/bin/true"], capture_output=True, check=False).returncode != 0:
            self.skipTest("bwrap does not work here")
        os.mkdir(self.path("out"))
        for name in ("poster", "text-point", "text-japanese"):
            subprocess.run([*self.CONFINED, "--ro-bind", THUMBNAILER, "/vx-thumbnailer", "--ro-bind", sample(name), "/in",
                            "--bind", self.path("out"), "/out", "/vx-thumbnailer", "/in", "/out/a.png", "128"], check=True)
            self.run_thumbnailer(sample(name), "b.png", 128)
            self.assertEqual(self.read("out/a.png"), self.read("b.png"), name)


@unittest.skipIf(SANITIZED, "services give it no room for a sanitizer")
@unittest.skipUnless(shutil.which("dbus-run-session") and shutil.which("update-mime-database"),
                     "there is no dbus-run-session or no update-mime-database here")
class Services(CommandTest):
    def setUp(self):
        super().setUp()
        for name in ("bin", "data/mime/packages", "data/thumbnailers", "cache", "config", "run"):
            os.makedirs(self.path(name))
        shutil.copy(THUMBNAILER, self.path("bin"))
        shutil.copy(os.path.join(PACKAGING, "thumbnailer", "vx.thumbnailer"), self.path("data/thumbnailers"))
        shutil.copy(os.path.join(PACKAGING, "mime", "vx-drawing.xml"), self.path("data/mime/packages"))
        os.chmod(self.path("run"), 0o700)
        self.environment = {**os.environ, **PATIENT, "XDG_DATA_HOME": self.path("data"), "XDG_CACHE_HOME": self.path("cache"),
                            "XDG_CONFIG_HOME": self.path("config"), "XDG_RUNTIME_DIR": self.path("run"), "HOME": self.folder,
                            "PATH": self.path("bin") + ":" + os.environ["PATH"], "GIO_USE_VFS": "local", "LC_ALL": "C.UTF-8"}
        self.environment.pop("LD_LIBRARY_PATH", None)
        subprocess.run(["update-mime-database", self.path("data/mime")], check=True, env=self.environment)

    def compare(self, path, name):
        """A service writes the picture anew, with words of its own beside it."""
        expected = Png(self.run_vx("render", "-q", sample(name), "-f", "png", "--fit", "128", "-o", "-")[0])
        with open(path, "rb") as file:
            made = Png(file.read())
        self.assertEqual((made.width, made.height), (expected.width, expected.height))
        for y in range(0, made.height, 7):
            for x in range(0, made.width, 5):
                self.assertEqual(made.pixel(x, y)[:3], expected.pixel(x, y)[:3], (name, x, y))

    @unittest.skipUnless(os.path.exists(TUMBLER), "there is no tumbler here")
    def test_tumbler(self):
        # The names do not say what they are.
        pictures = {}
        for name, file in (("poster", "poster.vx"), ("text-point", "text.eps"), ("binary-wrapper", "wrapped")):
            shutil.copy(sample(name), self.path(file))
            uri = "file://" + self.path(file)
            pictures[uri] = name, self.path(f"cache/thumbnails/normal/{hashlib.md5(uri.encode()).hexdigest()}.png")
        call = ["gdbus", "call", "--session", "-d", "org.freedesktop.thumbnails.Thumbnailer1", "-o", "/org/freedesktop/thumbnails/Thumbnailer1",
                "-m", "org.freedesktop.thumbnails.Thumbnailer1.Queue", str(list(pictures)), str(["image/x-vx-drawing"] * len(pictures)),
                "normal", "default", "0"]
        wait = " && ".join(f"until [ -s {path} ]; do sleep 0.1; done" for _, path in pictures.values())
        run = subprocess.run(["dbus-run-session", "--", "timeout", "60", "sh", "-c", f"{shlex.join(call)} && {wait}"], check=False,
                             capture_output=True, text=True, env=self.environment, timeout=120)
        self.assertEqual(run.returncode, 0, run.stdout + run.stderr)
        for name, path in pictures.values():
            self.compare(path, name)

    # The service that a file manager of this desktop calls.
    FACTORY = """
#define GNOME_DESKTOP_USE_UNSTABLE_API
#include <libgnome-desktop/gnome-desktop-thumbnail.h>
#include <stdio.h>
int main(int argc, char **argv)
{
    GError *error = NULL;
    GnomeDesktopThumbnailFactory *factory = gnome_desktop_thumbnail_factory_new(GNOME_DESKTOP_THUMBNAIL_SIZE_NORMAL);
    GdkPixbuf *picture = gnome_desktop_thumbnail_factory_generate_thumbnail(factory, argv[1], "image/x-vx-drawing", NULL, &error);
    if (picture == NULL || !gdk_pixbuf_save(picture, argv[2], "png", &error, NULL)) {
        fprintf(stderr, "%s\\n", error->message);
        return 1;
    }
    return argc != 3;
}
"""

    @unittest.skipUnless(shutil.which("bwrap"), "there is no bwrap here")
    def test_gnome_desktop(self):
        flags = subprocess.run(["pkg-config", "--cflags", "--libs", "gnome-desktop-3.0"], capture_output=True, text=True, check=False)
        if flags.returncode != 0:
            self.skipTest("there is no libgnome-desktop-3-dev here")
        # The factory shows a program nothing but /usr: so the installation is there, in a view of the files that ends with the call.
        lay = ["unshare", "--mount", "--map-root-user", "sh", "-ec", 'mount --bind "$1" /usr/local; shift; exec "$@"', "sh", self.folder]
        if subprocess.run([*lay, "true"], capture_output=True, check=False).returncode != 0:
            self.skipTest("nothing can be mounted here")
        self.write("factory.c", self.FACTORY.encode())
        subprocess.run([os.environ["VX_CC"], "factory.c", "-o", "factory", *shlex.split(flags.stdout)], cwd=self.folder, check=True)
        # The factory may show the program no environment, so no drawing has text, for which fonts are listed.
        self.environment["PATH"] = "/usr/local/bin:/usr/bin:/bin"
        for name in ("poster", "gift"):
            shutil.copy(sample(name), self.path("drawing"))
            run = subprocess.run(["dbus-run-session", "--", "timeout", "60", *lay, self.path("factory"), "file://" + self.path("drawing"),
                                  self.path("made.png")], check=False, capture_output=True, text=True, env=self.environment, timeout=120)
            self.assertEqual(run.returncode, 0, run.stderr)
            self.compare(self.path("made.png"), name)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
