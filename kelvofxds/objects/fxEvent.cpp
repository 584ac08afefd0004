#include "kelvofxds/objects/fxEvent.h"

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/objects/fxEventHandler.h"

// The numbers that start-up draws.
unsigned long fxET_Unknown = 0;
unsigned long fxET_MessageEvent = 1;

unsigned long fxEvent::nextSequenceNumber = 0;

fxEvent::fxEvent(unsigned long typeCode)
    : next(nullptr), prev(nullptr), type(typeCode), sequence(++nextSequenceNumber) {}

fxEvent::fxEvent(const fxEvent& other)
    : fxObj(other), next(nullptr), prev(nullptr), type(other.type), sequence(other.sequence) {}

fxEvent::~fxEvent() {
    // Looked for where it may be: an event that is linked, or a queue's only one.
    FX_CHECK_THAT("fxEvent",
                  !fx_theEventHandler || fx_theEventHandler->numberOfEvents() == 0 ||
                      (!next && !prev && fx_theEventHandler->numberOfEvents() > 1) ||
                      !fx_theEventHandler->getQueue().contains(this),
                  "event %lu is queued: it belongs to the queue until it is removed", sequence);
}

void fxEvent::dump(std::FILE* out) {
    std::fprintf(out, "Event: seq=%d type=%d\n", static_cast<int>(sequence),
                 static_cast<int>(type));
}

fxInputChannel* fxEvent::getChannel() { return nullptr; }
