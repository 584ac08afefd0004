// pageEnd.h - memory behind which there is none.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>

/// Bytes that end where a page does: whoever reads more of them ends the process.
class PageEnd {
public:
    /// For up to `most` bytes.
    explicit PageEnd(std::size_t most) {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        size = (most + page - 1) / page * page;
        void* const room =
            mmap(nullptr, size + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (room == MAP_FAILED)
            std::abort();
        start = static_cast<char*>(room);
        whole = size + page;
        mprotect(start + size, page, PROT_NONE);
    }
    PageEnd(const PageEnd&) = delete;
    PageEnd& operator=(const PageEnd&) = delete;
    ~PageEnd() { munmap(start, whole); }

    /// Puts `bytes` there, without a NUL; valid until the next call.
    char* put(const std::string& bytes) {
        char* const at = start + size - bytes.size();
        std::memcpy(at, bytes.data(), bytes.size());
        return at;
    }
    /// The same with a NUL behind them.
    char* putText(const std::string& text) { return put(text + '\0'); }

private:
    char* start;
    std::size_t size;   // bytes that can be read
    std::size_t whole;  // with the page behind them
};
