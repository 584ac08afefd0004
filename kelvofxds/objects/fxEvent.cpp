#include "kelvofxds/objects/fxEvent.h"

// The numbers that start-up draws.
unsigned long fxET_Unknown = 0;
unsigned long fxET_MessageEvent = 1;

unsigned long fxEvent::nextSequenceNumber = 0;

fxEvent::fxEvent(unsigned long typeCode)
    : next(nullptr), prev(nullptr), type(typeCode), sequence(++nextSequenceNumber) {}

fxEvent::fxEvent(const fxEvent& other)
    : fxObj(other), next(nullptr), prev(nullptr), type(other.type), sequence(other.sequence) {}

fxEvent::~fxEvent() {}

void fxEvent::dump(std::FILE* out) {
    std::fprintf(out, "Event: seq=%d type=%d\n", static_cast<int>(sequence),
                 static_cast<int>(type));
}

fxInputChannel* fxEvent::getChannel() { return nullptr; }
