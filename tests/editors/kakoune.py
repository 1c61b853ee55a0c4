#!/usr/bin/env python3
"""What Kakoune does with a text. It draws as JSON, into a window that has room for all of it.

kakoune.py colours KAK PACKAGE   writes the colours of the files of $COLOUR_FILES to $COLOUR_OUTPUT, as editor_tokens does
kakoune.py edit KAK PACKAGE      types a text, and looks at its indent and at the command of the errors
"""

import json
import os
import shlex
import subprocess
import sys
import tempfile

FACES = {"comment": "c", "string": "s", "Error": "o", "value": "n", "function": "f", "meta": "p", "keyword": "k",
         "type": "k", "builtin": "k", "attribute": "k", "variable": "k"}
COLOURS = {f"rgb:{number:06x}": letter for number, letter in enumerate(FACES.values(), 1)}
TYPED = 'library "l" {\nblock "B" { // open\npin "A" input;\n}\n\nblock "C" mapsto {\ninst "i" "B";\n}\n}'
INDENTED = 'library "l" {\n  block "B" { // open\n    pin "A" input;\n  }\n\n  block "C" mapsto {\n    inst "i" "B";\n  }\n}\n'


class Kakoune:
    def __init__(self, kak, package, file):
        faces = "; ".join(f"set-face global {face} rgb:{number:06x}" for number, face in enumerate(FACES, 1))
        faces += "; set-face global PrimaryCursor ''; set-face global PrimaryCursorEol ''"
        self.process = subprocess.Popen(
            [kak, "-ui", "json", "-E", f"source {package}/ntl.kak", "-e", faces, file], stdin=subprocess.PIPE,
            stdout=subprocess.PIPE, text=True, encoding="utf-8", errors="surrogateescape",
            env=os.environ | {"KAKOUNE_CONFIG_DIR": "/nowhere"})

    def say(self, method, *parameters):
        message = {"jsonrpc": "2.0", "method": method, "params": parameters}
        self.process.stdin.write(json.dumps(message) + "\n")
        self.process.stdin.flush()

    def drawn(self, lines):
        self.say("resize", lines + 5, 4000)
        for message in map(json.loads, self.process.stdout):
            drawn = message["params"][0] if message["method"] == "draw" else []
            # The first window is a small one.
            if drawn and len(drawn) >= lines and all(line[-1]["contents"].endswith("\n") for line in drawn):
                return drawn
        raise SystemExit("nothing was drawn")

    def end(self):
        self.say("keys", ":kill!<ret>")
        self.process.stdout.read()
        self.process.communicate()


def letters_of(line, drawn):
    """The letters of a line's bytes. One character is drawn for each, but for blank space and what no line holds."""
    cells = ((char, atom["face"]["fg"]) for atom in drawn for char in atom["contents"] if not (char.isspace() or char == "␍"))
    result = ""
    for char in line:
        if char in " \t":
            result += char
            continue
        shown, colour = (char, None) if char in "\ufeff\r" else next(cells)
        if char == "\0":  # whatever cannot be printed is drawn as an error
            colour = None
        elif shown != char and char.isprintable():
            raise SystemExit(f"{line!r} is drawn as {drawn}")
        result += COLOURS.get(colour, ".") * len(char.encode("utf-8", "surrogateescape"))
    return result


def colours(kak, package):
    with open(os.environ["COLOUR_FILES"], encoding="utf-8") as names, open(os.environ["COLOUR_OUTPUT"], "w",
                                                                          encoding="utf-8") as output:
        for name in names.read().splitlines():
            with open(name, encoding="utf-8", errors="surrogateescape", newline="\n") as file:
                lines = file.read().split("\n")
            count = len(lines) - (lines[-1] == "")
            editor = Kakoune(kak, package, name)
            drawn = editor.drawn(count)
            editor.end()
            print("==", name, file=output)
            print("\n".join(letters_of(line, drawn[at] if at < count else []) for at, line in enumerate(lines)), file=output)


def edit(kak, package):
    with tempfile.TemporaryDirectory() as folder:
        file = f"{folder}/it's typed.btl"
        editor = Kakoune(kak, package, file)
        names = {"\n": "<ret>", " ": "<space>", ";": "<semicolon>"}
        editor.say("keys", "i", *(names.get(char, char) for char in TYPED), "<esc>", ":write<ret>")
        editor.say("keys", f":echo<space>-to-file<space>{folder}/make<space>%opt{{makecmd}}<ret>")
        editor.end()
        with open(file, encoding="utf-8") as typed:
            text = typed.read()
        if text != INDENTED:
            raise SystemExit(text)
        with open(f"{folder}/make", encoding="utf-8") as make:
            command = make.read()
        if shlex.split(command)[-1] != file:
            raise SystemExit(command)


if __name__ == "__main__":
    globals()[sys.argv[1]](*sys.argv[2:])
