// graphSteps.h - classes whose xdr does what a test says, and what graph transcribers do with them.
#pragma once

#include <functional>
#include <string>

#include "tests/support/graphs.h"

/// The base of a class of which all objects do the same `steps` when they are written and when they
/// are read, with a pointer to each type of block: `class Own : public GraphSteps<Own>`.
template <class Own>
class GraphSteps : public fxXDRObj {
public:
    using Steps = std::function<unsigned char(Own&, fxTranscriber&)>;
    unsigned char xdr(fxTranscriber& t) override {
        return !steps || steps(static_cast<Own&>(*this), t);
    }
    static void* create(fxTypeObj&) { return new Own; }
    static void destroy(void* object) { delete static_cast<Own*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Own*>(object)->GraphSteps::xdr(t);
    }

    inline static Steps steps;
    char* chars = nullptr;
    unsigned char* bytes = nullptr;
    short* shorts = nullptr;
    unsigned short* unsignedShorts = nullptr;
    long* longs = nullptr;
    unsigned long* unsignedLongs = nullptr;
    float* floats = nullptr;
    double* doubles = nullptr;
};

/// Takes so many bytes and no more.
class NarrowStream : public fxMemoryStream {
public:
    explicit NarrowStream(unsigned int n) : room(n) {}
    unsigned char putBytes(const char* buffer, unsigned int n) override {
        return length() + n <= room && fxMemoryStream::putBytes(buffer, n);
    }
    unsigned int room;
};

/// The reason that a graph reader gives, without the place in the stream before it.
inline std::string withoutPlace(const std::string& error) {
    const std::size_t colon = error.find(": ");
    return colon == std::string::npos ? error : error.substr(colon + 2);
}
