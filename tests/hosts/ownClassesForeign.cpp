// ownClassesForeign.cpp - a plug-in of ownClasses that was compiled without type information.

#include "kelvofxds/transcribe/fxXDRMembers.h"

#ifdef __GXX_RTTI
#error "this plug-in is meant to be compiled with -fno-rtti"
#endif

namespace {
class Foreign : public fxXDRObj {
    FX_XDR_MEMBERS(Foreign)
    Foreign* next = nullptr;
};
FX_DEFINE_XDR(Foreign, "Foreign", 1)
unsigned char Foreign::xdr(fxTranscriber& t) { return fxXdrPointer(t, next); }
}  // namespace

extern "C" FX_EXPORT fxXDRObj* makeForeign() { return new Foreign; }
