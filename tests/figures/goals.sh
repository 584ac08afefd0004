#!/bin/sh
# goals.sh [-s] [ID...] - measures what the library promises of itself, a line a figure
#
#   GOAL <id> <value> <goal> PASS|FAIL
#
# All figures, or the named ones; -s measures those that have a short form, in that form. What a
# figure is measured with is built before. Called by ./dev goals.
#
# What is said on the way goes to standard error, logs to build/goals, and the line of the last
# measurement of each figure, with the commit, to build/goals/ID.line for report.sh.
set -u

short=
[ "${1-}" != -s ] || { short=1 && shift; }
top=$(cd "$(dirname "$0")/../.." && pwd)
cd "$top" || exit 1
cores=$(nproc)
logs=build/goals
mkdir -p "$logs"
commit=$(git rev-parse --short HEAD 2>/dev/null || echo unknown)

in_order="F1 F2 C1 C2 C3 C4 M1 M2 M3 I1 I2 I3 I4 I5 I6 H1 H2 S1 S2 S3 S4 X1 X2 E1 E2 G1 G2 T1 \
L1 L2 L3 A1 A2"
# These are measured by the suite, too, but for the fuzzers.
in_short="F1 F2 M1 I1 I2 I3 H1 H2 X2 L2 A1 A2"

# report ID VALUE GOAL STATUS: STATUS is 0 for a goal that is reached.
report() {
    if [ "$4" -eq 0 ]; then
        echo "GOAL $1 $2 $3 PASS"
    else
        echo "GOAL $1 $2 $3 FAIL"
    fi
}

# built ID PRESET: what was built before is no measure of what can't be built now.
built() {
    ./dev build "$2" >&2 && return
    report "$1" none measured 1
    return 1
}

# --- fuzzers -------------------------------------------------------------------------------------

# fuzz_figure ID RUNS LONGEST TARGET...: the least executions of a fuzzer, and the findings of all, in
# as many processes as there are cores. It takes hours; interrupted, it goes on with what is not yet
# through. The short form begins anew.
fuzz_figure() {
    id=$1
    runs=$2
    longest=$3
    shift 3
    share=0
    pids=
    while [ "$share" -lt "$cores" ]; do
        fuzz_share "$@" &
        pids="$pids $!"
        share=$((share + 1))
    done
    # shellcheck disable=SC2086 # a word each
    wait $pids
    least=
    all=0
    for target in "$@"; do
        executions=0
        findings=0
        share=0
        while [ "$share" -lt "$cores" ]; do
            log=$logs/$target.$share.log
            executions=$((executions + $(runs_in "$log")))
            through || findings=$((findings + 1))
            share=$((share + 1))
        done
        echo "$id: $target: $executions executions, $findings findings" >&2
        if [ -z "$least" ] || [ "$executions" -lt "$least" ]; then least=$executions; fi
        all=$((all + findings))
    done
    [ "${least:-0}" -ge "$runs" ] && [ "$all" -eq 0 ]
    report "$id" "${least:-0};$all" "$runs;0" $?
}

# fuzz_share TARGET...: runs them one after the other, with a seed and a corpus of its own, on inputs
# up to $longest bytes. They choose what to change next without -entropic, whose books take longer
# than most inputs.
fuzz_share() {
    for target in "$@"; do
        log=$logs/$target.$share.log
        if [ -z "$short" ] && through; then continue; fi
        corpus=build/fuzz/corpus/$target.$share
        mkdir -p "$corpus"
        set -- "-runs=$((runs / cores + 1))" "-seed=$((share + 1))" -entropic=0 \
            "-max_len=$longest" -timeout=2 -rss_limit_mb=1500 "-artifact_prefix=$logs/$target-" \
            "$corpus"
        [ ! -d "fuzz/corpus/$target" ] || set -- "$@" "fuzz/corpus/$target"
        [ ! -f "fuzz/$target.dict" ] || set -- "-dict=fuzz/$target.dict" "$@"
        "build/fuzz/fuzz/$target" "$@" >"$log" 2>&1 || printf '\nended with %s\n' $? >>"$log"
    done
}
# runs_in LOG: how many there were, if the fuzzer came to its end.
runs_in() {
    sed -n 's/^Done \([0-9]*\) runs.*/\1/p' "$1" 2>/dev/null | grep . || echo 0
}
# through: whether this share of $target has been run since it was built, and has found nothing.
through() {
    newer=$(find -H "$log" -newer "build/fuzz/fuzz/$target" \
        -newer build/fuzz/kelvofxds/libkelvofxds.so 2>/dev/null)
    [ "$newer" ] && [ "$(runs_in "$log")" -ge $((runs / cores)) ] && ! grep -q '^ended with ' "$log"
}

goal_F1() {
    built F1 fuzz || return
    fuzz_figure F1 "$([ "$short" ] && echo 300000 || echo 20000000)" 65536 stream_fuzz
}
goal_F2() {
    built F2 fuzz || return
    targets=
    for fuzzer in build/fuzz/fuzz/*_fuzz; do
        name=$(basename "$fuzzer")
        [ "$name" = stream_fuzz ] || targets="$targets $name"
    done
    # shellcheck disable=SC2086 # a word each
    fuzz_figure F2 "$([ "$short" ] && echo 100000 || echo 5000000)" 4096 $targets
}

# --- suites --------------------------------------------------------------------------------------

# suite PRESET: builds the preset and runs its suite; prints "PASSED FAILED SKIPPED", in tests of
# GoogleTest and entries of ctest.
suite() {
    ./dev suite "$1" >"$logs/suite-$1.log" 2>&1
    tail -n 1 "$logs/suite-$1.log" | sed -n 's/^\([0-9]*\) passed, \([0-9]*\) failed$/\1 \2/p'
}

# failed_in PRESET: how many tests of its suite failed; 9999 when it could not be run.
failed_in() {
    # shellcheck disable=SC2046 # two words
    set -- "$1" $(suite "$1")
    echo "$1: ${2:-0} passed, ${3:-not run} failed" >&2
    [ "${2:-0}" -gt 0 ] && echo "$3" || echo 9999
}

# A report ends the share of the tests that it is of.
goal_M1() {
    failed=$(failed_in asan)
    report M1 "$failed" 0 "$failed"
}

goal_M2() {
    ./dev valgrind >"$logs/M2.log" 2>&1
    status=$?
    errors=$(grep -c -E "$valgrind_error" "$logs/M2.log")
    [ "$status" -eq 0 ] || [ "$errors" -gt 0 ] || errors=failed
    report M2 "$errors" 0 "$status"
}
valgrind_error='^==[0-9]+== (Invalid|Mismatched|Conditional|Use of|Syscall|Source and|.* lost in)'

goal_M3() {
    failed=0
    for preset in gcc-O0 gcc-O3 clang-O2; do
        failed=$((failed + $(failed_in "$preset")))
    done
    report M3 "$failed" 0 "$failed"
}

# The tests' own word of what could not be tried on an emulator.
skipped_in() {
    sed -n 's/^\[  SKIPPED \] \([A-Za-z_/0-9]*\.[A-Za-z_/0-9]*\)$/\1/p' "build/$1/Testing/Temporary/LastTest.log" |
        sort -u
}
goal_E1() {
    failed=0
    most=0
    for preset in powerpc armhf; do
        failed=$((failed + $(failed_in "$preset")))
        names=$(skipped_in "$preset")
        echo "$preset: skipped:" "${names:-nothing}" >&2
        n=$(echo "$names" | grep -c .)
        [ "$n" -le "$most" ] || most=$n
    done
    [ "$failed" -eq 0 ] && [ "$most" -le 5 ]
    report E1 "$failed;$most" "0;5" $?
}

# Each machine writes all streams of its byte order anew, which have to be those that are kept, and
# reads those of both orders.
goal_E2() {
    differing=0
    for preset in release powerpc armhf; do
        ./dev build "$preset" >&2 || differing=$((differing + 1))
        case $preset in
        release) emulator= ;;
        powerpc) emulator="qemu-ppc -L /usr/powerpc-linux-gnu" ;;
        armhf) emulator="qemu-arm -L /usr/arm-linux-gnueabihf" ;;
        esac
        written=$logs/E2/$preset
        rm -rf "$written"
        mkdir -p "$written"
        # shellcheck disable=SC2086 # several words or none
        KELVOFXDS_GOLDEN=$written $emulator "build/$preset/tests/kelvofxds_tests" \
            --gtest_filter='goldenStreams*:*eneratedGraph*:fxGraphGenerated*' >"$logs/E2/$preset.log" 2>&1 ||
            differing=$((differing + 1))
        # shellcheck disable=SC2086
        $emulator "build/$preset/tests/kelvofxds_tests" --gtest_filter="$streams" \
            >>"$logs/E2/$preset.log" 2>&1 || differing=$((differing + 1))
        n=$(find "$written" -type f | wc -l)
        [ "$n" -ge 15 ] || differing=$((differing + 1))
        for file in "$written"/*; do
            bytes=$(cmp -l "$file" "tests/transcribe/golden/${file##*/}" 2>&1 | wc -l)
            differing=$((differing + bytes))
        done
        echo "E2: $preset: $n streams written and compared" >&2
    done
    report E2 "$differing" 0 "$differing"
}
streams='*olden*:fxGraphGenerated*:*Stream*-*DeathTest*'

# failed_tests FILTER: how many of these tests of the release suite fail, or are skipped; one more
# if there are none.
failed_tests() {
    build/release/tests/kelvofxds_tests --gtest_filter="$1" >"$logs/tests.log" 2>&1
    cat "$logs/tests.log" >>"$logs/G1.log"
    passed_tests=$(sed -n 's/^\[  PASSED  \] \([0-9]*\) tests*\.$/\1/p' "$logs/tests.log")
    all=$(sed -n 's/^\[==========\] \([0-9]*\) tests* from .* ran\..*/\1/p' "$logs/tests.log")
    [ "${all:-0}" -gt 0 ] && echo $((all - ${passed_tests:-0})) || echo 1
}
goal_G1() {
    : >"$logs/G1.log"
    damaged=$(failed_tests 'fxGraphDamage.*:fxGraphGenerated.noDamagedFileLoads:fxGraphStandard.noTruncatedStreamLoads')
    killed=$(failed_tests 'fxFileFaults.*')
    [ "$damaged" -eq 0 ] && [ "$killed" -eq 0 ]
    report G1 "$damaged;$killed" "0;0" $?
}

# --- programs and scripts that print their line themselves ---------------------------------------

# printed ID COMMAND...: what COMMAND printed of the figure.
printed() {
    id=$1
    shift
    line=$("$@" 2>"$logs/$id.err" | grep "^GOAL $id ")
    if [ -n "$line" ]; then
        echo "$line"
    else
        report "$id" none measured 1
    fi
}

goal_C1() {
    built C1 coverage || return
    printed C1 tests/figures/coverage.sh
}
goal_C2() { printed C2 python3 tests/figures/messages.py; }
goal_C3() { printed C3 python3 tests/figures/deliberate.py; }
goal_C4() { printed C4 python3 tests/figures/mutants.py --resume -j "$cores"; }
goal_T1() { printed T1 tests/figures/threads.sh build/release; }
goal_A1() {
    built A1 asan || return
    printed A1 tests/figures/abi.sh build/release build/asan
}
goal_A2() { printed A2 build/release/tests/hosts/host_reloading; }
goal_I6() {
    mkdir -p "$logs/refusals"
    KELVOFXDS_FOLDER=$logs/refusals printed I6 build/release/tests/figures/refusals
}

# --- figures that the test program measures ------------------------------------------------------

# measured ID PRESET: the line is printed by the test; a program that ended before has none.
measured() {
    built "$1" "$2" || return
    set -- "$1" "build/$2/tests/figures/kelvofxds_figures" "--gtest_filter=*igure$1.*"
    [ "$short" ] || export KELVOFXDS_FIGURES=1
    printed "$@"
}

# What these look for is what a sanitizer or the checks report.
goal_I2() { measured I2 asan; }
goal_H2() { measured H2 asan; }
goal_L2() { measured L2 asan; }

# Reports by the sanitizer, of the short form; memory without it, since it touches more.
goal_H1() {
    built H1 asan || return
    reports=$(printed H1 build/asan/tests/figures/kelvofxds_figures "--gtest_filter=figureH1.*")
    case $reports in
    *PASS) measured H1 release ;;
    *) echo "$reports" ;;
    esac
}

[ -z "$short" ] || in_order=$in_short
# shellcheck disable=SC2086 # a word each
[ $# -gt 0 ] || set -- $in_order
for id in "$@"; do
    case " $in_order " in
    *" $id "*) ;;
    *)
        echo "goals.sh: no figure \"$id\"; there are: $in_order" >&2
        exit 2
        ;;
    esac
done
passed=0
failed=0
for id in "$@"; do
    if command -v "goal_$id" >/dev/null; then
        line=$("goal_$id")
    else
        line=$(measured "$id" release)
    fi
    echo "$line"
    [ "$short" ] || echo "$line $commit" >"$logs/$id.line"
    case $line in
    *PASS) passed=$((passed + 1)) ;;
    *) failed=$((failed + 1)) ;;
    esac
done
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
