// fxStdioStreamClose_test.cpp - creating files, and what flush and close report.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "kelvofxds/transcribe/fxStdioStream.h"
#include "tests/support/runProgram.h"
#include "tests/support/scriptedObject.h"
#include "tests/support/streamBytes.h"

namespace {
const auto forReading = fxStream::readStream;
const auto forWriting = fxStream::writeStream;
const auto forBoth = fxStream::readWriteStream;

// Takes nothing: "No space left on device".
const char full[] = "/dev/full";

// Holds a stream, which it gets without holders.
class Held {
public:
    explicit Held(fxStdioStream* s) : stream(s) { ++stream->count; }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    ~Held() {
        if (--stream->count == 0)
            delete stream;
    }
    fxStdioStream* operator->() const { return stream; }
    fxStdioStream* get() const { return stream; }

private:
    fxStdioStream* const stream;
};

unsigned int permissionsOf(const std::string& path) {
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

int lowestFreeDescriptor() {
    const int fd = ::open("/dev/null", O_RDONLY);
    ::close(fd);
    return fd;
}

bool isOpen(int fd) { return ::fcntl(fd, F_GETFD) != -1; }

// Whether any transfer does anything.
bool transfersAnything(fxStdioStream& stream) {
    char c = 'c';
    short s = 1;
    int i = 2;
    long l = 3;
    float f = 4;
    double d = 5;
    bool any = false;
    for (unsigned int n = 0; n < 3; ++n) {
        any = any || stream.getBytes(&c, n) || stream.getShorts(&s, n) || stream.getInts(&i, n) ||
              stream.getLongs(&l, n) || stream.getFloats(&f, n) || stream.getDoubles(&d, n) ||
              stream.putBytes(&c, n) || stream.putShorts(&s, n) || stream.putInts(&i, n) ||
              stream.putLongs(&l, n) || stream.putFloats(&f, n) || stream.putDoubles(&d, n);
    }
    return any;
}

fxTypeObj textType("fxStdioStreamCloseTest", 1, ScriptedObject::newInstance,
                   ScriptedObject::deleteInstance, ScriptedObject::xdr);

// The recipe of the class's comment. Returns whether the text is saved.
bool saveAsTold(const char* path, fxXDRObj& object) {
    fxStdioStream* file = fxStdioStream::createFile(path);
    ++file->count;
    fxTranscriber* writer = fxTranscriber::getWriter(file);
    bool isSaved = writer && writer->writeObject(&object, &object);
    delete writer;
    isSaved = file->close() && isSaved;
    if (--file->count == 0)
        delete file;
    return isSaved;
}
}  // namespace

// Creating files.

TEST(fxStdioStreamClose, createdFileIsOpenForWritingAndNobodys) {
    const TemporaryFolder folder;
    const std::string path = folder / "new";
    {
        const Held stream(fxStdioStream::createFile(path.c_str()));
        EXPECT_EQ(1, stream->count) << "the test's";
        EXPECT_EQ(0, stream->hasError());
        EXPECT_EQ(forWriting, stream->getType());
        EXPECT_EQ(0, stream->isReading());
        EXPECT_EQ(1, stream->putBytes("abc", 3));
    }
    EXPECT_EQ("abc", bytesOf(path));
}

TEST(fxStdioStreamClose, createdFileHasThePermissionsLessTheUmask) {
    const TemporaryFolder folder;
    const mode_t before = ::umask(027);
    delete fxStdioStream::createFile((folder / "all").c_str());
    delete fxStdioStream::createFile((folder / "few").c_str(), 0604);
    ::umask(before);
    EXPECT_EQ(0640u, permissionsOf(folder / "all"));
    EXPECT_EQ(0600u, permissionsOf(folder / "few"));
}

TEST(fxStdioStreamClose, createdFileHasNothingOfTheOldOne) {
    const TemporaryFolder folder;
    const std::string path = folder.file("old", "0123456789");
    ASSERT_EQ(0, ::chmod(path.c_str(), 0612));
    const Held stream(fxStdioStream::createFile(path.c_str()));
    EXPECT_EQ("", bytesOf(path));
    EXPECT_EQ(1, stream->putBytes("abc", 3));
    EXPECT_EQ(1, stream->close());
    EXPECT_EQ("abc", bytesOf(path));
    EXPECT_EQ(0612u, permissionsOf(path)) << "they stay";
}

TEST(fxStdioStreamClose, fileThatCannotBeCreatedSetsTheErrorFlag) {
    const TemporaryFolder folder;
    for (const std::string& path : {folder.path(), folder / "no/file", std::string()}) {
        SCOPED_TRACE(path);
        const int fd = lowestFreeDescriptor();
        const Held stream(fxStdioStream::createFile(path.c_str()));
        EXPECT_EQ(1, stream->hasError());
        EXPECT_FALSE(isOpen(fd));
        EXPECT_EQ(0, stream->flush());
        EXPECT_EQ(0, stream->close());
    }
}

// Flushing.

TEST(fxStdioStreamClose, flushGivesTheSystemWhatWasPut) {
    const TemporaryFolder folder;
    const std::string path = folder / "file";
    const Held stream(fxStdioStream::createFile(path.c_str()));
    EXPECT_EQ(1, stream->flush()) << "nothing is no failure";
    EXPECT_EQ(1, stream->putBytes("abc", 3));
    EXPECT_EQ("", bytesOf(path));
    EXPECT_EQ(1, stream->flush());
    EXPECT_EQ("abc", bytesOf(path));
    EXPECT_EQ(1, stream->putBytes("d", 1));
    EXPECT_EQ(1, stream->flush());
    EXPECT_EQ("abcd", bytesOf(path));
    EXPECT_EQ(0, stream->hasError());
}

TEST(fxStdioStreamClose, flushReportsWhatIsLostNowAndBefore) {
    const Held stream(fxStdioStream::createFile(full));
    EXPECT_EQ(1, stream->flush());
    EXPECT_EQ(1, stream->putBytes("abc", 3)) << "it waits in the buffer";
    EXPECT_EQ(0, stream->flush());
    EXPECT_EQ(0, stream->flush()) << "the buffer is empty, and the bytes are lost";
    EXPECT_EQ(0, stream->hasError()) << "there is an open stream";
}

TEST(fxStdioStreamClose, flushReportsWhatAPutHasLost) {
    const Held stream(fxStdioStream::createFile(full));
    EXPECT_EQ(0, stream->putBytes(std::string(100000, 'x').data(), 100000));
    EXPECT_EQ(0, stream->flush());
}

TEST(fxStdioStreamClose, flushOfWhatIsOnlyReadIsNoFailure) {
    const TemporaryFolder folder;
    const std::string path = folder.file("file", "0123456789");
    fxStdioStream file(path.c_str(), forReading);
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    ASSERT_EQ(3, ::write(ends[1], "012", 3));
    ::close(ends[1]);
    fxStdioStream pipe(ends[0], forReading);
    for (fxStdioStream* stream : {&file, &pipe}) {
        char digits[2];
        EXPECT_EQ(1, stream->flush());
        EXPECT_EQ(1, stream->getBytes(&digits[0], 1));
        EXPECT_EQ(1, stream->flush());
        EXPECT_EQ(1, stream->getBytes(&digits[1], 1));
        EXPECT_EQ("01", std::string(digits, 2)) << "the place stays";
        EXPECT_EQ(1, stream->close());
    }
}

TEST(fxStdioStreamClose, flushOfWhatIsOnlyReadNeedsNoPlace) {
    cookie_io_functions_t calls = {};
    calls.read = [](void*, char* bytes, std::size_t n) -> ssize_t {
        return std::memset(bytes, 'x', n), static_cast<ssize_t>(n);
    };
    fxStdioStream stream(::fopencookie(nullptr, "r", calls), forReading);
    char c = 0;
    EXPECT_EQ(1, stream.getBytes(&c, 1));
    EXPECT_EQ('x', c);
    EXPECT_EQ(1, stream.flush());
    EXPECT_EQ(1, stream.close());
}

TEST(fxStdioStreamClose, failedReadIsReported) {
    const TemporaryFolder folder;
    fxStdioStream directory(folder.path().c_str(), forReading);
    EXPECT_EQ(1, directory.flush());
    char c;
    EXPECT_EQ(0, directory.getBytes(&c, 1));
    EXPECT_EQ(0, directory.flush());
    EXPECT_EQ(0, directory.close());
}

TEST(fxStdioStreamClose, flushSeparatesWritingFromReading) {
    const TemporaryFolder folder;
    const std::string path = folder.file("file", "0123456789");
    fxStdioStream stream(path.c_str(), forBoth);
    EXPECT_EQ(1, stream.putBytes("ab", 2));
    EXPECT_EQ(1, stream.flush());
    char c = 0;
    EXPECT_EQ(1, stream.getBytes(&c, 1));
    EXPECT_EQ('2', c);
}

// Closing.

TEST(fxStdioStreamClose, closeReportsWhatIsLost) {
    const Held good(fxStdioStream::createFile("/dev/null"));
    EXPECT_EQ(1, good->putBytes("abc", 3));
    EXPECT_EQ(1, good->close());
    const Held late(fxStdioStream::createFile(full));
    EXPECT_EQ(1, late->putBytes("abc", 3));
    EXPECT_EQ(0, late->close());
    const Held before(fxStdioStream::createFile(full));
    EXPECT_EQ(1, before->putBytes("abc", 3));
    EXPECT_EQ(0, before->flush());
    EXPECT_EQ(0, before->close());
}

TEST(fxStdioStreamClose, closeReportsWhatClosingLoses) {
    const TemporaryFolder folder;
    const int fd = lowestFreeDescriptor();
    const Held stream(fxStdioStream::createFile((folder / "file").c_str()));
    ASSERT_EQ(0, ::close(fd));
    EXPECT_EQ(0, stream->close()) << "nothing was put, but the descriptor is bad";
}

TEST(fxStdioStreamClose, nothingCanBeTransferredAfterClosing) {
    const TemporaryFolder folder;
    const std::string path = folder.file("file", "0123456789");
    for (const auto type : {forReading, forWriting, forBoth}) {
        SCOPED_TRACE(type);
        const int fd = lowestFreeDescriptor();
        fxStdioStream stream(path.c_str(), type);
        EXPECT_TRUE(isOpen(fd));
        EXPECT_EQ(1, stream.close());
        EXPECT_FALSE(isOpen(fd));
        EXPECT_EQ(1, stream.hasError());
        EXPECT_FALSE(transfersAnything(stream));
        EXPECT_EQ(0, stream.atEOF());
        EXPECT_EQ(type, stream.getType());
        EXPECT_EQ(0, stream.flush());
        EXPECT_EQ(0, stream.close()) << "there is nothing to be closed";
    }
}

TEST(fxStdioStreamClose, destructorClosesNothingTwice) {
    int others = -1;
    {
        fxStdioStream stream("/dev/null", forWriting);
        EXPECT_EQ(1, stream.close());
        others = ::open("/dev/null", O_RDONLY);
    }
    EXPECT_TRUE(isOpen(others)) << "a descriptor with the same number";
    ::close(others);
}

TEST(fxStdioStreamClose, withoutAnOpenStreamBothFail) {
    fxStdioStream stream(static_cast<std::FILE*>(nullptr), forWriting);
    EXPECT_EQ(0, stream.flush());
    EXPECT_EQ(0, stream.close());
}

// While a writer collects.

TEST(fxStdioStreamClose, flushInTheMiddleOfAnObjectGivesWhatIsCollected) {
    const TemporaryFolder folder;
    const std::string path = folder / "file";
    const Held stream(fxStdioStream::createFile(path.c_str()));
    bool isFlushing = false;
    std::string meanwhile;
    std::string block(2000, 'b');
    ScriptedObject object(textType, [&](ScriptedObject& self, fxTranscriber& t) -> unsigned char {
        if (!t.xdr(&block[0], 2000))
            return 0;
        if (isFlushing) {
            EXPECT_EQ(1, stream->flush());
            meanwhile = bytesOf(path);
        }
        return t.xdr(self.numbers, 4);
    });
    fxBinaryWriter writer(stream.get());
    EXPECT_EQ(1, writer.writeObject(&object, &object));
    EXPECT_EQ(1, stream->flush());
    const std::string first = bytesOf(path);

    isFlushing = true;
    EXPECT_EQ(1, writer.writeObject(&object, &object));
    EXPECT_EQ(1, stream->close());
    const std::string all = bytesOf(path);
    EXPECT_LT(first.size() + 1024, meanwhile.size()) << "all but a payload that still grows";
    EXPECT_EQ(dump(meanwhile), dump(all.substr(0, meanwhile.size())));
}

TEST(fxStdioStreamClose, closeInTheMiddleOfAnObjectFailsIt) {
    const TemporaryFolder folder;
    const std::string path = folder / "file";
    const Held stream(fxStdioStream::createFile(path.c_str()));
    std::string block(100000, 'b');
    ScriptedObject object(textType, [&](ScriptedObject&, fxTranscriber& t) -> unsigned char {
        EXPECT_EQ(1, t.xdr(&block[0], 2000));
        EXPECT_EQ(1, stream->close());
        t.xdr(&block[0], 100000);
        return 1;
    });
    fxBinaryWriter writer(stream.get());
    EXPECT_EQ(0, writer.writeObject(&object, &object));
    EXPECT_LT(1024u, bytesOf(path).size()) << "what was collected before";
}

TEST(fxStdioStreamClose, whatAFailedWriterHasLeftStaysAwayFromTheClosedStream) {
    const Held stream(fxStdioStream::createFile(full));
    std::string block(100000, 'b');
    ScriptedObject object(
        textType, [&](ScriptedObject&, fxTranscriber& t) { return t.xdr(&block[0], 100000); });
    fxBinaryWriter writer(stream.get());
    EXPECT_EQ(0, writer.writeObject(&object, &object));
    EXPECT_EQ(0, stream->close());
    EXPECT_EQ(0, writer.writeObject(&object, &object));
    EXPECT_EQ(0, writer.flush());
}

TEST(fxStdioStreamClose, recipeOfTheClassCommentSavesOrTells) {
    const TemporaryFolder folder;
    const std::string path = folder / "file";
    ScriptedObject object(
        textType, [](ScriptedObject& self, fxTranscriber& t) { return t.xdr(self.numbers, 4); });
    EXPECT_TRUE(saveAsTold(path.c_str(), object));
    EXPECT_EQ(dump(hostHeader()), dump(bytesOf(path).substr(0, hostHeader().size())));
    EXPECT_FALSE(saveAsTold(full, object)) << "every put has returned 1";
    EXPECT_FALSE(saveAsTold((folder / "no/file").c_str(), object));
}
