#!/bin/sh
# report.sh - turns the benchmarks' JSON output into the tables of docs/performance.md.
#
#   ./dev bench --benchmark_repetitions=7 --benchmark_out=build/bench.json
#   bench/report.sh build/bench.json                          prints the tables
#   bench/report.sh build/bench.json docs/performance.md      puts them into the document
#
# Times are CPU times, the medians of the repetitions. A ratio is the peer's time divided by
# kelvofxds's: above 1 kelvofxds is faster; a ratio below 1/1.2 is set in bold.
set -eu

usage="usage: bench/report.sh RESULTS.json [DOCUMENT.md]"
results=${1:?$usage}
document=${2:-}

commit() {
    printf "%s" "$(git rev-parse --short HEAD 2>/dev/null || echo "(unknown)")"
    if [ -n "$(git status --porcelain -- kelvofxds 2>/dev/null)" ]; then
        echo " with changes"
    fi
}

tables() {
    awk '
    # "key": value  or  "key": "value",
    function text(line) {
        sub(/^[^:]*: */, "", line)
        sub(/,$/, "", line)
        gsub(/^"|"$/, "", line)
        return line
    }
    function toNanoseconds(value, unit) {
        return value * (unit == "s" ? 1e9 : unit == "ms" ? 1e6 : unit == "us" ? 1e3 : 1)
    }
    function shown(ns) {
        if (ns < 999.5) return sprintf("%.3g ns", ns)
        if (ns < 999.5e3) return sprintf("%.3g µs", ns / 1e3)
        if (ns < 999.5e6) return sprintf("%.3g ms", ns / 1e6)
        return sprintf("%.3g s", ns / 1e9)
    }
    function ratio(ours, peer,   r) {
        r = peer / ours
        return sprintf(r < 0.095 ? "**%.1g**" : r < 1 / 1.2 ? "**%.2f**" : "%.2f", r)
    }
    function classOf(name) { return substr(name, 1, index(name, "/") - 1) }
    # A case without its class, fit for a cell of a table.
    function label(name,   cell) {
        cell = substr(name, index(name, "/") + 1)
        gsub(/\|/, "\\|", cell)
        return cell
    }
    function mebibytes(n) { return n > 0 ? sprintf("%.0f", n) : "" }
    function growth(time, from, to) {
        return from == to ? "" : sprintf("%.2f", log(time[to] / time[from]) / log(to / from))
    }
    function endOfEntry(   parts, n, i, name, implementation, size, id) {
        if (run == "" || kind == "BigO" || kind == "RMS" || (kind != "" && kind != "median")) return
        n = split(run, parts, "/")
        name = parts[1]
        for (i = 2; i <= n - 2; ++i) name = name "/" parts[i]
        implementation = parts[n - 1]
        size = parts[n]
        id = name SUBSEP implementation
        if (!(name in order) || family < order[name]) order[name] = family
        order[name, implementation] = family
        # With repetitions the single runs come first and the median replaces them.
        cpu[id, size] = toNanoseconds(time, unit)
        memory[id, size] = peak
        if (!(id in seen)) {
            seen[id] = 1
            if (implementation == "kelvofxds") cases[++caseCount] = name
            else peers[name] = peers[name] (peers[name] == "" ? "" : "\t") implementation
        }
        if (implementation == "kelvofxds" && !((name, size) in sized)) {
            sized[name, size] = 1
            sizes[name] = sizes[name] (sizes[name] == "" ? "" : " ") size
        }
    }
    # The order of the source files, also when the runs were interleaved.
    function sort(   i, j, k, n, s, held) {
        for (i = 2; i <= caseCount; ++i) {
            held = cases[i]
            for (j = i - 1; j > 0 && order[cases[j]] > order[held]; --j) cases[j + 1] = cases[j]
            cases[j + 1] = held
        }
        for (k = 1; k <= caseCount; ++k) {
            n = split(sizes[cases[k]], s, " ")
            for (i = 2; i <= n; ++i) {
                held = s[i]
                for (j = i - 1; j > 0 && s[j] + 0 > held + 0; --j) s[j + 1] = s[j]
                s[j + 1] = held
            }
            sizes[cases[k]] = s[1]
            for (i = 2; i <= n; ++i) sizes[cases[k]] = sizes[cases[k]] " " s[i]
        }
    }
    function row(name, peer,   s, n, i, list, ratios, a, b, grown) {
        n = split(sizes[name], s, " ")
        for (i = 1; i <= n; ++i) {
            a = cpu[name, "kelvofxds", s[i]]
            b = cpu[name, peer, s[i]]
            if (b == "") continue
            list = list (i > 1 ? ", " : "") s[i]
            ratios = ratios (i > 1 ? ", " : "") ratio(a, b)
            ours[s[i]] = a
            theirs[s[i]] = b
        }
        if (list == "") return
        grown = n > 1 ? growth(ours, s[n - 1], s[n]) " / " growth(theirs, s[n - 1], s[n]) : ""
        printf "| %s | %s | %s | %s | %s | %s | %s |\n", label(name), peer,
            (n > 1 ? list : ""), ratios, shown(ours[s[n]]), shown(theirs[s[n]]), grown
    }
    function largeRow(name, peer,   s, n, i, a, b) {
        n = split(sizes[name], s, " ")
        for (i = 1; i <= n; ++i) {
            a = cpu[name, "kelvofxds", s[i]]
            b = cpu[name, peer, s[i]]
            if (b == "") continue
            printf "| %s | %s | %s | %s | %s | %s | %s | %s | %s | %s |\n",
                label(name), peer, s[i], shown(a),
                (i > 1 ? sprintf("%.2f", a / cpu[name, "kelvofxds", s[i - 1]]) : ""), shown(b),
                (i > 1 ? sprintf("%.2f", b / cpu[name, peer, s[i - 1]]) : ""), ratio(a, b),
                mebibytes(memory[name, "kelvofxds", s[i]]), mebibytes(memory[name, peer, s[i]])
        }
    }
    # The rows of one case, the peers in the order of the source.
    function rows(name,   names, m, j, first) {
        m = split(peers[name], names, "\t")
        while (m-- > 0) {
            first = ""
            for (j in names) {
                if (first == "" || order[name, names[j]] < order[name, names[first]]) first = j
            }
            row(name, names[first])
            delete names[first]
        }
    }
    # The table of the class of cases[first], which has no case before that one.
    function classTable(first,   class, i) {
        class = classOf(cases[first])
        printf "\n### %s\n\n", class
        print "| case | peer | n | ratio at each n | kelvofxds, last n | peer, last n |" \
            " growth |"
        print "|---|---|---|---|---|---|---|"
        for (i = first; i <= caseCount; ++i) {
            if (cases[i] !~ /\/large$/ && classOf(cases[i]) == class) rows(cases[i])
        }
    }
    /"date":/ && date == "" { date = text($0); sub(/T.*/, "", date) }
    /"compiler":/ { compiler = text($0) }
    /"num_cpus":/ { cpus = text($0) }
    /"mhz_per_cpu":/ { mhz = text($0) }
    /"run_name":/ { run = text($0); kind = ""; peak = 0 }
    /"family_index":/ { family = text($0) + 0 }
    /"aggregate_name":/ { kind = text($0) }
    /"cpu_time":/ { time = text($0) }
    /"time_unit":/ { unit = text($0) }
    /"peak_MiB":/ { peak = text($0) }
    /^ *}/ { endOfEntry(); run = "" }
    END {
        sort()
        printf "Measured on %s at commit %s with %s on %d cores at %.1f GHz.\n", date, commit,
            compiler, cpus, mhz / 1000
        # One heading a class, where its first case stands.
        for (i = 1; i <= caseCount; ++i) {
            if (cases[i] ~ /\/large$/ || classOf(cases[i]) in headedClasses) continue
            headedClasses[classOf(cases[i])] = 1
            classTable(i)
        }
        for (i = 1; i <= caseCount; ++i) {
            if (cases[i] !~ /\/large$/) continue
            if (!headed++) {
                print "\n### Large sizes, one after the other in one process\n"
                print "| case | peer | n | kelvofxds | to n before | peer | to n before | ratio |" \
                    " MiB | peer, MiB |"
                print "|---|---|---|---|---|---|---|---|---|---|"
            }
            m = split(peers[cases[i]], names, "\t")
            for (j = 1; j <= m; ++j) largeRow(cases[i], names[j])
        }
    }' commit="$(commit)" "$results"
}

if [ -z "$document" ]; then
    tables
    exit
fi
new=$document.new
tables >"$new.tables"
awk -v tables="$new.tables" '
/^<!-- end of the measured tables -->$/ { inside = 0 }
!inside { print }
/^<!-- measured tables, written by bench\/report.sh -->$/ {
    inside = 1
    print ""
    while ((getline line < tables) > 0) print line
    print ""
}' "$document" >"$new"
rm "$new.tables"
mv "$new" "$document"
