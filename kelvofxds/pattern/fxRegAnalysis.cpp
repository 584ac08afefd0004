// fxRegAnalysis.cpp - what can be known of a program before it is run; see
// fxRegCodeInternal.h.
//
// A position is a byte of the program that a byte of the subject is matched
// with. Those that can be next form an automaton without groups and word ends,
// which matches wherever the program does, and maybe elsewhere. Beyond the first
// few positions anything goes.

#include <cstring>

#include "kelvofxds/pattern/fxRegCodeInternal.h"

namespace {

bool isClass(unsigned char op) { return op == OP_ANY || op == OP_ANYOF || op == OP_ANYBUT; }

// The bytes that match the first of the node's positions.
fxRegByteSet bytesOf(const fxRegNode& node) {
    fxRegByteSet set = {};
    if (node.op == OP_EXACT) {
        set.add(static_cast<unsigned char>(*node.text));
    } else {
        if (node.op != OP_ANY) {
            for (const char* c = node.text; *c != '\0'; ++c)
                set.add(static_cast<unsigned char>(*c));
        }
        if (node.op != OP_ANYOF) {
            for (std::uint32_t& word : set.words)
                word = ~word;
        }
    }
    set.words[0] &= ~std::uint32_t(1);
    return set;
}

unsigned int numberOf(std::uint32_t bit) { return static_cast<unsigned int>(__builtin_ctz(bit)); }

}  // namespace

bool fxRegIsMember(const fxRegNode& node, char c) {
    if (c == '\0' || !(isClass(node.op) || node.op == OP_EXACT))
        return false;
    if (node.op == OP_ANY)
        return true;
    if (node.op == OP_EXACT)
        return *node.text == c;
    return (std::strchr(node.text, c) != nullptr) == (node.op == OP_ANYOF);
}

struct fxRegCode::Sets {
    unsigned int count;
    fxRegByteSet sets[mostSets];
};

[[gnu::noinline]] void fxRegCode::analyseNow() {
    Sets known;
    known.count = 0;
    isAnalysed = true;
    for (std::uint32_t& member : sets)
        member = fxRegAnything;
    hasAccepts = false;
    numberPlaces(known);
    tracePlaces(true);
    linkPlaces();
    opening = first->from;
    if (hasStart)
        tracePlaces(false);
    firstOpening = first->from;
    for (unsigned int i = 0; i < count; ++i) {
        if (fxRegIsRepetition(nodes[i].op))
            foresee(known, nodes[i]);
    }
    for (unsigned int i = 0; i < count; ++i) {
        if (nodes[i].op == OP_BRANCH)
            nodes[i].set = setFrom(known, nodes[i].operand->from);
    }
    findRequired();
    findStarts();
}

// The bit of the set in `sets`; 0 if there are too many.
std::uint32_t fxRegCode::setOf(Sets& known, const fxRegByteSet& bytesInIt) {
    unsigned int i = 0;
    while (i < known.count && !(known.sets[i] == bytesInIt))
        ++i;
    if (i == mostSets)
        return 0;
    const std::uint32_t bit = std::uint32_t(1) << i;
    if (i == known.count) {
        known.sets[known.count++] = bytesInIt;
        bytesInIt.each([=](unsigned int c) { sets[c] |= bit; });
    }
    return bit;
}

// Classes come first: they take one position each.
void fxRegCode::numberPlaces(Sets& known) {
    placeCount = 0;
    for (unsigned int i = 0; i < count; ++i) {
        fxRegNode& node = nodes[i];
        if (isClass(node.op) || (node.op == OP_EXACT && node.isRepeated)) {
            const fxRegByteSet set = ::bytesOf(node);
            node.set = setOf(known, set);
            addPlace(node, set);
        }
    }
    for (unsigned int i = 0; i < count; ++i) {
        fxRegNode& node = nodes[i];
        if (node.op != OP_EXACT || node.isRepeated)
            continue;
        for (unsigned int k = 0; k < node.length && placeCount < mostPlaces; ++k) {
            fxRegByteSet set = {};
            set.add(static_cast<unsigned char>(node.text[k]));
            addPlace(node, set);
        }
    }
}

void fxRegCode::addPlace(fxRegNode& node, const fxRegByteSet& set) {
    if (placeCount == mostPlaces)
        return;
    if (node.places++ == 0)
        node.place = static_cast<unsigned char>(placeCount);
    placeBytes[placeCount++] = set;
}

void fxRegCode::linkPlaces() {
    for (unsigned int i = 0; i < count; ++i) {
        const fxRegNode& node = nodes[i];
        const fxRegNode* simple = fxRegIsRepetition(node.op) ? node.operand : &node;
        if (simple->places == 0 || (simple == &node && node.isRepeated))
            continue;
        std::uint32_t* at = follow + simple->place;
        for (unsigned int k = 1; k < simple->places; ++k)
            *at++ = std::uint32_t(1) << (simple->place + k);
        if (simple != &node)
            *at = std::uint32_t(1) << simple->place | placesFrom(node.next);
        else
            *at = isClass(node.op) || node.places == node.length ? placesFrom(node.next)
                                                                 : fxRegAnything;
    }
}

// Finds out for each node which positions can be next there, with fxRegAnything
// if nothing more has to be; `isPastStart` if that is not the subject's start. Links
// lead forward but for those of loops, so that one walk is all for a program
// without a loop, and each loop around another needs one more.
void fxRegCode::tracePlaces(bool isPastStart) {
    const unsigned int mostWalks = fxregexp::groupCount + 2;
    bool isDone = false;
    for (unsigned int i = 0; i < count; ++i)
        nodes[i].from = 0;
    for (unsigned int walks = 0; !isDone && !isDamaged && walks < mostWalks; ++walks) {
        isDone = true;
        for (unsigned int i = count; i-- > 0;) {
            const std::uint32_t places = placesAt(nodes[i], isPastStart);
            isDone = isDone && (places == nodes[i].from || !hasLoops);
            nodes[i].from = places;
        }
    }
    for (unsigned int i = 0; !isDone && i < count; ++i)
        nodes[i].from = fxRegAnything;
}

// From those at the nodes that `node` leads to.
std::uint32_t fxRegCode::placesAt(const fxRegNode& node, bool isPastStart) {
    const std::uint32_t behind = placesFrom(node.next);
    switch (node.op) {
        case OP_EOL:
            return atEnd;
        case OP_BOL:
            return isPastStart ? 0 : behind;
        case OP_ANY:
        case OP_ANYOF:
        case OP_ANYBUT:
        case OP_EXACT:
            return firstPlaceOf(node);
        case OP_STAR:
            return firstPlaceOf(*node.operand) | behind;
        case OP_PLUS:
            return firstPlaceOf(*node.operand);
        case OP_BRANCH:
            return node.operand->from | (node.other ? node.other->from : 0);
        case OP_NOTHING:
        case OP_BACK:
        case OP_WORDSTART:
        case OP_WORDEND:
            return behind;
        default:
            return fxRegIsOpen(node.op) || fxRegIsClose(node.op) ? behind : fxRegAnything;
    }
}

fxRegByteSet fxRegCode::bytesOf(std::uint32_t places) const {
    fxRegByteSet set = {};
    for (std::uint32_t rest = places & ~(atEnd | fxRegAnything); rest != 0; rest &= rest - 1)
        set.add(placeBytes[numberOf(rest)]);
    if (places & atEnd)
        set.add(static_cast<unsigned char>(0));
    if (places & fxRegAnything)
        std::memset(set.words, 0xFF, sizeof set.words);
    return set;
}

// That of the bytes of these positions.
std::uint32_t fxRegCode::setFrom(Sets& known, std::uint32_t places) {
    const std::uint32_t set = places & fxRegAnything ? 0 : setOf(known, bytesOf(places));
    return set ? set : fxRegAnything;
}

// What follows a repetition, and whether that settles where it ends.
void fxRegCode::foresee(Sets& known, fxRegNode& repetition) {
    repetition.set = repetition.operand->set;
    repetition.after = fxRegAnything;
    const std::uint32_t places = placesFrom(repetition.next);
    if (places & fxRegAnything)
        return;
    const fxRegByteSet behind = bytesOf(places);
    if (const std::uint32_t set = setOf(known, behind))
        repetition.after = set;
    repetition.isDecided = behind.isDisjointFrom(::bytesOf(*repetition.operand));
    if (behind.count() == 1) {
        behind.each([&](unsigned int c) { repetition.only = static_cast<char>(c); });
    }
}

void fxRegCode::findLeading() {
    const fxRegNode* node = first;
    while (node && fxRegIsOpen(node->op))
        node = node->next;
    leading = node && fxRegIsRepetition(node->op) ? node : nullptr;
}

// A literal run that no link leads past is in every match: the longest such one.
void fxRegCode::findRequired() {
    required = nullptr;
    requiredLength = 0;
    const fxRegNode* reach = nodes;
    for (const fxRegNode* node = nodes; !isDamaged && node != nodes + count; ++node) {
        if (node->op == OP_END)
            return;
        if (node->op == OP_EXACT && reach <= node && node->length > requiredLength) {
            required = node->text;
            requiredLength = node->length;
        }
        if (node->isRepeated)
            continue;
        const fxRegNode* const targets[] = {node->op == OP_BRANCH ? node->other : node->next,
                                            node->op == OP_BRANCH ? node->operand : nullptr};
        for (const fxRegNode* target : targets) {
            if (target > reach)
                reach = target;
        }
    }
}

void fxRegCode::findStarts() {
    starts.clear();
    if (opening & fxRegAnything)
        return;
    if (opening == 0) {
        starts.setNowhere();
        return;
    }
    std::uint32_t second = 0;
    for (std::uint32_t rest = opening & ~atEnd; rest != 0; rest &= rest - 1)
        second |= follow[numberOf(rest)];
    starts.assign(bytesOf(opening), bytesOf(second));
    char prefix[fxRegStarts::depth];
    for (unsigned int depth = fxRegStarts::depth; depth != 0; --depth) {
        starts.clearPrefixes();
        if (!(opening & atEnd) && addPrefixes(opening, prefix, 0, depth)) {
            starts.usePrefixes();
            return;
        }
    }
}

// Those of at most `depth` bytes that go on with `places` behind the first `made`.
bool fxRegCode::addPrefixes(std::uint32_t places, char* prefix, unsigned int made,
                            unsigned int depth) {
    const unsigned int mostWays = 2;  // after which any byte will do
    if (made == depth || (made != 0 && bytesOf(places).count() > mostWays))
        return starts.addPrefix(prefix, made);
    if (places & atEnd) {
        prefix[made] = '\0';
        if (!starts.addPrefix(prefix, made + 1))
            return false;
    }
    for (std::uint32_t rest = places & ~atEnd; rest != 0; rest &= rest - 1) {
        const fxRegByteSet& bytesThere = placeBytes[numberOf(rest)];
        if (bytesThere.count() > fxRegStarts::mostPrefixes)
            return false;
        bool fits = true;
        bytesThere.each([&](unsigned int c) {
            prefix[made] = static_cast<char>(c);
            fits = fits && addPrefixes(follow[numberOf(rest)], prefix, made + 1, depth);
        });
        if (!fits)
            return false;
    }
    return true;
}

void fxRegCode::makeAccepts() {
    for (std::uint32_t& places : accepts)
        places = fxRegAnything;
    accepts[0] |= atEnd;
    for (unsigned int place = 0; place < placeCount; ++place)
        placeBytes[place].each([=](unsigned int c) { accepts[c] |= std::uint32_t(1) << place; });
    hasAccepts = true;
}

// The sets of positions met last are kept with what follows them, since texts
// repeat themselves.
fxRegCode::Outlook fxRegCode::lookOn(fxRegLook& look, std::size_t most) {
    if (!hasAccepts)
        makeAccepts();
    struct {
        std::uint32_t places, next;
    } met[64] = {};
    const char* at = look.at;
    std::uint32_t next = look.places;
    for (; most != 0; --most, ++at) {
        const std::uint32_t here = next & accepts[static_cast<unsigned char>(*at)];
        if (here & (fxRegAnything | atEnd))
            return promising;
        if (*at == '\0')
            return noMatch;
        auto& entry = met[here * 0x9E3779B1U >> 26];
        if (entry.places != here || here == 0) {
            entry.places = here;
            entry.next = opening;
            for (std::uint32_t rest = here; rest != 0; rest &= rest - 1)
                entry.next |= follow[numberOf(rest)];
        }
        next = entry.next;
    }
    look = {at, next};
    return unknown;
}
