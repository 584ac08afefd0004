// refused: fxArrayOf: to be transcribed, elements are

#include "kelvofxds/containers/fxArrayOf.h"

struct Page {
    int lines = 0;
#ifndef REFUSED
    unsigned char xdr(fxTranscriber& t) { return t.xdr(&lines, 1); }
#endif
};

class Book : public fxXDRObj {
    FX_XDR_MEMBERS(Book)
    fxArrayOf<Page> pages;
};
FX_DEFINE_XDR(Book, "Book", 1)
unsigned char Book::xdr(fxTranscriber& t) { return pages.xdr(t); }

int main() {}
