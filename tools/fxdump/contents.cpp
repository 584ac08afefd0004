#include "tools/fxdump/contents.h"

namespace fxdump {

namespace {
const std::uint32_t stringWidth = 8;  // of an fxStr

Form formOfBlock(unsigned int tag) {
    switch (tag) {
        case fxOT_Shorts:
            return Form::shorts;
        case fxOT_Longs:
            return Form::longs;
        case fxOT_Floats:
            return Form::floats;
        case fxOT_Doubles:
            return Form::doubles;
        default:
            return Form::bytes;
    }
}

Form formOfWidth(std::uint32_t width) {
    switch (width) {
        case 2:
            return Form::shorts;
        case 4:
            return Form::longs;
        case 8:
            return Form::doubles;
        default:
            return Form::bytes;
    }
}

Item itemOf(const char* label, Form form, std::uint64_t size) {
    Item item;
    item.label = label;
    item.form = form;
    item.size = size;
    return item;
}

Item oneOf(const Part& part) {
    Item item = itemOf(part.label, part.form(), sizeOf(part.form()));
    item.isOne = true;
    item.isLength = part.role == Part::Role::string;
    return item;
}

// The length of an element that is a string.
Item lengthOf(const Part& part) {
    Item item = itemOf(part.label, Form::longs, sizeOf(Form::longs));
    item.isOne = true;
    item.isLength = true;
    return item;
}
}  // namespace

void Contents::setStream(const Header& header) {
    kind = header.kind;
    order = header.order;
    beginNothing();
}

void Contents::beginNothing() {
    block = Item();
    shape = nullptr;
    isInEntry = false;
    place = 0;
    entriesLeft = 0;
    size = 0;
    width = 0;
    stringsLeft = 0;
    textSize = 0;
    awaitsBlock = false;
}

void Contents::beginObject(const std::string& typeName) {
    beginNothing();
    shape = shapeOf(typeName);
}

void Contents::beginBlock(const Record& record) {
    beginNothing();
    block = itemOf("", formOfBlock(record.tag), record.wordOf(fxBinaryFormat::Word::size));
}

void Contents::lose() { shape = nullptr; }

// The part that stands next; null when they are over.
const Part* Contents::part() const {
    if (!shape)
        return nullptr;
    if (isInEntry && entriesLeft == 0)
        return nullptr;
    const Part* const parts = isInEntry ? shape->entry : shape->head;
    return parts[place].role == Part::Role::none ? nullptr : parts + place;
}

void Contents::advance() {
    ++place;
    const Part* const parts = isInEntry ? shape->entry : shape->head;
    if (parts[place].role != Part::Role::none)
        return;
    place = 0;
    if (isInEntry)
        --entriesLeft;
    isInEntry = true;
}

Item Contents::next(std::uint32_t left) {
    if (block.size != 0) {
        const Item item = block;
        block = Item();
        return item;
    }
    if (awaitsBlock)
        lose();
    if (shape && textSize != 0)
        return itemOf(part()->label, Form::text, textSize);
    while (const Part* const present = part()) {
        if (present->role != Part::Role::elements)
            return oneOf(*present);
        if (size != 0)
            return elements();
        advance();
    }
    return itemOf(shape && kind == Kind::standard ? shape->spare : "", Form::bytes, left);
}

// The elements of an array, or the first bytes where these have to tell of which
// kind they are. Requires: there are some.
Item Contents::elements() {
    const Part& present = *part();
    if (stringsLeft != 0)
        return lengthOf(present);
    if (width != stringWidth || size % width != 0)
        return itemOf(present.label, formOfWidth(width), size);
    Item item = itemOf(present.label, Form::longs, fxBinaryFormat::wordBytes);
    item.isHeld = true;
    return item;
}

// Elements of 8 bytes are strings or doubles. A string begins with its length + 1
// and its text; the first word of a double is hardly ever a small number. `left`
// is what comes behind the word.
Item Contents::decided(const char* bytes, std::uint32_t left, bool isFull) {
    const std::uint32_t word = order.getLong(bytes);
    const bool isEmpty = word == 1;
    bool areStrings = isEmpty || (word > 1 && (kind == Kind::graph ? word <= left : left == 0));
    if (kind == Kind::graph && isFull && word > 1)
        areStrings = word <= fxBinaryFormat::mostGraphPayload;
    if (!areStrings)
        return itemOf(part()->label, Form::doubles, size);
    stringsLeft = size / stringWidth;
    return lengthOf(*part());
}

void Contents::done(const Item& item, const char* bytes) {
    if (!shape || !part())
        return;
    if (item.form == Form::text) {
        textSize = 0;
        lengthIs(1);
        return;
    }
    if (item.isLength) {
        lengthIs(order.getLong(bytes));
        return;
    }
    switch (part()->role) {
        case Part::Role::count:
            entriesLeft = order.getLong(bytes);
            break;
        case Part::Role::size:
            size = order.getLong(bytes);
            break;
        case Part::Role::width:
            width = order.getShort(bytes);
            break;
        case Part::Role::none:
        case Part::Role::value:
        case Part::Role::string:
        case Part::Role::elements:
            break;
    }
    advance();
}

// The length + 1 of a string has come. A string of none is over.
void Contents::lengthIs(std::uint32_t length) {
    if (length == 0) {
        lose();
    } else if (length != 1) {
        textSize = kind == Kind::graph ? length : 0;
        awaitsBlock = kind == Kind::standard;
    } else if (stringsLeft > 1) {
        --stringsLeft;
    } else {
        stringsLeft = 0;
        advance();
    }
}

void Contents::pointer(const Record& record) {
    if (!shape)
        return;
    if (awaitsBlock && (record.is(fxOT_Block) || record.is(fxOT_OldBlock))) {
        awaitsBlock = false;
        lengthIs(1);
    } else if (part() || awaitsBlock) {
        lose();
    }
}

}  // namespace fxdump
