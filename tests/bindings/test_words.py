"""JSON, Python and Tcl call the same thing by the same word; docs/scripting.md lists what only some of them have."""
import collections
import json
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

import hdnt
from rule import count_key_of, key_of, members

ENVIRONMENT = {name: value for name, value in os.environ.items() if name != "LD_PRELOAD"}
MANUAL = pathlib.Path(os.environ["NTL_SOURCE_DIR"], "docs", "scripting.md").read_text()

OLD = """library "l" {
  function bool reserve(int);
  block "FLOP_RISE" { pin "D[1:0]" input { property int "P" { default = 1 } } pin "Q" output;
    property int "N" { default = 1 } } expandsto {
    reserve(1);
    inst "u" "FLOP_FALL";
    inst "n" "NO_SUCH";
    signal "s" : "D[0]", "u" "D";
    if (1 < 2) assign block property "u" "N" 2;
    assign pin property "u" "D", "P" 3;
  }
  block "FLOP_FALL" { pin "D" input { property int "P" { default = 1 } } property int "N" { default = 1 } }
}
"""
FAULTY = 'library "l" { block "FLOP_RISE" { pin "D" input; pin "D" input; } }'

DATA = {"expansion": hdnt.Expansion, "level": hdnt.Level, "branch": hdnt.Branch, "instance": hdnt.ExpandedInstance,
        "property value": hdnt.PropertyValue, "signal": hdnt.ExpandedSignal, "connection": hdnt.Connection,
        "call": hdnt.ExpandedCall, "origin": hdnt.Origin, "problem": hdnt.Problem, "difference": hdnt.Difference,
        "location": hdnt.Location, "diagnostic": hdnt.Diagnostic, "related place": hdnt.RelatedPlace,
        "check result": hdnt.CheckResult}
HANDLES = {"block": hdnt.Block, "bus": hdnt.Bus, "pin": hdnt.Pin, "property": hdnt.Property, "netlist": hdnt.Netlist}
FIELDS = {**{kind: list(data._fields) for kind, data in DATA.items()},
          **{kind: members(handle) for kind, handle in HANDLES.items()}}


def exceptions():
    """Of the table in the manual: for each object what only JSON has, and what only the packages have."""
    rows = re.findall(r"^\| ([a-z ]+) \| ((?:`\w+`(?:, )?)*) ?\| ((?:`\w+`(?:, )?)*) ?\|$", MANUAL, re.MULTILINE)
    return {kind: tuple(set(re.findall(r"\w+", names)) for names in columns) for kind, *columns in rows}


class Objects(collections.defaultdict):
    """Keys of all objects of a kind, as a set."""

    def __init__(self):
        super().__init__(set)

    def add(self, kind, *objects):
        for one in objects:
            self[kind].update(one)

    def add_block(self, block):
        self.add("block", block)
        self.add("netlist", *filter(None, [block["netlist"]]))
        self.add("property", *block["properties"], *(one for bus in block["buses"] for one in bus["properties"]))
        self.add("bus", *block["buses"])
        self.add("pin", *(pin for bus in block["buses"] for pin in bus["pins"]))

    def add_expansion(self, expansion):
        self.add("expansion", expansion)
        self.add("problem", *expansion["problems"])
        for level in expansion["levels"]:
            self.add("level", level)
            values = [value for one in level["instances"] for value in one["properties"]]
            for kind, found in (("branch", level["branches"]), ("instance", level["instances"]), ("call", level["calls"]),
                                ("signal", level["signals"]), ("connection", level["connections"]),
                                ("property value", values)):
                self.add(kind, *found)
                self.add("origin", *(one["origin"] for one in found))


class Words(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        for name, text in (("old", OLD), ("new", OLD.replace('"N" 2', '"N" 3')), ("faulty", FAULTY)):
            (self.folder / name).write_text(text)

    def tool(self, *arguments):
        done = subprocess.run([os.environ["NTL_TOOL"], *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              check=False, env=ENVIRONMENT, cwd=self.folder)
        return json.loads(done.stdout)

    def test_json_has_the_words_of_the_packages(self):
        found = Objects()
        found.add_block(self.tool("show", "--json", "FLOP_RISE", "-l", "old")["blocks"][0])
        found.add_expansion(self.tool("expand", "--format=json", "FLOP_RISE", "-l", "old")["blocks"][0])
        found.add("difference", *self.tool("diff", "--format=json", "old", "new")["differences"])
        result = self.tool("check", "--format=json", "faulty")["inputs"][0]
        found.add("check result", result)
        found.add("diagnostic", *result["diagnostics"])
        found.add("related place", *(place for one in result["diagnostics"] for place in one["related"]))
        found.add("location", *(one["location"] for one in result["diagnostics"]))
        listed = exceptions()
        self.assertEqual(set(found), set(FIELDS))
        self.assertLessEqual(set(listed), set(FIELDS))
        for kind, keys in found.items():
            rule = {key_of(name) if key_of(name) in keys else count_key_of(name): name for name in FIELDS[kind]}
            only = (keys - set(rule), {name for key, name in rule.items() if key not in keys})
            self.assertEqual(only, listed.get(kind, (set(), set())), kind)

    def test_list_has_the_words_of_show(self):
        for block in self.tool("list", "--json", "-l", "old")["blocks"]:
            shown = self.tool("show", "--json", block["name"], "-l", "old")["blocks"][0]
            shown["section"] = shown["netlist"] and shown["netlist"]["section"]
            self.assertEqual(block, {key: shown[key] for key in block})

    TCL = """
        package require hdnt
        proc show {handle} {
            catch {$handle ?} message
            puts "[$handle kind]\\t[regsub {.*must be} $message {}]"
        }
        catch {[hdnt::common] visit ? x} events
        foreach event [regexp -all -inline {visit_\\w+} $events] {
            if {$event ni {visit_else visit_section}} {lappend visits $event show}
        }
        set library [hdnt::load old]
        $library visit {*}$visits
        set expansion [$library block FLOP_RISE expand]
        proc keys {kind dicts} {
            foreach one $dicts {puts "$kind\\t[dict keys $one]"}
        }
        keys expansion [list $expansion]
        keys problem [dict get $expansion problems]
        set level [lindex [dict get $expansion levels] 0]
        keys level [list $level]
        foreach {kind list} {branch branches instance instances call calls signal signals connection connections} {
            keys $kind [dict get $level $list]
            keys origin [lmap one [dict get $level $list] {dict get $one origin}]
        }
        foreach one [dict get $level instances] {keys "property value" [dict get $one properties]}
        keys difference [hdnt::diff $library [hdnt::load new]]
        set result [hdnt::check faulty -tool $env(NTL_TOOL)]
        catch {hdnt::load faulty} message options
        keys "check result" [list $result]
        foreach list [list [dict get $result diagnostics] [dict get $options -diagnostics]] {
            keys diagnostic $list
            keys "related place" [dict get [lindex $list 0] related]
            keys location [list [dict get [lindex [dict get [lindex $list 0] related] 0] location]]
        }
    """
    # What Tcl has beside the fields of handles, and what Python has.
    COMMANDS = set("""get kind visit evaluate text expand printed source diff accepts refusal digits netlist_for pin bus property
        block pin_tuples bus_tuples property_dict close exists find starting_with""".split())
    PYTHON_ONLY = {"alive", "closed", "names"}
    CONSTANTS = {name: name.capitalize() + "Constant" for name in ("int", "double", "bool", "string")}

    @unittest.skipUnless(os.environ.get("HDNT_TCLSH"), "there is no Tcl")
    def test_tcl_has_the_words_of_python(self):
        script = self.folder / "words.tcl"
        script.write_text(self.TCL)
        said = subprocess.run([os.environ["HDNT_TCLSH"], script], stdout=subprocess.PIPE, check=True, encoding="utf-8",
                              cwd=self.folder).stdout
        handles = set()
        for kind, words in (line.split("\t") for line in said.splitlines()):
            words = set(re.findall(r"\w+", words)) - {"or"}
            if not words & {"get"}:
                self.assertEqual(words, set(DATA[kind]._fields), kind)
                continue
            handles.add(kind)
            fields = members(getattr(hdnt, self.CONSTANTS.get(kind, "".join(map(str.capitalize, kind.split("_"))))))
            self.assertEqual(words - self.COMMANDS, set(fields) - self.PYTHON_ONLY - self.COMMANDS, kind)
        self.assertGreaterEqual(handles, {"library", "function", "netlist", "instance", "pin_ref", "if", *HANDLES})


if __name__ == "__main__":
    unittest.main()
