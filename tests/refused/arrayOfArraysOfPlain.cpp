// refused: fxArrayOf: to be transcribed, elements are

#include "kelvofxds/containers/fxArrayOf.h"

#ifdef REFUSED
struct Page {};
#else
using Page = fxRef<fxXDRObj>;
#endif

class Book : public fxXDRObj {
    FX_XDR_MEMBERS(Book)
    fxArrayOf<fxArrayOf<Page>> chapters;
};
FX_DEFINE_XDR(Book, "Book", 1)
unsigned char Book::xdr(fxTranscriber& t) { return chapters.xdr(t); }

int main() {}
