#!/bin/sh
# document.sh GDB SCRIPT PROGRAM DOCUMENT: gives gdb the commands of the sessions in a document, the
# blocks with lines that begin with "(gdb) ", and compares what it shows with what stands there; and
# the document's program with PROGRAM's source. Exits with 77 where gdb cannot be had.
set -eu
here=$(dirname "$0")
. "$here/gdb.sh"
document=$4

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

awk '/^```/ { inside = $0 == "```cpp"; next } inside' "$document" >"$work/program"
diff "$here/phones.cpp" "$work/program"

# The blocks of text, from the first command on.
awk '/^```/ { inside = $0 == "```text"; began = 0; next }
     inside && /^\(gdb\) / { began = 1 }
     inside && began' "$document" | without_chance >"$work/expected"
[ -s "$work/expected" ]

# Each command is shown as if it had been typed.
grep '^(gdb) ' "$work/expected" | cut -c7- | while IFS= read -r command; do
    printf 'echo (gdb) %s\\n\n%s\n' "$command" "$command"
done >"$work/commands"
run_gdb -d "$here" -x "$script" -x "$work/commands" "$program" | without_chance | sed -n '/^(gdb) /,$p' |
    sed -e '/^$/d' >"$work/shown"
sed -i -e '/^$/d' "$work/expected"
diff "$work/expected" "$work/shown"
