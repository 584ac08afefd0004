// fxDataInternal.h - the codes of the types of values, and calling receivers.
#pragma once

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/values/fxData.h"
#include "kelvofxds/values/fxValueTypesInternal.h"

/// The codes, in the order in which start-up draws them.
#define FX_CODE(number, code, Holder, Type, name, shown) &fxDT_##code,
static unsigned short* const fxValueTypeCodes[] = {FX_VALUE_TYPES(FX_CODE, FX_CODE, FX_CODE)};
#undef FX_CODE

/// The number of the code of a holder's type.
template <class Holder>
inline constexpr int fxNumberOf = -1;

#define FX_VALUE(number, code, Holder, Type, name, shown) \
    template <>                                           \
    inline constexpr int fxNumberOf<fx##Holder##Data> = number;
#define FX_POINTER(number, code, Holder, Type, name, shown)
FX_VALUE_TYPES(FX_VALUE, FX_VALUE, FX_POINTER)
#undef FX_VALUE
#undef FX_POINTER

/// The value in a holder.
struct fxHeld {
    template <class Holder>
    static auto& in(Holder* holder) {
        return holder->value;
    }
};

/// Calls a receiver, whose prototype is void (*)(void*, Type).
template <class... Type>
void fxReceive(void (*function)(), void* target, Type... value) {
    FX_WHEN_CHECKED(if (!function)
                        fxMisuse::says("fxInputChannel", "function", "null where a value arrives"));
    reinterpret_cast<void (*)(void*, Type...)>(function)(target, value...);
}
