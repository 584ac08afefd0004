// Edits, takes apart and compares strings as the input says, beside std::string.

#include "fuzz/options.h"
#include "tests/support/stringScript.h"

FUZZ_OPTIONS("")

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Script script(data, size);
    stringScript::run(script);
    return 0;
}
