#include "kelvofxds/core/fxRefStd.h"

#include <map>
#include <unordered_set>

#include <gtest/gtest.h>

namespace {
struct Part : fxRCObj {};
struct Wheel : Part {};
}  // namespace

TEST(fxRefStd, hashesAreThoseOfTheAddress) {
    const fxRef<Part> a(new Part), same(a), none;
    const std::hash<fxRef<Part>> hash;
    EXPECT_EQ(hash(a), hash(same));
    EXPECT_EQ(std::hash<Part*>()(a.get()), hash(a));
    EXPECT_EQ(std::hash<Part*>()(nullptr), hash(none));
    std::unordered_set<fxRef<Part>> parts{a, same, none};
    EXPECT_EQ(2U, parts.size());
    EXPECT_EQ(3, a->count);
}

TEST(fxRefStd, comparisonsAgreeWithThoseOfTheAddresses) {
    const fxRef<Part> two[] = {new Wheel, new Part};
    const fxRef<Wheel> wheel(static_cast<Wheel*>(two[0].get()));
    for (const fxRef<Part>& x : two) {
        for (const fxRef<Part>& y : two) {
            const std::less<Part*> less;
            EXPECT_EQ(less(y.get(), x.get()), x > y);
            EXPECT_EQ(!less(y.get(), x.get()), x <= y);
            EXPECT_EQ(!less(x.get(), y.get()), x >= y);
            EXPECT_EQ(x > y, x > y.get());
            EXPECT_EQ(x > y, x.get() > y);
            EXPECT_EQ(x <= y, x <= y.get());
            EXPECT_EQ(x <= y, x.get() <= y);
            EXPECT_EQ(x >= y, x >= y.get());
            EXPECT_EQ(x >= y, x.get() >= y);
        }
        EXPECT_EQ(x.get() > wheel.get(), x > wheel);
        EXPECT_EQ(x.get() <= wheel.get(), x <= wheel.get());
        EXPECT_EQ(wheel.get() >= x.get(), wheel >= x);
    }
}

TEST(fxRefStd, nullIsInFrontOfEveryObject) {
    const fxRef<Part> some(new Part), none;
    EXPECT_TRUE(some > nullptr);
    EXPECT_FALSE(none > nullptr);
    EXPECT_FALSE(nullptr > some);
    EXPECT_FALSE(some <= nullptr);
    EXPECT_TRUE(none <= nullptr);
    EXPECT_TRUE(nullptr <= some);
    EXPECT_TRUE(some >= nullptr);
    EXPECT_TRUE(none >= nullptr);
    EXPECT_FALSE(nullptr >= some);
    EXPECT_TRUE(nullptr >= none);
}
