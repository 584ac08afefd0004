# told.sh - what docs/install.md tells, done as it tells it. Sourced by the scripts beside it.
#
# The blocks of the document are run word for word in a shell of their own, in a folder that has
# nothing but host.cpp, with HOME set so that the document's ~/kelvofxds is a prefix of the test's.
# shellcheck shell=sh disable=SC2154,SC2164 # who sources it sets source and work, and stops at errors

# The parent's settings are not those of a fresh shell.
unset CXX CXXFLAGS CPPFLAGS LDFLAGS PKG_CONFIG_PATH LD_LIBRARY_PATH CMAKE_PREFIX_PATH CMAKE_GENERATOR

answer="The capital of Peru is Lima."

fail() {
    echo "$*"
    exit 1
}

# block HEADING LANGUAGE: the first block in LANGUAGE below "## HEADING" of docs/install.md.
block() {
    awk -v heading="## $1" -v fence="\`\`\`$2" '
        /^## / { here = $0 == heading }
        here && $0 == fence { inside = 1; next }
        inside && /^```$/ { exit }
        inside' "$source/docs/install.md"
}

# fresh NAME: the empty folder NAME with a program, as the working folder.
fresh() {
    rm -rf "${work:?}/$1"
    mkdir -p "$work/$1"
    cd "$work/$1"
    cp "$source/examples/hello/hello.cpp" host.cpp
}

# one_line: the words of the standard input on one line.
one_line() { tr -s ' \n' '  '; }

# refused COMMAND...: fails COMMAND as a 64-bit compiler has to, with the sentence of the source tree.
refused() {
    sentence=$(sed -n '/^set(kelvofxds_only_32_bit$/,/)$/p' "$source/CMakeLists.txt" |
        sed -e 1d -e 's/^ *"//' -e 's/")$//' -e 's/\\$//' | tr -d '\n')
    [ -n "$sentence" ] || fail "there is no sentence in CMakeLists.txt"
    if "$@" >said 2>&1; then
        fail "goes well for 64 bits: $*"
    fi
    one_line <said | grep -qF -e "$sentence" || fail "not \"$sentence\" but:" "$(cat said)"
}

# told HEADING: does what stands there, and looks at the last line that it prints.
told() {
    block "$1" cmake >CMakeLists.txt
    block "$1" sh >commands
    [ -s commands ] || fail "docs/install.md has no commands below \"$1\""
    sh -eu ./commands >said 2>&1 || fail "what stands below \"$1\" fails:" "$(cat said)"
    [ "$(tail -n 1 said)" = "$answer" ] || fail "what stands below \"$1\" prints:" "$(cat said)"
}
