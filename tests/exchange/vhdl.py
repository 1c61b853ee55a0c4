#!/usr/bin/env python3
"""Holds the components of `ntl export vhdl` against `ntl show`, as GHDL reads and elaborates them."""
import os
import re
import shutil
import sys
import xml.etree.ElementTree

from export import FORM, NTL, check, escaped, expected_parameters, expected_ports, models, read, run, written

MODES = {"input": "in", "output": "out", "inout": "inout"}
KINDS = {"string": "string", "int": "integer", "bool": "boolean", "double": "real"}
ENDS = {"minimum": "low", "maximum": "high"}
SHOWN = {"bit_vector": "to_string({})", "integer": "integer'image({})", "real": 'to_string({}, "%.17g")', "boolean": "boolean'image({})",
         "string": "bytes({})"}
HELPERS = """
package helpers is function bytes(v : string) return string; procedure say(place, v : string); end;
package body helpers is
  function bytes(v : string) return string is begin
    if v'length = 0 then return ""; end if;
    return integer'image(character'pos(v(v'left))) & " " & bytes(v(v'left + 1 to v'right));
  end;
  procedure say(place, v : string) is begin std.textio.write(std.textio.output, place & "=" & v & LF); end;
end;
"""


def named(name):
    return escaped(name, "[^ -~]")


def declared(path):
    """Ports with their modes, and generics, of each component, by the names that GHDL has for them."""
    for node in xml.etree.ElementTree.fromstring(run("ghdl", "--file-to-xml", "--std=93", path).stdout).iter():
        if node.get("kind") == "component_declaration":
            yield (node.get("identifier"), [(item.get("identifier"), item.get("mode")) for item in node.findall("port_chain/el")],
                   [item.get("identifier") for item in node.findall("generic_chain/el")])


def is_name(found, name):
    return found == "\\" + name.replace("\\", "\\\\") + "\\" or found == name.lower()


def vector(facts):
    _, width, low, is_upwards = facts
    return f"({low} to {low + width - 1})" if is_upwards else f"({low + width - 1} downto {low})"


def check_ranges(text, blocks):
    """Numbers have the bounds that their library declares; those of most libraries are far from any default."""
    found = re.findall(r" : (integer|real) range (\S+) to (\S+) :=", text)
    wanted = [tuple(item[bound] if item["has" + bound.title()] else f"{KINDS[item['type']]}'{end}" for bound, end in ENDS.items())
              for block in blocks for item in block["properties"]
              if item["type"] in ("int", "double") and (item["hasMinimum"] or item["hasMaximum"]) and item["default"] is not None
              and not (item["defaultRefusal"] or item["isHidden"] or item["isReadOnly"])]
    numbers = [tuple(end if "'" in end else float(end) for end in ends) for _, *ends in found]
    assert numbers == wanted, (numbers, wanted)


def bench_of(index, component, block):
    """An entity that says what it was given, an instance of the component, and what should be said."""
    name, ports, generics = component
    wanted_ports = expected_ports(block, named)
    parameters = expected_parameters(block, wanted_ports, named)
    assert [mode for _, mode in ports] == [MODES[facts[0]] for facts in wanted_ports.values()], (name, ports, wanted_ports)
    assert all(map(is_name, [port for port, _ in ports], wanted_ports)), (ports, wanted_ports)
    assert len(generics) == len(parameters) and all(map(is_name, generics, parameters)), (name, generics, parameters)
    types = {named(item["name"]): "bit_vector" if item["bitWidth"] else KINDS[item["type"]] for item in block["properties"]}
    single = {named(bus["baseName"]) for bus in block["buses"] if not bus["range"]}
    lists, signals, said, expected = {"generic": [], "port": []}, "", "", {}
    for i, (generic, (parameter, value)) in enumerate(zip(generics, parameters.items())):
        kind = types[parameter]
        lists["generic"].append(f"{generic} : {kind}")
        said += f'say("{index}.g{i}", {SHOWN[kind].format(generic)});'
        if kind == "string":
            value = "".join(f"{byte} " for byte in value.encode().replace(rb"\xe9", b"\xe9"))
        elif kind != "bit_vector":
            value = {"real": lambda: "%.17g" % value, "boolean": lambda: str(value == "1").lower(),
                     "integer": lambda: str(int(value, 2) - (int(value[0]) << 32))}[kind]()
        expected[f"{index}.g{i}"] = value
    for i, ((port, mode), (wanted, facts)) in enumerate(zip(ports, wanted_ports.items())):
        lists["port"].append(f"{port} : {mode} std_logic" + ("" if wanted in single else "_vector"))
        signals += f"signal s{index}_{i} : std_logic" + ("" if wanted in single else "_vector" + vector(facts)) + ";\n"
        if wanted not in single:
            said += f'say("{index}.p{i}", integer\'image({port}\'left) & " " & boolean\'image({port}\'ascending));'
            expected[f"{index}.p{i}"] = re.match(r"\((\d+) ", vector(facts))[1] + " " + str(facts[3]).lower()
    clauses = "".join(f"{word} ({'; '.join(items)});\n" for word, items in lists.items() if items)
    entity = (f"library ieee; use ieee.std_logic_1164.all; use work.helpers.all;\nentity {name} is\n{clauses}end;\n"
              f"architecture a of {name} is begin process begin {said} wait; end process; end;\n")
    actuals = f" port map ({', '.join(f's{index}_{i}' for i in range(len(ports)))})" if ports else ""
    return entity, signals, f"u{index} : {name}{actuals};\n", expected


def check_vhdl(folder):
    for number, (options, blocks) in enumerate(models(folder)):
        work = os.path.join(folder, str(number))
        path, bench = os.path.join(work, "all.vhd"), os.path.join(work, "bench.vhd")
        os.mkdir(work)
        left_out = run(NTL, "export", "vhdl", "-o", path, *options, check=False).stderr.decode()
        for standard in "93", "02", "08":
            said = run("ghdl", "-a", "--std=" + standard, "--workdir=" + work, path)
            assert not said.stdout + said.stderr, said.stderr.decode()
        names = {named(block["name"]): block for block in reversed(blocks)}
        pairs = [(component, next(block for name, block in names.items() if is_name(component[0], name))) for component in declared(path)]
        assert len({id(block) for _, block in pairs}) == len(pairs) == len(names), (len(pairs), len(names))
        text = read(path)
        check_ranges(text, blocks)
        package = re.search(r"^package (.*) is$", text, re.M)[1]
        entities, signals, instances, expected = zip(*(bench_of(index, *pair) for index, pair in enumerate(pairs)))
        written(bench, HELPERS + "".join(entities) + "library ieee; use ieee.std_logic_1164.all;\nentity top is end;\n"
                f"use work.{package}.all;\narchitecture a of top is\n{''.join(signals)}begin\n{''.join(instances)}end;\n")
        run("ghdl", "-a", "--std=08", "--workdir=" + work, bench)
        said = run("ghdl", "--elab-run", "--std=08", "--workdir=" + work, "top", "--assert-level=warning", check=False)
        assert said.returncode == 0 and not said.stderr, said.stderr.decode()
        values = dict(line.split("=", 1) for line in said.stdout.decode().splitlines())
        wanted = {place: value for each in expected for place, value in each.items()}
        assert values == wanted, [(place, values.get(place), value) for place, value in wanted.items() if values.get(place) != value]
        if "-l" in options:
            assert "ntl: plain: up: up is the name of another port or parameter\n" in left_out, left_out


if __name__ == "__main__":
    check(not shutil.which("ghdl"), check_vhdl)
