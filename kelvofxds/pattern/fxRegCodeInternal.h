// fxRegCodeInternal.h - a program as it is run.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kelvofxds/pattern/fxRegProgramInternal.h"
#include "kelvofxds/pattern/fxRegStartsInternal.h"

/// A node of a program, with all that can be known of it beforehand. A set is a
/// bit of fxRegCode::sets; all bytes have the bit fxRegAnything.
struct fxRegNode {
    unsigned char op;
    char only;              ///< Of a repetition: the one byte that can follow it, or NUL.
    bool isDecided;         ///< Of a repetition: no byte can both be repeated and follow.
    bool isRepeated;        ///< It is the operand of a repetition.
    unsigned char place;    ///< The first of its positions, see fxRegCode::follow.
    unsigned char places;   ///< How many it has.
    std::uint16_t offset;   ///< In the program.
    std::uint16_t length;   ///< Of its text.
    const char* text;       ///< Of a class or literal run.
    const fxRegNode* next;  ///< Null at the end of a chain.
    const fxRegNode* operand;
    const fxRegNode* other;  ///< Of a branch: the alternative behind it, or null.
    std::uint32_t set;    ///< The bytes of a class, of what is repeated, or with which a branch can
                          ///< begin. 0 for a class without one.
    std::uint32_t after;  ///< Of a repetition: the bytes that can follow it.
    std::uint32_t from;   ///< The positions that can be next here.
};

const std::uint32_t fxRegAnything = 0x80000000;

/// Whether the class, literal run or dot at `node` begins with `c`.
bool fxRegIsMember(const fxRegNode& node, char c);

/// How far a text was looked at, and the positions that can be next there.
struct fxRegLook {
    const char* at;
    std::uint32_t places;
};

/// A sound program, decoded. It is a copy, so it holds as long as the block is
/// what it was. Nothing is known beforehand until it is analysed, at any time; all
/// that is asked of it before is answered with care.
class fxRegCode {
public:
    /// Whether this is `prog`, byte for byte. O(its size), as fast as memcmp where
    /// sizes of blocks are known.
    bool isOf(const fxregexp& prog, unsigned int size) const {
        return length != 0 && length <= size && startchar == prog.startchar &&
               hasMust == (prog.must != nullptr) &&
               (!hasMust || (mustAt == fxRegMustOffset(prog) && mustLength == prog.mustlen)) &&
               isBegunBy(prog.program);
    }

    /// Decodes `prog`, or only looks whether it can be run; null, or the message of
    /// the error. O(its size).
    const char* assign(const fxregexp& prog, unsigned int size, bool isCheck);

    /// Finds out what can be known beforehand, once. O(its size).
    void analyse() {
        if (!isAnalysed)
            analyseNow();
    }

    /// It is none from now on.
    void forget();
    /// After a search: it is none from now on, unless it can be kept.
    void release() {
        if (length != 0 && (block || !isWhole))
            releaseBlock();
    }

    /// A look for a match that begins at `at`, which may be the subject's start, or
    /// later.
    fxRegLook lookFrom(const char* at, bool isStart) const {
        return {at, isStart ? firstOpening : opening};
    }
    enum Outlook { noMatch, unknown, promising };
    /// Looks at `most` more bytes. That there is no match is certain.
    /// Requires: the program is analysed.
    Outlook lookOn(fxRegLook& look, std::size_t most);

    /// Whether a match at the subject's start can begin as none does elsewhere.
    bool isStartSpecial() const { return firstOpening != opening; }

    /// Whether what is repeated or matched by `node` has `c`.
    bool has(const fxRegNode& node, char c) const {
        return node.set ? (sets[static_cast<unsigned char>(c)] & node.set) != 0
                        : fxRegIsMember(node, c);
    }
    bool canFollow(const fxRegNode& repetition, char c) const {
        return (sets[static_cast<unsigned char>(c)] & repetition.after) != 0;
    }
    /// The first alternative from `branch` on that can begin with `c`, or null.
    const fxRegNode* viable(const fxRegNode* branch, char c) const {
        while (branch && !(sets[static_cast<unsigned char>(c)] & branch->set))
            branch = branch->other;
        return branch;
    }

    const fxRegNode* begin() const { return first; }
    unsigned int indexOf(const fxRegNode* node) const {
        return static_cast<unsigned int>(node - nodes);
    }
    unsigned int size() const { return count; }

    // As decoded.
    const fxRegNode* leading;  // the repetition with which every match begins, or null
    const char* required;      // a text that is in every match, or null
    unsigned int requiredLength;
    bool isDamaged;  // some node fails with a message
    bool isAnalysed;
    fxRegStarts starts;
    std::atomic<bool> isInUse;  // by a search

private:
    static const unsigned int ownBytes = 768;  // larger programs take memory
    static const unsigned int ownNodes = 64;
    static const unsigned int mostSets = 31;
    static const unsigned int mostPlaces = 30;
    static const std::uint32_t atEnd = 0x40000000;  // among positions: only NUL is next

    struct Sets;

    bool isBegunBy(const char* program) const;
    void releaseBlock();
    bool takeMemory(const unsigned char* marks, unsigned int last, unsigned int used);
    void readNodes(const char* program, const unsigned char* marks, unsigned int last);
    void read(fxRegNode& node, const char* program);
    void link(fxRegNode& node, const char* program);
    fxRegNode* nodeAt(unsigned int offset, fxRegNode* near) const;
    void assumeLittle();
    static const fxRegNode* straight(const fxRegNode* node);
    void analyseNow();
    void numberPlaces(Sets& known);
    void addPlace(fxRegNode& node, const fxRegByteSet& bytes);
    void linkPlaces();
    void tracePlaces(bool isPastStart);
    static std::uint32_t placesAt(const fxRegNode& node, bool isPastStart);
    static std::uint32_t placesFrom(const fxRegNode* node) {
        return node ? node->from : fxRegAnything;
    }
    static std::uint32_t firstPlaceOf(const fxRegNode& simple) {
        return simple.places == 0 ? fxRegAnything : std::uint32_t(1) << simple.place;
    }
    fxRegByteSet bytesOf(std::uint32_t places) const;
    std::uint32_t setOf(Sets& known, const fxRegByteSet& bytes);
    std::uint32_t setFrom(Sets& known, std::uint32_t places);
    void foresee(Sets& known, fxRegNode& repetition);
    void findLeading();
    void findRequired();
    void makeAccepts();
    void findStarts();
    bool addPrefixes(std::uint32_t places, char* prefix, unsigned int made, unsigned int depth);

    unsigned int length;  // bytes of the program; 0 for none
    unsigned int count;   // of `nodes`
    bool isWhole;         // its last node is an end, and `bytes` has all of it
    bool hasLoops;        // some link leads back
    bool hasStart;        // some node matches at the subject's start alone
    bool hasMust;
    char startchar;
    std::uintptr_t mustAt;
    int mustLength;
    void* block;          // owned: `nodes` and `bytes` if they are not its own; or null
    std::size_t counted;  // bytes of `block`, if it is kept
    fxRegNode* nodes;
    char* bytes;
    const fxRegNode* first;
    unsigned int placeCount;
    std::uint32_t sets[256];              // by a byte, those it is in
    fxRegByteSet placeBytes[mostPlaces];  // by a position, the bytes that match it
    bool hasAccepts;                      // `accepts` has been made
    std::uint32_t accepts[256];           // by a byte, the positions that match it
    std::uint32_t follow[mostPlaces];     // by a position, those that can come next
    std::uint32_t opening;                // the positions with which a match can begin
    std::uint32_t firstOpening;           // the same at the subject's start
    fxRegNode own[ownNodes];
    char ownText[ownBytes];
};

/// The decoded form of a program, for one search. Those of the last programs are
/// kept from search to search; each is used by one search at a time, of
/// whichever thread.
class fxRegCodeLease {
public:
    /// For a search of `subject`.
    fxRegCodeLease(const fxregexp& prog, const char* subject);
    fxRegCodeLease(const fxRegCodeLease&) = delete;
    fxRegCodeLease& operator=(const fxRegCodeLease&) = delete;
    ~fxRegCodeLease() {
        if (leased)
            end();
    }

    /// Null if the search is over: after a message where the program cannot be run,
    /// or because the byte is missing that starts every match.
    fxRegCode* code() const { return leased; }

private:
    void end() {
        if (isOwned) {
            discard();
            return;
        }
        leased->release();
        leased->isInUse.store(false, std::memory_order_release);
    }
    void discard();
    void decode(const fxregexp& prog, unsigned int size, bool isCheck);

    fxRegCode* leased;
    bool isOwned;
};
