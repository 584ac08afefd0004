// arrayFixture.h - what tests of array classes know of each, and helpers.
#pragma once

#include <cstring>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxArray.h"

/// What the suite has to know of an array class: make(i) is an element that
/// differs from make(j), and numberOf(make(i)) is i, for i below 100.
template <class Array>
struct ArrayElements;

/// An element type of `Array`.
template <class Array>
using ElementOf = std::remove_reference_t<decltype(std::declval<Array&>()[0U])>;

/// The same for elements that any bytes will do for: number i is i in each.
template <class Array>
struct UniformElements {
    static ElementOf<Array> make(unsigned int i) {
        ElementOf<Array> element;
        std::memset(&element, static_cast<int>(i), sizeof element);
        return element;
    }
    static unsigned int numberOf(const ElementOf<Array>& element) {
        unsigned char bytes[sizeof element];
        std::memcpy(bytes, &element, sizeof element);
        for (const unsigned char byte : bytes)
            EXPECT_EQ(bytes[0], byte);
        return bytes[0];
    }
};

template <class Array>
class ArrayFixture : public testing::Test {
protected:
    using Element = ElementOf<Array>;
    using Numbers = std::vector<unsigned int>;

    static constexpr unsigned int size = sizeof(Element);

    /// The elements from `first` on, `n` of them.
    static Array filled(unsigned int n, unsigned int first = 0) {
        Array array;
        for (unsigned int i = 0; i < n; ++i)
            add(array, first + i);
        array.setMaxLength(0);
        return array;
    }

    static void add(Array& array, unsigned int number) {
        const Element element = ArrayElements<Array>::make(number);
        array.append(static_cast<const void*>(&element));
    }

    static unsigned int find(const Array& array, unsigned int number, unsigned int start) {
        const Element element = ArrayElements<Array>::make(number);
        return array.find(static_cast<const void*>(&element), start);
    }

    static Numbers numbersOf(const Array& array) {
        Numbers numbers;
        for (unsigned int i = 0; i < array.length(); ++i)
            numbers.push_back(ArrayElements<Array>::numberOf(array[i]));
        return numbers;
    }

    /// An array that has adopted the `n` elements of `block`.
    static Array adopted(void* block, unsigned int n) { return Array(size, n * size, block); }

    /// 0 to `n` - 1.
    static Numbers upTo(unsigned int n) {
        Numbers numbers;
        for (unsigned int i = 0; i < n; ++i)
            numbers.push_back(i);
        return numbers;
    }

    /// `all` without the `n` numbers from `start` on.
    static Numbers without(Numbers all, unsigned int start, unsigned int n) {
        all.erase(all.begin() + static_cast<int>(start), all.begin() + static_cast<int>(start + n));
        return all;
    }

    static Numbers part(const Numbers& all, unsigned int start, unsigned int n) {
        return Numbers(all.begin() + static_cast<int>(start),
                       all.begin() + static_cast<int>(start + n));
    }

    static Numbers joined(Numbers all, const Numbers& more, unsigned int index) {
        all.insert(all.begin() + static_cast<int>(index), more.begin(), more.end());
        return all;
    }

    /// Length and capacity are `n` elements, and there is a block if and only
    /// if that is not 0.
    static void expectExact(const Array& array, unsigned int n) {
        EXPECT_EQ(n, array.length());
        EXPECT_EQ(n * size, array.getLen());
        EXPECT_EQ(n * size, array.getMaxLen());
        EXPECT_EQ(n == 0, array.at(0) == nullptr);
        EXPECT_EQ(size, array.getElemSize());
        EXPECT_EQ(0, array.count);
    }

    static void expectZero(const void* bytes, unsigned int n) {
        for (unsigned int i = 0; i < n; ++i)
            EXPECT_EQ(0, static_cast<const char*>(bytes)[i]) << i;
    }
};
