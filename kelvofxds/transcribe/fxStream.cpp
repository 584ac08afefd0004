#include "kelvofxds/transcribe/fxStream.h"

fxStream::fxStream() {}

fxStream::~fxStream() {}
