// fxStreamHeaderInternal.h - the header with which every stream begins.
#pragma once

#include <cctype>
#include <cstring>

#include "kelvofxds/transcribe/fxBinaryFormatInternal.h"
#include "kelvofxds/transcribe/fxStream.h"

/// Writes the header of a stream that a transcriber of the class `name` writes.
inline unsigned char fxWriteStreamHeader(fxStream* stream, const char* name) {
    return stream->putBytes(name, static_cast<unsigned int>(std::strlen(name)) + 1) &&
           stream->putBytes(fxBinaryFormat::floatFormat, sizeof fxBinaryFormat::floatFormat) &&
           stream->putShorts(&fxBinaryFormat::shortMark, 1) &&
           stream->putLongs(&fxBinaryFormat::longMark, 1);
}

/// What a header says, where its texts are no longer than the library's own might
/// be. Whoever has to take any text uses fxTranscriber::getReader.
class fxStreamHeader {
public:
    fxStreamHeader()
        : name{}, floatFormat{}, shortMark(0), longMark(0), gotBytes(0), hasName(false) {}

    /// How much of a header there is.
    enum Found : unsigned char {
        nothing,  ///< The stream has no byte.
        part,     ///< A known name, or its beginning, and then the end.
        whole,    ///< A known name and all the rest.
        unknown   ///< Something else.
    };

    /// Reads it.
    Found readFrom(fxStream& stream) {
        if (!readText(stream, name, sizeof name))
            return gotBytes == 0 ? nothing : isKnownBeginning() ? part : unknown;
        hasName = std::strlen(name) + 1 < sizeof name;
        if (!isOf(fxBinaryFormat::graphWriterName) && !isOf(fxBinaryFormat::writerName))
            return unknown;
        return readText(stream, floatFormat, sizeof floatFormat) &&
                       stream.getShorts(&shortMark, 1) && stream.getLongs(&longMark, 1)
                   ? whole
                   : part;
    }

    /// Whether the name may be that of a class.
    bool namesAWriter() const {
        if (!hasName || name[0] == '\0')
            return false;
        for (const char* at = name; *at != '\0'; ++at) {
            if (!std::isalnum(static_cast<unsigned char>(*at)) && *at != '_' && *at != ':')
                return false;
        }
        return true;
    }
    bool isOf(const char* writer) const { return std::strcmp(name, writer) == 0; }

    char name[64];  ///< The writer's class.
    char floatFormat[16];
    short shortMark;
    long longMark;

private:
    // Into a text that has been empty; a longer one is cut. False at the end.
    bool readText(fxStream& stream, char* text, unsigned int size) {
        for (unsigned int i = 0; i + 1 < size; ++i, ++gotBytes) {
            if (!stream.getBytes(text + i, 1))
                return false;
            if (text[i] == '\0')
                return true;
        }
        return true;
    }

    bool isKnownBeginning() const {
        return std::strncmp(name, fxBinaryFormat::graphWriterName, gotBytes) == 0 ||
               std::strncmp(name, fxBinaryFormat::writerName, gotBytes) == 0;
    }

    unsigned int gotBytes;  // of texts
    bool hasName;           // it is whole
};
