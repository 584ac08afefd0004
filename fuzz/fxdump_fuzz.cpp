// Shows whatever bytes it is given in every way that fxdump has.
//
// Of the first byte bit 0 says whether standard streams have the reader's words,
// and bit 1 whether the header of a graph stream, or bit 2 that of a standard one,
// is put before the rest; bit 3 makes it a big-endian host's.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tools/fxdump/dump.h"

namespace {
std::string headerFor(unsigned int choice) {
    const bool isBig = (choice & 8) != 0;
    const std::string marks = isBig ? std::string("\x11\x22\x33\x44\x55\x66", 6)
                                    : std::string("\x22\x11\x66\x55\x44\x33", 6);
    if ((choice & 2) != 0)
        return std::string("fxGraphWriter\0ieee\0", 19) + marks;
    if ((choice & 4) != 0)
        return std::string("fxBinaryWriter\0ieee\0", 20) + marks;
    return "";
}

// The outcome has to fit to what is said.
void show(fxdump::Show view, bool readerWords, const std::string& bytes, fxdump::Output& out) {
    fxdump::Options options;
    options.show = view;
    options.readerWords = readerWords;
    fxdump::Dump dump(options, out);
    fxdump::MemorySource source(bytes.data(), bytes.size());
    std::string message;
    const fxdump::Outcome outcome = dump.show(source, "input", message);
    dump.finish();
    if (outcome != (message.empty() ? fxdump::isSound : fxdump::isDamaged) ||
        message.find('\n') != std::string::npos)
        std::abort();
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static std::FILE* const nowhere = std::fopen("/dev/null", "w");
    if (size == 0)
        return 0;
    const std::string bytes =
        headerFor(*data) + std::string(reinterpret_cast<const char*>(data + 1), size - 1);
    fxdump::Output out(nowhere, (*data & 16) != 0);
    for (const fxdump::Show view : {fxdump::Show::list, fxdump::Show::hex, fxdump::Show::json,
                                    fxdump::Show::dot, fxdump::Show::stats, fxdump::Show::verify})
        show(view, (*data & 1) != 0, bytes, out);
    return 0;
}
