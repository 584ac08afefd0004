// Sizes of strings, buffers and paths, of lists, and of what streams transfer.

#if KELVOFXDS_LIBRARY_IS_CHECKED

#include <cstdlib>
#include <string>

#include "kelvofxds/lists/GenericList.h"
#include "kelvofxds/lists/HashTable.h"
#include "kelvofxds/lists/NameSpace.h"
#include "kelvofxds/lists/fxIndexableList.h"
#include "kelvofxds/objects/fxSequencer.h"
#include "kelvofxds/pattern/fxSLinearPattern.h"
#include "kelvofxds/str/fxPathNames.h"
#include "kelvofxds/str/fxStackBuffer.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxTempStr.h"
#include "tests/figures/sizes.h"

namespace {

fxStr word() { return fxStr("word"); }

template <class Change>
bool stays(Change change) {
    fxStr text("word");
    change(text);
    return text == "word";
}

const auto isStated = SizeOutcome::isStated;
const auto hasNoMemory = SizeOutcome::hasNoMemory;
const auto ends = SizeOutcome::ends;

// Positions and counts beyond the end are cut to the end.
const std::vector<SizeRow> strings = {
    {"fxStr::fxStr", "fxStr", 1, 1, hasNoMemory, [](unsigned int n) { return fxStr(n) == ""; }},
    {"fxStr::fxStr", "fxStr", 1, 1, hasNoMemory,
     [](unsigned int n) { return fxStr("a", n) == ""; }},
    {"fxStr::append", "fxStr", 1, 5, hasNoMemory,
     [](unsigned int n) { return stays([n](fxStr& s) { s.append("a", n); }); }},
    {"fxStr::insert", "fxStr", 1, 5, hasNoMemory,
     [](unsigned int n) { return stays([n](fxStr& s) { s.insert("a", 2, n); }); }},
    {"fxStr::insert", "", 1, 0, isStated,
     [](unsigned int n) {
         fxStr s("word");
         s.insert("s", n);
         return s == "words";
     }},
    {"fxStr::insert", "", 1, 0, isStated,
     [](unsigned int n) {
         fxStr s("word");
         s.insert('s', n);
         return s == "words";
     }},
    {"fxStr::replace", "", 1, 0, isStated,
     [](unsigned int n) {
         fxStr s("word");
         s.replace("abcdefgh", 1, n);
         return s == "wabc";
     }},
    {"fxStr::replace", "", 1, 0, isStated,
     [](unsigned int n) { return stays([n](fxStr& s) { s.replace("ab", n); }); }},
    {"fxStr::remove", "", 1, 0, isStated,
     [](unsigned int n) { return stays([n](fxStr& s) { s.remove(n, 2); }); }},
    {"fxStr::remove", "", 1, 0, isStated,
     [](unsigned int n) {
         fxStr s("word");
         s.remove(1, n);
         return s == "w";
     }},
    {"fxStr::cut", "", 1, 0, isStated,
     [](unsigned int n) { return stays([n](fxStr& s) { s.cut(n, 2); }); }},
    {"fxStr::cut", "", 1, 0, isStated, [](unsigned int n) { return word().cut(1, n) == "ord"; }},
    {"fxStr::resize", "fxStr", 1, 1, hasNoMemory,
     [](unsigned int n) { return stays([n](fxStr& s) { s.resize(n); }); }},
    {"fxStr::setMaxLength", "fxStr", 1, 1, hasNoMemory,
     [](unsigned int n) { return stays([n](fxStr& s) { s.setMaxLength(n); }); }},
    {"fxStr::resizeInternal", "fxStr", 1, 1, hasNoMemory,
     [](unsigned int n) { return stays([n](fxStr& s) { s.resizeInternal(n); }); }},
    {"fxStr::setMaxLength", "", 1, 0, isStated,
     [](unsigned int n) {
         fxStr s;
         s.setMaxLength(n);
         return s == "";
     }},
    {"fxStr::extract", "", 1, 0, isStated,
     [](unsigned int n) { return word().extract(n, 2) == ""; }},
    {"fxStr::extract", "", 1, 0, isStated,
     [](unsigned int n) { return word().extract(1, n) == "ord"; }},
    {"fxStr::extract", "", 1, 0, isStated,
     [](unsigned int n) { return word().extract(n, n) == ""; }},
    {"fxStr::head", "", 1, 0, isStated, [](unsigned int n) { return word().head(n) == "word"; }},
    {"fxStr::tail", "", 1, 0, isStated, [](unsigned int n) { return word().tail(n) == "word"; }},
    {"fxStr::next", "", 1, 0, isStated, [](unsigned int n) { return word().next(n, 'w') == 4; }},
    {"fxStr::next", "", 1, 0, isStated, [](unsigned int n) { return word().next(n, "w") == 4; }},
    {"fxStr::nextR", "", 1, 0, isStated, [](unsigned int n) { return word().nextR(n, 'w') == 1; }},
    {"fxStr::nextR", "", 1, 0, isStated, [](unsigned int n) { return word().nextR(n, "w") == 1; }},
    {"fxStr::skip", "", 1, 0, isStated, [](unsigned int n) { return word().skip(n, 'w') == 4; }},
    {"fxStr::skip", "", 1, 0, isStated, [](unsigned int n) { return word().skip(n, "w") == 4; }},
    {"fxStr::skipR", "", 1, 0, isStated, [](unsigned int n) { return word().skipR(n, 'd') == 3; }},
    {"fxStr::skipR", "", 1, 0, isStated, [](unsigned int n) { return word().skipR(n, "d") == 3; }},
    {"fxStr::token", "", 1, 0, isStated,
     [](unsigned int n) { return word().token(n, 'r') == "" && n == 4; }},
    {"fxStr::token", "", 1, 0, isStated,
     [](unsigned int n) { return word().token(n, "r") == "" && n == 4; }},
    {"fxStr::tokenR", "", 1, 0, isStated,
     [](unsigned int n) { return word().tokenR(n, 'r') == "d" && n == 2; }},
    {"fxStr::tokenR", "", 1, 0, isStated,
     [](unsigned int n) { return word().tokenR(n, "r") == "d" && n == 2; }},
};

const std::vector<SizeRow> buffers = {
    {"fxTempStr::fxTempStr", "fxStr", 1, 2, hasNoMemory,
     [](unsigned int n) { return fxTempStr("a", n, "b", 1).length() == 0; }},
    {"fxTempStr::fxTempStr", "fxStr", 1, 2, hasNoMemory,
     [](unsigned int n) { return fxTempStr("a", 1, "b", n).length() == 0; }},
    {"fxTempStr::concat", "fxStr", 1, 3, hasNoMemory,
     [](unsigned int n) { return fxTempStr("a", 1, "b", 1).concat("c", n).length() == 0; }},
    {"fxStackBuffer::put", "fxStackBuffer", 1, 3, hasNoMemory,
     [](unsigned int n) {
         fxStackBuffer buffer;
         buffer.put("abc", 3);
         buffer.put("d", n);
         return false;
     }},
    {"fxStackBuffer::grow", "fxStackBuffer", 1, 1000, hasNoMemory,
     [](unsigned int n) {
         fxStackBuffer buffer;
         buffer.grow(n);
         return false;
     }},
    {"fxStackBuffer::fxStackBuffer", "", 1, 0, isStated,
     [](unsigned int n) {
         fxStackBuffer buffer(n);
         buffer.put("abc", 3);
         return buffer.length() == 3;
     }},
    {"fxSLinearPattern::fxSLinearPattern", "", 1, 0, hasNoMemory,
     [](unsigned int n) { return fxSLinearPattern("a", n).findBuffer("a", 1) == 0; }},
    {"symbolicLinkExtendedName", "", 1, 0, isStated,
     [](unsigned int n) { return symbolicLinkExtendedName("/no such link", n) == nullptr; }},
    {"environmentVariableExtendedName", "", 1, 0, isStated,
     [](unsigned int n) { return environmentVariableExtendedName("text", n) == nullptr; }},
};

// As positions these are large or negative.

struct Numbers {
    Numbers() {
        for (int& number : numbers)
            list.append(&number);
    }
    int numbers[3];
    GenericList list;
};

struct Links {
    Links() {
        for (int i = 0; i < 3; ++i)
            list.append(new fxLinkItem);
    }
    fxIndexableList list;
};

long position(unsigned int n) { return static_cast<long>(n); }

const char outOfBounds[] = "List bounds violation in ../GenericList.cxx aborting ...";

const std::vector<SizeRow> lists = {
    {"GenericList::insertAt", outOfBounds, 1, 0, ends,
     [](unsigned int n) {
         Numbers three;
         three.list.insertAt(position(n), &three);
         return false;
     }},
    {"GenericList::remove", outOfBounds, 1, 0, ends,
     [](unsigned int n) { return Numbers().list.remove(position(n)) == nullptr; }},
    {"GenericList::findNode", outOfBounds, 1, 0, ends,
     [](unsigned int n) { return Numbers().list.findNode(position(n)) == nullptr; }},
    {"GenericList::findItem", outOfBounds, 1, 0, ends,
     [](unsigned int n) { return Numbers().list.findItem(position(n)) == nullptr; }},
    {"GenericList::findItem", outOfBounds, 1, 0, ends,
     [](unsigned int n) { return Numbers().list.findItem(static_cast<int>(n)) == nullptr; }},
    {"fxIndexableList::findLink", "", 1, 0, isStated,
     [](unsigned int n) { return Links().list.findLink(position(n)) == nullptr; }},
    {"fxIndexableList::unlinkAt", "", 1, 0, isStated,
     [](unsigned int n) {
         Links three;
         three.list.unlinkAt(position(n));
         return three.list.length() == 3;
     }},
    {"fxIndexableList::splitAt", "", 1, 0, isStated,
     [](unsigned int n) {
         Links three;
         three.list.splitAt(position(n));
         return three.list.length() == 3;
     }},
    {"fxIndexableList::insertAt", "", 1, 0, isStated,
     [](unsigned int n) {
         Links three;
         auto* const link = new fxLinkItem;
         three.list.insertAt(position(n), link);
         return three.list.findLink(position(n) < 0 ? 0 : 3) == link;
     }},
    {"fxIndexableList::appendAt", "", 1, 0, isStated,
     [](unsigned int n) {
         Links three;
         auto* const link = new fxLinkItem;
         three.list.appendAt(position(n), link);
         return three.list.length() == 4;
     }},
    {"fxIndexableList::insertListAt", "", 1, 0, isStated,
     [](unsigned int n) {
         Links three;
         Links others;
         three.list.insertListAt(position(n), &others.list);
         return three.list.length() == 6;
     }},
    {"fxIndexableList::appendListAt", "", 1, 0, isStated,
     [](unsigned int n) {
         Links three;
         Links others;
         three.list.appendListAt(position(n), &others.list);
         return three.list.length() == 6;
     }},
    {"HashTable::add", "", 1, 0, isStated,
     [](unsigned int n) {
         HashTable table;
         table.add(n, &table);
         return table.lookup(n) == &table && !table.lookup(n ^ 0x80000000);
     }},
    {"HashTable::remove", "", 1, 0, isStated,
     [](unsigned int n) {
         HashTable table;
         table.addElement(7);
         table.remove(n);
         return table.searchBucketFor(nullptr, n) == nullptr && table.hash(n) < 64;
     }},
    {"NameSpace::makeAtom", "", 4, 0, ends,
     [](unsigned int n) { return NameSpace(nullptr, 1).makeAtom(n, "a", 1, 1) == 0; }},
    {"NameSpace::internAtom", "", 4, 0, ends,
     [](unsigned int n) { return NameSpace(nullptr, 0).internAtom(n, "a", 1, 1) == 0; }},
    {"NameSpace::validAtom", "", 4, 0, isStated,
     [](unsigned int n) { return NameSpace(nullptr, 0).validAtom(n) == 0; }},
    {"NameSpace::nameForAtom", "", 4, 0, isStated,
     [](unsigned int n) { return NameSpace(nullptr, 0).nameForAtom(n) == nullptr; }},
    {"fxSequencer::operator()", "", 1, 0, isStated,
     [](unsigned int n) {
         fxSequencer numbers;
         return numbers(n) == n && numbers() != n;
     }},
};

const AddSizeRows added[] = {AddSizeRows(strings), AddSizeRows(buffers), AddSizeRows(lists)};

}  // namespace

#endif
