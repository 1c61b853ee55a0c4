# Every block, pin and property of the shipped libraries as plain text, as dump.cpp has it.
package require hdnt
chan configure stdout -encoding utf-8

set PROPERTY {name type type_number default minimum maximum values bit_width adjusted_bit_width precision units description
    declared_description index has_minimum has_maximum is_test is_simulation is_constraints_only is_read_only is_hidden
    is_pad_constraint is_mux_control is_pin_inversion is_nibble_sized}
set BUS {name base_name range width direction type required function is_test is_abstract}
set PIN {name plain_name base_name bit index bus direction type required function is_test is_abstract}
set BLOCK {name has_own_netlist netlist_kind cellview is_registered maturity is_test is_internal is_tie_capable group subgroup
    legacy_group legacy_subgroup can_tie_pins uses_nibble_sized_hex can_be_pseudo_differential architectures
    master_driver_pin shadow_pins supports_internal_pins}

proc line {args} {
    puts "[join $args \t]\t"
}

# Lists are joined; doubles have all their digits.
proc text {node name} {
    set value [$node $name]
    if {$name in {default minimum maximum values} && [$node type] eq "double"} {
        set value [lmap one $value {format %.17g $one}]
    }
    switch $name {
        values - range - architectures - shadow_pins {
            return [join $value |]
        }
        bus {
            return [$value name]
        }
    }
    return $value
}
proc fields {node names} {
    lmap name $names {text $node $name}
}

proc dumpProperty {owner one} {
    set place [$one location]
    line $owner {*}[fields $one $::PROPERTY] [dict get $place line] [dict get $place column]
}

proc dump {block} {
    line block {*}[fields $block $::BLOCK] [dict get [$block location] line]
    foreach bus [$block buses] {
        line bus {*}[fields $bus $::BUS]
        foreach one [$bus properties] {
            dumpProperty pinproperty $one
        }
    }
    foreach pin [$block pins] {
        line pin {*}[fields $pin $::PIN] [llength [$pin properties]]
    }
    foreach one [$block properties] {
        dumpProperty property $one
    }
    set netlist [$block netlist]
    if {$netlist ne ""} {
        line netlist [$netlist section] [llength [$netlist signals]] [llength [$netlist connects]] \
            [llength [$netlist ifs]] [$netlist referenced_instance]
        foreach instance [$netlist instances] {
            line instance [$instance name] [$instance type_name]
        }
    }
}

foreach library [list [hdnt::common] [hdnt::simulation]] {
    line library [$library name] [llength [$library blocks -names]] [llength [$library all_blocks -names]]
    foreach block [$library blocks] {
        dump $block
    }
}
