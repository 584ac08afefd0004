#!/bin/sh
# install.sh BUILD PREFIX - installs what the build folder BUILD has made, so that it can be removed
#
# What was installed is listed in PREFIX/share/kelvofxds/installed, for uninstall.sh: first the files,
# then, each with a slash behind it and the deepest first, the folders that were not there before.
# PREFIX is absolute. What an older version has left there is removed first.
set -eu
export LC_ALL=C

build=$(cd "$1" && pwd)
prefix=$2
here=$(cd "$(dirname "$0")" && pwd)
list=share/kelvofxds/installed
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Once beside it, to learn what it is.
DESTDIR=$work/stage cmake --install "$build" --prefix "$prefix"
cd "$work/stage$prefix"
mkdir -p "$(dirname "$list")"
: >"$list"

if [ -f "$prefix/$list" ]; then
    "$here/uninstall.sh" "$prefix"
fi
find . ! -type d | sed 's,^\./,,' | sort >"$work/list"
find . -depth -type d | while IFS= read -r folder; do
    [ -d "$prefix/$folder" ] || echo "${folder#./}/"
done >>"$work/list"

cd /
cmake --install "$build" --prefix "$prefix"
mkdir -p "$(dirname "$prefix/$list")"
cp "$work/list" "$prefix/$list"
chmod 644 "$prefix/$list"
