#!/usr/bin/env python3
"""What vqm_add_module() makes: refused arguments, the note in the file, what the library exports; and the templates
as authors build them, on an installed package."""
import json
import os
import pathlib
import re
import shutil
import struct
import subprocess
import tempfile
import unittest

import elf

MODINFO = os.environ["MODINFO"]
INSTRUMENT, MODULES, SOURCE, STAGING = (pathlib.Path(os.environ[name])
                                        for name in ("INSTRUMENT", "MODULES", "SOURCE", "STAGING"))
ENTRY_POINTS = {"VQMGetModuleInfo", "VQMCreateModuleInterfaceInstance"}


def run(*command, **options):
    return subprocess.run([str(word) for word in command], timeout=300, text=True, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)


def inspect(path, *options):
    process = subprocess.run([MODINFO, "--json", *options, path], timeout=60, stdout=subprocess.PIPE)
    return json.loads(process.stdout)["files"][0]


def exports(library):
    return {line.split()[-1] for line in run("nm", "-D", "--defined-only", library).stdout.splitlines()}


class SdkCase(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="sdk-test-"))
        self.addCleanup(shutil.rmtree, self.folder)


class Arguments(SdkCase):
    def refusal(self, **changes):
        """What is said to a call that is sound but for the changes."""
        arguments = {"TYPE": "base", "ID": "9", "FAMILY": "0x2", "VERSION": "1.2.3", "SOURCES": "a.cpp", **changes}
        words = " ".join(f"{name} {value}" for name, value in arguments.items() if value is not None)
        script = self.folder / "call.cmake"
        script.write_text(f"include({SOURCE}/cmake/VQMModule.cmake)\nvqm_add_module(Some {words})\n")
        process = run("cmake", "-P", script)
        self.assertNotEqual(process.returncode, 0)
        return " ".join(process.stdout.split())

    def test_refused(self):
        plugin = {"TYPE": "plugin", "ID": None, "PARTS": "Gui"}
        for said, changes in (
                ("TYPE is missing", {"TYPE": None}), ("FAMILY is missing", {"FAMILY": None}),
                ("VERSION is missing", {"VERSION": None}), ("SOURCES is missing", {"SOURCES": None}),
                ("TYPE 0x1 is none of base, loadable", {"TYPE": "0x1"}), ("TYPE Base is none", {"TYPE": "Base"}),
                ("ID is missing; TYPE base", {"ID": None}),
                ("ID is missing; TYPE plugin-loadable", {**plugin, "TYPE": "plugin-loadable"}),
                ("ID 9 is given, but plug-ins", {**plugin, "ID": "9"}), ("ID -1 is not a number", {"ID": "-1"}),
                ("ID 08 is not a number", {"ID": "08"}), ("2147483648 is more than", {"ID": "2147483648"}),
                ("99999999999999999999 is more", {"VERSION": "1.99999999999999999999.0"}),
                ("PARTS are given, but base", {"PARTS": "Gui"}), ("PARTS are missing", {**plugin, "PARTS": None}),
                ("PARTS: GUI is none of Database, Scpi, Gui", {**plugin, "PARTS": "Scpi GUI"}),
                *((f"VERSION {version} is not major.minor.build", {"VERSION": version})
                  for version in ("1", "1.2", "1.2.3.4", "1.2.x", "1.02.3", "-1.2.3")),
                *((f"FAMILY {family} is not a mask", {"FAMILY": family})
                  for family in ("0", "0x0", "2", "0x100000000", "0x2g")),
                ("has 32 characters; 31 are kept", {"MODULE_NAME": "x" * 32}),
                *(("has other characters", {"MODULE_NAME": name}) for name in ("[[a\"b]]", '" a"', "a$b")),
                ("not understood: Gui", {"ID": "9 Gui"}), ("without a value: DIRECTORY", {"DIRECTORY": ""})):
            with self.subTest(said=said, **changes):
                self.assertRegex(self.refusal(**changes), r"vqm_add_module\(Some\): .*" + re.escape(said))

    def test_accepted(self):
        """These get as far as what only works in a project."""
        for changes in ({}, {"ID": "0"}, {"ID": "2147483647", "FAMILY": "0xFFFFFFFF", "VERSION": "0.0.2147483647"},
                        {"TYPE": "plugin", "ID": None, "PARTS": "Database Scpi Gui"}, {"MODULE_NAME": "x" * 31},
                        {"LIBRARIES": ""},
                        {"TYPE": "0x2 UNCHECKED", "ID": "-1", "FAMILY": "0", "MODULE_NAME": "x" * 40}):
            with self.subTest(**changes):
                self.assertIn("not scriptable", self.refusal(**changes))


class Notes(SdkCase):
    def test_as_declared(self):
        for path, name, version, number, module_type, parts, families in (
                (MODULES / "handmade.so", "HandMade", "7.8.9", 5, 0x1, 0, 0xFFFFFFFF),  # in C
                (MODULES / "family0.so", "family0", "3.14.159", 9, 0x1, 0, 0),
                (INSTRUMENT / "Database.so", "Database", "1.0.0", 4, 0x1, 0, 0xa),
                (INSTRUMENT / "CableLoss.so", "CableLoss", "1.0.0", 30, 0x10, 2, 2),
                (INSTRUMENT / "FreqSweep.so", "FreqSweep", "1.0.0", 31, 0x20, 3, 2),
                (INSTRUMENT / "AmMod.so", "AmMod", "1.0.0", 0, 0x40, 7, 2),
                (INSTRUMENT / "AmProfile.so", "AmProfile", "1.0.0", 40, 0x80, 3, 2),
                (INSTRUMENT / "PulseTrain.so", "PulseTrain", "1.0.0", 41, 0x100, 2, 2)):
            expected = {"contract": 1, "name": name, "version": version, "id": number, "type": module_type,
                        "parts": parts, "families": families}
            stripped = self.folder / path.name
            self.assertEqual(run("strip", "--strip-all", "-o", stripped, path).returncode, 0)
            for file in (path, stripped):
                self.assertEqual(inspect(file)["note"], expected, file)
            self.assertEqual(re.findall(r"^  VQM +0x(\w+)", run("readelf", "-nW", path).stdout, re.M),
                             [f"{32 + len(name) + 1:08x}"])
            self.assertIn("\n.note.vqm 7 2 ", self.sections(path))  # a note, loaded

    def sections(self, path):
        """"NAME TYPE FLAGS ", a line each."""
        return "\n" + "".join(f"{section.name} {section.type} {section.flags} \n"
                              for section in elf.sections(path.read_bytes()))

    def altered(self, offset, data, owner=b"VQM\0"):
        """FreqSweep.so with other data at the offset from the note's header."""
        content = bytearray((INSTRUMENT / "FreqSweep.so").read_bytes())
        at = next(match.start() - 12 for match in re.finditer(re.escape(owner), content)
                  if content[match.start() - 12:match.start() - 8] == b"\4\0\0\0")
        content[at + offset:at + offset + len(data)] = data
        path = self.folder / "altered.so"
        path.write_bytes(content)
        return path

    def findings(self, path, *options):
        return [(finding["rule"], finding["text"]) for finding in inspect(path, *options)["findings"]]

    def test_lies_are_found(self):
        for word, text in ((1, "version 7.0.0, its record 1.0.0"), (2, "version 1.7.0"), (3, "version 1.0.7"),
                           (4, "id 7, its record 31"), (5, "type 0x7, its record 0x20"),
                           (6, "parts 0x7, its record 0x3"), (7, "families 0x7, its record 0x2")):
            (rule, said), = self.findings(self.altered(16 + 4 * word, struct.pack("<I", 7)), "--run")
            self.assertEqual(rule, "note-differs")
            self.assertIn("its note says " + text, said)
        (rule, said), = self.findings(self.altered(48, b"Gr"), "--run")
        self.assertEqual((rule, said), ("note-differs", 'its note says name "GreqSweep", its record "FreqSweep"'))
        self.assertEqual(self.findings(self.altered(16, b"\1"), "--run"), [])

    def test_malformed(self):
        for rule, text, offset, data, owner in (
                ("contract-version", "version 2 of the module contract; this is version 1", 16, b"\2", b"VQM\0"),
                ("contract-version", "version -1", 16, b"\xff" * 4, b"VQM\0"),
                ("note-malformed", "cut off", 48, b"FreqSweepX", b"VQM\0"),
                ("note-malformed", "not as long as they say", 4, b"\xff" * 4, b"VQM\0"),
                ("note-malformed", "not as long as they say", 0, b"\0\0\1\0", b"VQM\0"),
                ("note-malformed", "2 module notes", 8, b"\1\0\0\0VQM", b"GNU\0")):  # the build id
            (found, said), = self.findings(self.altered(offset, data, owner))
            self.assertEqual(found, rule)
            self.assertIn(text, said)
        content = bytearray((INSTRUMENT / "FreqSweep.so").read_bytes())
        segment = next(at for at in range(elf.HEADER, 1024, elf.SEGMENT)
                       if content[at:at + 4] == b"\4\0\0\0")  # PT_NOTE
        half = 1 << (elf.BITS - 1)
        for field, value in ((elf.P_OFFSET, half), (elf.P_OFFSET, len(content)),
                             (elf.P_FILESZ, half), (elf.P_FILESZ, len(content))):
            at, data = segment + field, elf.word(value)
            path = self.folder / "beyond.so"
            path.write_bytes(content[:at] + data + content[at + len(data):])
            self.assertIn(("note-malformed", "has notes that are not as long as they say"), self.findings(path))
        for offset, data in ((8, b"\2"), (12, b"VQX"), (12, b"VQMM")):  # somebody else's
            found = inspect(self.altered(offset, data))
            self.assertEqual((found["note"], found["findings"]), (None, []))


class Flags(SdkCase):
    def test_modules_of_the_instrument(self):
        libraries = [*INSTRUMENT.glob("*.so"), MODULES / "handmade.so"]
        self.assertGreater(len(libraries), 10)
        for library in libraries:
            self.assertEqual(exports(library), ENTRY_POINTS, library)
            self.assertRegex(run("readelf", "-dW", library).stdout, r"\(FLAGS\) +SYMBOLIC BIND_NOW\n")


class Templates(SdkCase):
    """As an author has them: copied away from the tree, built on the installed package."""

    def build(self, template, changes={}):
        """The template's folder, whether it builds, and what was said."""
        project = self.folder / template
        shutil.rmtree(project, ignore_errors=True)
        shutil.copytree(SOURCE / "examples" / template, project)
        for file in (project / "CMakeLists.txt", project / "Attenuator.cpp"):
            if file.exists():
                text = file.read_text()
                for old, new in changes.items():
                    text = text.replace(old, new)
                file.write_text(text)
        process = run("cmake", "-G", "Ninja", "-S", project, "-B", project / "build", "--no-warn-unused-cli",
                      "-DCMAKE_BUILD_TYPE=Release",
                      f"-DCMAKE_PREFIX_PATH={STAGING}",
                      *(f"-DCMAKE_{language}_COMPILER={os.environ[language]}" for language in ("C", "CXX")),
                      *(f"-DCMAKE_{language}_FLAGS=-Wall -Wextra -Wpedantic -Werror" for language in ("C", "CXX")))
        if process.returncode == 0:
            process = run("cmake", "--build", project / "build")
        return project, process.returncode == 0, process.stdout

    def test_built_and_started(self):
        for template, name, notes, said in (
                ("module-template", "Attenuator", 0, ["up, without settings database", "start-up is complete", "down"]),
                ("module-template-c", "Relay", 1, ["closed", "open, switched 2 times"])):
            project, is_built, output = self.build(template)
            self.assertTrue(is_built, output)
            library = project / f"build/modules/{name}.so"
            checked = run(STAGING / "bin/vqm-modinfo", "--run", library).stdout
            self.assertIn(f"defects: 0, notes: {notes}\n", checked)
            self.assertEqual(inspect(library)["note"]["name"], name)
            self.assertEqual(exports(library), ENTRY_POINTS)
            self.assertNotIn(bytes(SOURCE), library.read_bytes())
            started = run(STAGING / "bin/mainstartup", "--headless", "--until", "complete finished", "-l",
                          "../instrument.xml", cwd=project / "build",
                          env={**os.environ, "XDG_RUNTIME_DIR": str(self.folder)})
            self.assertEqual(started.returncode, 0, started.stdout)
            self.assertEqual(re.findall(f"^{name}: (.*)$", started.stdout, re.M), said)

    def test_mistakes_show_when_it_is_built(self):
        for said, changes in (
                ("undefined (reference to `|symbol: )missing",
                 {"namespace {": "int missing();\nnamespace {", "return 0;": "return missing();"}),
                ("a base module derives from VQMDllModuleInterface, any other",
                 {"TYPE base": "TYPE plugin-loadable PARTS Gui"})):
            _, is_built, output = self.build("module-template", changes)
            self.assertFalse(is_built)
            self.assertRegex(output, said)
        project, is_built, output = self.build(
            "module-template", {"\nVQM_MODULE(": "\nint unused()\n{\n    return 1;\n}\nVQM_MODULE("})
        self.assertTrue(is_built, output)
        self.assertNotIn("unused", run("nm", project / "build/modules/Attenuator.so").stdout)


if __name__ == "__main__":
    unittest.main()
