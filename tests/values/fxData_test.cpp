#include "kelvofxds/values/fxData.h"

#include <climits>
#include <cmath>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <new>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxRCObj.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/values/fxDataInternal.h"
#include "tests/support/heapCalls.h"
#include "tests/support/vtable.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
struct fxDataLayout {
    static_assert(!std::is_base_of<fxRCObj, fxData>::value, "a root class");
    static_assert(std::is_abstract<fxData>::value && std::has_virtual_destructor<fxData>::value,
                  "deleted through the base");
    static_assert(std::is_same<unsigned int, decltype(fxData::count)>::value, "32 bits, unsigned");
    static_assert(std::is_same<unsigned short, decltype(fxData::type)>::value, "16 bits");
    static_assert(offsetof(fxData, count) == 4, "the count follows the table of operations");
    static_assert(offsetof(fxData, type) == 8, "then the type");
    static_assert(sizeof(fxData) == 12, "no other field");

    static_assert(sizeof(fxVoidData) == sizeof(fxData), "no value");
    static_assert(offsetof(fxBoolData, value) == 10 && sizeof(fxBoolData) == 12, "one byte");
    static_assert(offsetof(fxIntData, value) == 12 && sizeof(fxIntData) == 16, "one word");
    static_assert(offsetof(fxLongData, value) == 12 && sizeof(fxLongData) == 16, "one word");
    static_assert(offsetof(fxFloatData, value) == 12 && sizeof(fxFloatData) == 16, "one word");
    static_assert(offsetof(fxDoubleData, value) >= 12, "behind the base");
    static_assert(sizeof(fxDoubleData) == offsetof(fxDoubleData, value) + 8, "two words");
    static_assert(offsetof(fxCharPtrData, value) == 12 && sizeof(fxCharPtrData) == 16, "one word");
    static_assert(offsetof(fxStrData, value) == 12 && sizeof(fxStrData) == 12 + sizeof(fxStr),
                  "a string by value");
    static_assert(offsetof(fxStrArrayData, value) == 12 &&
                      sizeof(fxStrArrayData) == 12 + sizeof(fxStrArray),
                  "an array by value");

    template <class Value, class Holder>
    static constexpr bool holds() {
        return std::is_base_of<fxData, Holder>::value &&
               std::is_same<Value, decltype(Holder::value)>::value;
    }
    template <class Holder>
    static auto& value(Holder& holder) {
        return holder.value;
    }
};
#pragma GCC diagnostic pop

static_assert(fxDataLayout::holds<unsigned char, fxBoolData>(), "type of the value");
static_assert(fxDataLayout::holds<int, fxIntData>(), "type of the value");
static_assert(fxDataLayout::holds<long, fxLongData>(), "type of the value");
static_assert(fxDataLayout::holds<float, fxFloatData>(), "type of the value");
static_assert(fxDataLayout::holds<double, fxDoubleData>(), "type of the value");
static_assert(fxDataLayout::holds<char*, fxCharPtrData>(), "type of the value");
static_assert(fxDataLayout::holds<fxStr, fxStrData>(), "type of the value");
static_assert(fxDataLayout::holds<fxStrArray, fxStrArrayData>(), "type of the value");

namespace {
using Function = void (*)();

// Receives values of one type.
template <class Value>
struct Receiver {
    static void receive(void* self, Value value) {
        auto* receiver = static_cast<Receiver*>(self);
        ++receiver->calls;
        receiver->value = value;
    }
    static Function function() { return reinterpret_cast<Function>(&receive); }

    Value value = Value();
    int calls = 0;
};

template <class Holder>
auto& valueOf(Holder& holder) {
    return fxDataLayout::value(holder);
}

// The bytes of a number, so that signs of zero and NaNs count.
template <class Value>
std::string bitsOf(Value value) {
    return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

class fxDataTest : public testing::Test {
protected:
    fxDataTest() { fxInitializeToolkit(); }

    static void expectNew(const fxData& data, unsigned short code, const char* name) {
        EXPECT_EQ(0u, data.count);
        EXPECT_EQ(code, data.getType());
        EXPECT_STREQ(name, data.dataName());
    }

    /// One row of the table of holders, for a number.
    template <class Holder, class Value>
    static void expectNumber(Value value, unsigned short code, unsigned int size) {
        SCOPED_TRACE(testing::Message() << "type " << code << ", value " << value);
        Holder data(value);
        expectNew(data, code, "TYPE");
        EXPECT_EQ(size, data.getSize());
        EXPECT_EQ(bitsOf(value), bitsOf(valueOf(data)));

        Receiver<Value> receiver;
        data.deliverTo(receiver.function(), &receiver);
        data.deliverTo(receiver.function(), &receiver);
        EXPECT_EQ(2, receiver.calls);
        EXPECT_EQ(bitsOf(value), bitsOf(receiver.value));
        EXPECT_EQ(0u, data.count) << "no reference is taken";

        for (const unsigned short type : {code, fxDT_void, fxDT_fxStr, noType}) {
            unsigned char out[sizeof(Value) + 1];
            std::memset(out, 0xA5, sizeof out);
            data.getValue(type, out);
            EXPECT_EQ(bitsOf(value), std::string(reinterpret_cast<char*>(out), sizeof value));
            EXPECT_EQ(0xA5, out[sizeof(Value)]) << "nothing else is stored";
        }
    }

    static const unsigned short noType = 65535;
};

fxStrArray arrayOf(std::initializer_list<const char*> texts) {
    fxStrArray array;
    for (const char* text : texts)
        array.append(fxStr(text));
    return array;
}

std::vector<std::string> textsOf(const fxStrArray& array) {
    std::vector<std::string> texts;
    for (unsigned int i = 0; i < array.length(); ++i)
        texts.push_back(std::string(array[i].c_str(), array[i].length()));
    return texts;
}

using Texts = std::vector<std::string>;
}  // namespace

TEST_F(fxDataTest, operationsFollowTheTwoDestructorsInTheStatedOrder) {
    EXPECT_EQ(2u, vtableWord(&fxData::dataName));
    EXPECT_EQ(3u, vtableWord(&fxData::deliverTo));
    EXPECT_EQ(4u, vtableWord(&fxData::getValue));
    EXPECT_EQ(5u, vtableWord(&fxData::getSize));
    struct Probe : fxIntData {
        Probe() : fxIntData(0) {}
        virtual void probe() {}
    };
    EXPECT_EQ(6u, vtableWord(&Probe::probe)) << "there are no others";
}

TEST_F(fxDataTest, typeCodesHaveTheStatedValues) {
    const unsigned short codes[] = {fxDT_void,    fxDT_fxBool, fxDT_int,     fxDT_long,
                                    fxDT_float,   fxDT_double, fxDT_CharPtr, fxDT_fxStr,
                                    fxDT_VoidPtr, fxDT_ObjPtr, fxDT_DataPtr, fxDT_fxStrArray};
    ASSERT_EQ(std::size(fxValueTypeCodes), std::size(codes));
    for (unsigned short i = 0; i < std::size(codes); ++i) {
        EXPECT_EQ(i, codes[i]);
        EXPECT_EQ(i, *fxValueTypeCodes[i]);
    }
}

// The table of holders.

TEST_F(fxDataTest, voidHolder) {
    fxVoidData data;
    expectNew(data, fxDT_void, "void");
    EXPECT_EQ(0u, data.getSize());

    int calls = 0;
    void (*const count)(void*) = [](void* target) { ++*static_cast<int*>(target); };
    data.deliverTo(reinterpret_cast<Function>(count), &calls);
    EXPECT_EQ(1, calls);

    unsigned char out = 0xA5;
    data.getValue(fxDT_int, &out);
    EXPECT_EQ(0xA5, out);
    data.getValue(fxDT_void, nullptr);
}

TEST_F(fxDataTest, boolHolder) {
    for (const int value : {0, 1, 2, 127, 128, 255})
        expectNumber<fxBoolData>(static_cast<unsigned char>(value), fxDT_fxBool, 1);
}

TEST_F(fxDataTest, intHolder) {
    for (const int value : {0, 1, -1, INT_MAX, INT_MIN})
        expectNumber<fxIntData>(value, fxDT_int, 4);
}

TEST_F(fxDataTest, longHolder) {
    for (const long value : {0L, 1L, -1L, LONG_MAX, LONG_MIN})
        expectNumber<fxLongData>(value, fxDT_long, 4);
}

TEST_F(fxDataTest, floatHolder) {
    using Limits = std::numeric_limits<float>;
    for (const float value : {0.0f, -0.0f, 0.1f, -1.5f, Limits::max(), Limits::denorm_min(),
                              Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN()})
        expectNumber<fxFloatData>(value, fxDT_float, 4);
}

TEST_F(fxDataTest, doubleHolder) {
    using Limits = std::numeric_limits<double>;
    for (const double value : {0.0, -0.0, 0.1, -1.5, Limits::max(), Limits::denorm_min(),
                               Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN()})
        expectNumber<fxDoubleData>(value, fxDT_double, 8);
}

TEST_F(fxDataTest, textHolderOwnsItsText) {
    char* const text = ::strdup("text");
    fxCharPtrData data(text);
    expectNew(data, fxDT_CharPtr, "char *");
    EXPECT_EQ(4u, data.getSize());
    EXPECT_EQ(text, valueOf(data));

    Receiver<char*> receiver;
    data.deliverTo(receiver.function(), &receiver);
    EXPECT_EQ(1, receiver.calls);
    EXPECT_EQ(text, receiver.value) << "the text itself, which stays the holder's";

    for (const unsigned short type : {fxDT_CharPtr, fxDT_int, noType}) {
        char* out = nullptr;
        data.getValue(type, &out);
        EXPECT_EQ(text, out);
    }
    EXPECT_STREQ("text", text);
}

TEST_F(fxDataTest, textHolderFreesItsText) {
    delete new fxCharPtrData(nullptr);  // leaves its memory to the next one
    const HeapCalls before = heapCalls();
    auto* data = new fxCharPtrData(::strdup("text"));
    EXPECT_EQ(before.releases, heapCalls().releases);
    delete data;
    const HeapCalls after = heapCalls();
    EXPECT_EQ(before.blocks, after.blocks);
    EXPECT_EQ(before.releases + (heapCallsAreCounted() ? 1 : 0), after.releases);
}

TEST_F(fxDataTest, textHolderOfNothing) {
    fxCharPtrData data(nullptr);
    Receiver<char*> receiver;
    char old[] = "old";
    receiver.value = old;
    data.deliverTo(receiver.function(), &receiver);
    EXPECT_EQ(nullptr, receiver.value);
}

TEST_F(fxDataTest, stringHolderKeepsACopy) {
    fxStr text("a\0b", 3);
    fxStrData data(text);
    expectNew(data, fxDT_fxStr, "TYPE");
    EXPECT_EQ(sizeof(fxStr), data.getSize());
    EXPECT_EQ(8u, data.getSize());
    EXPECT_NE(text.c_str(), valueOf(data).c_str());
    text = "changed";
    EXPECT_EQ(fxStr("a\0b", 3), valueOf(data));

    for (const unsigned short type : {fxDT_fxStr, fxDT_int, noType}) {
        fxStr out("a longer text that was there before");
        data.getValue(type, &out);
        EXPECT_EQ(valueOf(data), out);
        EXPECT_NE(valueOf(data).c_str(), out.c_str());
    }
}

TEST_F(fxDataTest, stringHolderPassesAFreshCopyEachTime) {
    struct Target {
        static void receive(void* self, fxStr value) {
            auto* target = static_cast<Target*>(self);
            EXPECT_NE(valueOf(*target->data).c_str(), value.c_str());
            EXPECT_EQ("text", value);
            value.append(" changed by its receiver");
            ++target->calls;
        }
        fxStrData* data;
        int calls;
    };
    fxStrData data("text");
    Target target = {&data, 0};
    data.deliverTo(reinterpret_cast<Function>(&Target::receive), &target);
    data.deliverTo(reinterpret_cast<Function>(&Target::receive), &target);
    EXPECT_EQ(2, target.calls);
    EXPECT_EQ("text", valueOf(data));
}

TEST_F(fxDataTest, emptyStringIsDeliveredAndStored) {
    fxStrData data((fxStr()));
    Receiver<fxStr> receiver;
    receiver.value = "old";
    data.deliverTo(receiver.function(), &receiver);
    EXPECT_EQ("", receiver.value);
    fxStr out("old");
    data.getValue(fxDT_fxStr, &out);
    EXPECT_EQ("", out);
    EXPECT_EQ(&fxStr::emptyString, out.c_str());
}

TEST_F(fxDataTest, arrayHolderKeepsACopy) {
    fxStrArray array = arrayOf({"a", "", "c"});
    fxStrArrayData data(array);
    expectNew(data, fxDT_fxStrArray, "TYPE");
    EXPECT_EQ(sizeof(fxStrArray), data.getSize());
    EXPECT_EQ(24u, data.getSize());
    EXPECT_NE(array[0].c_str(), valueOf(data)[0].c_str());
    array[0] = "changed";
    EXPECT_EQ((Texts{"a", "", "c"}), textsOf(valueOf(data)));
}

TEST_F(fxDataTest, arrayHolderPassesAFreshCopyEachTime) {
    struct Target {
        static void receive(void* self, fxStrArray value) {
            auto* target = static_cast<Target*>(self);
            EXPECT_NE(valueOf(*target->data)[0].c_str(), value[0].c_str());
            EXPECT_EQ((Texts{"a", "b"}), textsOf(value));
            value[0] = "changed";
            value.append(fxStr("c"));
            value.remove(1, 1);
            ++target->calls;
        }
        fxStrArrayData* data;
        int calls;
    };
    fxStrArrayData data(arrayOf({"a", "b"}));
    Target target = {&data, 0};
    data.deliverTo(reinterpret_cast<Function>(&Target::receive), &target);
    data.deliverTo(reinterpret_cast<Function>(&Target::receive), &target);
    EXPECT_EQ(2, target.calls);
    EXPECT_EQ((Texts{"a", "b"}), textsOf(valueOf(data)));
}

TEST_F(fxDataTest, arrayHolderReplacesTheContentsOfAnArray) {
    const std::initializer_list<const char*> before[] = {
        {}, {"x"}, {"x", "y"}, {"p", "q", "r", "s", "t", "u"}};
    const std::initializer_list<const char*> values[] = {{}, {"a", "b"}, {"a", "", "c", "d", "e"}};
    for (const auto& old : before) {
        for (const auto& texts : values) {
            SCOPED_TRACE(testing::Message() << old.size() << " by " << texts.size());
            fxStrArrayData data(arrayOf(texts));
            for (const unsigned short type : {fxDT_fxStrArray, fxDT_int, noType}) {
                fxStrArray out = arrayOf(old);
                data.getValue(type, &out);
                EXPECT_EQ(textsOf(valueOf(data)), textsOf(out));
                if (out.length() != 0) {
                    EXPECT_NE(valueOf(data)[0].c_str(), out[0].c_str());
                    out[0] = "changed";
                }
                out.append(fxStr("more"));
                EXPECT_EQ(textsOf(arrayOf(texts)), textsOf(valueOf(data)));
            }
        }
    }
}

TEST_F(fxDataTest, arrayHolderReplacesAnEmptyArrayWithRoom) {
    fxStrArray out;
    out.setMaxLength(5);
    fxStrArrayData(arrayOf({"a", "b"})).getValue(fxDT_fxStrArray, &out);
    EXPECT_EQ((Texts{"a", "b"}), textsOf(out));
    out.append(fxStr("c"));
    EXPECT_EQ((Texts{"a", "b", "c"}), textsOf(out));
}

TEST_F(fxDataTest, deliberateNamesAreTheSameButForTextsAndNothing) {
    EXPECT_STREQ("TYPE", fxIntData(1).dataName());
    EXPECT_STREQ("TYPE", fxBoolData(1).dataName());
    EXPECT_STREQ("TYPE", fxStrArrayData(fxStrArray()).dataName());
    EXPECT_STREQ("char *", fxCharPtrData(nullptr).dataName());
    EXPECT_STREQ("void", fxVoidData().dataName());
}

// Making and deleting holders.

TEST_F(fxDataTest, holdersAreDeletedThroughTheirBase) {
    long blocks = 0;
    for (const bool again : {false, true}) {
        if (again)
            blocks = heapCalls().blocks;  // with the memory that is kept for holders
        fxData* const holders[] = {new fxVoidData,
                                   new fxBoolData(1),
                                   new fxIntData(1),
                                   new fxLongData(1),
                                   new fxFloatData(1),
                                   new fxDoubleData(1),
                                   new fxCharPtrData(::strdup("text")),
                                   new fxStrData("text"),
                                   new fxStrArrayData(arrayOf({"a", "b"}))};
        for (fxData* holder : holders)
            delete holder;
    }
    EXPECT_EQ(blocks, heapCalls().blocks) << "their values go too";
}

TEST_F(fxDataTest, holdersOfTheHostsOwnDelete) {
    static int destroyed;
    destroyed = 0;
    struct Labelled : fxIntData {
        explicit Labelled(const char* text) : fxIntData(5), label(text) {}
        ~Labelled() override { ++destroyed; }
        fxStr label;
    };
    for (int i = 0; i < 3; ++i) {
        fxData* holder = new Labelled("a label");
        EXPECT_EQ(fxDT_int, holder->getType());
        delete holder;
        delete new fxIntData(7);
    }
    EXPECT_EQ(3, destroyed);
}

TEST_F(fxDataTest, nullIsDeleted) {
    fxIntData* none = nullptr;
    delete none;
    SUCCEED();
}

// Freed memory is kept for the next holder: no two that live may share it.
TEST_F(fxDataTest, holdersInUseAreDistinctHoweverManyCameAndWent) {
    const unsigned int n = 10000;
    std::vector<fxIntData*> holders;
    for (unsigned int round = 0; round < 3; ++round) {
        std::set<fxIntData*> distinct;
        for (unsigned int i = 0; i < n; ++i) {
            holders.push_back(new fxIntData(static_cast<int>(i)));
            distinct.insert(holders.back());
        }
        EXPECT_EQ(n, distinct.size());
        for (unsigned int i = 0; i < n; ++i) {
            ASSERT_EQ(static_cast<int>(i), valueOf(*holders[i]));
            ASSERT_EQ(0u, holders[i]->count);
            delete holders[i];
        }
        holders.clear();
    }
}

TEST_F(fxDataTest, reusedMemoryIsConstructedAnew) {
    for (int i = 0; i < 3; ++i) {
        auto* data = new fxDoubleData(i + 0.5);
        EXPECT_EQ(0u, data->count);
        EXPECT_EQ(fxDT_double, data->getType());
        EXPECT_EQ(i + 0.5, valueOf(*data));
        data->count = 77;
        delete data;
    }
}

// Other ways to make holders.

namespace {

// Classes of a host's own: one of a holder, one of the base.
struct HostInt : fxIntData {
    explicit HostInt(int v) : fxIntData(v) {}
    ~HostInt() override { ++ends; }
    static int ends;
    int more = 1;
};
int HostInt::ends = 0;

struct HostData : fxData {
    explicit HostData(int v) : fxData(fxDT_int), value(v) {}
    const char* dataName() const override { return "host"; }
    void deliverTo(void (*)(), void*) override {}
    void getValue(unsigned short, void* out) override { *static_cast<int*>(out) = value; }
    unsigned int getSize() override { return sizeof value; }
    int value;
};

template <class Holder, class... Args>
void expectPlacedAndNothrow(unsigned short code, Args... args) {
    SCOPED_TRACE(code);
    alignas(Holder) unsigned char place[sizeof(Holder)];
    auto* placed = new (place) Holder(args...);
    EXPECT_EQ(static_cast<void*>(place), placed);
    EXPECT_EQ(code, placed->getType());
    placed->~Holder();

    for (int i = 0; i < 3; ++i) {
        fxData* made = new (std::nothrow) Holder(args...);
        ASSERT_NE(nullptr, made);
        EXPECT_EQ(code, made->getType());
        EXPECT_EQ(0u, made->count);
        delete made;
    }
}

}  // namespace

TEST_F(fxDataTest, holdersMayBePlacedAndMadeWithNothrowNew) {
    expectPlacedAndNothrow<fxVoidData>(fxDT_void);
    expectPlacedAndNothrow<fxBoolData>(fxDT_fxBool, static_cast<unsigned char>(1));
    expectPlacedAndNothrow<fxIntData>(fxDT_int, 5);
    expectPlacedAndNothrow<fxLongData>(fxDT_long, 5L);
    expectPlacedAndNothrow<fxFloatData>(fxDT_float, 5.0F);
    expectPlacedAndNothrow<fxDoubleData>(fxDT_double, 5.0);
    expectPlacedAndNothrow<fxCharPtrData>(fxDT_CharPtr, static_cast<char*>(nullptr));
    expectPlacedAndNothrow<fxStrData>(fxDT_fxStr, "text");
    expectPlacedAndNothrow<fxStrArrayData>(fxDT_fxStrArray, arrayOf({"a", "b"}));
    HostInt::ends = 0;
    expectPlacedAndNothrow<HostInt>(fxDT_int, 5);
    EXPECT_EQ(4, HostInt::ends);
    expectPlacedAndNothrow<HostData>(fxDT_int, 5);
}

#ifndef __SANITIZE_ADDRESS__
namespace {

void makeForEver() {
    refuseBlocksFrom(0);
    for (;;)
        ++(new fxIntData(1))->count;
}

void makeUntilNull() {
    refuseBlocksFrom(0);
    while (fxIntData* holder = new (std::nothrow) fxIntData(1))
        ++holder->count;
    std::_Exit(7);
}

using fxDataDeathTest = fxDataTest;

}  // namespace

TEST_F(fxDataDeathTest, refusedMemoryEndsTheProcess) {
    EXPECT_EXIT(makeForEver(), testing::KilledBySignal(SIGABRT), "^out of memory\n$");
}

TEST_F(fxDataDeathTest, refusedMemoryGivesNothrowNewNull) {
    EXPECT_EXIT(makeUntilNull(), testing::ExitedWithCode(7), "^$");
}
#endif

// Codes.

namespace {
// As static initialisers find them.
const unsigned short codesAtLoad[] = {fxDT_void,    fxDT_fxBool, fxDT_int,     fxDT_long,
                                      fxDT_float,   fxDT_double, fxDT_CharPtr, fxDT_fxStr,
                                      fxDT_VoidPtr, fxDT_ObjPtr, fxDT_DataPtr, fxDT_fxStrArray};
}  // namespace

TEST_F(fxDataTest, codesAreThoseThatStartUpDrawsBeforeItDoes) {
    for (unsigned int i = 0; i < 12; ++i)
        EXPECT_EQ(i, codesAtLoad[i]);
}
