#include "kelvofxds/core/fxToolkit.h"

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxDebug.h"
#include "kelvofxds/core/fxOrderedGlobal.h"
#include "tests/support/ownOrderings.h"

struct fxGlobalOrderLayout {
    static_assert(sizeof(fxGlobalOrder) == 28, "a flag and an array");
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"  // the array has a table; g++ defines this
    static_assert(offsetof(fxGlobalOrder, sorted) == 0, "fields in order");
    static_assert(offsetof(fxGlobalOrder, globals) == 4, "fields in order");
#pragma GCC diagnostic pop
    static_assert(sizeof(fxGlobalOrder::sorted) == 1, "an 8-bit flag");
};

namespace {

// What static initialisers, which run before main, could see.
const bool orderingsBeforeMain = fx_toolkitGlobalOrder && fx_applicationGlobalOrder;

bool holds(const fxGlobalOrder& order, const fxOrderedGlobal& global) {
    const void* address = &global;
    return order.getGlobals().find(&address) != 0xFFFFFFFF;
}

const bool ownEntryBeforeMain = orderingsBeforeMain && holds(*fx_toolkitGlobalOrder, fxOG_Init);

// Ordered globals with the names A to D, whose functions note that they ran.
std::string ran;

template <char name>
void construct() {
    ran += name;
}

template <char name>
void destroy() {
    ran += static_cast<char>(name - 'A' + 'a');
}

class fxGlobalOrderTest : public OwnOrderings {
protected:
    fxGlobalOrderTest() { ran.clear(); }

    std::string orderOf(const fxGlobalOrder& tested) const {
        std::string names;
        for (unsigned int i = 0; i < tested.getGlobals().length(); ++i) {
            const void* entry = tested.getGlobals()[i];
            names += entry == &a ? 'A' : entry == &b ? 'B' : entry == &c ? 'C' : 'D';
        }
        return names;
    }

    fxGlobalOrder order;
    fxOrderedGlobal a{construct<'A'>, destroy<'A'>, nullptr, 0};
    fxOrderedGlobal b{construct<'B'>, destroy<'B'>, nullptr, 0};
    fxOrderedGlobal c{construct<'C'>, destroy<'C'>, nullptr, 0};
    fxOrderedGlobal d{construct<'D'>, destroy<'D'>, nullptr, 0};
    fxOrderedGlobal* onA[2] = {&a, nullptr};
    fxOrderedGlobal* onB[2] = {&b, nullptr};
    fxOrderedGlobal* onC[2] = {&c, nullptr};
    fxOrderedGlobal* onD[2] = {&d, nullptr};
};

}  // namespace

// Registration.

TEST_F(fxGlobalOrderTest, newOrderingIsEmptyWithRoomForTen) {
    EXPECT_EQ(0u, order.getGlobals().length());
    EXPECT_EQ(40u, order.getGlobals().getMaxLen());
}

TEST_F(fxGlobalOrderTest, addReturnsTheIndexAndTheEleventhGrowsByFour) {
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(i, order.add(&a));
    EXPECT_EQ(40u, order.getGlobals().getMaxLen());
    EXPECT_EQ(10, order.add(&b));
    EXPECT_EQ(56u, order.getGlobals().getMaxLen());
    EXPECT_EQ(&b, order.getGlobals()[10]);
}

TEST_F(fxGlobalOrderTest, addClearsSorted) {
    order.sort();
    EXPECT_TRUE(order.isSorted());
    order.add(&a);
    EXPECT_FALSE(order.isSorted());
}

TEST_F(fxGlobalOrderTest, createOrderingsMakesThoseThatAreMissing) {
    delete fx_toolkitGlobalOrder;
    fx_toolkitGlobalOrder = nullptr;
    fxGlobalOrder* application = fx_applicationGlobalOrder;
    ASSERT_NE(nullptr, application);

    fxGlobalOrder::createOrderings();
    ASSERT_NE(nullptr, fx_toolkitGlobalOrder);
    EXPECT_EQ(application, fx_applicationGlobalOrder);
    EXPECT_EQ(0u, fx_toolkitGlobalOrder->getGlobals().length());
    EXPECT_EQ(40u, fx_toolkitGlobalOrder->getGlobals().getMaxLen());

    fxGlobalOrder* toolkit = fx_toolkitGlobalOrder;
    fxGlobalOrder::createOrderings();
    EXPECT_EQ(toolkit, fx_toolkitGlobalOrder);
    EXPECT_EQ(application, fx_applicationGlobalOrder);
}

TEST_F(fxGlobalOrderTest, staticAddChoosesTheOrderingAndReturnsItsIndex) {
    delete fx_applicationGlobalOrder;
    fx_applicationGlobalOrder = nullptr;  // add makes it again
    EXPECT_EQ(0, fxGlobalOrder::add(&a, 1));
    EXPECT_EQ(1, fxGlobalOrder::add(&b, 1));
    EXPECT_EQ(0, fxGlobalOrder::add(&c, 0));
    EXPECT_EQ(1, fxGlobalOrder::add(&d, 2));
    EXPECT_EQ(2, fxGlobalOrder::add(&a, -1));
    EXPECT_EQ("AB", orderOf(*fx_toolkitGlobalOrder));
    EXPECT_EQ("CDA", orderOf(*fx_applicationGlobalOrder));
}

TEST_F(fxGlobalOrderTest, staticAddClearsSortedOfThatOrderingOnly) {
    fx_toolkitGlobalOrder->sort();
    fx_applicationGlobalOrder->sort();
    fxGlobalOrder::add(&a, 1);
    EXPECT_FALSE(fx_toolkitGlobalOrder->isSorted());
    EXPECT_TRUE(fx_applicationGlobalOrder->isSorted());
}

// Sorting. "A>B" reads "A depends on B"; the comments name the swaps made.

TEST_F(fxGlobalOrderTest, noneOrOneEntryIsSortedWithoutComparisons) {
    order.sort();
    EXPECT_TRUE(order.isSorted());
    a.deps = reinterpret_cast<fxOrderedGlobal**>(4);  // reading it would crash
    order.add(&a);
    order.sort();
    EXPECT_TRUE(order.isSorted());
    a.deps = nullptr;
}

TEST_F(fxGlobalOrderTest, dependencyComesFirst) {
    order.add(&a);
    order.add(&b);
    a.deps = onB;
    order.sort();
    EXPECT_EQ("BA", orderOf(order));
    EXPECT_TRUE(order.isSorted());
}

TEST_F(fxGlobalOrderTest, settledOrderStays) {
    order.add(&b);
    order.add(&a);
    order.add(&c);
    a.deps = onB;
    order.sort();
    EXPECT_EQ("BAC", orderOf(order));
}

// A>B, B>C in A B C: i=0: A>B swaps to B A C, then the new entry B>C swaps to
// C A B; i=1: A>B swaps to C B A.
TEST_F(fxGlobalOrderTest, theScanGoesOnWithTheEntrySwappedIn) {
    order.add(&a);
    order.add(&b);
    order.add(&c);
    a.deps = onB;
    b.deps = onC;
    order.sort();
    EXPECT_EQ("CBA", orderOf(order));
}

// C>B, B>A in C A B: i=0: C>A no, C>B swaps to B A C; i=1: A>C no. The new
// first entry B is not compared with A again.
TEST_F(fxGlobalOrderTest, deliberateOnePassLeavesSomeChainsUnsettled) {
    order.add(&c);
    order.add(&a);
    order.add(&b);
    c.deps = onB;
    b.deps = onA;
    order.sort();
    EXPECT_EQ("BAC", orderOf(order));
    EXPECT_TRUE(order.isSorted());
}

// A>B, B>A in A B: i=0: A>B swaps to B A, and that is all.
TEST_F(fxGlobalOrderTest, deliberateACycleIsLeftInWhateverOrder) {
    order.add(&a);
    order.add(&b);
    a.deps = onB;
    b.deps = onA;
    order.sort();
    EXPECT_EQ("BA", orderOf(order));
}

// A>B, B>C, C>D in A B C D: i=0: swaps with B, C and D in turn to D A B C;
// i=1: A>B swaps to D B A C, B>C swaps to D C A B; i=2: A>B swaps to D C B A.
TEST_F(fxGlobalOrderTest, chainOfFourIsReversed) {
    order.add(&a);
    order.add(&b);
    order.add(&c);
    order.add(&d);
    a.deps = onB;
    b.deps = onC;
    c.deps = onD;
    order.sort();
    EXPECT_EQ("DCBA", orderOf(order));
}

TEST_F(fxGlobalOrderTest, dependencyThatIsNotRegisteredIsIgnored) {
    order.add(&a);
    order.add(&b);
    a.deps = onD;
    order.sort();
    EXPECT_EQ("AB", orderOf(order));
}

// Construction and destruction.

TEST_F(fxGlobalOrderTest, createSortsAndRunsTheConstructFunctionsInOrder) {
    order.add(&a);
    order.add(&b);
    a.deps = onB;
    order.create();
    EXPECT_EQ("BA", ran);
    EXPECT_TRUE(order.isSorted());
    order.destroy();
    EXPECT_EQ("BAab", ran);
}

TEST_F(fxGlobalOrderTest, createDoesNotSortWhatIsSorted) {
    order.add(&a);
    order.add(&b);
    order.sort();
    a.deps = onB;
    order.create();
    EXPECT_EQ("AB", ran);
    EXPECT_EQ("AB", orderOf(order));
}

TEST_F(fxGlobalOrderTest, deliberateDestroyDoesNotSort) {
    order.add(&a);
    order.add(&b);
    a.deps = onB;
    order.destroy();
    EXPECT_EQ("ba", ran);
    EXPECT_FALSE(order.isSorted());
    EXPECT_EQ("AB", orderOf(order));
}

TEST_F(fxGlobalOrderTest, nullFunctionsAreSkipped) {
    order.add(&a);
    order.add(&b);
    order.add(&c);
    b.cons = nullptr;
    c.dest = nullptr;
    order.create();
    order.destroy();
    EXPECT_EQ("ACba", ran);
}

TEST_F(fxGlobalOrderTest, anEmptyOrderingRunsNothing) {
    order.create();
    order.destroy();
    EXPECT_EQ("", ran);
    EXPECT_TRUE(order.isSorted());
}

// The process's orderings.

TEST(fxToolkit, orderingsExistAndHoldTheToolkitsEntryBeforeMain) {
    EXPECT_TRUE(orderingsBeforeMain);
    EXPECT_TRUE(ownEntryBeforeMain);
}

TEST(fxToolkit, theToolkitsEntryIsNotInTheApplicationsOrdering) {
    EXPECT_TRUE(holds(*fx_toolkitGlobalOrder, fxOG_Init));
    EXPECT_FALSE(holds(*fx_applicationGlobalOrder, fxOG_Init));
}

// Start-up and shutdown happen once in a process, so each of these tests is a
// process of its own that tells on standard error what ran.

namespace {

template <char name>
void announce() {
    std::fputc(name, stderr);
}

void registerOneOfEach() {
    static fxOrderedGlobal application(announce<'A'>, announce<'a'>, nullptr, 0);
    static fxOrderedGlobal toolkit(announce<'T'>, announce<'t'>, nullptr, 1);
}

[[noreturn]] void initializeTwice() {
    registerOneOfEach();
    fxInitializeToolkit();
    std::fputc('|', stderr);
    fxInitGlobalOrderings();
    fxInitializeToolkit();
    std::_Exit(0);
}

[[noreturn]] void initializeUnderTheOtherNameFirst() {
    registerOneOfEach();
    fxInitGlobalOrderings();
    std::fputc('|', stderr);
    fxInitializeToolkit();
    std::_Exit(0);
}

[[noreturn]] void cleanUpTwice() {
    registerOneOfEach();
    fxInitializeToolkit();
    std::fputc('|', stderr);
    fxCleanupGlobalOrderings();
    std::fputc('|', stderr);
    fxCleanupGlobalOrderings();
    std::_Exit(0);
}

[[noreturn]] void initializeAfterCleanup() {
    registerOneOfEach();
    fxCleanupGlobalOrderings();
    std::fputc('|', stderr);
    fxInitializeToolkit();
    fxCleanupGlobalOrderings();
    std::_Exit(0);
}

// B depends on C, so that sorting would change the order.
[[noreturn]] void cleanUpWithoutInitialization() {
    static fxOrderedGlobal* onC[2];
    static fxOrderedGlobal b(announce<'B'>, announce<'b'>, onC, 0);
    static fxOrderedGlobal c(announce<'C'>, announce<'c'>, nullptr, 0);
    static fxOrderedGlobal t(announce<'T'>, announce<'t'>, nullptr, 1);
    onC[0] = &c;
    fxCleanupGlobalOrderings();
    std::_Exit(0);
}

[[noreturn]] void initializeSorted() {
    static fxOrderedGlobal* onC[2];
    static fxOrderedGlobal b(announce<'B'>, announce<'b'>, onC, 0);
    static fxOrderedGlobal c(announce<'C'>, announce<'c'>, nullptr, 0);
    onC[0] = &c;
    fxInitializeToolkit();
    fxCleanupGlobalOrderings();
    std::_Exit(0);
}

void initializeAgain() {
    std::fputc('R', stderr);
    fxInitializeToolkit();
    fxInitGlobalOrderings();
}

[[noreturn]] void initializeFromAConstructFunction() {
    static fxOrderedGlobal toolkit(initializeAgain, nullptr, 1);
    static fxOrderedGlobal application(announce<'A'>, nullptr, 0);
    fxInitializeToolkit();
    fxInitializeToolkit();
    std::_Exit(0);
}

[[noreturn]] void registerAfterInitialization() {
    fxInitializeToolkit();
    registerOneOfEach();
    fxInitializeToolkit();
    std::fputc('|', stderr);
    fxCleanupGlobalOrderings();
    std::_Exit(0);
}

[[noreturn]] void initializeWithoutDebugger() {
    if (fx_theDebugger)
        std::fputs("too early", stderr);
    fxInitializeToolkit();
    if (!fx_theDebugger)
        std::fputs("missing", stderr);
    const fxDebug* made = fx_theDebugger;
    fxCleanupGlobalOrderings();
    if (fx_theDebugger != made)
        std::fputs("gone", stderr);
    std::_Exit(0);
}

[[noreturn]] void initializeWithTheHostsDebugger() {
    fxDebug own(0);
    fx_theDebugger = &own;
    fxInitializeToolkit();
    if (fx_theDebugger != &own)
        std::fputs("replaced", stderr);
    std::_Exit(0);
}

[[noreturn]] void initializeWithoutOrderings() {
    fx_toolkitGlobalOrder = nullptr;
    fx_applicationGlobalOrder = nullptr;
    fxInitializeToolkit();
    fxCleanupGlobalOrderings();
    std::_Exit(0);
}

// Announce their name, and throw when they are called for the first time.
template <char name>
void announceOrThrow() {
    static bool first = true;
    std::fputc(name, stderr);
    if (std::exchange(first, false))
        throw name;
}

// Calls `operation` until nothing is thrown any more, and once again.
void repeat(void (*operation)()) {
    for (bool thrown = true; thrown;) {
        try {
            operation();
            thrown = false;
        } catch (char) {
            std::fputc('|', stderr);
        }
    }
    std::fputc('.', stderr);
    operation();
    std::_Exit(0);
}

[[noreturn]] void initializeWithFunctionsThatThrow() {
    static fxOrderedGlobal toolkit(announceOrThrow<'T'>, nullptr, 1);
    static fxOrderedGlobal second(announce<'U'>, nullptr, 1);
    static fxOrderedGlobal application(announceOrThrow<'A'>, nullptr, 0);
    repeat(fxInitializeToolkit);
    std::_Exit(1);
}

[[noreturn]] void cleanUpWithFunctionsThatThrow() {
    static fxOrderedGlobal toolkit(nullptr, announceOrThrow<'t'>, nullptr, 1);
    static fxOrderedGlobal application(nullptr, announceOrThrow<'a'>, nullptr, 0);
    static fxOrderedGlobal second(nullptr, announce<'b'>, nullptr, 0);
    repeat(fxCleanupGlobalOrderings);
    std::_Exit(1);
}

template <char name>
void announceAndCleanUp() {
    std::fputc(name, stderr);
    fxCleanupGlobalOrderings();
}

[[noreturn]] void cleanUpFromDestroyFunctions() {
    static fxOrderedGlobal toolkit(nullptr, announceAndCleanUp<'t'>, nullptr, 1);
    static fxOrderedGlobal application(nullptr, announceAndCleanUp<'a'>, nullptr, 0);
    fxInitializeToolkit();
    fxCleanupGlobalOrderings();
    std::fputc('|', stderr);
    fxCleanupGlobalOrderings();
    std::_Exit(0);
}

[[noreturn]] void cleanUpFromAConstructFunction() {
    static fxOrderedGlobal toolkit(announceAndCleanUp<'T'>, announce<'t'>, nullptr, 1);
    static fxOrderedGlobal application(announce<'A'>, announce<'a'>, nullptr, 0);
    fxInitializeToolkit();
    std::fputc('|', stderr);
    fxCleanupGlobalOrderings();
    std::_Exit(0);
}

template <char name, int which>
void registerMore() {
    std::fputc(name, stderr);
    static fxOrderedGlobal* onLast[2];
    static fxOrderedGlobal first(announce<name + 1>, announce<name - 'A' + 'b'>, onLast, which);
    static fxOrderedGlobal last(announce<name + 2>, announce<name - 'A' + 'c'>, nullptr, which);
    onLast[0] = &last;
}

// What is registered depends on what is registered behind it.
template <int ownWhich, int otherWhich>
[[noreturn]] void registerFromAConstructFunction() {
    static fxOrderedGlobal own(registerMore<'A', otherWhich>, announce<'a'>, nullptr, ownWhich);
    static fxOrderedGlobal behind(announce<'X'>, announce<'x'>, nullptr, ownWhich);
    fxInitializeToolkit();
    std::fputc('|', stderr);
    fxCleanupGlobalOrderings();
    std::_Exit(0);
}

// The orderings are the process's, so the child starts from the beginning.
class fxToolkitDeathTest : public testing::Test {
protected:
    fxToolkitDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

}  // namespace

TEST_F(fxToolkitDeathTest, initializationRunsTheToolkitFirstAndOnce) {
    EXPECT_EXIT(initializeTwice(), testing::ExitedWithCode(0), "^TA\\|$");
    EXPECT_EXIT(initializeUnderTheOtherNameFirst(), testing::ExitedWithCode(0), "^TA\\|$");
}

TEST_F(fxToolkitDeathTest, cleanupRunsTheApplicationFirstAndOnce) {
    EXPECT_EXIT(cleanUpTwice(), testing::ExitedWithCode(0), "^TA\\|at\\|$");
}

TEST_F(fxToolkitDeathTest, initializationAndCleanupHaveFlagsOfTheirOwn) {
    EXPECT_EXIT(initializeAfterCleanup(), testing::ExitedWithCode(0), "^at\\|TA$");
}

TEST_F(fxToolkitDeathTest, deliberateCleanupWithoutInitializationIsNotGuarded) {
    EXPECT_EXIT(cleanUpWithoutInitialization(), testing::ExitedWithCode(0), "^cbt$");
}

TEST_F(fxToolkitDeathTest, initializationSortsAndCleanupReverses) {
    EXPECT_EXIT(initializeSorted(), testing::ExitedWithCode(0), "^CBbc$");
}

TEST_F(fxToolkitDeathTest, initializationFromAConstructFunctionDoesNothing) {
    EXPECT_EXIT(initializeFromAConstructFunction(), testing::ExitedWithCode(0), "^RA$");
}

// Both names: the flag is cleared when both orderings have been created, and
// not when one of the functions throws.
TEST_F(fxToolkitDeathTest, initializationIsDoneOnlyOnceEveryConstructFunctionHasReturned) {
    EXPECT_EXIT(initializeWithFunctionsThatThrow(), testing::ExitedWithCode(0),
                "^T\\|TUA\\|TUA\\.$");
}

TEST_F(fxToolkitDeathTest, cleanupIsDoneOnlyOnceEveryDestroyFunctionHasReturned) {
    EXPECT_EXIT(cleanUpWithFunctionsThatThrow(), testing::ExitedWithCode(0), "^ba\\|bat\\|bat\\.$");
}

TEST_F(fxToolkitDeathTest, cleanupFromADestroyFunctionDoesNothing) {
    EXPECT_EXIT(cleanUpFromDestroyFunctions(), testing::ExitedWithCode(0), "^at\\|$");
}

TEST_F(fxToolkitDeathTest, cleanupFromAConstructFunctionIsTheOne) {
    EXPECT_EXIT(cleanUpFromAConstructFunction(), testing::ExitedWithCode(0), "^TatA\\|$");
}

// Its own ordering is being walked: the new ones come behind, unsorted. The
// application's comes later and is sorted before. The toolkit's is over.
TEST_F(fxToolkitDeathTest, constructFunctionMayRegisterOtherGlobals) {
    EXPECT_EXIT((registerFromAConstructFunction<1, 1>()), testing::ExitedWithCode(0),
                "^AXBC\\|cbxa$");
    EXPECT_EXIT((registerFromAConstructFunction<0, 0>()), testing::ExitedWithCode(0),
                "^AXBC\\|cbxa$");
    EXPECT_EXIT((registerFromAConstructFunction<1, 0>()), testing::ExitedWithCode(0),
                "^AXCB\\|bcxa$");
    EXPECT_EXIT((registerFromAConstructFunction<0, 1>()), testing::ExitedWithCode(0),
                "^AX\\|xacb$");
}

TEST_F(fxToolkitDeathTest, lateRegistrationsAreNotConstructedButDestroyed) {
    EXPECT_EXIT(registerAfterInitialization(), testing::ExitedWithCode(0), "^\\|at$");
}

TEST_F(fxToolkitDeathTest, initializationMakesTheDebuggerThatStays) {
    EXPECT_EXIT(initializeWithoutDebugger(), testing::ExitedWithCode(0), "^$");
}

TEST_F(fxToolkitDeathTest, initializationKeepsADebuggerOfTheHost) {
    EXPECT_EXIT(initializeWithTheHostsDebugger(), testing::ExitedWithCode(0), "^$");
}

TEST_F(fxToolkitDeathTest, startUpNeedsNoRegistration) {
    EXPECT_EXIT(initializeWithoutOrderings(), testing::ExitedWithCode(0), "^$");
}
