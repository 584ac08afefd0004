#include "kelvofxds/objects/fxObj.h"

#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/core/fxInProgressInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/objects/fxChannelsInternal.h"
#include "kelvofxds/objects/fxConnectingInternal.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxMessagePoolInternal.h"
#include "kelvofxds/values/fxData.h"
#include "kelvofxds/values/fxProperty.h"

namespace {
void release(fxProperty* property) {
    if (--property->count == 0)
        delete property;
}

fxProperty* propertyAt(const fxVoidPtrArray& properties, unsigned int i) {
    return static_cast<fxProperty*>(properties[i]);
}
}  // namespace

// A removal of all properties. What they call back may set and remove some, and
// delete the object.
struct __attribute__((visibility("hidden"))) fxObj::Removal : public fxInProgress<fxObj::Removal> {
    explicit Removal(fxObj* o, bool last = false)
        : object(o), isLast(last), isEndless(false), depth(0) {}

    void run() const {
        while (const fxProperty* property = next())
            object->removeProperty(property->getTag());
    }

    // The object's own inputs; a host may keep something else under their name.
    static fxVoidPtrDict* inputsOf(const fxObj& o) {
        const fxProperty* property = o.findProperty(fxChannels::inputs);
        const bool isOwn = property && property->getType() == fxDT_VoidPtr &&
                           property->extra.destroy == dt_input_dict;
        return isOwn ? static_cast<fxVoidPtrDict*>(property->getAsVoidPtr()) : nullptr;
    }

    // The property to release next; null when all are, or the object is gone.
    fxProperty* next() const {
        const unsigned int n = object ? object->getNumberOfProperties() : 0;
        for (unsigned int i = 0; i < n; ++i) {
            fxProperty* property = propertyAt(*object->properties, i);
            if (!stays(property))
                return property;
        }
        return nullptr;
    }

    bool stays(fxProperty* property) const {
        return newcomers.length() != 0 && newcomers.find(&property) < newcomers.length();
    }

    static void destroyed(const fxObj* o) {
        forEach([o](Removal& removal) {
            if (removal.object == o)
                removal.object = nullptr;
        });
    }

    static void set(const fxObj* o, fxProperty* property) {
        forEach([o, property](Removal& removal) {
            if (removal.object == o)
                removal.newcomers.append(&property);
        });
    }

    static void taken(const fxObj* o, fxProperty* property) {
        forEach([o, property](Removal& removal) {
            if (removal.object == o && removal.stays(property))
                removal.newcomers.remove(removal.newcomers.find(&property), 1);
        });
    }

    // The last removal of `o`, or null.
    static Removal* lastOf(const fxObj* o) {
        Removal* last = nullptr;
        forEach([o, &last](Removal& removal) {
            if (removal.object == o && removal.isLast)
                last = &removal;
        });
        return last;
    }

    // Takes a property from an object that takes none. The end of its value may
    // set the next, and so on. Where that has gone deepest it is taken for
    // endless: from then on, what is set within such an end sets nothing.
    void releaseAtOnce(fxProperty* property) {
        ++property->count;
        isEndless = isEndless || depth == deepest;
        if (depth != 0 && isEndless && property->count == 1)
            property->abandon();
        ++depth;
        release(property);
        --depth;
    }

    static const unsigned int deepest = 100;

    fxObj* object;  // null once it is destroyed
    const bool isLast;
    bool isEndless;
    unsigned int depth;        // of properties released at once
    fxVoidPtrArray newcomers;  // set meanwhile: they stay
};

fxObj::fxObj() : properties(nullptr) {}

fxObj::fxObj(const fxObj& other) : fxXDRObj(other), properties(nullptr) {}

// Properties stay with the object they were given to: nothing is assigned.
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
fxObj& fxObj::operator=(const fxObj&) { return *this; }

fxObj::~fxObj() {
    if (properties == nobodysTarget())
        return;
    FX_CHECK_LIVES("fxObj", count);
    fxConnecting::destroyed(this);
    if (fxVoidPtrDict* inputs = Removal::inputsOf(*this))
        fxChannels::silence(*inputs, *this);
    if (fx_theEventHandler)
        fx_theEventHandler->removeEventsFor(this);
    if (properties) {
        Removal::destroyed(this);
        removeAllProperties();
        Removal last(this, true);
        last.run();
        // Values and properties that went may have sent more.
        if (fx_theEventHandler)
            fx_theEventHandler->removeEventsFor(this);
        delete properties;
    }
}

void fxObj::subClassMustDefine(const char* method) const {
    fxFatal("%s: Sub class must define method \"%s\"", className(), method);
}

int fxObj::compare(const fxObj*) const {
    subClassMustDefine("compare");
    return 0;
}

// Properties. A property that goes may call back, so it is taken out of the
// array before it is released.

unsigned int fxObj::getNumberOfProperties() const { return properties ? properties->length() : 0; }

fxProperty* fxObj::getProperty(unsigned int i) const {
    if (properties)
        FX_CHECK_BELOW(fxClassOf(*this), i, "number of properties", properties->length());
    return properties ? propertyAt(*properties, i) : nullptr;
}

fxProperty* fxObj::findProperty(unsigned short tag, unsigned int* index) const {
    if (!properties)
        return nullptr;
    int low = 0;
    int high = static_cast<int>(properties->length()) - 1;
    int middle = 0;
    fxProperty* found = nullptr;
    while (low <= high && !found) {
        middle = (low + high) >> 1;
        fxProperty* property = propertyAt(*properties, static_cast<unsigned int>(middle));
        if (tag < property->getTag())
            high = middle - 1;
        else if (tag > property->getTag())
            low = middle + 1;
        else
            found = property;
    }
    if (index)
        *index = static_cast<unsigned int>(middle);
    return found;
}

fxProperty* fxObj::findProperty(const char* name, unsigned int* index) const {
    const unsigned short tag = fxProperty::findTag(name);
    if (tag != fxProperty::noTag)
        return findProperty(tag, index);
    if (index)
        *index = 0;
    return nullptr;
}

fxObj& fxObj::setProperty(fxProperty* property) {
    FX_CHECK_LIVES("fxObj", count);
    FX_CHECK_NOT_NULL(fxClassOf(*this), property);
    if (Removal* last = Removal::lastOf(this)) {
        last->releaseAtOnce(property);
        return *this;
    }
    if (!properties)
        properties = fxNew<fxVoidPtrArray>();
    unsigned int i = 0;
    fxProperty* old = findProperty(property->getTag(), &i);
    if (old == property)
        return *this;
    ++property->count;
    Removal::set(this, property);
    if (old) {
        Removal::taken(this, old);
        (*properties)[i] = property;
        release(old);
        return *this;
    }
    const unsigned int n = properties->length();
    if (n != 0 && propertyAt(*properties, i)->getTag() < property->getTag())
        ++i;
    if (i == n)
        properties->append(&property);
    else
        properties->insert(&property, i);
    return *this;
}

fxObj& fxObj::removeProperty(unsigned short tag) {
    unsigned int i = 0;
    fxProperty* property = findProperty(tag, &i);
    if (property) {
        Removal::taken(this, property);
        properties->remove(i, 1);
        release(property);
    }
    return *this;
}

fxObj& fxObj::removeProperty(const char* name) { return removeProperty(fxProperty::findTag(name)); }

void fxObj::removeAllProperties() {
    if (!properties)
        return;
    Removal removal(this);
    removal.run();
    if (removal.object && properties->length() == 0)
        properties->resize(0);
}
