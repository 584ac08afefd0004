#include "kelvofxds/values/fxConverter.h"

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"

namespace {
// Constant-initialised: hosts may register conversions before start-up.
fxConverter* fx_theConverters = nullptr;
}  // namespace

fxConverter::fxConverter(unsigned short from, unsigned short to, void (*routine)())
    : fxInputChannel(from, nullptr, routine, 0), targetType(to), next(fx_theConverters) {
    FX_CHECK_NOT_NULL("fxConverter", routine);
    FX_CHECK_THREAD("fxConverter");
    fx_theConverters = this;
}

fxConverter::fxConverter(const fxConverter& entry, Link)
    : fxInputChannel(entry.getType(), nullptr, entry.function, 0),
      targetType(entry.targetType),
      next(nullptr) {
    flags |= linkFlag;
}

fxConverter* fxConverter::findConverter(unsigned short from, unsigned short to) {
    for (const fxConverter* entry = fx_theConverters; entry; entry = entry->next) {
        if (entry->getType() != from || entry->targetType != to)
            continue;
        auto* link = new (std::nothrow) fxConverter(*entry, Link());
        if (!link)
            fxOutOfMemory();
        return link;
    }
    return nullptr;
}

void fxConverter::splice(fxInputChannel* link, fxInputChannel* in) {
    FX_CHECK_NOT_NULL("fxConverter", link);
    FX_CHECK_NOT_NULL("fxConverter", in);
    FX_CHECK_THAT("fxConverter", link->isLink(), "link is no conversion link");
    link->target = in;
    link->flags = (link->flags & ~latestOnlyFlag) | (in->flags & latestOnlyFlag);
    ++in->count;
}
