#!/usr/bin/env python3
"""check.py COMPILER SOURCE_DIR LIBRARY...

Holds what shared libraries export against the headers that are installed with them: only names that stand in a header,
and no private members. Of these, two kinds are excepted: virtual ones, which the tables of derived classes name, and
those that say HDNT_API for themselves, because an inline function of a header calls them.
"""
import pathlib
import re
import subprocess
import sys
import tempfile


def run(*command, text=""):
    return subprocess.run(command, input=text, check=True, stdout=subprocess.PIPE, text=True).stdout


def installed_headers(source_dir):
    found = [path for folder in ("hdnt", "author") for path in sorted(pathlib.Path(source_dir, folder).rglob("*.h"))]
    return [path for path in found if not path.name.endswith(".internal.h")]


def debug_entries(compiler, source_dir, headers):
    """What a compiler notes of the headers for debuggers: entries of a tag and attributes, each with those around it."""
    everything = ["-fstandalone-debug"] if "clang" in run(compiler, "--version") else ["-femit-class-debug-always"]
    includes = "".join('#include "%s"\n' % header.relative_to(source_dir) for header in headers)
    with tempfile.NamedTemporaryFile(suffix=".o") as out:
        run(compiler, "-std=c++20", "-g", "-gdwarf-4", "-fno-eliminate-unused-debug-types", *everything,
            "-I", str(source_dir), "-c", "-x", "c++", "-", "-o", out.name, text=includes)
        dump = run("readelf", "--wide", "--debug-dump=info", out.name)
    entries, around = [], {}
    for line in dump.splitlines():
        begin = re.match(r" *<(\d+)><[0-9a-f]+>: Abbrev Number: \d+ \((\w+)\)", line)
        attribute = re.match(r" *<[0-9a-f]+> +DW_AT_(\w+) *: (?:\(.*\): )?(.*\S)", line)
        if begin:
            level = int(begin[1])
            around[level] = {"tag": begin[2], "around": around.get(level - 1)}
            entries.append(around[level])
        elif attribute and entries:
            entries[-1][attribute[1]] = attribute[2]
    return entries


def is_private(entry):
    holder = entry["around"]
    if holder is None:
        return False
    default = "3" if holder["tag"] == "DW_TAG_class_type" else "1"
    return entry.get("accessibility", default).startswith("3") or is_private(holder)


def private_members(entries):
    """Linkage names; constructors and destructors have several."""
    names = set()
    for entry in entries:
        if entry["tag"] == "DW_TAG_subprogram" and "virtuality" not in entry and is_private(entry):
            for digit in "012":
                names.add(re.sub(r"([CD])4E", r"\g<1>%sE" % digit, entry.get("linkage_name", "")))
    return names


def needed_inline(texts):
    """Class and name of the private members that say HDNT_API for themselves."""
    needed = set()
    for text in texts:
        for holder in re.finditer(r"^class HDNT_API (\w+).*?^};", text, re.M | re.S):
            needed |= {(holder[1], name) for name in re.findall(r"^ +HDNT_API .*?(\w+)\(", holder[0], re.M)}
    return needed


def parts_of(name):
    """Scopes and name, without arguments and the kind of a table: ["HDNTBlock", "check"]."""
    name = re.sub(r"^(?:(?:typeinfo name|\S*vtable|VTT|typeinfo|guard variable) for|\S+ thunk to) ", "", name)
    name = re.sub(r"\boperator\b.*", "operator", re.sub(r"\[abi:\w+\]", "", name))
    while re.search(r"<[^<>]*>", name):
        name = re.sub(r"<[^<>]*>", "", name)
    return re.sub(r"\(.*", "", name).split(" ")[-1].split("::")  # what templates return stands in front


def main():
    compiler, source_dir, *libraries = sys.argv[1:]
    headers = installed_headers(source_dir)
    texts = [header.read_text() for header in headers]
    words = set(re.findall(r"\w+", "\n".join(texts))) - {"std"}
    private = private_members(debug_entries(compiler, source_dir, headers))
    needed = needed_inline(texts)
    assert len(private) > 100, "the debug information tells of no private members"
    faults = []
    for library in libraries:
        symbols = [line.split()[-1] for line in run("nm", "-D", "--defined-only", library).splitlines()]
        assert symbols, library + " exports nothing"
        for symbol, name in zip(symbols, run("c++filt", text="\n".join(symbols)).splitlines()):
            parts = parts_of(name)
            if not all(part.lstrip("~") in words for part in parts):
                faults.append("%s: stands in no header: %s" % (library, name))
            elif symbol in private and tuple(parts[-2:]) not in needed:
                faults.append("%s: is private: %s" % (library, name))
    print("\n".join(faults) if faults else "%d libraries: nothing but what is meant" % len(libraries))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
