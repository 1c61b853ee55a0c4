"""python3 -m hdnt ARGUMENTS: the ntl tool that was built with the package."""
import os
import sys

from . import _hdnt  # type: ignore[attr-defined]


def main():
    """Becomes the tool."""
    tool = _hdnt._tool()
    try:
        os.execv(tool, [tool] + sys.argv[1:])
    except OSError as error:
        sys.exit("hdnt: the tool cannot be run: %s" % error)


if __name__ == "__main__":
    main()
