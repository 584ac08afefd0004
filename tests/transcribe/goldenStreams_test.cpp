// Streams of both formats and both byte orders, byte for byte as they have always been.

#include <cstdlib>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/goldenStreams.h"

TEST(goldenStreams, areWrittenByteForByte) {
    const bool isBig = goldenStreams::hostIsBig();
    for (const auto& kind : goldenStreams::kinds) {
        SCOPED_TRACE(kind.name);
        const std::string bytes = kind.make();
        if (const char* folder = std::getenv("KELVOFXDS_GOLDEN"))  // to make them anew
            std::ofstream(
                std::string(folder) + "/" + kind.name + (isBig ? "_big.fx" : "_little.fx"),
                std::ios::binary)
                << bytes;
        EXPECT_TRUE(goldenStreams::fileOf(kind, isBig) == bytes);
    }
}

TEST(goldenStreams, ofEitherByteOrderAreReadWhole) {
    fxInitializeToolkit();
    const bool isBig = goldenStreams::hostIsBig();
    for (const auto& kind : goldenStreams::kinds) {
        SCOPED_TRACE(kind.name);
        const std::string own = goldenStreams::fileOf(kind, isBig);
        ASSERT_NE("", own);
        EXPECT_TRUE(goldenStreams::writtenAgain(kind, own) == own);
        const std::string foreign = goldenStreams::fileOf(kind, !isBig);
        EXPECT_FALSE(foreign == own);
        const std::string again = goldenStreams::writtenAgain(kind, foreign);
        EXPECT_TRUE(kind.hasFloats ? again.size() == own.size() : again == own);
    }
}
