// ownClassesDerived.cpp - a plug-in of ownClasses whose class derives from the host's.

#include "tests/hosts/ownClasses.h"

namespace {
class Derived : public Node {
    FX_XDR_MEMBERS(Derived)
    short more = 6;
};
FX_DEFINE_XDR(Derived, "Derived", 2)
unsigned char Derived::xdr(fxTranscriber& t) {
    return t.xdr(Node::classType(), nullptr, static_cast<Node*>(this)) && t.xdr(&more, 1);
}
}  // namespace

extern "C" FX_EXPORT fxXDRObj* makeDerived() {
    auto* const made = new Derived;
    made->value = 5;
    return made;
}
