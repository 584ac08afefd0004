#!/bin/sh
# uninstall.sh PREFIX - removes what install.sh has put into PREFIX, and nothing else
#
# The folders that it made go, too, unless something else lies in them by now.
set -eu

prefix=$1
list=$prefix/share/kelvofxds/installed

if ! [ -f "$list" ]; then
    echo "$list is not there, so nothing can be removed from $prefix" >&2
    exit 1
fi
# The list is among the files that it names, and stays readable until the end.
while IFS= read -r entry; do
    case $entry in
    */) rmdir "$prefix/${entry#./}" 2>/dev/null || true ;;
    *) rm -f "$prefix/$entry" ;;
    esac
done <"$list"
