#!/usr/bin/python3
"""A table of all blocks with their pins and properties, by group.

    block_table.py [LIBRARY]      the common library without an argument
"""
import sys
from typing import Dict, List

import hdnt


def table(library: hdnt.Library) -> str:
    groups: Dict[str, List[hdnt.Block]] = {}
    for block in library.blocks:
        groups.setdefault(":".join(filter(None, (block.group, block.subgroup))) or "-", []).append(block)
    lines = ["%-36s %6s %6s %11s" % ("GROUP, BLOCK", "PINS", "BUSES", "PROPERTIES")]
    for group in sorted(groups):
        blocks = groups[group]
        lines.append("%-36s %6d %6d %11d" % (group, sum(len(b.pins) for b in blocks), sum(len(b.buses) for b in blocks),
                                             sum(len(b.properties) for b in blocks)))
        lines += ["  %-34s %6d %6d %11d" % (b.name, len(b.pins), len(b.buses), len(b.properties)) for b in blocks]
    return "\n".join(lines)


def main(arguments: List[str]) -> int:
    print(table(hdnt.load(arguments[0]) if arguments else hdnt.common()))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
