// rules.h - what holds in every sound stream.
#pragma once

#include <memory>
#include <string>

#include "tools/fxdump/numberTable.h"
#include "tools/fxdump/stream.h"

namespace fxdump {

/// Looks at the records of a stream, one after the other. What it returns is the
/// rule that is broken, or "" when all is well.
class Rules {
public:
    Rules() = default;
    Rules(const Rules&) = delete;
    Rules& operator=(const Rules&) = delete;
    virtual ~Rules() = default;

    virtual std::string record(const Record& record) = 0;
    virtual std::string payload(const char* bytes, std::size_t n) = 0;
    /// The stream has ended behind a record.
    virtual std::string end() = 0;
    /// Where the standard reader fails first, though no rule is broken; of "" nowhere.
    virtual std::string obstacle() const { return ""; }

protected:
    using Word = fxBinaryFormat::Word;

    std::string enter(std::uint32_t number, Thing thing, std::uint32_t extra = 0);
    /// How the body of a block may be, compared with its pointer.
    enum class BlockSize : unsigned char {
        isThePointers,
        mayBeGreater,    ///< Where a later pointer says so.
        needsNoPointer,  ///< The body may come before.
    };

    /// Begins the body of a block.
    std::string blockBody(const Record& record, BlockSize allowed);
    std::string blockData(std::size_t n);
    /// Nothing more comes for the block, if there is one.
    std::string blockEnd();
    bool isInBlock() const { return inBlock; }

    NumberTable numbers;

private:
    bool inBlock = false;
    std::uint32_t blockNumber = 0;
    std::uint32_t blockSize = 0;
    std::uint32_t blockLeft = 0;  // bytes that have not come
};

/// "number 7".
std::string numberText(std::uint32_t number);

/// The rules of graph streams, whose numbers are in `order`.
std::unique_ptr<Rules> makeGraphRules(const ByteOrder& order);
/// Those of standard streams. With `readerWords` what the standard reader cannot
/// take breaks a rule, too.
std::unique_ptr<Rules> makeStandardRules(bool readerWords);

}  // namespace fxdump
