// fxMessageIndexInternal.h - the messages of a long queue by the channels they are for.
#pragma once

#include "kelvofxds/objects/fxEventQueue.h"

class fxInputChannel;

/// Finds the queued messages for a channel or a target without a look at the
/// others, so that the end of an object costs what is queued for it, and a look
/// at each channel that has messages and whose target may have changed.
///
/// That is every one but an fxOwnInput, which receives for its owner. A target is
/// asked for at each look-up, never remembered: hosts may set it at any time, of
/// which nothing is heard.
///
/// A queue has an index from the first look-up in a long queue until a look-up
/// or a distribution finds it short, or a distribution has passed without a
/// look-up. What is queued is entered by the next look-up, so that sending pays
/// nothing; what leaves the queue is taken out at once.
class __attribute__((visibility("hidden"))) fxEventQueue::Index {
public:
    using Predicate = unsigned char (*)(fxEvent*, void*);

    /// The index of `queue`; null if it has none.
    static Index* of(const fxEventQueue* queue) {
        return __builtin_expect(newest != nullptr, false) ? among(queue) : nullptr;
    }

    /// What fxEventHandler::removeEvents does, for a predicate that is true
    /// only of messages for `channel`. False if that is to be done by a walk
    /// over the queue, which then costs no more.
    static bool removeFor(fxEventQueue& queue, fxInputChannel* channel, Predicate predicate);
    /// The same for messages that reach `target`.
    static bool removeForTarget(fxEventQueue& queue, void* target, Predicate predicate);
    /// An event is about to be delivered.
    static void beforeDelivery(fxEventQueue& queue) {
        if (Index* index = of(&queue))
            index->settle();
    }
    /// The events have been distributed.
    static void afterDistribution(fxEventQueue& queue) {
        if (__builtin_expect(newest != nullptr, false))
            tidy(queue);
    }

    /// Without entries.
    explicit Index(fxEventQueue* owner);
    Index(const Index&) = delete;
    Index& operator=(const Index&) = delete;
    ~Index();

    /// `e` is about to be unlinked.
    void unlinking(const fxEvent* e);

private:
    struct Entry;
    struct Chain;
    struct Owner;
    class LookUp;
    class Matching;
    enum Relation { ofChannel, unsettled, relations };

    struct List {
        Entry* first;
        Entry* last;
    };

    // What is found by its key, an address.
    template <class Node>
    struct Table {
        Node* find(const void* key) const { return size != 0 ? *linkTo(key) : nullptr; }
        Node** linkTo(const void* key) const;
        void add(Node* node);
        void cut(Node* node);

        Node** buckets;
        unsigned int size;  // a power of two
        unsigned int used;
    };

    static Index* among(const fxEventQueue* queue);
    static void tidy(fxEventQueue& queue);

    void catchUp();
    void ask();
    void settle();
    void enter(fxEvent* e, long long place);
    void leave(Entry* entry);
    void join(Entry* entry);
    void part(Entry* entry);
    Chain* makeChain(fxInputChannel* channel);
    void endChain(Chain* chain);
    void joinOwner(Chain* chain, const void* itsOwner);
    void partOwner(Chain* chain);
    void joinAsked(Chain* chain);
    void partAsked(const Chain* chain);
    static void link(List& list, Relation relation, Entry* entry, Entry* before);
    static void unlink(List& list, Relation relation, Entry* entry);

    static Index* newest;  // all of them; there is hardly ever more than one

    fxEventQueue* queue;
    Index* older;
    fxEvent* firstEntered;  // those from here to lastEntered are in
    fxEvent* lastEntered;
    long long lowest;   // place of firstEntered
    long long highest;  // place of lastEntered
    Table<Entry> entries;
    Table<Chain> channels;
    Table<Owner> owners;     // of the channels that are never asked for a target
    fxInputChannel** asked;  // the other ones: dense, since all are asked each time
    unsigned int askedSize;
    unsigned int numberAsked;
    List young;            // events that may be under construction
    unsigned int lookUps;  // in progress
    bool hasBeenLookedUp;  // since a distribution ended
};
