#include "tools/fxdump/decoder.h"

#include <algorithm>

namespace fxdump {

namespace {
const std::uint32_t standardBuffer = 512;  // of the standard writer

bool isFull(const Record& record, Kind kind) {
    return record.payload ==
           (kind == Kind::graph ? std::uint32_t{fxBinaryFormat::mostGraphPayload} : standardBuffer);
}
}  // namespace

void Decoder::header(const Header& header) {
    kind = header.kind;
    body.setStream(header);
    view.header(header);
}

void Decoder::record(const Record& record) {
    present = record;
    left = present.payload;
    at = present.offset + present.headSize();
    // Types of a root before are known only to a root that goes on with its numbers.
    if (kind == Kind::graph && present.placeInRoot == 1 && present.headSize() != 1)
        types.clear();
    if (present.is(fxOT_Type)) {
        at += present.name.size() + present.isNameWhole;
        types.add(present.number(), present.isNameWhole ? present.name : present.name + "...");
    }
    if (present.is(fxOT_Object))
        present.typeName = types.nameOf(present.wordOf(fxBinaryFormat::Word::typeNumber));
    beginContents();
    view.record(present);
}

void Decoder::beginContents() {
    if (present.isRootEnd() || present.isBody())
        fields.abandon();
    if (present.isRootEnd())
        body.beginNothing();
    else if (present.isBlockBody())
        body.beginBlock(present);
    else if (present.is(fxOT_Object))
        body.beginObject(present.typeName);
    else if (!present.is(fxOT_Data) && !present.is(fxOT_Type))
        beginPointer();
}

// A pointer, or an embedded object.
void Decoder::beginPointer() {
    if (!fields.isIdle()) {
        fields.abandon();
        body.lose();
    }
    body.pointer(present);
}

void Decoder::restOfName(const char* bytes, std::size_t n) {
    while (n != 0) {
        if (ofTypes.isIdle()) {
            Item item;
            item.form = Form::name;
            item.size = n;
            ofTypes.start(item);
        }
        const std::size_t step = ofTypes.take(bytes, n, at);
        at += step;
        bytes += step;
        n -= step;
    }
}

void Decoder::payload(const char* bytes, std::size_t n) {
    if (kind == Kind::graph && present.is(fxOT_Type))
        contentsOfType(bytes, n);
    else
        contents(bytes, n);
}

// A word, the version.
void Decoder::contentsOfType(const char* bytes, std::size_t n) {
    while (n != 0) {
        if (ofTypes.isIdle()) {
            Item item;
            item.size = left;
            if (left == present.payload && left >= fxBinaryFormat::wordBytes) {
                item.label = "version";
                item.form = Form::longs;
                item.size = fxBinaryFormat::wordBytes;
                item.isOne = true;
            }
            ofTypes.start(item);
        }
        const std::size_t step = ofTypes.take(bytes, n, at);
        at += step;
        bytes += step;
        n -= step;
        left -= static_cast<std::uint32_t>(step);
    }
}

void Decoder::contents(const char* bytes, std::size_t n) {
    while (n != 0) {
        if (fields.isIdle())
            fields.start(body.next(left));
        const std::size_t step = fields.take(bytes, n, at);
        at += step;
        bytes += step;
        n -= step;
        left -= static_cast<std::uint32_t>(step);
        if (!fields.isIdle())
            continue;
        if (fields.isHolding())
            fields.release(body.decided(fields.firstBytes(), left, isFull(present, kind)));
        if (fields.isIdle())
            body.done(fields.present(), fields.firstBytes());
    }
}

void Decoder::recordEnd() {
    // What an element is cannot be told from a part of its first bytes.
    const bool isLost = fields.isHolding() && !fields.isIdle();
    fields.recordEnd();
    if (isLost) {
        fields.abandon();
        body.lose();
    }
    ofTypes.recordEnd();
    view.recordEnd();
}

void Decoder::damage(const Damage& damage) {
    fields.recordEnd();
    ofTypes.recordEnd();
    view.damage(damage);
}

void Decoder::end(std::uint64_t offset) { view.end(offset); }

}  // namespace fxdump
