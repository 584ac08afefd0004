// newObjectCheck_test.cpp - what FX_DEFINE_XDR asks of a new object: its pointers are null.

#include <csignal>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxArrayOf.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/transcribe/fxXDRMembers.h"

namespace {

// What a class may have without being fatal, and counts its objects.
class Sound : public fxXDRObj {
    FX_XDR_MEMBERS(Sound)
    Sound() { ++made; }
    ~Sound() override { ++ended; }

    fxStr text = "some text";
    fxStr texts[2] = {"more", "of it"};
    fxStrStrDictionary words;
    fxIntArray numbers;
    fxStrArray lines;
    fxArrayOf<fxStr> others;
    char* block = nullptr;
    Sound* next = nullptr;
    fxRef<Sound> held;
    int notPointed;  // numbers may be anything

    static int made;
    static int ended;
};
int Sound::made = 0;
int Sound::ended = 0;
FX_DEFINE_XDR(Sound, "Sound", 1)
unsigned char Sound::xdr(fxTranscriber& t) {
    return text.xdr(t) && t.xdr(texts, 2) && words.xdr(t) && numbers.xdr(t) && lines.xdr(t) &&
           others.xdr(t) && t.xdr(&block, 10) && fxXdrPointer(t, next) && fxXdrRef(t, held) &&
           t.xdr(&notPointed, 1);
}

// A pointer that the constructor forgets; what is in memory shows.
class Forgetful : public fxXDRObj {
    FX_XDR_MEMBERS(Forgetful)
    Forgetful() {}
    Forgetful* next;
};
FX_DEFINE_XDR(Forgetful, "Forgetful", 1)
unsigned char Forgetful::xdr(fxTranscriber& t) { return fxXdrPointer(t, next); }

// The same without a constructor.
class Implicit : public fxXDRObj {
    FX_XDR_MEMBERS(Implicit)
    Implicit* next;
};
FX_DEFINE_XDR(Implicit, "Implicit", 1)
unsigned char Implicit::xdr(fxTranscriber& t) { return fxXdrPointer(t, next); }

template <class Pointer>
class ForgetsBlock : public fxXDRObj {
public:
    ForgetsBlock() {}
    ~ForgetsBlock() override = default;
    Pointer* block;
};

#define FORGETS(Name, Element)                  \
    class Name : public ForgetsBlock<Element> { \
        FX_XDR_MEMBERS(Name)                    \
        Name() {}                               \
    };                                          \
    FX_DEFINE_XDR(Name, #Name, 1)               \
    unsigned char Name::xdr(fxTranscriber& t) { return t.xdr(&block, 3); }
FORGETS(ForgetsChars, char)
FORGETS(ForgetsBytes, unsigned char)
FORGETS(ForgetsShorts, short)
FORGETS(ForgetsInts, int)
FORGETS(ForgetsUnsignedLongs, unsigned long)
FORGETS(ForgetsFloats, float)
FORGETS(ForgetsDoubles, double)

class ForgetsText : public fxXDRObj {
    FX_XDR_MEMBERS(ForgetsText)
    ForgetsText() {}
    char* text;
};
FX_DEFINE_XDR(ForgetsText, "ForgetsText", 1)
unsigned char ForgetsText::xdr(fxTranscriber& t) { return t.xdr(&text); }

// In a base class's part.
class ForgetsInBase : public Forgetful {
    FX_XDR_MEMBERS(ForgetsInBase)
};
FX_DEFINE_XDR(ForgetsInBase, "ForgetsInBase", 1)
unsigned char ForgetsInBase::xdr(fxTranscriber& t) {
    return t.xdr(Forgetful_type, nullptr, static_cast<Forgetful*>(this));
}

// Makes what its pointers lead to.
class Makes : public fxXDRObj {
    FX_XDR_MEMBERS(Makes)
    Makes() : child(new Sound) {}
    ~Makes() override { delete child; }
    Sound* child;
};
FX_DEFINE_XDR(Makes, "Makes", 1)
unsigned char Makes::xdr(fxTranscriber& t) { return fxXdrPointer(t, child); }

class Holds : public fxXDRObj {
    FX_XDR_MEMBERS(Holds)
    fxRef<Sound> child = new Sound;
};
FX_DEFINE_XDR(Holds, "Holds", 1)
unsigned char Holds::xdr(fxTranscriber& t) { return fxXdrRef(t, child); }

class HasMany : public fxXDRObj {
    FX_XDR_MEMBERS(HasMany)
    HasMany() { children.append(new Sound); }
    fxArrayOf<fxRef<Sound>> children;
};
FX_DEFINE_XDR(HasMany, "HasMany", 1)
unsigned char HasMany::xdr(fxTranscriber& t) { return children.xdr(t); }

class Front {
public:
    virtual ~Front() = default;
    int word = 1;
};
class NotInFront : public Front, public fxXDRObj {
    FX_XDR_MEMBERS(NotInFront)
};
FX_DEFINE_XDR(NotInFront, "NotInFront", 1)
unsigned char NotInFront::xdr(fxTranscriber&) { return 1; }

std::string message(const char* name) {
    return std::string("^").append(name) + ": a pointer is not null in a new object\n$";
}

}  // namespace

TEST(newObjectCheck, looksAtOneObjectMoreThanIsMade) {
    Sound::made = Sound::ended = 0;
    Sound::deleteInstance(Sound::newInstance(Sound_type));
    EXPECT_LE(Sound::made, 2);
    const int first = Sound::made;
    Sound::deleteInstance(Sound::newInstance(Sound_type));
    EXPECT_EQ(first + 1, Sound::made);
    EXPECT_EQ(Sound::made, Sound::ended);
}

TEST(newObjectCheckDeathTest, pointersThatAreNotSetAreFatal) {
    const fxTypeObj* const types[] = {
        &Implicit_type,       &Forgetful_type,   &ForgetsChars_type,         &ForgetsBytes_type,
        &ForgetsShorts_type,  &ForgetsInts_type, &ForgetsUnsignedLongs_type, &ForgetsFloats_type,
        &ForgetsDoubles_type, &ForgetsText_type};
    for (const fxTypeObj* type : types) {
        EXPECT_EXIT(type->create(const_cast<fxTypeObj&>(*type)), testing::KilledBySignal(SIGABRT),
                    message(type->name));
    }
}

TEST(newObjectCheckDeathTest, soAreThoseOfABaseClass) {
    EXPECT_EXIT(ForgetsInBase::newInstance(ForgetsInBase_type), testing::KilledBySignal(SIGABRT),
                message("ForgetsInBase"));
}

TEST(newObjectCheckDeathTest, pointersToNewObjectsAreFatal) {
    EXPECT_EXIT(Makes::newInstance(Makes_type), testing::KilledBySignal(SIGABRT), message("Makes"));
    EXPECT_EXIT(Holds::newInstance(Holds_type), testing::KilledBySignal(SIGABRT), message("Holds"));
    EXPECT_EXIT(HasMany::newInstance(HasMany_type), testing::KilledBySignal(SIGABRT),
                message("HasMany"));
}

TEST(newObjectCheckDeathTest, anObjectHasToBeginWithFxXDRObj) {
    EXPECT_EXIT(NotInFront::newInstance(NotInFront_type), testing::KilledBySignal(SIGABRT),
                "^NotInFront: fxXDRObj is not at the start of the object\n$");
}
