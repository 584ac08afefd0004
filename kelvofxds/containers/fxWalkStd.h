// fxWalkStd.h - the walk behind loops over dictionaries and sets; not for hosts.
#pragma once

#include <cstdint>
#include <vector>

#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/containers/fxSet.h"

namespace fxStdParts {

/// What fxDictIter keeps for those that are derived from it.
struct DictSteps : fxDictIter {
    using Container = fxDictionary;
    using Bucket = fxDictBucket;
    using fxDictIter::fxDictIter;

    Container* container() const { return dict; }
    Bucket* head() const {
        struct Fields : fxDictionary {
            static const fxDictBuckets& heads(const fxDictionary& d) {
                return d.*(&Fields::buckets);
            }
        };
        return Fields::heads(*dict)[bucketIndex];
    }
};

/// What fxSetIter keeps.
struct SetSteps : fxSetIter {
    using Container = fxSet;
    using Bucket = fxSetBucket;
    using fxSetIter::fxSetIter;

    Container* container() const { return set; }
    Bucket* head() const {
        struct Fields : fxSet {
            static const fxSetBuckets& heads(const fxSet& s) { return s.*(&Fields::buckets); }
        };
        return Fields::heads(*set)[bucketIndex];
    }
};

/// The entries of the present bucket that a walk has seen. They may be gone: addresses are
/// compared, never followed.
class Seen {
public:
    void clear() { count = 0; }
    void add(const void* entry) {
        const auto address = reinterpret_cast<std::uintptr_t>(entry);
        if (count < few)
            inPlace[count] = address;
        else if (count - few < rest.size())
            rest[count - few] = address;
        else
            rest.push_back(address);
        ++count;
    }
    bool none() const { return count == 0; }
    bool lastIs(const void* entry) const {
        const unsigned int i = count - 1;
        return reinterpret_cast<std::uintptr_t>(entry) == (i < few ? inPlace[i] : rest[i - few]);
    }
    void dropLast() { --count; }

private:
    static const unsigned int few = 6;

    unsigned int count = 0;
    std::uintptr_t inPlace[few];
    std::vector<std::uintptr_t> rest;
};

/// A registered iterator that skips nothing, whatever is removed.
///
/// When the present entry is removed, the iterator of the library stands on the one behind it.
/// If that is removed, too, before the next step, it does not know any more where it was, and
/// goes to the next bucket. This one knows what it has seen of the bucket, and goes on behind the
/// last of that. New entries are in front of their bucket: where they are before all that was
/// seen, they are not visited; where nothing of that is left, they may be.
template <class Steps>
class Walk : public Steps {
public:
    using typename Steps::Bucket;
    using typename Steps::Container;

    Walk() = default;
    explicit Walk(Container& c) : Steps(c) { arrive(); }

    void next() {
        if (this->container() && (this->flags & Steps::parked))
            goOn();
        else
            Steps::operator++();
        arrive();
    }
    bool isOver() const { return !this->container(); }
    bool isWith(const Walk& other) const {
        return isOver() ? other.isOver()
                        : this->container() == other.container() && this->bucket == other.bucket;
    }

private:
    void arrive() {
        if (isOver())
            return;
        if (this->bucketIndex != bucketSeen) {
            seen.clear();
            bucketSeen = this->bucketIndex;
        }
        seen.add(this->bucket);
    }

    void goOn() {
        this->flags = 0;
        this->bucket = behindSeen();
        if (!this->bucket)
            this->advanceToValid();
    }

    Bucket* behindSeen() {
        if (this->bucketIndex != bucketSeen)
            return this->head();
        for (; !seen.none(); seen.dropLast()) {
            for (Bucket* b = this->head(); b; b = b->next) {
                if (seen.lastIs(b))
                    return b->next;
            }
        }
        return this->head();
    }

    static const unsigned int noBucket = 0xFFFFFFFF;

    unsigned int bucketSeen = noBucket;
    Seen seen;
};

}  // namespace fxStdParts
