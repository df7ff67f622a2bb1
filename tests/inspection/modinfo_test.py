#!/usr/bin/env python3
"""vqm-modinfo as a process: the rules that it finds in sound, broken and hostile files."""
import json
import os
import pathlib
import random
import shutil
import struct
import subprocess
import tempfile
import time
import unittest

import elf

MODINFO = os.environ["MODINFO"]
FAULTY, MODULES, INSTRUMENT = (pathlib.Path(os.environ[name]) for name in ("FAULTY", "MODULES", "INSTRUMENT"))
SANITIZED = os.environ["SANITIZED"] != ""


def modinfo(*arguments, program=MODINFO, **environment):
    return subprocess.run([program, *map(str, arguments)], env={**os.environ, **environment}, timeout=60, text=True,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)


def rules(findings):
    return [("note:" if finding["severity"] == "note" else "") + finding["rule"] for finding in findings]


class ModinfoCase(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="modinfo-test-"))
        self.addCleanup(shutil.rmtree, self.folder)

    def inspect(self, path, *options, **environment):
        """The document's entry of one file."""
        process = modinfo("--json", *options, path, **environment)
        document = json.loads(process.stdout)
        self.assertEqual(process.returncode, 1 if document["defects"] else 0, process.stderr)
        self.assertEqual(process.stderr, "")
        return document["files"][0]

    def expect(self, expected, path, *options, **environment):
        """The rules found, and what the first finding's text contains."""
        names, text = expected if isinstance(expected, tuple) else (expected, "")
        with self.subTest(path=str(path)):
            found = self.inspect(path, *options, **environment)
            self.assertEqual(rules(found["findings"]), names.split(), found)
            self.assertIn(text, found["findings"][0]["text"] if names else "")
            return found

    def altered(self, name, offset, data, of=MODULES / "base3.so"):
        path = self.folder / name
        content = bytearray(of.read_bytes())
        content[offset:offset + len(data)] = data
        path.write_bytes(content)
        return path


class Files(ModinfoCase):
    def test_what_is_no_library(self):
        whole = (MODULES / "base3.so").read_bytes()
        for length in (4, 17, 40, 64, 4096, len(whole) - 1):
            (self.folder / f"cut{length}").write_bytes(whole[:length])
            self.expect("elf-truncated", self.folder / f"cut{length}")
        (self.folder / "long").touch()
        os.truncate(self.folder / "long", 3 << 30)
        os.mkfifo(self.folder / "pipe")
        os.symlink("loop", self.folder / "loop")
        for name, expected in {"absent": "file-missing", "pipe/below": "file-missing", "pipe": "not-a-file",
                               "loop": "unreadable", "": ("not-a-file", "folder"), "/dev/zero": "not-a-file",
                               MODULES / "empty.so": "file-empty", MODULES / "text.so": "not-elf", "long": "not-elf",
                               MODINFO: "not-a-library"}.items():
            found = self.expect(expected, self.folder / name)
            self.assertFalse(found["isLibrary"])

    def test_headers(self):
        one = struct.pack("<H", 1)
        other_order = bytes((MODULES / "base3.so").read_bytes()[elf.MACHINE:elf.MACHINE + 2][::-1])
        for expected, offset, data in (
                (("wrong-class", f"is {96 - elf.BITS}-bit, this process {elf.BITS}-bit"), elf.CLASS, elf.OTHER_CLASS),
                ("wrong-class", elf.CLASS, b"\7"),
                (("wrong-machine", "is for machine 190"), elf.MACHINE, struct.pack("<H", 190)),
                ("wrong-machine", 5, b"\2"),
                (("not-a-library", "no shared library"), 16, one),  # ET_REL
                ("elf-truncated", elf.SHOFF, elf.word(1 << (elf.BITS - 1))),
                ("elf-truncated", elf.PHOFF, elf.word(2 ** elf.BITS - 8)),
                ("not-a-library", elf.PHNUM, b"\0\0")):
            self.expect(expected, self.altered("altered.so", offset, data))
        bare = self.altered("bare.so", elf.SHNUM, bytes(4), self.altered("bare.so", elf.SHOFF, elf.word(0)))
        self.expect("note:not-checked", bare)
        bare.write_bytes(bare.read_bytes()[:4096])
        self.expect("elf-truncated", bare)
        both = self.altered("order.so", 5, b"\2")
        self.expect(("wrong-machine", "of the other byte order"), self.altered("both.so", elf.MACHINE, other_order, both))

    def test_unloaded(self):
        self.expect(("entry-point-missing", "VQMGetModuleInfo"), MODULES / "no_info.so")
        self.expect(("entry-point-missing", "VQMCreateModuleInterfaceInstance"), MODULES / "no_create.so")
        self.expect("entry-point-missing entry-point-missing", FAULTY / "lib/libindirect.so")
        self.expect("note:stays-mapped", FAULTY / "nodelete.so")
        if (FAULTY / "unique.so").exists():
            self.expect(("stays-mapped", "Counter"), FAULTY / "unique.so")
        # A function that is not exported: only declared, hidden, or a variable.
        content = (MODULES / "base3.so").read_bytes()
        sections = elf.sections(content)
        symbols = next(section for section in sections if section.type == 11)
        names = sections[symbols.link]
        for at in range(symbols.offset, symbols.offset + symbols.size, elf.SYMBOL):
            name = content[names.offset + struct.unpack_from("<I", content, at)[0]:]
            if name.startswith(b"VQMGetModuleInfo\0"):
                break
        for offset, data in ((elf.ST_SHNDX, b"\0\0"), (elf.ST_OTHER, b"\2"), (elf.ST_INFO, b"\x11"),
                             (elf.ST_INFO, b"\2")):
            self.expect("entry-point-missing", self.altered("altered.so", at + offset, data))
        name, note = next((content.index(b"base3\0", section.offset), section) for section in sections
                          if section.type == 7 and b"base3\0" in content[section.offset:section.offset + section.size])
        self.expect(("note-malformed", "cut off"),
                    self.altered("altered.so", name, b"x" * (note.offset + note.size - name)))
        dynamic = next(section for section in sections if section.type == 6)
        self.expect("elf-damaged", self.altered("altered.so", dynamic.offset + elf.DYNAMIC_VALUE,
                                                elf.word(2 ** elf.BITS - 1)))

    def test_hostile_contents(self):
        """Files with random damage, to the headers mostly, are read without a crash and without a hang."""
        random.seed(1)
        content = (MODULES / "base3.so").read_bytes()
        paths = []
        for number in range(600):
            damaged = bytearray(content)
            tables = len(content) - struct.calcsize(elf.SECTION) * content[elf.SHNUM]
            for _ in range(random.choice((1, 3, 20))):
                at = random.choice((random.randrange(4, 1200), random.randrange(tables, len(content)),
                                    random.randrange(len(content))))
                damaged[at] = random.choice((0, 1, 0x7f, 0x80, 0xff, random.randrange(256)))
            paths.append(self.folder / str(number))
            paths[-1].write_bytes(damaged)
        process = modinfo("--json", *paths)
        self.assertEqual((process.returncode, process.stderr), (1, ""))
        found = {rule for file in json.loads(process.stdout)["files"] for rule in rules(file["findings"])}
        self.assertGreater(len(found), 4)


class NeededLibraries(ModinfoCase):
    def test_as_the_loader_finds_them(self):
        """What is found missing is what makes opening fail."""
        direct, indirect = FAULTY / "lib/libdirect.so", FAULTY / "lib/libindirect.so"
        text, other_class = self.folder / "text", self.altered("other", elf.CLASS, elf.OTHER_CLASS)
        text.write_text("no library")
        lib, path = self.folder / "lib", self.folder / "path"
        missing = "library-missing not-loadable"
        for number, (module, own, by_variable, expected) in enumerate((
                ("rpath", (), (), (missing, "needs libdirect.so, which is not found")),
                ("rpath", (direct,), (), (missing, "needs libindirect.so, needed by ")),
                ("rpath", (direct, indirect), (), ""),  # also for what is needed by those that it needs
                ("runpath", (direct, indirect), (), missing),  # for its own needs only
                ("runpath", (direct,), (indirect,), ""),
                ("runpath", (), (direct, indirect), ""),
                ("rpath", (FAULTY / "other/libdirect.so", indirect), (), missing),  # unless these have a RUNPATH
                ("rpath", (direct, text), (), (missing, "libindirect.so is no ELF file")),
                ("rpath", (direct, text), (indirect,), missing),  # RPATH comes first
                ("runpath", (text,), (direct, indirect), ""),  # and RUNPATH last
                ("rpath", (direct, other_class), (indirect,), ""))):
            with self.subTest(number=number):
                shutil.copy(FAULTY / f"needs_{module}.so", self.folder)
                for folder, files in ((lib, own), (path, by_variable)):
                    shutil.rmtree(folder, ignore_errors=True)
                    folder.mkdir()
                    for file in files:
                        is_library = file.suffix == ".so"
                        name = file.name if is_library else "libindirect.so" if module == "rpath" else direct.name
                        shutil.copy(file, folder / name)
                self.expect(expected, self.folder / f"needs_{module}.so", "--run", LD_LIBRARY_PATH=str(path))

    @unittest.skipIf(SANITIZED, "the sanitizers want to be loaded first")
    def test_loaded_already(self):
        shutil.copy(FAULTY / "needs_runpath.so", self.folder)
        self.expect("", self.folder / "needs_runpath.so", "--run",
                    LD_PRELOAD=f"{FAULTY}/lib/libindirect.so:{FAULTY}/lib/libdirect.so")

    def test_beside_the_program(self):
        """In ../lib of the program, where a running instrument has its libraries from."""
        for name in ("bin", "libexec/vqmstartup", "lib"):
            (self.folder / name).mkdir(parents=True)
        shutil.copy(MODINFO, self.folder / "bin")
        shutil.copy(pathlib.Path(MODINFO).parent.parent / "libexec/vqmstartup/vqm-module-probe",
                    self.folder / "libexec/vqmstartup")
        shutil.copy(FAULTY / "needs_runpath.so", self.folder)
        for expected in (1, 0):
            process = modinfo("--run", self.folder / "needs_runpath.so", program=self.folder / "bin/vqm-modinfo")
            self.assertEqual(process.returncode, expected, process.stdout)
            for file in (FAULTY / "lib").iterdir():
                shutil.copy(file, self.folder / "lib")


class Running(ModinfoCase):
    def test_what_modules_answer(self):
        for name, expected in {
                "base3": "", "numbered": ("note-differs", "its note says id -1, its record 0"),
                "name31": "", "plugin": "", "loadable32": "", "plugload256": "",
                "handmade": "note:interface-not-checked", "name40": "name-too-long name-too-long",
                "null_info": ("record-missing", "null pointer"), "null_object": "no-part object-missing",
                "null_name": "name-missing", "null_version": "interface-version-missing",
                "family0": "no-family", "type2": "type-unknown", "type11": "type-inexact",
                "no_info": "entry-point-missing", "no_create": "entry-point-missing",
                "throws_in_info": ("exception", "VQMGetModuleInfo() throws std::runtime_error: throws_in_info"),
                "throws_in_create": ("exception", "VQMCreateModuleInterfaceInstance() throws std::runtime"),
                "throws_in_name": ("exception", "getModuleName() throws std::runtime_error: throws_in_name"),
                "unresolved": ("not-loadable", "symbolThatNoLibraryDefines")}.items():
            self.expect(expected, MODULES / f"{name}.so", "--run")
        for name, expected in {
                "sound": "", "sound_base": "", "no_part": "no-part", "part_unknown": ("part-unknown", "0xc"),
                "fixed_name": ("note:fixed-id", "ScpiDll"), "fixed_type": ("note:fixed-id", "GuiDll"),
                "plugin_id4": "", "nodelete": "note:stays-mapped",
                "OtherId": ("id-differs", "created with id 20, but answers 21"),
                "NoPlugIn": ("wrong-interface", "is no VQMPlugInDllModuleInterface"),
                "TwoViews": ("wrong-interface", "not at its beginning"),
                "NoTypeInformation": "note:interface-not-checked", "OpensItself": "stays-mapped",
                "NotFreed": "" if SANITIZED else "object-not-freed"}.items():
            self.expect(expected, FAULTY / f"{name}.so", "--run")

    def test_how_modules_end(self):
        for name, rule, text in (
                ("AbortsInVersion", "crash", "dies of SIGABRT in getInterfaceVersion()"),
                ("DiesInId", "crash", "dies of SIGFPE in getModuleId()"),
                ("DiesInDelete", "crash", "dies of SIGSEGV in its object's deleting destructor"),
                ("DiesWhenClosed", "crash", "dies of SIGBUS while it is closed"),
                ("ExitsInInfo", "exit", "ends the process with exit code 3 in VQMGetModuleInfo()"),
                ("ClosesResults", "exit", "in VQMGetModuleInfo()"),
                ("HangsWhenOpened", "hang", "is not done after 1.5 s while it is opened"),
                ("HangsInCreate", "hang", "in VQMCreateModuleInterfaceInstance()"),
                ("StopsInName", "hang", "in getModuleName()")):
            limit = ("--timeout", "1.5") if rule == "hang" else ()
            began = time.monotonic()
            found = self.expect((rule, text), FAULTY / f"{name}.so", "--run", *limit)
            self.assertFalse(found["run"]["complete"])
            self.assertLess(time.monotonic() - began, 7)

    def test_limit_is_for_one_step(self):
        self.expect("", FAULTY / "Slow.so", "--run", "--timeout", "1.5")

    def test_nothing_is_left_running(self):
        """A child that holds the probe's pipe open delays nobody, and goes."""
        began, pid_file = time.monotonic(), self.folder / "pid"
        self.expect(("crash", "SIGKILL"), FAULTY / "ForksAndDies.so", "--run", VQM_TEST_PID_FILE=str(pid_file))
        self.assertLess(time.monotonic() - began, 7)
        status = pathlib.Path("/proc") / pid_file.read_text() / "stat"
        for _ in range(50):
            if not status.exists() or status.read_text().rsplit(")")[-1].split()[0] in "ZX":
                return
            time.sleep(0.1)
        self.fail("still running")


class Program(ModinfoCase):
    def test_text(self):
        process = modinfo("--run", FAULTY / "sound.so", MODULES / "family0.so", FAULTY / "fixed_type.so")
        lines = process.stdout.splitlines()
        self.assertEqual((process.returncode, process.stderr), (1, ""))
        self.assertRegex(lines[0], rf"^{FAULTY}/sound.so: {elf.BITS}-bit \S+, needs (\S+ )*libstdc\+\+.so.6 ")
        values = '"sound", type 0x10, id 20, version 0.14.159, parts 0x1, families 0x2'
        self.assertEqual(lines[1:3], [f"{FAULTY}/sound.so: module note: contract 1, {values}",
                                      f"{FAULTY}/sound.so: record: {values}"])
        self.assertEqual(lines[6], f"{MODULES}/family0.so: defect: serves no instrument family: never kept [no-family]")
        self.assertEqual(lines[-1], "vqm-modinfo: files: 3, defects: 1, notes: 1")
        self.assertEqual(len(lines), 12)

    def test_json(self):
        process = modinfo("--run", "--json", FAULTY / "sound.so", MODULES / "plugin.so", MODULES / "null_name.so")
        document = json.loads(process.stdout)
        self.assertEqual([sorted(document), document["defects"], document["notes"]],
                         [["defects", "files", "notes"], 1, 0])
        record = {"name": "sound", "version": "0.14.159", "id": 20, "type": 16, "parts": 1, "families": 2}
        self.assertEqual(document["files"][0]["note"], {"contract": 1, **record})
        self.assertEqual(document["files"][0]["run"], {
            "complete": True,
            "record": record,
            "object": {"name": "two\nlines % ", "handedId": 20, "id": 20, "interfaceVersion": "1.2.345"}})
        self.assertEqual(document["files"][1]["run"]["object"]["handedId"], 10000)
        read = subprocess.run(["jq", "-c", "[.files[].run.object.name]"], input=process.stdout, text=True,
                              stdout=subprocess.PIPE, check=True)
        self.assertEqual(read.stdout, '["two\\nlines % ","plugin",null]\n')

    def test_bare_name_is_a_file_of_the_current_folder(self):
        process = subprocess.run([MODINFO, "--run", "base3.so"], cwd=MODULES, stdout=subprocess.DEVNULL)
        self.assertEqual(process.returncode, 0)

    def test_wrong_calls(self):
        limits = [((f"--timeout={value}", "x"), "--timeout") for value in ("x", "0", "-1", "nan", "1e9")]
        for arguments, said in [((), "no file given"), (("--wrong", "x"), "wrong"), *limits]:
            process = modinfo(*arguments)
            self.assertEqual((process.returncode, process.stdout), (2, ""))
            self.assertRegex(process.stderr, f"^vqm-modinfo: .*{said}.*\n$")
        self.assertIn("Exit codes:", modinfo("--help").stdout)

    def test_no_probe_program(self):
        shutil.copy(MODINFO, self.folder)
        process = modinfo("--run", MODULES / "base3.so", program=self.folder / "vqm-modinfo")
        self.assertEqual(process.returncode, 2)
        self.assertRegex(process.stdout, r"vqm-module-probe could not be run: No such file .*\[not-probed\]")


class Instrument(ModinfoCase):
    def test_example_instrument(self):
        modules = sorted(INSTRUMENT.glob("*.so"))
        self.assertGreaterEqual(len(modules), 13)
        for module in modules:
            self.expect("type-unknown" if module.stem == "ServiceCounter" else "", module, "--run")


if __name__ == "__main__":
    unittest.main()
