// hostileReading.h - reading bytes that nobody vouches for, and using the result.
#pragma once

#include <malloc.h>

#include <cstring>
#include <memory>
#include <set>
#include <string>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "tests/support/hostileTypes.h"
#include "tests/support/memoryStream.h"

namespace hostile {

/// Keeps what is computed from being optimised away.
inline volatile unsigned int sink;

inline void use(fxStr& text) {
    sink = text.hash() + text.length() + static_cast<unsigned int>(compare(text, "m"));
    sink = static_cast<unsigned char>(text[text.length()]) + text.next(0, 'a') +
           text.skipR(text.length(), " ");
    fxStr copied(text);
    text.append("tail");
    text.insert("head", 0);
    text.lower();
    text.remove(0, 4);
    sink = copied == text;
    unsigned int position = 0;
    const fxStr first = text.token(position, ' ');
    text.resize(text.length() + 3);
    text = first;
}

template <class Element>
unsigned int foldBytes(const Element* elements, unsigned int n) {
    unsigned int sum = 0;
    for (unsigned int i = 0; i < n * sizeof(Element); ++i)
        sum += reinterpret_cast<const unsigned char*>(elements)[i];
    return sum;
}

template <class Element, class Array>
void use(Array& array) {
    const unsigned int n = array.length();
    for (unsigned int i = 0; i < n; ++i)
        sink = foldBytes(&array[i], 1);
    MemoryStream out;
    fxBinaryWriter writer(&out);
    sink = array.xdr(writer);
    // Elements of another size than the class's are the stream's own idea.
    if (array.getElemSize() != sizeof(Element))
        return;
    const Element element = Element();
    array.append(&element);
    array.insert(&element, array.length() / 2);
    sink = array.find(&element);
    array.qsort();
    Array copied(array);
    array.remove(0, 1);
    array.resize(array.length() + 2);
    sink = copied.length();
}

/// Walking ever so many empty buckets is slow, but nothing else. Set by fuzzers,
/// whose instrumentation makes it slower still: such dictionaries are not even
/// deleted then.
inline bool abandonManyBuckets = false;
inline unsigned int manyBuckets = 1U << 20;

inline bool hasManyBuckets(const fxStrStrDictionary& dictionary) {
    return dictionary.getNumBuckets() > manyBuckets;
}

inline bool isAbandoned(const fxStrStrDictionary& dictionary) {
    return abandonManyBuckets && hasManyBuckets(dictionary);
}

inline void use(fxStrStrDictionary& dictionary) {
    if (hasManyBuckets(dictionary))
        return;
    unsigned int entries = 0;
    for (fxStrStrDictionaryIter iter(dictionary); iter.key(); ++iter, ++entries) {
        sink = dictionary.find(*iter.key()) != nullptr;
        use(*iter.value());
    }
    sink = entries;
    MemoryStream out;
    fxBinaryWriter writer(&out);
    sink = writer.writeObject(&dictionary, &dictionary);
    if (dictionary.getNumBuckets() == 0)
        return;  // nothing can be added
    dictionary.add("added", "value");
    dictionary.findCreate("created").append("text");
    dictionary.remove("added");
    dictionary.remove("absent");
    fxStrStrDictionaryIter iter(dictionary);
    if (iter.key())
        dictionary.remove(fxStr(*iter.key()));
}

/// Uses a block as far as it goes: it has the size that the stream gives, not
/// that which its class asks for.
template <class Element>
void useBlock(Element* block, unsigned int n) {
    if (!block)
        return;
    const std::size_t there = malloc_usable_size(block) / sizeof(Element);
    sink = foldBytes(block, n < there ? n : static_cast<unsigned int>(there));
}

inline void use(Sample& s) {
    for (fxStr* text : {&s.name, &s.list[0], &s.list[1], &s.list[2]})
        use(*text);
    use(s.pairs);
    use<int>(s.ints);
    use<short>(s.halves);
    use<double>(s.reals);
    use<unsigned char>(s.bytes);
    sink = static_cast<unsigned int>(s.text ? std::strlen(s.text) : 0);
    useBlock(s.charBlock, Sample::charCount);
    useBlock(s.shortBlock, Sample::shortCount);
    useBlock(s.longBlock, Sample::longCount);
    useBlock(s.doubleBlock, Sample::doubleCount);
    useBlock(s.floatBlock, Sample::floatCount);
    useBlock(s.counted, s.countedLength);
}

inline void use(Node& n) {
    use(n.text);
    use(n.part.text);
    for (const Node* other : made().nodes)
        sink = other == n.a || other == n.b;
}

/// Uses what has been made so far and deletes it.
inline void useAndDelete(Made& all) {
    std::set<char*> blocks;  // pointers may share their blocks
    for (Sample* s : all.samples) {
        use(*s);
        for (void* block : {static_cast<void*>(s->text), static_cast<void*>(s->charBlock),
                            static_cast<void*>(s->shortBlock), static_cast<void*>(s->longBlock),
                            static_cast<void*>(s->doubleBlock), static_cast<void*>(s->floatBlock),
                            static_cast<void*>(s->counted)})
            blocks.insert(static_cast<char*>(block));
    }
    for (char* block : blocks)
        delete[] block;
    for (Sample* s : all.samples) {
        if (!isAbandoned(s->pairs))
            delete s;
    }
    for (Node* n : all.nodes)
        use(*n);
    for (Node* n : all.nodes)
        delete n;
    for (fxStrStrDictionary* d : all.dictionaries) {
        use(*d);
        if (!isAbandoned(*d))
            delete d;
    }
    for (fxIntArray* a : all.arrays) {
        use<int>(*a);
        delete a;
    }
    for (fxStr* text : all.strings) {
        use(*text);
        delete text;
    }
    for (fxXDRObj* object : all.others)
        delete object;
}

/// Reads up to `roots` roots from the stream that `bytes` are. If there is one,
/// uses all that was made for it and those after it, and returns true. Takes
/// over the library's type names: for child processes and fuzzers.
inline bool readAndUse(const std::string& bytes, int roots = 3) {
    fxInitializeToolkit();
    Types::get().enter();
    made() = Made();
    Made complete;
    bool any = false;
    {
        MemoryStream stream(bytes);
        const std::unique_ptr<fxTranscriber> reader(fxTranscriber::getReader(&stream));
        if (!reader)
            return false;
        // What a failing root made stays with the reader, unfinished.
        for (int i = 0; i < roots && reader->readObject(Types::get().sample); ++i) {
            any = true;
            complete = made();
        }
    }
    useAndDelete(complete);
    return any;
}

/// Reads `bytes`, records without a header, as the contents of objects that
/// the caller made. Returns true when all of them could be read.
inline bool readInPlace(const std::string& bytes, fxXDRObj& object) {
    MemoryStream stream(bytes);
    const std::unique_ptr<fxTranscriber> reader(
        makeBinaryReader(&stream, 0x1122, 0x33445566, "ieee"));
    return object.xdr(*reader) != 0;
}

/// True for the text of one of the messages that reading may end with.
inline bool isStatedMessage(const std::string& text) {
    static const char* const whole[] = {"Whoops!\n",
                                        "format error\n",
                                        "XXX bad news!\n",
                                        "XXX new base for old base\n",
                                        "XXX old base previously unseen\n",
                                        "XXX version error handling is missing\n",
                                        "XXX error handling is missing\n",
                                        "XXX baddest news\n"};
    for (const char* message : whole) {
        if (text == message)
            return true;
    }
    static const struct {
        const char* start;
        const char* end;
        bool digits;  // hexadecimal ones between the two, not just anything
    } parts[] = {{"Unknown transcriber type \"", "\"\n", false},
                 {"unknown type ", "\n", false},
                 {"fxBinaryReader: unsupported floating point format ", "\n", false},
                 {"fxBinaryReader: unknown short ordering ", "\n", true},
                 {"fxBinaryReader: unknown long ordering ", "\n", true}};
    for (const auto& p : parts) {
        const std::size_t fixed = std::strlen(p.start) + std::strlen(p.end);
        if (text.size() < fixed || text.compare(0, std::strlen(p.start), p.start) != 0 ||
            text.compare(text.size() - std::strlen(p.end), std::string::npos, p.end) != 0)
            continue;
        const std::string between = text.substr(std::strlen(p.start), text.size() - fixed);
        if (!p.digits)
            return true;
        return !between.empty() && between.size() <= 8 &&
               between.find_first_not_of("0123456789abcdef") == std::string::npos;
    }
    return false;
}

}  // namespace hostile
