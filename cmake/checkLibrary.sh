#!/bin/sh
# checkLibrary.sh READELF LIBRARY - does LIBRARY have the form that hosts link against
#
# A host that is not position independent keeps its own copies of the library's statics and type
# records. That only works while the library looks them up at run time as well: no -Bsymbolic, and
# no symbol with protected visibility. The soname is what hosts ask the loader for.
set -eu
export LC_ALL=C

readelf=$1
library=$2
failures=0

fail() {
    echo "$library: $1"
    failures=$((failures + 1))
}

"$readelf" -h "$library" | grep -q 'Class:.*ELF32' || fail "not a 32-bit library"
dynamic=$("$readelf" -dW "$library")
echo "$dynamic" | grep -q 'SONAME.*\[libkelvofxds\.so\.1\]' ||
    fail "soname is not libkelvofxds.so.1"
if echo "$dynamic" | grep -q 'SYMBOLIC'; then
    fail "linked with -Bsymbolic"
fi
if "$readelf" --dyn-syms -W "$library" | grep -w 'PROTECTED'; then
    fail "the symbols above are protected"
fi
exit "$failures"
