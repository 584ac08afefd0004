// std.h - the library at home in today's C++; header-only, and not part of kelvofxds.h.
#pragma once

#include "kelvofxds/containers/fxArrayStd.h"
#include "kelvofxds/containers/fxCopyStd.h"
#include "kelvofxds/containers/fxDictionaryStd.h"
#include "kelvofxds/containers/fxPrintStd.h"
#include "kelvofxds/containers/fxSetStd.h"
#include "kelvofxds/containers/fxSortStd.h"
#include "kelvofxds/core/fxRefStd.h"
#include "kelvofxds/lists/fxListsStd.h"
#include "kelvofxds/str/fxStrStd.h"
