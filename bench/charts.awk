# charts.awk - draws the tables of docs/performance.md: one SVG for each folder of the library, one
# for the large sizes, and one of everything.
#
#   LC_ALL=C awk -v out=docs/charts -f bench/charts.awk docs/performance.md
#
# Cases that differ in keys or medium only share a row: a dot for each ratio in the tables, a bar to
# the median of them. The axis is logarithmic, and less time is to the left.

BEGIN {
    folderOf["fxArray"] = folderOf["fxDictionary"] = folderOf["fxSet"] = "containers"
    folderOf["HashTable"] = folderOf["NameSpace"] = "lists"
    folderOf["GenericList"] = folderOf["fxIndexableList"] = "lists"
    folderOf["fxTimer"] = folderOf["fxExec"] = folderOf["fxOutputChannel"] = "objects"
    folderOf["fxEventHandler"] = "objects"
    folderOf["fxRegEngine"] = folderOf["fxSLinearPattern"] = "pattern"
    folderOf["fxStackBuffer"] = folderOf["fxStrArray"] = folderOf["fxStrFormat"] = "str"
    folderOf["fxStrSearch"] = folderOf["fxStr"] = folderOf["fxTempStr"] = "str"
    folderOf["Graph streams"] = folderOf["fxBinary"] = "transcribe"
    folderOf["fxConverter"] = "values"
    folderOf["Large sizes"] = "large"

    shownAs["fxBinary"] = "Standard streams"
    shownAs["Large sizes"] = "One after the other in one process"

    # The order of the folders in README.md.
    classes["overview"] = "kelvofxds/str\tkelvofxds/containers\tkelvofxds/pattern" \
        "\tkelvofxds/lists\tkelvofxds/transcribe\tkelvofxds/values\tkelvofxds/objects"

    title["overview"] = "Time beside the peers, class by class"
    title["containers"] = "kelvofxds/containers: arrays, dictionaries, sets"
    title["lists"] = "kelvofxds/lists: lists, a hash table, names"
    title["objects"] = "kelvofxds/objects: sending, queueing, the loop"
    title["pattern"] = "kelvofxds/pattern: finding texts"
    title["str"] = "kelvofxds/str: strings"
    title["transcribe"] = "kelvofxds/transcribe: writing and reading"
    title["values"] = "kelvofxds/values: converting on the way"
    title["large"] = "Large sizes: 125,000 to 1,000,000 elements"

    level = 1.2     # nearer to the peer than this is level
    farthest = 100  # times; what is farther off is drawn at the edge
    width = 960
    plotLeft = 456
    plotRight = 864
    rowHeight = 18
    chartTop = 112
    spare = 8  # between the outermost decade and the frame
}

function fail(why) {
    print "charts.awk: " FILENAME ":" FNR ": " why >"/dev/stderr"
    failed = 1
    exit 1
}

# --- reading the tables -------------------------------------------------------------------------

# What a case is called in a chart; the others of that name share its row.
function family(class, name) {
    sub(/\/large$/, "", name)
    if (class == "Large sizes") return name
    if (class == "fxRegEngine") {
        if (name ~ /^usual .*, lines$/) return "usual expressions, lines"
        if (name ~ /^usual .*, text$/) return "usual expressions, one text"
        if (name ~ /^hostile /) return "hostile expressions"
        if (name !~ /^(compile|three alternatives)$/) return "one expression, growing text"
    }
    if (class == "fxSLinearPattern") {
        if (sub(/^[0-9]+ bytes odd/, "odd byte", name)) return name
        sub(/ bytes .*$/, " bytes", name)
        return "pattern of " name
    }
    if (name ~ /^(ascending|descending|nearby|random)/ && class != "fxArray")
        return "positions " (name ~ /,/ ? substr(name, 1, index(name, ",") - 1) : name)
    if (class == "fxSet" && name ~ /^fill, /) return "fill, |=, &=, -="
    if (class != "fxExec") sub(/,.*$/, "", name)
    return name
}

function called(class) { return class in shownAs ? shownAs[class] : class }
function joined(list, word, between) {
    return list == "" ? word : list (between == "" ? "\t" : between) word
}

# One ratio, for a chart's row.
function measured(chart, class, name, peer, ratio,   row) {
    if (chart != "overview" && !((chart, class) in known)) {
        known[chart, class] = 1
        classes[chart] = joined(classes[chart], class)
    }
    row = chart SUBSEP class SUBSEP name (chart == "overview" ? "" : SUBSEP peer)
    if (!(row in count)) {
        rows[chart, class] = joined(rows[chart, class], row)
        rowName[row] = name
        if (chart != "overview") rowPeer[row] = peer
    }
    sub(/ (twice|to|of|and) .*$| twice$/, "", peer)
    if (chart == "overview" && !((row, peer) in known)) {
        known[row, peer] = 1
        rowPeer[row] = joined(rowPeer[row], peer, ", ")
    }
    ratios[row, ++count[row]] = ratio
    if (ratio > most[chart]) most[chart] = ratio
    if (1 / ratio > most[chart, "slower"]) most[chart, "slower"] = 1 / ratio
}

/^Measured .*at commit / || /^Measured by themselves/ {
    match($0, /on [0-9-]+ at commit [0-9a-f]+/)
    when[class] = substr($0, RSTART, RLENGTH)
    if (class == "" && match($0, / with .*/)) machine = substr($0, RSTART, RLENGTH - 1)
}
/^<!-- measured tables/ { class = ""; measuredTables = 1 }
/^## Graph streams / { class = "Graph streams" }
/^### / && measuredTables {
    class = substr($0, 5)
    sub(/,.*$/, "", class)
    if (!(class in folderOf)) fail("of which folder is " class)
}
/^\| / && !/^\| case \|/ && class != "" {
    line = $0
    gsub(/\\\|/, "\001", line)
    n = split(line, cell, / *\| */)
    for (i = 2; i < n; ++i) gsub(/\001/, "|", cell[i])
    gsub(/\*/, "", cell[class == "Large sizes" ? 9 : 5])
    name = family(class, cell[2])
    peer = cell[3]
    sub(/,.*$/, "", peer)
    if (class == "Large sizes") peer = cell[3]
    m = split(class == "Large sizes" ? cell[9] : cell[5], values, /, */)
    for (i = 1; i <= m; ++i) {
        if (values[i] !~ /^[0-9.e-]+$/ || values[i] + 0 <= 0) fail("no ratio: " values[i])
        measured(folderOf[class], class, name, peer, values[i] + 0)
        if (class != "Large sizes")
            measured("overview", "kelvofxds/" folderOf[class], called(class), peer, values[i] + 0)
        ++total
    }
}

# --- drawing ------------------------------------------------------------------------------------

function escaped(text) {
    gsub(/&/, "\\&amp;", text)
    gsub(/</, "\\&lt;", text)
    gsub(/>/, "\\&gt;", text)
    return text
}
function put(line) { print line >file }
function text(class, x, y, words) {
    put(sprintf("<text class=\"%s\" x=\"%.1f\" y=\"%.1f\">", class, x, y) escaped(words) "</text>")
}
function box(class, x, y, w, h, more) {
    put(sprintf("<rect class=\"%s\" x=\"%.1f\" y=\"%.1f\"", class, x, y) \
        sprintf(" width=\"%.1f\" height=\"%d\"%s/>", w, h, more))
}
function abscissa(ratio) {
    return plotLeft + spare + (plotRight - plotLeft - 2 * spare) * \
        (log(left) - log(ratio)) / (log(left) + log(right))
}
function kind(ratio) {
    return ratio > level ? "faster" : ratio < 1 / level ? "slower" : "level"
}
function times(ratio,   r) {
    r = ratio < 1 ? 1 / ratio : ratio
    if (kind(ratio) == "level") return "level"
    return sprintf(r >= 9.95 ? "%.0f× " : "%.1f× ", r) kind(ratio)
}
function median(row,   i, j, n, held, sorted) {
    n = count[row]
    for (i = 1; i <= n; ++i) {
        held = ratios[row, i]
        for (j = i - 1; j > 0 && sorted[j] > held; --j) sorted[j + 1] = sorted[j]
        sorted[j + 1] = held
    }
    return n % 2 ? sorted[(n + 1) / 2] : sqrt(sorted[n / 2] * sorted[n / 2 + 1])
}
# One of the axis's ends: the first of 3, 10, 30, 100 that holds `largest`.
function bound(largest,   i, ends) {
    split("3 10 30 100", ends, " ")
    for (i = 1; i < 4 && ends[i] + 0 < largest; ++i) {}
    return ends[i] + 0
}

function style() {
    put("<style>")
    put("text{font:12px system-ui,'Segoe UI','DejaVu Sans',Helvetica,Arial,sans-serif}")
    put("text{fill:#1f2328}")
    put(".title{font-size:17px;font-weight:600}.class{font-size:13px;font-weight:600}")
    put(".end{text-anchor:end}.tick{text-anchor:middle}.peer,.tick,.note{fill:#57606a}")
    put(".peer,.note{font-size:11px}.paper{fill:#fff;stroke:#d0d7de}")
    put(".grid{stroke:#d8dee4}.even{stroke:#1f2328;stroke-width:1.5}")
    put(".faster{fill:#0072b2}.level{fill:#8c959f}.slower{fill:#d55e00}")
    put(".bar{opacity:.4}.dot{opacity:.75}")
    put("text.faster{fill:#005a8f}text.level{fill:#57606a}text.slower{fill:#a84a00}")
    put("@media(prefers-color-scheme:dark){text{fill:#e6edf3}")
    put(".peer,.tick,.note{fill:#9198a1}.paper{fill:#0d1117;stroke:#3d444d}")
    put(".grid{stroke:#2a313c}.even{stroke:#e6edf3}")
    put(".bar{opacity:.5}.faster,text.faster{fill:#56b4e9}.slower,text.slower{fill:#e69f00}")
    put("text.level{fill:#9198a1}}")
    put("</style>")
}

function axis(bottom,   i, n, ticks, x, ratio) {
    n = split("100 30 10 3", ticks, " ")
    for (i = 1; i <= 2 * n + 1; ++i) {
        ratio = i <= n ? ticks[i] + 0 : i == n + 1 ? 1 : 1 / ticks[2 * n + 2 - i]
        if (ratio != inside(ratio)) continue
        x = abscissa(ratio)
        put(sprintf("<line class=\"%s\" x1=\"%.1f\" y1=\"%d\" x2=\"%.1f\" y2=\"%d\"/>",
            (ratio == 1 ? "even" : "grid"), x, chartTop - 6, x, bottom))
        text("tick", x, chartTop - 12,
            (ratio == 1 ? "equal" : sprintf("%.0f×", ratio > 1 ? ratio : 1 / ratio)))
    }
    text("note", plotLeft, chartTop - 32, "◀ kelvofxds is faster")
    text("note end", plotRight, chartTop - 32, "the peer is faster ▶")
}

function legend(y) {
    box("faster bar", 20, y - 9, 26, 10)
    text("note", 52, y, "faster")
    box("level bar", 96, y - 9, 26, 10)
    text("note", 128, y, "level, within 1.2×")
    box("slower bar", 236, y - 9, 26, 10)
    text("note", 268, y, "slower")
}

# A list of names, without those that go beyond `limit` bytes.
function shortened(list, limit) {
    if (length(list) <= limit) return list
    while (length(list) > limit && sub(/, [^,]*$/, "", list)) {}
    return list " ..."
}

function drawRow(row, y,   i, middle, from, to, x, ratio) {
    middle = median(row)
    text("end", labelEnd, y + 13, rowName[row])
    text("peer", labelEnd + 12, y + 13, shortened(rowPeer[row], 52))
    from = abscissa(1)
    to = abscissa(inside(middle))
    box(kind(middle) " bar", (from < to ? from : to), y + 4, (from < to ? to - from : from - to), 10)
    for (i = 1; i <= count[row]; ++i) {
        ratio = ratios[row, i]
        x = abscissa(inside(ratio))
        if (ratio == inside(ratio))
            put(sprintf("<circle class=\"%s dot\" cx=\"%.1f\" cy=\"%d\" r=\"2.5\"/>", kind(ratio), x,
                y + 9))
        else
            put(sprintf("<path class=\"%s\" d=\"M%.1f %dl%d -4v8z\"/>", kind(ratio), x, y + 9,
                (ratio > 1 ? 6 : -6)))
    }
    text(kind(middle), plotRight + 10, y + 13, times(middle))
}
# `ratio`, or the end of the axis that it is beyond. A billionth is for rounding.
function inside(ratio) {
    return ratio > left * (1 + 1e-9) ? left : 1 / ratio > right * (1 + 1e-9) ? 1 / right : ratio
}

# The rows of a class, the fastest first.
function drawClass(chart, class, y,   i, j, n, held, list, middles) {
    n = split(rows[chart, class], list, "\t")
    for (i = 1; i <= n; ++i) middles[list[i]] = median(list[i])
    for (i = 2; chart != "overview" && i <= n; ++i) {
        held = list[i]
        for (j = i - 1; j > 0 && middles[list[j]] < middles[held]; --j) list[j + 1] = list[j]
        list[j + 1] = held
    }
    text("class", 20, y + 14, called(class))
    y += rowHeight + 2
    for (i = 1; i <= n; ++i) {
        drawRow(list[i], y)
        y += rowHeight
    }
    return y
}

function source(chart,   words) {
    words = "Source: docs/performance.md, measured " when[""]
    if (chart == "transcribe" || chart == "overview")
        return words ", graph streams " when["Graph streams"]
    return words machine
}

function heightOf(chart,   i, n, m, list, row, height) {
    n = split(classes[chart], list, "\t")
    height = chartTop
    for (i = 1; i <= n; ++i) height += rowHeight * (split(rows[chart, list[i]], row, "\t") + 1) + 10
    return height
}

function draw(chart,   i, n, list, bottom, y) {
    file = out "/" chart ".svg"
    bottom = heightOf(chart)
    labelEnd = chart == "overview" ? 140 : chart == "large" ? 310 : 236
    left = bound(most[chart])
    right = bound(most[chart, "slower"])
    put(sprintf("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\"", width,
        bottom + 38) sprintf(" viewBox=\"0 0 %d %d\" role=\"img\">", width, bottom + 38))
    put("<title>" escaped(title[chart]) "</title>")
    style()
    box("paper", 0.5, 0.5, width - 1, bottom + 37, " rx=\"6\"")
    text("title", 20, 30, title[chart])
    text("note", 20, 50, "CPU time on a logarithmic scale. A dot is one measurement, at one " \
        "size; the bar and the figure are their median." \
        (most[chart] > left || most[chart, "slower"] > right ? " Triangles are farther off." : ""))
    legend(chartTop - 32)
    axis(bottom)
    y = chartTop
    n = split(classes[chart], list, "\t")
    for (i = 1; i <= n; ++i) y = drawClass(chart, list[i], y) + 8
    text("note", 20, bottom + 22, source(chart))
    put("</svg>")
    close(file)
}

END {
    if (failed) exit 1
    if (total == 0) fail("no table")
    for (chart in title) {
        if (classes[chart] == "") fail("nothing to draw for " chart)
        draw(chart)
    }
}
