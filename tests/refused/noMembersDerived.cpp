// refused: FX_XDR_MEMBERS(Novel) is missing in the class

#include "kelvofxds/transcribe/fxXDRMembers.h"

class Book : public fxXDRObj {
    FX_XDR_MEMBERS(Book)
    int pages = 0;
};
FX_DEFINE_XDR(Book, "Book", 1)
unsigned char Book::xdr(fxTranscriber& t) { return t.xdr(&pages, 1); }

class Novel : public Book {
#ifndef REFUSED
    FX_XDR_MEMBERS(Novel)
#else
public:
    unsigned char xdr(fxTranscriber& t) override;
#endif
};
FX_DEFINE_XDR(Novel, "Novel", 1)
unsigned char Novel::xdr(fxTranscriber& t) { return Book::xdr(t); }

int main() {}
