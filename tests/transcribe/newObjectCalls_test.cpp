// newObjectCalls_test.cpp - what an xdr may ask while the pointers of a new object are looked at.

#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxMemoryStream.h"
#include "kelvofxds/transcribe/fxXDRMembers.h"
#include "tests/support/graphs.h"

namespace {

// Asks everything of its transcriber.
class Curious : public fxXDRObj {
    FX_XDR_MEMBERS(Curious)

    char letter = 'a';
    unsigned char byte = 1;
    short number = 2;
    unsigned short another = 3;
    float real = 4;
    double longer = 5;
    Limb limb;

    inline static bool isLookedAt = false;  // once in a process
    inline static unsigned int objects = 0;
};
FX_DEFINE_XDR(Curious, "Curious", 1)
unsigned char Curious::xdr(fxTranscriber& t) {
    if (std::string(t.className()) == "NewObjectCheck") {
        isLookedAt = true;
        t.reset();
        objects += t.readObject(Limb_type) != nullptr;
        objects += t.writeObject(&limb, &limb);
    }
    unsigned short* none = nullptr;
    unsigned char* text = nullptr;
    return t.xdr(&letter, 1) && t.xdr(&byte, 1) && t.xdr(&number, 1) && t.xdr(&another, 1) &&
           t.xdr(&real, 1) && t.xdr(&longer, 1) && t.xdr(&none, 1) && t.xdr(&text) &&
           t.xdr(Limb_type, &limb, &limb) && t.xdr(Limb_type, nullptr, &limb);
}

}  // namespace

TEST(newObjectCalls, noneOfThemReadsOrWrites) {
    Curious curious;
    const std::string bytes = graphStreamOf(curious);
    const GraphRead read = readGraph(bytes, Curious::classType());
    ASSERT_NE(nullptr, read.object) << read.error;
    EXPECT_EQ(0u, Curious::objects);
    EXPECT_TRUE(Curious::isLookedAt);
    delete static_cast<Curious*>(read.object);
}
