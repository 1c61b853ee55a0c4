#!/usr/bin/env tclsh
# Every block whose mapping uses a block, directly or by others.
#
#     maps_to.tcl BLOCK ?LIBRARY?      in the common library without one
package require Tcl 8.6
package require hdnt

# Which blocks have a mapping with an instance of each, those inside statements too.
proc users {library} {
    set users [dict create]
    $library visit visit_block {apply {{block} {
        upvar 1 current current
        set current [$block name]
    }}} visit_instance {apply {{instance} {
        upvar 1 current current users users
        set used [string toupper [$instance type_name]]
        if {![dict exists $users $used] || $current ni [dict get $users $used]} {
            dict lappend users $used $current
        }
    }}}
    return $users
}

# The blocks, each with the number of mappings on the shortest way.
proc mapped_to {library name} {
    set users [users $library]
    set distance [dict create]
    set seen [dict create [string toupper $name] 1]
    set front [list $name]
    for {set steps 1} {[llength $front]} {incr steps} {
        set found {}
        foreach used $front {
            set used [string toupper $used]
            foreach user [expr {[dict exists $users $used] ? [dict get $users $used] : {}}] {
                if {![dict exists $seen [string toupper $user]]} {
                    dict set seen [string toupper $user] 1
                    dict set distance $user $steps
                    lappend found $user
                }
            }
        }
        set front $found
    }
    return $distance
}

if {[llength $argv] ni {1 2}} {
    puts stderr "usage: maps_to.tcl BLOCK ?LIBRARY?"
    exit 1
}
lassign $argv name path
set library [expr {$path eq "" ? [hdnt::common] : [hdnt::load $path]}]
set block [$library find $name]
if {$block eq ""} {
    puts stderr "no block '$name'"
    exit 1
}
dict for {user steps} [mapped_to $library [$block name]] {
    puts "[string repeat {  } [expr {$steps - 1}]]$user"
}
