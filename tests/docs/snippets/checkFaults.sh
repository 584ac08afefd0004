#!/bin/sh
# checkFaults.sh SAMPLE FOLDER TOOL - does checkPage.sh find what is wrong with a page
#
# SAMPLE is sample.md, FOLDER what was made of it. Each case changes the page in one place, so that
# it says what its programs do not do, and names what has to be said of that.
set -eu
export LC_ALL=C

here=$(cd "$(dirname "$0")" && pwd)
sample=$1
folder=$2
tool=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0

finds() { # SED-EXPRESSION TEXT [TEXT]
    rm -rf "$work/page"
    mkdir "$work/page"
    cp "$folder"/[0-9][0-9] "$work/page"
    sed -e "$1" "$sample" >"$work/changed.md"
    awk -v page=changed.md -v folder="$work/page" -f "$here/blocksOf.awk" "$work/changed.md"
    if "$here/checkPage.sh" changed.md "$work/page" "" "$tool" >"$work/said" 2>&1; then
        echo "nothing is found after $1"
        failed=1
        return
    fi
    for text in "$2" "${3:-$2}"; do
        grep -qxF -e "$text" "$work/said" && continue
        echo "after $1 it does not say \"$text\" but:"
        cat "$work/said"
        failed=1
    done
}

line() { # TEXT: the number of the sample's line that is TEXT
    grep -nxF -e "$1" "$sample" | head -n 1 | cut -d: -f1
}

differs="what the page says (-) is not what is printed (+)"
finds 's/^7$/8/' "changed.md:$(line 7): $differs" -8
finds 's/^This is an error/This is no error/' "changed.md:$(line 7): $differs"
finds 's/^Lima$/Quito/' "changed.md:$(line '$ ./look capitals'): $differs" +Lima
finds 's/ends=3/ends=4/' "changed.md:$(($(line '```text ends=3') + 1)): it ends with 3, not 4"
finds 's/ends=abort/ends=0/' "changed.md:$(line 0): it ends with 134, not 0"
finds '/^\.\.\.$/d' "changed.md:$(line 0): $differs" +8
finds 's/^9$/10/' "changed.md:$(line 0): $differs"
finds 's/^    return 3;$/return 4;/' \
    "changed.md:$(line 'if (!copy)'): lines that no program of the page has"
finds '$d' "changed.md:$(line 'What nobody compiles.'): a block without an end"
finds '1s/$/\n\n  ```cpp/' "changed.md:3: a block that is indented"
finds '1,$d' "changed.md:1: it has nothing to run"
exit "$failed"
