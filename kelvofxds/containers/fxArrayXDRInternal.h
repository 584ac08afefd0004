// fxArrayXDRInternal.h - the transcription that the typed arrays share.
#pragma once

#include <cstdlib>

#include "kelvofxds/containers/fxArray.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

template <class Element>
unsigned char fxArray::xdrElements(fxTranscriber& t) {
    if (!t.transcribesSpareElements())
        return t.isReading() ? readElements<Element>(t) : writeElements<Element>(t);
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

template <class Element>
unsigned char fxArray::writeElements(fxTranscriber& t) {
    return t.xdr(&len, 1) && t.xdr(&elemSize, 1) &&
           t.xdr(static_cast<Element*>(data), elemSize != 0 ? len / elemSize : 0);
}

// The array is whole before and afterwards, also when it cannot be read.
template <class Element>
unsigned char fxArray::readElements(fxTranscriber& t) {
    unsigned int bytes = 0;
    unsigned short size = 0;
    if (!t.xdr(&bytes, 1) || !t.xdr(&size, 1) || size < sizeof(Element) || bytes % size != 0)
        return 0;
    destroy();
    std::free(data);
    data = nullptr;
    elemSize = size;
    len = maxLen = bytes;
    getmem();
    if ((data || bytes == 0) && t.xdr(static_cast<Element*>(data), bytes / size))
        return 1;
    len = 0;
    return 0;
}
