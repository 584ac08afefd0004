#!/bin/sh
# abi.sh BUILD DEBUG_BUILD - how far the library has gone from its binary interface
#
#   GOAL A1 <differences> 0 PASS|FAIL
#
# Differences are what abidiff counts between the baseline and the library in DEBUG_BUILD, which has
# debug information; the tests of layouts and slots that fail in either folder; and the tests of the
# lists of symbols that fail in BUILD. Where a field lies is compiled into the tests, so that they
# would not be there.
set -u

top=$(cd "$(dirname "$0")/../.." && pwd)
build=$1
debug_build=$2

# What a class's table of virtual operations looks like, and where its parts are.
slots='*irtualOperation*:*perationsFollow*:*slotsFollow*:*destructorsAreWords*:*Layout*'
slots=$slots':*heOtherOperationsAreNotVirtual*:*onlyTheDestructorsAreItsOwn*:*basesAreVirtual*'
least_slots=85
lists=10

# Prints what was found, and the number of differences in the last line.
differences=$("$top/cmake/checkAbi.sh" "$top/tests/abi/kelvofxds.abi.gz" "$top/kelvofxds" \
    "$top/tests/abi" "$debug_build/kelvofxds/libkelvofxds.so")
echo "$differences" >&2
sum=$(echo "$differences" | sed -n '$s/ differences$//p')
sum=${sum:-1}  # nothing could be compared

# count FEWEST TOTAL FAILED: adds what failed; fewer tests than there were are a difference, too.
count() {
    if [ "${2:-0}" -lt "$1" ]; then
        echo "only ${2:-0} of $1 tests" >&2
        sum=$((sum + 1))
    fi
    sum=$((sum + ${3:-0}))
}

for folder in "$build" "$debug_build"; do
    tests=$("$folder/tests/kelvofxds_tests" --gtest_brief=1 --gtest_filter="$slots" 2>&1)
    echo "$tests" >&2
    count "$least_slots" "$(echo "$tests" | sed -n 's/^\[==*\] \([0-9]*\) tests* from.*/\1/p')" \
        "$(echo "$tests" | sed -n 's/^ *\([0-9]*\) FAILED TESTS*$/\1/p')"
done

tests=$(ctest --test-dir "$build" -R '^abi_' 2>&1)
echo "$tests" >&2
summary=$(echo "$tests" | sed -n 's/.* tests passed, \([0-9]* tests failed out of [0-9]*\)$/\1/p')
count "$lists" "${summary##* }" "${summary%% *}"

if [ "$sum" -eq 0 ]; then
    echo "GOAL A1 0 0 PASS"
else
    echo "GOAL A1 $sum 0 FAIL"
    exit 1
fi
