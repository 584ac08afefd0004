// figure.h - tests that print a figure.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

/// Tests of the suites called `figure...` measure what the library promises of itself. In the
/// suite they run at a size that takes seconds; KELVOFXDS_FIGURES asks for all of it.
inline bool isFullFigure() { return std::getenv("KELVOFXDS_FIGURES") != nullptr; }

/// `full`, or `part` of it in the suite.
inline unsigned long figureSize(unsigned long full, unsigned long part) {
    return isFullFigure() ? full : part;
}

/// Prints the line of figure `id`, and fails the test where the goal was not reached. The goal is
/// that of the size it was measured at.
inline void reportFigure(const char* id, const std::string& value, const std::string& goal,
                         bool isReached) {
    std::printf("GOAL %s %s %s %s\n", id, value.c_str(), goal.c_str(), isReached ? "PASS" : "FAIL");
    EXPECT_TRUE(isReached) << id << ": " << value << " instead of " << goal;
}
