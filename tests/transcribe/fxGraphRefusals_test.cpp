// fxGraphRefusals_test.cpp - what graph readers refuse of numbers that are met again, and of
// types that their owners see differently.

#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxRef.h"
#include "kelvofxds/transcribe/fxXDRMembers.h"
#include "tests/support/graphBytes.h"
#include "tests/support/graphSteps.h"

namespace {

// Embedded in pieces, and pointed to. One whose value is 1 embeds another.
class Part : public fxXDRObj {
public:
    Part() { ++living; }
    Part(const Part&) = delete;
    Part& operator=(const Part&) = delete;
    ~Part() override {
        delete inner;
        --living;
    }
    fxTypeObj& getTypeObj() const override;
    unsigned char xdr(fxTranscriber& t) override;
    static void* create(fxTypeObj&) { return new Part; }
    static void destroy(void* object) { delete static_cast<Part*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Part*>(object)->Part::xdr(t);
    }

    int value = 0;
    Part* inner = nullptr;
    inline static int living = 0;
};

fxTypeObj Part_type("RefusedPart", 1, Part::create, Part::destroy, Part::xdr);
fxTypeObj& Part::getTypeObj() const { return Part_type; }

unsigned char Part::xdr(fxTranscriber& t) {
    if (!t.xdr(&value, 1) || value == 2)
        return 0;
    if (value == 1 && !inner)
        inner = new Part;
    return value != 1 || t.xdr(Part_type, nullptr, inner);
}

// Does the calls of its test.
class Piece : public fxXDRObj {
public:
    using Steps = std::function<unsigned char(Piece&, fxTranscriber&)>;
    Piece() { ++living; }
    Piece(const Piece&) = delete;
    Piece& operator=(const Piece&) = delete;
    ~Piece() override { --living; }
    fxTypeObj& getTypeObj() const override;
    unsigned char xdr(fxTranscriber& t) override { return !steps || steps(*this, t); }
    static void* create(fxTypeObj&) { return new Piece; }
    static void* createTwin(fxTypeObj&) {
        ++twins;
        return new Piece;
    }
    static void destroy(void* object) { delete static_cast<Piece*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Piece*>(object)->Piece::xdr(t);
    }

    Part parts[2];
    fxXDRObj* next = nullptr;
    fxXDRObj* other = nullptr;
    fxRef<Part> held;
    char* chars = nullptr;
    short* shorts = nullptr;
    fxStr names[2];

    inline static Steps steps;
    inline static int living = 0;
    inline static int twins = 0;
};

fxTypeObj Piece_type("RefusedPiece", 3, Piece::create, Piece::destroy, Piece::xdr);
fxTypeObj& Piece::getTypeObj() const { return Piece_type; }

// A record of the same name, which streams do not find.
fxTypeObj twinPiece("RefusedPiece", 3, Piece::createTwin, Piece::destroy, Piece::xdr);

unsigned char point(fxTranscriber& t, fxXDRObj*& field, fxTypeObj& type) {
    return t.xdr(&field, field, type, nullptr, nullptr);
}
unsigned char embed(fxTranscriber& t, Part& part) { return t.xdr(Part_type, nullptr, &part); }

class fxGraphRefusals : public testing::Test {
protected:
    void TearDown() override {
        Piece::steps = nullptr;
        EXPECT_EQ(0, Piece::living);
        EXPECT_EQ(0, Part::living);
    }
};

struct Refusal {
    const char* error;
    Piece::Steps steps;
    std::function<void(GraphBytes&)> make;
};

GraphBytes& piece(GraphBytes& b) { return b.type(2, "RefusedPiece", 3).record(10, {1, 2, 3}); }

}  // namespace

TEST_F(fxGraphRefusals, whatIsWrongWithNumbersAndTypesIsSaid) {
    const auto next = [](Piece& p, fxTranscriber& t) { return point(t, p.next, Piece_type); };
    const auto both = [](Piece& p, fxTranscriber& t) -> unsigned char {
        return point(t, p.next, Piece_type) && point(t, p.other, twinPiece);
    };
    const auto part = [](Piece& p, fxTranscriber& t) { return embed(t, p.parts[0]); };
    const auto parts = [](Piece& p, fxTranscriber& t) -> unsigned char {
        return embed(t, p.parts[0]) && embed(t, p.parts[1]);
    };
    const auto pointerAndPart = [](Piece& p, fxTranscriber& t) -> unsigned char {
        return point(t, p.next, Part_type) && embed(t, p.parts[0]);
    };
    const auto blocks = [](Piece& p, fxTranscriber& t) -> unsigned char {
        return t.xdr(&p.shorts, 2) && t.xdr(&p.chars, 4);
    };
    const Refusal cases[] = {
        {"type \"RefusedPiece\" has two versions, 3 and 2", next,
         [](GraphBytes& b) { piece(b).type(3, "RefusedPiece", 2).record(1).end(); }},
        {"type \"RefusedPart\" of an embedded object is not defined", part,
         [](GraphBytes& b) { piece(b).record(13, {3}, b.word(0)).end(); }},
        {"type \"RefusedPart\" has version 2; this program knows versions up to 1", part,
         [](GraphBytes& b) {
             piece(b).type(3, "RefusedPart", 2).record(13, {4}, b.word(0)).end();
         }},
        {"an embedded \"RefusedPart\" cannot be read", part,
         [](GraphBytes& b) { piece(b).type(3, "RefusedPart").record(13, {4}, b.word(2)).end(); }},
        {"two classes called \"RefusedPiece\" are expected of one object", both,
         [](GraphBytes& b) { piece(b).record(11, {3}).record(12, {3}).end(); }},
        {"number 9 is not the next one", blocks,
         [](GraphBytes& b) {
             piece(b).record(3, {9, 4}).end();
         }},
        {"number 9 is no block", blocks, [](GraphBytes& b) { piece(b).record(4, {9}).end(); }},
        {"block 3 is expected to be a \"block of shorts\" and a \"block of bytes\"", blocks,
         [](GraphBytes& b) {
             piece(b).record(3, {3, 4}).record(4, {3}).end();
         }},
        {"number 9 is no object", part, [](GraphBytes& b) { piece(b).record(14, {9}).end(); }},
        {"number 2 is no object", part,
         [](GraphBytes& b) { piece(b).type(3, "RefusedPart").record(13, {2}, b.word(0)).end(); }},
        {"number 9 is not the next one", part,
         [](GraphBytes& b) { piece(b).type(3, "RefusedPart").record(13, {9}, b.word(0)).end(); }},
        {"embedded object 3 comes as an object of its own", pointerAndPart,
         [](GraphBytes& b) { piece(b).record(11, {3}).record(14, {3}).end(); }},
        {"embedded object 4 is elsewhere", parts,
         [](GraphBytes& b) {
             piece(b).type(3, "RefusedPart").record(13, {4}, b.word(0)).record(14, {4}).end();
         }},
        {"object 1 is a \"RefusedPiece\" and a \"RefusedPart\"", part,
         [](GraphBytes& b) { piece(b).type(3, "RefusedPart").record(13, {1}, b.word(0)).end(); }},
        {"object 3 is embedded, and its pointer's owner would delete it",
         [](Piece& p, fxTranscriber& t) -> unsigned char {
             return fxXdrRef(t, p.held) && embed(t, p.parts[0]);
         },
         [](GraphBytes& b) {
             piece(b).record(11, {3}).type(4, "RefusedPart").record(13, {3}, b.word(0)).end();
         }},
        {"a string comes where an object should",
         [](Piece& p, fxTranscriber& t) { return point(t, p.next, fxXDRObj_type); },
         [](GraphBytes& b) {
             piece(b).record(11, {3}).type(4, "fxStr").record(10, {3, 4, 1}).end();
         }},
        {"a record \"end of a root\" comes where a pointer to a block should", blocks,
         [](GraphBytes& b) { piece(b).end(); }},
        {"number 7 is no object", next,
         [](GraphBytes& b) {
             piece(b).record(1).record(10, {7, 2, 3}).end();
         }},
        {"number 7 is no type", next,
         [](GraphBytes& b) {
             piece(b).record(11, {3}).record(10, {3, 7, 3}).end();
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.error);
        Piece::steps = c.steps;
        GraphBytes b;
        c.make(b);
        const GraphRead read = readGraph(b.str(), Piece_type);
        EXPECT_EQ(nullptr, read.object);
        EXPECT_EQ(c.error, withoutPlace(read.error));
        EXPECT_EQ(0, Piece::living);
    }
}

// The number of an earlier root is no embedded object's, and what a later root says of it
// has to be so.
TEST_F(fxGraphRefusals, whatIsWrongWithNumbersOfEarlierRootsIsSaid) {
    const struct {
        const char* error;
        fxTypeObj& type;
        std::function<void(GraphBytes&)> make;
    } cases[] = {
        {"object 1 belongs to an earlier root", Piece_type,
         [](GraphBytes& b) {
             b.type(4, "RefusedPiece", 3).type(5, "RefusedPart").record(10, {3, 4, 3});
             b.record(13, {1}, b.word(0)).end();
         }},
        {"number 2 is no object", Piece_type, [](GraphBytes& b) { b.record(12, {2}).end(); }},
        {"the root is a \"RefusedPart\", not a \"RefusedPiece\"", Piece_type,
         [](GraphBytes& b) { b.record(12, {1}).end(); }},
        {"a record \"null pointer\" comes where the root should end", Part_type,
         [](GraphBytes& b) { b.record(12, {1}).record(1).end(); }},
        {"a record \"pointer to a known object\" comes where the root should", Part_type,
         [](GraphBytes& b) { b.record(12, {9}).end(); }},
        {"the stream ends here", Part_type, [](GraphBytes& b) { b.record(12, {1}); }},
    };
    Piece::steps = [](Piece& p, fxTranscriber& t) { return embed(t, p.parts[0]); };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.error);
        GraphBytes b;
        b.type(2, "RefusedPart").record(10, {1, 2, 1}, b.word(0)).end().raw(std::string(1, '\0'));
        c.make(b);
        const Held<> stream(static_cast<const void*>(b.str().data()),
                            static_cast<unsigned int>(b.str().size()));
        const auto reader = graphReaderOn(stream.get());
        const std::unique_ptr<Part> first(static_cast<Part*>(reader->readObject(Part_type)));
        ASSERT_TRUE(first) << reader->lastError();
        EXPECT_EQ(nullptr, reader->readObject(c.type));
        EXPECT_EQ(c.error, withoutPlace(reader->lastError()));
    }
}

// A root that is known is found by its type, or by the type of all.
TEST_F(fxGraphRefusals, aKnownRootIsWhatItWas) {
    GraphBytes b;
    b.type(2, "RefusedPart").record(10, {1, 2, 1}, b.word(7)).end();
    for (int i = 0; i < 2; ++i)
        b.raw(std::string(1, '\0')).record(12, {1}).end();
    const Held<> stream(static_cast<const void*>(b.str().data()),
                        static_cast<unsigned int>(b.str().size()));
    const auto reader = graphReaderOn(stream.get());
    const std::unique_ptr<Part> first(static_cast<Part*>(reader->readObject(Part_type)));
    ASSERT_TRUE(first) << reader->lastError();
    EXPECT_EQ(first.get(), reader->readObject(Part_type)) << reader->lastError();
    EXPECT_EQ(first.get(), reader->readObject(fxXDRObj_type)) << reader->lastError();
}

// An object that came by itself makes room for the one that is embedded; what was embedded in
// the first has to come again with the second.
TEST_F(fxGraphRefusals, whatWasEmbeddedInAReplacedObjectComesAgain) {
    for (const bool again : {true, false}) {
        SCOPED_TRACE(again);
        unsigned int pieces = 0;
        Piece::steps = [&pieces](Piece& p, fxTranscriber& t) -> unsigned char {
            if (++pieces == 1)
                return point(t, p.next, Part_type) && point(t, p.other, Piece_type);
            return embed(t, p.parts[0]);
        };
        GraphBytes b;
        piece(b).record(11, {3}).record(11, {4}).type(5, "RefusedPart");
        b.record(10, {3, 5, 1}, b.word(1)).record(13, {6}, b.word(0));
        b.record(10, {4, 2, 3}).record(13, {3}, b.word(again ? 1 : 0));
        if (again)
            b.record(13, {6}, b.word(0));
        b.end();
        const GraphRead read = readGraph(b.str(), Piece_type);
        EXPECT_EQ(again ? "" : "object 6 is embedded in one that is embedded elsewhere",
                  withoutPlace(read.error));
        if (again) {
            ASSERT_NE(nullptr, read.object) << read.error;
            auto* const root = static_cast<Piece*>(read.object);
            auto* const other = static_cast<Piece*>(root->other);
            EXPECT_EQ(&other->parts[0], root->next);
            delete other;
            delete root;
        } else {
            EXPECT_EQ(nullptr, read.object);
        }
    }
}

// Which of two records of one name makes an object, its pointers say.
TEST_F(fxGraphRefusals, aRecordThatSharesItsNameMakesWhatIsExpectedOfIt) {
    for (const bool isTwin : {false, true}) {
        SCOPED_TRACE(isTwin);
        fxTypeObj& expected = isTwin ? twinPiece : Piece_type;
        unsigned int pieces = 0;
        Piece::steps = [&](Piece& p, fxTranscriber& t) -> unsigned char {
            return ++pieces > 1 || (point(t, p.next, Part_type) && point(t, p.other, expected));
        };
        Piece::twins = 0;
        GraphBytes b;
        piece(b).record(11, {3}).record(12, {3}).record(10, {3, 2, 3}).end();
        const GraphRead read = readGraph(b.str(), Piece_type);
        ASSERT_NE(nullptr, read.object) << read.error;
        auto* const root = static_cast<Piece*>(read.object);
        EXPECT_EQ(root->next, root->other);
        EXPECT_EQ(isTwin ? 1 : 0, Piece::twins);
        delete root->other;
        delete root;
    }
}

// In streams of standard writers, the text of a string is a block.
TEST_F(fxGraphRefusals, whatIsWrongWithTheTextsOfStringsIsSaid) {
    const auto standardPiece = [](GraphBytes& b) -> GraphBytes& {
        return b.raw('\2' + std::string("\2\0\0\0", 4) + std::string("RefusedPiece\0", 13))
            .record(10, {1, 2, 3}, b.word(4));
    };
    const auto names = [](Piece& p, fxTranscriber& t) { return t.xdr(p.names, 2); };
    const auto nameAndBytes = [](Piece& p, fxTranscriber& t) -> unsigned char {
        return t.xdr(p.names, 1) && t.xdr(&p.chars, 4);
    };
    const Refusal cases[] = {
        {"block 3 belongs to two strings", names,
         [&](GraphBytes& b) {
             standardPiece(b).record(3, {3, 4}).record(0, {}, b.word(4)).record(4, {3});
         }},
        {"block 3 belongs to two strings", nameAndBytes,
         [&](GraphBytes& b) {
             standardPiece(b).record(3, {3, 4}).record(4, {3});
         }},
        {"block 3 has 3 bytes, its string 4", nameAndBytes,
         [&](GraphBytes& b) {
             standardPiece(b).record(3, {3, 4}).record(1).record(5, {3, 3}, "ab\0");
         }},
        {"a string of 4 bytes has no end", nameAndBytes,
         [&](GraphBytes& b) {
             standardPiece(b).record(3, {3, 4}).record(1).record(5, {3, 4}, "abcd");
         }},
        {"a record \"null pointer\" comes where a pointer to a block should", nameAndBytes,
         [&](GraphBytes& b) { standardPiece(b).record(1); }},
        {"there are no records of kind 15", nameAndBytes,
         [&](GraphBytes& b) { standardPiece(b).record(15, {0}); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.error);
        Piece::steps = c.steps;
        const short one = 1;
        GraphBytes b(*reinterpret_cast<const char*>(&one) == 0, "fxBinaryWriter");
        c.make(b);
        const GraphRead read = readStandard(b.str(), Piece_type);
        EXPECT_EQ(nullptr, read.object);
        EXPECT_EQ(c.error, withoutPlace(read.error));
    }
}

// Where only one root is expected, nothing follows it, and it is no string.
TEST_F(fxGraphRefusals, theOnlyRootIsAloneAndAnObject) {
    const struct {
        const char* error;
        const char* type;
        const char* more;
    } cases[] = {
        {"", "RefusedPart", ""},
        {"the stream goes on behind its root", "RefusedPart", "x"},
        {"the root is a \"fxStr\", which is no fxXDRObj", "fxStr", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.error);
        GraphBytes b;
        const bool isText = c.type[0] == 'f';
        b.type(2, c.type).record(10, {1, 2, 1}, isText ? b.string("ab") : b.word(0));
        b.end().raw(c.more);
        const Held<> stream(static_cast<const void*>(b.str().data()),
                            static_cast<unsigned int>(b.str().size()));
        const auto reader = graphReaderOn(stream.get());
        reader->expectOneRoot(true);
        void* const object = reader->readObject(isText ? fxStr_type : Part_type);
        EXPECT_EQ(c.error, withoutPlace(reader->lastError()));
        EXPECT_EQ(c.error[0] == '\0', object != nullptr);
        delete static_cast<Part*>(object);
    }
}
