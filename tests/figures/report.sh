#!/bin/sh
# report.sh [PAGE] - writes the last measurement of each figure into the tables of PAGE, which is
# docs/reliability.md. ./dev goals has left them in build/goals.
set -eu

cd "$(dirname "$0")/../.."
page=${1:-docs/reliability.md}
machine=$(sed -n 's/^model name[[:space:]]*: //p' /proc/cpuinfo | head -n 1)
memory=$(awk '/^MemTotal/ { printf "%.0f", $2 / 1048576 }' /proc/meminfo)
lines=$(mktemp)
trap 'rm -f "$lines"' EXIT
cat build/goals/*.line >"$lines"
commits=$(awk '{ print $6 }' "$lines" | sort -u | paste -s -d ' ')
awk -v date="$(date -u +%Y-%m-%d)" -v commit="$commits" \
    -v machine="$machine, $(nproc) cores, $memory GiB; $(sed -n 's/^PRETTY_NAME="\(.*\)"/\1/p' /etc/os-release)" '
    FILENAME != page { value[$2] = $3; goal[$2] = $4; result[$2] = $5; at[$2] = $6; next }
    /^\| date \|/ { $0 = "| date | " date " |" }
    /^\| commit \|/ { $0 = "| commit | " commit " |" }
    /^\| machine \|/ { $0 = "| machine | " machine " |" }
    /^\| [A-Z][0-9] \|/ {
        n = split($0, cell, / *\| */)
        id = cell[2]
        if (id in value)
            $0 = "| " id " | " cell[3] " | " cell[4] " | " goal[id] " | " value[id] " | " \
                result[id] " | " at[id] " |"
    }
    { print }' page="$page" "$lines" "$page" >"$page.new"
mv "$page.new" "$page"
