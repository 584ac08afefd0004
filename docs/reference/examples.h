// examples.h - what the examples of the reference manual are registered with.
#pragma once

#include <cstdio>

#include "kelvofxds/kelvofxds.h"

/// One example; they run in the order of their names.
struct Example {
    Example(const char* className, void (*function)());

    const char* name;
    void (*run)();
    const Example* next;
};

/// EXAMPLE(Class) { ... }: prints, and each printf says behind it, on its line, what that is. What
/// stands between two marks, //! [Class], is shown on the manual's page of the class.
#define EXAMPLE(Class)                                        \
    static void show##Class();                                \
    static const Example example##Class(#Class, show##Class); \
    static void show##Class()
