#!/usr/bin/env tclsh
# C++ enumerations for the properties whose values are listed, and the text of each value.
#
#     value_enums.tcl ?LIBRARY? > cells.h      the common library without an argument
package require Tcl 8.6
package require hdnt

# A name for a value: RISE, V_8_H48 for 8'h48, MINUS_1 for -1.
proc member {value} {
    set text [string toupper [string trim [regsub -all {\W+} [string map {- MINUS_} $value] _] _]]
    if {$text eq ""} {
        return EMPTY
    }
    expr {[string match {[A-Z]*} $text] ? $text : "V_$text"}
}

proc members {values} {
    set names [dict create]
    foreach value [dict keys [dict create {*}[concat {*}[lmap value $values {list $value 1}]]]] {
        set name [member $value]
        while {[dict exists $names $name]} {
            append name _
        }
        dict set names $name $value
    }
    return $names
}

proc quoted {text} {
    return "\"[string map {\\ \\\\ \" \\\"} $text]\""
}

proc source_of {library} {
    set lines [list "// Made from the library [$library name]." "#pragma once"]
    foreach block [$library blocks] {
        foreach property [$block properties] {
            if {![llength [$property values]]} continue
            set names [members [$property values]]
            set type [$block name]_[$property name]
            lappend lines "" "enum class $type { [join [dict keys $names] {, }] };"
            lappend lines "inline const char* textOf($type value) {"
            lappend lines "    static const char* const texts\[\] = {[join [lmap value [dict values $names] {quoted $value}] {, }]};"
            lappend lines "    return texts\[static_cast<int>(value)\];" "}"
        }
    }
    join $lines \n
}

puts [source_of [expr {[llength $argv] ? [hdnt::load [lindex $argv 0]] : [hdnt::common]}]]
