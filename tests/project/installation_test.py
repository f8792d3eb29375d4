#!/usr/bin/env python3
"""Installs a build tree into a temporary prefix, moves the prefix, and uses what stands there.

installation_test.py --build DIR --source DIR --cmake PROGRAM --compiler PROGRAM [--flags=FLAGS] [unittest option...]
FLAGS are those that a program needs to go with the libraries of the build tree, such as -fsanitize=address.
"""
import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

LIBRARIES = ["ztimporter", "ztplatform", "ztrecorddb"]
arguments = None


def run(*command, **environment):
    """What the command prints; a command that fails fails the test with it."""
    # Nothing but the prefix may help to find the libraries.
    given = {name: value for name, value in os.environ.items()
             if name not in ("LD_LIBRARY_PATH", "CMAKE_PREFIX_PATH", "PKG_CONFIG_PATH")}
    done = subprocess.run([str(word) for word in command], env=given | environment, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))}\nended with {done.returncode}:\n{done.stdout}")
    return done.stdout


class Installation(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="installation_test.")
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        installed = cls.folder / "installed"
        run(arguments.cmake, "--install", arguments.build, "--prefix", installed)
        cls.prefix = cls.folder / "moved"
        installed.rename(cls.prefix)
        # Apart from the project, so that nothing of it is found by a path that leads upwards.
        cls.embed = cls.folder / "embed"
        shutil.copytree(arguments.source / "examples/embed", cls.embed)
        cls.libraries = next(cls.prefix.rglob("libztimporter.so")).parent
        cls.headers = cls.prefix / "include/ztimporter"

    def pkg_config(self, *options):
        # Without the folders of other packages: a program that uses the libraries needs none of them.
        return run("pkg-config", *options, PKG_CONFIG_LIBDIR=str(self.libraries / "pkgconfig")).split()

    def compile(self, *words):
        return run(arguments.compiler, "-std=c++20", "-Wall", "-Wextra", "-Wconversion", "-Werror",
                   *arguments.flags.split(), *words)

    def expect_embed_to_work(self, program):
        database = program.parent / "buoys.db"
        self.assertEqual(run(program, database), "records created: 1\n")
        self.assertTrue(database.exists())

    def test_the_example_builds_with_cmake(self):
        build = self.folder / "with-cmake"
        run(arguments.cmake, "-S", self.embed, "-B", build, "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={self.prefix}",
            f"-DCMAKE_CXX_COMPILER={arguments.compiler}", f"-DCMAKE_CXX_FLAGS={arguments.flags}")
        run(arguments.cmake, "--build", build)
        self.expect_embed_to_work(build / "embed")

    def test_the_example_builds_with_pkg_config_alone(self):
        program = self.folder / "with-pkg-config" / "embed"
        program.parent.mkdir()
        libraries = self.pkg_config("--variable=libdir", "ztimporter")[0]
        self.compile(self.embed / "embed.cpp", *self.pkg_config("--cflags", "--libs", "ztimporter", "ztrecorddb"),
                     f"-Wl,-rpath,{libraries}", "-o", program)
        self.expect_embed_to_work(program)

    def test_each_header_stands_by_itself(self):
        headers = sorted(path.relative_to(self.headers) for path in self.headers.rglob("*.h"))
        self.assertIn(pathlib.Path("ztimporter/adimporter.h"), headers)
        self.assertIn(pathlib.Path("recorddb/database.h"), headers)
        for header in headers:
            with self.subTest(header=str(header)):
                source = self.folder / "header.cpp"
                source.write_text(f"#include <{header}>\n", encoding="utf-8")
                self.compile("-I", self.headers, "-fsyntax-only", source)

    def test_private_dependencies_stay_private(self):
        for library in LIBRARIES:
            for name in self.pkg_config("--libs-only-l", library):
                self.assertIn(name.removeprefix("-l"), LIBRARIES)
            self.assertEqual([os.path.normpath(word) for word in self.pkg_config("--cflags", library)],
                             [f"-I{self.headers}"])
        linked = set()
        for file in (self.libraries / "cmake/ztimporter").glob("*.cmake"):
            text = file.read_text(encoding="utf-8")
            self.assertNotIn(str(arguments.source), text)
            for names in re.findall(r'(?:INTERFACE_LINK_LIBRARIES|LINK_DEPENDENT_LIBRARIES\w*) "(.*)"', text):
                linked.update(names.split(";"))
        self.assertEqual(linked, {"ztimporter::platform"})

    def test_the_libraries_carry_their_version(self):
        version = self.pkg_config("--modversion", "ztimporter")[0]
        minor = ".".join(version.split(".")[:2])
        for library in LIBRARIES:
            name = f"lib{library}.so"
            self.assertEqual(os.readlink(self.libraries / name), f"{name}.{minor}")
            self.assertEqual(os.readlink(self.libraries / f"{name}.{minor}"), f"{name}.{version}")
            self.assertIn(f"[{name}.{minor}]", run("readelf", "-d", self.libraries / name))

    def test_a_package_of_another_minor_version_is_not_taken(self):
        project = self.folder / "asks-for-another"
        project.mkdir()
        (project / "CMakeLists.txt").write_text("cmake_minimum_required(VERSION 3.25)\nproject(asks NONE)\n"
                                                "find_package(ztimporter 99.0 REQUIRED)\n", encoding="utf-8")
        with self.assertRaisesRegex(AssertionError, "compatible with requested version"):
            run(arguments.cmake, "-S", project, "-B", project / "build", f"-DCMAKE_PREFIX_PATH={self.prefix}")

    def test_the_tool_finds_the_libraries_of_its_prefix(self):
        tool = self.prefix / "bin/ztimport"
        run(tool, "--version")
        loaded = run("ldd", tool)
        for library in LIBRARIES:
            self.assertRegex(loaded, rf"lib{library}\.so\S* => {re.escape(str(self.prefix))}/")

    def test_the_documentation_and_the_license_are_there(self):
        for name in ("LICENSE", "README.md", "CHANGELOG.md", "docs/packets.md", "examples/embed/embed.cpp"):
            self.assertTrue((self.prefix / "share/doc/ztimporter" / name).exists(), name)

    def test_the_man_page_and_the_completion_are_there(self):
        for name in ("man/man1/ztimport.1", "bash-completion/completions/ztimport"):
            self.assertTrue((self.prefix / "share" / name).exists(), name)


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    for option in ("--build", "--source"):
        parser.add_argument(option, type=pathlib.Path, required=True)
    for option in ("--cmake", "--compiler"):
        parser.add_argument(option, required=True)
    parser.add_argument("--flags", default="")
    arguments, others = parser.parse_known_args()
    unittest.main(argv=[sys.argv[0], *others])
