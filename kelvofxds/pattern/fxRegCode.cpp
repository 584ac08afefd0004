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

const char* fxRegCode::assign(const fxregexp& prog, unsigned int size, bool isCheck) {
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
    if (isCheck)
        return nullptr;
    if (!takeMemory(marks.get(), last, used))
        return noMemory;
    // What is behind the last node counts too if that is not the end.
    isWhole = fxRegOp(prog.program + last) == OP_END;
    if (isWhole)
        std::memcpy(bytes, prog.program, used);
    readNodes(isWhole ? bytes : prog.program, marks.get(), last);
    length = used;
    startchar = prog.startchar;
    hasMust = prog.must != nullptr;
    mustAt = fxRegMustOffset(prog);
    mustLength = prog.mustlen;
    assumeLittle();
    return nullptr;
}

namespace {
const std::size_t mostKept = std::size_t(4) << 20;  // bytes of all blocks that are kept
std::atomic<std::size_t> keptBytes(0);
}  // namespace

void fxRegCode::forget() {
    std::free(block);
    keptBytes.fetch_sub(counted, std::memory_order_relaxed);
    counted = 0;
    block = nullptr;
    length = 0;
}

// Keeps the block if there is room.
void fxRegCode::releaseBlock() {
    if (isWhole && counted != 0)
        return;
    const std::size_t size = count * sizeof *nodes + length;
    if (isWhole && keptBytes.fetch_add(size, std::memory_order_relaxed) + size <= mostKept) {
        counted = size;
        return;
    }
    if (isWhole)
        keptBytes.fetch_sub(size, std::memory_order_relaxed);
    forget();
}

// For the nodes and the bytes; false if there is none.
bool fxRegCode::takeMemory(const unsigned char* marked, unsigned int last, unsigned int used) {
    count = 0;
    for (unsigned int at = 1; at <= last; ++at)
        count += marked[at] & fxRegNodeMark;
    nodes = own;
    bytes = ownText;
    if (count > ownNodes || used > ownBytes) {
        block = std::malloc(count * sizeof *nodes + used);
        if (!block)
            return false;
        nodes = static_cast<fxRegNode*>(block);
        bytes = reinterpret_cast<char*>(nodes + count);
    }
    return true;
}

void fxRegCode::readNodes(const char* program, const unsigned char* marked, unsigned int last) {
    std::memset(nodes, 0, count * sizeof *nodes);
    unsigned int index = 0;
    for (unsigned int at = 1; at <= last; ++at) {
        if (marked[at] & fxRegNodeMark)
            nodes[index++].offset = static_cast<std::uint16_t>(at);
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
    if (hasText(node.op)) {
        node.text = fxRegOperand(at);
        node.length = static_cast<std::uint16_t>(std::strlen(node.text));
    }
    link(node, program);
}

void fxRegCode::link(fxRegNode& node, const char* program) {
    if (const unsigned int link = fxRegLink(program + node.offset))
        node.next = nodeAt(node.op == OP_BACK ? node.offset - link : node.offset + link, &node);
    else if (!node.isRepeated)
        isDamaged = true;
    if (node.op != OP_BRANCH && !fxRegIsRepetition(node.op))
        return;
    fxRegNode* const operand = nodeAt(node.offset + fxRegNodeSize, &node);
    node.operand = operand;
    if (node.op == OP_BRANCH) {
        node.other = fxRegIsBranch(program + node.next->offset) ? node.next : nullptr;
    } else {
        operand->isRepeated = true;
        if (!fxRegIsSimple(fxRegOp(program + operand->offset)))
            isDamaged = true;
    }
}

// Most links lead to one of the nodes behind `near`.
fxRegNode* fxRegCode::nodeAt(unsigned int offset, fxRegNode* near) const {
    const fxRegNode* const end = nodes + count;
    for (unsigned int i = 0; i < 6 && near != end; ++i, ++near) {
        if (near->offset == offset)
            return near;
    }
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

namespace {
// The literal byte that has to come next for the chain from `node` on to match;
// NUL if it is not as simple as that.
char soonByte(const fxRegNode* node) {
    while (node && fxRegIsOpen(node->op))
        node = node->next;
    return node && node->op == OP_EXACT ? *node->text : '\0';
}
}  // namespace

// Whatever is asked can be, but for the byte of a literal run that is next.
void fxRegCode::assumeLittle() {
    isAnalysed = false;
    for (std::uint32_t& member : sets)
        member = fxRegAnything;
    std::uint32_t unused = 1;
    for (unsigned int i = 0; i < count; ++i) {
        fxRegNode& node = nodes[i];
        const bool isChoice = node.op == OP_BRANCH;
        if (!isChoice && !fxRegIsRepetition(node.op))
            continue;
        (isChoice ? node.set : node.after) = fxRegAnything;
        const char byte = soonByte(isChoice ? node.operand : node.next);
        if (byte == '\0' || unused == fxRegAnything || isDamaged)
            continue;
        (isChoice ? node.set : node.after) = unused;
        sets[static_cast<unsigned char>(byte)] |= unused;
        unused <<= 1;
    }
    opening = firstOpening = fxRegAnything;
    required = nullptr;
    starts.clear();
    findLeading();
}

// The node that a lone alternative leads to.
// Requires: its own operand is straight.
const fxRegNode* fxRegCode::straight(const fxRegNode* node) {
    return node && node->op == OP_BRANCH && !node->other ? node->operand : node;
}

// Another program may be shorter, and what is behind it cannot be read then. As
// both are sound, they differ before the shorter one ends.
bool fxRegCode::isBegunBy(const char* program) const {
    if (fxUsableSizeIsKnown)
        return std::memcmp(bytes, program, length) == 0;
    for (unsigned int i = 0; i < length; ++i) {
        if (bytes[i] != program[i])
            return false;
    }
    return true;
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

// `isNew` unless it is there already.
fxRegCode& placeOf(const fxregexp& prog, bool& isNew) {
    const std::uint32_t address =
        static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(&prog) / 8);
    Kept& places = kept[address * 0x9E3779B1U >> (32 - keptBits)];
    isNew = false;
    for (unsigned int way = 0; way < Kept::ways; ++way) {
        if (places.owners[way].load(std::memory_order_relaxed) == &prog)
            return places.codes[way];
    }
    isNew = true;
    const unsigned int way = places.next.fetch_add(1, std::memory_order_relaxed) % Kept::ways;
    places.owners[way].store(&prog, std::memory_order_relaxed);
    return places.codes[way];
}

}  // namespace

fxRegCodeLease::fxRegCodeLease(const fxregexp& prog, const char* subject) : isOwned(false) {
    bool isNew;
    leased = &placeOf(prog, isNew);
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
        leased->analyse();
    else
        decode(prog, size,
               isNew && prog.startchar && !prog.anchored && !std::strchr(subject, prog.startchar));
}

void fxRegCodeLease::decode(const fxregexp& prog, unsigned int size, bool isCheck) {
    const char* const error = leased->assign(prog, size, isCheck);
    if (!error && !isCheck)
        return;
    end();
    leased = nullptr;
    if (error)
        fxregerror(error);
}

// Not for another search.
void fxRegCodeLease::discard() {
    leased->forget();
    std::free(leased);
}
