#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "tests/support/memoryStream.h"
#include "tests/support/scriptedObject.h"
#include "tests/support/streamBytes.h"

namespace {
using Script = ScriptedObject::Script;

class fxBinaryWriterObjects : public testing::Test {
protected:
    fxBinaryWriterObjects() : writer(&stream) {}

    // What writing `object` adds to the stream.
    std::string written(ScriptedObject& object) {
        stream.written.clear();
        EXPECT_EQ(1, writer.writeObject(&object, &object));
        return dump(stream.written);
    }

    std::string written(const Script& script) {
        ScriptedObject root(objType, script);
        return written(root);
    }

    MemoryStream stream;
    fxBinaryWriter writer;
};

// On a fresh writer the root has number 1 and its type "Obj" number 2.
const char* const objDefinition = "02 02000000 'Obj' 00";
std::string objHead() { return hex(objDefinition); }

unsigned char xdrNumber(ScriptedObject& self, fxTranscriber& t) { return t.xdr(self.numbers, 1); }
}  // namespace

// Object bodies.

TEST_F(fxBinaryWriterObjects, rootIsOneItsTypeTwo) {
    ScriptedObject root(objType, xdrNumber);
    root.numbers[0] = 0x01020304;
    EXPECT_EQ(dump(hex("02 02000000 4f626a00 4a 04 01000000 02000000 01000000") + host(0x01020304)),
              written(root));
}

TEST_F(fxBinaryWriterObjects, emptyObjectIsARecordWithoutPayload) {
    EXPECT_EQ(dump(objHead() + hex("0a 01000000 02000000 01000000")), written(Script()));
}

TEST_F(fxBinaryWriterObjects, typeIsDefinedOnce) {
    ScriptedObject first(objType, xdrNumber);
    ScriptedObject second(objType, xdrNumber);
    ScriptedObject third(subType, xdrNumber);
    written(first);
    EXPECT_EQ(dump(hex("4a 04 03000000 02000000 01000000") + host(0)), written(second));
    EXPECT_EQ(dump(hex("02 05000000 'Sub' 00 4a 04 04000000 05000000 01000000") + host(0)),
              written(third));
}

TEST_F(fxBinaryWriterObjects, rootIsWrittenAgainUnderANewNumber) {
    ScriptedObject root(objType, xdrNumber);
    written(root);
    EXPECT_EQ(dump(hex("4a 04 03000000 02000000 01000000") + host(0)), written(root));
    EXPECT_EQ(3u, writer.alreadyWritten(&root));
}

TEST_F(fxBinaryWriterObjects, addressAndTypeAreTakenFromTheirOwnArguments) {
    ScriptedObject contents(objType, xdrNumber);
    contents.numbers[0] = 7;
    const ScriptedObject typed(subType);
    EXPECT_EQ(1, writer.writeObject(&contents, const_cast<ScriptedObject*>(&typed)));
    EXPECT_EQ(dump(hex("02 02000000 'Sub' 00 4a 04 01000000 02000000 01000000") + host(7)),
              dump(stream.written));
}

TEST_F(fxBinaryWriterObjects, noObjectIsAFailureThatWritesNothing) {
    int address = 0;
    EXPECT_EQ(0, writer.writeObject(&address, nullptr));
    EXPECT_EQ(0, writer.writeObject(nullptr, nullptr));
    EXPECT_EQ("", stream.written);
    EXPECT_EQ(nullptr, writer.pop());
}

TEST_F(fxBinaryWriterObjects, longObjectContinuesInDataRecords) {
    std::string chars = run(600);
    EXPECT_EQ(
        dump(objHead() + hex("8a 0002 01000000 02000000 01000000") + run(512) + hex("40 58") +
             run(600).substr(512)),
        written([&chars](ScriptedObject&, fxTranscriber& t) { return t.xdr(&chars[0], 600); }));
}

TEST_F(fxBinaryWriterObjects, fullBufferBeforeAPointerIsOneRecord) {
    std::string chars = run(512);
    EXPECT_EQ(dump(objHead() + hex("8a 0002 01000000 02000000 01000000") + run(512) + hex("01")),
              written([&chars](ScriptedObject& self, fxTranscriber& t) {
                  return static_cast<unsigned char>(t.xdr(&chars[0], 512) && self.xdrLink(t, 0));
              }));
}

TEST_F(fxBinaryWriterObjects, dataBeforeTheRootTravelsInTheRecordThatComesFirst) {
    ScriptedObject root(objType, xdrNumber);
    long before = 0x0A0B0C0D;
    writer.xdr(&before, 1);
    EXPECT_EQ(dump(hex("42 04 02000000 'Obj' 00") + host(0x0A0B0C0D) +
                   hex("4a 04 01000000 02000000 01000000") + host(0)),
              written(root))
        << "a new type's";
    writer.xdr(&before, 1);
    EXPECT_EQ(dump(hex("4a 08 03000000 02000000 01000000") + host(0x0A0B0C0D) + host(0)),
              written(root))
        << "the object's own";
}

TEST_F(fxBinaryWriterObjects, deliberateVersionWordIsThatOfTheTypeDefinedLast) {
    ScriptedObject two(twoType);
    ScriptedObject obj(objType);
    ScriptedObject sub(subType);
    EXPECT_EQ(dump(hex("02 02000000 'Two' 00 0a 01000000 02000000 02000000")), written(two));
    EXPECT_EQ(dump(hex("02 04000000 'Obj' 00 0a 03000000 04000000 01000000")), written(obj));
    EXPECT_EQ(dump(hex("0a 05000000 02000000 01000000")), written(two)) << "not refreshed";
    writer.reset();
    EXPECT_EQ(dump(hex("02 07000000 'Two' 00 0a 06000000 07000000 02000000")), written(two));
    EXPECT_EQ(dump(hex("02 09000000 'Sub' 00 0a 08000000 09000000 01000000")), written(sub));
}

TEST_F(fxBinaryWriterObjects, stringIsItsSizeThenAPointerToItsBytes) {
    ScriptedObject root(objType, [](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(self.text.xdr(t) && t.xdr(self.numbers, 1));
    });
    root.text = "ab";
    root.numbers[0] = 5;
    EXPECT_EQ(
        dump(objHead() + hex("4a 04 01000000 02000000 01000000") + host(3) +
             hex("43 04 03000000 03000000") + host(5) + hex("45 03 03000000 03000000 'ab' 00")),
        written(root));
    root.text = "";
    EXPECT_EQ(dump(hex("4a 08 04000000 02000000 01000000") + host(1) + host(5)), written(root))
        << "an empty string is its size alone";
}

TEST_F(fxBinaryWriterObjects, stringArrayStopsAtTheFirstFailure) {
    fxStr strings[] = {"", "a", ""};
    EXPECT_EQ(1, writer.xdr(strings, 3));
    EXPECT_EQ(dump(hex("40 08") + host(1) + host(2)), dump(stream.written)) << "up to the pointer";
    stream.written.clear();
    stream.failAtCall = 0;
    EXPECT_EQ(0, writer.xdr(strings + 1, 2));
    EXPECT_EQ("", stream.written);
}

// Blocks.

TEST_F(fxBinaryWriterObjects, blocksHaveATagAndASizeForEachElementType) {
    char chars[] = {'a', 'b', 'c'};
    unsigned char unsignedChars[] = {1, 2};
    short shorts[] = {3, 4};
    unsigned short unsignedShorts[] = {5};
    long longs[] = {6, 7};
    unsigned long unsignedLongs[] = {8};
    int ints[] = {9};
    unsigned int unsignedInts[] = {10, 11};
    float floats[] = {1.5f};
    double doubles[] = {2.5, 3.5};
    const auto pointTo = [this](auto* elements, unsigned int n) {
        return written([elements, n](ScriptedObject&, fxTranscriber& t) mutable {
            return t.xdr(&elements, n);
        });
    };
    const struct {
        std::string got;
        unsigned int tag, number, length;
        std::string body;
    } cases[] = {
        {pointTo(chars, 3), 5, 3, 3, "abc"},
        {pointTo(unsignedChars, 2), 5, 5, 2, hex("01 02")},
        {pointTo(shorts, 2), 6, 7, 4, host<short>(3) + host<short>(4)},
        {pointTo(unsignedShorts, 1), 6, 9, 2, host<short>(5)},
        {pointTo(longs, 2), 7, 11, 8, host(6) + host(7)},
        {pointTo(unsignedLongs, 1), 7, 13, 4, host(8)},
        {pointTo(ints, 1), 7, 15, 4, host(9)},
        {pointTo(unsignedInts, 2), 7, 17, 8, host(10) + host(11)},
        {pointTo(floats, 1), 8, 19, 4, host(1.5f)},
        {pointTo(doubles, 2), 9, 21, 16, host(2.5) + host(3.5)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.number);
        const bool first = c.number == 3;
        const std::string root = word(first ? 1 : c.number - 1);
        EXPECT_EQ(dump((first ? objHead() : "") + hex("0a") + root + word(2) + word(1) + hex("03") +
                       word(c.number) + word(c.length) + static_cast<char>(0x40 | c.tag) +
                       static_cast<char>(c.length) + word(c.number) + word(c.length) + c.body),
                  c.got);
    }
}

TEST_F(fxBinaryWriterObjects, textsAreBlocksOfBytesWithTheirNul) {
    char chars[] = "abc";
    unsigned char unsignedChars[] = {'d', 'e', 0, 'f'};
    char* text = chars;
    unsigned char* unsignedText = unsignedChars;
    EXPECT_EQ(dump(objHead() + hex("0a 01000000 02000000 01000000 03 03000000 04000000") +
                   hex("45 04 03000000 04000000 'abc' 00")),
              written([&text](ScriptedObject&, fxTranscriber& t) { return t.xdr(&text); }));
    EXPECT_EQ(dump(hex("0a 04000000 02000000 01000000 03 05000000 03000000") +
                   hex("45 03 05000000 03000000 'de' 00")),
              written([&unsignedText](ScriptedObject&, fxTranscriber& t) {
                  return t.xdr(&unsignedText);
              }));
}

TEST_F(fxBinaryWriterObjects, nullBlocksAndTextsAreNullPointers) {
    const Script scripts[] = {
        [](ScriptedObject& self, fxTranscriber& t) { return t.xdr(&self.blocks[0], 5); },
        [](ScriptedObject& self, fxTranscriber& t) { return t.xdr(&self.blocks[0]); },
        [](ScriptedObject&, fxTranscriber& t) {
            unsigned char* text = nullptr;
            return t.xdr(&text);
        },
        [](ScriptedObject&, fxTranscriber& t) {
            double* doubles = nullptr;
            return t.xdr(&doubles, 3);
        }};
    for (const Script& script : scripts) {
        MemoryStream out;
        fxBinaryWriter w(&out);
        ScriptedObject root(objType, script);
        EXPECT_EQ(1, w.writeObject(&root, &root));
        EXPECT_EQ(dump(objHead() + hex("0a 01000000 02000000 01000000 01")), dump(out.written));
    }
}

TEST_F(fxBinaryWriterObjects, dataAfterANullBlockTravelsInItsRecord) {
    EXPECT_EQ(
        dump(objHead() + hex("0a 01000000 02000000 01000000 41 04") + host(0)),
        written([](ScriptedObject& self, fxTranscriber& t) {
            return static_cast<unsigned char>(t.xdr(&self.blocks[0], 5) && t.xdr(self.numbers, 1));
        }));
}

TEST_F(fxBinaryWriterObjects, blockOfLengthZeroHasABodyWithoutPayload) {
    char c = 'c';
    char* block = &c;
    EXPECT_EQ(dump(objHead() + hex("0a 01000000 02000000 01000000 03 03000000 00000000") +
                   hex("05 03000000 00000000")),
              written([&block](ScriptedObject&, fxTranscriber& t) { return t.xdr(&block, 0); }));
}

TEST_F(fxBinaryWriterObjects, longBlockContinuesInDataRecords) {
    std::string chars = run(1100);
    char* block = &chars[0];
    EXPECT_EQ(dump(objHead() + hex("0a 01000000 02000000 01000000 03 03000000 4c040000") +
                   hex("85 0002 03000000 4c040000") + run(512) + hex("80 0002") +
                   run(1100).substr(512, 512) + hex("40 4c") + run(1100).substr(1024)),
              written([&block](ScriptedObject&, fxTranscriber& t) { return t.xdr(&block, 1100); }));
}

TEST_F(fxBinaryWriterObjects, knownBlockIsReferredToAtOnceAndTakesNoPayload) {
    char chars[] = {'a', 'b'};
    ScriptedObject root(objType, [](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(t.xdr(&self.blocks[0], 2) && t.xdr(&self.blocks[1], 2) &&
                                          t.xdr(self.numbers, 1));
    });
    root.blocks[0] = root.blocks[1] = chars;
    root.numbers[0] = 5;
    EXPECT_EQ(
        dump(objHead() + hex("0a 01000000 02000000 01000000 03 03000000 02000000") +
             hex("04 03000000") + hex("40 04") + host(5) + hex("45 02 03000000 02000000 'ab'")),
        written(root));
}

TEST_F(fxBinaryWriterObjects, knownBlockIsKnownWhateverItsLengthAndContents) {
    char chars[] = {'a', 'b'};
    char* block = chars;
    written([&block](ScriptedObject&, fxTranscriber& t) { return t.xdr(&block, 2); });
    chars[0] = 'x';
    EXPECT_EQ(dump(hex("0a 04000000 02000000 01000000 04 03000000")),
              written([&block](ScriptedObject&, fxTranscriber& t) { return t.xdr(&block, 1); }));
}

TEST_F(fxBinaryWriterObjects, blocksAndObjectsShareOneSequenceOfAddresses) {
    EXPECT_EQ(dump(objHead() + hex("0a 01000000 02000000 01000000 04 01000000")),
              written([](ScriptedObject& self, fxTranscriber& t) {
                  char* block = reinterpret_cast<char*>(&self);
                  return t.xdr(&block, 2);
              }));
}

TEST_F(fxBinaryWriterObjects, siblingsFollowInReverseOrderOfDiscovery) {
    char a[] = {'a'}, b[] = {'b'}, c[] = {'c'};
    ScriptedObject root(objType, [](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(t.xdr(&self.blocks[0], 1) && t.xdr(&self.blocks[1], 1) &&
                                          t.xdr(&self.blocks[2], 1));
    });
    root.blocks[0] = a;
    root.blocks[1] = b;
    root.blocks[2] = c;
    EXPECT_EQ(dump(objHead() + hex("0a 01000000 02000000 01000000") +
                   hex("03 03000000 01000000 | 03 04000000 01000000 | 03 05000000 01000000") +
                   hex("45 01 05000000 01000000 'c'") + hex("45 01 04000000 01000000 'b'") +
                   hex("45 01 03000000 01000000 'a'")),
              written(root));
}

// Object pointers.

TEST_F(fxBinaryWriterObjects, nullObjectPointerTakesTheDataThatFollowsIt) {
    EXPECT_EQ(dump(objHead() + hex("4a 04 01000000 02000000 01000000") + host(0) + hex("41 04") +
                   host(0)),
              written([](ScriptedObject& self, fxTranscriber& t) {
                  return static_cast<unsigned char>(t.xdr(self.numbers, 1) && self.xdrLink(t, 0) &&
                                                    t.xdr(self.numbers, 1));
              }));
}

TEST_F(fxBinaryWriterObjects, newObjectIsPointedToNowAndWrittenLater) {
    ScriptedObject child(objType, xdrNumber);
    child.numbers[0] = 8;
    ScriptedObject root(objType, [](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(self.xdrLink(t, 0) && t.xdr(self.numbers, 1));
    });
    root.links[0] = &child;
    root.numbers[0] = 7;
    EXPECT_EQ(dump(objHead() + hex("0a 01000000 02000000 01000000 4b 04 03000000") + host(7) +
                   hex("4a 04 03000000 02000000 01000000") + host(8)),
              written(root));
}

TEST_F(fxBinaryWriterObjects, newTypeIsDefinedBeforeThePointer) {
    ScriptedObject child(subType);
    ScriptedObject root(objType, [](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(t.xdr(self.numbers, 1) && self.xdrLink(t, 0));
    });
    root.links[0] = &child;
    EXPECT_EQ(dump(objHead() + hex("4a 04 01000000 02000000 01000000") + host(0) +
                   hex("02 03000000 'Sub' 00 | 0b 04000000 | 0a 04000000 03000000 01000000")),
              written(root))
        << "the type takes its number before the object";
}

TEST_F(fxBinaryWriterObjects, knownObjectIsReferredToByItsNumber) {
    ScriptedObject child(objType);
    ScriptedObject root(objType, [](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(self.xdrLink(t, 0) && self.xdrLink(t, 1) &&
                                          t.xdr(self.numbers, 1));
    });
    root.links[0] = root.links[1] = &child;
    EXPECT_EQ(dump(objHead() + hex("0a 01000000 02000000 01000000 | 0b 03000000") +
                   hex("4c 04 03000000") + host(0) + hex("0a 03000000 02000000 01000000")),
              written(root));
}

TEST_F(fxBinaryWriterObjects, cyclesEndInReferences) {
    const Script script = [](ScriptedObject& self, fxTranscriber& t) { return self.xdrLink(t, 0); };
    ScriptedObject root(objType, script);
    ScriptedObject child(objType, script);
    root.links[0] = &child;
    child.links[0] = &root;
    EXPECT_EQ(dump(objHead() + hex("0a 01000000 02000000 01000000 | 0b 03000000") +
                   hex("0a 03000000 02000000 01000000 | 0c 01000000")),
              written(root));
    ScriptedObject self(objType, script);
    self.links[0] = &self;
    EXPECT_EQ(dump(hex("0a 04000000 02000000 01000000 | 0c 04000000")), written(self));
}

TEST_F(fxBinaryWriterObjects, typeOfAPointerIsTheObjectsOwn) {
    ScriptedObject child(subType);
    ScriptedObject* member = &child;
    EXPECT_EQ(dump(objHead() + hex("0a 01000000 02000000 01000000") +
                   hex("02 03000000 'Sub' 00 | 0b 04000000 | 0a 04000000 03000000 01000000")),
              written([&member](ScriptedObject&, fxTranscriber& t) {
                  return t.xdr(&member, member, twoType, nullptr, nullptr);
              }));
}

TEST_F(fxBinaryWriterObjects, numberBelongsToTheMembersValue) {
    ScriptedObject child(objType);
    ScriptedObject unrelated(objType);
    ScriptedObject* member = &child;
    written([&member, &unrelated](ScriptedObject&, fxTranscriber& t) {
        return t.xdr(&member, &unrelated, objType, nullptr, nullptr);
    });
    EXPECT_EQ(3u, writer.alreadyWritten(&child));
    EXPECT_EQ(0u, writer.alreadyWritten(&unrelated));
}

TEST_F(fxBinaryWriterObjects, nullMemberIsNullWhateverTheObject) {
    ScriptedObject unrelated(objType);
    void* member = nullptr;
    EXPECT_EQ(dump(objHead() + hex("0a 01000000 02000000 01000000 01")),
              written([&member, &unrelated](ScriptedObject&, fxTranscriber& t) {
                  return t.xdr(&member, &unrelated, objType, nullptr, nullptr);
              }));
}

TEST_F(fxBinaryWriterObjects, memberWithoutAnObjectFails) {
    int something = 0;
    void* member = &something;
    EXPECT_EQ(0, writer.xdr(&member, nullptr, objType, nullptr, nullptr));
    EXPECT_EQ("", stream.written);
}

TEST_F(fxBinaryWriterObjects, nestedObjectsComeBeforeRemainingSiblings) {
    const Script two = [](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(self.xdrLink(t, 0) && self.xdrLink(t, 1));
    };
    ScriptedObject grandchild(objType);
    ScriptedObject first(objType);
    ScriptedObject second(objType, two);
    ScriptedObject root(objType, two);
    root.links[0] = &first;
    root.links[1] = &second;
    second.links[0] = &grandchild;
    EXPECT_EQ(dump(objHead() + hex("0a 01000000 02000000 01000000 | 0b 03000000 | 0b 04000000") +
                   hex("0a 04000000 02000000 01000000 | 0b 05000000 | 01") +  // second
                   hex("0a 05000000 02000000 01000000") +                     // its child
                   hex("0a 03000000 02000000 01000000")),                     // first
              written(root));
}

// Embedded objects.

TEST_F(fxBinaryWriterObjects, embeddedObjectsContentsFollowInline) {
    ScriptedObject part(subType, xdrNumber);
    part.numbers[0] = 9;
    EXPECT_EQ(dump(objHead() + hex("4a 04 01000000 02000000 01000000") + host(0) +
                   hex("4d 08 03000000") + host(9) + host(0)),
              written([&part](ScriptedObject& self, fxTranscriber& t) {
                  return static_cast<unsigned char>(t.xdr(self.numbers, 1) &&
                                                    t.xdr(subType, &self, &part) &&
                                                    t.xdr(self.numbers, 1));
              }))
        << "no type is defined, and what comes next shares the record";
}

TEST_F(fxBinaryWriterObjects, embeddedObjectAtTheSameAddressIsNothing) {
    ScriptedObject part(subType, xdrNumber);
    EXPECT_EQ(dump(objHead() + hex("4a 08 01000000 02000000 01000000") + host(0) + host(0)),
              written([&part](ScriptedObject& self, fxTranscriber& t) {
                  return static_cast<unsigned char>(t.xdr(self.numbers, 1) &&
                                                    t.xdr(subType, &part, &part) &&
                                                    t.xdr(self.numbers, 1));
              }))
        << "not even flushed";
}

TEST_F(fxBinaryWriterObjects, knownEmbeddedObjectIsReferredTo) {
    ScriptedObject part(subType, xdrNumber);
    EXPECT_EQ(dump(objHead() + hex("0a 01000000 02000000 01000000 | 4d 04 03000000") + host(0) +
                   hex("4e 04 03000000") + host(0)),
              written([&part](ScriptedObject& self, fxTranscriber& t) {
                  return static_cast<unsigned char>(t.xdr(subType, &self, &part) &&
                                                    t.xdr(subType, &self, &part) &&
                                                    t.xdr(self.numbers, 1));
              }));
}

TEST_F(fxBinaryWriterObjects, partAtItsContainersAddressIsTakenForTheContainer) {
    EXPECT_EQ(dump(objHead() + hex("0a 01000000 02000000 01000000 | 0e 01000000")),
              written([](ScriptedObject& self, fxTranscriber& t) {
                  return t.xdr(objType, nullptr, &self);
              }));
}

TEST_F(fxBinaryWriterObjects, resultOfAnEmbeddedObjectIsItsTypesResult) {
    ScriptedObject part(
        subType, [](ScriptedObject&, fxTranscriber&) { return static_cast<unsigned char>(0); });
    EXPECT_EQ(0, writer.xdr(subType, nullptr, &part));
    EXPECT_EQ(1, writer.xdr(subType, nullptr, &part)) << "known by now";
}

// Resets and failures.

TEST_F(fxBinaryWriterObjects, everythingIsWrittenAgainAfterAReset) {
    char chars[] = {'a'};
    char* block = chars;
    const Script script = [&block](ScriptedObject&, fxTranscriber& t) { return t.xdr(&block, 1); };
    written(script);
    writer.reset();
    EXPECT_EQ(dump(hex("02 05000000 'Obj' 00 | 0a 04000000 05000000 01000000") +
                   hex("03 06000000 01000000 | 45 01 06000000 01000000 'a'")),
              written(script));
}

TEST_F(fxBinaryWriterObjects, failedPutFailsTheRoot) {
    char chars[] = {'a'};
    ScriptedObject root(objType, [](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(t.xdr(self.numbers, 1) && t.xdr(&self.blocks[0], 1) &&
                                          self.xdrLink(t, 0));
    });
    root.blocks[0] = chars;
    // Two puts for the type, two for the object, one each for the pointers, two for the block.
    const std::string parts[] = {hex("02 02000000"),
                                 hex("'Obj' 00"),
                                 hex("4a 04 01000000 02000000 01000000"),
                                 host(0),
                                 hex("03 03000000 01000000"),
                                 hex("01"),
                                 hex("45 01 03000000 01000000"),
                                 "a"};
    std::string before;
    for (unsigned int call = 0; call <= 8; ++call) {
        SCOPED_TRACE(call);
        MemoryStream failing;
        failing.failAtCall = call;
        fxBinaryWriter w(&failing);
        EXPECT_EQ(call == 8, w.writeObject(&root, &root));
        EXPECT_EQ(dump(before), dump(failing.written));
        if (call < 8)
            before += parts[call];
    }
}

TEST_F(fxBinaryWriterObjects, failingObjectFailsTheRoot) {
    ScriptedObject root(objType, [](ScriptedObject& self, fxTranscriber& t) {
        t.xdr(self.numbers, 1);
        return static_cast<unsigned char>(0);
    });
    EXPECT_EQ(0, writer.writeObject(&root, &root));
    EXPECT_EQ(dump(objHead()), dump(stream.written)) << "its record is not flushed";
}

TEST_F(fxBinaryWriterObjects, itemsLeftBehindByAFailureAreWrittenNextUnlessReset) {
    for (const bool reset : {false, true}) {
        SCOPED_TRACE(reset);
        MemoryStream out;
        fxBinaryWriter w(&out);
        char a[] = {'a'}, b[] = {'b'};
        ScriptedObject root(objType, [](ScriptedObject& self, fxTranscriber& t) {
            return static_cast<unsigned char>(t.xdr(&self.blocks[0], 1) &&
                                              t.xdr(&self.blocks[1], 1) && self.numbers[0] != 0);
        });
        root.blocks[0] = a;
        root.blocks[1] = b;
        EXPECT_EQ(0, w.writeObject(&root, &root));
        EXPECT_EQ(1, w.flush());
        out.written.clear();
        if (reset)
            w.reset();

        ScriptedObject next(objType);
        EXPECT_EQ(1, w.writeObject(&next, &next));
        EXPECT_EQ(reset ? dump(hex("02 06000000 'Obj' 00 | 0a 05000000 06000000 01000000"))
                        : dump(hex("0a 05000000 02000000 01000000") +
                               hex("45 01 04000000 01000000 'b' | 45 01 03000000 01000000 'a'")),
                  dump(out.written));
    }
}
