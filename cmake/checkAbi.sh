#!/bin/sh
# checkAbi.sh [-w] BASELINE HEADERS LISTS LIBRARY - has LIBRARY the binary interface of BASELINE
#
# LIBRARY has debug information of g++'s. BASELINE is what abidw writes of it, compressed; -w writes
# it anew, and first prints what has changed. HEADERS is the folder of the library's sources: types
# that no public header shows are left out. LISTS is the folder of the lists of exported symbols.
# Differences are printed, additions too; the last line is their number, and the exit status 1 if
# there are any.
set -eu
export LC_ALL=C

is_written=
[ "${1-}" != -w ] || { is_written=1 && shift; }
baseline=$1
headers=$2
lists=$3
library=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# abidw knows a header by the last part of its name.
mkdir "$work/headers"
find "$headers" -name '*.h' ! -name '*Internal.h' -exec cp {} "$work/headers" \;

# Two kinds of symbols differ from build to build: those of the sanitizers, and weak functions that
# no list names. Those are inline ones of the library's own sources, which are exported where the
# compiler has not put them into their callers.
cat "$lists"/*.txt >"$work/listed"
nm -D --defined-only "$library" | sed -n 's/^[0-9a-f]* W //p' >"$work/weak"
c++filt <"$work/weak" >"$work/weak-names"
{
    echo '[suppress_variable]'
    echo '  symbol_name_regexp = ^__odr_asan'
    echo '  drop = yes'
    paste -d '\t' "$work/weak" "$work/weak-names" |
        awk -F '\t' 'NR == FNR { listed[$0] = 1; next }
            !($2 in listed) {
                printf "[suppress_function]\n  symbol_name = %s\n  drop = yes\n", $1
            }' "$work/listed" -
} >"$work/left-out"

abidw --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed --no-parameter-names \
    --no-write-default-sizes --type-id-style hash --drop-undefined-syms \
    --exported-interfaces-only --drop-private-types --headers-dir "$work/headers" \
    --suppressions "$work/left-out" --out-file "$work/new.abi" "$library"
# A library without debug information would be described by its symbols alone.
if ! grep -q "<class-decl name='fxStr' size-in-bits='64'" "$work/new.abi"; then
    echo "$library has no debug information that abidw can read"
    exit 2
fi

status=0
if [ -f "$baseline" ]; then
    gzip -dc "$baseline" >"$work/old.abi"
    abidiff --harmless "$work/old.abi" "$work/new.abi" >"$work/differences" || status=$?
else
    echo "there is no baseline" >"$work/differences"
    status=1
fi
cat "$work/differences"
if [ "$is_written" ]; then
    gzip -9nc "$work/new.abi" >"$baseline"
    echo "written: $baseline"
    exit 0
fi
# Of the lines "... summary: 1 Removed, 2 Changed (3 filtered out), 0 Added ...".
count=$(sed -n 's/^[A-Z][a-z ]* summary: //p' "$work/differences" | tr , '\n' |
    awk '{ n += $1 } END { print n + 0 }')
# Others, such as another soname, are in no summary.
if [ "$status" -ne 0 ] && [ "$count" -eq 0 ]; then count=1; fi
echo "$count differences"
[ "$count" -eq 0 ]
