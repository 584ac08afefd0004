#include "kelvofxds/pattern/fxRegMemoryInternal.h"

void fxRegMemory::release() {
    for (unsigned int i = 0; i < count; ++i)
        std::free(rows[i]);
    std::free(rows);
}

void fxRegMemory::start(unsigned int nodes, std::size_t length) {
    if (rows)
        return;
    rowSize = length / wordBits + 1;
    count = nodes;
    rows = static_cast<std::uint32_t**>(std::calloc(nodes, sizeof *rows));
}

// Null, and nothing is remembered of the node, if there is no memory.
std::uint32_t* fxRegMemory::addRow(unsigned int node) {
    rows[node] = static_cast<std::uint32_t*>(std::calloc(rowSize, sizeof **rows));
    return rows[node];
}
