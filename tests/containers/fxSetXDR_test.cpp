// fxSetXDR_test.cpp - transcription of sets, beyond what dictionaries do alike.

#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxSet.h"
#include "tests/support/chained.h"
#include "tests/support/recordingTranscriber.h"

// Keys in buckets that their hash does not lead to, and the same key twice: look-ups
// see those of the bucket that it does lead to.
TEST(fxSetXDR, algebraWithItselfEndsWhateverTheStreamSaid) {
    const std::string bytes = ChainedSet::head(6, 4, 5) + ChainedSet::entryBytes(1, 0) +
                              ChainedSet::entryBytes(1, 1) + ChainedSet::entryBytes(1, 1) +
                              ChainedSet::entryBytes(2, 4) + ChainedSet::entryBytes(4, 4) +
                              ChainedSet::entryBytes(2, 0);
    for (int operation : {0, 1, 2}) {
        SCOPED_TRACE(operation);
        ChainedSet s(fxSet_type);
        RecordingTranscriber t(RecordingTranscriber::reader, bytes);
        ASSERT_EQ(1, s.doxdr(t));
        ASSERT_EQ("0: 2 1 1: 1 1 4: 4 2", chains(s));
        fxSetIter iter(s);
        const fxSet& self = s;
        if (operation == 0)
            s |= self;
        else if (operation == 1)
            s &= self;
        else
            s -= self;
        EXPECT_EQ(operation == 0   ? "0: 2 1 1: 1 1 2: 2 4: 4 2"
                  : operation == 1 ? "0: 1 1: 1 1 4: 4"
                                   : "0: 2 1 4: 2",
                  chains(s));
    }
}

// A host's class knows best how large its keys are; where there are none, nothing is made of it.
TEST(fxSetXDR, anEmptySetIsReadWhateverTheSizeOfItsKeys) {
    for (const unsigned int keyBytes : {0u, 1u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        SCOPED_TRACE(keyBytes);
        const std::string bytes = ChainedSet::head(0, keyBytes, 3);
        ChainedSet s(fxSet_type);
        RecordingTranscriber reader(RecordingTranscriber::reader, bytes);
        EXPECT_EQ(1, s.doxdr(reader));
        RecordingTranscriber writer(RecordingTranscriber::writer);
        EXPECT_EQ(1, s.doxdr(writer));
        EXPECT_EQ(bytes, writer.bytes);
    }
}
