"""The one rule for names: a JSON key is the name of the field with a capital for "_x"."""


def key_of(name):
    head, *rest = name.split("_")
    return head + "".join(part.capitalize() for part in rest)


def count_key_of(name):
    """The key of how many things a field holds."""
    return key_of(name).removesuffix("s") + "Count"


def members(kind):
    """Names of what a class answers."""
    return [name for name in dir(kind) if not name.startswith("_") and not callable(getattr(kind, name))]
