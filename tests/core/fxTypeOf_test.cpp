#include "kelvofxds/core/fxTypeOf.h"

#include <gtest/gtest.h>

#include "kelvofxds/core/fxXDRObj.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxStrArray.h"

namespace {
int made = 0;

fxTypeObj oneType("fxTypeOfTestOne", 1, nullptr, nullptr, nullptr);
fxTypeObj twoType("fxTypeOfTestTwo", 1, nullptr, nullptr, nullptr);

struct Telling : fxXDRObj {
    Telling() { ++made; }
    explicit Telling(int) {}
    static fxTypeObj& classType() { return oneType; }
    fxTypeObj& getTypeObj() const override { return twoType; }
};

// Cannot be made without an argument.
struct TellingOnly : fxXDRObj {
    explicit TellingOnly(int) {}
    static fxTypeObj& classType() { return oneType; }
};

struct Silent : fxXDRObj {
    Silent() { ++made; }
    ~Silent() override { --made; }
    fxTypeObj& getTypeObj() const override { return twoType; }
};
}  // namespace

TEST(fxTypeOf, classThatTellsIsAskedWithoutAnObject) {
    made = 0;
    EXPECT_EQ(&oneType, &fxTypeOf<Telling>());
    EXPECT_EQ(&oneType, &fxTypeOf<TellingOnly>());
    EXPECT_EQ(0, made);
}

TEST(fxTypeOf, otherwiseADefaultObjectIsAskedAndEnds) {
    made = 0;
    EXPECT_EQ(&twoType, &fxTypeOf<Silent>());
    EXPECT_EQ(0, made);
}

TEST(fxTypeOf, libraryClassesHaveTheirRecords) {
    EXPECT_EQ(&fxXDRObj_type, &fxTypeOf<fxXDRObj>());
    EXPECT_EQ(&fxStr_type, &fxTypeOf<fxStr>());
    EXPECT_EQ(&fxStrArray().getTypeObj(), &fxTypeOf<fxStrArray>());
}
