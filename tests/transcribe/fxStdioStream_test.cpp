#include "kelvofxds/transcribe/fxStdioStream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/streamBytes.h"

#pragma GCC diagnostic ignored "-Winvalid-offsetof"

struct fxStdioStreamLayout {
    static_assert(offsetof(fxStdioStream, fp) == 8, "behind table and count");
    static_assert(offsetof(fxStdioStream, type) == 12, "after fp");
    static_assert(offsetof(fxStdioStream, error) == 16, "after type");
    static_assert(offsetof(fxStdioStream, eof) == 17, "after error");
    static_assert(sizeof(fxStdioStream) == 20, "nothing else");

    static std::FILE* fp(const fxStdioStream& s) { return s.fp; }
};

namespace {
const auto forReading = fxStream::readStream;
const auto forWriting = fxStream::writeStream;
const auto forBoth = fxStream::readWriteStream;
const auto ofNoKind = static_cast<fxStream::fxStreamType>(7);

// A folder of its own for each test.
class fxStdioStreamTest : public testing::Test {
protected:
    fxStdioStreamTest() : oldMask(::umask(0)) {
        folder = testing::TempDir() + "kelvofxdsXXXXXX";
        EXPECT_NE(nullptr, ::mkdtemp(&folder[0]));
        path = folder + "/file";
    }
    ~fxStdioStreamTest() override {
        ::unlink(path.c_str());
        ::rmdir(folder.c_str());
        ::umask(oldMask);
    }

    void makeFile(const std::string& content) const {
        std::FILE* f = std::fopen(path.c_str(), "w");
        ASSERT_NE(nullptr, f);
        EXPECT_EQ(content.size(), std::fwrite(content.data(), 1, content.size(), f));
        std::fclose(f);
    }

    std::string fileContent() const {
        std::string content;
        std::FILE* f = std::fopen(path.c_str(), "r");
        if (!f)
            return "no file";
        for (int c = std::getc(f); c != EOF; c = std::getc(f))
            content += static_cast<char>(c);
        std::fclose(f);
        return content;
    }

    bool exists() const { return ::access(path.c_str(), F_OK) == 0; }

    unsigned int permissions() const {
        struct stat status;
        return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
    }

    // The number the next descriptor will get.
    static int lowestFreeDescriptor() {
        const int fd = ::open("/dev/null", O_RDONLY);
        ::close(fd);
        return fd;
    }

    static bool isOpen(int fd) { return ::fcntl(fd, F_GETFD) != -1; }

    mode_t oldMask;
    std::string folder;
    std::string path;
};
}  // namespace

// Opening a path.

TEST_F(fxStdioStreamTest, typeDecidesDirections) {
    makeFile("x");
    const struct {
        fxStream::fxStreamType type;
        int reading, writing;
    } cases[] = {{forReading, 1, 0}, {forWriting, 0, 1}, {forBoth, 1, 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "type " << c.type);
        fxStdioStream stream(path.c_str(), c.type);
        EXPECT_EQ(0, stream.hasError());
        EXPECT_EQ(c.reading, stream.isReading());
        EXPECT_EQ(c.writing, stream.isWriting());
        EXPECT_EQ(c.type, stream.getType());
        EXPECT_EQ(0, stream.atEOF());
        EXPECT_EQ(0, stream.count);
    }
}

TEST_F(fxStdioStreamTest, typeDecidesOpenFlags) {
    makeFile("x");
    const struct {
        fxStream::fxStreamType type;
        int access;
    } cases[] = {{forReading, O_RDONLY}, {forWriting, O_WRONLY}, {forBoth, O_RDWR}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "type " << c.type);
        const int fd = lowestFreeDescriptor();
        fxStdioStream stream(path.c_str(), c.type);
        EXPECT_EQ(c.access, ::fcntl(fd, F_GETFL) & O_ACCMODE);
    }
}

TEST_F(fxStdioStreamTest, missingFileIsNotCreatedForReading) {
    fxStdioStream stream(path.c_str(), forReading, 0644);
    EXPECT_EQ(1, stream.hasError());
    EXPECT_FALSE(exists());
}

TEST_F(fxStdioStreamTest, missingFileIsCreatedForWriting) {
    for (const auto type : {forWriting, forBoth}) {
        SCOPED_TRACE(testing::Message() << "type " << type);
        {
            fxStdioStream stream(path.c_str(), type, 0640);
            EXPECT_EQ(0, stream.hasError());
        }
        EXPECT_EQ(0640u, permissions());
        ::unlink(path.c_str());
    }
}

TEST_F(fxStdioStreamTest, defaultPermissionsLetEverybodyReadAndWrite) {
    fxStdioStream stream(path.c_str(), forWriting);
    EXPECT_EQ(0666u, permissions());
}

TEST_F(fxStdioStreamTest, permissionsAreFilteredByTheUmask) {
    ::umask(027);
    fxStdioStream stream(path.c_str(), forWriting, 0666);
    EXPECT_EQ(0640u, permissions());
}

TEST_F(fxStdioStreamTest, unopenableFileSetsTheErrorFlag) {
    const std::string below = path + "/below";
    for (const auto type : {forReading, forWriting, forBoth}) {
        SCOPED_TRACE(testing::Message() << "type " << type);
        fxStdioStream stream(below.c_str(), type, 0666);
        EXPECT_EQ(1, stream.hasError());
        EXPECT_EQ(nullptr, fxStdioStreamLayout::fp(stream));
        EXPECT_EQ(type, stream.getType());
    }
}

TEST_F(fxStdioStreamTest, deliberateNothingIsTruncated) {
    for (const auto type : {forWriting, forBoth}) {
        SCOPED_TRACE(testing::Message() << "type " << type);
        makeFile("0123456789");
        {
            fxStdioStream stream(path.c_str(), type, 0666);
            EXPECT_EQ(1, stream.putBytes("abc", 3));
        }
        EXPECT_EQ("abc3456789", fileContent());
    }
}

TEST_F(fxStdioStreamTest, readWriteReadsAndWrites) {
    makeFile("0123456789");
    {
        fxStdioStream stream(path.c_str(), forBoth, 0666);
        char bytes[4] = "";
        EXPECT_EQ(1, stream.getBytes(bytes, 3));
        EXPECT_STREQ("012", bytes);
        std::fseek(fxStdioStreamLayout::fp(stream), 0, SEEK_CUR);
        EXPECT_EQ(1, stream.putBytes("ab", 2));
    }
    EXPECT_EQ("012ab56789", fileContent());
}

TEST_F(fxStdioStreamTest, deliberateOtherTypesOpenForReadingAndFail) {
    makeFile("x");
    fxStdioStream stream(path.c_str(), ofNoKind, 0666);
    EXPECT_EQ(1, stream.hasError());
    EXPECT_EQ(0, stream.isReading());
    EXPECT_EQ(0, stream.isWriting());
    EXPECT_EQ(ofNoKind, stream.getType());
    EXPECT_EQ("x", fileContent());
}

TEST_F(fxStdioStreamTest, deliberateOtherTypesCreateAMissingFile) {
    fxStdioStream stream(path.c_str(), ofNoKind, 0604);
    EXPECT_EQ(1, stream.hasError());
    EXPECT_EQ(0604u, permissions());
}

TEST_F(fxStdioStreamTest, pathThatCannotBeWrappedIsClosedAgain) {
    makeFile("x");
    const int fd = lowestFreeDescriptor();
    fxStdioStream stream(path.c_str(), ofNoKind, 0666);
    EXPECT_FALSE(isOpen(fd));
}

// Descriptors and open streams.

TEST_F(fxStdioStreamTest, descriptorIsWrappedAndClosed) {
    makeFile("x");
    const int fd = ::open(path.c_str(), O_RDONLY);
    {
        fxStdioStream stream(fd, forReading);
        EXPECT_EQ(0, stream.hasError());
        EXPECT_EQ(forReading, stream.getType());
        char c = 0;
        EXPECT_EQ(1, stream.getBytes(&c, 1));
        EXPECT_EQ('x', c);
    }
    EXPECT_FALSE(isOpen(fd));
}

TEST_F(fxStdioStreamTest, descriptorOfTheWrongDirectionSetsTheErrorFlag) {
    makeFile("x");
    for (const auto type : {forWriting, forBoth, ofNoKind}) {
        SCOPED_TRACE(testing::Message() << "type " << type);
        const int fd = ::open(path.c_str(), O_RDONLY);
        {
            fxStdioStream stream(fd, type);
            EXPECT_EQ(1, stream.hasError());
        }
        EXPECT_TRUE(isOpen(fd)) << "it still belongs to the caller";
        ::close(fd);
    }
}

TEST_F(fxStdioStreamTest, invalidDescriptorSetsTheErrorFlag) {
    for (const auto type : {forReading, forWriting, forBoth, ofNoKind}) {
        fxStdioStream stream(-1, type);
        EXPECT_EQ(1, stream.hasError()) << type;
    }
}

TEST_F(fxStdioStreamTest, openStreamIsAdoptedFlushedAndClosed) {
    std::FILE* f = std::fopen(path.c_str(), "w");
    const int fd = ::fileno(f);
    {
        fxStdioStream stream(f, forWriting);
        EXPECT_EQ(0, stream.hasError());
        EXPECT_EQ(forWriting, stream.getType());
        EXPECT_EQ(1, stream.putBytes("abc", 3));
    }
    EXPECT_FALSE(isOpen(fd));
    EXPECT_EQ("abc", fileContent());
}

TEST_F(fxStdioStreamTest, adoptedStreamIsTakenAsItIsWhateverTheType) {
    makeFile("x");
    fxStdioStream stream(std::fopen(path.c_str(), "r"), ofNoKind);
    EXPECT_EQ(0, stream.hasError());
    char c = 0;
    EXPECT_EQ(1, stream.getBytes(&c, 1));
}

TEST_F(fxStdioStreamTest, nullStreamSetsTheErrorFlag) {
    fxStdioStream stream(static_cast<std::FILE*>(nullptr), forReading);
    EXPECT_EQ(1, stream.hasError());
}

TEST_F(fxStdioStreamTest, everyTransferFailsWithoutAnOpenStream) {
    fxStdioStream stream(path.c_str(), forReading, 0666);
    char c = 'c';
    short s = 1;
    int i = 2;
    long l = 3;
    float f = 4;
    double d = 5;
    for (unsigned int n = 0; n < 3; ++n) {
        SCOPED_TRACE(n);
        EXPECT_EQ(0, stream.getBytes(&c, n));
        EXPECT_EQ(0, stream.getShorts(&s, n));
        EXPECT_EQ(0, stream.getInts(&i, n));
        EXPECT_EQ(0, stream.getLongs(&l, n));
        EXPECT_EQ(0, stream.getFloats(&f, n));
        EXPECT_EQ(0, stream.getDoubles(&d, n));
        EXPECT_EQ(0, stream.putBytes(&c, n));
        EXPECT_EQ(0, stream.putShorts(&s, n));
        EXPECT_EQ(0, stream.putInts(&i, n));
        EXPECT_EQ(0, stream.putLongs(&l, n));
        EXPECT_EQ(0, stream.putFloats(&f, n));
        EXPECT_EQ(0, stream.putDoubles(&d, n));
    }
    EXPECT_EQ('c', c);
    EXPECT_EQ(5, d);
}

// Transfers.

TEST_F(fxStdioStreamTest, bytesAreReadAsABlock) {
    makeFile("abcdef");
    fxStdioStream stream(path.c_str(), forReading, 0);
    char bytes[8] = "";
    EXPECT_EQ(1, stream.getBytes(bytes, 0));
    EXPECT_EQ(1, stream.getBytes(bytes, 4));
    EXPECT_STREQ("abcd", bytes);
    EXPECT_EQ(0, stream.getBytes(bytes, 3)) << "two are left";
}

#if !KELVOFXDS_LIBRARY_IS_CHECKED  // which takes such a number for a mistake

TEST_F(fxStdioStreamTest, itemsOfMoreBytesThanThereCanBeAreNotTransferred) {
    makeFile("abcdefgh");
    fxStdioStream stream(path.c_str(), forBoth, 0);
    for (unsigned int wraps : {0U, 1U}) {
        SCOPED_TRACE(wraps);
        short s = 1;
        int i = 2;
        double d = 5;
        EXPECT_EQ(0, stream.getShorts(&s, 0x80000000 + wraps));
        EXPECT_EQ(0, stream.getInts(&i, 0x40000000 + wraps));
        EXPECT_EQ(0, stream.getDoubles(&d, 0x20000000 + wraps));
        EXPECT_EQ(0, stream.putShorts(&s, 0x80000000 + wraps));
        EXPECT_EQ(0, stream.putInts(&i, 0x40000000 + wraps));
        EXPECT_EQ(0, stream.putDoubles(&d, 0x20000000 + wraps));
        EXPECT_EQ(5, d);
    }
    char bytes[9] = "";
    EXPECT_EQ(1, stream.getBytes(bytes, 8));
    EXPECT_STREQ("abcdefgh", bytes) << "nothing was read before, and nothing written";
}

#endif

TEST_F(fxStdioStreamTest, everyByteCanBeReadAndWrittenAlone) {
    {
        fxStdioStream stream(path.c_str(), forWriting, 0666);
        for (int i = 0; i < 256; ++i) {
            const char c = static_cast<char>(i);
            EXPECT_EQ(1, stream.putBytes(&c, 1)) << i;
        }
    }
    fxStdioStream stream(path.c_str(), forReading, 0);
    for (int i = 0; i < 256; ++i) {
        char c = static_cast<char>(~i);
        EXPECT_EQ(1, stream.getBytes(&c, 1)) << i;
        EXPECT_EQ(static_cast<char>(i), c);
    }
    char c = 'c';
    EXPECT_EQ(0, stream.getBytes(&c, 1));
    EXPECT_EQ('c', c) << "a failed read of one byte stores nothing";
}

TEST_F(fxStdioStreamTest, deliberateEndOfFileFlagIsNeverSet) {
    makeFile("");
    fxStdioStream stream(path.c_str(), forReading, 0);
    char bytes[2];
    EXPECT_EQ(0, stream.getBytes(bytes, 1));
    EXPECT_EQ(0, stream.getBytes(bytes, 2));
    EXPECT_EQ(0, stream.atEOF());
    EXPECT_EQ(0, stream.hasError());
}

TEST_F(fxStdioStreamTest, bytesAreWrittenAsABlock) {
    {
        fxStdioStream stream(path.c_str(), forWriting, 0666);
        EXPECT_EQ(1, stream.putBytes("", 0));
        EXPECT_EQ(1, stream.putBytes("a\0b", 3));
        EXPECT_EQ(1, stream.putBytes("c", 1));
    }
    EXPECT_EQ(std::string("a\0bc", 4), fileContent());
}

TEST_F(fxStdioStreamTest, itemsHaveTheirSizeAndTheHostsOrder) {
    const short shorts[] = {0x1234, -2};
    const int ints[] = {0x12345678, -3};
    const long longs[] = {0x23456789, -4};
    const float floats[] = {1.5f, -0.0f};
    const double doubles[] = {2.25, -1e300};
    {
        fxStdioStream stream(path.c_str(), forWriting, 0666);
        EXPECT_EQ(1, stream.putShorts(shorts, 2));
        EXPECT_EQ(1, stream.putInts(ints, 2));
        EXPECT_EQ(1, stream.putLongs(longs, 2));
        EXPECT_EQ(1, stream.putFloats(floats, 2));
        EXPECT_EQ(1, stream.putDoubles(doubles, 2));
        EXPECT_EQ(1, stream.putShorts(shorts, 0));
        EXPECT_EQ(1, stream.putInts(ints, 0));
        EXPECT_EQ(1, stream.putLongs(longs, 0));
        EXPECT_EQ(1, stream.putFloats(floats, 0));
        EXPECT_EQ(1, stream.putDoubles(doubles, 0));
    }
    const std::string expected = host<std::int16_t>(0x1234) + host<std::int16_t>(-2) +
                                 host<std::int32_t>(0x12345678) + host<std::int32_t>(-3) +
                                 host<std::int32_t>(0x23456789) + host<std::int32_t>(-4) +
                                 host(1.5f) + host(-0.0f) + host(2.25) + host(-1e300);
    EXPECT_EQ(44u, expected.size());
    EXPECT_EQ(dump(expected), dump(fileContent()));

    fxStdioStream stream(path.c_str(), forReading, 0);
    short s[2];
    int i[2];
    long l[2];
    float f[2];
    double d[2];
    EXPECT_EQ(1, stream.getShorts(s, 2) && s[0] == 0x1234 && s[1] == -2);
    EXPECT_EQ(1, stream.getInts(i, 2) && i[0] == 0x12345678 && i[1] == -3);
    EXPECT_EQ(1, stream.getLongs(l, 2) && l[0] == 0x23456789 && l[1] == -4);
    EXPECT_EQ(1, stream.getFloats(f, 2) && f[0] == 1.5f && host(f[1]) == host(-0.0f));
    EXPECT_EQ(1, stream.getDoubles(d, 2) && d[0] == 2.25 && d[1] == -1e300);
    EXPECT_EQ(1, stream.getShorts(s, 0));
    EXPECT_EQ(0, stream.getShorts(s, 1));
}

TEST_F(fxStdioStreamTest, itemsThatAreNotAllThereFail) {
    makeFile("1234567890");
    short s[6];
    int i[3];
    long l[3];
    float f[3];
    double d[2];
    EXPECT_EQ(0, fxStdioStream(path.c_str(), forReading, 0).getShorts(s, 6));
    EXPECT_EQ(0, fxStdioStream(path.c_str(), forReading, 0).getInts(i, 3));
    EXPECT_EQ(0, fxStdioStream(path.c_str(), forReading, 0).getLongs(l, 3));
    EXPECT_EQ(0, fxStdioStream(path.c_str(), forReading, 0).getFloats(f, 3));
    EXPECT_EQ(0, fxStdioStream(path.c_str(), forReading, 0).getDoubles(d, 2));
    EXPECT_EQ(1, fxStdioStream(path.c_str(), forReading, 0).getShorts(s, 5));
    EXPECT_EQ(1, fxStdioStream(path.c_str(), forReading, 0).getInts(i, 2));
    EXPECT_EQ(1, fxStdioStream(path.c_str(), forReading, 0).getDoubles(d, 1));
}

TEST_F(fxStdioStreamTest, systemErrorsFailTheTransfer) {
    makeFile("abc");
    const char bytes[] = {1, 2};
    const short s = 3;
    const int i = 4;
    const long l = 5;
    const float f = 6;
    const double d = 7;
    fxStdioStream readOnly(std::fopen(path.c_str(), "r"), forWriting);
    EXPECT_EQ(0, readOnly.putBytes(bytes, 1));
    EXPECT_EQ(0, readOnly.putBytes(bytes, 2));
    EXPECT_EQ(0, readOnly.putShorts(&s, 1));
    EXPECT_EQ(0, readOnly.putInts(&i, 1));
    EXPECT_EQ(0, readOnly.putLongs(&l, 1));
    EXPECT_EQ(0, readOnly.putFloats(&f, 1));
    EXPECT_EQ(0, readOnly.putDoubles(&d, 1));

    char target[2] = {8, 9};
    fxStdioStream writeOnly(std::fopen(path.c_str(), "a"), forReading);
    EXPECT_EQ(0, writeOnly.getBytes(target, 1));
    EXPECT_EQ(0, writeOnly.getBytes(target, 2));
    EXPECT_EQ(8, target[0]);
}
