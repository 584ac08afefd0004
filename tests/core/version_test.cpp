#include "kelvofxds/version.h"

#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxVersion.h"
#include "tests/support/runProgram.h"

#if KELVOFXDS_VERSION_NUMBER < 100
#error "the number is there for the preprocessor"
#endif

namespace {
// What stands in `file` of the project between `before` and `after`.
std::string textBetween(const std::string& file, const std::string& before, char after) {
    const std::string text = bytesOf(KELVOFXDS_SOURCE_DIR "/" + file);
    const std::size_t at = text.find(before);
    if (at == std::string::npos)
        return "nothing";
    const std::size_t from = at + before.size();
    return text.substr(from, text.find(after, from) - from);
}
}  // namespace

TEST(version, textIsThatOfTheProject) {
    EXPECT_EQ(KELVOFXDS_VERSION, textBetween("CMakeLists.txt", "project(kelvofxds VERSION ", ' '));
}

TEST(version, textAndNumberAreMadeOfTheThreeNumbers) {
    EXPECT_EQ(KELVOFXDS_VERSION, std::to_string(KELVOFXDS_VERSION_MAJOR) + "." +
                                     std::to_string(KELVOFXDS_VERSION_MINOR) + "." +
                                     std::to_string(KELVOFXDS_VERSION_PATCH));
    EXPECT_EQ(KELVOFXDS_VERSION_MAJOR, KELVOFXDS_VERSION_NUMBER / 10000);
    EXPECT_EQ(KELVOFXDS_VERSION_MINOR, KELVOFXDS_VERSION_NUMBER / 100 % 100);
    EXPECT_EQ(KELVOFXDS_VERSION_PATCH, KELVOFXDS_VERSION_NUMBER % 100);
}

TEST(version, loadedLibrarySaysTheSame) {
    char line[80] = "";
    libkelvofxds_sprintf_verid(line);
    EXPECT_NE(std::string::npos, std::string(line).find(" " KELVOFXDS_VERSION " ("));
}
