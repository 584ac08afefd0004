#include "kelvofxds/transcribe/fxXDRMembers.h"

#include <csignal>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxArrayOf.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "tests/support/graphs.h"
#include "tests/support/recordingTranscriber.h"

namespace {

// Nodes of any graph. Plain pointers lead on; whoever reads them deletes them.
class MacroNode : public fxXDRObj {
    FX_XDR_MEMBERS(MacroNode)
    MacroNode() { ++alive; }
    ~MacroNode() override { --alive; }

    int value = 0;
    fxStr text;
    MacroNode* left = nullptr;
    MacroNode* right = nullptr;
    unsigned int versionSeen = 77;

    static int alive;
};
int MacroNode::alive = 0;
FX_DEFINE_XDR(MacroNode, "MacroNode", 3)

unsigned char MacroNode::xdr(fxTranscriber& t) {
    versionSeen = t.objectVersion();
    return t.xdr(&value, 1) && text.xdr(t) && fxXdrPointer(t, left) && fxXdrPointer(t, right);
}

// Derived, with a version of its own and a part of its base's.
class MacroLeaf : public MacroNode {
    FX_XDR_MEMBERS(MacroLeaf)
    int extra = 0;
    unsigned int leafVersionSeen = 77;
};
FX_DEFINE_XDR(MacroLeaf, "MacroLeaf", 300)

unsigned char MacroLeaf::xdr(fxTranscriber& t) {
    leafVersionSeen = t.objectVersion();
    return t.xdr(MacroNode_type, nullptr, static_cast<MacroNode*>(this)) && t.xdr(&extra, 1);
}

// Holds what it leads to.
class MacroHolder : public fxXDRObj {
    FX_XDR_MEMBERS(MacroHolder)
    MacroHolder() { ++alive; }
    ~MacroHolder() override { --alive; }

    fxStr text = "a text that every new one has";
    fxRef<MacroNode> first;
    fxRef<const MacroNode> second;
    fxRef<MacroHolder> next;

    static int alive;
};
int MacroHolder::alive = 0;
FX_DEFINE_XDR(MacroHolder, "MacroHolder", 1)

unsigned char MacroHolder::xdr(fxTranscriber& t) {
    return text.xdr(t) && fxXdrRef(t, first) && fxXdrRef(t, second) && fxXdrRef(t, next);
}

// Written with any object as its target, read back as a class with another pointer.
class Pointing : public fxXDRObj {
    FX_XDR_MEMBERS(Pointing)
    fxXDRObj* target = nullptr;
};
FX_DEFINE_XDR(Pointing, "Pointing", 1)
unsigned char Pointing::xdr(fxTranscriber& t) { return fxXdrPointer(t, target); }

const std::size_t headerBytes = 25;

// A copy of `object` and all that it leads to, the test's; null is a failure.
template <class T>
T* throughGraph(T& object) {
    const GraphRead read = readGraph(graphStreamOf(object), fxTypeOf<T>());
    EXPECT_EQ("", read.error);
    return static_cast<T*>(read.object);
}

class MacroFixture : public testing::Test {
protected:
    void TearDown() override {
        EXPECT_EQ(0, MacroNode::alive);
        EXPECT_EQ(0, MacroHolder::alive);
    }
};
using fxXDRMembers = MacroFixture;
using fxXdrPointerTest = MacroFixture;
using fxXdrRefTest = MacroFixture;

}  // namespace

namespace hosts {
namespace {
class Inner : public fxXDRObj {
    FX_XDR_MEMBERS(Inner)
    int value = 0;
};
FX_DEFINE_XDR(Inner, "hosts::Inner", 1)
unsigned char Inner::xdr(fxTranscriber& t) { return t.xdr(&value, 1); }
}  // namespace
}  // namespace hosts

// The members.

TEST_F(fxXDRMembers, defineTheNameTheRecordAndItsFunctions) {
    MacroNode node;
    EXPECT_STREQ("MacroNode", node.className());
    EXPECT_EQ(&MacroNode_type, &node.getTypeObj());
    EXPECT_EQ(&MacroNode_type, &MacroNode::classType());
    EXPECT_EQ(&MacroNode_type, &fxTypeOf<MacroNode>());
    EXPECT_EQ(&MacroNode_type, fxTypeObj::findType("MacroNode"));
    EXPECT_STREQ("MacroNode", MacroNode_type.name);
    EXPECT_EQ(3u, MacroNode_type.version);
    EXPECT_EQ(MacroNode::newInstance, MacroNode_type.create);
    EXPECT_EQ(MacroNode::deleteInstance, MacroNode_type.destroy);

    void* made = MacroNode_type.create(MacroNode_type);
    EXPECT_EQ(2, MacroNode::alive);
    EXPECT_EQ(0, static_cast<MacroNode*>(made)->count);
    MacroNode_type.destroy(made);
    EXPECT_EQ(1, MacroNode::alive);
    MacroNode_type.destroy(nullptr);
}

TEST_F(fxXDRMembers, workInNamespaces) {
    EXPECT_STREQ("hosts::Inner", hosts::Inner().className());
    EXPECT_EQ(&hosts::Inner_type, fxTypeObj::findType("hosts::Inner"));
    hosts::Inner inner;
    inner.value = 12;
    const std::unique_ptr<hosts::Inner> copy(throughGraph(inner));
    EXPECT_EQ(12, copy->value);
}

TEST_F(fxXDRMembers, tellDerivedClassesFromTheirBase) {
    MacroLeaf leaf;
    const MacroNode& base = leaf;
    EXPECT_STREQ("MacroLeaf", base.className());
    EXPECT_EQ(&MacroLeaf_type, &base.getTypeObj());
    EXPECT_EQ(&MacroLeaf_type, &fxTypeOf<MacroLeaf>());
}

namespace {
class NoMemory : public fxXDRObj {
    FX_XDR_MEMBERS(NoMemory)
    static void* operator new(std::size_t, const std::nothrow_t&) noexcept { return nullptr; }
    static void operator delete(void*) {}
};
FX_DEFINE_XDR(NoMemory, "NoMemory", 1)
unsigned char NoMemory::xdr(fxTranscriber&) { return 1; }
}  // namespace

TEST_F(fxXDRMembers, newInstanceIsNullWithoutMemory) {
    EXPECT_EQ(nullptr, NoMemory::newInstance(NoMemory_type));
}

namespace {
class Figure : public fxXDRObj {
    FX_XDR_MEMBERS(Figure)
    virtual double area() const = 0;
    int colour = 0;
    unsigned int versionSeen = 0;
};
FX_DEFINE_ABSTRACT_XDR(Figure, "Figure", 4)
unsigned char Figure::xdr(fxTranscriber& t) {
    versionSeen = t.objectVersion();
    return t.xdr(&colour, 1);
}

class Square : public Figure {
    FX_XDR_MEMBERS(Square)
    double area() const override { return side * side; }
    double side = 0;
    Figure* inside = nullptr;
};
FX_DEFINE_XDR(Square, "Square", 2)
unsigned char Square::xdr(fxTranscriber& t) {
    return t.xdr(Figure_type, nullptr, static_cast<Figure*>(this)) && t.xdr(&side, 1) &&
           fxXdrPointer(t, inside);
}
}  // namespace

TEST_F(fxXDRMembers, abstractClassesArePartsOfOthers) {
    EXPECT_EQ(nullptr, Figure_type.create);
    EXPECT_EQ(nullptr, Figure::newInstance(Figure_type));
    Square outer, inner;
    outer.colour = 3;
    outer.side = 2.5;
    outer.inside = &inner;
    inner.side = 0.5;
    const std::unique_ptr<Square> copy(throughGraph(outer));
    EXPECT_EQ(3, copy->colour);
    EXPECT_EQ(4u, copy->versionSeen);
    EXPECT_EQ(6.25, copy->area());
    ASSERT_NE(nullptr, copy->inside);
    EXPECT_EQ(0.25, copy->inside->area());
    delete copy->inside;
}

// Versions.

TEST_F(fxXDRMembers, objectVersionIsTheClasssOwnOnEveryTranscriber) {
    MacroLeaf leaf;
    RecordingTranscriber host(RecordingTranscriber::writer);
    EXPECT_EQ(1, MacroLeaf_type.xdr(&leaf, host));
    EXPECT_EQ(300u, leaf.leafVersionSeen);

    MacroNode node;
    EXPECT_EQ(1, MacroNode_type.xdr(&node, host));
    EXPECT_EQ(3u, node.versionSeen);

    graphStreamOf(leaf);
    EXPECT_EQ(300u, leaf.leafVersionSeen);
    EXPECT_EQ(3u, leaf.versionSeen);
    const std::unique_ptr<MacroLeaf> copy(throughGraph(leaf));
    EXPECT_EQ(300u, copy->leafVersionSeen);
    EXPECT_EQ(3u, copy->versionSeen);
}

TEST_F(fxXDRMembers, objectVersionIsTheClasssOwnOnTheStandardPair) {
    fxMemoryStream stream;
    stream.count = 1;
    MacroNode node;
    node.value = 9;
    node.text = "a text of its own";
    {
        fxBinaryWriter writer(&stream);
        ASSERT_EQ(1, writer.writeObject(&node, &node));
    }
    EXPECT_EQ(3u, node.versionSeen);
    fxBinaryReader reader(&stream, 0x1122, 0x33445566, "ieee");
    const std::unique_ptr<MacroNode> copy(
        static_cast<MacroNode*>(reader.readObject(MacroNode_type)));
    ASSERT_NE(nullptr, copy);
    EXPECT_EQ(3u, copy->versionSeen);
    EXPECT_EQ(9, copy->value);
    EXPECT_STREQ("a text of its own", copy->text.c_str());
}

// Pointers.

TEST_F(fxXdrPointerTest, sharedAndCyclicGraphsComeBack) {
    MacroNode root, shared;
    MacroLeaf leaf;
    root.left = root.right = &shared;
    shared.left = &leaf;
    shared.right = &root;
    leaf.left = &leaf;
    leaf.value = 5;
    leaf.extra = 6;
    const std::unique_ptr<MacroNode> copy(throughGraph(root));
    ASSERT_NE(nullptr, copy->left);
    EXPECT_EQ(copy->left, copy->right);
    const std::unique_ptr<MacroNode> sharedCopy(copy->left);
    EXPECT_EQ(copy.get(), sharedCopy->right);
    const std::unique_ptr<MacroNode> leafCopy(sharedCopy->left);
    EXPECT_STREQ("MacroLeaf", leafCopy->className());
    EXPECT_EQ(leafCopy.get(), leafCopy->left);
    EXPECT_EQ(nullptr, leafCopy->right);
    EXPECT_EQ(5, leafCopy->value);
    EXPECT_EQ(0, leafCopy->count);
    EXPECT_EQ(0, sharedCopy->count);
}

namespace {

// Reads what a Pointing wrote as an object whose pointer is to `Target`.
template <class Target>
class PointingTo : public fxXDRObj {
public:
    unsigned char xdr(fxTranscriber& t) override { return fxXdrPointer(t, target); }
    fxTypeObj& getTypeObj() const override { return *type; }
    static void* newInstance(fxTypeObj&) { return new PointingTo; }
    static void deleteInstance(void* object) { delete static_cast<PointingTo*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<PointingTo*>(object)->xdr(t);
    }
    Target* target = nullptr;
    static fxTypeObj* type;
};
template <class Target>
fxTypeObj* PointingTo<Target>::type = &Pointing_type;

// Why `bytes` cannot be read so; "" if they can.
template <class Target>
std::string refusal(const std::string& bytes) {
    using Class = PointingTo<Target>;
    fxTypeObj type("Pointing", 1, Class::newInstance, Class::deleteInstance, Class::xdr);
    const GraphRead read = readGraph(bytes, type);
    fxTypeObj::registerType(&Pointing_type);
    const std::unique_ptr<Class> object(static_cast<Class*>(read.object));
    if (object)
        delete object->target;
    return read.error;
}

std::string pointingAt(fxXDRObj& object) {
    Pointing pointing;
    pointing.target = &object;
    return graphStreamOf(pointing);
}

}  // namespace

TEST_F(fxXdrPointerTest, objectsOfOtherClassesAreRefused) {
    MacroNode node;
    MacroLeaf leaf;
    hosts::Inner inner;
    fxXDRObj plain;
    const std::string toNode = pointingAt(node), toLeaf = pointingAt(leaf),
                      toInner = pointingAt(inner), toPlain = pointingAt(plain);
    EXPECT_EQ("", refusal<fxXDRObj>(toNode));
    EXPECT_EQ("", refusal<fxXDRObj>(toInner));
    EXPECT_EQ("", refusal<fxXDRObj>(toPlain));
    EXPECT_EQ("", refusal<MacroNode>(toNode));
    EXPECT_EQ("", refusal<const MacroNode>(toNode));
    EXPECT_EQ("", refusal<MacroNode>(toLeaf));
    EXPECT_EQ("", refusal<MacroLeaf>(toLeaf));
    EXPECT_NE("", refusal<MacroLeaf>(toNode));
    EXPECT_NE("", refusal<const MacroLeaf>(toNode));
    EXPECT_NE("", refusal<MacroNode>(toInner));
    EXPECT_NE("", refusal<MacroNode>(toPlain));
    EXPECT_NE("", refusal<fxArrayOf<int>>(toPlain));
}

TEST_F(fxXdrPointerTest, aRefusalNamesTheClassThatWasFound) {
    hosts::Inner inner;
    EXPECT_NE(std::string::npos, refusal<MacroNode>(pointingAt(inner)).find("hosts::Inner"));
}

TEST_F(fxXdrPointerTest, hostsTranscribersGetTheUsualArguments) {
    MacroNode node;
    RecordingTranscriber host(RecordingTranscriber::writer);
    ASSERT_EQ(1, fxXdrPointer(host, node.left));
    ASSERT_EQ(1u, host.calls.size());
    EXPECT_EQ("pointer", host.calls[0].operation);
    EXPECT_EQ(&node.left, host.calls[0].address);
    EXPECT_EQ(&MacroNode_type, host.calls[0].type);
}

TEST_F(fxXdrPointerTest, pointersToArraysAreMadeByTheirOwner) {
    struct Owner {
        fxArrayOf<int>* numbers;
    } owner = {nullptr};
    RecordingTranscriber host(RecordingTranscriber::writer);
    ASSERT_EQ(1, fxXdrPointer(host, owner.numbers));
    EXPECT_EQ(&fxArrayOf<int>::classType(), host.calls[0].type);
}

// fxRef.

TEST_F(fxXdrRefTest, everyRefCountsAfterReading) {
    fxRef<MacroHolder> root(new MacroHolder);
    root->first = new MacroNode;
    root->second = root->first;
    root->next = new MacroHolder;
    root->next->first = root->first;
    root->first->value = 8;
    {
        const fxRef<MacroHolder> copy(throughGraph(*root));
        ASSERT_NE(nullptr, copy->next);
        EXPECT_EQ(8, copy->first->value);
        EXPECT_TRUE(copy->first == copy->second);
        EXPECT_TRUE(copy->first == copy->next->first);
        EXPECT_TRUE(copy->first != root->first);
        EXPECT_EQ(3, copy->first->count);
        EXPECT_EQ(1, copy->next->count);
        EXPECT_EQ(1, copy->count);
        EXPECT_EQ(nullptr, copy->next->next);
    }
    EXPECT_EQ(1, MacroNode::alive);
    EXPECT_EQ(2, MacroHolder::alive);
}

TEST_F(fxXdrRefTest, whatWasHeldIsGivenUp) {
    MacroHolder holder;
    holder.first = new MacroNode;
    const Held<> stream;
    fxGraphReader reader(stream.get(), 0x1122, 0x33445566, "ieee");
    fxXdrRef(reader, holder.first);  // outside of a root there is nothing to be read
    EXPECT_EQ(0, MacroNode::alive);
}

TEST_F(fxXdrRefTest, otherReadersFailAndLeaveIt) {
    fxRef<MacroNode> ref(new MacroNode);
    RecordingTranscriber host(RecordingTranscriber::reader);
    EXPECT_EQ(0, fxXdrRef(host, ref));
    EXPECT_EQ(0u, host.calls.size());
    EXPECT_NE(nullptr, ref);
    fxMemoryStream stream;
    stream.count = 1;
    fxBinaryReader reader(&stream, 0x1122, 0x33445566, "ieee");
    EXPECT_EQ(0, fxXdrRef(reader, ref));
}

TEST_F(fxXdrRefTest, aFailedReadLeavesNothing) {
    fxRef<MacroHolder> root(new MacroHolder);
    root->first = new MacroNode;
    root->next = new MacroHolder;
    root->next->first = root->first;
    const std::string bytes = graphStreamOf(*root);
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        const GraphRead read = readGraph(bytes.substr(0, length), MacroHolder_type);
        EXPECT_EQ(nullptr, read.object) << length;
    }
    EXPECT_EQ(1, MacroNode::alive);
    EXPECT_EQ(2, MacroHolder::alive);
}

TEST_F(fxXdrRefTest, everyFlippedBitIsRefused) {
    fxRef<MacroHolder> root(new MacroHolder);
    root->first = new MacroNode;
    root->second = root->first;
    const std::string bytes = graphStreamOf(*root);
    for (std::size_t bit = 8 * headerBytes; bit < 8 * bytes.size(); ++bit) {
        std::string damaged = bytes;
        damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << bit % 8));
        const GraphRead read = readGraph(damaged, MacroHolder_type);
        EXPECT_EQ(nullptr, read.object) << bit;
        EXPECT_NE("", read.error) << bit;
    }
    EXPECT_EQ(1, MacroNode::alive);
    EXPECT_EQ(1, MacroHolder::alive);
}
