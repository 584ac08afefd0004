// verifier.h - looks for the first bad record of a stream.
#pragma once

#include <memory>

#include "tools/fxdump/output.h"
#include "tools/fxdump/rules.h"
#include "tools/fxdump/stream.h"

namespace fxdump {

/// Says in a line whether a stream is sound. It stops at the first damage.
class Verifier : public RecordSink {
public:
    Verifier(Output& o, const std::string& file, bool takesReaderWords)
        : out(o), fileName(file), readerWords(takesReaderWords) {}

    void header(const Header& header) override;
    void record(const Record& record) override;
    void restOfName(const char*, std::size_t) override {}
    void payload(const char* bytes, std::size_t n) override;
    void recordEnd() override {}
    void damage(const Damage& damage) override;
    void end(std::uint64_t offset) override;
    bool hasEnough() const override { return isBad; }

    /// What is wrong, in one line; "" as long as nothing is.
    const std::string& verdict() const { return wrong; }

private:
    void judge(const std::string& rule);

    Output& out;
    const std::string fileName;
    const bool readerWords;
    Header head;
    std::unique_ptr<Rules> rules;
    std::uint64_t offset = 0;  // of the present record
    std::uint64_t place = 0;
    std::uint64_t roots = 0;  // of a graph stream, that have ended
    bool isBad = false;
    std::string wrong;
};

}  // namespace fxdump
