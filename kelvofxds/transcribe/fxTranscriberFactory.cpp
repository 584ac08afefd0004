// fxTranscriberFactory.cpp - making writers, and readers from stream headers.

#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/core/fxOrderedGlobal.h"
#include "kelvofxds/str/fxStackBuffer.h"
#include "kelvofxds/transcribe/fxBinaryFormatInternal.h"
#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "kelvofxds/transcribe/fxGraphReader.h"
#include "kelvofxds/transcribe/fxStream.h"
#include "kelvofxds/transcribe/fxStreamHeaderInternal.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

// Constant-initialised: hosts may install factories while other statics are
// still being made.
fxVoidPtrDict* fxTranscriber::readers = nullptr;
fxTranscriber* (*fxTranscriber::makeWriter)(fxStream*) = fxTranscriber::makeDefaultWriter;

fxTranscriber* fxTranscriber::makeDefaultWriter(fxStream* stream) {
    return fxNew<fxBinaryWriter>(stream);
}

void fxTranscriber::changeDefaultWriter(fxTranscriber* (*factory)(fxStream*)) {
    FX_CHECK_THREAD("fxTranscriber");
    if (factory)
        makeWriter = factory;
}

void fxTranscriber::resetToDefaultWriter() { makeWriter = makeDefaultWriter; }

void fxTranscriber::addTranscriber(const char* name,
                                   fxTranscriber* (*factory)(fxStream*, short, long, const char*)) {
    FX_CHECK_THREAD("fxTranscriber");
    FX_CHECK_NOT_NULL("fxTranscriber", name);
    if (!readers)
        readers = fxNew<fxVoidPtrDict>(0U);
    readers->add(name, reinterpret_cast<void*>(factory));
}

fxTranscriber* fxTranscriber::getWriter(fxStream* stream) {
    fxTranscriber* writer = stream ? makeWriter(stream) : nullptr;
    if (!writer)
        return nullptr;
    if (!fxWriteStreamHeader(stream, writer->className())) {
        delete writer;
        return nullptr;
    }
    return writer;
}

fxTranscriber* fxTranscriber::getReader(fxStream* stream) {
    if (!readers || !stream)
        return nullptr;
    fxStackBuffer name;
    fxStackBuffer format;
    short shortMark = 0;
    long longMark = 0;
    if (!readNullTerminatedString(stream, name) || !readNullTerminatedString(stream, format) ||
        !stream->getShorts(&shortMark, 1) || !stream->getLongs(&longMark, 1))
        return nullptr;
    void** found = readers->find(name.getBase());
    if (!found || !*found)
        fxFatal("Unknown transcriber type \"%s\"", name.getBase());
    const auto factory = reinterpret_cast<ReaderFactory>(*found);
    return factory(stream, shortMark, longMark, format.getBase());
}

fxTranscriber* makeBinaryReader(fxStream* stream, short shortMark, long longMark,
                                const char* format) {
    return fxTryNew<fxBinaryReader>(stream, shortMark, longMark, format);
}

// Start-up.

static void cons() {
    fxTranscriber::addTranscriber(fxBinaryFormat::writerName, makeBinaryReader);
    fxTranscriber::addTranscriber(fxBinaryFormat::graphWriterName, makeGraphReader);
}

static fxOrderedGlobal* deps[] = {&fxOG_Init, nullptr};

fxOrderedGlobal fxOG_Transcriber(cons, deps, 1);
