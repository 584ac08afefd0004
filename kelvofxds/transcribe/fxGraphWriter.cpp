#include "kelvofxds/transcribe/fxGraphWriter.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/core/fxXDRObj.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxBinaryOTTag.h"
#include "kelvofxds/transcribe/fxContentsInternal.h"
#include "kelvofxds/transcribe/fxGraphOutputInternal.h"
#include "kelvofxds/transcribe/fxIdentityTableInternal.h"
#include "kelvofxds/transcribe/fxMemberInternal.h"
#include "kelvofxds/transcribe/fxStdioStreamInternal.h"
#include "kelvofxds/transcribe/fxWorkListInternal.h"

namespace {
// Beside the addresses of records and the tags of blocks, of types themselves.
const std::uint32_t kindOfTypes = fxOT_Type;
}  // namespace

// What it has of the root that is being written, and of those before.
struct fxGraphWriter::Root {
    // An object or a block whose body is still to be written.
    struct Work {
        void* address;
        std::uint32_t kind;  // the fxTypeObj's address, or the tag of a block
        std::uint32_t number;
    };

    // What is known by number: of objects the body in which they were written,
    // `waiting` until then; of blocks their size, with `isWritten`.
    using Fact = std::uint32_t;
    static const Fact waiting = 0;
    static const Fact isWritten = 0x80000000;

    // The end of a root, also when a host's exception passes through.
    struct Ending {
        explicit Ending(Root& r) : root(&r), isDone(false) {}
        Ending(const Ending&) = delete;
        Ending& operator=(const Ending&) = delete;
        ~Ending() {
            if (!root)
                return;
            root->fail("an exception ended the root");  // unless it has failed before
            root->end(false);
        }
        bool end() {
            Root& ended = *root;
            root = nullptr;
            return ended.end(isDone);
        }

        Root* root;  // null when it has ended
        bool isDone;
    };

    bool isOpen();
    bool begin(fxStream* s);
    bool end(bool isDone);
    void forget();
    bool fail(const char* format, ...) __attribute__((format(printf, 2, 3)));
    bool failForStream() { return fail("the stream does not take what is written"); }
    bool failForMemory() { return fail("there is no memory for what was met"); }
    fxIdentityTable::Entry* meet(const void* address, std::uint32_t kind);
    bool number(fxIdentityTable::Entry& entry, Fact fact);
    bool defineType(const fxTypeObj& type, std::uint32_t& typeNumber);
    bool agrees(const fxTypeObj& type);
    bool putBlock(void* address, unsigned int size, std::uint32_t blockTag);
    bool putRoot(void* address, fxTypeObj& type, fxGraphWriter& writer);
    bool putBody(const Work& work, fxGraphWriter& writer);

    template <class... Words>
    bool put(unsigned int tag, Words... words) {
        return output.begin(*stream, tag, words...) || failForStream();
    }
    bool add(const void* data, unsigned int n) {
        return isOpen() && (n != fxTooLong || fail("there are too many elements in place")) &&
               (output.add(*stream, static_cast<const char*>(data), n) || failForStream());
    }

    fxGraphOutput output;
    fxIdentityTable table;
    fxWorkList<Work> works;
    fxWorkList<Fact> facts;               // by number, from 1 on
    fxWorkList<const fxTypeObj*> types;   // that are defined
    const fxTypeObj* lastType = nullptr;  // the one that was asked for last
    std::uint32_t lastTypeNumber = 0;
    Fact body = 0;               // that is being written; never 0 then
    fxStream* stream = nullptr;  // while a root is being written
    bool keeps = false;
    bool hasKept = false;    // what was met before this root is still known
    bool hasFailed = false;  // this root
    bool isBroken = false;   // the stream has a part of a root that failed
    std::uint32_t keptNumbers = 0;
    char error[256] = "";
};

bool fxGraphWriter::Root::fail(const char* format, ...) {
    if (hasFailed)
        return false;
    hasFailed = true;
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(error, sizeof error, format, arguments);
    va_end(arguments);
    return false;
}

// Whether something can be written now.
bool fxGraphWriter::Root::isOpen() {
    return !hasFailed && (stream || fail("nothing can be written outside of writeObject"));
}

// Null when there is no memory.
inline fxIdentityTable::Entry* fxGraphWriter::Root::meet(const void* address, std::uint32_t kind) {
    fxIdentityTable::Entry* entry = table.findOrAdd(fxWordOf(address), kind);
    if (!entry)
        failForMemory();
    return entry;
}

// Gives `entry` the next number.
inline bool fxGraphWriter::Root::number(fxIdentityTable::Entry& entry, Fact fact) {
    if (!facts.push(fact))
        return failForMemory();
    entry.number = facts.length();
    return true;
}

// A reader finds types by name, so those of one name have one version.
bool fxGraphWriter::Root::agrees(const fxTypeObj& type) {
    for (unsigned int i = 0; i < types.length(); ++i) {
        if (types[i]->version != type.version && std::strcmp(types[i]->name, type.name) == 0)
            return fail("there are two types \"%.80s\", of versions %u and %u", type.name,
                        types[i]->version, type.version);
    }
    return true;
}

// Writes the type's record, unless the root has it, and tells its number.
bool fxGraphWriter::Root::defineType(const fxTypeObj& type, std::uint32_t& typeNumber) {
    if (lastType != &type) {
        fxIdentityTable::Entry* entry = meet(&type, kindOfTypes);
        if (!entry)
            return false;
        if (entry->number == 0) {
            const unsigned int n = fxSizeWithNul(type.name);
            if (n > fxGraphOutput::longestName)
                return fail("the name of the type \"%.80s...\" is too long", type.name);
            if (!agrees(type) || !number(*entry, 0))
                return false;
            if (!types.push(&type))
                return failForMemory();
            if (!output.addType(*stream, entry->number, type.name, n, type.version))
                return failForStream();
        }
        lastType = &type;
        lastTypeNumber = entry->number;
    }
    typeNumber = lastTypeNumber;
    return true;
}

// A block is as long as the longest of its pointers' owners says, as long as it
// has not been written.
bool fxGraphWriter::Root::putBlock(void* address, unsigned int size, std::uint32_t blockTag) {
    if (!isOpen())
        return false;
    if (!address)
        return put(fxOT_Null);
    if (size >= isWritten)
        return fail("a block of %u bytes is too long", size);
    fxIdentityTable::Entry* entry = meet(address, blockTag);
    if (!entry)
        return false;
    if (entry->number == 0) {
        if (!number(*entry, size))
            return false;
        return works.push({address, blockTag, entry->number}) ? put(fxOT_Block, entry->number, size)
                                                              : failForMemory();
    }
    Fact& fact = facts[entry->number - 1];
    if (size > (fact & ~isWritten)) {
        if ((fact & isWritten) != 0)
            return fail("a block of %u bytes has been written with %u already", size,
                        fact & ~isWritten);
        fact = size;
    }
    return put(fxOT_OldBlock, entry->number);
}

bool fxGraphWriter::Root::putBody(const Work& work, fxGraphWriter& writer) {
    if (work.kind <= fxOT_Doubles) {
        Fact& size = facts[work.number - 1];
        const unsigned int n = size;
        size |= isWritten;
        return output.addBlock(*stream, work.kind, work.number, static_cast<char*>(work.address),
                               n) ||
               failForStream();
    }
    if (facts[work.number - 1] != waiting)
        return true;  // an object that embeds it has brought it
    // NOLINTNEXTLINE(performance-no-int-to-ptr): an item holds it as a word.
    fxTypeObj& type = *reinterpret_cast<fxTypeObj*>(work.kind);
    facts[work.number - 1] = body = work.number;
    std::uint32_t typeNumber = 0;
    if (!defineType(type, typeNumber) || !put(fxOT_Object, work.number, typeNumber, type.version))
        return false;
    if (fxContents::withVersion(writer, type.version,
                                [&] { return type.xdr(work.address, writer); }))
        return !hasFailed;
    return fail("the xdr of the type \"%.80s\" returned 0", type.name);
}

bool fxGraphWriter::Root::putRoot(void* address, fxTypeObj& type, fxGraphWriter& writer) {
    if (!type.create)
        return fail("a reader cannot make the abstract type \"%.80s\"", type.name);
    fxIdentityTable::Entry* entry = meet(address, fxWordOf(&type));
    if (!entry)
        return false;
    if (entry->number != 0)
        return put(fxOT_OldObject, entry->number);
    if (!number(*entry, waiting) || !works.push({address, fxWordOf(&type), entry->number}))
        return failForMemory();
    Work work;
    while (works.pop(work)) {
        if (!putBody(work, writer))
            return false;
    }
    return true;
}

// Forgets what was written before, unless it is kept.
bool fxGraphWriter::Root::begin(fxStream* s) {
    if (isBroken)
        return false;
    if (stream)
        return fail("an xdr has called writeObject");
    hasFailed = false;
    error[0] = '\0';
    if (!s)
        return fail("there is no stream");
    if (!output.prepare())
        return failForMemory();
    if (!hasKept)
        forget();
    keptNumbers = facts.length();
    stream = s;
    if (hasKept)
        output.addContinuation();
    return true;
}

// A root that fails before the stream has any of it has never been.
bool fxGraphWriter::Root::end(bool isDone) {
    isDone = isDone && (output.end(*stream) || failForStream());
    stream = nullptr;
    hasKept = isDone && keeps;
    if (!isDone) {
        isBroken = !output.isUntouched();
        output.clear();
        forget();
    }
    return isDone;
}

void fxGraphWriter::Root::forget() {
    table.clear();
    facts.clear();
    types.clear();
    works.clear();
    lastType = nullptr;
    hasKept = false;
}

fxGraphWriter::fxGraphWriter(fxStream* s) : root(fxNew<Root>()) {
    reading = 0;
    fxContents::setGraphs(*this);
    holdStream(s);
}

fxGraphWriter::~fxGraphWriter() { delete root; }

const char* fxGraphWriter::className() const { return fxBinaryFormat::graphWriterName; }

const char* fxGraphWriter::lastError() const { return root->error; }

void fxGraphWriter::keepIdentity(bool keeps) {
    root->keeps = keeps;
    if (!keeps && !root->stream)
        root->hasKept = false;
}

unsigned char fxGraphWriter::flush() {
    std::FILE* file = fxOwnFile(stream);
    return !root->isBroken && (!file || std::fflush(file) == 0 || root->failForStream());
}

void fxGraphWriter::reset() {
    if (!root->stream)
        root->forget();
}

void* fxGraphWriter::readObject(fxTypeObj&) { return nullptr; }

unsigned char fxGraphWriter::writeObject(void* address, fxXDRObj* object) {
    if (!object || !address || !root->begin(stream))
        return 0;
    Root::Ending ending(*root);
    ending.isDone = root->putRoot(address, object->getTypeObj(), *this);
    return ending.end();
}

// Objects.

unsigned char fxGraphWriter::xdr(void* field, fxXDRObj* object, fxTypeObj&, fxXDRObj*, void*) {
    FX_CHECK_NOT_NULL("fxGraphWriter", field);
    Root& r = *root;
    void* const address = fxPointerIn(field);
    if (!r.isOpen())
        return 0;
    if (!address)
        return r.put(fxOT_Null);
    if (!object)
        return r.fail("a pointer to an object came without the object");
    fxTypeObj& type = object->getTypeObj();
    if (!type.create)
        return r.fail("a reader cannot make the abstract type \"%.80s\"", type.name);
    fxIdentityTable::Entry* entry = r.meet(address, fxWordOf(&type));
    if (!entry)
        return 0;
    if (entry->number != 0)
        return r.put(fxOT_OldObject, entry->number);
    if (!r.number(*entry, Root::waiting) ||
        !r.works.push({address, fxWordOf(&type), entry->number}))
        return r.failForMemory();
    return r.put(fxOT_ObjectPointer, entry->number);
}

// What has been written in another body already, by itself or in an object that
// is embedded here, is written again: the reader puts it in place of the other.
unsigned char fxGraphWriter::xdr(fxTypeObj& type, void* previous, void* address) {
    if (previous == address)
        return 1;
    FX_CHECK_NOT_NULL("fxGraphWriter", address);
    Root& r = *root;
    std::uint32_t typeNumber = 0;
    if (!r.isOpen() || !r.defineType(type, typeNumber))
        return 0;
    fxIdentityTable::Entry* entry = r.meet(address, fxWordOf(&type));
    if (!entry)
        return 0;
    if (entry->number == 0) {
        if (!r.number(*entry, r.body))
            return 0;
    } else {
        Root::Fact& fact = r.facts[entry->number - 1];
        if (fact == r.body)
            return r.put(fxOT_OldEmbedded, entry->number);
        if (entry->number <= r.keptNumbers)
            return r.fail("an embedded \"%.80s\" was written by itself in an earlier root",
                          type.name);
        fact = r.body;
    }
    return r.put(fxOT_Embedded, entry->number) &&
           fxContents::withVersion(*this, type.version, [&] { return type.xdr(address, *this); });
}

// Elements in place.

unsigned char fxGraphWriter::xdr(char* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxGraphWriter", elements, n);
    return root->add(elements, n);
}

unsigned char fxGraphWriter::xdr(unsigned char* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxGraphWriter", elements, n);
    return root->add(elements, n);
}

unsigned char fxGraphWriter::xdr(short* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxGraphWriter", elements, n);
    return root->add(elements, fxBytesOf<short>(n));
}

unsigned char fxGraphWriter::xdr(unsigned short* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxGraphWriter", elements, n);
    return root->add(elements, fxBytesOf<short>(n));
}

unsigned char fxGraphWriter::xdr(long* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxGraphWriter", elements, n);
    return root->add(elements, fxBytesOf<long>(n));
}

unsigned char fxGraphWriter::xdr(unsigned long* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxGraphWriter", elements, n);
    return root->add(elements, fxBytesOf<long>(n));
}

unsigned char fxGraphWriter::xdr(float* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxGraphWriter", elements, n);
    return root->add(elements, fxBytesOf<float>(n));
}

unsigned char fxGraphWriter::xdr(double* elements, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxGraphWriter", elements, n);
    return root->add(elements, fxBytesOf<double>(n));
}

unsigned char fxGraphWriter::xdr(fxStr* strings, unsigned int n) {
    FX_CHECK_NOT_NULL_OF("fxGraphWriter", strings, n);
    for (unsigned int i = 0; i < n; ++i) {
        if (!strings[i].xdr(*this))
            return 0;
    }
    return 1;
}

// Pointers to blocks. A string's text is in place.

unsigned char fxGraphWriter::xdr(char** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxGraphWriter", block);
    if (isStringBuffer())
        return root->add(*block, n);
    return root->putBlock(*block, n, fxOT_Bytes);
}

unsigned char fxGraphWriter::xdr(unsigned char** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxGraphWriter", block);
    return root->putBlock(*block, n, fxOT_Bytes);
}

unsigned char fxGraphWriter::xdr(short** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxGraphWriter", block);
    return root->putBlock(*block, fxBytesOf<short>(n), fxOT_Shorts);
}

unsigned char fxGraphWriter::xdr(unsigned short** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxGraphWriter", block);
    return root->putBlock(*block, fxBytesOf<short>(n), fxOT_Shorts);
}

unsigned char fxGraphWriter::xdr(long** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxGraphWriter", block);
    return root->putBlock(fxPointerIn(block), fxBytesOf<long>(n), fxOT_Longs);
}

unsigned char fxGraphWriter::xdr(unsigned long** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxGraphWriter", block);
    return root->putBlock(fxPointerIn(block), fxBytesOf<long>(n), fxOT_Longs);
}

unsigned char fxGraphWriter::xdr(float** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxGraphWriter", block);
    return root->putBlock(*block, fxBytesOf<float>(n), fxOT_Floats);
}

unsigned char fxGraphWriter::xdr(double** block, unsigned int n) {
    FX_CHECK_NOT_NULL("fxGraphWriter", block);
    return root->putBlock(*block, fxBytesOf<double>(n), fxOT_Doubles);
}

unsigned char fxGraphWriter::xdr(char** text) {
    FX_CHECK_NOT_NULL("fxGraphWriter", text);
    return root->putBlock(*text, *text ? fxSizeWithNul(*text) : 0, fxOT_Bytes);
}

unsigned char fxGraphWriter::xdr(unsigned char** text) {
    FX_CHECK_NOT_NULL("fxGraphWriter", text);
    void* const address = fxPointerIn(text);
    const unsigned int size = address ? fxSizeWithNul(static_cast<const char*>(address)) : 0;
    return root->putBlock(address, size, fxOT_Bytes);
}

fxTranscriber* makeGraphWriter(fxStream* stream) { return fxTryNew<fxGraphWriter>(stream); }
