#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxStr.h"
#include "tests/support/observe.h"
#include "tests/support/pageEnd.h"

namespace {
using namespace std::string_literals;

const char* const null = nullptr;

// What vformat makes of `format`. The compiler does not check this one, so
// that the formats can be ones it would warn of.
std::string formatted(const char* format, ...) {
    fxStr s("the text before");
    std::va_list args;
    va_start(args, format);
    s.vformat(format, args);
    va_end(args);
    return bytesOf(s);
}

// What vsprintf leaves in a buffer that is long enough for everything here.
std::string printed(const char* format, ...) {
    char text[2000] = "";
    std::va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    return text;
}

struct Row {
    std::string expected;
    const char* format;
    std::string made;
};

template <class... Args>
Row row(const std::string& expected, const char* format, Args... args) {
    return {expected, format, formatted(format, args...)};
}

void expectRow(const Row& r) {
    SCOPED_TRACE(r.format);
    EXPECT_EQ(r.expected, r.made);
}
}  // namespace

// format and vformat

TEST(fxStrFormat, formatReplacesTheText) {
    fxStr s("before");
    s.format("%s has %d of %u at %c%%", "kelvo", -3, 7u, 'x');
    EXPECT_EQ("kelvo has -3 of 7 at x%", bytesOf(s));
    s.format("%d", 1);
    EXPECT_EQ("1", bytesOf(s));
    fxStr empty;
    empty.format("plain");
    EXPECT_EQ("plain", bytesOf(empty));
}

TEST(fxStrFormat, everyConversionOfTheTable) {
    int written = -1;
    const Row rows[] = {
        row("plain text", "plain text"),
        row("1 two 3.5 4 x", "%d %s %g %lld %c", 1, "two", 3.5, 4LL, 'x'),
        row("-7", "%d", -7),
        row("-7", "%i", -7),
        row("17", "%o", 15u),
        row("4294967295", "%u", 0xFFFFFFFFu),
        row("fe", "%x", 254u),
        row("FE", "%X", 254u),
        row("1.500000", "%f", 1.5),
        row("1.500000e+00", "%e", 1.5),
        row("1.500000E+00", "%E", 1.5),
        row("1.5", "%g", 1.5),
        row("1E+20", "%G", 1e20),
        row("x", "%c", 'x'),
        row("text", "%s", "text"),
        row("", "%s", ""),
        row("%", "%%"),
        row("abcdef", "abc%ndef", &written),
        row("-9223372036854775808", "%lld", -9223372036854775807LL - 1),
        row("18446744073709551615", "%llu", 18446744073709551615ULL),
        row("7fffffffffffffff", "%llx", 9223372036854775807LL),
        row("1777777777777777777777", "%llo", 18446744073709551615ULL),
    };
    for (const Row& r : rows)
        expectRow(r);
    EXPECT_EQ(3, written);

    int object = 0;
    EXPECT_EQ(printed("%p", static_cast<void*>(&object)),
              formatted("%p", static_cast<void*>(&object)));
}

// The conversions before a %s have to be stepped over by their exact width:
// the estimate needs the length of the right text.
TEST(fxStrFormat, aTextIsFoundBehindEveryKindOfArgument) {
    const std::string text(300, 't');
    const char* t = text.c_str();
    int written = 0;
    const Row rows[] = {
        row("1" + text, "%d%s", 1, t),
        row("1.5" + text, "%g%s", 1.5, t),
        row("1.500000" + text, "%f%s", 1.5, t),
        row("-1" + text, "%lld%s", -1LL, t),
        row("18446744073709551615" + text, "%llu%s", ~0ULL, t),
        row("1" + text, "%ld%s", 1L, t),
        row("1" + text, "%hd%s", 1, t),
        row("1" + text, "%hhd%s", 1, t),
        row("c" + text, "%c%s", 'c', t),
        row("%" + text, "%%%s", t),
        row(text, "%n%s", &written, t),
        row(text + text, "%s%s", t, t),
        row("ll1" + text, "ll%d%s", 1, t),
        row("1ll2" + text, "%dll%d%s", 1, 2, t),
        row("(nil)" + text, "%p%s", static_cast<void*>(nullptr), t),
    };
    for (const Row& r : rows)
        expectRow(r);
}

// The estimate counts no flags, widths or precisions; the text comes out whole
// all the same.
TEST(fxStrFormat, aShortEstimateLosesNoText) {
    const Row rows[] = {
        row("                   7", "%20d", 7),
        row("7                   |", "%-20d|", 7),
        row(std::string(399, ' ') + "7", "%400d", 7),
        row(std::string(29, ' ') + "7", "%*d", 30, 7),
        row("7" + std::string(29, ' '), "%*d", -30, 7),
        row(std::string(28, ' ') + "07|end", "%*.*d|%s", 30, 2, 7, "end"),
        row(std::string(47, ' ') + "abc", "%50s", "abc"),
        row(std::string(9, ' ') + "x", "%10c", 'x'),
        row("+" + std::string(24, '0') + "7", "%+026d", 7),
        row("100000000000000000000", "%.0f", 1e20),
        row("1" + std::string(300, '0') + ".000000", "1%0307.6f", 0.0),
        row("0x1p+0|text", "%a|%s", 1.0, "text"),
        row("1.500000|text", "%Lf|%s", 1.5L, "text"),
        row("1.5|2|text", "%Lg|%d|%s", 1.5L, 2, "text"),
        row("1234567890123456789|text", "%jd|%s", 1234567890123456789LL, "text"),
        row("7|text", "%zu|%s", std::size_t(7), "text"),
        row("wide|text", "%ls|%s", L"wide", "text"),
        row("second first", "%2$s %1$s", "first", "second"),
        row("ffffffffffffffffffff", "%s%s", "ffffffffff", "ffffffffff"),
    };
    for (const Row& r : rows)
        expectRow(r);

    EXPECT_EQ(printed("%f", 1e300), formatted("%f", 1e300));
    EXPECT_EQ(printed("%Lf|%s", 1e300L, "text"), formatted("%Lf|%s", 1e300L, "text"));
    // A sign, 301 digits, the point and 5 more digits.
    EXPECT_EQ(308u + 5u, formatted("%.5f|%s", -1e300, "text").size());
}

namespace {
template <class... Args>
void expectBlockFor(std::size_t estimate, const char* format, Args... args) {
    SCOPED_TRACE(format);
    fxStr s;
    // Through a pointer, so that the compiler does not check the format.
    void (fxStr::*const print)(const char*, ...) = &fxStr::format;
    (s.*print)(format, args...);
    EXPECT_TRUE(allocatedFor(s.c_str(), estimate + 2)) << "one byte more, and the NUL";
}
}  // namespace

TEST(fxStrFormat, theBlockIsAsLargeAsTheEstimate) {
    const double d = 1.5;
    const std::string text(100, 't');
    const char* t = text.c_str();
    int n = 0;
    void* p = nullptr;
    expectBlockFor(8 * 10, "%d%d%d%d%i%i%i%i", 1, 1, 1, 1, 1, 1, 1, 1);
    expectBlockFor(8 * 10, "%o%o%u%u%x%x%X%X", 1, 1, 1, 1, 1, 1, 1, 1);
    expectBlockFor(8 * 20, "%lld%lli%llo%llu%llx%llX%lld%lld", 1LL, 1LL, 1LL, 1LL, 1LL, 1LL, 1LL,
                   1LL);
    expectBlockFor(8 * 10, "%ld%hd%ld%hd%ld%hd%ld%hd", 1L, 1, 1L, 1, 1L, 1, 1L, 1);
    expectBlockFor(8 * 20, "%e%E%f%g%G%e%f%g", d, d, d, d, d, d, d, d);
    expectBlockFor(8 * 10, "%p%p%p%p%p%p%p%p", p, p, p, p, p, p, p, p);
    expectBlockFor(100, "%s", t);
    expectBlockFor(300, "%s%s%s", t, t, t);
    expectBlockFor(100 + 40 * 1,
                   (text + "%c%%%c%%%c%%%c%%%c%%%c%%%c%%%c%%%c%%%c%%"
                           "%c%%%c%%%c%%%c%%%c%%%c%%%c%%%c%%%c%%%c%%")
                       .c_str(),
                   '1', '2', '3', '4', '5', '6', '7', '8', '9', '0', '1', '2', '3', '4', '5', '6',
                   '7', '8', '9', '0');
    expectBlockFor(100, (text + "%n%n%n%n").c_str(), &n, &n, &n, &n);
    expectBlockFor(100, text.c_str());
    // Flags, widths and precisions are not counted.
    expectBlockFor(8 * 10, "%-9d%+9d%09d% 9d%#9x%9d%9.3d%.9d", 1, 1, 1, 1, 1, 1, 1, 1);
    expectBlockFor(6 * 10, "%20d%1d%1d%1d%1d%1d", 1, 1, 1, 1, 1, 1);
}

namespace {
// Forty times the same conversion, so that a difference of one a conversion is
// more than the allocator rounds up by.
template <class Value, std::size_t... I>
void expectEstimate(std::size_t estimate, const char* conversion, Value value,
                    std::index_sequence<I...>) {
    std::string format;
    for (std::size_t i = 0; i < sizeof...(I); ++i)
        format += conversion;
    expectBlockFor(sizeof...(I) * estimate, format.c_str(), (static_cast<void>(I), value)...);
}

template <class Value>
void expectEstimate(std::size_t estimate, const char* conversion, Value value) {
    expectEstimate(estimate, conversion, value, std::make_index_sequence<40>());
}
}  // namespace

TEST(fxStrFormat, eachConversionHasItsEstimate) {
    for (const char* conversion : {"%d", "%i", "%o", "%u", "%x", "%X", "%hd", "%5d"})
        expectEstimate(10, conversion, 1);
    expectEstimate(10, "%ld", 1L);
    expectEstimate(10, "%p", static_cast<void*>(nullptr));
    for (const char* conversion : {"%lld", "%lli", "%llo", "%llu", "%llx", "%llX"})
        expectEstimate(20, conversion, 1LL);
    for (const char* conversion : {"%e", "%E", "%f", "%g", "%G", "%.2f"})
        expectEstimate(20, conversion, 1.5);
    expectEstimate(1, "%c", 'x');
    expectEstimate(6, "%s", "a text");
    expectEstimate(1, "%%", 0);
    expectEstimate(1, "x", 0);
}

TEST(fxStrFormat, aPrecisionLimitsAnUnterminatedText) {
    const char unterminated[] = {'a', 'b', 'c'};
    EXPECT_EQ("abc|", formatted("%.3s|", unterminated));
    EXPECT_EQ("ab|", formatted("%.2s|", unterminated));
    EXPECT_EQ("     abc|", formatted("%8.3s|", unterminated));
    EXPECT_EQ("abc|", formatted("%.*s|", 3, unterminated));
}

TEST(fxStrFormat, aPercentWithoutAConversionIsPrintedAsItIs) {
    EXPECT_EQ("5% y", formatted("5% y"));
    EXPECT_EQ("50%!", formatted("50%!"));
}

TEST(fxStrFormat, whatIsPrintedBeforeAnErrorIsTheText) {
    // printf stops at a percent sign that ends the format.
    EXPECT_EQ("100", formatted("100%"));
    EXPECT_EQ("100", printed("100%"));
    EXPECT_EQ("", formatted("%"));
    // It stops at a character that the locale cannot express.
    EXPECT_EQ(printed("ab%lcd", 0x110000), formatted("ab%lcd", 0x110000));
}

// An error does not tell how much had been printed, and the estimate counts no
// widths.
TEST(fxStrFormat, whatIsPrintedBeforeAnErrorIsWholeWhateverTheEstimate) {
    const Row rows[] = {
        row(std::string(10, ' ') + "7", "%11d%", 7),
        row(std::string(11, ' ') + "7", "%12d%", 7),
        row(std::string(12, ' ') + "7", "%13d%", 7),
        row(std::string(39, ' ') + "7", "%40d%", 7),
        row(std::string(1499, ' ') + "7", "%1500d%", 7),
        row(std::string(39, ' ') + "7", "%40d%lc", 7, 0x110000),
    };
    for (const Row& r : rows)
        expectRow(r);
    EXPECT_EQ(printed("%40d%", 7), formatted("%40d%", 7));
}

TEST(fxStrFormat, theTextEndsAtTheFirstNulPrinted) {
    EXPECT_EQ("a", formatted("a%cb", 0));
    EXPECT_EQ("", formatted("%cab", 0));
    EXPECT_EQ("a", formatted("a%c%300d", 0, 7));
}

TEST(fxStrFormat, anEmptyResultIsTheSharedEmptyText) {
    const struct {
        const char* name;
        void (*act)(fxStr&);
    } cases[] = {
        {"an empty format", [](fxStr& s) { s.format(fxStr().c_str(), 0); }},
        {"an empty text", [](fxStr& s) { s.format("%s", ""); }},
        {"a NUL", [](fxStr& s) { s.format("%c", 0); }},
        {"a NUL and more", [](fxStr& s) { s.format("%c and more", 0); }},
        {"a text of no bytes", [](fxStr& s) { s.format("%.0s", "unseen"); }},
    };
    for (const auto& c : cases) {
        for (const char* before : {"", "before"}) {
            SCOPED_TRACE(testing::Message() << c.name << ", from \"" << before << '"');
            fxStr s(before);
            c.act(s);
            EXPECT_EQ(0u, s.length());
            EXPECT_EQ(&fxStr::emptyString, s.c_str());
            s.append("on");
            EXPECT_EQ("on", bytesOf(s));
        }
    }
}

TEST(fxStrFormat, theArgumentsMayBeTheStringsOwnText) {
    fxStr s("abc");
    s.format("%s!", s.c_str());
    EXPECT_EQ("abc!", bytesOf(s));
    s.format("%s%s%s", s.c_str(), s.c_str() + 1, s.c_str() + 4);
    EXPECT_EQ("abc!bc!", bytesOf(s));
    s.format("%.2s", s.c_str() + 2);
    EXPECT_EQ("c!", bytesOf(s));

    fxStr format("<%s>%%");
    format.format(format.c_str(), format.c_str());
    EXPECT_EQ("<<%s>%%>%", bytesOf(format));
}

TEST(fxStrFormat, aNullTextPrintsAsPrintfPrintsIt) { EXPECT_EQ("(null)|", formatted("%s|", null)); }

// Numbers

TEST(fxStrFormat, aNumberIsPrintedByItsFormat) {
    EXPECT_EQ("0042", bytesOf(fxStr(42, "%04d")));
    EXPECT_EQ("ff", bytesOf(fxStr(255, "%x")));
    EXPECT_EQ("A", bytesOf(fxStr(65, "%c")));
    EXPECT_EQ("<7>", bytesOf(fxStr(7, "<%d>")));
    EXPECT_EQ("1.50", bytesOf(fxStr(1.5f, "%.2f")));
    EXPECT_EQ("1.50", bytesOf(fxStr(1.5, "%.2f")));
    EXPECT_EQ("text", bytesOf(fxStr(7, "text")));
}

TEST(fxStrFormat, aNullFormatStandsForThePlainOne) {
    EXPECT_EQ("0", bytesOf(fxStr(0, null)));
    EXPECT_EQ("42", bytesOf(fxStr(42, null)));
    EXPECT_EQ("-2147483648", bytesOf(fxStr(-2147483647 - 1, null)));
    EXPECT_EQ("1.5", bytesOf(fxStr(1.5f, null)));
    EXPECT_EQ("0.1", bytesOf(fxStr(0.1f, null)));
    EXPECT_EQ("1e+10", bytesOf(fxStr(1e10f, null)));
    EXPECT_EQ("1.5", bytesOf(fxStr(1.5, null)));
    EXPECT_EQ("1e+300", bytesOf(fxStr(1e300, null)));
    EXPECT_EQ("1.23457e+06", bytesOf(fxStr(1234567.0, null)));
}

TEST(fxStrFormat, aFloatIsNotTakenForADouble) {
    EXPECT_EQ("0.1000000015", bytesOf(fxStr(0.1f, "%.10f")));
    EXPECT_EQ("0.1000000000", bytesOf(fxStr(0.1, "%.10f")));
}

TEST(fxStrFormat, aNumberIsAllocatedAtItsExactSize) {
    EXPECT_TRUE(allocatedFor(fxStr(7, "%059d").c_str(), 60));
    EXPECT_TRUE(allocatedFor(fxStr(7, null).c_str(), 2));
}

TEST(fxStrFormat, aNumberOfMoreThanFiftyNineBytesIsCut) {
    const struct {
        const char* format;
        std::string expected;
    } cases[] = {{"%058d", std::string(57, '0') + "7"},
                 {"%059d", std::string(58, '0') + "7"},
                 {"%060d", std::string(59, '0')},
                 {"%-61d", "7" + std::string(58, ' ')},
                 {"%05000d", std::string(59, '0')}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.format);
        EXPECT_EQ(c.expected, bytesOf(fxStr(7, c.format)));
    }
    EXPECT_EQ(59u, fxStr(1e80, "%.0f").length());
    EXPECT_EQ(59u, fxStr(1e30f, "%080.0f").length());
}

TEST(fxStrFormat, plainConversionsPrintAsTheCLibraryDoes) {
    const int numbers[] = {0,   1,     -1,     9,         10,      -10,     99,     100,
                           255, 65535, -65536, 999999999, INT_MIN, INT_MAX, 123456, -987654321};
    for (const int number : numbers) {
        SCOPED_TRACE(number);
        const unsigned int bits = static_cast<unsigned int>(number);
        for (const char* text : {"", "a", "some text"}) {
            char expected[200];
            std::snprintf(expected, sizeof expected, "%d|%i%u %x%%%c<%s>%d", number, number, bits,
                          bits, 'a' + number % 7, text, number);
            fxStr s;
            s.format("%d|%i%u %x%%%c<%s>%d", number, number, bits, bits, 'a' + number % 7, text,
                     number);
            EXPECT_STREQ(expected, s.c_str());
        }
        EXPECT_EQ(std::to_string(number), fxStr(number, nullptr).c_str());
        fxStr mixed;
        mixed.format("%d %5d %x", number, number, bits);
        char expected[100];
        std::snprintf(expected, sizeof expected, "%d %5d %x", number, number, bits);
        EXPECT_STREQ(expected, mixed.c_str());
    }
}

// A text of which only so many bytes are printed may have no NUL.
TEST(fxStrFormat, noMoreOfATextIsReadThanIsPrinted) {
    PageEnd room(4096);
    for (const char* const format : {"%.3s", "x%.3s", "%5.3s", "%-8.3s|", "%%%.3s", "%.3s%.3s"}) {
        const char* const text = room.put("abc");
        EXPECT_EQ(printed(format, text, text), formatted(format, text, text)) << format;
    }
}
