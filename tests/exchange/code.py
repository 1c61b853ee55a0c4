#!/usr/bin/env python3
"""Holds what `ntl export c++` and `ntl export python` write against `ntl show`: compiled, and imported."""
import glob
import importlib.util
import json
import os
import re
import shutil

from export import FORM, NTL, check, escaped, models, read, run, written

# The last names of a scope are those that the others would take.
WORDS = ["class", "None", "NULL", "EIO", "std", "namesOf", "Block", "enum", "mro", "name", "value", "2", "__x", "a b", "a.b", "in", "***", "a_b", "in_",
         "unnamed", "n2"]
ODD = 'library "std" { ' + "".join(f'''block "{word}" {{ {" ".join(f'pin "{pin}" input;' for pin in WORDS)}
  {" ".join(f'property bool "{name}" {{ default = true }}' for name in WORDS)}
  property string "TEXT" {{ values {{ {", ".join(f'"{value}"' for value in WORDS)} }}, default = "A.b" }}
}} ''' for word in WORDS) + "}"
HEADERS = ["<cerrno>", "<cmath>", "<cstdio>", "<string>"]


def literal(text):
    return '"' + "".join(f"\\{byte:03o}" for byte in text.encode().replace(rb"\xe9", b"\xe9")) + '"'


class Block:
    """What is expected of a block: texts and identifiers of each scope, which are the names or what the head says."""

    def __init__(self, block, renamed):
        def scope(texts, where, name_of=lambda text: text):
            found = {text: renamed.get(escaped(where + name_of(text), "[^ -)+-~]"), name_of(text)) for text in texts}
            assert all(re.fullmatch("[A-Za-z](_?[A-Za-z0-9])*_?", identifier) for identifier in found.values()), found
            assert len(set(found.values())) == len(found), found
            return found
        where = block["name"] + ": "
        bases = [bus["baseName"] for bus in block["buses"]]
        base = {bus["name"]: bus["baseName"] if bases.count(bus["baseName"]) == 1 else bus["name"] for bus in block["buses"]}
        self.name = scope([block["name"]], "")[block["name"]]
        self.pins = scope(base, where, base.get)
        self.properties = scope([item["name"] for item in block["properties"]], where)
        self.values = {self.properties[item["name"]]: scope(item["values"], where + item["name"] + ": ")
                       for item in block["properties"] if item["type"] == "string" and item["values"]}
        self.defaults = {self.properties[item["name"]]: item["default"] for item in block["properties"]
                         if item["default"] is not None and not item["defaultRefusal"]}
        for name, values in self.values.items():
            self.defaults[name] = next(value for value in values if value.lower() == self.defaults[name].lower())


def cpp_asserts(library, blocks):
    def table(scope, kind, names, texts):
        yield f"{scope}::{names}.size() == {len(texts)}"
        for i, (text, identifier) in enumerate(texts.items()):
            yield (f"hdnt_names::textOf({scope}::{kind}::{identifier}) == {literal(text)} && static_cast<int>({scope}::{kind}::{identifier}) == {i}"
                   f" && hdnt_names::enumOf<{scope}::{kind}>({literal(text)}) == {scope}::{kind}::{identifier}")
    yield from table(library, "Block", "blockNames", {name: block.name for name, block in blocks.items()})
    for block in blocks.values():
        scope = f"{library}::{block.name}"
        yield from table(scope, "Pin", "pinNames", block.pins)
        yield from table(scope, "Property", "propertyNames", block.properties)
        for name, texts in block.values.items():
            yield from table(f"{scope}::{name}", "Value", "valueNames", texts)
        for name, value in block.defaults.items():
            found = f"{scope}::{name}::defaultValue"
            if name in block.values:
                yield f"{found} == {scope}::{name}::Value::{block.values[name][value]}"
            else:
                yield f"{found} == " + (literal(value) if isinstance(value, str) else json.dumps(value))
    yield f'!hdnt_names::enumOf<{scope}::Pin>("no pin")'


def check_cpp(files, text, blocks, is_split):
    library = re.search(r"^namespace (hdnt_names::\w+)", text, re.M)[1]
    source = os.path.join(os.path.dirname(files[0]), "main.cpp")
    lines = [f"#include {name}\n" for name in HEADERS + [f'"{name}"' for name in files]]
    conditions = ["true"] if is_split else cpp_asserts(library, blocks)
    written(source, "".join(lines + [f"static_assert({condition});\n" for condition in conditions]))
    for compiler in "g++", "clang++":
        if shutil.which(compiler):
            run(compiler, "-std=c++20", "-Wall", "-Wextra", "-Wpedantic", "-Werror", "-fsyntax-only", source)


def check_python(files, _, blocks, is_split):
    def imported(file):
        specification = importlib.util.spec_from_file_location("exported", file)
        module = importlib.util.module_from_spec(specification)
        specification.loader.exec_module(module)
        return vars(module)

    def shown(value):
        return value.encode().replace(rb"\xe9", b"\xe9").decode(errors="surrogateescape") if isinstance(value, str) else value

    def same(found, texts):
        assert [(item.name, item.value) for item in found] == [(name, shown(text)) for text, name in texts.items()], texts

    found = {name: value for file in files for name, value in imported(file).items()}
    if not is_split:
        same(found["Block"], {name: block.name for name, block in blocks.items()})
    for block in blocks.values():
        names = found[block.name]
        same(names.Pin, block.pins)
        same(names.Property, block.properties)
        for name, texts in block.values.items():
            same(getattr(names, name).Value, texts)
        for name, value in block.defaults.items():
            default = getattr(names, name).default
            default = default.value if name in block.values else default
            assert json.dumps(default) == json.dumps(shown(value)), (block.name, name, default)


def check_code(folder):
    path = written(os.path.join(folder, "words.btl"), ODD)
    extension, mark, check_files = {"c++": ("h", "//", check_cpp), "python": ("py", "#", check_python)}[FORM]
    for number, (options, blocks) in enumerate(models(folder, more=[["-l", path]])):
        if "--arch" in options:
            continue  # nothing new to compilers
        whole, split = os.path.join(folder, f"all{number}.{extension}"), os.path.join(folder, str(number))
        for target in ["-o", whole], ["--split", split]:
            assert not run(NTL, "export", FORM, *target, *options).stderr
        files = sorted(glob.glob(os.path.join(split, "*." + extension)))
        assert len(files) == len(blocks), files
        text = read(whole)
        renamed = dict(re.findall(rf"^{mark}     (.*) is (\w+)$", text, re.M))
        named = {block["name"]: Block(block, renamed) for block in blocks}
        check_files([whole], text, named, False)
        check_files(files, text, named, True)


if __name__ == "__main__":
    check(False, check_code)
