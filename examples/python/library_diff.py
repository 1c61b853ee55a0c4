#!/usr/bin/python3
"""What differs between two libraries, what breaks designs first.

    library_diff.py OLD NEW      status 1 when something breaks
"""
import sys
from typing import List

import hdnt

ORDER = ("breaking", "compatible", "text only")


def report(old: hdnt.Library, new: hdnt.Library) -> List[str]:
    lines = []
    for one in sorted(hdnt.diff(old, new), key=lambda difference: ORDER.index(difference.effect)):
        values = " -> ".join(value for value in (one.old, one.new) if value)
        where = one.new_location or one.old_location
        lines.append("%s: %s %s %s: %s %s%s" % (one.effect, one.element, one.path or old.name, one.change, one.facet,
                                                values, " (%s)" % str(where) if where else ""))
    return lines


def main(arguments: List[str]) -> int:
    old, new = (hdnt.load(path) for path in arguments)
    lines = report(old, new)
    print("\n".join(lines) or "no difference")
    return int(any(line.startswith("breaking") for line in lines))


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    try:
        sys.exit(main(sys.argv[1:]))
    except (hdnt.LoadError, OSError) as error:
        sys.exit(str(error))
