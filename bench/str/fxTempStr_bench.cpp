// fxTempStr_bench.cpp - joining texts, beside operator+ of std::string and absl::StrCat.

#include <string>
#include <vector>

#include <absl/strings/str_cat.h>

#include "bench/support/beside.h"
#include "bench/support/inputs.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxTempStr.h"

namespace {

// `n` pieces of eight bytes.
struct Pieces {
    explicit Pieces(unsigned int n) {
        Random random;
        for (unsigned int i = 0; i < n; ++i) {
            peer.push_back(random.letters(8));
            ours.push_back(fxStr(peer.back().c_str()));
        }
    }
    std::vector<std::string> peer;
    std::vector<fxStr> ours;
};

// Four different texts.
struct Four {
    explicit Four(unsigned int n) {
        Random random;
        for (unsigned int i = 0; i < 4; ++i) {
            peer[i] = random.letters(n);
            ours[i] = fxStr(peer[i].data(), n);
        }
    }
    std::string peer[4];
    fxStr ours[4];
};

// 80 and 400 bytes together.
void lengthsOfFour(benchmark::internal::Benchmark* b) { b->Arg(20)->Arg(100)->Complexity(); }

const bool registered = [] {
    beside<Four>(
        "fxTempStr/concatenate four texts", Rate::bytes, lengthsOfFour,
        [](const Four& in) { return fxStr(in.ours[0] | in.ours[1] | in.ours[2] | in.ours[3]); },
        Side{"std::string",
             [](const Four& in) {
                 return std::string(in.peer[0] + in.peer[1] + in.peer[2] + in.peer[3]);
             }},
        Side{"absl::StrCat", [](const Four& in) {
                 return absl::StrCat(in.peer[0], in.peer[1], in.peer[2], in.peer[3]);
             }});
    // Pieces of the given size: 8 stays within the temporary, longer ones do not.
    beside<Text>(
        "fxTempStr/join four texts", Rate::bytes, shortSweep,
        [](const Text& in) { return fxStr(in.ours | in.oursToo | " and " | in.ours); },
        Side{"std::string",
             [](const Text& in) { return std::string(in.peer + in.peerToo + " and " + in.peer); }});
    beside<Pieces>(
        "fxTempStr/chain of eight-byte pieces", Rate::items, sweep,
        [](const Pieces& in) {
            fxTempStr chain("", 0, "", 0);
            for (const fxStr& piece : in.ours)
                chain | piece;
            return fxStr(chain);
        },
        Side{"std::string", [](const Pieces& in) {
                 std::string chain;
                 for (const std::string& piece : in.peer)
                     chain += piece;
                 return std::string(chain);
             }});
    return true;
}();

}  // namespace
