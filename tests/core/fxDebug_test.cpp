#include "kelvofxds/core/fxDebug.h"

#include <gtest/gtest.h>

#include "kelvofxds/str/fxStr.h"

namespace {
const bool nullBeforeMain = fx_theDebugger == nullptr;
}  // namespace

TEST(fxDebug, theDebuggerIsNullUntilTheToolkitIsInitialised) { EXPECT_TRUE(nullBeforeMain); }

TEST(fxDebug, constructorAndParseOptionDoNothing) {
    fxStr option("verbose");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    for (int enabled : {0, 1, 255}) {
        fxDebug debugger(static_cast<unsigned char>(enabled));
        debugger.parseOption(option);
    }
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_STREQ("verbose", option.c_str());
}
