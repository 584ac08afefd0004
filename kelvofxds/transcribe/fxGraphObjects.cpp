// fxGraphObjects.cpp - what a graph reader makes, and the pointers to it.

#include <cstdlib>
#include <cstring>
#include <new>

#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/core/fxXDRObj.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxContentsInternal.h"
#include "kelvofxds/transcribe/fxGraphRootInternal.h"
#include "kelvofxds/transcribe/fxMemberInternal.h"

namespace {
const char* nameOf(unsigned int tag) {
    return tag < fxBinaryFormat::recordCount ? fxBinaryFormat::records[tag].name : "end of a root";
}

void destroy(const fxTypeObj* record, void* object) {
    if (record->destroy)
        record->destroy(object);
}

bool haveOneName(const fxTypeObj& a, const fxTypeObj& b) {
    return &a == &b || std::strcmp(a.name, b.name) == 0;
}
}  // namespace

// Numbers. In graph streams they go up by one in the order in which they are met.

fxGraphReader::Root::Thing* fxGraphReader::Root::findPlace(std::uint32_t number) {
    const Place* place = places.find(number);
    return place ? &things[place->thing - 1] : nullptr;
}

// The same for a thing of some kind; it is a failure if there is none.
fxGraphReader::Root::Thing* fxGraphReader::Root::find(std::uint32_t number, Kind kind) {
    Thing* thing = find(number);
    if (thing && thing->kind == kind)
        return thing;
    fail("number %u is no %s", number,
         kind == Kind::type    ? "type"
         : kind == Kind::block ? "block"
                               : "object");
    return nullptr;
}

// Null on failure.
fxGraphReader::Root::Thing* fxGraphReader::Root::newThing(std::uint32_t number, Kind kind) {
    if (isStandard ? find(number) != nullptr : number != things.length() + 1) {
        fail("number %u is not the next one", number);
        return nullptr;
    }
    if (kind != Kind::type && mostObjects != 0 && objects >= mostObjects) {
        fail("there are more than %u objects", mostObjects);
        return nullptr;
    }
    Place* const place = isStandard ? places.findOrAdd(number) : nullptr;
    if ((isStandard && !place) ||
        !things.push({nullptr, nullptr, 0, 0, kind, 0, false, false, false})) {
        failForMemory();
        return nullptr;
    }
    if (place)
        place->thing = things.length();
    if (kind != Kind::type) {
        ++objects;
        ++awaited;
    }
    return &things[things.length() - 1];
}

bool fxGraphReader::Root::isWithinBytes() {
    return source.count() - rootAt + unread <= mostBytes ||
           fail("the root has more than %u bytes", mostBytes);
}

// Types.

bool fxGraphReader::Root::defineType(std::uint32_t number, const Type& type) {
    unsigned int index = 0;
    while (index < types.length() && types[index].record != type.record)
        ++index;
    if (index == types.length()) {
        if (!types.push(type))
            return failForMemory();
    } else if (types[index].version != type.version) {
        return fail("type \"%.80s\" has two versions, %u and %u", type.record->name,
                    types[index].version, type.version);
    }
    Thing* thing = newThing(number, Kind::type);
    if (!thing)
        return false;
    thing->isMade = true;
    thing->body = index;
    lastDefined = type.record;
    lastEmbedded = nullptr;
    return true;
}

// The version in which the stream has embedded objects of `type`.
bool fxGraphReader::Root::versionOf(fxTypeObj& type, unsigned int& version) {
    if (isStandard) {
        version = type.version;
        return true;
    }
    if (lastEmbedded != &type) {
        unsigned int index = 0;
        while (index < types.length() && !haveOneName(*types[index].record, type))
            ++index;
        if (index == types.length())
            return fail("type \"%.80s\" of an embedded object is not defined", type.name);
        lastEmbedded = &type;
        lastVersion = types[index].version;
    }
    version = lastVersion;
    return version <= type.version ||
           fail("type \"%.80s\" has version %u; this program knows versions up to %u", type.name,
                version, type.version);
}

// Whether another record answers to its name.
bool fxGraphReader::Root::isShared(fxTypeObj& type) {
    if (lastAsked != &type) {
        if (!canLookUp(std::strlen(type.name)))
            return false;
        lastAsked = &type;
        lastIsShared = fxTypeObj::findType(type.name) != &type;
    }
    return lastIsShared;
}

// Notes what the owner of a pointer expects. That decides between records of one
// name, so all have to agree.
bool fxGraphReader::Root::expectAnother(Thing& thing, fxTypeObj& type) {
    if (!thing.record) {
        thing.record = &type;
        return true;
    }
    if (haveOneName(*thing.record, type))
        return fail("two classes called \"%.80s\" are expected of one object", type.name);
    if (!thing.isMade && isShared(type))
        thing.record = &type;
    return true;
}

// Pointers.

bool fxGraphReader::Root::point(void* field, unsigned char blockTag, unsigned int size, bool isText,
                                bool isForString) {
    if (!nextRecord())
        return false;
    if (!isForString)
        fxSetPointer(field, nullptr);
    if (tag == fxOT_Null && !isForString)
        return true;
    const std::uint32_t number = words[0];
    Thing* thing = nullptr;
    if (tag == fxOT_Block) {
        thing = newThing(number, Kind::block);
        if (!thing)
            return false;
        thing->blockTag = blockTag;
        thing->isForString = isForString;
        thing->size = size;
    } else if (tag == fxOT_OldBlock) {
        thing = find(number, Kind::block);
        if (!thing)
            return false;
        if (isForString || thing->isForString)
            return fail("block %u belongs to two strings", number);
        if (thing->blockTag != blockTag)
            return fail("block %u is expected to be a \"%s\" and a \"%s\"", number,
                        nameOf(thing->blockTag), nameOf(blockTag));
    } else {
        return fail("a record \"%s\" comes where a pointer to a block should", nameOf(tag));
    }
    Pointer pointer = {field, number, body, {size}, blockTag, false, isText};
    areAsked = true;
    return pointers.push(pointer) || failForMemory();
}

bool fxGraphReader::Root::pointToObject(void* field, fxTypeObj& type) {
    bool (*const check)(fxXDRObj*) = nextIsRight;
    nextIsRight = nullptr;
    if (!nextRecord())
        return false;
    fxSetPointer(field, nullptr);
    if (tag == fxOT_Null)
        return true;
    const std::uint32_t number = words[0];
    Thing* thing = nullptr;
    if (tag == fxOT_ObjectPointer)
        thing = newThing(number, Kind::object);
    else if (tag == fxOT_OldObject)
        thing = find(number, Kind::object);
    else
        fail("a record \"%s\" comes where a pointer to an object should", nameOf(tag));
    if (!thing || (&type != &fxXDRObj_type && !expect(*thing, type)))
        return false;
    Pointer pointer = {field, number, body, {0}, 0, reader->isCounted(), false};
    pointer.isRight = check;
    areAsked = areAsked || check || pointer.isCounted;
    return pointers.push(pointer) || failForMemory();
}

// Embedded objects.

bool fxGraphReader::Root::embed(fxTypeObj& type, void* address) {
    if (!nextRecord())
        return false;
    if (tag == fxOT_OldEmbedded)
        return isEmbedded(words[0], address);
    if (tag != fxOT_Embedded)
        return fail("a record \"%s\" comes where an embedded object should", nameOf(tag));
    unsigned int version = 0;
    if (!versionOf(type, version) || !embedAt(words[0], type, address))
        return false;
    return fxContents::withVersion(*reader, version, [&] { return type.xdr(address, *reader); }) ||
           fail("an embedded \"%.80s\" cannot be read", type.name);
}

// Gives the thing its place. A pointer may have led to it before; and it may have
// been written by itself before it was met where it is embedded: it is here then.
bool fxGraphReader::Root::embedAt(std::uint32_t number, fxTypeObj& type, void* address) {
    Thing* thing = nullptr;
    if (isStandard || number > things.length()) {
        thing = newThing(number, Kind::object);
        if (!thing)
            return false;
    } else {
        thing = find(number, Kind::object);
        if (!thing)
            return false;
        if (number <= firstThing)
            return fail("object %u belongs to an earlier root", number);
        if (thing->isMade && !haveOneName(*thing->record, type))
            return fail("object %u is a \"%.80s\" and a \"%.80s\"", number, thing->record->name,
                        type.name);
        if (thing->isOfItsOwn && !leftovers.push({thing->address, thing->record}))
            return failForMemory();
    }
    if (!thing->isMade)
        --awaited;
    thing->isMade = true;
    thing->isOfItsOwn = false;
    thing->address = address;
    thing->record = &type;
    thing->body = body;
    return true;
}

// Standard streams say of a base class's part, too, that it is known: at its
// address there is the object.
bool fxGraphReader::Root::isEmbedded(std::uint32_t number, const void* address) {
    const Thing* thing = find(number, Kind::object);
    if (!thing)
        return false;
    if (!thing->isMade)
        return fail("embedded object %u comes as an object of its own", number);
    return isStandard || thing->address == address ||
           fail("embedded object %u is elsewhere", number);
}

// Bodies.

bool fxGraphReader::Root::readBlock(std::uint32_t number) {
    const unsigned int size = words[1];
    const unsigned char blockTag = static_cast<unsigned char>(tag);
    Thing* thing = find(number, Kind::block);
    if (!thing)
        return false;
    if (thing->isMade)
        return fail("block %u comes twice", number);
    if (thing->blockTag != blockTag)
        return fail("block %u is a \"%s\" where a \"%s\" is expected", number, nameOf(blockTag),
                    nameOf(thing->blockTag));
    if (thing->isForString && thing->size != size)
        return fail("block %u has %u bytes, its string %u", number, size, thing->size);
    body = 0;
    char* const block = readBuffer(size, thing->isForString);
    if (!block)
        return false;
    thing = find(number);
    thing->address = block;
    thing->size = size;
    thing->isMade = true;
    --awaited;
    convertBlock(blockTag, block, size);
    return !thing->isForString || (size != 0 && block[size - 1] == '\0') ||
           fail("a string of %u bytes has no end", size);
}

bool fxGraphReader::Root::readObject(std::uint32_t number, fxTypeObj& record,
                                     unsigned int version) {
    if (!record.create)
        return fail("type \"%.80s\" is abstract", record.name);
    void* const object = record.create(record);
    if (!object)
        return fail("no \"%.80s\" can be made", record.name);
    Thing* const thing = find(number);
    thing->address = object;
    thing->record = &record;
    thing->isMade = true;
    thing->isOfItsOwn = true;
    thing->body = body = number;
    --awaited;
    return fxContents::withVersion(*reader, version, [&] { return record.xdr(object, *reader); }) ||
           fail("a \"%.80s\" cannot be read: its xdr returned 0", record.name);
}

// Reads the body whose record is the current one.
bool fxGraphReader::Root::readBody() {
    const std::uint32_t number = words[0];
    if (tag >= fxOT_Bytes && tag <= fxOT_Doubles)
        return readBlock(number);
    if (tag != fxOT_Object)
        return fail("a record \"%s\" comes where a body should", nameOf(tag));
    const unsigned int version = words[2];
    const Thing* const typeThing = find(words[1], Kind::type);
    Thing* const thing = find(number, Kind::object);
    if (!typeThing || !thing)
        return false;
    if (thing->isMade)
        return fail("object %u comes twice", number);
    const Type& type = types[typeThing->body];
    // The standard writer fills the version in from the type it defined last.
    const unsigned int expected = isStandard ? lastDefined->version : type.version;
    if (version != expected)
        return fail("the version of object %u is %u, not %u", number, version, expected);
    fxTypeObj& record =
        thing->record && haveOneName(*thing->record, *type.record) ? *thing->record : *type.record;
    if (type.version > record.version)
        return fail("type \"%.80s\" has version %u; this program knows versions up to %u",
                    record.name, type.version, record.version);
    // It is no fxXDRObj, so no pointer leads to one that is not embedded.
    if (&record == &fxStr_type && !(number == rootNumber && thing->record == &record))
        return fail("a string comes where an object should");
    return readObject(number, record, isStandard ? record.version : version);
}

// Roots.

void* fxGraphReader::Root::read(fxTypeObj& type) {
    if (isReading) {
        fail("an xdr has called readObject");
        return nullptr;
    }
    if (isBroken)
        return nullptr;
    error[0] = '\0';
    isAtEnd = false;
    isReading = true;
    areAsked = false;
    nextIsRight = nullptr;
    firstThing = things.length();
    objects = awaited = 0;
    Ending ending(*this);
    const fxGraphSource::Use use(source, reader->getStream());
    ending.isDone = readRoot(type);
    return ending.isDone ? find(rootNumber)->address : nullptr;
}

// A root ends whole or as if it had never been, also when a host's exception passes
// through.
fxGraphReader::Root::Ending::~Ending() {
    root.isReading = false;
    root.body = 0;
    if (!isDone && !root.isAtEnd) {
        root.fail("an exception ended the read");  // unless it has failed before
        root.release();
    }
    root.pointers.clear();
    root.leftovers.clear();
}

bool fxGraphReader::Root::readRoot(fxTypeObj& type) {
    rootAt = source.count();
    if (!reader->getStream())
        return fail("there is no stream");
    if (!readFirst() || !readFirstBody(type))
        return false;
    while (isStandard ? awaited != 0 : tag != fxBinaryFormat::rootEndTag) {
        if (!nextRecord() || (tag != fxBinaryFormat::rootEndTag && !readBody()))
            return false;
    }
    return finish();
}

// Reads the first record that is not a type's. The very first one of a graph
// stream's root says whether the numbers of the root before go on.
bool fxGraphReader::Root::readFirst() {
    recordAt = source.count();
    ++records;
    unsigned char head;
    if (!source.getHead(head)) {
        isAtEnd = true;
        return fail("the stream has no more roots");
    }
    const bool goesOn = isStandard || head == fxOT_Data;
    if (!goesOn)
        forget();
    firstThing = things.length();
    rootNumber = firstThing + 1;
    if (!isStandard && !newThing(rootNumber, Kind::object))
        return false;
    if (!(goesOn && !isStandard ? readRecord() : readHead(head)))
        return false;
    return tag != fxOT_Type || nextRecord();
}

// The root's own body, or its number if it was written in an earlier root.
bool fxGraphReader::Root::readFirstBody(fxTypeObj& type) {
    const bool isAny = &type == &fxXDRObj_type;
    const fxTypeObj* record = nullptr;
    if (!isStandard && tag == fxOT_OldObject && things.length() == rootNumber &&
        words[0] < rootNumber) {
        things.shorten(firstThing);
        awaited = 0;
        rootNumber = words[0];
        const Thing* thing = find(rootNumber, Kind::object);
        if (!thing)
            return false;
        record = thing->record;
        if (isAny || record == &type)
            return nextRecord() &&
                   (tag == fxBinaryFormat::rootEndTag ||
                    fail("a record \"%s\" comes where the root should end", nameOf(tag)));
    } else {
        if (tag != fxOT_Object || (!isStandard && words[0] != rootNumber))
            return fail("a record \"%s\" comes where the root should", nameOf(tag));
        rootNumber = words[0];
        Thing* thing = isStandard ? newThing(rootNumber, Kind::object) : find(rootNumber);
        const Thing* typeThing = thing ? find(words[1], Kind::type) : nullptr;
        if (!typeThing)
            return false;
        record = types[typeThing->body].record;
        if (isAny)
            return readBody();
        thing = find(rootNumber);
        thing->record = &type;
        if (haveOneName(*record, type))
            return readBody();
    }
    return fail("the root is a \"%.80s\", not a \"%.80s\"", record->name, type.name);
}

// What was read becomes one. Nothing has changed on failure.
bool fxGraphReader::Root::finish() {
    if (!endPayload())
        return false;
    if (!isStandard && words[0] != rootSum)
        return fail("the checksum of the root is %08x, not %08x", rootSum, words[0]);
    if (awaited != 0)
        return fail("%u of the root's objects and blocks are missing", awaited);
    if (!areInPlace() || (isOnly && !isAlone()))
        return false;
    for (unsigned int i = 0; areAsked && i < pointers.length(); ++i) {
        if (!isGone(pointers[i]) && !canBeSet(pointers[i]))
            return false;
    }
    for (unsigned int i = 0; i < pointers.length(); ++i) {
        if (!isGone(pointers[i]))
            set(pointers[i]);
    }
    source.clearSum();
    endLeftovers(false);
    return true;
}

// Of all that the library can make, strings alone are no fxXDRObj.
bool fxGraphReader::Root::isAlone() {
    if (find(rootNumber)->record == &fxStr_type)
        return fail("the root is a \"%s\", which is no fxXDRObj", fxStr_type.name);
    recordAt = source.count();
    ++records;
    char next;
    return !source.get(&next, 1) || fail("the stream goes on behind its root");
}

// An object that made room for an embedded one has left nothing behind: all that
// was embedded in it is in its place, too.
bool fxGraphReader::Root::areInPlace() {
    if (isStandard || leftovers.length() == 0)
        return true;
    for (unsigned int i = firstThing; i < things.length(); ++i) {
        const Thing& thing = things[i];
        if (thing.kind == Kind::object && !things[thing.body - 1].isOfItsOwn)
            return fail("object %u is embedded in one that is embedded elsewhere", i + 1);
    }
    return true;
}

// Whether the object with the member has made room for an embedded one.
bool fxGraphReader::Root::isGone(const Pointer& pointer) {
    return leftovers.length() != 0 && !find(pointer.body)->isOfItsOwn;
}

bool fxGraphReader::Root::canBeSet(const Pointer& pointer) {
    const Thing& thing = *find(pointer.number);
    if (pointer.blockTag != 0) {
        const char* const bytes = static_cast<const char*>(thing.address);
        if (thing.size < pointer.size)
            return fail("block %u has %u bytes, its owner expects %u", pointer.number, thing.size,
                        pointer.size);
        return !pointer.isText || (thing.size != 0 && bytes[thing.size - 1] == '\0') ||
               fail("the text of block %u has no end", pointer.number);
    }
    if (pointer.isCounted && !thing.isOfItsOwn)
        return fail("object %u is embedded, and its pointer's owner would delete it",
                    pointer.number);
    if (pointer.isRight && !pointer.isRight(static_cast<fxXDRObj*>(thing.address)))
        return fail("object %u is a \"%.80s\", which its pointer's owner does not expect",
                    pointer.number, thing.record->name);
    return true;
}

void fxGraphReader::Root::set(const Pointer& pointer) {
    void* const address = find(pointer.number)->address;
    fxSetPointer(pointer.field, address);
    if (pointer.isCounted)
        ++static_cast<fxXDRObj*>(address)->count;
}

// Ends objects that were replaced, and after a failure frees what is left.
void fxGraphReader::Root::endLeftovers(bool hasFailed) {
    for (unsigned int i = leftovers.length(); i-- != 0;) {
        if (leftovers[i].record)
            destroy(leftovers[i].record, leftovers[i].address);
    }
    for (unsigned int i = leftovers.length(); hasFailed && i-- != 0;) {
        if (!leftovers[i].record)
            std::free(leftovers[i].address);
    }
}

// Ends everything that the failed root has made. Its pointers are null.
void fxGraphReader::Root::release() {
    isBroken = true;
    for (unsigned int i = things.length(); i-- > firstThing;) {
        const Thing& thing = things[i];
        if (!thing.isMade)
            continue;
        if (thing.kind == Kind::block)
            fxFreeBlock(thing.isForString, static_cast<char*>(thing.address));
        else if (thing.kind == Kind::object && thing.isOfItsOwn)
            destroy(thing.record, thing.address);
    }
    endLeftovers(true);
    forget();
}

void fxGraphReader::Root::forget() {
    things.clear();
    places.clear();
    types.clear();
    lastDefined = lastEmbedded = nullptr;
}
