// refused: the class has no type record: FX_XDR_MEMBERS is missing in it

#include "kelvofxds/transcribe/fxXDRMembers.h"

class Book : public fxXDRObj {
    FX_XDR_MEMBERS(Book)
    int pages = 0;
};
FX_DEFINE_XDR(Book, "Book", 1)
unsigned char Book::xdr(fxTranscriber& t) { return t.xdr(&pages, 1); }

class Novel : public Book {
#ifndef REFUSED
public:
    fxTypeObj& getTypeObj() const override { return Book_type; }
#endif
};

int main() { fxTypeOf<Novel>(); }
