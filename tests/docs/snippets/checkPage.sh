#!/bin/sh
# checkPage.sh PAGE FOLDER EMULATOR [TOOL...] - do the programs of a page do what it says
#
# FOLDER has what blocksOf.awk made of PAGE and, as NN, the programs. They run in the order of the
# page and in one fresh folder, by EMULATOR unless it is empty; TOOLs are found by their names.
set -u
export LC_ALL=C
ulimit -c 0

page=$1
folder=$2
emulator=$3
shift 3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/bin" "$work/home"
export HOME="$work/home"
export PATH="$work/bin:$PATH"
cd "$work/home" || exit 1
faults=0
ran=0

fault() { # LINE MESSAGE
    echo "$page:$1: $2"
    faults=$((faults + 1))
}

# A program under a name of its own.
name_program() { # FILE PROGRAM
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
    cat "$work/err" >>"$work/out"
    expected=$folder/$1.text
    [ -f "$expected" ] || expected=/dev/null
    compare "$2" "$expected" "$work/out"
    [ "$3" != abort ] || set -- "$1" "$2" 134
    [ "$status" -eq "$3" ] || fault "$2" "it ends with $status, not $3"
    ran=$((ran + 1))
}

# Each line that begins with "$ " is a command, to which lines that begin with "> " belong when it
# ends in a backslash; the block is what a terminal shows of them all.
console() { # NUMBER LINE
    (
        while IFS= read -r line <&3; do
            case $line in
            '$ '*) ;;
            *) continue ;;
            esac
            printf '%s\n' "$line"
            command=${line#'$ '}
            while [ "${command%\\}" != "$command" ] && IFS= read -r line <&3; do
                printf '%s\n' "$line"
                command=${command%\\}${line#'> '}
            done
            eval "$command" 2>&1 </dev/null
        done
    ) 3<"$folder/$1.console" >"$work/out"
    compare "$2" "$folder/$1.console" "$work/out"
    ran=$((ran + 1))
}

for tool in "$@"; do
    name_program "$work/bin/${tool##*/}" "$tool"
done
while read -r step number line rest <&4; do
    case $step in
    fault) fault "$number" "$line $rest" ;;
    named) name_program "${rest%.cpp}" "$folder/$number" ;;
    file) cp "$folder/$number.file" "$rest" ;;
    console) console "$number" "$line" ;;
    run) run "$number" "$line" "$rest" ;;
    esac
done 4<"$folder/plan"

[ "$ran" -gt 0 ] || fault 1 "it has nothing to run"
[ "$faults" -eq 0 ] || exit 1
echo "$page: $ran blocks do what it says"
