#include "kelvofxds/pattern/fxTextPattern.h"

fxTextPattern::~fxTextPattern() {}
