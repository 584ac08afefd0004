#include "examples/wordindex/inWords.h"

#include <cstdio>

namespace {
std::string with(const char* format, double number) {
    char text[40];
    std::snprintf(text, sizeof text, format, number);
    return text;
}
}  // namespace

std::string grouped(std::uint64_t n) {
    std::string digits = std::to_string(n);
    for (std::size_t at = digits.size(); at > 3;)
        digits.insert(at -= 3, ",");
    return digits;
}

std::string counted(std::uint64_t n, const std::string& what) {
    return grouped(n) + " " + what + (n == 1 ? "" : "s");
}

std::string amount(std::uint64_t bytes) {
    if (bytes < 1000)
        return counted(bytes, "byte");
    const double n = static_cast<double>(bytes);
    return bytes < 1000000 ? with("%.1f kB", n / 1e3) : with("%.1f MB", n / 1e6);
}

std::string duration(double seconds) {
    if (seconds < 1e-3)
        return with("%.0f µs", seconds * 1e6);
    return seconds < 1 ? with("%.0f ms", seconds * 1e3) : with("%.1f s", seconds);
}

std::string rate(std::uint64_t bytes, double seconds) {
    const double shortest = 1e-9;  // of a clock that has not moved on
    return with("%.1f MB/s",
                static_cast<double>(bytes) / 1e6 / (seconds > shortest ? seconds : shortest));
}
