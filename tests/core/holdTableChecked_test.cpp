// holdTableChecked_test.cpp - the checked build counts what the library holds in memory of its own;
// when the system refuses that, the process ends as it does for all other memory.

#include <sys/resource.h>

#include <csignal>
#include <new>

#include <gtest/gtest.h>

#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/values/fxProperty.h"

#if KELVOFXDS_LIBRARY_IS_CHECKED && !defined(__SANITIZE_ADDRESS__)
namespace {

// More objects than the table has room for at first.
const unsigned int many = 1000;

fxObj objects[many];
alignas(fxProperty) unsigned char rooms[many][sizeof(fxProperty)];

// The table takes its memory from the system.
void holdAll() {
    const rlimit none{0, RLIM_INFINITY};
    ::setrlimit(RLIMIT_AS, &none);
    for (unsigned int i = 0; i < many; ++i)
        new (rooms[i]) fxProperty(3, &objects[i]);
}

}  // namespace

TEST(holdTableCheckedDeathTest, aTableThatCannotGrowIsFatal) {
    EXPECT_EXIT(holdAll(), testing::KilledBySignal(SIGABRT), "^out of memory\n$");
}
#endif
