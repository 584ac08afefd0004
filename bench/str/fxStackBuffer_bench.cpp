// fxStackBuffer_bench.cpp - collecting bytes, beside std::string.

#include <string>

#include "bench/support/beside.h"
#include "bench/support/inputs.h"
#include "kelvofxds/str/fxStackBuffer.h"
#include "kelvofxds/str/fxStr.h"

namespace {

fxStr contentOf(const fxStackBuffer& buffer) { return fxStr(buffer.getBase(), buffer.length()); }

const bool registered = [] {
    beside<Text>(
        "fxStackBuffer/add bytes", Rate::bytes, sweep,
        [](const Text& in) {
            fxStackBuffer buffer;
            for (char c : in.peer)
                buffer.addc(c);
            return contentOf(buffer);
        },
        Side{"std::string", [](const Text& in) {
                 std::string buffer;
                 for (char c : in.peer)
                     buffer.push_back(c);
                 return std::string(buffer);
             }});
    beside<Text>(
        "fxStackBuffer/put eight bytes", Rate::bytes, sweep,
        [](const Text& in) {
            fxStackBuffer buffer;
            for (unsigned int i = 0; i < in.peer.size(); i += 8)
                buffer.put(in.peer.data() + i, 8);
            return contentOf(buffer);
        },
        Side{"std::string", [](const Text& in) {
                 std::string buffer;
                 for (unsigned int i = 0; i < in.peer.size(); i += 8)
                     buffer.append(in.peer.data() + i, 8);
                 return std::string(buffer);
             }});
    return true;
}();

}  // namespace
