// fxMemory.cpp - whose malloc is in use; see fxMemoryInternal.h.

#include <dlfcn.h>
#include <link.h>

#include "kelvofxds/core/fxMemoryInternal.h"

namespace {
// The object that defines the function called `name` in this process; null when
// that cannot be told. A host that is not position independent has a stand-in
// of its own for a function whose address it takes; that defines nothing.
const void* definerOf(const char* name) {
    void* function = dlsym(RTLD_DEFAULT, name);
    Dl_info info;
    void* symbol = nullptr;
    if (!function || !dladdr1(function, &info, &symbol, RTLD_DL_SYMENT) || !symbol)
        return nullptr;
    return static_cast<const ElfW(Sym)*>(symbol)->st_shndx != SHN_UNDEF ? info.dli_fbase : nullptr;
}

bool allComeFromOneObject() {
    const void* definer = definerOf("malloc");
    return definer && definer == definerOf("realloc") && definer == definerOf("free") &&
           definer == definerOf("malloc_usable_size");
}
}  // namespace

// False until it is initialised: what other files allocate before is grown by
// plain realloc.
bool fxUsableSizeIsKnown = allComeFromOneObject();
