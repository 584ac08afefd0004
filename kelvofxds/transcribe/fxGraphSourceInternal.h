// fxGraphSourceInternal.h - how a graph reader gets at its stream's bytes.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "kelvofxds/core/fxShortCopyInternal.h"
#include "kelvofxds/core/fxTableOfInternal.h"
#include "kelvofxds/transcribe/fxChecksumInternal.h"
#include "kelvofxds/transcribe/fxMemoryStream.h"
#include "kelvofxds/transcribe/fxStdioStreamInternal.h"

/// Reads a stream, counts its bytes and sums them up. The library's own streams
/// are read from their buffers, every other one by getBytes, of as many bytes as
/// are needed and no more.
///
/// Bytes in a buffer are summed up when it is left, so that it takes few calls.
class fxGraphSource {
public:
    fxGraphSource()
        : next(nullptr),
          end(nullptr),
          unsummed(nullptr),
          headAt(nullptr),
          stream(nullptr),
          memory(nullptr),
          file(nullptr),
          passed(0) {}
    fxGraphSource(const fxGraphSource&) = delete;
    fxGraphSource& operator=(const fxGraphSource&) = delete;

    /// While it lives, a stream is read.
    class Use {
    public:
        Use(fxGraphSource& s, fxStream* stream) : source(s) { source.open(stream); }
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;
        ~Use() { source.close(); }

    private:
        fxGraphSource& source;
    };

    /// Reads `n` bytes.
    bool get(char* to, unsigned int n) {
        if (n > static_cast<std::size_t>(end - next))
            return getMore(to, n);
        fxCopyShort(to, next, n);
        next += n;
        return true;
    }

    /// The same, also where they do not lie ready in memory.
    [[gnu::noinline]] bool getMore(char* to, unsigned int n) {
        if (lacks(n))
            return false;
        for (;;) {
            const unsigned int there = std::min(n, static_cast<unsigned int>(end - next));
            fxCopyShort(to, next, there);
            next += there;
            to += there;
            n -= there;
            if (n == 0)
                return true;
            leaveWindow();
            setWindow(nullptr, 0);
            if (!isBuffered() || n >= direct)
                return getDirectly(to, n);
            if (!fillWindow())
                return false;
        }
    }

    /// Takes `n` bytes that lie ready in memory; null, and nothing is taken, if
    /// they do not. They stay there until more is read.
    const char* ready(unsigned int n) {
        if (n > static_cast<std::size_t>(end - next))
            return nullptr;
        const char* const from = next;
        next += n;
        return from;
    }

    /// Bytes read of all streams.
    std::uint64_t count() const { return passed + static_cast<std::size_t>(next - unsummed); }

    /// The bytes at a head, if there are `n` of them ready in memory, else null;
    /// none is taken. The sum before it may be asked for until more is read.
    const char* peekHead(unsigned int n) {
        headAt = next;
        return n <= static_cast<std::size_t>(end - next) ? next : nullptr;
    }
    /// Takes the bytes up to `at`, from where peekHead has said.
    void skipTo(const char* at) { next = at; }
    /// Reads a byte before which the sum may be asked for, until more is read.
    bool getHead(unsigned char& head) {
        headAt = next;
        if (next == end) {
            headAt = nullptr;
            addUnsummed();
            beforeHead = checksum;
        }
        return get(reinterpret_cast<char*>(&head), 1);
    }
    /// The sum of the bytes before the head, since it was cleared.
    std::uint32_t sumBeforeHead() const {
        fxChecksum before = beforeHead;
        if (headAt) {
            before = checksum;
            before.add(unsummed, static_cast<std::size_t>(headAt - unsummed));
        }
        return before.value();
    }
    void clearSum() {
        addUnsummed();
        checksum.clear();
    }

    /// Whether the stream is known to have less than `n` bytes left.
    bool lacks(unsigned int n) const { return memory && n > static_cast<std::size_t>(end - next); }

private:
    static constexpr unsigned int direct = 4096;  // not worth a stop in a buffer

    void open(fxStream* s) {
        stream = s;
        file = fxOwnFile(s);
        memory = ownMemory(s);
        if (memory)
            setWindow(memory->bytes + memory->place, memory->used - memory->place);
        else
            openFile();
    }

    // Leaves the stream behind the bytes that were taken.
    void close() {
        leaveWindow();
        if (memory)
            memory->place = static_cast<unsigned int>(next - memory->bytes);
        setWindow(nullptr, 0);
    }

    // A function of its own, so that tests/helgrind.supp can name it.
    [[gnu::noinline]] static fxMemoryStream* ownMemory(fxStream* s) {
        static const void* const ownTable = [] {
            const fxMemoryStream own;
            return fxTableOf(&own);
        }();
        return s && fxTableOf(s) == ownTable ? static_cast<fxMemoryStream*>(s) : nullptr;
    }

    void setWindow(const char* from, std::size_t n) {
        next = unsummed = from;
        end = from + n;
    }

    void addUnsummed() {
        const std::size_t n = static_cast<std::size_t>(next - unsummed);
        checksum.add(unsummed, n);
        passed += n;
        unsummed = next;
    }

    // What is in a file's buffer. Where that is, this C library tells every
    // program that is compiled with it, by its getc_unlocked.
    void openFile() {
        setWindow(nullptr, 0);
#ifdef __GLIBC__
        if (file)
            setWindow(file->_IO_read_ptr,
                      static_cast<std::size_t>(file->_IO_read_end - file->_IO_read_ptr));
#endif
    }

    void leaveWindow() {
        addUnsummed();
#ifdef __GLIBC__
        if (file && next)
            file->_IO_read_ptr += next - file->_IO_read_ptr;
#endif
    }

    // Fills a file's buffer. False at the end of the file.
    bool fillWindow() {
        const int c = fxNextOf(file);
        if (c == EOF)
            return false;
        std::ungetc(c, file);
        openFile();
        return next != end;
    }

    // Whether its buffer can be seen.
    bool isBuffered() const {
#ifdef __GLIBC__
        return file != nullptr;
#else
        return false;
#endif
    }

    bool getDirectly(char* to, unsigned int n) {
        if (!(file ? fxReadFrom(file, to, n) == n : stream->getBytes(to, n) != 0))
            return false;
        checksum.add(to, n);
        passed += n;
        return true;
    }

    const char* next;       // the next byte in memory
    const char* end;        // behind the last one
    const char* unsummed;   // the first that is not in the sum
    const char* headAt;     // where the head was, if it was in memory
    fxChecksum beforeHead;  // else the sum before it
    fxStream* stream;
    fxMemoryStream* memory;  // the same; null while any other is read
    std::FILE* file;         // the library's own stream's; null while any other is read
    std::uint64_t passed;    // bytes before `unsummed`
    fxChecksum checksum;
};
