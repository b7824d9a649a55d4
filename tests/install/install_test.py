#!/usr/bin/env python3
"""install_test.py PREFIX CASE [GENERATOR]: what a user does in an empty folder with the package at the prefix."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time

PREFIX = pathlib.Path(sys.argv[1])
DOCUMENTS = PREFIX / "share/doc/tnc"
# Names of all kinds that a rule has to quote; each file includes the next.
NESTED = ["index.tn", "in a folder/x#y.inc", "in a folder/$z.inc"]


def run(*command, status=0):
    """What the command says, both ways."""
    environment = os.environ | {"PKG_CONFIG_PATH": str(PREFIX / "share/pkgconfig")}
    environment["PATH"] = f"{PREFIX}/bin:{environment['PATH']}"
    ended = subprocess.run(command, env=environment, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    assert ended.returncode == status, f"{command}: exit {ended.returncode}\n{ended.stdout}"
    return ended.stdout


def write(path, text):
    path = pathlib.Path(path)
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text)


def write_pages(folder, nested):
    for page, included in zip(nested, [*nested[1:], None]):
        end = '<TnEVAL EXPR="{tarn_array_min(l.a)}">'
        write(f"{folder}/{page}", f'<TnINCLUDE FILE="{included}">' if included else end)
    write(f"{folder}/other.tn", "other")
    shutil.copy(DOCUMENTS / "examples/extension/array_functions.c", f"{folder}/mine.c")


def program():
    for document in DOCUMENTS.rglob("*.md"):
        for target in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", document.read_text()):
            assert (document.parent / target).exists(), f"{document}: {target}"
    assert run("tnc", "--version") == "5.52\n"
    write("a.tn", "Hi")
    assert run("tnc", "-o", "a.tna", "a.tn") == "" and '"Hi"' in pathlib.Path("a.tna").read_text()
    if os.environ["PORTABLE"] == "0":
        return
    for path in (PREFIX / "bin").iterdir():
        needed = set(re.findall(r"NEEDED.*\[(.*)\]", run("readelf", "-d", path)))
        assert needed <= {"libc.so.6", "libm.so.6", "ld-linux-x86-64.so.2"}, needed
        for folder in "SOURCE", "BUILD":
            assert os.environ[folder].encode() not in path.read_bytes(), f"{path}: {folder}"


def extension():
    """A library in C and one in C++, of the installed header alone, both with all warnings as errors."""
    page = '<TnEVAL EXPR="{Tarn_Array_Next(l.a, 1)}">'
    head = '.function tarn_array_next\texternal\tstdoutinherit\n.parameter\tl_0\t"array"\treference\n.parameter\tl_1\t"index"'
    source = (DOCUMENTS / "examples/extension/array_functions.c").read_text()
    write("mine.c", source)
    write("mine.cpp", "#include <string>\nstd::string text(40, ' ');\n" + source)
    write("wanting.c", source.replace("(void)vm,", "extern void tnVariable_None(void); tnVariable_None(), (void)vm,"))
    write("a.tn", page)
    flags = [*run("pkg-config", "--cflags", "tnc").split(), "-shared", "-fPIC", "-fvisibility=hidden", "-Wall", "-Wextra"]
    for compiler, source in (["cc", "-std=c11"], "mine.c"), (["c++", "-std=c++11"], "mine.cpp"), (["cc"], "wanting.c"):
        run(*compiler, "-Werror", "-pedantic", *flags, "-o", f"./{source}.so", source)
        run("tnc", "-b", f"./{source}.so", "-o", "a.tna", "a.tn")
        assert head in pathlib.Path("a.tna").read_text()
    now = ["env", "LD_BIND_NOW=1", "tnc", "-o", "empty.tna", "-b", "./mine.c.so"]
    run(*now, "/dev/null")
    assert "undefined symbol: tnVariable_None" in run(*now, "-b", "./wanting.c.so", "/dev/null", status=1)


def times(folder):
    return {path.name: path.stat().st_mtime_ns for path in pathlib.Path(folder).rglob("*.tna")}


def made_anew(folder, build, touched=None):
    before = times(folder)
    if touched:
        time.sleep(0.02)  # the clock of a file system ticks slowly
        os.utime(touched)
    run(*build)
    return {name for name, written in times(folder).items() if before.get(name) != written}


def cmake_build(generator):
    """Whatever a program was made of makes it anew, and no other; the folder isn't the top one."""
    write("CMakeLists.txt", "cmake_minimum_required(VERSION 3.21)\nproject(all C)\nadd_subdirectory(site)")
    write("site/CMakeLists.txt", """
find_package(tnc REQUIRED)
add_library(mine MODULE mine.c)
target_link_libraries(mine PRIVATE tnc::extension)
tnc_add_program(index SOURCES other.tn index.tn DEFINES A B EXTENSIONS mine OPTIONS -O 2)
tnc_add_program(other SOURCES other.tn OUTPUT page.tna)
""")
    write_pages("site", NESTED)
    run("cmake", "-G", generator, "-B", "build", f"-DCMAKE_PREFIX_PATH={PREFIX}")
    build = ["cmake", "--build", "build"]
    assert made_anew("build", build) == {"index.tna", "page.tna"}
    assert made_anew("build", build) == set()
    for path in [*NESTED, "mine.c"]:
        assert made_anew("build", build, f"site/{path}") == {"index.tna"}, path
    assert made_anew("build", build, "site/other.tn") == {"index.tna", "page.tna"}


def rules_of_make():
    """A thousand pages, fewer where that takes long; then one program's inputs alone give the same bytes elsewhere."""
    pages = 1000 if os.environ["PORTABLE"] == "1" else 10
    nested = [*NESTED, "in a folder/a:b.inc"]  # makefiles of CMake have no form for the last
    write_pages(".", nested)
    run("cc", "-shared", "-fPIC", *run("pkg-config", "--cflags", "tnc").split(), "-o", "mine.so", "mine.c")
    for number in range(pages):
        write(f"page{number}.tn", f"page {number}")
    write("Makefile", """
TNC_PROGRAMS := $(patsubst %.tn,%.tna,$(wildcard *.tn))
TNCFLAGS := -b ./mine.so
all: $(TNC_PROGRAMS)
include $(shell pkg-config --variable=make_rules tnc)
""")
    build = ["make", f"-j{os.cpu_count()}"]
    assert len(made_anew(".", build)) == pages + 2
    assert made_anew(".", build, nested[-1]) == {"index.tna"}
    rule = pathlib.Path("index.tna.d").read_text()
    for path in [*nested, "./mine.so"]:
        name = re.sub(r"[ #:]", r"\\\g<0>", path).replace("$", "$$")
        assert f" \\\n  {name}" in rule and f"\n{name}:\n" in rule, rule
        os.makedirs(os.path.dirname(f"alone/{path}"), exist_ok=True)
        shutil.copy(path, f"alone/{path}")
    run("env", "-C", "alone", "tnc", "-b", "./mine.so", "index.tn")
    assert pathlib.Path("alone/output.tna").read_bytes() == pathlib.Path("index.tna").read_bytes()
    os.remove(nested[1])
    assert "CE_" in run(*build, status=2) and not pathlib.Path("index.tna").exists()


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    globals()[sys.argv[2]](*sys.argv[3:])
