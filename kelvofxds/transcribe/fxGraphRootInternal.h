// fxGraphRootInternal.h - what a graph reader knows of the root it reads.
#pragma once

#include <cstdarg>
#include <cstdint>

#include "kelvofxds/transcribe/fxBinaryFormatInternal.h"
#include "kelvofxds/transcribe/fxGraphReader.h"
#include "kelvofxds/transcribe/fxGraphSourceInternal.h"
#include "kelvofxds/transcribe/fxWordIndexInternal.h"
#include "kelvofxds/transcribe/fxWorkListInternal.h"

/// Records, the things they make, and the pointers that wait for them.
///
/// Nothing that is made can be seen by its class's other objects before the root
/// is whole: pointers are kept in a list and set at its end. So ending what a
/// failed read has made follows no pointer.
struct fxGraphReader::Root {
    enum class Kind : unsigned char {
        none,  // the number has not been seen in the stream
        type,
        object,
        block
    };

    // What a number is.
    struct Thing {
        void* address;       // null until its body arrives
        fxTypeObj* record;   // object: its type's, or the one a pointer's owner expects; or null
        unsigned int size;   // block: bytes
        std::uint32_t body;  // object: the number of the body it is in; type: index in `types`
        Kind kind;
        unsigned char blockTag;  // of the block's body, or the one its first pointer expects
        bool isMade;             // its body has arrived
        bool isOfItsOwn;         // object: in memory of its own, not embedded
        bool isForString;        // block: the string owns it, and it is malloc's
    };

    // A type as the stream defines it. There is one for each record, so there are
    // no more than the process has.
    struct Type {
        fxTypeObj* record;  // that is registered by its name
        unsigned int version;
    };

    // A pointer member that is still to be set.
    struct Pointer {
        void* field;
        std::uint32_t number;  // of what it leads to
        std::uint32_t body;    // number of the object that has the member
        union {
            unsigned int size;           // block: bytes that its owner expects
            bool (*isRight)(fxXDRObj*);  // object: looks at its class; or null
        };
        unsigned char blockTag;  // 0 for objects
        bool isCounted;
        bool isText;
    };

    // An object that has made room for an embedded one; or memory that is left.
    struct Leftover {
        void* address;
        fxTypeObj* record;  // null for memory from malloc
    };

    // A thing by its number, in streams whose numbers go as they like.
    struct Place {
        std::uint32_t key;
        std::uint32_t thing;  // index in `things`, + 1
    };

    // The end of a read.
    struct Ending {
        explicit Ending(Root& r) : root(r), isDone(false) {}
        Ending(const Ending&) = delete;
        Ending& operator=(const Ending&) = delete;
        ~Ending();

        Root& root;
        bool isDone;
    };

    Root() = default;
    Root(const Root&) = delete;
    Root& operator=(const Root&) = delete;

    // Data (fxGraphReader.cpp).

    bool fail(const char* format, ...) __attribute__((format(printf, 2, 3)));
    bool failWith(const char* format, std::va_list arguments);
    bool failForEnd() { return fail("the stream ends here"); }
    bool failForMemory() { return fail("there is no memory for what is read"); }
    bool isOpen();
    bool nextRecord();
    bool readRecord();
    bool readSlowly();
    bool readHead(unsigned char head);
    bool takeHead();
    bool readType(std::uint32_t number);
    bool readName(fxStackBuffer& name);
    static bool canLookUp(std::size_t nameLength);
    bool readData(char* to, unsigned int n);
    bool nextData();
    bool readPayload(char* to, unsigned int n) {
        if (n > unread)
            return readData(to, n);
        unread -= n;
        return source.get(to, n) || failForEnd();
    }
    bool endPayload();
    char* readBuffer(unsigned int n, bool isForString);

    // Things (fxGraphObjects.cpp).

    void* read(fxTypeObj& type);
    bool readRoot(fxTypeObj& type);
    bool readFirst();
    bool readFirstBody(fxTypeObj& type);
    bool readBody();
    bool readObject(std::uint32_t number, fxTypeObj& record, unsigned int version);
    bool readBlock(std::uint32_t number);
    Thing* newThing(std::uint32_t number, Kind kind);
    Thing* find(std::uint32_t number) {
        if (__builtin_expect(isStandard, false))
            return findPlace(number);
        return number - 1 < things.length() ? &things[number - 1] : nullptr;
    }
    Thing* findPlace(std::uint32_t number);
    Thing* find(std::uint32_t number, Kind kind);
    bool defineType(std::uint32_t number, const Type& type);
    bool point(void* field, unsigned char blockTag, unsigned int size, bool isText,
               bool isForString);
    bool pointToObject(void* field, fxTypeObj& type);
    bool embed(fxTypeObj& type, void* address);
    bool embedAt(std::uint32_t number, fxTypeObj& type, void* address);
    bool isEmbedded(std::uint32_t number, const void* address);
    bool expect(Thing& thing, fxTypeObj& type) {
        return thing.record == &type || expectAnother(thing, type);
    }
    bool expectAnother(Thing& thing, fxTypeObj& type);
    bool isShared(fxTypeObj& type);
    bool versionOf(fxTypeObj& type, unsigned int& version);
    bool isWithinLimits() { return mostBytes == 0 || isWithinBytes(); }
    bool isWithinBytes();
    bool finish();
    bool areInPlace();
    bool isAlone();
    bool isGone(const Pointer& pointer);
    bool canBeSet(const Pointer& pointer);
    void set(const Pointer& pointer);
    void convertBlock(unsigned char blockTag, char* block, unsigned int size) const;
    void endLeftovers(bool hasFailed);
    void release();
    void forget();

    std::uint64_t headerBytes = 0;

    fxGraphReader* reader = nullptr;
    fxGraphSource source;
    bool isStandard = false;
    fxBinaryFormat::Order shorts = fxBinaryFormat::Order::same;
    fxBinaryFormat::Order longs = fxBinaryFormat::Order::same;

    // The current record.
    unsigned int tag = 0;
    std::uint32_t words[fxBinaryFormat::mostWords] = {};
    unsigned int unread = 0;     // bytes of its payload
    std::uint64_t recordAt = 0;  // where it begins, behind the header
    std::uint64_t rootAt = 0;    // where the root begins
    unsigned int records = 0;    // read so far

    fxWorkList<Thing> things;  // by number, from 1 on, unless `places` says where
    fxWordIndex<Place> places;
    fxWorkList<Type> types;
    fxWorkList<Pointer> pointers;
    fxWorkList<Leftover> leftovers;
    bool areAsked = false;        // some of them have conditions
    unsigned int firstThing = 0;  // index of the root's own
    unsigned int firstType = 0;
    unsigned int objects = 0;  // and blocks of the root
    unsigned int awaited = 0;  // things that pointers lead to and that are not made
    std::uint32_t body = 0;    // number of the object whose contents are being read
    std::uint32_t rootNumber = 0;
    const fxTypeObj* lastDefined = nullptr;
    const fxTypeObj* lastEmbedded = nullptr;  // and its version
    unsigned int lastVersion = 0;
    const fxTypeObj* lastAsked = nullptr;  // and whether it shares its name
    bool lastIsShared = false;
    std::uint32_t rootSum = 0;  // of the bytes in front of the current record, if it ends the root
    bool (*nextIsRight)(fxXDRObj*) = nullptr;

    unsigned int mostObjects = 0;
    unsigned int mostBytes = 0;
    bool isOnly = false;  // the root has to be the only one
    bool isReading = false;
    bool isBroken = false;  // a read has failed
    bool isAtEnd = false;
    char error[320] = "";
};
