#!/usr/bin/python3
"""Python enumerations for the properties whose values are listed.

    value_enums.py [LIBRARY] > cells.py      the common library without an argument
"""
import re
import sys
from typing import Any, Dict, Iterator, List, Tuple

import hdnt


def member(value: Any) -> str:
    """A name for a value: `RISE`, `V_8_H48` for 8'h48, `MINUS_1` for -1."""
    text = re.sub(r"\W+", "_", str(value).replace("-", "MINUS_")).strip("_").upper() or "EMPTY"
    return text if re.match(r"[A-Z]", text) else "V_" + text


def members(hdnt_property: hdnt.Property) -> Dict[str, Any]:
    names: Dict[str, Any] = {}
    for value in dict.fromkeys(hdnt_property.values):
        name = member(value)
        while name in names:
            name += "_"
        names[name] = value
    return names


def enumerations(library: hdnt.Library) -> Iterator[Tuple[str, Dict[str, Any]]]:
    for block in library.blocks:
        for one in block.properties:
            if one.values:
                yield "%s_%s" % (block.name, one.name), members(one)


def source(library: hdnt.Library) -> str:
    lines = ['"""Made from the library %s."""' % library.name, "import enum"]
    for name, values in enumerations(library):
        lines += ["", "", "class %s(enum.Enum):" % name]
        lines += ["    %s = %r" % item for item in values.items()]
    return "\n".join(lines) + "\n"


def main(arguments: List[str]) -> int:
    sys.stdout.write(source(hdnt.load(arguments[0]) if arguments else hdnt.common()))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
