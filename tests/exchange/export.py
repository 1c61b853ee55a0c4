#!/usr/bin/env python3
"""Holds what `ntl export` writes against `ntl show`, as other programs read it.

    export.py NTL csv|json|verilog [SOURCES]
"""
import csv
import functools
import glob
import importlib.util
import json
import operator
import os
import re
import shutil
import subprocess
import sys
import tempfile

NTL, FORM, *SOURCES = sys.argv[1:]

# \xe9 is no UTF-8.
NAMES = [b"module", b"a b", b"a\\x20b", b"caf\xe9", b"\xc3\xa4", b"1//2", b"/*x*/", b"`include", b"$and", b"a,b;(c)", b"%d%m",
         b"x\\", b"plain", b"Logic", b"\\up", b"endmodule ", b"(* keep *)", b"dot.dot", b"=1+1"]
HOSTILE = b'library "odd, too" {\n' + b"".join(b"""  block "%(name)s" {
    primgroup = "%(name)s:b,c";
    pin "%(pin)s" input clock mustConnect; pin "up[0:7]" bidir; pin "one[0:0]" output; pin "high[65:60]" input tieLow;
    pin "sparse[7]" input tieLow; pin "sparse[3:1]" input tieHigh; pin "wide[299:0]" output; pin "ana" bidir abstract;
    pin "both[0]" input; pin "both[1]" output; pin "twin" input; pin "twin[1]" input; pin "in" internal;
    property string "text" { default = "\\ ` %% // /* \xc3\xa4 \xe9 , ; %(name)s" }
    property string "listed" { values { "%(name)s", "b", "" }, default = "B" }
    property string "" { default = "" }
    property int "low" { min = -2147483648, max = 5, default = -2147483648 }
    property double "tenth" { min = -1.5, max = 100000000000000000000000.0, default = 0.1 }
    property double "huge" { default = 123456789012345678901234567890.0 }
    property 97'h "bits" { default = 97'h1FFFFFFFF0123456789ABCDEF }
    property 6'h "six" { default = 6'h3F }
    property 70'b "ones" { default = 70'b%(ones)s }
    property bool "on" { default = true }
    property int "up" { default = 1 }
    property int "open" { min = 1, max = 3 }
  }
""" % {b"name": name, b"pin": pin, b"ones": b"10" * 35}
    for name, pin in zip(NAMES, NAMES[1:] + NAMES[:1])) + b"}\n"

HIDDEN = ("isReadOnly", "isHidden")
DIRECTIONS = {"bidir": "inout"}


def run(*words, check=True):
    done = subprocess.run(words, capture_output=True)
    assert not check or done.returncode == 0, (words, done.stdout[-500:], done.stderr[-1000:])
    return done


def written(path, content):
    with open(path, "wb") as file:
        file.write(content if isinstance(content, bytes) else content.encode())
    return path


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def models(folder, parse_float=float, more=()):
    """The options of each library, with what `ntl show` says of its blocks by name."""
    path = written(os.path.join(folder, "odd.btl"), HOSTILE)
    for options in [], ["-l", path], ["--arch", "meadow"], *more:
        listed = run(NTL, "list", "--json", *options).stdout.decode(errors="replace")
        names = NAMES if path in options else [block["name"] for block in json.loads(listed)["blocks"]]
        said = run(NTL, "show", "--json", *options, *names).stdout.replace("\ufffd".encode(), rb"\\xe9")
        yield options, json.loads(said, parse_float=parse_float)["blocks"]


def escaped(name, others=r"[^!-~]|`"):
    """A name as Verilog has it, without the escape."""
    name = re.sub(others, lambda found: "".join(f"\\x{byte:02x}" for byte in found[0].encode()), name)
    return name or "unnamed"


def check_csv(folder):
    def cell(value):
        if isinstance(value, list):
            return "; ".join(cell(item) for item in value)
        return "" if value is None else value if isinstance(value, str) else json.dumps(value)

    def at(row, path):
        for key in path.split("."):
            row = None if row is None else row[int(key) if key.isdigit() else key] if isinstance(row, list) else row.get(key)
        return cell(row)

    for options, blocks in models(folder, str):
        target = os.path.join(folder, "tables")
        run(NTL, "export", "csv", "--split", target, *options)
        properties = [item for block in blocks for item in block["properties"] +
                      [{**own, "pin": bus["name"]} for bus in block["buses"] for own in bus["properties"]]]
        expected = {"blocks": blocks, "pins": [bus for block in blocks for bus in block["buses"]], "properties": properties}
        for table, rows in expected.items():
            with open(os.path.join(target, table + ".csv"), encoding="utf-8", newline="") as file:
                found = list(csv.DictReader(file, strict=True))
            assert len(rows) == len(found), table
            for row, cells in zip(rows, found):
                assert {column: at(row, column) for column in cells} == cells, (cells, row)
            one = run(NTL, "export", "csv-" + table, *options).stdout
            with open(file.name, "rb") as file:
                assert file.read() == one, table


def expected_ports(block, shown=escaped):
    ports = {}
    for bus in block["buses"]:
        first = ports.get(bus["baseName"], bus)
        if bus["isAbstract"] or bus["direction"] == "internal" or first["direction"] != bus["direction"]:
            continue
        if first is bus or (first["range"] and bus["range"]):
            ports.setdefault(bus["baseName"], {**bus, "bits": []})["bits"] += bus["range"] or [0]
    return {shown(name): (DIRECTIONS.get(bus["direction"], bus["direction"]), max(bus["bits"]) - min(bus["bits"]) + 1,
                            min(bus["bits"]), len(bus["bits"]) > 1 and bus["bits"][0] < bus["bits"][1])
            for name, bus in ports.items()}


def expected_parameters(block, ports, shown=escaped):
    result = {}
    for item in block["properties"]:
        if any(item[flag] for flag in HIDDEN) or item["default"] is None or item["defaultRefusal"] or shown(item["name"]) in ports:
            continue
        value = next((one for one in item["values"] if isinstance(one, str) and one.lower() == str(item["default"]).lower()), item["default"])
        if item["bitWidth"]:
            digits, base = item["defaultDigits"], 16 if item["type"] == "bithex" else 2
            value = f"{int(digits, base):0{item['bitWidth']}b}"
        elif item["type"] in ("int", "bool"):
            value = f"{int(value) & 0xffffffff:0{32 if item['type'] == 'int' else 1}b}"
        result[shown(item["name"])] = value
    return result


def with_plain_names(pairs):
    """yosys leaves the escape where a name would look like one of its own."""
    return {re.sub(r"^\\(?=[$\\0-9])", "", name): value for name, value in pairs}


def write_top(path, names):
    """A design with one of each module."""
    instances = [f"\\{name} u{i} ();" for i, name in enumerate(names)]
    written(path, "module top;\n" + "\n".join(instances) + "\nendmodule\n")


def check_values(folder, names, reals):
    """What yosys does not say of black boxes, a simulation does: real defaults, and that all defaults are allowed."""
    if not shutil.which("iverilog"):
        return

    def simulated(module, lines, *macros):
        files = [os.path.join(folder, name) for name in ("more.v", "top.v", "all.v")]
        written(files[0], f"module {module};\n" + "\n".join(lines) + "\nendmodule\n")
        program = os.path.join(folder, "program")
        run("iverilog", "-g2012", *macros, "-s", "top", "-s", module, "-o", program, *files)
        return run("vvp", "-n", program).stdout.decode()

    lines = [f'initial #{i} $display("%.17g", top.u{names.index(name)}.\\{parameter} );'
             for i, (name, parameter, _) in enumerate(reals)]
    found = [float(line) for line in simulated("reals", lines, "-DCHECK_PARAMETERS").split()]
    assert found == [value for *_, value in reals], (found, reals)
    if "ADD_CHAIN_LINK" in names:
        said = simulated("more", ["ADD_CHAIN_LINK #(.HOPS(3)) wrong ();"], "-DCHECK_PARAMETERS")
        assert said.startswith("more.wrong: HOPS is not 1, 2, 4\n"), said


def same_value(found, value):
    # Bytes come back one by one, some with the sign that they had. A blank ends texts that would look like bits.
    found = re.sub("\uffffFF(..)", lambda byte: chr(int(byte[1], 16)), found)
    value = value.encode().decode("latin-1").replace(r"\xe9", "\xe9")
    return found in (value, value + " ")


def check_verilog(folder):
    for options, blocks in models(folder):
        path, netlist = os.path.join(folder, "all.v"), os.path.join(folder, "all.json")
        left_out = run(NTL, "export", "verilog", "-o", path, *options, check=False).stderr.decode()
        names = {escaped(block["name"]): block for block in reversed(blocks)}
        top = os.path.join(folder, "top.v")
        write_top(top, names)
        for macro in [], ["-DCHECK_PARAMETERS"]:
            for reader in (["iverilog", "-g2005", "-Wall", "-t", "null"], ["iverilog", "-g2012", "-t", "null"],
                           ["verilator", "--lint-only", "-Wno-PINMISSING", "--top-module", "top", top]):
                if shutil.which(reader[0]):
                    said = run(*reader, *macro, path, check=False)
                    assert not said.stdout + said.stderr, (said.stdout + said.stderr).decode()
        run("yosys", "-q", "-p", f"read_verilog -lib {path}; write_json {netlist}")
        with open(netlist, encoding="latin-1") as file:
            modules = json.load(file, object_pairs_hook=with_plain_names)["modules"]
        assert set(modules) == set(names), set(modules) ^ set(names)
        reals = []
        for name, module in modules.items():
            ports = {port: (facts["direction"], len(facts["bits"]), facts.get("offset", 0), bool(facts.get("upto")))
                     for port, facts in module["ports"].items()}
            wanted = expected_ports(names[name])
            assert ports == wanted and list(ports) == list(wanted), (name, ports, wanted)
            groups = {key: names[name][key] for key in ("group", "subgroup") if re.fullmatch("[A-Z_]+", names[name][key] or "")}
            assert {key: module["attributes"].get(key) for key in groups} == groups, (name, module["attributes"])
            types = {net["attributes"].get("pin_type", "data") for port, net in module["netnames"].items() if port in ports}
            assert types == {bus["type"] for bus in names[name]["buses"] if escaped(bus["baseName"]) in wanted}, (name, types)
            parameters = expected_parameters(names[name], wanted)
            found = module.get("parameter_default_values", {})
            doubles = {parameter for parameter, value in parameters.items() if isinstance(value, float)}
            assert set(found) == set(parameters) - doubles, (name, set(found) ^ set(parameters))
            reals += [(name, parameter, parameters[parameter]) for parameter in sorted(doubles)]
            for parameter in found:
                value = parameters[parameter]
                assert same_value(found[parameter], value), (name, parameter, found[parameter], value)
        check_values(folder, list(names), reals)
        if "-l" in options:
            for line in ("plain: in: internal, no port", "plain: twin[1:1]: there is a port twin",
                         "plain: both[1:1]: another direction than both[0:0]", "plain: open: no default; int: 1 to 3",
                         "plain: up: up is the name of another port or parameter",
                         r"a\x20b: \a\x20b  is the name of another module"):
                assert f"ntl: {line}\n" in left_out, (line, left_out)


# What mappings, numbers and texts can hold, beside tests/corpus.
INFINITE = "1" + "0" * 310 + ".0"
RICH = """library "rich" { function bool odd(1'h, 1'b, string, double, int, bool); function string none();
  block "other" { primgroup = "g, g:m"; pin "A" input; } block "sub" { primgroup = ":s"; }
  block "later" { primgroup = ", l"; }
  block "rich" {
    property double "most" { min = -%(inf)s, max = %(inf)s, default = %(inf)s, precision = 0 }
    property double "few" { values { 0.1, -0.0, 100000000000000000000000.0 }, default = -0.0, units = "ns" }
    property int "at_most" { simulation = false, max = 3, description = "%% \\ {}" }
    property bool "flags" { default = true, simulation = true, test = true, constraintsOnly = true, muxControl = true }
    property 6'h "wider" { min = 6'h1, default = 10'h03f }
    property 5'b "none" { simulation = true, units = "bits" }
    pin "P[3:0]" input test abstract clock mustConnect { property string "S" { values { "", "a" }, default = "" } }
  } retargetsto {
    none(); inst "i" "other"; inst "j" "nowhere"; odd("8'h0F", "2'b01", "x", -2.5, 3, true);
    signal "s[1:0]"; signal "t" : "P[0]", "i" "A", "j" "~A"; connect "@1" : "P[1]";
    assign block property "i" "v" 1 - (2 - 3) * 4 %% 5; assign pin property "i" "A", "w" "a" == none() || 1 < 2;
    if (odd("1'h1", "1'b1", "(;{", 0.1, 1, false)) if (true) inst "k" "other"; else { }
    else if (1 >= 2) { { connect "s" : "P[2]"; } if (true) signal "u"; } else connect "s" : "P[3]";
  }
}
""" % {"inf": INFINITE}


# What an import refuses of the document below, and where.
STATEMENT = "/blocks/0/netlist/statements/0"
INVERTED = {"kind": "connect", "signal": "s", "pins": [{"pin": "~A"}]}
NO_CONSTANTS = ["8'b1", "'h1", "8x'h1", "8'", "8'hG", "", "0G"]
NO_EXPRESSIONS = ["1) { } if (2", "(1", "1) + (1", "1 // one", "1; 2", ""]
NO_FUNCTIONS = ["block", "f g", "f(", "", 'f"']
REFUSED = [
    ("/format", "other", 'the document: is no library: its "format" is not "hdnt-library"'),
    ("/version", 2, "/version: is not 1, which is all that is known here"),
    ("/blocks/0", [], "/blocks/0: an object is due"),
    ("/blocks/0/name", 3, "/blocks/0/name: a text is due"),
    ("/blocks/0/isTest", 1, "/blocks/0/isTest: true or false is due"),
    ("/blocks/0/buses/0/range", [1], "/blocks/0/buses/0/range: the first and the last bit are due"),
    ("/blocks/0/buses/0/range/1", 2 ** 64 - 1, "/blocks/0/buses/0/range/1: a whole number from 0 to 2147483647 is due"),
    ("/blocks/0/properties/0", {"name": "R", "type": "double", "default": "x"},
     '/blocks/0/properties/0/default: a number, "inf" or "-inf" is due'),
    ("/blocks/0/properties/0", {"name": "B", "type": "bool", "default": 1},
     "/blocks/0/properties/0/default: true or false is due"),
    (STATEMENT, {"kind": "connect", "signal": "s", "pins": []}, STATEMENT + "/pins: a pin is due"),
    (STATEMENT, INVERTED, STATEMENT + '/pins/0/pin: begins with "~", which would invert it'),
    (STATEMENT + "/branches/0/condition", "1\n", STATEMENT + '/branches/0/condition: "1\\n" is no expression of NTL'),
    (STATEMENT, {"kind": "if", "branches": []}, STATEMENT + "/branches: a branch is due"),
    (STATEMENT, functools.reduce(lambda inner, _: [inner], range(250), []),
     STATEMENT + "/0" * 250 + ": statements nested more than 250 deep"),
    *(("/blocks/0/properties/0/default", text, f"/blocks/0/properties/0/default: \"{text}\" is no constant such as 8'h0")
      for text in NO_CONSTANTS),
    *((STATEMENT + "/branches/0/condition", text, f'{STATEMENT}/branches/0/condition: "{text}" is no expression of NTL')
      for text in NO_EXPRESSIONS),
    *((STATEMENT + "/branches/0/then/function", text,
       f'{STATEMENT}/branches/0/then/function: "{text}" is no name of a function') for text in NO_FUNCTIONS),
    ("/blocks/0/name", 'qu"ote', "/blocks/0/name: holds a quote or a line break, which no text of NTL does"),
    ("/blocks/0/buses", {}, "/blocks/0/buses: a list is due"),
    ("/blocks/0/buses/0/direction", "up", '/blocks/0/buses/0/direction: "up" is none of input, output, bidir, internal'),
    ("/blocks/0/buses/0/range/0", -1, "/blocks/0/buses/0/range/0: a whole number from 0 to 2147483647 is due"),
    ("/blocks/0/properties/0/type", "int", "/blocks/0/properties/0/default: a whole number from -2147483648 to 2147483647 is due"),
    ("/blocks/0/properties/0/precision", 3, "/blocks/0/properties/0: 'precision' is no option of this property"),
    (STATEMENT + "/branches/0/then/kind", "wish",
     STATEMENT + '/branches/0/then/kind: "wish" is none of instance, signal, connect, blockProperty, pinProperty, call, if'),
]
SMALL = {"format": "hdnt-library", "version": 1, "library": "small", "blocks": [
    {"name": "one", "buses": [{"baseName": "D", "range": [0, 1], "direction": "input"}],
     "properties": [{"name": "INIT", "type": "bithex", "bitWidth": 8, "default": "0F"}],
     "netlist": {"section": "mapsto", "statements": [
         {"kind": "if", "branches": [{"condition": "true", "then": {"kind": "call", "function": "f"}}]}]}}]}


# A second validator. It knows the draft before, in which all that the schema uses means the same.
PERL = """use JSON::PP; use JSON::Validator::Schema::Draft201909;
my ($schema, $document) = map { open my $file, "<", $_ or die; local $/; JSON::PP::decode_json(<$file>) } @ARGV;
$schema->{"\\$schema"} = JSON::Validator::Schema::Draft201909->new->specification;
print "$_\\n" for JSON::Validator::Schema::Draft201909->new($schema)->validate($document);"""


def check_json(folder):
    import jsonschema
    schema_file = os.path.join(SOURCES[0], "data/schema/hdnt-library-1.json")
    schema = json.loads(read(schema_file))
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    document, text, errors = (os.path.join(folder, name) for name in ("a.json", "b.btl", "errors"))

    def check_round(library, *options):
        for target in (document, os.path.join(folder, "again.json")):
            said = run(NTL, "export", "json", "-l", library, *options, "-o", target).stderr
            missing = b"[include-not-found]" if library.endswith("/include_missing_file.btl") else b""
            assert bool(said) == bool(missing) and missing in said, (library, said)
        with open(document, "rb") as first, open(target, "rb") as again:
            exported = first.read()
            assert exported == again.read()
        validator.validate(json.loads(exported))
        run(NTL, "import", "json", document, "-o", text)
        run(NTL, "diff", library, text, *options)
        return document

    def placed(name, content):
        return written(os.path.join(folder, name), content)

    data, corpus = (os.path.join(SOURCES[0], path) for path in ("data", "tests/corpus/good"))
    check_round(os.path.join(data, "tessels"))
    said = run("perl", "-e", PERL, schema_file, document)
    assert not said.stdout, said
    check_round(os.path.join(data, "tessels.test"), "--parent", os.path.join(data, "tessels"))
    for library in [os.path.join(data, "simulation.btl"), placed("rich.btl", RICH),
                    placed("odd.btl", HOSTILE.replace(b"\xe9", b"e"))] + sorted(glob.glob(corpus + "/*.btl")):
        check_round(library, "-I", os.path.join(corpus, "../include"))
    for pointer, value, refusal in [("", None, None)] + REFUSED:
        changed = json.loads(json.dumps(SMALL))
        *path, last = [int(key) if key.isdigit() else key for key in pointer.split("/")[1:]] or [None]
        if last is not None:
            functools.reduce(operator.getitem, path, changed)[last] = value
        outcome = run(NTL, "import", "json", placed("small.json", json.dumps(changed)), "-o", text, check=False)
        assert outcome.stderr.decode() == (f"ntl: {folder}/small.json: {refusal}\n" if refusal else ""), outcome
        assert outcome.returncode == (2 if last in ("format", "version") else 1 if refusal else 0)
    twice = run(NTL, "import", "json", document, document, check=False)
    assert (twice.returncode, twice.stderr) == (2, b"ntl: one file holds a library as JSON; name one\n"), twice
    said = run(NTL, "export", "json", "-l", placed("odd.btl", HOSTILE), "-o", document, check=False)
    assert said.returncode == 1 and b"plain: bytes that are no UTF-8 are written as U+FFFD\n" in said.stderr, said


def check(is_missing, action):
    """Runs it in a folder of its own, unless its reader is not installed."""
    if is_missing:
        print("a reader is not installed")
        sys.exit(77)
    with tempfile.TemporaryDirectory() as temporary:
        action(temporary)


def is_missing():
    """Whether a reader is not installed."""
    if FORM == "json":
        return not importlib.util.find_spec("jsonschema") or run("perl", "-MJSON::Validator", "-e", "1", check=False).returncode
    return FORM == "verilog" and not shutil.which("yosys")


if __name__ == "__main__":
    check(is_missing(), {"csv": check_csv, "json": check_json, "verilog": check_verilog}[FORM])
