// fxStr_bench.cpp - making and changing strings, beside std::string.

#include <algorithm>
#include <cctype>
#include <istream>
#include <sstream>
#include <utility>

#include "bench/support/beside.h"
#include "bench/support/inputs.h"
#include "kelvofxds/str/fxStr.h"

namespace {

void makingCases() {
    beside<Text>(
        "fxStr/copy", Rate::bytes, shortTexts, [](const Text& in) { return fxStr(in.ours); },
        Side{"std::string", [](const Text& in) { return std::string(in.peer); }});
    beside<Text>(
        "fxStr/from text", Rate::bytes, shortTexts,
        [](const Text& in) { return fxStr(in.peer.c_str()); },
        Side{"std::string", [](const Text& in) { return std::string(in.peer.c_str()); }});
    beside<Text>(
        "fxStr/assign back and forth", Rate::bytes, sweep,
        [](Text& in) {
            fxStr s = in.ours;
            s = in.oursToo;
            s = in.ours;
            return s;
        },
        Side{"std::string", [](Text& in) {
                 std::string s = in.peer;
                 s = in.peerToo;
                 s = in.peer;
                 return s;
             }});
}

void appendingCases() {
    beside<Text>(
        "fxStr/append a byte", Rate::bytes, sweep,
        [](const Text& in) {
            fxStr s;
            for (char c : in.peer)
                s.append(c);
            return s;
        },
        Side{"std::string", [](const Text& in) {
                 std::string s;
                 for (char c : in.peer)
                     s += c;
                 return s;
             }});
    beside<Text>(
        "fxStr/append a byte to two strings in turn", Rate::bytes, sweep,
        [](const Text& in) {
            std::pair<fxStr, fxStr> s;
            for (char c : in.peer) {
                s.first.append(c);
                s.second.append(c);
            }
            return s;
        },
        Side{"std::string", [](const Text& in) {
                 std::pair<std::string, std::string> s;
                 for (char c : in.peer) {
                     s.first += c;
                     s.second += c;
                 }
                 return s;
             }});
    beside<Text>(
        "fxStr/append eight bytes", Rate::bytes, sweep,
        [](const Text& in) {
            fxStr s;
            for (unsigned int i = 0; i < in.peer.size(); i += 8)
                s.append(in.peer.data() + i, 8);
            return s;
        },
        Side{"std::string", [](const Text& in) {
                 std::string s;
                 for (unsigned int i = 0; i < in.peer.size(); i += 8)
                     s.append(in.peer.data() + i, 8);
                 return s;
             }});
}

void editingCases() {
    beside<Text>(
        "fxStr/insert and remove in the middle", Rate::bytes, sweep,
        [](Text& in) {
            const unsigned int middle = in.ours.length() / 2;
            in.ours.insert("middle", middle, 6);
            in.ours.remove(middle, 6);
            return in.ours.length();
        },
        Side{"std::string", [](Text& in) {
                 const std::size_t middle = in.peer.size() / 2;
                 in.peer.insert(middle, "middle", 6);
                 in.peer.erase(middle, 6);
                 return in.peer.size();
             }});
    beside<Text>(
        "fxStr/extract the middle", Rate::bytes, sweep,
        [](const Text& in) {
            const unsigned int n = in.ours.length();
            return in.ours.extract(n / 4, n / 2);
        },
        Side{"std::string", [](const Text& in) {
                 const std::size_t n = in.peer.size();
                 return in.peer.substr(n / 4, n / 2);
             }});
    beside<Text>(
        "fxStr/upper case and back", Rate::bytes, sweep,
        [](Text& in) {
            in.ours.raise();
            in.ours.lower();
            return in.ours.length();
        },
        Side{"std::transform", [](Text& in) {
                 std::string& s = in.peer;
                 const auto upper = [](unsigned char c) { return char(std::toupper(c)); };
                 const auto lower = [](unsigned char c) { return char(std::tolower(c)); };
                 std::transform(s.begin(), s.end(), s.begin(), upper);
                 std::transform(s.begin(), s.end(), s.begin(), lower);
                 return s.size();
             }});
}

// Lines of 40 bytes.
struct Lines {
    explicit Lines(unsigned int n) {
        Random random;
        for (unsigned int i = 0; i < n; ++i)
            text += random.letters(39) + "\n";
    }
    std::string text;
};

void streamCases() {
    beside<Lines>(
        "fxStr/read lines", Rate::items, shortSweep,
        [](const Lines& in) {
            std::istringstream stream(in.text);
            fxStr line;
            unsigned int bytes = 0;
            while (stream >> line)
                bytes += line.length();
            return bytes;
        },
        Side{"std::getline", [](const Lines& in) {
                 std::istringstream stream(in.text);
                 std::string line;
                 std::size_t bytes = 0;
                 while (std::getline(stream, line))
                     bytes += line.size();
                 return bytes;
             }});
}

const bool registered = [] {
    makingCases();
    appendingCases();
    editingCases();
    streamCases();
    return true;
}();

}  // namespace
