#!/usr/bin/env python3
"""Holds the cells of `ntl export liberty` against `ntl show`, as yosys and a strict reader of the grammar take them."""
import json
import os
import re
import shutil

from export import NTL, check, expected_ports, models, read, run, with_plain_names, written

TOKEN = re.compile(r'\s*(?:/\*.*?\*/\s*)*(?:"([ !#-\[\]-~]*)"|([A-Za-z_][\w.]*|-?\d+(?:\.\d+)?)|([(){}:;,]))', re.S)
FUNCTIONS = {"A B": lambda a, b: a & b, "!(A+B)'^A": lambda a, b: (a | b) ^ a, "0 | B'": lambda a, b: 1 - b, "A": lambda a, b: a}
NO_FUNCTIONS = ["pad", "A +", "(A", "A)", "A*MISSING", "A * Q", "D * A", "A \\\" B", "2 + A"]


def groups(text):
    """What the text has in its groups: (kind, name, attributes, groups). Anything that the grammar has not is an error."""
    at, tokens = 0, []
    while text[at:].strip():
        found = TOKEN.match(text, at)
        assert found, text[at:at + 80]
        tokens.append(found[3] or (found[1] if found[2] is None else found[2],))
        at = found.end()

    def take(wanted=None):
        token = tokens.pop(0)
        assert token == wanted if wanted else isinstance(token, tuple), (token, wanted, tokens[:5])
        return token[0]

    def group():
        kind, _, name, _, _ = take(), take("("), take(), take(")"), take("{")
        attributes, inside = {}, []
        while tokens[0] != "}":
            if tokens[1] == ":":
                word, _, value, _ = take(), take(":"), take(), take(";")
                assert word not in attributes, word
                attributes[word] = value
            else:
                inside.append(group())
        take("}")
        assert len({(kind, name) for kind, name, *_ in inside}) == len(inside), name
        return kind, name, attributes, inside
    whole = group()
    assert not tokens, tokens[:5]
    return whole


def named(name):
    data = name.replace(r"\xe9", "\udce9").encode(errors="surrogateescape")
    return re.sub(rb"[^!-~]|[`*\"\\\[\]]|^\$", lambda found: b"_x%02x_" % ord(found[0]), data).decode() or "unnamed"


def check_blocks(path, netlist, blocks):
    with open(path, encoding="ascii") as file:
        library = groups(file.read())
    types = {name: attributes for kind, name, attributes, _ in library[3] if kind == "type"}
    cells = {name: inside for kind, name, _, inside in library[3] if kind == "cell"}
    wanted = {named(block["name"]): block for block in reversed(blocks)}
    assert set(cells) == set(wanted), set(cells) ^ set(wanted)
    run("yosys", "-q", "-p", f"read_liberty -lib {path}; write_json {netlist}")
    with open(netlist, encoding="ascii") as file:
        modules = json.load(file, object_pairs_hook=with_plain_names)["modules"]
    for name, inside in cells.items():
        found = {}
        for kind, pin, facts, _ in inside:
            bits = types[facts["bus_type"]] if kind == "bus" else {"bit_width": 1, "bit_from": 0, "bit_to": 0}
            low, high = int(bits["bit_from"]), int(bits["bit_to"])
            assert kind == "pin" or (bits["downto"] == "true") == (low >= high), bits
            found[pin] = (facts["direction"], int(bits["bit_width"]), min(low, high), low < high)
        expected = expected_ports(wanted[name], named)
        assert found == expected and list(found) == list(expected), (name, found, expected)
        clocks = {named(bus["baseName"]) for bus in wanted[name]["buses"] if bus["type"] == "clock"}
        assert {pin for _, pin, facts, _ in inside if "clock" in facts} == clocks & set(expected), name
        read = {pin: (facts["direction"], len(facts["bits"]), bool(facts.get("upto"))) for pin, facts in modules[name]["ports"].items()}
        assert read == {pin: (way, width, upwards) for pin, (way, width, _, upwards) in expected.items()}, (name, read)


def check_functions(folder):
    path = os.path.join(folder, "gates")
    blocks, cells = "", ""
    for block, texts, more in (("YES", FUNCTIONS, ""), ("NO", NO_FUNCTIONS, 'pin "D[1:0]" input; pin "Q[1:0]" output; ')):
        pins = "".join(f'pin "O{i}" output; ' for i in range(len(texts)))
        blocks += f'block "{block}" {{ pin "A" input; pin "B" input; {pins}{more}}} '
        functions = "".join(f'O{i} = "{text}"; ' for i, text in enumerate(texts))
        cells += f'{block} = {{ pinFunctions = {{ {functions}A = "!B"; Q = "!A"; }}; }}; '
    written(path + ".btl", f'library "gates" {{ {blocks}}}')
    written(os.path.join(folder, "HDNTApplicationData.cfg"), f"CELLS = {{ {cells}}};")
    command = [NTL, "--data", folder, "export", "liberty", "-l", path + ".btl", "-o", path + ".lib"]
    done = run(*command, check=False)
    refused = [f"NO: O{i}" for i, text in enumerate(NO_FUNCTIONS) if set(text) & set("+*()")] + ["NO: Q"]
    assert re.findall(r"^ntl: (.*?): no function of single pins", done.stderr.decode(), re.M) == refused, done.stderr
    cells = groups(read(path + ".lib"))[3][-2:]
    yes, no = ([facts["function"] for *_, facts, _ in inside if "function" in facts] for *_, inside in cells)
    assert yes == list(FUNCTIONS) and not no, (yes, no)
    run(*command, "YES")
    shows = " ".join(f"-show O{i}" for i in range(len(FUNCTIONS)))
    inputs = [(a, b) for a in (0, 1) for b in (0, 1)]
    evaluations = "; ".join(f"eval -set A {a} -set B {b} {shows} YES" for a, b in inputs)
    said = run("yosys", "-p", f"read_liberty {path}.lib; {evaluations}").stdout.decode()
    values = [int(value) for value in re.findall(r"Eval result: .* = 1'(.)\.", said)]
    assert values == [function(a, b) for a, b in inputs for function in FUNCTIONS.values()], said


def check_liberty(folder):
    for options, blocks in models(folder):
        path = os.path.join(folder, "all.lib")
        run(NTL, "export", "liberty", "-o", path, *options, check=False)
        check_blocks(path, os.path.join(folder, "all.json"), blocks)
    check_functions(folder)


if __name__ == "__main__":
    check(not shutil.which("yosys"), check_liberty)
