// fxBinaryConverters.cpp - from the writer's byte order to the host's.

#include <utility>

#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/transcribe/fxBinaryReader.h"

unsigned char fxBinaryReader_shorts(fxBinaryReader& reader, char* destination,
                                    unsigned int byteCount) {
    return reader.readBytes(destination, byteCount);
}

unsigned char fxBinaryReader_longs(fxBinaryReader& reader, char* destination,
                                   unsigned int byteCount) {
    return reader.readBytes(destination, byteCount);
}

unsigned char fxBinaryReader_floats(fxBinaryReader& reader, char* destination,
                                    unsigned int byteCount) {
    return reader.readBytes(destination, byteCount);
}

unsigned char fxBinaryReader_doubles(fxBinaryReader& reader, char* destination,
                                     unsigned int byteCount) {
    return reader.readBytes(destination, byteCount);
}

namespace {
// Reads, then rearranges the bytes of every whole unit.
template <class Rearrange>
unsigned char readUnits(fxBinaryReader& reader, char* destination, unsigned int byteCount,
                        unsigned int unitSize, Rearrange rearrange) {
    if (!reader.readBytes(destination, byteCount))
        return 0;
    for (; byteCount >= unitSize; byteCount -= unitSize, destination += unitSize)
        rearrange(destination);
    return 1;
}
}  // namespace

unsigned char fxBinaryReader_BS(fxBinaryReader& reader, char* destination, unsigned int byteCount) {
    return readUnits(reader, destination, byteCount, 2,
                     [](char* unit) { std::swap(unit[0], unit[1]); });
}

unsigned char fxBinaryReader_longsSS(fxBinaryReader& reader, char* destination,
                                     unsigned int byteCount) {
    return readUnits(reader, destination, byteCount, 4, [](char* unit) {
        std::swap(unit[0], unit[2]);
        std::swap(unit[1], unit[3]);
    });
}

unsigned char fxBinaryReader_longsBSSS(fxBinaryReader& reader, char* destination,
                                       unsigned int byteCount) {
    return readUnits(reader, destination, byteCount, 4, [](char* unit) {
        std::swap(unit[0], unit[3]);
        std::swap(unit[1], unit[2]);
    });
}

unsigned char fxBinaryReader_floatsVAX(fxBinaryReader& reader, char* destination,
                                       unsigned int byteCount) {
    if (!reader.readBytes(destination, byteCount))
        return 0;
    fxFatal("fxBinaryReader_floatsVAX: not implemented");
}

unsigned char fxBinaryReader_doublesVAX(fxBinaryReader& reader, char* destination,
                                        unsigned int byteCount) {
    return fxBinaryReader_floatsVAX(reader, destination, byteCount);
}
