#include "kelvofxds/core/fxRCObj.h"

#include "kelvofxds/core/fxCheckedInternal.h"

fxRCObj::~fxRCObj() {
    FX_CHECK_LIVES("fxRCObj", count);
    FX_CHECK_THAT("fxRCObj", fxMisuse::holdersOf(this) == 0,
                  "the object is still held by %u of all properties, transcribers and messages",
                  fxMisuse::holdersOf(this));
    FX_WHEN_CHECKED(fxMisuse::leave(count, fxMisuse::ended));
}
