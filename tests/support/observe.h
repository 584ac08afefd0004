// observe.h - what the tests of the string classes look at.
#pragma once

#include <malloc.h>

#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxStr.h"

/// The bytes of `s`, after a check of what holds of every string: a NUL ends
/// its text, and the shared empty text stands for an empty string alone.
inline std::string bytesOf(const fxStr& s) {
    EXPECT_EQ('\0', s.c_str()[s.length()]);
    EXPECT_EQ('\0', fxStr::emptyString);
    EXPECT_EQ(s.length() == 0, s.c_str() == &fxStr::emptyString);
    return std::string(s.c_str(), s.length());
}

/// A string of `bytes`, NULs included.
inline fxStr stringOf(const std::string& bytes) {
    return fxStr(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

/// Whether `block` was allocated for `size` bytes. The allocator rounds up by
/// less than 32 bytes.
inline testing::AssertionResult allocatedFor(const char* block, std::size_t size) {
    const std::size_t usable = malloc_usable_size(const_cast<char*>(block));
    if (usable >= size && usable - size < 32)
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << usable << " usable bytes where " << size << " were to be allocated";
}
