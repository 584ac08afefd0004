// fxStandardConverters.cpp - the library's own conversions.

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/values/fxConverter.h"
#include "kelvofxds/values/fxData.h"

namespace {
const unsigned int numberSize = 64;  // buffer for one formatted number

// Hands `value` to the channel's function, which may destroy the channel.
template <class Value>
void pass(const fxInputChannel* in, Value value) {
    FX_WHEN_CHECKED(if (!in) fxMisuse::isNull("fxConverter", "routine", "in"));
    FX_WHEN_CHECKED(if (!in->function)
                        fxMisuse::says("fxInputChannel", "function", "null where a value arrives"));
    reinterpret_cast<void (*)(void*, Value)>(in->function)(in->target, value);
}

// Toward zero; what no int can hold, and what is no number, becomes INT_MIN.
int truncated(double value) {
    const bool fits = value > -2147483649.0 && value < 2147483648.0;
    return fits ? static_cast<int>(value) : INT_MIN;
}

template <class Number>
void passText(const fxInputChannel* in, const char* format, Number value) {
    char text[numberSize];
    std::snprintf(text, sizeof text, format, value);
    pass<char*>(in, text);
}

const char* textOf(const char* text) { return text ? text : ""; }
}  // namespace

void CBool2int(fxInputChannel* in, unsigned char value) { pass<int>(in, value); }

void CBool2float(fxInputChannel* in, unsigned char value) { pass<float>(in, value); }

void CBool2double(fxInputChannel* in, unsigned char value) { pass<double>(in, value); }

void Cint2Bool(fxInputChannel* in, int value) {
    pass<unsigned char>(in, static_cast<unsigned char>(value & 0xFF));
}

void Cint2float(fxInputChannel* in, int value) { pass<float>(in, static_cast<float>(value)); }

void Cint2CharPtr(fxInputChannel* in, int value) { passText(in, "%d", value); }

void Cfloat2Bool(fxInputChannel* in, float value) {
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    pass<unsigned char>(in, static_cast<unsigned char>(bits & 0xFF));
}

void Cfloat2double(fxInputChannel* in, float value) { pass<double>(in, value); }

void Cfloat2int(fxInputChannel* in, float value) { pass<int>(in, truncated(value)); }

void Cfloat2CharPtr(fxInputChannel* in, float value) {
    passText(in, "%g", static_cast<double>(value));
}

void Cdouble2Bool(fxInputChannel* in, double value) {
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    pass<unsigned char>(in, static_cast<unsigned char>(bits & 0xFF));
}

void Cdouble2float(fxInputChannel* in, double value) { pass<float>(in, static_cast<float>(value)); }

void Cdouble2int(fxInputChannel* in, double value) { pass<int>(in, truncated(value)); }

void Cdouble2CharPtr(fxInputChannel* in, double value) { passText(in, "%lg", value); }

void CCharPtr2int(fxInputChannel* in, char* value) {
    pass<int>(in, static_cast<int>(std::strtol(textOf(value), nullptr, 10)));
}

void CCharPtr2float(fxInputChannel* in, char* value) {
    pass<float>(in, static_cast<float>(std::strtod(textOf(value), nullptr)));
}

void CCharPtr2Str(fxInputChannel* in, char* value) { pass<fxStr>(in, fxStr(value)); }

// By value, as holders deliver strings.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void CStr2CharPtr(fxInputChannel* in, fxStr value) { pass<char*>(in, &value[0U]); }

void fxConverter::createStandardConverters() {
    const auto add = [](unsigned short from, unsigned short to, auto routine) {
        fxNew<fxConverter>(from, to, reinterpret_cast<void (*)()>(routine));
        // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): the registry keeps it.
    };
    add(fxDT_fxBool, fxDT_int, CBool2int);
    add(fxDT_fxBool, fxDT_float, CBool2float);
    add(fxDT_fxBool, fxDT_double, CBool2double);
    add(fxDT_int, fxDT_fxBool, Cint2Bool);
    add(fxDT_int, fxDT_float, Cint2float);
    add(fxDT_int, fxDT_CharPtr, Cint2CharPtr);
    add(fxDT_float, fxDT_fxBool, Cfloat2Bool);
    add(fxDT_float, fxDT_double, Cfloat2double);
    add(fxDT_float, fxDT_int, Cfloat2int);
    add(fxDT_float, fxDT_CharPtr, Cfloat2CharPtr);
    add(fxDT_double, fxDT_fxBool, Cdouble2Bool);
    add(fxDT_double, fxDT_float, Cdouble2float);
    add(fxDT_double, fxDT_int, Cdouble2int);
    add(fxDT_double, fxDT_CharPtr, Cdouble2CharPtr);
    add(fxDT_CharPtr, fxDT_int, CCharPtr2int);
    add(fxDT_CharPtr, fxDT_float, CCharPtr2float);
    add(fxDT_CharPtr, fxDT_fxStr, CCharPtr2Str);
    add(fxDT_fxStr, fxDT_CharPtr, CStr2CharPtr);
}
