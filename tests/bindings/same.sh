#!/bin/sh
# What a package says of everything in the shipped libraries is what the C++ interface says.
#   same.sh REFERENCE OUTPUT COMMAND [ARGUMENT...]
set -eu
reference=$1
output=$2
shift 2
"$@" >"$output"
[ "$(wc -l <"$reference")" -gt 3000 ] || { echo "there is too little in $reference" >&2; exit 1; }
cmp "$reference" "$output" || { diff "$reference" "$output" | head -20 >&2; exit 1; }
