#include "kelvofxds/core/fxOrderedGlobal.h"

#include <cstddef>
#include <type_traits>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "tests/support/ownOrderings.h"

static_assert(sizeof(fxOrderedGlobal) == 12, "three words");
static_assert(offsetof(fxOrderedGlobal, cons) == 0, "fields in order");
static_assert(offsetof(fxOrderedGlobal, dest) == 4, "fields in order");
static_assert(offsetof(fxOrderedGlobal, deps) == 8, "fields in order");
static_assert(!std::is_polymorphic<fxOrderedGlobal>::value, "no base, no table");
static_assert(std::is_trivially_destructible<fxOrderedGlobal>::value,
              "the orderings point to instances until the process ends");

namespace {

void construct() {}
void destroy() {}

class fxOrderedGlobalTest : public OwnOrderings {};

}  // namespace

TEST_F(fxOrderedGlobalTest, constructorWithoutDestroyFunctionStoresItsArguments) {
    fxOrderedGlobal* deps[] = {nullptr};
    fxOrderedGlobal global(construct, deps, 1);
    EXPECT_EQ(construct, global.cons);
    EXPECT_EQ(nullptr, global.dest);
    EXPECT_EQ(deps, global.deps);
}

TEST_F(fxOrderedGlobalTest, constructorWithDestroyFunctionStoresItsArguments) {
    fxOrderedGlobal* deps[] = {nullptr};
    fxOrderedGlobal global(construct, destroy, deps, 1);
    EXPECT_EQ(construct, global.cons);
    EXPECT_EQ(destroy, global.dest);
    EXPECT_EQ(deps, global.deps);
}

TEST_F(fxOrderedGlobalTest, constructorsTakeNullForEverything) {
    fxOrderedGlobal first(nullptr, nullptr, 0);
    fxOrderedGlobal second(nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(nullptr, first.cons);
    EXPECT_EQ(nullptr, second.cons);
    EXPECT_EQ(nullptr, second.dest);
    EXPECT_EQ(nullptr, second.deps);
}

TEST_F(fxOrderedGlobalTest, dependenciesAndOrderingHaveDefaults) {
    fxOrderedGlobal global(construct);
    EXPECT_EQ(nullptr, global.deps);
    ASSERT_EQ(1u, fx_applicationGlobalOrder->getGlobals().length());
    EXPECT_EQ(&global, fx_applicationGlobalOrder->getGlobals()[0]);
}

TEST_F(fxOrderedGlobalTest, theFirstRegistrationMakesBothOrderings) {
    fxOrderedGlobal global(construct, nullptr, 1);
    ASSERT_NE(nullptr, fx_toolkitGlobalOrder);
    ASSERT_NE(nullptr, fx_applicationGlobalOrder);
    EXPECT_EQ(1u, fx_toolkitGlobalOrder->getGlobals().length());
    EXPECT_EQ(0u, fx_applicationGlobalOrder->getGlobals().length());
}

TEST_F(fxOrderedGlobalTest, onlyWhichExactlyOneIsTheToolkit) {
    const struct {
        int which;
        bool toolkit;
    } cases[] = {{1, true},    {0, false},     {2, false},          {-1, false},
                 {257, false}, {65537, false}, {-2147483647, false}};
    unsigned int toolkit = 0, application = 0;
    fxGlobalOrder::createOrderings();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.which);
        fxOrderedGlobal threeArguments(construct, nullptr, c.which);
        fxOrderedGlobal fourArguments(construct, destroy, nullptr, c.which);
        (c.toolkit ? toolkit : application) += 2;
        EXPECT_EQ(toolkit, fx_toolkitGlobalOrder->getGlobals().length());
        EXPECT_EQ(application, fx_applicationGlobalOrder->getGlobals().length());
        const fxVoidPtrArray& globals =
            (c.toolkit ? fx_toolkitGlobalOrder : fx_applicationGlobalOrder)->getGlobals();
        EXPECT_EQ(&threeArguments, globals[globals.length() - 2]);
        EXPECT_EQ(&fourArguments, globals[globals.length() - 1]);
    }
}

// dependsOn

TEST_F(fxOrderedGlobalTest, withoutAListItDependsOnNothing) {
    fxOrderedGlobal first(construct), second(construct);
    EXPECT_FALSE(first.dependsOn(second));
    EXPECT_FALSE(first.dependsOn(first));
}

TEST_F(fxOrderedGlobalTest, withAnEmptyListItDependsOnNothing) {
    fxOrderedGlobal* deps[] = {nullptr};
    fxOrderedGlobal first(construct, deps), second(construct);
    EXPECT_FALSE(first.dependsOn(second));
}

TEST_F(fxOrderedGlobalTest, itDependsOnWhatItsListNames) {
    fxOrderedGlobal a(construct), b(construct), c(construct), d(construct);
    fxOrderedGlobal* deps[] = {&b, &c, nullptr, &d};
    a.deps = deps;
    EXPECT_TRUE(a.dependsOn(b));
    EXPECT_TRUE(a.dependsOn(c));
    EXPECT_FALSE(a.dependsOn(d)) << "it is listed behind the terminating null";
    EXPECT_FALSE(a.dependsOn(a));
    EXPECT_FALSE(b.dependsOn(a));
}

TEST_F(fxOrderedGlobalTest, dependenciesAreNotFollowed) {
    fxOrderedGlobal a(construct), b(construct), c(construct);
    fxOrderedGlobal* onB[] = {&b, nullptr};
    fxOrderedGlobal* onC[] = {&c, nullptr};
    a.deps = onB;
    b.deps = onC;
    EXPECT_FALSE(a.dependsOn(c));
}

TEST_F(fxOrderedGlobalTest, itMayDependOnItself) {
    fxOrderedGlobal a(construct);
    fxOrderedGlobal* deps[] = {&a, nullptr};
    a.deps = deps;
    EXPECT_TRUE(a.dependsOn(a));
}

// The toolkit's own.

TEST(fxOrderedGlobal, theToolkitsOwnHasNoDependencies) {
    EXPECT_NE(nullptr, fxOG_Init.cons);
    EXPECT_NE(nullptr, fxOG_Init.dest);
    EXPECT_EQ(nullptr, fxOG_Init.deps);
}
