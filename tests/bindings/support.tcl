# What the files of tests share.
package require Tcl 8.6
package require tcltest 2.5
namespace import ::tcltest::test
tcltest::configure -verbose {body error}
package require hdnt

set root $env(NTL_SOURCE_DIR)
set examples [file join $root data examples]
set GOOD "library \"good\" {\n  block \"FLOP_RISE\" { pin \"D\[1:0\]\" input; pin \"Q\" output; property int \"N\" { min = 0, max = 9, default = 3 } }\n}\n"
set SYNTAX "library \"bad\" {\n  block \"FLOP_RISE\" { pin \"D\" inputt; }\n}\n"
set CONTENT "library \"bad\" {\n  block \"FLOP_RISE\" { pin \"D\" input; pin \"D\" input; }\n}\n"

file tempfile folder
file delete $folder
file mkdir $folder

proc write {name text} {
    set path [file join $::folder $name]
    set channel [open $path wb]
    puts -nonewline $channel $text
    close $channel
    return $path
}

# The error code of a script; empty when it has none.
proc codeOf {script} {
    if {[catch {uplevel 1 $script} result options] == 1} {
        return [dict get $options -errorcode]
    }
    return {}
}

# The first two words of it, which are what is documented.
proc errorOf {script} {
    lrange [uplevel 1 [list codeOf $script]] 0 1
}

proc finish {} {
    file delete -force $::folder
    set failed $::tcltest::numTests(Failed)
    puts "$::tcltest::numTests(Total) tests, $failed failed, $::tcltest::numTests(Skipped) skipped"
    exit [expr {$failed > 0}]
}
