#include "kelvofxds/pattern/fxRegMemoryInternal.h"

#include <cstring>

namespace {

// Whether several ways can lead to the node, or on from it.
bool isRemembered(unsigned char op) {
    return op == OP_BRANCH || op == OP_STAR || op == OP_PLUS || op == OP_NOTHING || op > OP_CLOSE;
}

// The node that lies behind `node` in the program.
const char* nodeBehind(const char* node) {
    const char* operand = fxRegOperand(node);
    switch (fxRegOp(node)) {
        case OP_EXACT:
        case OP_ANYOF:
        case OP_ANYBUT:
            return operand + std::strlen(operand) + 1;
        default:
            return operand;
    }
}

}  // namespace

// OP_END is the last node of a program.
void fxRegMemory::start(const char* program, std::size_t length) {
    const char* end = program + 1;
    std::size_t count = 0;  // rows
    for (; fxRegOp(end) != OP_END; end = nodeBehind(end))
        count += isRemembered(fxRegOp(end));
    rowSize = length / wordBits + 1;
    if (rowSize > SIZE_MAX / sizeof *bits / (count + 1))
        return;
    rows = static_cast<std::uint16_t*>(
        std::calloc(static_cast<std::size_t>(end - program), sizeof *rows));
    if (!rows)
        return;
    std::uint16_t row = 0;
    for (const char* node = program + 1; node != end; node = nodeBehind(node)) {
        if (isRemembered(fxRegOp(node)))
            rows[node - program] = row++;
    }
    bits = static_cast<std::uint32_t*>(std::calloc((count + 1) * rowSize, sizeof *bits));
}
