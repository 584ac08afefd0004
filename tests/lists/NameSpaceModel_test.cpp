// NameSpaceModel_test.cpp - the name space beside a plain model of its tree.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/nameSpaces.h"
#include "tests/support/operations.h"

using namespace nameSpaces;

namespace {

/// What a name space is by its description: a tree that is searched from its root.
class Model {
public:
    struct ModelNode {
        ModelNode *left, *right;
        unsigned long atom;
        std::uint32_t hash;
        std::string text;
    };

    /// `text` is what is stored: more than `name` where that is predefined.
    unsigned long intern(unsigned long atom, const std::string& name, const char* text,
                         bool create) {
        const std::uint32_t hash = hashOf(name);
        ModelNode** place = &root;
        while (ModelNode* node = *place) {
            const int order = hash != node->hash ? 0 : orderOf(name, node->text);
            if (hash == node->hash && order == 0)
                return node->atom;
            const bool goesLeft = hash != node->hash ? hash < node->hash : order < 0;
            place = goesLeft ? &node->left : &node->right;
        }
        if (!create)
            return 0;
        nodes.push_back({nullptr, nullptr, atom, hash, text});
        *place = &nodes.back();
        byAtom[atom] = text;
        return atom;
    }

    unsigned long lastAtom() const { return byAtom.empty() ? 0 : byAtom.rbegin()->first; }

    ModelNode* root = nullptr;
    std::map<unsigned long, std::string> byAtom;

private:
    static std::uint32_t hashOf(const std::string& name) {
        std::uint32_t hash = 0;
        for (std::size_t i = 0; i < (name.size() + 1) / 2; ++i) {
            const auto front = static_cast<std::uint32_t>(static_cast<signed char>(name[i]));
            const auto back =
                static_cast<std::uint32_t>(static_cast<signed char>(name[name.size() - 1 - i]));
            hash = (hash * 27 + front) * 27 + back;
        }
        return hash;
    }

    static int orderOf(const std::string& name, const std::string& stored) {
        const int order = std::strncmp(name.c_str(), stored.c_str(), name.size());
        if (order != 0 || name.size() == stored.size())
            return order;
        return name.size() < stored.size() ? -1 : 1;
    }

    std::deque<ModelNode> nodes;
};

/// Whether both trees are the same, node by node.
bool sameTree(const NameSpace_Node* node, const Model::ModelNode* expected) {
    std::vector<std::pair<const NameSpace_Node*, const Model::ModelNode*>> left = {
        {node, expected}};
    while (!left.empty()) {
        const auto [ours, model] = left.back();
        left.pop_back();
        if (!ours || !model) {
            if (ours || model)
                return false;
            continue;
        }
        if (ours->atom != model->atom || ours->hash != model->hash || model->text != ours->name)
            return false;
        left.emplace_back(ours->left, model->left);
        left.emplace_back(ours->right, model->right);
    }
    return true;
}

// One more in front and 27 less behind give the same hash: many of these names share
// one with others.
std::string collidingName(std::mt19937& random, bool withNul) {
    static const char letters[] = {'a', 'b', 'F', 'G', '\0'};
    std::string name;
    for (unsigned int length = random() % 7; length > 0; --length)
        name += letters[random() % (withNul ? 5 : 4)];
    return name;
}

std::string longName(std::mt19937& random) {
    return "application.resource." + std::to_string(random() % 5000);
}

std::mt19937* source;
Model* predefined;
std::deque<std::string>* permanent;

const unsigned int mostPredefined = 40;
const unsigned long behindPredefined = mostPredefined + 1;  // whose names are freed

/// Predefines names, some with a length shorter than their text.
int predefineSome(NameSpace* names) {
    for (unsigned int i = 0; i < mostPredefined; ++i) {
        permanent->push_back(collidingName(*source, false));
        const std::string& text = permanent->back();
        const std::string name = text.substr(0, text.size() - (*source)() % 3 % (text.size() + 1));
        const unsigned long atom = predefined->lastAtom() + 1;
        EXPECT_EQ(predefined->intern(atom, name, text.c_str(), true),
                  names->internAtom(atom, text.c_str(), static_cast<unsigned int>(name.size()), 1));
    }
    return 0;
}

void compare(std::uint32_t seed, bool colliding, bool oddities, unsigned long rounds) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    Model model;
    std::deque<std::string> texts;
    source = &random;
    predefined = &model;
    permanent = &texts;
    NameSpace names(oddities ? predefineSome : nothing, numbersItself);
    for (unsigned long round = 0; round < rounds; ++round) {
        const std::string name = colliding ? collidingName(random, oddities) : longName(random);
        const auto length = static_cast<unsigned int>(name.size());
        const bool create = random() % 4 == 0;
        const unsigned long atom = oddities && random() % 8 == 0 ? behindPredefined + random() % 300
                                                                 : model.lastAtom() + 1;
        ASSERT_EQ(model.intern(atom, name, name.c_str(), create),
                  names.internAtom(atom, name.data(), length, create))
            << round << ' ' << testing::PrintToString(name);
        if (round % (rounds / 16 + 1) == 0) {
            ASSERT_TRUE(sameTree(Layout::root(names), model.root)) << round;
        }
    }
    EXPECT_TRUE(sameTree(Layout::root(names), model.root));
    ASSERT_EQ(model.lastAtom(), names.getLastAtom());
    for (const auto& entry : model.byAtom)
        ASSERT_STREQ(entry.second.c_str(), names.nameForAtom(entry.first));
}

}  // namespace

TEST(NameSpaceModel, randomOperationsGiveWhatASearchOfTheTreeGives) {
    const std::uint32_t seed = 20261121;
    for (unsigned int i = 0; i < 10; ++i) {
        compare(seed + i, false, false, operations(100000) / 40);
        compare(seed + i, true, false, operations(100000) / 40);
        compare(seed + i, false, true, operations(100000) / 40);
        compare(seed + i, true, true, operations(2000) / 40);
    }
}

TEST(NameSpaceModel, namesThatShareAHashAreToldApart) {
    NameSpace names(nothing, numbersItself);
    const std::size_t pairs = 8;
    for (unsigned int i = 0; i < 1U << pairs; ++i) {
        // Both halves of a name are mixed in pairs, first and last byte: one more
        // in front is 27 less behind.
        std::string front, back;
        for (std::size_t j = 0; j < pairs; ++j) {
            front += (i >> j & 1) != 0 ? 'b' : 'a';
            back.insert(back.begin(), (i >> j & 1) != 0 ? 'F' : 'a');
        }
        ASSERT_EQ(i + 1, names.makeAtom((front + back).c_str(), 1));
    }
    for (const NameSpace_Node* node = Layout::root(names); node; node = node->right)
        ASSERT_EQ(Layout::root(names)->hash, node->hash);
    EXPECT_EQ(0U, names.makeAtom("aaaaaaaaaaaaaaaF", 0));
    EXPECT_EQ(1U, names.makeAtom("aaaaaaaaaaaaaaaa", 0));
    EXPECT_EQ(256U, names.makeAtom("bbbbbbbbFFFFFFFF", 0));
}
