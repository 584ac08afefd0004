// ownStream_test.cpp - the library's own stream gets and gives the same bytes as a host's class.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "kelvofxds/transcribe/fxStdioStream.h"
#include "tests/support/memoryStream.h"
#include "tests/support/scriptedObject.h"
#include "tests/support/streamBytes.h"

namespace {

// A file without a name, which the stream adopts. The test holds the stream.
class OwnFile {
public:
    OwnFile() : OwnFile(std::tmpfile()) {}
    explicit OwnFile(std::FILE* f) : file(f), stream(f, fxStream::readWriteStream) {
        stream.count = 1;
    }
    explicit OwnFile(const std::string& content) : OwnFile() {
        EXPECT_EQ(content.size(), std::fwrite(content.data(), 1, content.size(), file));
        std::rewind(file);
    }

    long position() const { return std::ftell(file); }

    std::string content() const {
        std::string bytes;
        std::rewind(file);
        for (int c = std::getc(file); c != EOF; c = std::getc(file))
            bytes += static_cast<char>(c);
        return bytes;
    }

    std::FILE* const file;
    fxStdioStream stream;
};

// Host's classes over the library's, as small as can be.
struct LoggingStdioStream : fxStdioStream {
    using fxStdioStream::fxStdioStream;
    unsigned char getBytes(char* p, unsigned int n) override {
        calls.push_back("getBytes " + std::to_string(n));
        return fxStdioStream::getBytes(p, n);
    }
    unsigned char putBytes(const char* p, unsigned int n) override {
        calls.push_back("putBytes " + std::to_string(n));
        return fxStdioStream::putBytes(p, n);
    }
    std::vector<std::string> calls;
};
struct PlainStdioStream : fxStdioStream {
    using fxStdioStream::fxStdioStream;
};

void fill(fxStrArray& strings, unsigned int n) {
    for (unsigned int i = 0; i < n; ++i)
        strings.append(fxStr(std::string(i * 7 % 61, static_cast<char>('a' + i % 26)).c_str()));
}

void fill(fxIntArray& ints, unsigned int n) {
    for (unsigned int i = 0; i < n; ++i) {
        const int value = static_cast<int>(i * i);
        ints.append(&value);
    }
    ints.setMaxLength(0);
}

// A string, a map, an array, shared objects and long blocks; more than one piece.
struct Graph {
    Graph() : root(objType), sub(subType) {
        fill(strings, 3000);
        for (int i = 0; i < 500; ++i)
            pairs.add(fxStr(i, "key %d"), fxStr(i, "%x"));
        fill(ints, 20000);
        block = std::string(70001, 'b');
        sub.script = [this](ScriptedObject& self, fxTranscriber& t) -> unsigned char {
            self.links[0] = &root;
            return t.xdr(self.numbers, 4) && self.xdrLink(t, 0) && self.text.xdr(t);
        };
        sub.text = "text of the second";
        root.script = [this](ScriptedObject& self, fxTranscriber& t) -> unsigned char {
            self.blocks[0] = self.blocks[1] = &block[0];
            self.links[0] = self.links[1] = &sub;
            return t.xdr(&self.blocks[0], 70001) && self.xdrLink(t, 0) && self.xdrLink(t, 1) &&
                   self.xdrLink(t, 2) && t.xdr(&self.blocks[1], 70001) && strings.xdr(t) &&
                   pairs.xdr(t) && ints.xdr(t) && t.xdr(&block[0], 513);
        };
    }

    fxStrArray strings;
    fxStrStrDictionary pairs;
    fxIntArray ints;
    std::string block;
    ScriptedObject root, sub;
};

using Act = std::function<unsigned char(fxBinaryWriter& writer)>;

// What a host's class gets of it.
std::string seenByHosts(const Act& act, unsigned char result = 1) {
    MemoryStream stream;
    fxBinaryWriter writer(&stream);
    EXPECT_EQ(result, act(writer));
    return stream.written;
}

std::string seenByOwnFile(const Act& act, unsigned char result = 1) {
    OwnFile own;
    fxBinaryWriter writer(&own.stream);
    EXPECT_EQ(result, act(writer));
    EXPECT_EQ(static_cast<std::size_t>(own.position()), own.content().size());
    return own.content();
}

unsigned char writeRoot(fxBinaryWriter& writer, fxXDRObj& root) {
    return writer.writeObject(&root, &root);
}
}  // namespace

// Writing.

TEST(ownStream, getsTheBytesThatHostsGet) {
    Graph graph;
    const Act act = [&](fxBinaryWriter& w) { return writeRoot(w, graph.root); };
    EXPECT_TRUE(seenByHosts(act) == seenByOwnFile(act));
}

TEST(ownStream, recordsEndAnywhereInAPiece) {
    for (const unsigned int n : {0U, 1U, 255U, 256U, 511U, 512U, 513U, 32000U, 32735U, 32736U,
                                 32737U, 32768U, 40000U, 100000U}) {
        for (const unsigned int pieces : {1U, 30U}) {
            SCOPED_TRACE(testing::Message() << n << " bytes, " << pieces << " times");
            std::string bytes(n, 'x');
            ScriptedObject root(objType, [&](ScriptedObject&, fxTranscriber& t) -> unsigned char {
                for (unsigned int i = 0; i < pieces; ++i) {
                    if (!t.xdr(&bytes[0], n) || !t.xdr(&root.blocks[0], 1))
                        return 0;
                }
                return 1;
            });
            root.blocks[0] = &bytes[0];
            const Act act = [&](fxBinaryWriter& w) { return writeRoot(w, root); };
            EXPECT_TRUE(seenByHosts(act) == seenByOwnFile(act));
        }
    }
}

TEST(ownStream, typeNameLongerThanAPieceIsWritten) {
    const std::string name(50000, 'n');
    fxTypeObj type(name.c_str(), 1, nullptr, nullptr, ScriptedObject::xdr);
    ScriptedObject root(type);
    const Act act = [&](fxBinaryWriter& w) { return writeRoot(w, root); };
    EXPECT_TRUE(seenByHosts(act) == seenByOwnFile(act));
}

TEST(ownStream, derivedClassesSeeEveryCall) {
    Graph graph;
    MemoryStream hosts;
    hosts.logging = true;
    fxBinaryWriter(&hosts).writeObject(&graph.root, &graph.root);
    LoggingStdioStream derived(std::tmpfile(), fxStream::writeStream);
    derived.count = 1;
    fxBinaryWriter(&derived).writeObject(&graph.root, &graph.root);
    EXPECT_TRUE(hosts.calls == derived.calls);
}

// Its class might look at the file in any of its operations.
TEST(ownStream, derivedClassThatChangesNothingGetsRecordsAtOnce) {
    std::FILE* file = std::tmpfile();
    PlainStdioStream derived(file, fxStream::writeStream);
    derived.count = 1;
    std::vector<long> positions;
    ScriptedObject root(objType, [&](ScriptedObject& self, fxTranscriber& t) -> unsigned char {
        positions.push_back(std::ftell(file));
        const unsigned char done = self.xdrLink(t, 0);
        positions.push_back(std::ftell(file));
        return done;
    });
    EXPECT_EQ(1, fxBinaryWriter(&derived).writeObject(&root, &root));
    EXPECT_EQ((std::vector<long>{9, 22}), positions);
}

TEST(ownStream, hostsBytesGoBetweenObjects) {
    OwnFile own;
    MemoryStream hosts;
    fxBinaryWriter ownWriter(&own.stream);
    fxBinaryWriter hostsWriter(&hosts);
    for (int i = 0; i < 5; ++i) {
        fxStrArray strings;
        fill(strings, 1U << (i * 3));
        EXPECT_EQ(1, ownWriter.writeObject(&strings, &strings));
        EXPECT_EQ(1, hostsWriter.writeObject(&strings, &strings));
        EXPECT_EQ(hosts.written.size(), static_cast<std::size_t>(own.position()));
        std::fputs("host", own.file);
        hosts.written += "host";
    }
    EXPECT_TRUE(hosts.written == own.content());
}

TEST(ownStream, elementsOutsideObjectsGoStraightToTheFile) {
    OwnFile own;
    fxBinaryWriter writer(&own.stream);
    std::string bytes(600, 'x');
    EXPECT_EQ(1, writer.xdr(&bytes[0], 600));
    EXPECT_EQ(515, own.position());
    EXPECT_EQ(1, writer.flush());
    EXPECT_EQ(515 + 90, own.position());
}

TEST(ownStream, flushInAnObjectHandsOverWhatIsWritten) {
    OwnFile own;
    const auto script = [&own](ScriptedObject& self, fxTranscriber& t) -> unsigned char {
        if (!t.xdr(self.numbers, 1) || !dynamic_cast<fxBinaryWriter&>(t).flush())
            return 0;
        return std::fputs("host", own.file) >= 0 && t.xdr(self.numbers, 2);
    };
    ScriptedObject root(objType, script);
    fxBinaryWriter writer(&own.stream);
    EXPECT_EQ(1, writeRoot(writer, root));
    EXPECT_EQ(dump(hex("02 02000000 'Obj' 00 | 4a 04 01000000 02000000 01000000") + host(0) +
                   "host" + hex("40 08") + host(0) + host(0)),
              dump(own.content()));
}

TEST(ownStream, whatAnObjectPutsIntoTheStreamItselfStaysInItsPlace) {
    OwnFile own;
    MemoryStream hosts;
    for (fxStream* stream : {static_cast<fxStream*>(&own.stream), static_cast<fxStream*>(&hosts)}) {
        const auto script = [stream](ScriptedObject& self, fxTranscriber& t) -> unsigned char {
            int number = 7;
            return self.xdrLink(t, 0) && t.xdr(self.numbers, 1) && stream->putBytes("h", 1) &&
                   self.xdrLink(t, 1) && stream->putInts(&number, 1) && t.xdr(self.numbers, 2);
        };
        ScriptedObject sub(subType,
                           [](ScriptedObject&, fxTranscriber&) -> unsigned char { return 1; });
        ScriptedObject root(objType, script);
        root.links[0] = root.links[1] = &sub;
        fxBinaryWriter writer(stream);
        EXPECT_EQ(1, writeRoot(writer, root));
    }
    EXPECT_EQ(dump(hosts.written), dump(own.content()));
}

TEST(ownStream, failedObjectLeavesWhatWasWrittenBefore) {
    ScriptedObject root(objType, [](ScriptedObject& self, fxTranscriber& t) -> unsigned char {
        return self.xdrLink(t, 0) && self.xdrLink(t, 0) && false;
    });
    const Act act = [&](fxBinaryWriter& w) { return writeRoot(w, root); };
    EXPECT_EQ(dump(seenByHosts(act, 0)), dump(seenByOwnFile(act, 0)));
}

TEST(ownStream, exceptionLeavesWhatWasWrittenBefore) {
    ScriptedObject root(objType, [](ScriptedObject& self, fxTranscriber& t) -> unsigned char {
        if (!self.xdrLink(t, 0) || !self.xdrLink(t, 0))
            return 0;
        throw 1;
    });
    const Act act = [&](fxBinaryWriter& w) -> unsigned char {
        EXPECT_THROW(writeRoot(w, root), int);
        return w.flush() && w.xdr(root.numbers, 1) && w.flush();
    };
    EXPECT_EQ(dump(seenByHosts(act)), dump(seenByOwnFile(act)));
}

TEST(ownStream, fullDiskFailsTheObject) {
    fxStrArray strings;
    fill(strings, 3000);
    fxIntArray few;
    fill(few, 1);
    const struct {
        fxArray* root;
        bool buffered;
        int written;
    } cases[] = {{&strings, true, 0}, {&strings, false, 0}, {&few, true, 1}, {&few, false, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.root->length() << " elements");
        std::FILE* full = std::fopen("/dev/full", "w");
        ASSERT_NE(nullptr, full);
        if (!c.buffered)
            std::setvbuf(full, nullptr, _IONBF, 0);
        fxStdioStream stream(full, fxStream::writeStream);
        stream.count = 1;
        EXPECT_EQ(c.written, fxBinaryWriter(&stream).writeObject(c.root, c.root));
    }
}

// What the stream does not take.

namespace {
// A file that takes so many bytes and then fails, without a buffer.
struct LimitedFile {
    explicit LimitedFile(std::size_t limit) : room(limit), own(open(this)) {
        std::setvbuf(own.file, nullptr, _IONBF, 0);
    }

    static std::FILE* open(LimitedFile* self) {
        cookie_io_functions_t functions = {};
        functions.write = [](void* cookie, const char* bytes, std::size_t n) {
            auto* file = static_cast<LimitedFile*>(cookie);
            const std::size_t taken = n < file->room ? n : file->room;
            file->room -= taken;
            file->taken.append(bytes, taken);
            return static_cast<ssize_t>(taken);
        };
        return ::fopencookie(self, "w", functions);
    }

    std::size_t room;
    std::string taken;
    OwnFile own;
};

const std::size_t plenty = 1U << 30;
}  // namespace

TEST(ownStream, whatItDidNotTakeStaysUntilItDoes) {
    fxStrArray strings;
    fill(strings, 100);
    const std::string whole =
        seenByHosts([&](fxBinaryWriter& w) { return w.writeObject(&strings, &strings); });
    for (std::size_t limit : {std::size_t(0), std::size_t(1), whole.size() / 2, whole.size() - 1}) {
        SCOPED_TRACE(limit);
        LimitedFile file(limit);
        fxBinaryWriter writer(&file.own.stream);
        EXPECT_EQ(0, writer.writeObject(&strings, &strings));
        EXPECT_EQ(0, writer.flush());
        EXPECT_EQ(limit, file.taken.size());
        file.room = plenty;
        EXPECT_EQ(1, writer.flush());
        EXPECT_TRUE(whole == file.taken);
        EXPECT_EQ(1, writer.flush());
        EXPECT_TRUE(whole == file.taken);
    }
}

TEST(ownStream, nextObjectBeginsWithWhatItDidNotTake) {
    fxIntArray ints;
    fill(ints, 5);
    ScriptedObject other(subType);
    const std::string both = seenByHosts([&](fxBinaryWriter& w) {
        return w.writeObject(&ints, &ints) && w.writeObject(&other, &other);
    });
    LimitedFile file(10);
    fxBinaryWriter writer(&file.own.stream);
    EXPECT_EQ(0, writer.writeObject(&ints, &ints));
    EXPECT_EQ(0, writer.writeObject(&other, &other));
    EXPECT_EQ(0U, writer.alreadyWritten(&other));
    file.room = plenty;
    EXPECT_EQ(1, writer.writeObject(&other, &other));
    EXPECT_EQ(dump(both), dump(file.taken));
}

TEST(ownStream, elementsDoNotOvertakeWhatItDidNotTake) {
    fxIntArray ints;
    fill(ints, 5);
    std::string bytes(600, 'x');
    const std::string both = seenByHosts([&](fxBinaryWriter& w) {
        return w.writeObject(&ints, &ints) && w.xdr(&bytes[0], 600) && w.flush();
    });
    LimitedFile file(10);
    fxBinaryWriter writer(&file.own.stream);
    EXPECT_EQ(0, writer.writeObject(&ints, &ints));
    EXPECT_EQ(1, writer.xdr(&bytes[0], 512)) << "they wait in the buffer";
    EXPECT_EQ(0, writer.xdr(&bytes[0], 88));
    EXPECT_EQ(10U, file.taken.size());
    file.room = plenty;
    EXPECT_EQ(1, writer.xdr(&bytes[0], 88));
    EXPECT_EQ(1, writer.flush());
    EXPECT_EQ(dump(both), dump(file.taken));
}

TEST(ownStream, longObjectThatFailsGoesOnWhereItFailed) {
    fxStrArray strings;
    fill(strings, 3000);
    const std::string whole =
        seenByHosts([&](fxBinaryWriter& w) { return w.writeObject(&strings, &strings); });
    LimitedFile file(40000);
    fxBinaryWriter writer(&file.own.stream);
    EXPECT_EQ(0, writer.writeObject(&strings, &strings));
    EXPECT_EQ(0, writer.flush());
    file.room = plenty;
    EXPECT_EQ(1, writer.flush());
    EXPECT_LT(40000U, file.taken.size());
    EXPECT_TRUE(whole.compare(0, file.taken.size(), file.taken) == 0);
}

TEST(ownStream, destroyedWriterGivesItNothingMore) {
    fxIntArray ints;
    fill(ints, 5);
    LimitedFile file(10);
    {
        fxBinaryWriter writer(&file.own.stream);
        EXPECT_EQ(0, writer.writeObject(&ints, &ints));
        file.room = plenty;
    }
    EXPECT_EQ(10U, file.taken.size());
}

TEST(ownStream, itIsGivenManyRecordsAtOnce) {
    std::vector<std::size_t> sizes;
    cookie_io_functions_t functions = {};
    functions.write = [](void* cookie, const char*, std::size_t n) {
        static_cast<std::vector<std::size_t>*>(cookie)->push_back(n);
        return static_cast<ssize_t>(n);
    };
    fxStrArray strings;
    fill(strings, 20000);
    OwnFile own(::fopencookie(&sizes, "w", functions));
    std::setvbuf(own.file, nullptr, _IONBF, 0);
    EXPECT_EQ(1, fxBinaryWriter(&own.stream).writeObject(&strings, &strings));
    ASSERT_LT(10U, sizes.size());
    for (std::size_t i = 0; i + 1 < sizes.size(); ++i)
        EXPECT_LE(16U * 1024, sizes[i]);
}

TEST(ownStream, objectsResetTheirWriter) {
    ScriptedObject root(objType, [](ScriptedObject& self, fxTranscriber& t) -> unsigned char {
        if (!self.xdrLink(t, 1))
            return 0;
        t.reset();
        return self.xdrLink(t, 0);
    });
    ScriptedObject sub(objType);
    root.links[0] = root.links[1] = &sub;
    const Act act = [&](fxBinaryWriter& w) { return writeRoot(w, root); };
    EXPECT_EQ(dump(hex("02 02000000 'Obj' 00 | 0a 01000000 02000000 01000000 | 0b 03000000"
                       "02 04000000 'Obj' 00 | 0b 05000000 | 0a 05000000 04000000 01000000")),
              dump(seenByHosts(act)));
    EXPECT_EQ(dump(seenByHosts(act)), dump(seenByOwnFile(act)));
}

// Reading.

namespace {
// Strings, ints of several lengths and strings again, each followed by "host".
struct Sequence {
    Sequence() {
        MemoryStream stream;
        fxBinaryWriter writer(&stream);
        for (unsigned int n : {0U, 1U, 100U, 1023U, 1024U, 1025U, 9000U, 50000U}) {
            fxStrArray strings;
            fill(strings, n % 1000);
            EXPECT_EQ(1, writer.writeObject(&strings, &strings));
            stream.written += "host";
            ends.push_back(static_cast<long>(stream.written.size()));
            fxIntArray ints;
            fill(ints, n);
            EXPECT_EQ(1, writer.writeObject(&ints, &ints));
            stream.written += "host";
            ends.push_back(static_cast<long>(stream.written.size()));
            writer.reset();  // the arrays go, and their addresses with them
        }
        bytes = stream.written;
    }

    std::string bytes;
    std::vector<long> ends;
};

// The next root of `reader`, written again.
std::string rewritten(fxBinaryReader& reader, fxTypeObj& type) {
    fxTypeObj::registerType(&type);
    auto* array = static_cast<fxArray*>(reader.readObject(type));
    fxTypeObj::registerType(&fxStrArray_type);
    if (!array)
        return "null";
    MemoryStream stream;
    fxBinaryWriter(&stream).writeObject(array, array);
    delete array;
    return stream.written;
}
}  // namespace

TEST(ownStream, readingStopsBehindAnObject) {
    const Sequence sequence;
    OwnFile own(sequence.bytes);
    MemoryStream hosts(sequence.bytes);
    fxBinaryReader ownReader(&own.stream, 0x1122, 0x33445566, "ieee");
    fxBinaryReader hostsReader(&hosts, 0x1122, 0x33445566, "ieee");
    for (std::size_t i = 0; i < sequence.ends.size(); ++i) {
        SCOPED_TRACE(i);
        fxTypeObj& type = i % 2 == 0 ? fxStrArray_type : fxIntArray_type;
        const std::string read = rewritten(hostsReader, type);
        EXPECT_NE("null", read);
        EXPECT_TRUE(read == rewritten(ownReader, type));
        char text[5] = {};
        EXPECT_EQ(4U, std::fread(text, 1, 4, own.file));
        EXPECT_STREQ("host", text);
        hosts.position += 4;
        EXPECT_EQ(sequence.ends[i], static_cast<long>(hosts.position));
        EXPECT_EQ(sequence.ends[i], own.position());
    }
}

TEST(ownStream, readingWaitsForNothingBehindAnObject) {
    fxIntArray ints;
    fill(ints, 9000);
    MemoryStream stream;
    fxBinaryWriter(&stream).writeObject(&ints, &ints);
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    ASSERT_LE(static_cast<int>(stream.written.size()), ::fcntl(ends[1], F_SETPIPE_SZ, 1 << 20));
    ASSERT_EQ(static_cast<ssize_t>(stream.written.size()),
              ::write(ends[1], stream.written.data(), stream.written.size()));
    OwnFile own(::fdopen(ends[0], "r"));
    fxBinaryReader reader(&own.stream, 0x1122, 0x33445566, "ieee");
    // Would wait for ever: the other end stays open.
    EXPECT_TRUE(stream.written == rewritten(reader, fxIntArray_type));
    ::close(ends[1]);
}

TEST(ownStream, derivedClassesAreAskedForEveryField) {
    const Sequence sequence;
    MemoryStream hosts(sequence.bytes);
    hosts.logging = true;
    OwnFile own(sequence.bytes);
    LoggingStdioStream derived(::dup(::fileno(own.file)), fxStream::readStream);
    derived.count = 1;
    fxBinaryReader hostsReader(&hosts, 0x1122, 0x33445566, "ieee");
    fxBinaryReader derivedReader(&derived, 0x1122, 0x33445566, "ieee");
    EXPECT_TRUE(rewritten(hostsReader, fxStrArray_type) ==
                rewritten(derivedReader, fxStrArray_type));
    EXPECT_TRUE(hosts.calls == derived.calls);
    EXPECT_LT(3U, hosts.calls.size());
}

TEST(ownStream, cutStreamsEndAlike) {
    fxStrArray strings;
    fill(strings, 40);
    MemoryStream whole;
    fxBinaryWriter(&whole).writeObject(&strings, &strings);
    const std::size_t firstBody = whole.written.find('\x45');
    for (std::size_t n = firstBody; n <= whole.written.size(); ++n) {
        SCOPED_TRACE(n);
        const std::string cut = whole.written.substr(0, n);
        OwnFile own(cut);
        fxBinaryReader reader(&own.stream, 0x1122, 0x33445566, "ieee");
        auto* read = static_cast<fxArray*>(reader.readObject(fxStrArray_type));
        EXPECT_EQ(n == whole.written.size(), read != nullptr);
        EXPECT_EQ(static_cast<long>(n), own.position());
        if (!read)
            read = static_cast<fxArray*>(reader.alreadyRead(1));
        delete read;
    }
}

TEST(ownStream, payloadThatABlockHasNoRoomForIsRead) {
    // A block of 2 bytes in a record with 5, at the end of the object.
    const std::string bytes =
        hex("02 02000000 'Obj' 00 | 0a 01000000 02000000 01000000"
            "03 03000000 02000000 | 45 05 03000000 02000000 'abcde'");
    const ReadScript script([](ScriptedObject& self, fxTranscriber& t) -> unsigned char {
        return t.xdr(&self.blocks[0], 2);
    });
    OwnFile own(bytes + "host");
    fxBinaryReader reader(&own.stream, 0x1122, 0x33445566, "ieee");
    const auto* root = static_cast<ScriptedObject*>(reader.readObject(objType));
    ASSERT_NE(nullptr, root);
    EXPECT_EQ("ab", std::string(root->blocks[0], 2));
    EXPECT_EQ(static_cast<long>(bytes.size()), own.position());
    delete[] root->blocks[0];
}

TEST(ownStream, objectsResetTheirReader) {
    const ReadScript script([](ScriptedObject& self, fxTranscriber& t) -> unsigned char {
        if (self.type == &subType)
            t.reset();
        return self.type == &subType || self.xdrLink(t, 0);
    });
    OwnFile own(
        hex("02 02000000 'Obj' 00 | 02 04000000 'Sub' 00 | 0a 01000000 02000000 01000000"
            "0b 03000000 00000000 | 0a 05000000 04000000 01000000"
            "02 04000000 'Sub' 00 | 0a 03000000 04000000 01000000"));
    fxBinaryReader reader(&own.stream, 0x1122, 0x33445566, "ieee");
    // Number 3 is met once more, and forgotten at once.
    EXPECT_EQ(nullptr, reader.readObject(objType));
    EXPECT_EQ(nullptr, ReadScript::made()[0]->links[0]);
    EXPECT_EQ(3U, ReadScript::made().size());
}
