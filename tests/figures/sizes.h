// sizes.h - operations that take a count, a size or a position, and what each says to those that no
// memory can have.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// What an operation comes to.
enum class SizeOutcome {
    isStated,     ///< It goes through, and all is as is stated: the call returns true.
    hasNoMemory,  ///< "out of memory"; "CLASS: size too large" if the bytes exceed 32 bits.
    isMisuse,     ///< A line of the checked build about this operation.
    isMisuseIfAddressable,  ///< The same, or "CLASS: size too large" if the bytes exceed 32 bits.
    isMisuseIfNot,          ///< It goes through; such a line if the bytes exceed 32 bits.
    ends,                   ///< `stated`, whatever the size is; abort() without a word if empty.
};

/// One argument of one operation.
struct SizeRow {
    std::string name;          ///< As messages have it: CLASS::OPERATION.
    std::string stated;        ///< A line of the operation's own; of sizes too large "CLASS: ...".
    unsigned int elementSize;  ///< Bytes that one more takes.
    unsigned int besides;      ///< Bytes that there are without.
    SizeOutcome outcome;
    bool (*call)(unsigned int n);

    bool isTooLarge(unsigned int n) const {
        return std::uint64_t{n} * elementSize + besides > 0xFFFFFFFF;
    }
};

/// All rows; each file of them adds its own.
inline std::vector<SizeRow>& sizeRows() {
    static std::vector<SizeRow> rows;
    return rows;
}

struct AddSizeRows {
    explicit AddSizeRows(const std::vector<SizeRow>& rows) {
        sizeRows().insert(sizeRows().end(), rows.begin(), rows.end());
    }
};
