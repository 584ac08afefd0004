// paintedStack.h - how much of a stack is used.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include <gtest/gtest.h>

/// Bytes that work(argument) takes of a stack of 256 KiB, with what every thread takes of it.
inline std::size_t stackTakenBy(void* (*work)(void*), void* argument) {
    const std::uint8_t untouched = 0xA5;
    const std::size_t size = 256 * 1024;
    const std::unique_ptr<std::uint8_t[]> block(new std::uint8_t[size + 4096]);
    std::uint8_t* const stack =
        block.get() + 4096 - reinterpret_cast<std::uintptr_t>(block.get()) % 4096;
    std::memset(stack, untouched, size);
    pthread_attr_t attributes;
    EXPECT_EQ(0, pthread_attr_init(&attributes));
    EXPECT_EQ(0, pthread_attr_setstack(&attributes, stack, size));
    pthread_t thread;
    EXPECT_EQ(0, pthread_create(&thread, &attributes, work, argument));
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    std::size_t unused = 0;
    while (unused < size && stack[unused] == untouched)
        ++unused;
    return size - unused;
}
