// transcripts.h - cases that write to and read from media, beside cereal's binary archives.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <cereal/archives/binary.hpp>

#include "bench/support/beside.h"
#include "bench/support/media.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/core/fxXDRObj.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

inline void require(bool done, const char* what) {
    if (done)
        return;
    std::fprintf(stderr, "fxBinary: %s failed\n", what);
    std::abort();
}

template <class Medium>
std::unique_ptr<fxTranscriber> writerOn(Medium& medium) {
    std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(medium.openToWrite()));
    require(writer != nullptr, "getWriter");
    return writer;
}

template <class Medium>
std::unique_ptr<fxTranscriber> readerOn(Medium& medium) {
    std::unique_ptr<fxTranscriber> reader(fxTranscriber::getReader(medium.openToRead()));
    require(reader != nullptr, "getReader");
    return reader;
}

template <class Root>
std::unique_ptr<Root> readRoot(fxTranscriber& reader) {
    std::unique_ptr<Root> root(static_cast<Root*>(reader.readObject(fxXDRObj_type)));
    require(root != nullptr, "readObject");
    return root;
}

template <class Medium, class Root>
void archiveTo(Medium& medium, const Root& root) {
    medium.write([&](std::ostream& stream) {
        cereal::BinaryOutputArchive archive(stream);
        archive(root);
    });
}

template <class Medium, class Root>
void restoreFrom(Medium& medium, Root& root) {
    medium.read([&](std::istream& stream) {
        cereal::BinaryInputArchive archive(stream);
        archive(root);
    });
}

// An input has both sides' data on a medium: writeOurs, writePeer, readOurs,
// readPeer. What was written is compared by reading it back.
template <class Input>
struct OursWritten {
    Input& input;
};
template <class Input>
struct PeerWritten {
    Input& input;
};

template <class Input>
bool same(const OursWritten<Input>& a, const PeerWritten<Input>& b) {
    return same(a.input.readOurs(), b.input.readPeer());
}

template <class Input>
void writeCase(const std::string& name, Rate rate, Sizes sizes) {
    beside<Input>(
        "fxBinary/write " + name, rate, sizes,
        [](Input& in) {
            in.writeOurs();
            return OursWritten<Input>{in};
        },
        Side{"cereal", [](Input& in) {
                 in.writePeer();
                 return PeerWritten<Input>{in};
             }});
}

template <class Input>
void readCase(const std::string& name, Rate rate, Sizes sizes) {
    beside<Input>(
        "fxBinary/read " + name, rate, sizes, [](Input& in) { return in.readOurs(); },
        Side{"cereal", [](Input& in) { return in.readPeer(); }});
}
