// fxConverter.h - conversions between the types of outputs and inputs.
#pragma once

#include "kelvofxds/objects/fxInputChannel.h"

class fxStr;

/// A conversion: an entry of the registry, or a link made from one that stands
/// between an output and the input it leads to.
///
/// A conversion routine has the form routine(fxInputChannel* in, value): it
/// converts the value and calls in's function with in's target and the result,
/// and does not touch `in` afterwards. Entries live as long as the process;
/// links belong to their connection.
class FX_EXPORT fxConverter : public fxInputChannel {
public:
    /// Registers `routine` in front of the other entries, so that it is used
    /// from now on. Entries are made with new and never deleted.
    fxConverter(unsigned short from, unsigned short to, void (*routine)());

    /// A new link for values of type `from`, with count 0, or null when no
    /// entry converts `from` to `to`. Linear in the number of entries.
    static fxConverter* findConverter(unsigned short from, unsigned short to);
    /// Makes `link` lead to `in`, of which it holds a reference from then on,
    /// and as latest-only as `in`.
    static void splice(fxInputChannel* link, fxInputChannel* in);
    /// Registers the library's own conversions, each time it is called.
    static void createStandardConverters();

    /// Type code of the result.
    unsigned short getTargetType() const { return targetType; }

private:
    friend struct fxConverterLayout;  // tests/values/fxConverter_test.cpp
    struct Link {};

    fxConverter(const fxConverter& entry, Link);

    unsigned short targetType;
    fxConverter* next;  // in the registry
};

/// A standard conversion routine: the byte as a number.
FX_EXPORT void CBool2int(fxInputChannel* in, unsigned char value);
FX_EXPORT void CBool2float(fxInputChannel* in, unsigned char value);
FX_EXPORT void CBool2double(fxInputChannel* in, unsigned char value);
/// Deliberate: passes the low 8 bits, so 256 is false and 2 is 2.
FX_EXPORT void Cint2Bool(fxInputChannel* in, int value);
/// Rounds to the nearest.
FX_EXPORT void Cint2float(fxInputChannel* in, int value);
/// The text ("%d") is valid during the call only, as are those below.
FX_EXPORT void Cint2CharPtr(fxInputChannel* in, int value);
/// Deliberate: passes the low 8 bits of the value's 32-bit pattern, so 1.0 is
/// false.
FX_EXPORT void Cfloat2Bool(fxInputChannel* in, float value);
/// Exact.
FX_EXPORT void Cfloat2double(fxInputChannel* in, float value);
/// Truncates; INT_MIN for what an int cannot hold.
FX_EXPORT void Cfloat2int(fxInputChannel* in, float value);
FX_EXPORT void Cfloat2CharPtr(fxInputChannel* in, float value);  ///< "%g"
/// Deliberate: passes the low 8 bits of the value's 64-bit pattern.
FX_EXPORT void Cdouble2Bool(fxInputChannel* in, double value);
/// Rounds to the nearest.
FX_EXPORT void Cdouble2float(fxInputChannel* in, double value);
/// Truncates; INT_MIN for what an int cannot hold.
FX_EXPORT void Cdouble2int(fxInputChannel* in, double value);
FX_EXPORT void Cdouble2CharPtr(fxInputChannel* in, double value);  ///< "%lg"
/// A decimal number; what follows it is ignored, and 0 stands for none.
FX_EXPORT void CCharPtr2int(fxInputChannel* in, char* value);
FX_EXPORT void CCharPtr2float(fxInputChannel* in, char* value);
FX_EXPORT void CCharPtr2Str(fxInputChannel* in, char* value);
/// Passes the string's own text, without a copy.
FX_EXPORT void CStr2CharPtr(fxInputChannel* in, fxStr value);
