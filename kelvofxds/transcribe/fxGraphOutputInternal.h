// fxGraphOutputInternal.h - the records of a graph stream on their way out.
#pragma once

#include <cstdlib>
#include <cstring>

#include "kelvofxds/core/fxShortCopyInternal.h"
#include "kelvofxds/transcribe/fxBinaryFormatInternal.h"
#include "kelvofxds/transcribe/fxChecksumInternal.h"
#include "kelvofxds/transcribe/fxStream.h"

/// Collects records and gives them to a stream in large pieces; what is large
/// itself goes there from where it lies. Every operation returns false when the
/// stream does not take it.
///
/// The last record is open until the next one begins: its payload is still
/// growing, right behind a head with a length of one byte.
class fxGraphOutput {
public:
    fxGraphOutput()
        : bytes(nullptr), used(0), tag(noRecord), headAt(0), payloadAt(0), untouched(true) {}
    fxGraphOutput(const fxGraphOutput&) = delete;
    fxGraphOutput& operator=(const fxGraphOutput&) = delete;
    ~fxGraphOutput() { std::free(bytes); }

    /// Of a type's name with its NUL, in bytes.
    static const unsigned int longestName = 16 * 1024;

    /// Memory to collect in; false when there is none.
    bool prepare() {
        if (!bytes)
            bytes = static_cast<char*>(std::malloc(size));
        return bytes != nullptr;
    }

    /// Forgets everything that has not been given to the stream.
    void clear() {
        used = 0;
        tag = noRecord;
        sum.clear();
        untouched = true;
    }

    /// Whether the stream has nothing of the root.
    bool isUntouched() const { return untouched; }

    /// Opens a record, whose words go with it.
    template <class... Words>
    bool begin(fxStream& stream, unsigned int nextTag, Words... words) {
        if (!makeRoom(stream, fxBinaryFormat::mostHeadBytes))
            return false;
        open(nextTag);
        char* at = bytes + used;
        ((at = fxBinaryFormat::putWord(at, words)), ...);
        used = payloadAt = static_cast<unsigned int>(at - bytes);
        return true;
    }

    /// Adds `n` bytes to the open record's payload; what does not fit into it goes
    /// on in records 0.
    bool add(fxStream& stream, const char* from, unsigned int n) {
        if (n <= size - used - slack) {
            fxCopyShort(bytes + used, from, n);
            used += n;
            return true;
        }
        return addMuch(stream, from, n);
    }

    /// Writes the record of a type, with the `n` bytes of its name and the word of
    /// its version. False, too, for a name beyond longestName.
    bool addType(fxStream& stream, std::uint32_t number, const char* name, unsigned int n,
                 std::uint32_t version) {
        if (n > longestName || !makeRoom(stream, fxBinaryFormat::mostHeadBytes + n))
            return false;
        close();
        char* at = fxBinaryFormat::putHead(bytes + used, fxOT_Type, sizeof version);
        at = fxBinaryFormat::putWord(at, number);
        std::memcpy(at, name, n);
        std::memcpy(at + n, &version, sizeof version);
        used =
            static_cast<unsigned int>(at + n - bytes) + static_cast<unsigned int>(sizeof version);
        return true;
    }

    /// Writes the whole body of a block.
    bool addBlock(fxStream& stream, unsigned int blockTag, std::uint32_t number, const char* from,
                  unsigned int n) {
        if (n >= much)
            return addLongBlock(stream, blockTag, number, from, n);
        return begin(stream, blockTag, number, n) && add(stream, from, n);
    }

    /// Begins a root that goes on with the numbers of the one before.
    void addContinuation() { bytes[used++] = fxOT_Data; }

    /// Closes the root: its checksum, and all that is left goes to the stream.
    bool end(fxStream& stream) {
        if (!handOver(stream))
            return false;
        char* at = fxBinaryFormat::putHead(bytes, fxBinaryFormat::rootEndTag, 0);
        at = fxBinaryFormat::putWord(at, sum.value());
        sum.clear();
        if (!stream.putBytes(bytes, static_cast<unsigned int>(at - bytes)))
            return false;
        untouched = true;
        return true;
    }

private:
    static const unsigned int size = 32 * 1024;  // bytes
    static const unsigned int slack = 16;        // a head becomes longer by 3 at most
    static const unsigned int much = 4096;       // worth going out from where it lies
    static const unsigned int noRecord = ~0U;

    void open(unsigned int nextTag) {
        close();
        tag = nextTag;
        headAt = used;
        used += 2;  // head and length, as if there were 1 to 255 bytes
    }

    // Gives the open record the length that it has.
    void close() {
        if (tag == noRecord)
            return;
        const unsigned int payload = used - payloadAt;
        const unsigned int shortHead = headAt + 2;
        if (payload != 0 && payload <= 0xFF) {
            fxBinaryFormat::putHead(bytes + headAt, tag, payload);
        } else if (payload == 0 && tag == fxOT_Data) {
            used = headAt;
        } else {
            char head[fxBinaryFormat::mostHeadBytes];
            const unsigned int n =
                static_cast<unsigned int>(fxBinaryFormat::putHead(head, tag, payload) - head);
            std::memmove(bytes + headAt + n, bytes + shortHead, used - shortHead);
            std::memcpy(bytes + headAt, head, n);
            used = used + n - 2;
        }
        tag = noRecord;
    }

    bool makeRoom(fxStream& stream, unsigned int n) {
        return used + n + 2 * slack <= size || handOver(stream);
    }

    bool put(fxStream& stream, const char* from, unsigned int n) {
        sum.add(from, n);
        untouched = false;
        return stream.putBytes(from, n) != 0;
    }

    // Gives the stream what there is. The open record is closed.
    bool handOver(fxStream& stream) {
        close();
        const unsigned int n = used;
        used = 0;
        return n == 0 || put(stream, bytes, n);
    }

    [[gnu::noinline]] bool addMuch(fxStream& stream, const char* from, unsigned int n) {
        return handOver(stream) && putPieces(stream, from, n) && begin(stream, fxOT_Data) &&
               (n == 0 || add(stream, from, n));
    }

    // Puts records 0 with the bytes at `from`, as long as it is worth while.
    bool putPieces(fxStream& stream, const char*& from, unsigned int& n) {
        while (n >= much) {
            char head[fxBinaryFormat::mostHeadBytes];
            const unsigned int piece = pieceOf(n);
            const char* const end = fxBinaryFormat::putHead(head, fxOT_Data, piece);
            if (!put(stream, head, static_cast<unsigned int>(end - head)) ||
                !put(stream, from, piece))
                return false;
            from += piece;
            n -= piece;
        }
        return true;
    }

    static unsigned int pieceOf(unsigned int n) {
        return n < fxBinaryFormat::mostGraphPayload ? n : fxBinaryFormat::mostGraphPayload;
    }

    [[gnu::noinline]] bool addLongBlock(fxStream& stream, unsigned int blockTag,
                                        std::uint32_t number, const char* from, unsigned int n) {
        if (!makeRoom(stream, fxBinaryFormat::mostHeadBytes))
            return false;
        close();
        const unsigned int piece = pieceOf(n);
        char* at = fxBinaryFormat::putHead(bytes + used, blockTag, piece);
        at = fxBinaryFormat::putWord(fxBinaryFormat::putWord(at, number), n);
        used = static_cast<unsigned int>(at - bytes);
        if (!handOver(stream) || !put(stream, from, piece))
            return false;
        from += piece;
        n -= piece;
        return putPieces(stream, from, n) && begin(stream, fxOT_Data) && add(stream, from, n);
    }

    char* bytes;             // owned; null until it is used
    unsigned int used;       // bytes of it
    unsigned int tag;        // of the open record
    unsigned int headAt;     // where it begins
    unsigned int payloadAt;  // where its payload begins
    bool untouched;          // the stream has nothing of the root
    fxChecksum sum;          // of what the stream has of this root
};
