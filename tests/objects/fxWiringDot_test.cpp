#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/objects/fxWiring.h"
#include "kelvofxds/values/fxConverter.h"
#include "tests/support/dataFlow.h"
#include "tests/support/runProgram.h"

namespace {

struct Reader : fxObj {
    Reader() : line(addOutput("line", fxDT_CharPtr)), size(addOutput("size", fxDT_int)) {}
    fxOutputChannel* line;
    fxOutputChannel* size;
};

struct Sum : fxObj {
    Sum() : in(fxOnInput(this, "number", [](int) {})) {}
    fxInputChannel* in;
};

struct Both : fxObj {
    Both() {
        fxOnInput(
            this, "in", [] {}, true);
        addOutput("out", fxDT_void);
        addOutput("more", fxDT_fxStr);
    }
};

std::string dotOf(const std::vector<fxObj*>& objects) {
    char* bytes = nullptr;
    std::size_t size = 0;
    std::FILE* file = ::open_memstream(&bytes, &size);
    EXPECT_TRUE(fxWriteDot(file, objects.data(), static_cast<unsigned int>(objects.size())));
    std::fclose(file);
    std::string dot(bytes, size);
    std::free(bytes);
    return dot;
}

// The lines with an edge.
std::string edgesOf(const std::string& dot) {
    std::istringstream in(dot);
    std::string edges;
    for (std::string line; std::getline(in, line);) {
        if (line.find(" -> ") != std::string::npos)
            edges += line.substr(4) + '\n';
    }
    return edges;
}

// What is shown of each cell: the text without mark-up, a line each.
std::string shownIn(const std::string& dot) {
    std::string shown;
    for (std::size_t at = dot.find("<td"); at != std::string::npos; at = dot.find("<td", at)) {
        const std::size_t end = dot.find("</td>", at);
        for (bool isMarkup = false; at < end; ++at) {
            if (dot[at] == '<' || dot[at] == '>')
                isMarkup = dot[at] == '<';
            else if (!isMarkup)
                shown += dot[at];
        }
        shown += '\n';
    }
    return shown;
}

bool hasGraphviz() { return std::system("dot -V >/dev/null 2>&1") == 0; }

// The picture in SVG; complaints are in it, too.
std::string svgOf(const std::string& dot) {
    const TemporaryFolder folder;
    const std::string source = folder.file("wiring.dot", dot);
    const std::string picture = folder / "wiring.svg";
    const std::string command = "dot -Tsvg " + source + " >" + picture + " 2>&1";
    EXPECT_EQ(0, std::system(command.c_str()));
    return bytesOf(picture);
}

const char redEdge[] = ", color=\"#b44d12\", fontcolor=\"#b44d12\"]\n";

class fxWiringDot : public DataFlowTest {
protected:
    Reader reader;
    Sum sum;
    Both both;
};

}  // namespace

TEST_F(fxWiringDot, showsClassesChannelsAndTypes) {
    EXPECT_EQ(
        "Reader\nline char*\nsize int\n"
        "Sum\nnumber int\n"
        "Both\nin void, latest only\nmore fxStr\n\nout void\n"
        "fxObj\n",
        shownIn(dotOf({&reader, &sum, &both, std::make_unique<fxObj>().get()})));
}

TEST_F(fxWiringDot, showsConnectionsAndConversions) {
    reader.connect("size", &both, "in");
    reader.connect("line", &sum, "number");
    reader.connect("size", &sum, "number");
    EXPECT_EQ(std::string("n0:o0:e -> n1:i0:w [label=< char* &#8594; int >") + redEdge +
                  "n0:o1:e -> n2:i0:w\n"
                  "n0:o1:e -> n1:i0:w\n",
              edgesOf(dotOf({&reader, &sum, &both})));
    both.addOutput("out", fxDT_void);
    both.connect("out", &both, "in");
    EXPECT_EQ("n0:o1:e -> n0:i0:w\n", edgesOf(dotOf({&both, nullptr})).substr(0, 19));
}

TEST_F(fxWiringDot, passesOverNullAndWhatItHasDrawn) {
    reader.connect("size", &sum, "number");
    const std::string dot = dotOf({&reader, &sum});
    EXPECT_EQ(dot, dotOf({nullptr, &reader, &reader, nullptr, &sum, &reader, nullptr}));
    EXPECT_EQ(dotOf({}), dotOf({nullptr}));
    EXPECT_EQ("", shownIn(dotOf({nullptr})));
}

TEST_F(fxWiringDot, numbersObjectsOfOneClass) {
    Sum second, third;
    EXPECT_EQ(
        "Sum #1\nnumber int\nReader\nline char*\nsize int\nSum #2\nnumber int\n"
        "Sum #3\nnumber int\n",
        shownIn(dotOf({&second, &reader, &sum, &third})));
}

TEST_F(fxWiringDot, isTheSameForTheSameWiring) {
    std::string first;
    for (int i = 0; i < 3; ++i) {
        const std::vector<std::unique_ptr<Reader>> elsewhere(static_cast<std::size_t>(i));
        auto from = std::make_unique<Reader>();
        auto to = std::make_unique<Sum>();
        from->connect("line", to.get(), "number");
        const std::string dot = dotOf({from.get(), to.get()});
        EXPECT_EQ(i == 0 ? dot : first, dot);
        first = dot;
    }
}

TEST_F(fxWiringDot, endsConnectionsToOtherObjectsInDashes) {
    reader.connect("line", &sum, "number");
    reader.connect("size", &sum, "number");
    const std::string from = dotOf({&reader});
    EXPECT_EQ(std::string("n0:o0:e -> x0 [label=< char* &#8594; int >") +
                  ", color=\"#b44d12\", fontcolor=\"#b44d12\"] [style=dashed]\n"
                  "n0:o1:e -> x0 [style=dashed]\n",
              edgesOf(from));
    EXPECT_NE(std::string::npos, from.find("x0 [shape=box, style=\"dashed,rounded\""));
    EXPECT_NE(std::string::npos, from.find("label=<an input elsewhere "));

    const std::string to = dotOf({&sum});
    EXPECT_EQ(std::string("x0 -> n0:i0:w [label=< char* &#8594; int >") +
                  ", color=\"#b44d12\", fontcolor=\"#b44d12\"] [style=dashed]\n"
                  "x1 -> n0:i0:w [style=dashed]\n",
              edgesOf(to));
    EXPECT_NE(std::string::npos, to.find("label=<an output elsewhere "));
}

TEST_F(fxWiringDot, channelThatWasLetGoIsElsewhere) {
    sum.addInput("plain", fxDT_int, &sum, nullptr, 0);
    reader.connect("size", &sum, "plain");
    sum.addInput("plain", fxDT_int, &sum, nullptr, 0);
    EXPECT_EQ("n0:o1:e -> x0 [style=dashed]\n", edgesOf(dotOf({&reader, &sum})));
}

TEST_F(fxWiringDot, escapesWhatIsNoText) {
    fxObj object;
    const struct {
        const char *name, *label;
    } cases[] = {
        {"", "(empty)"},
        {" ", " "},
        {"a<b>&\"c\"", "a&lt;b&gt;&amp;\"c\""},
        {"]>>{}|\\N", "]&gt;&gt;{}|\\N"},
        {"\x01\n\x1F \x7F", "\\x01\\x0A\\x1F \\x7F"},
        {"gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x98\x80", nullptr},
        {"\xC3(\xE2\x82\xFF\x80", "\\xC3(\\xE2\\x82\\xFF\\x80"},
        {"\xC0\xAF\xE0\x80\xAF\xF5\x80\x80\x80", "\\xC0\\xAF\\xE0\\x80\\xAF\\xF5\\x80\\x80\\x80"},
        {"\xED\xA0\x80\xEF\xBF\xBF\xF4\x90\x80\x80",
         "\\xED\\xA0\\x80\\xEF\\xBF\\xBF\\xF4\\x90\\x80\\x80"},
        {"\xEF\xBF\xBE\xEF\xBF\xBD", "\\xEF\\xBF\\xBE\xEF\xBF\xBD"},
        {"\xC3", "\\xC3"},
    };
    for (const auto& c : cases)
        object.addOutput(c.name, fxDT_int);
    const std::string dot = dotOf({&object});
    for (const auto& c : cases) {
        const std::string label = c.label ? c.label : c.name;
        EXPECT_NE(std::string::npos, dot.find(">" + label + " <font")) << label;
    }
    if (!hasGraphviz())
        GTEST_SKIP() << "there is no dot";
    const std::string svg = svgOf(dot);
    EXPECT_EQ(std::string::npos, svg.find("Error")) << svg;
    EXPECT_EQ(std::string::npos, svg.find("Warning")) << svg;
    EXPECT_NE(std::string::npos, svg.find("gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x98\x80"));
    EXPECT_NE(std::string::npos, svg.find("\\x01\\x0A\\x1F"));
}

TEST_F(fxWiringDot, isDrawnByGraphviz) {
    if (!hasGraphviz())
        GTEST_SKIP() << "there is no dot";
    reader.connect("line", &sum, "number");
    reader.connect("size", &both, "in");
    for (const std::vector<fxObj*>& objects :
         {std::vector<fxObj*>{&reader, &sum, &both}, {&reader}, {&sum, &both}, {}}) {
        const std::string svg = svgOf(dotOf(objects));
        EXPECT_EQ(0U, svg.find("<?xml")) << svg;
        EXPECT_EQ(std::string::npos, svg.find("Warning")) << svg;
        for (const fxObj* object : objects) {
            const char* name = object == &reader ? ">Reader<" : object == &sum ? ">Sum<" : ">Both<";
            EXPECT_NE(std::string::npos, svg.find(name)) << name;
        }
    }
    const std::string all = svgOf(dotOf({&reader, &sum, &both}));
    EXPECT_NE(std::string::npos, all.find("<title>n0:e&#45;&gt;n1:w</title>"));
    EXPECT_NE(std::string::npos, all.find("char* → int"));
}

TEST_F(fxWiringDot, saysWhetherAllWasWritten) {
    fxObj* const objects[] = {&reader};
    EXPECT_FALSE(fxWriteDot(nullptr, objects, 1));
    std::FILE* full = std::fopen("/dev/full", "w");
    if (full) {
        EXPECT_FALSE(fxWriteDot(full, objects, 1));
        std::fclose(full);
    }
    std::FILE* readOnly = std::fopen("/dev/null", "r");
    ASSERT_NE(nullptr, readOnly);
    EXPECT_FALSE(fxWriteDot(readOnly, objects, 1));
    EXPECT_FALSE(fxWriteDot(readOnly, nullptr, 1));
    std::fclose(readOnly);
}

TEST_F(fxWiringDot, findsTheWayBetweenManyObjects) {
    const unsigned int n = 3000;
    std::vector<std::unique_ptr<Both>> owned;
    std::vector<fxObj*> objects;
    for (unsigned int i = 0; i < n; ++i) {
        owned.push_back(std::make_unique<Both>());
        objects.push_back(owned.back().get());
        objects[i != 0 ? i - 1 : 0]->connect("out", objects[i], "in");
    }
    const std::string dot = dotOf(objects);
    EXPECT_NE(std::string::npos, dot.find("Both</b> #3000<"));
    EXPECT_EQ(std::string::npos, dot.find("elsewhere"));
    EXPECT_NE(std::string::npos, dot.find("n2998:o1:e -> n2999:i0:w\n"));
}
