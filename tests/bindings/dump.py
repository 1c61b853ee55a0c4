"""Every block, pin and property of the shipped libraries as plain text, as dump.cpp has it."""
import sys

import hdnt

PROPERTY = """name type type_number default minimum maximum values bit_width adjusted_bit_width precision units description
declared_description index has_minimum has_maximum is_test is_simulation is_constraints_only is_read_only is_hidden
is_pad_constraint is_mux_control is_pin_inversion is_nibble_sized""".split()
BUS = "name base_name range width direction type required function is_test is_abstract".split()
PIN = "name plain_name base_name bit index bus direction type required function is_test is_abstract".split()
BLOCK = """name has_own_netlist netlist_kind cellview is_registered maturity is_test is_internal is_tie_capable group subgroup
legacy_group legacy_subgroup can_tie_pins uses_nibble_sized_hex can_be_pseudo_differential architectures
master_driver_pin shadow_pins supports_internal_pins""".split()


def text(value):
    if value is None:
        return ""
    if isinstance(value, hdnt.Bus):
        return value.name
    if isinstance(value, tuple):
        return "|".join(map(text, value))
    if isinstance(value, bool):
        return str(int(value))
    return "%.17g" % value if isinstance(value, float) else str(value)


def line(*facts):
    sys.stdout.write("".join(text(fact) + "\t" for fact in facts) + "\n")


def fields(node, names):
    return [getattr(node, name) for name in names]


def dump_property(owner, one):
    line(owner, *fields(one, PROPERTY), one.location.line, one.location.column)


def dump(block):
    line("block", *fields(block, BLOCK), block.location.line)
    for bus in block.buses:
        line("bus", *fields(bus, BUS))
        for one in bus.properties:
            dump_property("pinproperty", one)
    for pin in block.pins:
        line("pin", *fields(pin, PIN), len(pin.properties))
    for one in block.properties:
        dump_property("property", one)
    netlist = block.netlist
    if netlist:
        line("netlist", netlist.section, len(netlist.signals), len(netlist.connects), len(netlist.ifs),
             netlist.referenced_instance)
        for instance in netlist.instances:
            line("instance", instance.name, instance.type_name)


for library in (hdnt.common(), hdnt.simulation()):
    line("library", library.name, len(library), len(library.all_blocks))
    for block in library.blocks:
        dump(block)
