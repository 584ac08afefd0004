// fxRegCode.cpp - from the bytes of a program to nodes; see fxRegCodeInternal.h.

#include "kelvofxds/pattern/fxRegCodeInternal.h"

#include <cstdlib>
#include <cstring>

namespace {

// What the check knows of each place in a program: too much for the stack of a
// small thread. One decoding at a time has those that are always there.
class Marks {
public:
    Marks() : isShared(!sharedIsInUse.test_and_set(std::memory_order_acquire)) {
        marks = isShared ? shared : static_cast<unsigned char*>(std::malloc(sizeof shared));
    }
    Marks(const Marks&) = delete;
    Marks& operator=(const Marks&) = delete;
    ~Marks() {
        if (isShared)
            sharedIsInUse.clear(std::memory_order_release);
        else
            std::free(marks);
    }

    unsigned char* get() const { return marks; }  // null without memory

private:
    static unsigned char shared[fxRegSizeLimit];
    static std::atomic_flag sharedIsInUse;

    bool isShared;
    unsigned char* marks;
};

unsigned char Marks::shared[fxRegSizeLimit];
std::atomic_flag Marks::sharedIsInUse = ATOMIC_FLAG_INIT;

bool hasText(unsigned char op) { return op != OP_ANY && fxRegIsSimple(op); }

bool isKnownOp(unsigned char op) { return op <= OP_WORDEND || fxRegIsOpen(op) || fxRegIsClose(op); }

}  // namespace

const char* fxRegCode::assign(const fxregexp& prog, unsigned int size) {
    if (length != 0)
        forget();
    const char* const damaged = "corrupted program";
    const char* const noMemory = "out of space";
    const Marks marks;
    if (!marks.get())
        return noMemory;
    const unsigned int last = fxRegLastNode(prog, size, marks.get());
    if (last == 0)
        return damaged;
    const unsigned int used = last + fxRegNodeSize < size ? last + fxRegNodeSize : size;
    if (!fxRegHintsAreInside(prog, used))
        return damaged;
    // What is behind the last node counts too if that is not the end.
    canBeKept = used <= mostBytes && fxRegOp(prog.program + last) == OP_END;
    if (canBeKept)
        std::memcpy(bytes, prog.program, used);
    if (!readNodes(canBeKept ? bytes : prog.program, marks.get(), last))
        return noMemory;
    length = used;
    startchar = prog.startchar;
    hasMust = prog.must != nullptr;
    mustAt = fxRegMustOffset(prog);
    mustLength = prog.mustlen;
    analyse();
    return nullptr;
}

void fxRegCode::forget() {
    if (nodes != own)
        std::free(nodes);
    length = 0;
}

// False without memory for them.
bool fxRegCode::readNodes(const char* program, const unsigned char* marked, unsigned int last) {
    count = 0;
    for (unsigned int at = 1; at <= last; ++at)
        count += marked[at] & fxRegNodeMark;
    nodes = own;
    if (count > ownNodes)
        nodes = static_cast<fxRegNode*>(std::malloc(count * sizeof *nodes));
    if (!nodes)
        return false;
    unsigned int index = 0;
    for (unsigned int at = 1; at <= last; ++at) {
        if (marked[at] & fxRegNodeMark) {
            std::memset(&nodes[index], 0, sizeof nodes[index]);
            nodes[index++].offset = static_cast<std::uint16_t>(at);
        }
    }
    isDamaged = hasLoops = hasStart = false;
    for (unsigned int i = 0; i < count; ++i)
        read(nodes[i], program);
    // Operands are behind their nodes, so that those of branches are straight already.
    for (unsigned int i = count; i-- > 0;) {
        if (nodes[i].op == OP_BRANCH)
            nodes[i].operand = straight(nodes[i].operand);
    }
    first = straight(nodes);
    for (unsigned int i = 0; i < count; ++i) {
        fxRegNode& node = nodes[i];
        if (node.next && node.next->isRepeated && !node.isRepeated)
            isDamaged = true;
        node.next = straight(node.next);
    }
    return true;
}

void fxRegCode::read(fxRegNode& node, const char* program) {
    // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): each mark is a node.
    const char* at = program + node.offset;
    node.op = fxRegOp(at);
    isDamaged = isDamaged || !isKnownOp(node.op);
    hasLoops = hasLoops || node.op == OP_BACK;
    hasStart = hasStart || node.op == OP_BOL;
    if (node.op == OP_END || !isKnownOp(node.op))
        return;
    if (const unsigned int link = fxRegLink(at))
        node.next = nodeAt(node.op == OP_BACK ? node.offset - link : node.offset + link);
    else if (!node.isRepeated)
        isDamaged = true;
    if (hasText(node.op)) {
        node.text = fxRegOperand(at);
        node.length = static_cast<std::uint16_t>(std::strlen(node.text));
    }
    fxRegNode* const operand = node.op == OP_BRANCH || fxRegIsRepetition(node.op)
                                   ? nodeAt(node.offset + fxRegNodeSize)
                                   : nullptr;
    node.operand = operand;
    if (node.op == OP_BRANCH && fxRegIsBranch(program + node.next->offset))
        node.other = node.next;
    if (fxRegIsRepetition(node.op)) {
        operand->isRepeated = true;
        if (!fxRegIsSimple(fxRegOp(program + operand->offset)))
            isDamaged = true;
    }
}

fxRegNode* fxRegCode::nodeAt(unsigned int offset) const {
    unsigned int low = 0, high = count - 1;
    while (low < high) {
        const unsigned int middle = (low + high) / 2;
        if (nodes[middle].offset < offset)
            low = middle + 1;
        else
            high = middle;
    }
    return nodes + low;
}

// The node that a lone alternative leads to.
// Requires: its own operand is straight.
const fxRegNode* fxRegCode::straight(const fxRegNode* node) {
    return node && node->op == OP_BRANCH && !node->other ? node->operand : node;
}

// The programs that are kept, by the addresses of their blocks. One that is not
// what it was at its address is decoded again.
namespace {

struct Kept {
    static const unsigned int ways = 4;
    std::atomic<const fxregexp*> owners[ways];
    fxRegCode codes[ways];
    std::atomic<unsigned int> next;  // to be given to another program
};

const unsigned int keptBits = 4;
Kept kept[1U << keptBits];

fxRegCode& placeOf(const fxregexp& prog) {
    const std::uint32_t address =
        static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(&prog) / 8);
    Kept& places = kept[address * 0x9E3779B1U >> (32 - keptBits)];
    for (unsigned int way = 0; way < Kept::ways; ++way) {
        if (places.owners[way].load(std::memory_order_relaxed) == &prog)
            return places.codes[way];
    }
    const unsigned int way = places.next.fetch_add(1, std::memory_order_relaxed) % Kept::ways;
    places.owners[way].store(&prog, std::memory_order_relaxed);
    return places.codes[way];
}

}  // namespace

fxRegCodeLease::fxRegCodeLease(const fxregexp& prog) : leased(&placeOf(prog)), isOwned(false) {
    if (leased->isInUse.exchange(true, std::memory_order_acquire)) {
        isOwned = true;
        leased = static_cast<fxRegCode*>(std::calloc(1, sizeof *leased));
        if (!leased) {
            fxregerror("out of space");
            return;
        }
    }
    const unsigned int size = fxRegSizeOf(prog);
    if (leased->isOf(prog, size))
        return;
    if (const char* error = leased->assign(prog, size)) {
        end();
        leased = nullptr;
        fxregerror(error);
    }
}

// Not for another search.
void fxRegCodeLease::discard() {
    leased->release();
    std::free(leased);
}
