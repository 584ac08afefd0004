# Turns this project's comment style into what Doxygen expects. Line numbers stay the same.
#
# - The first line of a header, "// name.h - purpose", describes the file. Without it Doxygen would
#   leave out the file's free functions and variables.
# - A /// comment holds for every declaration up to the next comment or blank line: it is repeated
#   in front of the second and later ones.
# - A // comment behind a declaration describes it.
# - Deleted and defaulted members need no description.
# - Behind the first sentence on a class comes @opens{Class, header, examples, everything}, an alias
#   of docs/Doxyfile.in: how to include and link it, and its example of docs/reference. Those of
#   headers ...Std.h stand in a file of their own, and kelvofxds/std.h includes them.

# Where the first sentence on each class ends, by line: what @opens takes, and the column. Classes in
# a namespace are nobody's to name.
BEGIN {
    header = ARGV[1]
    sub(/^.*\/kelvofxds\//, "kelvofxds/", header)
    split(header, part, "/")
    examples = header ~ /Std\.h$/ ? "std, kelvofxds/std.h" : part[2] ", kelvofxds/kelvofxds.h"
    for (n = 1; (getline line < ARGV[1]) > 0; ++n) {
        if (line ~ /^\/\/\//) {
            if (!last || !ended) {
                ended = match(line, /\.( |$)/)
                column = ended ? RSTART : length(line)
                sentence = n
            }
            last = n
            continue
        }
        if (depth || line ~ /^namespace /) depth += gsub(/\{/, "{", line) - gsub(/\}/, "}", line)
        if (!depth && line ~ /^(class|struct) .*\{/ && line !~ /^(class|struct) ([^:{]*<|[a-z]+::)/) {
            sub(/^(class|struct) (FX_EXPORT )?/, "", line)
            sub(/[^A-Za-z0-9_].*$/, "", line)
            opens[last ? sentence : n] = line ", " header ", " examples
            if (last) at[sentence] = column
        }
        if (line !~ /^template </) last = ended = 0
    }
}

NR == 1 {
    purpose = $0
    sub(/^\/\/ [^ ]* - /, "", purpose)
}

# A class of a family whose comment stands above all of them.
FNR in opens && /^(class|struct) / {
    $0 = "/** One of " header ": " purpose " @opens{" opens[FNR] "} */ " $0
}

FNR in opens && /^\/\/\// {
    $0 = substr($0, 1, at[FNR]) " @opens{" opens[FNR] "}" substr($0, at[FNR] + 1)
}

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
