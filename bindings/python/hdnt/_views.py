"""What a library and the lists of its objects have of mappings: both have `names`, `values` and look-up by name."""
import collections.abc as _abc
import sys as _sys


class _Names(_abc.KeysView):
    """The names of a mapping, as a set."""

    def __iter__(self):
        return iter(self._mapping.names)

    def __contains__(self, name):
        return isinstance(name, str) and name in self._mapping


class _Items(_abc.ItemsView):
    """Pairs of a name and what has it, as a set."""

    def __iter__(self):
        return zip(self._mapping.names, self._mapping.values())

    def __contains__(self, item):
        name, value = item
        return name in _Names(self._mapping) and self._mapping[name] is value


def get(self, name, default=None):
    """What has that name, or the default."""
    return self[name] if isinstance(name, str) and name in self else default


def keys(self):
    """The names, as a set that keeps their order."""
    return _Names(self)


def items(self):
    """Pairs of a name and what has it."""
    return _Items(self)


def values_of_library(self):
    """Its own blocks, as a sequence that is also asked by name."""
    return self.blocks


def values_of_view(self):
    """What is in it: the sequence itself."""
    return self


def index(self, value, start=0, stop=_sys.maxsize):
    """The place of an element, given itself or by name; ValueError when it is not there."""
    return _abc.Sequence.index(self, get(self, value, value), start, stop)


def count(self, value):
    """How often an element is there, given itself or by name: once or not at all."""
    return int(value in self)


def _add(kind, **methods):
    for name, method in methods.items():
        setattr(kind, name, method)


def complete(library, view):
    """Gives the types their methods, and tells what they are."""
    _add(library, get=get, keys=keys, values=values_of_library, items=items)
    _add(view, get=get, keys=keys, values=values_of_view, items=items, index=index, count=count)
    _abc.Mapping.register(library)
    _abc.Sequence.register(view)
