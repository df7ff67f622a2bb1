#!/usr/bin/env python3
"""Checks what the shared libraries export: usage exports.py LIBVQMSTARTUP MODULE_FOLDER.

The start-up library exports its classes for the launcher and its version texts, a module its two entry
points, and nothing else; the firmware version stands in a section of its own.
"""
import pathlib
import re
import subprocess
import sys

LIBRARY_NAMES = re.compile(
    r"^(vtable for |typeinfo for |typeinfo name for |non-virtual thunk to |VTT for )?"
    r"(Orvia::(VQMMainStartupInterface|VQMMainStartupImplementation|VQMIntegrationStartup|VQMMainGui|"
    r"CSuXmlEvntHdlr|"
    r"CXmlParse(Languages|MasterRegKeys|MenuTree)|VQMStartupWindow|(set)?[mM]ainWidget|fileExtension|languageDir)\b.*|Version(Vers|Date|Time)Main)$")
MUST_EXPORT = ["Orvia::VQMIntegrationStartup::VQMIntegrationStartup(int)", "Orvia::VQMMainGui::receiver",
               "Orvia::VQMMainGui::m_Id", "Orvia::VQMMainStartupImplementation::platform",
               "Orvia::VQMMainStartupImplementation::exceptionLocation",
               "Orvia::VQMMainStartupImplementation::anchorInterface",
               "Orvia::VQMIntegrationStartup::sm_preventFlag", "Orvia::VQMIntegrationStartup::sm_abortFlag",
               "Orvia::VQMIntegrationStartup::sm_startupStage", "Orvia::fileExtension", "Orvia::languageDir",
               "VersionVersMain"]
ENTRY_POINTS = {"VQMGetModuleInfo", "VQMCreateModuleInterfaceInstance"}
# What the linker and the sanitizers add of their own.
TOOLCHAIN = re.compile(r"^(__bss_start|_edata|_end|_init|_fini|__(asan|tsan|ubsan|odr_asan)_.*|__odr_asan.*)$")
FIRMWARE_VERSION = "2.15.095.12 beta"


def exports(library):
    """Demangled names defined by the library; weak ones are template and inline code that may be merged."""
    output = subprocess.run(["nm", "-DC", "--defined-only", library], check=True, capture_output=True, text=True)
    names = []
    for line in output.stdout.splitlines():
        _, kind, name = line.split(" ", 2)
        if kind not in "wWvVu" and not TOOLCHAIN.match(name):
            names.append(name)
    return names


def strings(library, section):
    output = subprocess.run(["readelf", "-p", section, library], check=True, capture_output=True, text=True)
    return re.findall(r"^\s*\[\s*[0-9a-f]+\]  (.*)$", output.stdout, re.MULTILINE)


def main():
    library, modules = sys.argv[1], sorted(pathlib.Path(sys.argv[2]).glob("*.so"))
    names = exports(library)
    problems = [f"{library}: exports {name}" for name in names if not LIBRARY_NAMES.match(name)]
    problems += [f"{library}: does not export {name}" for name in MUST_EXPORT if name not in names]
    if strings(library, ".fwversion") != [FIRMWARE_VERSION]:
        problems.append(f"{library}: .fwversion holds {strings(library, '.fwversion')}")
    for module in modules:
        if set(exports(module)) != ENTRY_POINTS:
            problems.append(f"{module}: exports {exports(module)}")
    print("\n".join(problems + [f"{len(names)} names of the library and {len(modules)} modules checked"]))
    return 1 if problems or not modules else 0


if __name__ == "__main__":
    sys.exit(main())
