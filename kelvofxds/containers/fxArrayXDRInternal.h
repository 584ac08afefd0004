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
    // freed. The length may claim anything, so a long block is allocated in
    // steps, as its elements arrive.
    data = nullptr;
    maxLen = 0;
    if (elemSize < sizeof(Element)) {
        elemSize = sizeof(Element);
        return 0;
    }
    const unsigned int firstStep = (1U << 20) / sizeof(Element);
    const unsigned int n = len / elemSize;
    unsigned int done = 0;
    do {
        const unsigned int step = done > firstStep ? done : firstStep;
        const unsigned int next = n - done > step ? done + step : n;
        maxLen = next == n ? len : next * static_cast<unsigned int>(sizeof(Element));
        getmem();
        if (!data && maxLen != 0)
            return 0;
        if (!t.xdr(static_cast<Element*>(data) + done, next - done))
            return 0;
        done = next;
    } while (done < n);
    return 1;
}
