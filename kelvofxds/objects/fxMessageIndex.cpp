// fxMessageIndex.cpp - what fxMessageIndexInternal.h promises.

#include "kelvofxds/objects/fxMessageIndexInternal.h"

#include <climits>
#include <cstdint>
#include <cstdlib>

#include "kelvofxds/core/fxFreeListInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/core/fxTableOfInternal.h"
#include "kelvofxds/objects/fxChannelsInternal.h"
#include "kelvofxds/objects/fxEvent.h"
#include "kelvofxds/objects/fxInputChannel.h"
#include "kelvofxds/objects/fxMessagePoolInternal.h"

namespace {
// Up to the first a look at each event is as good. An index that exists is kept
// until the queue is shorter than the second, so that a queue that wavers is
// not indexed again and again.
const unsigned int longQueue = 64;
const unsigned int shortQueue = 32;

const unsigned int fewestBuckets = 64;

// An event that its base's constructor has posted has another channel, or
// becomes a message, when its own constructor runs. Whether that has happened
// shows in its first word. Such an event is looked at until the next delivery,
// before which no constructor that has posted anything can be running; and by
// so many look-ups at most, so that each event pays for a bounded number.
const unsigned int mostLooks = 64;

template <class Block>
fxFreeList<sizeof(Block)> freeBlocks;

// The object that a channel receives for as long as it has messages; null if a
// host may make it another one, of which nothing would be heard.
const void* lastingOwnerOf(const fxInputChannel* channel) {
    const unsigned int kind = fxInputChannel::ownFlag | fxInputChannel::linkFlag;
    const bool isOwn = (channel->flags & kind) == fxInputChannel::ownFlag;
    return isOwn ? static_cast<const fxOwnInput*>(channel)->getOwner() : nullptr;
}

// fxChannels::receiverOf, but most channels are plain.
bool receivesFor(const fxInputChannel* channel, const void* target) {
    const unsigned int kind = fxInputChannel::ownFlag | fxInputChannel::linkFlag;
    const bool isPlain = (channel->flags & kind) == 0;
    return (isPlain ? channel->target : fxChannels::receiverOf(channel)) == target;
}

// The channel of a message; null for any other event.
fxInputChannel* channelOf(fxEvent* e) {
    return e->getType() == fxET_MessageEvent ? e->getChannel() : nullptr;
}
}  // namespace

// A queued message, or an event of a host's class.
struct fxEventQueue::Index::Entry {
    fxEvent* key;
    Entry* following;   // in the bucket
    long long place;    // orders the entries as the queue is ordered
    Chain* chain;       // null unless it is a message
    const void* table;  // null once it is settled
    unsigned int looks;
    Entry* previous[relations];
    Entry* next[relations];
};

// The messages for one channel, in the order of the queue.
struct fxEventQueue::Index::Chain {
    fxInputChannel* key;
    Chain* following;  // in the bucket
    List messages;
    unsigned int count;
    unsigned int askedAt;  // index in `asked`, if it is
    Owner* owner;          // null if it is asked
    Chain* previous;       // of the owner's
    Chain* next;
    Chain* nextMatching;  // of Matching
};

// What lastingOwnerOf says, and the channels of which it says so.
struct fxEventQueue::Index::Owner {
    const void* key;
    Owner* following;  // in the bucket
    Chain* chains;
};

fxEventQueue::Index* fxEventQueue::Index::newest = nullptr;

// When there is one.

fxEventQueue::Index::Index(fxEventQueue* owner)
    : queue(owner),
      older(newest),
      firstEntered(nullptr),
      lastEntered(nullptr),
      lowest(0),
      highest(-1),
      entries(),
      channels(),
      owners(),
      asked(nullptr),
      askedSize(0),
      numberAsked(0),
      young(),
      lookUps(0),
      hasBeenLookedUp(false) {
    newest = this;
}

fxEventQueue::Index::~Index() {
    Index** link = &newest;
    while (*link != this)
        link = &(*link)->older;
    *link = older;
    for (unsigned int i = 0; i < entries.size; ++i) {
        while (Entry* entry = entries.buckets[i]) {
            // It takes the entry out of its bucket.
            leave(entry);  // NOLINT(clang-analyzer-cplusplus.NewDelete)
        }
    }
    std::free(entries.buckets);
    std::free(channels.buckets);
    std::free(owners.buckets);
    std::free(asked);
}

fxEventQueue::Index* fxEventQueue::Index::among(const fxEventQueue* queue) {
    Index* index = newest;
    while (index && index->queue != queue)
        index = index->older;
    return index;
}

// Drops an index that nobody needs.
void fxEventQueue::Index::tidy(fxEventQueue& queue) {
    Index* index = of(&queue);
    if (!index || index->lookUps != 0)
        return;
    if (!index->hasBeenLookedUp || queue.count < shortQueue)
        delete index;
    else
        index->hasBeenLookedUp = false;
}

// Looking up. What is removed may change everything but whether the index is
// there.

class fxEventQueue::Index::LookUp {
public:
    // Makes the index of a long queue if need be.
    explicit LookUp(fxEventQueue& q) : queue(q), index(of(&q)) {
        if (index && index->lookUps == 0 && queue.count < shortQueue) {
            delete index;
            index = nullptr;
        }
        if (!index && queue.count >= longQueue)
            index = fxNew<Index>(&queue);
        if (!index)
            return;
        ++index->lookUps;
        index->hasBeenLookedUp = true;
        index->catchUp();
        index->ask();
    }
    LookUp(const LookUp&) = delete;
    LookUp& operator=(const LookUp&) = delete;
    ~LookUp() {
        if (index)
            --index->lookUps;
    }

    // Null in a short queue.
    Index* found() const { return index; }

    // Removes the entries that first(place) finds behind a place, one by one.
    template <class First>
    void remove(void* argument, Predicate predicate, First first) {
        // As a walk over the queue does, this stops behind the event that is
        // the last one when it is reached.
        bool isLast = false;
        for (long long place = LLONG_MIN; !isLast; index->catchUp()) {
            Entry* entry = first(place);
            if (!entry)
                break;
            place = entry->place;
            fxEvent* e = entry->key;
            isLast = e == queue.tail;
            if (predicate(e, argument))
                queue.remove(e);
        }
    }

private:
    fxEventQueue& queue;
    Index* index;
};

bool fxEventQueue::Index::removeFor(fxEventQueue& queue, fxInputChannel* channel,
                                    Predicate predicate) {
    LookUp lookUp(queue);
    const Index* index = lookUp.found();
    if (!index)
        return false;
    lookUp.remove(channel, predicate, [index, channel](long long place) {
        const Chain* chain = index->channels.find(channel);
        Entry* entry = chain ? chain->messages.first : nullptr;
        while (entry && entry->place <= place)
            entry = entry->next[ofChannel];
        return entry;
    });
    return true;
}

// The messages that reach a target, from a place on. What goes may retarget
// channels and send more, so all are asked again behind each message, unless that
// one is known to have called nobody.
class fxEventQueue::Index::Matching {
public:
    Matching(const Index& i, const void* t)
        : index(i), target(t), first(nullptr), messages(0), chains(0), isKnown(false) {
        ask();
    }

    bool isEmpty() const { return !first; }

    // Channels looked at if all messages are taken, in the worst case.
    unsigned long long cost() const {
        unsigned long long callers = 0;
        for (const Chain* chain = first; chain; chain = chain->nextMatching) {
            for (const Entry* entry = chain->messages.first; entry; entry = entry->next[ofChannel])
                callers += fxMessageEvent::Pool::callsNobody(entry->key) ? 0 : 1;
        }
        return messages * chains + callers * index.numberAsked;
    }

    // The entry that will be removed next; null at the end.
    Entry* take(long long place) {
        if (!isKnown)
            ask();
        Entry* found = nullptr;
        for (const Chain* chain = first; chain; chain = chain->nextMatching) {
            Entry* entry = chain->messages.first;
            while (entry && entry->place <= place)
                entry = entry->next[ofChannel];
            if (entry && (!found || entry->place < found->place))
                found = entry;
        }
        isKnown = found && fxMessageEvent::Pool::callsNobody(found->key);
        if (isKnown && found->chain->count == 1)
            drop(found->chain);
        return found;
    }

private:
    void ask() {
        first = nullptr;
        messages = 0;
        chains = 0;
        isKnown = true;
        const Owner* owner = index.owners.find(target);
        for (Chain* chain = owner ? owner->chains : nullptr; chain; chain = chain->next) {
            if (receivesFor(chain->key, target))
                add(chain);
        }
        for (unsigned int i = 0; i < index.numberAsked; ++i) {
            if (__builtin_expect(receivesFor(index.asked[i], target), false))
                add(index.channels.find(index.asked[i]));
        }
    }

    void add(Chain* chain) {
        chain->nextMatching = first;
        first = chain;
        messages += chain->count;
        ++chains;
    }

    void drop(const Chain* chain) {
        for (Chain** link = &first; *link; link = &(*link)->nextMatching) {
            if (*link == chain) {
                *link = chain->nextMatching;
                return;
            }
        }
    }

    const Index& index;
    const void* target;
    Chain* first;
    unsigned long long messages;
    unsigned long long chains;
    bool isKnown;  // the list is what asking would give
};

bool fxEventQueue::Index::removeForTarget(fxEventQueue& queue, void* target, Predicate predicate) {
    LookUp lookUp(queue);
    const Index* index = lookUp.found();
    if (!index)
        return false;
    Matching matching(*index, target);
    if (matching.isEmpty())
        return true;
    if (matching.cost() > queue.count)
        return false;
    lookUp.remove(target, predicate, [&matching](long long place) { return matching.take(place); });
    return true;
}

// Entering and leaving.

// Events are linked at the two ends only.
void fxEventQueue::Index::catchUp() {
    fxEvent* e = firstEntered ? firstEntered->prev : nullptr;
    for (; e; e = e->prev)
        enter(e, --lowest);
    e = lastEntered ? lastEntered->next : queue->head;
    for (; e; e = e->next)
        enter(e, ++highest);
    firstEntered = queue->head;
    lastEntered = queue->tail;
}

void fxEventQueue::Index::enter(fxEvent* e, long long place) {
    auto* entry = new (freeBlocks<Entry>.allocate(sizeof(Entry))) Entry();
    entry->key = e;
    entry->place = place;
    entries.add(entry);
    if (!fxMessageEvent::Pool::isPooled(e)) {
        entry->table = fxTableOf(e);
        link(young, unsettled, entry, young.last);
    }
    join(entry);
}

void fxEventQueue::Index::unlinking(const fxEvent* e) {
    Entry* entry = entries.find(e);
    if (!entry)
        return;
    const bool isFirst = e == firstEntered;
    const bool isLast = e == lastEntered;
    if (isFirst)
        firstEntered = isLast ? nullptr : e->next;
    if (isLast)
        lastEntered = isFirst ? nullptr : e->prev;
    leave(entry);
}

void fxEventQueue::Index::leave(Entry* entry) {
    if (entry->table)
        unlink(young, unsettled, entry);
    part(entry);
    entries.cut(entry);
    freeBlocks<Entry>.release(entry, sizeof(Entry));
}

// Asks those events anew that have become something else.
void fxEventQueue::Index::ask() {
    Entry* following = nullptr;
    for (Entry* entry = young.first; entry; entry = following) {
        following = entry->next[unsettled];
        const void* table = fxTableOf(entry->key);
        if (table != entry->table) {
            entry->table = table;
            part(entry);
            join(entry);
        } else if (++entry->looks == mostLooks) {
            unlink(young, unsettled, entry);
            entry->table = nullptr;
        }
    }
}

void fxEventQueue::Index::settle() {
    for (Entry* entry = young.first; entry; entry = entry->next[unsettled])
        entry->table = nullptr;
    young = List();
}

// Most messages come last, urgent ones first.
void fxEventQueue::Index::join(Entry* entry) {
    fxInputChannel* channel = channelOf(entry->key);
    entry->chain = nullptr;
    if (!channel)
        return;
    Chain* chain = channels.find(channel);
    if (!chain)
        chain = makeChain(channel);
    Entry* before = chain->messages.last;
    if (before && entry->place < chain->messages.first->place)
        before = nullptr;
    while (before && before->place > entry->place)
        before = before->previous[ofChannel];
    link(chain->messages, ofChannel, entry, before);
    entry->chain = chain;
    ++chain->count;
}

void fxEventQueue::Index::part(Entry* entry) {
    Chain* chain = entry->chain;
    if (!chain)
        return;
    unlink(chain->messages, ofChannel, entry);
    if (--chain->count == 0)
        endChain(chain);
}

fxEventQueue::Index::Chain* fxEventQueue::Index::makeChain(fxInputChannel* channel) {
    auto* chain = new (freeBlocks<Chain>.allocate(sizeof(Chain))) Chain();
    chain->key = channel;
    channels.add(chain);
    if (const void* owner = lastingOwnerOf(channel))
        joinOwner(chain, owner);
    else
        joinAsked(chain);
    return chain;
}

void fxEventQueue::Index::endChain(Chain* chain) {
    if (chain->owner)
        partOwner(chain);
    else
        partAsked(chain);
    channels.cut(chain);
    freeBlocks<Chain>.release(chain, sizeof(Chain));
}

void fxEventQueue::Index::joinOwner(Chain* chain, const void* itsOwner) {
    Owner* owner = owners.find(itsOwner);
    if (!owner) {
        owner = new (freeBlocks<Owner>.allocate(sizeof(Owner))) Owner();
        owner->key = itsOwner;
        owners.add(owner);
    }
    chain->owner = owner;
    chain->next = owner->chains;
    if (chain->next)
        chain->next->previous = chain;
    owner->chains = chain;
}

void fxEventQueue::Index::partOwner(Chain* chain) {
    Owner* owner = chain->owner;
    (chain->previous ? chain->previous->next : owner->chains) = chain->next;
    if (chain->next)
        chain->next->previous = chain->previous;
    if (owner->chains)
        return;
    owners.cut(owner);
    freeBlocks<Owner>.release(owner, sizeof(Owner));
}

void fxEventQueue::Index::joinAsked(Chain* chain) {
    if (numberAsked == askedSize) {
        askedSize = askedSize != 0 ? askedSize * 2 : fewestBuckets;
        // NOLINTNEXTLINE(bugprone-sizeof-expression): the elements are pointers.
        void* grown = std::realloc(asked, askedSize * sizeof *asked);
        if (!grown)
            fxOutOfMemory();
        asked = static_cast<fxInputChannel**>(grown);
    }
    chain->askedAt = numberAsked;
    asked[numberAsked++] = chain->key;
}

// The last one takes its place.
void fxEventQueue::Index::partAsked(const Chain* chain) {
    fxInputChannel* last = asked[--numberAsked];
    channels.find(last)->askedAt = chain->askedAt;
    asked[chain->askedAt] = last;
}

void fxEventQueue::Index::link(List& list, Relation relation, Entry* entry, Entry* before) {
    Entry*& behind = before ? before->next[relation] : list.first;
    entry->previous[relation] = before;
    entry->next[relation] = behind;
    (behind ? behind->previous[relation] : list.last) = entry;
    behind = entry;
}

void fxEventQueue::Index::unlink(List& list, Relation relation, Entry* entry) {
    Entry* before = entry->previous[relation];
    Entry* behind = entry->next[relation];
    (before ? before->next[relation] : list.first) = behind;
    (behind ? behind->previous[relation] : list.last) = before;
}

// The tables.

// Where the node with `key` is linked, or would be.
template <class Node>
Node** fxEventQueue::Index::Table<Node>::linkTo(const void* key) const {
    const std::uint32_t golden = 2654435769U;  // spreads addresses, whose low bits are alike
    const std::uint32_t hash = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(key));
    Node** link = &buckets[(hash * golden >> 8) & (size - 1)];
    while (*link && (*link)->key != key)
        link = &(*link)->following;
    return link;
}

template <class Node>
void fxEventQueue::Index::Table<Node>::add(Node* node) {
    if (used == size) {
        const Table old = *this;
        size = old.size != 0 ? old.size * 2 : fewestBuckets;
        // NOLINTNEXTLINE(bugprone-sizeof-expression): the buckets are pointers.
        buckets = static_cast<Node**>(std::calloc(size, sizeof(Node*)));
        if (!buckets)
            fxOutOfMemory();
        for (unsigned int i = 0; i < old.size; ++i) {
            while (Node* each = old.buckets[i]) {
                old.buckets[i] = each->following;
                each->following = nullptr;
                *linkTo(each->key) = each;
            }
        }
        std::free(old.buckets);
    }
    *linkTo(node->key) = node;
    ++used;
}

template <class Node>
void fxEventQueue::Index::Table<Node>::cut(Node* node) {
    *linkTo(node->key) = node->following;
    --used;
}
