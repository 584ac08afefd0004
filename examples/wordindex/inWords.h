// inWords.h - numbers as people read them.
#pragma once

#include <cstdint>
#include <string>

/// `n` in groups of three digits, as in "25,329,770".
std::string grouped(std::uint64_t n);

/// `n` and `what`, as in "1 word" or "2,000 words".
std::string counted(std::uint64_t n, const std::string& what);

/// An amount of memory, as in "244.8 MB", where 1 MB is a million bytes.
std::string amount(std::uint64_t bytes);

/// A time, as in "4.6 s", "394 ms" or "12 µs".
std::string duration(double seconds);

/// What `bytes` in `seconds` comes to, as in "53.0 MB/s".
std::string rate(std::uint64_t bytes, double seconds);
