// fxdump: what the library's writers write.

#ifdef KELVOFXDS_FXDUMP

#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "tests/support/dumping.h"
#include "tests/support/graphs.h"
#include "tests/support/memoryStream.h"
#include "tests/support/streamBytes.h"

namespace {
using fxdump::Show;

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// Two persons who know each other and each other's arms, which are met before their
// owners and after; shared, and with blocks of every kind.
struct Couple {
    Couple() {
        one.mother = one.friends[0] = one.friends[1] = &two;
        two.friends[1] = &one;
        one.arm.twin = &two.arm;
        two.arm.twin = &far;
        one.arms = &far;
        far.twin = &two.arm;
        two.arms = &one.arm;
        one.setShorts({1, -2, 300});
        one.setDoubles(0.5, -2);
        two.setText("a text");
        two.name = "Bob";
    }

    Person one, two;
    Limb far;
};

std::string verdictOn(const std::string& bytes) { return shown(Show::verify, bytes).message; }
}  // namespace

TEST(fxdumpWritten, graphsAreSound) {
    Couple couple;
    EXPECT_EQ("", verdictOn(graphStreamOf(couple.one)));
    EXPECT_EQ("", verdictOn(graphStreamOf(couple.far)));
    Household house;
    house.names.append("name");
    house.phones.add("ada", "1815");
    house.head = &couple.two;
    fxShortArray pages;
    const short page = 77;
    pages.append(&page);
    house.array = &pages;
    EXPECT_EQ("", verdictOn(graphStreamOf(house)));
}

TEST(fxdumpWritten, rootsThatKeepTheirIdentitiesAreSound) {
    Couple couple;
    Limb apart;
    const Held<> stream;
    const auto writer = graphWriterOn(stream.get());
    writer->keepIdentity(true);
    for (fxXDRObj* root : {static_cast<fxXDRObj*>(&couple.one), static_cast<fxXDRObj*>(&couple.two),
                           static_cast<fxXDRObj*>(&apart)})
        EXPECT_EQ(1, writer->writeObject(root, root)) << writer->lastError();
    const std::string bytes(stream->getBase(), stream->length());
    const Shown verdict = shown(Show::verify, bytes);
    EXPECT_EQ("", verdict.message);
    EXPECT_TRUE(has(verdict.out, ", 3 roots: sound\n")) << verdict.out;
}

TEST(fxdumpWritten, noFlippedBitOfAGraphIsSound) {
    Couple couple;
    const std::string sound = graphStreamOf(couple.one);
    for (std::size_t bit = 0; bit < sound.size() * 8; ++bit) {
        std::string bytes = sound;
        bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ 1 << bit % 8);
        EXPECT_NE("", verdictOn(bytes)) << bit;
    }
}

TEST(fxdumpWritten, containersOfGraphsAreDecoded) {
    fxStrStrDictionary dictionary(3);
    dictionary.add("ada", "1815");
    EXPECT_TRUE(has(shown(Show::list, graphStreamOf(dictionary)).out,
                    "key \"ada\", value \"1815\", bucket "));
    fxStrArray names;
    names.append("one");
    names.append("");
    EXPECT_TRUE(has(shown(Show::list, graphStreamOf(names)).out, "element \"one\""));
    fxDoubleArray ratios;
    const double half = 0.5;
    ratios.append(&half);
    EXPECT_TRUE(has(shown(Show::list, graphStreamOf(ratios)).out, "element 0.5\n"));
    fxStrSet keys(3);
    keys.add("key");
    EXPECT_TRUE(has(shown(Show::list, graphStreamOf(keys)).out, "key \"key\", bucket "));
}

TEST(fxdumpWritten, standardStreamsOfGraphsFollowTheWritersRules) {
    Couple couple;
    MemoryStream stream;
    fxBinaryWriter writer(&stream);
    EXPECT_EQ(1, writer.writeObject(&couple.one, &couple.one));
    EXPECT_EQ(1, writer.writeObject(&couple.two, &couple.two));
    const Shown verdict = shown(Show::verify, hostHeader() + stream.written);
    EXPECT_EQ("", verdict.message);
    EXPECT_TRUE(has(verdict.out, ": sound; the standard reader would not read it: "))
        << verdict.out;
}

#endif
