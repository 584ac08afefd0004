#!/bin/sh
# checkListed.sh NM LIBRARY LIST... - does one of the LISTs name each class that LIBRARY exports
#
# Classes are known by their tables of operations; the functions and objects outside classes, type
# records among them, are looked up as well. Of the members of classes nothing is asked: private ones
# are exported, too, and belong into no list. The lists are as for checkExports.sh.
set -eu
export LC_ALL=C

nm=$1
library=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

sort -u "$@" >"$work/listed"
"$nm" -DC --defined-only "$library" >"$work/nm"
sed -n -e 's/^[0-9a-fA-F]* *V \(vtable for .*\)/\1/p' \
    -e 's/^[0-9a-fA-F]* *[TDBRW] \([A-Za-z][A-Za-z_0-9]*\((.*)\)\{0,1\}\)$/\1/p' "$work/nm" |
    sort -u >"$work/exported"
comm -23 "$work/exported" "$work/listed" >"$work/missing"

exported=$(wc -l <"$work/exported")
missing=$(wc -l <"$work/missing")
if [ "$missing" -ne 0 ] || [ "$exported" -eq 0 ]; then
    echo "no list names $missing of the $exported classes, functions and objects of $library:"
    cat "$work/missing"
    exit 1
fi
echo "all $exported classes, functions and objects are listed"
