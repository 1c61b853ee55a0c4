# The package hdnt: libraries of cell primitives, as they are described in NTL. See docs/scripting.md.
namespace eval ::hdnt {
    namespace export load common simulation release check check_all compare_models diff export_blocks guide import_blocks lint alive libraries parameter architecture \
        add_search_directory register_cells error_count live_handles
    namespace ensemble create
}
load [file join [file dirname [file normalize [info script]]] hdnt_tcl.so] Hdnt

# A handle's command goes with its object. Who uses the name after that is told so, in whatever namespace; all other
# names go where they went before.
proc ::hdnt::Unknown {before name args} {
    CheckName $name
    tailcall {*}$before $name {*}$args
}
apply {{} {
    foreach where {:: ::hdnt} {
        set before [namespace eval $where {namespace unknown}]
        if {$before eq ""} {
            set before ::unknown
        }
        if {[lindex $before 0] ne "::hdnt::Unknown"} {
            namespace eval $where [list namespace unknown [list ::hdnt::Unknown $before]]
        }
    }
}}

# check_all PATHS ?-parent PATH? ?-include DIRECTORIES? ?-tool PATH?
# Checks files and folders, each in a process of its own, with `ntl check`: a dict for each. Without a path, the shipped
# libraries are checked.
proc ::hdnt::check_all {paths args} {
    set options [dict create -parent "" -include {} -tool [Tool]]
    if {[llength $args] % 2} {
        return -code error -errorcode {TCL WRONGARGS} \
            {wrong # args: should be "hdnt check_all paths ?-parent path? ?-include directories? ?-tool path?"}
    }
    foreach {option value} $args {
        if {![dict exists $options $option]} {
            return -code error -errorcode [list TCL LOOKUP INDEX option $option] \
                "bad option \"$option\": must be -include, -parent, or -tool"
        }
        dict set options $option $value
    }
    # Whole paths, since words that begin with < or | mean something else here.
    set command [list [file normalize [dict get $options -tool]] check --format=json]
    set parent [dict get $options -parent]
    if {$parent ne ""} {
        set parent [expr {$parent eq "common" ? $parent : [file normalize $parent]}]
        lappend command --parent $parent
    }
    foreach directory [dict get $options -include] {
        lappend command -I [file normalize $directory]
    }
    lappend command --
    foreach path $paths {
        lappend command [file normalize $path]
    }
    close [file tempfile said]
    set status [catch {
        set pipe [open |[list {*}$command 2> $said]]
        chan configure $pipe -encoding binary -translation binary
        set text [encoding convertfrom utf-8 [read $pipe]]
        catch {close $pipe}
        Parsed $text
    } document]
    set channel [open $said]
    set why [string trim [read $channel]]
    close $channel
    file delete $said
    if {$status} {
        return -code error -errorcode {HDNT ERROR} "ntl check failed: [expr {$why eq "" ? $document : $why}]"
    }
    set results {}
    set inputs [dict get $document inputs]
    if {[llength $inputs] != [llength $paths] || [dict get [lindex $inputs 0] input] eq $parent} {
        set paths {} ;# a parent that is broken comes alone
    }
    foreach one $inputs path $paths {
        lappend results [CheckResult $one [expr {[llength $paths] ? $path : [dict get $one input]}]]
    }
    return $results
}

proc ::hdnt::CheckResult {one input} {
    set diagnostics {}
    foreach entry [dict get $one diagnostics] {
        set diagnostic [dict create severity [dict get $entry severity] code [dict get $entry code]]
        set diagnostic [dict merge $diagnostic [Place [dict get $entry location]]]
        foreach name {message detail text} {
            dict set diagnostic $name [dict get $entry $name]
        }
        set related {}
        foreach other [dict get $entry related] {
            lappend related [dict create location [Place [dict get $other location]] message [dict get $other message]]
        }
        dict set diagnostic related $related
        lappend diagnostics $diagnostic
    }
    dict create input $input ok [expr {[dict get $one reason] eq ""}] block_count [dict get $one blockCount] \
        reason [dict get $one reason] diagnostics $diagnostics
}

proc ::hdnt::Place {location} {
    set place [dict create file "" line "" column "" end_column ""]
    foreach {key name} {file file line line column column endColumn end_column} {
        if {$location ne ""} {
            dict set place $name [dict get $location $key]
        }
    }
    return $place
}

# check PATH ?option value ...?
# Checks one file or folder; see check_all.
proc ::hdnt::check {path args} {
    lindex [check_all [list $path] {*}$args] 0
}
