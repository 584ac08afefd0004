// fxArrayFamilyInternal.h - what every concrete array class defines.
#pragma once

#include "kelvofxds/containers/fxArrayCheckedInternal.h"
#include "kelvofxds/containers/fxArrayFamily.h"
#include "kelvofxds/core/fxMemoryInternal.h"

// The macros' arguments are names, not values.
// NOLINTBEGIN(bugprone-macro-parentheses)

/// Defines what FX_ARRAY_MEMBERS declares.
#define FX_DEFINE_ARRAY(Class, Element)                                                       \
    Class::Class() : fxArray(static_cast<unsigned short>(sizeof(Element)), 0) {}              \
    Class::Class(unsigned int n) : fxArray(static_cast<unsigned short>(sizeof(Element)), n) { \
        if (data)                                                                             \
            Class::createElements(data, len);                                                 \
    }                                                                                         \
    Class::Class(const Class& other) : fxArray(other.elemSize, 0) { copyFrom(other); }        \
    Class::Class(unsigned int size, unsigned int bytes, void* block)                          \
        : fxArray(size, bytes, block) {}                                                      \
    Class::~Class() { destroy(); }                                                            \
    const char* Class::className() const { return "ARRAY"; }                                  \
    Class Class::cut(unsigned int start, unsigned int n) {                                    \
        FX_CHECK_RANGE(start, n);                                                             \
        return Class(sizeof(Element), n * sizeof(Element), raw_cut(start, n));                \
    }                                                                                         \
    Class Class::extract(unsigned int start, unsigned int n) const {                          \
        FX_CHECK_RANGE(start, n);                                                             \
        return Class(sizeof(Element), n * sizeof(Element), raw_extract(start, n));            \
    }                                                                                         \
    Class Class::head(unsigned int n) const {                                                 \
        FX_CHECK_RANGE(0, n);                                                                 \
        return Class(sizeof(Element), n * sizeof(Element), raw_head(n));                      \
    }                                                                                         \
    Class Class::tail(unsigned int n) const {                                                 \
        FX_CHECK_RANGE(0, n);                                                                 \
        return Class(sizeof(Element), n * sizeof(Element), raw_tail(n));                      \
    }

/// Defines what FX_ARRAY_TYPE_MEMBERS declares except the transcription of the
/// elements, and the type record.
#define FX_DEFINE_ARRAY_TYPE(Class, Element)                                       \
    Class::Class(fxTypeObj& type) : fxArray(type) { elemSize = sizeof(Element); }  \
    void* Class::newInstance(fxTypeObj& type) { return fxTryNew<Class>(type); }    \
    void Class::deleteInstance(void* array) { delete static_cast<Class*>(array); } \
    fxTypeObj& Class::getTypeObj() const { return Class##_type; }                  \
    unsigned char Class::xdr(void* array, fxTranscriber& t) {                      \
        return static_cast<Class*>(array)->xdr(t);                                 \
    }                                                                              \
    fxTypeObj Class##_type("ARRAY", 1, Class::newInstance, Class::deleteInstance, Class::xdr);

// NOLINTEND(bugprone-macro-parentheses)
