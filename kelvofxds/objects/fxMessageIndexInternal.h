// fxMessageIndexInternal.h - the messages of a long queue by whom they are for.
#pragma once

class fxEvent;
class fxEventQueue;

/// Finds the queued messages for a channel or a target without a look at the
/// others, so that the end of an object costs what is queued for it.
///
/// A queue has an index from the first look-up in a long queue until a look-up
/// or a distribution finds it short; otherwise sending pays one test of a
/// pointer. Whom a message is for is found out when it is queued. A host may
/// set a channel's target afterwards, of which nothing is heard; look-ups ask
/// again about what they find, and what they do not find is found out before
/// its delivery: the targets that have ended since are remembered until then.
class fxMessageIndex {
public:
    enum Relation { byEvent, byChannel, byTarget, relations };
    using Predicate = unsigned char (*)(fxEvent*, void*);

    /// The index of `queue`; null if it has none.
    static fxMessageIndex* of(const fxEventQueue* queue) {
        return __builtin_expect(newest != nullptr, false) ? among(queue) : nullptr;
    }

    /// What fxEventHandler::removeEvents does, for a predicate that is true
    /// only of messages that have `key` in this relation. False in a short
    /// queue, where nothing is done.
    static bool remove(fxEventQueue& queue, Relation relation, void* key, Predicate predicate);
    /// `target` is no more. Its messages have been removed.
    static void noteEnd(fxEventQueue& queue, const void* target);
    /// The head of `queue` is about to be delivered.
    static void beforeDelivery(fxEventQueue& queue) {
        if (__builtin_expect(newest != nullptr, false))
            settleHead(queue);
    }
    /// The events have been distributed.
    static void afterDistribution(fxEventQueue& queue) {
        if (__builtin_expect(newest != nullptr, false))
            tidy(queue);
    }

    /// An index of what is queued now.
    explicit fxMessageIndex(fxEventQueue* owner);
    fxMessageIndex(const fxMessageIndex&) = delete;
    fxMessageIndex& operator=(const fxMessageIndex&) = delete;
    ~fxMessageIndex();

    /// `e` has been linked at the head or the tail.
    void linkedFirst(fxEvent* e) { enter(e, --lowest); }
    void linkedLast(fxEvent* e) { enter(e, ++highest); }
    /// `e` is about to be unlinked.
    void unlinking(const fxEvent* e);

private:
    struct Entry;
    struct List;
    struct Table {
        List** buckets;
        unsigned int size;  // a power of two
        unsigned int used;  // lists
    };

    static fxMessageIndex* among(const fxEventQueue* queue);
    static fxMessageIndex* wanted(fxEventQueue& queue);
    static void tidy(fxEventQueue& queue);
    static void settle(fxEventQueue& queue);
    static void settleHead(fxEventQueue& queue);

    Entry* firstBehind(Relation relation, const void* key, long long place) const;
    bool isMisfiled(fxEvent* e) const;
    void enter(fxEvent* e, long long place);
    void refile(Entry* entry);
    void file(Entry* entry, Relation relation, const void* key);
    void unfile(Entry* entry, Relation relation);
    List** linkTo(Relation relation, const void* key) const;
    void grow(Table& table);

    static fxMessageIndex* newest;  // all of them; there is hardly ever more than one

    fxEventQueue* queue;
    fxMessageIndex* older;
    long long lowest;   // place of the head
    long long highest;  // place of the tail
    Table tables[relations];

    const void** ends;  // owned: targets that have ended since all was in order
    unsigned int endCount;
    unsigned int endRoom;
};
