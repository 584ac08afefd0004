// host.cpp - what tests/gdb/session.sh looks at: a host with debug information of its own, that of
// a library which has none. Not run by itself.

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <new>

#include "kelvofxds/kelvofxds.h"

// Where the debugger stops. Each has an argument, so that no two become one.
extern "C" __attribute__((noinline)) void beforeStart(int) { asm volatile(""); }
extern "C" __attribute__((noinline)) void atStart(int) { asm volatile(""); }
extern "C" __attribute__((noinline)) void atTexts(int) { asm volatile(""); }
extern "C" __attribute__((noinline)) void atArrays(int) { asm volatile(""); }
extern "C" __attribute__((noinline)) void atTables(int) { asm volatile(""); }
extern "C" __attribute__((noinline)) void atLists(int) { asm volatile(""); }
extern "C" __attribute__((noinline)) void atValues(int) { asm volatile(""); }
extern "C" __attribute__((noinline)) void atObjects(int) { asm volatile(""); }
extern "C" __attribute__((noinline)) void atDamage(int) { asm volatile(""); }

namespace {
void keepAddress(const void* address) { asm volatile("" : : "r"(address) : "memory"); }

// Keeps objects in memory although the program is optimised.
template <class... Object>
void keep(const Object&... object) {
    (keepAddress(&object), ...);
}

void texts() {
    const fxStr name("Ada");
    fxStr empty;
    fxStr bytes("a\0b\377\"\n", 6);
    fxStr longOne(500U);
    std::memset(&longOne[0], 'x', 500);
    fxStr& reference = bytes;
    const fxStr* pointer = &name;
    using Title = fxStr;
    const Title title("Dr");
    fxPath path("/usr/bin/env");
    const fxTempStr joined = name | " and " | "Bob";
    fxStackBuffer buffer;
    buffer.put("bytes", 5);
    keep(name, empty, reference, pointer, longOne, title, path, joined, buffer);
    atTexts(1);
}

// An array of the values, each converted.
template <class Array, class... Value>
Array made(Value... value) {
    Array array;
    (array.append(&value), ...);
    return array;
}

struct Place {
    fxStr street;
    int number = 0;
};

// Derived from what has no view of its own.
class Chapter : public fxXDRObj {
public:
    fxStr title{"One"};
    fxStrArray lines;
};

class Pages : public fxIntArray {
public:
    int edition = 2;
};

struct Card {
    fxStrArray lines;
    int number = 7;
};

void arrays() {
    auto none = fxIntArray();
    auto bools = made<fxBoolArray>(static_cast<unsigned char>(1), static_cast<unsigned char>(0));
    auto chars = made<fxCharArray>('a', 'b');
    auto shorts = made<fxShortArray>(static_cast<short>(-1), static_cast<short>(2));
    auto ints = made<fxIntArray>(-1, 2, 3);
    auto longs = made<fxLongArray>(-100000L, 2L);
    auto floats = made<fxFloatArray>(0.5F, -1.25F);
    auto doubles = made<fxDoubleArray>(0.1, 2.0);
    auto bytes = made<fxUnsignedCharArray>(static_cast<unsigned char>(200));
    auto words = made<fxUnsignedShortArray>(static_cast<unsigned short>(65535));
    auto sizes = made<fxUnsignedLongArray>(4294967295UL);
    auto pointers = made<fxVoidPtrArray>(static_cast<void*>(nullptr));
    fxStrArray strings;
    strings.append("one");
    strings.append(fxStr("t\0o", 3));
    fxArrayOf<fxStr> own;
    own.append("first");
    fxArrayOf<Place> places;
    places.append({"Main Street", 5});
    fxArrayOf<fxStrStrDictionary> tables(1);
    tables[0].add("key", "value");
    Pages pages;
    const int page = 12;
    pages.append(&page);
    Card card;
    card.lines.append("Hello");
    Chapter chapter;
    const fxArray& base = ints;
    fxArray* pointer = &strings;
    keep(none, bools, chars, shorts, longs, floats, doubles, bytes, words, sizes, pointers, own,
         places, tables, pages, card, chapter, base, pointer);
    atArrays(1);
}

// From ints to ints, as a host writes it.
class Squares : public fxDictionary {
public:
    Squares() : fxDictionary(sizeof(int), sizeof(int), 7) {}
    ~Squares() override { cleanup(); }
    const char* className() const override { return "Squares"; }
    unsigned int hashKey(const void* key) const override {
        return static_cast<unsigned int>(*static_cast<const int*>(key));
    }
    int compareKeys(const void* a, const void* b) const override { return std::memcmp(a, b, 4); }
    void copyKey(const void* from, void* to) const override { std::memcpy(to, from, 4); }
    void destroyKey(void*) const override {}
    void copyValue(const void* from, void* to) const override { std::memcpy(to, from, 4); }
    void destroyValue(void*) const override {}
    void createValue(void* value) const override { std::memset(value, 0, 4); }
    unsigned char xdrKey(fxTranscriber&, void*) override { return 0; }
    unsigned char xdrValue(fxTranscriber&, void*) override { return 0; }
    void put(int key, int value) { addInternal(&key, &value); }
};

class Numbers : public fxSet {
public:
    Numbers() : fxSet(sizeof(int), 7) {}
    ~Numbers() override { cleanup(); }
    unsigned char xdrKey(fxTranscriber&, void*) override { return 0; }
    using fxSet::add;
};

class Contacts : public fxStrStrDictionary {
public:
    int changes = 3;
};

void tables() {
    fxStrStrDictionary phones;
    fxStrStrDictionaryIter nowhere(phones);
    phones.add("Ada", "1815");
    phones.add(fxStr("B\0b", 3), "");
    fxStrStrDictionaryIter iter(phones);
    fxStrStrDictionary& reference = phones;
    fxStrStrDictionary* pointer = &phones;
    fxVoidPtrDict addresses;
    addresses.add("nothing", nullptr);
    Contacts contacts;
    contacts.add("Eve", "2");
    Squares squares;
    squares.put(0x02020202, 0x04040404);
    fxStrSet words;
    words.add("set");
    fxStrSetIter word(words);
    Numbers numbers;
    const int seven = 0x07070707;
    numbers.add(&seven);
    fxStrStrDictionary many(3);
    char key[16];
    for (int i = 0; i < 250; ++i) {
        std::snprintf(key, sizeof key, "%d", i);
        many.add(key, "x");
    }
    keep(nowhere, iter, reference, pointer, addresses, contacts, squares, words, word, numbers,
         many);
    atTables(1);
}

void lists() {
    GenericList list;
    list.append(reinterpret_cast<void*>(16));
    list.append(reinterpret_cast<void*>(32));
    fxLinkItem link;
    fxIndexableList links;
    links.append(&link);
    HashTable table;
    table.add(7, reinterpret_cast<void*>(64));
    NameSpace names(nullptr, 0);
    names.makeAtom("width", 1);
    keep(list, links, table, names);
    atLists(1);
}

// Values, and objects that are counted.

fxProperty* propertyOf(const char* name, const char* text) {
    return new fxProperty(fxProperty::allocNewTag(name), text, 0);
}

void values() {
    fxVoidData nothing;
    fxBoolData truth(1);
    fxIntData number(-5);
    fxLongData longNumber(6);
    fxFloatData real(0.5F);
    fxDoubleData precise(0.25);
    fxCharPtrData text(strdup("text"));
    fxStrData string(fxStr("a\0b", 3));
    fxStrArray words;
    words.append("one");
    fxStrArrayData strings(words);
    const fxData& base = number;
    fxProperty size(fxProperty::allocNewTag("size"), 12L);
    fxProperty title(fxProperty::allocNewTag("title"), fxStr("Dr"));
    fxProperty place(fxProperty::allocNewTag("place"), static_cast<void*>(nullptr), nullptr);
    fxProperty holder(fxProperty::allocNewTag("holder"), new fxIntData(8));
    fxProperty owner(fxProperty::allocNewTag("owner"), new fxObj);
    fxSequencer codes;
    codes();
    codes();
    codes(5);
    fxRef<fxProperty> counted(propertyOf("colour", "red"));
    fxRef<fxProperty> none;
    keep(nothing, truth, number, longNumber, real, precise, text, string, strings, base, size,
         title, codes, counted, none);
    atValues(1);
}

// Objects that are wired.

class Counter : public fxObj {
public:
    Counter() : total(addOutput("total", fxDT_int)), line(addOutput("line", fxDT_CharPtr)) {}
    fxOutputChannel* total;
    fxOutputChannel* line;
    int lines = 4;
};

class Meter : public fxObj {
public:
    Meter() {
        addInput("number", fxDT_int, this, reinterpret_cast<void (*)()>(take), 0);
        addInput("newest", fxDT_int, this, reinterpret_cast<void (*)()>(take), 1);
        addInput("tick", fxDT_void, this, reinterpret_cast<void (*)()>(tick), 0);
    }
    static void take(Meter* self, int number) { self->sum += number; }
    static void tick(Meter*) {}
    int sum = 0;
    fxIntArray history;
};

class Bell : public fxEvent {
public:
    Bell() : fxEvent(7) {}
    void deliver() override {}
};

class Reader : public fxSelectHandler {
public:
    Reader() : fxSelectHandler(0, 1, 0, 1) {}
    ~Reader() override { fd = -1; }
    void handleRead() override {}
};

class Program : public fxApplication {
public:
    void initialize(int, char**) override {}
    Meter meter;
};

// A base of its own in front of the library's.
struct Named {
    const char* name = "both";
};
class Both : public Named, public fxObj {
public:
    int own = 9;
};

void beforeWait() {}

void objects() {
    Counter counter;
    Program program;
    Both both;
    both.addOutput("void", fxDT_void);
    program.meter.setProperty(propertyOf("colour", "blue"));
    counter.connect("total", &program.meter, "number");
    counter.connect("line", &program.meter, "number");
    counter.connect("total", &program.meter, "newest");
    fxTimer once(0);
    fxTimer again(1);
    once.setInterval(2.5F);
    again.setInterval(1);
    again.connect("tick", &program.meter, "tick");
    Reader reader;
    fxObj* base = &counter;
    fxInputChannel* lone = nullptr;
    fxRef<Meter> shared(new Meter);
    fxInputChannel* input = shared->addInput("more", fxDT_fxStr, shared.get(), nullptr, 0);
    fxEvent* message = nullptr;
    atObjects(0);

    counter.sendInt(counter.total, 42, fxObj::fxSendQueued);
    counter.sendCharPtr(counter.line, "41 lines", fxObj::fxSendQueued);
    fx_theEventHandler->postEvent(new Bell, 0);
    message = new fxMessageEvent(input, new fxStrData("by hand"));
    fx_theEventHandler->postEvent(message, 1);
    once.startTimer();
    again.startTimer();
    fx_theExecutive->addSelectHandler(&reader);
    fx_theExecutive->addPreSelectFunc(beforeWait);
    program.open();
    keep(counter, program, both, once, again, reader, base, lone, shared, input, message);
    atObjects(1);

    fx_theEventHandler->removeMessageEvents(input);
    once.stopTimer();
    again.stopTimer();
    fx_theExecutive->removeSelectHandler(&reader);
    fx_theEventHandler->distributeEvents();
    program.close();
}

}  // namespace

// Makes the chain of the only bucket a circle and back.
struct fxDictionaryLayout {
    static void close(const fxDictionary& dictionary, bool isCircle) {
        fxDictBucket* first = dictionary.buckets[0];
        first->next->next = isCircle ? first : nullptr;
    }
};

namespace {
// Memory in which nothing is, or no longer, or not what it was.

template <class Class, unsigned char byte>
Class& filled() {
    alignas(Class) static char room[sizeof(Class)];
    std::memset(room, byte, sizeof room);
    return *reinterpret_cast<Class*>(room);
}

template <class Class>
Class& ended() {
    alignas(Class) static char room[sizeof(Class)];
    return *new (room) Class;
}

void damage() {
    fxStr* noString = nullptr;
    fxStrStrDictionary* noDictionary = nullptr;
    fxStr& string = filled<fxStr, 0xA5>();
    fxStr& zeroString = filled<fxStr, 0>();
    fxStrStrDictionary& table = filled<fxStrStrDictionary, 0xA5>();
    fxIntArray& array = filled<fxIntArray, 0>();
    Counter& object = filled<Counter, 0xA5>();
    GenericList& list = filled<GenericList, 0x5A>();
    HashTable& hash = filled<HashTable, 0xA5>();
    NameSpace& names = filled<NameSpace, 0xA5>();
    fxRef<fxObj>& reference = filled<fxRef<fxObj>, 0xA5>();
    fxStrStrDictionary& gone = ended<fxStrStrDictionary>();
    gone.~fxStrStrDictionary();
    GenericList circle;
    circle.append(nullptr);
    circle.append(nullptr);
    circle.last()->next = circle.first();
    fxVoidPtrDict looped(1);
    looped.add("a", nullptr);
    looped.add("b", nullptr);
    fxDictionaryLayout::close(looped, true);
    keep(noString, noDictionary, string, zeroString, table, array, object, list, hash, names,
         reference, gone, circle, looped);
    atDamage(1);
    circle.last()->next = nullptr;
    fxDictionaryLayout::close(looped, false);
}
}  // namespace

int main() {
    beforeStart(1);
    fxInitializeToolkit();
    atStart(1);
    texts();
    arrays();
    tables();
    lists();
    values();
    objects();
    damage();
}
