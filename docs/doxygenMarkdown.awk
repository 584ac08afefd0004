# doxygenMarkdown.awk - a document as doxygen takes it.
#
# Doxygen does not know headings by the names that links elsewhere have for them, and knows one name
# once in all documents: so headings get a name with the document's in front, and links lead there.

# What a link in a document calls a heading.
function slug(text) {
    text = tolower(text)
    gsub(/[^a-z0-9 _-]/, "", text)
    gsub(/ /, "-", text)
    return text
}

# The document at `path` in names: "surprises", "tutorialREADME".
function base(path) {
    sub(/^.*docs\//, "", path)
    sub(/\.md$/, "", path)
    gsub(/[^A-Za-z0-9]/, "", path)
    return path
}

# The line with its links to headings, of this document and of its neighbours.
function linked(line,    done, link, parts) {
    done = ""
    while (match(line, /\]\([A-Za-z0-9_.-]*#[a-z0-9_-]+\)/)) {
        link = substr(line, RSTART + 2, RLENGTH - 3)
        split(link, parts, "#")
        done = done substr(line, 1, RSTART - 1) "](#" base(parts[1] == "" ? FILENAME : parts[1]) \
            "-" parts[2] ")"
        line = substr(line, RSTART + RLENGTH)
    }
    return done line
}

/^ *```/ { inCode = !inCode }
!inCode && /^##+ / {
    heading = $0
    sub(/^#+ /, "", heading)
    print $0 " {#" base(FILENAME) "-" slug(heading) "}"
    next
}
!inCode { print linked($0); next }
{ print }
