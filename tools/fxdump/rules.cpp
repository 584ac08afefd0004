#include "tools/fxdump/rules.h"

#include "tools/fxdump/text.h"

namespace fxdump {

namespace {
std::uint32_t elementSize(unsigned int tag) {
    switch (tag) {
        case fxOT_Shorts:
            return sizeOf(Form::shorts);
        case fxOT_Longs:
            return sizeOf(Form::longs);
        case fxOT_Floats:
            return sizeOf(Form::floats);
        case fxOT_Doubles:
            return sizeOf(Form::doubles);
        default:
            return 1;
    }
}
}  // namespace

std::string numberText(std::uint32_t number) { return "number " + std::to_string(number); }

std::string Rules::enter(std::uint32_t number, Thing thing, std::uint32_t extra) {
    NumberTable::Entry entry;
    entry.thing = thing;
    entry.extra = extra;
    return numbers.set(number, entry) ? "" : "there are more numbers than can be checked";
}

std::string Rules::blockBody(const Record& record, BlockSize allowed) {
    const NumberTable::Entry known = numbers.find(record.number());
    blockNumber = record.number();
    blockSize = record.wordOf(Word::size);
    blockLeft = blockSize;
    inBlock = true;
    const bool isEarly = allowed == BlockSize::needsNoPointer && known.thing == Thing::nothing;
    if (known.thing != Thing::awaitedBlock && !isEarly)
        return "no pointer to a block has " + numberText(blockNumber);
    const bool isGreater = allowed == BlockSize::mayBeGreater && blockSize > known.extra;
    if (known.extra != blockSize && !isEarly && !isGreater)
        return "the block has " + counted(blockSize, "byte") + ", but its pointer says " +
               std::to_string(known.extra);
    const std::uint32_t element = elementSize(record.tag);
    if (blockSize % element != 0)
        return "the size of the block, " + std::to_string(blockSize) + ", is no multiple of " +
               std::to_string(element);
    return enter(blockNumber, Thing::block, blockSize);
}

std::string Rules::blockData(std::size_t n) {
    if (n > blockLeft)
        return "there are more bytes than the " + std::to_string(blockSize) + " of block " +
               std::to_string(blockNumber);
    blockLeft -= static_cast<std::uint32_t>(n);
    return "";
}

std::string Rules::blockEnd() {
    const bool isCut = inBlock && blockLeft != 0;
    inBlock = false;
    if (!isCut)
        return "";
    return "block " + std::to_string(blockNumber) + " before has " +
           std::to_string(blockSize - blockLeft) + " of its " + counted(blockSize, "byte");
}

}  // namespace fxdump
