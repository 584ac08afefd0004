#include <algorithm>
#include <csignal>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "kelvofxds/objects/fxTimer.h"
#include "kelvofxds/objects/fxWiring.h"
#include "kelvofxds/transcribe/fxXDRMembers.h"
#include "kelvofxds/values/fxConverter.h"
#include "tests/support/dataFlow.h"

namespace {

// A class without a name of its own for streams.
struct Reader : fxObj {
    Reader() {
        addOutput("line", fxDT_CharPtr);
        addOutput("done", fxDT_void);
        addOutput("size", fxDT_long);
    }
};

struct Meter : fxObj {
    Meter() {
        fxOnInput(this, "number", [this](int n) { sum += n; });
        fxOnInput(this, "share", [](double) {});
        fxOnInput(this, "tick", [] {});
    }
    int sum = 0;
};

// One that has.
class Page : public fxObj {
    FX_XDR_MEMBERS(Page)
};
FX_DEFINE_XDR(Page, "Leaf", 1)
unsigned char Page::xdr(fxTranscriber&) { return 1; }

// Passes connections on to a part of it.
struct Box : fxObj {
    explicit Box(fxObj* object) : part(object) {}
    void connect(const char* out, fxObj* to, const char* in) override {
        part->connect(out, to, in);
    }
    fxObj* part;
};

// Does something once it has connected itself, or another.
struct Careless : Reader {
    Careless(fxObj* object, std::function<void()> then) : part(object), behind(std::move(then)) {}
    void connect(const char* out, fxObj* to, const char* in) override {
        const std::function<void()> last = behind;
        if (part)
            part->connect(out, to, in);
        else
            fxObj::connect(out, to, in);
        last();
    }
    fxObj* part;
    std::function<void()> behind;
};

// Leaves some connections alone.
struct Choosy : Reader {
    void connect(const char* out, fxObj* to, const char* in) override {
        ++calls;
        if (isWilling)
            fxObj::connect(out, to, in);
    }
    int calls = 0;
    bool isWilling = false;
};

// One whose name for streams is no line.
struct TwoLines : fxObj {
    const char* className() const override { return "Two\nLines\x7F"; }
    void connect(const char*, fxObj*, const char*) override {}
};

class tryConnect : public DataFlowTest {
protected:
    std::string whyNot(fxObj* from, const char* out, fxObj* to, const char* in) {
        fxStr why("untouched");
        return fxTryConnect(from, out, to, in, &why) ? "connected" : why.c_str();
    }

    Reader reader;
    Meter meter;
};

}  // namespace

TEST_F(tryConnect, connectsAsConnectDoes) {
    fxStr why("untouched");
    EXPECT_TRUE(fxTryConnect(&reader, "line", &meter, "number", &why));
    EXPECT_STREQ("untouched", why.c_str());
    EXPECT_TRUE(fxTryConnect(&reader, "line", &meter, "number", nullptr)) << "they are connected";
    fxOutputChannel* line = reader.addOutput("line", fxDT_CharPtr);
    EXPECT_TRUE(fxTryConnect(&reader, "line", &meter, "number", nullptr));
    EXPECT_TRUE(fxTryConnect(&reader, "line", &meter, "tick", nullptr));
    ASSERT_EQ(2U, line->getNumberOfConnections());
    reader.sendCharPtr(line, "37", fxObj::fxSendNow);
    EXPECT_EQ(37, meter.sum);
}

TEST_F(tryConnect, saysWhichNamesThereAre) {
    fxObj empty;
    const struct {
        fxObj* from;
        const char* out;
        fxObj* to;
        const char* in;
        const char* why;
    } cases[] = {
        {&reader, "lnie", &meter, "number",
         "object has no output \"lnie\"; it has: size, line, done"},
        {&reader, "", &meter, "number", "object has no output \"\"; it has: size, line, done"},
        {&reader, "Line", &meter, "nmuber",
         "object has no output \"Line\"; it has: size, line, done"},
        {&reader, "line", &meter, "line",
         "object has no input \"line\"; it has: tick, number, share"},
        {&reader, "line", &reader, "line", "object has no input \"line\"; it has none"},
        {&meter, "tick", &meter, "tick", "object has no output \"tick\"; it has none"},
        {&empty, "a\nb\x7F", &meter, "tick", "object has no output \"a\\x0Ab\\x7F\"; it has none"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(c.why, whyNot(c.from, c.out, c.to, c.in));
        EXPECT_FALSE(fxTryConnect(c.from, c.out, c.to, c.in, nullptr));
    }
}

TEST_F(tryConnect, saysItInOneLine) {
    TwoLines two;
    two.addOutput("o\tut", fxDT_int);
    EXPECT_EQ("object has no output \"out\"; it has: o\\x09ut",
              whyNot(&two, "out", &meter, "number"));
    EXPECT_EQ(
        "Two\\x0ALines\\x7F overrides connect, which left output \"o\\x09ut\" without input "
        "\"number\" of Meter",
        whyNot(&two, "o\tut", &meter, "number"));
    fxObj unnamed;
    unnamed.addOutput("", fxDT_int);
    EXPECT_EQ("object has no output \"out\"; it has: \"\"",
              whyNot(&unnamed, "out", &meter, "number"));
}

TEST_F(tryConnect, namesTwentyChannelsAndNoMore) {
    fxObj many;
    const auto names = [&] { return whyNot(&many, "?", &meter, "number"); };
    for (int i = 0; i < 20; ++i)
        many.addOutput(("out" + std::to_string(i)).c_str(), fxDT_int);
    const std::string all = names();
    EXPECT_EQ(19, std::count(all.begin(), all.end(), ','));
    EXPECT_EQ(std::string::npos, all.find("..."));
    for (const char* another : {"another", "a third"}) {
        many.addOutput(another, fxDT_int);
        const std::string some = names();
        EXPECT_EQ(20, std::count(some.begin(), some.end(), ','));
        EXPECT_EQ(some.size() - 5, some.find(", ..."));
    }
}

TEST_F(tryConnect, callsAClassByTheNameThatItGivesItself) {
    Page page;
    fxTimer timer(1);
    EXPECT_EQ("object has no output \"line\"; it has none",
              whyNot(&page, "line", &meter, "number"));
    EXPECT_EQ("object has no output \"tock\"; it has: tick",
              whyNot(&timer, "tock", &meter, "number"));
}

TEST_F(tryConnect, saysWhichTypesDoNotConvert) {
    fxObj host;
    host.addOutput("own", 1037);
    EXPECT_EQ(
        "Reader output \"line\" (char*) does not convert to Meter input \"share\" (double); "
        "char* converts to int, float, fxStr",
        whyNot(&reader, "line", &meter, "share"));
    EXPECT_EQ(
        "Reader output \"size\" (long) does not convert to Meter input \"number\" (int); "
        "long converts to nothing",
        whyNot(&reader, "size", &meter, "number"));
    EXPECT_EQ(
        "fxObj output \"own\" (type 1037) does not convert to Meter input \"number\" (int); "
        "type 1037 converts to nothing",
        whyNot(&host, "own", &meter, "number"));
    EXPECT_TRUE(fxTryConnect(&reader, "size", &meter, "tick", nullptr)) << "void takes all";
}

TEST_F(tryConnect, connectItselfEndsTheProcessAndSaysNothing) {
    EXPECT_EXIT(reader.connect("size", &meter, "number"), testing::KilledBySignal(SIGABRT),
                "^Can't convert from 3 to 2\n$");
    reader.connect("lnie", &meter, "number");
    reader.connect("line", nullptr, "number");
}

TEST_F(tryConnect, saysWhatIsNull) {
    EXPECT_EQ("there is no object to connect from: the pointer is null",
              whyNot(nullptr, "line", &meter, "number"));
    EXPECT_EQ("there is no object to connect to: the pointer is null",
              whyNot(&reader, "line", nullptr, "number"));
    EXPECT_EQ("the name of the output is null", whyNot(&reader, nullptr, &meter, "number"));
    EXPECT_EQ("the name of the input is null", whyNot(&reader, "line", &meter, nullptr));
}

TEST_F(tryConnect, asksAClassThatOverridesConnect) {
    Choosy choosy;
    EXPECT_EQ(
        "Choosy overrides connect, which left output \"line\" without input \"number\" of Meter",
        whyNot(&choosy, "line", &meter, "number"));
    EXPECT_EQ(1, choosy.calls);
    EXPECT_EQ(
        "Choosy output \"size\" (long) does not convert to Meter input \"number\" (int); "
        "long converts to nothing",
        whyNot(&choosy, "size", &meter, "number"));
    EXPECT_EQ(1, choosy.calls);
    choosy.isWilling = true;
    EXPECT_EQ("connected", whyNot(&choosy, "line", &meter, "number"));
    EXPECT_EQ(2, choosy.calls);
}

TEST_F(tryConnect, findsAConnectionThatWasPassedOn) {
    Box box(&reader);
    EXPECT_EQ("connected", whyNot(&box, "line", &meter, "number"));
    EXPECT_FALSE(fxTryConnect(&box, "line", &meter, "number")) << "it is no news any more";
    EXPECT_TRUE(fxTryConnect(&reader, "line", &meter, "number", nullptr));
    EXPECT_EQ("object has no output \"lnie\"; it has none", whyNot(&box, "lnie", &meter, "number"));
}

TEST_F(tryConnect, connectMayDeleteEitherObject) {
    const struct { bool from, to; } rows[] = {{true, false}, {false, true}, {true, true}};
    for (const auto& row : rows) {
        for (const bool isPassedOn : {false, true}) {
            SCOPED_TRACE(testing::Message() << row.from << row.to << isPassedOn);
            auto passedOn = std::make_unique<Reader>();
            auto to = std::make_unique<Meter>();
            std::unique_ptr<fxObj> from;
            const auto doDelete = [&] {
                if (row.from)
                    from.reset();
                if (row.to)
                    to.reset();
            };
            from = std::make_unique<Careless>(isPassedOn ? passedOn.get() : nullptr, doDelete);
            EXPECT_EQ("connect, which a class overrides, deleted one of the two objects",
                      whyNot(from.get(), "line", to.get(), "number"));
            EXPECT_EQ(row.from, !from);
            EXPECT_EQ(row.to, !to);
        }
    }
}

TEST_F(tryConnect, knowsConversionsOfTheHost) {
    const unsigned short own = 2037;
    meter.addInput("own", own, nullptr, nullptr, 0);
    EXPECT_FALSE(fxTryConnect(&reader, "size", &meter, "own", nullptr));
    void (*const convertNothing)(fxInputChannel*, long) = [](fxInputChannel*, long) {};
    new fxConverter(fxDT_long, own, reinterpret_cast<void (*)()>(convertNothing));
    EXPECT_TRUE(fxTryConnect(&reader, "size", &meter, "own", nullptr));
}
