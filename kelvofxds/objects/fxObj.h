// fxObj.h - objects with properties, inputs and outputs.
#pragma once

#include "kelvofxds/core/fxXDRObj.h"

class fxData;
class fxInputChannel;
class fxOutputChannel;
class fxProperty;
class fxVoidPtrArray;

/// The base of every object that takes part in data flow.
///
/// It carries properties (fxProperty), at most one a tag, sorted by tag. Two
/// of them, "inputs" and "outputs", hold its named channels. connect wires an
/// output of one object to an input of another; the send operations put a
/// value on an output, from which it reaches every connected input through
/// the event queue or at once. Unknown names are silently ignored.
///
/// An object may be deleted at any time, also by a receiver that it called:
/// both ends of its connections are left consistent, and messages queued for
/// it are dropped. Copies have no properties.
class FX_EXPORT fxObj : public fxXDRObj {
public:
    /// How a value is sent.
    enum fxSendFlags : int {
        fxSendQueued = 0,  ///< A message per connection at the tail of the event queue.
        fxSendNow = 1,     ///< Delivered to every connection before the call returns.
        fxSendUrgent = 2   ///< A message per connection at the head of the queue, each before
                           ///< the last, so the last connection's is delivered first.
    };

    fxObj();
    /// Without properties.
    fxObj(const fxObj& other);
    /// Leaves the properties of both as they are.
    fxObj& operator=(const fxObj& other);
    ~fxObj() override;

    /// Connects an output of this object to an input of `dst`, unless it is
    /// connected already. Fatal when the types do not convert.
    virtual void connect(const char* outputName, fxObj* dst, const char* inputName);
    /// Undoes connect.
    virtual void disconnect(const char* outputName, fxObj* dst, const char* inputName);
    /// Fatal: "%s: Sub class must define method \"%s\"" with className().
    virtual void subClassMustDefine(const char* method) const;

    /// Fatal unless a subclass hides it: calls subClassMustDefine("compare").
    int compare(const fxObj* other) const;

    // Properties. Tag 65535 is no tag; look-ups are binary searches.

    /// Number of properties.
    unsigned int getNumberOfProperties() const;
    /// Adds `property`, of which the object holds a reference, in place of one
    /// with the same tag. Returns this object.
    /// An object in its destructor releases what its properties set while they
    /// go; from then on it takes nothing more: what is set is released at once.
    /// Deliberate: where one that is released at once sets another, and so on a
    /// hundred deep, this is taken for endless, and what further ones hold is
    /// left to itself: no destroy function is called and no object or holder
    /// deleted. Texts and strings always go.
    fxObj& setProperty(fxProperty* property);
    /// Releases the property with the tag or name, if there is one. Returns
    /// this object.
    fxObj& removeProperty(unsigned short tag);
    fxObj& removeProperty(const char* name);
    /// Releases every property that is there when it is called. Those that
    /// their destroy functions set meanwhile stay.
    void removeAllProperties();
    /// The property with `tag`, or null. `index`, unless null, receives its
    /// position, or that of the last one looked at; it is left alone by an
    /// object that never had a property.
    fxProperty* findProperty(unsigned short tag, unsigned int* index = nullptr) const;
    /// The same by name; a name that is no tag's sets `*index` to 0.
    fxProperty* findProperty(const char* name, unsigned int* index = nullptr) const;
    /// The property at position `i` in tag order, which must be below the
    /// number of them; null in an object that never had one.
    fxProperty* getProperty(unsigned int i) const;

    // Channels. They belong to the object. Adding one gives null in the last
    // part of the object's destruction, when it takes no properties either.

    /// Makes an input whose values of type `type` go to function(target,
    /// value). With `latestOnly`, a newer message replaces an undelivered one.
    /// An input of the same name is only let go: outputs connected to it stay
    /// so and keep delivering to it.
    fxInputChannel* addInput(const char* name, unsigned short type, void* target,
                             void (*function)(), unsigned char latestOnly);
    /// Makes an output for values of type `type`; one of the same name is
    /// disconnected and deleted.
    fxOutputChannel* addOutput(const char* name, unsigned short type);
    /// Removes the messages queued for the input, disconnects and releases it.
    void removeInput(const char* name);
    /// Disconnects and deletes the output.
    void removeOutput(const char* name);

    /// Sends a value on `out`, an output of any object. The holder belongs to
    /// its receivers from then on; a text is copied.
    void sendData(fxOutputChannel* out, fxData* data, fxSendFlags flags);
    void sendVoid(fxOutputChannel* out, fxSendFlags flags);
    void sendBool(fxOutputChannel* out, unsigned char value, fxSendFlags flags);
    void sendInt(fxOutputChannel* out, int value, fxSendFlags flags);
    void sendLong(fxOutputChannel* out, long value, fxSendFlags flags);
    void sendFloat(fxOutputChannel* out, float value, fxSendFlags flags);
    void sendDouble(fxOutputChannel* out, double value, fxSendFlags flags);
    void sendCharPtr(fxOutputChannel* out, const char* text, fxSendFlags flags);

private:
    friend class fxMessageEvent;  // may say that no messages to it can be queued
    friend struct fxObjLayout;    // tests/objects/fxObj_test.cpp
    struct Removal;

    // In the place of properties: never looked into, only compared.
    __attribute__((visibility("hidden"))) static fxVoidPtrArray* nobodysTarget();

    fxVoidPtrArray* properties;  // owned: fxProperty*, by tag, a reference each; null at first
};

/// What the "inputs" property does with its dictionary when it goes: flushes,
/// disconnects and releases every input and deletes the dictionary.
FX_EXPORT void dt_input_dict(void* dict);

/// The same for "outputs": deletes every output and the dictionary.
FX_EXPORT void dt_output_dict(void* dict);
