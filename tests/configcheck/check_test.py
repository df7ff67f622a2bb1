#!/usr/bin/env python3
"""mainstartup --check: the corpus with its findings, the schema, the example instrument, JSON, the plan.

A file of the corpus ends in what is expected: whether the schema accepts it, then a line's number and the rules of
the findings there (0: about the file as a whole). Paths in it start in the example instrument's folder.
"""
import json
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

from launcher_case import LauncherCase

CORPUS = sorted((pathlib.Path(__file__).parent / "corpus").glob("*.xml"))
INSTRUMENT = pathlib.Path(os.environ["INSTRUMENT"])
EXAMPLE = str(INSTRUMENT / "instrument.xml")
PROPERTIES = str(INSTRUMENT / "instrument.ini")
EXPECTATION = re.compile(r"<\?expect schema (accepts|rejects)(.*?)\?>\n", re.DOTALL)
# What a grammar can know, too. Findings of every other rule are of no concern to it.
GRAMMAR = {"attribute-count", "attribute-empty", "attribute-missing", "attribute-unknown", "element-unknown",
           "key-no-number", "key-unknown", "language-suffix", "level-too-deep", "name-nothing-left", "name-stripped",
           "namespace", "nesting-too-deep", "not-strict-xml", "not-well-formed", "option-empty", "place-unusual",
           "place-wrong", "stray-text"}
PLAN_LINE = re.compile(r"Initializing |Stage: (?!terminate)")


def section(contents):
    return f'<Root><Instrument><Module name="MainStartup">{contents}</Module></Instrument></Root>\n'


def load_list(files):
    return f'<ModuleLoadList><Directory nameLinux="modules">{files}</Directory></ModuleLoadList>'


class CheckCase(LauncherCase):
    def check(self, expected_code, path, *arguments):
        return self.run_to_end(expected_code, "--check", str(path), *arguments)

    def findings(self, path):
        """{line: rules} of the file; every place is checked to be that of a tag, if it is one."""
        properties = self.folder / "without_family.ini"  # no plan: the place of each file is not the point here
        properties.write_text(re.sub("(?m)^Family=.*", "", pathlib.Path(PROPERTIES).read_text(encoding="utf-8")))
        result = subprocess.run([os.environ["MAINSTARTUP"], "--check", path, "--properties", properties, "--json"],
                                cwd=INSTRUMENT, capture_output=True, text=True, timeout=60, check=False)
        report = json.loads(result.stdout)
        self.assertEqual(result.returncode, 1 if report["defects"] else 0, result.stderr)
        self.assertEqual(result.stderr, "")
        lines = pathlib.Path(path).read_text(encoding="utf-8").splitlines()
        rules = {}
        for finding in report["findings"]:
            rules.setdefault(finding.get("line", 0), []).append(finding["rule"])
            if "line" in finding and finding["rule"] not in (
                    "document-type", "nesting-too-deep", "not-strict-xml", "not-well-formed"):
                self.assertEqual(lines[finding["line"] - 1][finding["column"] - 1], "<", finding)
        return rules

    def schema_accepts(self, text):
        """None for what is not even XML."""
        path = self.folder / "document.xml"
        path.write_text(text, encoding="utf-8")
        if subprocess.run(["xmllint", "--noout", path], capture_output=True, check=False).returncode:
            return None
        result = subprocess.run(["xmllint", "--noout", "--relaxng", os.environ["SCHEMA"], path],
                                capture_output=True, text=True, check=False)
        self.assertIn(result.returncode, (0, 3, 4), result.stderr)
        return result.returncode == 0


class Corpus(CheckCase):
    def test_findings_and_schema(self):
        seen, isolated = set(), 0
        for path in CORPUS:
            with self.subTest(path.name):
                text = path.read_text(encoding="utf-8")
                accepted, rows = EXPECTATION.search(text).groups()
                expected = {int(row.split()[0]): row.split()[1:] for row in rows.strip().splitlines()}
                self.assertEqual(self.findings(str(path)), expected)
                for rules in expected.values():
                    seen.update(rules)
                wrong = {line for line, rules in expected.items() if GRAMMAR & set(rules)}
                self.assertEqual("rejects" if wrong else "accepts", accepted)
                self.assertEqual(bool(self.schema_accepts(text)), not wrong)
                isolated += self.check_each_alone(text.splitlines(keepends=True), wrong)
        self.assertGreaterEqual(isolated, 50)
        self.assertEqual(GRAMMAR - seen, {"attribute-count", "level-too-deep", "nesting-too-deep"})  # generated below

    def check_each_alone(self, lines, wrong):
        """The schema rejects the file for each of its wrong lines alone, and for nothing else."""
        without = lambda gone: "".join(text for number, text in enumerate(lines, 1) if number not in gone)
        if len(wrong) < 2 or self.schema_accepts(without(wrong)) is None:
            return 0
        self.assertIs(self.schema_accepts(without(wrong)), True)
        for line in wrong:
            self.assertIs(self.schema_accepts(without(wrong - {line})), False, f"line {line}")
        return len(wrong)

    def test_limits(self):
        """An element or attribute more than is read, and one that is read still."""
        def items(count):
            return "".join(f'<Item id="{i}" label="x"/>\n' for i in range(count))

        def subgroups(count):
            return "".join(f'<SubGroup id="{i}" label="x"><Item id="i" label="x"/></SubGroup>\n' for i in range(count))

        def more(count):
            return "".join(f' a{i}="x"' for i in range(count))

        def menu(contents):
            return section(load_list('<File name="Database.so"/>') + f'<Startup><Menu><Group id="G" label="G">\n'
                           f"{contents}</Group></Menu></Startup>")

        def nested(depth):
            return section(load_list('<File name="Database.so"/>') + "<ModuleLoadList>" + "<a>" * (depth - 5)
                           + '<Directory nameLinux="x"/>' + "</a>" * (depth - 5) + "</ModuleLoadList>")

        next_group = '</Group>\n<Group id="H" label="H">\n'
        for text, rule, number in (
                (menu(items(99)), "menu-limit", 0), (menu(items(101)), "menu-limit", 2),
                (menu(subgroups(99)), "menu-limit", 0), (menu(subgroups(100)), "menu-limit", 1),
                (menu(items(99) + next_group + items(99)), "menu-limit", 0),
                (menu(subgroups(99) + next_group + subgroups(100)), "menu-limit", 1),
                (section(load_list(f'<File name="Database.so"{more(31)}/>')), "attribute-unknown", 31),
                (section(load_list(f'<File name="Database.so"{more(32)}/>')), "attribute-count", 1),
                (nested(64), "level-too-deep", 0), (nested(65), "level-too-deep", 1),
                (nested(256), "nesting-too-deep", 0), (nested(257), "nesting-too-deep", 1)):
            path = self.folder / "limit.xml"
            path.write_text(text)
            rules = sum(self.findings(str(path)).values(), [])
            self.assertEqual(rules.count(rule), number, text[:300])
            self.assertEqual(bool(self.schema_accepts(text)), not GRAMMAR & set(rules))

    def test_ends_of_lines_and_encodings(self):
        """Places are counted as editors do."""
        head, tail = '<Root>%<Instrument>%<Module name="MainStartup">%<!-- ä -->', "</Module></Instrument></Root>"
        for end in ("\n", "\r\n", "\r"):
            for encoding in ("utf-8", "utf-16", "iso-8859-1"):
                path = self.folder / "ends.xml"
                text = f'<?xml version="1.0" encoding="{encoding}"?>%' + head + '<a%b="1>"%/>' + tail
                path.write_bytes(text.replace("%", end).encode(encoding))
                process = self.check(1, path)
                self.assertIn(f"{path}:5:11: defect: element a is unknown", process.output)


class Command(CheckCase):
    def test_cannot_check(self):
        family_missing = self.configure("base3", family="")
        family_wrong = self.configure("base3", name="wrong", family="Family=two")
        os.mkfifo(self.folder / "pipe")
        properties = self.folder / "broken.ini"
        properties.write_text("[a\n")
        for arguments, message in (
                ([self.folder / "absent.xml"], "No such file"), ([self.folder], "is no regular file"),
                ([self.folder / "pipe"], "is no regular file"), ([family_missing, "--probe"], "give --family"),
                ([family_wrong, "--probe"], "not a bit set"), ([EXAMPLE, "--properties", properties], "properties: "),
                ([EXAMPLE, "-l", EXAMPLE], "-l does not go"), ([EXAMPLE, "--headless"], "--headless does not go")):
            process = self.check(2, *map(str, arguments))
            self.assertRegex(process.errors, f"^mainstartup: .*{re.escape(message)}.*\n$")
        self.assertIn("--probe goes with --check only", self.run_to_end(2, "-l", EXAMPLE, "--probe").errors)
        report = json.loads(self.check(2, self.folder / "absent.xml", "--json").output)
        self.assertIn("No such file", report["failure"])
        self.check(0, family_missing)
        for probe in ([], ["--probe"]):
            self.assertIn("[module-required]", self.check(1, family_missing, "--family", "2", *probe).output)

    def test_example_is_clean(self):
        process = self.check(0, EXAMPLE)
        self.assertTrue(process.output.endswith("instrument.xml: clean, 12 files, 4 notes\n"), process.output)
        self.assertEqual(process.errors, "")

    def test_example_probed(self):
        report = json.loads(self.check(0, EXAMPLE, "--probe", "--json").output)
        rules = [finding["rule"] for finding in report["findings"]]
        self.assertTrue({"module-family", "type-unknown"} <= set(rules), rules)
        self.assertEqual(report["plan"], json.loads(self.check(0, EXAMPLE, "--json").output)["plan"])  # by the notes
        self.assertEqual([pathlib.Path(row["path"]).stem + " " + row["reason"] for row in report["plan"]["refused"]],
                         ["PowerMeter family", "ServiceCounter type"])

    def test_json(self):
        text = self.check(0, EXAMPLE, "--probe", "--json").output
        report = json.loads(text)
        self.assertEqual(set(report), {"file", "findings", "files", "languages", "menu", "modules", "plan", "defects",
                                       "notes"})
        self.assertEqual(report["menu"]["Signal:Edit:Level"], "&Level")
        self.assertEqual(report["languages"]["Deutsch"], str(INSTRUMENT / "languages" / "German.qm"))
        query = '.modules[] | select(.path | endswith("AmMod.so")) | .probe.record.moduleType, .probe.object.name'
        result = subprocess.run(["jq", "-r", query], input=text, capture_output=True, text=True, check=True)
        self.assertEqual(result.stdout, "64\nAmMod\n")


class Plan(CheckCase):
    """What is foretold happens."""
    FILES = ["plugin", "gui", "plugload256", "database", "family4", "loadable32", "absent", "type2", "scpi",
             "plugload128", "base3", "loadable16"]

    def compare(self, code, configuration, *mode, **environment):
        plan = json.loads(self.check(code, configuration, "--probe", "--json").output)["plan"]
        _, trace = self.run_traced(0, "-l", configuration, "--until", "complete finished", *mode, **environment)
        trace = [line for _, line in trace]
        self.assertEqual(plan["steps"], [line for line in trace if PLAN_LINE.match(line)])
        ids = [int(line.split(":")[1]) for line in trace if line.startswith("Module Id ")]
        self.assertEqual([module["id"] for module in plan["modules"]], sorted(ids))

    def test_example(self):
        ini = self.folder / "instrument.ini"
        ini.write_text(pathlib.Path(PROPERTIES).read_text())
        copy = self.folder / "instrument.xml"
        copy.write_text(pathlib.Path(EXAMPLE).read_text())
        # LeakSanitizer itself crashes in every third run of the front panel; leaks are looked for elsewhere.
        self.compare(0, str(copy), "--offscreen", ASAN_OPTIONS="detect_leaks=0")

    def test_in_words(self):
        text = self.check(1, self.configure(*self.FILES), "--probe").output
        for line in (r"\n    10000  plugin +plugin \(0x40\)\n", r"\n       30  plugload256 +plugin loadable \(0x100\)\n",
                     r"\n  dropped:\n    family4\.so \(family\)\n    type2\.so \(type\)\n  groups:\n"):
            self.assertRegex(text, line)

    def test_all_types(self):
        configuration = self.configure(*self.FILES)
        self.compare(1, configuration, "--offscreen")
        with open(self.folder / "instrument.ini", "a", encoding="utf-8") as ini:
            ini.write("Gui=0\n")
        self.compare(1, configuration)


if __name__ == "__main__":
    unittest.main()
