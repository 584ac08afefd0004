#include "kelvofxds/values/fxProperty.h"

#include <cstdlib>
#include <cstring>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/values/fxData.h"
#include "kelvofxds/values/fxValueTypesInternal.h"

fxStrArray* fx_propertyNames = nullptr;

namespace {
unsigned short nextTag = 0;

const unsigned int spareNames = 50;

// Makes `held` a reference to `v` in place of the one it was.
template <class Counted>
void hold(Counted*& held, Counted* v) {
    if (held == v)
        return;
    if (v)
        ++v->count;
    Counted* old = held;
    held = v;
    FX_WHEN_CHECKED(fxMisuse::holds(v));
    FX_WHEN_CHECKED(fxMisuse::releases(old));
    if (old && --old->count == 0)
        delete old;
}
}  // namespace

// Tags.

void fxProperty::constructPropertyNames() {
    if (!fx_propertyNames)
        fx_propertyNames = fxNew<fxStrArray>();
}

void fxProperty::destroyPropertyNames() {
    delete fx_propertyNames;
    fx_propertyNames = nullptr;
}

unsigned short fxProperty::allocNewTag(const char* name) {
    FX_CHECK_THREAD("fxProperty");
    if (nextTag == noTag)
        return noTag;
    constructPropertyNames();
    const unsigned short newTag = nextTag++;
    const unsigned int n = fx_propertyNames->length();
    if (newTag >= n) {
        fx_propertyNames->setMaxLength(n + spareNames);
        fx_propertyNames->resize(newTag + 1U);
    }
    (*fx_propertyNames)[newTag] = name;
    return newTag;
}

unsigned short fxProperty::findTag(const char* name) {
    const unsigned int n = fx_propertyNames ? fx_propertyNames->length() : 0;
    for (unsigned int i = 0; i < n; ++i) {
        if ((*fx_propertyNames)[i] == name)
            return static_cast<unsigned short>(i);
    }
    return noTag;
}

// Construction.

fxProperty::fxProperty(unsigned short t, unsigned char v)
    : tag(t), type(fxDT_fxBool), value(), extra() {
    value.asBool = v;
}

fxProperty::fxProperty(unsigned short t, long v) : tag(t), type(fxDT_long), value(), extra() {
    value.asLong = v;
}

fxProperty::fxProperty(unsigned short t, double v) : tag(t), type(fxDT_double), value(), extra() {
    value.asDouble = v;
}

fxProperty::fxProperty(unsigned short t, const char* text, unsigned char isOwned)
    : tag(t), type(fxDT_CharPtr), value(), extra() {
    value.asCharPtr = const_cast<char*>(text);
    extra.owned = isOwned;
}

fxProperty::fxProperty(unsigned short t, const fxStr& v)
    : tag(t), type(fxDT_fxStr), value(), extra() {
    value.asStr = fxNew<fxStr>(v);
}

fxProperty::fxProperty(unsigned short t, void* v, void (*destroyValue)(void*))
    : tag(t), type(fxDT_VoidPtr), value(), extra() {
    value.asVoidPtr = v;
    extra.destroy = destroyValue;
}

fxProperty::fxProperty(unsigned short t, fxObj* v) : tag(t), type(fxDT_ObjPtr), value(), extra() {
    value.asObjPtr = nullptr;
    hold(value.asObjPtr, v);
}

fxProperty::fxProperty(unsigned short t, fxData* v) : tag(t), type(fxDT_DataPtr), value(), extra() {
    value.asData = nullptr;
    hold(value.asData, v);
}

fxProperty::~fxProperty() { cleanup(); }

void fxProperty::cleanup() {
    if (type == fxDT_CharPtr) {
        setAsCharPtr(nullptr, 0);
    } else if (type == fxDT_VoidPtr) {
        setAsVoidPtr(nullptr, nullptr);
    } else if (type == fxDT_ObjPtr) {
        setAsObjPtr(nullptr);
    } else if (type == fxDT_DataPtr) {
        setAsData(nullptr);
    } else if (type == fxDT_fxStr) {
        delete value.asStr;
        value.asStr = nullptr;
    }
}

void fxProperty::abandon() {
    if (type == fxDT_CharPtr || type == fxDT_fxStr)
        return;
    FX_WHEN_CHECKED(if (type == fxDT_ObjPtr) fxMisuse::releases(value.asObjPtr));
    FX_WHEN_CHECKED(if (type == fxDT_DataPtr) fxMisuse::releases(value.asData));
    if (type == fxDT_ObjPtr && value.asObjPtr && value.asObjPtr->count > 1)
        --value.asObjPtr->count;
    if (type == fxDT_DataPtr && value.asData && value.asData->count > 1)
        --value.asData->count;
    std::memset(&value, 0, sizeof value);
    std::memset(&extra, 0, sizeof extra);
}

// Access.

// The setters store without a look at the type, and hosts mix them. Nobody can go on only where a
// value that is owned would be made up or lost by that, or `old` be taken for one.
#ifdef KELVOFXDS_CHECKED
namespace {
const char* nameOfType(unsigned short code) {
#define FX_NAME(number, name, Holder, Type, dataName, shown) #name,
    static const char* const names[] = {FX_VALUE_TYPES(FX_NAME, FX_NAME, FX_NAME)};
#undef FX_NAME
    return code < sizeof names / sizeof *names ? names[code] : "other";
}

template <class Extra>
bool isOwner(unsigned short type, const Extra& extra) {
    return type == fxDT_fxStr || type == fxDT_ObjPtr || type == fxDT_DataPtr ||
           (type == fxDT_CharPtr && extra.owned) || (type == fxDT_VoidPtr && extra.destroy);
}
}  // namespace

#define FX_CHECK_KIND(wanted, old)                                                    \
    FX_CHECK_THAT("fxProperty", type == (wanted) || !((old) || isOwner(type, extra)), \
                  "the property's value is of type %s, not %s", nameOfType(type),     \
                  nameOfType(wanted))
#else
#define FX_CHECK_KIND(...) static_cast<void>(0)
#endif

unsigned short fxProperty::getType() const {
    return type == fxDT_DataPtr && value.asData ? value.asData->getType() : type;
}

unsigned char fxProperty::getAsBool() const { return value.asBool; }

long fxProperty::getAsLong() const { return value.asLong; }

double fxProperty::getAsDouble() const { return value.asDouble; }

char* fxProperty::getAsCharPtr() const { return value.asCharPtr; }

fxStr* fxProperty::getAsStr() const { return value.asStr; }

void* fxProperty::getAsVoidPtr() const { return value.asVoidPtr; }

fxObj* fxProperty::getAsObjPtr() const { return value.asObjPtr; }

fxData* fxProperty::getAsData() const { return value.asData; }

void fxProperty::setAsBool(unsigned char v) {
    FX_CHECK_KIND(fxDT_fxBool, false);
    value.asBool = v;
}

void fxProperty::setAsLong(long v) {
    FX_CHECK_KIND(fxDT_long, false);
    value.asLong = v;
}

void fxProperty::setAsDouble(double v) {
    FX_CHECK_KIND(fxDT_double, false);
    value.asDouble = v;
}

void fxProperty::setAsCharPtr(const char* text, unsigned char isOwned) {
    FX_CHECK_KIND(fxDT_CharPtr, extra.owned);
    char* old = extra.owned ? value.asCharPtr : nullptr;
    value.asCharPtr = const_cast<char*>(text);
    extra.owned = isOwned;
    if (old != text)
        std::free(old);
}

void fxProperty::setAsStr(const fxStr& v) {
    FX_CHECK_KIND(fxDT_fxStr, true);
    FX_CHECK_THAT("fxProperty", value.asStr, "the string went with cleanup()");
    *value.asStr = v;
}

void fxProperty::setAsVoidPtr(void* v, void (*destroyValue)(void*)) {
    FX_CHECK_KIND(fxDT_VoidPtr, extra.destroy);
    void (*const oldDestroy)(void*) = extra.destroy;
    void* const old = value.asVoidPtr;
    // The old function runs first, but must find a property that is whole when
    // it comes back to it.
    extra.destroy = nullptr;
    const bool held = count > 0;
    ++count;  // it may release what holds the property
    if (oldDestroy)
        oldDestroy(old);
    value.asVoidPtr = v;
    extra.destroy = destroyValue;
    if (--count == 0 && held)
        delete this;
}

void fxProperty::setAsObjPtr(fxObj* v) {
    FX_CHECK_KIND(fxDT_ObjPtr, value.asObjPtr);
    hold(value.asObjPtr, v);
}

void fxProperty::setAsData(fxData* v) {
    FX_CHECK_KIND(fxDT_DataPtr, value.asData);
    hold(value.asData, v);
}
