#include "kelvofxds/objects/fxObj.h"

#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxMessageIndexInternal.h"
#include "kelvofxds/objects/fxMessagePoolInternal.h"
#include "kelvofxds/values/fxProperty.h"

namespace {
void release(fxProperty* property) {
    if (--property->count == 0)
        delete property;
}

fxProperty* propertyAt(const fxVoidPtrArray& properties, unsigned int i) {
    return static_cast<fxProperty*>(properties[i]);
}

// An object whose properties are being removed. What they call back may delete
// it, which it then says here.
struct Removal {
    explicit Removal(const fxObj* o) : object(o), outer(innermost) { innermost = this; }
    Removal(const Removal&) = delete;
    Removal& operator=(const Removal&) = delete;
    ~Removal() { innermost = outer; }

    static void destroyed(const fxObj* o) {
        for (Removal* removal = innermost; removal; removal = removal->outer) {
            if (removal->object == o)
                removal->object = nullptr;
        }
    }

    const fxObj* object;  // null once it is destroyed

private:
    static Removal* innermost;
    Removal* outer;
};

Removal* Removal::innermost = nullptr;
}  // namespace

fxObj::fxObj() : properties(nullptr) {}

fxObj::fxObj(const fxObj& other) : fxXDRObj(other), properties(nullptr) {}

// Properties stay with the object they were given to: nothing is assigned.
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
fxObj& fxObj::operator=(const fxObj&) { return *this; }

fxObj::~fxObj() {
    if (fxMessagePool::isNobodysTarget(this))
        return;
    if (fx_theEventHandler)
        fx_theEventHandler->removeEventsFor(this);
    if (properties) {
        Removal::destroyed(this);
        removeAllProperties();
        delete properties;
        // Values and properties that went may have sent more.
        if (fx_theEventHandler)
            fx_theEventHandler->removeEventsFor(this);
    }
    if (fx_theEventHandler)
        fxMessageIndex::noteEnd(fx_theEventHandler->getQueue(), this);
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
    if (!properties)
        properties = new fxVoidPtrArray;
    unsigned int i = 0;
    fxProperty* old = findProperty(property->getTag(), &i);
    if (old == property)
        return *this;
    ++property->count;
    if (old) {
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
    while (removal.object && properties->length() != 0) {
        fxProperty* property = propertyAt(*properties, 0);
        properties->remove(0, 1);
        release(property);
    }
    if (removal.object)
        properties->resize(0);
}
