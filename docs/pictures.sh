#!/bin/sh
# pictures.sh - draws the pictures of the documents anew: the charts from the tables of
# docs/performance.md, and each graph that a document gives as a block, `digraph ...`, into the next
# picture that the document shows; and the wiring of examples/pipeline, where that has been built.
# Needs dot, of Graphviz. Run from the top folder.
set -eu

graphs=${1:-build/docs/graphs}
mkdir -p "$graphs" docs/charts
LC_ALL=C awk -v out=docs/charts -f bench/charts.awk docs/performance.md

pipeline=build/release/examples/pipeline
if [ -x "$pipeline" ] && "$pipeline" --dot </dev/null >"$graphs/pipeline.gv" 2>/dev/null; then
    dot -Tsvg "$graphs/pipeline.gv" >docs/pipeline.svg
    echo docs/pipeline.svg
fi

for document in README.md docs/*.md docs/*/*.md; do
    [ -f "$document" ] || continue
    rm -f "$graphs"/*.dot
    awk -v out="$graphs" '
    /^```/ { inside = 0 }
    /^digraph / { inside = 1; lines = "" }
    inside { lines = lines $0 "\n" }
    lines != "" && !inside && match($0, /\]\([^)]*\.svg\)/) {
        name = substr($0, RSTART + 2, RLENGTH - 7)
        gsub(/\//, "%", name)
        printf "%s", lines >(out "/" name ".dot")
        lines = ""
    }' "$document"
    for graph in "$graphs"/*.dot; do
        [ -f "$graph" ] || continue
        picture=$(dirname "$document")/$(basename "$graph" .dot | tr % /).svg
        dot -Tsvg "$graph" >"$graphs/drawn.svg"
        cp "$graphs/drawn.svg" "$picture"
        echo "$picture"
    done
done
