#!/bin/sh
# Holds the colours of an editor against the scanner: on the shipped data, the tests' texts and all keywords.
#   colours.sh TOKENS_PROGRAM SOURCE_DIR EDITOR...     EDITOR reads the files that the file $COLOUR_FILES lists, and
#                                                      writes $COLOUR_OUTPUT as the program does
set -eu
tokens=$1
source=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$tokens" words >"$work/words.btl"
find "$source/data" "$source/tests/corpus" "$source/tests/editors" "$source/tests/writer" "$work" -name '*.btl' | sort >"$work/files"
[ "$(wc -l <"$work/files")" -ge 100 ] || { echo "too few texts" >&2; exit 1; }
xargs -d '\n' "$tokens" <"$work/files" >"$work/expected"
: >"$work/got"
COLOUR_FILES=$work/files COLOUR_OUTPUT=$work/got "$@" </dev/null >"$work/log" 2>&1 ||
    { status=$?; cat "$work"/log "$work"/got >&2; exit $status; }
diff -u "$work/expected" "$work/got" | head -n 80 >"$work/difference"
[ ! -s "$work/difference" ] || { cat "$work/difference" >&2; exit 1; }
