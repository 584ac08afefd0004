#include "kelvofxds/objects/fxSelectHandler.h"

#include <unistd.h>

#include "kelvofxds/objects/fxExec.h"

fxSelectHandler::fxSelectHandler() : fxSelectHandler(-1, 0, 0, 0) {}

fxSelectHandler::fxSelectHandler(int descriptor, unsigned char wantsRead, unsigned char wantsWrite,
                                 unsigned char wantsException)
    : fd(descriptor),
      readInterest(wantsRead),
      writeInterest(wantsWrite),
      exceptionInterest(wantsException) {}

fxSelectHandler::~fxSelectHandler() {
    if (fx_theExecutive)
        fx_theExecutive->forget(this);
    if (fd >= 0)
        ::close(fd);
}

void fxSelectHandler::handleWrite() {}

void fxSelectHandler::handleException() {}
