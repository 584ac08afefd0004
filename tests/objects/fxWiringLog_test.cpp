#include <csignal>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/objects/fxTimer.h"
#include "kelvofxds/objects/fxWiring.h"
#include "tests/support/dataFlow.h"

namespace {

struct Reader : fxObj {
    Reader() : line(addOutput("line", fxDT_CharPtr)), size(addOutput("size", fxDT_int)) {}
    fxOutputChannel* line;
    fxOutputChannel* size;
};

struct Sum : fxObj {
    Sum() : in(fxOnInput(this, "number", [](int) {})) {}
    fxInputChannel* in;
};

// A log in memory.
class fxWiringLogTest : public DataFlowTest {
protected:
    fxWiringLogTest() { fxSetWiringLog(file); }
    ~fxWiringLogTest() override {
        fxSetWiringLog(nullptr);
        std::fclose(file);
        std::free(bytes);
    }

    // What has been written since the last call.
    std::string said() {
        const std::string all(bytes, size);
        return all.substr(std::exchange(seen, all.size()));
    }

    char* bytes = nullptr;
    std::size_t size = 0;
    std::size_t seen = 0;
    std::FILE* file = ::open_memstream(&bytes, &size);
};
using fxWiringLogDeathTest = fxWiringLogTest;

const char connected[] =
    "wiring: connected Reader output \"size\" (int) to Sum input \"number\" "
    "(int)\n";
const char disconnected[] =
    "wiring: disconnected Reader output \"size\" (int) from Sum input "
    "\"number\" (int)\n";

}  // namespace

TEST_F(fxWiringLogTest, tellsConnectionsAndDisconnections) {
    Reader reader;
    Sum sum;
    EXPECT_EQ("", said()) << "adding channels is no news";
    reader.connect("size", &sum, "number");
    EXPECT_EQ(connected, said());
    reader.connect("size", &sum, "number");
    EXPECT_EQ("", said()) << "nothing happens";
    reader.sendInt(reader.size, 1, fxObj::fxSendNow);
    reader.sendInt(reader.size, 1, fxObj::fxSendQueued);
    fx_theEventHandler->distributeEvents();
    EXPECT_EQ("", said()) << "nor when values are sent";
    reader.disconnect("size", &sum, "number");
    EXPECT_EQ(disconnected, said());
    reader.disconnect("size", &sum, "number");
    EXPECT_EQ("", said());
}

TEST_F(fxWiringLogTest, tellsConversions) {
    Reader reader;
    Sum sum;
    reader.connect("line", &sum, "number");
    EXPECT_EQ(
        "wiring: connected Reader output \"line\" (char*) to Sum input \"number\" (int)\n"
        "wiring: converts char* to int from Reader output \"line\" to Sum input \"number\"\n",
        said());
}

TEST_F(fxWiringLogTest, tellsNamesThatAreIgnored) {
    Reader reader;
    Sum sum;
    const std::string noOutput = "Reader has no output \"lnie\"; it has: size, line\n";
    const std::string noInput = "Sum has no input \"nubmer\"; it has: number\n";
    reader.connect("lnie", &sum, "number");
    EXPECT_EQ("wiring: ignored connect: " + noOutput, said());
    reader.connect("line", &sum, "nubmer");
    EXPECT_EQ("wiring: ignored connect: " + noInput, said());
    reader.disconnect("lnie", &sum, "nubmer");
    EXPECT_EQ("wiring: ignored disconnect: " + noOutput + "wiring: ignored disconnect: " + noInput,
              said());
    reader.connect("line", nullptr, "number");
    EXPECT_EQ("wiring: ignored connect: Reader output \"line\" and a null pointer to an object\n",
              said());
    sum.removeInput("nubmer");
    EXPECT_EQ("wiring: ignored removeInput: " + noInput, said());
    reader.removeOutput("lnie");
    EXPECT_EQ("wiring: ignored removeOutput: " + noOutput, said());
    sum.removeOutput("number");
    EXPECT_EQ("wiring: ignored removeOutput: Sum has no output \"number\"; it has none\n", said());
    fxTryConnect(&reader, "line", &sum, "nubmer", nullptr);
    EXPECT_EQ("wiring: ignored connect: " + noInput, said());
}

TEST_F(fxWiringLogTest, tellsDisconnectionsWhenAnEndGoes) {
    auto reader = std::make_unique<Reader>();
    auto sum = std::make_unique<Sum>();
    const auto wire = [&] {
        reader->connect("size", sum.get(), "number");
        EXPECT_EQ(connected, said());
    };
    wire();
    reader->removeOutput("size");
    EXPECT_EQ(disconnected, said());

    reader->addOutput("size", fxDT_int);
    wire();
    reader->addOutput("size", fxDT_int);
    EXPECT_EQ(disconnected, said()) << "an output that is replaced";

    wire();
    sum->removeInput("number");
    EXPECT_EQ(disconnected, said());

    sum = std::make_unique<Sum>();
    wire();
    sum.reset();
    EXPECT_EQ(disconnected, said());

    sum = std::make_unique<Sum>();
    wire();
    reader.reset();
    EXPECT_EQ(disconnected, said());
}

TEST_F(fxWiringLogTest, callsChannelsByTypeThatItHasNotMet) {
    fxSetWiringLog(nullptr);
    auto reader = std::make_unique<Reader>();
    Sum sum;
    reader->connect("line", &sum, "number");
    EXPECT_EQ("", said());
    fxSetWiringLog(file);
    reader.reset();
    EXPECT_EQ("wiring: disconnected an output (char*) from an input (int)\n", said());

    reader = std::make_unique<Reader>();
    reader->line->add(sum.in);
    EXPECT_EQ(
        "wiring: connected Reader output \"line\" (char*) to an input (int)\n"
        "wiring: converts char* to int from Reader output \"line\" to an input\n",
        said());
}

TEST_F(fxWiringLogTest, forgetsChannelsThatAreGone) {
    Sum sum;
    for (int i = 0; i < 100; ++i) {
        // Whatever comes to lie where an output has been is not taken for it.
        {
            Reader reader;
            reader.connect("size", &sum, "number");
        }
        said();
        fxOutputChannel bare(fxDT_int);
        bare.add(sum.in);
        ASSERT_EQ("wiring: connected an output (int) to Sum input \"number\" (int)\n", said());
        bare.remove(sum.in);
        said();
    }
}

TEST_F(fxWiringLogTest, knowsManyChannels) {
    std::vector<std::unique_ptr<Sum>> sums;
    for (int i = 0; i < 3000; ++i)
        sums.push_back(std::make_unique<Sum>());
    for (std::size_t i = 0; i < sums.size(); i += 2)
        sums[i].reset();
    const Reader reader;
    for (std::size_t i = 1; i < sums.size(); i += 2) {
        reader.size->add(sums[i]->in);
        ASSERT_EQ(connected, said());
    }
}

TEST_F(fxWiringLogTest, isOffUntilItGetsAFileAndWhenItGetsNone) {
    fxSetWiringLog(nullptr);
    fxSetWiringLog(nullptr);
    Reader reader;
    Sum sum;
    reader.connect("size", &sum, "number");
    reader.connect("lnie", &sum, "number");
    EXPECT_EQ("", said());
    fxSetWiringLog(file);
    fxSetWiringLog(file);
    reader.disconnect("size", &sum, "number");
    EXPECT_EQ(disconnected, said());
}

TEST_F(fxWiringLogTest, keepsALineInOneLine) {
    Reader reader;
    Sum sum;
    fxOnInput(&sum, "two\nlines", [] {});
    reader.connect("size", &sum, "two\nlines");
    EXPECT_EQ(
        "wiring: connected Reader output \"size\" (int) to Sum input \"two\\x0Alines\" (void)\n",
        said());
    reader.connect("size", &sum, "tow\nlines");
    EXPECT_EQ(
        "wiring: ignored connect: Sum has no input \"tow\\x0Alines\"; it has: number, "
        "two\\x0Alines\n",
        said());
    struct : fxObj {
        const char* className() const override { return "My\nReader"; }
    } named;
    named.connect("size", &sum, "number");
    EXPECT_EQ("wiring: ignored connect: My\\x0AReader has no output \"size\"; it has none\n",
              said());
}

TEST_F(fxWiringLogDeathTest, saysWhichTypesEndTheProcess) {
    Reader reader;
    fxObj object;
    fxOnInput(&object, "wide", [](long) {});
    EXPECT_EXIT((fxSetWiringLog(stderr), reader.connect("line", &object, "wide")),
                testing::KilledBySignal(SIGABRT),
                "^wiring: cannot convert from Reader output \"line\" \\(char\\*\\) to fxObj input "
                "\"wide\" \\(long\\)\nCan't convert from 6 to 3\n$");
}
