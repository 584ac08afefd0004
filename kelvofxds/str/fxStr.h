// fxStr.h - the value string.
#pragma once

#include <cstdarg>
#include <iosfwd>

#include "kelvofxds/core/fxExport.h"

class fxTempStr;
class fxTranscriber;
class fxTypeObj;

/// A counted, NUL-terminated string of raw 8-bit bytes with value semantics.
///
/// Every copy owns its own buffer, from malloc/realloc/free, except that every
/// empty string points at the shared fxStr::emptyString, which is never freed.
/// Embedded NULs are kept: operations that work on a length use length(), the
/// ordering operators use strcmp. The object is two words that may be moved
/// byte-wise; string-keyed dictionaries and sets rely on that.
///
/// Growth is to the exact size asked for, with no headroom, so a run of n
/// appends is n reallocations; operator| (see fxTempStr) is the cheaper way to
/// join several texts. Operations are linear in the length unless they say
/// otherwise. `n` and `pos` are in bytes. Where an argument `n` of a text or a
/// set may be 0, 0 means strlen of it. Nothing is reported; a position or
/// count beyond the end is cut to the end. Running out of memory ends the
/// process ("out of memory"), and so does a size that does not fit a word
/// ("fxStr: size too large").
///
/// Separate strings may be used in separate threads.
class FX_EXPORT fxStr {
public:
    fxStr() : slength(1), data(&emptyString) {}
    /// `n` NUL bytes. Write the argument unsigned: fxStr(0u).
    explicit fxStr(unsigned int n);
    /// A copy of `s`; null is an empty text.
    fxStr(const char* s);
    /// Exactly `n` bytes of `s`, NULs included.
    fxStr(const char* s, unsigned int n);
    fxStr(const fxStr& other);
    fxStr(const fxTempStr& other);
    /// `v` formatted by `format`, or by "%d" when that is null; cut to 59
    /// bytes.
    fxStr(int v, const char* format);
    /// The same with "%g".
    fxStr(float v, const char* format);
    /// The same with "%lg".
    fxStr(double v, const char* format);
    /// The form for newInstance: empty until xdr fills it.
    explicit fxStr(fxTypeObj& type);
    ~fxStr();

    /// Becomes a copy of a text, which may be part of this string; null is an
    /// empty text.
    fxStr& operator=(const fxStr& other);
    fxStr& operator=(const fxTempStr& other);
    fxStr& operator=(const char* s);

    // Editing. A text argument may lie in this string's own buffer.

    /// Appends `n` bytes of `s`.
    void append(const char* s, unsigned int n = 0);
    /// Appends one byte.
    void append(char c);
    /// Inserts `n` bytes of `s` before position `pos`.
    void insert(const char* s, unsigned int pos, unsigned int n = 0);
    /// Inserts one byte before position `pos`.
    void insert(char c, unsigned int pos);
    /// Overwrites `n` bytes at `pos`; the length never changes.
    void replace(const char* s, unsigned int pos, unsigned int n = 0);
    /// Removes `n` bytes at `pos`. Empties the string when `n` is its length or
    /// one more, whatever `pos` is; a larger `n` is cut to the end.
    void remove(unsigned int pos, unsigned int n);
    /// Removes and returns `n` bytes at `pos`.
    fxStr cut(unsigned int pos, unsigned int n);
    /// Makes the length `n`.
    /// Deliberate: `fill` is ignored; new bytes are NUL.
    void resize(unsigned int n, unsigned char fill = 0);
    /// Makes room for at least `n` bytes.
    /// Deliberate: an empty string ignores it.
    void setMaxLength(unsigned int n);
    /// Maps every upper-case byte of the locale in use to lower case, in place.
    void lower();
    /// Maps every lower-case byte of the locale in use to upper case, in place.
    void raise();

    // Parts of the text, as new strings.

    /// The `n` bytes from `pos`.
    fxStr extract(unsigned int pos, unsigned int n) const;
    /// The first `n` bytes.
    fxStr head(unsigned int n) const;
    /// The last `n` bytes.
    fxStr tail(unsigned int n) const;
    /// The whole text.
    fxStr copy() const;
    /// The text without the bytes of `set` at either end; empty when there is
    /// nothing else.
    fxStr trim(const char* set) const;
    /// The text without the bytes of `set` at its end.
    fxStr trimRight(const char* set) const;

    // Searching. The set forms match any of the `n` bytes of `set`. Forward
    // searches start at `pos` and return the index found, or the length;
    // backward searches start at `pos` - 1 and return the index found plus
    // one, so that it can be the next `pos`, or 0.

    /// First byte that matches.
    unsigned int next(unsigned int pos, char c) const;
    unsigned int next(unsigned int pos, const char* set, unsigned int n = 0) const;
    unsigned int nextR(unsigned int pos, char c) const;
    unsigned int nextR(unsigned int pos, const char* set, unsigned int n = 0) const;
    /// First byte that does not match.
    unsigned int skip(unsigned int pos, char c) const;
    unsigned int skip(unsigned int pos, const char* set, unsigned int n = 0) const;
    unsigned int skipR(unsigned int pos, char c) const;
    unsigned int skipR(unsigned int pos, const char* set, unsigned int n = 0) const;

    /// The bytes from `pos` to the next delimiter; `pos` moves past the run of
    /// delimiters that follows. At the end `pos` is the length and the token
    /// is empty.
    fxStr token(unsigned int& pos, char delimiter) const;
    fxStr token(unsigned int& pos, const char* set, unsigned int n = 0) const;
    /// The same backward from `pos`; ends with `pos` 0.
    fxStr tokenR(unsigned int& pos, char delimiter) const;
    fxStr tokenR(unsigned int& pos, const char* set, unsigned int n = 0) const;

    // Formatting, hashing, transcription.

    /// Replaces the text by what printf would print. Arguments may point into
    /// this string.
    void format(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void vformat(const char* format, std::va_list args);

    /// A hash of the length class and at most eight bytes; O(1).
    /// Deliberate: of a text of 5 to 7 bytes only the first four count, of a
    /// longer one the first eight; stored tables depend on the exact values.
    unsigned int hash() const;

    /// Transcribes the text. Returns false on failure. While reading, the text
    /// is in place only after the reader has finished the root object; until
    /// then only the length holds.
    /// Deliberate: reading does not free what the string held before, so that
    /// it works on memory that holds no string yet.
    bool xdr(fxTranscriber& t);

    /// A new empty string, owned by the caller; null if there is no memory.
    static void* newInstance(fxTypeObj& type);
    /// Deletes a string made by newInstance; null is ignored.
    static void deleteInstance(void* string);
    /// The member xdr, for the type record.
    static unsigned char xdr(void* string, fxTranscriber& t);
    /// fxStr_type.
    fxTypeObj& getTypeObj() const;

    /// Makes the buffer fit `n` bytes and a NUL; the length does not change.
    /// An empty string gets a fresh buffer whose bytes are not set, so the
    /// caller must write the text and the length next.
    void resizeInternal(unsigned int n);

    /// Bytes of text.
    unsigned int length() const { return slength - 1; }
    /// The text, NUL-terminated; valid until the next change.
    const char* c_str() const { return data; }
    explicit operator const char*() const { return data; }
    /// Requires: index <= length().
    char& operator[](unsigned int index) { return data[index]; }
    const char& operator[](unsigned int index) const { return data[index]; }
    char& operator[](int index) { return data[index]; }
    const char& operator[](int index) const { return data[index]; }

    static char emptyString;              ///< The text of every empty string.
    static unsigned int resizeIncrement;  ///< Bytes by which operator>> grows its target; 10.
    static int delim_idx;                 ///< Stream word of the delimiter; -1 if none yet.

private:
    friend struct fxStrLayout;  // tests/str/fxStr_test.cpp

    bool isEmpty() const { return slength < 2; }
    void assign(const char* s, unsigned int n);
    void becomeEmpty();
    template <class Number>
    void formatNumber(const char* format, Number v);

    unsigned int slength;  // bytes with the terminating NUL: length + 1
    char* data;            // owned, or &emptyString
};

/// The record of fxStr, "fxStr", version 1.
extern FX_EXPORT fxTypeObj fxStr_type;

/// Equality compares lengths, then all bytes, NULs included. In every
/// comparison a null text counts as an empty one.
FX_EXPORT bool operator==(const fxStr& a, const fxStr& b);
FX_EXPORT bool operator==(const fxStr& a, const char* b);
FX_EXPORT bool operator==(const char* a, const fxStr& b);
FX_EXPORT bool operator!=(const fxStr& a, const fxStr& b);
FX_EXPORT bool operator!=(const fxStr& a, const char* b);
FX_EXPORT bool operator!=(const char* a, const fxStr& b);

/// Ordering is strcmp's, so it stops at the first NUL.
FX_EXPORT bool operator<(const fxStr& a, const fxStr& b);
FX_EXPORT bool operator<(const fxStr& a, const char* b);
FX_EXPORT bool operator<(const char* a, const fxStr& b);
FX_EXPORT bool operator<=(const fxStr& a, const fxStr& b);
FX_EXPORT bool operator<=(const fxStr& a, const char* b);
FX_EXPORT bool operator<=(const char* a, const fxStr& b);
FX_EXPORT bool operator>(const fxStr& a, const fxStr& b);
FX_EXPORT bool operator>(const fxStr& a, const char* b);
FX_EXPORT bool operator>(const char* a, const fxStr& b);
FX_EXPORT bool operator>=(const fxStr& a, const fxStr& b);
FX_EXPORT bool operator>=(const fxStr& a, const char* b);
FX_EXPORT bool operator>=(const char* a, const fxStr& b);

/// The value of strcmp on the two texts.
FX_EXPORT int compare(const fxStr& a, const fxStr& b);
FX_EXPORT int compare(const fxStr& a, const char* b);
FX_EXPORT int compare(const char* a, const char* b);

/// Writes the text up to its first NUL.
FX_EXPORT std::ostream& operator<<(std::ostream& out, const fxStr& s);

/// Reads up to the stream's delimiter (see _delimiter; newline at first) and
/// consumes it; it is not part of `s`. Leading white space is not skipped.
/// Deliberate: an empty record leaves its delimiter unread and sets failbit,
/// and once any stream has a delimiter of its own, the others' is NUL.
FX_EXPORT std::istream& operator>>(std::istream& in, fxStr& s);

/// Sets the byte that ends a record of `in` and returns `in`. The first call
/// writes what all streams share: no other thread may be reading strings then.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the name is part of the API.
FX_EXPORT std::istream& _delimiter(std::istream& in, char c);
