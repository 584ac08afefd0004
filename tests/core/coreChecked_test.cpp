// coreChecked_test.cpp - misuse of start-up and of counted objects, which the checked build stops.

#include <new>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxRCObj.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/core/fxVersion.h"
#include "kelvofxds/core/fxXDRObj.h"
#include "tests/support/misuse.h"

namespace {

template <class Class>
struct Ended {
    Ended() : object(new (room) Class) { object->~Class(); }
    alignas(Class) unsigned char room[sizeof(Class)];
    Class* object;
};

char line[80];

const Misuse table[] = {
    {"a global that is none", [] {}, [] { fxGlobalOrder().add(nullptr); },
     "fxGlobalOrder::add: global is null"},
    {"a version to nowhere", [] { libkelvofxds_sprintf_verid(line); },
     [] { libkelvofxds_sprintf_verid(nullptr); },
     "libkelvofxds::libkelvofxds_sprintf_verid: buffer is null"},
};

const Misuse ends[] = {
    {"a counted object, destroyed twice", [] { Ended<fxRCObj>(); },
     [] { Ended<fxRCObj>().object->~fxRCObj(); },
     "fxRCObj::~fxRCObj: the object has been destroyed already"},
};

}  // namespace

TEST(coreCheckedDeathTest, whatStartUpIsGiven) { expectStops(table); }

TEST(coreCheckedDeathTest, countedObjectsThatHaveEnded) { expectEndsToStop(ends); }

// Whose count it is nobody knows: a variable may hold itself, so that no holder deletes it.
TEST(coreCheckedDeathTest, aHostsOwnCountIsItsOwn) {
    {
        fxXDRObj object;
        object.count = 1;
    }
    delete new fxXDRObj;
}
