// everyMember_test.cpp - a class with a member of every type that a transcriber takes, defined by
// the macros; and blocks that are longer than any buffer.

#include <cstring>
#include <memory>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxXDRMembers.h"
#include "tests/support/graphBytes.h"
#include "tests/support/graphs.h"

namespace {

const unsigned int n = 3;

class Every : public fxXDRObj {
    FX_XDR_MEMBERS(Every)
    char chars[n] = {};
    unsigned char bytes[n] = {};
    short shorts[n] = {};
    unsigned short unsignedShorts[n] = {};
    long longs[n] = {};
    unsigned long unsignedLongs[n] = {};
    float floats[n] = {};
    double doubles[n] = {};
    unsigned int size = n;
    unsigned char* block = nullptr;
    unsigned short* shortBlock = nullptr;
    unsigned long* longBlock = nullptr;
    float* floatBlock = nullptr;
    unsigned char* text = nullptr;
};
FX_DEFINE_XDR(Every, "Every", 1)
unsigned char Every::xdr(fxTranscriber& t) {
    return t.xdr(chars, n) && t.xdr(bytes, n) && t.xdr(shorts, n) && t.xdr(unsignedShorts, n) &&
           t.xdr(longs, n) && t.xdr(unsignedLongs, n) && t.xdr(floats, n) && t.xdr(doubles, n) &&
           t.xdr(&size, 1) && t.xdr(&block, size) && t.xdr(&shortBlock, n) &&
           t.xdr(&longBlock, n) && t.xdr(&floatBlock, n) && t.xdr(&text);
}

// What the reader makes goes with delete[], and so does the original.
void release(const Every& every) {
    delete[] every.block;
    delete[] every.shortBlock;
    delete[] every.longBlock;
    delete[] every.floatBlock;
    delete[] every.text;
}

void fill(Every& every, unsigned int size) {
    every.chars[2] = 'c';
    every.bytes[2] = 200;
    every.shorts[2] = -300;
    every.unsignedShorts[2] = 65000;
    every.longs[2] = -70000;
    every.unsignedLongs[2] = 4000000000UL;
    every.floats[2] = 0.5F;
    every.doubles[2] = 0.25;
    every.size = size;
    every.block = new unsigned char[size];
    for (unsigned int i = 0; i < size; ++i)
        every.block[i] = static_cast<unsigned char>(i % 251);
    every.text = new unsigned char[5]{'t', 'e', 'x', 't', 0};
}

}  // namespace

TEST(everyMember, comesBackFromAGraph) {
    const unsigned int mebi = 1024 * 1024;
    for (const unsigned int size : {1u, 4095u, 4096u, 4097u, 65536u, 65537u, 131072u, mebi}) {
        SCOPED_TRACE(size);
        Every every;
        fill(every, size);
        const Held<> stream;
        const auto writer = graphWriterOn(stream.get());
        ASSERT_EQ(1, writer->writeObject(&every, &every)) << writer->lastError();
        const auto reader = graphReaderOn(stream.get());

        const std::unique_ptr<Every> copy(static_cast<Every*>(reader->readObject(Every_type)));

        ASSERT_NE(nullptr, copy) << reader->lastError();
        EXPECT_EQ('c', copy->chars[2]);
        EXPECT_EQ(200, copy->bytes[2]);
        EXPECT_EQ(-300, copy->shorts[2]);
        EXPECT_EQ(65000, copy->unsignedShorts[2]);
        EXPECT_EQ(-70000, copy->longs[2]);
        EXPECT_EQ(4000000000UL, copy->unsignedLongs[2]);
        EXPECT_EQ(0.5F, copy->floats[2]);
        EXPECT_EQ(0.25, copy->doubles[2]);
        EXPECT_EQ(0, std::memcmp(every.block, copy->block, size));
        EXPECT_EQ(nullptr, copy->shortBlock);
        EXPECT_STREQ("text", reinterpret_cast<char*>(copy->text));
        release(every);
        release(*copy);
    }
}
