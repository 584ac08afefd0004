#!/bin/sh
# checkExports.sh NM LIBRARY LIST - is every symbol of LIST exported by LIBRARY
#
# LIST holds one demangled symbol per line, as `nm -DC` prints it and sorted, each once; blank lines
# and lines that start with # are skipped. A last argument of the type va_list is written so, since
# what it is differs from machine to machine. Missing symbols are printed and make the exit status 1.
set -eu
export LC_ALL=C

nm=$1
library=$2
list=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

sed -e '/^#/d' -e '/^$/d' "$list" >"$work/wanted"
if ! [ -s "$work/wanted" ]; then
    echo "$list names no symbol"
    exit 1
fi
if ! sort -uc "$work/wanted"; then
    echo "$list is not sorted, or names a symbol twice; put it right with LC_ALL=C sort -u"
    exit 1
fi

"$nm" -DC --defined-only "$library" >"$work/nm"
# Every name, and once more with va_list for what a last argument may be by that name: on i386, on
# PowerPC and on ARM.
sed -e 's/^[0-9a-fA-F]* *[A-Za-z] //' -e p \
    -e 's/\(char\*\|__va_list_tag\*\|std::__va_list\))$/va_list)/' "$work/nm" |
    sort -u >"$work/exported"
comm -13 "$work/exported" "$work/wanted" >"$work/missing"

wanted=$(wc -l <"$work/wanted")
missing=$(wc -l <"$work/missing")
if [ "$missing" -ne 0 ]; then
    echo "$missing of $wanted symbols are not exported by $library:"
    cat "$work/missing"
    exit 1
fi
echo "all $wanted symbols are exported"
