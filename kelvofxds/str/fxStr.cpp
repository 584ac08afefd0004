#include "kelvofxds/str/fxStr.h"

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/core/fxShortCopyInternal.h"
#include "kelvofxds/str/fxStrCheckedInternal.h"
#include "kelvofxds/str/fxTempStr.h"

char fxStr::emptyString = '\0';

#ifdef KELVOFXDS_CHECKED
namespace {
// A write to the string that all empty ones share, if no operation meets it before the end.
struct AtExit {
    ~AtExit() {
        if (fxStr::emptyString != '\0')
            fxMisuse::says("fxStr", "exit",
                           "emptyString is byte %d: something was written to an empty string",
                           static_cast<unsigned char>(fxStr::emptyString));
    }
};
const AtExit atExit;
}  // namespace
#endif

namespace {
const char* const owner = "fxStr";

// A block with a copy of the `n` bytes at `s`, at least one, and a NUL.
inline char* copyOf(const char* s, unsigned int n) {
    char* text = static_cast<char*>(fxAllocate(fxSum(owner, n, 1)));
    fxCopyShort(text, s, n);
    text[n] = '\0';
    return text;
}
}  // namespace

fxStr::fxStr(unsigned int n) : fxStr() {
    if (n == 0)
        return;
    resizeInternal(n);
    std::memset(data, 0, n + 1);
    slength = n + 1;
}

fxStr::fxStr(const char* s) : fxStr() {
    if (!s || *s == '\0')
        return;
    const unsigned int n = static_cast<unsigned int>(std::strlen(s));
    data = copyOf(s, n);
    slength = n + 1;
}

fxStr::fxStr(const char* s, unsigned int n) : fxStr() {
    FX_CHECK_NOT_NULL_OF("fxStr", s, n);
    if (n == 0)
        return;
    data = copyOf(s, n);
    slength = n + 1;
}

fxStr::fxStr(const fxStr& other) : fxStr((FX_CHECK_STR(other), other.data), other.length()) {}

fxStr::fxStr(const fxTempStr& other) : fxStr(other.c_str(), other.length()) {}

fxStr::~fxStr() {
    FX_CHECK_THAT("fxStr", data != &fxMisuse::endedText, "the string has been destroyed already");
    if (data != &emptyString)
        std::free(data);
    FX_WHEN_CHECKED(fxMisuse::leave(data, &fxMisuse::endedText));
}

fxStr& fxStr::operator=(const fxStr& other) {
    FX_CHECK_STR(*this);
    FX_CHECK_STR(other);
    if (this != &other)
        assign(other.data, other.length());
    return *this;
}

fxStr& fxStr::operator=(const fxTempStr& other) {
    FX_CHECK_STR(*this);
    assign(other.c_str(), other.length());
    return *this;
}

fxStr& fxStr::operator=(const char* s) {
    FX_CHECK_STR(*this);
    assign(s, s ? static_cast<unsigned int>(std::strlen(s)) : 0);
    return *this;
}

// Becomes the `n` bytes at `s`, which may lie in this string's own buffer: they
// fit it then, so it is not reallocated.
void fxStr::assign(const char* s, unsigned int n) {
    if (n == 0) {
        becomeEmpty();
        return;
    }
    resizeInternal(n);
    std::memmove(data, s, n);
    data[n] = '\0';
    slength = n + 1;
}

void fxStr::becomeEmpty() {
    resizeInternal(0);
    slength = 1;
}

void fxStr::resizeInternal(unsigned int n) {
    if (isEmpty()) {
        if (n != 0)
            data = static_cast<char*>(fxAllocate(fxSum(owner, n, 1)));
    } else if (n == 0) {
        std::free(data);
        data = &emptyString;
    } else if (n >= slength) {
        data = static_cast<char*>(fxReallocate(data, fxSum(owner, n, 1)));
    }
}

fxStr fxStr::extract(unsigned int pos, unsigned int n) const {
    FX_CHECK_STR(*this);
    if (pos > length())
        pos = length();
    if (n > length() - pos)
        n = length() - pos;
    return fxStr(data + pos, n);
}

fxStr fxStr::head(unsigned int n) const { return extract(0, n); }

fxStr fxStr::tail(unsigned int n) const {
    const unsigned int count = n < length() ? n : length();
    return extract(length() - count, count);
}

fxStr fxStr::copy() const { return *this; }

// Editing.

namespace {
// The count that a text argument with `n` stands for.
unsigned int countOf(const char* s, unsigned int n) {
    if (!s)
        return 0;
    return n != 0 ? n : static_cast<unsigned int>(std::strlen(s));
}
}  // namespace

void fxStr::append(const char* s, unsigned int n) {
    FX_CHECK_STR(*this);
    n = countOf(s, n);
    if (n == 0)
        return;
    const unsigned int oldLength = length();
    const bool own = !isEmpty() && fxPointsInto(s, data, slength);
    const std::ptrdiff_t offset = own ? s - data : 0;
    const unsigned int newLength = fxSum(owner, oldLength, n);
    resizeInternal(newLength);
    std::memmove(data + oldLength, own ? data + offset : s, n);
    slength = newLength + 1;
    data[slength - 1] = '\0';
}

void fxStr::append(char c) {
    FX_CHECK_STR(*this);
    const unsigned int oldLength = length();
    if (isEmpty()) {
        data = static_cast<char*>(fxAllocate(2));
    } else if (slength % sizeof(std::uint32_t) == 0 || !fxUsableSizesAreWords) {
        // resizeInternal's case of a text that grows, without the call.
        data = static_cast<char*>(fxReallocate(data, slength + 1));
    }
    data[oldLength] = c;
    data[oldLength + 1] = '\0';
    slength = oldLength + 2;
}

void fxStr::insert(const char* s, unsigned int pos, unsigned int n) {
    FX_CHECK_STR(*this);
    n = countOf(s, n);
    if (n == 0)
        return;
    if (fxPointsInto(s, data, slength)) {
        const fxStr text(s, n);
        insert(text.data, pos, n);
        return;
    }
    const unsigned int oldLength = length();
    if (pos > oldLength)
        pos = oldLength;
    const unsigned int newLength = fxSum(owner, oldLength, n);
    resizeInternal(newLength);
    std::memmove(data + pos + n, data + pos, oldLength - pos);
    std::memcpy(data + pos, s, n);
    slength = newLength + 1;
    data[slength - 1] = '\0';
}

void fxStr::insert(char c, unsigned int pos) { insert(&c, pos, 1); }

void fxStr::replace(const char* s, unsigned int pos, unsigned int n) {
    FX_CHECK_STR(*this);
    n = countOf(s, n);
    if (pos > length())
        pos = length();
    if (n > length() - pos)
        n = length() - pos;
    if (n != 0)
        std::memmove(data + pos, s, n);
}

void fxStr::remove(unsigned int pos, unsigned int n) {
    FX_CHECK_STR(*this);
    if (slength - n <= 1) {
        becomeEmpty();
        return;
    }
    if (pos > length())
        pos = length();
    if (n > length() - pos)
        n = length() - pos;
    if (n == length()) {
        becomeEmpty();
        return;
    }
    std::memmove(data + pos, data + pos + n, slength - pos - n);
    slength -= n;
}

fxStr fxStr::cut(unsigned int pos, unsigned int n) {
    fxStr text = extract(pos, n);
    remove(pos, n);
    return text;
}

void fxStr::resize(unsigned int n, unsigned char) {
    FX_CHECK_STR(*this);
    const unsigned int oldSize = isEmpty() ? 0 : slength;
    resizeInternal(n);
    if (n >= oldSize)
        std::memset(data + oldSize, 0, n - oldSize + 1);
    slength = n + 1;
    data[n] = '\0';
}

void fxStr::setMaxLength(unsigned int n) {
    FX_CHECK_STR(*this);
    if (!isEmpty())
        resizeInternal(n > length() ? n : length());
}

// tolower leaves a byte alone unless isupper holds for it, toupper unless
// islower does.

void fxStr::lower() {
    FX_CHECK_STR(*this);
    for (unsigned int i = 0; i < slength - 1; ++i)
        data[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(data[i])));
}

void fxStr::raise() {
    FX_CHECK_STR(*this);
    for (unsigned int i = 0; i < slength - 1; ++i)
        data[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(data[i])));
}
