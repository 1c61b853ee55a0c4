#!/usr/bin/env python3
"""Holds the modules of `ntl export verilog-map` against what expansions make of the same blocks: yosys maps a design with
a cell for each setting that lint would try.

    verilog_map.py NTL SETTINGS
"""
import json
import os
import re
import shutil
import subprocess

import export
from export import NTL, escaped, read, written

SETTINGS = export.FORM

DECLARED = """
  function int intProperty(string); function double doubleProperty(string); function bool boolProperty(string);
  function string stringProperty(string); function bool isConnected(string); function int hostsOwn(int);
  function bool note(string);
  block "GATE" {
    pin "I[3:0]" input; pin "U[0:2]" input; pin "E" input; pin "O" output; pin "Q[1:0]" output; pin "B" bidir;
    property int "N" { min = -9, max = 9, default = 0 } property int "ANY" { default = 0 }
    property 97'h "W" { default = 97'h0 } property 4'b "F" { default = 4'b0 } property string "S" { default = "" }
    property double "D" { default = 0.0 } property double "G" { default = 0.0 } property bool "T" { default = false }
  }
  block "PULL" {
    pin "B" bidir; pin "U" input; property string "S" { default = "" }
    property 8'b "F" { default = 8'b0 } property int "FEW" { min = 0, max = 3, default = 0 }
  }
"""
OWN = """
    pin "A" input; pin "C[3:0]" input; pin "X[0:2]" input; pin "Z" input;
    pin "Y" output; pin "V[1:0]" output; pin "P" bidir;
    property int "K" { min = -5, max = 5, default = 2 } property int "L" { default = 0 }
    property double "R" { min = -2.0, max = 2.0, default = 0.5 }
    property bool "M" { default = false } property bool "H" { default = true }
    property string "S" { values { "one", "three", "" }, default = "one" } property string "FREE" { default = "x y" }
    property string "NOTE" { default = "" } pin "INSIDE" internal;
    property 97'h "W" { default = 97'h1FFFFFFFF0123456789ABCDEF }
    property 4'b "F" { values { 4'b0001, 4'b1000 }, default = 4'b0001 }"""
ODD = """
  block "ODD VALUES" {%(own)s
  } mapsto {
    inst "g" "GATE"; signal "y" : "g" "O", "Y"; signal "@1"; signal "a" : "A";
    if (stringProperty("S") == "one") {
      assign block property "g" "S" "LOW"; assign block property "g" "N" 1;
    } else if (stringProperty("S") != "") assign block property "g" "S" "HIGHER \\ ` %%";
    else { connect "a" : "g" "E"; }
    if (boolProperty("M") && boolProperty("H") == false || boolProperty("M") > boolProperty("H")) {
      assign block property "g" "n" -intProperty("K") * 2 %% 3; connect "a" : "g" "~I[2]";
    } else connect "@1" : "g" "~I[2]";
    assign block property "g" "W" stringProperty("W"); assign block property "g" "F" stringProperty("F");
    if (stringProperty("F") == "4'b1000") assign block property "g" "F" "4'b0110";
    assign block property "g" "T" intProperty("K") < 0 == boolProperty("H");
    assign block property "g" "ANY" intProperty("L") * 65536 * 65536 + 2147483647 + 1;
  }
  block "ODD_REALS" {%(own)s
  } expandsto {
    inst "module" "GATE"; signal "endmodule" : "module" "~O", "~Y";
    if (doubleProperty("R") / 0.25 - 1.5 * -doubleProperty("R") >= 2.75)
      assign block property "module" "D" 10.0 / 8.0;
    else if (doubleProperty("R") != 0.0 && doubleProperty("R") < 0.0 == false)
      assign block property "module" "D" -0.125;
    assign block property "module" "G" 0.1;
    if (boolProperty("M")) assign block property "module" "G" doubleProperty("R");
    if (intProperty("K")) { signal "k" : "A", "module" "E"; } else { signal "k" : "Z", "module" "E"; }
  }
  block "ODD_FAILS" {%(own)s
  } mapsto {
    inst "then_1" "GATE"; assign block property "then_1" "N" intProperty("K") * 3;
    if (intProperty("K") != 2) { if (7 / (intProperty("K") - 1) > 2) { inst "if_1" "GATE"; } }
    if (boolProperty("M")) { signal "s" : "if_1" "O", "Y"; }
  }
  block "ODD_WIRES" {%(own)s
  } mapsto {
    inst "a" "GATE"; inst "a_E" "GATE"; signal "bus[3:0]"; signal "l[0]"; signal "z";
    signal "A" : "~A", "a" "U[1]", "a" "U[0]", "a_E" "~U[0]", "V[0]"; signal "K" : "C[3]", "a" "I";
    connect "bus[3]" : "X[0]", "a_E" "E", "~V[1]"; connect "bus[2]" : "C[0]", "a_E" "I[3]";
    connect "bus[1]" : "a_E" "Q[0]"; connect "bus[0]" : "X[2]", "a_E" "I[1]";
    signal "@0" : "a" "B", "a_E" "~I[2]"; signal "p" : "P", "a_E" "B"; connect "l[0]" : "a" "Q[1]", "a_E" "I[0]";
    if (isConnected("Z")) connect "z" : "Z", "a" "E", "Y"; else { connect "l[0]" : "a" "~E", "Y"; }
    if (boolProperty("M")) {
      if (boolProperty("H")) connect "K" : "a_E" "U[2]";
      connect "K" : "a_E" "U[2]"; if (intProperty("K") %% 3 == 1) connect "K" : "a_E" "U[2]";
    }
  }
  block "ODD_PAIRS" {%(own)s
  } mapsto {
    inst "g" "GATE"; inst "p" "PULL"; signal "a" : "A"; signal "z[01]" : "Z"; signal "x[-1]" : "X[0]", "g" "U";
    if ("one" == stringProperty("S")) { connect "z[01]" : "g" "E"; connect "a" : "p" "U"; }
    if (stringProperty("W") == stringProperty("W") && stringProperty("NOTE") == stringProperty("FREE"))
      connect "a" : "p" "U";
    assign block property "g" "N" intProperty("K"); assign block property "p" "FEW" intProperty("K");
    assign block property "g" "ANY" -2147483647 - 1; assign block property "g" "W" "1F";
    connect "@1" : "P"; connect "@0" : "V"; connect "@1" : "g" "I[2]"; connect "@1" : "g" "I[3]";
    if (boolProperty("M")) assign block property "g" "S" stringProperty("NOTE"); else connect "@0" : "g" "B";
  }
  block "ODD_TWINS" {%(own)s
  } retargetsto {
    signal "y" : "Y"; signal "p" : "P"; signal "e" : "A";
    if (intProperty("K") > 0) { inst "g" "GATE"; connect "y" : "g" "O"; connect "e" : "g" "E"; }
    else { if (boolProperty("M")) { inst "g" "PULL"; connect "p" : "g" "B"; } }
    if (intProperty("K") > 0 && boolProperty("H")) { signal "n" : "Z", "g" "U"; }
    if (intProperty("K") > 3) assign block property "g" "S" stringProperty("FREE");
  }
  block "ODD_STAYS" {%(own)s
  } modifiedby {
    signal "p" : "P"; signal "y"; signal "z"; signal "v[1:0]"; connect "v[1]" : "V[1]";
    if (isConnected("Z") == false) {
      inst "loop" "GATE"; connect "y" : "Y", "loop" "E"; connect "z" : "loop" "O", "Z"; connect "v[1]" : "loop" "I[0]";
    }
    if (boolProperty("M")) {
      inst "pull" "PULL"; connect "p" : "pull" "B"; assign block property "pull" "S" stringProperty("S");
    }
  }
""" % {"own": OWN}
NAMES = ["module", "1//2", "a$b", "(* keep *)", "x\\\\", "if_1", "dot.dot"]
REFUSED = {
    'inst "g" "GATE"; if (hostsOwn(1) == 1) { }': "calls hostsOwn(), which only the host can answer",
    'note("x"); inst "g" "GATE";': "calls note(), which only the host can do",
    'inst "g" "GATE"; assign pin property "g" "E", "LOAD" 1;': "LOAD: cells have no properties of pins",
    'inst "g" "GATE"; signal "s" : "g" "O", "A";': "pin O drives signal s, which is driven already",
    'signal "s" : "A"; signal "t" : "Z"; connect "s" : "Y"; connect "t" : "Y";': "pin Y is connected to two signals",
    'inst "g" "GATE"; if (boolProperty("M")) { signal "s" : "g" "B", "P"; }':
        "bidirectional pin B of g goes to a signal by a condition of its own, or inverted",
    'inst "g" "GATE"; assign block property "g" "N" 10;': "N: 10 is above 9; allowed are -9 to 9",
    'inst "g" "GATE"; assign block property "g" "D" 0.0000001;': "D: 0.0000001 has more digits than readers keep",
    'inst "g" "GATE"; assign block property "g" "D" doubleProperty("R") / 3.0;':
        "D: a computed real value, which may have more digits than readers keep",
    'inst "g" "GATE"; assign block property "g" "S" stringProperty("W");': "S: gets W, which is of another type",
    'if (stringProperty("W") == "97\'h1ffffffff0123456789abcdef") { }':
        "W: 97'h1ffffffff0123456789abcdef is also written 97'h1FFFFFFFF0123456789ABCDEF",
    'if (stringProperty("S")) { }': "a text as a condition",
    'if (isConnected("C[1]")) { }': "asks whether a part of C is connected",
    'inst "g" "REFUSED_13"; ': "closes a circle of mappings, which techmap never leaves",
    'inst "_TECHMAP_REPLACE_" "GATE";': "_TECHMAP_REPLACE_: techmap has such names for itself",
    'if (intProperty("K") / 0 == 1) { }': "Divide by zero",
    'if (intProperty("K") == 1' + " + 1" * 500 + ") { }": "an expression of more than 1000 parts",
    'if (boolProperty("M")) ' * 101 + 'inst "g" "GATE";': "more than 100 branches in each other",
    'inst "g" "GATE"; ' + "".join(f'if (intProperty("K") == {i}) assign block property "g" "S" "{i}";' for i in range(7)):
        "g: texts, or what is there of it, depend on more than 6 conditions",
    'inst "g" "GATE"; assign block property "g" "N" boolProperty("M");': "N: a value of another type",
    'inst "g" "GATE"; assign block property "g" "W" "97\'b1";': "W: 97'b1 is of another radix",
    'inst "g" "GATE"; assign block property "g" "NONE" 1;': "Block GATE has no property NONE",
    'inst "p" "PULL"; assign block property "p" "F" stringProperty("F");': "F: gets F, which is of another type",
    'if (stringProperty("W") == stringProperty("F")) { }': "compares vectors of two types",
    'if (stringProperty("F") == "4\'b11111") { }':
        "F: 4'b11111 is wider than 4 bits; write one of 4'b0001, 4'b1000",
    'if (intProperty("M")) { }': "intProperty: property M is of another type",
    'if (intProperty("NONE")) { }': "Block {} has no property NONE",
    'if (intProperty(stringProperty("S"))) { }': "calls intProperty(), which only the host can answer",
    'if (isConnected("NONE")) { }': "Block {} has no pin NONE",
    'signal "s" : "A", "INSIDE";': "Block {}, pin INSIDE: no port",
    'connect "none" : "A";': "there is no signal none",
    'if (boolProperty("M")) { signal "s"; } connect "s" : "A", "Y";': "there is no signal s",
    'signal "s" : "A"; if (boolProperty("M")) connect "s" : "P";':
        "bidirectional pin P goes to a signal by a condition of its own, or inverted",
    'inst "g" "GATE"; signal "s" : "A", "g" "U[1]"; signal "t" : "Z", "g" "U[1]";':
        "pin U[1] is connected to two signals",
    'inst "g" "GATE"; signal "s" : "g" "~O", "g" "Q[0]", "Y";': "pin Q[0] drives signal s, which is driven already",
    'inst "g" "NONE";': "there is no block NONE",
    'inst "g" "GATE"; if (boolProperty("M")) inst "g" "PULL";': "there are two instances g",
    'assign block property "none" "N" 1;': "there is no instance none",
    'signal "s" : "A", "none" "E";': "there is no instance none",
    'modifiedby signal "s" : "A", "Y";': "signal s does more than go on from one pin of the block that stays",
    'modifiedby inst "g" "GATE"; signal "s" : "g" "E"; if (boolProperty("M")) connect "s" : "A";':
        "signal s does more than go on from one pin of the block that stays",
}
# Blocks that are refused for what they declare.
REFUSED_BLOCKS = {
    "$odd": ('pin "A" input;', "$odd: techmap has blocks of such names for itself"),
    "PORTS": (r'pin "A B" input; pin "A\x20B" input;', r"PORTS has two ports \A\x20B "),
    "SHARED": ('pin "A" input; property int "A" { default = 1 }',
               "asks for A, which has no default, or the name of a port"),
    r"ODD\x20VALUES": (OWN, r"\ODD\x20VALUES  is the name of another module"),
}


def library():
    bodies = {name: f'inst "g" "GATE"; signal "{name}" : "A", "g" "E"; inst "{name}" "PULL";' for name in NAMES}
    bodies.update((f"REFUSED_{number}", body) for number, body in enumerate(REFUSED))
    blocks = [(name, OWN, body) for name, body in bodies.items()]
    blocks += [(name, own, 'if (intProperty("A")) { }') for name, (own, _) in REFUSED_BLOCKS.items()]
    return 'library "odd" {' + DECLARED + ODD + "".join(block_text(*block) for block in blocks) + "}\n"


def block_text(name, own, body):
    section = "modifiedby" if body.startswith("modifiedby ") else "mapsto"
    return f'block "{name}" {{ {own} }} {section} {{ {body.removeprefix("modifiedby ")} }}\n'


def refusals():
    own = {f"REFUSED_{number}": reason for number, reason in enumerate(REFUSED.values())}
    own = {name: reason.format(name) for name, reason in own.items()}
    return {**own, **{name: reason for name, (_, reason) in REFUSED_BLOCKS.items()}}


def run(*words, check=True):
    return subprocess.run(words, check=check, capture_output=True, text=True)


class Groups:
    """What is connected, and whether by way of an inverter."""

    def __init__(self):
        self.parents = {}

    def find(self, node):
        parent, parity = self.parents.get(node, (node, 0))
        if parent == node:
            return node, 0
        root, rest = self.find(parent)
        return root, parity ^ rest

    def join(self, a, b, inverted):
        (one, parity), (other, rest) = self.find(a), self.find(b)
        if one == other:
            assert parity ^ rest == inverted, ("both ways", a, b)
        self.parents[one] = (other, parity ^ rest ^ inverted)

    def classes(self, nodes):
        """Each group of several of the nodes, which go by names."""
        groups = {}
        for name, node in sorted(nodes.items()):
            root, parity = self.find(node)
            groups.setdefault(root, []).append((name, parity))
        sides = [frozenset((name, parity ^ group[0][1]) for name, parity in group) for group in groups.values()]
        return {side for side in sides if len(side) > 1}


def ports_of(block):
    """Of each port, the direction and its bits from the lowest place on; -1 is one without index."""
    ports = {}
    for bus in block["buses"]:
        if bus["direction"] != "internal" and not bus["isAbstract"]:
            ports.setdefault(bus["baseName"], [bus["direction"], []])[1].extend(bus["range"] or [-1])
    for port in ports.values():
        bits = range(min(port[1]), max(port[1]) + 1)
        port[1] = bits[::-1] if port[1][:2] == sorted(set(port[1][:2])) and len(port[1]) > 1 else bits
    return ports


def literal(value):
    if value["width"]:
        return f"{value['width']}'{'h' if value['type'] == 'bithex' else 'b'}{value['value']}"
    if isinstance(value["value"], str):
        return '"' + "".join(f"\\{byte:03o}" for byte in value["value"].encode()) + '"'
    return str(int(value["value"])) if value["type"] in ("int", "bool") else repr(value["value"])


def parameter(value):
    """As yosys has it."""
    if value["width"]:
        return f"{int(value['value'], 16 if value['type'] == 'bithex' else 2):0{value['width']}b}"
    if isinstance(value["value"], str):
        return value["value"]
    bits = {"int": 32, "bool": 1}.get(value["type"])
    return f"{int(value['value']) & (1 << bits) - 1:0{bits}b}" if bits else f"{value['value']:f}"


def cell_text(name, number, setting, ports):
    parameters = ", ".join(f".\\{escaped(key)} ({literal(value)})" for key, value in setting["set"].items())
    wires = {port: "" if port in setting["open"] else f"\\w{number}.{escaped(port)} " for port in ports}
    text = "".join(f"wire [{len(ports[port][1]) - 1}:0] {wire};\n" for port, wire in wires.items() if wire)
    connections = ", ".join(f".\\{escaped(port)} ({wire})" for port, wire in wires.items())
    return text + f"\\{escaped(name)} #({parameters}) u{number} ({connections});\n"


class Mapped:
    """A cell of the design, after it was mapped."""

    def __init__(self, design, number, blocks, block, setting):
        self.design, self.number, self.blocks, self.setting = design, number, blocks, setting
        self.block = blocks[block]
        self.cells = {name: cell for name, cell in design["cells"].items()
                      if name.startswith(f"u{number}.") and not cell["type"].startswith("$")}
        self.kept = self.cells.pop(f"u{number}._KEPT_", None)
        self.nodes, self.driven = {}, set()

    def cell(self, name, expected):
        found = [key for key, cell in self.cells.items()
                 if key.endswith("." + escaped(name)) and cell["type"] == escaped(expected["type"])]
        assert len(found) == 1, (name, list(self.cells))
        cell = self.cells.pop(found[0])
        parameters = {escaped(key): parameter(value) for key, value in expected["parameters"].items()}
        # A blank ends texts that would look like bits.
        same = {key: value if value.strip("01xz ") else value.rstrip() for key, value in cell["parameters"].items()}
        assert same == parameters, (name, cell["parameters"], parameters)
        return cell

    def add(self, instance, block, connections):
        """The bits of the ports that are connected."""
        for port, (direction, bits) in ports_of(block).items():
            for bit, net in zip(bits, connections.get(escaped(port), ())):
                self.nodes[instance, port, bit] = net
                if direction == ("output" if instance else "input") and (instance or not self.kept):
                    self.driven.add(net)

    def check(self):
        if self.setting["hasProblems"] or not self.setting["cells"] and self.setting["keeps"]:
            assert f"u{self.number}" in self.design["cells"] and not self.cells, "is mapped"
            return
        assert f"u{self.number}" not in self.design["cells"], "is not mapped"
        assert bool(self.kept) == self.setting["keeps"]
        outside = {port: self.design["netnames"][f"w{self.number}.{escaped(port)}"]["bits"]
                   for port in ports_of(self.block) if port not in self.setting["open"]}
        inside = dict(self.kept["connections"]) if self.kept else {}
        assert all(inside[escaped(port)] == bits for port, bits in outside.items() if self.kept), "another pin stays"
        self.add("", self.block, inside or {escaped(port): bits for port, bits in outside.items()})
        for name, expected in self.setting["cells"].items():
            connections = self.cell(name, expected)["connections"]
            self.add(name, self.blocks[expected["type"]], connections)
            wanted = {escaped(pin[2]) for pin in self.setting["pins"] if pin[1] == name}
            assert set(connections) == wanted, (name, connections, wanted)
        assert not self.cells, ("more cells", list(self.cells))
        assert {tuple(pin[1:4]) for pin in self.setting["pins"] if pin[1]} <= set(self.nodes), "a pin is open"
        self.check_connections()

    def check_connections(self):
        expected, found = Groups(), Groups()
        for groups, zero, one in (expected, "@0", "@1"), (found, "0", "1"):
            groups.join(zero, one, 1)
        for signal, instance, port, bit, inverted in self.setting["pins"]:
            expected.join(("pin", instance, port, bit), signal, int(inverted))
        inverters = [cell["connections"] for name, cell in self.design["cells"].items()
                     if cell["type"] == "$not" and name.startswith(f"$techmap\\u{self.number}.")]
        for inverter in inverters:
            assert not self.driven & set(inverter["Y"]), "an inverter against a driver"
            for a, y in zip(inverter["A"], inverter["Y"]):
                found.join(a, y, 1)
        wanted = expected.classes({**{name: ("pin", *name) for name in self.nodes}, ("@", "0", 0): "@0"})
        actual = found.classes({**self.nodes, ("@", "0", 0): "0"})
        assert wanted == actual, (wanted - actual, actual - wanted)


def check(folder, options, architecture, path):
    """The number of blocks, and why others were refused."""
    settings = json.loads(run(SETTINGS, architecture, *path).stdout)
    exported = run(NTL, "export", "verilog-map", *options, "-o", os.path.join(folder, "map.v"), check=False)
    refused = dict(line[len("ntl: "):].split(": ", 1) for line in exported.stderr.splitlines())
    assert exported.returncode == bool(refused), exported.stderr
    cases = [(name, setting) for name in settings if name not in refused for setting in settings[name]]
    types = {cell["type"] for _, setting in cases for cell in setting["cells"].values()} | {name for name, _ in cases}
    shown = json.loads(run(NTL, "show", "--json", *options, *sorted(types)).stdout)["blocks"]
    blocks = {block["name"]: block for block in shown}
    texts = [cell_text(name, i, setting, ports_of(blocks[name])) for i, (name, setting) in enumerate(cases)]
    written(os.path.join(folder, "top.v"), "module top;\n" + "".join(texts) + "endmodule\n")
    run(NTL, "export", "verilog", "-o", os.path.join(folder, "cells.v"), *options, check=False)
    # The last step ends, whatever a cell becomes in turn.
    script = ("read_verilog -lib cells.v; read_verilog top.v; techmap -max_iter 1 -map map.v; write_json all.json; "
              "techmap -map map.v")
    said = subprocess.run(["yosys", "-q", "-p", script], cwd=folder, check=False, capture_output=True, text=True)
    assert said.returncode == 0, said.stderr[-500:]
    design = json.loads(read(os.path.join(folder, "all.json")))["modules"]["top"]
    for number, (name, setting) in enumerate(cases):
        try:
            Mapped(design, number, blocks, name, setting).check()
        except AssertionError as error:
            raise AssertionError(options, name, setting["set"], setting["open"]) from error
    return len(settings), refused


def check_all(temporary):
    for line in ("meadow", "harbor", "copper"):
        count, left_out = check(temporary, ["--arch", line], line, [])
        reasons = re.compile("only the host can|no properties of pins")
        assert count > 50 and all(reasons.search(reason) for reason in left_out.values()), left_out
    odd = written(os.path.join(temporary, "odd.btl"), library())
    count, left_out = check(temporary, ["-l", odd], "", [odd])
    assert left_out == refusals(), set(left_out.items()) ^ set(refusals().items())


if __name__ == "__main__":
    export.check(not shutil.which("yosys"), check_all)
