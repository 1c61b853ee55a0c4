#!/usr/bin/python3
"""Every block whose mapping uses a block, directly or by others.

    maps_to.py BLOCK [LIBRARY]      in the common library without one
"""
import sys
from typing import Dict, List, Set

import hdnt


class Users(hdnt.Visitor):
    """Collects which blocks each mapping has instances of, those inside statements too."""

    def __init__(self) -> None:
        self.users: Dict[str, List[str]] = {}
        self.block = ""

    def visit_block(self, node: hdnt.Block) -> None:
        self.block = node.name

    def visit_instance(self, node: hdnt.Instance) -> None:
        users = self.users.setdefault(node.type_name.upper(), [])
        if self.block not in users:
            users.append(self.block)


def mapped_to(library: hdnt.Library, name: str) -> Dict[str, int]:
    """The blocks, each with the number of mappings on the shortest way."""
    visitor = Users()
    library.accept(visitor)
    distance: Dict[str, int] = {}
    seen: Set[str] = {name.upper()}
    front = [name]
    while front:
        found = [user for used in front for user in visitor.users.get(used.upper(), []) if user.upper() not in seen]
        steps = max(distance.values(), default=0) + 1
        front = list(dict.fromkeys(found))
        seen.update(user.upper() for user in front)
        distance.update((user, steps) for user in front)
    return distance


def main(arguments: List[str]) -> int:
    library = hdnt.load(arguments[1]) if len(arguments) > 1 else hdnt.common()
    block = library.find(arguments[0])
    if block is None:
        print("no block '%s'" % arguments[0], file=sys.stderr)
        return 1
    for user, steps in mapped_to(library, block.name).items():
        print("%s%s" % ("  " * (steps - 1), user))
    return 0


if __name__ == "__main__":
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1:]))
