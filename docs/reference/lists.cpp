// lists.cpp - examples of the reference manual: kelvofxds/lists.

#include "docs/reference/examples.h"

EXAMPLE(GenericList) {
    //! [GenericList]
    char first[] = "first", second[] = "second";
    GenericList list;  // of pointers, which stay the caller's
    list.append(second);
    list.prepend(first);
    std::printf("%s\n", static_cast<char*>(list.findItem(1)));  // second
    std::printf("%ld\n", list.length());                        // 2
    //! [GenericList]
}

EXAMPLE(GenericNode) {
    //! [GenericNode]
    char one[] = "one", two[] = "two";
    GenericList list;
    list.append(one);
    list.append(two);
    const GenericNode* node = list.first();
    std::printf("%s\n", static_cast<char*>(node->next->item));  // two
    //! [GenericNode]
}

EXAMPLE(fxIndexableList) {
    //! [fxIndexableList]
    struct Job : fxLinkItem {
        int number = 0;
    } jobs[3];
    fxIndexableList list;  // links what is there: no allocation
    for (int i = 0; i < 3; ++i) {
        jobs[i].number = 10 * i;
        list.append(&jobs[i]);
    }
    list.unlinkAt(0);
    std::printf("%d\n", static_cast<Job*>(list.findLink(1))->number);  // 20
    //! [fxIndexableList]
}

EXAMPLE(fxLinkItem) {
    //! [fxLinkItem]
    struct Task : fxLinkItem {
        const char* name = "";
    } wash, dry;
    wash.name = "wash";
    dry.name = "dry";
    fxIndexableList list;
    list.append(&wash);
    list.append(&dry);
    std::printf("%s\n", static_cast<Task*>(wash.next)->name);  // dry
    //! [fxLinkItem]
}

EXAMPLE(HashTable) {
    //! [HashTable]
    char lima[] = "Lima", oslo[] = "Oslo";
    HashTable byNumber;  // of pointers, which stay the caller's
    byNumber.add(51, lima);
    byNumber.add(47, oslo);
    std::printf("%s\n", static_cast<char*>(byNumber.lookup(47)));  // Oslo
    std::printf("%d\n", byNumber.lookup(1) == nullptr);            // 1
    //! [HashTable]
}

EXAMPLE(HashEntry) {
    //! [HashEntry]
    char oslo[] = "Oslo";
    HashTable byNumber;
    HashEntry* entry = byNumber.addElement(47);  // the value is set later
    entry->value = oslo;
    std::printf("%lu: %s\n", entry->key, static_cast<char*>(byNumber.lookup(47)));  // 47: Oslo
    //! [HashEntry]
}

EXAMPLE(NameSpace) {
    //! [NameSpace]
    NameSpace names(nullptr, 0);  // 0: it numbers the names itself
    const unsigned long red = names.makeAtom("red", 1);
    const unsigned long blue = names.makeAtom("blue", 1);
    std::printf("%d\n", names.makeAtom("red", 0) == red);                 // 1
    std::printf("%s\n", names.nameForAtom(blue));                         // blue
    std::printf("%d\n", names.makeAtom("none", 0) == names.getNoAtom());  // 1
    //! [NameSpace]
}

EXAMPLE(NameSpace_Node) {
    //! [NameSpace_Node]
    NameSpace names(nullptr, 0);  // keeps such a node for each name
    const unsigned long atom = names.makeAtom("red", 1);
    std::printf("%s\n", names.nameForAtom(atom));  // red
    names.freeAllAtoms();                          // all nodes are gone
    std::printf("%d\n", names.validAtom(atom));    // 0
    //! [NameSpace_Node]
}
