// str.cpp - examples of the reference manual: kelvofxds/str.

#include <filesystem>
#include <fstream>

#include "docs/reference/examples.h"

EXAMPLE(fxStr) {
    //! [fxStr]
    fxStr line("key = value");
    unsigned int at = 0;
    const fxStr key = line.token(at, '=').trim(" ");
    line.format("%s is %u bytes long", key.c_str(), key.length());
    std::printf("%s\n", line.c_str());  // key is 3 bytes long
    //! [fxStr]
}

EXAMPLE(fxTempStr) {
    //! [fxTempStr]
    const fxStr folder("/etc");
    const fxStr path = folder | "/" | "hosts";         // fxTempStr on the way, fxStr in the end
    std::printf("%s\n", path.c_str());                 // /etc/hosts
    std::printf("%u\n", (folder | "/motd").length());  // 9
    //! [fxTempStr]
}

EXAMPLE(fxStrArray) {
    //! [fxStrArray]
    fxStrArray towns;
    for (const char* town : {"Oslo", "Lima", "Bern"})
        towns.append(town);
    towns.qsort();
    std::printf("%s of %u\n", towns[0].c_str(), towns.length());  // Bern of 3
    std::printf("%u\n", towns.find("Oslo"));                      // 2
    //! [fxStrArray]
}

EXAMPLE(fxStackBuffer) {
    //! [fxStackBuffer]
    fxStackBuffer buffer;  // no heap for the first 1000 bytes
    for (const char* word : {"to", "be"})
        buffer.put(word, 2);
    buffer.addc('!');
    std::printf("%.*s\n", static_cast<int>(buffer.length()), buffer.getBase());  // tobe!
    //! [fxStackBuffer]
}

EXAMPLE(fxPath) {
    //! [fxPath]
    const fxPath path("/usr/include/stdio.h");
    std::printf("%s\n", path.directory().c_str());  // /usr/include
    std::printf("%s\n", path.leaf().c_str());       // stdio.h
    //! [fxPath]
}

EXAMPLE(fxSearchList) {
    char folder[] = "/tmp/searchList.XXXXXX";
    if (!::mkdtemp(folder))
        return;
    for (const char* name : {"one.txt", "two.txt", "three.md"})
        std::ofstream(std::string(folder) + "/" + name) << name;
    //! [fxSearchList]
    fxSearchList texts(folder, ".*\\.txt");  // folders, separated by ":", and a whole name
    texts.qsort();
    for (unsigned int i = 0; i < texts.length(); ++i)
        texts[i] = fxPath(texts[i]).leaf();
    std::printf("%s, %s\n", texts[0].c_str(), texts[1].c_str());  // one.txt, two.txt
    //! [fxSearchList]
    std::filesystem::remove_all(folder);
}
