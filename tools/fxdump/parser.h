// parser.h - takes a stream apart into records.
#pragma once

#include "kelvofxds/transcribe/fxChecksumInternal.h"
#include "tools/fxdump/source.h"
#include "tools/fxdump/stream.h"

namespace fxdump {

/// Reads a stream and hands its parts over, one after the other. It keeps nothing
/// of what has passed, so it takes the same memory for every stream.
class Parser {
public:
    /// With `takesReaderWords` the records of standard streams have the words that
    /// the standard reader takes, else those that the standard writer gives.
    Parser(Source& s, RecordSink& to, bool takesReaderWords)
        : source(s), sink(to), readerWords(takesReaderWords) {}

    /// Reads all. What ends it early is damage; or source.error(), of which the
    /// sink is not told.
    void parse();

private:
    enum class Step : unsigned char { done, atEnd, failed };

    bool parseHeader();
    bool takeField(unsigned int n, const char* what);
    bool parseRecords();
    Step parseRecord();
    Step headByte();
    unsigned int wordsOf(unsigned int tag) const;
    bool lengthAndWords();
    bool name();
    bool restOfName();
    bool payload();
    bool fail(const std::string& rule);
    bool failAtEnd(const char* within);

    Source& source;
    RecordSink& sink;
    const bool readerWords;
    Header header;
    Record record;
    fxChecksum sum;                  // of the root, as far as it has been read
    bool hasSeenReferences = false;  // which readers and writers give different words
};

}  // namespace fxdump
