// refused: FX_XDR_MEMBERS(Book) is missing in the class

#include "kelvofxds/transcribe/fxXDRMembers.h"

class Book : public fxXDRObj {
#ifndef REFUSED
    FX_XDR_MEMBERS(Book)
#else
public:
    unsigned char xdr(fxTranscriber& t) override;
#endif
    int pages = 0;
};
FX_DEFINE_XDR(Book, "Book", 1)
unsigned char Book::xdr(fxTranscriber& t) { return t.xdr(&pages, 1); }

int main() {}
