// graphRoundTrip.h - writing objects as graph streams in memory, and reading them back.
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxTypeOf.h"
#include "kelvofxds/transcribe/fxGraphReader.h"
#include "kelvofxds/transcribe/fxGraphWriter.h"
#include "kelvofxds/transcribe/fxMemoryStream.h"

/// The root that `object` makes, without the stream's header.
inline std::string graphOf(fxXDRObj& object) {
    fxMemoryStream stream;
    stream.count = 1;
    fxGraphWriter writer(&stream);
    EXPECT_EQ(1, writer.writeObject(&object, &object)) << writer.lastError();
    return std::string(stream.getBase(), stream.length());
}

/// What reading a root comes to: the object, or null and the reason.
template <class T>
struct GraphRead {
    explicit GraphRead(const std::string& bytes, fxTypeObj& type = fxTypeOf<T>()) {
        fxMemoryStream stream(bytes.data(), static_cast<unsigned int>(bytes.size()));
        stream.count = 1;
        fxGraphReader reader(&stream, 0x1122, 0x33445566, "ieee");
        object = static_cast<T*>(reader.readObject(type));
        error = reader.lastError();
    }

    T* object;  ///< The test's.
    std::string error;
};

/// A copy of `object` and all that it leads to, the test's; null is a failure.
template <class T>
T* throughGraph(T& object) {
    const GraphRead<T> read(graphOf(object));
    EXPECT_NE(nullptr, read.object) << read.error;
    return read.object;
}
