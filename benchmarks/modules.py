"""Module libraries in any number: copies of one pattern, each with a name and an id of its own, and lists of them."""
import pathlib
import struct

NAME = b"Module00000"
ID = 0x5E1F00D5
FIRST_ID = 100  # behind the ids with a fixed role
FAMILY = "0x80000000"
ITEMS, SUBGROUPS = 20, 50  # of a generated menu: at most 99 are read of each


def replaced(data, mark, value):
    if data.count(mark) != 1:
        raise ValueError(f"{mark} stands {data.count(mark)} times in the pattern")
    return data.replace(mark, value)


def write_modules(pattern, folder, count):
    """The paths of `count` copies of the file `pattern` in the folder."""
    data = pathlib.Path(pattern).read_bytes()
    folder.mkdir(parents=True)
    paths = []
    for number in range(count):
        own = replaced(data, NAME, b"Module%05d" % number)
        own = replaced(own, struct.pack("=i", ID), struct.pack("=i", FIRST_ID + number))
        paths.append(folder / f"Module{number:05}.so")
        paths[-1].write_bytes(own)
    return paths


def write_list(path, modules, startup=""):
    """A configuration that lists the modules, all of one folder."""
    files = "\n".join(f'<File name="{module.name}"/>' for module in modules)
    path.write_text(f"""<?xml version="1.0" encoding="UTF-8"?>
<Root><Instrument><Module name="MainStartup">
<ModuleLoadList version="1.0"><Directory nameLinux="{modules[0].parent}">
{files}
</Directory></ModuleLoadList>
<Startup version="1.0">{startup}</Startup>
</Module></Instrument></Root>
""")
    return path


def write_large_list(path, module, count):
    """`count` files, all links to one module, as many menu entries and a hundredth of languages."""
    folder = path.parent / f"links{count}"
    folder.mkdir()
    links = [folder / f"Link{number:05}.so" for number in range(count)]
    for link in links:
        link.symlink_to(module)
    groups = []
    for group in range(-(-count // (ITEMS * SUBGROUPS))):
        subgroups = "".join(
            f'<SubGroup id="S{subgroup}" label="Sub">'
            + "".join(f'<Item id="I{item}" label="Item"/>\n' for item in range(ITEMS)) + "</SubGroup>"
            for subgroup in range(min(SUBGROUPS, -(-count // ITEMS) - group * SUBGROUPS)))
        groups.append(f'<Group id="G{group}" label="Group">{subgroups}</Group>\n')
    languages = "".join(f'<Language name="Language{number}" path="{module.name}.qm"/>\n' for number in range(count // 100))
    (module.parent / f"{module.name}.qm").touch()
    return write_list(path, links, f'<Menu>{"".join(groups)}</Menu>'
                                   f'<Languages><Directory nameLinux="{module.parent}">{languages}</Directory></Languages>')
