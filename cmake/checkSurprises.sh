#!/bin/sh
# checkSurprises.sh SOURCE_DIR COMPILER [OPTION...] - are operations that surprise marked, and no others
#
# Each line of tests/std/headers/surprises.cpp that ends in "// warns: TEXT" is warned of, with that
# text, where KELVOFXDS_WARN_SURPRISES is defined; no other line is, and none without it.
set -eu
export LC_ALL=C

source=$1
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
program=$source/tests/std/headers/surprises.cpp

"$@" -std=c++17 -Wall -Wextra -Wno-unused -Wno-unused-value -I"$source" -fsyntax-only "$program" \
    2>"$work/said" || { cat "$work/said"; exit 1; }
grep -E "^$program:[0-9]+:[0-9]+: warning: " "$work/said" >"$work/warnings" || true

line=0
failed=0
while IFS= read -r text; do
    line=$((line + 1))
    said=$(grep -E "^$program:$line:" "$work/warnings" || true)
    expected=$(printf '%s\n' "$text" | sed -n 's,.*// warns: ,,p')
    if [ -n "$expected" ]; then
        if ! printf '%s\n' "$said" | grep -qF -e "$expected"; then
            echo "line $line is to warn of \"$expected\": $said"
            failed=1
        fi
    elif [ -n "$said" ]; then
        echo "line $line is not to warn: $said"
        failed=1
    fi
done <"$program"
if [ "$line" -lt 20 ] || ! grep -q deprecated "$work/warnings"; then
    echo "there is nothing to compare"
    failed=1
fi

grep -v '^#define KELVOFXDS_WARN_SURPRISES' "$program" >"$work/plain.cpp"
if "$@" -std=c++17 -I"$source" -fsyntax-only "$work/plain.cpp" 2>&1 | grep deprecated; then
    echo "the above is marked although nobody asked"
    failed=1
fi
exit "$failed"
