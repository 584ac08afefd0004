#include "kelvofxds/objects/fxApplication.h"

#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/objects/fxExec.h"

fxApplication::fxApplication() : opened(0) {
    if (!fx_theExecutive)
        fxFatal("fxApplication: call fxInitializeToolkit first");
    fx_theExecutive->add(this);
}

fxApplication::~fxApplication() {
    if (!opened)
        return;
    if (fx_theExecutive)
        fx_theExecutive->remove(this);
    opened = 0;
}

void fxApplication::open() { opened = 1; }

void fxApplication::close() {
    if (fx_theExecutive)
        fx_theExecutive->remove(this);
    opened = 0;
}
