#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/values/fxConverter.h"
#include "kelvofxds/values/fxData.h"

namespace {
using Function = void (*)();

// What a test keeps of a value beyond the call that brought it.
template <class Value>
struct Keeper {
    using Type = Value;
};
template <>
struct Keeper<char*> {
    using Type = std::string;
};
template <>
struct Keeper<fxStr> {
    using Type = std::string;
};
template <class Value>
using Kept = typename Keeper<Value>::Type;

template <class Value>
Value keep(const Value& value) {
    return value;
}
std::string keep(char* text) { return text ? text : "(null)"; }
std::string keep(const fxStr& text) { return std::string(text.c_str(), text.length()); }

// The bits of a number: signs of zero and NaNs count.
template <class Value>
std::string bitsOf(Value value) {
    return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}
std::string bitsOf(const std::string& text) { return text; }

// An object with an input; it may delete itself or a sender when called.
template <class Value>
class Sink : public fxObj {
public:
    explicit Sink(unsigned short type) { addInput("in", type, this, function(), 0); }
    static Function function() { return reinterpret_cast<Function>(&receive); }

    std::vector<Kept<Value>> values;
    std::vector<Kept<Value>>* valuesOfTheTest = nullptr;
    fxObj* sender = nullptr;
    bool deletesItself = false;

private:
    static void receive(void* self, Value value) {
        auto* sink = static_cast<Sink*>(self);
        sink->values.push_back(keep(value));
        if (sink->valuesOfTheTest)
            sink->valuesOfTheTest->push_back(keep(value));
        delete sink->sender;
        if (sink->deletesItself)
            delete sink;
    }
};

// How the value of each holder type is made, so that the holder can own it.
template <class Value>
struct Source {
    static Value owned(Value value) { return value; }
};
template <>
struct Source<char*> {
    static char* owned(const char* text) { return text ? ::strdup(text) : nullptr; }
};

// A conversion of the table: the holder of the values sent, the types of the
// values before and after, and the routine.
template <class Holder, class From, class To>
class Conversion {
public:
    Conversion(unsigned short fromCode, unsigned short toCode,
               void (*conversion)(fxInputChannel*, From))
        : from(fromCode), to(toCode), routine(conversion) {}

    /// Expects `expected` from `value` by a direct call, through a connection
    /// at once, and through the queue.
    void gives(From value, const Kept<To>& expected) const {
        Sink<To> sink(to);
        fxInputChannel in(to, &sink, sink.function(), 0);
        routine(&in, value);

        fxObj sender;
        fxOutputChannel* out = sender.addOutput("out", from);
        sender.connect("out", &sink, "in");
        sender.sendData(out, new Holder(Source<From>::owned(value)), fxObj::fxSendNow);
        sender.sendData(out, new Holder(Source<From>::owned(value)), fxObj::fxSendQueued);
        EXPECT_EQ(2u, sink.values.size()) << "one is still queued";
        fx_theEventHandler->distributeEvents();

        ASSERT_EQ(3u, sink.values.size());
        const char* const ways[] = {"direct call", "connection", "queue"};
        for (unsigned int i = 0; i < 3; ++i) {
            EXPECT_EQ(bitsOf(expected), bitsOf(sink.values[i]))
                << ways[i] << ": " << testing::PrintToString(sink.values[i]) << " for "
                << testing::PrintToString(keep(value));
        }
    }

    /// Nothing is touched after the receiver: it deletes the object of the
    /// input, with the link, or the sender, with the output and the link, or
    /// lets the channel of a direct call go.
    void outlivesItsReceiver(From value, const Kept<To>& expected) const {
        for (const bool deletesSender : {false, true}) {
            std::vector<Kept<To>> values;
            auto* sink = new Sink<To>(to);
            sink->valuesOfTheTest = &values;
            sink->deletesItself = true;
            auto* sender = new fxObj;
            fxOutputChannel* out = sender->addOutput("out", from);
            sender->connect("out", sink, "in");
            if (deletesSender)
                sink->sender = sender;
            sender->sendData(out, new Holder(Source<From>::owned(value)), fxObj::fxSendNow);
            EXPECT_EQ(std::vector<Kept<To>>(1, expected), values);
            if (!deletesSender) {
                EXPECT_EQ(0u, out->getNumberOfConnections());
                delete sender;
            }
        }
        void (*const release)(void*, To) = [](void* channel, To) {
            static_cast<fxInputChannel*>(channel)->dec();
        };
        auto* in = new fxInputChannel(to, nullptr, reinterpret_cast<Function>(release), 0);
        in->target = in;
        in->count = 1;
        routine(in, value);
    }

private:
    unsigned short from;
    unsigned short to;
    void (*routine)(fxInputChannel*, From);
};

class fxStandardConvertersTest : public testing::Test {
protected:
    // The members below need the type codes.
    static void SetUpTestSuite() { fxInitializeToolkit(); }

    using Byte = unsigned char;
    const Conversion<fxBoolData, Byte, int> boolToInt{fxDT_fxBool, fxDT_int, CBool2int};
    const Conversion<fxBoolData, Byte, float> boolToFloat{fxDT_fxBool, fxDT_float, CBool2float};
    const Conversion<fxBoolData, Byte, double> boolToDouble{fxDT_fxBool, fxDT_double, CBool2double};
    const Conversion<fxIntData, int, Byte> intToBool{fxDT_int, fxDT_fxBool, Cint2Bool};
    const Conversion<fxIntData, int, float> intToFloat{fxDT_int, fxDT_float, Cint2float};
    const Conversion<fxIntData, int, char*> intToText{fxDT_int, fxDT_CharPtr, Cint2CharPtr};
    const Conversion<fxFloatData, float, Byte> floatToBool{fxDT_float, fxDT_fxBool, Cfloat2Bool};
    const Conversion<fxFloatData, float, double> floatToDouble{fxDT_float, fxDT_double,
                                                               Cfloat2double};
    const Conversion<fxFloatData, float, int> floatToInt{fxDT_float, fxDT_int, Cfloat2int};
    const Conversion<fxFloatData, float, char*> floatToText{fxDT_float, fxDT_CharPtr,
                                                            Cfloat2CharPtr};
    const Conversion<fxDoubleData, double, Byte> doubleToBool{fxDT_double, fxDT_fxBool,
                                                              Cdouble2Bool};
    const Conversion<fxDoubleData, double, float> doubleToFloat{fxDT_double, fxDT_float,
                                                                Cdouble2float};
    const Conversion<fxDoubleData, double, int> doubleToInt{fxDT_double, fxDT_int, Cdouble2int};
    const Conversion<fxDoubleData, double, char*> doubleToText{fxDT_double, fxDT_CharPtr,
                                                               Cdouble2CharPtr};
    const Conversion<fxCharPtrData, char*, int> textToInt{fxDT_CharPtr, fxDT_int, CCharPtr2int};
    const Conversion<fxCharPtrData, char*, float> textToFloat{fxDT_CharPtr, fxDT_float,
                                                              CCharPtr2float};
    const Conversion<fxCharPtrData, char*, fxStr> textToStr{fxDT_CharPtr, fxDT_fxStr, CCharPtr2Str};
    const Conversion<fxStrData, fxStr, char*> strToText{fxDT_fxStr, fxDT_CharPtr, CStr2CharPtr};
};

const float infinity = std::numeric_limits<float>::infinity();
const float notANumber = std::numeric_limits<float>::quiet_NaN();

char* textOf(std::string& text) { return &text[0]; }
}  // namespace

// From truth values.

TEST_F(fxStandardConvertersTest, boolBecomesANumber) {
    for (const int i : {0, 1, 2, 127, 128, 255}) {
        const Byte value = static_cast<Byte>(i);
        boolToInt.gives(value, i);
        boolToFloat.gives(value, static_cast<float>(i));
        boolToDouble.gives(value, i);
    }
}

// From int.

TEST_F(fxStandardConvertersTest, deliberateLowByteOfAnIntIsItsTruthValue) {
    const struct {
        int value;
        Byte expected;
    } cases[] = {{0, 0},   {1, 1},    {2, 2},    {255, 255},     {256, 0},     {257, 1},  {512, 0},
                 {513, 1}, {-1, 255}, {-256, 0}, {INT_MAX, 255}, {INT_MIN, 0}, {65536, 0}};
    for (const auto& c : cases)
        intToBool.gives(c.value, c.expected);
}

TEST_F(fxStandardConvertersTest, intIsRoundedToTheNearestFloat) {
    const struct {
        int value;
        float expected;
    } cases[] = {{0, 0.0f},
                 {1, 1.0f},
                 {-1, -1.0f},
                 {16777216, 16777216.0f},
                 {16777217, 16777216.0f},
                 {16777218, 16777218.0f},
                 {16777219, 16777220.0f},
                 {-16777217, -16777216.0f},
                 {INT_MAX, 2147483648.0f},
                 {INT_MIN, -2147483648.0f}};
    for (const auto& c : cases)
        intToFloat.gives(c.value, c.expected);
}

TEST_F(fxStandardConvertersTest, intBecomesDecimalText) {
    intToText.gives(0, "0");
    intToText.gives(-1, "-1");
    intToText.gives(1234567, "1234567");
    intToText.gives(INT_MAX, "2147483647");
    intToText.gives(INT_MIN, "-2147483648");
}

// From float.

TEST_F(fxStandardConvertersTest, deliberateLowByteOfAFloatsPatternIsItsTruthValue) {
    const struct {
        float value;
        Byte expected;
    } cases[] = {{0.0f, 0},      {-0.0f, 0},    {1.0f, 0},           {2.0f, 0},
                 {-1.5f, 0},     {0.1f, 205},   {0.001f, 111},       {3.14159274f, 219},
                 {FLT_MAX, 255}, {infinity, 0}, {1.40129846e-45f, 1}};
    for (const auto& c : cases)
        floatToBool.gives(c.value, c.expected);
}

TEST_F(fxStandardConvertersTest, floatIsWidenedExactly) {
    floatToDouble.gives(0.1f, 0.100000001490116119384765625);
    floatToDouble.gives(-0.0f, -0.0);
    floatToDouble.gives(-1.5f, -1.5);
    floatToDouble.gives(16777216.0f, 16777216.0);
    floatToDouble.gives(FLT_MAX, 340282346638528859811704183484516925440.0);
    floatToDouble.gives(infinity, std::numeric_limits<double>::infinity());
}

TEST_F(fxStandardConvertersTest, floatIsTruncatedToInt) {
    const struct {
        float value;
        int expected;
    } cases[] = {{0.0f, 0},
                 {0.5f, 0},
                 {-0.5f, 0},
                 {1.0f, 1},
                 {1.9f, 1},
                 {-1.9f, -1},
                 {16777216.0f, 16777216},
                 {-2.0f, -2},
                 {2147483520.0f, 2147483520},
                 {-2147483648.0f, INT_MIN}};
    for (const auto& c : cases)
        floatToInt.gives(c.value, c.expected);
}

TEST_F(fxStandardConvertersTest, floatThatNoIntHoldsBecomesTheLowestInt) {
    for (const float value :
         {2147483648.0f, -2147483904.0f, 1e20f, -1e20f, FLT_MAX, infinity, -infinity, notANumber})
        floatToInt.gives(value, INT_MIN);
}

TEST_F(fxStandardConvertersTest, floatBecomesTextOfSixDigits) {
    floatToText.gives(0.0f, "0");
    floatToText.gives(-0.0f, "-0");
    floatToText.gives(0.1f, "0.1");
    floatToText.gives(-1.5f, "-1.5");
    floatToText.gives(3.14159274f, "3.14159");
    floatToText.gives(100000.0f, "100000");
    floatToText.gives(1234567.0f, "1.23457e+06");
    floatToText.gives(1e20f, "1e+20");
    floatToText.gives(1e-5f, "1e-05");
    floatToText.gives(FLT_MAX, "3.40282e+38");
    floatToText.gives(infinity, "inf");
    floatToText.gives(notANumber, "nan");
}

// From double.

TEST_F(fxStandardConvertersTest, deliberateLowByteOfADoublesPatternIsItsTruthValue) {
    const struct {
        double value;
        Byte expected;
    } cases[] = {{0.0, 0},
                 {-0.0, 0},
                 {1.0, 0},
                 {2.0, 0},
                 {-1.5, 0},
                 {0.1, 154},
                 {1.0 / 3, 85},
                 {3.14159265358979323846, 24},
                 {1e20, 64},
                 {DBL_MAX, 255},
                 {4.9406564584124654e-324, 1}};
    for (const auto& c : cases)
        doubleToBool.gives(c.value, c.expected);
}

TEST_F(fxStandardConvertersTest, doubleIsRoundedToFloat) {
    doubleToFloat.gives(0.1, 0.1f);
    doubleToFloat.gives(-0.0, -0.0f);
    doubleToFloat.gives(1.0 / 3, 0.333333343f);
    doubleToFloat.gives(16777217.0, 16777216.0f);
    doubleToFloat.gives(16777217.000001, 16777218.0f);
    doubleToFloat.gives(FLT_MAX, FLT_MAX);
    doubleToFloat.gives(1e300, infinity);
    doubleToFloat.gives(-1e300, -infinity);
    doubleToFloat.gives(1e-300, 0.0f);
}

TEST_F(fxStandardConvertersTest, doubleIsTruncatedToInt) {
    const struct {
        double value;
        int expected;
    } cases[] = {{0.0, 0},
                 {0.999, 0},
                 {-0.999, 0},
                 {1.5, 1},
                 {-1.5, -1},
                 {16777217.0, 16777217},
                 {2147483647.0, INT_MAX},
                 {2147483647.9, INT_MAX},
                 {-2147483647.5, -2147483647},
                 {-2147483648.0, INT_MIN},
                 {-2147483648.9, INT_MIN}};
    for (const auto& c : cases)
        doubleToInt.gives(c.value, c.expected);
}

TEST_F(fxStandardConvertersTest, doubleThatNoIntHoldsBecomesTheLowestInt) {
    for (const double value : {2147483648.0, -2147483649.0, 4294967296.0, 4294967301.0, 1e300,
                               -1e300, DBL_MAX, static_cast<double>(infinity),
                               static_cast<double>(-infinity), static_cast<double>(notANumber)})
        doubleToInt.gives(value, INT_MIN);
}

TEST_F(fxStandardConvertersTest, doubleBecomesTextOfSixDigits) {
    doubleToText.gives(0.1, "0.1");
    doubleToText.gives(1e20, "1e+20");
    doubleToText.gives(1e-5, "1e-05");
    doubleToText.gives(-0.0, "-0");
    doubleToText.gives(123456789.0, "1.23457e+08");
    doubleToText.gives(1.0 / 3, "0.333333");
    doubleToText.gives(-DBL_MAX, "-1.79769e+308");
    doubleToText.gives(4.9406564584124654e-324, "4.94066e-324");
}

// From text.

TEST_F(fxStandardConvertersTest, decimalDigitsBecomeAnInt) {
    const struct {
        const char* value;
        int expected;
    } cases[] = {{"12", 12},  {"12abc", 12}, {"-7", -7},
                 {"+5", 5},   {" \t42", 42}, {"", 0},
                 {"abc", 0},  {"-", 0},      {"0x10", 0},
                 {"010", 10}, {"1.9", 1},    {"2147483647", INT_MAX},
                 {"1e3", 1},  {"- 3", 0},    {"-2147483648", INT_MIN}};
    for (const auto& c : cases) {
        std::string text(c.value);
        textToInt.gives(textOf(text), c.expected);
    }
}

TEST_F(fxStandardConvertersTest, textOfALargeNumberBecomesTheNearestInt) {
    std::string above("2147483648"), below("-2147483649"), far("99999999999999999999");
    textToInt.gives(textOf(above), INT_MAX);
    textToInt.gives(textOf(below), INT_MIN);
    textToInt.gives(textOf(far), INT_MAX);
}

// First to double, then to float: what lies just above the middle of two floats
// is the middle as a double, and that goes to the even one.
TEST_F(fxStandardConvertersTest, textIsRoundedTwiceOnItsWayToAFloat) {
    const struct {
        std::string text;
        float twice, once;
    } rows[] = {{"1.00000005960464477539062500000001", 1.0F, 1.00000012F},
                {"-1.00000005960464477539062500000001", -1.0F, -1.00000012F},
                {"16777217.000000001", 16777216.0F, 16777218.0F}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        std::string text = row.text;
        ASSERT_EQ(row.once, std::strtof(text.c_str(), nullptr)) << "the two ways differ";
        textToFloat.gives(textOf(text), row.twice);
    }
}

TEST_F(fxStandardConvertersTest, textOfANumberBecomesAFloat) {
    const struct {
        const char* value;
        float expected;
    } cases[] = {
        {"1.5", 1.5f},       {"-0", -0.0f},    {"0.1", 0.1f},      {" 2.5x", 2.5f},
        {"", 0.0f},          {"abc", 0.0f},    {"1e3", 1000.0f},   {"16777217", 16777216.0f},
        {"1e300", infinity}, {"1e-300", 0.0f}, {"-inf", -infinity}};
    for (const auto& c : cases) {
        std::string text(c.value);
        textToFloat.gives(textOf(text), c.expected);
    }
}

TEST_F(fxStandardConvertersTest, textBecomesAString) {
    for (const char* value : {"", "text", "12abc"}) {
        std::string text(value);
        textToStr.gives(textOf(text), value);
    }
}

TEST_F(fxStandardConvertersTest, nullTextIsAnEmptyOne) {
    textToInt.gives(nullptr, 0);
    textToFloat.gives(nullptr, 0.0f);
    textToStr.gives(nullptr, "");
}

TEST_F(fxStandardConvertersTest, stringMadeFromATextBelongsToTheReceiver) {
    void (*const receive)(void*, fxStr) = [](void* calls, fxStr value) {
        EXPECT_EQ("text", value);
        value.append(" changed by its receiver");
        ++*static_cast<int*>(calls);
    };
    int calls = 0;
    fxInputChannel in(fxDT_fxStr, &calls, reinterpret_cast<Function>(receive), 0);
    char text[] = "text";
    CCharPtr2Str(&in, text);
    CCharPtr2Str(&in, text);
    EXPECT_EQ(2, calls);
    EXPECT_STREQ("text", text);
}

// From strings.

TEST_F(fxStandardConvertersTest, stringIsPassedAsItsText) {
    for (const char* value : {"", "text", "a longer text that has a buffer of its own"})
        strToText.gives(value, value);
}

TEST_F(fxStandardConvertersTest, textOfAStringIsNoCopy) {
    static const char* received;
    static std::string bytes;
    void (*const receive)(void*, char*) = [](void* n, char* text) {
        received = text;
        bytes.assign(text, *static_cast<unsigned int*>(n));
    };
    unsigned int n = 5;
    fxInputChannel in(fxDT_CharPtr, &n, reinterpret_cast<Function>(receive), 0);
    CStr2CharPtr(&in, fxStr("ab\0cd", 5));
    EXPECT_EQ(std::string("ab\0cd", 5), bytes) << "what follows a NUL is there";
    n = 0;
    CStr2CharPtr(&in, fxStr());
    EXPECT_EQ(&fxStr::emptyString, received);
}

// All of them.

TEST_F(fxStandardConvertersTest, receiverMayDeleteEverything) {
    std::string number("12"), text("text");
    boolToInt.outlivesItsReceiver(1, 1);
    boolToFloat.outlivesItsReceiver(1, 1.0f);
    boolToDouble.outlivesItsReceiver(1, 1.0);
    intToBool.outlivesItsReceiver(1, 1);
    intToFloat.outlivesItsReceiver(1, 1.0f);
    intToText.outlivesItsReceiver(1, "1");
    floatToBool.outlivesItsReceiver(0.1f, 205);
    floatToDouble.outlivesItsReceiver(1.5f, 1.5);
    floatToInt.outlivesItsReceiver(1.5f, 1);
    floatToText.outlivesItsReceiver(1.5f, "1.5");
    doubleToBool.outlivesItsReceiver(0.1, 154);
    doubleToFloat.outlivesItsReceiver(1.5, 1.5f);
    doubleToInt.outlivesItsReceiver(1.5, 1);
    doubleToText.outlivesItsReceiver(1.5, "1.5");
    textToInt.outlivesItsReceiver(textOf(number), 12);
    textToFloat.outlivesItsReceiver(textOf(number), 12.0f);
    textToStr.outlivesItsReceiver(textOf(text), "text");
    strToText.outlivesItsReceiver("text", "text");
}
