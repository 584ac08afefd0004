// What keeps a program from being run at all: links, hints and loops that no
// program has.

#include <malloc.h>
#include <pthread.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/pattern/fxRegEngine.h"
#include "tests/support/compiled.h"
#include "tests/support/regErrors.h"

namespace {

const unsigned int nodeSize = 3;

unsigned int opAt(const fxregexp& program, unsigned int at) {
    return static_cast<unsigned char>(program.program[at]);
}

bool isText(unsigned int op) { return op == OP_EXACT || op == OP_ANYOF || op == OP_ANYBUT; }

// Where the nodes of a sound program are, in its order; the last one is its end.
std::vector<unsigned int> nodesOf(const fxregexp& program) {
    std::vector<unsigned int> nodes(1, 1);
    while (opAt(program, nodes.back()) != OP_END) {
        unsigned int next = nodes.back() + nodeSize;
        if (isText(opAt(program, nodes.back())))
            next += static_cast<unsigned int>(std::strlen(program.program + next)) + 1;
        nodes.push_back(next);
    }
    return nodes;
}

void setLink(fxregexp& program, unsigned int at, unsigned int offset) {
    program.program[at + 1] = static_cast<char>(offset >> 8);
    program.program[at + 2] = static_cast<char>(offset);
}

// The first node with this operation; 0 if there is none.
unsigned int nodeWith(const fxregexp& program, unsigned int op) {
    for (const unsigned int at : nodesOf(program)) {
        if (opAt(program, at) == op)
            return at;
    }
    return 0;
}

// A block with these nodes behind the magic byte, and not a byte more.
Compiled handMade(const std::string& nodes) {
    const std::size_t fixed = offsetof(fxregexp, program);
    Compiled block(static_cast<fxregexp*>(std::calloc(1, fixed + 1 + nodes.size())));
    char* const bytes = reinterpret_cast<char*>(block.get()) + fixed;
    bytes[0] = static_cast<char>(fxRegMagic);
    std::memcpy(bytes + 1, nodes.data(), nodes.size());
    return block;
}

std::string node(unsigned int op, unsigned int next) {
    return {static_cast<char>(op), static_cast<char>(next >> 8), static_cast<char>(next)};
}

// The search finds nothing, says so once, and does not try anything.
void expectRefused(fxregexp& program, const char* subject) {
    char earlier[] = "earlier";
    for (unsigned int i = 0; i < fxregexp::groupCount; ++i)
        program.startp[i] = program.endp[i] = earlier;
    takeRegErrors();
    EXPECT_EQ(0, fxregexec(&program, subject));
    EXPECT_EQ(Messages{"corrupted program"}, takeRegErrors());
    for (unsigned int i = 0; i < fxregexp::groupCount; ++i) {
        EXPECT_EQ(earlier, program.startp[i]);
        EXPECT_EQ(earlier, program.endp[i]);
    }
}

// Ends, and what it leaves lies in the subject.
void expectSane(fxregexp& program, const std::string& subject) {
    const char* const start = subject.c_str();
    const char* const end = start + subject.size();
    for (unsigned int i = 0; i < fxregexp::groupCount; ++i)
        program.startp[i] = program.endp[i] = nullptr;
    if (fxregexec(&program, start)) {
        EXPECT_NE(nullptr, program.startp[0]);
        EXPECT_NE(nullptr, program.endp[0]);
    }
    for (unsigned int i = 0; i < fxregexp::groupCount; ++i) {
        for (const char* place : {program.startp[i], program.endp[i]})
            EXPECT_TRUE(!place || (start <= place && place <= end));
    }
}

const char* const patterns[] = {"abc",        "(a|b)*c",    "a*b[cd]+$",     "(a+|b)?c",
                                "(a(b|c)*)+", "x|\\<y\\>z", "[^a]*(ab?)*cd", "^(.)*(.)+$"};
const char* const subjects[] = {"", "abc", "aabbc", "bdddc", "ababab", "xyzzzzzzzzzzzzzzzzzzzz"};

}  // namespace

// Every link of every program, to everywhere.
TEST(fxRegProgram, aLinkThatLeadsToNoNodeEndsTheSearch) {
    for (const char* pattern : patterns) {
        const Compiled program = compiled(pattern);
        const std::vector<unsigned int> nodes = nodesOf(*program);
        const unsigned int size = nodes.back() + nodeSize;
        std::vector<bool> isNode(size, false);
        for (const unsigned int at : nodes)
            isNode[at] = true;
        for (const unsigned int at : nodes) {
            const std::string before(program->program + at, nodeSize);
            for (unsigned int offset = 1; offset <= 0xFFFF;
                 offset += offset < 2 * size ? 1 : 4999) {
                const bool back = opAt(*program, at) == OP_BACK;
                const unsigned int target = back ? at - offset : at + offset;
                if (opAt(*program, at) == OP_END)
                    continue;
                setLink(*program, at, offset);
                SCOPED_TRACE(testing::Message() << pattern << ", " << at << " to " << target);
                for (const char* subject : subjects) {
                    if (target < size && isNode[target])
                        expectSane(*program, subject);
                    else
                        expectRefused(*program, subject);
                }
            }
            std::memcpy(program->program + at, before.data(), nodeSize);
        }
    }
}

TEST(fxRegProgram, aLoopThatConsumesNothingEndsTheSearch) {
    const struct {
        const char* pattern;
        unsigned int op, becomes;
    } rows[] = {{"(.)*x", OP_ANY, OP_NOTHING},      {"(.)*x", OP_ANY, OP_BOL},
                {"(.)*x", OP_ANY, OP_EOL},          {"(.)*x", OP_ANY, OP_WORDSTART},
                {"(.)*x", OP_ANY, OP_WORDEND},      {"(.)*x", OP_ANY, OP_OPEN + 2},
                {"(.)*x", OP_ANY, OP_CLOSE + 9},    {"(.)+x", OP_ANY, OP_NOTHING},
                {"(a|.)*x", OP_ANY, OP_NOTHING},    {"(a|b|.)+x", OP_ANY, OP_BOL},
                {"(a+)*x", OP_PLUS, OP_STAR},       {"((b)*.)+x", OP_ANY, OP_NOTHING},
                {"((.)*a|b)*x", OP_ANY, OP_NOTHING}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.pattern << ": " << row.op << " to " << row.becomes);
        const Compiled program = compiled(row.pattern);
        const unsigned int at = nodeWith(*program, row.op);
        ASSERT_NE(0U, at);
        EXPECT_EQ(1, fxregexec(program.get(), "aax"));
        program->program[at] = static_cast<char>(row.becomes);
        for (const char* subject : {"", "x", "aax", "bbb"})
            expectRefused(*program, subject);
    }
}

TEST(fxRegProgram, aLoopWithoutAChoiceEndsTheSearch) {
    const std::string text = std::string("a") + '\0', noText(1, '\0');
    const std::string end = node(OP_END, 0);
    // Nothing, and back.
    expectRefused(*handMade(node(OP_NOTHING, 3) + node(OP_BACK, 3)), "a");
    // Two ways back, of which neither makes a loop without the other.
    expectRefused(
        *handMade(node(OP_NOTHING, 6) + node(OP_NOTHING, 6) + node(OP_BACK, 3) + node(OP_BACK, 9)),
        "a");
    // A run without a byte.
    expectRefused(*handMade(node(OP_EXACT, 4) + noText + node(OP_BACK, 4)), "a");
    // A repetition that can be left at once.
    expectRefused(*handMade(node(OP_STAR, 6) + node(OP_ANY, 0) + node(OP_BACK, 6)), "a");
    // These end where the subject does.
    takeRegErrors();
    EXPECT_EQ(0, fxregexec(handMade(node(OP_ANY, 3) + node(OP_BACK, 3)).get(), "aaa"));
    EXPECT_EQ(0, fxregexec(handMade(node(OP_EXACT, 5) + text + node(OP_BACK, 5)).get(), "aaa"));
    EXPECT_EQ(
        0, fxregexec(handMade(node(OP_PLUS, 6) + node(OP_ANY, 0) + node(OP_BACK, 6)).get(), "aaa"));
    EXPECT_EQ(Messages(), takeRegErrors());
}

// As many loops as there can be groups, in each other and behind each other.
TEST(fxRegProgram, loopsThatConsumeRunHoweverTheyAreNested) {
    takeRegErrors();
    EXPECT_EQ("0:0-5 1:4-5 2:1-2", found("((a)*b|c)*", "aabcc"));
    EXPECT_EQ(1, fxregexec(compiled("(((((((((a)*b)*c)*d)*e)*f)*g)*h)*i)*$").get(), "aabcbci"));
    EXPECT_EQ(1, fxregexec(compiled("(((((((((a)+)+)+)+)+)+)+)+)+$").get(), "aaaa"));
    EXPECT_EQ(1, fxregexec(compiled("((a)*b|c(d)*|e(f)*)*((g)*h(i)*)*$").get(), "aabcddefcegghi"));
    EXPECT_EQ(1, fxregexec(compiled("(a(b(c(d(e(f(g(h(i)*)*)*)*)*)*)*)*)*$").get(), "abcabdcd"));
    EXPECT_EQ(Messages(), takeRegErrors());
}

// Whatever it was, and whatever has been run in between.
TEST(fxRegProgram, aProgramIsLookedAtAgainBeforeEverySearch) {
    std::vector<Compiled> others;
    for (const char* pattern : patterns)
        others.push_back(compiled(pattern));
    const Compiled program = compiled("(.)*x");
    const unsigned int at = nodeWith(*program, OP_ANY);
    for (unsigned int round = 0; round < 20; ++round) {
        EXPECT_EQ(1, fxregexec(program.get(), "aax"));
        EXPECT_EQ(1, fxregexec(compiled("(.)*x").get(), "aax"));
        program->program[at] = OP_NOTHING;
        expectRefused(*program, "aax");
        expectRefused(*program, "aax");
        program->program[at] = OP_ANY;
        expectSane(*others[round % others.size()], "abc");
    }
}

// What is kept of a program is that of its bytes.
TEST(fxRegProgram, aChangedProgramMeansWhatItSaysNow) {
    const Compiled program = compiled("x[ab]+(cd|ef)y");
    const auto changed = [&](const char* text, char becomes) {
        char* const place = static_cast<char*>(
            memmem(program->program + 1,
                   malloc_usable_size(program.get()) - offsetof(fxregexp, program) - 1, text,
                   std::strlen(text)));
        ASSERT_TRUE(place != nullptr);
        *place = becomes;
    };
    for (unsigned int round = 0; round < 3; ++round) {
        EXPECT_EQ(1, fxregexec(program.get(), "xabefy"));
        EXPECT_EQ(0, fxregexec(program.get(), "xabgfy"));
        changed("ef", 'g');
        EXPECT_EQ(0, fxregexec(program.get(), "xabefy"));
        EXPECT_EQ(1, fxregexec(program.get(), "xabgfy"));
        changed("ab", 'q');
        EXPECT_EQ(0, fxregexec(program.get(), "xabgfy"));
        EXPECT_EQ(1, fxregexec(program.get(), "xqbgfy"));
        changed("qb", 'a');
        changed("gf", 'e');
        program->startchar = 'y';
        EXPECT_EQ(0, fxregexec(program.get(), "xabefy"));
        program->startchar = 'x';
    }
}

TEST(fxRegProgram, aProgramAtTheAddressOfAnotherIsItself) {
    const std::size_t size = sizeof(fxregexp) + 200;
    fxregexp* const block = static_cast<fxregexp*>(std::malloc(size));
    ASSERT_TRUE(block != nullptr);
    std::memset(static_cast<void*>(block), 0, size);
    const char* const subject = "dc7=";
    for (unsigned int round = 0; round < 40; ++round) {
        const bool odd = round % 2 != 0;
        const Compiled source = compiled(odd ? "[0-9]+=" : "(c|d)+[0-9]=");
        std::memcpy(static_cast<void*>(block), source.get(),
                    std::min(size, malloc_usable_size(source.get())));
        EXPECT_EQ(odd ? "0:2-4" : "0:0-4 1:1-2",
                  fxregexec(block, subject) ? groupsOf(*block, subject) : "none")
            << round;
    }
    std::free(block);
}

// More than are kept, long ones too, each between others.
TEST(fxRegProgram, manyProgramsTakeTurns) {
    std::vector<Compiled> programs;
    for (unsigned int i = 0; i < 100; ++i)
        programs.push_back(compiled("(" + std::string(i * 20, 'x') + "|[a-c]+" + std::to_string(i) +
                                    "|[^a-z]b)="));
    for (unsigned int round = 0; round < 3; ++round) {
        for (unsigned int i = 0; i < programs.size(); ++i) {
            const std::string subject = "  bca" + std::to_string(i) + "=";
            ASSERT_EQ(1, fxregexec(programs[i].get(), subject.c_str())) << i;
            EXPECT_EQ(subject.c_str() + 2, programs[i]->startp[0]);
            EXPECT_EQ(subject.c_str() + subject.size(), programs[i]->endp[0]);
        }
    }
}

namespace {
struct Worker {
    unsigned int seed;
    unsigned int wrong;
};

// Searches with programs of its own.
void* searchOften(void* argument) {
    Worker& worker = *static_cast<Worker*>(argument);
    for (unsigned int i = 0; i < 4000; ++i) {
        const std::string number = std::to_string(worker.seed + i % 50);
        const Compiled program = compiled("([a-z]+|" + number + ")=(" + number + "|x)+;");
        const std::string subject = "..." + number + "=x" + number + ";";
        for (unsigned int again = 0; again < 3; ++again) {
            const int result = fxregexec(program.get(), subject.c_str());
            worker.wrong += result != 1 || program->startp[0] != subject.c_str() + 3 ||
                            program->endp[0] != subject.c_str() + subject.size();
        }
        worker.wrong += fxregexec(program.get(), "abc=y;") != 0;
    }
    return nullptr;
}
}  // namespace

TEST(fxRegProgram, threadsSearchWithProgramsOfTheirOwnAtOneTime) {
    Worker workers[4] = {{1000, 0}, {2000, 0}, {1000, 0}, {400, 0}};
    pthread_t threads[4];
    for (unsigned int i = 0; i < 4; ++i)
        ASSERT_EQ(0, pthread_create(&threads[i], nullptr, searchOften, &workers[i]));
    for (unsigned int i = 0; i < 4; ++i) {
        ASSERT_EQ(0, pthread_join(threads[i], nullptr));
        EXPECT_EQ(0U, workers[i].wrong) << i;
    }
}

TEST(fxRegProgram, aTextThatMustBeThereMustBeInTheProgram) {
    const Compiled program = compiled("a*bcd");
    ASSERT_STREQ("bcd", program->must);
    char* const must = program->must;
    char elsewhere[] = "bcd";
    const struct {
        char* must;
        int length;
        bool isThere;
    } rows[] = {{must, 3, true},
                {must + 1, 2, true},
                {must, 4, false},
                {must, 0, false},
                {must, -1, false},
                {must, 0x7FFFFFFF, false},
                {elsewhere, 3, false},
                {program->program - 1, 1, false},
                {reinterpret_cast<char*>(program.get()), 1, false},
                {must + 1000000, 1, false},
                {reinterpret_cast<char*>(1), 1, false},
                {nullptr, 3, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        program->must = row.must;
        program->mustlen = row.length;
        if (row.isThere)
            EXPECT_EQ(1, fxregexec(program.get(), "xabcd"));
        else
            expectRefused(*program, "xabcd");
    }
}

TEST(fxRegProgram, aByteThatStartsEveryMatchMustBeInTheProgram) {
    const Compiled program = compiled("[ab]c|.d");
    for (const char startchar : {'a', 'c', 'd'}) {
        program->startchar = startchar;
        expectSane(*program, "aacd");
    }
    for (const char startchar : {'q', '\xff'}) {
        program->startchar = startchar;
        expectRefused(*program, "qd");
    }
}

// Places are tried where the byte is, whatever the program begins with.
TEST(fxRegProgram, aByteThatStartsNoMatchStillBeginsAttempts) {
    const Compiled program = compiled("ab*");
    program->startchar = 'b';
    char earlier[] = "earlier";
    program->startp[0] = earlier;
    EXPECT_EQ(0, fxregexec(program.get(), "xbx"));
    EXPECT_EQ(nullptr, program->startp[0]);
    program->startp[0] = earlier;
    EXPECT_EQ(0, fxregexec(program.get(), "xax"));
    EXPECT_EQ(earlier, program->startp[0]);
}

// Whatever stands where the end was, nothing is found; where it needs more than
// the block has, nothing is tried.
TEST(fxRegProgram, aProgramWithoutItsEndFindsNothing) {
    for (const char* pattern : patterns) {
        const Compiled program = compiled(pattern);
        const unsigned int end = nodesOf(*program).back();
        for (unsigned int op = 1; op < 256; ++op) {
            SCOPED_TRACE(testing::Message() << pattern << ", " << op);
            program->program[end] = static_cast<char>(op);
            for (const char* subject : subjects)
                EXPECT_EQ(0, fxregexec(program.get(), subject));
        }
        program->program[end] = OP_BRANCH;
        setLink(*program, end, nodeSize);
        for (const char* subject : subjects)
            expectSane(*program, subject);
    }
}

TEST(fxRegProgram, aTextWithoutItsNulEndsTheSearch) {
    for (const char* pattern : {"abc", "[ab]", "a*", "[ab]+", "x(abc)*"}) {
        const Compiled program = compiled(pattern);
        for (const unsigned int at : nodesOf(*program)) {
            if (!isText(opAt(*program, at)))
                continue;
            char* const nul =
                program->program + at + nodeSize + std::strlen(program->program + at + nodeSize);
            *nul = 'x';
            expectRefused(*program, "abc");
            *nul = '\0';
        }
    }
}

TEST(fxRegProgram, theShortestProgramsAreLookedAtWithinTheirBlocks) {
    takeRegErrors();
    EXPECT_EQ(1, fxregexec(handMade(std::string(1, '\0')).get(), "a"));
    const Compiled end = handMade(std::string(1, '\0'));
    end->startchar = 'a';
    expectRefused(*end, "a");
    for (const unsigned int op : {OP_BOL, OP_EXACT, OP_BRANCH, OP_STAR, OP_BACK}) {
        SCOPED_TRACE(op);
        for (unsigned int bytes = 1; bytes <= nodeSize; ++bytes)
            EXPECT_EQ(0, fxregexec(handMade(node(op, 0).substr(0, bytes)).get(), "a"));
    }
}

namespace {
// A subject in a block of its own size, so that reading behind its end shows.
struct Exactly {
    explicit Exactly(const std::string& text) : bytes(text.begin(), text.end()) {
        bytes.push_back('\0');
        bytes.shrink_to_fit();
    }
    std::vector<char> bytes;
};

std::string foundBy(const std::string& nodes, const std::string& subject) {
    const Compiled program = handMade(nodes);
    const Exactly text(subject);
    takeRegErrors();
    const int result = fxregexec(program.get(), text.bytes.data());
    EXPECT_EQ(Messages(), takeRegErrors());
    return result ? groupsOf(*program, text.bytes.data()) : "none";
}
}  // namespace

// Its first byte, the NUL, is compared before the rest.
TEST(fxRegProgram, aRunWithoutAByteMatchesAtTheEndAlone) {
    const std::string nothing = node(OP_EXACT, 4) + '\0', end = node(OP_END, 0);
    EXPECT_EQ("0:2-2", foundBy(nothing + end, "ab"));
    EXPECT_EQ("0:0-0", foundBy(nothing + end, ""));
    EXPECT_EQ("0:1-2", foundBy(node(OP_ANY, 3) + nothing + end, "ab"));
}

TEST(fxRegProgram, aRunWithoutAByteIsRepeatedNoTimes) {
    const std::string nothing = node(OP_EXACT, 0) + '\0', end = node(OP_END, 0);
    EXPECT_EQ("0:0-0", foundBy(node(OP_STAR, 7) + nothing + end, ""));
    EXPECT_EQ("0:0-1", foundBy(node(OP_ANY, 3) + node(OP_STAR, 7) + nothing + end, "ab"));
    EXPECT_EQ("none", foundBy(node(OP_PLUS, 7) + nothing + end, "ab"));
    // The same when the search remembers, to which the first alternative leads.
    const std::string anything = node(OP_STAR, 6) + node(OP_ANY, 0);
    const std::string absent = std::string("#") + '\0';
    const std::string second =
        node(OP_BRANCH, 15) + node(OP_STAR, 7) + nothing + node(OP_EXACT, 5) + absent;
    const std::string first =
        node(OP_BRANCH, 26) + anything + anything + anything + node(OP_ANYOF, 5 + 15) + absent;
    ASSERT_EQ(15U, second.size());
    ASSERT_EQ(26U, first.size());
    EXPECT_EQ("none", foundBy(first + second + end, std::string(500, 'a')));
}

// Changes a few bytes, of the program or of the hints, and runs what has become.
TEST(fxRegProgram, noDamageLeadsOutOfTheBlockOrTheSubject) {
    const unsigned int seed = 20240817, rounds = 3000;
    std::printf("seed %u\n", seed);
    std::mt19937 random(seed);
    for (const char* pattern : patterns) {
        const Compiled sound = compiled(pattern);
        const std::size_t size = nodesOf(*sound).back() + nodeSize;
        const std::string bytes(sound->program + 1, size - 1);
        for (unsigned int round = 0; round < rounds; ++round) {
            std::string damaged = bytes;
            for (unsigned int changes = 1 + random() % 4; changes != 0; --changes) {
                const unsigned int small[] = {
                    0, 1, 3, OP_BRANCH, OP_BACK, OP_NOTHING, random() & 63};
                char& byte = damaged[random() % damaged.size()];
                byte = static_cast<char>(random() % 4 != 0 ? small[random() % 7] : random());
            }
            const Compiled program = handMade(damaged);
            program->startchar = sound->startchar;
            program->anchored = sound->anchored;
            if (sound->must) {
                program->must = program->program + (sound->must - sound->program);
                program->mustlen = sound->mustlen;
            }
            if (random() % 8 == 0)
                program->must += random() % 16;
            SCOPED_TRACE(testing::Message() << pattern << ": " << shown(damaged));
            for (const char* subject : subjects)
                expectSane(*program, subject);
            takeRegErrors();
        }
    }
}
