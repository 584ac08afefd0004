#include "tools/fxdump/fieldMaker.h"

#include <algorithm>
#include <cstring>

namespace fxdump {

unsigned int sizeOf(Form form) {
    switch (form) {
        case Form::shorts:
            return 2;
        case Form::longs:
        case Form::floats:
            return 4;
        case Form::doubles:
            return 8;
        case Form::bytes:
        case Form::text:
        case Form::name:
            break;
    }
    return 1;
}

void FieldMaker::start(const Item& next) {
    item = next;
    left = item.size;
    taken = 0;
    isFirst = true;
    filled = 0;
    inElement = 0;
}

void FieldMaker::release(const Item& whole) {
    item = whole;
    left = item.size - taken;
    if (left == 0)
        emitAll();
}

void FieldMaker::abandon() { start(Item()); }

// Bytes of `n` that are taken at once.
std::size_t FieldMaker::stepOf(std::size_t n) const {
    std::uint64_t step = std::min<std::uint64_t>(n, left);
    step = std::min<std::uint64_t>(step, Field::mostBytes - filled);
    if (inElement != 0)
        step = std::min<std::uint64_t>(step, sizeOf(item.form) - inElement);
    return static_cast<std::size_t>(step);
}

std::size_t FieldMaker::take(const char* bytes, std::size_t n, std::uint64_t offset) {
    std::size_t used = 0;
    while (used < n && left != 0) {
        const std::size_t step = stepOf(n - used);
        if (filled == 0)
            pieceOffset = offset + used;
        std::memcpy(piece + filled, bytes + used, step);
        if (taken < mostElement)
            std::memcpy(first + taken, bytes + used,
                        std::min<std::size_t>(step, mostElement - static_cast<unsigned>(taken)));
        if (inElement != 0) {
            std::memcpy(element + inElement, bytes + used, step);
            inElement += static_cast<unsigned int>(step);
        }
        filled += step;
        taken += step;
        left -= step;
        used += step;
        if (inElement != 0 && inElement == sizeOf(item.form))
            emitCompleted();
        else if ((left == 0 && !item.isHeld) || filled == Field::mostBytes)
            emitAll();
    }
    return used;
}

void FieldMaker::recordEnd() {
    item.isHeld = false;
    emitAll();
}

// The rest of an element that began in another record.
void FieldMaker::emitCompleted() {
    emit(piece, filled, element, 1, left == 0);
    filled = 0;
    inElement = 0;
}

// Shows what has been taken: whole elements, then what there is of another one.
void FieldMaker::emitAll() {
    const std::size_t size = sizeOf(item.form);
    const std::size_t rest = inElement != 0 ? filled : filled % size;
    const std::size_t whole = filled - rest;
    if (whole != 0)
        emit(piece, whole, piece, whole / size, left == 0 && rest == 0);
    pieceOffset += whole;
    if (rest != 0)
        emit(piece + whole, rest, nullptr, 0, left == 0);
    if (rest != 0 && inElement == 0) {
        std::memcpy(element, piece + whole, rest);
        inElement = static_cast<unsigned int>(rest);
    }
    filled = 0;
}

void FieldMaker::emit(const char* bytes, std::size_t n, const char* elements, std::size_t count,
                      bool isLast) {
    Field field;
    field.offset = pieceOffset;
    field.bytes = bytes;
    field.size = n;
    field.label = item.label;
    field.form = item.form;
    field.isFirst = isFirst;
    field.isLast = isLast;
    field.isOne = item.isOne;
    field.isLength = item.isLength;
    field.elements = elements;
    field.elementCount = count;
    view.field(field);
    isFirst = false;
}

}  // namespace fxdump
