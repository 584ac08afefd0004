#!/bin/sh
# session.sh GDB SCRIPT PROGRAM: lets gdb do what is in session.gdb and compares what it shows with
# session.expected. Exits with 77 where gdb cannot be had.
set -eu
here=$(dirname "$0")
. "$here/gdb.sh"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Neither the numbers of gdb's history nor the places where it stopped are tested. What class a
# destroyed object is left as depends on what the compiler leaves out.
run_gdb -x "$script" -x "$here/session.gdb" "$program" | without_chance |
    sed -e '1,/^== /{/^== /!d}' -e 's/^\$[0-9]* = //' \
        -e '/^\(Breakpoint [0-9]*,\|#1  \|[0-9][0-9]*\t\)/d' \
        -e '/^Type "/d' -e '/^Command name abbreviations/d' \
        -e 's/at present of class fx\(XDR\|RC\)Obj/at present of class BASE/' >"$work/shown"
diff "$here/session.expected" "$work/shown"
