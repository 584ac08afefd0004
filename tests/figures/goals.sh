#!/bin/sh
# goals.sh [-s] [ID...] - measures what the library promises of itself, a line a figure
#
#   GOAL <id> <value> <goal> PASS|FAIL
#
# All figures, or the named ones; -s measures those that have a short form, in that form. Called by
# ./dev goals, which builds what is needed first.
set -u

short=
[ "${1-}" != -s ] || { short=1 && shift; }
top=$(cd "$(dirname "$0")/../.." && pwd)
cd "$top" || exit 1
cores=$(nproc)
logs=build/goals
mkdir -p "$logs"

in_order="F1 F2 I1 I2 I3 I4 I6 S1 S2 S3 S4 G2 L1 L3"
in_short="F1 F2 I1 I2 I3"

# report ID VALUE GOAL STATUS: STATUS is 0 for a goal that is reached.
report() {
    if [ "$4" -eq 0 ]; then
        echo "GOAL $1 $2 $3 PASS"
    else
        echo "GOAL $1 $2 $3 FAIL"
    fi
}

# --- fuzzers -------------------------------------------------------------------------------------

# fuzz TARGET RUNS: executions and findings of a fuzzer that runs in as many processes as there are
# cores, each with its own seed; prints "EXECUTIONS FINDINGS".
fuzz() {
    share=0
    pids=
    corpus=build/fuzz/corpus/$1
    seeds=fuzz/corpus/$1
    [ -d "$seeds" ] || seeds=
    while [ "$share" -lt "$cores" ]; do
        mkdir -p "$corpus.$share"
        # shellcheck disable=SC2086 # no folder, or one
        "build/fuzz/fuzz/$1" -runs=$(($2 / cores + 1)) -seed=$((share + 1)) -max_len=65536 \
            -timeout=2 -rss_limit_mb=1500 -artifact_prefix="$logs/$1-" "$corpus.$share" $seeds \
            >"$logs/$1.$share.log" 2>&1 &
        pids="$pids $!"
        share=$((share + 1))
    done
    findings=0
    for pid in $pids; do
        wait "$pid" || findings=$((findings + 1))
    done
    executions=$(sed -n 's/^Done \([0-9]*\) runs.*/\1/p' "$logs/$1".*.log |
        awk '{ n += $1 } END { print n + 0 }')
    echo "$executions $findings"
}

# fuzz_figure ID RUNS TARGET...: the least executions, and the findings of all.
fuzz_figure() {
    id=$1
    runs=$2
    shift 2
    least=
    all=0
    for target in "$@"; do
        # shellcheck disable=SC2046 # two words
        set_counts $(fuzz "$target" "$runs")
        echo "$id: $target: $executions executions, $findings findings" >&2
        if [ -z "$least" ] || [ "$executions" -lt "$least" ]; then least=$executions; fi
        all=$((all + findings))
    done
    [ "${least:-0}" -ge "$runs" ] && [ "$all" -eq 0 ]
    report "$id" "${least:-0};$all" "$runs;0" $?
}
set_counts() {
    executions=$1
    findings=$2
}

goal_F1() { fuzz_figure F1 "$([ "$short" ] && echo 300000 || echo 20000000)" stream_fuzz; }
goal_F2() {
    targets=
    for fuzzer in build/fuzz/fuzz/*_fuzz; do
        name=$(basename "$fuzzer")
        [ "$name" = stream_fuzz ] || targets="$targets $name"
    done
    # shellcheck disable=SC2086 # a word each
    fuzz_figure F2 "$([ "$short" ] && echo 100000 || echo 5000000)" $targets
}

# --- memory that is refused -----------------------------------------------------------------------

goal_I6() {
    mkdir -p "$logs/refusals"
    line=$(KELVOFXDS_FOLDER=$logs/refusals build/release/tests/figures/refusals 2>"$logs/I6.log")
    echo "${line:-GOAL I6 none 0 FAIL}"
}

# --- figures that the test program measures ------------------------------------------------------

# The line is printed by the test; a program that ended before has none.
measured() {
    line=$("$figures" --gtest_filter="*igure$1.*" 2>"$logs/$1.err" | tee "$logs/$1.log" |
        grep "^GOAL $1 ")
    if [ -n "$line" ]; then
        echo "$line"
    else
        report "$1" none measured 1
    fi
}

[ "$short" ] || export KELVOFXDS_FIGURES=1
figures=build/release/tests/figures/kelvofxds_figures
"$figures" --gtest_list_tests | sed 's/\.$//' >"$logs/list"
passed=0
failed_goals=0
[ "$short" ] && in_order=$in_short
for id in ${*:-$in_order}; do
    if command -v "goal_$id" >/dev/null; then
        line=$("goal_$id")
    elif grep -q "igure$id\$" "$logs/list"; then
        line=$(measured "$id")
    else
        echo "goals.sh: no figure \"$id\"" >&2
        exit 2
    fi
    echo "$line"
    case $line in
    *PASS) passed=$((passed + 1)) ;;
    *) failed_goals=$((failed_goals + 1)) ;;
    esac
done
echo "$passed passed, $failed_goals failed"
[ "$failed_goals" -eq 0 ]
