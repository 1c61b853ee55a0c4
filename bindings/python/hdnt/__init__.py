"""Libraries of cell primitives, as they are described in NTL.

    import hdnt
    library = hdnt.load("cells.btl")
    for block in library.blocks:
        print(block.name, len(block.pins), block.property_dict())

What comes from a library lives as long as the library. An object keeps its library alive; `library.close()`, a `with`
statement and `hdnt.release()` end it, and everything got from it raises DeadObjectError from then on.
"""
import json as _json
import os as _os
import subprocess as _subprocess
import warnings as _warnings

from . import _hdnt, _views
from ._data import (Branch, CheckResult, Connection, DeadObjectError, Diagnostic, Difference, Error, ExpandedCall,
                    ExpandedInstance, ExpandedSignal, Expansion, Exported, Imported, Level, LoadError, LoadWarning, Location, Origin,
                    Problem, PropertyValue, RelatedPlace, WrittenGuide)
from ._hdnt import (Block, BlockAssign, BoolConstant, Bus, Call, Connect, DoubleConstant, Expression, Function, If,
                    Instance, IntConstant, Library, Netlist, Node, Operation, Pin, PinAssign, PinRef, Property, Signal,
                    Statements, StringConstant, View, add_search_directory, architecture, common, error_count,
                    compare_models, export_blocks, guide, import_blocks, lint, live_handles, parameter, register_cells, release, set_architecture, set_parameter, simulation)
from ._hdnt import __version__
from ._visitor import Visitor

__all__ = [name for name in dir() if not name.startswith("_")] + ["check", "check_all", "diff", "load"]


_views.complete(Library, View)


def load(path, parent=None, *, check=False, untrusted=False):
    """Loads a file, or all .btl files of a folder, as a library that belongs to the script.

    With `check`, the content is checked too. With `untrusted`, the limits for files of someone else hold. Raises
    LoadError with every diagnostic for a text with errors, and OSError when nothing is at `path`. What the text has that
    is passed over comes as LoadWarning, and is in `library.warnings`.
    """
    library = _hdnt.load(path, parent, check=check, untrusted=untrusted)
    for warning in library.warnings:
        _warnings.warn(LoadWarning(str(warning)), stacklevel=2)
    return library


def diff(old, new):
    """The differences of two libraries, or of two blocks; an empty list when they are equal."""
    return old.diff(new)


def _place(location):
    place = location or {}
    return place.get("file"), place.get("line"), place.get("column"), place.get("endColumn")


def _diagnostics(result):
    return tuple(
        Diagnostic(one["severity"], one["code"], *_place(one["location"]), one["message"], one["detail"] or "",
                   one["text"] or "",
                   tuple(RelatedPlace(Location(*_place(other["location"])), other["message"])
                         for other in one["related"]))
        for one in result["diagnostics"])


def check_all(paths=(), *, parent=None, include=(), tool=None):
    """Checks files and folders, each in a process of its own, with `ntl check`: a CheckResult for each.

    Without a path, the shipped libraries are checked. `parent` is the path of the library below, or "common"; `include`
    names directories for INCLUDE. `tool` is the ntl to use; by default the one that stands beside the library.
    """
    command = [_os.fspath(tool) if tool else _hdnt._tool(), "check", "--format=json"]
    if parent is not None:
        command += ["--parent", _os.fspath(parent)]
    for directory in include:
        command += ["-I", _os.fspath(directory)]
    command += ["--"] + [_os.fspath(path) for path in paths]
    done = _subprocess.run(command, stdout=_subprocess.PIPE, stderr=_subprocess.PIPE, check=False)
    try:
        document = _json.loads(done.stdout)
    except ValueError as error:
        said = done.stderr.decode(errors="replace").strip()
        raise Error("ntl check failed: " + (said or "status %d" % done.returncode)) from error
    return [CheckResult(one["input"], one["reason"] is None, one["blockCount"], _diagnostics(one), one["reason"])
            for one in document["inputs"]]


def check(path, *, parent=None, include=(), tool=None):
    """Checks one file or folder; see check_all."""
    return check_all([path], parent=parent, include=include, tool=tool)[0]
