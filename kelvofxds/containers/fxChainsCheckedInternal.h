// fxChainsCheckedInternal.h - how dictionaries and sets end, for the checked build.
#pragma once

#include "kelvofxds/core/fxCheckedInternal.h"

#ifdef KELVOFXDS_CHECKED

/// Ends the process where entries or iterators are left when the base of a dictionary or set
/// ends: the destructor of its class has not called cleanup(), and nobody can any more.
template <class Buckets, class Iters>
void fxCheckCleanedUp(const char* owner, const char* operation, const Buckets& buckets,
                      const Iters& iters) {
    const auto countIn = [](const auto& pointers) {
        unsigned int there = 0;
        for (unsigned int i = 0; i < pointers.length(); ++i)
            there += pointers[i] != nullptr;
        return there;
    };
    const unsigned int heads = countIn(buckets);
    if (heads != 0)
        fxMisuse::says(owner, operation,
                       "%u of %u buckets have entries: the destructor of the class has to call "
                       "cleanup()",
                       heads, buckets.length());
    if (countIn(iters) != 0)
        fxMisuse::says(
            owner, operation,
            "an iterator is attached: the destructor of the class has to call cleanup()");
}

/// In the destructors of fxDictionary and fxSet.
#define FX_CHECK_CLEANED_UP(owner) fxCheckCleanedUp(owner, __func__, buckets, iters)

#else

#define FX_CHECK_CLEANED_UP(...) static_cast<void>(0)

#endif
