#!/bin/sh
# Two programs have to write the same, line by line: same.sh FIRST SECOND ARGUMENT...
set -eu
first=$1
second=$2
shift 2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$first" "$@" >"$folder/first"
"$second" "$@" >"$folder/second"
[ "$(wc -l <"$folder/first")" -ge "$1" ] || { echo "too few lines" >&2; exit 1; }
cmp "$folder/first" "$folder/second" || { diff "$folder/first" "$folder/second" | cut -c1-2000 | head -20 >&2; exit 1; }
