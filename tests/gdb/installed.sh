#!/bin/sh
# installed.sh GDB SCRIPT PROGRAM CMAKE BUILD: installs the library and the script below a fresh prefix
# and looks whether gdb, which is told to trust the folder and nothing else, loads the script by itself.
# Below /usr the script is in gdb's own folder instead. Exits with 77 where gdb cannot be had.
set -eu
. "$(dirname "$0")/gdb.sh"
cmake=$4
build=$5

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

install_below() {
    for part in kelvofxds gdb; do
        "$cmake" -DCMAKE_INSTALL_PREFIX="$1" -P "$build/$part/cmake_install.cmake" >/dev/null
    done
}

install_below "$work/prefix"
library=$(readlink -f "$(find "$work/prefix" -name libkelvofxds.so)")
cmp "$script" "$library-gdb.py"

LC_ALL=C "$gdb" -nx -nh -batch -iex "set debuginfod enabled off" \
    -iex "set auto-load safe-path $(dirname "$library")" -ex "set startup-with-shell off" \
    -ex "set environment LD_LIBRARY_PATH $(dirname "$library")" \
    -ex "break fxObj::sendInt" -ex "run </dev/null" -ex up -ex "print phones" -ex "fx timers" \
    "$program" 2>&1 | sed -n '/^\$1 = /,$p' >"$work/shown"
diff - "$work/shown" <<'EOF'
$1 = fxStrStrDictionary with 2 entries = {["Bob"] = "1906", ["Ada"] = "1815"}
No timer is active.
EOF

export DESTDIR="$work/root"
install_below /usr
found=$(cd "$DESTDIR" && find . -name '*-gdb.py')
case $found in
./usr/share/gdb/auto-load/usr/lib*/"${library##*/}-gdb.py") ;;
*)
    echo "below /usr: $found"
    exit 1
    ;;
esac
