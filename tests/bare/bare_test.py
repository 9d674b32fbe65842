"""The library as it is built without a system: what it asks a machine for, and that it draws as the whole one does."""

import filecmp
import glob
import os
import re
import subprocess
import tempfile
import unittest

SOURCE = os.environ["VX_SOURCE"]
FULL = os.environ["VX_FULL_BUILD"]  # may not be there

# Files, folders, the environment, the machine's fonts, confinement, other processes and threads.
OF_A_SYSTEM = re.compile(
    r"Fc[A-Z]|seccomp_|landlock|syscall$|pthread_create|pthread_join|thrd_create|dlopen|dlsym|"
    r"(__xstat|__fxstat|stat|lstat|fstat|fstatat|statx|open|openat|creat|fopen|freopen|fdopen|tmpfile|mmap|pread|pwrite|"
    r"lseek|ftruncate|mkostemp|mkstemp|fallocate)(64)?$|"
    r"(read|write|close|unlink|rename|mkdir|opendir|readdir|poll|fcntl|madvise|munmap|mkdtemp|realpath|getcwd)$|"
    r"(secure_)?getenv$|fork$|vfork$|exec[lv]|posix_spawn|socket$|"
    r"_ZNK?St10filesystem|_ZNSt6thread|_ZNSt1[34]basic_([io]?fstream|filebuf)")


def needed(archive):
    """The names that objects of an archive leave undefined, without those that others of it define."""
    names = {True: set(), False: set()}
    for line in subprocess.run(["nm", "--format=posix", archive], check=True, capture_output=True, text=True).stdout.splitlines():
        words = line.split()
        if len(words) > 1 and len(words[1]) == 1:
            names[words[1] in "Uw"].add(words[0])
    return names[True] - names[False]


class Symbols(unittest.TestCase):
    def test_nothing_of_a_system_is_needed(self):
        for archive in os.environ["VX_ARCHIVES"].split(";"):
            with self.subTest(archive=os.path.basename(archive)):
                names = needed(archive)
                self.assertGreater(len(names), 5)
                self.assertEqual(sorted(filter(OF_A_SYSTEM.match, names)), [])

    def test_the_whole_library_needs_a_system(self):
        archive = f"{FULL}/lib/static/libvxhost.a"
        if not os.path.exists(archive):
            self.skipTest("the release is not built")
        found = {name for name in needed(archive) if OF_A_SYSTEM.match(name)}
        self.assertLessEqual({"FcFontList", "fcntl"}, found)


class Drawings(unittest.TestCase):
    FONTS = ["opentype/urw-base35/*.otf", "opentype/ipafont-gothic/*.ttf", "truetype/arphic-bsmi00lp/*.ttf"]

    def drawn(self, program, folder):
        fonts = [font for pattern in self.FONTS for font in sorted(glob.glob(f"/usr/share/fonts/{pattern}"))]
        self.assertGreater(len(fonts), 30)
        os.mkdir(folder)
        subprocess.run([program, folder, f"{SOURCE}/devices/colour/profiles/fogra39.icc", *fonts, "--",
                        *sorted(glob.glob(f"{SOURCE}/samples/*.vx"))], check=True)
        return sorted(os.listdir(folder))

    def test_are_those_of_the_whole_library(self):
        whole = f"{FULL}/tests/from_memory"
        if not os.path.exists(whole):
            self.skipTest("the release is not built")
        with tempfile.TemporaryDirectory() as folder:
            bare, full = f"{folder}/bare", f"{folder}/full"
            files = self.drawn(os.environ["VX_FROM_MEMORY"], bare)
            self.assertGreater(len(files), 4 * 60)
            self.assertEqual(self.drawn(whole, full), files)
            _, differing, missing = filecmp.cmpfiles(bare, full, files, shallow=False)
            self.assertEqual((differing, missing), ([], []))


if __name__ == "__main__":
    unittest.main()
