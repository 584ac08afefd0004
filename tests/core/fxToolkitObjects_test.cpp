// What fxInitializeToolkit makes, and in which order.

#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "kelvofxds/core/fxDebug.h"
#include "kelvofxds/core/fxOrderedGlobal.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxEvent.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxExec.h"
#include "kelvofxds/objects/fxSequencer.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/transcribe/fxTranscriber.h"
#include "kelvofxds/values/fxConverter.h"
#include "kelvofxds/values/fxData.h"
#include "kelvofxds/values/fxProperty.h"

namespace {
// The pointers to the toolkit's objects at one moment.
struct Singletons {
    const void* names = fx_propertyNames;
    const void* dataTypes = fx_nextDataType;
    const void* executive = fx_theExecutive;
    const void* handler = fx_theEventHandler;
    const void* eventTypes = fx_nextEventType;
    const void* debugger = fx_theDebugger;

    std::vector<const void*> all() const {
        return {names, dataTypes, executive, handler, eventTypes, debugger};
    }
};

// As static initialisers leave them, before main.
const Singletons beforeMain;
const bool conversionsBeforeMain = fxConverter::findConverter(2, 4) != nullptr;
const bool orderingsBeforeMain = fx_toolkitGlobalOrder && fx_applicationGlobalOrder;

unsigned short* const dataTypes[] = {&fxDT_void,    &fxDT_fxBool, &fxDT_int,     &fxDT_long,
                                     &fxDT_float,   &fxDT_double, &fxDT_CharPtr, &fxDT_fxStr,
                                     &fxDT_VoidPtr, &fxDT_ObjPtr, &fxDT_DataPtr, &fxDT_fxStrArray};

const bool codesBeforeMain = [] {
    unsigned int number = 0;
    bool right = fxET_Unknown == 0 && fxET_MessageEvent == 1;
    for (const unsigned short* type : dataTypes)
        right = right && *type == number++;
    return right;
}();

std::vector<unsigned int> rangesOf(const fxSequencer& sequencer) {
    std::vector<unsigned int> ranges;
    for (unsigned int i = 0; i < sequencer.getRanges().length(); ++i) {
        ranges.push_back(sequencer.getRanges()[i].start);
        ranges.push_back(sequencer.getRanges()[i].count);
    }
    return ranges;
}

// Position of `global` among those of `order`, or -1.
int positionOf(const fxOrderedGlobal& global, const fxGlobalOrder& order) {
    for (unsigned int i = 0; i < order.getGlobals().length(); ++i) {
        if (order.getGlobals()[i] == &global)
            return static_cast<int>(i);
    }
    return -1;
}

class fxToolkitObjectsTest : public testing::Test {
protected:
    fxToolkitObjectsTest() { fxInitializeToolkit(); }
};

using fxToolkitObjectsDeathTest = fxToolkitObjectsTest;

[[noreturn]] void endChild() {
    std::fflush(stdout);
    ::_exit(testing::Test::HasFailure() ? 1 : 0);
}

const auto succeeds = testing::ExitedWithCode(0);
}  // namespace

TEST_F(fxToolkitObjectsTest, staticInitialisersMakeTheOrderingsAndNothingElse) {
    EXPECT_TRUE(orderingsBeforeMain);
    EXPECT_FALSE(conversionsBeforeMain);
    for (const void* singleton : beforeMain.all())
        EXPECT_EQ(nullptr, singleton);
}

TEST_F(fxToolkitObjectsTest, codesHaveTheirNumbersBefore) { EXPECT_TRUE(codesBeforeMain); }

TEST_F(fxToolkitObjectsTest, initialisationMakesEverySingleton) {
    for (const void* singleton : Singletons().all())
        EXPECT_NE(nullptr, singleton);
}

TEST_F(fxToolkitObjectsTest, dataTypesAreNumberedFromZeroInOrder) {
    for (unsigned short i = 0; i < 12; ++i)
        EXPECT_EQ(i, *dataTypes[i]);
    ASSERT_NE(0u, fx_nextDataType->getRanges().length());
    EXPECT_EQ(0u, fx_nextDataType->getRanges()[0].start);
    EXPECT_LE(12u, fx_nextDataType->getRanges()[0].count);
}

TEST_F(fxToolkitObjectsTest, eventTypesAreNumberedFromZeroInOrder) {
    EXPECT_EQ(0u, fxET_Unknown);
    EXPECT_EQ(1u, fxET_MessageEvent);
    ASSERT_NE(0u, fx_nextEventType->getRanges().length());
    EXPECT_EQ(0u, fx_nextEventType->getRanges()[0].start);
    EXPECT_LE(2u, fx_nextEventType->getRanges()[0].count);
}

TEST_F(fxToolkitObjectsTest, laterCallsMakeNothing) {
    const Singletons before;
    const auto dataRanges = rangesOf(*fx_nextDataType);
    const auto eventRanges = rangesOf(*fx_nextEventType);
    fxInitializeToolkit();
    fxInitGlobalOrderings();
    EXPECT_EQ(before.all(), Singletons().all());
    EXPECT_EQ(dataRanges, rangesOf(*fx_nextDataType));
    EXPECT_EQ(eventRanges, rangesOf(*fx_nextEventType));
}

TEST_F(fxToolkitObjectsTest, entryOfTheToolkitNeedsNoOther) {
    EXPECT_EQ(nullptr, fxOG_Init.deps);
    EXPECT_NE(nullptr, fxOG_Init.cons);
    EXPECT_NE(nullptr, fxOG_Init.dest);
    EXPECT_LE(0, positionOf(fxOG_Init, *fx_toolkitGlobalOrder));
    EXPECT_EQ(-1, positionOf(fxOG_Init, *fx_applicationGlobalOrder));
}

TEST_F(fxToolkitObjectsTest, entriesThatNeedTheToolkitComeBehindIt) {
    const int position = positionOf(fxOG_Init, *fx_toolkitGlobalOrder);
    int dependent = 0;
    const fxVoidPtrArray& globals = fx_toolkitGlobalOrder->getGlobals();
    for (unsigned int i = 0; i < globals.length(); ++i) {
        const auto* global = static_cast<const fxOrderedGlobal*>(globals[i]);
        if (!global->dependsOn(fxOG_Init))
            continue;
        ++dependent;
        EXPECT_LT(position, static_cast<int>(i));
    }
    EXPECT_LE(1, dependent) << "transcription is one of them";
    EXPECT_NE(nullptr, fxTranscriber::readers);
}

// In processes of their own, of which the first three have done nothing but
// initialise the toolkit.

TEST_F(fxToolkitObjectsDeathTest, exactlyTheStatedTypesAreDrawn) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto check = [] {
        EXPECT_EQ((std::vector<unsigned int>{0, 12}), rangesOf(*fx_nextDataType));
        EXPECT_EQ((std::vector<unsigned int>{0, 2}), rangesOf(*fx_nextEventType));
        EXPECT_EQ(12u, (*fx_nextDataType)());
        EXPECT_EQ(2u, (*fx_nextEventType)());
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

TEST_F(fxToolkitObjectsDeathTest, firstTagIsZero) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto check = [] {
        EXPECT_EQ(0u, fx_propertyNames->length()) << "start-up interns nothing";
        EXPECT_EQ(65535, fxProperty::findTag("first"));
        EXPECT_EQ(0, fxProperty::allocNewTag("first"));
        EXPECT_EQ(0, fxProperty::findTag("first"));
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

TEST_F(fxToolkitObjectsDeathTest, executiveAndHandlerStartEmpty) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto check = [] {
        EXPECT_EQ(0u, fx_theEventHandler->numberOfEvents());
        EXPECT_EQ(0, fx_theExecutive->willBlock());
        EXPECT_EQ(0u, fxEvent::nextSequenceNumber);
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

TEST_F(fxToolkitObjectsDeathTest, eachSingletonIsMadeOnlyIfStillNull) {
    const auto check = [] {
        const Singletons before;
        fxOG_Init.cons();
        EXPECT_EQ(before.all(), Singletons().all()) << "none was missing";
        for (int missing = 0; missing < 6; ++missing) {
            SCOPED_TRACE(missing);
            const auto old = Singletons().all();
            if (missing == 0)
                fx_propertyNames = nullptr;
            else if (missing == 1)
                fx_nextDataType = nullptr;
            else if (missing == 2)
                fx_theExecutive = nullptr;
            else if (missing == 3)
                fx_theEventHandler = nullptr;
            else if (missing == 4)
                fx_nextEventType = nullptr;
            else
                fx_theDebugger = nullptr;
            fxOG_Init.cons();
            const auto present = Singletons().all();
            for (int i = 0; i < 6; ++i) {
                const auto index = static_cast<unsigned int>(i);
                EXPECT_NE(nullptr, present[index]);
                EXPECT_EQ(i != missing, old[index] == present[index]) << i;
            }
        }
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

TEST_F(fxToolkitObjectsDeathTest, typesAreDrawnOnlyWithTheirSequencer) {
    const auto check = [] {
        for (unsigned short* type : dataTypes)
            *type = 99;
        fxET_Unknown = fxET_MessageEvent = 99;
        fxOG_Init.cons();
        for (const unsigned short* type : dataTypes)
            EXPECT_EQ(99, *type) << "the sequencers were there";
        EXPECT_EQ(99u, fxET_Unknown);
        EXPECT_EQ(99u, fxET_MessageEvent);

        fx_nextDataType = nullptr;
        fx_nextEventType = nullptr;
        fxOG_Init.cons();
        for (unsigned short i = 0; i < 12; ++i)
            EXPECT_EQ(i, *dataTypes[i]);
        EXPECT_EQ(0u, fxET_Unknown);
        EXPECT_EQ(1u, fxET_MessageEvent);
        EXPECT_EQ(12u, (*fx_nextDataType)());
        EXPECT_EQ(2u, (*fx_nextEventType)());
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

TEST_F(fxToolkitObjectsDeathTest, hostMayInstallItsOwnObjectsBeforehand) {
    const auto check = [] {
        fxExec executive;
        fxEventHandler handler;
        fxDebug debugger(0);
        auto* sequencer = new fxSequencer;
        fx_theExecutive = &executive;
        fx_theEventHandler = &handler;
        fx_theDebugger = &debugger;
        fx_nextEventType = sequencer;
        fxOG_Init.cons();
        EXPECT_EQ(&executive, fx_theExecutive);
        EXPECT_EQ(&handler, fx_theEventHandler);
        EXPECT_EQ(&debugger, fx_theDebugger);
        EXPECT_EQ(sequencer, fx_nextEventType);
        EXPECT_EQ(0u, sequencer->getRanges().length()) << "nothing is drawn from it";
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

TEST_F(fxToolkitObjectsDeathTest, convertersAreCreatedAfterTheTypesAreDrawn) {
    const auto check = [] {
        // Conversions made before would be between these.
        for (unsigned short i = 0; i < 12; ++i)
            *dataTypes[i] = static_cast<unsigned short>(50000 + i);
        fx_nextDataType = nullptr;
        fxOG_Init.cons();
        EXPECT_EQ(nullptr, fxConverter::findConverter(50002, 50004));
        EXPECT_NE(nullptr, fxConverter::findConverter(fxDT_int, fxDT_float));

        // And they are made each time, whether types are drawn or not.
        fxDT_int = 50102;
        fxOG_Init.cons();
        EXPECT_NE(nullptr, fxConverter::findConverter(50102, fxDT_float));
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

TEST_F(fxToolkitObjectsDeathTest, singletonsOutliveTheCleanup) {
    const auto check = [] {
        const Singletons before;
        fxOG_Init.dest();
        fxCleanupGlobalOrderings();
        fxCleanupGlobalOrderings();
        EXPECT_EQ(before.all(), Singletons().all());
        EXPECT_NE(65535, fxProperty::allocNewTag("still usable"));
        fx_theEventHandler->distributeEvents();
        EXPECT_EQ(0, fx_theExecutive->willBlock());
        EXPECT_NE(nullptr, fxConverter::findConverter(fxDT_int, fxDT_float));
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}
