// layout.cpp - compares the tables of gdb/kelvofxds_gdb.py with the library. Argument: that file.
//
// Exits with 0 when they agree and otherwise says where they do not. A program of its own: the
// structures that the classes let look at their fields are defined once in a program.

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "kelvofxds/kelvofxds.h"
#include "kelvofxds/values/fxValueTypesInternal.h"
#if __has_include("kelvofxds/objects/fxInputFunction.h")
#include "kelvofxds/objects/fxInputFunction.h"
#define HAS_OWN_INPUTS
#endif

#pragma GCC diagnostic ignored "-Winvalid-offsetof"  // classes with tables; compilers define this

using Offsets = std::map<std::string, std::size_t>;

#define AT(Class, field) offsets[#Class "." #field] = offsetof(Class, field)

struct fxStrLayout {
    static void enter(Offsets& offsets) {
        AT(fxStr, slength);
        AT(fxStr, data);
        offsets["fxStr.size"] = sizeof(fxStr);
    }
};

struct fxTempStrLayout {
    static void enter(Offsets& offsets) {
        AT(fxTempStr, data);
        AT(fxTempStr, slength);
    }
};

struct fxStackBufferLayout {
    static void enter(Offsets& offsets) {
        AT(fxStackBuffer, next);
        AT(fxStackBuffer, base);
    }
};

struct fxArrayLayout {
    static void enter(Offsets& offsets) {
        AT(fxArray, data);
        AT(fxArray, maxLen);
        AT(fxArray, len);
        AT(fxArray, elemSize);
    }
};

struct fxDictionaryLayout {
    static void enter(Offsets& offsets) {
        AT(fxDictionary, numItems);
        AT(fxDictionary, keySize);
        AT(fxDictionary, valueSize);
        AT(fxDictionary, buckets);
        AT(fxDictIter, dict);
        AT(fxDictIter, flags);
        AT(fxDictIter, bucket);
    }
};

struct fxSetLayout {
    static void enter(Offsets& offsets) {
        AT(fxSet, buckets);
        AT(fxSet, numItems);
        AT(fxSet, keySize);
        AT(fxSetIter, set);
        AT(fxSetIter, flags);
        AT(fxSetIter, bucket);
    }
};

struct GenericListLayout {
    static void enter(Offsets& offsets) {
        AT(GenericList, count);
        AT(GenericList, head);
    }
};

struct fxIndexableListLayout {
    static void enter(Offsets& offsets) {
        AT(fxIndexableList, head);
        AT(fxIndexableList, count);
    }
};

struct HashTableLayout {
    static void enter(Offsets& offsets) {
        AT(HashTable, buckets);
        AT(HashTable, count);
        AT(HashTable, size);
    }
};

struct NameSpaceLayout {
    static void enter(Offsets& offsets) {
        AT(NameSpace, lastAtom);
        AT(NameSpace, tableSize);
        AT(NameSpace, table);
    }
};

struct fxDataLayout {
    static void enter(Offsets& offsets) {
        AT(fxData, count);
        AT(fxData, type);
        AT(fxBoolData, value);
        AT(fxIntData, value);
        AT(fxLongData, value);
        AT(fxFloatData, value);
        AT(fxDoubleData, value);
        AT(fxCharPtrData, value);
        AT(fxStrData, value);
        AT(fxStrArrayData, value);
    }
};

struct fxPropertyLayout {
    static void enter(Offsets& offsets) {
        AT(fxProperty, tag);
        AT(fxProperty, type);
        AT(fxProperty, value);
    }
};

struct fxObjLayout {
    static void enter(Offsets& offsets) { AT(fxObj, properties); }
};

struct fxOutputChannelLayout {
    static void enter(Offsets& offsets) {
        AT(fxOutputChannel, type);
        AT(fxOutputChannel, connections);
    }
};

struct fxEventLayout {
    static void enter(Offsets& offsets) {
        AT(fxEvent, next);
        AT(fxEvent, type);
        AT(fxEvent, sequence);
        AT(fxMessageEvent, channel);
        AT(fxMessageEvent, data);
    }
};

struct fxEventQueueLayout {
    static void enter(Offsets& offsets) {
        // A handler is its queue, by whose address the commands find it.
        static_assert(offsetof(fxEventHandler, queue) == 0, "nothing before it");
        AT(fxEventQueue, head);
        AT(fxEventQueue, count);
    }
};

struct fxTimerLayout {
    static void enter(Offsets& offsets) {
        AT(fxTimer, interval);
        AT(fxTimer, delta);
        AT(fxTimer, active);
        AT(fxTimer, repeat);
        AT(fxTimer, next);
    }
};

struct fxApplicationLayout {
    static void enter(Offsets& offsets) { AT(fxApplication, opened); }
};

struct fxExecLayout {
    static void enter(Offsets& offsets) {
        AT(fxExec, handlers);
        AT(fxExec, preSelectFuncs);
        AT(fxExec, postSelectFuncs);
        AT(fxExec, applications);
        offsets["fxExec.maxHandlers"] = fxExec::maxHandlers;
    }
};

struct fxSequencerLayout {
    static void enter(Offsets& offsets) { AT(fxSequencer, ranges); }
};

namespace {
void enterPublicFields(Offsets& offsets) {
    AT(fxRCObj, count);
    AT(fxDictBucket, kvmem);
    AT(fxDictBucket, next);
    AT(fxSetBucket, key);
    AT(fxSetBucket, next);
    AT(GenericNode, next);
    AT(GenericNode, item);
    AT(fxLinkItem, next);
    AT(HashEntry, key);
    AT(HashEntry, value);
    AT(HashEntry, next);
    AT(NameSpace_Node, name);
    AT(fxInputChannel, target);
    AT(fxInputChannel, flags);
    AT(fxInputChannel, pending);
    AT(fxInputChannel, sources);
    AT(fxSelectHandler, fd);
    AT(fxSelectHandler, readInterest);
    AT(fxSelectHandler, writeInterest);
    AT(fxSelectHandler, exceptionInterest);
    static_assert(sizeof(fxRef<fxObj>) == sizeof(void*), "the pointer is all there is");
    offsets["fxRef.pointer"] = 0;
}

#ifdef HAS_OWN_INPUTS
// An input that knows its owner.
class OwnInput : public fxOwnInput {
public:
    OwnInput() : fxOwnInput(fxDT_void, nullptr, false, nullptr) {}

    // Where it keeps the owner.
    std::size_t offsetOfOwner() {
        fxObj object;
        setOwner(&object);
        std::size_t offset = sizeof(fxInputChannel);
        while (offset + sizeof(void*) <= sizeof(OwnInput) && !isAt(offset, &object))
            offset += sizeof(void*);
        setOwner(nullptr);
        return offset;
    }

private:
    bool isAt(std::size_t offset, const fxObj* object) const {
        const fxObj* found;
        std::memcpy(&found, reinterpret_cast<const char*>(this) + offset, sizeof found);
        return found == object;
    }
};
#endif

void enterOwner(Offsets& offsets) {
#ifdef HAS_OWN_INPUTS
    offsets["fxOwnInput.owner"] = OwnInput().offsetOfOwner();
#else
    offsets["fxOwnInput.owner"] = sizeof(fxInputChannel);  // a class to come
#endif
}

Offsets offsetsOfLibrary() {
    Offsets offsets;
    enterOwner(offsets);
    enterPublicFields(offsets);
    fxStrLayout::enter(offsets);
    fxTempStrLayout::enter(offsets);
    fxStackBufferLayout::enter(offsets);
    fxArrayLayout::enter(offsets);
    fxDictionaryLayout::enter(offsets);
    fxSetLayout::enter(offsets);
    GenericListLayout::enter(offsets);
    fxIndexableListLayout::enter(offsets);
    HashTableLayout::enter(offsets);
    NameSpaceLayout::enter(offsets);
    fxDataLayout::enter(offsets);
    fxPropertyLayout::enter(offsets);
    fxObjLayout::enter(offsets);
    fxOutputChannelLayout::enter(offsets);
    fxEventLayout::enter(offsets);
    fxEventQueueLayout::enter(offsets);
    fxTimerLayout::enter(offsets);
    fxApplicationLayout::enter(offsets);
    fxExecLayout::enter(offsets);
    fxSequencerLayout::enter(offsets);
    return offsets;
}

#undef AT

// The classes, each with its base.

using Names = std::map<std::string, std::string>;

#define DERIVED(Class, Base)                                       \
    static_assert(std::is_base_of_v<Base, Class>, "as it stands"); \
    bases[#Class] = #Base

void enterContainers(Names& bases) {
    DERIVED(fxXDRObj, fxRCObj);
    DERIVED(fxArray, fxXDRObj);
    DERIVED(fxBoolArray, fxArray);
    DERIVED(fxCharArray, fxArray);
    DERIVED(fxShortArray, fxArray);
    DERIVED(fxIntArray, fxArray);
    DERIVED(fxLongArray, fxArray);
    DERIVED(fxFloatArray, fxArray);
    DERIVED(fxDoubleArray, fxArray);
    DERIVED(fxUnsignedCharArray, fxArray);
    DERIVED(fxUnsignedShortArray, fxArray);
    DERIVED(fxUnsignedLongArray, fxArray);
    DERIVED(fxVoidPtrArray, fxArray);
    DERIVED(fxDictBuckets, fxArray);
    DERIVED(fxDictIters, fxArray);
    DERIVED(fxSetBuckets, fxArray);
    DERIVED(fxSetIters, fxArray);
    DERIVED(fxSeqRangeArray, fxArray);
    DERIVED(fxStubFuncArray, fxArray);
    DERIVED(fxStrArray, fxArray);
    DERIVED(fxSearchList, fxStrArray);
    static_assert(std::is_base_of_v<fxArrayOfElements<int>, fxArrayOf<int>>, "as it stands");
    bases["fxArrayOf"] = "fxArrayOfElements";
    static_assert(std::is_base_of_v<fxArray, fxArrayOfElements<int>>, "as it stands");
    bases["fxArrayOfElements"] = "fxArray";
    DERIVED(fxDictionary, fxXDRObj);
    DERIVED(fxStrStrDictionary, fxDictionary);
    DERIVED(fxVoidPtrDict, fxDictionary);
    DERIVED(fxBinaryOTDict, fxDictionary);
    DERIVED(fxStrStrDictionaryIter, fxDictIter);
    DERIVED(fxVoidPtrDictIter, fxDictIter);
    DERIVED(fxBinaryOTDictIter, fxDictIter);
    DERIVED(fxSet, fxXDRObj);
    DERIVED(fxStrSet, fxSet);
    DERIVED(fxTmpSet, fxSet);
    DERIVED(fxStrSetIter, fxSetIter);
}

void enterObjects(Names& bases) {
    DERIVED(fxPath, fxStr);
    DERIVED(fxObj, fxXDRObj);
    DERIVED(fxEvent, fxObj);
    DERIVED(fxMessageEvent, fxEvent);
    DERIVED(fxTimer, fxObj);
    DERIVED(fxSelectHandler, fxObj);
    DERIVED(fxApplication, fxObj);
    DERIVED(fxVoidData, fxData);
    DERIVED(fxBoolData, fxData);
    DERIVED(fxIntData, fxData);
    DERIVED(fxLongData, fxData);
    DERIVED(fxFloatData, fxData);
    DERIVED(fxDoubleData, fxData);
    DERIVED(fxCharPtrData, fxData);
    DERIVED(fxStrData, fxData);
    DERIVED(fxStrArrayData, fxData);
    DERIVED(fxProperty, fxRCObj);
    DERIVED(fxSequencer, fxRCObj);
    DERIVED(fxConverter, fxInputChannel);
    DERIVED(fxTranscriber, fxRCObj);
    DERIVED(fxGraphReader, fxTranscriber);
    DERIVED(fxGraphWriter, fxTranscriber);
    DERIVED(fxStream, fxRCObj);
    DERIVED(fxMemoryStream, fxStream);
    DERIVED(fxStdioStream, fxStream);
    DERIVED(fxTextPattern, fxRCObj);
    DERIVED(fxRegEx, fxTextPattern);
    DERIVED(fxSLinearPattern, fxTextPattern);
}

#undef DERIVED

// What stands in the script.

// The text of the table that begins with `start`; empty if there is none.
std::string tableIn(const std::string& script, const std::string& start) {
    const std::size_t begin = script.find("\n" + start);
    if (begin == std::string::npos)
        return "";
    return script.substr(begin,
                         script.find_first_of(start.back() == '{' ? "}" : "]", begin) - begin);
}

// The two parts of each line that `pattern` matches.
Names linesOf(const std::string& table, const char* pattern) {
    const std::regex expression(pattern);
    Names found;
    for (std::sregex_iterator match(table.begin(), table.end(), expression), end; match != end;
         ++match)
        found[(*match)[1]] = (*match)[2];
    return found;
}

// The number of an entry, of a pair the one for how doubles are aligned here.
std::string numberIn(const std::string& entry) {
    struct Aligned {
        char before;
        double number;
    };
    const std::size_t comma = entry.find(", ");
    if (comma == std::string::npos)
        return entry;
    if (offsetof(Aligned, number) == 4)
        return entry.substr(1, comma - 1);
    return entry.substr(comma + 2, entry.size() - comma - 3);
}

// How many entries are in one alone, or differ.
int differences(const char* table, const Names& library, const Names& script) {
    int found = 0;
    Names all = library;
    all.insert(script.begin(), script.end());
    for (const auto& [name, value] : all) {
        const auto ours = library.find(name);
        const auto theirs = script.find(name);
        const std::string expected = ours == library.end() ? "(nothing)" : ours->second;
        const std::string actual = theirs == script.end() ? "(nothing)" : theirs->second;
        if (expected == actual)
            continue;
        std::printf("%s, %s: the library has %s, the script %s\n", table, name.c_str(),
                    expected.c_str(), actual.c_str());
        ++found;
    }
    return found;
}

int compareOffsets(const std::string& script) {
    Names library;
    for (const auto& [name, offset] : offsetsOfLibrary())
        library[name] = std::to_string(offset);
    Names found = linesOf(tableIn(script, "LAYOUT = {"), "\"([A-Za-z_.]+)\": ([0-9(), ]+),\n");
    for (auto& [name, number] : found)
        number = numberIn(number);
    return differences("LAYOUT", library, found);
}

int compareBases(const std::string& script) {
    Names library;
    enterContainers(library);
    enterObjects(library);
    return differences(
        "BASES", library,
        linesOf(tableIn(script, "BASES = {"), "\"([A-Za-z]+)\": \"([A-Za-z]+)\",\n"));
}

// The names of the types in the order of their codes.
int compareTypes(const std::string& script) {
    Names library;
#define NAMED(number, code, ...) library[#number] = #code;
    FX_VALUE_TYPES(NAMED, NAMED, NAMED)
#undef NAMED
    const std::string table = tableIn(script, "VALUE_TYPES = [");
    const std::regex line("\\(\"([A-Za-z]+)\", \"[a-zA-Z ]*\"\\),\n");
    Names found;
    for (std::sregex_iterator match(table.begin(), table.end(), line), end; match != end; ++match)
        found[std::to_string(found.size())] = (*match)[1];
    return differences("VALUE_TYPES", library, found);
}

// The bits of an input's flags.
int compareFlags(const std::string& script) {
#ifdef HAS_OWN_INPUTS
    static_assert(fxInputChannel::ownFlag == 0x80000000, "as the script has it");
#endif
    const Names library = {{"LATEST_ONLY", std::to_string(fxInputChannel::latestOnlyFlag)},
                           {"LINK", std::to_string(fxInputChannel::linkFlag)},
                           {"TYPE_SHIFT", std::to_string(fxInputChannel::typeShift)}};
    return differences("flags", library,
                       linesOf(script, "\n(LATEST_ONLY|LINK|TYPE_SHIFT) = ([0-9]+)"));
}
}  // namespace

int main(int argc, char** argv) {
    std::ifstream in(argc == 2 ? argv[1] : "");
    const std::string script{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (script.empty()) {
        std::printf("usage: layout kelvofxds_gdb.py\n");
        return 2;
    }
    const int found =
        compareOffsets(script) + compareBases(script) + compareTypes(script) + compareFlags(script);
    return found == 0 ? 0 : 1;
}
