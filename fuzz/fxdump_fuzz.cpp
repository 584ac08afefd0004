// Shows whatever bytes it is given in the ways that fxdump has.
//
// Of the first byte bit 0 says whether standard streams have the reader's words,
// and bit 1 whether the header of a graph stream, or bit 2 that of a standard one,
// is put before the rest; bit 3 makes it a big-endian host's. Bit 4 gives it
// colours, and the three upper ones are the way; 6 and 7 are two that have to agree
// whether the stream is sound.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "fuzz/options.h"
#include "tests/support/script.h"
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
bool isSound(fxdump::Show view, bool readerWords, const std::string& bytes, fxdump::Output& out) {
    fxdump::Options options;
    options.show = view;
    options.readerWords = readerWords;
    fxdump::Dump dump(options, out);
    fxdump::MemorySource source(bytes.data(), bytes.size());
    std::string message;
    const fxdump::Outcome outcome = dump.show(source, "input", message);
    dump.finish();
    require(outcome == (message.empty() ? fxdump::isSound : fxdump::isDamaged));
    require(message.find('\n') == std::string::npos);
    return message.empty();
}

const fxdump::Show views[] = {fxdump::Show::list, fxdump::Show::hex,   fxdump::Show::json,
                              fxdump::Show::dot,  fxdump::Show::stats, fxdump::Show::verify};
const unsigned int viewCount = sizeof views / sizeof views[0];
}  // namespace

FUZZ_OPTIONS("")

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static std::FILE* const nowhere = std::fopen("/dev/null", "w");
    if (size == 0)
        return 0;
    const std::string bytes =
        headerFor(*data) + std::string(reinterpret_cast<const char*>(data + 1), size - 1);
    fxdump::Output out(nowhere, (*data & 16) != 0);
    const bool readerWords = (*data & 1) != 0;
    const unsigned int way = *data >> 5;
    const auto soundIn = [&](fxdump::Show view) { return isSound(view, readerWords, bytes, out); };
    if (way < viewCount)
        soundIn(views[way]);
    else if (way == viewCount)
        require(soundIn(fxdump::Show::list) == soundIn(fxdump::Show::json));
    else  // whose rules go further
        require(!soundIn(fxdump::Show::verify) || soundIn(fxdump::Show::dot));
    return 0;
}
