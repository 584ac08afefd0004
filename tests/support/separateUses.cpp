#include "tests/support/separateUses.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "kelvofxds/kelvofxds.h"

namespace {

bool useStrings(int seed, int rounds) {
    bool isRight = true;
    for (int i = 0; i < rounds; ++i) {
        const fxStr empty, number(seed + i, "%d");
        fxStr text = empty;
        text.append(number.c_str());
        const fxStr sentence = "a " | number | " and " | text | "";
        unsigned int at = 2;
        isRight = isRight && sentence.token(at, ' ') == number && text.hash() == number.hash();
        text.remove(0, text.length());
        text.format("%s %g", number.c_str(), 0.5);
        text.raise();
        isRight = isRight && text == fxStr(number | " 0.5") && text != empty;
    }
    return isRight;
}

bool useStringArrays(int seed, int rounds) {
    fxStrArray strings;
    bool isRight = true;
    for (int i = 0; i < rounds; ++i) {
        strings.resize(0);
        for (int k = 0; k < 24; ++k)
            strings.append(fxStr((seed + k * 7) % 24, "number %02d"));
        strings.qsort();
        const fxStrArray copy(strings);
        isRight = isRight && copy[3] == fxStr("number 03") && strings[20] == copy[20];
        strings.setMaxLength(strings.length() + 8);
    }
    return isRight;
}

bool useArrays(int seed, int rounds) {
    fxIntArray ints;
    fxArrayOf<double> doubles;
    bool isRight = true;
    for (int i = 0; i < rounds; ++i) {
        ints.resize(0);
        for (int k = 0; k < 50; ++k) {
            const int value = (seed + k * 11) % 50;
            ints.append(&value);
            doubles.append(value);
        }
        const fxIntArray copy(ints);
        ints.remove(0, 1);
        doubles.resize(doubles.length() % 64);
        isRight = isRight && ints.length() == 49 && copy[1] == (seed + 11) % 50;
    }
    return isRight && doubles.length() < 64;
}

// Keys that come and go.
bool useKeys(int seed, int rounds) {
    fxStrSet set;
    fxStrStrDictionary dict;
    fxVoidPtrDict pointers;
    for (int i = 0; i < rounds; ++i) {
        const fxStr key(i % 16, "%d"), value(seed, "%d");
        set.add(&key);
        dict.addInternal(&key, &value);
        pointers.add(key, &set);
        const fxStr gone((i + 7) % 16, "%d");
        set.remove(&gone);
        dict.remove(&gone);
        pointers.remove(gone);
    }
    for (int i = 0; i < 16; ++i) {
        const fxStr key(i, "%d");
        set.add(&key);
        dict.findCreate(&key);
        pointers.findCreate(key);
    }
    unsigned int walked = 0;
    for (fxStrSetIter at(set); at.getKey(); ++at)
        ++walked;
    return walked == 16 && set.length() == 16 && dict.length() == 16 && pointers.length() == 16;
}

// Sets whose keys share one chain, made and ended again and again.
bool useLongChains(int seed, int rounds) {
    bool isRight = true;
    for (int i = 0; i < rounds; ++i) {
        fxStrSet set;
        for (int k = 0; k < 24; ++k) {
            const fxStr key(k + seed, "alike in the beginning %d");
            set.add(&key);
        }
        for (int k = 0; k < 24; ++k) {
            const fxStr key(k + seed, "alike in the beginning %d");
            isRight = isRight && set.contains(&key);
        }
        isRight = isRight && set.length() == 24;
    }
    return isRight;
}

thread_local HashTable* tableWalked = nullptr;

void removeVisited(HashEntry* entry) { tableWalked->remove(entry->key); }

// Hash tables that a walk empties.
bool useHashTables(int seed, int rounds) {
    bool isRight = true;
    for (int i = 0; i < rounds; ++i) {
        HashTable table;
        const auto first = static_cast<unsigned long>(seed);
        for (unsigned long key = 0; key < 20; ++key)
            table.add(first + key, &table);
        tableWalked = &table;
        table.mapcar(removeVisited);
        for (unsigned long key = 0; key < 20; ++key)
            isRight = isRight && !table.lookup(first + key);
    }
    return isRight;
}

bool useLists(int seed, int rounds) {
    bool isRight = true;
    for (int i = 0; i < rounds; ++i) {
        int items[8] = {};
        GenericList list;
        for (int& item : items)
            list.append(&item);
        isRight = isRight && list.findItem(5L) == &items[5];
        list.remove(&items[5]);
        isRight = isRight && list.findItem(5L) == &items[6];

        fxLinkItem links[8];
        fxIndexableList linked;
        for (fxLinkItem& link : links)
            linked.append(&link);
        linked.unlinkAt(2);
        isRight = isRight && linked.findLink(2) == &links[3];

        NameSpace names(nullptr, 0);
        const fxStr name(seed, "name %d");
        const unsigned long atom = names.makeAtom(name.c_str(), 1);
        isRight = isRight && std::strcmp(names.nameForAtom(atom), name.c_str()) == 0;
    }
    return isRight;
}

bool usePatterns(int seed, int rounds) {
    const fxStr number(seed, "%d");
    const fxStr text = "before " | number | " behind";
    fxregexp* const program = fxregcomp(fxStr("([a-z]+) (" | number | ")").c_str());
    bool isRight = program != nullptr;
    for (int i = 0; i < rounds && isRight; ++i) {
        const fxRegEx expression(number | " b(e|x)*");
        const fxSLinearPattern behind(" behind");
        const int end = static_cast<int>(number.length()) + 7;
        isRight = expression.findBuffer(text.c_str(), text.length()) == 7 &&
                  behind.findBuffer(text.c_str(), text.length()) == end;
        char line[64];
        isRight = isRight && fxregexec(program, text.c_str()) == 1;
        fxregsub(program, "\\2 \\1", line);
        isRight = isRight && (number | " before") == fxStr(line);
        const fxSearchList list("/nowhere:.", (number | "\\.none$").c_str());
        isRight = isRight && list.length() == 0;
    }
    std::free(program);
    return isRight;
}

bool usePaths(int seed, int rounds) {
    bool isRight = true;
    for (int i = 0; i < rounds; ++i) {
        const fxStr name(seed, "file%d");
        const fxPath path("/a/folder/" | name);
        isRight = isRight && path.leaf() == name && path.directory() == "/a/folder";
        char* const base = pathbasename(path.c_str());
        char* const expanded = pathexpandtilde("~/x");
        char* const extended = environmentVariableExtendedName("$HOME/x", 64);
        isRight = isRight && name == base && expanded;
        std::free(base);
        std::free(expanded);
        std::free(extended);
        fxStackBuffer buffer;
        buffer.put(path.c_str(), path.length());
        isRight = isRight && buffer.length() == path.length();
    }
    return isRight;
}

bool isLike(const fxXDRObj* object, const fxStrStrDictionary& dict) {
    const auto* found = static_cast<const fxStrStrDictionary*>(object);
    return found && found->length() == dict.length();
}

void end(fxXDRObj* object) { delete static_cast<fxStrStrDictionary*>(object); }

void fill(fxStrStrDictionary& dict, int seed) {
    for (int i = 0; i < 5; ++i)
        dict.add(fxStr(i, "%d"), fxStr(seed, "%d"));
}

// Standard streams and graph streams in memory.
bool useTranscribers(int seed, int rounds) {
    bool isRight = true;
    fxStrStrDictionary dict;
    fill(dict, seed);
    for (int i = 0; i < rounds && isRight; ++i) {
        auto* const stream = new fxMemoryStream;
        ++stream->count;
        fxTranscriber* const writer = fxTranscriber::getWriter(stream);
        isRight = writer && writer->writeObject(&dict, &dict) == 1;
        delete writer;
        fxTranscriber* const reader = fxTranscriber::getReader(stream);
        void* const read = reader ? reader->readObject(fxStrStrDictionary_type) : nullptr;
        delete reader;
        --stream->count;
        delete stream;
        fxXDRObj* const copy = fxDeepCopy(static_cast<fxXDRObj&>(dict));
        isRight = isRight && isLike(static_cast<fxXDRObj*>(read), dict) && isLike(copy, dict);
        end(static_cast<fxXDRObj*>(read));
        end(copy);
    }
    return isRight;
}

// Both kinds in files. What is saved waits for the disk, so that rounds are few.
bool useFiles(int seed, int rounds) {
    char folder[] = "/tmp/separateUsesXXXXXX";
    bool isRight = ::mkdtemp(folder) != nullptr;
    const std::string path = std::string(folder) + "/saved";
    fxStrStrDictionary dict;
    fill(dict, seed);
    for (int i = 0; i <= rounds / 100 && isRight; ++i) {
        fxStrStrDictionary* loaded = nullptr;
        if (fxSaveFile(path.c_str(), dict))
            loaded = fxLoadFile<fxStrStrDictionary>(path.c_str());
        isRight = isLike(loaded, dict);
        end(loaded);
        fxTranscriber* const writer =
            fxTranscriber::getWriter(new fxStdioStream(path.c_str(), fxStream::writeStream));
        isRight = isRight && writer && writer->writeObject(&dict, &dict) == 1;
        delete writer;  // and the stream with it
        loaded = fxLoadFile<fxStrStrDictionary>(path.c_str());
        isRight = isRight && isLike(loaded, dict);
        end(loaded);
    }
    ::unlink(path.c_str());
    ::rmdir(folder);
    return isRight;
}

}  // namespace

const SeparateUse separateUses[] = {
    {"strings", useStrings, true},
    {"string arrays", useStringArrays, true},
    {"arrays", useArrays, true},
    {"sets and dictionaries", useKeys, true},
    {"long chains", useLongChains, true},
    {"lists", useLists, true},
    {"hash tables", useHashTables, true},
    {"paths", usePaths, true},
    {"transcribers", useTranscribers, true},
    {"files", useFiles, true},
    {"patterns", usePatterns, false},
};
const unsigned int separateUseCount = sizeof separateUses / sizeof separateUses[0];
