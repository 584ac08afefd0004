#include <istream>
#include <iterator>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxStr.h"
#include "tests/support/observe.h"

namespace {
using namespace std::string_literals;

// Read before any test can have changed them.
const unsigned int firstResizeIncrement = fxStr::resizeIncrement;
const int firstDelimIdx = fxStr::delim_idx;

// Every test starts as a process does: no stream ever had a delimiter.
class fxStrStream : public testing::Test {
protected:
    void SetUp() override {
        fxStr::delim_idx = -1;
        fxStr::resizeIncrement = 10;
    }

    void TearDown() override {
        fxStr::delim_idx = savedDelimIdx;
        fxStr::resizeIncrement = savedResizeIncrement;
    }

private:
    const int savedDelimIdx = fxStr::delim_idx;
    const unsigned int savedResizeIncrement = fxStr::resizeIncrement;
};

// What is left to read.
std::string rest(std::istream& in) {
    return std::string(std::istreambuf_iterator<char>(in.rdbuf()),
                       std::istreambuf_iterator<char>());
}

// The number of bytes taken from a stream while a string had a length.
using Taken = std::pair<unsigned int, unsigned int>;

// Hands its bytes out one by one and notes how long a string is meanwhile. A
// string grows between two calls of get(), so the notes show what the calls
// asked for.
class WatchingBuffer : public std::streambuf {
public:
    WatchingBuffer(std::string bytes, const fxStr& string)
        : text(std::move(bytes)), watched(string) {}

    std::vector<Taken> runs;

protected:
    int_type underflow() override {
        return at < text.size() ? traits_type::to_int_type(text[at]) : traits_type::eof();
    }

    int_type uflow() override {
        if (at == text.size())
            return traits_type::eof();
        if (runs.empty() || runs.back().second != watched.length())
            runs.emplace_back(0, watched.length());
        ++runs.back().first;
        return traits_type::to_int_type(text[at++]);
    }

private:
    std::string text;
    std::size_t at = 0;
    const fxStr& watched;
};
}  // namespace

TEST_F(fxStrStream, theStaticsStartAsDocumented) {
    EXPECT_EQ(10u, firstResizeIncrement);
    EXPECT_EQ(-1, firstDelimIdx);
}

// Writing

TEST_F(fxStrStream, writingPutsTheTextUpToItsFirstNul) {
    const struct {
        std::string text;
        const char* expected;
    } cases[] = {{"", ""},     {"a", "a"},    {"a text\n", "a text\n"}, {"a\0b"s, "a"},
                 {"\0b"s, ""}, {"\0\0"s, ""}, {"\xff\x80", "\xff\x80"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.text));
        std::ostringstream out;
        EXPECT_EQ(&out, &(out << stringOf(c.text)));
        EXPECT_EQ(c.expected, out.str());
        EXPECT_TRUE(out.good());
    }
}

TEST_F(fxStrStream, writingChains) {
    std::ostringstream out;
    out << fxStr("a") << ',' << fxStr("b");
    EXPECT_EQ("a,b", out.str());
}

// Reading

TEST_F(fxStrStream, readingTakesOneRecordAndItsDelimiter) {
    const std::string chunk = "123456789";
    const struct {
        std::string input, expected, left;
    } cases[] = {{"one\ntwo\n", "one", "two\n"},
                 {"one\n", "one", ""},
                 {"one\n\ntwo\n", "one", "\ntwo\n"},
                 {"  two  words \nx", "  two  words ", "x"},
                 {"\t\r\nx", "\t\r", "x"},
                 {"\"a\\\"b\nc\"", "\"a\\\"b", "c\""},
                 {"a\0b\nc"s, "a\0b"s, "c"},
                 {"\0\nc"s, "\0"s, "c"},
                 {"\xff\nx", "\xff", "x"},
                 {chunk + "\nx", chunk, "x"},
                 {chunk + "0\nx", chunk + "0", "x"},
                 {chunk + "\xff\nx", chunk + "\xff", "x"},
                 {chunk + chunk + "0\nx", chunk + chunk + "0", "x"},
                 {chunk + chunk + "01\nx", chunk + chunk + "01", "x"},
                 {std::string(1000, 'r') + "\nx", std::string(1000, 'r'), "x"}};
    for (const auto& c : cases) {
        for (const char* before : {"", "xy", "a text of more than ten bytes"}) {
            SCOPED_TRACE(testing::PrintToString(c.input) + " into " + before);
            std::istringstream in(c.input);
            fxStr s(before);
            EXPECT_EQ(&in, &(in >> s));
            EXPECT_EQ(c.expected, bytesOf(s));
            EXPECT_TRUE(in.good());
            EXPECT_EQ(c.left, rest(in));
        }
    }
}

TEST_F(fxStrStream, readingGoesOnFromRecordToRecord) {
    std::istringstream in("first record\n22\na third, longer than the others\nlast");
    fxStr s;
    std::vector<std::string> records;
    while (in >> s)
        records.push_back(bytesOf(s));
    const std::vector<std::string> expected = {"first record", "22",
                                               "a third, longer than the others", "last"};
    EXPECT_EQ(expected, records);
}

TEST_F(fxStrStream, readingEndsWithTheStream) {
    for (const std::string& text :
         {"a"s, "12345678"s, "123456789"s, "1234567890"s, "123456789012345678"s,
          "1234567890123456789"s, std::string(500, 'e')}) {
        for (const char* before : {"", "12345", "a text of more than ten bytes"}) {
            SCOPED_TRACE(text + " into " + before);
            std::istringstream in(text);
            fxStr s(before);
            in >> s;
            EXPECT_EQ(text, bytesOf(s));
            EXPECT_TRUE(in.eof());
        }
    }
}

TEST_F(fxStrStream, readingAtTheEndGivesAnEmptyStringAndFails) {
    for (const char* before : {"", "xy", "a text of more than ten bytes"}) {
        SCOPED_TRACE(before);
        std::istringstream in;
        fxStr s(before);
        in >> s;
        EXPECT_EQ("", bytesOf(s));
        EXPECT_EQ(std::ios::eofbit | std::ios::failbit, in.rdstate());
    }
}

TEST_F(fxStrStream, readingFromAFailedStreamGivesAnEmptyStringAndTakesNothing) {
    for (const char* before : {"", "xy", "a text of more than ten bytes"}) {
        SCOPED_TRACE(before);
        std::istringstream in("record\n");
        in.setstate(std::ios::failbit);
        fxStr s(before);
        in >> s;
        EXPECT_EQ("", bytesOf(s));
        EXPECT_EQ("record\n", rest(in));
    }
}

TEST_F(fxStrStream, deliberateAnEmptyRecordFailsAndLeavesItsDelimiter) {
    for (const char* before : {"", "xy", "a text of more than ten bytes"}) {
        SCOPED_TRACE(before);
        std::istringstream in("\nnext\n");
        fxStr s(before);
        in >> s;
        EXPECT_EQ("", bytesOf(s));
        EXPECT_EQ(std::ios::failbit, in.rdstate());

        in.clear();
        in >> s;
        EXPECT_TRUE(in.fail());
        in.clear();
        EXPECT_EQ("\nnext\n", rest(in));
    }
}

// get() is asked for one byte then, which is the NUL's.
TEST_F(fxStrStream, deliberateATargetOfOneByteReadsNothingAndFails) {
    std::istringstream in("record\n");
    fxStr s("x");
    in >> s;
    EXPECT_EQ("", bytesOf(s));
    EXPECT_EQ(std::ios::failbit, in.rdstate());
    in.clear();
    EXPECT_EQ("record\n", rest(in));

    // The same for an empty target that grows by one.
    fxStr::resizeIncrement = 1;
    std::istringstream again("record\n");
    again >> s;
    EXPECT_EQ("", bytesOf(s));
    EXPECT_EQ(std::ios::failbit, again.rdstate());
}

// Growth while reading

TEST_F(fxStrStream, readingAsksForWhatTheTargetHoldsAndGrowsInSteps) {
    const struct {
        unsigned int increment, targetLength, recordLength;
        std::vector<Taken> runs;  // the delimiter's byte included
    } cases[] = {
        // An empty target first becomes one increment long.
        {10, 0, 1, {{2, 10}}},
        {10, 0, 8, {{9, 10}}},
        {10, 0, 9, {{10, 10}}},
        {10, 0, 10, {{9, 10}, {2, 20}}},
        {10, 0, 18, {{9, 10}, {10, 20}}},
        {10, 0, 19, {{9, 10}, {11, 20}}},
        {10, 0, 20, {{9, 10}, {10, 20}, {2, 30}}},
        {10, 0, 25, {{9, 10}, {10, 20}, {7, 30}}},
        {10, 0, 29, {{9, 10}, {10, 20}, {11, 30}}},
        {10, 0, 30, {{9, 10}, {10, 20}, {10, 30}, {2, 40}}},
        // Any other is filled first.
        {10, 2, 1, {{2, 2}}},
        {10, 2, 2, {{1, 2}, {2, 12}}},
        {10, 5, 4, {{5, 5}}},
        {10, 5, 6, {{4, 5}, {3, 15}}},
        {10, 5, 15, {{4, 5}, {10, 15}, {2, 25}}},
        {10, 40, 39, {{40, 40}}},
        {10, 40, 40, {{39, 40}, {2, 50}}},
        // The increment can be changed.
        {4, 0, 3, {{4, 4}}},
        {4, 0, 10, {{3, 4}, {4, 8}, {4, 12}}},
        {4, 0, 12, {{3, 4}, {4, 8}, {4, 12}, {2, 16}}},
        {2, 0, 4, {{1, 2}, {2, 4}, {2, 6}}},
        {1, 3, 5, {{2, 3}, {1, 4}, {1, 5}, {2, 6}}},
        {1000, 0, 900, {{901, 1000}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "increment " << c.increment << ", target "
                                        << c.targetLength << ", record " << c.recordLength);
        fxStr::resizeIncrement = c.increment;
        fxStr s(std::string(c.targetLength, 't').c_str());
        const std::string record(c.recordLength, 'r');
        WatchingBuffer buffer(record + "\nnext", s);
        std::istream in(&buffer);
        in >> s;
        EXPECT_EQ(record, bytesOf(s));
        EXPECT_EQ(c.runs, buffer.runs);
        EXPECT_TRUE(in.good());
    }
}

// Delimiters

TEST_F(fxStrStream, theFirstDelimiterAllocatesTheStreamWord) {
    std::istringstream first("a;b");
    EXPECT_EQ(&first, &_delimiter(first, ';'));
    const int index = fxStr::delim_idx;
    EXPECT_NE(-1, index);
    EXPECT_EQ(';', static_cast<char>(first.iword(index)));

    std::istringstream second("a;b");
    _delimiter(second, ',');
    EXPECT_EQ(index, fxStr::delim_idx);
    EXPECT_EQ(',', static_cast<char>(second.iword(index)));
    EXPECT_EQ(';', static_cast<char>(first.iword(index)));
}

TEST_F(fxStrStream, eachStreamHasItsOwnDelimiter) {
    std::istringstream semicolons("a,b;c");
    std::istringstream commas("a;b,c");
    _delimiter(semicolons, ';');
    _delimiter(commas, ',');
    fxStr s;
    semicolons >> s;
    EXPECT_EQ("a,b", bytesOf(s));
    commas >> s;
    EXPECT_EQ("a;b", bytesOf(s));

    _delimiter(semicolons, 'c') >> s;
    EXPECT_EQ("", bytesOf(s));
    EXPECT_TRUE(semicolons.fail());
}

TEST_F(fxStrStream, everyByteCanBeTheDelimiter) {
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        const char delimiter = static_cast<char>(byte);
        const char other = static_cast<char>(byte ^ 1);
        // As long as one chunk, so that the delimiter is met by peek().
        for (const std::string& record : {std::string(3, other), std::string(9, other)}) {
            std::istringstream in(record + delimiter + "x");
            fxStr s;
            _delimiter(in, delimiter) >> s;
            EXPECT_EQ(record, bytesOf(s));
            EXPECT_TRUE(in.good());
            EXPECT_EQ("x", rest(in));
        }
    }
}

TEST_F(fxStrStream, theStreamWordHoldsTheValueOfTheChar) {
    for (int byte = 0; byte < 256; ++byte) {
        const char delimiter = static_cast<char>(byte);
        std::istringstream in;
        _delimiter(in, delimiter);
        EXPECT_EQ(long(delimiter), in.iword(fxStr::delim_idx)) << byte;
    }
}

TEST_F(fxStrStream, aHighByteIsNotTakenForTheEnd) {
    const std::string record(25, '\xff');
    std::istringstream in(record + ";x");
    fxStr s;
    _delimiter(in, ';') >> s;
    EXPECT_EQ(record, bytesOf(s));
    EXPECT_EQ("x", rest(in));
}

TEST_F(fxStrStream, deliberateOnceAStreamHasADelimiterTheOthersReadToANul) {
    std::istringstream newlines("one\ntwo\nthree\0four\nfive"s);
    fxStr s;
    newlines >> s;
    EXPECT_EQ("one", bytesOf(s));

    std::istringstream other;
    _delimiter(other, ';');
    newlines >> s;
    EXPECT_EQ("two\nthree", bytesOf(s));

    _delimiter(newlines, '\n') >> s;
    EXPECT_EQ("four", bytesOf(s));
    newlines >> s;
    EXPECT_EQ("five", bytesOf(s));
    EXPECT_TRUE(newlines.eof());
}
