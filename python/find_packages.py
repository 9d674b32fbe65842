"""Prints the folder for packages in an installation of that prefix.

Under /usr, /usr/local and ~/.local that is where this Python looks by itself. Elsewhere PYTHONPATH has to name it, and a
folder of no version serves them all. It is PREFIX/lib/pythonX/Y-packages always: the package finds the library from there.
"""
import os
import site
import sys


def find_packages(prefix: str) -> str:
    for folder in [*site.getsitepackages(), site.getusersitepackages()]:
        if os.path.abspath(os.path.join(folder, "../../..")) == prefix:
            return folder
    return os.path.join(prefix, "lib/python3/dist-packages")


if __name__ == "__main__":
    print(find_packages(os.path.abspath(sys.argv[1])))
