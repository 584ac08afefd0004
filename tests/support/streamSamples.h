// streamSamples.h - streams for programs that show streams.
#pragma once

#include <cstdint>
#include <string>

#include "kelvofxds/transcribe/fxBinaryOTTag.h"
#include "tests/support/graphBytes.h"

/// A double by its bits, in the writer's order.
inline std::string doubleOf(const GraphBytes& g, std::uint32_t high, std::uint32_t low = 0) {
    const bool isBig = g.number(1, 2)[0] == '\0';
    return isBig ? g.word(high) + g.word(low) : g.word(low) + g.word(high);
}

/// Four roots: a book with contacts that point to each other, an embedded object, a
/// block and a dictionary; strings; doubles; and the last object again.
inline std::string graphSample(bool isBig) {
    GraphBytes g(isBig);
    g.type(2, "Book", 3).record(fxOT_Object, {1, 2, 3}, g.word(7));
    g.record(fxOT_ObjectPointer, {3}).record(fxOT_ObjectPointer, {4}, g.word(1) + g.word(2));
    g.record(fxOT_Embedded, {5}, g.word(9)).record(fxOT_OldObject, {1}).record(fxOT_Null);
    g.record(fxOT_Block, {6, 16}).record(fxOT_ObjectPointer, {7});
    g.record(fxOT_Doubles, {6, 16}, doubleOf(g, 0x3FF80000) + doubleOf(g, 0xBFD00000));
    g.type(8, "DICT", 1);
    g.record(fxOT_Object, {7, 8, 1},
             g.word(2) + g.word(8) + g.word(8) + g.word(3) + g.string("A") + g.string("") +
                 g.word(2) + g.string("Bob") + g.string("x\"y\n") + g.word(1));
    g.type(9, "Contact", 1).record(fxOT_Object, {4, 9, 1}, g.word(1) + "payload text");
    g.record(fxOT_OldObject, {3}).record(fxOT_Object, {3, 9, 1}, g.word(2));
    g.record(fxOT_OldObject, {5}).record(fxOT_Data, {}, "more data").end();
    g.type(2, "ARRAY", 1);
    g.record(fxOT_Object, {1, 2, 1},
             g.word(24) + g.number(8, 2) + g.string("abc") + g.string("") + g.string("hello"));
    g.end().type(2, "ARRAY", 1);
    g.record(fxOT_Object, {1, 2, 1},
             g.word(24) + g.number(8, 2) + doubleOf(g, 0x3FF80000) + doubleOf(g, 0x40000000) +
                 doubleOf(g, 0xFE37E43C, 0x8800759C));
    g.end().record(fxOT_Data).record(fxOT_OldObject, {1}).end();
    return g.str();
}

/// A book of contacts: one is embedded in it, one stands for itself, and each knows
/// the other; and a dictionary.
inline std::string bookSample() {
    GraphBytes g;
    g.type(2, "Book").record(fxOT_Object, {1, 2, 1}, g.string("friends"));
    g.record(fxOT_ObjectPointer, {3}).type(4, "Contact", 2);
    g.record(fxOT_Embedded, {5}, g.string("Ada")).record(fxOT_OldObject, {3});
    g.record(fxOT_ObjectPointer, {6}).type(7, "DICT");
    g.record(fxOT_Object, {6, 7, 1},
             g.word(2) + g.word(8) + g.word(8) + g.word(3) + g.string("Ada") + g.string("1815") +
                 g.word(0) + g.string("Bob") + g.string("") + g.word(2));
    g.record(fxOT_Object, {3, 4, 2}, g.string("Bob")).record(fxOT_OldObject, {5});
    return g.end().str();
}
