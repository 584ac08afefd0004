// containers.cpp - examples of the reference manual: kelvofxds/containers.

#include "docs/reference/examples.h"

EXAMPLE(fxArray) {
    //! [fxArray]
    fxIntArray numbers;  // one of the classes that derive from fxArray
    for (const int number : {5, 3, 8})
        numbers.append(&number);  // the address: append(5) would not compile
    numbers.remove(0, 1);
    std::printf("%d %d, %u left\n", numbers[0], numbers[1], numbers.length());  // 3 8, 2 left
    //! [fxArray]
}

EXAMPLE(fxCharArray) {
    //! [fxCharArray]
    fxCharArray values;
    const char given[] = {'a', 'b'};
    for (const char& value : given)
        values.append(&value);
    std::printf("%c%c\n", values[0], values[1]);  // ab
    //! [fxCharArray]
}

EXAMPLE(fxShortArray) {
    //! [fxShortArray]
    fxShortArray values;
    const short given[] = {300, -7};
    for (const short& value : given)
        values.append(&value);
    std::printf("%d %d\n", values[0], values[1]);  // 300 -7
    //! [fxShortArray]
}

EXAMPLE(fxIntArray) {
    //! [fxIntArray]
    fxIntArray values;
    const int given[] = {100000, -7};
    for (const int& value : given)
        values.append(&value);
    std::printf("%d %d\n", values[0], values[1]);  // 100000 -7
    //! [fxIntArray]
}

EXAMPLE(fxLongArray) {
    //! [fxLongArray]
    fxLongArray values;
    const long given[] = {2000000000L, -7L};
    for (const long& value : given)
        values.append(&value);
    std::printf("%ld %ld\n", values[0], values[1]);  // 2000000000 -7
    //! [fxLongArray]
}

EXAMPLE(fxFloatArray) {
    //! [fxFloatArray]
    fxFloatArray values;
    const float given[] = {0.5F, 2.0F};
    for (const float& value : given)
        values.append(&value);
    std::printf("%g %g\n", static_cast<double>(values[0]),
                static_cast<double>(values[1]));  // 0.5 2
    //! [fxFloatArray]
}

EXAMPLE(fxDoubleArray) {
    //! [fxDoubleArray]
    fxDoubleArray values;
    const double given[] = {0.5, 1e100};
    for (const double& value : given)
        values.append(&value);
    std::printf("%g %g\n", values[0], values[1]);  // 0.5 1e+100
    //! [fxDoubleArray]
}

EXAMPLE(fxBoolArray) {
    //! [fxBoolArray]
    fxBoolArray values;
    const unsigned char given[] = {1, 0};
    for (const unsigned char& value : given)
        values.append(&value);
    std::printf("%d %d\n", values[0], values[1]);  // 1 0
    //! [fxBoolArray]
}

EXAMPLE(fxUnsignedCharArray) {
    //! [fxUnsignedCharArray]
    fxUnsignedCharArray values;
    const unsigned char given[] = {255, 1};
    for (const unsigned char& value : given)
        values.append(&value);
    std::printf("%d %d\n", values[0], values[1]);  // 255 1
    //! [fxUnsignedCharArray]
}

EXAMPLE(fxUnsignedShortArray) {
    //! [fxUnsignedShortArray]
    fxUnsignedShortArray values;
    const unsigned short given[] = {65535, 1};
    for (const unsigned short& value : given)
        values.append(&value);
    std::printf("%d %d\n", values[0], values[1]);  // 65535 1
    //! [fxUnsignedShortArray]
}

EXAMPLE(fxUnsignedLongArray) {
    //! [fxUnsignedLongArray]
    fxUnsignedLongArray values;
    const unsigned long given[] = {4000000000UL, 1UL};
    for (const unsigned long& value : given)
        values.append(&value);
    std::printf("%lu %lu\n", values[0], values[1]);  // 4000000000 1
    //! [fxUnsignedLongArray]
}

EXAMPLE(fxVoidPtrArray) {
    //! [fxVoidPtrArray]
    char lima[] = "Lima";
    void* pointer = lima;
    fxVoidPtrArray pointers;  // what they point to stays the caller's
    pointers.append(&pointer);
    std::printf("%s, %u\n", static_cast<char*>(pointers[0]), pointers.find(&pointer));  // Lima, 0
    //! [fxVoidPtrArray]
}

EXAMPLE(fxArrayOf) {
    //! [fxArrayOf]
    fxArrayOf<fxStr> towns;  // of any type; values go in as they are
    towns.append("Oslo");
    towns.append("Lima");
    towns.qsort();
    for (const fxStr& town : towns)
        if (town != "Oslo")
            std::printf("%s\n", town.c_str());  // Lima
    //! [fxArrayOf]
}

EXAMPLE(fxArrayOfElements) {
    //! [fxArrayOfElements]
    fxArrayOf<double> numbers;  // derives from it
    numbers.append(2.5);
    const fxArrayOfElements<double>& elements = numbers;
    std::printf("%s of %u bytes\n", elements.className(), elements.getLen());  // ARRAY of 8 bytes
    //! [fxArrayOfElements]
}

EXAMPLE(fxMovesByBytes) {
    //! [fxMovesByBytes]
    struct Plain {
        int a, b;
    };
    std::printf("%d\n", fxMovesByBytes<Plain>::value);  // 1
    std::printf("%d\n", fxMovesByBytes<fxStr>::value);  // 1
    //! [fxMovesByBytes]
}

EXAMPLE(fxElementXDR) {
    //! [fxElementXDR]
    using Numbers = fxElementXDR<int>;
    using Files = fxElementXDR<std::FILE*>;
    std::printf("%d\n", Numbers::kind() == Numbers::asNumbers);  // 1
    std::printf("%d\n", Files::kind() == Files::cannotBe);       // 1
    //! [fxElementXDR]
}

EXAMPLE(fxBesideBuckets) {
    //! [fxBesideBuckets]
    // A part of fxDictBuckets and fxSetBuckets: a host does not name it.
    const fxBesideBuckets here;
    const fxBesideBuckets there(here);  // copies take nothing along
    std::printf("%u bytes\n", static_cast<unsigned int>(sizeof there));  // 2 bytes
    //! [fxBesideBuckets]
}

EXAMPLE(fxBoundingBox) {
    //! [fxBoundingBox]
    const fxBoundingBox page(0, 0, 100, 50), window(60, 20, 100, 100);
    const fxBoundingBox seen = page.intersect(window);
    std::printf("%d,%d %dx%d\n", seen.x, seen.y, seen.width, seen.height);  // 60,20 40x30
    std::printf("%d\n", page.bound(window).getWidth());                     // 160
    //! [fxBoundingBox]
}

EXAMPLE(fxStrStrDictionary) {
    //! [fxStrStrDictionary]
    fxStrStrDictionary capitals;
    capitals.add("Peru", "Lima");
    capitals.findCreate("Norway") = "Oslo";
    if (const fxStr* town = capitals.find("Peru"))
        std::printf("%s of %u\n", town->c_str(), capitals.length());  // Lima of 2
    capitals.remove("Peru");
    std::printf("%d\n", capitals.find("Peru") == nullptr);  // 1
    //! [fxStrStrDictionary]
}

EXAMPLE(fxStrStrDictionaryIter) {
    //! [fxStrStrDictionaryIter]
    fxStrStrDictionary capitals;
    capitals.add("Peru", "Lima");
    capitals.add("Atlantis", "");
    for (fxStrStrDictionaryIter it(capitals); it.key(); ++it)
        if (it.value()->length() == 0)
            capitals.remove(*it.key());      // entries may go during the walk
    std::printf("%u\n", capitals.length());  // 1
    //! [fxStrStrDictionaryIter]
}

EXAMPLE(fxVoidPtrDict) {
    //! [fxVoidPtrDict]
    int hits = 0;
    fxVoidPtrDict counters;  // what the values point to stays the caller's
    counters.add("hits", &hits);
    if (void** found = counters.find("hits"))
        ++*static_cast<int*>(*found);
    std::printf("%d\n", hits);  // 1
    //! [fxVoidPtrDict]
}

EXAMPLE(fxVoidPtrDictIter) {
    //! [fxVoidPtrDictIter]
    int one = 1, two = 2, sum = 0;
    fxVoidPtrDict numbers;
    numbers.add("one", &one);
    numbers.add("two", &two);
    for (fxVoidPtrDictIter it(numbers); it.key(); ++it)
        sum += *static_cast<int*>(*it.value());
    std::printf("%d\n", sum);  // 3
    //! [fxVoidPtrDictIter]
}

EXAMPLE(fxDictionary) {
    //! [fxDictionary]
    fxStrStrDictionary capitals(1000);  // a class that derives from it, with 1000 buckets
    capitals.add("Peru", "Lima");
    const fxDictionary& dictionary = capitals;
    const fxStr key("Peru");
    std::printf("%s\n", static_cast<fxStr*>(dictionary.find(&key))->c_str());  // Lima
    //! [fxDictionary]
}

EXAMPLE(fxDictIter) {
    //! [fxDictIter]
    fxStrStrDictionary capitals;
    capitals.add("Peru", "Lima");
    for (fxDictIter it(capitals); it.getKey(); ++it)  // of a dictionary of any kind
        std::printf("%s\n", static_cast<fxStr*>(it.getValue())->c_str());  // Lima
    //! [fxDictIter]
}

EXAMPLE(fxDictBucket) {
    //! [fxDictBucket]
    fxStrStrDictionary capitals;
    const fxStr key("Peru"), value("Lima");
    const fxDictBucket* entry = capitals.addInternal(&key, &value);
    std::printf("%s\n", static_cast<fxStr*>(entry->kvmem)->c_str());  // Peru
    //! [fxDictBucket]
}

EXAMPLE(fxDictBuckets) {
    //! [fxDictBuckets]
    const fxStrStrDictionary capitals(101);              // holds its chains in one
    std::printf("%u\n", capitals.getNumBuckets());       // 101
    std::printf("%u\n", fxDictBuckets().getElemSize());  // 4
    //! [fxDictBuckets]
}

EXAMPLE(fxDictIters) {
    //! [fxDictIters]
    fxStrStrDictionary capitals;  // holds its iterators in one, and tells them what is removed
    capitals.add("Peru", "Lima");
    fxStrStrDictionaryIter it(capitals);
    capitals.remove("Peru");
    ++it;
    std::printf("%d\n", it.key() == nullptr);  // 1
    //! [fxDictIters]
}

EXAMPLE(fxStrSet) {
    //! [fxStrSet]
    fxStrSet warm, coast;
    warm.add("Lima");
    for (const char* town : {"Lima", "Oslo"})
        coast.add(town);
    coast -= warm;
    std::printf("%d %d\n", coast.contains("Oslo"), coast.contains("Lima"));  // 1 0
    //! [fxStrSet]
}

EXAMPLE(fxStrSetIter) {
    //! [fxStrSetIter]
    fxStrSet towns;
    for (const char* town : {"Lima", "Oslo"})
        towns.add(town);
    unsigned int bytes = 0;
    for (fxStrSetIter it(towns); it.key(); ++it)
        bytes += it.key()->length();
    std::printf("%u\n", bytes);  // 8
    //! [fxStrSetIter]
}

EXAMPLE(fxSet) {
    //! [fxSet]
    fxStrSet towns;  // a class that derives from it
    towns.add("Lima");
    const fxSet& set = towns;
    const fxStr key("Lima");
    std::printf("%d of %u\n", set.contains(&key), set.length());  // 1 of 1
    //! [fxSet]
}

EXAMPLE(fxTmpSet) {
    //! [fxTmpSet]
    fxStrSet warm, coast;  // operator& would return an fxTmpSet, but ends the process:
    warm.add("Lima");
    for (const char* town : {"Lima", "Oslo"})
        coast.add(town);
    fxStrSet both;
    both |= warm;
    both &= coast;                       // so this is the way
    std::printf("%u\n", both.length());  // 1
    //! [fxTmpSet]
}

EXAMPLE(fxSetIter) {
    //! [fxSetIter]
    fxStrSet towns;
    towns.add("Lima");
    for (fxSetIter it(towns); it.getKey(); ++it)                         // of a set of any kind
        std::printf("%s\n", static_cast<fxStr*>(it.getKey())->c_str());  // Lima
    //! [fxSetIter]
}

EXAMPLE(fxSetBucket) {
    //! [fxSetBucket]
    fxStrSet towns;
    const fxSetBucket* entry = towns.add("Lima");
    std::printf("%s\n", static_cast<fxStr*>(entry->key)->c_str());  // Lima
    //! [fxSetBucket]
}

EXAMPLE(fxSetBuckets) {
    //! [fxSetBuckets]
    const fxStrSet towns(101);                          // holds its chains in one
    std::printf("%u\n", towns.getNumBuckets());         // 101
    std::printf("%u\n", fxSetBuckets().getElemSize());  // 4
    //! [fxSetBuckets]
}

EXAMPLE(fxSetIters) {
    //! [fxSetIters]
    fxStrSet towns;  // holds its iterators in one, and tells them what is removed
    towns.add("Lima");
    fxStrSetIter it(towns);
    towns.remove("Lima");
    ++it;
    std::printf("%d\n", it.key() == nullptr);  // 1
    //! [fxSetIters]
}
