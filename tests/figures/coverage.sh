#!/bin/sh
# coverage.sh - runs the whole suite of the coverage preset and prints how much of the library it ran
#
#   GOAL C1 <lines in %>;<branches in %> 99;95 PASS|FAIL
#
# Only what is compiled into the library counts: of its headers the inline functions and templates
# that the library itself uses. The library is the checked one, so that the checks of misuse count as
# well, without optimisation and without assertions, whose other branch cannot be taken. Branches to
# where exceptions are cleaned up after do not count, nor do those that only the compiler makes: the
# tests for null of delete and new, and what new does when a constructor throws. Lines with a
# condition of their own count, whatever else is in them. Processes that die write their counters,
# too: tests/figures/coverage. What no test can run is marked GCOVR_EXCL in the source, with the reason.
#
# build/goals/C1.txt tells of each file which lines, and C1-branches.txt of which the branches, were
# not run. `coverage.sh -n` only adds up what the programs have counted since the last run.
set -u

top=$(cd "$(dirname "$0")/../.." && pwd)
cd "$top" || exit 1
logs=build/goals
mkdir -p "$logs"

status=0
if [ "${1-}" != -n ]; then
    find build/coverage -name '*.gcda' -delete
    ctest --preset coverage -j "$(nproc)" >"$logs/C1.log" 2>&1 || status=$?
    [ "$status" -eq 0 ] || sed -n '/ tests failed out of /,$p' "$logs/C1.log" >&2
fi

no_condition='(?!.*(\bif\b|\bfor\b|\bwhile\b|\?|&&|\|\|))'
made_by_the_compiler="^$no_condition.*(\bdelete(\[\])? [^;]*;|\bnew \()"

add_up() {
    gcovr --root . --filter kelvofxds/ --object-directory build/coverage \
        --exclude-throw-branches --exclude-unreachable-branches \
        --exclude-branches-by-pattern "$made_by_the_compiler" \
        -j "$(nproc)" "$@" build/coverage/kelvofxds
}
if ! add_up --json "$logs/C1.json" --json-summary "$logs/C1-summary.json" --txt "$logs/C1.txt" \
    >"$logs/C1-gcovr.log" 2>&1; then
    cat "$logs/C1-gcovr.log" >&2
    echo "GOAL C1 none 99;95 FAIL"
    exit 1
fi
gcovr --root . --add-tracefile "$logs/C1.json" --branches --txt "$logs/C1-branches.txt"

# One decimal, cut off and never rounded up.
python3 - "$logs/C1-summary.json" "$status" <<'END'
import json
import sys

summary = json.load(open(sys.argv[1]))


def tenths(of):
    return 1000 * summary[of + "_covered"] // summary[of + "_total"]


lines, branches = tenths("line"), tenths("branch")
reached = sys.argv[2] == "0" and lines >= 990 and branches >= 950
print("GOAL C1 %.1f;%.1f 99;95 %s" % (lines / 10, branches / 10, "PASS" if reached else "FAIL"))
sys.exit(not reached)
END
