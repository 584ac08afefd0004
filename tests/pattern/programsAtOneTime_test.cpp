// programsAtOneTime_test.cpp - many programs that are searched with while another thread searches.

#include <atomic>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/pattern/fxRegEngine.h"

namespace {

struct Free {
    void operator()(fxregexp* program) const { std::free(program); }
};
using Program = std::unique_ptr<fxregexp, Free>;

Program compile(const std::string& pattern) { return Program(fxregcomp(pattern.c_str())); }

}  // namespace

// More than the engine keeps decoded, so that some take the place of the one that is in use.
TEST(programsAtOneTime, eachFindsItsOwnWhileALongSearchGoesOn) {
    const std::string text(1 << 20, 'a');
    const Program slow = compile("[ab]*c");
    ASSERT_TRUE(slow);
    std::atomic<bool> isBusy(false);
    std::atomic<bool> isDone(false);
    unsigned int wrong = 0;
    std::thread other([&] {
        do {
            isBusy = true;
            wrong += fxregexec(slow.get(), text.c_str()) != 0;
        } while (!isDone);
    });
    while (!isBusy)
        std::this_thread::yield();

    std::vector<Program> programs;
    for (int i = 0; i < 500; ++i)
        programs.push_back(compile("(x|y)" + std::to_string(i) + "z"));
    unsigned int wrongHere = 0;
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 500; ++i) {
            fxregexp* const program = programs[static_cast<unsigned int>(i)].get();
            const std::string subject = "--y" + std::to_string(i) + "z--";
            const bool isFound = program && fxregexec(program, subject.c_str()) != 0 &&
                                 program->startp[0] == subject.c_str() + 2 &&
                                 program->endp[1] == subject.c_str() + 3;
            wrongHere += !isFound || fxregexec(program, "--y501z--") != 0;
        }
    }
    isDone = true;
    other.join();
    EXPECT_EQ(0u, wrong);
    EXPECT_EQ(0u, wrongHere);
}
