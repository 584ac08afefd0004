// fxGraphElements_test.cpp - members of every type of element in graph streams.

#include <memory>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/core/fxXDRObj.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxXDRMembers.h"
#include "tests/support/graphs.h"

namespace {

const unsigned int each = 3;  // elements of a type, in each of the two places

// In place, and in a block of its own.
template <class Element>
struct Both {
    Element here[each] = {};
    Element* there = nullptr;

    Both() = default;
    Both(const Both&) = delete;
    Both& operator=(const Both&) = delete;
    ~Both() { delete[] there; }

    void set(Element first, Element second, Element third) {
        const Element all[each] = {first, second, third};
        there = new Element[each];
        for (unsigned int i = 0; i < each; ++i)
            here[i] = there[i] = all[i];
    }
    unsigned char xdr(fxTranscriber& t) {
        return t.xdr(here, each) == 1 && t.xdr(&there, each) == 1;
    }

    void expectEqual(const Both& other, const char* name) const {
        ASSERT_NE(nullptr, other.there) << name;
        for (unsigned int i = 0; i < each; ++i) {
            EXPECT_EQ(here[i], other.here[i]) << name << " " << i;
            EXPECT_EQ(there[i], other.there[i]) << name << " " << i;
        }
    }
};

class Elements : public fxXDRObj {
    FX_XDR_MEMBERS(Elements)

    Both<char> chars;
    Both<unsigned char> bytes;
    Both<short> shorts;
    Both<unsigned short> unsignedShorts;
    Both<int> ints;
    Both<unsigned int> unsignedInts;
    Both<long> longs;
    Both<unsigned long> unsignedLongs;
    Both<float> floats;
    Both<double> doubles;
    fxStr strings[each];
    char* text = nullptr;
    unsigned char* unsignedText = nullptr;

    Elements() = default;
    ~Elements() override {
        delete[] text;
        delete[] unsignedText;
    }
};
FX_DEFINE_XDR(Elements, "Elements", 1)

unsigned char Elements::xdr(fxTranscriber& t) {
    return chars.xdr(t) && bytes.xdr(t) && shorts.xdr(t) && unsignedShorts.xdr(t) && ints.xdr(t) &&
           unsignedInts.xdr(t) && longs.xdr(t) && unsignedLongs.xdr(t) && floats.xdr(t) &&
           doubles.xdr(t) && t.xdr(strings, each) == 1 && t.xdr(&text) == 1 &&
           t.xdr(&unsignedText) == 1;
}

// No byte of an element is zero, so that none can be taken for the end of a text.
void fill(Elements& all) {
    all.chars.set('a', 'b', 'c');
    all.bytes.set(1, 0x80, 0xFE);
    all.shorts.set(0x0102, -2, 0x7F7F);
    all.unsignedShorts.set(0x0102, 0xFEFF, 0x8081);
    all.ints.set(0x01020304, -2, 0x7F7F7F7F);
    all.unsignedInts.set(0x01020304, 0xFEFDFCFB, 0x80818283);
    all.longs.set(0x01020304, -2, 0x7F7F7F7F);
    all.unsignedLongs.set(0x01020304, 0xFEFDFCFB, 0x80818283);
    all.floats.set(0.1f, -1e30f, 3e-30f);
    all.doubles.set(0.1, -1e300, 3e-300);
    const char* const texts[each] = {"first", "", "the third"};
    for (unsigned int i = 0; i < each; ++i)
        all.strings[i] = texts[i];
    all.text = new char[3]{'t', 'o', '\0'};
    all.unsignedText = new unsigned char[3]{0xC3, 0xA4, 0};
}

void expectEqual(const Elements& one, const Elements& other) {
    one.chars.expectEqual(other.chars, "char");
    one.bytes.expectEqual(other.bytes, "unsigned char");
    one.shorts.expectEqual(other.shorts, "short");
    one.unsignedShorts.expectEqual(other.unsignedShorts, "unsigned short");
    one.ints.expectEqual(other.ints, "int");
    one.unsignedInts.expectEqual(other.unsignedInts, "unsigned int");
    one.longs.expectEqual(other.longs, "long");
    one.unsignedLongs.expectEqual(other.unsignedLongs, "unsigned long");
    one.floats.expectEqual(other.floats, "float");
    one.doubles.expectEqual(other.doubles, "double");
    for (unsigned int i = 0; i < each; ++i)
        EXPECT_STREQ(one.strings[i].c_str(), other.strings[i].c_str()) << i;
    EXPECT_STREQ(one.text, other.text);
    ASSERT_NE(nullptr, other.unsignedText);
    for (unsigned int i = 0; i < 3; ++i)
        EXPECT_EQ(one.unsignedText[i], other.unsignedText[i]) << i;
}

}  // namespace

TEST(fxGraphElements, everyTypeComesBack) {
    Elements all;
    fill(all);
    const GraphRead read = readGraph(graphStreamOf(all), Elements_type);
    ASSERT_EQ("", read.error);
    const std::unique_ptr<Elements> copy(static_cast<Elements*>(read.object));
    expectEqual(all, *copy);
}

TEST(fxGraphElements, nullBlocksComeBackAsNull) {
    Elements all;
    const GraphRead read = readGraph(graphStreamOf(all), Elements_type);
    ASSERT_EQ("", read.error);
    const std::unique_ptr<Elements> copy(static_cast<Elements*>(read.object));
    EXPECT_EQ(nullptr, copy->unsignedShorts.there);
    EXPECT_EQ(nullptr, copy->doubles.there);
    EXPECT_EQ(nullptr, copy->text);
    EXPECT_EQ(nullptr, copy->unsignedText);
}
