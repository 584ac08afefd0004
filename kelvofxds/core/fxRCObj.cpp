#include "kelvofxds/core/fxRCObj.h"

fxRCObj::~fxRCObj() {}
