// testNames.h - the tests of the program that runs, by their names.
#pragma once

#include <cctype>
#include <set>
#include <string>

#include <gtest/gtest.h>

/// A suite or test as it is written in its source: instances of typed and parameterised tests have
/// a number behind it, and the latter a name before it.
inline std::string withoutInstance(const std::string& name) {
    std::string plain = name;
    const std::size_t number = plain.rfind('/');
    if (number != std::string::npos && number + 1 < plain.size() &&
        std::isdigit(static_cast<unsigned char>(plain[number + 1])))
        plain.resize(number);
    const std::size_t prefix = plain.rfind('/');
    return prefix == std::string::npos ? plain : plain.substr(prefix + 1);
}

/// Every test of this program, as "suite.test".
inline std::set<std::string> testsOfThisProgram() {
    std::set<std::string> names;
    const testing::UnitTest& program = *testing::UnitTest::GetInstance();
    for (int i = 0; i < program.total_test_suite_count(); ++i) {
        const testing::TestSuite& suite = *program.GetTestSuite(i);
        for (int j = 0; j < suite.total_test_count(); ++j)
            names.insert(withoutInstance(suite.name()) + "." +
                         withoutInstance(suite.GetTestInfo(j)->name()));
    }
    return names;
}
