# blocksOf.awk - takes the fenced blocks of a page apart.
#
# awk -v page=docs/cookbook.md -v folder=OUT -f blocksOf.awk docs/cookbook.md
#
# writes into OUT what CMakeLists.txt compiles and checkPage.sh runs: NN.cpp, a program for block NN;
# NN.text, what it prints; NN.file, a file; NN.console and NN.sh, commands; and `plan`, the steps in
# the order of the page. The rules are those of README.md beside this file.

function fault(at, message) { print "fault", at, message >plan }

function option(name,    i, words, n) {
    n = split(info, words, " ")
    for (i = 2; i <= n; ++i)
        if (index(words[i], name "=") == 1)
            return substr(words[i], length(name) + 2)
    return ""
}

function has(word) { return index(" " info " ", " " word " ") > 1 }

# A text without the spaces that its lines begin with.
function flat(text) {
    gsub(/\n +/, "\n", text)
    sub(/^ +/, "", text)
    return text
}

function write(name, text) {
    printf "%s", text >(folder "/" name)
    close(folder "/" name)
}

# The program that a block is, or is the body of.
function program(name,    lines, n, i, includes, body) {
    if (text ~ /(^|\n)int main\(/) {
        programs = programs "\n" flat(text)
        write(name, "#line " start " \"" page "\"\n" text)
        return
    }
    n = split(text, lines, "\n")
    for (i = 1; i < n; ++i) {
        if (lines[i] ~ /^#include/) {
            includes = includes lines[i] "\n"
            body = body "\n"
        } else
            body = body (lines[i] == "" ? "" : "    ") lines[i] "\n"
    }
    write(name, "#include <kelvofxds/kelvofxds.h>\n#include <kelvofxds/std.h>\n" includes \
        "\nint main() {\n    fxInitializeToolkit();\n#line " start " \"" page "\"\n" body "}\n")
}

# A program without a text prints nothing; one with a name may be there for commands alone.
function finish() {
    if (pending != "" && !named)
        print "run", pending, pendingAt, "0" >plan
    pending = named = ""
}

function endOfBlock(    kind, file) {
    kind = info
    sub(/ .*/, "", kind)
    file = option("file")
    if (kind == "text" && pending != "" && file == "" && !has("loose")) {
        write(pending ".text", text)
        print "run", pending, start, option("ends") == "" ? "0" : option("ends") >plan
        pending = named = ""
        return
    }
    finish()
    number = sprintf("%02d", ++count)
    if (kind == "cpp" && has("part")) {
        partText[++parts] = flat(text)
        partAt[parts] = start
    } else if (kind == "cpp" && !has("loose")) {
        program(number ".cpp")
        pending = number
        pendingAt = start
        named = file != ""
        if (named)
            print "named", number, start, option("as") == "" ? substr(file, 1, length(file) - 4) : \
                option("as") >plan
        if (named) {
            write(number ".file", text)
            print "source", number, start, file >plan
        }
    } else if (kind == "console") {
        write(number ".console", text)
        print "console", number, start >plan
    } else if (file != "") {
        write(number ".file", text)
        print "file", number, start, file >plan
    } else if (kind == "sh") {
        write(number ".sh", text)
        print "shell", number, start >plan
    }
}

BEGIN {
    plan = folder "/plan"
    printf "" >plan
}

inside && /^```$/ {
    inside = 0
    endOfBlock()
    next
}

inside {
    text = text $0 "\n"
    next
}

/^```/ {
    info = substr($0, 4)
    text = ""
    start = NR + 1
    inside = 1
    next
}

# Such a block would be one that nobody runs.
/^[ \t]+```(cpp|console)/ { fault(NR, "a block that is indented") }

# What follows a heading belongs to something else.
/^#/ { finish() }

END {
    finish()
    if (inside)
        fault(start, "a block without an end")
    for (i = 1; i <= parts; ++i)
        if (index(programs "\n", "\n" partText[i]) == 0)
            fault(partAt[i], "lines that no program of the page has")
}
