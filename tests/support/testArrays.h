// testArrays.h - array classes that tell what was done to their elements.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "kelvofxds/containers/fxArray.h"

/// An array of plain bytes that notes each virtual call in `trace`, separated
/// by blanks: "getmem:16" and "copy:4" with bytes, "expand", "create:8+4@8"
/// and "destroy:8+4@12" with offset and bytes in the block and the length in
/// bytes that the array has meanwhile.
class TracingArray : public fxArray {
public:
    TracingArray(unsigned short size, unsigned int n) : fxArray(size, n) {}
    TracingArray(unsigned int size, unsigned int bytes, void* block)
        : fxArray(size, bytes, block) {}
    explicit TracingArray(fxTypeObj& type) : fxArray(type) {}
    TracingArray(const fxArray& other) : fxArray(other) {}
    TracingArray(const TracingArray& other) : fxArray(other) {}
    ~TracingArray() override { destroy(); }

    const char* className() const override { return "TracingArray"; }
    void getmem() override {
        note("getmem:" + std::to_string(maxLen));
        fxArray::getmem();
    }
    void expand() override {
        note("expand");
        fxArray::expand();
    }
    void createElements(void* at, unsigned int bytes) override {
        note("create:" + range(at, bytes));
        fxArray::createElements(at, bytes);
    }
    void destroyElements(void* at, unsigned int bytes) override {
        note("destroy:" + range(at, bytes));
        fxArray::destroyElements(at, bytes);
    }
    void copyElements(const void* from, void* to, unsigned int bytes) const override {
        note("copy:" + std::to_string(bytes));
        fxArray::copyElements(from, to, bytes);
    }
    int compareElements(const void* a, const void* b) const override {
        comparisons.push_back({a, b});
        return fxArray::compareElements(a, b);
    }

    /// What was noted since the last call.
    std::string taken() const {
        std::string result;
        result.swap(trace);
        return result;
    }

    struct Comparison {
        const void *a, *b;
    };
    mutable std::vector<Comparison> comparisons;

    using fxArray::data;

private:
    void note(const std::string& event) const { trace += (trace.empty() ? "" : " ") + event; }
    std::string range(const void* at, unsigned int bytes) const {
        const auto offset = static_cast<const char*>(at) - static_cast<const char*>(data);
        return std::to_string(offset) + "+" + std::to_string(bytes) + "@" + std::to_string(len);
    }

    mutable std::string trace;
};

/// Elements that own memory: pointers to ints. A copy or an end too many or
/// too few shows in the counts, and to a memory checker.
class CountingArray : public fxArray {
public:
    explicit CountingArray(unsigned int n = 0) : fxArray(elementSize, n) {
        if (data)
            CountingArray::createElements(data, len);
    }
    CountingArray(std::initializer_list<int> values) : CountingArray() {
        for (int value : values)
            add(value);
    }
    /// Adopts `n` elements in `block`.
    CountingArray(unsigned int n, void* block) : fxArray(4u, n * elementSize, block) {}
    CountingArray(const CountingArray&) = delete;
    ~CountingArray() override { destroy(); }

    const char* className() const override { return "CountingArray"; }
    void createElements(void* at, unsigned int bytes) override {
        for (unsigned int i = 0; i < bytes / elementSize; ++i, ++created)
            static_cast<int**>(at)[i] = new int(0);
    }
    void destroyElements(void* at, unsigned int bytes) override {
        for (unsigned int i = 0; i < bytes / elementSize; ++i, ++destroyed)
            delete static_cast<int**>(at)[i];
    }
    void copyElements(const void* from, void* to, unsigned int bytes) const override {
        for (unsigned int i = 0; i < bytes / elementSize; ++i, ++copied)
            static_cast<int**>(to)[i] = new int(*static_cast<int* const*>(from)[i]);
    }
    int compareElements(const void* a, const void* b) const override {
        const int x = **static_cast<int* const*>(a);
        const int y = **static_cast<int* const*>(b);
        return (x > y) - (x < y);
    }

    void add(int value) {
        int* element = &value;
        append(&element);
    }
    std::vector<int> values() const {
        std::vector<int> result;
        for (unsigned int i = 0; i < length(); ++i)
            result.push_back(**static_cast<int* const*>(at(i)));
        return result;
    }

    static void resetCounts() { created = copied = destroyed = 0; }
    static int alive() { return created + copied - destroyed; }

    static inline int created = 0;
    static inline int copied = 0;
    static inline int destroyed = 0;

private:
    static const unsigned short elementSize = sizeof(int*);
};

/// The ints of an array of 4-byte elements.
inline std::vector<int> intsOf(const fxArray& array) {
    std::vector<int> result;
    for (unsigned int i = 0; i < array.length(); ++i)
        result.push_back(*static_cast<const int*>(array.at(i)));
    return result;
}

/// Appends ints one at a time.
inline void appendInts(fxArray& array, std::initializer_list<int> values) {
    for (int value : values)
        array.append(&value);
}
