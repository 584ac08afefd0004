#include "kelvofxds/objects/fxWiring.h"

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/values/fxValueTypesInternal.h"
#include "tests/support/dataFlow.h"

namespace {

// Sends one value of each type.
struct Sender : fxObj {
    Sender()
        : nothing(addOutput("void", fxDT_void)),
          truth(addOutput("bool", fxDT_fxBool)),
          number(addOutput("int", fxDT_int)),
          wide(addOutput("long", fxDT_long)),
          single(addOutput("float", fxDT_float)),
          real(addOutput("double", fxDT_double)),
          text(addOutput("text", fxDT_CharPtr)),
          string(addOutput("string", fxDT_fxStr)),
          strings(addOutput("strings", fxDT_fxStrArray)) {}

    void sendAll(fxSendFlags flags) {
        fxStrArray two;
        two.append("a");
        two.append("b");
        sendVoid(nothing, flags);
        sendBool(truth, 2, flags);
        sendInt(number, -3, flags);
        sendLong(wide, 4L, flags);
        sendFloat(single, 0.5F, flags);
        sendDouble(real, 0.25, flags);
        sendCharPtr(text, "six", flags);
        sendData(string, new fxStrData("seven"), flags);
        sendData(strings, new fxStrArrayData(two), flags);
    }

    void connectAll(fxObj* to) {
        for (const char* name :
             {"void", "bool", "int", "long", "float", "double", "text", "string", "strings"})
            connect(name, to, name);
    }

    fxOutputChannel *nothing, *truth, *number, *wide, *single, *real, *text, *string, *strings;
};

const char everything[] =
    "void bool=1 int=-3 long=4 float=0.5 double=0.25 text=six string=seven "
    "strings=ab";

struct Notes {
    void note(const std::string& word) { words += words.empty() ? word : ' ' + word; }
    template <class T>
    void note(const char* name, T value) {
        std::string digits = std::to_string(value);
        if (digits.find('.') != std::string::npos)
            digits.erase(digits.find_last_not_of('0') + 1);
        note(std::string(name) + '=' + digits);
    }

    std::string words;
};

// Receives by member functions, those of a base among them.
struct Base : fxObj, Notes {
    void takeVoid() noexcept { note("void"); }
    virtual void takeBool(bool value) { note("bool", static_cast<int>(value)); }
    int takeInt(int value) & noexcept { return note("int", value), value; }
};

struct Members : Base {
    Members() {
        fxAddInput(this, "void", &Members::takeVoid);
        fxAddInput(this, "bool", &Base::takeBool);
        fxAddInput(this, "int", &Members::takeInt);
        fxAddInput(this, "long", &Members::takeLong);
        fxAddInput(this, "float", &Members::takeFloat);
        fxAddInput(this, "double", &Members::takeDouble);
        fxAddInput(this, "text", &Members::takeText);
        fxAddInput(this, "string", &Members::takeString);
        fxAddInput(this, "strings", &Members::takeStrings);
    }
    void takeBool(bool value) override { Base::takeBool(value); }
    void takeLong(const long& value) const { self().note("long", value); }
    void takeFloat(const float value) const noexcept { self().note("float", value); }
    void takeDouble(double&& value) { note("double", value); }
    void takeText(const char* value) { note(std::string("text=") + value); }
    void takeString(const fxStr& value) { note(std::string("string=") + value.c_str()); }
    void takeStrings(fxStrArray value) {
        note(std::string("strings=") + value[0].c_str() + value[1].c_str());
    }

private:
    Members& self() const { return const_cast<Members&>(*this); }
};

// Receives by plain functions, as they are called or not.
struct Plain : Base {
    Plain() {
        fxAddInput(this, "void", takeNothing);
        fxAddInput(this, "bool", takeTruth);
        fxAddInput(this, "int", takeNumber);
        fxAddInput(this, "long", takeLong);
        fxAddInput(this, "float", takeFloat);
        fxAddInput(this, "double", takeDouble);
        fxAddInput(this, "text", takeText);
        fxAddInput(this, "string", takeString);
        fxAddInput(this, "strings", takeStrings);
    }
    static void takeNothing(Notes* self) { self->note("void"); }
    static void takeTruth(Base* self, bool value) { self->takeBool(value); }
    static void takeNumber(void* self, int value) { static_cast<Plain*>(self)->takeInt(value); }
    static void takeLong(Plain* self, long value) noexcept { self->note("long", value); }
    static int takeFloat(Plain* self, float value) { return self->note("float", value), 1; }
    static void takeDouble(Plain* self, double value) { self->note("double", value); }
    static void takeText(Plain* self, char* value) { self->note(std::string("text=") + value); }
    static void takeString(Plain* self, fxStr value) {
        self->note(std::string("string=") + value.c_str());
    }
    static void takeStrings(Plain* self, const fxStrArray& value) {
        self->note(std::string("strings=") + value[0].c_str() + value[1].c_str());
    }
};

// Receives by lambdas.
struct Lambdas : Base {
    Lambdas() {
        fxOnInput(this, "void", [this] { note("void"); });
        fxOnInput(this, "bool", [this](unsigned char b) { note("bool", b == 2 ? 1 : 0); });
        fxOnInput(this, "int", [this](int value) noexcept { note("int", value); });
        fxOnInput(this, "long", [this](const long value) mutable { note("long", value); });
        fxOnInput(this, "float", [this](float value) { return note("float", value), value; });
        fxOnInput(this, "double", [this](const double& value) { note("double", value); });
        fxOnInput(this, "text", [this](char* value) { note(std::string("text=") + value); });
        fxOnInput(this, "string", [this](fxStr&& s) { note(std::string("string=") + s.c_str()); });
        fxOnInput(this, "strings", [this](const fxStrArray& value) {
            note(std::string("strings=") + value[0].c_str() + value[1].c_str());
        });
    }
};

template <class Receiver>
std::string received(fxObj::fxSendFlags flags) {
    Sender sender;
    Receiver receiver;
    sender.connectAll(&receiver);
    sender.sendAll(flags);
    if (flags != fxObj::fxSendNow)
        fx_theEventHandler->distributeEvents();
    return receiver.words;
}

void takeByNotes(Notes* notes, int value) { notes->note("int", value); }
void countCall(int) {}
void nothing() {}

class fxWiring : public DataFlowTest {};

}  // namespace

// What a function takes.

TEST_F(fxWiring, memberFunctionsTakeValuesOfTheirType) {
    EXPECT_EQ(everything, received<Members>(fxObj::fxSendNow));
    EXPECT_EQ(everything, received<Members>(fxObj::fxSendQueued));
}

TEST_F(fxWiring, plainFunctionsTakeTheObjectAndAValue) {
    EXPECT_EQ(everything, received<Plain>(fxObj::fxSendNow));
    EXPECT_EQ(everything, received<Plain>(fxObj::fxSendQueued));
}

TEST_F(fxWiring, anythingThatCanBeCalledTakesAValue) {
    EXPECT_EQ(everything, received<Lambdas>(fxObj::fxSendNow));
    EXPECT_EQ(everything, received<Lambdas>(fxObj::fxSendQueued));

    fxObj object;
    const std::function<void(float)> function = [](float) {};
    EXPECT_EQ(fxDT_float, fxOnInput(&object, "function", function)->getType());
    EXPECT_EQ(fxDT_int, fxOnInput(&object, "pointer", countCall)->getType());
    EXPECT_EQ(fxDT_void, fxOnInput(&object, "none", &nothing)->getType());
}

TEST_F(fxWiring, everyTypeOfValueHasItsCode) {
#define FX_CHECK_TYPE(number, typeCode, Holder, Type, name, shown) \
    EXPECT_EQ(number, fxInputType<Type>::code());                  \
    EXPECT_TRUE((std::is_same_v<Type, typename fxInputType<Type>::Delivered>)) << shown;
#define FX_NO_CHECK(number, code, Holder, Type, name, shown)
    FX_VALUE_TYPES(FX_NO_CHECK, FX_CHECK_TYPE, FX_NO_CHECK)
#undef FX_CHECK_TYPE
#undef FX_NO_CHECK
    EXPECT_EQ(fxDT_fxBool, fxInputType<bool>::code());
    EXPECT_EQ(fxDT_CharPtr, fxInputType<const char*>::code());
}

TEST_F(fxWiring, functionThatIsCalledAsItIsCostsNothingMore) {
    Plain plain;
    const fxInputChannel* in = fxAddInput(&plain, "again", Plain::takeLong);
    EXPECT_EQ(&plain, in->target);
    EXPECT_EQ(receiver(Plain::takeLong), in->function);
    EXPECT_EQ(static_cast<unsigned int>(fxDT_long) << fxInputChannel::typeShift, in->flags);
    EXPECT_EQ(1U, in->count);
}

TEST_F(fxWiring, objectIsPassedAsTheBaseThatTheFunctionTakes) {
    Sender sender;
    auto plain = std::make_unique<Plain>();
    const void* notes = static_cast<Notes*>(plain.get());
    ASSERT_NE(static_cast<const void*>(plain.get()), notes);
    sender.connect("text", plain.get(), "void");
    sender.sendCharPtr(sender.text, "", fxObj::fxSendNow);
    EXPECT_EQ("void", plain->words);

    fxAddInput(plain.get(), "int", takeByNotes);
    sender.connect("text", plain.get(), "int");
    sender.sendCharPtr(sender.text, "37", fxObj::fxSendQueued);
    EXPECT_EQ(2U, queued());
    plain.reset();
    EXPECT_EQ(0U, queued()) << "what is converted for it goes with it, too";
}

TEST_F(fxWiring, valuesOfOtherTypesAreConvertedOnTheWay) {
    Sender sender;
    Members members;
    sender.connect("text", &members, "int");
    sender.connect("int", &members, "text");
    sender.connect("int", &members, "void");
    sender.sendCharPtr(sender.text, "12 apples", fxObj::fxSendNow);
    sender.sendInt(sender.number, 7, fxObj::fxSendNow);
    EXPECT_EQ("int=12 text=7 void", members.words);
}

TEST_F(fxWiring, inputIsAddedInPlaceOfOneOfTheSameName) {
    Sender sender;
    Base object;
    fxOnInput(&object, "in", [&object](int n) { object.note("old", n); });
    sender.connect("int", &object, "in");
    const fxInputChannel* in =
        fxOnInput(&object, "in", [&object](int n) { object.note("new", n); });
    EXPECT_EQ(1U, in->count);
    sender.sendInt(sender.number, 1, fxObj::fxSendNow);
    EXPECT_EQ("", object.words) << "the old one is not connected any more";
    sender.connect("int", &object, "in");
    sender.sendInt(sender.number, 2, fxObj::fxSendNow);
    EXPECT_EQ("new=2", object.words);
}

TEST_F(fxWiring, latestOnlyKeepsTheNewestUndeliveredValue) {
    Sender sender;
    Base object;
    EXPECT_TRUE(fxAddInput(&object, "member", &Base::takeInt, true)->isLatestOnly());
    EXPECT_TRUE(fxOnInput(
                    &object, "lambda", [&object](int n) { object.note("lambda", n); }, true)
                    ->isLatestOnly());
    EXPECT_FALSE(fxAddInput(&object, "every", &Base::takeInt)->isLatestOnly());
    sender.connect("int", &object, "member");
    sender.connect("int", &object, "lambda");
    for (const int n : {1, 2, 3})
        sender.sendInt(sender.number, n, fxObj::fxSendQueued);
    EXPECT_EQ(2U, queued());
    fx_theEventHandler->distributeEvents();
    EXPECT_EQ("int=3 lambda=3", object.words);
}

TEST_F(fxWiring, copiesOfAnObjectHaveNoInputs) {
    Members members;
    const Members copy(members);
    EXPECT_EQ(1U, members.getNumberOfProperties());
    EXPECT_EQ(0U, copy.getNumberOfProperties());
}
