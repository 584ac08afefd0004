#!/bin/sh
# checkStd.sh SOURCE_DIR LIBRARY COMPILER [OPTION...] - do hosts of every kind compile <kelvofxds/std.h>
#
# Each header of it, as the only include of a file, and a program that uses them all, in each version
# of the language, with every warning an error, also with the marks of surprises, and without
# exceptions and type information. The program runs, too. No header brings std.h into kelvofxds.h, and
# no function of it is in the library.
set -eu
export LC_ALL=C

source=$1
library=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
warnings="-Wall -Wextra -Wconversion -Wshadow -Werror"
programs=$source/tests/std/headers

versions="17 20 23"
if ! "$@" -std=c++23 -fsyntax-only -x c++ /dev/null 2>/dev/null; then
    versions="17 20 2b"
fi

for version in $versions; do
    for header in $(cd "$source" && find kelvofxds -name '*Std.h') kelvofxds/std.h; do
        echo "#include <$header>" >"$work/alone.cpp"
        # shellcheck disable=SC2086 - the warnings are several words
        "$@" -std=c++$version $warnings -DKELVOFXDS_WARN_SURPRISES -I"$source" -fsyntax-only \
            "$work/alone.cpp"
    done
    # shellcheck disable=SC2086 - so are they here
    "$@" -std=c++$version $warnings -I"$source" -fsyntax-only "$programs/incomplete.cpp"
    for options in "" "-DKELVOFXDS_WARN_SURPRISES -O2" "-fno-exceptions -fno-rtti"; do
        # shellcheck disable=SC2086 - so are the options
        "$@" -std=c++$version $warnings $options -I"$source" "$programs/use.cpp" -o "$work/use" \
            "$library" -Wl,-rpath,"$(dirname "$library")"
        "$work/use"
    done
done

stand_in="-DSTAND_IN -D__cpp_lib_format=202110L -I$programs/standIn"
echo '#include <version>' >"$work/version.cpp"
if "$@" -std=c++20 -E -dM "$work/version.cpp" | grep -q __cpp_lib_format; then
    stand_in=
fi
# shellcheck disable=SC2086 - none or several words
"$@" -std=c++20 $stand_in -I"$source" "$programs/format.cpp" -o "$work/format" "$library" \
    -Wl,-rpath,"$(dirname "$library")"
"$work/format"

for order in "" -DBEHIND; do
    # shellcheck disable=SC2086 - none or one word
    "$@" -std=c++17 $order -I"$source" "$programs/fmt.cpp" -o "$work/fmt" "$library" \
        -Wl,-rpath,"$(dirname "$library")"
    "$work/fmt"
done

echo '#include <kelvofxds/kelvofxds.h>' >"$work/umbrella.cpp"
if "$@" -std=c++17 -I"$source" -M "$work/umbrella.cpp" | grep -E 'kelvofxds/std\.h|[a-z]Std\.h'; then
    echo "kelvofxds.h includes the above"
    exit 1
fi
if nm -DC --defined-only "$library" |
    grep -E ' (fxView|fxString|fxStrOf|fxMake|fxAppend|fxSort|fxCopyInto|fxAddAll|fxStdParts)\b'; then
    echo "the library exports the above"
    exit 1
fi
