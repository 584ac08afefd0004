// docs/safety.md: its example says what it shows, and the messages it explains are the library's.

#include <csignal>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxTypedArrays.h"
#include "tests/support/misuse.h"
#include "tests/support/runProgram.h"

namespace {
const std::string sourceFolder = KELVOFXDS_SOURCE_DIR "/";

std::string document() { return bytesOf(sourceFolder + "docs/safety.md"); }

// A source with texts that go on in the next line joined.
std::string joined(std::string source) {
    for (std::size_t at = source.find("\"\n"); at != std::string::npos;
         at = source.find("\"\n", at + 1)) {
        const std::size_t next = source.find_first_not_of(" ", at + 2);
        if (next != std::string::npos && source[next] == '"')
            source.erase(at, next + 1 - at);
    }
    return source;
}

void example() {
    fxIntArray numbers(5);
    numbers.remove(7, 1);
}
}  // namespace

TEST(safetyDocDeathTest, exampleSaysWhatIsShown) {
    const std::string line = "fxIntArray::remove: start 7 beyond length 5\n";
    EXPECT_NE(std::string::npos, document().find("```text\n" + line + "```"));
    EXPECT_NE(std::string::npos, document().find("    numbers.remove(7, 1);\n"));
    if (libraryIsChecked) {
        EXPECT_EXIT(example(), testing::KilledBySignal(SIGABRT), testing::Eq(line));
    }
}

// Each is a clause of a message in the sources, as the tests of misuse have it.
TEST(safetyDoc, messagesAreThoseOfTheTests) {
    const std::string text = document();
    const struct {
        const char* clause;
        const char* test;
    } cases[] = {
        {"elem is null", "containers/fxArrayChecked"},
        {"n 536870912 beyond the addressable 536870911", "transcribe/transcribeChecked"},
        {"emptyString is byte 120: something was written to an empty string", "str/fxStrChecked"},
        {"byte 115 stands behind the text: something was written beyond length 4",
         "str/fxStrChecked"},
        {"the object has been destroyed already", "core/coreChecked"},
        {"the object is still held by 1 of all properties, transcribers and messages",
         "transcribe/transcribeChecked"},
        {"the holder has been deleted already; what is sent belongs to its",
         "values/valuesChecked"},
        {"event 42 is queued: it belongs to the queue until it is removed",
         "objects/objectsChecked"},
        {"called by another thread than the one that called fxInitializeToolkit",
         "objects/objectsChecked"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.clause);
        const std::string test = sourceFolder + "tests/" + c.test + "_test.cpp";
        EXPECT_NE(std::string::npos, text.find(c.clause));
        EXPECT_NE(std::string::npos, joined(bytesOf(test)).find(c.clause));
    }
}
