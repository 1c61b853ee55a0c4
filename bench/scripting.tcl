# The walks of scripting.py over the same corpus, in Tcl: `scripting.tcl CORPUS` prints its times as JSON.
package require hdnt

proc walk {library} {
    set count 0
    foreach block [$library blocks] {
        incr count [expr {[$block name] ne ""}]
        foreach pin [$block buses] {
            incr count [expr {[$pin base_name] ne "" && [$pin direction] ne ""}]
            $pin range
            $pin type
        }
        foreach one [$block properties] {
            $one name
            $one type
            $one default
            incr count
        }
    }
    return $count
}

proc bulk {library} {
    set count 0
    foreach block [$library blocks] {
        incr count [expr {[$block name] ne ""}]
        foreach pin [$block bus_tuples] {
            lassign $pin name range direction
            incr count [expr {$name ne "" && $direction ne ""}]
        }
        dict for {name value} [$block property_dict] {
            incr count
        }
    }
    return $count
}

foreach {name script} {
    load {set library [hdnt::load [lindex $argv 0]]}
    bulk {set counts(bulk) [bulk $library]}
    walk {set counts(walk) [walk $library]}
    close {$library close}
} {
    set begin [clock microseconds]
    eval $script
    lappend times "\"$name\": [expr {([clock microseconds] - $begin) / 1e6}]"
}
puts "{[join $times {, }], \"count\": $counts(walk), \"bulk count\": $counts(bulk)}"
