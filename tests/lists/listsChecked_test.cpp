// listsChecked_test.cpp - misuse of the lists and the hash table, which the checked build stops.

#include <gtest/gtest.h>

#include "kelvofxds/lists/GenericList.h"
#include "kelvofxds/lists/HashTable.h"
#include "kelvofxds/lists/fxIndexableList.h"
#include "tests/support/misuse.h"

namespace {

int item = 0;

struct Two : GenericList {
    Two() {
        append(&item);
        append(&item);
    }
};

const Misuse genericLists[] = {
    {"no node",
     [] {
         Two list;
         list.remove(list.last());
     },
     [] { Two().remove(static_cast<GenericNode*>(nullptr)); }, "GenericList::remove: node is null"},
    {"a node of no list",
     [] {
         Two list;
         list.remove(list.first());
     },
     [] {
         GenericNode node(&item);
         Two().remove(&node);
     },
     "GenericList::remove: the node is in no list, or in another"},
    {"a node at the end of another list",
     [] {
         Two list;
         list.remove(list.first());
     },
     [] {
         Two other;
         Two().remove(other.last());
     },
     "GenericList::remove: the node is in no list, or in another"},
    {"no function", [] { HashTable().mapcar([](HashEntry*) {}); },
     [] { HashTable().mapcar(nullptr); }, "HashTable::mapcar: fn is null"},
};

// Three links in a list, and one beside it.
struct Links {
    Links() {
        for (fxLinkItem& link : of)
            list.append(&link);
    }
    fxLinkItem of[3];
    fxLinkItem other;
    fxIndexableList list;
};

const char noOther[] = "fxIndexableList::insertListAt: other is null";
const char foreign[] = "fxIndexableList::unlink: the link is in no list, or in another";

const Misuse indexableLists[] = {
    {"no link to insert",
     [] {
         Links l;
         l.list.insertAt(1, &l.other);
     },
     [] { Links().list.insertAt(1, nullptr); }, "fxIndexableList::insertAt: link is null"},
    {"the first link again",
     [] {
         Links l;
         l.list.append(&l.other);
     },
     [] {
         Links l;
         l.list.append(&l.of[0]);
     },
     "fxIndexableList::insertAt: the link is in this list already"},
    {"the last link again",
     [] {
         Links l;
         l.list.insert(&l.other);
     },
     [] {
         Links l;
         l.list.insert(&l.of[2]);
     },
     "fxIndexableList::insertAt: the link is in this list already"},
    {"no link to unlink",
     [] {
         Links l;
         l.list.unlink(&l.of[1]);
     },
     [] { Links().list.unlink(nullptr); }, "fxIndexableList::unlink: link is null"},
    {"a link that is in no list",
     [] {
         Links l;
         l.list.unlink(&l.of[0]);
     },
     [] {
         Links l;
         l.list.unlink(&l.other);
     },
     foreign},
    {"a link that has left",
     [] {
         Links l;
         l.list.unlink(&l.of[2]);
     },
     [] {
         Links l;
         l.list.unlink(&l.of[1]);
         l.list.unlink(&l.of[1]);
     },
     foreign},
    {"no link to split at",
     [] {
         Links l;
         l.list.split(&l.of[1]);
     },
     [] { Links().list.split(nullptr); }, "fxIndexableList::split: link is null"},
    {"another list's first link",
     [] {
         Links l;
         l.list.split(&l.of[0]);
     },
     [] {
         Links l, m;
         l.list.split(&m.of[0]);
     },
     "fxIndexableList::split: the link is in no list, or in another"},
    {"doUnlink without a list",
     [] {
         Links l;
         doUnlink(&l.list, &l.of[0]);
     },
     [] {
         Links l;
         doUnlink(nullptr, &l.of[0]);
     },
     "fxIndexableList::doUnlink: list is null"},
    {"doUnlink without a link",
     [] {
         Links l;
         doUnlink(&l.list, &l.of[1]);
     },
     [] {
         Links l;
         doUnlink(&l.list, nullptr);
     },
     "fxIndexableList::doUnlink: link is null"},
    {"doUnlink of another",
     [] {
         Links l;
         doUnlink(&l.list, &l.of[2]);
     },
     [] {
         Links l;
         doUnlink(&l.list, &l.other);
     },
     "fxIndexableList::doUnlink: the link is in no list, or in another"},
    {"doSplit without a list",
     [] {
         Links l;
         doSplit(&l.list, &l.of[0]);
     },
     [] {
         Links l;
         doSplit(nullptr, &l.of[0]);
     },
     "fxIndexableList::doSplit: list is null"},
    {"doSplit without a link",
     [] {
         Links l;
         doSplit(&l.list, &l.of[1]);
     },
     [] {
         Links l;
         doSplit(&l.list, nullptr);
     },
     "fxIndexableList::doSplit: link is null"},
    {"doSplit at another",
     [] {
         Links l;
         doSplit(&l.list, &l.of[2]);
     },
     [] {
         Links l;
         doSplit(&l.list, &l.other);
     },
     "fxIndexableList::doSplit: the link is in no list, or in another"},
    {"no list to insert",
     [] {
         Links l, m;
         l.list.insertListAt(1, &m.list);
     },
     [] { Links().list.insertListAt(1, nullptr); }, noOther},
    {"no list to insert in front",
     [] {
         Links l, m;
         l.list.insertList(&m.list);
     },
     [] { Links().list.insertList(nullptr); }, noOther},
    {"no list to append",
     [] {
         Links l, m;
         l.list.appendList(&m.list);
     },
     [] { Links().list.appendList(nullptr); }, "fxIndexableList::appendListAt: other is null"},
    {"a chain that does not lead back",
     [] {
         Links l;
         const fxIndexableList chain(&l.of[0]);
     },
     [] {
         fxLinkItem first, second;
         first.next = &second;
         const fxIndexableList chain(&first);
     },
     "fxIndexableList::fxIndexableList: the prev of link 1 of the chain does not lead back"},
};

}  // namespace

TEST(listsCheckedDeathTest, nodesAndFunctions) { expectStops(genericLists); }

TEST(listsCheckedDeathTest, linksAndLists) { expectStops(indexableLists); }
