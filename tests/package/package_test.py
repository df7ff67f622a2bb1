#!/usr/bin/env python3
"""Uses the staging installation as others would: from CMake, by pkg-config, by its commands."""
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

STAGING = pathlib.Path(os.environ["STAGING"])
LIBDIR = STAGING / os.environ["LIBDIR"]
CONSUMER = pathlib.Path(__file__).parent / "consumer"


class PackageCase(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="package-test-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.environment = {name: value for name, value in os.environ.items()
                            if name not in ("DISPLAY", "WAYLAND_DISPLAY", "LD_LIBRARY_PATH")}

    def run_to_end(self, *command, **environment):
        done = subprocess.run(command, env=self.environment | environment, text=True, cwd=self.folder,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.assertEqual(done.returncode, 0, done.stdout)
        return done.stdout

    def build(self, target, *options):
        self.run_to_end(os.environ["CMAKE"], "-G", "Ninja", "-S", CONSUMER, "-B", ".",
                        f"-DCMAKE_PREFIX_PATH={STAGING}", "-DCMAKE_BUILD_TYPE=Debug", *options)
        self.run_to_end(os.environ["CMAKE"], "--build", ".", "-j2", "--target", target)

    def start(self, program):
        """The program of a consumer brings up the module of another."""
        configuration = self.folder / "instrument.xml"
        configuration.write_text('<Root><Instrument><Module name="MainStartup"><ModuleLoadList version="1.0">'
                                 f'<Directory nameLinux="{self.folder}"><File name="consumer_module.so"/></Directory>'
                                 '</ModuleLoadList></Module></Instrument></Root>')
        output = self.run_to_end(self.folder / program, "-l", configuration)
        self.assertRegex(output, r"(?s)Module Name *: Consumer\n.*consumer module: up\n.*consumer module: down\n")


class Contents(PackageCase):
    @unittest.skipIf(os.environ["CXXFLAGS"], "the sanitizers' records name source files")
    def test_nothing_refers_to_the_build_tree(self):
        source = str(CONSUMER.parents[2]).encode()
        files = [path for path in STAGING.rglob("*") if path.is_file()]
        self.assertGreater(len(files), 50)
        self.assertIn(STAGING / "share/vqmstartup/instrument/languages/German.qm", files)
        for path in files:
            if source in path.read_bytes().replace(str(STAGING).encode(), b""):
                self.fail(f"{path} names {source}")

    def test_links_and_run_paths(self):
        for name in ("vqmplatform", "vqmstartup"):
            self.assertEqual((LIBDIR / f"lib{name}.so").readlink(), pathlib.Path(f"lib{name}.so.2"))
        for library in LIBDIR.rglob("*.so"):
            needed = self.run_to_end("ldd", library)
            self.assertNotIn("not found", needed)
            for path in re.findall(r"libvqm.* => (\S*)", needed):
                self.assertTrue(pathlib.Path(path).resolve().is_relative_to(STAGING), path)


    def test_tools_find_one_another(self):
        output = self.run_to_end(STAGING / "bin/vqm-modinfo", "--run", LIBDIR / "vqmstartup/instrument/SelfTest.so")
        self.assertIn("SelfTest", output)
        self.run_to_end(STAGING / "bin/vqm-startup-analyze", "--help")


class Headers(PackageCase):
    def test_each_compiles_alone(self):
        self.build("headers")
        self.assertGreater(len(list(self.folder.glob("**/*_headers.dir/**/*.o"))), 20)


class Consumers(PackageCase):
    def test_program_and_module(self):
        self.build("all")
        self.start("consumer")


class WithoutQt(PackageCase):
    def test_module_and_headers_of_the_contract(self):
        self.build("all", "-DCMAKE_DISABLE_FIND_PACKAGE_Qt6=ON")
        self.build("headers", "-DCMAKE_DISABLE_FIND_PACKAGE_Qt6=ON")
        self.assertTrue((self.folder / "consumer_module.so").exists())
        self.assertFalse((self.folder / "consumer").exists())


class PkgConfig(PackageCase):
    def flags(self, *arguments):
        return self.run_to_end("pkg-config", *arguments, PKG_CONFIG_PATH=str(LIBDIR / "pkgconfig")).split()

    def test_program_and_module(self):
        compiler = [os.environ["CXX"], "-std=c++20", "-fPIC", *os.environ["CXXFLAGS"].split()]
        contract = self.flags("--cflags", "--libs", "vqmstartup-contract")
        self.assertNotRegex(" ".join(contract), "Qt")
        self.run_to_end(*compiler, "-shared", CONSUMER / "Module.cpp", "-o", "consumer_module.so", *contract)
        self.run_to_end(*compiler, CONSUMER / "Program.cpp", "-o", "consumer",
                        *self.flags("--cflags", "--libs", "vqmstartup"), f"-Wl,-rpath,{LIBDIR}")
        self.start("consumer")


class Example(PackageCase):
    def test_runs_and_writes_to_the_users_folder_alone(self):
        def installed():
            return sorted((path, path.lstat().st_mtime_ns) for path in STAGING.rglob("*"))
        before = installed()
        for _ in range(2):  # the second time with what the first has left
            output = self.run_to_end(STAGING / "bin/vqm-instrument-example", "--headless", "--strict",
                                     "--until", "complete finished", XDG_STATE_HOME=str(self.folder))
            self.assertIn("Initializing Plugin AmMod", output)
        self.assertTrue((self.folder / "vqmstartup/instrument.sqlite").stat().st_size)
        self.assertEqual(installed(), before)


if __name__ == "__main__":
    unittest.main()
