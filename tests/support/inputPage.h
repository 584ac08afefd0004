// inputPage.h - inputs that nobody looks at.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/objects/fxInputFunction.h"
#include "tests/support/dataFlow.h"

/// A page of inputs that own their function, which nobody may read while it is
/// shut: that ends the process.
class InputPage {
public:
    InputPage()
        : size(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))),
          page(mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {}
    InputPage(const InputPage&) = delete;
    InputPage& operator=(const InputPage&) = delete;
    ~InputPage() { munmap(page, size); }

    fxInputChannel* add(fxObj& owner) {
        auto* input = new (static_cast<Input*>(page) + made++) Input;
        return fxAddOwnInput(&owner, std::to_string(made).c_str(), input);
    }
    void shut() { ASSERT_EQ(0, mprotect(page, size, PROT_NONE)); }
    void open() { ASSERT_EQ(0, mprotect(page, size, PROT_READ | PROT_WRITE)); }

private:
    struct Input : fxOwnInput {
        Input() : fxOwnInput(fxDT_int, receiver(receive), false, [](fxOwnInput*) {}) {}
        static void receive(void*, int) {}
    };

    std::size_t size;
    void* page;
    unsigned int made = 0;
};
