// Sizes of what streams and readers transfer. How much lies at an address that a writer is given
// no check can tell.

#if KELVOFXDS_LIBRARY_IS_CHECKED

#include <string>
#include <vector>

#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxGraphReader.h"
#include "kelvofxds/transcribe/fxMemoryStream.h"
#include "kelvofxds/transcribe/fxStdioStream.h"
#include "tests/figures/sizes.h"

namespace {

const auto isStated = SizeOutcome::isStated;

// Without a file, where every transfer fails; its arguments are looked at all the same.
struct Closed : fxStdioStream {
    Closed() : fxStdioStream(static_cast<std::FILE*>(nullptr), readWriteStream) {}
};

// Of a stream that has nothing everything fails that is possible; one in memory looks whether it
// has so much, or can have it, whatever the number.
template <class Stream>
std::vector<SizeRow> transfersOf(const std::string& name, SizeOutcome outcome) {
    const std::string of = name + "::";
    return {
        {of + "getBytes", "", 1, 0, outcome,
         [](unsigned int n) {
             char c;
             return Stream().getBytes(&c, n) == 0;
         }},
        {of + "getShorts", "", 2, 0, outcome,
         [](unsigned int n) {
             short s;
             return Stream().getShorts(&s, n) == 0;
         }},
        {of + "getInts", "", 4, 0, outcome,
         [](unsigned int n) {
             int i;
             return Stream().getInts(&i, n) == 0;
         }},
        {of + "getLongs", "", 4, 0, outcome,
         [](unsigned int n) {
             long l;
             return Stream().getLongs(&l, n) == 0;
         }},
        {of + "getFloats", "", 4, 0, outcome,
         [](unsigned int n) {
             float f;
             return Stream().getFloats(&f, n) == 0;
         }},
        {of + "getDoubles", "", 8, 0, outcome,
         [](unsigned int n) {
             double d;
             return Stream().getDoubles(&d, n) == 0;
         }},
        {of + "putBytes", "", 1, 0, outcome,
         [](unsigned int n) {
             const char c = 0;
             return Stream().putBytes(&c, n) == 0;
         }},
        {of + "putShorts", "", 2, 0, outcome,
         [](unsigned int n) {
             const short s = 0;
             return Stream().putShorts(&s, n) == 0;
         }},
        {of + "putInts", "", 4, 0, outcome,
         [](unsigned int n) {
             const int i = 0;
             return Stream().putInts(&i, n) == 0;
         }},
        {of + "putLongs", "", 4, 0, outcome,
         [](unsigned int n) {
             const long l = 0;
             return Stream().putLongs(&l, n) == 0;
         }},
        {of + "putFloats", "", 4, 0, outcome,
         [](unsigned int n) {
             const float f = 0;
             return Stream().putFloats(&f, n) == 0;
         }},
        {of + "putDoubles", "", 8, 0, outcome,
         [](unsigned int n) {
             const double d = 0;
             return Stream().putDoubles(&d, n) == 0;
         }},
    };
}

// Its elements in place.
template <class Reader, class Element>
bool fails(unsigned int n) {
    Reader reader(new fxMemoryStream, 0x1122, 0x33445566, "ieee");
    Element element[1];
    return reader.xdr(element, n) == 0;
}

template <class Reader>
std::vector<SizeRow> readsOf() {
    return {
        {"chars", "", 1, 0, isStated, fails<Reader, char>},
        {"unsigned chars", "", 1, 0, isStated, fails<Reader, unsigned char>},
        {"shorts", "", 2, 0, isStated, fails<Reader, short>},
        {"unsigned shorts", "", 2, 0, isStated, fails<Reader, unsigned short>},
        {"longs", "", 4, 0, isStated, fails<Reader, long>},
        {"unsigned longs", "", 4, 0, isStated, fails<Reader, unsigned long>},
        {"ints", "", 4, 0, isStated, fails<Reader, int>},
        {"floats", "", 4, 0, isStated, fails<Reader, float>},
        {"doubles", "", 8, 0, isStated, fails<Reader, double>},
        {"strings", "", 8, 0, isStated, fails<Reader, fxStr>},
        {"a block of chars", "", 1, 0, isStated, fails<Reader, char*>},
        {"a block of shorts", "", 2, 0, isStated, fails<Reader, short*>},
        {"a block of longs", "", 4, 0, isStated, fails<Reader, long*>},
        {"a block of doubles", "", 8, 0, isStated, fails<Reader, double*>},
    };
}

const std::vector<SizeRow> others = {
    {"fxGraphReader::setLimits", "", 4, 0, isStated,
     [](unsigned int n) {
         fxGraphReader reader(new fxMemoryStream, 0x1122, 0x33445566, "ieee");
         reader.setLimits(n, n);
         return reader.readObject(fxXDRObj_type) == nullptr && reader.atEnd() == 1;
     }},
    {"fxMemoryStream::fxMemoryStream", "", 1, 0, isStated,
     [](unsigned int n) {
         const char bytes[] = "some";
         char first = 0;
         fxMemoryStream stream(bytes, n);
         return stream.getBytes(&first, 1) == 1 && first == 's' && stream.length() == n;
     }},
};

const AddSizeRows added[] = {
    AddSizeRows(transfersOf<Closed>("fxStdioStream", SizeOutcome::isMisuseIfNot)),
    AddSizeRows(transfersOf<fxMemoryStream>("fxMemoryStream", isStated)),
    AddSizeRows(readsOf<fxBinaryReader>()), AddSizeRows(readsOf<fxGraphReader>()),
    AddSizeRows(others)};

}  // namespace

#endif
