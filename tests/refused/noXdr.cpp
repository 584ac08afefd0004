// refused: Book::xdr(fxTranscriber&)

#include "kelvofxds/transcribe/fxXDRMembers.h"

class Book : public fxXDRObj {
    FX_XDR_MEMBERS(Book)
    int pages = 0;
};
FX_DEFINE_XDR(Book, "Book", 1)
#ifndef REFUSED
unsigned char Book::xdr(fxTranscriber& t) { return t.xdr(&pages, 1); }
#endif

int main() { return Book().pages; }
