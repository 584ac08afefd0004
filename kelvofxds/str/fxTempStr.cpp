#include "kelvofxds/str/fxTempStr.h"

#include <cstdlib>
#include <cstring>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/str/fxStr.h"

namespace {
const char* const owner = "fxStr";
const unsigned int longestCopiedInline = 99;  // size with the NUL

char* blockOf(unsigned int size) { return static_cast<char*>(fxAllocate(size)); }
}  // namespace

fxTempStr::fxTempStr(const char* a, unsigned int aLength, const char* b, unsigned int bLength)
    : data(inlineBuffer), slength(fxSum(owner, fxSum(owner, aLength, bLength), 1)) {
    FX_CHECK_NOT_NULL_OF("fxTempStr", a, aLength);
    FX_CHECK_NOT_NULL_OF("fxTempStr", b, bLength);
    if (slength > sizeof inlineBuffer)
        data = blockOf(slength);
    if (aLength != 0)
        std::memcpy(data, a, aLength);
    if (bLength != 0)
        std::memcpy(data + aLength, b, bLength);
    data[slength - 1] = '\0';
}

fxTempStr::fxTempStr(const fxTempStr& other) : data(inlineBuffer), slength(other.slength) {
    if (slength > longestCopiedInline)
        data = blockOf(slength);
    std::memcpy(data, other.data, slength);
}

fxTempStr::~fxTempStr() {
    if (!isInline())
        std::free(data);
}

fxTempStr& fxTempStr::concat(const char* s, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxTempStr", s, n);
    if (n == 0)
        return *this;
    const unsigned int oldLength = length();
    const bool own = fxPointsInto(s, data, slength);
    const std::ptrdiff_t offset = own ? s - data : 0;
    const unsigned int newSize = fxSum(owner, slength, n);
    if (!isInline()) {
        data = static_cast<char*>(fxReallocate(data, newSize));
    } else if (newSize > sizeof inlineBuffer) {
        char* block = blockOf(newSize);
        std::memcpy(block, data, oldLength);
        data = block;
    }
    std::memmove(data + oldLength, own ? data + offset : s, n);
    slength = newSize;
    data[slength - 1] = '\0';
    return *this;
}

namespace {
unsigned int lengthOf(const char* s) { return s ? static_cast<unsigned int>(std::strlen(s)) : 0; }

fxTempStr& appended(const fxTempStr& a, const char* s, unsigned int n) {
    return const_cast<fxTempStr&>(a).concat(s, n);
}
}  // namespace

fxTempStr operator|(const fxStr& a, const fxStr& b) {
    return fxTempStr(a.c_str(), a.length(), b.c_str(), b.length());
}

fxTempStr operator|(const fxStr& a, const char* b) {
    return fxTempStr(a.c_str(), a.length(), b, lengthOf(b));
}

fxTempStr operator|(const char* a, const fxStr& b) {
    return fxTempStr(a, lengthOf(a), b.c_str(), b.length());
}

fxTempStr& operator|(const fxTempStr& a, const fxStr& b) {
    return appended(a, b.c_str(), b.length());
}

fxTempStr& operator|(const fxTempStr& a, const char* b) { return appended(a, b, lengthOf(b)); }
