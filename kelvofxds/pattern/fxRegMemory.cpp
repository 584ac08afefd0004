#include "kelvofxds/pattern/fxRegMemoryInternal.h"

namespace {
const std::size_t mostOffsets = 0x10000;  // more than any node's
}  // namespace

fxRegMemory::~fxRegMemory() {
    for (std::size_t i = 0; i < used; ++i)
        std::free(rows[i]);
    std::free(rows);
}

void fxRegMemory::start(std::size_t length) {
    if (rows)
        return;
    rowSize = length / wordBits + 1;
    rows = static_cast<std::uint32_t**>(std::calloc(mostOffsets, sizeof *rows));
}

// Null, and nothing is remembered of the node, if there is no memory.
std::uint32_t* fxRegMemory::addRow(std::size_t offset) {
    rows[offset] = static_cast<std::uint32_t*>(std::calloc(rowSize, sizeof **rows));
    if (offset >= used)
        used = offset + 1;
    return rows[offset];
}
