#!/bin/sh
# validate.sh TOOL SOURCES     holds every page of the guide of the shipped library against html-validate's rules
set -eu
cd "$(dirname "$0")"
validate=node_modules/.bin/html-validate
if ! command -v node >/dev/null || ! [ -x "$validate" ]; then
    echo "html-validate is not installed: npm ci"
    exit 77
fi
folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT
"$1" guide "$folder/guide" --compare "$2/data/simulation.btl"
"$validate" --config rules.cjs "$folder/guide"
