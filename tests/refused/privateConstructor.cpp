// refused: Book has no public default constructor

#include "kelvofxds/transcribe/fxXDRMembers.h"

class Book : public fxXDRObj {
    FX_XDR_MEMBERS(Book)
    int pages;
#ifdef REFUSED
private:
#endif
    Book() : pages(0) {}
};
FX_DEFINE_XDR(Book, "Book", 1)
unsigned char Book::xdr(fxTranscriber& t) { return t.xdr(&pages, 1); }

int main() {}
