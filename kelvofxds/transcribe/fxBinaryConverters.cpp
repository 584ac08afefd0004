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

unsigned char fxBinaryReader_BS(fxBinaryReader& reader, char* destination, unsigned int byteCount) {
    if (!reader.readBytes(destination, byteCount))
        return 0;
    for (unsigned int i = 0; byteCount - i >= 2; i += 2)
        std::swap(destination[i], destination[i + 1]);
    return 1;
}

unsigned char fxBinaryReader_longsSS(fxBinaryReader& reader, char* destination,
                                     unsigned int byteCount) {
    if (!reader.readBytes(destination, byteCount))
        return 0;
    for (unsigned int i = 0; byteCount - i >= 4; i += 4) {
        std::swap(destination[i], destination[i + 2]);
        std::swap(destination[i + 1], destination[i + 3]);
    }
    return 1;
}

unsigned char fxBinaryReader_longsBSSS(fxBinaryReader& reader, char* destination,
                                       unsigned int byteCount) {
    if (!reader.readBytes(destination, byteCount))
        return 0;
    for (unsigned int i = 0; byteCount - i >= 4; i += 4) {
        std::swap(destination[i], destination[i + 3]);
        std::swap(destination[i + 1], destination[i + 2]);
    }
    return 1;
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
