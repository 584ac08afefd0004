#include "kelvofxds/core/fxOrderedGlobal.h"

#include "kelvofxds/core/fxToolkit.h"

fxOrderedGlobal::fxOrderedGlobal(void (*construct)(), fxOrderedGlobal** dependencies, int which)
    : fxOrderedGlobal(construct, nullptr, dependencies, which) {}

fxOrderedGlobal::fxOrderedGlobal(void (*construct)(), void (*destroy)(),
                                 fxOrderedGlobal** dependencies, int which)
    : cons(construct), dest(destroy), deps(dependencies) {
    fxGlobalOrder::add(this, which);
}

bool fxOrderedGlobal::dependsOn(const fxOrderedGlobal& other) const {
    if (!deps)
        return false;
    for (fxOrderedGlobal** dep = deps; *dep; ++dep) {
        if (*dep == &other)
            return true;
    }
    return false;
}
