// refused: Book has no public default constructor

#include "kelvofxds/transcribe/fxXDRMembers.h"

class Book : public fxXDRObj {
    FX_XDR_MEMBERS(Book)
    explicit Book(int n) : pages(n) {}
#ifndef REFUSED
    Book() : Book(0) {}
#endif
    int pages;
};
FX_DEFINE_XDR(Book, "Book", 1)
unsigned char Book::xdr(fxTranscriber& t) { return t.xdr(&pages, 1); }

int main() {}
