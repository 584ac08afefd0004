// dumping.h - showing streams in this process, as fxdump does.
#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "tools/fxdump/dump.h"

/// What came of showing a stream.
struct Shown {
    int outcome = 0;
    std::string out;
    std::string message;
};

/// Bytes that come `step` at a time.
class SlowSource : public fxdump::Source {
public:
    SlowSource(std::string all, std::size_t n) : bytes(std::move(all)), step(n) {}

protected:
    std::size_t read(char* at, std::size_t room) override {
        const std::size_t n = std::min(std::min(step, room), bytes.size() - position);
        std::memcpy(at, bytes.data() + position, n);
        position += n;
        return n;
    }

private:
    const std::string bytes;
    const std::size_t step;
    std::size_t position = 0;
};

inline Shown shown(const fxdump::Options& options, fxdump::Source& source,
                   const char* name = "file") {
    Shown result;
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* const file = ::open_memstream(&text, &size);
    fxdump::Output out(file, false);
    fxdump::Dump dump(options, out);
    result.outcome = dump.show(source, name, result.message);
    dump.finish();
    std::fclose(file);
    result.out.assign(text, size);
    std::free(text);
    return result;
}

inline Shown shown(fxdump::Show show, const std::string& bytes, bool readerWords = false) {
    fxdump::Options options;
    options.show = show;
    options.readerWords = readerWords;
    fxdump::MemorySource source(bytes.data(), bytes.size());
    return shown(options, source);
}

/// All the ways of showing.
inline constexpr fxdump::Show everyShow[] = {fxdump::Show::list,  fxdump::Show::hex,
                                             fxdump::Show::json,  fxdump::Show::dot,
                                             fxdump::Show::stats, fxdump::Show::verify};
