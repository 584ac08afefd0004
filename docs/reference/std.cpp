// std.cpp - examples of the reference manual: what kelvofxds/std.h includes.

#include "kelvofxds/std.h"

#include <string>

#include "docs/reference/examples.h"

EXAMPLE(fxText) {
    //! [fxText]
    const auto bytes = [](const fxText& text) { return text.view().size(); };  // takes any text
    const std::string owned = "Oslo";
    std::printf("%u\n", static_cast<unsigned int>(bytes("Lima") + bytes(owned)));  // 8
    std::printf("%s\n", fxText(owned).str().c_str());                              // Oslo
    //! [fxText]
}

EXAMPLE(fxEntryIterator) {
    //! [fxEntryIterator]
    fxStrStrDictionary capitals;
    capitals.add("Peru", "Lima");
    capitals.add("Atlantis", "");
    for (auto& [country, town] : capitals)  // walks by fxEntryIterator
        if (town.length() == 0)
            capitals.remove(country);
    std::printf("%u left\n", capitals.length());  // 1 left
    //! [fxEntryIterator]
}

EXAMPLE(fxEntryRange) {
    //! [fxEntryRange]
    fxStrStrDictionary capitals;
    capitals.add("Peru", "Lima");
    const fxEntryRange<fxStr, fxStr> entries = fxEntries<fxStr, fxStr>(capitals);
    for (auto& [country, town] : entries)
        std::printf("%s: %s\n", country.c_str(), town.c_str());  // Peru: Lima
    //! [fxEntryRange]
}

EXAMPLE(fxEntryTypes) {
    //! [fxEntryTypes]
    using Types = fxEntryTypes<fxVoidPtrDict>;
    std::printf("%d\n", std::is_same_v<Types::Key, fxStr>);    // 1
    std::printf("%d\n", std::is_same_v<Types::Value, void*>);  // 1
    //! [fxEntryTypes]
}

EXAMPLE(fxKeyIterator) {
    //! [fxKeyIterator]
    fxStrSet towns;
    towns.add("Lima");
    for (const fxStr& town : towns)         // walks by fxKeyIterator
        std::printf("%s\n", town.c_str());  // Lima
    //! [fxKeyIterator]
}

EXAMPLE(fxKeyRange) {
    //! [fxKeyRange]
    fxStrSet towns;
    towns.add("Lima");
    const fxKeyRange<fxStr> keys = fxKeys<fxStr>(towns);
    for (const fxStr& town : keys)
        std::printf("%s\n", town.c_str());  // Lima
    //! [fxKeyRange]
}

EXAMPLE(fxKeyTypes) {
    //! [fxKeyTypes]
    std::printf("%d\n", std::is_same_v<fxKeyTypes<fxStrSet>::Key, fxStr>);  // 1
    //! [fxKeyTypes]
}

EXAMPLE(fxListIterator) {
    //! [fxListIterator]
    char lima[] = "Lima";
    GenericList list;
    list.append(lima);
    for (void* item : list)                             // walks by fxListIterator
        std::printf("%s\n", static_cast<char*>(item));  // Lima
    //! [fxListIterator]
}

EXAMPLE(fxItemIterator) {
    //! [fxItemIterator]
    char lima[] = "Lima";
    GenericList list;
    list.append(lima);
    for (const char* town : fxItems<char>(list))  // walks by fxItemIterator
        std::printf("%s\n", town);                // Lima
    //! [fxItemIterator]
}

EXAMPLE(fxItemRange) {
    //! [fxItemRange]
    struct Job : fxLinkItem {
        int minutes = 5;
    } jobs[2];
    fxIndexableList list;
    for (Job& job : jobs)
        list.append(&job);
    int sum = 0;
    for (const Job& job : fxItems<Job>(list))  // an fxItemRange
        sum += job.minutes;
    std::printf("%d minutes\n", sum);  // 10 minutes
    //! [fxItemRange]
}

EXAMPLE(fxAtomIterator) {
    //! [fxAtomIterator]
    NameSpace names(nullptr, 0);
    names.makeAtom("red", 1);
    for (auto [atom, name] : names)              // walks by fxAtomIterator
        std::printf("%lu is %s\n", atom, name);  // 1 is red
    //! [fxAtomIterator]
}
