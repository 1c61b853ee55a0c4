"""Mappings, expressions, visitors, texts and differences."""
import copy
import io
import json
import os
import pathlib
import pickle
import shutil
import subprocess
import sys
import tempfile
import textwrap
import unittest

import hdnt

DATA = pathlib.Path(os.environ["NTL_SOURCE_DIR"], "data")
TEXT = """library "l" {
  function int steps(int);
  function string word();
  block "FLOP_RISE" {
    pin "D" input; pin "Q" output;
    property int "N" { min = 0, max = 9, default = 3 }
    property double "X" { default = 0.5 }
    property string "S" { values { "ONE", "TWO" }, default = "ONE" }
  } mapsto {
    inst "u" "FLOP_FALL";
    assign block property "u" "N" 1 + steps(2) * 3;
    if (1 < 2) { inst "v" "FLOP_FALL"; }
  }
  block "FLOP_FALL" { pin "D" input; pin "Q" output; property int "N" { default = 1 } }
}
"""


def tool(*arguments):
    environment = {name: value for name, value in os.environ.items() if name != "LD_PRELOAD"}
    return subprocess.run([os.environ["NTL_TOOL"], *map(str, arguments)], stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, check=False, env=environment, encoding="utf-8").stdout


class Operations(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.path = self.folder / "l.btl"
        self.path.write_text(TEXT)
        self.library = hdnt.load(self.path)
        self.block = self.library["FLOP_RISE"]

    def test_expand_as_the_tool_does(self):
        blocks = [block for block in hdnt.common().blocks if block.netlist]
        self.assertGreater(len(blocks), 50)
        for block in blocks:
            expected = json.loads(tool("expand", block.name, "--deep", "--format", "json"))["blocks"][0]
            result = block.expand(deep=True)
            self.assertEqual([p.message for p in result.problems], [p["message"] for p in expected["problems"]])
            self.assertEqual(len(result.levels), len(expected["levels"]))
            for level, other in zip(result.levels, expected["levels"]):
                self.assertEqual((level.path, level.outer, level.type, level.block.name, level.section),
                                 (other["path"], other["outer"], other["type"], other["type"], other["section"]))
                self.assertEqual([(i.name, i.type, i.level, i.block is not None, i.origin.location.line,
                                   [p.name for p in i.properties]) for i in level.instances],
                                 [(i["name"], i["type"], i["level"], i["exists"], i["origin"]["location"]["line"],
                                   [p["name"] for p in i["properties"]]) for i in other["instances"]])
                self.assertEqual([s.name for s in level.signals], [s["name"] for s in other["signals"]])
                self.assertEqual([(c.signal, c.instance, c.pin, c.inverted) for c in level.connections],
                                 [(c["signal"], c["instance"], c["pin"], c["inverted"]) for c in other["connections"]])

    def test_expand_with_values(self):
        calls = []

        def steps(count):
            calls.append(count)
            return count + 1
        result = self.block.expand(N=4, X=2, S="TWO", functions={"steps": steps})
        self.assertEqual((calls, result.problems), ([2], ()))
        self.assertEqual([i.name for i in result.instances], ["u", "v"])
        self.assertEqual([(p.name, p.value) for p in result.instances[0].properties], [("N", 10)])
        self.assertIs(result.instances[0].block, self.library["FLOP_FALL"])
        self.assertEqual(result.instances[0].origin.location.line, 10)
        self.assertEqual([b.taken for b in result.levels[0].branches], [True])
        self.assertEqual(self.block.expand({"n": 4}, N=5, functions={"steps": steps}).problems, ())
        self.assertEqual(self.library["FLOP_FALL"].expand().levels, ())
        self.assertIn("steps", self.block.expand().problems[0].message)

    def test_what_expand_refuses(self):
        for values, error in (({"N": 10}, ValueError), ({"S": "THREE"}, ValueError), ({"NONE": 1}, ValueError),
                              ({"N": "4"}, ValueError), ({"N": 2 ** 40}, ValueError), ({"N": []}, TypeError),
                              ({"N": None}, TypeError)):
            with self.assertRaises(error):
                self.block.expand(**values)
        with self.assertRaises(ValueError):
            self.block.expand(connected=["NONE"])
        with self.assertRaises(ZeroDivisionError):
            self.block.expand(functions={"steps": lambda count: 1 // 0})

    def test_functions_are_let_go_when_one_is_refused(self):
        def steps(count):
            return count
        before = sys.getrefcount(steps)
        with self.assertRaises(TypeError):
            self.block.expand(functions={"steps": steps, 1: steps})
        self.assertEqual(sys.getrefcount(steps), before)

    def test_refusals_say_what_is_allowed(self):
        path = self.folder / "bounds.btl"
        path.write_text("""library "b" { block "FLOP_RISE" { pin "Q" output;
            property int "LEAST" { min = 3, default = 4 }  property int "MOST" { default = 1, max = 3 }
            property int "LIST" { values { 4, 2 }, default = 2 }  property bool "FLAG" false;
            property double "X" { min = 0.5, max = 2.0, default = 1.0 }  property 4'h "H" { default = 4'hA }
            property int "MANY" { values { %s }, default = 1 } }
            block "FLOP_FALL" { pin "Q" output; } }""" % ", ".join(map(str, range(1, 31))))
        library = hdnt.load(path)
        block = library["FLOP_RISE"]
        for name, value, error, reason in (
                ("LEAST", 2, ValueError, "2 is below 3; allowed are 3 and above"),
                ("MOST", 4, ValueError, "4 is above 3; allowed are 3 and below"),
                ("LIST", 3, ValueError, "3 is none of 4, 2"),
                *(("LIST", far, ValueError, "%d is no int value; write one of 4, 2" % far)
                  for far in (2 ** 31, -2 ** 31 - 1, 2 ** 40, 2 ** 63, -2 ** 70)),
                ("LIST", 2 ** 31 - 1, ValueError, "2147483647 is none of 4, 2"),
                ("LIST", -2 ** 31, ValueError, "-2147483648 is none of 4, 2"),
                ("FLAG", 1, ValueError, "1 is no bool value; write true or false"),
                ("X", 3, ValueError, "3.0 is above 2.0; allowed are 0.5 to 2.0"),
                ("X", 10 ** 30, ValueError, "1e+30 is above 2.0; allowed are 0.5 to 2.0"),
                ("X", 10 ** 400, ValueError, "1" + "0" * 400 + " is no double value; write 0.5 to 2.0"),
                ("H", 10, ValueError, "10 is no 4'h value; write 4'h0 to 4'hF"),
                ("H", "1F", ValueError, "4'h1F is wider than 4 bits; write 4'h0 to 4'hF"),
                ("LIST", None, TypeError, "None is no int value; write one of 4, 2"),
                ("H", b"A", TypeError, "b'A' is no 4'h value; write 4'h0 to 4'hF"),
                ("MANY", 0, ValueError, "0 is none of %s, ... (30 in all)" % ", ".join(map(str, range(1, 21))))):
            with self.assertRaises(error) as caught:
                block.expand({name: value})
            self.assertEqual(str(caught.exception), "block FLOP_RISE: %s: %s" % (name, reason))
            if error is ValueError:
                one = block.properties[name]
                self.assertEqual((one.refusal(value), one.accepts(value)), ("%s: %s" % (name, reason), False))
        self.assertEqual(block.properties["H"].refusal("hello"), "H: 'hello' is no 4'h value; write 4'h0 to 4'hF")
        self.assertEqual(block.properties["H"].refusal("4'b0101"), None)
        with self.assertRaisesRegex(ValueError, "S: 'THREE' is none of ONE, TWO$"):
            self.block.expand(S="THREE")
        for one, names in ((self.block, "N, X, S"), (library["FLOP_FALL"], "none")):
            with self.assertRaisesRegex(ValueError, "block %s: property NONE may not be 1, since there is none of that "
                                                    "name; properties: %s$" % (one.name, names)):
                one.expand(NONE=1)

    def test_expansions_are_plain_data(self):
        def steps(count):
            return count
        result = self.block.expand(functions={"steps": steps})
        self.assertEqual((result.connections, self.library["FLOP_FALL"].expand().connections), ((), ()))
        chain = hdnt.common()["COUNT_UP_8_LOAD"].expand(deep=True)
        self.assertGreater(len(chain.connections), 10)
        self.assertIs(chain.connections, chain.levels[0].connections)
        self.assertEqual([level.type for level in chain.levels], [level.block.name for level in chain.levels])
        self.library.close()
        for one in (result, chain):
            again = pickle.loads(pickle.dumps(one))
            self.assertEqual(pickle.loads(pickle.dumps(again)), again)
            self.assertEqual([level._replace(block=None, instances=()) for level in again.levels],
                             [level._replace(block=None, instances=()) for level in one.levels])
            self.assertEqual([item for level in again.levels for item in level.instances],
                             [item._replace(block=None) for level in one.levels for item in level.instances])
            self.assertEqual((again.problems, again.levels[0].block), (one.problems, None))
            self.assertIs(copy.deepcopy(one).levels[0].block, copy.copy(one.levels[0]).block)
            self.assertIs(copy.copy(one.levels[0]).block, one.levels[0].block)

    def test_expansions_print_short(self):
        chain = hdnt.common()["COUNT_UP_8_LOAD"].expand(deep=True)
        self.assertGreater(len(chain.levels), 1)
        self.assertEqual(str(chain), "<hdnt.Expansion of 'COUNT_UP_8_LOAD': %d levels, %d instances, %d connections, "
                         "0 problems>" % (len(chain.levels), len(chain.instances), len(chain.connections)))
        for item in chain.levels + chain.instances + chain.connections:
            self.assertRegex(repr(item), "^<hdnt.%s '.{1,100}>$" % type(item).__name__)
        self.assertIn("%d instance" % len(chain.instances), repr(chain.levels[0]))
        self.assertIn("without a mapping", repr(self.library["FLOP_FALL"].expand()))

    def test_parameters_are_known_ones(self):
        name = "arch.enableTestFeatures"
        self.addCleanup(hdnt.set_parameter, name, None)
        self.assertIs(hdnt.parameter(name), False)
        hdnt.set_parameter(name, True)
        self.assertIs(hdnt.parameter(name), True)
        for use in (lambda: hdnt.set_parameter("ntl.enableMaplib", True), lambda: hdnt.set_parameter("", None),
                    lambda: hdnt.parameter("enableMapLib")):
            with self.assertRaisesRegex(ValueError, "must be one of arch.enableTestFeatures, ntl.enableDiagnostics, "
                                                    "ntl.enableMapLib, ntl.retargetAllCells$"):
                use()
        with self.assertRaises(TypeError):
            hdnt.set_parameter(name, "on")

    def test_expressions(self):
        value = self.block.netlist.block_property_assigns[0].value
        self.assertEqual((value.operator, str(value), value.type), ("+", "1 + steps(2) * 3", "int"))
        self.assertEqual((value.left.value, value.right.left.name), (1, "steps"))
        self.assertIs(value.right.left.declaration, self.library.functions[0])
        self.assertEqual(value.evaluate({"steps": lambda n: 5}), 16)
        self.assertIs(self.block.netlist.ifs[0].condition.evaluate(), True)
        for functions, error in ((None, hdnt.Error), ({"steps": lambda n: "x"}, hdnt.Error),
                                 ({"steps": lambda n: 2 ** 40}, ValueError), ({"steps": lambda: 1}, TypeError)):
            with self.assertRaises(error):
                value.evaluate(functions)

    def test_visitors(self):
        seen = []

        class All(hdnt.Visitor):
            pass
        for name in dir(hdnt.Visitor):
            if name.startswith(("visit_", "leave_")):
                setattr(All, name, lambda self, node, name=name: seen.append((name, type(node).__name__)))
        self.block.accept(All())
        self.assertEqual([name for name, _ in seen], [
            "visit_block", "visit_bus", "leave_bus", "visit_bus", "leave_bus", "visit_pin", "visit_pin",
            "visit_property", "visit_property", "visit_property", "leave_block", "visit_netlist", "visit_instance",
            "visit_section", "visit_block_assign", "visit_int", "visit_operation", "visit_call", "visit_int",
            "leave_call", "visit_operation", "visit_int", "leave_operation", "leave_operation", "leave_block_assign",
            "visit_section", "visit_if", "visit_int", "visit_operation", "visit_int", "leave_operation", "leave_if",
            "visit_statements", "visit_instance", "leave_statements", "leave_netlist"])
        self.assertEqual({kind for name, kind in seen if name == "visit_int"}, {"IntConstant"})

        class Unheard(hdnt.Visitor):
            visit_nothing = visit_pins = leave_pin = leave_instance = enter_block = leave_else = lambda self, node: 1 / 0
        self.library.accept(Unheard())

        class NoMappings(hdnt.Visitor):
            blocks = 0

            def enter_netlist(self, node):
                return False

            def visit_block(self, node):
                self.blocks += 1

            def visit_instance(self, node):
                raise AssertionError

        visitor = NoMappings()
        hdnt.simulation().accept(visitor)
        self.assertEqual(visitor.blocks, len(hdnt.simulation().all_blocks))

        class Raising(hdnt.Visitor):
            def visit_pin(self, node):
                raise KeyError(node.name)
        with self.assertRaisesRegex(KeyError, "D"):
            self.library.accept(Raising())
        for wrong in (None, 3, object()):
            with self.assertRaises(TypeError):
                self.library.accept(wrong)

    def test_loading_from_a_callback(self):
        loaded = []

        def steps(count):
            with hdnt.load(self.path) as library:
                loaded.append(library["FLOP_RISE"].expand(functions={"steps": lambda n: n}).problems)
            return count
        self.assertEqual(self.block.expand(functions={"steps": steps}).problems, ())
        self.assertEqual(loaded, [()])

    def test_texts_are_those_of_the_tool(self):
        out = io.StringIO()
        self.library.print(out)
        self.assertEqual(out.getvalue(), tool("print", self.path))
        self.assertEqual(self.library.source(), tool("print", self.path, "--source"))
        for block in self.library.blocks:
            self.assertIn(textwrap.indent(block.source(), "  "), self.library.source())
            out = io.StringIO()
            block.print(out)
            self.assertIn('block "%s"' % block.name, out.getvalue())

    def test_lint_as_the_tool_does(self):
        found = hdnt.lint(self.library)
        inputs = json.loads(tool("lint", self.path, "--format", "json"))["inputs"]
        expected = [d for d in inputs[0]["diagnostics"] if not d["code"].startswith("config-")]
        self.assertEqual([(d.severity, d.code, d.line, d.column, d.message) for d in found],
                         [(d["severity"], d["code"], d["location"]["line"], d["location"]["column"], d["message"])
                          for d in expected])
        self.assertIn("open-input", {d.code for d in found})
        self.assertEqual(hdnt.lint(self.library, thorough=False, budget=1, architectures=["none"]), ())
        waived = self.folder / "waived.btl"
        waived.write_text("// ntl: allow open-input: a sketch\n" + TEXT)
        self.assertNotIn("open-input", {d.code for d in hdnt.lint(hdnt.load(waived))})
        with self.assertRaises(TypeError):
            hdnt.lint(self.block)

    def test_guide_as_the_tool_does(self):
        def content(folder):
            return {path.relative_to(folder): path.read_bytes() for path in folder.rglob("*") if path.is_file()}

        mine, theirs = self.folder / "mine", self.folder / "theirs"
        written = hdnt.guide(self.library, mine, title="A book", architectures=["none"])
        tool("guide", theirs, "-l", self.path, "--title", "A book")
        self.assertEqual(sorted(content(mine)), sorted(content(theirs)))
        self.assertEqual(written.pages, sum(name.suffix == ".html" for name in content(mine)))
        self.assertNotEqual(written.drawings > 0, written.undrawn != "")
        self.assertEqual(written.left_behind, "")
        (mine / "index.html").write_text("changed")
        with self.assertRaisesRegex(hdnt.Error, "index.html' was changed since"):
            hdnt.guide(self.library, mine)
        other = hdnt.guide(self.library, self.folder / "other", compare=self.library)
        self.assertEqual(other.pages, written.pages + 1)

    def test_export_and_import_as_the_tool_does(self):
        exported = hdnt.export_blocks(self.library, "json")
        self.assertEqual(exported, (tool("export", "json", "-l", self.path), None, ()))
        document = self.folder / "exported.json"
        document.write_text(exported.text)
        back = self.folder / "back.btl"
        back.write_text(hdnt.import_blocks("json", [document]).text)
        self.assertEqual(self.library.diff(hdnt.load(back)), [])
        split = hdnt.export_blocks(self.library, "csv", [self.block.name.lower()], split=True)
        self.assertEqual((sorted(split.files), split.text), (["blocks.csv", "pins.csv", "properties.csv"], None))
        self.assertEqual(split.files["blocks.csv"].count(self.block.name), 1)
        document.write_text(exported.text.replace('"direction": "input"', '"direction": "in"'))
        self.assertRegex(hdnt.import_blocks("json", [document]).left_out[0], '/blocks/0/buses/0/direction: "in" is none of')
        for form, blocks, reason in ("jsn", [], "no form 'jsn'; did you mean json"), ("json", ["X"], "no block 'X'"), \
                ("csv", [], "csv is several tables"):
            with self.assertRaisesRegex(hdnt.Error, reason):
                hdnt.export_blocks(self.library, form, blocks)
        document.write_text("{")
        with self.assertRaisesRegex(hdnt.Error, "is no JSON: parse error at line 1"):
            hdnt.import_blocks("json", [document])
        with self.assertRaises(FileNotFoundError):
            hdnt.import_blocks("json", ["nowhere"])

    @unittest.skipUnless(shutil.which("yosys"), "no yosys")
    def test_compare_models_as_the_tool_does(self):
        model = self.folder / "model.v"
        model.write_text(hdnt.export_blocks(self.library, "verilog", [self.block.name]).text.replace("input ", "output "))
        found = hdnt.compare_models(self.library, [model], missing=True)
        said = json.loads(tool("compare-models", model, "-l", self.path, "--missing", "--format", "json"))["inputs"]
        self.assertEqual([(d.code, d.line, d.message) for d in found],
                         [(d["code"], d["location"]["line"], d["message"]) for one in said for d in one["diagnostics"]])
        self.assertIn("port-direction", {d.code for d in found})

    def test_diff_as_the_tool_does(self):
        changed = self.folder / "changed.btl"
        changed.write_text(TEXT.replace("max = 9", "max = 8").replace('pin "Q" output; property int', "property int"))
        other = hdnt.load(changed)
        expected = json.loads(tool("diff", self.path, changed, "--format", "json"))["differences"]
        found = self.library.diff(other)
        self.assertEqual([(d.path, d.effect, d.change) for d in found],
                         [(d["path"], d["effect"], d["change"]) for d in expected])
        self.assertEqual((found[0].old, found[0].new, found[0].old_location.line), ("9", "8", 6))
        self.assertIsNone(found[0].old_location.end_column)
        self.assertEqual(self.library.diff(hdnt.load(self.path)), [])
        self.assertEqual(len(hdnt.diff(self.block, other["FLOP_RISE"])), 1)
        with self.assertRaises(TypeError):
            self.library.diff(self.block)


if __name__ == "__main__":
    unittest.main()
