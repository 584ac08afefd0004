#include "kelvofxds/objects/fxApplication.h"

#include <csignal>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/loopFixture.h"
#include "tests/support/vtable.h"

static_assert(!std::is_copy_constructible<fxApplication>::value &&
                  !std::is_copy_assignable<fxApplication>::value,
              "the executive knows an application by its address");

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

struct fxApplicationLayout {
    static_assert(sizeof(fxObj) == 12, "the table, the count and the properties");
    static_assert(offsetof(fxApplication, opened) == 12, "behind the base");
    static_assert(sizeof(fxApplication) == 16, "one flag");
    static_assert(std::is_same<decltype(fxApplication::opened), unsigned char>::value, "a byte");

    static unsigned int opened(const fxApplication& a) { return a.opened; }
};

#pragma GCC diagnostic pop

static_assert(std::is_base_of<fxObj, fxApplication>::value, "applications may have channels");
static_assert(std::is_abstract<fxApplication>::value, "initialize is pure");

using namespace loopTest;

namespace {

class fxApplicationTest : public LoopTest {
protected:
    using Applications = std::vector<std::unique_ptr<ScriptedApplication>>;

    // Applications called A, B, ...
    static Applications applications(unsigned int n) {
        Applications all;
        for (unsigned int i = 0; i < n; ++i)
            all.push_back(std::make_unique<ScriptedApplication>(std::string(1, char('A' + i))));
        return all;
    }

    // The names of those that are open.
    static std::string open(const Applications& all) {
        std::string names;
        for (const auto& a : all)
            names += a->isOpen() ? a->name : "";
        return names;
    }

    static void closeAll(const Applications& all) {
        for (const auto& a : all)
            a->close();
        log();
    }
};

class PlainApplication : public fxApplication {
public:
    void initialize(int, char**) override {}
};

}  // namespace

TEST_F(fxApplicationTest, virtualOperationsFollowThoseOfTheBase) {
    EXPECT_EQ(9u, vtableWord(&fxApplication::subClassMustDefine));
    EXPECT_EQ(10u, vtableWord(&fxApplication::initialize));
    EXPECT_EQ(11u, vtableWord(&fxApplication::open));
    EXPECT_EQ(12u, vtableWord(&fxApplication::close));
}

// One application.

TEST_F(fxApplicationTest, constructionRegistersAClosedApplication) {
    PlainApplication a;
    EXPECT_TRUE(exec.contains(&a));
    EXPECT_EQ(0u, fxApplicationLayout::opened(a));
    EXPECT_FALSE(a.isOpen());
    EXPECT_EQ(0, a.count);
    a.close();
}

TEST_F(fxApplicationTest, openMarksItWithoutRegisteringItAgain) {
    PlainApplication a;
    a.open();
    EXPECT_EQ(1u, fxApplicationLayout::opened(a));
    EXPECT_TRUE(a.isOpen());
    a.open();
    exec.remove(&a);
    EXPECT_FALSE(exec.contains(&a));
}

TEST_F(fxApplicationTest, closeTakesItOutAndMarksItClosed) {
    PlainApplication a;
    a.open();
    a.close();
    EXPECT_FALSE(exec.contains(&a));
    EXPECT_EQ(0u, fxApplicationLayout::opened(a));
}

TEST_F(fxApplicationTest, closeTakesAnApplicationOutThatWasNeverOpened) {
    PlainApplication a;
    a.close();
    EXPECT_FALSE(exec.contains(&a));
}

TEST_F(fxApplicationTest, secondCloseDoesNothing) {
    PlainApplication other, a;
    a.open();
    a.close();
    a.close();
    EXPECT_TRUE(exec.contains(&other));
    EXPECT_FALSE(exec.contains(&a));
    other.close();
}

TEST_F(fxApplicationTest, openAfterCloseDoesNotRegisterIt) {
    PlainApplication other;
    {
        PlainApplication a;
        a.close();
        a.open();
        EXPECT_TRUE(a.isOpen());
        EXPECT_FALSE(exec.contains(&a));
    }
    EXPECT_TRUE(exec.contains(&other));
    other.close();
}

TEST_F(fxApplicationTest, destructionTakesAnOpenApplicationOut) {
    alignas(PlainApplication) unsigned char place[sizeof(PlainApplication)];
    auto* a = new (place) PlainApplication;
    a->open();
    a->~PlainApplication();
    EXPECT_FALSE(exec.contains(reinterpret_cast<fxApplication*>(place)));
}

TEST_F(fxApplicationTest, deliberateApplicationThatWasNeverOpenedStaysRegistered) {
    alignas(PlainApplication) unsigned char place[sizeof(PlainApplication)];
    auto* a = new (place) PlainApplication;
    a->~PlainApplication();
    EXPECT_TRUE(exec.contains(reinterpret_cast<fxApplication*>(place)));
    exec.remove(reinterpret_cast<fxApplication*>(place));
}

TEST_F(fxApplicationTest, closedApplicationIsGoneAfterItsDestruction) {
    alignas(PlainApplication) unsigned char place[sizeof(PlainApplication)];
    auto* a = new (place) PlainApplication;
    a->close();
    a->~PlainApplication();
    EXPECT_FALSE(exec.contains(reinterpret_cast<fxApplication*>(place)));
}

TEST_F(fxApplicationTest, withoutAnExecutiveOnlyTheMarkIsKept) {
    PlainApplication a;
    fx_theExecutive = nullptr;
    a.open();
    EXPECT_TRUE(a.isOpen());
    a.close();
    EXPECT_FALSE(a.isOpen());
    a.open();
}

// Without the fixture, whose close is not the system's.
TEST(fxApplicationDeathTest, anExecutiveIsNeededToMakeOne) {
    const auto make = [] {
        fx_theExecutive = nullptr;
        PlainApplication application;
    };
    EXPECT_EXIT(make(), testing::KilledBySignal(SIGABRT),
                "^fxApplication: call fxInitializeToolkit first\n$");
}

// All of them.

TEST_F(fxApplicationTest, initializePassesTheArgumentsToAllInOrder) {
    auto all = applications(3);
    char name[] = "host";
    char* argv[] = {name, nullptr};
    exec.initialize(1, argv);
    EXPECT_EQ("initializeA initializeB initializeC ", log());
    for (const auto& a : all) {
        EXPECT_EQ(1, a->lastArgc);
        EXPECT_EQ(argv, a->lastArgv);
        EXPECT_FALSE(a->isOpen());
    }
    closeAll(all);
}

TEST_F(fxApplicationTest, openOpensAllInOrderAlsoTheOpenOnes) {
    auto all = applications(3);
    all[1]->open();
    log();
    exec.open();
    EXPECT_EQ("openA openB openC ", log());
    EXPECT_EQ("ABC", open(all));
    closeAll(all);
}

TEST_F(fxApplicationTest, nothingIsDoneWithoutApplications) {
    exec.initialize(0, nullptr);
    exec.open();
    exec.close();
    EXPECT_EQ("", log());
}

TEST_F(fxApplicationTest, closeLeavesThoseAloneThatAreNotOpen) {
    auto all = applications(3);
    all[1]->open();
    log();
    exec.close();
    EXPECT_EQ("closeB ", log());
    EXPECT_TRUE(exec.contains(all[0].get()));
    EXPECT_FALSE(exec.contains(all[1].get()));
    EXPECT_TRUE(exec.contains(all[2].get()));
    closeAll(all);
}

TEST_F(fxApplicationTest, deliberateCloseSkipsTheOneThatMovesUp) {
    const struct {
        unsigned int n;
        const char* closed;
        const char* open;
    } cases[] = {{1, "closeA ", ""},
                 {2, "closeA ", "B"},
                 {3, "closeA closeC ", "B"},
                 {4, "closeA closeC ", "BD"},
                 {5, "closeA closeC closeE ", "BD"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.n);
        auto all = applications(c.n);
        exec.open();
        log();
        exec.close();
        EXPECT_EQ(c.closed, log());
        EXPECT_EQ(c.open, open(all));
        for (const auto& a : all)
            EXPECT_EQ(a->isOpen(), exec.contains(a.get())) << a->name;
        closeAll(all);
    }
}

TEST_F(fxApplicationTest, repeatedCloseGetsThemAll) {
    auto all = applications(5);
    exec.open();
    log();
    exec.close();
    exec.close();
    exec.close();
    EXPECT_EQ("closeA closeC closeE closeB closeD ", log());
    EXPECT_EQ("", open(all));
}

TEST_F(fxApplicationTest, applicationsMadeMeanwhileAreLeftOut) {
    auto first = applications(1);
    Applications second;
    const Action makeOne = [&] {
        second.push_back(std::make_unique<ScriptedApplication>("new"));
        second.back()->fxApplication::open();
    };
    first[0]->onInitialize = first[0]->onOpen = makeOne;
    exec.initialize(0, nullptr);
    EXPECT_EQ("initializeA ", log());
    exec.open();
    EXPECT_EQ("openA opennew ", log());
    first[0]->onClose = makeOne;
    exec.close();  // of three, the second moves up and the last is the new one
    EXPECT_EQ("closeA closenew ", log());
    EXPECT_EQ(3u, second.size());
    EXPECT_EQ("newnew", open(second));
}

TEST_F(fxApplicationTest, oneThatTakesItselfOutMovesTheNextUpInEveryWalk) {
    auto all = applications(3);
    all[0]->onInitialize = [&] { exec.remove(all[0].get()); };
    exec.initialize(0, nullptr);
    EXPECT_EQ("initializeA initializeC ", log());
    all[1]->onOpen = [&] { exec.remove(all[1].get()); };
    exec.open();
    EXPECT_EQ("openB ", log());
    all[1]->close();
    all[2]->close();
}

// The loop.

TEST_F(fxApplicationTest, loopMakesOnePassWithoutAnApplication) {
    registered(3, "r");
    exec.loop();
    ASSERT_EQ(1u, fake.selects.size());
    EXPECT_EQ(1000, lastSelect().seconds);
    EXPECT_EQ(0, lastSelect().microseconds);
}

TEST_F(fxApplicationTest, loopDistributesOnceWithoutHandlerAndApplication) {
    Receiver receiver("received");
    Sender sender(receiver);
    receiver.onMessage = [&] { sender.send(); };
    sender.send();
    exec.loop();
    EXPECT_EQ("received ", log());
    receiver.onMessage = nullptr;
    fx_theEventHandler->distributeEvents();
}

TEST_F(fxApplicationTest, loopEndsWhenTheLastApplicationHasClosed) {
    auto all = applications(2);
    exec.open();
    log();
    unsigned int passes = 0;
    registered(3, "r").onRead = [&] {
        if (++passes == 2)
            all[0]->close();
        if (passes == 4)
            all[1]->close();
    };
    for (int i = 0; i < 6; ++i)
        fake.answers.push_back(ready({3}));
    exec.loop();
    EXPECT_EQ("read3 read3 closeA read3 read3 closeB ", log());
    EXPECT_EQ(4u, fake.selects.size());
    for (const SelectCall& call : fake.selects) {
        EXPECT_EQ(1000, call.seconds);
        EXPECT_EQ(0, call.microseconds);
    }
}

TEST_F(fxApplicationTest, loopRunsForAnApplicationThatWasNotOpened) {
    ScriptedApplication a("A");
    unsigned int passes = 0;
    registered(3, "r").onRead = [&] {
        if (++passes == 3)
            a.close();
    };
    for (int i = 0; i < 5; ++i)
        fake.answers.push_back(ready({3}));
    exec.loop();
    EXPECT_EQ(3u, passes);
}

TEST_F(fxApplicationTest, loopEndsWithThePassInWhichAReceiverCloses) {
    ScriptedApplication a("A");
    a.open();
    Receiver receiver("received", [&] { a.close(); });
    ScriptedTimer timer("tick", 0.5F);
    timer.connect("tick", &receiver, "in");
    timer.startTimer();
    registered(3, "r");
    log();
    exec.loop();
    EXPECT_EQ("tick received closeA ", log());
    EXPECT_EQ(1u, fake.selects.size());
}

TEST_F(fxApplicationTest, loopEndsWhenTheLastOpenApplicationIsDeleted) {
    auto all = applications(1);
    exec.open();
    log();
    registered(3, "r").onRead = [&] { all.clear(); };
    fake.answers = {timedOut(), ready({3})};
    exec.loop();
    EXPECT_EQ("read3 ", log());
    EXPECT_EQ(2u, fake.selects.size());
}

TEST_F(fxApplicationTest, loopGoesOnForAnApplicationMadeInTheLastPass) {
    ScriptedApplication a("A");
    std::unique_ptr<ScriptedApplication> b;
    ScriptedHandler& h = registered(3, "r");
    h.onRead = [&] {
        if (!b) {
            a.close();
            b = std::make_unique<ScriptedApplication>("B");
        } else {
            b->close();
        }
    };
    fake.answers = {ready({3}), ready({3}), ready({3})};
    exec.loop();
    EXPECT_EQ("read3 closeA read3 closeB ", log());
}

TEST_F(fxApplicationTest, loopWithoutHandlersNeverWaits) {
    ScriptedApplication a("A");
    Receiver receiver("received");
    Sender sender(receiver);
    unsigned int passes = 0;
    receiver.onMessage = [&] {
        if (++passes == 5)
            a.close();
        else
            sender.send();
    };
    sender.send();
    exec.loop();
    EXPECT_EQ("received received received received received closeA ", log());
    EXPECT_TRUE(fake.selects.empty());
    EXPECT_EQ(0u, fake.timesCalls);
}
