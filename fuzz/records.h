// records.h - streams in their records, which a script changes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kelvofxds/transcribe/fxBinaryFormatInternal.h"
#include "kelvofxds/transcribe/fxChecksumInternal.h"
#include "tests/support/script.h"

namespace fuzz {

/// The records of a stream. Whatever is done to them, each is framed as a record is, and a root of
/// a graph stream has the checksum of its bytes, unless a step is to spoil just that.
class Records {
public:
    /// Of standard streams there are those with the words that their reader takes, and those with
    /// the words that are written, for some records one less.
    enum Kind { read, written, graph };

    /// Of `bytes` behind the first `headerSize`, which stay as they are.
    Records(const std::string& bytes, std::size_t headerSize, Kind k)
        : header(bytes.substr(0, headerSize)), kind(k) {
        for (std::size_t at = headerSize; at < bytes.size();)
            at = takeRecord(bytes, at);
    }

    /// Up to 64 steps.
    void change(Script& script) {
        for (unsigned int steps = 0; steps < 64 && !script.isOver() && !all.empty(); ++steps)
            step(script);
    }

    std::string bytes() const {
        std::string made = header;
        std::size_t root = made.size();
        for (const Record& record : all) {
            if (record.tag == fxBinaryFormat::rootEndTag && kind == graph) {
                fxChecksum sum;
                sum.add(made.data() + root, made.size() - root);
                Record end = record;
                end.words.assign(1, sum.value() ^ (record.words.empty() ? 0 : record.words[0]));
                put(made, end);
                root = made.size();
            } else {
                put(made, record);
            }
        }
        return made;
    }

private:
    struct Record {
        unsigned int tag = 0;
        std::vector<std::uint32_t> words;  // of the end of a root: what its checksum differs by
        std::string text;                  // with its NUL
        std::string payload;
        std::uint32_t untrue = 0;  // what its length differs by
    };

    unsigned int wordsOf(unsigned int tag) const {
        if (kind == graph)
            return tag < fxBinaryFormat::graphTagCount ? fxBinaryFormat::graphWordsOf(tag) : 0;
        const fxBinaryFormat::Record* const known = fxBinaryFormat::recordOf(tag);
        if (!known)
            return 0;
        return kind == read ? known->wordsRead : known->wordsWritten;
    }
    static bool hasText(unsigned int tag) {
        const fxBinaryFormat::Record* const known = fxBinaryFormat::recordOf(tag);
        return known && known->hasText;
    }

    // Returns where the next one begins.
    std::size_t takeRecord(const std::string& bytes, std::size_t at) {
        Record record;
        const auto head = static_cast<unsigned char>(bytes[at++]);
        record.tag = fxBinaryFormat::tagOf(head);
        const unsigned int n = fxBinaryFormat::lengthBytes[fxBinaryFormat::lengthClassOf(head)];
        const std::uint32_t length = fxBinaryFormat::getLittle(bytes.data() + at, n);
        at += n;
        for (unsigned int i = wordsOf(record.tag); i > 0; --i, at += fxBinaryFormat::wordBytes)
            record.words.push_back(fxBinaryFormat::getWord(bytes.data() + at));
        if (record.tag == fxBinaryFormat::rootEndTag && kind == graph)
            record.words.assign(1, 0);
        if (hasText(record.tag)) {
            record.text = std::string(bytes.c_str() + at) + '\0';
            at += record.text.size();
        }
        record.payload = bytes.substr(at, length);
        all.push_back(record);
        return at + length;
    }

    static void put(std::string& bytes, const Record& record) {
        char head[fxBinaryFormat::mostHeadBytes];
        char* const end = fxBinaryFormat::putHead(
            head, record.tag, static_cast<std::uint32_t>(record.payload.size()) + record.untrue);
        bytes.append(head, end);
        for (const std::uint32_t word : record.words)
            bytes.append(head, fxBinaryFormat::putWord(head, word));
        bytes += record.text;
        bytes += record.payload;
    }

    // Numbers at which something changes, or of another record.
    std::uint32_t number(Script& script) const {
        static const std::uint32_t edges[] = {
            0,          1,          2,          7,          8,         9,       255,
            256,        511,        512,        513,        65535,     65536,   0x3FFFFFFF,
            0x40000000, 0x7FFFFFFF, 0x80000000, 0x80000001, 0xFFFFFFF, 1 << 20, 0xFFFFFFFF};
        const unsigned int choice = script.byte();
        const Record& other = all[choice / 4 % all.size()];
        if (choice % 4 == 0)
            return edges[choice / 4 % (sizeof edges / sizeof edges[0])];
        if (choice % 4 == 1 && !other.words.empty())
            return other.words[0];
        return choice % 4 == 2 ? choice / 4 : script.word();
    }

    static const char* typeName(unsigned int choice) {
        static const char* const names[] = {"Sample", "Node",  "Part",     "DICT", "SET",
                                            "ARRAY",  "fxStr", "fxXDRObj", ""};
        return names[choice % (sizeof names / sizeof names[0])];
    }

    void step(Script& script) {
        const unsigned int operation = script.below(12);
        const std::size_t place = script.byte() % all.size();
        Record& record = all[place];
        const auto here = all.begin() + static_cast<std::ptrdiff_t>(place);
        switch (operation) {
            case 0:
            case 1:
                if (!record.words.empty())
                    record.words[script.byte() % record.words.size()] = number(script);
                break;
            case 2:
                all.erase(here);
                break;
            case 3:
                all.insert(here, Record(all[script.byte() % all.size()]));
                break;
            case 4:
                std::swap(record, all[script.byte() % all.size()]);
                break;
            case 5:
                all.insert(here, newRecord(script));
                break;
            case 6:
                record.tag = script.below(fxBinaryFormat::graphTagCount + 1);
                record.words.resize(wordsOf(record.tag), number(script));
                break;
            case 7:
                record.untrue = number(script);
                break;
            case 8:
                if (hasText(record.tag))
                    record.text = std::string(typeName(script.byte())) + '\0';
                break;
            default:
                changePayload(record.payload, script);
                break;
        }
    }

    Record newRecord(Script& script) const {
        Record record;
        record.tag = script.below(fxBinaryFormat::graphTagCount);
        for (unsigned int i = wordsOf(record.tag); i > 0; --i)
            record.words.push_back(number(script));
        if (hasText(record.tag))
            record.text = std::string(typeName(script.byte())) + '\0';
        record.payload = script.text(8);
        return record;
    }

    // Payloads are mostly words, in the order of the host that has written them.
    void changePayload(std::string& payload, Script& script) const {
        const std::uint32_t value = number(script);
        const std::size_t at = payload.empty() ? 0 : script.byte() % payload.size();
        switch (script.below(4)) {
            case 0:
                payload.resize(at);
                break;
            case 1:
                payload.insert(at, script.text(12));
                break;
            case 2:
                if (at + 4 <= payload.size())
                    fxBinaryFormat::putWord(&payload[at / 4 * 4], value);
                break;
            default:
                if (at < payload.size())
                    payload[at] = static_cast<char>(value);
                break;
        }
    }

    const std::string header;
    const Kind kind;
    std::vector<Record> all;
};

}  // namespace fuzz
