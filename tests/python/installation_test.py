"""Tests the package in its place: what it finds there, and what it says when something does not fit."""
import ast
import os
import re
import shutil
import site
import subprocess
import sys

import pytest

import vx
from conftest import PREFIX, SOURCES
from vx import _libvx

PACKAGE = os.path.dirname(vx.__file__)
BUILD = os.environ["VX_BUILD_DIR"]


def run(program, **environment):
    return subprocess.run([sys.executable, "-c", program], capture_output=True, text=True, check=False,
                          env={**os.environ, "PYTHONPATH": "", **environment})


def last_line(program, **environment):
    done = run(program, **environment)
    assert done.returncode != 0, done.stdout
    return done.stderr.splitlines()[-1]


def test_it_is_the_installed_one():
    assert PACKAGE == os.path.join(PREFIX, "lib/python3/dist-packages/vx")
    assert _libvx.find(PACKAGE) == os.path.join(PREFIX, "lib/libvx.so.0")
    assert set(os.listdir(PACKAGE)) == set(os.listdir(os.path.join(SOURCES, "python", "vx"))) - {"__pycache__"}


def test_it_stands_on_the_c_interface_alone():
    count = 0
    for name in os.listdir(PACKAGE):
        if not name.endswith(".py"):
            continue
        with open(os.path.join(PACKAGE, name), encoding="utf-8") as file:
            for node in ast.walk(ast.parse(file.read())):
                modules = [alias.name for alias in node.names] if isinstance(node, ast.Import) else []
                modules += [node.module] if isinstance(node, ast.ImportFrom) else []
                for module in modules:
                    count += 1
                    assert module.partition(".")[0] in {"vx", "cffi", *sys.stdlib_module_names}, name
    assert count > 20


# ---- Where it goes ----


def found_for(prefix, **environment):
    finder = os.path.join(SOURCES, "python", "find_packages.py")
    return subprocess.run([sys.executable, finder, prefix], check=True, capture_output=True, text=True,
                          env={**os.environ, **environment}).stdout.strip()


@pytest.mark.parametrize("prefix", ["/usr", "/usr/local", "/usr/local/"])
def test_python_looks_where_it_goes(prefix):
    folder = found_for(prefix)
    assert folder in site.getsitepackages()
    assert os.path.abspath(os.path.join(folder, "../../..")) == os.path.abspath(prefix)


def test_another_prefix_has_a_folder_of_no_version():
    assert found_for("/opt/vx") == "/opt/vx/lib/python3/dist-packages"


def test_a_home_folder_needs_no_setting(tmp_path):
    home = {"HOME": str(tmp_path)}
    subprocess.run(["cmake", "--install", BUILD, "--prefix", str(tmp_path / ".local")], check=True, capture_output=True,
                   env={**os.environ, **home})
    done = run("import vx; print(vx.__file__, [line for line in open('/proc/self/maps') if 'libvx' in line])", **home)
    assert done.stderr == ""
    assert done.stdout.startswith(f"{tmp_path}/.local/lib/python")
    assert f" {tmp_path}/.local/lib/libvx.so.0" in done.stdout


def test_a_package_of_a_distribution_is_put_together_elsewhere(tmp_path):
    subprocess.run(["cmake", "--install", BUILD, "--prefix", "/usr"], check=True, capture_output=True,
                   env={**os.environ, "DESTDIR": str(tmp_path)})
    assert (tmp_path / "usr/lib/python3/dist-packages/vx/__init__.py").exists()


# ---- Which library ----


def test_a_program_may_end_with_a_drawing_open():
    drawing = os.path.join(SOURCES, "samples", "gift.vx")
    done = run(f"import vx; drawing = vx.open({drawing!r}); drawing.render('svg'); drawing.itself = drawing",
               PYTHONPATH=os.path.dirname(PACKAGE))
    assert (done.returncode, done.stderr) == (0, "")


def test_without_one_beside_it_the_loader_s_is_taken(tmp_path):
    shutil.copytree(PACKAGE, tmp_path / "vx")
    done = run("import vx; print(vx.open(b'%!PS-Tavro-3.0\\n'))", PYTHONPATH=str(tmp_path),
               LD_LIBRARY_PATH=os.path.join(PREFIX, "lib"))
    assert "NotADrawingError" in done.stderr


@pytest.mark.parametrize("packages, is_taken", [
    ("lib/python3/dist-packages", True), ("lib/python3.11/site-packages", True), ("source/python", False),
    ("lib/other/dist-packages", False),
])
def test_a_file_beside_folders_of_other_names_is_not_loaded(tmp_path, packages, is_taken):
    package = tmp_path / packages / "vx"
    package.mkdir(parents=True)
    for folder in (tmp_path, tmp_path / "lib"):
        folder.mkdir(exist_ok=True)
        (folder / "libvx.so.0").write_bytes(b"")
    assert _libvx.find(str(package)) == (str(tmp_path / "lib/libvx.so.0") if is_taken else "libvx.so.0")


def test_a_library_that_is_missing_is_told():
    with pytest.raises(ImportError) as told:
        _libvx.load("libvx-no-such.so.0")
    assert str(told.value) == (
        "vx cannot load libvx-no-such.so.0, cannot open shared object file: No such file or directory: install vx as a whole, "
        "or name the folder of the library in LD_LIBRARY_PATH")


def test_a_library_that_is_damaged_is_told(tmp_path):
    shutil.copytree(PACKAGE, tmp_path / "lib/python3/dist-packages/vx")
    (tmp_path / "lib/libvx.so.0").write_bytes(b"no library at all" * 100)
    told = last_line("import vx", PYTHONPATH=str(tmp_path / "lib/python3/dist-packages"))
    assert told.startswith(f"ImportError: vx cannot load {tmp_path}/lib/libvx.so.0, invalid ELF header: install vx as a whole, ")


# Imports the package with other declarations, as another release has them.
OTHER = """
import sys, types
with open({path!r}, encoding="utf-8") as file:
    module = types.ModuleType("vx._declarations")
    exec(file.read().replace({old!r}, {new!r}), vars(module))
sys.modules["vx._declarations"] = module
import vx
"""


@pytest.mark.parametrize("old, new, text", [
    (r"#define VX_INTERFACE \d+", "#define VX_INTERFACE 99", r"interface 99 is not the \d+ of this library"),
    (r"const char \*vx_version\(void\);", "const char *vx_version(void);\nint vx_version_of_tomorrow(void);",
     "it has no vx_version_of_tomorrow"),
])
def test_a_library_of_another_release_is_told(old, new, text):
    path = os.path.join(PACKAGE, "_declarations.py")
    with open(path, encoding="utf-8") as file:
        old = re.search(old, file.read())[0]
    told = last_line(OTHER.format(path=path, old=old, new=new), PYTHONPATH=os.path.dirname(PACKAGE))
    assert re.fullmatch(f"ImportError: {PREFIX}/lib/libvx.so.0 is not the library of this package, {text}: "
                        "install both from one release", told), told


def test_cffi_that_is_missing_is_told():
    told = last_line("import sys; sys.modules['cffi'] = None; import vx", PYTHONPATH=os.path.dirname(PACKAGE))
    assert told == "ModuleNotFoundError: vx needs the package cffi: install python3-cffi, or cffi by pip"
