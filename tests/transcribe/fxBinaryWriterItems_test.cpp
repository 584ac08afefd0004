// fxBinaryWriterItems_test.cpp - a writer's own items, as hosts meet them.

#include <cstdint>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "tests/support/memoryStream.h"
#include "tests/support/scriptedObject.h"
#include "tests/support/streamBytes.h"

TEST(fxBinaryWriterItems, hostsTakeOverWhatAFailedObjectLeft) {
    char block[3] = "ab";
    ScriptedObject sub(subType);
    ScriptedObject root(objType, [&](ScriptedObject& self, fxTranscriber& t) -> unsigned char {
        return t.xdr(&self.blocks[0], 3) && t.xdr(&self.links[0], &sub, subType, &self, nullptr) &&
               false;
    });
    root.blocks[0] = block;
    root.links[0] = &sub;
    MemoryStream stream;
    fxBinaryWriter writer(&stream);
    EXPECT_EQ(0, writer.writeObject(&root, &root));
    auto* own = new fxBinaryWriterItem{1, block, 2, fxOT_Bytes};
    EXPECT_EQ(6U, writer.queue(own));
    EXPECT_EQ(own, writer.pop());
    delete own;
    const fxBinaryWriterItem* item = writer.pop();
    ASSERT_NE(nullptr, item);
    EXPECT_EQ(0U, item->kind);
    EXPECT_EQ(&sub, item->address);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(&subType), item->extra);
    delete item;
    item = writer.pop();
    ASSERT_NE(nullptr, item);
    EXPECT_EQ(1U, item->kind);
    EXPECT_EQ(block, item->address);
    EXPECT_EQ(3U, item->extra);
    EXPECT_EQ(static_cast<unsigned int>(fxOT_Bytes), item->blockTag);
    delete item;
    EXPECT_EQ(nullptr, writer.pop());
}

TEST(fxBinaryWriterItems, addressThatGetsAnotherNumberIsWrittenWithThat) {
    char block[3] = "ab";
    ScriptedObject root(objType, [&](ScriptedObject& self, fxTranscriber& t) -> unsigned char {
        if (!t.xdr(&self.blocks[0], 3))
            return 0;
        return dynamic_cast<fxBinaryWriter&>(t).recordIdForAddress(block) == 4;
    });
    root.blocks[0] = block;
    MemoryStream stream;
    fxBinaryWriter(&stream).writeObject(&root, &root);
    EXPECT_EQ(dump(hex("02 02000000 'Obj' 00 | 0a 01000000 02000000 01000000 | 03 03000000 03000000"
                       "45 03 04000000 03000000 'ab' 00")),
              dump(stream.written));
}
