#include "tests/support/regErrors.h"

#include "kelvofxds/pattern/fxRegEngine.h"

namespace {
Messages collected;
}  // namespace

void fxregerror(const char* message) { collected.push_back(message); }

Messages takeRegErrors() {
    Messages taken;
    taken.swap(collected);
    return taken;
}
