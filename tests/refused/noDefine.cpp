// refused: undefined reference

#include "kelvofxds/transcribe/fxXDRMembers.h"

class Book : public fxXDRObj {
    FX_XDR_MEMBERS(Book)
    int pages = 0;
};
#ifndef REFUSED
FX_DEFINE_XDR(Book, "Book", 1)
#endif
unsigned char Book::xdr(fxTranscriber& t) { return t.xdr(&pages, 1); }

int main() { return Book().pages; }
