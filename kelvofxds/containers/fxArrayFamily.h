// fxArrayFamily.h - what every concrete array class declares.
#pragma once

#include "kelvofxds/containers/fxArray.h"

struct fxIndexing;
struct fxChains;
struct fxChainedIters;
struct fxChainedTranscription;

/// What a dictionary or set keeps beside its buckets: the number of its private
/// index, and what is known of its keys. It is the container's own, so it stays
/// when other buckets are assigned to these.
class fxBesideBuckets {
public:
    fxBesideBuckets() = default;
    /// Takes nothing of the other.
    fxBesideBuckets(const fxBesideBuckets&) {}
    /// Changes nothing.
    fxBesideBuckets& operator=(const fxBesideBuckets&) { return *this; }

private:
    friend struct fxIndexing;

    unsigned short word = 0;
};

// The macros' arguments are names, not values.
// NOLINTBEGIN(bugprone-macro-parentheses)

/// The members that bind fxArray to one element type: an empty array, one of
/// `n` elements, a copy with the source's capacity, an adopting form
/// (fxArray's), and by-value sub-arrays. cut moves its elements out of this
/// array; extract, head and tail copy the elements from `start`, the first and
/// the last `n`. className() is "ARRAY".
#define FX_ARRAY_MEMBERS(Class, Element)                                                   \
public:                                                                                    \
    Class();                                                                               \
    explicit Class(unsigned int n);                                                        \
    Class(const Class& other);                                                             \
    Class(unsigned int elemSize, unsigned int bytes, void* block);                         \
    ~Class() override;                                                                     \
    const char* className() const override;                                                \
    Class cut(unsigned int start, unsigned int n);                                         \
    Class extract(unsigned int start, unsigned int n) const;                               \
    Class head(unsigned int n) const;                                                      \
    Class tail(unsigned int n) const;                                                      \
    Element& operator[](unsigned int index) { return static_cast<Element*>(data)[index]; } \
    Element const& operator[](unsigned int index) const {                                  \
        return static_cast<Element const*>(data)[index];                                   \
    }

/// The members of an array class with a type record of its own.
#define FX_ARRAY_TYPE_MEMBERS(Class)              \
    explicit Class(fxTypeObj& type);              \
    static void* newInstance(fxTypeObj& type);    \
    static void deleteInstance(void* array);      \
    fxTypeObj& getTypeObj() const override;       \
    unsigned char xdr(fxTranscriber& t) override; \
    static unsigned char xdr(void* array, fxTranscriber& t);

// NOLINTEND(bugprone-macro-parentheses)
