# Turns this project's comment style into what Doxygen expects. Line numbers stay the same.
#
# - The first line of a header, "// name.h - purpose", describes the file. Without it Doxygen would
#   leave out the file's free functions and variables.
# - A /// comment holds for every declaration up to the next comment or blank line: it is repeated
#   in front of the second and later ones.
# - A // comment behind a declaration describes it.
# - Deleted and defaulted members need no description.

NR == 1 && sub(/^\/\/ [^ ]* - /, "/** @brief ") {
    print $0 " @file */"
    next
}

/^ *\/\/\// {
    text = $0
    sub(/^ *\/\/\/ ?/, "", text)
    doc = in_comment ? doc " " text : text
    in_comment = 1
    print
    next
}

/^ *$/ || /^ *\/\// || /^#/ || /^ *(public|protected|private):/ || /^ *};?$/ {
    doc = ""
}

{
    match($0, /^ */)
    if (in_comment)
        indent = RLENGTH
    starts = !in_comment && doc != "" && RLENGTH == indent && ended
    ended = /[;}]( *\/\/.*)?$/
    if (in_comment && /^ *(class|struct|enum|union|namespace)/)
        doc = ""
    in_comment = 0

    if (/= (delete|default);/) {
        print ""
        next
    }
    sub(/;  *\/\/ /, ";  ///< ")
    if (starts)
        sub(/^ */, "&/** " doc " */ ")
    print
}
