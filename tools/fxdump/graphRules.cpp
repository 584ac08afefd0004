// graphRules.cpp - the rules of graph streams.

#include <algorithm>

#include "tools/fxdump/rules.h"
#include "tools/fxdump/text.h"

namespace fxdump {

namespace {
class GraphRules : public Rules {
public:
    explicit GraphRules(const ByteOrder& o) : order(o) {}

    std::string record(const Record& record) override;
    std::string payload(const char* bytes, std::size_t n) override;
    std::string end() override { return ""; }

private:
    // What the present payloads belong to.
    enum class Inside : unsigned char { nothing, object, block };

    void beginRoot(const Record& record);
    std::string follow(const Record& record);
    std::string inRoot(const Record& record);
    std::string type(const Record& record);
    std::string object(const Record& record);
    std::string block(const Record& record);
    std::string pointer(const Record& record);
    std::string oldPointer(const Record& record);
    std::string embedded(const Record& record);
    std::string rootEnd(const Record& record);
    std::string rootIsReference(const Record& record);
    std::string newNumber(const Record& record);

    const ByteOrder order;
    std::uint32_t last = 0;    // number given
    std::uint32_t before = 0;  // the last number of the roots before
    bool goesOn = false;       // with the numbers of the root before
    bool hasRoot = false;
    bool isOver = false;  // nothing but its end may come
    Inside inside = Inside::nothing;
    std::uint32_t typeNumber = 0;  // of the type whose version comes; 0 for none
    char version[fxBinaryFormat::wordBytes] = {};
    unsigned int versionBytes = 0;
};

void GraphRules::beginRoot(const Record& record) {
    goesOn = record.is(fxOT_Data) && record.headSize() == 1;
    if (!goesOn) {
        numbers.clear();
        last = 0;
    }
    before = last;
    hasRoot = false;
    isOver = false;
    inside = Inside::nothing;
    typeNumber = 0;
}

std::string GraphRules::record(const Record& record) {
    if (record.placeInRoot == 1)
        beginRoot(record);
    if (record.payload > fxBinaryFormat::mostGraphPayload)
        return "a payload of " + counted(record.payload, "byte") + " is longer than " +
               std::to_string(fxBinaryFormat::mostGraphPayload);
    if (isOver && !record.isRootEnd())
        return "behind a root that was written before stands nothing but its end";
    typeNumber = 0;
    return follow(record);
}

std::string GraphRules::follow(const Record& record) {
    if (record.isRootEnd())
        return rootEnd(record);
    if (record.is(fxOT_Type))
        return type(record);
    if (record.is(fxOT_Object))
        return object(record);
    if (!hasRoot && goesOn && record.is(fxOT_OldObject))
        return rootIsReference(record);
    if (record.is(fxOT_Data) && record.payload == 0)
        return "";
    if (!hasRoot)
        return "a root begins with the body of its object";
    return inRoot(record);
}

std::string GraphRules::inRoot(const Record& record) {
    if (record.isBlockBody())
        return block(record);
    if (record.is(fxOT_Data))
        return inside == Inside::nothing ? "there is nothing that the data belong to" : "";
    if (inside == Inside::block)
        return "a block has no pointers";
    switch (record.tag) {
        case fxOT_Block:
        case fxOT_ObjectPointer:
            return pointer(record);
        case fxOT_OldBlock:
        case fxOT_OldObject:
        case fxOT_OldEmbedded:
            return oldPointer(record);
        case fxOT_Embedded:
            return embedded(record);
        default:
            return "";
    }
}

// Numbers go up by one. The root's own comes behind its type's, but was given first.
std::string GraphRules::newNumber(const Record& record) {
    const std::uint32_t next = hasRoot                  ? last + 1
                               : record.is(fxOT_Object) ? before + 1
                                                        : std::max(last + 1, before + 2);
    if (record.number() != next)
        return numberText(record.number()) + " where " + std::to_string(next) + " comes next";
    last = std::max(last, next);
    return "";
}

std::string GraphRules::type(const Record& record) {
    if (record.payload != fxBinaryFormat::wordBytes)
        return "a type has a payload of 4 bytes, its version, not of " +
               std::to_string(record.payload);
    std::string wrong = newNumber(record);
    if (!wrong.empty())
        return wrong;
    typeNumber = record.number();
    versionBytes = 0;
    return enter(typeNumber, Thing::type);
}

std::string GraphRules::object(const Record& record) {
    std::string cut = blockEnd();
    if (!cut.empty())
        return cut;
    const NumberTable::Entry known = numbers.find(record.number());
    if (hasRoot && known.thing != Thing::awaitedObject)
        return "no pointer to an object has " + numberText(record.number());
    if (!hasRoot) {
        std::string wrong = newNumber(record);
        if (!wrong.empty())
            return wrong;
    }
    const NumberTable::Entry type = numbers.find(record.wordOf(Word::typeNumber));
    if (type.thing != Thing::type)
        return numberText(record.wordOf(Word::typeNumber)) + " is no type's";
    if (type.extra != record.wordOf(Word::version))
        return "version " + std::to_string(record.wordOf(Word::version)) +
               ", but the type has version " + std::to_string(type.extra);
    hasRoot = true;
    inside = Inside::object;
    return enter(record.number(), Thing::object);
}

std::string GraphRules::block(const Record& record) {
    std::string cut = blockEnd();
    if (!cut.empty())
        return cut;
    inside = Inside::block;
    return blockBody(record, BlockSize::mayBeGreater);
}

std::string GraphRules::pointer(const Record& record) {
    std::string wrong = newNumber(record);
    if (!wrong.empty())
        return wrong;
    return record.is(fxOT_Block)
               ? enter(record.number(), Thing::awaitedBlock, record.wordOf(Word::size))
               : enter(record.number(), Thing::awaitedObject);
}

std::string GraphRules::oldPointer(const Record& record) {
    const Thing thing = numbers.find(record.number()).thing;
    const bool isBlock = thing == Thing::awaitedBlock || thing == Thing::block;
    const bool isObject =
        thing == Thing::awaitedObject || thing == Thing::object || thing == Thing::embedded;
    if (record.is(fxOT_OldEmbedded) && thing != Thing::embedded)
        return numberText(record.number()) + " is no embedded object's";
    if (record.is(fxOT_OldBlock))
        return isBlock ? "" : numberText(record.number()) + " is no block's";
    return isObject ? "" : numberText(record.number()) + " is no object's";
}

// It may take the place of an object that has come, by itself or in another one, or
// that is awaited.
std::string GraphRules::embedded(const Record& record) {
    const Thing thing = numbers.find(record.number()).thing;
    const bool isKnown =
        thing == Thing::awaitedObject || thing == Thing::object || thing == Thing::embedded;
    if (isKnown && record.number() <= before)
        return numberText(record.number()) + " is that of an earlier root";
    std::string wrong = isKnown ? "" : newNumber(record);
    return wrong.empty() ? enter(record.number(), Thing::embedded) : wrong;
}

std::string GraphRules::rootIsReference(const Record& record) {
    hasRoot = true;
    isOver = true;
    if (record.payload != 0)
        return "a root that was written before has no contents";
    return oldPointer(record);
}

std::string GraphRules::rootEnd(const Record& record) {
    std::string cut = blockEnd();
    if (!cut.empty())
        return cut;
    if (record.payload != 0)
        return "the end of a root has no payload";
    if (record.words[0] != record.sum)
        return "the checksum is " + hexWord(record.words[0]) + ", but the bytes have " +
               hexWord(record.sum);
    if (!hasRoot)
        return "the root has no object";
    if (numbers.awaited() != 0)
        return "the body of " + numberText(numbers.anAwaited()) + " is missing";
    return "";
}

std::string GraphRules::payload(const char* bytes, std::size_t n) {
    if (typeNumber == 0)
        return inside == Inside::block ? blockData(n) : "";
    for (std::size_t i = 0; i < n && versionBytes < sizeof version; ++i)
        version[versionBytes++] = bytes[i];
    if (versionBytes < sizeof version)
        return "";
    return enter(typeNumber, Thing::type, order.getLong(version));
}
}  // namespace

std::unique_ptr<Rules> makeGraphRules(const ByteOrder& order) {
    return std::make_unique<GraphRules>(order);
}

}  // namespace fxdump
