// compiledBlock.h - compiled expressions that release themselves.
#pragma once

#include <cstdlib>
#include <memory>
#include <string>

#include "kelvofxds/pattern/fxRegEngine.h"

struct FreeBlock {
    void operator()(fxregexp* block) const { std::free(block); }
};

/// A compiled expression, or null.
using Compiled = std::unique_ptr<fxregexp, FreeBlock>;

inline Compiled compiled(const std::string& pattern) {
    return Compiled(fxregcomp(pattern.c_str()));
}
