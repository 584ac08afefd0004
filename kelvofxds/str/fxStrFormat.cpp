// fxStrFormat.cpp - strings made by printf-style formatting.

// Formats are the hosts', who may count by %n, also in one that lies in memory they can write to.
// A fortified function of the C library ends the process for that.
#undef _FORTIFY_SOURCE

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/str/fxStr.h"

namespace {
const char* const owner = "fxStr";
const unsigned int numberSize = 60;  // buffer for one formatted number, with its NUL

// What each conversion is expected to print, at most.
const unsigned int floatEstimate = 20;
const unsigned int longLongEstimate = 20;
const unsigned int intEstimate = 10;
const unsigned int pointerEstimate = 10;

// The letters that end a conversion.
const char* const conversionLetters = "idouxXfeEgGcspn%";

// The letters that are printed here when they follow the percent sign.
bool isUsual(char letter) {
    return letter == 'd' || letter == 's' || letter == 'u' || letter == 'x' || letter == 'c' ||
           letter == 'i' || letter == '%';
}

// Room for the digits of an int, its sign included.
const unsigned int digitsSize = 11;

// The decimal digits of `v`, written up to `end`; returns where they start.
char* digitsBefore(char* end, unsigned int v) {
    do {
        *--end = static_cast<char>('0' + v % 10);
        v /= 10;
    } while (v != 0);
    return end;
}

char* digitsBefore(char* end, int v) {
    const unsigned int magnitude = static_cast<unsigned int>(v);
    if (v >= 0)
        return digitsBefore(end, magnitude);
    end = digitsBefore(end, 0U - magnitude);
    *--end = '-';
    return end;
}

char* hexDigitsBefore(char* end, unsigned int v) {
    do {
        *--end = "0123456789abcdef"[v % 16];
        v /= 16;
    } while (v != 0);
    return end;
}

// A block that is filled from its start. Once something does not fit, nothing
// is written any more.
class Output {
public:
    Output(char* block, std::size_t size) : to(block), end(block + size - 1), isWhole(true) {}

    void put(const char* from, std::size_t n) {
        isWhole = isWhole && n <= static_cast<std::size_t>(end - to);
        if (!isWhole)
            return;
        std::memcpy(to, from, n);
        to += n;
    }
    void fail() { isWhole = false; }

    // Ends the text; false if it is not all there.
    bool finish() {
        *to = '\0';
        return isWhole;
    }

private:
    char* to;
    char* end;  // the place of the last NUL
    bool isWhole;
};

void putConversion(Output& out, char letter, std::va_list* args) {
    char digits[digitsSize];
    char* const end = digits + digitsSize;
    const char* from;
    switch (letter) {
        case 'd':
        case 'i':
            from = digitsBefore(end, va_arg(*args, int));
            break;
        case 'u':
            from = digitsBefore(end, va_arg(*args, unsigned int));
            break;
        case 'x':
            from = hexDigitsBefore(end, va_arg(*args, unsigned int));
            break;
        case 'c': {
            const char byte = static_cast<char>(va_arg(*args, int));
            if (byte == '\0')
                out.fail();
            out.put(&byte, 1);
            return;
        }
        case 's': {
            const char* text = va_arg(*args, const char*);
            text = text ? text : "(null)";
            out.put(text, std::strlen(text));
            return;
        }
        case '%':
            out.put("%", 1);
            return;
        default:
            out.fail();
            return;
    }
    out.put(from, static_cast<std::size_t>(end - from));
}

// Prints to the `size` bytes at `text` what consists of the usual conversions
// without flags, widths and types. Returns false when there is another, when it
// does not fit, and when a byte printed is NUL: the C library tells then.
bool printsPlainly(char* text, std::size_t size, const char* format, std::va_list* args) {
    Output out(text, size);
    for (;;) {
        const char* percent = format;
        while (*percent && *percent != '%')
            ++percent;
        out.put(format, static_cast<std::size_t>(percent - format));
        if (!*percent)
            return out.finish();
        if (!isUsual(percent[1]))
            return false;
        putConversion(out, percent[1], args);
        format = percent + 2;
    }
}

// Whether the argument of the conversion from `percent` to `letter` can be
// stepped over without knowing the arguments' values.
bool isPlain(const char* percent, const char* letter) {
    const std::size_t between = static_cast<std::size_t>(letter - percent) - 1;
    if (between == 0)
        return true;
    const bool precision = std::memchr(percent + 1, '.', between) != nullptr;
    // A starred width, a wider type or a letter outside the set takes arguments
    // the estimate does not know of; the text of "%.3s" may lack its NUL.
    return std::strspn(percent + 1, "-+ #0123456789.'hlzt") >= between &&
           !(precision && *letter == 's');
}

bool isLongLong(const char* percent, const char* letter) {
    return letter - percent > 2 && letter[-1] == 'l' && letter[-2] == 'l';
}

unsigned int integerEstimate(bool longLong, std::va_list* args) {
    if (longLong) {
        (void)va_arg(*args, long long);
        return longLongEstimate;
    }
    (void)va_arg(*args, int);
    return intEstimate;
}

unsigned int textEstimate(std::va_list* args) {
    const char* text = va_arg(*args, const char*);
    return static_cast<unsigned int>(std::strlen(text ? text : "(null)"));
}

// Steps over the conversion's argument and returns its estimated size.
unsigned int conversionEstimate(char letter, bool longLong, std::va_list* args) {
    switch (letter) {
        case 'e':
        case 'E':
        case 'f':
        case 'g':
        case 'G':
            (void)va_arg(*args, double);
            return floatEstimate;
        case 'p':
            (void)va_arg(*args, void*);
            return pointerEstimate;
        case 's':
            return textEstimate(args);
        case 'c':
            (void)va_arg(*args, int);
            return 1;
        case 'n':
            (void)va_arg(*args, int*);
            return 0;
        case '%':
            return 1;
        default:
            return integerEstimate(longLong, args);
    }
}

// The bytes that `format` will print, as far as it can be told beforehand:
// flags, widths and precisions are not counted.
unsigned int estimate(const char* format, std::va_list* args) {
    unsigned int total = 0;
    bool stepping = true;  // false once an argument could not be stepped over
    for (const char* p = format; *p; ++p) {
        const char* letter = nullptr;
        if (*p == '%')
            letter = isUsual(p[1]) ? p + 1 : std::strpbrk(p + 1, conversionLetters);
        if (!letter) {
            total = fxSum(owner, total, 1);
            continue;
        }
        stepping = stepping && isPlain(p, letter);
        if (stepping)
            total = fxSum(owner, total, conversionEstimate(*letter, isLongLong(p, letter), args));
        p = letter;
    }
    return total;
}

// The size that a block of `size` bytes should have had for what vsnprintf did
// with it; 0 if it will do. An error does not tell how much was to be printed
// before it, so a full block is doubled, within reason.
std::size_t tooShort(const char* text, std::size_t size, int printed) {
    const std::size_t mostAfterError = 1U << 24;
    if (printed >= 0)
        return static_cast<std::size_t>(printed) < size ? 0 : static_cast<std::size_t>(printed) + 1;
    return std::strlen(text) + 1 < size || size >= mostAfterError ? 0 : size * 2;
}

// What the C library prints, in the block `text` of `size` bytes, which is
// changed for a larger one if that will not do. After an error the text is what
// had been printed before it.
char* printedByLibrary(char* text, std::size_t size, const char* format, std::va_list* args) {
    for (;;) {
        text[0] = text[size - 1] = '\0';
        std::va_list again;
        va_copy(again, *args);
        const std::size_t needed = tooShort(text, size, std::vsnprintf(text, size, format, again));
        va_end(again);
        if (needed == 0)
            return text;
        size = needed;
        text = static_cast<char*>(fxReallocate(text, size));
    }
}
}  // namespace

void fxStr::format(const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    vformat(format, args);
    va_end(args);
}

void fxStr::vformat(const char* format, std::va_list args) {
    FX_CHECK_NOT_NULL("fxStr", format);
    std::va_list scanned, printed;
    va_copy(scanned, args);
    const std::size_t size = fxSum(owner, estimate(format, &scanned), 2);
    va_end(scanned);

    // A new block, since the arguments may point into the old one.
    char* text = static_cast<char*>(fxAllocate(size));
    va_copy(printed, args);
    const bool isPrinted = size <= INT_MAX && printsPlainly(text, size, format, &printed);
    va_end(printed);
    if (!isPrinted) {
        va_copy(printed, args);
        text = printedByLibrary(text, size, format, &printed);
        va_end(printed);
    }

    becomeEmpty();
    if (*text) {
        data = text;
        slength = static_cast<unsigned int>(std::strlen(text)) + 1;
    } else {
        std::free(text);
    }
}

template <class Number>
void fxStr::formatNumber(const char* format, Number v) {
    char text[numberSize];
    std::snprintf(text, numberSize, format, v);
    assign(text, static_cast<unsigned int>(std::strlen(text)));
}

fxStr::fxStr(int v, const char* format) : fxStr() {
    if (format) {
        formatNumber(format, v);
        return;
    }
    char digits[digitsSize];
    const char* from = digitsBefore(digits + digitsSize, v);
    assign(from, static_cast<unsigned int>(digits + digitsSize - from));
}

fxStr::fxStr(float v, const char* format) : fxStr() {
    formatNumber(format ? format : "%g", static_cast<double>(v));
}

fxStr::fxStr(double v, const char* format) : fxStr() { formatNumber(format ? format : "%lg", v); }
