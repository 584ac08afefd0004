// standardRules.cpp - the rules of standard streams, and what the standard reader
// cannot read of what follows them.

#include "tools/fxdump/rules.h"
#include "tools/fxdump/text.h"

namespace fxdump {

namespace {
class StandardRules : public Rules {
public:
    explicit StandardRules(bool takesReaderWords) : readerWords(takesReaderWords) {}

    std::string record(const Record& record) override;
    std::string payload(const char*, std::size_t n) override {
        return isInBlock() ? blockData(n) : "";
    }
    std::string end() override;
    std::string obstacle() const override { return firstObstacle; }

private:
    std::string follow(const Record& record);
    std::string object(const Record& record);
    std::string pointer(const Record& record);
    std::string oldThing(const Record& record);
    std::string embedded(const Record& record);
    std::string hinder(const Record& record, const std::string& why);

    const bool readerWords;
    std::string firstObstacle;
    // The version that the writer puts into bodies is that of the type defined last.
    bool hasVersion = false;  // and no type has been defined since
    std::uint32_t version = 0;
};

// It is fine as the standard writer writes it, and not as its reader reads it.
std::string StandardRules::hinder(const Record& record, const std::string& why) {
    if (readerWords)
        return why;
    if (firstObstacle.empty()) {
        Damage damage;
        damage.offset = record.offset;
        damage.place = record.place;
        damage.rule = why;
        firstObstacle = damage.text();
    }
    return "";
}

std::string StandardRules::record(const Record& record) {
    if (record.isReference() && !readerWords)
        hinder(record, std::string("of a ") + record.label() + " it takes two words");
    return follow(record);
}

std::string StandardRules::follow(const Record& record) {
    if (record.isBody()) {
        std::string cut = blockEnd();
        if (!cut.empty())
            return cut;
    } else if (isInBlock() && !record.is(fxOT_Data) && !record.is(fxOT_Type)) {
        return "a block has no pointers";
    }
    if (record.isBlockBody())
        return blockBody(record,
                         readerWords ? BlockSize::needsNoPointer : BlockSize::isThePointers);
    if (record.is(fxOT_Data) && record.payload == 0 && !readerWords)
        return "the writer makes no empty records of data; if it was made for the standard "
               "reader, try --reader-words";
    switch (record.tag) {
        case fxOT_Type:
            hasVersion = false;
            return enter(record.number(), Thing::type);
        case fxOT_Object:
            return object(record);
        case fxOT_Block:
        case fxOT_ObjectPointer:
            return pointer(record);
        case fxOT_OldBlock:
        case fxOT_OldObject:
        case fxOT_OldEmbedded:
            return oldThing(record);
        case fxOT_Embedded:
            return embedded(record);
        default:
            return "";
    }
}

std::string StandardRules::object(const Record& record) {
    const std::uint32_t typeNumber = record.wordOf(Word::typeNumber);
    const NumberTable::Entry type = numbers.find(typeNumber);
    const std::uint32_t present = record.wordOf(Word::version);
    if (type.thing != Thing::type)
        return numberText(typeNumber) + " is no type's";
    if (!readerWords && numbers.awaited() != 0 &&
        numbers.find(record.number()).thing != Thing::awaitedObject)
        return "no pointer to an object has " + numberText(record.number());
    if (!readerWords && hasVersion && present != version)
        return "version " + std::to_string(present) + ", but the type defined last has " +
               std::to_string(version);
    hasVersion = true;
    version = present;
    std::string wrong;
    if (type.extra != 0 && type.extra != present)
        wrong = hinder(record, "version " + std::to_string(present) + " of a type that had " +
                                   std::to_string(type.extra));
    if (wrong.empty())
        wrong = enter(typeNumber, Thing::type, present);
    return wrong.empty() ? enter(record.number(), Thing::object) : wrong;
}

std::string StandardRules::pointer(const Record& record) {
    const Thing known = numbers.find(record.number()).thing;
    const bool isBlock = record.is(fxOT_Block);
    const Thing awaited = isBlock ? Thing::awaitedBlock : Thing::awaitedObject;
    if (known == Thing::nothing)
        return enter(record.number(), awaited, record.wordOf(Word::size));
    const bool isOfBlock = known == Thing::block || known == Thing::awaitedBlock;
    if (readerWords && known != Thing::type && isBlock == isOfBlock)
        return "";
    return numberText(record.number()) + " has come before";
}

// To the writer a thing is an address, whatever is there; to the reader it is of one
// kind, and has to be there.
std::string StandardRules::oldThing(const Record& record) {
    const Thing known = numbers.find(record.number()).thing;
    if (known == Thing::nothing)
        return numberText(record.number()) + " has not come before";
    const bool isBlock = record.is(fxOT_OldBlock);
    if (known == Thing::awaitedBlock || known == Thing::awaitedObject)
        return record.is(fxOT_OldEmbedded)
                   ? hinder(record, "what has " + numberText(record.number()) + " comes later")
                   : hinder(record, "what has " + numberText(record.number()) +
                                        " comes later, so this becomes a null pointer");
    if (isBlock != (known == Thing::block))
        return hinder(record, numberText(record.number()) + " belongs to another kind of thing");
    return "";
}

std::string StandardRules::embedded(const Record& record) {
    if (numbers.find(record.number()).thing != Thing::nothing)
        return numberText(record.number()) + " has come before";
    return enter(record.number(), Thing::embedded);
}

std::string StandardRules::end() {
    std::string cut = blockEnd();
    if (!cut.empty())
        return cut;
    return numbers.awaited() == 0
               ? ""
               : "the body of " + numberText(numbers.anAwaited()) + " is missing";
}
}  // namespace

std::unique_ptr<Rules> makeStandardRules(bool readerWords) {
    return std::make_unique<StandardRules>(readerWords);
}

}  // namespace fxdump
