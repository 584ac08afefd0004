// Runs scripts of operations on dictionaries and sets beside std::map and std::set.

#include "fuzz/options.h"
#include "tests/support/containerScript.h"

FUZZ_OPTIONS("")

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Script script(data, size);
    containerScript::run(script);
    return 0;
}
