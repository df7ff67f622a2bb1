#!/usr/bin/env python3
"""What the build settings of vqm_add_module() are worth: module_flags.py [MODULES [RUNS]]

Generates modules of realistic size, builds each with vqm_add_module() and as a plain shared library, and compares how
long a process that has Qt loaded takes to open them all: interleaved runs, each a process of its own; the median and
the shortest run are compared.
"""
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
SOURCES = 25
PARTS = 5  # makes modules of some 90 KB with 180 symbolic relocations
OPENER = r"""
#include <dlfcn.h>
#include <stdio.h>
#include <time.h>
static double now(void)
{
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * 1e3 + time.tv_nsec / 1e6;
}
int main(int argc, char **argv)
{
    const double begin = now();
    for (int i = 1; i < argc; ++i) {
        void *module = dlopen(argv[i], RTLD_NOW | RTLD_LOCAL);
        if (module == NULL || dlsym(module, "VQMGetModuleInfo") == NULL
            || dlsym(module, "VQMCreateModuleInterfaceInstance") == NULL)
            return fprintf(stderr, "%s\n", dlerror()), 1;
    }
    printf("%f\n", now() - begin);
    return 0;
}
"""
CLASS = """
class Part{n}
{{
public:
    virtual ~Part{n}() = default;
    {operations}
    std::vector<std::string> texts;
}};
"""
MODULE = """
class Module{number} final : public Orvia::VQMModule<>
{{
public:
    using VQMModule::VQMModule;
    int initialize(Orvia::VQMAnchorInterface *, int) override {{ {uses} return 0; }}
    void terminate(Orvia::VQMAnchorInterface *) override {{ parts.clear(); }}
    std::vector<std::shared_ptr<void>> parts;
}};
VQM_MODULE(Module{number})
"""
OPERATION = """virtual std::string operation{k}(int value)
    {{
        texts.push_back(std::to_string(value * {k} + {n}) + " of part {n}");
        return texts.back().substr(0, static_cast<std::size_t>(value) % 7);
    }}"""
CMAKE = """cmake_minimum_required(VERSION 3.25)
project(Flags LANGUAGES C CXX)
set(CMAKE_CXX_STANDARD 20)
include({root}/cmake/VQMModule.cmake)
include_directories({root})
add_executable(opener opener.c)
find_library(QT Qt6Widgets REQUIRED)
target_link_libraries(opener PRIVATE -Wl,--no-as-needed ${{QT}} dl)
foreach(n RANGE 1 {sources})
  vqm_add_module(sdk${{n}} TYPE base ID ${{n}} FAMILY 0x2 VERSION 1.0.0 SOURCES module${{n}}.cpp
                 DIRECTORY ${{CMAKE_BINARY_DIR}}/sdk)
  get_target_property(values sdk${{n}} COMPILE_DEFINITIONS)
  add_library(plain${{n}} MODULE module${{n}}.cpp)
  target_compile_definitions(plain${{n}} PRIVATE ${{values}})
  set_target_properties(plain${{n}} PROPERTIES PREFIX "" LIBRARY_OUTPUT_DIRECTORY ${{CMAKE_BINARY_DIR}}/plain)
endforeach()
"""


def write_sources(folder):
    for number in range(1, SOURCES + 1):
        parts = [CLASS.format(n=n, operations="\n    ".join(OPERATION.format(k=k, n=n) for k in range(5)))
                 for n in range(number, number + PARTS)]
        uses = "".join(f"parts.push_back(std::make_shared<Part{n}>()); " for n in range(number, number + PARTS))
        (folder / f"module{number}.cpp").write_text(
            '#include "registry/VQMModule.h"\n#include <memory>\n#include <string>\n'
            + "".join(parts) + MODULE.format(number=number, uses=uses))
    (folder / "opener.c").write_text(OPENER)
    (folder / "CMakeLists.txt").write_text(CMAKE.format(root=ROOT, sources=SOURCES))


def build(folder):
    for command in (["cmake", "-G", "Ninja", "-S", folder, "-B", folder / "build", "-DCMAKE_BUILD_TYPE=Release"],
                    ["cmake", "--build", folder / "build"]):
        run = subprocess.run(command, capture_output=True, text=True)
        if run.returncode:
            sys.exit(run.stdout + run.stderr)


def copies(folder, kind, count):
    paths = []
    for number in range(count):
        path = folder / f"{kind}-{number}.so"
        shutil.copy(folder / "build" / kind / f"{kind}{number % SOURCES + 1}.so", path)
        subprocess.run(["strip", "--strip-unneeded", path], check=True)
        paths.append(path)
    return paths


def milliseconds(folder, paths):
    run = subprocess.run([folder / "build" / "opener", *paths], check=True, capture_output=True, text=True)
    return float(run.stdout)


def relocations(path):
    text = subprocess.run(["readelf", "-rW", path], check=True, capture_output=True, text=True).stdout
    return len(re.findall(r"R_\w+(?:_64|_32|GLOB_DAT|JUMP_SLO\w*)\b", text))


def main():
    count, runs = (int(argument) for argument in (sys.argv[1:] + ["200", "31"][len(sys.argv) - 1:]))
    with tempfile.TemporaryDirectory(prefix="module-flags-") as name:
        folder = pathlib.Path(name)
        write_sources(folder)
        build(folder)
        kinds = {kind: copies(folder, kind, count) for kind in ("plain", "sdk")}
        times = {kind: [] for kind in kinds}
        for _ in range(runs):
            for kind, paths in kinds.items():
                times[kind].append(milliseconds(folder, paths))
        for kind, paths in kinds.items():
            size, symbolic = paths[0].stat().st_size // 1024, relocations(paths[0])
            print(f"{kind:6} {size:4} KB, {symbolic:4} symbolic relocations a module, {count} modules: "
                  f"median {statistics.median(times[kind]):.1f} ms, shortest {min(times[kind]):.1f} ms")
        print(f"sdk of plain: median {statistics.median(times['sdk']) / statistics.median(times['plain']):.2f}, "
              f"shortest {min(times['sdk']) / min(times['plain']):.2f}")


if __name__ == "__main__":
    main()
