// containers.cpp - arrays, dictionaries, sets and lists, while memory is refused.

#include <cstdlib>

#include "tests/figures/refusals/scenarios.h"

namespace {

template <class Array, class Value>
void fillArray(Array& array, const Value& value) {
    for (int i = 0; i < 40; ++i)
        array.fxArray::append(&value);
}
void appendInts() {
    fxIntArray array;
    fillArray(array, 5);
}
void insertInts() {
    fxIntArray array;
    const int value = 5;
    for (unsigned int i = 0; i < 20; ++i)
        array.insert(&value, i / 2);
    array.insert(array, 3);
    array.append(array);
}
void copyInts() {
    fxIntArray array(30);
    const fxIntArray copy(array);
    const fxIntArray part = array.extract(3, 20);
    const fxIntArray cut = array.cut(3, 20);
    std::free(array.raw_copy());
}
void resizeInts() {
    fxIntArray array;
    array.resize(100);
    array.setMaxLength(300);
    array.setMaxLength(0);
}
void swapLargeElements() {
    struct Large {
        char bytes[2000] = {};
    };
    fxArrayOf<Large> array;
    array.append(Large());
    array.append(Large());
    static_cast<fxArray&>(array).swap(0, 1);
    array.qsort();
}
void appendStrings() {
    fxStrArray array;
    for (int i = 0; i < 20; ++i)
        array.append(longText);
}
void editStrings() {
    fxStrArray array;
    array.append(longText);
    array.append("b");
    array.insert(longText, 1);
    array.append(array);
    array.qsort();
    array.find(longText);
    const fxStrArray copy(array);
    array.resize(40);
}
void arrayOfOwn() {
    fxArrayOf<fxStr> array;
    for (int i = 0; i < 20; ++i)
        array.append(fxStr(longText));
    fxArrayOf<fxStr> copy(array);
    copy.insert(array, 2);
    array = copy;
}

void fillDictionary() {
    fxStrStrDictionary words;
    fillWords(words);
}
void longChains() {
    fxStrStrDictionary words(1);
    fillWords(words, 200);
    words.find("key 100");
    words.remove("key 50");
}
void createEntries() {
    fxStrStrDictionary words;
    words.findCreate("created") = longText;
    fxStr key("created");
    if (auto* value = static_cast<fxStr*>(words.cut(&key))) {
        value->~fxStr();
        std::free(value);
    }
}
void walkDictionary() {
    fxStrStrDictionary words;
    fillWords(words, 10);
    fxStrStrDictionaryIter first(words);
    fxStrStrDictionaryIter second(words);
    for (; first.key(); ++first)
        words.remove(fxStr(*first.key()));
}
void pointerDictionary() {
    fxVoidPtrDict pointers;
    int target = 0;
    for (int i = 0; i < 20; ++i)
        pointers.add(fxStr(i, "key %d"), &target);
}
void makeSet() {
    fxStrSet set;
    fillSet(set);
    fxStrSetIter iter(set);
}
void combineSets() {
    fxStrSet a;
    fxStrSet b;
    fillSet(a, 20);
    fillSet(b, 40);
    a |= b;
    b &= a;
    a -= b;
}
void buildList() {
    GenericList list;
    int item = 0;
    for (long i = 0; i < 20; ++i)
        list.insertAt(i / 2, &item);
    const GenericList copy(list);
}
void linkItems() {
    fxIndexableList list;
    fxLinkItem items[3];
    for (fxLinkItem& item : items)
        list.append(&item);
    list.findLink(1);
}
void hashNumbers() {
    HashTable table;
    int value = 0;
    for (unsigned long i = 0; i < 100; ++i)
        table.add(i * 7919, &value);
    table.lookup(7919);
}
void internNames() {
    NameSpace names(nullptr, 0);
    for (int i = 0; i < 100; ++i)
        names.makeAtom(fxStr(i, "name %d").c_str(), 1);
}

}  // namespace

Scenarios ofContainers() {
    return {
        {"appendInts", appendInts, usual},
        {"insertInts", insertInts, usual},
        {"copyInts", copyInts, usual},
        {"resizeInts", resizeInts, usual},
        {"swapLargeElements", swapLargeElements, usual},
        {"appendStrings", appendStrings, usual},
        {"editStrings", editStrings, usual},
        {"arrayOfOwn", arrayOfOwn, usual},
        {"fillDictionary", fillDictionary, usual},
        {"longChains", longChains, usual},
        {"createEntries", createEntries, usual},
        {"walkDictionary", walkDictionary, usual},
        {"pointerDictionary", pointerDictionary, usual},
        {"makeSet", makeSet, usual},
        {"combineSets", combineSets, usual},
        {"buildList", buildList, ""},
        {"linkItems", linkItems, ""},
        {"hashNumbers", hashNumbers, ""},
        {"internNames", internNames, ""},
    };
}
