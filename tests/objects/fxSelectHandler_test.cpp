#include "kelvofxds/objects/fxSelectHandler.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/loopFixture.h"
#include "tests/support/vtable.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

static_assert(sizeof(fxObj) == 12, "the table, the count and the properties");
static_assert(offsetof(fxSelectHandler, fd) == 12, "behind the base");
static_assert(offsetof(fxSelectHandler, readInterest) == 16, "after the descriptor");
static_assert(offsetof(fxSelectHandler, writeInterest) == 17, "after the read interest");
static_assert(offsetof(fxSelectHandler, exceptionInterest) == 18, "after the write interest");
static_assert(sizeof(fxSelectHandler) == 20, "the exception interest is the last");

#pragma GCC diagnostic pop

static_assert(std::is_base_of<fxObj, fxSelectHandler>::value, "handlers may have channels");
static_assert(std::is_abstract<fxSelectHandler>::value, "handleRead is pure");
static_assert(std::is_same<decltype(fxSelectHandler::fd), int>::value, "signed");

static_assert(!std::is_copy_constructible<fxSelectHandler>::value &&
                  !std::is_copy_assignable<fxSelectHandler>::value,
              "a handler owns its descriptor");

using namespace loopTest;

namespace {

using Descriptors = std::vector<int>;

// Nothing beside what it has to define.
class PlainHandler : public fxSelectHandler {
public:
    using fxSelectHandler::fxSelectHandler;
    void handleRead() override { note("read"); }
};

class fxSelectHandlerTest : public LoopTest {};

// The system's own select, clock and descriptors.
class fxSelectHandlerOnPipes : public testing::Test {
protected:
    fxSelectHandlerOnPipes() {
        fxInitializeToolkit();
        processExecutive = fx_theExecutive;
        fx_theExecutive = &exec;
        loopLog().clear();
    }
    ~fxSelectHandlerOnPipes() override { fx_theExecutive = processExecutive; }

    void SetUp() override {
        int ends[2];
        ASSERT_EQ(0, ::pipe(ends));
        ASSERT_LT(ends[0], 100);
        ASSERT_LT(ends[1], 100);
        reader = std::make_unique<ScriptedHandler>(ends[0], "r");
        writer = std::make_unique<ScriptedHandler>(ends[1], "w");
        reader->name = writer->name = "";
        reader->onRead = [this] {
            char c;
            if (::read(reader->fd, &c, 1) == 1)
                note(std::string(1, c));
            else
                note("end");
        };
    }

    static std::string log() { return std::exchange(loopLog(), std::string()); }

    static bool isOpen(int fd) { return ::fcntl(fd, F_GETFD) != -1; }

    fxExec exec;
    fxExec* processExecutive;
    std::unique_ptr<ScriptedHandler> reader;
    std::unique_ptr<ScriptedHandler> writer;
};

}  // namespace

TEST_F(fxSelectHandlerTest, virtualOperationsFollowThoseOfTheBase) {
    EXPECT_EQ(9u, vtableWord(&fxSelectHandler::subClassMustDefine));
    EXPECT_EQ(10u, vtableWord(&fxSelectHandler::handleRead));
    EXPECT_EQ(11u, vtableWord(&fxSelectHandler::handleWrite));
    EXPECT_EQ(12u, vtableWord(&fxSelectHandler::handleException));
}

TEST_F(fxSelectHandlerTest, newHandlerServesNoDescriptor) {
    PlainHandler h;
    EXPECT_EQ(-1, h.fd);
    EXPECT_EQ(0, h.readInterest);
    EXPECT_EQ(0, h.writeInterest);
    EXPECT_EQ(0, h.exceptionInterest);
    EXPECT_EQ(0, h.count);
}

TEST_F(fxSelectHandlerTest, constructorTakesDescriptorAndInterest) {
    const struct {
        unsigned char read, write, exception;
    } cases[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 1}, {0, 0, 0}};
    for (const auto& c : cases) {
        PlainHandler h(42, c.read, c.write, c.exception);
        EXPECT_EQ(42, h.fd);
        EXPECT_EQ(c.read, h.readInterest);
        EXPECT_EQ(c.write, h.writeInterest);
        EXPECT_EQ(c.exception, h.exceptionInterest);
    }
}

TEST_F(fxSelectHandlerTest, settersChangeDescriptorAndInterest) {
    PlainHandler h;
    h.setDescriptor(17);
    h.setInterest(0, 1, 1);
    EXPECT_EQ(17, h.fd);
    EXPECT_EQ(0, h.readInterest);
    EXPECT_EQ(1, h.writeInterest);
    EXPECT_EQ(1, h.exceptionInterest);
}

TEST_F(fxSelectHandlerTest, writeAndExceptionDoNothingByDefault) {
    PlainHandler h(5, 1, 1, 1);
    exec.addSelectHandler(&h);
    pass(ready({5}, {5}, {5}));
    EXPECT_EQ("read ", log());
    EXPECT_EQ(Descriptors(), fake.closed);
}

TEST_F(fxSelectHandlerTest, constructionRegistersNothing) {
    ScriptedHandler h(5, "r");
    exec.poll(0);
    EXPECT_TRUE(fake.selects.empty());
}

// Destruction.

TEST_F(fxSelectHandlerTest, destructionClosesTheDescriptorOnce) {
    for (const int d : {0, 7, 99, 100, 1000}) {
        SCOPED_TRACE(d);
        fake.closed.clear();
        { PlainHandler h(d, 1, 0, 0); }
        EXPECT_EQ(Descriptors({d}), fake.closed);
    }
}

TEST_F(fxSelectHandlerTest, destructionThroughTheBaseClosesTheDescriptor) {
    fxObj* h = new PlainHandler(7, 1, 0, 0);
    delete h;
    EXPECT_EQ(Descriptors({7}), fake.closed);
}

TEST_F(fxSelectHandlerTest, destructionClosesTheDescriptorItHasThen) {
    {
        PlainHandler h(7, 1, 0, 0);
        h.setDescriptor(8);
    }
    EXPECT_EQ(Descriptors({8}), fake.closed);
}

TEST_F(fxSelectHandlerTest, destructionClosesNoNegativeDescriptor) {
    { PlainHandler h; }
    { PlainHandler h(-2, 1, 1, 1); }
    EXPECT_EQ(Descriptors(), fake.closed);
}

TEST_F(fxSelectHandlerTest, destroyedHandlerIsWaitedForUntilTheStateIsRebuilt) {
    ScriptedHandler other(3, "r");
    exec.addSelectHandler(&other);
    auto h = std::make_unique<ScriptedHandler>(9, "rwx");
    exec.addSelectHandler(h.get());
    exec.updateSelectState();
    h.reset();
    pass(ready({3, 9}, {9}, {9}));
    EXPECT_EQ(10, lastSelect().nfds);
    EXPECT_EQ(Descriptors({3, 9}), lastSelect().read.descriptors);
    EXPECT_EQ("read3 ", log());
    exec.addSelectHandler(&other);
    pass(ready({3}));
    EXPECT_EQ(4, lastSelect().nfds);
    EXPECT_EQ(Descriptors({3}), lastSelect().read.descriptors);
    EXPECT_FALSE(lastSelect().write.given);
    EXPECT_EQ("read3 ", log());
}

TEST_F(fxSelectHandlerTest, destroyedHandlerWhoseDescriptorWasChangedIsNotCalled) {
    auto h = std::make_unique<ScriptedHandler>(9, "r");
    exec.addSelectHandler(h.get());
    h->setDescriptor(4);
    h.reset();
    EXPECT_EQ(Descriptors({4}), fake.closed);
    pass(ready({9}));
    EXPECT_EQ("", log());
}

TEST_F(fxSelectHandlerTest, destructionLeavesTheOneThatReplacedItRegistered) {
    auto h = std::make_unique<ScriptedHandler>(9, "r");
    ScriptedHandler second(9, "r");
    second.name = "second";
    exec.addSelectHandler(h.get());
    exec.addSelectHandler(&second);
    h.reset();
    pass(ready({9}));
    EXPECT_EQ("readsecond ", log());
}

TEST_F(fxSelectHandlerTest, destructionWithoutAnExecutiveClosesTheDescriptor) {
    fx_theExecutive = nullptr;
    { PlainHandler h(7, 1, 0, 0); }
    EXPECT_EQ(Descriptors({7}), fake.closed);
}

// With the system.

TEST_F(fxSelectHandlerOnPipes, readIsServedWhenThereIsSomethingToRead) {
    exec.addSelectHandler(reader.get());
    EXPECT_TRUE(exec.willBlock());
    exec.poll(0);
    EXPECT_EQ("", log());
    ASSERT_EQ(2, ::write(writer->fd, "ab", 2));
    EXPECT_FALSE(exec.willBlock());
    exec.poll(1000.0F);
    EXPECT_EQ("read a ", log());
    exec.poll(1000.0F);
    EXPECT_EQ("read b ", log());
    EXPECT_TRUE(exec.willBlock());
}

TEST_F(fxSelectHandlerOnPipes, writeIsServedWhenThereIsRoom) {
    exec.addSelectHandler(writer.get());
    EXPECT_FALSE(exec.willBlock());
    exec.poll(1000.0F);
    EXPECT_EQ("write ", log());
}

TEST_F(fxSelectHandlerOnPipes, destructionEndsWhatTheOtherSideReads) {
    const int fd = writer->fd;
    exec.addSelectHandler(reader.get());
    ASSERT_EQ(1, ::write(fd, "a", 1));
    EXPECT_TRUE(isOpen(fd));
    writer.reset();
    EXPECT_FALSE(isOpen(fd));
    exec.poll(1000.0F);
    exec.poll(1000.0F);
    EXPECT_EQ("read a read end ", log());
}

TEST_F(fxSelectHandlerOnPipes, handlerDeletedWhileRegisteredFailsTheWaitUntilTheNextChange) {
    exec.addSelectHandler(reader.get());
    exec.addSelectHandler(writer.get());
    exec.addPostSelectFunc([] { note(errno == EBADF ? "EBADF" : "other"); });
    exec.updateSelectState();
    ASSERT_EQ(1, ::write(writer->fd, "a", 1));
    writer.reset();
    errno = 0;
    exec.poll(1000.0F);
    exec.poll(1000.0F);
    EXPECT_EQ("EBADF EBADF ", log());
    exec.addSelectHandler(reader.get());
    errno = 0;
    exec.poll(1000.0F);
    EXPECT_EQ("read a other ", log());
}

TEST_F(fxSelectHandlerOnPipes, timersTickWhileNothingIsReady) {
    exec.addSelectHandler(reader.get());
    ScriptedTimer timer("tick", 0.001F, true);
    timer.startTimer();
    for (int i = 0; i < 3; ++i)
        exec.poll(1000.0F);
    EXPECT_EQ("tick tick tick ", log());
}

TEST_F(fxSelectHandlerOnPipes, loopRunsUntilTheEndOfTheInput) {
    ScriptedApplication application("");
    application.open();
    exec.addSelectHandler(reader.get());
    ASSERT_EQ(3, ::write(writer->fd, "abc", 3));
    writer.reset();
    const Action readOne = reader->onRead;
    reader->onRead = [&] {
        readOne();
        if (loopLog().find("end") != std::string::npos)
            application.close();
    };
    log();
    exec.loop();
    EXPECT_EQ("read a read b read c read end close ", log());
}
