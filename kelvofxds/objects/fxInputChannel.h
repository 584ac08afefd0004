// fxInputChannel.h - where values arrive at an object.
#pragma once

#include "kelvofxds/containers/fxTypedArrays.h"

class fxMessageEvent;
class fxOutputChannel;

/// A named input of an object: a receiving function, its first argument and
/// the type of the values it takes. Made by fxObj::addInput.
///
/// Reference-counted: the object that owns the input, every connection and
/// every queued message hold one reference, and the channel goes with the last
/// of them, so it may outlive its owner. A channel can also be a conversion
/// link (fxConverter) that passes what it gets on to another channel, its
/// target.
class FX_EXPORT fxInputChannel {
public:
    /// `function` will be called as function(target, value) with a value of
    /// type `type`. Only bit 0 of `latestOnly` counts.
    fxInputChannel(unsigned short type, void* target, void (*function)(), unsigned char latestOnly);
    fxInputChannel(const fxInputChannel&) = delete;
    fxInputChannel& operator=(const fxInputChannel&) = delete;
    /// Releases the channel that a conversion link leads to.
    ~fxInputChannel();

    /// Removes every message that is queued for this channel itself.
    void flush();
    /// Disconnects every output from this channel.
    void disconnect();
    /// Notes that `out` is connected; fxOutputChannel::add calls it.
    void add(fxOutputChannel* out);
    /// Forgets one connection of `out`. Fatal when there is none but others
    /// are: "ic/oc connections busted".
    void remove(fxOutputChannel* out);
    /// Gives up one reference; deletes the channel with the last one.
    void dec();

    /// Data type code.
    unsigned short getType() const { return static_cast<unsigned short>(flags >> typeShift); }
    /// True when only the newest undelivered message is kept.
    bool isLatestOnly() const { return flags & latestOnlyFlag; }
    /// True for a conversion link.
    bool isLink() const { return flags & linkFlag; }
    /// The channel at the end of the conversion links that start here.
    fxInputChannel* finalChannel();

    static const unsigned int latestOnlyFlag = 1;  ///< Bit of `flags`.
    static const unsigned int linkFlag = 2;        ///< Bit of `flags`.
    static const unsigned int typeShift = 2;       ///< Where the type is in `flags`.
    /// Bit of `flags`: the input is an fxOwnInput (fxInputFunction.h).
    static const unsigned int ownFlag = 0x80000000;

    void* target;             ///< First argument; of a link, the next fxInputChannel.
                              ///< Looked up at the time of each delivery.
    void (*function)();       ///< Called with the value.
    unsigned int flags;       ///< The three flags, and the type in 16 bits from bit 2 on.
    fxMessageEvent* pending;  ///< The undelivered message of a latest-only channel, or null.
    unsigned int count;       ///< References held.
    fxVoidPtrArray* sources;  ///< Owned: the fxOutputChannels connected; null at first.
};
