#!/usr/bin/env python3
"""Texts that are large in one way each: 'ntl check' reads them or refuses them by name, in memory that grows as they do.

sizes.py NTL [--size N] [--growth] [--only KIND]...
    N of each thing (20000), or of these kinds; with --growth, also twice as many, and what that costs
"""
import argparse
import gzip
import os
import resource
import subprocess
import sys
import tempfile
import time

BEGIN = 'library "L" { function int f(); block "GATE_WIDE" { pin "A" input; property int "P" { default = 0 } '
MAPPING = BEGIN + '} mapsto { inst "U" "GATE_WIDE"; '
SUM = MAPPING + 'assign block property "U" "P" '


def rows(count, row):
    return "".join(row % i for i in range(count))


# By name: the text, and what is said of a great one; empty: it is read.
TEXTS = {
    "blocks": (lambda n: 'library "L" {\n' + rows(n, 'block "B%d" { pin "A" input; }\n') + "}\n", ""),
    "pins": (lambda n: BEGIN + rows(4 * n, 'pin "P%d" input;\n') + "} }\n", "pin-count"),
    "properties": (lambda n: BEGIN + rows(n, 'property int "Q%d" { default = 1 }\n') + "} }\n", ""),
    "values": (lambda n: BEGIN + 'property string "V" { values { "a"' + rows(n, ', "b%d"') + '}, default = "a" } } }\n', ""),
    "instances": (lambda n: MAPPING + rows(n, 'inst "u%d" "GATE_WIDE";\n') + "} }\n", ""),
    "signals": (lambda n: MAPPING + rows(n, 'signal "s%d" : "A";\n') + "} }\n", ""),
    "assignments": (lambda n: MAPPING + 'assign block property "U" "P" 1;\n' * n + "} }\n", ""),
    "equal instances": (lambda n: MAPPING + 'inst "U" "GATE_WIDE";\n' * n + "} }\n", "duplicate-instance"),
    "unknown blocks": (lambda n: MAPPING + rows(n, 'inst "u%d" "GATE_WIDER";\n') + "} }\n", "unknown-block"),
    "unknown pins": (lambda n: MAPPING + rows(n, 'signal "s%d" : "U" "B";\n') + "} }\n", "unknown-pin"),
    "unknown functions": (lambda n: SUM + "g() + " * n + "1; } }\n", "function-missing"),
    "functions": (lambda n: 'library "L" {\n' + rows(n, "function int f%d();\n") + "}\n", ""),
    "equal pins": (lambda n: BEGIN + 'pin "A" input;\n' * n + "} }\n", "pin-redefined"),
    "equal blocks": (lambda n: 'library "L" {\n' + 'block "B" { pin "A" input; }\n' * n + "}\n", "block-redefined"),
    "groups": (lambda n: 'library "L" {\n' + "".join(f'block "B{i}" {{ primgroup = "G{i}"; pin "A" input; }}\n' for i in range(n)) + "}\n", ""),
    "waived": (lambda n: 'library "L" {\n' + rows(n, "// ntl: allow include-not-found: none\nINCLUDE x%d.btl;\n") + "}\n", ""),
    "waivers": (lambda n: 'library "L" {\n' + "// ntl: allow no-group: none\n" * n + "}\n", "waiver-form"),
    "faults": (lambda n: 'library "L" {\n' + rows(n, 'block "B%d" { pinn "A" input; }\n') + "}\n", "misspelt-word"),
    "foreign characters": (lambda n: 'library "L" {\n' + "$\n" * n + "}\n", "unexpected-token"),
    "open strings": (lambda n: 'library "L" {\n' + '"open\n' * n + "}\n", "unterminated-string|open-string"),
    "pins of a signal": (lambda n: MAPPING + 'signal "s" : "A"' + ', "U" "A"' * n + "; } }\n", ""),
    "terms": (lambda n: SUM + "1 + " * n + "1; } }\n", ""),
    "calls": (lambda n: SUM + "f() + " * n + "1; } }\n", ""),
    "faulty terms": (lambda n: SUM + "1 + " * n + "; } }\n", "missing-token"),
    "parentheses": (lambda n: SUM + "(" * n + "1" + ")" * n + "; } }\n", "parser-depth|nested-too-deep"),
    "minuses": (lambda n: SUM + "- " * n + "1; } }\n", "parser-depth|nested-too-deep"),
    "branches": (lambda n: MAPPING + "if (1 < 2) { " * n + "}" * n + "} }\n", "parser-depth|nested-too-deep"),
    "braces": (lambda n: 'library "L" ' + "{" * n, "syntax-error|unclosed-brace|unexpected-token"),
    "lines": (lambda n: 'library "L" {' + "\n" * 100 * n + "}\n", ""),
    "one line": (lambda n: 'library "L" {' + " " * 100 * n + "}\n", ""),
    "one comment": (lambda n: 'library "L" { /*' + "x" * 100 * n + "*/ }\n", ""),
    "one name": (lambda n: 'library "' + "N" * 100 * n + '" { }\n', ""),
}


def in_child(work):
    """A great text here would count as memory of each process that is begun later."""
    process = os.fork()
    if process == 0:
        work()
        os._exit(0)
    if os.waitpid(process, 0)[1] != 0:
        sys.exit("an input could not be written")


class Folder:
    def __init__(self, folder, tool):
        self.folder = folder
        self.tool = tool

    def write(self, name, data):
        with open(os.path.join(self.folder, name), "wb") as file:
            file.write(data)

    def check(self, name):
        """Status, seconds and megabytes. What is said goes to a file, since it would count as memory, too."""
        begin = time.monotonic()
        with open(os.path.join(self.folder, "said"), "wb") as said:
            process = subprocess.Popen([self.tool, "check", "--no-project", "--format=short", "-I", ".", name],
                                       cwd=self.folder, stdout=said, stderr=subprocess.STDOUT)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        return process.returncode, time.monotonic() - begin, usage.ru_maxrss / 1024

    def says(self, word):
        return subprocess.run(["grep", "-qe", word, "said"], cwd=self.folder, check=False).returncode == 0


def write_includes(folder, files):
    for i in range(files):
        folder.write(f"part{i}", f'block "I{i}" {{ pin "A" input; }}\n'.encode())
    folder.write("input.btl", ('library "L" {\n' + rows(files, "INCLUDE part%d;\n") + "}\n").encode())


def write_nested_includes(folder, files):
    for i in range(files):
        folder.write(f"deep{i}", f"INCLUDE deep{i + 1};\n".encode())
    folder.write("input.btl", b'library "L" {\nINCLUDE deep0;\n}\n')


def write_archive(folder, megabytes):
    with gzip.open(os.path.join(folder.folder, "input.btl"), "wb", 9) as archive:
        for _ in range(megabytes):
            archive.write(b" " * (1 << 20))


# By name: what writes them, and what is said.
FILES = {
    "includes": (lambda folder, n: write_includes(folder, max(n // 10, 300)), ""),
    "includes in each other": (lambda folder, n: write_nested_includes(folder, max(n // 10, 300)), "include-not-opened"),
    "an archive of blanks": (lambda folder, n: write_archive(folder, max(n // 100, 100)), "times its size|bytes"),
    **{name: (lambda folder, n, make=make: folder.write("input.btl", make(n).encode()), wanted)
       for name, (make, wanted) in TEXTS.items()},
}


def judge(folder, name, result, wanted):
    status, seconds, megabytes = result
    words = [word for word in wanted.split("|") if word and folder.says(word)]
    if status not in (0, 1, 2) or bool(wanted) != bool(words):
        return f"{name}: status {status}, and not said: {wanted}"
    print(f"{name:24} {seconds:7.2f} s {megabytes:8.0f} MB  {words[0] if words else 'read'}")
    return None


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("tool")
    parser.add_argument("--size", type=int, default=20000)
    parser.add_argument("--growth", action="store_true")
    parser.add_argument("--only", action="append", choices=FILES, metavar="KIND")
    arguments = parser.parse_args()
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    found = []
    with tempfile.TemporaryDirectory() as path:
        folder = Folder(path, os.path.abspath(arguments.tool))
        costs = {}
        for size in (arguments.size, 2 * arguments.size) if arguments.growth else (arguments.size,):
            print(f"{size} of each:")
            for name in arguments.only or FILES:
                write, wanted = FILES[name]
                in_child(lambda: write(folder, size))
                result = folder.check("input.btl")
                found.append(judge(folder, name, result, wanted))
                before = costs.setdefault(name, result)
                if result[1] > max(3 * before[1], 1) or result[2] > max(3 * before[2], 100):
                    found.append(f"{name}: twice as many cost {result[1]:.1f} s after {before[1]:.1f} s, "
                                 f"{result[2]:.0f} MB after {before[2]:.0f} MB")
    found = [one for one in found if one]
    print("\n".join(found) or "nothing found")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
