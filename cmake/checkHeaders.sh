#!/bin/sh
# checkHeaders.sh CMAKE BUILD_DIR SOURCE_DIR - does each public header stand alone
#
# No public header may include one that is not installed, and each must compile as the only include
# of a file (the target kelvofxds_headers has one such file per header).
set -eu

cmake=$1
build=$2
source=$3

if find "$source/kelvofxds" -name '*.h' ! -name '*Internal.h' \
    -exec grep -Hn '#include.*Internal\.h"' {} +; then
    echo "the public headers above include an internal one"
    exit 1
fi
"$cmake" --build "$build" --target kelvofxds_headers
