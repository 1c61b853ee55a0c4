"""What Python sees of the shipped libraries is what the command line shows of them."""
import collections.abc
import functools
import gc
import itertools
import json
import os
import subprocess
import sys
import tempfile
import unittest
import weakref

import hdnt
from rule import count_key_of, key_of, members

TOOL = os.environ["NTL_TOOL"]
hdnt.set_parameter("ntl.enableMapLib", True)  # as the tool has it


def libraries():
    return [hdnt.common(), hdnt.simulation()]


def shown(library):
    """What `ntl show --json` says of the library's own blocks, by name."""
    where = ["-l", hdnt_simulation_path(), "--parent", "common"] if library.parent else []
    done = subprocess.run([TOOL, "show", "--json"] + where + ["--"] + list(library), stdout=subprocess.PIPE, check=True,
                          env={k: v for k, v in os.environ.items() if k != "LD_PRELOAD"})
    return {block["name"]: block for block in json.loads(done.stdout)["blocks"]}


def hdnt_simulation_path():
    return hdnt.simulation().blocks[0].location.file


class SameAsTheTool(unittest.TestCase):
    # What is no plain value, and what the packages answer in another form.
    OBJECTS = {"block", "bus", "owner", "library", "location", "alive", "pins", "buses", "properties", "netlist"}

    def compare(self, node, expected, but=()):
        """Every field that both have, by the one rule for names."""
        for name in set(members(type(node))) - self.OBJECTS - set(but):
            value = getattr(node, name)
            value = list(value) if isinstance(value, tuple) else value
            # A text without anything in it is null in JSON.
            value = None if value == "" else value
            self.assertEqual(value, expected[key_of(name)], (node, name))
            self.assertIs(type(value), type(expected[key_of(name)]), (node, name))

    def compare_place(self, node, expected):
        self.assertEqual((node.location.file, node.location.line), (expected["file"], expected["line"]), node)

    def compare_properties(self, owner, expected):
        self.assertEqual(len(owner.properties), len(expected))
        for one, other in zip(owner.properties, expected):
            self.compare(one, other)
            self.compare_place(one, other["location"])
            self.assertEqual(None if one.default is None else one.refusal(one.default), other["defaultRefusal"])
            if other["defaultDigits"] is not None:
                self.assertEqual(one.digits(one.default), other["defaultDigits"])

    def test_every_block_pin_and_property(self):
        count = 0
        for library in libraries():
            sheets = shown(library)
            self.assertEqual(list(library), list(sheets))
            for block in library.blocks:
                self.compare_block(block, sheets[block.name])
                count += len(block.pins) + len(block.properties)
        self.assertGreater(count, 3000)

    def compare_block(self, block, expected):
        self.compare_netlist(block.netlist, expected["netlist"])
        self.compare(block, expected)
        self.compare_place(block, expected["location"])
        self.assertEqual(len(block.pins), expected["pinCount"])
        self.compare_properties(block, expected["properties"])
        self.assertEqual(len(block.buses), len(expected["buses"]))
        for bus, other in zip(block.buses, expected["buses"]):
            self.compare(bus, other)
            self.compare_properties(bus, other["properties"])
            self.assertEqual(len(bus.pins), len(other["pins"]))
            for pin, sheet in zip(bus.pins, other["pins"]):
                self.compare(pin, sheet)
                self.assertEqual((pin.bus.name, list(pin.properties.names)), (sheet["bus"], sheet["properties"]))

    def compare_netlist(self, netlist, expected):
        self.assertEqual(netlist is None, expected is None)
        if netlist:
            lists = [name for name in set(members(hdnt.Netlist)) - self.OBJECTS
                     if isinstance(getattr(netlist, name), tuple)]
            self.assertEqual(len(lists), 8)
            self.compare(netlist, expected, lists)
            for name in lists:
                self.assertEqual(len(getattr(netlist, name)), expected[count_key_of(name)], netlist.block)

    def test_bulk_forms_say_the_same(self):
        for block in hdnt.common().blocks:
            self.assertEqual(block.pin_tuples(), [(p.name, p.direction, p.type, p.required) for p in block.pins])
            self.assertEqual(block.bus_tuples(),
                             [(b.base_name, b.range, b.direction, b.type, b.required) for b in block.buses])
            self.assertEqual(block.property_dict(), {p.name: p.default for p in block.properties})


class Containers(unittest.TestCase):
    def test_library_is_a_mapping(self):
        library = hdnt.common()
        self.assertIsInstance(library, collections.abc.Mapping)
        self.assertEqual([block.name for block in library.values()], list(library))
        self.assertEqual([name for name, _ in library.items()], list(library.keys()))
        self.assertEqual(len(list(library)), len(library))
        self.assertIs(library["flop_rise"], library["FLOP_RISE"])
        self.assertIn("flop_rise", library)
        for absent in ("NONE", 3, None, library.blocks[0]):
            self.assertNotIn(absent, library)
            with self.assertRaises(KeyError):
                library[absent]
        self.assertEqual(library.get("NONE", 7), 7)
        self.assertIsNone(library.get("NONE"))

    def test_blocks_of_parents(self):
        library = hdnt.simulation()
        self.assertNotIn("FLOP_RISE", library)
        self.assertIs(library.find("FLOP_RISE"), hdnt.common()["FLOP_RISE"])
        self.assertIs(library.all_blocks["FLOP_RISE"].library, library.parent)
        self.assertEqual(len(library.all_blocks), len(library) + len(library.parent))
        names = [block.name for block in library.starting_with("flop_")]
        self.assertEqual(names, sorted(name for name in names if name.startswith("FLOP_")))

    def test_views_are_sequences(self):
        for view in (hdnt.common().blocks, hdnt.common()["ADD_CHAIN_8"].pins, hdnt.common()["ADD_CHAIN_8"].buses,
                     hdnt.common()["ADD_CHAIN_8"].properties):
            self.assertIsInstance(view, collections.abc.Sequence)
            everything = list(view)
            self.assertEqual(list(reversed(view)), everything[::-1])
            for part in (slice(None), slice(1, 3), slice(None, None, -2), slice(-2, None), slice(9, 2), slice(0, 99999)):
                self.assertEqual(view[part], everything[part])
            self.assertIs(view[-1], everything[-1])
            self.assertIs(view[everything[0].name], everything[0])
            self.assertIn(everything[-1], view)
            self.assertIn(everything[-1].name, view)
            self.assertNotIn(hdnt.common(), view)
            for absent, error in ((len(view), IndexError), (-len(view) - 1, IndexError), ("NONE", KeyError),
                                  (1.5, TypeError), (None, TypeError), (2 ** 70, IndexError)):
                with self.assertRaises(error):
                    view[absent]

    def test_views_answer_names_as_the_library_does(self):
        block = hdnt.common()["ADD_CHAIN_8"]
        for view in (hdnt.common(), hdnt.simulation().all_blocks, hdnt.common().blocks, block.pins, block.buses,
                     block.properties, block.buses[0].pins, block.buses[0].properties, block.pins[0].properties):
            names = tuple(item.name for item in view.values())
            self.assertEqual((view.names, tuple(view.keys()), len(view.keys())), (names, names, len(names)))
            self.assertEqual(list(view.items()), list(zip(names, view.values())))
            self.assertEqual(dict(view), dict(view.items()))
            self.assertEqual(view.keys() & {"NONE", *names[:1]}, set(names[:1]))
            for absent in ("NONE", 0, -1, None, 1.5, block, slice(None)):
                self.assertIs(view.get(absent), None)
                self.assertEqual(view.get(absent, default=7), 7)
                self.assertNotIn(absent, view.keys())
            self.assertNotIn(("NONE", None), view.items())
            for name, item in view.items():
                self.assertIs(view.get(name), item)
                self.assertIn(name, view.keys())
                self.assertIn((name, item), view.items())
        first = block.pins[1]
        self.assertEqual([block.pins.index(first), block.pins.index(first.name), block.pins.count(first),
                          block.pins.count(first.name), block.pins.count("NONE")], [1, 1, 1, 1, 0])
        for absent in ("NONE", block, 0):
            with self.assertRaises(ValueError):
                block.pins.index(absent)
        with self.assertRaises(ValueError):
            block.pins.index(first, 2)

    def test_representations_show_what_is_inside(self):
        folder = os.path.join(os.environ["NTL_SOURCE_DIR"], "data", "examples")
        library = hdnt.load(os.path.join(folder, "first.btl"))
        gate, bank = library["GATE_AND_2"], library["FLOP_BANK_8_ENABLE"]
        self.assertEqual(repr(library), "<hdnt.Library 'first' of %d blocks>" % len(library))
        self.assertEqual(repr(gate), "<hdnt.Block 'GATE_AND_2' %d pins, %d properties>" %
                         (len(gate.pins), len(gate.properties)))
        pin, one = bank.pins[0], bank.properties[0]
        self.assertEqual(repr(pin), "<hdnt.Pin '%s' %s %s>" % (pin.name, pin.direction, pin.type))
        self.assertEqual(repr(pin.bus), "<hdnt.Bus '%s' %s %s>" % (pin.bus.name, pin.direction, pin.type))
        self.assertEqual(repr(one), "<hdnt.Property '%s' %s, default %r>" % (one.name, one.type, one.default))
        self.assertEqual(repr(gate.pins), "<pins of hdnt.Block 'GATE_AND_2' (%d): %s>" %
                         (len(gate.pins), ", ".join("'%s'" % name for name in gate.pins.names)))
        self.assertEqual(repr(hdnt.common().blocks), "<blocks of hdnt.Library '%s' (%d): %s, ...>" % (
            hdnt.common().name, len(hdnt.common()), ", ".join("'%s'" % name for name in hdnt.common().names[:5])))
        self.assertEqual(repr(gate.pins[0].properties), "<properties of hdnt.Pin '%s' (0)>" % gate.pins[0].name)
        views = [library.blocks, bank.pins]
        library.close()
        self.assertEqual([repr(view) for view in views],
                         ["<blocks of hdnt.Library (gone)>", "<pins of hdnt.Block (gone)>"])

    def test_representations_of_every_kind(self):
        shown = {}
        visitor = type("Showing", (hdnt.Visitor,), {
            name: lambda self, node: shown.setdefault(type(node).__name__, repr(node)[6:-1])
            for name in dir(hdnt.Visitor) if name.startswith("visit_")})()
        library = self.of("""library "l" { function bool f(int); block "OWN" { pin "D" input clock;
            property 4'h "P" { default = 4'hA } } mapsto { f(1); inst "u" "OWN"; signal "s" : "D", "u" "~D";
            assign block property "u" "P" "%s"; assign pin property "u" "D", "L" 1.5;
            if (true && 1 < 2) { inst "v" "OWN"; } } }""" % ("x" * 70))
        library.accept(visitor)
        self.assertEqual(shown, {kind: ("%s %s" % (kind, facts)).rstrip() for kind, facts in {
            "Library": "'l' of 1 block", "Function": "'f'", "Block": "'OWN' 1 pin, 1 property", "Bus": "'D' input clock",
            "Pin": "'D' input clock", "Property": "'P' bithex, default \"4'hA\"", "Netlist": "mapsto of 1 instance",
            "Call": "'f(1);'", "IntConstant": "'1'", "Instance": "'u' of 'OWN'", "Signal": "'s'",
            "Connect": "'s' to 2 pins", "PinRef": "'D'", "PinAssign": "'L' of 'u.D'", "DoubleConstant": "'1.500000'",
            "BlockAssign": "'P' of 'u'", "StringConstant": "'\"%s...'" % ("x" * 59), "If": "'true && 1 < 2'",
            "BoolConstant": "'true'", "Operation": "'true && 1 < 2'", "Statements": "of 1 statement"}.items()})

    def of(self, text):
        with tempfile.NamedTemporaryFile("w", suffix=".btl") as file:
            file.write(text)
            file.flush()
            return hdnt.load(file.name)

    def test_names_are_found_in_any_case_and_types_in_the_common_library(self):
        library = self.of("""library "l" { block "Own" { pin "D[1:0]" input; property int "Size" { default = 1 } } mapsto {
            inst "a" "oWN"; inst "b" "add_chain_8"; inst "c" "NO_SUCH"; } }""")
        block = library["Own"]
        for view, item, written in ((library, block, "Own"), (library.blocks, block, "Own"), (library.all_blocks, block, "Own"),
                                    (block.buses, block.buses[0], "D"), (block.pins, block.pins[1], "D[0]"),
                                    (block.properties, block.properties[0], "Size")):
            for name in (written, written.upper(), written.lower()):
                self.assertIs(view[name], item)
                self.assertIn(name, view)
                self.assertIs(view.get(name), item)
        self.assertEqual((library.find("OWN"), library.starting_with("oW")[:]), (block, [block]))
        self.assertEqual([one.type_block for one in block.netlist.instances],
                         [block, hdnt.common()["ADD_CHAIN_8"], None])

    def test_what_fails_while_the_last_handle_goes_is_what_is_raised(self):
        class Closing:
            def __index__(self):
                library.close()
                raise ZeroDivisionError("own")
        before, library = hdnt.live_handles(), self.of('library "l" { block "OWN" { } }')
        with self.assertRaisesRegex(ZeroDivisionError, "own"):
            library.blocks[Closing()]
        with self.assertRaisesRegex(KeyError, "NONE"):
            self.of('library "l" { block "OWN" { } }')["NONE"]
        del library, Closing
        self.assertEqual(hdnt.live_handles(), before)

    def test_views_are_equal_when_they_are_of_the_same(self):
        block = hdnt.common()["ADD_CHAIN_8"]
        self.assertEqual(block.pins, block.pins)
        self.assertEqual(hash(block.pins), hash(block.pins))
        self.assertNotEqual(block.pins, block.buses)

    def test_pins_declared_in_small_letters_are_found(self):
        folder = os.path.join(os.environ["NTL_SOURCE_DIR"], "data", "examples")
        library = hdnt.load(os.path.join(folder, "first.btl"))
        for pin in itertools.chain.from_iterable(block.pins for block in library.blocks):
            self.assertIs(pin.block.pins[pin.name], pin)


class Identity(unittest.TestCase):
    def test_the_same_object_on_every_way(self):
        library = hdnt.common()
        for block in library.blocks:
            self.assertIs(library[block.name], block)
            self.assertIs(block.library, library)
            for bus in block.buses:
                for pin in bus.pins:
                    self.assertIs(pin.bus, bus)
                    self.assertIs(pin.block, block)
                    if pin.index < len(block.pins):
                        self.assertIs(block.pins[pin.index], pin)
            for one in block.properties:
                self.assertIs(one.owner, block)
            if block.netlist:
                self.assertIs(block.netlist.block, block)
                for connect in (signal.connect for signal in block.netlist.signals if signal.connect):
                    self.assertIs(connect.signal, [s for s in block.netlist.signals if s.connect is connect][0])

    def test_walks_leave_nothing_behind(self):
        def walk(node, names):
            for name in names:
                value = getattr(node, name)
                for item in value if isinstance(value, (hdnt.View, tuple)) else [value]:
                    if isinstance(item, hdnt.Node) and item is not node and not isinstance(item, (hdnt.Library,)):
                        repr(item)

        library = hdnt.common()
        fields = functools.lru_cache(None)(lambda kind: [n for n in dir(kind) if not n.startswith("_") and
                                                         not callable(getattr(kind, n))])
        before = None
        for _ in range(3):
            for block in library.blocks:
                for node in [block] + block.pins[:] + block.buses[:] + block.properties[:]:
                    walk(node, fields(type(node)))
                if block.netlist:
                    walk(block.netlist, fields(hdnt.Netlist))
            del block, node
            gc.collect()
            after = (sys.getrefcount(library), hdnt.live_handles())
            if before:
                self.assertEqual(after, before)
            before = after

    def test_handles_are_weakly_known_and_hashable(self):
        block = hdnt.common()["FLOP_RISE"]
        known = weakref.WeakSet([block])
        self.assertEqual({block: 1}[hdnt.common()["FLOP_RISE"]], 1)
        self.assertEqual(len(known), 1)
        del block
        self.assertEqual(len(known), 0)

    def test_no_visitor_asks_for_a_mapping_that_could_replace_what_it_walks(self):
        self.addCleanup(hdnt.release)
        block = hdnt.common()["FLOP_RETAIN"]
        walked = block.netlist_for("harbor")
        refused = []

        class Asking(hdnt.Visitor):
            def visit_instance(self, node):
                self.seen = block.netlist is walked and hdnt.common()["ADD_CHAIN_8"].netlist.alive
                for ask in (lambda: block.netlist_for("meadow"), block.expand,
                            lambda: hdnt.common()["ADD_CHAIN_8"].expand(deep=True)):
                    with unittest.TestCase().assertRaises(hdnt.Error) as caught:
                        ask()
                    refused.append(str(caught.exception))
        visitor = Asking()
        walked.accept(visitor)
        self.assertEqual((len(refused), visitor.seen), (9, True))
        self.assertIn("ask before", refused[0])
        self.assertIsNot(block.netlist_for("meadow"), walked)
        self.assertFalse(walked.alive)

    def test_nobody_makes_or_changes_handles(self):
        block = hdnt.common()["FLOP_RISE"]
        for kind in (hdnt.Node, hdnt.Block, hdnt.Library, hdnt.View, hdnt.Expression):
            with self.assertRaises(TypeError):
                kind()
        for name in ("name", "other"):
            with self.assertRaises(AttributeError):
                setattr(block, name, "X")
        own = type("Own", (hdnt.Node,), {"__slots__": ["note"]})
        with self.assertRaises(TypeError):
            own()
        with self.assertRaises(TypeError):
            hdnt.Block.pin_tuples(block.pins[0])


if __name__ == "__main__":
    unittest.main()
