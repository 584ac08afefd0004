// fxData.h - the typed holders that carry values from outputs to inputs.
#pragma once

#include <cstddef>
#include <new>

#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxStrArray.h"

// Data type codes: 0 to 11 in this order, also before the toolkit is initialised.
extern FX_EXPORT unsigned short fxDT_void;        ///< No value.
extern FX_EXPORT unsigned short fxDT_fxBool;      ///< unsigned char
extern FX_EXPORT unsigned short fxDT_int;         ///< int
extern FX_EXPORT unsigned short fxDT_long;        ///< long
extern FX_EXPORT unsigned short fxDT_float;       ///< float
extern FX_EXPORT unsigned short fxDT_double;      ///< double
extern FX_EXPORT unsigned short fxDT_CharPtr;     ///< char*, a NUL-terminated text.
extern FX_EXPORT unsigned short fxDT_fxStr;       ///< fxStr
extern FX_EXPORT unsigned short fxDT_VoidPtr;     ///< void*, in properties only.
extern FX_EXPORT unsigned short fxDT_ObjPtr;      ///< fxObj*, in properties only.
extern FX_EXPORT unsigned short fxDT_DataPtr;     ///< fxData*, in properties only.
extern FX_EXPORT unsigned short fxDT_fxStrArray;  ///< fxStrArray

/// A value on its way, with its data type code.
///
/// Reference-counted like an fxRCObj, in a field of its own: a new holder has
/// count 0, who stores it adds one, and whose decrement reaches 0 deletes it.
class FX_EXPORT fxData {
public:
    fxData(const fxData&) = delete;
    fxData& operator=(const fxData&) = delete;
    virtual ~fxData();

    /// Deliberate: "TYPE" for every holder but that of texts, "char *", and
    /// that of no value, "void".
    virtual const char* dataName() const = 0;
    /// Calls `function` as function(target, value), with the exact prototype
    /// of the holder's type. The value stays the holder's.
    virtual void deliverTo(void (*function)(), void* target) = 0;
    /// Stores the value at `out`, which has the holder's type; `type` is
    /// ignored.
    virtual void getValue(unsigned short type, void* out) = 0;
    /// Size of the value in bytes.
    virtual unsigned int getSize() = 0;

    /// Data type code.
    unsigned short getType() const { return type; }

    unsigned int count;  ///< Number of holders of a reference.

protected:
    friend struct fxDataLayout;  // tests/values/fxData_test.cpp

    /// For values of the type `typeCode`.
    explicit fxData(unsigned short typeCode);

    unsigned short type;  // data type code
};

/// The members of every holder. Memory of holders is kept for the next one;
/// where there is none, new ends the process ("out of memory"), and nothrow new
/// gives null.
#define FX_DATA_MEMBERS(Class)                                                     \
public:                                                                            \
    ~Class() override;                                                             \
    const char* dataName() const override;                                         \
    void deliverTo(void (*function)(), void* target) override;                     \
    void getValue(unsigned short type, void* out) override;                        \
    unsigned int getSize() override;                                               \
    static void* operator new(std::size_t size);                                   \
    static void* operator new(std::size_t size, const std::nothrow_t&) noexcept;   \
    static void* operator new(std::size_t, void* place) noexcept { return place; } \
    static void operator delete(void* holder, std::size_t size);                   \
    static void operator delete(void* holder, const std::nothrow_t&) noexcept;     \
    static void operator delete(void*, void*) noexcept {}                          \
                                                                                   \
private:                                                                           \
    friend struct fxDataLayout;                                                    \
    friend struct fxHeld;

/// No value: deliverTo calls function(target).
class FX_EXPORT fxVoidData : public fxData {
public:
    /// A holder of nothing.
    fxVoidData();
    FX_DATA_MEMBERS(fxVoidData)
};

/// A truth value, one byte.
class FX_EXPORT fxBoolData : public fxData {
public:
    /// Holds `v`.
    explicit fxBoolData(unsigned char v);
    FX_DATA_MEMBERS(fxBoolData)
    unsigned char value;  // what is held
};

/// An int.
class FX_EXPORT fxIntData : public fxData {
public:
    /// Holds `v`.
    explicit fxIntData(int v);
    FX_DATA_MEMBERS(fxIntData)
    int value;  // what is held
};

/// A long.
class FX_EXPORT fxLongData : public fxData {
public:
    /// Holds `v`.
    explicit fxLongData(long v);
    FX_DATA_MEMBERS(fxLongData)
    long value;  // what is held
};

/// A float.
class FX_EXPORT fxFloatData : public fxData {
public:
    /// Holds `v`.
    explicit fxFloatData(float v);
    FX_DATA_MEMBERS(fxFloatData)
    float value;  // what is held
};

/// A double.
class FX_EXPORT fxDoubleData : public fxData {
public:
    /// Holds `v`.
    explicit fxDoubleData(double v);
    FX_DATA_MEMBERS(fxDoubleData)
    double value;  // what is held
};

/// Owns its text, which comes from malloc (strdup) and is freed with it.
class FX_EXPORT fxCharPtrData : public fxData {
public:
    /// Holds `v`.
    explicit fxCharPtrData(char* v);
    FX_DATA_MEMBERS(fxCharPtrData)
    char* value;  // what is held
};

/// Receivers take the string by value and get a copy each.
class FX_EXPORT fxStrData : public fxData {
public:
    /// Holds `v`.
    explicit fxStrData(fxStr v);
    FX_DATA_MEMBERS(fxStrData)
    fxStr value;  // what is held
};

/// Receivers take the array by value and get a copy each.
class FX_EXPORT fxStrArrayData : public fxData {
public:
    /// Holds `v`.
    explicit fxStrArrayData(fxStrArray v);
    FX_DATA_MEMBERS(fxStrArrayData)
    fxStrArray value;  // what is held
};
