#!/bin/sh
# checkExports.sh NM LIBRARY LIST - is every symbol of LIST exported by LIBRARY
#
# LIST holds one demangled symbol per line, exactly as `nm -DC` prints it; blank lines and lines
# that start with # are skipped. Missing symbols are printed and make the exit status 1.
set -eu
export LC_ALL=C

nm=$1
library=$2
list=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$nm" -DC --defined-only "$library" >"$work/nm"
sed 's/^[0-9a-fA-F]* *[A-Za-z] //' "$work/nm" | sort -u >"$work/exported"
sed -e 's/[[:space:]]*$//' -e '/^#/d' -e '/^$/d' "$list" | sort -u >"$work/wanted"
comm -13 "$work/exported" "$work/wanted" >"$work/missing"

wanted=$(wc -l <"$work/wanted")
missing=$(wc -l <"$work/missing")
if [ "$wanted" -eq 0 ]; then
    echo "$list names no symbol"
    exit 1
fi
if [ "$missing" -ne 0 ]; then
    echo "$missing of $wanted symbols are not exported by $library:"
    cat "$work/missing"
    exit 1
fi
echo "all $wanted symbols are exported"
