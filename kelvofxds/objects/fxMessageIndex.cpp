// fxMessageIndex.cpp - what fxMessageIndexInternal.h promises.

#include "kelvofxds/objects/fxMessageIndexInternal.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <utility>

#include "kelvofxds/core/fxFreeListInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/objects/fxEventQueueInternal.h"
#include "kelvofxds/objects/fxInputChannel.h"

namespace {
// Up to the first a look at each event is as good. An index that exists is kept
// until the queue is shorter than the second, so that a queue that wavers is
// not indexed again and again.
const unsigned int longQueue = 64;
const unsigned int shortQueue = 32;

const unsigned int fewestBuckets = 64;

template <class Block>
fxFreeList<sizeof(Block)> freeBlocks;

// The channel of a message; null for any other event.
fxInputChannel* channelOf(fxEvent* e) {
    return e->getType() == fxET_MessageEvent ? e->getChannel() : nullptr;
}

const void* targetOf(fxInputChannel* channel) {
    return channel ? channel->finalChannel()->target : nullptr;
}
}  // namespace

// A queued message. It is in one list of each relation.
struct fxMessageIndex::Entry {
    fxEvent* event;
    long long place;  // orders the entries as the queue is ordered
    List* list[relations];
    Entry* previous[relations];
    Entry* next[relations];
};

// The messages with one key, in the order of the queue.
struct fxMessageIndex::List {
    const void* key;
    Entry* first;
    Entry* last;
    List* following;  // in the bucket
};

fxMessageIndex* fxMessageIndex::newest = nullptr;

// When there is one.

fxMessageIndex::fxMessageIndex(fxEventQueue* owner)
    : queue(owner),
      older(newest),
      lowest(0),
      highest(-1),
      tables(),
      ends(nullptr),
      endCount(0),
      endRoom(0) {
    newest = this;
    for (fxEvent* e = queue->head; e; e = e->next)
        linkedLast(e);
}

fxMessageIndex::~fxMessageIndex() {
    fxMessageIndex** link = &newest;
    while (*link != this)
        link = &(*link)->older;
    *link = older;
    for (const Table& table : tables) {
        for (unsigned int i = 0; i < table.size; ++i) {
            while (List* list = table.buckets[i]) {
                table.buckets[i] = list->following;
                if (&table == &tables[byEvent])
                    freeBlocks<Entry>.release(list->first, sizeof(Entry));
                freeBlocks<List>.release(list, sizeof(List));
            }
        }
        std::free(table.buckets);
    }
    std::free(ends);
}

fxMessageIndex* fxMessageIndex::among(const fxEventQueue* queue) {
    fxMessageIndex* index = newest;
    while (index && index->queue != queue)
        index = index->older;
    return index;
}

// Drops the index of a queue that has become short.
void fxMessageIndex::tidy(fxEventQueue& queue) {
    if (!of(&queue) || queue.count >= shortQueue)
        return;
    settle(queue);
    delete of(&queue);
}

// The index of a long queue, made if need be; null for a short one.
fxMessageIndex* fxMessageIndex::wanted(fxEventQueue& queue) {
    tidy(queue);
    fxMessageIndex* index = of(&queue);
    return index || queue.count < longQueue ? index : fxNew<fxMessageIndex>(&queue);
}

// Looking up. What is removed may change everything, the index included.

bool fxMessageIndex::remove(fxEventQueue& queue, Relation relation, void* key,
                            Predicate predicate) {
    fxMessageIndex* index = wanted(queue);
    if (!index)
        return false;
    // As a walk over the queue does, this stops behind the event that is the
    // last one when it is reached.
    bool isLast = false;
    for (long long place = LLONG_MIN; index && !isLast; index = of(&queue)) {
        Entry* entry = index->firstBehind(relation, key, place);
        if (!entry)
            break;
        place = entry->place;
        fxEvent* e = entry->event;
        isLast = e == queue.tail;
        if (predicate(e, key))
            queue.remove(e);
        else
            settle(queue);
    }
    return true;
}

fxMessageIndex::Entry* fxMessageIndex::firstBehind(Relation relation, const void* key,
                                                   long long place) const {
    const List* list = *linkTo(relation, key);
    Entry* entry = list ? list->first : nullptr;
    while (entry && entry->place <= place)
        entry = entry->next[relation];
    return entry;
}

// Channels whose target has changed.

bool fxMessageIndex::isMisfiled(fxEvent* e) const {
    const List* list = *linkTo(byEvent, e);
    if (!list)
        return false;
    fxInputChannel* channel = channelOf(e);
    return list->first->list[byChannel]->key != channel ||
           list->first->list[byTarget]->key != targetOf(channel);
}

void fxMessageIndex::settleHead(fxEventQueue& queue) {
    const fxMessageIndex* index = of(&queue);
    if (index && queue.head && index->isMisfiled(queue.head))
        settle(queue);
}

// What ends are remembered for is looked for when they are as many as the
// events, so that each end pays for a look at one.
void fxMessageIndex::noteEnd(fxEventQueue& queue, const void* target) {
    fxMessageIndex* index = of(&queue);
    if (!index)
        return;
    const unsigned int most = std::max(longQueue, queue.count);
    if (index->endCount == index->endRoom) {
        index->endRoom = std::max(most, index->endRoom + 1);
        index->ends =
            static_cast<const void**>(fxReallocate(index->ends, sizeof(void*) * index->endRoom));
    }
    index->ends[index->endCount++] = target;
    if (index->endCount >= most)
        settle(queue);
}

// Puts every message where it belongs now. One that turns out to be for a
// target that has ended would have been removed then.
void fxMessageIndex::settle(fxEventQueue& queue) {
    fxMessageIndex* index = of(&queue);
    if (!index)
        return;
    const void** gone = std::exchange(index->ends, nullptr);
    const void** goneEnd = gone + std::exchange(index->endCount, 0U);
    index->endRoom = 0;
    std::sort(gone, goneEnd, std::less<>());
    fxQueueWalk walk(queue.head);
    while (fxEvent* e = walk.next()) {
        index = of(&queue);
        if (!index)
            break;
        if (!index->isMisfiled(e))
            continue;
        const void* target = targetOf(channelOf(e));
        if (std::binary_search(gone, goneEnd, target, std::less<>()))
            queue.remove(e);
        else
            index->refile((*index->linkTo(byEvent, e))->first);
    }
    std::free(gone);
}

// Entering and leaving.

void fxMessageIndex::enter(fxEvent* e, long long place) {
    fxInputChannel* channel = channelOf(e);
    if (!channel)
        return;
    auto* entry = new (freeBlocks<Entry>.allocate(sizeof(Entry))) Entry();
    entry->event = e;
    entry->place = place;
    file(entry, byEvent, e);
    file(entry, byChannel, channel);
    file(entry, byTarget, targetOf(channel));
}

void fxMessageIndex::unlinking(const fxEvent* e) {
    const List* list = *linkTo(byEvent, e);
    if (!list)
        return;
    Entry* entry = list->first;
    for (const Relation relation : {byEvent, byChannel, byTarget})
        unfile(entry, relation);
    freeBlocks<Entry>.release(entry, sizeof(Entry));
}

void fxMessageIndex::refile(Entry* entry) {
    fxInputChannel* channel = channelOf(entry->event);
    if (!channel) {
        unlinking(entry->event);
        return;
    }
    unfile(entry, byChannel);
    file(entry, byChannel, channel);
    unfile(entry, byTarget);
    file(entry, byTarget, targetOf(channel));
}

// Most messages come last, urgent ones first.
void fxMessageIndex::file(Entry* entry, Relation relation, const void* key) {
    List** link = linkTo(relation, key);
    if (!*link) {
        grow(tables[relation]);
        link = linkTo(relation, key);
        *link = new (freeBlocks<List>.allocate(sizeof(List))) List{key, nullptr, nullptr, nullptr};
        ++tables[relation].used;
    }
    List* list = *link;
    Entry* before = list->last;
    if (list->first && entry->place < list->first->place)
        before = nullptr;
    while (before && before->place > entry->place)
        before = before->previous[relation];
    Entry*& behind = before ? before->next[relation] : list->first;
    entry->list[relation] = list;
    entry->previous[relation] = before;
    entry->next[relation] = behind;
    (behind ? behind->previous[relation] : list->last) = entry;
    behind = entry;
}

void fxMessageIndex::unfile(Entry* entry, Relation relation) {
    List* list = entry->list[relation];
    Entry* before = entry->previous[relation];
    Entry* behind = entry->next[relation];
    (before ? before->next[relation] : list->first) = behind;
    (behind ? behind->previous[relation] : list->last) = before;
    if (list->first)
        return;
    List** link = linkTo(relation, list->key);
    *link = list->following;
    --tables[relation].used;
    freeBlocks<List>.release(list, sizeof(List));
}

// The tables.

// Where the list with `key` is linked, or would be.
fxMessageIndex::List** fxMessageIndex::linkTo(Relation relation, const void* key) const {
    static List* nothing = nullptr;
    const Table& table = tables[relation];
    if (table.size == 0)
        return &nothing;
    const std::uint32_t golden = 2654435769U;  // spreads addresses, whose low bits are alike
    const std::uint32_t hash = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(key));
    List** link = &table.buckets[(hash * golden >> 8) & (table.size - 1)];
    while (*link && (*link)->key != key)
        link = &(*link)->following;
    return link;
}

// Makes room for one more list.
void fxMessageIndex::grow(Table& table) {
    if (table.used < table.size)
        return;
    const Table old = table;
    table.size = old.size != 0 ? old.size * 2 : fewestBuckets;
    // NOLINTNEXTLINE(bugprone-sizeof-expression): the buckets are pointers.
    table.buckets = static_cast<List**>(std::calloc(table.size, sizeof(List*)));
    if (!table.buckets)
        fxOutOfMemory();
    const auto relation = static_cast<Relation>(&table - tables);
    for (unsigned int i = 0; i < old.size; ++i) {
        while (List* list = old.buckets[i]) {
            old.buckets[i] = list->following;
            list->following = nullptr;
            *linkTo(relation, list->key) = list;
        }
    }
    std::free(old.buckets);
}
