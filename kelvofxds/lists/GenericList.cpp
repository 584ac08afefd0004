#include "kelvofxds/lists/GenericList.h"

#include <cstdlib>
#include <new>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxFatal.h"

namespace {
const char boundsViolation[] = "List bounds violation in ../GenericList.cxx aborting ...";
const char underflow[] = "List underflow in ../GenericList.cxx aborting ...";

GenericNode* newNode(void* item) {
    GenericNode* node = new (std::nothrow) GenericNode(item);
    if (!node)
        std::abort();
    return node;
}

#ifdef KELVOFXDS_CHECKED
// Whether the node's neighbours lead to it, and the ends of its chain are the list's.
bool isLinked(const GenericNode* node, const GenericNode* head, const GenericNode* tail) {
    return (node->prev ? node->prev->next : head) == node &&
           (node->next ? node->next->prev : tail) == node;
}
#endif

GenericNode* forward(GenericNode* node, long steps) {
    for (; steps > 0; --steps)
        node = node->next;
    return node;
}

GenericNode* backward(GenericNode* node, long steps) {
    for (; steps > 0; --steps)
        node = node->prev;
    return node;
}
}  // namespace

GenericNode::~GenericNode() {
    if (prev)
        prev->next = next;
    if (next)
        next->prev = prev;
}

GenericList::GenericList()
    : count(0), cursorIndex(0), head(nullptr), tail(nullptr), cursorNode(nullptr) {}

GenericList::GenericList(const GenericList& other) : GenericList() {
    for (const GenericNode* node = other.head; node; node = node->next)
        append(node->item);
}

GenericList::~GenericList() { clear(); }

void GenericList::setCursor(long i, GenericNode* node) const {
    cursorIndex = static_cast<int>(i);
    cursorNode = node;
}

void GenericList::append(void* item) {
    if (!head) {
        prepend(item);
        return;
    }
    GenericNode* node = newNode(item);
    node->prev = tail;
    tail->next = node;
    tail = node;
    setCursor(count, node);
    ++count;
}

void GenericList::prepend(void* item) {
    GenericNode* node = newNode(item);
    node->next = head;
    if (head)
        head->prev = node;
    else
        tail = node;
    head = node;
    setCursor(0, node);
    ++count;
}

void GenericList::insertAt(long i, void* item) {
    if (i < 0 || i > count)
        fxFatal(boundsViolation);
    if (i == 0) {
        prepend(item);
    } else if (i == count) {
        append(item);
    } else {
        GenericNode* before = findNode(i - 1);
        GenericNode* node = newNode(item);
        node->prev = before;
        node->next = before->next;
        before->next->prev = node;
        before->next = node;
        setCursor(i, node);
        ++count;
    }
}

void* GenericList::remove(GenericNode* node) {
    if (count == 0)
        fxFatal(underflow);
    FX_CHECK_NOT_NULL("GenericList", node);
    FX_CHECK_THAT("GenericList", isLinked(node, head, tail),
                  "the node is in no list, or in another");
    void* item = node->item;
    if (node == head)
        head = node->next;
    if (node == tail)
        tail = node->prev;
    delete node;
    --count;
    setCursor(0, head);
    return item;
}

void* GenericList::remove(void* item) {
    for (GenericNode* node = head; node; node = node->next) {
        if (node->item == item)
            return remove(node);
    }
    return nullptr;
}

void* GenericList::remove(long i) { return remove(findNode(i)); }

void GenericList::clear() {
    while (head)
        remove(head);
}

GenericNode* GenericList::findNode(long i) const {
    if (i < 0 || i >= count)
        fxFatal(boundsViolation);
    const long last = count - 1L;
    if (i == 0)
        return head;
    if (i == last)
        return tail;
    if (i == cursorIndex)
        return cursorNode;
    GenericNode* found;
    if (i > cursorIndex)
        found = i - cursorIndex < last - i ? forward(cursorNode, i - cursorIndex)
                                           : backward(tail, last - i);
    else
        found = i < cursorIndex - i ? forward(head, i) : backward(cursorNode, cursorIndex - i);
    setCursor(i, found);
    return found;
}

void* GenericList::findItem(long i) const { return findNode(i)->item; }

void* GenericList::findItem(int i) const { return findNode(i)->item; }
