#!/bin/sh
# checkPage.sh PAGE FOLDER EMULATOR [TOOL...] - do the programs of a page do what it says
# checkPage.sh --typed BUILD PAGE FOLDER - does all that a page has one type do what it says
#
# FOLDER has what blocksOf.awk made of PAGE and, as NN, the programs. They run in the order of the
# page and in one fresh folder, by EMULATOR unless it is empty; TOOLs are found by their names.
#
# Typed, nothing is compiled before: the page's own commands do that, with what `./dev install` puts
# where they say. Here that installs what is in BUILD, and nothing is downloaded.
set -u
export LC_ALL=C
# shellcheck disable=SC3045 # every shell that is a sh here has it
ulimit -c 0

build=
if [ "$1" = --typed ]; then
    build=$2
    page=$3
    folder=$4
    emulator=
    shift 4
else
    page=$1
    folder=$2
    emulator=$3
    shift 3
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/bin" "$work/home"
export HOME="$work/home"
export PATH="$work/bin:$PATH"
cd "$work/home" || exit 1
faults=0
ran=0
skipped=0

fault() { # LINE MESSAGE
    echo "$page:$1: $2"
    faults=$((faults + 1))
}

make_folder_of() { # FILE
    case $1 in
    */*) mkdir -p "${1%/*}" ;;
    esac
}

write_file() { # FROM FILE
    make_folder_of "$2"
    cp "$1" "$2"
}

# A program under a name of its own.
name_program() { # FILE PROGRAM
    make_folder_of "$1"
    printf '#!/bin/sh\nexec %s "%s" "$@"\n' "$emulator" "$2" >"$1"
    chmod +x "$1"
}

# The lines of FILE "..." stand for any lines, also none.
same() { # EXPECTED FOUND
    cmp -s "$1" "$2" && return 0
    grep -qx '\.\.\.' "$1" || return 1
    awk '
        NR == FNR { want[++wants] = $0; next }
        { found[++finds] = $0 }
        END {
            w = f = 1
            while (f <= finds) {
                if (w <= wants && want[w] == "...") { mark = w++; back = f; continue }
                if (w <= wants && want[w] == found[f]) { ++w; ++f; continue }
                if (!mark) exit 1
                w = mark + 1
                f = ++back
            }
            while (w <= wants && want[w] == "...") ++w
            exit w <= wants
        }' "$1" "$2"
}

compare() { # LINE EXPECTED FOUND
    same "$2" "$3" && return 0
    fault "$1" "what the page says (-) is not what is printed (+)"
    diff -u "$2" "$3" | sed 1,2d
}

run() { # NUMBER LINE ENDS
    # In the background, of whose signals the shell says nothing.
    $emulator "$folder/$1" >"$work/out" 2>"$work/err" </dev/null &
    wait $!
    status=$?
    # What qemu has to say of a signal is not the program's.
    sed '/^qemu: uncaught target signal/d' "$work/err" >>"$work/out"
    expected=$folder/$1.text
    [ -f "$expected" ] || expected=/dev/null
    compare "$2" "$expected" "$work/out"
    [ "$3" != abort ] || set -- "$1" "$2" 134
    [ "$status" -eq "$3" ] || fault "$2" "it ends with $status, not $3"
    ran=$((ran + 1))
}

# The command that begins with TEXT and goes on in the lines of descriptor 3 while they end in a
# backslash. What has been read is in `read`.
read_command() { # TEXT
    command=$1
    while [ "${command%\\}" != "$command" ] && IFS= read -r line <&3; do
        read="$read
$line"
        command=${command%\\}${line#'> '}
    done
}

# Each line that begins with "$ " is a command, to which lines that begin with "> " belong when it
# ends in a backslash; the block is what a terminal shows of them all. An emulator is no such shell.
console() { # NUMBER LINE
    if [ -n "$emulator" ]; then
        skipped=$((skipped + 1))
        return
    fi
    (
        while IFS= read -r line <&3; do
            case $line in
            '$ '*) ;;
            *) continue ;;
            esac
            read=$line
            read_command "${line#'$ '}"
            printf '%s\n' "$read"
            eval "$command" 2>&1 </dev/null
        done
    ) 3<"$folder/$1.console" >"$work/out"
    compare "$2" "$folder/$1.console" "$work/out"
    ran=$((ran + 1))
}

# Commands each of which has to succeed. What they export stays.
type_all() { # NUMBER LINE
    while IFS= read -r line <&3; do
        read=
        read_command "$line"
        if ! eval "$command" >"$work/out" 2>&1 </dev/null; then
            fault "$2" "this fails: $command"
            cat "$work/out"
        fi
        ran=$((ran + 1))
    done 3<"$folder/$1.sh"
}

# What stands for things that a test does not do.
prepare_typing() {
    printf '#!/bin/sh\n' >"$work/bin/sudo"
    printf '#!/bin/sh\n[ "$1" = install ] && exec cmake --install "%s" --prefix "$2"\n' \
        "$build" >dev
    chmod +x "$work/bin/sudo" dev
    unset PKG_CONFIG_PATH CMAKE_PREFIX_PATH LD_LIBRARY_PATH
}

[ -z "$build" ] || prepare_typing
for tool in "$@"; do
    name_program "$work/bin/${tool##*/}" "$tool"
done
while read -r step number line rest <&4; do
    case ${build:+typed_}$step in
    typed_source | typed_file | file) write_file "$folder/$number.file" "$rest" ;;
    typed_shell) type_all "$number" "$line" ;;
    typed_console) console "$number" "$line" ;;
    fault) fault "$number" "$line $rest" ;;
    named) name_program "$rest" "$folder/$number" ;;
    console) console "$number" "$line" ;;
    run) run "$number" "$line" "$rest" ;;
    esac
done 4<"$folder/plan"

[ $((ran + skipped)) -gt 0 ] || fault 1 "it has nothing to run"
[ "$faults" -eq 0 ] || exit 1
echo "$page: $ran blocks do what it says, $skipped were not run"
