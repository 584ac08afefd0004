#include "tools/fxdump/describe.h"

#include "tools/fxdump/text.h"

namespace fxdump {

namespace {
using Word = fxBinaryFormat::Word;

std::string numbered(std::uint32_t number) { return "#" + std::to_string(number); }

std::string objectOf(const Record& record) {
    const std::string type = std::to_string(record.wordOf(Word::typeNumber));
    const std::string name = record.typeName.empty()
                                 ? "of a type that is not known"
                                 : printable(record.typeName.data(), record.typeName.size());
    return numbered(record.number()) + " " + name + ", type " + type + ", version " +
           std::to_string(record.wordOf(Word::version));
}
}  // namespace

std::string verdictOn(const Record& rootEnd) {
    return rootEnd.words[0] == rootEnd.sum ? "right"
                                           : "wrong: the bytes have " + hexWord(rootEnd.sum);
}

std::string nameOf(const Record& type) {
    return quoted(type.name.data(), type.name.size(), Record::longestName) +
           (type.isNameWhole ? "" : "...");
}

std::string argumentsOf(const Record& record) {
    if (record.isRootEnd())
        return "checksum " + hexWord(record.words[0]) + ", " + verdictOn(record);
    if (record.is(fxOT_Type))
        return numbered(record.number()) + " " + nameOf(record);
    if (record.is(fxOT_Object))
        return objectOf(record);
    if (record.wordCount == 0)
        return "";
    std::string text = numbered(record.number());
    if (record.is(fxOT_Block) || record.isBlockBody())
        text += ", " + counted(record.wordOf(Word::size), "byte");
    return text;
}

std::string wordOf(const Record& record, unsigned int i) {
    std::string value = std::to_string(record.words[i]);
    if (record.isRootEnd())
        return "checksum: " + hexWord(record.words[i]) + ", " + verdictOn(record);
    switch (record.wordAt(i)) {
        case Word::ignored:
            return "ignored";
        case Word::number:
            return "its number: " + value;
        case Word::typeNumber:
            if (record.is(fxOT_Type))
                return "its number: " + value;
            return "its type: " + value +
                   (record.typeName.empty()
                        ? ""
                        : ", " + quoted(record.typeName.data(), record.typeName.size(), 40));
        case Word::version:
            return "version " + value;
        case Word::size:
            return (record.is(fxOT_Block) ? "size of the block: " : "its size: ") + value;
    }
    return value;
}

}  // namespace fxdump
