// binaryReading.h - reading scripted objects from bytes that a test writes down.
#pragma once

#include <string>

#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "tests/support/memoryStream.h"
#include "tests/support/scriptedObject.h"
#include "tests/support/streamBytes.h"

/// A reader and the bytes that it reads.
struct Reading {
    explicit Reading(const std::string& bytes, short shortMark = 0x1122, long longMark = 0x33445566)
        : stream(bytes), reader(&stream, shortMark, longMark, "ieee") {}

    /// The next root.
    ScriptedObject* root() { return static_cast<ScriptedObject*>(reader.readObject(objType)); }
    /// What has been entered for a number.
    char* block(unsigned int number) { return static_cast<char*>(reader.alreadyRead(number)); }

    MemoryStream stream;
    fxBinaryReader reader;
};

/// The type "Obj", number 2, and the head of an object of it, number 1.
inline std::string objAndHead() {
    return hex("02 02000000 'Obj' 00 | 0a 01000000 02000000 01000000");
}

/// The body of a block of bytes whose record says `length` and has `bytes`.
inline std::string bytesBody(unsigned int number, unsigned int length, const std::string& bytes) {
    return hex("c5") + word(static_cast<unsigned int>(bytes.size())) + word(number) + word(length) +
           bytes;
}

/// A first pointer to a block.
inline std::string pointerTo(unsigned int number) { return hex("03") + word(number) + word(4); }

/// Transcribes `n` pointers to blocks of `length` bytes.
inline ScriptedObject::Script xdrBlocks(unsigned int n, unsigned int length) {
    return [n, length](ScriptedObject& self, fxTranscriber& t) {
        for (unsigned int i = 0; i < n; ++i) {
            if (!t.xdr(&self.blocks[i], length))
                return static_cast<unsigned char>(0);
        }
        return static_cast<unsigned char>(1);
    };
}
