"""Plain data that the package hands out, and its exceptions."""
from typing import TYPE_CHECKING, Any, Dict, Iterable, NamedTuple, Optional, Tuple, Union

from ._words import Change, Code, Effect, Element, Facet, Section, Severity

if TYPE_CHECKING:
    from . import Block


def _count(items: Tuple[Any, ...], what: str) -> str:
    return "%d %s%s" % (len(items), what, "" if len(items) == 1 else "s")


class Error(Exception):
    """What the library refuses to do."""

    def __init__(self, *args: object) -> None:
        super().__init__(*args)


class DeadObjectError(Error, ReferenceError):
    """Use of an object whose library was closed or released, or that was replaced."""


class Location(NamedTuple):
    """A place in a file; lines and columns count from 1, in characters, a tab is one. `end_column` is that of the
    character behind the last one. `file` is None for a text in memory, columns where they are not known; the places of
    differences have no `end_column`."""
    file: Optional[str]
    line: int
    column: Optional[int]
    end_column: Optional[int]

    def __str__(self) -> str:
        place = "%s:%d" % (self.file or "<text>", self.line)
        return place if self.column is None else "%s:%d" % (place, self.column)


class RelatedPlace(NamedTuple):
    """Another place that a diagnostic speaks of."""
    location: Location
    message: str


class Diagnostic(NamedTuple):
    """An error or a warning. Place and source line are None or empty where they are not known."""
    severity: Severity
    code: Code
    file: Optional[str]
    line: Optional[int]
    column: Optional[int]
    end_column: Optional[int]
    message: str
    detail: str
    text: str
    related: Tuple[RelatedPlace, ...] = ()

    def __str__(self) -> str:
        place = ":".join(str(part) for part in (self.file, self.line, self.column) if part is not None)
        said = "%s: %s" % (self.severity, self.message) + (": " + self.detail if self.detail else "")
        return place + ": " + said if place else said


class LoadError(Error):
    """A text with errors, or one that cannot be read. `diagnostics` has all that was said, warnings too."""

    def __init__(self, path: Optional[str], reason: str, diagnostics: Iterable[Diagnostic]) -> None:
        self.path = path
        self.reason = reason
        self.diagnostics: Tuple[Diagnostic, ...] = tuple(diagnostics)
        super().__init__(path, reason, diagnostics)

    @property
    def errors(self) -> Tuple[Diagnostic, ...]:
        """The diagnostics that are errors."""
        return tuple(one for one in self.diagnostics if one.severity == "error")

    def __str__(self) -> str:
        return "\n".join([str(one) for one in self.errors]) or "%s: %s" % (self.path, self.reason)


class LoadWarning(UserWarning):
    """A library was loaded, and something in its text was passed over."""

    def __init__(self, *args: object) -> None:
        super().__init__(*args)


class CheckResult(NamedTuple):
    """What a check said of one input; true when it has no errors. `block_count` is None for one that has."""
    input: str
    ok: bool
    block_count: Optional[int]
    diagnostics: Tuple[Diagnostic, ...]
    reason: Optional[str]

    @property
    def errors(self) -> Tuple[Diagnostic, ...]:
        """The diagnostics that are errors."""
        return tuple(one for one in self.diagnostics if one.severity == "error")

    def __bool__(self) -> bool:
        return self.ok


class Difference(NamedTuple):
    """One difference of two models."""
    effect: Effect
    change: Change
    element: Element
    facet: Facet
    block: Optional[str]
    path: str
    old: str
    new: str
    old_location: Optional[Location]
    new_location: Optional[Location]


class Exported(NamedTuple):
    """Blocks in a form that other tools read: one text, or the text of each file by its name; the other is None."""
    text: Optional[str]
    files: Optional[Dict[str, str]]
    left_out: Tuple[str, ...]  # what the form has nothing for: "BLOCK: NAME: why"


class Imported(NamedTuple):
    """What other tools know of blocks, as NTL."""
    text: str
    left_out: Tuple[str, ...]  # what could not be taken over: "FILE: WHERE: why"


class WrittenGuide(NamedTuple):
    """What became of the pages of a library."""
    pages: int
    drawings: int  # of mappings
    undrawn: str  # why there are none, when none can be drawn here; else empty
    left_behind: str  # beside the folder, and why, when what was replaced cannot be removed; else empty


class Origin(NamedTuple):
    """The statement something comes from, and the branch around it, by its place in the level's branches."""
    location: Optional[Location]
    branch: Optional[int]


class Branch(NamedTuple):
    """An if statement that was reached."""
    taken: bool
    origin: Origin


class PropertyValue(NamedTuple):
    """A value that is given; `pin` is None for a property of the instance itself."""
    pin: Optional[str]
    name: str
    value: Union[bool, int, float, str]
    origin: Origin


class ExpandedInstance(NamedTuple):
    """An instance that comes out; `type` is the name of its block, `level` its own expansion's place in the levels.

    `block` is None when there is no such block, and in what was pickled.
    """
    name: str
    type: str
    block: "Optional[Block]"
    properties: Tuple[PropertyValue, ...]
    level: Optional[int]
    origin: Origin

    def __repr__(self) -> str:
        return "<hdnt.ExpandedInstance %r of %r, %s>" % (self.name, self.type,
                                                         _count(self.properties, "value"))

    def __reduce__(self) -> Tuple[Any, ...]:
        return type(self), tuple(self._replace(block=None))

    def __copy__(self) -> "ExpandedInstance":
        return self

    def __deepcopy__(self, memo: object) -> "ExpandedInstance":
        return self


class ExpandedSignal(NamedTuple):
    """A signal that comes out."""
    name: str
    origin: Origin


class Connection(NamedTuple):
    """A pin that is connected; `instance` is None for a pin of the mapped block."""
    signal: str
    instance: Optional[str]
    pin: str
    inverted: bool
    origin: Origin

    def __repr__(self) -> str:
        pin = self.pin if self.instance is None else self.instance + "." + self.pin
        return "<hdnt.Connection %r to %r%s>" % (self.signal, pin, ", inverted" if self.inverted else "")


class ExpandedCall(NamedTuple):
    """A call that stands as a statement; `made` when it has an implementation."""
    name: str
    arguments: Tuple[Union[bool, int, float, str], ...]
    made: bool
    origin: Origin


class Level(NamedTuple):
    """One mapped block; `type` is its name, and `path` joins instance names by "/", empty for the outermost.

    `block` is None in what was pickled.
    """
    block: "Optional[Block]"
    type: str
    path: str
    section: Section
    outer: Optional[int]
    location: Optional[Location]
    is_map_library: bool
    branches: Tuple[Branch, ...]
    instances: Tuple[ExpandedInstance, ...]
    signals: Tuple[ExpandedSignal, ...]
    connections: Tuple[Connection, ...]
    pin_properties: Tuple[PropertyValue, ...]
    calls: Tuple[ExpandedCall, ...]

    def __repr__(self) -> str:
        return "<hdnt.Level %r%s: %s, %s>" % (self.type, " at %r" % self.path if self.path else "",
                                              _count(self.instances, "instance"),
                                              _count(self.connections, "connection"))

    def __reduce__(self) -> Tuple[Any, ...]:
        return type(self), tuple(self._replace(block=None))

    def __copy__(self) -> "Level":
        return self

    def __deepcopy__(self, memo: object) -> "Level":
        return self


class Problem(NamedTuple):
    """What went wrong in an expansion. `level` is the index of the level whose mapping it is in."""
    message: str
    location: Optional[Location]
    level: int


class Expansion(NamedTuple):
    """What a mapping makes: the outermost block first. No levels: the block has no mapping."""
    levels: Tuple[Level, ...]
    problems: Tuple[Problem, ...]

    @property
    def instances(self) -> Tuple[ExpandedInstance, ...]:
        """The instances of the outermost block."""
        return self.levels[0].instances if self.levels else ()

    @property
    def connections(self) -> Tuple[Connection, ...]:
        """The connections of the outermost block."""
        return self.levels[0].connections if self.levels else ()

    def __repr__(self) -> str:
        if not self.levels:
            return "<hdnt.Expansion without a mapping>"
        return "<hdnt.Expansion of %r: %s, %s, %s, %s>" % (
            self.levels[0].type, _count(self.levels, "level"), _count(self.instances, "instance"),
            _count(self.connections, "connection"), _count(self.problems, "problem"))


for _class in list(globals().values()):
    if isinstance(_class, type) and _class.__module__ == __name__:
        _class.__module__ = "hdnt"
