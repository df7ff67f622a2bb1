#!/usr/bin/env python3
"""What the documents say is so: their tables are what the sources say, what they refer to exists. ROOT names the
project's folder."""
import importlib.util
import os
import pathlib
import re
import subprocess
import unittest

ROOT = pathlib.Path(os.environ["ROOT"])
DOCUMENTS = [*ROOT.glob("*.md"), *ROOT.glob("docs/*.md")]
FENCE = re.compile(r"^```([^\n]*)\n.*?^```$", re.MULTILINE | re.DOTALL)
SOURCES = [path for folder in ("platform", "registry", "Startup", "xmlconfig", "gui", "diagnosis", "launcher", "tools",
                               "examples") for path in (ROOT / folder).rglob("*") if path.suffix in (".cpp", ".h")]


def read(name):
    return (ROOT / name).read_text()


def tables(document):
    """The document's tables as lists of rows, each a tuple of cells without marks, the header first."""
    for lines in re.findall(r"(?:^\|.*\n)+", read(document), re.MULTILINE):
        rows = [[cell.strip().replace("`", "").replace("\\|", "|") for cell in re.split(r"(?<!\\)\|", line)[1:-1]]
                for line in lines.splitlines()]
        yield [tuple(row) for row in rows[:1] + rows[2:]]


def table(document, *header):
    """The rows of all tables that begin with these columns, cut to them."""
    found = [row[:len(header)] for rows in tables(document) if rows[0][:len(header)] == header for row in rows[1:]]
    assert found, f"{document}: no table {header}"
    return found


def literals(text):
    """Texts of C++ that go over several lines are joined."""
    return re.sub(r'"\s*\n\s*"', "", text)


class Tables(unittest.TestCase):
    maxDiff = None

    def test_exit_codes(self):
        header = literals(read("launcher/ExitCodes.h"))
        numbers = dict(re.findall(r"^    (\w+) = (\d+),$", header, re.MULTILINE))
        expected = [(numbers[name], text)
                    for name, text in re.findall(r'\{\w*ExitCode::(\w+),\s*"([^"]*)"\}', header)]
        self.assertEqual(table("docs/start-up.md", "Code", "Means"), expected)

    def test_presets(self):
        names = set(re.findall(r'\{"name": "(\w+)", "configurePreset"', read("CMakePresets.json")))
        self.assertEqual({name for name, in table("docs/testing.md", "Preset")}, names)

    def test_labels_and_folders(self):
        lists = {path: path.read_text() for path in (ROOT / "tests").rglob("CMakeLists.txt")}
        labels = {label for text in lists.values() for label in re.findall(r"LABELS (\w+)", text)}
        self.assertEqual({label for label, in table("docs/testing.md", "Label")}, labels)
        folders = re.findall(r"add_subdirectory\((\w+)\)", lists[ROOT / "tests/CMakeLists.txt"])
        self.assertEqual([folder for folder, in table("docs/testing.md", "Folder")],
                         [f"tests/{folder}/" for folder in folders])

    def test_limits_and_elements_of_configurations(self):
        grammar = read("xmlconfig/configuration.rng")
        frame, menu = read("platform/CUtilXmlEvntHdlr.h"), read("xmlconfig/CXmlParseMenuTree.h")

        def constant(text, name):
            return int(re.search(rf"{name} = (\d+);", text)[1])
        items = constant(menu, "maxItemNumber") // 10
        attributes = int(re.search(r"count\(\) <= (\d+)", read("xmlconfig/RegKeyElement.cpp"))[1])
        self.assertEqual([int(number) for _, number in table("docs/configuration.md", "What", "At most")],
                         [attributes, constant(menu, "maxSubGroups"), items, constant(frame, "maxLevels"),
                          constant(frame, "maxDepth"), constant(read("xmlconfig/RunReader.h"), "maxDocumentSize")])
        for element, _, names, readers in table("docs/configuration.md", "Element", "Stands in", "Attributes",
                                                "Read by"):
            self.assertIn(f'<element name="{element}">', grammar)
            for reader in readers.split(", "):
                self.assertIn(f'{{"{element}", ', read(f"xmlconfig/{reader}.cpp"))
            for name in names.split(", "):
                self.assertIn(f'<attribute name="{name}"', grammar)


class Errors(unittest.TestCase):
    maxDiff = None
    definitions = ["Startup/StartupErrors.cpp", "Startup/ComponentErrors.cpp"]

    def test_as_registered(self):
        severities = {"1": "error", "2": "warning", "3": "information"}
        expected = [(code, severities[severity], scpi, " ".join(text.split()))
                    for name in self.definitions for code, severity, scpi, text in re.findall(
                        r'\{(\d+), (\d), (-?\d+), \d,\s*"([^"]*)"', literals(read(name)))]
        self.assertEqual(table("docs/error-codes.md", "Code", "Severity", "SCPI", "Text"), expected)

    def test_who_reports_them(self):
        codes = {name: code for name, code in re.findall(r"(\w+) = (\d+),", read("Startup/StartupErrors.h"))}
        reporters = {}
        for path in SOURCES:
            text = path.read_text()
            own = codes | dict(re.findall(r"int (\w+) = (\d+);", text))
            for code in re.findall(r"(?:dumpError|signal)\((\w+)", text):
                reporters.setdefault(own.get(code, code), set()).add(path.relative_to(ROOT).as_posix())
        for code, *_, documented in table("docs/error-codes.md", "Code", "Severity", "SCPI", "Text", "Means",
                                          "Reported by"):
            self.assertEqual(reporters.get(code, {"other firmware"}), set(documented.split(", ")), code)
        self.assertGreater(len(reporters), 3)


class Properties(unittest.TestCase):
    """The table of properties, against the calls that read them."""
    maxDiff = None
    CALL = r"get(String|Integer)Property\(([^;]*?), 0(?:, nullptr)?\)"

    def arguments(self, text):
        return [argument.strip() for argument in re.split(r",(?![^()]*\))", text)]

    def resolve(self, source, kind, arguments, position, seen=()):
        """The calls as texts only: where an argument is a parameter, those of the function around it."""
        constants = dict(re.findall(r'constexpr const char \*(\w+) = ("[^"]*")', source))
        arguments = [constants.get(argument, argument) for argument in arguments]
        if not {"section", "key", "defaultValue"} & set(arguments):
            return [(kind, *arguments)]
        around = list(re.finditer(r"(?:^\w+ (\w+)|auto (\w+) = \[\])\(([^()]*)\)[^;]*?\{", source[:position],
                                  re.MULTILINE))[-1]
        name, parameters = around[1] or around[2], [part.split("*")[-1].split("&")[-1].strip()
                                                    for part in around[3].split(",")]
        calls = []
        for call in re.finditer(rf"(?<![\w:.]){name}\(([^()]*)\)", source):
            values = dict(zip(parameters, self.arguments(call[1])))
            if call.start() in range(around.start(), around.end()):
                continue
            calls += self.resolve(source, kind, [values.get(argument, argument) for argument in arguments],
                                  call.start())
        return calls

    def read_by(self, path):
        source = literals(path.read_text())
        for call in re.finditer(self.CALL, source):
            for kind, section, key, default in self.resolve(source, call[1], self.arguments(call[2]), call.start()):
                key = re.sub(r'" \+ .*', 'N"', key)
                default = "" if default == "QString()" else default.replace("\\\\", "\\")
                yield tuple(text.strip('"') for text in (
                    section, key, {"String": "text", "Integer": "number"}[kind], default))

    def test_read(self):
        library, examples = set(), set()
        for path in SOURCES:
            if path.name not in ("VQMProperties.h", "Properties.cpp"):
                found = set(self.read_by(path))
                self.assertEqual(bool(found), re.search(r"get(String|Integer)Property", path.read_text()) is not None,
                                 path)
                (examples if "examples" in path.parts else library).update(found)
        examples -= {(section, key, kind, "") for section, key, kind, default in examples if default}
        self.assertEqual([{row[:4] for row in rows[1:]} for rows in tables("docs/properties.md")], [library, examples])


class Picture(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.source = read("docs/architecture.dot")

    def edges(self):
        """(from, to) and, for a dashed arrow, the headers; an arrow to a frame goes to all inside."""
        frame = re.findall(r"^        (\w+) \[", self.source, re.MULTILINE)
        for start, end, rest in re.findall(r"^    (\w+) -> (\w+)(.*);$", self.source, re.MULTILINE):
            headers = frozenset(re.findall(r"\w+\.h", rest))
            for target in frame if "lhead=cluster_core" in rest else [end]:
                yield start, target, headers

    def test_arrows_are_the_rules(self):
        path = ROOT / "tests/checks/include_rules.py"
        loaded = importlib.util.spec_from_file_location("include_rules", path)
        rules = importlib.util.module_from_spec(loaded)
        loaded.loader.exec_module(rules)
        expected = set()
        for folder, targets in rules.RULES.items():
            if folder.split("/")[0] in ("tests", "benchmarks"):
                continue
            headers = {}
            for target in targets:
                name, _, header = target.partition("/")
                headers.setdefault(name, set()).update([header] if header else [])
                if not header:
                    headers[name] = set()
            expected |= {(folder, name, frozenset(of)) for name, of in headers.items()}
        found = list(self.edges())
        self.assertEqual(len(found), len(set(found)))
        self.assertEqual(set(found), expected)

    def test_made_from_its_source(self):
        made = subprocess.run(["dot", "-Tsvg", ROOT / "docs/architecture.dot"], check=True, text=True,
                              stdout=subprocess.PIPE)

        def content(svg):
            return sorted(re.findall(r"<title>(.*?)</title>|<text [^>]*>(.*?)</text>", svg))
        self.assertEqual(content(read("docs/architecture.svg")), content(made.stdout))


class References(unittest.TestCase):
    """What the documents refer to is there."""
    TOP = {path.name for path in ROOT.iterdir() if path.is_dir() and path.name != "build"}
    NAMES = {path.name for folder in TOP - {".git"} for path in (ROOT / folder).rglob("*")}

    def missing(self, document):
        whole = document.read_text()
        text = FENCE.sub("", whole)
        for link in re.findall(r"\]\(([^)#\s]+)(?:#[^)]*)?\)", text):
            if "://" not in link and not (document.parent / link).exists():
                yield link
        made = set(re.findall(r"^```\w+ file=(\S+)", whole, re.MULTILINE))
        for name in re.findall(r"`([\w.@*/+-]+)`", text):
            if name.split("/")[0] in self.TOP and "/" in name:
                found = list(ROOT.glob(name.rstrip("/")))
            elif re.search(r"\w\.(h|cpp|c|py|cmake|md|dot|in|txt|json|scd|rng)$", name):
                found = name in made or name in self.NAMES or (ROOT / name).exists()
            else:
                continue
            if not found:
                yield name

    def test_files(self):
        self.assertGreater(len(DOCUMENTS), 9)
        self.assertEqual([(path.name, name) for path in DOCUMENTS for name in self.missing(path)], [])

    def test_code_is_marked(self):
        """No code by indentation, which console_test.py does not see."""
        indented = [path.name for path in DOCUMENTS if re.search(r"\n\n    \S", FENCE.sub("", path.read_text()))]
        self.assertEqual(indented, [])

    def test_all_are_listed(self):
        links = set(re.findall(r"\]\((docs/[\w-]+\.md)\)", read("README.md")))
        self.assertEqual(links, {f"docs/{path.name}" for path in ROOT.glob("docs/*.md")})


if __name__ == "__main__":
    unittest.main()
