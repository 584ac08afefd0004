// std.h - the library at home in today's C++; header-only.
#pragma once

#include "kelvofxds/containers/fxArrayStd.h"
#include "kelvofxds/containers/fxDictionaryStd.h"
#include "kelvofxds/containers/fxPrintStd.h"
#include "kelvofxds/core/fxRefStd.h"
#include "kelvofxds/lists/fxListsStd.h"
#include "kelvofxds/str/fxStrStd.h"
