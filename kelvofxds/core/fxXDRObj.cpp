#include "kelvofxds/core/fxXDRObj.h"

#include "kelvofxds/core/fxMemoryInternal.h"

fxXDRObj::fxXDRObj(fxTypeObj&) {}

fxXDRObj::~fxXDRObj() {}

const char* fxXDRObj::className() const { return "fxXDRObj"; }

unsigned char fxXDRObj::xdr(fxTranscriber&) { return 1; }

fxTypeObj& fxXDRObj::getTypeObj() const { return fxXDRObj_type; }

unsigned char fxXDRObj::xdrFail(fxTranscriber&, void*) { return 0; }

void fxXDRObj::xdrSuccess(fxTranscriber&) {}

void* fxXDRObj::newInstance(fxTypeObj& type) { return fxTryNew<fxXDRObj>(type); }

void fxXDRObj::deleteInstance(void* object) { delete static_cast<fxXDRObj*>(object); }

unsigned char fxXDRObj::xdr(void*, fxTranscriber&) { return 1; }
