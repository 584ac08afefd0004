#include "kelvofxds/transcribe/fxFile.h"

#include <memory>

#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/transcribe/fxGraphReader.h"
#include "kelvofxds/transcribe/fxGraphWriter.h"
#include "kelvofxds/transcribe/fxReplacementInternal.h"
#include "kelvofxds/transcribe/fxSizeSignalInternal.h"
#include "kelvofxds/transcribe/fxStdioStream.h"
#include "kelvofxds/transcribe/fxStreamHeaderInternal.h"

namespace {
// A stream on a descriptor, held here. Whoever else holds it keeps it, closed.
class OwnStream {
public:
    OwnStream(fxDescriptor& descriptor, fxStream::fxStreamType type) : stream(nullptr) {
        std::FILE* file = descriptor.stream(type == fxStream::readStream ? "r" : "w");
        if (!file)
            return;
        stream = fxTryNew<fxStdioStream>(file, type);
        if (stream)
            ++stream->count;
        else
            std::fclose(file);
    }
    OwnStream(const OwnStream&) = delete;
    OwnStream& operator=(const OwnStream&) = delete;
    ~OwnStream() {
        if (!stream)
            return;
        stream->close();
        if (--stream->count == 0)
            delete stream;
    }
    fxStdioStream* get() const { return stream; }

private:
    fxStdioStream* stream;  // held; null if there is no memory
};

const char unwritten[] = "the new file cannot be written";
const char unread[] = "it cannot be read";

bool write(fxXDRObj& object, fxDescriptor& to, fxFailure& failure) {
    const fxSizeSignal none;
    const OwnStream stream(to, fxStream::writeStream);
    if (!stream.get())
        return failure.set(ENOMEM, "%s", unwritten);
    fxGraphWriter writer(stream.get());
    const bool isDone = fxWriteStreamHeader(stream.get(), writer.className()) &&
                        writer.writeObject(&object, &object) && stream.get()->close();
    if (to.error() != 0)
        return failure.set(to.error(), "%s", unwritten);
    const char* const reason = writer.lastError();
    return isDone || failure.set(0, "%s", reason[0] != '\0' ? reason : unwritten);
}

// Whether the header tells how to go on.
bool readHeader(fxStream& stream, const fxDescriptor& from, fxStreamHeader& header,
                fxFailure& failure) {
    const fxStreamHeader::Found found = header.readFrom(stream);
    if (from.error() != 0)
        return failure.set(from.error(), "%s", unread);
    switch (found) {
        case fxStreamHeader::whole:
            return true;
        case fxStreamHeader::nothing:
            return failure.set(0, "it is empty");
        case fxStreamHeader::part:
            return failure.set(0, "it ends within its header");
        case fxStreamHeader::unknown:
            break;
    }
    return header.namesAWriter()
               ? failure.set(0, "it is a stream of \"%s\", which is another kind", header.name)
               : failure.set(0, "it is no file that fxSaveFile or a standard writer has written");
}

fxTranscriber* makeReader(fxStream* stream, const fxStreamHeader& header) {
    const auto make = header.isOf(fxBinaryFormat::graphWriterName)
                          ? makeGraphReader
                          : fxGraphReader::forStandardStreams;
    return make(stream, header.shortMark, header.longMark, header.floatFormat);
}

void* read(fxStream* stream, const fxDescriptor& from, fxTypeObj& type, fxFailure& failure) {
    fxStreamHeader header;
    if (!readHeader(*stream, from, header, failure))
        return nullptr;
    const std::unique_ptr<fxTranscriber> transcriber(makeReader(stream, header));
    fxGraphReader* reader = transcriber ? fxGraphReader::of(*transcriber) : nullptr;
    if (!reader)
        return failure.set(ENOMEM, "%s", unread), nullptr;
    reader->expectOneRoot(true);
    void* root = reader->readObject(type);
    if (root)
        return root;
    if (from.error() != 0)
        failure.set(from.error(), "%s", unread);
    else if (reader->atEnd())
        failure.set(0, "it has no object behind its header");
    else
        failure.set(0, "%s", reader->lastError());
    return nullptr;
}

fxXDRObj* load(const char* path, fxTypeObj& type, fxFailure& failure) {
    fxDescriptor file;
    struct stat64 status;
    if (!path || path[0] == '\0')
        return failure.set(0, "no path is given"), nullptr;
    if (!file.open(path, O_RDONLY) || ::fstat64(file.get(), &status) != 0)
        return failure.set(0, "%s", std::strerror(errno)), nullptr;
    if (S_ISDIR(status.st_mode))
        return failure.set(0, "it is a directory"), nullptr;
    const OwnStream stream(file, fxStream::readStream);
    if (!stream.get())
        return failure.set(ENOMEM, "%s", unread), nullptr;
    return static_cast<fxXDRObj*>(read(stream.get(), file, type, failure));
}
}  // namespace

unsigned char fxSaveFile(const char* path, fxXDRObj& object, fxStr* why) {
    fxFailure failure;
    fxReplacement replacement(failure);
    if (replacement.begin(path) && write(object, replacement.content(), failure) &&
        replacement.finish()) {
        if (why)
            *why = "";
        return 1;
    }
    failure.tell(why, "cannot save", path ? path : "");
    return 0;
}

fxXDRObj* fxLoadFile(const char* path, fxTypeObj& type, fxStr* why) {
    fxFailure failure;
    fxXDRObj* object = load(path, type, failure);
    if (!object)
        failure.tell(why, "cannot load", path ? path : "");
    else if (why)
        *why = "";
    return object;
}
