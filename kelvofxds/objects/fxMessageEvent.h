// fxMessageEvent.h - a value on its way to one input.
#pragma once

#include "kelvofxds/objects/fxEvent.h"

class fxData;

/// Carries a value holder to a channel; holds a reference on both.
class FX_EXPORT fxMessageEvent : public fxEvent {
public:
    /// A message of `data` for `channel`, neither of them null.
    fxMessageEvent(fxInputChannel* channel, fxData* data);
    fxMessageEvent(const fxMessageEvent&) = delete;
    fxMessageEvent& operator=(const fxMessageEvent&) = delete;
    ~fxMessageEvent() override;

    /// Hands the value to the channel's function, which may delete the
    /// channel's owner or send again.
    void deliver() override;
    void dump(std::FILE* out) override;
    fxInputChannel* getChannel() override;

    // How the library makes and ends its own messages.
    class Pool;

private:
    friend struct fxEventLayout;  // tests/objects/fxEvent_test.cpp

    // Of a channel, with the holder to come.
    __attribute__((visibility("hidden"))) explicit fxMessageEvent(fxInputChannel* channel);

    fxInputChannel* channel;  // the connection, a reference
    fxData* data;             // a reference
};
