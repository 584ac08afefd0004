// memory.h - how much memory this process really has.
#pragma once

#include <unistd.h>

#include <cstddef>
#include <cstdio>

#include <gtest/gtest.h>

/// Memory that was touched and is not given back.
inline std::size_t residentBytes() {
    unsigned long total = 0;
    unsigned long resident = 0;
    if (std::FILE* f = std::fopen("/proc/self/statm", "r")) {
        EXPECT_EQ(2, std::fscanf(f, "%lu %lu", &total, &resident));
        std::fclose(f);
    }
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}
