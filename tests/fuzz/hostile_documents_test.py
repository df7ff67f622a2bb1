#!/usr/bin/env python3
"""Documents that are known to hurt readers of XML, given to mainstartup --headless and --check and to the reader of
master keys, which no program has: within limits of time and memory each ends with its exit code and says what is
wrong where, and opens no file and no connection that a harmless document does not.

The environment also names that reader's program (MASTERKEYS) and the sanitizers built with (SANITIZED).
"""
import os
import re
import subprocess
import unittest

from launcher_case import LauncherCase, MAINSTARTUP

SANITIZED = os.environ["SANITIZED"]
MIB = 1 << 20
LARGE = MIB // 4 if SANITIZED else MIB  # a document that is long but read
CPU_LIMIT = 30 if SANITIZED else 10  # seconds
TIME_LIMIT = 60  # seconds, too: that is where something waits
MEMORY_LIMIT = 128 * MIB
MODES = ["headless", "check", "master keys"]
DOCTYPE = "document type declarations are not accepted"
TOO_LONG = "16777216 at most are read"
END = "</Startup></Module></Instrument></Root>"
CALL = re.compile(r"^\d+ +((?:open|openat2?|connect|socket)\(.*)\) += ")


def document(contents="", files="", root=""):
    """The line of the contents is 3."""
    return (f'<Root{root}><Instrument><Module name="MainStartup"><ModuleLoadList><Directory nameLinux="/nowhere">\n'
            f'<File name="a.so"/>{files}</Directory></ModuleLoadList><Startup>\n{contents}'
            f"\n{END}")


def said_to_be(encoding, text):
    return f'<?xml version="1.0" encoding="{encoding}"?>\n{text}'


def entities(subset, use="&e;"):
    return f"<?xml version='1.0'?>\n<!DOCTYPE Root {subset}>\n" + document(use, use)


def bomb():
    rows = "".join(f'<!ENTITY e{i} "{f"&e{i - 1};" * 10}">' for i in range(1, 20))
    return entities(f'[<!ENTITY e0 "ha">{rows}<!ENTITY e "&e19;">]')


def attributes(length):
    return " ".join(f'a{i}=""' for i in range(length // 11))


def broken():
    """Name, document, what is said of it, and the line of that; of those with line 3 the load list is read."""
    yield "nested entities", bomb(), DOCTYPE, 2
    yield "one long entity, often", entities(f'[<!ENTITY e "{"x" * 50000}">]', "&e;" * 50000), DOCTYPE, 2
    for place in ("file:///etc/passwd", "/etc/passwd", "http://127.0.0.1:9/e"):
        yield f"entity {place}", entities(f'[<!ENTITY e SYSTEM "{place}">]'), DOCTYPE, 2
        yield f"parameter entity {place}", entities(f'[<!ENTITY % p SYSTEM "{place}"> %p;]', ""), DOCTYPE, 2
        yield f"external subset {place}", entities(f'SYSTEM "{place}"', ""), DOCTYPE, 2
        yield f"public subset {place}", entities(f'PUBLIC "-//a//b" "{place}"', ""), DOCTYPE, 2
    yield "content model", entities(f'[<!ELEMENT Root {"(" * 100000}]', ""), DOCTYPE, 2
    yield "100,000 levels", document("<a>" * 100000 + "</a>" * 100000), "nested deeper than 256", 3
    yield "100 MB of attributes", document("<a " + 'b="" ' * (20 * MIB) + "/>"), TOO_LONG, 1
    yield "100 MB of one attribute", document(f'<a b="{"x" * 100 * MIB}"/>'), TOO_LONG, 1
    yield "100 MB behind the end", document() + " " * 100 * MIB, TOO_LONG, 1
    yield "attribute without an end", document(f'<a b="{"x" * LARGE}')[:-len("\n" + END)], "unexpected end of file", 3
    yield "opening brackets", document("<" * LARGE), "error occurred while parsing content", 3
    yield "a NUL byte", document('<a\0b="c"/>'), "error occurred while parsing element", 3
    yield "nothing but NUL", "\0" * LARGE, "error occurred while parsing element", 1
    yield "UTF-16 said, but not so", said_to_be("UTF-16", document()), "error occurred while parsing element", 1
    yield "brackets in UTF-7", said_to_be("UTF-7", document("+ADw-a+AD4-")), "tag mismatch", 5


def read():
    """Name, document, what the check says of it; read to its end."""
    yield ("inclusion", document('<xi:include xmlns:xi="http://www.w3.org/2001/XInclude" href="file:///etc/passwd"/>'),
           "element xi:include is unknown")
    yield "schema and base", document(root=' xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xml:base="http://h/"'
                                      ' xsi:noNamespaceSchemaLocation="file:///etc/passwd"'), "1 file"
    yield "style sheet", '<?xml-stylesheet href="http://127.0.0.1:9/a.xsl"?>' + document(), "1 file"
    yield "many attributes", document(f"<a {attributes(LARGE)}/>"), "is not checked"
    yield ("long attributes",
           document(f'<Menu><Group id="{"x" * LARGE}" label="{"&#65;" * (LARGE // 10)}"/></Menu>'), "1 file")
    yield "one long name", document(f'<{"x" * LARGE}/>'), "is unknown"
    yield "many elements", document("<a/>" * (LARGE // 4)), "there is more of this"
    yield "many options", document(files=f'<File name="a.so" option="{"x|" * (LARGE // 2)}"/>'), "there is more of this"
    yield "many dots", document(files=f'<File name="{"./" * (LARGE // 2)}a.so"/>'), "slashes of a name are dropped"
    yield "long comment", document(f"<!--{'- ' * (LARGE // 2)}-->"), "1 file"
    yield "brackets in CDATA", document(f"<![CDATA[{']' * LARGE}]]>"), "text in Startup"
    yield "line ends", document("\r" * LARGE), "1 file"
    yield "bad UTF-8", document('<a b="?"/>').encode().replace(b"?", b"\xc3\x28\xed\xa0\xff"), "bytes that are no text"
    yield "unknown encoding", said_to_be("no-such-encoding", document()), "1 file"
    yield "UTF-16 without a mark", document().encode("utf-16-le"), "1 file"
    yield "UTF-32", document().encode("utf-32"), "1 file"


HARMLESS = [document("<a/>"), "<Root>\n<Startup>"]



class HostileDocuments(LauncherCase):
    def setUp(self):
        super().setUp()
        self.path = self.folder / "hostile.xml"
        self.path.with_suffix(".ini").write_text("[Instrument]\nFamily=0x2\n")
        # Of memory, a sanitizer's shadows are of no concern; and its leak checker would trace the process itself.
        self.environment["ASAN_OPTIONS"] = f"detect_leaks=0:hard_rss_limit_mb={8 * MEMORY_LIMIT // MIB}"
        self.traced = ["timeout", str(TIME_LIMIT), "strace", "-f", "-qq", "--seccomp-bpf", "-e", "signal=none", "-e",
                       "trace=open,openat,openat2,connect,socket", "-o", str(self.folder / "calls")]

    def ends(self, mode):
        """Returns the exit code, what was said, and the files and connections that were asked for."""
        command = {"headless": [MAINSTARTUP, "--headless", "--until", "complete finished", "-l", str(self.path)],
                   "check": [MAINSTARTUP, "--check", str(self.path)],
                   "master keys": [os.environ["MASTERKEYS"], str(self.path)]}[mode]
        limits = ["prlimit", "--core=0", f"--cpu={CPU_LIMIT}"]
        if not SANITIZED:  # the reader's own program holds the whole document
            held = 2 * self.path.stat().st_size if mode == "master keys" else 0
            limits.append(f"--data={MEMORY_LIMIT + held}")
        run = subprocess.run(limits + self.traced + command, env=self.environment, stdin=subprocess.DEVNULL, text=True,
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT, errors="replace", check=False)
        calls = map(CALL.match, (self.folder / "calls").read_text(errors="replace").splitlines())
        opened = {re.sub(r"\d+|qt_temp\.\w+", "N", match[1]) for match in calls if match}
        opened.discard('open("/proc/self/statm", O_RDONLY')  # the sanitizer's, to limit memory
        # the C library's, before it gives memory back
        opened.discard('openat(AT_FDCWD, "/proc/sys/vm/overcommit_memory", O_RDONLY|O_CLOEXEC')
        self.assertTrue(any("hostile.xml" in call for call in opened), run.stdout)
        self.assertFalse([call for call in opened if "AF_INET" in call])
        return run.returncode, run.stdout, opened

    def opened_by_harmless(self):
        opened = {mode: set() for mode in MODES}
        for contents in HARMLESS:
            self.path.write_text(contents)
            for mode in MODES:
                opened[mode] |= self.ends(mode)[2]
        return opened

    def expect(self, cases, codes, patterns):
        """For each case the exit code and a pattern of what is said, by mode."""
        harmless = self.opened_by_harmless()
        for name, contents, *of in cases:
            self.path.write_bytes(contents if isinstance(contents, bytes) else contents.encode())
            for mode in MODES:
                with self.subTest(name, mode=mode):
                    code, text, opened = self.ends(mode)
                    self.assertEqual(code, codes(mode, *of), text[-3000:])
                    self.assertRegex(text, patterns(mode, *of))
                    self.assertEqual(opened - harmless[mode], set())

    def test_broken(self):
        def codes(mode, said, line):
            return {"headless": 3 if line < 3 else 0, "check": 2 if said == TOO_LONG else 1, "master keys": 0}[mode]

        def patterns(mode, said, line):
            place = rf"hostile\.xml:{line}:\d+: "
            check = r"hostile\.xml: has \d+ bytes, " if said == TOO_LONG else place + "defect: .*"
            return {"headless": f"{place}XML error: .*{said}", "check": check + said, "master keys": "1 input"}[mode]
        self.expect(broken(), codes, patterns)

    def test_read(self):
        def codes(mode, _):
            return {"headless": 0, "check": 1, "master keys": 0}[mode]

        def patterns(mode, said):
            return {"headless": r"(?s)^(?!.*XML error).*/nowhere/a\.so", "master keys": "1 input",
                    "check": rf"(?s)^(?!.*not-well-formed).*{said}"}[mode]
        self.expect(read(), codes, patterns)


if __name__ == "__main__":
    unittest.main()
