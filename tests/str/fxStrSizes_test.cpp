// fxStrSizes_test.cpp - strings and temporaries whose size does not fit a word.

#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxTempStr.h"

namespace {

const unsigned int most = 0xFFFFFFFF;

void expectTooLarge(const char* what, void (*act)(fxStr&)) {
    SCOPED_TRACE(what);
    fxStr s("text");
    EXPECT_EXIT(act(s), testing::KilledBySignal(SIGABRT), "^fxStr: size too large\n$");
}

// 1 GB of text in which all parts are the same few pages; null if the process
// has no room for it.
const char* longText() {
    const std::size_t part = 1U << 20;
    const std::size_t parts = 1024;
    const int file = ::memfd_create("text", 0);
    if (file < 0 || ::ftruncate(file, part) != 0)
        return nullptr;
    void* place = ::mmap(nullptr, part * parts + 1, PROT_READ | PROT_WRITE,
                         MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (place == MAP_FAILED)
        return nullptr;
    char* text = static_cast<char*>(place);
    for (std::size_t i = 0; i < parts; ++i) {
        if (::mmap(text + i * part, part, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, file,
                   0) == MAP_FAILED)
            return nullptr;
    }
    std::memset(text, 't', part);
    return text;
}

}  // namespace

TEST(fxStrSizesDeathTest, aLengthWhoseNulDoesNotFitEndsTheProcess) {
    expectTooLarge("constructor", [](fxStr&) { fxStr s(most); });
    expectTooLarge("constructor of a text", [](fxStr&) { fxStr s("text", most); });
    expectTooLarge("resizeInternal", [](fxStr& s) { s.resizeInternal(most); });
    expectTooLarge("resizeInternal of nothing", [](fxStr&) { fxStr().resizeInternal(most); });
    expectTooLarge("setMaxLength", [](fxStr& s) { s.setMaxLength(most); });
    expectTooLarge("resize", [](fxStr& s) { s.resize(most); });
    expectTooLarge("resize of nothing", [](fxStr&) { fxStr().resize(most); });
}

TEST(fxStrSizesDeathTest, aSumThatDoesNotFitEndsTheProcess) {
    for (const unsigned int n : {most, most - 1, most - 3}) {
        static unsigned int added;
        added = n;
        SCOPED_TRACE(n);
        expectTooLarge("append", [](fxStr& s) { s.append("more", added); });
        expectTooLarge("append of itself", [](fxStr& s) { s.append(s.c_str(), added); });
        expectTooLarge("insert", [](fxStr& s) { s.insert("more", 2, added); });
        expectTooLarge("temporary", [](fxStr&) { fxTempStr("abcd", 4, "more", added); });
        expectTooLarge("temporary, left", [](fxStr&) { fxTempStr("more", added, "abcd", 4); });
        expectTooLarge("concat", [](fxStr& s) { (s | "").concat("more", added); });
        expectTooLarge("concat on the heap",
                       [](fxStr&) { (fxStr(200u) | "").concat("more", added); });
    }
    expectTooLarge("insert of itself", [](fxStr& s) { s.insert(s.c_str(), 2, most); });
    expectTooLarge("two lengths", [](fxStr&) { fxTempStr("a", 1U << 31, "b", 1U << 31); });
}

TEST(fxStrSizesDeathTest, aRecordThatGrowsByTooMuchEndsTheProcess) {
    for (const char* before : {"", "a text"}) {
        static const char* target;
        target = before;
        expectTooLarge("operator>>", [](fxStr&) {
            fxStr::resizeIncrement = most;
            std::istringstream in("a record longer than the text");
            fxStr s(target);
            in >> s;
        });
    }
}

TEST(fxStrSizesDeathTest, anEstimateThatDoesNotFitEndsTheProcess) {
    const auto format = [] {
        const char* text = longText();
        if (!text)
            std::_Exit(3);
        fxStr s;
        s.format("%s%s%s%s", text, text, text, text);
        std::_Exit(1);
    };
    const auto noRoom = [](int status) { return testing::ExitedWithCode(3)(status); };
    const auto endsOrHasNoRoom = [&](int status) {
        return noRoom(status) || testing::KilledBySignal(SIGABRT)(status);
    };
    EXPECT_EXIT(format(), endsOrHasNoRoom, "^(fxStr: size too large\n)?$");
}

TEST(fxStrSizesDeathTest, runningOutOfMemoryEndsTheProcess) {
    const auto act = [](unsigned int n) { fxStr s(n); };
    EXPECT_EXIT(act(0xFFFFFF00), testing::KilledBySignal(SIGABRT), "out of memory\n$");
}
