#include "tools/fxdump/parser.h"

#include <algorithm>
#include <cstring>

namespace fxdump {

std::string Damage::text() const {
    std::string where = "offset " + std::to_string(offset);
    if (place != 0)
        where += ", record " + std::to_string(place);
    return where + ": " + rule;
}

void Parser::parse() {
    if (parseHeader() && parseRecords())
        sink.end(source.offset());
}

// Tells of the damage, unless it is the system that does not read on.
bool Parser::fail(const std::string& rule) {
    if (source.error() != 0)
        return false;
    Damage damage;
    damage.offset = record.offset;
    damage.place = record.place;
    damage.rule = rule;
    // Four bytes that are taken for others are the likeliest cause.
    if (hasSeenReferences && !readerWords && header.kind == Kind::standard)
        damage.rule += "; if it was made for the standard reader, try --reader-words";
    if (record.place != 0)
        damage.bytes.assign(record.head, record.headSize()).append(record.name);
    sink.damage(damage);
    return false;
}

bool Parser::failAtEnd(const char* within) {
    return fail(std::string("the stream ends within ") + within);
}

// The header.

bool Parser::takeField(unsigned int n, const char* what) {
    const std::size_t taken = source.take(header.bytes + header.size, n);
    header.size += static_cast<unsigned int>(taken);
    return taken == n || failAtEnd(what);
}

// The two names differ in their second letter, and in nothing but the header does
// a graph stream differ before the first record.
bool Parser::parseHeader() {
    const unsigned int shorter = sizeof fxBinaryFormat::graphWriterName;
    if (source.take(header.bytes, shorter) != shorter)
        return fail("not a stream of objects: too short for a header");
    header.size = shorter;
    if (std::memcmp(header.bytes, fxBinaryFormat::graphWriterName, shorter) == 0) {
        header.kind = Kind::graph;
    } else {
        if (std::memcmp(header.bytes, fxBinaryFormat::writerName, shorter) != 0)
            return fail("not a stream of objects: it begins with no writer's name");
        if (!takeField(sizeof fxBinaryFormat::writerName - shorter, "the header"))
            return false;
        if (header.bytes[header.size - 1] != '\0')
            return fail("not a stream of objects: it begins with no writer's name");
    }
    const unsigned int format = header.size;
    if (!takeField(sizeof fxBinaryFormat::floatFormat + 2 + 4, "the header"))
        return false;
    record.offset = format;
    if (std::memcmp(header.bytes + format, fxBinaryFormat::floatFormat,
                    sizeof fxBinaryFormat::floatFormat) != 0)
        return fail("the floating-point format is not \"ieee\"");
    const char* const marks = header.bytes + format + sizeof fxBinaryFormat::floatFormat;
    header.order = ByteOrder(marks, marks + 2);
    record.offset = static_cast<std::uint64_t>(marks - header.bytes);
    if (!header.order.knowsShorts())
        return fail("the short mark shows no byte order");
    record.offset += 2;
    if (!header.order.knowsLongs())
        return fail("the long mark shows no byte order");
    sink.header(header);
    return true;
}

// Records.

bool Parser::parseRecords() {
    record.root = 1;
    while (!sink.hasEnough()) {
        const Step step = parseRecord();
        if (step != Step::done)
            return step == Step::atEnd;
        if (record.isRootEnd()) {
            sum = fxChecksum();
            ++record.root;
            record.placeInRoot = 0;
        }
    }
    return false;
}

Parser::Step Parser::parseRecord() {
    const Step head = headByte();
    if (head != Step::done)
        return head;
    if (!lengthAndWords() || (record.is(fxOT_Type) && !name()))
        return Step::failed;
    hasSeenReferences |= record.isReference();
    record.sum = sum.value();
    if (!record.isRootEnd())
        sum.add(record.head, record.headSize());
    if (record.is(fxOT_Type))
        sum.add(record.name.c_str(), record.name.size() + record.isNameWhole);
    sink.record(record);
    if ((!record.isNameWhole && !restOfName()) || !payload())
        return Step::failed;
    sink.recordEnd();
    return Step::done;
}

Parser::Step Parser::headByte() {
    const std::uint64_t offset = source.offset();
    char head = 0;
    if (source.take(&head, 1) != 1) {
        if (source.error() != 0)
            return Step::failed;
        if (header.kind == Kind::standard || record.placeInRoot == 0)
            return Step::atEnd;
        record.offset = offset;
        record.place = 0;
        failAtEnd("a root, before its end");
        return Step::failed;
    }
    record.offset = offset;
    ++record.place;
    ++record.placeInRoot;
    record.head[0] = head;
    record.tag = fxBinaryFormat::tagOf(static_cast<unsigned char>(head));
    record.lengthBytes = 0;
    record.wordCount = 0;
    record.payload = 0;
    record.name.clear();
    record.isNameWhole = true;
    const unsigned int tags = header.kind == Kind::graph ? unsigned{fxBinaryFormat::graphTagCount}
                                                         : unsigned{fxBinaryFormat::recordCount};
    if (record.tag < tags)
        return Step::done;
    fail("there is no record with tag " + std::to_string(record.tag));
    return Step::failed;
}

unsigned int Parser::wordsOf(unsigned int tag) const {
    if (header.kind == Kind::graph)
        return fxBinaryFormat::graphWordsOf(tag);
    return readerWords ? fxBinaryFormat::records[tag].wordsRead
                       : fxBinaryFormat::records[tag].wordsWritten;
}

bool Parser::lengthAndWords() {
    const unsigned int lengthBytes = fxBinaryFormat::lengthBytes[fxBinaryFormat::lengthClassOf(
        static_cast<unsigned char>(record.head[0]))];
    const unsigned int words = wordsOf(record.tag);
    const unsigned int fields = lengthBytes + words * fxBinaryFormat::wordBytes;
    const std::size_t taken = source.take(record.head + 1, fields);
    if (taken != fields) {
        // As many bytes as there are make up the record that is shown.
        record.lengthBytes = static_cast<unsigned int>(taken);
        return failAtEnd("a record");
    }
    record.lengthBytes = lengthBytes;
    record.wordCount = words;
    record.payload = fxBinaryFormat::getLittle(record.head + 1, lengthBytes);
    for (unsigned int i = 0; i < words; ++i)
        record.words[i] =
            fxBinaryFormat::getWord(record.head + 1 + lengthBytes + i * fxBinaryFormat::wordBytes);
    return true;
}

// Takes of a type's name as much as is kept.
bool Parser::name() {
    record.isNameWhole = false;
    while (record.name.size() < Record::longestName) {
        const char* bytes = nullptr;
        const std::size_t n =
            std::min(source.ready(bytes), Record::longestName - record.name.size());
        if (n == 0)
            return failAtEnd("the name of a type");
        const void* const nul = std::memchr(bytes, '\0', n);
        const std::size_t length =
            nul ? static_cast<std::size_t>(static_cast<const char*>(nul) - bytes) : n;
        record.name.append(bytes, length);
        source.drop(length);
        if (nul) {
            source.drop(1);
            record.isNameWhole = true;
            return true;
        }
    }
    return true;
}

// Hands over what is left of a type's name, up to its NUL.
bool Parser::restOfName() {
    for (;;) {
        const char* bytes = nullptr;
        const std::size_t n = source.ready(bytes);
        if (n == 0)
            return failAtEnd("the name of a type");
        const void* const nul = std::memchr(bytes, '\0', n);
        const std::size_t length =
            nul ? static_cast<std::size_t>(static_cast<const char*>(nul) - bytes) + 1 : n;
        sum.add(bytes, length);
        sink.restOfName(bytes, length);
        source.drop(length);
        if (nul)
            return true;
    }
}

bool Parser::payload() {
    for (std::uint32_t left = record.payload; left != 0;) {
        const char* bytes = nullptr;
        const std::size_t n = std::min<std::size_t>(source.ready(bytes), left);
        if (n == 0)
            return failAtEnd("the payload of a record");
        if (!record.isRootEnd())
            sum.add(bytes, n);
        sink.payload(bytes, n);
        source.drop(n);
        left -= static_cast<std::uint32_t>(n);
        if (sink.hasEnough())
            return false;
    }
    return true;
}

}  // namespace fxdump
