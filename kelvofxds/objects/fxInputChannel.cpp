#include "kelvofxds/objects/fxInputChannel.h"

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/core/fxInProgressInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxInputFunction.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/objects/fxWiringLogInternal.h"
#include "kelvofxds/values/fxConverter.h"

namespace {
const char brokenLinks[] = "ic/oc connections busted";

// An input that is being flushed. Values that go may take it with them; its count
// is not what tells, since they see it.
struct Flushing : fxInProgress<Flushing> {
    explicit Flushing(fxInputChannel* c) : channel(c) {}
    fxInputChannel* channel;  // null once it is deleted
};
}  // namespace

fxInputChannel::fxInputChannel(unsigned short type, void* receiver, void (*receive)(),
                               unsigned char latestOnly)
    : target(receiver),
      function(receive),
      flags((latestOnly & latestOnlyFlag) | static_cast<unsigned int>(type) << typeShift),
      pending(nullptr),
      count(0),
      sources(nullptr) {}

fxInputChannel::~fxInputChannel() {
    Flushing::forEach([this](Flushing& flushing) {
        if (flushing.channel == this)
            flushing.channel = nullptr;
    });
    if (fxWiringLog::isOn())
        fxWiringLog::ends(this);
    delete sources;
    if (isLink() && target)
        static_cast<fxInputChannel*>(target)->dec();
}

void fxInputChannel::flush() {
    Flushing flushing(this);
    if (fx_theEventHandler)
        fx_theEventHandler->removeMessageEvents(this);
    if (flushing.channel)
        pending = nullptr;
}

void fxInputChannel::disconnect() {
    if (!sources || sources->length() == 0)
        return;
    ++count;  // the last connection may hold the last reference
    while (const unsigned int n = sources ? sources->length() : 0) {
        static_cast<fxOutputChannel*>((*sources)[0])->remove(this);
        if (sources->length() == n)
            fxFatal(brokenLinks);
    }
    dec();
}

void fxInputChannel::add(fxOutputChannel* out) {
    FX_CHECK_NOT_NULL("fxInputChannel", out);
    if (!sources)
        sources = fxNew<fxVoidPtrArray>();
    sources->append(&out);
}

void fxInputChannel::remove(fxOutputChannel* out) {
    if (!sources)
        return;
    const unsigned int i = sources->find(&out);
    if (i >= sources->length())
        fxFatal(brokenLinks);
    sources->remove(i, 1);
}

void fxInputChannel::dec() {
    FX_CHECK_THAT("fxInputChannel", count != 0,
                  "count is 0: more references are given up than were taken");
    if (--count != 0)
        return;
    if (isLink())
        delete static_cast<fxConverter*>(this);
    else if (flags & ownFlag)
        static_cast<fxOwnInput*>(this)->end();
    else
        delete this;
}

fxInputChannel* fxInputChannel::finalChannel() {
    fxInputChannel* channel = this;
    while (channel->isLink()) {
        FX_CHECK_NOT_NULL("fxInputChannel", channel->target);
        channel = static_cast<fxInputChannel*>(channel->target);
    }
    return channel;
}
