#!/usr/bin/python3
"""Prints the side-by-side manifest of the module: side-by-side.py TEMPLATE

The classes are those of the sources: each filter's row, creator and chain."""
import pathlib
import re
import sys

TREE = pathlib.Path(__file__).resolve().parent.parent
GUID = r'base::Guid\(\s*"(\{[-0-9A-F]+\})"'
ROW = re.compile(r'\.progId = "([\w.]+)",\s*\.classId =\s*' + GUID)
CLASS = '    <comClass clsid="{}" threadingModel="Both" progid="{}"/>\n'


def rows():
    for path in sorted((TREE / "filters").rglob("*.cpp")):
        yield from ((id, prog_id) for prog_id, id in ROW.findall(path.read_text()))


def main():
    chain = (TREE / "core/AnimChain.h").read_text()
    ids = dict(re.findall(r"k(\w+)ClassId = " + GUID, chain))
    classes = [(ids["Creator"], "ZNFilter.Creator.1"), (ids["Chain"], "ZNFilter.Chain.1")]
    classes += rows()
    text = "".join(CLASS.format(id, prog_id) for id, prog_id in classes)
    print(pathlib.Path(sys.argv[1]).read_text().replace("@classes@", text), end="")
    return 0


if __name__ == "__main__":
    sys.exit(main())
