#include "kelvofxds/transcribe/fxDeepCopy.h"

#include <cerrno>

#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/transcribe/fxBinaryFormatInternal.h"
#include "kelvofxds/transcribe/fxFailureInternal.h"
#include "kelvofxds/transcribe/fxGraphReader.h"
#include "kelvofxds/transcribe/fxGraphWriter.h"
#include "kelvofxds/transcribe/fxMemoryStream.h"

namespace {
bool write(fxXDRObj& object, fxStream* stream, fxFailure& failure) {
    fxGraphWriter writer(stream);
    return writer.writeObject(&object, &object) || failure.set(0, "%s", writer.lastError());
}

void* read(fxTypeObj& type, fxStream* stream, fxFailure& failure) {
    fxGraphReader reader(stream, fxBinaryFormat::shortMark, fxBinaryFormat::longMark,
                         fxBinaryFormat::floatFormat);
    void* object = reader.readObject(type);
    if (!object)
        failure.set(0, "%s", reader.lastError());
    return object;
}
}  // namespace

fxXDRObj* fxDeepCopy(fxXDRObj& object, fxStr* why) {
    fxFailure failure;
    void* copy = nullptr;
    fxMemoryStream* stream = fxTryNew<fxMemoryStream>();
    if (stream) {
        ++stream->count;
        if (write(object, stream, failure))
            copy = read(object.getTypeObj(), stream, failure);
        if (--stream->count == 0)
            delete stream;
    } else {
        failure.set(ENOMEM, "there is no stream");
    }
    if (!copy)
        failure.tell(why, "cannot copy the object", nullptr);
    else if (why)
        *why = "";
    return static_cast<fxXDRObj*>(copy);
}
