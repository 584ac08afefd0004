#include "kelvofxds/pattern/fxRegExp.h"

// In a file of its own, so that the engine calls a host's definition.
void fxregerror(const char*) {}
