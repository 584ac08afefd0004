// fxStrSearch_bench.cpp - searching, tokenising, comparing and hashing.

#include <cstring>
#include <functional>

#include "bench/support/beside.h"
#include "bench/support/inputs.h"
#include "kelvofxds/str/fxStr.h"

namespace {

const char set[] = " \t\nz";
const char allLetters[] = "abcdefghijklmnopqrstuvwxy";

// Positions where the peer says npos are the length, or 0 behind which nothing
// was found going backward.
std::size_t orLength(std::size_t position, const std::string& s) {
    return position == std::string::npos ? s.size() : position;
}
std::size_t plusOne(std::size_t position) {
    return position == std::string::npos ? 0 : position + 1;
}

void forwardCases() {
    beside<Text>(
        "fxStrSearch/next byte", Rate::bytes, sweep,
        [](const Text& in) { return in.ours.next(0, 'z'); },
        Side{"std::string", [](const Text& in) { return orLength(in.peer.find('z'), in.peer); }});
    beside<Text>(
        "fxStrSearch/next of a set", Rate::bytes, sweep,
        [](const Text& in) { return in.ours.next(0, set); },
        Side{"std::string",
             [](const Text& in) { return orLength(in.peer.find_first_of(set), in.peer); }},
        Side{"strcspn", [](const Text& in) { return std::strcspn(in.peer.c_str(), set); }});
    beside<Text>(
        "fxStrSearch/next of a set of a given length", Rate::bytes, sweep,
        [](const Text& in) { return in.ours.next(0, set, 4); },
        Side{"std::string",
             [](const Text& in) { return orLength(in.peer.find_first_of(set, 0, 4), in.peer); }},
        Side{"strcspn", [](const Text& in) { return std::strcspn(in.peer.c_str(), set); }});
    beside<Text>(
        "fxStrSearch/skip a set", Rate::bytes, sweep,
        [](const Text& in) { return in.ours.skip(0, allLetters); },
        Side{"std::string",
             [](const Text& in) {
                 return orLength(in.peer.find_first_not_of(allLetters), in.peer);
             }},
        Side{"strspn", [](const Text& in) { return std::strspn(in.peer.c_str(), allLetters); }});
}

// Strings of one byte in a row, with another one at either end.
struct Run {
    explicit Run(unsigned int n) : peer(n, '-') {
        peer.front() = peer.back() = '+';
        ours = fxStr(peer.data(), n);
    }
    std::string peer;
    fxStr ours;
};

void backwardCases() {
    beside<Run>(
        "fxStrSearch/skip a byte", Rate::bytes, sweep,
        [](const Run& in) { return in.ours.skip(1, '-'); },
        Side{"std::string",
             [](const Run& in) { return orLength(in.peer.find_first_not_of('-', 1), in.peer); }});
    beside<Run>(
        "fxStrSearch/next byte backward", Rate::bytes, sweep,
        [](const Run& in) { return in.ours.nextR(in.ours.length() - 1, '+'); },
        Side{"std::string",
             [](const Run& in) { return plusOne(in.peer.rfind('+', in.peer.size() - 2)); }},
        Side{"memrchr", [](const Run& in) {
                 const char* text = in.peer.data();
                 const void* found = ::memrchr(text, '+', in.peer.size() - 1);
                 return found ? static_cast<const char*>(found) - text + 1 : 0;
             }});
    beside<Run>(
        "fxStrSearch/next of a set backward", Rate::bytes, sweep,
        [](const Run& in) { return in.ours.nextR(in.ours.length() - 1, "+*/"); },
        Side{"std::string", [](const Run& in) {
                 return plusOne(in.peer.find_last_of("+*/", in.peer.size() - 2));
             }});
    beside<Run>(
        "fxStrSearch/skip a byte backward", Rate::bytes, sweep,
        [](const Run& in) { return in.ours.skipR(in.ours.length() - 1, '-'); },
        Side{"std::string", [](const Run& in) {
                 return plusOne(in.peer.find_last_not_of('-', in.peer.size() - 2));
             }});
}

// `n` words with one or two separators between them.
struct Words {
    explicit Words(unsigned int n) {
        Random random;
        for (unsigned int i = 0; i < n; ++i) {
            peer += random.letters(2 + random.below(10));
            peer.append(1 + random.below(2), ' ');
        }
        ours = fxStr(peer.data(), static_cast<unsigned int>(peer.size()));
    }
    std::string peer;
    fxStr ours;
};

// The number and the lengths of the words, so that none can be left out.
struct Tally {
    std::size_t words = 0, bytes = 0;
    void add(std::size_t length) {
        ++words;
        bytes += words * length;
    }
};

template <class Delimiters>
Tally tallyOurs(const Words& in, Delimiters delimiters) {
    Tally tally;
    for (unsigned int pos = 0; pos < in.ours.length();) {
        const fxStr word = in.ours.token(pos, delimiters);
        tally.add(word.length());
    }
    return tally;
}

template <class Delimiters>
Tally tallyPeer(const Words& in, Delimiters delimiters) {
    Tally tally;
    for (std::size_t pos = 0; pos < in.peer.size();) {
        const std::size_t end = orLength(in.peer.find_first_of(delimiters, pos), in.peer);
        const std::string word = in.peer.substr(pos, end - pos);
        tally.add(word.size());
        pos = orLength(in.peer.find_first_not_of(delimiters, end), in.peer);
    }
    return tally;
}

bool same(const Tally& a, const Tally& b) { return a.words == b.words && a.bytes == b.bytes; }

// Words of 1, 64 and 512 KiB together, and a few.
void wordCounts(benchmark::internal::Benchmark* b) {
    b->Arg(8)->Arg(128)->Arg(8192)->Arg(1 << 16)->Complexity();
}

void tokenCases() {
    beside<Words>(
        "fxStrSearch/split at a byte", Rate::items, wordCounts,
        [](const Words& in) { return tallyOurs(in, ' '); },
        Side{"std::string", [](const Words& in) { return tallyPeer(in, ' '); }});
    beside<Words>(
        "fxStrSearch/split at a set", Rate::items, wordCounts,
        [](const Words& in) { return tallyOurs(in, " \t\n"); },
        Side{"std::string", [](const Words& in) { return tallyPeer(in, " \t\n"); }});
}

int sign(int order) { return (order > 0) - (order < 0); }

// The hashes differ: what is compared is that equal texts have equal ones.
void comparingCases() {
    beside<Text>(
        "fxStrSearch/equal texts are equal", Rate::bytes, shortTexts,
        [](const Text& in) { return in.ours == in.oursToo; },
        Side{"std::string", [](const Text& in) { return in.peer == in.peerToo; }});
    beside<Text>(
        "fxStrSearch/order of equal texts", Rate::bytes, sweep,
        [](const Text& in) { return sign(compare(in.ours, in.oursToo)); },
        Side{"std::string", [](const Text& in) { return sign(in.peer.compare(in.peerToo)); }},
        Side{"strcmp", [](const Text& in) {
                 return sign(std::strcmp(in.peer.c_str(), in.peerToo.c_str()));
             }});
    beside<Text>(
        "fxStrSearch/hash twice", Rate::bytes, sweep,
        [](const Text& in) { return in.ours.hash() == in.oursToo.hash(); },
        Side{"std::hash", [](const Text& in) {
                 const std::hash<std::string> hash;
                 return hash(in.peer) == hash(in.peerToo);
             }});
}

const bool registered = [] {
    forwardCases();
    backwardCases();
    tokenCases();
    comparingCases();
    return true;
}();

}  // namespace
