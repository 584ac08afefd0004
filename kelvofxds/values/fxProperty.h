// fxProperty.h - a tagged, typed value attached to an object.
#pragma once

#include "kelvofxds/core/fxRCObj.h"

class fxData;
class fxObj;
class fxStr;
class fxStrArray;

/// One value under a tag, a small number that stands for a name.
///
/// The type is fixed by the constructor. The setters store without looking at
/// it and the getters reinterpret what is stored, so the caller keeps to the
/// type. Reference-counted: an fxObj that has the property holds a reference.
/// A destroy function is called when a new value replaces its own or the
/// property goes, and may change the object it belonged to.
class FX_EXPORT fxProperty : public fxRCObj {
public:
    static const unsigned short noTag = 65535;  ///< No name's tag.

    /// Makes the name table unless there is one.
    static void constructPropertyNames();
    /// Deletes the name table. Tags are not handed out anew afterwards.
    static void destroyPropertyNames();
    /// Gives `name` the next tag, also when it has one already (see findTag).
    /// noTag when all are in use.
    static unsigned short allocNewTag(const char* name);
    /// The tag of `name`, or noTag. Linear in the number of names.
    static unsigned short findTag(const char* name);

    /// Keeps the value.
    fxProperty(unsigned short tag, unsigned char value);
    fxProperty(unsigned short tag, long value);
    fxProperty(unsigned short tag, double value);
    /// Keeps the pointer; with `owned`, frees the text, from malloc.
    fxProperty(unsigned short tag, const char* text, unsigned char owned);
    /// Keeps a copy of `value`.
    fxProperty(unsigned short tag, const fxStr& value);
    /// Keeps the pointer; `destroy`, unless null, is called with it in the end.
    fxProperty(unsigned short tag, void* value, void (*destroy)(void*));
    /// Holds a reference.
    fxProperty(unsigned short tag, fxObj* value);
    /// Holds a reference.
    fxProperty(unsigned short tag, fxData* value);
    fxProperty(const fxProperty&) = delete;
    fxProperty& operator=(const fxProperty&) = delete;
    ~fxProperty() override;

    /// The tag it was made with.
    unsigned short getTag() const { return tag; }
    /// The type code; of a property made from an fxData, the holder's.
    unsigned short getType() const;

    /// What is stored, taken as the type that the name says.
    unsigned char getAsBool() const;
    long getAsLong() const;
    double getAsDouble() const;
    char* getAsCharPtr() const;
    fxStr* getAsStr() const;
    void* getAsVoidPtr() const;
    fxObj* getAsObjPtr() const;
    fxData* getAsData() const;

    /// Stores the value.
    void setAsBool(unsigned char v);
    void setAsLong(long v);
    void setAsDouble(double v);
    /// Frees the previous text if that is owned.
    void setAsCharPtr(const char* text, unsigned char owned);
    /// Assigns to the string held.
    void setAsStr(const fxStr& v);
    /// Calls the previous destroy function with the previous value, also if
    /// that is the same.
    void setAsVoidPtr(void* v, void (*destroy)(void*));
    /// Releases the previous object; nothing happens if it is the same.
    void setAsObjPtr(fxObj* v);
    /// Releases the previous holder; nothing happens if it is the same.
    void setAsData(fxData* v);

    /// Gives up what the value owns; the destructor calls it.
    void cleanup();

private:
    friend class fxObj;
    friend struct fxPropertyLayout;  // tests/values/fxProperty_test.cpp

    // Leaves the value to itself if its end may call a host back.
    void abandon();

    unsigned short tag;   // index of the name
    unsigned short type;  // data type code
    union {
        unsigned char asBool;
        long asLong;
        double asDouble;
        char* asCharPtr;
        fxStr* asStr;  // owned
        void* asVoidPtr;
        fxObj* asObjPtr;  // a reference
        fxData* asData;   // a reference
    } value;
    union {
        unsigned char owned;     // of texts
        void (*destroy)(void*);  // of void pointers; may be null
    } extra;
};

/// Index is the tag, element the name; null until the toolkit is initialised.
extern FX_EXPORT fxStrArray* fx_propertyNames;
