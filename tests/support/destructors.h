// destructors.h - which words of a class's table destroy an object, and how.
#pragma once

#include <cstddef>
#include <cstring>
#include <new>

#include <gtest/gtest.h>

/// Calls the virtual operation without arguments at `word` of the object's
/// table, the way a compiled call does.
inline void callTableWord(void* object, unsigned int word) {
    using Operation = void (*)(void*);
    Operation* table;
    std::memcpy(&table, object, sizeof table);
    table[word](object);
}

/// A `Base` that counts how often it is destroyed and its memory freed.
template <class Base>
class CountedEnd : public Base {
public:
    using Base::Base;
    ~CountedEnd() override { ++destroyed; }

    static void* operator new(std::size_t size) { return ::operator new(size); }
    static void operator delete(void* memory) {
        ++freed;
        ::operator delete(memory);
    }

    static int destroyed;
    static int freed;
};

template <class Base>
int CountedEnd<Base>::destroyed = 0;

template <class Base>
int CountedEnd<Base>::freed = 0;

/// Word 0 of the table of `Class` must be the complete destructor, which
/// leaves the memory alone, and word 1 the deleting one.
template <class Class, class... Arguments>
void expectDestructorsAtWords0And1(Arguments... arguments) {
    using Sample = CountedEnd<Class>;
    Sample::destroyed = Sample::freed = 0;

    void* memory = ::operator new(sizeof(Sample));
    callTableWord(::new (memory) Sample(arguments...), 0);
    EXPECT_EQ(1, Sample::destroyed);
    EXPECT_EQ(0, Sample::freed);
    ::operator delete(memory);

    callTableWord(new Sample(arguments...), 1);
    EXPECT_EQ(2, Sample::destroyed);
    EXPECT_EQ(1, Sample::freed);
}
