#include "kelvofxds/core/fxVersion.h"

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxPlatform.h"
#include "kelvofxds/version.h"

namespace {
const char format[] = "%-*s %s (%s)\n";
const int noMessageNumber = -1;
const int nameWidth = 33;
const char name[] = "libkelvofxds";
const char version[] = KELVOFXDS_VERSION;
const char buildDate[] = KELVOFXDS_BUILD_DATE;
}  // namespace

int libkelvofxds_print_verid() {
    return imsg_print(0, noMessageNumber, format, nameWidth, name, version, buildDate);
}

int libkelvofxds_sprintf_verid(char* buffer) {
    FX_CHECK_NOT_NULL("libkelvofxds", buffer);
    return imsg_sprintf(buffer, noMessageNumber, format, nameWidth, name, version, buildDate);
}
