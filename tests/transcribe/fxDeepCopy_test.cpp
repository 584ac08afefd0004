#include "kelvofxds/transcribe/fxDeepCopy.h"

#include <memory>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxStrArray.h"
#include "tests/support/savedBook.h"

namespace {
unsigned char refuse(void*, fxTranscriber&) { return 0; }

fxTypeObj abstractType("fxDeepCopyTestAbstract", 1, nullptr, nullptr, SavedBook::xdr);
fxTypeObj failingType("fxDeepCopyTestFailing", 1, SavedBook::newInstance, SavedBook::deleteInstance,
                      refuse);

class Typed : public SavedBook {
public:
    explicit Typed(fxTypeObj& type) : record(&type) {}
    fxTypeObj& getTypeObj() const override { return *record; }

private:
    fxTypeObj* const record;
};
}  // namespace

TEST(fxDeepCopy, copyHoldsTheSameAndSharesNothing) {
    for (const unsigned int people : {0u, 1u, 1000u}) {
        SCOPED_TRACE(people);
        auto book = std::make_unique<SavedBook>();
        book->fill(people, 7);
        book->count = 3;
        const std::string text = book->text();
        fxStr why("before");
        const std::unique_ptr<SavedBook> copy(fxDeepCopy(*book, &why));
        ASSERT_TRUE(copy);
        EXPECT_STREQ("", why.c_str());
        EXPECT_NE(book.get(), copy.get());
        EXPECT_EQ(0, copy->count) << "nobody holds it yet";
        EXPECT_EQ(static_cast<int>(2 * people), SavedPerson::alive);
        book.reset();
        EXPECT_EQ(text, copy->text()) << "a ring, after the original is gone";
    }
    EXPECT_EQ(0, SavedBook::alive);
    EXPECT_EQ(0, SavedPerson::alive);
}

TEST(fxDeepCopy, copyIsOfTheClassThatTheObjectReallyIsOf) {
    fxStrArray names;
    names.append("Ada");
    fxXDRObj& any = names;
    const std::unique_ptr<fxXDRObj> copy(fxDeepCopy(any));
    ASSERT_TRUE(copy);
    EXPECT_STREQ(names.className(), copy->className());
    EXPECT_STREQ("Ada", (*static_cast<fxStrArray*>(copy.get()))[0].c_str());
}

TEST(fxDeepCopy, whatCannotBeCopiedIsAReason) {
    const struct {
        fxTypeObj& type;
        const char* reason;
    } cases[] = {{abstractType,
                  "cannot copy the object: a reader cannot make the abstract type "
                  "\"fxDeepCopyTestAbstract\""},
                 {failingType,
                  "cannot copy the object: the xdr of the type \"fxDeepCopyTestFailing\" "
                  "returned 0"}};
    for (const auto& c : cases) {
        Typed object(c.type);
        fxStr why;
        EXPECT_EQ(nullptr, fxDeepCopy(object, &why));
        EXPECT_STREQ(c.reason, why.c_str());
        EXPECT_EQ(nullptr, fxDeepCopy(object)) << "without asking for it";
    }
    EXPECT_EQ(0, SavedBook::alive);
}
