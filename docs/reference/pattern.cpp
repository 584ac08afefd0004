// pattern.cpp - examples of the reference manual: kelvofxds/pattern.

#include <cstdlib>
#include <cstring>

#include "docs/reference/examples.h"

EXAMPLE(fxRegEx) {
    //! [fxRegEx]
    const char text[] = "born 1815 in London";
    const fxRegEx year("[0-9]+");
    int start = 0, end = 0;
    if (year.bracketBuffer(text, sizeof text - 1, start, end))
        std::printf("%.*s at %d\n", end - start, text + start, start);  // 1815 at 5
    //! [fxRegEx]
}

EXAMPLE(fxSLinearPattern) {
    //! [fxSLinearPattern]
    const char text[] = "to be or not to be";
    const fxSLinearPattern word("not");
    std::printf("%d\n", word.findBuffer(text, sizeof text - 1));                     // 9
    std::printf("%d\n", fxSLinearPattern("all").findBuffer(text, sizeof text - 1));  // -1
    //! [fxSLinearPattern]
}

EXAMPLE(fxTextPattern) {
    //! [fxTextPattern]
    const char text[] = "a+b";
    const fxRef<fxTextPattern> plain(new fxSLinearPattern("+")), expression(new fxRegEx("[b-z]"));
    for (const fxRef<fxTextPattern>& pattern : {plain, expression})
        if (pattern->findBuffer(text, 3) == 2)
            std::printf("%d\n", pattern->findEndBuffer(text, 3));  // 3
    //! [fxTextPattern]
}

EXAMPLE(fxregexp) {
    //! [fxregexp]
    fxregexp* program = fxregcomp("([a-z]+)=([0-9]+)");
    if (program && fxregexec(program, "size=12")) {
        char out[20];
        fxregsub(program, "\\2 is \\1", out);
        std::printf("%s\n", out);  // 12 is size
    }
    std::free(program);
    //! [fxregexp]
}
