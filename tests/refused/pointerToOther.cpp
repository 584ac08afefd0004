// refused: the class is not derived from fxXDRObj

#include "kelvofxds/transcribe/fxXDRMembers.h"

#ifdef REFUSED
class Page {};
#else
using Page = fxXDRObj;
#endif

class Book : public fxXDRObj {
    FX_XDR_MEMBERS(Book)
    Page* first = nullptr;
};
FX_DEFINE_XDR(Book, "Book", 1)
unsigned char Book::xdr(fxTranscriber& t) { return fxXdrPointer(t, first); }

int main() {}
