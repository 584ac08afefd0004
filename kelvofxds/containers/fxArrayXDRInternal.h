// fxArrayXDRInternal.h - the transcription that the typed arrays share.
#pragma once

#include "kelvofxds/containers/fxArray.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

template <class Element>
unsigned char fxArray::xdrElements(fxTranscriber& t) {
    if (!t.xdr(&len, 1) || !t.xdr(&elemSize, 1))
        return 0;
    if (!t.isReading())
        return t.xdr(static_cast<Element*>(data), maxLen / elemSize);

    // The object is fresh from newInstance; a block it already has is not
    // freed. The length may claim anything: memory into which no elements
    // arrive is not touched, and what cannot be had fails the read.
    data = nullptr;
    maxLen = 0;
    if (elemSize < sizeof(Element)) {
        elemSize = sizeof(Element);
        return 0;
    }
    maxLen = len;
    getmem();
    if (!data && maxLen != 0)
        return 0;
    return t.xdr(static_cast<Element*>(data), maxLen / elemSize);
}
