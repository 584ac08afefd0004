// docs/wiring.md: its code is the code below, in this order, and prints what it says.

#include <cstdio>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/kelvofxds.h"
#include "tests/support/runProgram.h"

namespace {
const std::string sourceFolder = KELVOFXDS_SOURCE_DIR "/";

std::string document() { return bytesOf(sourceFolder + "docs/wiring.md"); }

// The texts of the blocks fenced as `language`.
std::vector<std::string> blocksOf(const std::string& language) {
    const std::string text = document();
    const std::string start = "```" + language + "\n";
    std::vector<std::string> blocks;
    for (std::size_t at = text.find(start); at != std::string::npos; at = text.find(start, at)) {
        at += start.size();
        blocks.push_back(text.substr(at, text.find("```", at) - at));
    }
    return blocks;
}

// Without blanks and line ends, which depend on where code stands.
std::string squeezed(const std::string& code) {
    std::string text;
    for (const char c : code) {
        if (c != ' ' && c != '\n')
            text += c;
    }
    return text;
}

std::string printed() {
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

// What the document shows.

class Thermometer : public fxObj {
public:
    Thermometer() : degrees(addOutput("degrees", fxDT_float)) {}
    void measure(float value) { sendFloat(degrees, value, fxSendNow); }

private:
    fxOutputChannel* degrees;
};

class Display : public fxObj {
public:
    Display() {
        fxAddInput(this, "text", &Display::show);
        fxOnInput(this, "line", [](const fxStr& line) { std::printf("%s\n", line.c_str()); });
    }

private:
    void show(const char* text) { std::printf("it is %s degrees\n", text); }
};
}  // namespace

TEST(wiringDoc, codePrintsWhatItSays) {
    fxInitializeToolkit();
    const std::vector<std::string> said = blocksOf("text");
    ASSERT_EQ(5U, said.size());

    testing::internal::CaptureStdout();
    Thermometer thermometer;
    Display display;
    thermometer.connect("degrees", &display, "text");
    thermometer.measure(21.5F);
    EXPECT_EQ(said[0], printed());

    testing::internal::CaptureStdout();
    fxStr why;
    if (!fxTryConnect(&thermometer, "degree", &display, "text", &why))
        std::printf("%s\n", why.c_str());
    if (!fxTryConnect(&thermometer, "degrees", &display, "line", &why))
        std::printf("%s\n", why.c_str());
    EXPECT_EQ(said[1], printed());

    testing::internal::CaptureStdout();
    fxSetWiringLog(stdout);
    thermometer.connect("degree", &display, "text");
    thermometer.connect("degrees", &display, "text");
    thermometer.disconnect("degrees", &display, "text");
    {
        Display second;
        thermometer.connect("degrees", &second, "text");
    }
    fxSetWiringLog(nullptr);
    EXPECT_EQ(said[2], printed());

    testing::internal::CaptureStdout();
    thermometer.connect("degrees", &display, "text");
    fxObj* const objects[] = {&thermometer, &display};
    fxWriteDot(stdout, objects, 2);
    EXPECT_NE(std::string::npos, printed().find("n0:o0:e -> n1:i1:w"));

    testing::internal::CaptureStdout();
    fxObj gate;
    fxOutputChannel* opened = gate.addOutput("opened", fxDT_int);
    fxObj listener;
    fxOnInput(&listener, "each", [](int n) { std::printf("each %d\n", n); });
    fxOnInput(
        &listener, "newest", [](int n) { std::printf("newest %d\n", n); }, true);
    gate.connect("opened", &listener, "each");
    gate.connect("opened", &listener, "newest");
    for (int n = 1; n <= 3; ++n)
        gate.sendInt(opened, n, fxObj::fxSendQueued);
    std::printf("sent\n");
    fx_theEventHandler->distributeEvents();
    EXPECT_EQ(said[3], printed());

    testing::internal::CaptureStdout();
    auto* bell = new fxObj;
    fxOnInput(bell, "ring", [bell](int n) {
        delete bell;
        std::printf("rang once, for %d\n", n);
    });
    gate.connect("opened", bell, "ring");
    gate.sendInt(opened, 4, fxObj::fxSendNow);
    gate.sendInt(opened, 5, fxObj::fxSendNow);
    fx_theEventHandler->distributeEvents();
    EXPECT_EQ(said[4], printed());
}

TEST(wiringDoc, codeIsWhatIsCompiledHere) {
    const std::string source = squeezed(bytesOf(sourceFolder + "tests/docs/wiringDoc_test.cpp"));
    std::size_t at = 0;
    const std::vector<std::string> blocks = blocksOf("cpp");
    EXPECT_EQ(8U, blocks.size());
    for (const std::string& block : blocks) {
        at = source.find(squeezed(block), at);
        ASSERT_NE(std::string::npos, at) << block;
    }
}

// Each row of the table of conversions, and no other pair.
TEST(wiringDoc, conversionsAreThoseOfTheLibrary) {
    fxInitializeToolkit();
    const char* const names[] = {"void",  "bool",  "int",   "long",   "float",   "double",
                                 "char*", "fxStr", "void*", "fxObj*", "fxData*", "fxStrArray"};
    const std::string text = document();
    for (unsigned short from = 0; from < std::size(names); ++from) {
        std::string row;
        for (unsigned short to = 0; to < std::size(names); ++to) {
            fxConverter* link = fxConverter::findConverter(from, to);
            if (link)
                row += (row.empty() ? "" : ", ") + ("`" + std::string(names[to]) + "`");
            delete link;
        }
        const std::string start = "| `" + std::string(names[from]) + "` | ";
        EXPECT_EQ(!row.empty(), text.find(start + row + " |\n") != std::string::npos)
            << start << row;
    }
}

// The picture is the one that the example draws: its classes, channels, types and conversions.
#ifdef KELVOFXDS_PIPELINE
TEST(wiringDoc, pictureIsThatOfThePipeline) {
    const std::string svg = bytesOf(sourceFolder + "docs/pipeline.svg");
    const std::string dot = Program{KELVOFXDS_PIPELINE}.run({"--dot"}).out;
    const std::regex cell("(?:<b>|>)([^<>]+?) ?</?(?:b|font)");
    unsigned int cells = 0;
    for (std::sregex_iterator match(dot.begin(), dot.end(), cell), end; match != end; ++match) {
        ++cells;
        EXPECT_NE(std::string::npos, svg.find(">" + (*match)[1].str())) << (*match)[1];
    }
    EXPECT_EQ(32U, cells);
    const auto count = [](const std::string& text, const std::string& what) {
        unsigned int n = 0;
        for (std::size_t at = text.find(what); at != std::string::npos;
             at = text.find(what, at + 1))
            ++n;
        return n;
    };
    EXPECT_EQ(count(dot, " -> "), count(svg, "class=\"edge\""));
    EXPECT_EQ(count(dot, "int &#8594; char*"), count(svg, "int → char*"));
    EXPECT_EQ(count(dot, "char* &#8594; int"), count(svg, "char* → int"));
}
#endif
