#!/bin/sh
# checkRefused.sh SOURCE LIBRARY COMPILER [OPTION...] - is a mistake found when it is made
#
# SOURCE, a program, compiles and links as it is; with REFUSED defined it has a mistake, and does
# not, for the reason that its first line gives: // refused: TEXT
set -eu
export LC_ALL=C

source=$1
library=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

text=$(sed -n '1s,^// refused: ,,p' "$source")
if [ -z "$text" ]; then
    echo "the first line of $source gives no reason"
    exit 1
fi
if ! "$@" "$source" -o "$work/program" "$library"; then
    echo "$source does not compile without its mistake"
    exit 1
fi
if "$@" -DREFUSED "$source" -o "$work/program" "$library" >"$work/said" 2>&1; then
    echo "$source compiles with its mistake"
    exit 1
fi
if ! grep -qF -e "$text" "$work/said"; then
    echo "$source is not refused for \"$text\" but for:"
    cat "$work/said"
    exit 1
fi
