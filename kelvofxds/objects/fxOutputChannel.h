// fxOutputChannel.h - where values leave an object.
#pragma once

#include "kelvofxds/containers/fxTypedArrays.h"

class fxInputChannel;

/// A named output of an object, connected to any number of inputs. Made by
/// fxObj::addOutput and owned by the object outright.
///
/// Each connection is the input itself or, when the types differ, a
/// conversion link that leads to it, and is held by one reference. An output
/// may be changed or deleted while a value is being sent on it: each input
/// still connected gets the value once.
class FX_EXPORT fxOutputChannel {
public:
    /// `type` is the data type code of the values sent.
    explicit fxOutputChannel(unsigned short type);
    fxOutputChannel(const fxOutputChannel&) = delete;
    fxOutputChannel& operator=(const fxOutputChannel&) = delete;
    /// Disconnects every input.
    ~fxOutputChannel();

    /// Connects `in`, also when it is connected already. An input of type
    /// fxDT_void takes values of any type. Fatal when there is no conversion:
    /// "Can't convert from %d to %d".
    void add(fxInputChannel* in);
    /// Index of the connection that leads to `in`, or -1. Linear.
    int find(fxInputChannel* in);
    /// True when a connection leads to `in`. Linear.
    bool isConnectedTo(fxInputChannel* in);
    /// Disconnects `in`, if it is connected.
    void remove(fxInputChannel* in);
    /// The connection at `index`, which must be below the number of them.
    fxInputChannel* operator[](unsigned int index);
    /// Number of connections.
    unsigned int getNumberOfConnections();

    /// Data type code.
    unsigned short getType() const { return type; }

    // How the library visits the connections while it sends.
    class Walk;

private:
    friend struct fxOutputChannelLayout;  // tests/objects/fxOutputChannel_test.cpp

    unsigned short type;          // data type code
    fxVoidPtrArray* connections;  // owned: fxInputChannels, a reference each; null at first
};
