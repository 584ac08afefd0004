# gdb.sh - what session.sh and document.sh have in common. Arguments: gdb, the script with the
# printers, a program.

gdb=$1
script=$2
program=$3

# skip REASON: ends a test that cannot be done here.
skip() {
    echo "skipped: $*"
    exit 77
}

# run_gdb ARGUMENT...: without anybody's settings, and with nothing that depends on the machine.
run_gdb() {
    LC_ALL=C TERM=dumb "$gdb" -nx -nh -batch -iex "set auto-load no" -iex "set width 0" \
        -iex "set startup-with-shell off" -iex "set debuginfod enabled off" "$@" 2>&1
}

# Addresses differ from run to run; of threads and processes nothing is tested.
without_chance() {
    sed -E -e 's/0x[0-9a-f]+/ADDRESS/g' \
        -e '/^\[(Thread debugging|Inferior 1 )/d' -e '/^Using host libthread_db/d' \
        -e '/^warning: .*libthread_db/d'
}

[ -n "$gdb" ] && [ -x "$gdb" ] || skip "no gdb"
run_gdb -ex "python print('has python')" | grep -q "has python" || skip "this gdb has no Python"
run_gdb -ex "break main" -ex "run </dev/null" "$program" | grep -q "^Breakpoint 1, " ||
    skip "gdb may not run programs here"
