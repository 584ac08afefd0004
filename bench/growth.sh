#!/bin/sh
# growth.sh - how the time to write and read a graph grows when the graph doubles.
#
#   ./dev build bench && bench/growth.sh [build/bench/bench/kelvofxds_bench]
#
# Every size is measured in a process of its own, so that all graphs lie in memory alike: in the
# order in which they were made. A ratio of 2 is linear growth.
set -eu

bench=${1:-build/bench/bench/kelvofxds_bench}

# medianOf NAME SIZE: milliseconds of CPU time, the median of 21 runs.
medianOf() {
    "$bench" --benchmark_filter="fxBinary/$1/large/kelvofxds/$2\$" --benchmark_repetitions=21 \
        --benchmark_report_aggregates_only=true 2>/dev/null |
        awk '/_median/ { print $5 }'
}

echo "| case | 125,000 | 250,000 | 500,000 | 1,000,000 | ratios |"
echo "|---|---|---|---|---|---|"
for name in "write blocks" "read blocks" "write objects" "read objects"; do
    row="| $name |"
    ratios=""
    before=""
    for size in 125000 250000 500000 1000000; do
        now=$(medianOf "$name" $size)
        row="$row $now ms |"
        [ -z "$before" ] || ratios="$ratios $(awk "BEGIN { printf \"%.2f\", $now / $before }")"
        before=$now
    done
    echo "$row$ratios |"
done
