// Runs scripts of operations on arrays of numbers and of strings beside std::vector.

#include "fuzz/options.h"
#include "tests/support/arrayScript.h"

FUZZ_OPTIONS("")

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Script script(data, size);
    arrayScript::run(script);
    return 0;
}
