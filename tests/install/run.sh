#!/bin/sh
# Installs a build below a fresh prefix and uses it as a stranger would: the programs shown in docs/embedding.md, built
# with find_package and with pkg-config, run from another folder.
#   run.sh BUILD_DIR SOURCE_DIR
set -eu
build=$1
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() {
    echo "install test: $*" >&2
    exit 1
}

cmake --install "$build" --prefix "$work/prefix" >/dev/null
# Each fenced text to a file of its own: program1.cpp, program2.cpp, ... Those with a main() are programs.
awk -v base="$work/program" '/^```cpp$/ { ++n; inside = 1; next } /^```$/ { inside = 0 } inside { print > (base n ".cpp") }' \
    "$source/docs/embedding.md"
programs=$(cd "$work" && grep -l '^int main()' program*.cpp | sed 's/\.cpp$//')
[ "$(echo "$programs" | wc -l)" -ge 3 ] || fail "docs/embedding.md shows no three programs"

mkdir "$work/project"
for program in $programs; do
    cp "$work/$program.cpp" "$work/project/"
done
cat >"$work/project/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(stranger LANGUAGES CXX)
find_package(hdnt 0.3 CONFIG REQUIRED)
file(GLOB sources program*.cpp)
foreach(source ${sources})
  cmake_path(GET source STEM program)
  add_executable(${program} ${source})
  target_link_libraries(${program} PRIVATE hdnt::hdnt)
endforeach()
END
cmake -G Ninja -S "$work/project" -B "$work/project/build" -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/project/build" >/dev/null
for program in $programs; do
    (cd / && "$work/project/build/$program") >>"$work/first.txt"
done
for line in 'three_faults.btl:10:5: Pin D\[3\] is being redefined. \[pin-redefined\]$' '^first has 2 blocks$' '^[0-9]* blocks$' '^CLK: input clock$' "^INIT: 2'b11 is wider than 1 bit; write " '^A\[7:0\] has bits 7 to 0$' \
    '^library "simulation" {$' '^  // type 1558$' '^[1-9][0-9]* of [0-9]* blocks have a clock$' \
    "^INIT is 1'"; do
    grep -q "$line" "$work/first.txt" || fail "the programs print no line like $line: $(cat "$work/first.txt")"
done

# The library for authors, by its component.
mkdir "$work/author"
cat >"$work/author/program.cpp" <<'END'
#include <author/author.h>
#include <cstdio>
#include <hdnt/hdnt.h>
int main() {
    std::string neat;
    HDNTFormatProblem problem;
    const hdnt::Loaded loaded = hdnt::load(ConfigBase::getDataLocation("examples") + "/unregistered.btl");
    for (const hdnt::Diagnostic& said : hdnt::lint(*loaded.library)) std::puts(said.code.c_str());
    return HDNTFormatter::format("library \"l\"{}", neat, problem) ? 0 : 1;
}
END
cat >"$work/author/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(author LANGUAGES CXX)
find_package(hdnt 0.3 CONFIG REQUIRED COMPONENTS author)
find_package(hdnt 0.3 CONFIG QUIET COMPONENTS none)
if(hdnt_FOUND)
  message(FATAL_ERROR "a component that there is not was found")
endif()
add_executable(program program.cpp)
target_link_libraries(program PRIVATE hdnt::author)
END
cmake -G Ninja -S "$work/author" -B "$work/author/build" -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/author/build" >/dev/null
[ "$("$work/author/build/program")" = unregistered-block ] || fail "the library for authors does not answer"

PKG_CONFIG_PATH=$(dirname "$(find "$work/prefix" -name hdnt.pc)")
export PKG_CONFIG_PATH
for program in $programs; do
    # shellcheck disable=SC2046 # lists of words
    ${CXX:-c++} -std=c++20 "$work/$program.cpp" -o "$work/$program" $(pkg-config --cflags --libs hdnt) \
        -Wl,-rpath,"$(pkg-config --variable=libdir hdnt)"
    (cd /tmp && "$work/$program") >>"$work/second.txt"
done
cmp "$work/first.txt" "$work/second.txt" || fail "programs built with pkg-config print something else"

[ -x "$work/prefix/bin/ntl" ] && (cd / && "$work/prefix/bin/ntl" check >/dev/null)
for text in README.md docs/families.md docs/ntl.md; do
    [ -f "$work/prefix/share/doc/hdnt/$text" ] || fail "$text is not installed"
done
for package in vim/syntax/ntl.vim emacs/ntl-mode.el kakoune/ntl.kak vscode/package.json; do
    [ -f "$work/prefix/share/hdnt/editors/$package" ] || fail "editors/$package is not installed"
done
# The Python package, with nothing but the folder it was installed into; a build without it installs none.
package=$(find "$work/prefix" -type d -path '*-packages/hdnt')
if [ -n "$package" ]; then
    (cd / && PYTHONPATH=$(dirname "$package") /usr/bin/python3 -c '
import hdnt, os, sys
assert hdnt.__file__.startswith(sys.argv[1]), hdnt.__file__
assert hdnt.common()["FLOP_RISE"].location.file.startswith(os.path.realpath(sys.argv[1]))
assert all(hdnt.check_all())' "$work/prefix") || fail "the Python package does not work where it is installed"
fi
# The Tcl package likewise.
package=$(find "$work/prefix" -name pkgIndex.tcl)
if [ -n "$package" ] && command -v tclsh8.6 >/dev/null; then
    cat >"$work/stranger.tcl" <<'END'
package require hdnt
set place [dict get [[hdnt::common] block FLOP_RISE location] file]
if {![string match [file normalize [lindex $argv 0]]/* $place]} {error $place}
foreach one [hdnt::check_all {}] {
    if {![dict get $one ok]} {error $one}
}
END
    (cd / && TCLLIBPATH=$(dirname "$(dirname "$package")") tclsh8.6 "$work/stranger.tcl" "$work/prefix") ||
        fail "the Tcl package does not work where it is installed"
fi
readelf -d "$work/prefix/lib/libhdnt.so" | grep -q 'SONAME.*libhdnt\.so\.0\.3\]' || fail "the library has no soname"
echo "install test: passed"
