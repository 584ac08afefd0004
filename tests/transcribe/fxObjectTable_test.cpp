// fxObjectTable_test.cpp - the dictionary that writers and readers show.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "tests/support/heapCalls.h"
#include "tests/support/memoryStream.h"
#include "tests/support/scriptedObject.h"
#include "tests/support/streamBytes.h"

namespace {
using Word = unsigned int;
using Entries = std::vector<std::pair<Word, Word>>;

// The entries in the order of their chains.
Entries entriesOf(fxBinaryOTDict& table) {
    Entries entries;
    for (fxBinaryOTDictIter iter(table); iter.getKey(); ++iter)
        entries.emplace_back(*static_cast<Word*>(iter.getKey()),
                             *static_cast<Word*>(iter.getValue()));
    EXPECT_EQ(entries.size(), table.length());
    return entries;
}

// Addresses that share buckets.
void* address(unsigned int i) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): nothing is there.
    return reinterpret_cast<void*>(0x10000 + 4 * (i % 7) + 31 * 4 * i);
}

Word asWord(const void* p) { return reinterpret_cast<Word>(p); }

Word valueOf(fxBinaryOTDict& table, Word key) {
    const void* value = table.find(&key);
    return value ? *static_cast<const Word*>(value) : 0xDEAD;
}

// Written in this order the numbers below are awaited, and then come.
std::string pointerTo(unsigned int number) { return hex("03") + word(number) + word(1); }
std::string body(unsigned int number) { return hex("45 01") + word(number) + word(1) + 'x'; }
}  // namespace

// What is shown is what a dictionary holds into which each number was entered
// at once: the same chains, the same order, the same count.

TEST(fxObjectTable, writersTableHasTheChainsOfEnteringEachNumberAtOnce) {
    const unsigned int n = 500;
    for (const unsigned int askedAt : {0u, 1u, 250u, n}) {
        SCOPED_TRACE(askedAt);
        MemoryStream stream;
        fxBinaryWriter writer(&stream);
        fxBinaryOTDict expected;
        Word key = 0, value = 0;
        expected.addInternal(&key, &value);
        for (unsigned int i = 0; i < n; ++i) {
            if (i == askedAt)
                writer.getTable();
            key = asWord(address(i % 400));  // some get a new number
            value = writer.recordIdForAddress(address(i % 400));
            expected.addInternal(&key, &value);
            if (i > askedAt) {
                EXPECT_EQ(value, valueOf(writer.getTable(), key));
            }
        }
        EXPECT_EQ(entriesOf(expected), entriesOf(writer.getTable()));
    }
}

TEST(fxObjectTable, readersTableIsInTheOrderInWhichNumbersGotAnAddress) {
    const Word order[] = {124, 248, 4, 372, 128, 0};  // several to a bucket
    for (const bool askedFirst : {false, true}) {
        SCOPED_TRACE(askedFirst);
        std::string bytes;
        for (unsigned int i = 6; i-- > 0;)  // awaited in another order
            bytes += pointerTo(order[i]);
        for (const Word number : order)
            bytes += body(number);
        MemoryStream stream(bytes);
        fxBinaryReader reader(&stream, 0x1122, 0x33445566, "ieee");
        if (askedFirst) {
            EXPECT_EQ(0u, reader.getTable().length());
        }
        char* blocks[6] = {};
        for (char*& block : blocks)
            EXPECT_EQ(1, reader.xdr(&block, 1));
        if (askedFirst) {
            EXPECT_EQ(0u, reader.getTable().length()) << "waiting enters nothing";
        }
        EXPECT_NE(nullptr, reader.readObject(objType));

        fxBinaryOTDict expected;
        for (Word number : order) {
            Word at = asWord(reader.alreadyRead(number));
            expected.addInternal(&number, &at);
        }
        EXPECT_EQ(entriesOf(expected), entriesOf(reader.getTable()));
        for (const char* block : blocks)
            delete[] block;
    }
}

TEST(fxObjectTable, numberReadAgainHasItsLaterAddressInItsOldPlace) {
    for (const bool askedFirst : {false, true}) {
        SCOPED_TRACE(askedFirst);
        MemoryStream stream(body(124) + body(248) + body(124));
        fxBinaryReader reader(&stream, 0x1122, 0x33445566, "ieee");
        if (askedFirst)
            reader.getTable();
        std::vector<char*> blocks;
        for (int i = 0; i < 3; ++i)
            blocks.push_back(static_cast<char*>(reader.readObject(objType)));
        EXPECT_EQ((Entries{{248, asWord(blocks[1])}, {124, asWord(blocks[2])}}),
                  entriesOf(reader.getTable()));
        for (const char* block : blocks)
            delete[] block;
    }
}

// Who asks, and when.

TEST(fxObjectTable, nothingIsAllocatedForAnEntryUntilTheTableIsAskedFor) {
    if (!heapCallsAreCounted())
        GTEST_SKIP() << "heap calls are not counted here";
    MemoryStream stream;
    fxBinaryWriter writer(&stream);
    const unsigned int n = 10000;
    const unsigned long before = heapCalls().allocations;
    for (unsigned int i = 0; i < n; ++i)
        writer.recordIdForAddress(address(i));
    EXPECT_LT(heapCalls().allocations - before, 100u);
    EXPECT_EQ(n + 1, writer.getTable().length());
    EXPECT_GE(heapCalls().allocations - before, 2 * n) << "an entry and its block";
}

TEST(fxObjectTable, sharedPartOfAWriterShowsTheSameTable) {
    MemoryStream stream;
    fxBinaryWriter writer(&stream);
    writer.recordIdForAddress(address(1));
    fxBinaryTranscriber& shared = writer;
    EXPECT_EQ(2u, shared.getTable().length());
    EXPECT_EQ(&shared.getTable(), &writer.getTable());
}

TEST(fxObjectTable, everyTranscriberShowsItsOwnInWhateverOrderTheyEnd) {
    const int orders[][3] = {{0, 1, 2}, {2, 1, 0}, {1, 0, 2}, {1, 2, 0}};
    for (const auto& order : orders) {
        MemoryStream stream;
        std::unique_ptr<fxBinaryWriter> writers[3];
        for (auto& writer : writers)
            writer = std::make_unique<fxBinaryWriter>(&stream);
        for (unsigned int i = 0; i < 3; ++i) {
            for (unsigned int j = 0; j <= i; ++j)
                writers[i]->recordIdForAddress(address(j));
        }
        for (const int gone : order) {
            writers[gone].reset();
            for (unsigned int i = 0; i < 3; ++i) {
                if (writers[i]) {
                    EXPECT_EQ(i + 2, writers[i]->getTable().length());
                }
            }
        }
    }
}

TEST(fxObjectTable, resetEmptiesItEndsItsIteratorsAndItGoesOnBeingKeptUp) {
    MemoryStream stream;
    fxBinaryWriter writer(&stream);
    writer.recordIdForAddress(address(1));
    fxBinaryOTDict& table = writer.getTable();
    fxBinaryOTDictIter iter(table);
    EXPECT_NE(nullptr, iter.getKey());
    writer.reset();
    EXPECT_EQ(nullptr, iter.getKey());
    EXPECT_EQ(0u, table.length());
    writer.recordIdForAddress(address(2));
    EXPECT_EQ((Entries{{asWord(address(2)), 2}}), entriesOf(table));
}

TEST(fxObjectTable, whatAHostChangesInItDoesNotChangeWhatTheWriterKnows) {
    MemoryStream stream;
    fxBinaryWriter writer(&stream);
    EXPECT_EQ(1u, writer.recordIdForAddress(address(1)));
    fxBinaryOTDict& table = writer.getTable();
    const Word known = asWord(address(1));
    table.remove(&known);
    const Word other = asWord(address(2)), number = 77;
    table.addInternal(&other, &number);
    EXPECT_EQ(1u, writer.alreadyWritten(address(1)));
    EXPECT_EQ(0u, writer.alreadyWritten(address(2)));
    EXPECT_EQ(2u, writer.recordIdForAddress(address(1)));
    EXPECT_EQ(2u, valueOf(table, known));
}

// A host's own transcriber.

namespace {
// Numbers what it is handed, in the table that it has from its base.
class Numbering : public virtual fxBinaryTranscriber {
public:
    using fxTranscriber::xdr;
    void reset() override { table.removeAll(); }
    unsigned char xdr(char* p, unsigned int) override { return number(p); }
    unsigned char xdr(unsigned char* p, unsigned int) override { return number(p); }
    unsigned char xdr(short* p, unsigned int) override { return number(p); }
    unsigned char xdr(unsigned short* p, unsigned int) override { return number(p); }
    unsigned char xdr(long* p, unsigned int) override { return number(p); }
    unsigned char xdr(unsigned long* p, unsigned int) override { return number(p); }
    unsigned char xdr(float* p, unsigned int) override { return number(p); }
    unsigned char xdr(double* p, unsigned int) override { return number(p); }
    unsigned char xdr(fxStr* p, unsigned int) override { return number(p); }
    unsigned char xdr(char** p, unsigned int) override { return number(*p); }
    unsigned char xdr(unsigned char** p, unsigned int) override { return number(*p); }
    unsigned char xdr(short** p, unsigned int) override { return number(*p); }
    unsigned char xdr(unsigned short** p, unsigned int) override { return number(*p); }
    unsigned char xdr(long** p, unsigned int) override { return number(*p); }
    unsigned char xdr(unsigned long** p, unsigned int) override { return number(*p); }
    unsigned char xdr(float** p, unsigned int) override { return number(*p); }
    unsigned char xdr(double** p, unsigned int) override { return number(*p); }
    unsigned char xdr(char** p) override { return number(*p); }
    unsigned char xdr(unsigned char** p) override { return number(*p); }
    unsigned char xdr(void* p, fxXDRObj*, fxTypeObj&, fxXDRObj*, void*) override {
        return number(p);
    }
    unsigned char xdr(fxTypeObj&, void*, void* p) override { return number(p); }
    void* readObject(fxTypeObj&) override { return nullptr; }
    unsigned char writeObject(void* p, fxXDRObj*) override { return number(p); }
    const char* className() const override { return "Numbering"; }

private:
    unsigned char number(const void* p) {
        *static_cast<Word*>(table.findCreate(&p)) = ++arg1;
        return 1;
    }
};
}  // namespace

TEST(fxObjectTable, hostsOwnTranscriberHasAnOrdinaryDictionary) {
    Numbering numbering;
    int numbers[] = {1, 2};
    EXPECT_EQ(0u, numbering.getTable().length());
    EXPECT_EQ(1, numbering.xdr(&numbers[0], 1));
    EXPECT_EQ(1, numbering.xdr(&numbers[1], 1));
    EXPECT_EQ(2u, valueOf(numbering.getTable(), asWord(&numbers[1])));
    const Word first = asWord(&numbers[0]);
    numbering.getTable().remove(&first);
    EXPECT_EQ((Entries{{asWord(&numbers[1]), 2}}), entriesOf(numbering.getTable()));
    numbering.reset();
    EXPECT_EQ(0u, numbering.getTable().length());
}
