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

// An allocator that tells exactly what it was asked for, such as one that looks
// for mistakes, does so for one of the small sizes too.
bool tellsWholeWords() {
    for (std::size_t size = 1; size <= 64; ++size) {
        void* block = std::malloc(size);
        const std::size_t usable = block ? malloc_usable_size(block) : 1;
        std::free(block);
        if (usable % sizeof(std::uint32_t) != 0)
            return false;
    }
    return true;
}
}  // namespace

// False until it is initialised: what other files allocate before is grown by
// plain realloc.
bool fxUsableSizeIsKnown = allComeFromOneObject();
bool fxUsableSizesAreWords = fxUsableSizeIsKnown && tellsWholeWords();
