#!/bin/sh
# threads.sh BUILD [ROUNDS] - what helgrind reports of two threads with objects of their own
#
#   GOAL T1 <reports> 0 PASS|FAIL
#
# Reports are counted that tests/helgrind.supp does not answer for. A race that is planted has to be
# reported, otherwise nothing was measured.
set -u

top=$(cd "$(dirname "$0")/../.." && pwd)
program=$1/tests/figures/threads
rounds=${2:-500}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# reports ARGUMENT...: how many there are for the program with these arguments; none if it fails.
reports() {
    valgrind --tool=helgrind --suppressions="$top/tests/helgrind.supp" \
        --log-file="$work/log" "$program" "$@" >&2 || return 1
    cat "$work/log" >&2
    sed -n 's/.*ERROR SUMMARY: \([0-9]*\) errors.*/\1/p' "$work/log"
}

planted=$(reports --planted 1)
found=$(reports "$rounds")
if [ "${planted:-0}" -gt 0 ] && [ "${found:-none}" = 0 ]; then
    echo "GOAL T1 0 0 PASS"
else
    echo "the planted race: ${planted:-0} reports" >&2
    echo "GOAL T1 ${found:-none} 0 FAIL"
    exit 1
fi
