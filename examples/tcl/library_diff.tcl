#!/usr/bin/env tclsh
# What differs between two libraries, what breaks designs first.
#
#     library_diff.tcl OLD NEW      status 1 when something breaks
package require Tcl 8.6
package require hdnt

proc report {before after} {
    set lines {}
    foreach effect {breaking compatible "text only"} {
        foreach one [hdnt::diff $before $after] {
            if {[dict get $one effect] ne $effect} continue
            dict with one {
                set values [join [lmap value [list $old $new] {if {$value eq ""} continue; set value}] " -> "]
                set place [expr {$new_location ne "" ? $new_location : $old_location}]
                set where ""
                if {$place ne ""} {
                    set where " ([dict get $place file]:[dict get $place line]:[dict get $place column])"
                }
                lappend lines "$effect: $element $path $change: $facet $values$where"
            }
        }
    }
    return $lines
}

if {[llength $argv] != 2} {
    puts stderr "usage: library_diff.tcl OLD NEW"
    exit 1
}
try {
    lassign [lmap path $argv {hdnt::load $path}] before after
    set lines [report $before $after]
} trap {HDNT LOAD} message - trap POSIX message {
    puts stderr $message
    exit 1
}
puts [expr {[llength $lines] ? [join $lines \n] : "no difference"}]
exit [expr {[lsearch $lines breaking*] >= 0}]
