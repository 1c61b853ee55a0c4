#!/usr/bin/env tclsh
# A table of all blocks with their pins and properties, by group.
#
#     block_table.tcl ?LIBRARY?      the common library without an argument
package require Tcl 8.6
package require hdnt

proc table {library} {
    set groups [dict create]
    foreach block [$library blocks] {
        set group [join [lmap one [list [$block group] [$block subgroup]] {if {$one eq ""} continue; set one}] :]
        set counts [list [llength [$block pins -names]] [llength [$block buses -names]] \
            [llength [$block properties -names]]]
        dict lappend groups [expr {$group eq "" ? "-" : $group}] [list [$block name] {*}$counts]
    }
    set lines [list [format "%-36s %6s %6s %11s" "GROUP, BLOCK" PINS BUSES PROPERTIES]]
    foreach group [lsort [dict keys $groups]] {
        set rows [dict get $groups $group]
        set sums [lmap column {1 2 3} {tcl::mathop::+ {*}[lmap row $rows {lindex $row $column}]}]
        lappend lines [format "%-36s %6d %6d %11d" $group {*}$sums]
        foreach row $rows {
            lappend lines [format "  %-34s %6d %6d %11d" {*}$row]
        }
    }
    join $lines \n
}

puts [table [expr {[llength $argv] ? [hdnt::load [lindex $argv 0]] : [hdnt::common]}]]
